// Free-cornered rows: reading corners, refusing outlines no upright rectangle
// maps onto (with messages naming the values), keeping corners in order, and
// dragging one corner alone while upright rectangles keep dragging their
// neighbours.
#include <gtest/gtest.h>

#include <fmt/format.h>

#include "core/core_session.h"
#include "core/free_corners.h"
#include "core/image_settings.h"
#include "core/row_rectangles.h"
#include "host/messages.h"
#include "support/temp_dir.h"

namespace subsurf {
namespace {

FreeCorners corners(int x1, int y1, int x2, int y2, int x3, int y3, int x4, int y4) {
  return FreeCorners{{x1, x2, x3, x4}, {y1, y2, y3, y4}};
}

TEST(FreeCornersText, ReadsEightNumbersRoundingFractions) {
  FreeCorners c;
  std::string problem;
  ASSERT_TRUE(parseCorners(" 10, 20,110.4,22,  108.5 ,80,12,78.6", c, problem)) << problem;
  EXPECT_EQ(c, corners(10, 20, 110, 22, 109, 80, 12, 79));
  EXPECT_EQ(cornersText(c), "10,20,110,22,109,80,12,79");
}

TEST(FreeCornersText, RefusesWrongCountsAndValuesNamingThem) {
  FreeCorners c = corners(1, 2, 3, 4, 5, 6, 7, 8);
  const FreeCorners before = c;
  std::string problem;
  EXPECT_FALSE(parseCorners("1,2,3,4,5,6,7", c, problem));
  EXPECT_EQ(problem, "\"1,2,3,4,5,6,7\" is not x1,y1,x2,y2,x3,y3,x4,y4 (eight numbers of pixels)");
  EXPECT_FALSE(parseCorners("1,2,3,4,5,6,7,8,9", c, problem));
  EXPECT_EQ(problem, "\"1,2,3,4,5,6,7,8,9\" is not x1,y1,x2,y2,x3,y3,x4,y4 (eight numbers of pixels)");
  EXPECT_FALSE(parseCorners("1,2,3,four,5,6,7,8", c, problem));
  EXPECT_EQ(problem, "\"1,2,3,four,5,6,7,8\" is not x1,y1,x2,y2,x3,y3,x4,y4: \"four\" is not a number of pixels");
  EXPECT_FALSE(parseCorners("1,2,3,4,5,,7,8", c, problem));
  EXPECT_EQ(problem, "\"1,2,3,4,5,,7,8\" is not x1,y1,x2,y2,x3,y3,x4,y4: \"\" is not a number of pixels");
  EXPECT_FALSE(parseCorners("1,2,3,4,5,nan,7,8", c, problem));
  EXPECT_EQ(problem, "\"1,2,3,4,5,nan,7,8\" is not x1,y1,x2,y2,x3,y3,x4,y4: \"nan\" is not a finite number of pixels");
  EXPECT_FALSE(parseCorners("inf,2,3,4,5,6,7,8", c, problem));
  EXPECT_EQ(problem, "\"inf,2,3,4,5,6,7,8\" is not x1,y1,x2,y2,x3,y3,x4,y4: \"inf\" is not a finite number of pixels");
  EXPECT_FALSE(parseCorners("1,2,3,4,5,6,7,1e12", c, problem));
  EXPECT_EQ(problem, "\"1,2,3,4,5,6,7,1e12\" is not x1,y1,x2,y2,x3,y3,x4,y4: \"1e12\" is not a finite number of pixels");
  EXPECT_EQ(c, before);  // nothing taken from a refused text
}

TEST(FreeCornersCheck, AcceptsConvexOutlinesUpToThePhotographsEdge) {
  EXPECT_EQ(cornersProblem(corners(0, 0, 200, 0, 200, 100, 0, 100), 1, 200, 100), "");
  EXPECT_EQ(cornersProblem(corners(10, 20, 180, 5, 190, 90, 5, 80), 1, 200, 100), "");
  // Given anticlockwise, or from another corner, it is the same outline.
  EXPECT_EQ(cornersProblem(corners(5, 80, 190, 90, 180, 5, 10, 20), 1, 200, 100), "");
}

TEST(FreeCornersCheck, RefusesCornersOffThePhotograph) {
  EXPECT_EQ(cornersProblem(corners(10, 20, 201, 5, 190, 90, 5, 80), 3, 200, 100),
            "Rectangle 3 (corners 10,20,201,5,190,90,5,80): corner 2 (201,5) lies outside the photo (200 x 100 pixels)");
  EXPECT_EQ(cornersProblem(corners(10, 20, 180, 5, 190, 90, 5, -1), 1, 200, 100),
            "Rectangle 1 (corners 10,20,180,5,190,90,5,-1): corner 4 (5,-1) lies outside the photo (200 x 100 pixels)");
}

TEST(FreeCornersCheck, RefusesDegenerateOutlines) {
  EXPECT_EQ(cornersProblem(corners(10, 20, 180, 5, 10, 20, 5, 80), 2, 200, 100),
            "Rectangle 2 (corners 10,20,180,5,10,20,5,80): corners 1 and 3 are the same point");
  // Corner 2 on the line from corner 1 to corner 3: a triangle.
  EXPECT_EQ(cornersProblem(corners(0, 0, 50, 25, 100, 50, 0, 50), 2, 200, 100),
            "Rectangle 2 (corners 0,0,50,25,100,50,0,50) has no area: corners 1, 2 and 3 lie on one line");
  // All four on one line.
  EXPECT_EQ(cornersProblem(corners(0, 10, 50, 10, 100, 10, 150, 10), 1, 200, 100),
            "Rectangle 1 (corners 0,10,50,10,100,10,150,10) has no area: corners 1, 2 and 4 lie on one line");
}

TEST(FreeCornersCheck, RefusesOutlinesThatCrossThemselves) {
  // A bow tie: corners 3 and 4 swapped.
  EXPECT_EQ(cornersProblem(corners(0, 0, 100, 0, 0, 50, 100, 50), 4, 200, 100),
            "Rectangle 4 (corners 0,0,100,0,0,50,100,50) crosses itself: side 2-3 crosses side 4-1");
  EXPECT_EQ(cornersProblem(corners(0, 0, 100, 50, 100, 0, 0, 50), 4, 200, 100),
            "Rectangle 4 (corners 0,0,100,50,100,0,0,50) crosses itself: side 1-2 crosses side 3-4");
}

TEST(FreeCornersCheck, RefusesOutlinesThatAreNotConvex) {
  // An arrowhead: corner 3 pushed in past the line from 2 to 4.
  EXPECT_EQ(cornersProblem(corners(0, 0, 100, 0, 20, 20, 0, 100), 1, 200, 100),
            "Rectangle 1 (corners 0,0,100,0,20,20,0,100) is not convex: corner 3 points inwards");
}

TEST(FreeCornersOrder, KeepsCornersClockwiseFromTheTopLeft) {
  const FreeCorners expected = corners(10, 20, 180, 5, 190, 90, 5, 80);
  EXPECT_EQ(orderedCorners(expected), expected);
  // Anticlockwise, starting at the bottom-right.
  EXPECT_EQ(orderedCorners(corners(190, 90, 180, 5, 10, 20, 5, 80)), expected);
  // Clockwise, starting at the bottom-left.
  EXPECT_EQ(orderedCorners(corners(5, 80, 10, 20, 180, 5, 190, 90)), expected);
}

class FreeCornerEditing : public ::testing::Test {
 protected:
  void SetUp() override {
    image = session.newImage();
    rectangle = session.newRectangle(*image);
  }
  CoreSession session;
  CoreImage* image = nullptr;
  CoreRectangle* rectangle = nullptr;
};

TEST_F(FreeCornerEditing, SettingCornersMakesTheRectangleFreeCorneredInOrder) {
  setFreeCorners(session, *rectangle, corners(190, 90, 180, 5, 10, 20, 5, 80));
  const Polygon& p = rectangle->polygon;
  EXPECT_TRUE(p.freeCorners);
  ASSERT_EQ(p.n, 4);
  EXPECT_EQ(p.px, (std::vector<int>{10, 180, 190, 5}));
  EXPECT_EQ(p.py, (std::vector<int>{20, 5, 90, 80}));
  EXPECT_TRUE(isConvexQuadrilateral(p));
}

TEST_F(FreeCornerEditing, AFreeCornerMovesAloneAndMayNotMakeTheOutlineConcave) {
  setFreeCorners(session, *rectangle, corners(10, 20, 180, 5, 190, 90, 5, 80));
  EXPECT_EQ(session.moveCorner(*rectangle, 3, 195, 99), 0);
  EXPECT_EQ(rectangle->polygon.px, (std::vector<int>{10, 180, 195, 5}));
  EXPECT_EQ(rectangle->polygon.py, (std::vector<int>{20, 5, 99, 80}));
  // Corner 3 pulled in past the line from corner 2 to corner 4: refused.
  EXPECT_EQ(session.moveCorner(*rectangle, 3, 50, 40), 1);
  EXPECT_EQ(rectangle->polygon.px, (std::vector<int>{10, 180, 195, 5}));
  EXPECT_EQ(rectangle->polygon.py, (std::vector<int>{20, 5, 99, 80}));
  // Onto corner 4: no area, refused.
  EXPECT_EQ(session.moveCorner(*rectangle, 3, 5, 80), 1);
  EXPECT_EQ(rectangle->polygon.px[2], 195);
}

TEST_F(FreeCornerEditing, AnUprightRectangleStillDragsItsNeighbours) {
  ASSERT_EQ(session.makeBands(*image, 1, 200, 100), 0);
  CoreRectangle* upright = session.rectangleAt(*image, 1);
  ASSERT_NE(upright, nullptr);
  ASSERT_FALSE(upright->polygon.freeCorners);
  const std::vector<int> x0 = upright->polygon.px, y0 = upright->polygon.py;
  EXPECT_EQ(session.moveCorner(*upright, 3, x0[2] - 7, y0[2] - 9), 0);
  // Corner 3's neighbours: 4 shares its y, 2 its x.
  EXPECT_EQ(upright->polygon.px, (std::vector<int>{x0[0], x0[1] - 7, x0[2] - 7, x0[3]}));
  EXPECT_EQ(upright->polygon.py, (std::vector<int>{y0[0], y0[1], y0[2] - 9, y0[3] - 9}));
}

TEST_F(FreeCornerEditing, SquaringGivesTheUprightBoxRoundTheCorners) {
  setFreeCorners(session, *rectangle, corners(10, 20, 180, 5, 190, 90, 5, 80));
  squareRectangle(session, *rectangle);
  EXPECT_FALSE(rectangle->polygon.freeCorners);
  EXPECT_EQ(rectangle->polygon.px, (std::vector<int>{5, 190, 190, 5}));
  EXPECT_EQ(rectangle->polygon.py, (std::vector<int>{5, 5, 90, 90}));
}

TEST_F(FreeCornerEditing, CopiesCarryTheChoice) {
  setFreeCorners(session, *rectangle, corners(10, 20, 180, 5, 190, 90, 5, 80));
  CoreRectangle* copy = session.newRectangle(*image);
  CoreSession::copyRectangle(*rectangle, *copy);
  EXPECT_TRUE(copy->polygon.freeCorners);
  EXPECT_EQ(copy->polygon.px, rectangle->polygon.px);
}

TEST(FreeCornerFiles, JsonAndCsvRowsMayBeCornersBesideBoxes) {
  subsurf::testing::TempDir dir;
  host::clearRecorded();
  std::vector<PixelBox> rows;
  ASSERT_TRUE(readBoxes(dir.write("rows.json", "[[0,0,400,100], [10,120,390,110,395,190,5,200],"
                                               " {\"corners\": [[12,210],[392,205],[398,290],[8,296]]}]"),
                        rows))
      << host::recordedMessages().back();
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_FALSE(rows[0].corners);
  ASSERT_TRUE(rows[1].corners);
  EXPECT_EQ(boxText(rows[1]), "10,120,390,110,395,190,5,200");
  EXPECT_EQ(fmt::format("{},{},{},{}", rows[1].x, rows[1].y, rows[1].width, rows[1].height), "5,110,390,90");
  EXPECT_EQ(boxText(rows[2]), "12,210,392,205,398,290,8,296");

  ASSERT_TRUE(readBoxes(dir.write("rows.csv", "x1,y1,x2,y2,x3,y3,x4,y4\n10,120,390,110,395,190,5,200\n0,0,400,100\n"), rows));
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(boxText(rows[0]), "10,120,390,110,395,190,5,200");
  EXPECT_FALSE(rows[1].corners);

  const std::string seven = dir.write("seven.json", "[[1,2,3,4,5,6,7]]");
  EXPECT_FALSE(readBoxes(seven, rows));
  EXPECT_EQ(host::recordedMessages().back(),
            seven + ": box 1 is not [x, y, w, h] or {\"x\", \"y\", \"width\", \"height\"}: [1,2,3,4,5,6,7]");
  const std::string pairs = dir.write("pairs.json", "[{\"corners\": [[1,2],[3,4],[5,6]]}]");
  EXPECT_FALSE(readBoxes(pairs, rows));
  const std::string five = dir.write("five.csv", "1,2,3,4,5\n");
  EXPECT_FALSE(readBoxes(five, rows));
  EXPECT_EQ(host::recordedMessages().back(), five + ", line 1: expected x,y,w,h, found 5 fields: 1,2,3,4,5");
  EXPECT_EQ(rows.size(), 2u);  // untouched
}

TEST_F(FreeCornerEditing, RowsSetFromCornersAreFreeCorneredAndCheckedFirst) {
  RowRectangles rows(session);
  std::vector<PixelBox> given{{0, 0, 400, 100}, boxOfCorners(corners(10, 120, 390, 110, 395, 190, 5, 200))};
  ASSERT_TRUE(rows.set(*image, given, 400, 300));
  ASSERT_EQ(CoreSession::rectangleCount(*image), 2);
  EXPECT_FALSE(session.rectangleAt(*image, 1)->polygon.freeCorners);
  EXPECT_TRUE(session.rectangleAt(*image, 2)->polygon.freeCorners);
  EXPECT_EQ(cornersText(cornersOf(session.rectangleAt(*image, 2)->polygon)), "10,120,390,110,395,190,5,200");
  EXPECT_EQ(image->intValue(kIntCoreNumber), 2);

  host::clearRecorded();
  given[1] = boxOfCorners(corners(10, 120, 390, 110, 5, 200, 395, 190));
  EXPECT_FALSE(rows.set(*image, given, 400, 300));
  EXPECT_EQ(host::recordedMessages(),
            std::vector<std::string>{"Rectangle 2 (corners 10,120,390,110,5,200,395,190) crosses itself: side 2-3 "
                                     "crosses side 4-1"});
  EXPECT_TRUE(session.rectangleAt(*image, 2)->polygon.freeCorners);  // unchanged
}

}  // namespace
}  // namespace subsurf
