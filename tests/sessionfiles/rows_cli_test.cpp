// slabber rows, run as a user runs it: boxes from --set and from files become
// the photo's rows in the saved session, the split then cuts exactly those
// rows, and refused boxes leave the session file as it was.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "core/image_settings.h"
#include "host/image/image_writer.h"
#include "host/image/photo.h"
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

  // Runs "slabber rows s.slbs" with each case's arguments, expecting exit
  // status 2, the case's message on stderr and nothing on stdout.
  struct Refused {
    std::vector<std::string> args;
    std::string err;
  };
  void expectRefused(const std::vector<Refused>& cases) {
    for (const Refused& c : cases) {
      std::vector<std::string> args = {"rows", "s.slbs"};
      args.insert(args.end(), c.args.begin(), c.args.end());
      SCOPED_TRACE(c.err);
      const CommandRun run = slabber(args);
      EXPECT_EQ(run.status, 2);
      EXPECT_EQ(run.err, c.err);
      EXPECT_EQ(run.out, "");
    }
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
  expectRefused({
      {{"--image", "1", "--set", "0,0,401,100"}, "slabber: Rectangle 1 (0,0,401,100) lies outside the photo (400 x 300 pixels)\n"},
      {{"--image", "1", "--set", "0,0,100,100", "--set", "0,100,0,100"}, "slabber: Rectangle 2 (0,100,0,100) has no width\n"},
      {{"--image", "1", "--set", "0,0,100"}, "slabber: --set \"0,0,100\" is not x,y,w,h (four numbers of pixels)\n"},
      {{"--image", "3", "--set", "0,0,100,100"}, "slabber: Image 3 is not in s.slbs (it holds 2 images)\n"},
      {{"--image", "1", "--from", "bad.csv"}, "slabber: bad.csv, line 2: expected x,y,w,h, found 3 fields: 0,100,400\n"},
      {{"--image", "1"}, "slabber: give the rows with --set x,y,w,h or --from FILE (or accept them with --checked)\n"},
  });
  EXPECT_EQ(slabber({"rows", "s.slbs", "--image", "1", "--set", "0,0,1,1", "--from", "bad.csv"}).status, 2);
  EXPECT_EQ(TempDir::read(dir.file("s.slbs")), before);
  EXPECT_EQ(dir.list(), (std::vector<std::string>{"TRAY_1000_0-1005_0.jpg", "TRAY_1005_0-1010_0.jpg", "bad.csv", "s.slbs"}));
}

TEST_F(RowsCommand, OneRowGetsFreeCornersAndGoesBackToARectangle) {
  CommandRun run = slabber({"rows", "s.slbs", "--image", "1", "--row", "2", "--corners", "30,70,380,55,390,118,20,122"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "s.slbs: image 1 row 2 has free corners 30,70,380,55,390,118,20,122\n");
  std::vector<std::string> outlines = savedOutlines(1);
  ASSERT_EQ(outlines.size(), 5u);
  EXPECT_EQ(outlines[1], "30,70 380,55 390,118 20,122");
  EXPECT_EQ(outlines[0], "0,0 400,0 400,60 0,60");  // the others as they were

  run = slabber({"show", "s.slbs", "--rows"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.out.find("row  2: 1001.00 - 1002.00  free corners 30,70,380,55,390,118,20,122\n"), std::string::npos)
      << run.out;
  EXPECT_NE(run.out.find("row  1: 1000.00 - 1001.00\n"), std::string::npos) << run.out;
  run = slabber({"show", "s.slbs", "--json"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.out.find("\"outline\": \"free corners\""), std::string::npos) << run.out;

  // The split straightens it: as wide as its longer long side, as high as its longer short side.
  run = slabber({"split", "s.slbs", "--out", "rows"});
  ASSERT_EQ(run.status, 0) << run.err;
  image::PixelSize size;
  ASSERT_TRUE(image::readPixelSize(dir.file("rows/TRAY_1000_0-1005_0_WL_01001_00-01002_00.bmp"), size));
  EXPECT_EQ(size.width, 370);   // from (20,122) to (390,118)
  EXPECT_EQ(size.height, 64);   // from (380,55) to (390,118)

  run = slabber({"rows", "s.slbs", "--image", "1", "--row", "2", "--square"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "s.slbs: image 1 row 2 is an upright rectangle 20,55,370,67\n");
  EXPECT_EQ(savedOutlines(1)[1], "20,55 390,55 390,122 20,122");
}

TEST_F(RowsCommand, RefusedCornersLeaveTheSessionFileAsItWas) {
  const std::string before = TempDir::read(dir.file("s.slbs"));
  expectRefused({
      {{"--image", "1", "--row", "2", "--corners", "30,70,380,55,390,118,20"},
       "slabber: --corners \"30,70,380,55,390,118,20\" is not x1,y1,x2,y2,x3,y3,x4,y4 (eight numbers of pixels)\n"},
      {{"--image", "1", "--row", "2", "--corners", "30,70,380,55,390,inf,20,122"},
       "slabber: --corners \"30,70,380,55,390,inf,20,122\" is not x1,y1,x2,y2,x3,y3,x4,y4: \"inf\" is not a finite "
       "number of pixels\n"},
      {{"--image", "1", "--row", "2", "--corners", "30,70,380,55,401,118,20,122"},
       "slabber: Rectangle 2 (corners 30,70,380,55,401,118,20,122): corner 3 (401,118) lies outside the photo (400 x "
       "300 pixels)\n"},
      {{"--image", "1", "--row", "2", "--corners", "30,70,380,55,20,122,390,118"},
       "slabber: Rectangle 2 (corners 30,70,380,55,20,122,390,118) crosses itself: side 2-3 crosses side 4-1\n"},
      {{"--image", "1", "--row", "2", "--corners", "30,70,380,70,200,70,20,122"},
       "slabber: Rectangle 2 (corners 30,70,380,70,200,70,20,122) has no area: corners 1, 2 and 3 lie on one line\n"},
      {{"--image", "1", "--row", "6", "--corners", "30,70,380,55,390,118,20,122"},
       "slabber: Image 1 has 5 rows; there is no row 6\n"},
      {{"--image", "1", "--row", "2"}, "slabber: give the row's outline with --corners x1,y1,x2,y2,x3,y3,x4,y4 or --square\n"},
  });
  EXPECT_EQ(TempDir::read(dir.file("s.slbs")), before);
  // Rows drawn on the photo shown at another size: one row alone cannot be
  // given in the photo's own pixels among them.
  {
    CoreSession session;
    SessionOptions options;
    ASSERT_TRUE(readSession(session, options, dir.file("s.slbs")));
    setInteger(session.imageAt(2)->intSetting(kIntPixelWidth), 200);
    setInteger(session.imageAt(2)->intSetting(kIntPixelHeight), 150);
    ASSERT_TRUE(saveSession(session, options, dir.file("s.slbs")));
  }
  const std::string shown = TempDir::read(dir.file("s.slbs"));
  expectRefused({{{"--image", "2", "--row", "1", "--corners", "30,70,380,55,390,118,20,122"},
                  "slabber: The rows of image 2 were drawn on the photo shown at another size; give all its rows "
                  "with --set or --from\n"}});
  EXPECT_EQ(TempDir::read(dir.file("s.slbs")), shown);
  // --corners needs --row, and --row does not go with --set.
  EXPECT_NE(slabber({"rows", "s.slbs", "--image", "1", "--corners", "30,70,380,55,390,118,20,122"}).status, 0);
  EXPECT_NE(slabber({"rows", "s.slbs", "--image", "1", "--row", "1", "--set", "0,0,10,10", "--square"}).status, 0);
  EXPECT_EQ(TempDir::read(dir.file("s.slbs")), shown);
}

}  // namespace
}  // namespace subsurf
