// Lines of the clipping-depth table, written out by hand.
#include <gtest/gtest.h>

#include "core/split_report.h"

namespace subsurf::split {
namespace {

TEST(ClippingReport, HeaderLines) {
  const auto lines = reportHeaderLines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], " Table of clipping depths,");
  EXPECT_EQ(lines[1], "Top Depth, Top Shift, Bottom Depth, Bottom Shift, Comments, Graphics File Name");
}

TEST(ClippingReport, SourceLineHoldsThePathAsGiven) {
  EXPECT_EQ(reportSourceLine("/photos/T1.jpg"), "Source Image, /photos/T1.jpg");
  EXPECT_EQ(reportSourceLine("C:\\trays\\T 2.jpg"), "Source Image, C:\\trays\\T 2.jpg");
}

TEST(ClippingReport, DepthInTenCharactersWithThreeDecimals) {
  EXPECT_EQ(reportDepth(1234.5f), "  1234.500");
  EXPECT_EQ(reportDepth(0.0f), "     0.000");
  EXPECT_EQ(reportDepth(-5.25f), "    -5.250");
  EXPECT_EQ(reportDepth(12345.125f), " 12345.125");
  EXPECT_EQ(reportDepth(99999.5f), " 99999.500");
  EXPECT_EQ(reportDepth(123456.5f), "123456.500");
  EXPECT_EQ(reportDepth(1234567.5f), "1234567.500");  // too wide: written in full
}

TEST(ClippingReport, StyleOneFillsAllSixColumns) {
  EXPECT_EQ(reportRowLine(1234.5f, 1236.0f, "/out/T1_WL_01234_50-01236_00.bmp", 1),
            "  1234.500, 0,   1236.000, 0, , /out/T1_WL_01234_50-01236_00.bmp");
}

TEST(ClippingReport, OtherStylesGiveTopBaseAndName) {
  for (int style : {0, 2, 3, -1})
    EXPECT_EQ(reportRowLine(1234.5f, 1236.0f, "/out/a.cgm", style), "  1234.500,   1236.000, /out/a.cgm") << style;
}

}  // namespace
}  // namespace subsurf::split
