// Free-cornered rows in session and template files: read back as saved; laid
// out so that a reader that does not know free corners reads the upright box
// round them; damaged corner rows refused naming the file and line.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include <fmt/format.h>

#include "core/free_corners.h"
#include "session_test_support.h"

namespace subsurf {
namespace {

using namespace testing;

class FreeCornersFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    host::clearRecorded();
    CoreImage* image = session.newImage();
    image->setSourceFile(dir.file("tray.jpg"));
    ASSERT_EQ(session.makeBands(*image, 3, 1200, 900), 0);
    setFreeCorners(session, *session.rectangleAt(*image, 2), FreeCorners{{110, 1150, 1130, 90}, {310, 290, 610, 590}});
    path = dir.file("s.slbs");
    ASSERT_TRUE(saveSession(session, SessionOptions{}, path));
  }

  void rewrite(const std::vector<std::string>& lines) {
    std::ofstream out(path, std::ios::trunc);
    for (const std::string& line : lines) out << line << "\n";
  }

  // The place in the file of the line starting with `start`, after line `from`.
  static std::size_t find(const std::vector<std::string>& lines, const std::string& start, std::size_t from = 0) {
    for (std::size_t k = from; k < lines.size(); ++k)
      if (lines[k].rfind(start, 0) == 0) return k;
    ADD_FAILURE() << "no line starting " << start;
    return lines.size();
  }

  CoreSession session;
  TempDir dir;
  std::string path;
};

TEST_F(FreeCornersFileTest, ReadsBackAsSaved) {
  CoreSession read;
  SessionOptions options;
  ASSERT_TRUE(readSession(read, options, path)) << lastMessage();
  CoreImage& image = *read.imageAt(1);
  const auto saved = CoreSession::rectangles(*session.imageAt(1)), got = CoreSession::rectangles(image);
  ASSERT_EQ(got.size(), 3u);
  expectSame(saved[0]->polygon, got[0]->polygon, "rectangle 1");
  expectSame(saved[2]->polygon, got[2]->polygon, "rectangle 3");
  const CoreRectangle& free = *got[1];
  EXPECT_TRUE(free.polygon.freeCorners);
  // World coordinates come back from the box's, to float precision.
  EXPECT_EQ(free.polygon.wxSet, saved[1]->polygon.wxSet);
  EXPECT_EQ(free.polygon.wySet, saved[1]->polygon.wySet);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(free.polygon.wx[i], saved[1]->polygon.wx[i], 1e-3f * std::fabs(saved[1]->polygon.wx[i]));
    EXPECT_NEAR(free.polygon.wy[i], saved[1]->polygon.wy[i], 1e-3f * std::fabs(saved[1]->polygon.wy[i]));
  }
  EXPECT_EQ(cornersText(cornersOf(free.polygon)), "110,310,1150,290,1130,610,90,590");
  EXPECT_FALSE(CoreSession::rectangles(image)[0]->polygon.freeCorners);
  EXPECT_FALSE(CoreSession::rectangles(image)[2]->polygon.freeCorners);
}

TEST_F(FreeCornersFileTest, CornersFollowTheDisplaySettingsAndVertsHoldTheBoxRoundThem) {
  const auto lines = fileLines(path);
  const std::size_t second = find(lines, "poly num,2");
  ASSERT_LT(second + 17, lines.size());
  EXPECT_EQ(lines[second + 1], "integer scalars,14");
  EXPECT_EQ(lines[second + 2].substr(0, 7), "status,");
  const std::vector<std::string> cornerRows(lines.begin() + static_cast<long>(second) + 8,
                                            lines.begin() + static_cast<long>(second) + 16);
  EXPECT_EQ(cornerRows, (std::vector<std::string>{"corner1_x,1,110,-1,0", "corner1_y,1,310,-1,0",
                                                  "corner2_x,1,1150,-1,0", "corner2_y,1,290,-1,0",
                                                  "corner3_x,1,1130,-1,0", "corner3_y,1,610,-1,0",
                                                  "corner4_x,1,90,-1,0", "corner4_y,1,590,-1,0"}));
  EXPECT_EQ(lines[second + 16],
            "verts,4,90,290,90,290,1150,290,1150,290,1150,610,1150,610,90,610,90,610");
  // Upright rows keep their six settings and their own vertices.
  EXPECT_EQ(lines[find(lines, "poly num,3") + 1], "integer scalars,6");
}

TEST_F(FreeCornersFileTest, AReaderThatDoesNotKnowTheCornerRowsReadsTheUprightBoxRoundThem) {
  // Such a reader sees rows beyond the six display settings whose keys mean
  // nothing to it: the same as these rows under keys of a later version.
  auto lines = fileLines(path);
  for (std::string& line : lines)
    if (line.rfind("corner", 0) == 0) line.replace(0, 6, "later");
  rewrite(lines);
  CoreSession read;
  SessionOptions options;
  ASSERT_TRUE(readSession(read, options, path)) << lastMessage();
  const CoreRectangle& r = *CoreSession::rectangles(*read.imageAt(1))[1];
  EXPECT_FALSE(r.polygon.freeCorners);
  EXPECT_EQ(r.polygon.px, (std::vector<int>{90, 1150, 1150, 90}));
  EXPECT_EQ(r.polygon.py, (std::vector<int>{290, 290, 610, 610}));
  // Squaring the free row in this version gives the same rectangle.
  CoreRectangle squared = *CoreSession::rectangles(*session.imageAt(1))[1];
  squareRectangle(session, squared);
  EXPECT_EQ(squared.polygon.px, r.polygon.px);
  EXPECT_EQ(squared.polygon.py, r.polygon.py);
}

TEST_F(FreeCornersFileTest, MissingOrCrossedCornerRowsAreRefusedNamingTheLine) {
  const auto lines = fileLines(path);
  const std::size_t second = find(lines, "poly num,2");
  const std::size_t verts = find(lines, "verts", second);

  auto missing = lines;
  missing[second + 1] = "integer scalars,13";
  missing.erase(missing.begin() + static_cast<long>(second) + 12);  // corner3_x
  rewrite(missing);
  CoreSession read;
  read.newImage()->setSourceFile("/work/mine.jpg");
  SessionOptions options;
  EXPECT_FALSE(readSession(read, options, path));
  EXPECT_EQ(lastMessage(), fmt::format("{}, line {}: rectangle 2 has 7 of the 8 rows of its free corners", path, verts));
  ASSERT_EQ(read.images().size(), 1u);
  EXPECT_EQ(read.imageAt(1)->sourceFile(), "/work/mine.jpg");

  auto crossed = lines;
  crossed[second + 12] = "corner3_x,1,90,-1,0";  // corners 3 and 4 on top of each other
  crossed[second + 13] = "corner3_y,1,590,-1,0";
  rewrite(crossed);
  EXPECT_FALSE(readSession(read, options, path));
  EXPECT_EQ(lastMessage(),
            fmt::format("{}, line {}: rectangle 2: the free corners 110,310,1150,290,90,590,90,590 do not form a "
                        "convex outline",
                        path, verts + 1));
  EXPECT_EQ(read.imageAt(1)->sourceFile(), "/work/mine.jpg");

  // Absurd values (a damaged file) are refused the same way, without overflow.
  auto absurd = lines;
  absurd[second + 10] = "corner2_x,1,2147483647,-1,0";
  absurd[second + 11] = "corner2_y,1,-2147483647,-1,0";
  rewrite(absurd);
  EXPECT_FALSE(readSession(read, options, path));
  EXPECT_EQ(lastMessage(),
            fmt::format("{}, line {}: rectangle 2: the free corners 110,310,2147483647,-2147483647,1130,610,90,590 do "
                        "not form a convex outline",
                        path, verts + 1));
}

TEST_F(FreeCornersFileTest, TemplatesKeepFreeCorners) {
  RectangleTemplate holder;
  CoreSession::templateFromImage(*session.imageAt(1), holder, 1200, 900);
  const std::string file = dir.file("t.rctml");
  ASSERT_TRUE(saveTemplateFile(holder, file));
  RectangleTemplate read;
  ASSERT_TRUE(readTemplateFile(file, read)) << lastMessage();
  ASSERT_EQ(read.rectangles.size(), 3u);
  EXPECT_TRUE(read.rectangles[1].freeCorners);
  EXPECT_EQ(cornersText(cornersOf(read.rectangles[1])), "110,310,1150,290,1130,610,90,590");
  EXPECT_FALSE(read.rectangles[0].freeCorners);
}

}  // namespace
}  // namespace subsurf
