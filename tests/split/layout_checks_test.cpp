// Checks of a photograph's rectangles before cutting, and where a row of a
// turned photograph really comes from.
#include <gtest/gtest.h>

#include "core/layout_checks.h"

namespace subsurf::split {
namespace {

std::vector<NumberedBox> bands(std::initializer_list<RowBox> boxes) {
  std::vector<NumberedBox> out;
  int k = 0;
  for (const RowBox& b : boxes) out.push_back({++k, b});
  return out;
}

TEST(LayoutChecks, TidyBandsGiveNoWarning) {
  // Touching edges are not an overlap: boxes are half-open.
  EXPECT_TRUE(layoutWarnings("T1.jpg", bands({{0, 0, 400, 60}, {0, 60, 400, 120}, {0, 120, 400, 180}}), 400, 300)
                  .empty());
}

TEST(LayoutChecks, OverlapsAreMeasured) {
  const auto w = layoutWarnings("T1.jpg", bands({{0, 0, 400, 70}, {10, 60, 400, 120}}), 400, 300);
  ASSERT_EQ(w.size(), 1u);
  EXPECT_EQ(w[0], "T1.jpg: rows 1 and 2 overlap by 390 x 10 pixels");
}

TEST(LayoutChecks, FreeCorneredRowsOverlapOnlyWhereTheirCornersDo) {
  // Two slanted rows of a tray seen at an angle: their boxes overlap, they do not.
  std::vector<NumberedBox> rows = {
      {1, {10, 100, 400, 170}, {{10, 110}, {400, 100}, {400, 150}, {10, 170}}},
      {2, {10, 150, 400, 230}, {{10, 170}, {400, 150}, {400, 210}, {10, 230}}},
  };
  EXPECT_TRUE(layoutWarnings("T1.jpg", rows, 400, 300).empty());
  // Row 2's top-left corner pushed up into row 1.
  rows[1].corners[0] = {10, 160};
  EXPECT_EQ(layoutWarnings("T1.jpg", rows, 400, 300), std::vector<std::string>{"T1.jpg: rows 1 and 2 overlap"});
  // An upright row beside a free-cornered one is judged by its box.
  rows[1] = {2, {0, 140, 50, 300}};
  EXPECT_EQ(layoutWarnings("T1.jpg", rows, 400, 300), std::vector<std::string>{"T1.jpg: rows 1 and 2 overlap"});
  rows[1] = {2, {0, 175, 50, 300}};
  EXPECT_TRUE(layoutWarnings("T1.jpg", rows, 400, 300).empty());
}

TEST(LayoutChecks, RowsReachingOutsideAreSaidToBeClipped) {
  const auto w = layoutWarnings("T1.jpg", bands({{-5, 0, 400, 60}, {0, 60, 420, 120}, {0, 400, 400, 460}}), 400, 300);
  ASSERT_EQ(w.size(), 2u);  // the third lies wholly outside: reported when cut
  EXPECT_EQ(w[0], "T1.jpg: row 1 (-5, 0) to (400, 60) reaches outside the 400 x 300 photograph; it is clipped");
  EXPECT_EQ(w[1], "T1.jpg: row 2 (0, 60) to (420, 120) reaches outside the 400 x 300 photograph; it is clipped");
  // With the frame unknown, nothing is said about it.
  EXPECT_TRUE(layoutWarnings("T1.jpg", bands({{-5, 0, 400, 60}}), 0, 0).empty());
}

TEST(LayoutChecks, RowsListedOutOfOrderAreNamed) {
  const auto w = layoutWarnings("T1.jpg", bands({{0, 0, 400, 60}, {0, 120, 400, 180}, {0, 60, 400, 120}}), 400, 300);
  ASSERT_EQ(w.size(), 1u);
  EXPECT_EQ(w[0], "T1.jpg: row 3 is listed after row 2 but lies above it; rows are given depths in list order");
  // Rows side by side (taller than wide) are read left to right.
  const auto c = layoutWarnings("T2.jpg", bands({{100, 0, 200, 300}, {0, 0, 100, 300}}), 400, 300);
  ASSERT_EQ(c.size(), 1u);
  EXPECT_EQ(c[0], "T2.jpg: row 2 is listed after row 1 but lies left of it; rows are given depths in list order");
}

TEST(LayoutChecks, CutOutlineFollowsTheTurn) {
  const RowBox box{10, 20, 30, 40};
  EXPECT_EQ(cutOutline(box, 0.0, 101, 101).size(), 4u);
  const auto same = cutOutline(box, 360.0, 101, 101);
  EXPECT_EQ(same[0].x, 10);
  EXPECT_EQ(same[2].y, 40);
  // A half turn about the centre (50, 50) takes a corner to the opposite side.
  const auto half = cutOutline(box, 180.0, 101, 101);
  EXPECT_EQ(half[0].x, 90);
  EXPECT_EQ(half[0].y, 80);
  EXPECT_EQ(half[2].x, 70);
  EXPECT_EQ(half[2].y, 60);
  // A quarter turn: (10, 20) is taken from (20, 90) of the upright picture.
  const auto quarter = cutOutline(box, 90.0, 101, 101);
  EXPECT_EQ(quarter[0].x, 20);
  EXPECT_EQ(quarter[0].y, 90);
}

}  // namespace
}  // namespace subsurf::split
