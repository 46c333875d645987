// Row boxes: orientation, shortening to the core present, and the scaling from
// the displayed picture to the photograph file.
#include <gtest/gtest.h>

#include "core/split_geometry.h"
#include "host/nulls.h"

namespace subsurf::split {
namespace {

TEST(BoundingBox, OfFourCornersInAnyOrder) {
  EXPECT_EQ(boundingBox({{10, 20}, {110, 20}, {110, 40}, {10, 40}}), (RowBox{10, 20, 110, 40}));
  EXPECT_EQ(boundingBox({{110, 40}, {10, 40}, {10, 20}, {110, 20}}), (RowBox{10, 20, 110, 40}));
  // A slightly skewed outline: the box holds all of it.
  EXPECT_EQ(boundingBox({{12, 20}, {110, 18}, {108, 41}, {10, 40}}), (RowBox{10, 18, 110, 41}));
}

TEST(BoundingBox, TooFewVerticesIsEmpty) {
  EXPECT_TRUE(boundingBox({}).empty());
  EXPECT_TRUE(boundingBox({{5, 5}}).empty());
  EXPECT_EQ(boundingBox({{5, 5}}).pixelBox(), (image::PixelBox{0, 0, 0, 0}));
}

TEST(RowBox, PixelBoxIsLeftTopWidthHeight) {
  EXPECT_EQ((RowBox{10, 20, 110, 40}).pixelBox(), (image::PixelBox{10, 20, 100, 20}));
}

TEST(Orientation, HorizontalSettingDecidesTheAxis) {
  const RowBox wide{0, 0, 100, 10}, tall{0, 0, 10, 100}, square{0, 0, 50, 50};
  EXPECT_EQ(decideOrientation(1, 0, tall).axis, RowAxis::AlongX);
  EXPECT_EQ(decideOrientation(0, 0, wide).axis, RowAxis::AlongY);
  for (int unset : {kIntNull, -1, 2}) {
    EXPECT_EQ(decideOrientation(unset, 0, wide).axis, RowAxis::AlongX) << unset;
    EXPECT_EQ(decideOrientation(unset, 0, tall).axis, RowAxis::AlongY) << unset;
    EXPECT_EQ(decideOrientation(unset, 0, square).axis, RowAxis::AlongX) << unset;
  }
}

TEST(Orientation, OnlyReverseOneReverses) {
  const RowBox wide{0, 0, 100, 10};
  EXPECT_TRUE(decideOrientation(1, 1, wide).reversed);
  for (int v : {0, 2, kIntNull}) EXPECT_FALSE(decideOrientation(1, v, wide).reversed) << v;
}

TEST(Orientation, QuarterTurnsBringTheShallowEndLeft) {
  EXPECT_EQ((RowOrientation{RowAxis::AlongX, false}).quarterTurns(), 0);
  EXPECT_EQ((RowOrientation{RowAxis::AlongX, true}).quarterTurns(), 2);
  EXPECT_EQ((RowOrientation{RowAxis::AlongY, false}).quarterTurns(), 3);
  EXPECT_EQ((RowOrientation{RowAxis::AlongY, true}).quarterTurns(), 1);
}

TEST(CoreFraction, HalfMetreRowInOneMetreCore) {
  EXPECT_FLOAT_EQ(coreFraction(1000.0f, 1000.5f, 1.0f, true), 0.5f);
  EXPECT_FLOAT_EQ(coreFraction(1000.0f, 1000.5f, 1.0f, false), 1.0f);
}

TEST(CoreFraction, NeverAboveOneAndOneWithoutCoreLength) {
  EXPECT_FLOAT_EQ(coreFraction(1000.0f, 1001.5f, 1.0f, true), 1.0f);
  EXPECT_FLOAT_EQ(coreFraction(1000.0f, 1000.5f, kRealNull, true), 1.0f);
  EXPECT_FLOAT_EQ(coreFraction(1000.0f, 1000.5f, 0.0f, true), 1.0f);
  EXPECT_FLOAT_EQ(coreFraction(1000.0f, 1000.5f, -1.0f, true), 1.0f);
}

TEST(CoreFraction, RowWithoutCoreGivesZeroOrLess) {
  EXPECT_FLOAT_EQ(coreFraction(1000.0f, 1000.0f, 1.0f, true), 0.0f);
  EXPECT_LT(coreFraction(1001.0f, 1000.0f, 1.0f, true), 0.0f);
}

TEST(ShortenRow, KeepsTheShallowEnd) {
  const RowBox along{100, 50, 1100, 150};
  EXPECT_EQ(shortenRow(along, {RowAxis::AlongX, false}, 0.5f), (RowBox{100, 50, 600, 150}));
  EXPECT_EQ(shortenRow(along, {RowAxis::AlongX, true}, 0.5f), (RowBox{600, 50, 1100, 150}));
  const RowBox column{50, 100, 150, 1100};
  EXPECT_EQ(shortenRow(column, {RowAxis::AlongY, false}, 0.25f), (RowBox{50, 100, 150, 350}));
  EXPECT_EQ(shortenRow(column, {RowAxis::AlongY, true}, 0.25f), (RowBox{50, 850, 150, 1100}));
}

TEST(ShortenRow, RoundsToTheNearestPixelHalvesUp) {
  // (3 - 0) * 0.5 + 0 = 1.5 -> 2; (0 - 3) * 0.5 + 3 = 1.5 -> 2.
  EXPECT_EQ(shortenRow({0, 0, 3, 1}, {RowAxis::AlongX, false}, 0.5f), (RowBox{0, 0, 2, 1}));
  EXPECT_EQ(shortenRow({0, 0, 3, 1}, {RowAxis::AlongX, true}, 0.5f), (RowBox{2, 0, 3, 1}));
  // 0.9999 of 1000 pixels is 999.9 -> 1000: the row stays whole.
  EXPECT_EQ(shortenRow({100, 0, 1100, 10}, {RowAxis::AlongX, false}, 0.9999f), (RowBox{100, 0, 1100, 10}));
}

TEST(ShortenRow, FullFractionLeavesTheBox) {
  const RowBox b{7, 8, 90, 30};
  EXPECT_EQ(shortenRow(b, {RowAxis::AlongX, false}, 1.0f), b);
  EXPECT_EQ(shortenRow(b, {RowAxis::AlongY, true}, 1.0f), b);
}

TEST(SizeFactors, SameProportionsNoReduction) {
  EXPECT_EQ(sizeFactors(6000, 4000, 6000, 4000, 1.0f), (SizeFactors{1.0f, 1.0f}));
  EXPECT_EQ(sizeFactors(4000, 6000, 400, 600, 1.0f), (SizeFactors{1.0f, 1.0f}));
}

TEST(SizeFactors, PortraitShownWiderStretchesY) {
  // file 1.5, shown 600 / 500 = 1.2 (truncates to 1): y = 1.5 / 1.2.
  const SizeFactors f = sizeFactors(4000, 6000, 500, 600, 1.0f);
  EXPECT_FLOAT_EQ(f.x, 1.0f);
  EXPECT_FLOAT_EQ(f.y, 1.25f);
}

TEST(SizeFactors, ShownNarrowerStretchesXWhenFileRatioAtLeastOne) {
  // file 8000 / 4000 = 2, shown 1000 / 400 = 2.5: x = 2.5 / 2.
  const SizeFactors f = sizeFactors(4000, 8000, 400, 1000, 1.0f);
  EXPECT_FLOAT_EQ(f.x, 1.25f);
  EXPECT_FLOAT_EQ(f.y, 1.0f);
}

TEST(SizeFactors, RatioBelowOneAfterTruncationGivesNoFactor) {
  // Landscape file 4000 / 6000 shown at 300 / 600 = 0.5: would be y = 1.333,
  // but 0.5 truncates to 0.
  EXPECT_EQ(sizeFactors(6000, 4000, 600, 300, 1.0f), (SizeFactors{1.0f, 1.0f}));
  // Landscape file shown portrait: x would be 1.5 / 0.667, but the file's ratio truncates to 0.
  EXPECT_EQ(sizeFactors(6000, 4000, 400, 600, 1.0f), (SizeFactors{1.0f, 1.0f}));
  // Exactly 1 truncates to 1: the factor applies. file 2, shown 1: y = 2.
  const SizeFactors f = sizeFactors(1000, 2000, 500, 500, 1.0f);
  EXPECT_FLOAT_EQ(f.x, 1.0f);
  EXPECT_FLOAT_EQ(f.y, 2.0f);
}

TEST(SizeFactors, DividedByTheReductionFactor) {
  EXPECT_EQ(sizeFactors(6000, 4000, 6000, 4000, 0.5f), (SizeFactors{2.0f, 2.0f}));
  EXPECT_EQ(sizeFactors(6000, 4000, 6000, 4000, 0.25f), (SizeFactors{4.0f, 4.0f}));
  const SizeFactors f = sizeFactors(4000, 6000, 500, 600, 0.5f);
  EXPECT_FLOAT_EQ(f.x, 2.0f);
  EXPECT_FLOAT_EQ(f.y, 2.5f);
}

TEST(SizeFactors, UnsetShownSizeOrReductionCountsAsNone) {
  EXPECT_EQ(sizeFactors(6000, 4000, 0, 0, 1.0f), (SizeFactors{1.0f, 1.0f}));
  EXPECT_EQ(sizeFactors(4000, 6000, -1, 600, 0.0f), (SizeFactors{1.0f, 1.0f}));
  EXPECT_EQ(sizeFactors(4000, 6000, 400, 600, kRealNull), (SizeFactors{1.0f, 1.0f}));
}

TEST(ScaleBox, EachAxisByItsFactorRoundedHalfUp) {
  EXPECT_EQ(scaleBox({10, 20, 110, 40}, {2.0f, 1.25f}), (RowBox{20, 25, 220, 50}));
  // 3 * 1.25 = 3.75 -> 4, 2 * 1.25 = 2.5 -> 3.
  EXPECT_EQ(scaleBox({3, 2, 5, 6}, {1.25f, 1.25f}), (RowBox{4, 3, 6, 8}));
  EXPECT_EQ(scaleBox({3, 2, 5, 6}, {1.0f, 1.0f}), (RowBox{3, 2, 5, 6}));
}

}  // namespace
}  // namespace subsurf::split
