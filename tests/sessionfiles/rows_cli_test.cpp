// slabber rows, run as a user runs it: boxes from --set and from files become
// the photo's rows in the saved session, the split then cuts exactly those
// rows, and refused boxes leave the session file as it was.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "host/image/image_writer.h"
#include "host/image/raster.h"
#include "session_test_support.h"
#include "support/run_program.h"

namespace subsurf {
namespace {

namespace fs = std::filesystem;
using subsurf::testing::CommandRun;
using subsurf::testing::TempDir;

using subsurf::testing::shellQuoted;

class RowsCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    program = subsurf::testing::builtProgram("slabber");
    ASSERT_TRUE(fs::exists(program)) << program << " has not been built";
    for (const char* name : {"TRAY_1000_0-1005_0.jpg", "TRAY_1005_0-1010_0.jpg"}) {
      image::Raster r(400, 300);
      std::fill(r.bytes().begin(), r.bytes().end(), std::uint8_t{128});
      ASSERT_TRUE(image::writeImage(r.view(), dir.file(name), image::ImageFormat::Jpeg));
    }
    const CommandRun made = slabber({"new", "s.slbs", "TRAY_1000_0-1005_0.jpg", "TRAY_1005_0-1010_0.jpg", "--rows",
                                     "5", "--depths-from-names"});
    ASSERT_EQ(made.status, 0) << made.err;
  }

  CommandRun slabber(const std::vector<std::string>& args) {
    std::string command = "cd " + shellQuoted(dir.path()) + " && SUBSURF_USERLIB=" + shellQuoted(dir.file("userlib")) + " " +
                          shellQuoted(program.string());
    for (const std::string& a : args) command.append(" ").append(shellQuoted(a));
    return subsurf::testing::runCommand(command);
  }

  // The outlines of image `place` in the saved session, as "x,y x,y x,y x,y".
  std::vector<std::string> savedOutlines(int place) {
    CoreSession session;
    SessionOptions options;
    std::vector<std::string> out;
    if (!readSession(session, options, dir.file("s.slbs"))) return out;
    for (CoreRectangle* r : CoreSession::rectangles(*session.imageAt(place))) {
      std::string s;
      for (int i = 0; i < r->polygon.n; ++i) {
        if (i) s += ' ';
        s += std::to_string(r->polygon.px[i]);
        s += ',';
        s += std::to_string(r->polygon.py[i]);
      }
      out.push_back(s);
    }
    return out;
  }

  TempDir dir;
  fs::path program;
};

TEST_F(RowsCommand, SetBoxesAreSavedAndTheTrayLaidOutAgain) {
  const CommandRun run = slabber({"rows", "s.slbs", "--image", "2", "--set", "20,30,360,100", "--set", "20,150,360,100"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "s.slbs: image 2 has 2 rows\n"
            "row depths laid out again as 2 equal parts of 1005.00 - 1010.00\n"
            "  row  1: 20,30,360,100        1005.00 - 1007.50\n"
            "  row  2: 20,150,360,100       1007.50 - 1010.00\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(savedOutlines(2), (std::vector<std::string>{"20,30 380,30 380,130 20,130", "20,150 380,150 380,250 20,250"}));
  EXPECT_EQ(savedOutlines(1).size(), 5u);  // the other photo keeps its rows

  // The split cuts exactly those rows, named by the new depths.
  const CommandRun split = slabber({"split", "s.slbs", "--out", "rows"});
  ASSERT_EQ(split.status, 0) << split.err;
  std::vector<std::string> cut;
  for (const auto& e : fs::directory_iterator(dir.file("rows")))
    if (e.path().filename().string().find("1007") != std::string::npos) cut.push_back(e.path().filename().string());
  EXPECT_EQ(cut.size(), 2u) << "the rows ending and starting at 1007.50";
}

TEST_F(RowsCommand, BoxesFromJsonAndCsvFiles) {
  dir.write("found.json", "[{\"x\":0,\"y\":0,\"width\":400,\"height\":150},[0,150,400,150]]");
  CommandRun run = slabber({"rows", "s.slbs", "--image", "1", "--from", "found.json"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(savedOutlines(1), (std::vector<std::string>{"0,0 400,0 400,150 0,150", "0,150 400,150 400,300 0,300"}));
  dir.write("found.csv", "x,y,w,h\n0,0,400,100\n0,100,400,100\n0,200,400,100\n");
  run = slabber({"rows", "s.slbs", "--image", "1", "--from", "found.csv"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(savedOutlines(1).size(), 3u);
}

TEST_F(RowsCommand, RefusedInputLeavesTheSessionFileAsItWas) {
  const std::string before = TempDir::read(dir.file("s.slbs"));
  dir.write("bad.csv", "0,0,400,100\n0,100,400\n");
  const struct {
    std::vector<std::string> args;
    std::string err;
  } cases[] = {
      {{"--image", "1", "--set", "0,0,401,100"}, "slabber: Rectangle 1 (0,0,401,100) lies outside the photo (400 x 300 pixels)\n"},
      {{"--image", "1", "--set", "0,0,100,100", "--set", "0,100,0,100"}, "slabber: Rectangle 2 (0,100,0,100) has no width\n"},
      {{"--image", "1", "--set", "0,0,100"}, "slabber: --set \"0,0,100\" is not x,y,w,h (four numbers of pixels)\n"},
      {{"--image", "3", "--set", "0,0,100,100"}, "slabber: Image 3 is not in s.slbs (it holds 2 images)\n"},
      {{"--image", "1", "--from", "bad.csv"}, "slabber: bad.csv, line 2: expected x,y,w,h, found 3 fields: 0,100,400\n"},
      {{"--image", "1"}, "slabber: give the rows with --set x,y,w,h or --from FILE\n"},
  };
  for (const auto& c : cases) {
    std::vector<std::string> args = {"rows", "s.slbs"};
    args.insert(args.end(), c.args.begin(), c.args.end());
    SCOPED_TRACE(c.err);
    const CommandRun run = slabber(args);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, c.err);
    EXPECT_EQ(run.out, "");
  }
  EXPECT_EQ(slabber({"rows", "s.slbs", "--image", "1", "--set", "0,0,1,1", "--from", "bad.csv"}).status, 2);
  EXPECT_EQ(TempDir::read(dir.file("s.slbs")), before);
  EXPECT_EQ(dir.list(), (std::vector<std::string>{"TRAY_1000_0-1005_0.jpg", "TRAY_1005_0-1010_0.jpg", "bad.csv", "s.slbs"}));
}

}  // namespace
}  // namespace subsurf
