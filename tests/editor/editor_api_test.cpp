// The editor's HTTP API, spoken to as the page speaks to it: a server on a
// free loopback port over a copy of the sample session, and httplib's client.
// Every action is checked against what the engine's own routines give, with
// the exact messages the user sees.
#include <gtest/gtest.h>
#include <httplib.h>

#include <cstdlib>
#include <filesystem>
#include <thread>

#include <nlohmann/json.hpp>

#include "core/core_session.h"
#include "core/image_settings.h"
#include "core/photo_row_finding.h"
#include "core/row_layout.h"
#include "core/session_files.h"
#include "editor/editor_server.h"
#include "host/image/photo.h"
#include "support/temp_dir.h"

namespace subsurf::editor {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using subsurf::testing::TempDir;

using Corners = std::vector<std::vector<int>>;

class EditorApi : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"sample.slbs", "TRAY_1234_5-1239_5.jpg", "TRAY_1239_5-1244_5.jpg", "TRAY_1244_5-1249_5.jpg"})
      fs::copy_file(fs::path(SUBSURF_SOURCE_DATA_DIR) / "samples" / name, dir.file(name));
    ::setenv("SUBSURF_USERLIB", dir.file("userlib").c_str(), 1);
    session = dir.file("sample.slbs");
    prepare();
    ASSERT_TRUE(server.open(session));
    ASSERT_TRUE(server.bind(0));
    serving = std::thread([this] { server.run(); });
    client = std::make_unique<httplib::Client>("127.0.0.1", server.port());
    client->set_default_headers({{std::string(kTokenHeader), server.token()}});
    // Wait until the server answers.
    for (int i = 0; i < 200 && !client->Get("/api/state"); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  void TearDown() override {
    server.stop();
    serving.join();
    ::unsetenv("SUBSURF_USERLIB");
  }

  // Changes the session file before the editor opens it.
  virtual void prepare() {}

  json post(const std::string& action, const json& body, int expectedStatus = 200) {
    auto res = client->Post(("/api/" + action).c_str(), body.dump(), "application/json");
    EXPECT_TRUE(res);
    if (!res) return json();
    EXPECT_EQ(res->status, expectedStatus) << res->body;
    return json::parse(res->body, nullptr, false);
  }
  json state() {
    auto res = client->Get("/api/state");
    return res ? json::parse(res->body) : json();
  }
  static Corners corners(const json& state, int image, int rectangle) {
    return state["images"][image - 1]["rows"][rectangle - 1]["corners"].get<Corners>();
  }
  static std::vector<std::string> messages(const json& reply) { return reply["messages"].get<std::vector<std::string>>(); }

  TempDir dir;
  std::string session;
  EditorServer server;
  std::thread serving;
  std::unique_ptr<httplib::Client> client;
};

// ---------------------------------------------------------------------------
// Who may talk to it.

TEST_F(EditorApi, EveryRequestNeedsTheToken) {
  httplib::Client bare("127.0.0.1", server.port());
  for (const char* path : {"/", "/editor.js", "/api/state", "/api/photo/1", "/api/tile/1/0/0/0", "/nothing"}) {
    SCOPED_TRACE(path);
    auto res = bare.Get(path);
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 403);
    EXPECT_EQ(json::parse(res->body)["error"], "the editor's token is missing");
  }
  auto wrong = bare.Get(("/api/state?token=" + std::string(32, '0')).c_str());
  EXPECT_EQ(wrong->status, 403);
  EXPECT_EQ(json::parse(wrong->body)["error"], "the editor's token is wrong");
  auto post = bare.Post("/api/save", "{}", "application/json");
  EXPECT_EQ(post->status, 403);
  EXPECT_FALSE(fs::exists(dir.file("sample.slbs.tmp")));
  // The token in the address, as the page is opened.
  auto byAddress = bare.Get(("/api/state?token=" + server.token()).c_str());
  EXPECT_EQ(byAddress->status, 200);
  EXPECT_EQ(server.address(), "http://127.0.0.1:" + std::to_string(server.port()) + "/?token=" + server.token());
  // Tokens differ from run to run.
  EXPECT_NE(randomToken(), randomToken());
  EXPECT_EQ(randomToken().size(), 32u);
}

TEST_F(EditorApi, HostHeaderMustBeTheLoopbackAddress) {
  const std::string port = std::to_string(server.port());
  for (const std::string& host : std::vector<std::string>{"evil.example:" + port, "127.0.0.1", "127.0.0.1:1", "127.0.0.1.evil.example:" + port}) {
    SCOPED_TRACE(host);
    auto res = client->Get("/api/state", {{"Host", host}});
    ASSERT_TRUE(res);
    EXPECT_EQ(res->status, 403);
    EXPECT_EQ(json::parse(res->body)["error"], "Host \"" + host + "\" is not this editor (127.0.0.1:" + port + ")");
  }
  for (const std::string& host : {"localhost:" + port, "127.0.0.1:" + port, "[::1]:" + port}) {
    SCOPED_TRACE(host);
    EXPECT_EQ(client->Get("/api/state", {{"Host", host}})->status, 200);
  }
}

// ---------------------------------------------------------------------------
// The page and the state.

TEST_F(EditorApi, PageIsServedFromTheProgram) {
  auto page = client->Get("/");
  ASSERT_TRUE(page);
  EXPECT_EQ(page->status, 200);
  EXPECT_EQ(page->get_header_value("Content-Type"), "text/html; charset=utf-8");
  EXPECT_NE(page->get_header_value("Content-Security-Policy").find("default-src 'self'"), std::string::npos);
  EXPECT_NE(page->body.find("editor.js"), std::string::npos);
  EXPECT_EQ(client->Get("/editor.js")->get_header_value("Content-Type"), "text/javascript; charset=utf-8");
  EXPECT_EQ(client->Get("/editor.css")->get_header_value("Content-Type"), "text/css; charset=utf-8");
  EXPECT_EQ(client->Get("/api/nothing")->status, 404);
  EXPECT_EQ(client->Get("/../sample.slbs")->status, 404);
}

TEST_F(EditorApi, StateShowsTheImageTable) {
  const json s = state();
  EXPECT_EQ(s["file"], session);
  EXPECT_EQ(s["unsaved"], false);
  ASSERT_EQ(s["images"].size(), 3u);
  const json& first = s["images"][0];
  EXPECT_EQ(first["Source"], 1);
  EXPECT_EQ(first["Path"], dir.path());
  EXPECT_EQ(first["Filename"], "TRAY_1234_5-1239_5.jpg");
  EXPECT_EQ(first["UV"], 0);
  EXPECT_EQ(first["Top"], 1234.5);
  EXPECT_EQ(first["Base"], 1239.5);
  EXPECT_EQ(first["Core Length"], 1.0);
  EXPECT_EQ(first["Tray Length"], 5.0);
  EXPECT_TRUE(first["Angle"].is_null());
  EXPECT_EQ(first["Use"], 1);
  EXPECT_EQ(first["View"], -1);
  EXPECT_EQ(first["frame"], json({2400, 1600}));
  EXPECT_EQ(first["photo"], json({2400, 1600}));
  ASSERT_EQ(first["rows"].size(), 5u);
  EXPECT_EQ(first["rows"][0]["top"], 1234.5);
  EXPECT_EQ(first["rows"][0]["base"], 1235.5);
  EXPECT_EQ(corners(s, 1, 1), (Corners{{119, 347}, {2251, 347}, {2251, 516}, {119, 516}}));
  EXPECT_EQ(s["current"], json({{"image", 1}, {"rectangle", 1}}));
}

// ---------------------------------------------------------------------------
// Bad requests change nothing.

TEST_F(EditorApi, BadRequestsAreRefusedWithTheReason) {
  const std::string before = TempDir::read(session);
  const struct {
    std::string action;
    json body;
    std::string error;
  } cases[] = {
      {"fly", json::object(), "no action \"fly\""},
      {"select", json::object(), "\"image\" is missing"},
      {"select", {{"image", "one"}}, "\"image\" must be a whole number"},
      {"select", {{"image", 1.5}}, "\"image\" must be a whole number"},
      {"select", {{"image", 4}}, "there is no image 4"},
      {"select", {{"image", 1}, {"rectangle", 6}}, "image 1 has no rectangle 6"},
      {"corner", {{"image", 1}, {"rectangle", 1}, {"vertex", 5}, {"x", 1}, {"y", 1}}, "rectangle 1 has no corner 5"},
      {"edge", {{"image", 1}, {"rectangle", 1}, {"edge", 0}, {"x", 1}, {"y", 1}}, "rectangle 1 has no edge 0"},
      {"table", {{"image", 1}, {"column", "Path"}, {"value", 1}}, "the column \"Path\" cannot be edited"},
      {"table", {{"image", 1}, {"column", "Top"}, {"value", "deep"}}, "\"value\" must be a number"},
      {"table", {{"image", 1}, {"column", "UV"}, {"value", 2}}, "\"UV\" is 0 or 1"},
      {"reorder", {{"image", 1}, {"order", {1, 2, 3}}}, "\"order\" must list the 5 rectangles of the image"},
      {"reorder", {{"image", 1}, {"order", {1, 1, 2, 3, 4}}}, "\"order\" must list each of the places 1 to 5 once"},
      {"rows", {{"image", 1}, {"boxes", {{1, 2, 3}}}}, "\"boxes\" must be a list of [x, y, w, h]"},
      {"view", {{"image", 1}, {"view", 11}, {"x1", 0}, {"x2", 1}, {"y1", 0}, {"y2", 1}}, "\"view\" is 1 to 10"},
      {"depths", {{"image", 1}, {"top", 1000}, {"base", 1005}, {"answers", {1}}}, "\"answers\" must be a list of true and false"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.action + " " + c.body.dump());
    const json reply = post(c.action, c.body, 400);
    EXPECT_EQ(reply["error"], c.error);
  }
  auto notJson = client->Post("/api/add", "{image: 1", "application/json");
  EXPECT_EQ(notJson->status, 400);
  EXPECT_EQ(json::parse(notJson->body)["error"], "the body is not a JSON object");
  EXPECT_EQ(client->Post("/api/add", "[1]", "application/json")->status, 400);
  const json s = state();
  EXPECT_EQ(s["canUndo"], false);
  EXPECT_EQ(s["unsaved"], false);
  EXPECT_EQ(TempDir::read(session), before);
}

// ---------------------------------------------------------------------------
// Rectangles.

TEST_F(EditorApi, CornerDragMovesTheNeighboursSharedCoordinates) {
  json reply = post("corner", {{"image", 1}, {"rectangle", 1}, {"vertex", 3}, {"x", 2200}, {"y", 530}});
  EXPECT_EQ(corners(reply["state"], 1, 1), (Corners{{119, 347}, {2200, 347}, {2200, 530}, {119, 530}}));
  reply = post("corner", {{"image", 1}, {"rectangle", 1}, {"vertex", 1}, {"x", -50}, {"y", 300}});
  EXPECT_EQ(corners(reply["state"], 1, 1), (Corners{{0, 300}, {2200, 300}, {2200, 530}, {0, 530}}))
      << "kept on the photo";
  EXPECT_EQ(reply["state"]["current"], json({{"image", 1}, {"rectangle", 1}}));
  EXPECT_EQ(reply["state"]["unsaved"], true);
  EXPECT_EQ(corners(reply["state"], 1, 2), (Corners{{119, 587}, {2251, 587}, {2251, 756}, {119, 756}}));
}

TEST_F(EditorApi, EdgeDragMovesOneSide) {
  json reply = post("edge", {{"image", 1}, {"rectangle", 2}, {"edge", 1}, {"x", 999}, {"y", 570}});
  EXPECT_EQ(corners(reply["state"], 1, 2), (Corners{{119, 570}, {2251, 570}, {2251, 756}, {119, 756}}));
  reply = post("edge", {{"image", 1}, {"rectangle", 2}, {"edge", 2}, {"x", 2300}, {"y", 1}});
  EXPECT_EQ(corners(reply["state"], 1, 2), (Corners{{119, 570}, {2300, 570}, {2300, 756}, {119, 756}}));
}

TEST_F(EditorApi, FreeCornersMoveOneAtATimeAndGoBackToARectangle) {
  json reply = post("corners", {{"image", 1}, {"rectangle", 2}, {"corners", {{130, 600}, {2240, 580}, {2260, 760}, {110, 750}}}});
  EXPECT_EQ(corners(reply["state"], 1, 2), (Corners{{130, 600}, {2240, 580}, {2260, 760}, {110, 750}}));
  EXPECT_EQ(reply["state"]["images"][0]["rows"][1]["free"], true);
  EXPECT_EQ(reply["state"]["images"][0]["rows"][0]["free"], false);
  EXPECT_EQ(reply["state"]["unsaved"], true);

  // A free corner moves alone.
  reply = post("corner", {{"image", 1}, {"rectangle", 2}, {"vertex", 3}, {"x", 2280}, {"y", 770}});
  EXPECT_EQ(corners(reply["state"], 1, 2), (Corners{{130, 600}, {2240, 580}, {2280, 770}, {110, 750}}));
  // ... but not to where the outline would fold in.
  reply = post("corner", {{"image", 1}, {"rectangle", 2}, {"vertex", 3}, {"x", 300}, {"y", 620}});
  EXPECT_EQ(messages(reply),
            std::vector<std::string>{"Row 2: corner 3 cannot go to (300,620): the outline would not be convex"});
  EXPECT_EQ(corners(reply["state"], 1, 2), (Corners{{130, 600}, {2240, 580}, {2280, 770}, {110, 750}}));
  // Edges of a free-cornered row are moved by sending its corners.
  post("edge", {{"image", 1}, {"rectangle", 2}, {"edge", 1}, {"x", 999}, {"y", 570}}, 400);

  // Refused corners name themselves and change nothing.
  reply = post("corners", {{"image", 1}, {"rectangle", 2}, {"corners", {{130, 600}, {2240, 580}, {110, 750}, {2280, 770}}}});
  EXPECT_EQ(messages(reply), std::vector<std::string>{"Rectangle 2 (corners 130,600,2240,580,110,750,2280,770) crosses "
                                                      "itself: side 2-3 crosses side 4-1"});
  reply = post("corners", {{"image", 1}, {"rectangle", 2}, {"corners", {{130, 600}, {2240, 580}, {2401, 770}, {110, 750}}}});
  EXPECT_EQ(messages(reply), std::vector<std::string>{"Rectangle 2 (corners 130,600,2240,580,2401,770,110,750): corner 3 "
                                                      "(2401,770) lies outside the photo (2400 x 1600 pixels)"});
  post("corners", {{"image", 1}, {"rectangle", 2}, {"corners", {{130, 600}, {2240, 580}}}}, 400);
  post("corners", {{"image", 1}, {"rectangle", 2}, {"corners", {{130, 600}, {2240, 580}, {2260, "x"}, {110, 750}}}}, 400);
  EXPECT_EQ(corners(state(), 1, 2), (Corners{{130, 600}, {2240, 580}, {2280, 770}, {110, 750}}));

  reply = post("square", {{"image", 1}, {"rectangle", 2}});
  EXPECT_EQ(corners(reply["state"], 1, 2), (Corners{{110, 580}, {2280, 580}, {2280, 770}, {110, 770}}));
  EXPECT_EQ(reply["state"]["images"][0]["rows"][1]["free"], false);
  // Upright again: its neighbours follow a dragged corner.
  reply = post("corner", {{"image", 1}, {"rectangle", 2}, {"vertex", 3}, {"x", 2200}, {"y", 760}});
  EXPECT_EQ(corners(reply["state"], 1, 2), (Corners{{110, 580}, {2200, 580}, {2200, 760}, {110, 760}}));
}

TEST_F(EditorApi, AddMoveDeleteAndReorder) {
  json reply = post("add", {{"image", 2}, {"x", 100}, {"y", 1400}, {"w", 2000}, {"h", 150}});
  ASSERT_EQ(reply["state"]["images"][1]["rows"].size(), 6u);
  EXPECT_EQ(corners(reply["state"], 2, 6), (Corners{{100, 1400}, {2100, 1400}, {2100, 1550}, {100, 1550}}));
  EXPECT_EQ(reply["state"]["current"], json({{"image", 2}, {"rectangle", 6}}));

  reply = post("add", {{"image", 2}, {"x", 100}, {"y", 1500}, {"w", 2000}, {"h", 150}});
  EXPECT_EQ(messages(reply), std::vector<std::string>{"Rectangle 7 (100,1500,2000,150) lies outside the photo (2400 x 1600 pixels)"});
  EXPECT_EQ(reply["state"]["images"][1]["rows"].size(), 6u);

  reply = post("move", {{"image", 2}, {"rectangle", 6}, {"dx", -30}, {"dy", 500}});
  EXPECT_EQ(corners(reply["state"], 2, 6), (Corners{{70, 1450}, {2070, 1450}, {2070, 1600}, {70, 1600}}))
      << "moved down only as far as the photo's edge";

  const Corners second = corners(state(), 2, 2);
  reply = post("reorder", {{"image", 2}, {"order", {2, 1, 3, 4, 5, 6}}});
  EXPECT_EQ(corners(reply["state"], 2, 1), second);

  reply = post("delete", {{"image", 2}, {"rectangle", 6}});
  EXPECT_EQ(reply["state"]["images"][1]["rows"].size(), 5u);
  EXPECT_EQ(corners(reply["state"], 2, 1), second);
}

TEST_F(EditorApi, RowsCopiedToTheNextPhotos) {
  post("corner", {{"image", 1}, {"rectangle", 1}, {"vertex", 1}, {"x", 150}, {"y", 330}});
  post("delete", {{"image", 1}, {"rectangle", 5}});
  json reply = post("copy", {{"image", 1}, {"count", 1}});
  ASSERT_EQ(reply["state"]["images"][1]["rows"].size(), 4u);
  EXPECT_EQ(corners(reply["state"], 2, 1), corners(reply["state"], 1, 1));
  EXPECT_EQ(reply["state"]["images"][1]["Core Number"], 4);
  EXPECT_EQ(reply["state"]["images"][1]["rows"][3]["base"], 1244.5) << "the tray laid out in four rows";
  EXPECT_EQ(reply["state"]["images"][2]["rows"].size(), 5u) << "count 1: the next photo only";
  reply = post("copy", {{"image", 3}});
  EXPECT_EQ(messages(reply), std::vector<std::string>{"Image 3 is the last photo: there is no next photo to copy to"});
}

TEST_F(EditorApi, AllRowsAtOnceCheckedAsTheCommandLineDoes) {
  json reply = post("rows", {{"image", 3}, {"boxes", {{0, 0, 2400, 800}, {0, 800, 2400, 800}}}});
  EXPECT_EQ(reply["state"]["images"][2]["rows"].size(), 2u);
  EXPECT_EQ(reply["state"]["images"][2]["rows"][1]["top"], 1247.0);
  reply = post("rows", {{"image", 3}, {"boxes", {{0, 0, 0, 800}}}});
  EXPECT_EQ(messages(reply), std::vector<std::string>{"Rectangle 1 (0,0,0,800) has no width"});
}

// ---------------------------------------------------------------------------
// Depths.

TEST_F(EditorApi, TableEditsApplyTheRowCountRule) {
  // A top 0.5 below the base still makes one row (the count is truncated toward zero).
  json reply = post("table", {{"image", 1}, {"column", "Top"}, {"value", 1240.0}});
  EXPECT_TRUE(messages(reply).empty());
  EXPECT_EQ(reply["state"]["images"][0]["Core Number"], 1);
  reply = post("table", {{"image", 1}, {"column", "Top"}, {"value", 1241.0}});
  EXPECT_EQ(messages(reply), std::vector<std::string>{"Error - Top depth >= Base Depth!"});
  EXPECT_EQ(reply["state"]["images"][0]["Core Number"], 1);
  reply = post("table", {{"image", 1}, {"column", "Top"}, {"value", 1220.0}});
  EXPECT_EQ(messages(reply), std::vector<std::string>{"Warning - more than 10 cores in tray!"});
  reply = post("table", {{"image", 1}, {"column", "Top"}, {"value", 1236.5}});
  EXPECT_TRUE(messages(reply).empty());
  EXPECT_EQ(reply["state"]["images"][0]["Core Number"], 3);
  EXPECT_EQ(reply["state"]["images"][0]["Tray Length"], 3.0);
  reply = post("table", {{"image", 2}, {"column", "UV"}, {"value", 1}});
  EXPECT_EQ(reply["state"]["images"][1]["UV"], 1);
}

TEST_F(EditorApi, SetDepthsCarriesForwardAndAsksAboutTheCoreNumber) {
  json reply = post("depths", {{"image", 1}, {"top", 1000.0}, {"base", 1005.0}, {"cores", 5}});
  EXPECT_TRUE(messages(reply).empty());
  EXPECT_EQ(reply["changed"], true);
  const json& images = reply["state"]["images"];
  EXPECT_EQ(images[1]["Top"], 1005.0);
  EXPECT_EQ(images[2]["Base"], 1015.0);
  EXPECT_EQ(images[2]["rows"][4]["top"], 1014.0);

  // No core number: the engine asks, the page asks the user and sends the answer.
  reply = post("depths", {{"image", 2}, {"top", 2000.0}, {"base", 2004.0}, {"cores", 0}});
  EXPECT_EQ(reply["question"], "#Cores not set, use 5?");
  EXPECT_EQ(reply["state"]["images"][1]["Top"], 1005.0) << "nothing changed while asking";
  EXPECT_EQ(reply["changed"], false);
  reply = post("depths", {{"image", 2}, {"top", 2000.0}, {"base", 2004.0}, {"cores", 0}, {"answers", {false}}});
  EXPECT_FALSE(reply.contains("question"));
  EXPECT_EQ(reply["state"]["images"][2]["Top"], 1010.0) << "answered no: not carried forward";
  EXPECT_EQ(reply["state"]["images"][1]["Top"], 1005.0) << "nor the starting image changed";
  EXPECT_EQ(reply["state"]["canUndo"], true) << "only the first run is an edit";
  reply = post("depths", {{"image", 2}, {"top", 2000.0}, {"base", 2004.0}, {"cores", 0}, {"answers", {true}}});
  EXPECT_EQ(reply["state"]["images"][1]["Core Number"], 5);
  EXPECT_EQ(reply["state"]["images"][2]["Top"], 2004.0);
  EXPECT_EQ(reply["state"]["images"][1]["rows"][0]["base"], 2000.8f);

  reply = post("depths", {{"image", 0}, {"top", 1.0}, {"base", 2.0}});
  EXPECT_EQ(messages(reply), std::vector<std::string>{"Select a starting image!"});
  EXPECT_EQ(reply["state"]["current"]["image"], 2) << "the photo on show stays selected";
  reply = post("depths", {{"image", 1}, {"top", 1005.0}, {"base", 1005.0}, {"cores", 5}});
  EXPECT_EQ(messages(reply), std::vector<std::string>{"Error - Top depth >= Base Depth!"});
}

// ---------------------------------------------------------------------------
// Templates, undo, save.

TEST_F(EditorApi, TemplatesSavedAndApplied) {
  json reply = post("template-save", {{"image", 1}, {"name", "  "}});
  EXPECT_EQ(messages(reply), std::vector<std::string>{"Rectangle template must be given a name!"});
  reply = post("template-save", {{"image", 1}, {"name", "../x"}});
  EXPECT_EQ(messages(reply).size(), 1u);
  reply = post("template-save", {{"image", 1}, {"name", "bench5"}, {"description", "five rows"}});
  EXPECT_EQ(messages(reply), std::vector<std::string>{"Template bench5 saved"});
  EXPECT_EQ(reply["state"]["templates"], json::parse(R"([{"name":"bench5","description":"five rows"}])"));
  EXPECT_EQ(reply["state"]["unsaved"], false);

  post("rows", {{"image", 3}, {"boxes", {{0, 0, 2400, 1600}}}});
  reply = post("template-apply", {{"image", 3}, {"name", "bench5"}});
  EXPECT_EQ(reply["state"]["images"][2]["rows"].size(), 5u);
  EXPECT_EQ(corners(reply["state"], 3, 2), corners(reply["state"], 1, 2));
  reply = post("template-apply", {{"image", 3}, {"name", "none"}});
  EXPECT_EQ(messages(reply), std::vector<std::string>{"Could not open template file!"});
  // A name is never a way out of the template library.
  reply = post("template-apply", {{"image", 3}, {"name", "../../sample"}});
  ASSERT_EQ(messages(reply).size(), 1u);
  EXPECT_EQ(messages(reply)[0], templateNameProblem("../../sample"));
  EXPECT_FALSE(messages(reply)[0].empty());
  EXPECT_EQ(reply["changed"], false);
}

TEST_F(EditorApi, UndoAndRedoWalkTheEdits) {
  const Corners before = corners(state(), 1, 1);
  post("corner", {{"image", 1}, {"rectangle", 1}, {"vertex", 3}, {"x", 2000}, {"y", 500}});
  const Corners after = corners(state(), 1, 1);
  json reply = post("undo", json::object());
  EXPECT_EQ(corners(reply["state"], 1, 1), before);
  EXPECT_EQ(reply["state"]["unsaved"], false) << "back to what is on disk";
  EXPECT_EQ(reply["state"]["canRedo"], true);
  reply = post("redo", json::object());
  EXPECT_EQ(corners(reply["state"], 1, 1), after);
  EXPECT_EQ(reply["state"]["unsaved"], true);
  // A new edit forgets what could be redone.
  post("undo", json::object());
  reply = post("delete", {{"image", 1}, {"rectangle", 1}});
  EXPECT_EQ(reply["state"]["canRedo"], false);
}

TEST_F(EditorApi, SaveWritesWhatTheEngineWrites) {
  post("corner", {{"image", 2}, {"rectangle", 3}, {"vertex", 2}, {"x", 2200}, {"y", 800}});
  post("depths", {{"image", 2}, {"top", 1300.0}, {"base", 1306.0}, {"cores", 5}});
  post("view", {{"image", 2}, {"view", 1}, {"x1", 100}, {"x2", 1300}, {"y1", 50}, {"y2", 850}});
  json reply = post("save", json::object());
  EXPECT_EQ(messages(reply), std::vector<std::string>{"Saved " + session});
  EXPECT_EQ(reply["state"]["unsaved"], false);

  // The same edits made with the engine's routines directly.
  CoreSession fresh;
  SessionOptions freshOptions;
  fs::copy_file(fs::path(SUBSURF_SOURCE_DATA_DIR) / "samples" / "sample.slbs", dir.file("engine.slbs"));
  ASSERT_TRUE(readSession(fresh, freshOptions, dir.file("engine.slbs")));
  CoreImage& image = *fresh.imageAt(2);
  fresh.moveCorner(*fresh.rectangleAt(image, 3), 2, 2200, 800);
  setDepth(image.realSetting(kRealTop), 1300.0f, "m");
  setDepth(image.realSetting(kRealBase), 1306.0f, "m");
  setInteger(image.intSetting(kIntCoreNumber), 5);
  CoreSession::deriveTrayLengths(image);
  image.realSetting(kRealCoreLength).V = kRealNull;
  fresh.selectImageByPlace(2);
  ASSERT_EQ(fresh.carryDepthsForward(nullptr), 0);
  ViewRecord& v = image.views[0];
  v.x1 = 100, v.x2 = 1300, v.y1 = 50, v.y2 = 850, v.inUse = 1;
  image.viewShown = 1;
  ASSERT_TRUE(saveSession(fresh, freshOptions, dir.file("engine.slbs")));
  EXPECT_EQ(TempDir::read(session), TempDir::read(dir.file("engine.slbs")));
  EXPECT_EQ(dir.list().size(), 5u) << "the session, its three photos and the engine's copy: no temporary file left";
}

// ---------------------------------------------------------------------------
// Pictures.

TEST_F(EditorApi, ReducedPhotosAndTiles) {
  auto size = [this](const std::string& path) {
    auto res = client->Get(path.c_str());
    EXPECT_TRUE(res);
    if (!res || res->status != 200) return std::pair<int, int>(-res->status, 0);
    EXPECT_EQ(res->get_header_value("Content-Type"), "image/jpeg");
    const std::string file = dir.write("picture.jpg", res->body);
    image::PixelSize s;
    EXPECT_TRUE(image::readPixelSize(file, s));
    return std::pair<int, int>(s.width, s.height);
  };
  EXPECT_EQ(size("/api/photo/1"), std::make_pair(1600, 1067));
  EXPECT_EQ(size("/api/photo/2?size=400"), std::make_pair(400, 267));
  EXPECT_EQ(size("/api/photo/2?size=9999").first, -400);
  EXPECT_EQ(size("/api/photo/2?size=big").first, -400);
  EXPECT_EQ(size("/api/photo/4").first, -400);
  EXPECT_EQ(size("/api/tile/1/0/0/0"), std::make_pair(512, 512));
  EXPECT_EQ(size("/api/tile/1/0/4/3"), std::make_pair(2400 - 2048, 1600 - 1536));
  EXPECT_EQ(size("/api/tile/1/2/0/0"), std::make_pair(512, 400));
  EXPECT_EQ(size("/api/tile/1/0/5/0").first, -404);
  EXPECT_EQ(size("/api/tile/1/9/0/0").first, -404);
}

TEST_F(EditorApi, SplitRunsAndReportsItsProgress) {
  json reply = post("split", json::object());
  for (int i = 0; i < 600 && reply["state"]["split"]["running"] == true; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    reply["state"] = state();
  }
  const json& split = reply["state"]["split"];
  EXPECT_EQ(split["running"], false);
  EXPECT_EQ(split["summary"], "15 of 15 rows written from 3 photos");
  EXPECT_EQ(split["rowsDone"], 15);
  EXPECT_EQ(split["folder"], dir.file("sample_rows"));
  std::size_t written = 0;
  for (const auto& e : fs::directory_iterator(dir.file("sample_rows"))) written += e.path().extension() == ".bmp";
  EXPECT_EQ(written, 15u);
  EXPECT_TRUE(fs::exists(split["report"].get<std::string>()));
}

TEST_F(EditorApi, SelectingAndViewingAreNotEdits) {
  json reply = post("select", {{"image", 2}, {"rectangle", 3}});
  EXPECT_EQ(reply["state"]["current"], json({{"image", 2}, {"rectangle", 3}}));
  EXPECT_EQ(reply["changed"], false);
  reply = post("select", {{"image", 3}});
  EXPECT_EQ(reply["state"]["current"], json({{"image", 3}, {"rectangle", 0}}));

  // Zoom and pan are saved with the session (so unsaved), but are no edit to undo.
  reply = post("view", {{"image", 3}, {"view", 1}, {"x1", 10}, {"x2", 810}, {"y1", 20}, {"y2", 620},
                        {"windowWidth", 800}, {"windowHeight", 600}});
  EXPECT_EQ(reply["state"]["unsaved"], true);
  EXPECT_EQ(reply["state"]["canUndo"], false);
  EXPECT_EQ(reply["state"]["images"][2]["View"], 1);
  EXPECT_EQ(reply["state"]["images"][2]["views"], json::parse(R"([{"view":1,"x1":10,"x2":810,"y1":20,"y2":620}])"));
  EXPECT_EQ(post("view", {{"image", 3}, {"view", 1}, {"x1", 10}, {"x2", 10}, {"y1", 20}, {"y2", 620}}, 400)["error"],
            "a view shows x1 < x2 and y1 < y2");
  EXPECT_EQ(state()["images"][2]["views"][0]["x2"], 810) << "a refused view changes nothing";
}

// The finder was unsure of image 1's rows.
class EditorOnDoubtedRows : public EditorApi {
 protected:
  void prepare() override {
    CoreSession s;
    SessionOptions o;
    ASSERT_TRUE(readSession(s, o, session));
    RowDetection unsure;
    unsure.confidence = 0.5;
    layDetectedRows(s, *s.imageAt(1), unsure, 2400, 1600);
    ASSERT_TRUE(saveSession(s, o, session));
  }
  bool savedRowsNeedChecking(int place) {
    post("save", json::object());
    CoreSession s;
    SessionOptions o;
    EXPECT_TRUE(readSession(s, o, session));
    return rowsNeedChecking(*s.imageAt(place));
  }
};

TEST_F(EditorOnDoubtedRows, MovingARowIsAPersonCheckingThem) {
  post("select", {{"image", 1}, {"rectangle", 1}});
  EXPECT_TRUE(savedRowsNeedChecking(1)) << "looking is not checking";
  post("move", {{"image", 1}, {"rectangle", 1}, {"dx", 5}, {"dy", 0}});
  EXPECT_FALSE(savedRowsNeedChecking(1));
}

// "Detect rows": the rows `slabber detect --image N` lays, found by the same
// routine on a copy of the session read from the same file.
class EditorDetect : public EditorApi {
 protected:
  PhotoRows commandRows(int place, CoreSession& s) {
    SessionOptions o;
    EXPECT_TRUE(readSession(s, o, session));
    return detectRows(s, {place}, 0, 1).front();
  }
  static Corners boxCorners(const CoreRectangle& r) {
    Corners c;
    for (int i = 0; i < r.polygon.n; ++i) c.push_back({r.polygon.px[i], r.polygon.py[i]});
    return c;
  }
};

TEST_F(EditorDetect, LaysTheCommandsRowsAndUndoes) {
  CoreSession expected;
  const PhotoRows found = commandRows(1, expected);
  ASSERT_TRUE(found.read);
  ASSERT_TRUE(found.found.sure()) << found.found.doubt;
  const json before = state()["images"][0];

  json reply = post("detect", {{"image", 1}});
  EXPECT_EQ(messages(reply), std::vector<std::string>{detectionSummary(found)});
  EXPECT_TRUE(detectionSummary(found).starts_with("TRAY_1234_5-1239_5.jpg: " + std::to_string(found.found.rows.size()) +
                                                   " rows across, confidence 0."))
      << detectionSummary(found);
  EXPECT_EQ(reply["changed"], true);
  const json image = reply["state"]["images"][0];
  const CoreImage& want = *expected.imageAt(1);
  ASSERT_EQ(image["rows"].size(), static_cast<std::size_t>(CoreSession::rectangleCount(want)));
  ASSERT_EQ(image["rows"].size(), found.found.rows.size());
  int k = 0;
  for (const CoreRectangle* r : CoreSession::rectangles(const_cast<CoreImage&>(want))) {
    ++k;
    EXPECT_EQ(corners(reply["state"], 1, k), boxCorners(*r)) << "row " << k;
  }
  EXPECT_EQ(image["frame"], json({want.intValue(kIntPixelWidth), want.intValue(kIntPixelHeight)}));
  EXPECT_EQ(image["verdict"], rowVerdict(want));
  EXPECT_TRUE(image["verdict"].get<std::string>().starts_with("rows found 0."));
  EXPECT_EQ(image["checkRows"], false);
  EXPECT_EQ(reply["state"]["unsaved"], true);
  EXPECT_EQ(reply["state"]["canUndo"], true);

  reply = post("undo", json::object());
  EXPECT_EQ(reply["state"]["images"][0]["rows"], before["rows"]);
  EXPECT_EQ(reply["state"]["images"][0]["verdict"], "");
  EXPECT_EQ(reply["state"]["unsaved"], false);
  reply = post("redo", json::object());
  EXPECT_EQ(reply["state"]["images"][0]["rows"], image["rows"]);
  EXPECT_EQ(reply["state"]["images"][0]["verdict"], image["verdict"]);
}

TEST_F(EditorDetect, RefusesAnImageNotInTheSession) {
  const json before = state();
  EXPECT_EQ(post("detect", {{"image", 4}}, 400)["error"], "there is no image 4");
  EXPECT_EQ(post("detect", {{"image", 0}}, 400)["error"], "there is no image 0");
  EXPECT_EQ(post("detect", {{"image", "1"}}, 400)["error"], "\"image\" must be a whole number");
  EXPECT_EQ(post("detect", json::object(), 400)["error"], "\"image\" is missing");
  EXPECT_EQ(state(), before);
}

TEST_F(EditorDetect, NamesAPhotoThatCouldNotBeRead) {
  fs::resize_file(dir.file("TRAY_1239_5-1244_5.jpg"), 100);
  const json before = state()["images"][1];
  const json reply = post("detect", {{"image", 2}});
  const std::vector<std::string> shown = messages(reply);
  ASSERT_GE(shown.size(), 2u);
  EXPECT_EQ(shown[shown.size() - 2], "TRAY_1239_5-1244_5.jpg: not read");
  EXPECT_EQ(shown.back(), "check the rows of TRAY_1239_5-1244_5.jpg (it could not be read)");
  EXPECT_EQ(reply["changed"], false);
  EXPECT_EQ(reply["state"]["images"][1], before);
  EXPECT_EQ(reply["state"]["canUndo"], false);
}

// Image 1 is said to hold more rows than its tray has.
class EditorDetectDoubted : public EditorDetect {
 protected:
  void prepare() override {
    CoreSession s;
    SessionOptions o;
    ASSERT_TRUE(readSession(s, o, session));
    setInteger(s.imageAt(1)->intSetting(kIntCoreNumber), 9);
    ASSERT_TRUE(saveSession(s, o, session));
  }
};

TEST_F(EditorDetectDoubted, ShowsTheVerdictAndLeavesTheRowsUnchecked) {
  CoreSession expected;
  const PhotoRows found = commandRows(1, expected);
  ASSERT_FALSE(found.found.sure());
  const json reply = post("detect", {{"image", 1}});
  const std::string note = checkRowsNote(found);
  EXPECT_EQ(messages(reply), (std::vector<std::string>{detectionSummary(found), note}));
  EXPECT_TRUE(note.starts_with("check the rows of TRAY_1234_5-1239_5.jpg (confidence 0.")) << note;
  EXPECT_TRUE(note.ends_with(", expected 9)")) << note;
  const json image = reply["state"]["images"][0];
  EXPECT_EQ(image["checkRows"], true);
  EXPECT_EQ(image["verdict"], rowVerdict(*expected.imageAt(1)));
  EXPECT_TRUE(image["verdict"].get<std::string>().starts_with("check the rows 0.")) << image["verdict"];
  EXPECT_EQ(image["rows"].size(), found.found.rows.size());
  EXPECT_EQ(image["Core Number"], 9) << "the count given is kept";

  // Saved so: the split holds the photo back until a person has looked.
  post("save", json::object());
  CoreSession saved;
  SessionOptions o;
  ASSERT_TRUE(readSession(saved, o, session));
  EXPECT_TRUE(rowsNeedChecking(*saved.imageAt(1)));
  // Moving one of its rows is that look.
  const json moved = post("move", {{"image", 1}, {"rectangle", 1}, {"dx", 0}, {"dy", 3}});
  EXPECT_EQ(moved["state"]["images"][0]["checkRows"], false);
  EXPECT_EQ(moved["state"]["images"][0]["verdict"], "rows checked by hand");
}

}  // namespace
}  // namespace subsurf::editor
