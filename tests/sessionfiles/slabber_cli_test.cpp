// The slabber session commands, run as a user runs them: the built program
// on photographs made in a scratch folder, checking what it prints, its exit
// status and the session files it leaves.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <fmt/format.h>

#include "host/image/image_writer.h"
#include "host/image/raster.h"
#include "session_test_support.h"
#include "support/run_program.h"

namespace subsurf {
namespace {

using namespace testing;
namespace fs = std::filesystem;

using Outcome = subsurf::testing::CommandRun;

std::string quoted(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

class SlabberCliTest : public ::testing::Test {
 protected:
  void SetUp() override {
    program = subsurf::testing::builtProgram("slabber");
    ASSERT_TRUE(fs::exists(program)) << program << " has not been built";
  }

  // Runs slabber with the arguments, in the scratch folder, with a scratch
  // user library.
  Outcome slabber(const std::vector<std::string>& args) {
    std::string command = "cd " + quoted(dir.path()) + " && SUBSURF_USERLIB=" + quoted(dir.file("userlib")) + " " +
                          quoted(program.string());
    for (const std::string& a : args) command += " " + quoted(a);
    return subsurf::testing::runCommand(command);
  }

  // A grey JPEG of the given size.
  std::string photo(const std::string& name, int width = 400, int height = 300) {
    image::Raster r(width, height);
    std::fill(r.bytes().begin(), r.bytes().end(), std::uint8_t{128});
    const std::string path = dir.file(name);
    EXPECT_TRUE(image::writeImage(r.view(), path, image::ImageFormat::Jpeg));
    return path;
  }

  // Three 1.5 m trays, one after another down the hole.
  void threeTrays() {
    for (const std::string& t : trays) photo(t);
  }
  const std::vector<std::string> trays = {"TRAY_1234_5-1236_0.jpg", "TRAY_1236_0-1237_5.jpg",
                                          "TRAY_1237_5-1239_0.jpg"};

  std::vector<std::string> newArgs(const std::vector<std::string>& extra) {
    std::vector<std::string> a = {"new", "s.slbs"};
    a.insert(a.end(), trays.begin(), trays.end());
    a.insert(a.end(), extra.begin(), extra.end());
    return a;
  }

  // The line of `show` for image `place`.
  static std::string imageLine(const std::string& out, int place) {
    std::istringstream in(out);
    const std::string start = fmt::format("{:3d}  ", place);
    for (std::string line; std::getline(in, line);)
      if (line.rfind(start, 0) == 0) return line;
    return {};
  }

  static std::vector<std::string> words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> w;
    for (std::string s; in >> s;) w.push_back(s);
    return w;
  }

  TempDir dir;
  fs::path program;
};

TEST_F(SlabberCliTest, NewSessionShowsTheDepthsParsedFromTheFileNames) {
  threeTrays();
  const Outcome made = slabber(newArgs({"--rows", "5", "--depths-from-names"}));
  ASSERT_EQ(made.status, 0) << made.err;
  EXPECT_EQ(made.out, "s.slbs: 3 images, 15 rows\n");

  const Outcome shown = slabber({"show", "s.slbs"});
  ASSERT_EQ(shown.status, 0) << shown.err;
  EXPECT_EQ(shown.out.substr(0, shown.out.find('\n')), "s.slbs: 3 images");
  // file, light, top, base, core length (1.5 m over 5 rows), cores, rectangles
  EXPECT_EQ(words(imageLine(shown.out, 1)),
            (std::vector<std::string>{"1", trays[0], "WL", "1234.50", "1236.00", "0.30", "5", "5"}));
  EXPECT_EQ(words(imageLine(shown.out, 2)),
            (std::vector<std::string>{"2", trays[1], "WL", "1236.00", "1237.50", "0.30", "5", "5"}));
  EXPECT_EQ(words(imageLine(shown.out, 3)),
            (std::vector<std::string>{"3", trays[2], "WL", "1237.50", "1239.00", "0.30", "5", "5"}));

  const Outcome rows = slabber({"show", "s.slbs", "--rows"});
  ASSERT_EQ(rows.status, 0);
  EXPECT_NE(rows.out.find("row  1: 1234.50 - 1234.80\n"), std::string::npos) << rows.out;
  EXPECT_NE(rows.out.find("row  5: 1235.70 - 1236.00\n"), std::string::npos) << rows.out;
  EXPECT_NE(rows.out.find("row  5: 1238.70 - 1239.00\n"), std::string::npos) << rows.out;
}

TEST_F(SlabberCliTest, NewSessionSurvivesARoundTripFieldForField) {
  threeTrays();
  ASSERT_EQ(slabber(newArgs({"--rows", "5", "--depths-from-names", "--uv"})).status, 0);
  CoreSession session;
  SessionOptions options;
  ASSERT_TRUE(readSession(session, options, dir.file("s.slbs"))) << lastMessage();
  ASSERT_EQ(session.imageCount(), 3);
  CoreImage& first = *session.imageAt(1);
  EXPECT_EQ(first.sourceFile(), dir.file(trays[0]));
  EXPECT_EQ(first.intValue(kIntUV), 1);
  EXPECT_EQ(first.intValue(kIntPixelWidth), 400);  // the size the split scales from
  EXPECT_EQ(first.intValue(kIntPixelHeight), 300);
  ASSERT_EQ(CoreSession::rectangleCount(first), 5);
  EXPECT_EQ(session.rectangleAt(first, 5)->polygon.py, (std::vector<int>{240, 240, 300, 300}));
  // Photographs beside the session are kept by their names alone.
  EXPECT_NE(TempDir::read(dir.file("s.slbs")).find("image file,TRAY_1234_5-1236_0.jpg\n"), std::string::npos);

  // Saved again, the file is the same byte for byte (so it reads back the same).
  ASSERT_TRUE(saveSession(session, options, dir.file("again.slbs")));
  EXPECT_EQ(TempDir::read(dir.file("s.slbs")), TempDir::read(dir.file("again.slbs")));
}

TEST_F(SlabberCliTest, NamesWithoutAnIntervalFollowTheTrayBefore) {
  photo("TRAY_1234_5-1236_0.jpg");
  photo("tray_two.jpg");
  const Outcome made = slabber({"new", "s", "TRAY_1234_5-1236_0.jpg", "tray_two.jpg", "--rows", "3",
                            "--depths-from-names"});
  EXPECT_EQ(made.status, 0) << made.err;
  EXPECT_EQ(made.err, "slabber: tray_two.jpg: no depth interval in the file name\n");
  ASSERT_TRUE(fs::exists(dir.file("s.slbs")));  // ".slbs" added
  const Outcome shown = slabber({"show", "s.slbs"});
  EXPECT_EQ(words(imageLine(shown.out, 2)),
            (std::vector<std::string>{"2", "tray_two.jpg", "WL", "1236.00", "1237.50", "0.50", "3", "3"}));
}

TEST_F(SlabberCliTest, PhotographsLeftWithoutDepthsGiveExitStatusOne) {
  photo("first.jpg");
  photo("TRAY_1234_5-1236_0.jpg");
  const Outcome made = slabber({"new", "s.slbs", "first.jpg", "TRAY_1234_5-1236_0.jpg", "--depths-from-names"});
  EXPECT_EQ(made.status, 1);
  EXPECT_NE(made.err.find("slabber: 1 image without depths"), std::string::npos) << made.err;
  const Outcome shown = slabber({"show", "s.slbs"});
  EXPECT_EQ(words(imageLine(shown.out, 1)),
            (std::vector<std::string>{"1", "first.jpg", "WL", "-", "-", "-", "-", "0"}));
  // Without rectangles the rows offered for an unset number are five.
  EXPECT_EQ(words(imageLine(shown.out, 2))[6], "5");
}

TEST_F(SlabberCliTest, TypedDepthsAreCarriedOverTheTrays) {
  threeTrays();
  const Outcome made = slabber(newArgs({"--rows", "4", "--top", "100", "--base", "102", "--cores", "4"}));
  ASSERT_EQ(made.status, 0) << made.err;
  const Outcome shown = slabber({"show", "s.slbs"});
  EXPECT_EQ(words(imageLine(shown.out, 1))[3], "100.00");
  EXPECT_EQ(words(imageLine(shown.out, 3))[3], "104.00");
  EXPECT_EQ(words(imageLine(shown.out, 3))[4], "106.00");
  EXPECT_EQ(words(imageLine(shown.out, 3))[5], "0.50");
}

TEST_F(SlabberCliTest, ImpossibleDepthsAndBadArgumentsExitWithTwoAndWriteNothing) {
  threeTrays();
  Outcome r = slabber(newArgs({"--top", "102", "--base", "102"}));
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: Error - Top depth >= Base Depth!\n");
  EXPECT_FALSE(fs::exists(dir.file("s.slbs")));

  photo("TRAY_1236_0-1234_5.jpg");
  r = slabber({"new", "s.slbs", "TRAY_1236_0-1234_5.jpg", "--depths-from-names"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: TRAY_1236_0-1234_5.jpg: Error - Top depth >= Base Depth!\n");
  EXPECT_FALSE(fs::exists(dir.file("s.slbs")));

  r = slabber({"new", "s.slbs", "missing.jpg"});
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("Error loading"), std::string::npos) << r.err;
  EXPECT_FALSE(fs::exists(dir.file("s.slbs")));

  EXPECT_EQ(slabber(newArgs({"--rows", "5", "--template", "five"})).status, 2);
  EXPECT_EQ(slabber(newArgs({"--rows", "0"})).status, 2);
  EXPECT_EQ(slabber(newArgs({"--top", "100"})).status, 2);  // --top needs --base
  EXPECT_EQ(slabber({"new", "s.slbs"}).status, 2);          // no photographs
  EXPECT_EQ(slabber({"show"}).status, 2);
  EXPECT_EQ(slabber({"show", "none.slbs"}).status, 2);
  EXPECT_FALSE(fs::exists(dir.file("s.slbs")));
}

TEST_F(SlabberCliTest, ExistingSessionIsReplacedOnlyWhenForced) {
  threeTrays();
  ASSERT_EQ(slabber(newArgs({"--rows", "2"})).status, 0);
  const std::string before = TempDir::read(dir.file("s.slbs"));
  const Outcome refused = slabber(newArgs({"--rows", "3"}));
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.err, "slabber: s.slbs already exists; give --force to replace it\n");
  EXPECT_EQ(TempDir::read(dir.file("s.slbs")), before);
  EXPECT_EQ(slabber(newArgs({"--rows", "3", "--force"})).status, 0);
  EXPECT_NE(TempDir::read(dir.file("s.slbs")), before);
}

TEST_F(SlabberCliTest, DepthsCommandRefusesWithoutTouchingTheFileElseCarriesAndSaves) {
  threeTrays();
  ASSERT_EQ(slabber(newArgs({"--rows", "5", "--depths-from-names"})).status, 0);
  const std::string before = TempDir::read(dir.file("s.slbs"));
  Outcome r = slabber({"depths", "s.slbs", "--from", "4", "--top", "1", "--base", "2"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: Image 4 is not in s.slbs (it holds 3 images)\n");
  r = slabber({"depths", "s.slbs", "--from", "0", "--top", "1", "--base", "2"});
  EXPECT_EQ(r.status, 2);
  r = slabber({"depths", "s.slbs", "--from", "1", "--top", "5", "--base", "2"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: Error - Top depth >= Base Depth!\n");
  r = slabber({"depths", "s.slbs", "--from", "1", "--top", "deep", "--base", "2"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(TempDir::read(dir.file("s.slbs")), before);

  r = slabber({"depths", "s.slbs", "--from", "2", "--top", "2000", "--base", "2001.5"});
  ASSERT_EQ(r.status, 0) << r.err;
  const Outcome shown = slabber({"show", "s.slbs", "--rows"});
  EXPECT_EQ(words(imageLine(shown.out, 1))[3], "1234.50");  // before the run: untouched
  EXPECT_EQ(words(imageLine(shown.out, 2))[3], "2000.00");
  EXPECT_EQ(words(imageLine(shown.out, 2))[4], "2001.50");
  EXPECT_EQ(words(imageLine(shown.out, 3))[3], "2001.50");
  EXPECT_EQ(words(imageLine(shown.out, 3))[4], "2003.00");
  EXPECT_NE(shown.out.find("row  1: 2000.00 - 2000.30\n"), std::string::npos) << shown.out;
}

TEST_F(SlabberCliTest, DamagedSessionIsReportedWithItsLine) {
  threeTrays();
  ASSERT_EQ(slabber(newArgs({"--rows", "5"})).status, 0);
  auto lines = fileLines(dir.file("s.slbs"));
  lines.resize(20);
  dir.write("cut.slbs", joinLines(lines, lines.size()));
  const Outcome r = slabber({"show", "cut.slbs"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err.rfind("slabber: cut.slbs, line 21: the file ends where", 0), 0u) << r.err;
  const Outcome d = slabber({"depths", "cut.slbs", "--from", "1", "--top", "1", "--base", "2"});
  EXPECT_EQ(d.status, 2);
  EXPECT_EQ(joinLines(fileLines(dir.file("cut.slbs")), 100), joinLines(lines, lines.size()));
}

TEST_F(SlabberCliTest, TemplateLibrary) {
  Outcome r = slabber({"templates", "list"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "slabber: No templates defined\n");

  threeTrays();
  ASSERT_EQ(slabber(newArgs({"--rows", "5"})).status, 0);
  r = slabber({"templates", "save", "", "--from", "s.slbs", "--image", "1"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: Rectangle template must be given a name!\n");
  r = slabber({"templates", "save", "five", "--from", "s.slbs", "--image", "9"});
  EXPECT_EQ(r.status, 2);

  r = slabber({"templates", "save", "five", "--from", "s.slbs", "--image", "1", "--description", "Five bands"});
  ASSERT_EQ(r.status, 0) << r.err;
  r = slabber({"templates", "list"});
  EXPECT_EQ(r.out, "five  Five bands\n");

  r = slabber({"templates", "show", "five"});
  ASSERT_EQ(r.status, 0);
  EXPECT_NE(r.out.find("description: Five bands\n"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("drawn on: 400 x 300 pixels\n"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("rectangles: 5\n"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("  1: (0,0) (400,0) (400,60) (0,60)\n"), std::string::npos) << r.out;

  r = slabber({"templates", "show", "six"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: Could not open template file!\n");

  // Laid on a photograph twice the size, the template is scaled to it.
  photo("TRAY_1239_0-1240_5.jpg", 800, 600);
  r = slabber({"new", "big.slbs", "TRAY_1239_0-1240_5.jpg", "--template", "five", "--depths-from-names"});
  ASSERT_EQ(r.status, 0) << r.err;
  CoreSession session;
  SessionOptions options;
  ASSERT_TRUE(readSession(session, options, dir.file("big.slbs")));
  CoreImage& image = *session.imageAt(1);
  ASSERT_EQ(CoreSession::rectangleCount(image), 5);
  EXPECT_EQ(image.rectangles->polygon.px, (std::vector<int>{0, 800, 800, 0}));
  EXPECT_EQ(image.rectangles->polygon.py, (std::vector<int>{0, 0, 120, 120}));
  EXPECT_EQ(image.intValue(kIntCoreNumber), 5);
  EXPECT_EQ(image.realValue(kRealTop), 1239.0f);

  EXPECT_EQ(slabber({"new", "x.slbs", "TRAY_1239_0-1240_5.jpg", "--template", "six"}).status, 2);
  EXPECT_FALSE(fs::exists(dir.file("x.slbs")));
}

}  // namespace
}  // namespace subsurf
