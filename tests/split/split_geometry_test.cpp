// Row boxes: orientation, shortening to the core present, and the scaling from
// the displayed picture to the photograph file.
#include <gtest/gtest.h>

#include <climits>

#include "core/split_geometry.h"
#include "host/nulls.h"

namespace subsurf::split {
namespace {

TEST(BoundingBox, OfTheOutlineOnPixelCorners) {
  EXPECT_EQ(boundingBox({{110, 40}, {10, 40}, {10, 20}, {110, 20}}), (RowBox{10, 20, 110, 40}));
  EXPECT_EQ(boundingBox({{12, 20}, {110, 18}, {108, 41}, {10, 40}}), (RowBox{10, 18, 110, 41}));  // skewed
  EXPECT_TRUE(boundingBox({{5, 5}}).empty());
  EXPECT_EQ((RowBox{10, 20, 110, 40}).pixelBox(), (image::PixelBox{10, 20, 100, 20}));
}

TEST(Orientation, SettingsOrShapeAndTheTurnThatFollows) {
  const RowBox wide{0, 0, 100, 10}, tall{0, 0, 10, 100}, square{0, 0, 50, 50};
  EXPECT_EQ(decideOrientation(1, 0, tall), (RowOrientation{RowAxis::AlongX, false}));
  EXPECT_EQ(decideOrientation(0, 0, wide), (RowOrientation{RowAxis::AlongY, false}));
  for (int unset : {kIntNull, -1, 2}) {
    EXPECT_EQ(decideOrientation(unset, 0, wide).axis, RowAxis::AlongX) << unset;
    EXPECT_EQ(decideOrientation(unset, 0, tall).axis, RowAxis::AlongY) << unset;
    EXPECT_EQ(decideOrientation(unset, 0, square).axis, RowAxis::AlongX) << unset;
  }
  EXPECT_TRUE(decideOrientation(1, 1, wide).reversed);
  for (int v : {0, 2, kIntNull}) EXPECT_FALSE(decideOrientation(1, v, wide).reversed) << v;
  EXPECT_EQ((RowOrientation{RowAxis::AlongX, false}).quarterTurns(), 0);
  EXPECT_EQ((RowOrientation{RowAxis::AlongX, true}).quarterTurns(), 2);
  EXPECT_EQ((RowOrientation{RowAxis::AlongY, false}).quarterTurns(), 3);  // top to the left
  EXPECT_EQ((RowOrientation{RowAxis::AlongY, true}).quarterTurns(), 1);   // bottom to the left
}

TEST(CoreFraction, ShareOfACoreLengthWithNoUpperLimit) {
  EXPECT_FLOAT_EQ(coreFraction(1000.0f, 1000.5f, 1.0f, true), 0.5f);
  EXPECT_FLOAT_EQ(coreFraction(1000.0f, 1000.5f, 1.0f, false), 1.0f);
  // A row spanning one and a half core lengths is cut half as long again.
  EXPECT_FLOAT_EQ(coreFraction(1000.0f, 1001.5f, 1.0f, true), 1.5f);
  EXPECT_FLOAT_EQ(coreFraction(1000.0f, 1001.5f, 1.0f, false), 1.0f);
  for (float cl : {kRealNull, 0.0f, -1.0f}) EXPECT_FLOAT_EQ(coreFraction(1000.0f, 1000.5f, cl, true), 1.0f) << cl;
  EXPECT_FLOAT_EQ(coreFraction(1000.0f, 1000.0f, 1.0f, true), 0.0f);
  EXPECT_LT(coreFraction(1001.0f, 1000.0f, 1.0f, true), 0.0f);
}

TEST(ShortenRow, KeepsTheShallowEndRoundingHalvesUp) {
  const RowBox along{100, 50, 1100, 150}, column{50, 100, 150, 1100};
  EXPECT_EQ(shortenRow(along, {RowAxis::AlongX, false}, 0.5f), (RowBox{100, 50, 600, 150}));
  EXPECT_EQ(shortenRow(along, {RowAxis::AlongX, true}, 0.5f), (RowBox{600, 50, 1100, 150}));
  EXPECT_EQ(shortenRow(column, {RowAxis::AlongY, false}, 0.25f), (RowBox{50, 100, 150, 350}));
  EXPECT_EQ(shortenRow(column, {RowAxis::AlongY, true}, 0.25f), (RowBox{50, 850, 150, 1100}));
  // (3 - 0) * 0.5 + 0 = 1.5 -> 2; (0 - 3) * 0.5 + 3 = 1.5 -> 2.
  EXPECT_EQ(shortenRow({0, 0, 3, 1}, {RowAxis::AlongX, false}, 0.5f), (RowBox{0, 0, 2, 1}));
  EXPECT_EQ(shortenRow({0, 0, 3, 1}, {RowAxis::AlongX, true}, 0.5f), (RowBox{2, 0, 3, 1}));
  // 0.9999 of 1000 pixels is 999.9 -> 1000: the row stays whole.
  EXPECT_EQ(shortenRow({100, 0, 1100, 10}, {RowAxis::AlongX, false}, 0.9999f), (RowBox{100, 0, 1100, 10}));
  EXPECT_EQ(shortenRow(column, {RowAxis::AlongY, true}, 1.0f), column);
}

TEST(ShortenRow, AFractionAboveOneReachesPastTheRectangleFromItsShallowEnd) {
  const RowBox along{100, 50, 1100, 150}, column{50, 100, 150, 1100};
  EXPECT_EQ(shortenRow(along, {RowAxis::AlongX, false}, 1.5f), (RowBox{100, 50, 1600, 150}));
  EXPECT_EQ(shortenRow(along, {RowAxis::AlongX, true}, 1.5f), (RowBox{-400, 50, 1100, 150}));
  EXPECT_EQ(shortenRow(column, {RowAxis::AlongY, false}, 2.0f), (RowBox{50, 100, 150, 2100}));
  EXPECT_EQ(shortenRow(column, {RowAxis::AlongY, true}, 2.0f), (RowBox{50, -900, 150, 1100}));
  // However far, the end stays within the coordinate limit.
  EXPECT_EQ(shortenRow(along, {RowAxis::AlongX, false}, 1e30f).right, kCoordinateLimit);
  EXPECT_EQ(shortenRow(along, {RowAxis::AlongX, true}, 1e30f).left, -kCoordinateLimit);
}

TEST(BoundingBox, VerticesNearTheIntegerLimitsAreHeldWithoutOverflow) {
  const RowBox box = boundingBox({{INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}});
  EXPECT_EQ(box, (RowBox{-kCoordinateLimit, -kCoordinateLimit, kCoordinateLimit, kCoordinateLimit}));
  EXPECT_EQ(box.width(), 2 * kCoordinateLimit);
  EXPECT_EQ(box.pixelBox().height, 2 * kCoordinateLimit);
  EXPECT_EQ(scaleBox(box, {1e30f, 0.5f}), (RowBox{-kCoordinateLimit, -kCoordinateLimit / 2, kCoordinateLimit,
                                                  kCoordinateLimit / 2}));
}

TEST(SizeFactors, ProportionsTruncationRuleAndReduction) {
  EXPECT_EQ(sizeFactors(6000, 4000, 6000, 4000, 1.0f), (SizeFactors{1.0f, 1.0f}));
  // Portrait file 1.5 shown at 600 / 500 = 1.2 (truncates to 1): y = 1.5 / 1.2.
  EXPECT_EQ(sizeFactors(4000, 6000, 500, 600, 1.0f), (SizeFactors{1.0f, 1.25f}));
  // File 2 shown at 2.5: x = 2.5 / 2, the file's ratio truncating to 2.
  EXPECT_EQ(sizeFactors(4000, 8000, 400, 1000, 1.0f), (SizeFactors{1.25f, 1.0f}));
  // Exactly 1 truncates to 1: the factor applies (file 2, shown 1: y = 2).
  EXPECT_EQ(sizeFactors(1000, 2000, 500, 500, 1.0f), (SizeFactors{1.0f, 2.0f}));
  // A ratio truncating to 0 gives no factor: landscape shown flatter, or shown portrait.
  EXPECT_EQ(sizeFactors(6000, 4000, 600, 300, 1.0f), (SizeFactors{1.0f, 1.0f}));
  EXPECT_EQ(sizeFactors(6000, 4000, 400, 600, 1.0f), (SizeFactors{1.0f, 1.0f}));
  // Divided by the display reduction.
  EXPECT_EQ(sizeFactors(6000, 4000, 6000, 4000, 0.25f), (SizeFactors{4.0f, 4.0f}));
  EXPECT_EQ(sizeFactors(4000, 6000, 500, 600, 0.5f), (SizeFactors{2.0f, 2.5f}));
  // Unrecorded shown size or reduction: none.
  EXPECT_EQ(sizeFactors(6000, 4000, 0, 0, 1.0f), (SizeFactors{1.0f, 1.0f}));
  EXPECT_EQ(sizeFactors(4000, 6000, -1, 600, 0.0f), (SizeFactors{1.0f, 1.0f}));
  EXPECT_EQ(sizeFactors(4000, 6000, 400, 600, kRealNull), (SizeFactors{1.0f, 1.0f}));
}

TEST(ScaleBox, EachAxisByItsFactorRoundedHalfUp) {
  EXPECT_EQ(scaleBox({10, 20, 110, 40}, {2.0f, 1.25f}), (RowBox{20, 25, 220, 50}));
  EXPECT_EQ(scaleBox({3, 2, 5, 6}, {1.25f, 1.25f}), (RowBox{4, 3, 6, 8}));  // 3.75 -> 4, 2.5 -> 3
}

}  // namespace
}  // namespace subsurf::split
