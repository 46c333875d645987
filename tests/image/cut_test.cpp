// Cutting rows out of a decoded photograph: boxes, clipping, quarter turns,
// flips and straightening angles, each checked against a plain computation.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "host/image/image_messages.h"
#include "host/image/photo.h"
#include "image_test_support.h"

namespace subsurf::image {
namespace {

using namespace testing;

TEST(ClipBox, KeepsThePartOnThePicture) {
  EXPECT_EQ(clipBox({2, 3, 4, 5}, 10, 10), (PixelBox{2, 3, 4, 5}));
  EXPECT_EQ(clipBox({-2, -3, 4, 5}, 10, 10), (PixelBox{0, 0, 2, 2}));
  EXPECT_EQ(clipBox({8, 8, 4, 5}, 10, 10), (PixelBox{8, 8, 2, 2}));
  EXPECT_EQ(clipBox({0, 0, 10, 10}, 10, 10), (PixelBox{0, 0, 10, 10}));
  // Touching the edge from outside is not meeting it.
  EXPECT_TRUE(clipBox({10, 0, 5, 5}, 10, 10).empty());
  EXPECT_TRUE(clipBox({-5, 0, 5, 5}, 10, 10).empty());
  EXPECT_TRUE(clipBox({0, 0, 0, 5}, 10, 10).empty());
  EXPECT_TRUE(clipBox({0, 0, -3, 5}, 10, 10).empty());
  // Far-away boxes do not overflow.
  EXPECT_TRUE(clipBox({2147483000, 0, 2000, 5}, 10, 10).empty());
  EXPECT_EQ(clipBox({-2147483000, 0, 2147483000 + 3, 5}, 10, 10), (PixelBox{0, 0, 3, 5}));
}

class CutTest : public ImageTest {
 protected:
  void SetUp() override {
    ImageTest::SetUp();
    original = patternRaster(40, 30);
    path = dir.file("tray.png");
    saveWithVips(original, path);
    ASSERT_TRUE(Photo::load(path, photo));
  }
  Raster cut(const CutSpec& spec) {
    Raster out;
    Status s = photo.cut(spec, out);
    EXPECT_TRUE(s) << s.message();
    return out;
  }
  Raster original;
  std::string path;
  Photo photo;
};

TEST_F(CutTest, BoxInsideThePhotoGivesExactlyThoseRows) {
  const PixelBox box{5, 7, 20, 6};
  EXPECT_TRUE(samePixels(cut({box}), region(original, box)));
  // Single pixel at the far corner.
  EXPECT_TRUE(samePixels(cut({{39, 29, 1, 1}}), region(original, {39, 29, 1, 1})));
}

TEST_F(CutTest, BoxReachingOutsideIsClippedToThePhoto) {
  const Raster r = cut({{30, -4, 20, 10}});
  EXPECT_TRUE(samePixels(r, region(original, {30, 0, 10, 6})));
  EXPECT_EQ(photo.clippedBox({{30, -4, 20, 10}}), (PixelBox{30, 0, 10, 6}));
}

TEST_F(CutTest, BoxWhollyOutsideIsAnErrorNamingThePhoto) {
  Raster r;
  Status s = photo.cut({{40, 0, 5, 5}}, r);
  EXPECT_EQ(s.message(), "Error converting: " + path +
                             " (the rectangle at (40, 0) of 5 x 5 pixels lies outside the 40 x 30 picture)");
  EXPECT_EQ(host::recordedMessages(), std::vector<std::string>{s.message()});
  EXPECT_FALSE(photo.cut({{0, 0, 0, 10}}, r));
}

TEST_F(CutTest, QuarterTurnsTurnTheCutPieceClockwise) {
  const PixelBox box{3, 4, 11, 5};
  const Raster piece = region(original, box);
  for (int turns : {1, 2, 3, 4, 5, -1, -2}) {
    SCOPED_TRACE(turns);
    CutSpec spec{box};
    spec.quarterTurns = turns;
    EXPECT_TRUE(samePixels(cut(spec), turnedClockwise(piece, turns)));
  }
}

TEST_F(CutTest, FlipsMirrorAfterTurning) {
  const PixelBox box{1, 2, 6, 3};
  CutSpec spec{box};
  spec.quarterTurns = 1;
  spec.flip = Flip::Horizontal;
  const Raster turned = turnedClockwise(region(original, box), 1);
  const Raster r = cut(spec);
  ASSERT_EQ(r.width(), turned.width());
  for (int y = 0; y < r.height(); ++y)
    for (int x = 0; x < r.width(); ++x)
      ASSERT_EQ(0, std::memcmp(r.pixel(x, y), turned.pixel(r.width() - 1 - x, y), 3)) << x << "," << y;

  spec.flip = Flip::Vertical;
  const Raster v = cut(spec);
  for (int y = 0; y < v.height(); ++y) ASSERT_EQ(0, std::memcmp(v.row(y), turned.row(v.height() - 1 - y), v.stride()));
}

TEST_F(CutTest, HalfTurnAngleEqualsTwoQuarterTurnsOfTheWholePhoto) {
  // Turning the photograph about its centre by 180 degrees puts pixel (x, y)
  // at (w - 1 - x, h - 1 - y): the box there holds the mirror of the box here.
  CutSpec spec{{5, 7, 20, 6}};
  spec.angleDegrees = 180.0;
  const PixelBox mirrored{40 - 25, 30 - 13, 20, 6};
  EXPECT_TRUE(samePixels(cut(spec), turnedClockwise(region(original, mirrored), 2)));
  spec.angleDegrees = -180.0;
  EXPECT_TRUE(samePixels(cut(spec), turnedClockwise(region(original, mirrored), 2)));
  spec.angleDegrees = 360.0;  // a whole turn changes nothing
  EXPECT_TRUE(samePixels(cut(spec), region(original, {5, 7, 20, 6})));
}

TEST_F(CutTest, RightAngleOnASquarePhotoEqualsAQuarterTurn) {
  const Raster square = patternRaster(21, 21);
  const std::string squarePath = dir.file("square.tif");
  saveWithVips(square, squarePath);
  Photo sq;
  ASSERT_TRUE(Photo::load(squarePath, sq));
  CutSpec spec{{0, 0, 21, 21}};
  spec.angleDegrees = 90.0;
  Raster r;
  ASSERT_TRUE(sq.cut(spec, r));
  EXPECT_TRUE(samePixels(r, turnedClockwise(square, 1)));
}

TEST_F(CutTest, SmallAngleKeepsTheCentreAndFillsCornersWithBlack) {
  const Raster big = patternRaster(101, 61);
  const std::string bigPath = dir.file("big.tif");
  saveWithVips(big, bigPath);
  Photo p;
  ASSERT_TRUE(Photo::load(bigPath, p));
  CutSpec spec{{0, 0, 101, 61}};
  spec.angleDegrees = 3.0;
  Raster r;
  ASSERT_TRUE(p.cut(spec, r));
  ASSERT_EQ(r.width(), 101);
  ASSERT_EQ(r.height(), 61);
  // The centre pixel stays where it was.
  EXPECT_EQ(0, std::memcmp(r.pixel(50, 30), big.pixel(50, 30), 3));
  // Turning clockwise brings in empty canvas at the top-right corner.
  EXPECT_EQ(r.pixel(100, 0)[0], 0);
  EXPECT_EQ(r.pixel(100, 0)[1], 0);
  // A point off the centre moves the clockwise way: the pixel right of the
  // centre moves down.
  const double a = 3.0 * std::numbers::pi / 180.0;
  const int x = static_cast<int>(std::lround(50 + 40 * std::cos(a)));
  const int y = static_cast<int>(std::lround(30 + 40 * std::sin(a)));
  EXPECT_NEAR(r.pixel(x, y)[0], big.pixel(90, 30)[0], 3);
}

TEST_F(CutTest, NotANumberAngleIsARotationError) {
  CutSpec spec{{0, 0, 5, 5}};
  spec.angleDegrees = std::nan("");
  Raster r;
  EXPECT_EQ(photo.cut(spec, r).message(), "Error rotating: " + path + " (the angle is not a number)");
}

TEST_F(CutTest, OrientedPhotoIsCutInUprightCoordinates) {
  const std::string turnedPath = dir.file("portrait.tif");
  saveWithVips(original, turnedPath, 6);  // camera turned: upright is 30 x 40
  Photo p;
  ASSERT_TRUE(Photo::load(turnedPath, p));
  const Raster upright = turnedClockwise(original, 1);
  const PixelBox box{2, 25, 20, 7};
  Raster r;
  ASSERT_TRUE(p.cut({box}, r));
  EXPECT_TRUE(samePixels(r, region(upright, box)));
}

}  // namespace
}  // namespace subsurf::image

namespace subsurf::image {
namespace {

using namespace testing;

class PhotoMemoryTest : public ImageTest {};

TEST_F(PhotoMemoryTest, MemoryIsHandedOnOnlyWhenNothingUsesItAnyMore) {
  const Raster first = patternRaster(50, 20);
  Raster second(50, 20);
  std::fill(second.bytes().begin(), second.bytes().end(), 9);
  saveWithVips(first, dir.file("first.png"));
  saveWithVips(second, dir.file("second.png"));

  // A turned cut is computed on demand and still needs the first photo's
  // pixels after the photo itself is gone.
  std::unique_ptr<RowSource> pending;
  {
    Photo photo;
    ASSERT_TRUE(Photo::load(dir.file("first.png"), photo));
    CutSpec spec{{0, 0, 50, 20}};
    spec.quarterTurns = 1;
    ASSERT_TRUE(photo.openCut(spec, pending));
  }
  Photo next;
  ASSERT_TRUE(Photo::load(dir.file("second.png"), next));
  Raster late;
  ASSERT_TRUE(readAllRows(*pending, late));
  EXPECT_TRUE(samePixels(late, turnedClockwise(first, 1)));
  pending.reset();

  // Memory that has been handed on holds the new photo, nothing of the old.
  Raster all;
  ASSERT_TRUE(next.cut({{0, 0, 50, 20}}, all));
  EXPECT_TRUE(samePixels(all, second));
  next = Photo();
  Photo third;
  ASSERT_TRUE(Photo::load(dir.file("first.png"), third));
  ASSERT_TRUE(third.cut({{0, 0, 50, 20}}, all));
  EXPECT_TRUE(samePixels(all, first));
  releaseKeptPhotoMemory();
  ASSERT_TRUE(third.cut({{0, 0, 50, 20}}, all));  // a photo in use keeps its memory
  EXPECT_TRUE(samePixels(all, first));
}

}  // namespace
}  // namespace subsurf::image
