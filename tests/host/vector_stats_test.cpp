// Vector statistics and round axis limits: which values count, how
// percentiles are interpolated, and the rounding of axis limits.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "host/nulls.h"
#include "host/vector_stats.h"
#include "subsurf/host.h"

namespace ss = subsurf;

namespace {

std::vector<float> range(int from, int to) {
  std::vector<float> v;
  for (int k = from; k <= to; ++k) v.push_back(static_cast<float>(k));
  return v;
}

TEST(VectorStats, PercentilesInterpolateLinearlyBetweenRanks) {
  const std::vector<float> four = {4, 1, 3, 2};
  const float p[] = {50, 25, 0, 100, 10};
  const ss::VectorStats s = ss::vectorStats(four, -1e30f, p);
  EXPECT_EQ(s.count, 4);
  EXPECT_EQ(s.min, 1.0f);
  EXPECT_EQ(s.max, 4.0f);
  // rank h = 3 p / 100: 1.5, 0.75, 0, 3, 0.3 (answers in request order)
  EXPECT_EQ(s.percentiles, (std::vector<float>{2.5f, 1.75f, 1.0f, 4.0f, 1.3f}));
}

TEST(VectorStats, PercentilesOfZeroToHundredAreTheirOwnValues) {
  std::vector<float> v = range(0, 100);
  std::reverse(v.begin(), v.end());
  const float p[] = {99, 1, 95, 5, 90, 10};
  const ss::VectorStats s = ss::vectorStats(v, -1e30f, p);
  EXPECT_EQ(s.percentiles, (std::vector<float>{99, 1, 95, 5, 90, 10}));
}

TEST(VectorStats, RequestsOutsideZeroToHundredAreClamped) {
  const std::vector<float> v = {10, 20, 30};
  const float p[] = {-5, 150};
  EXPECT_EQ(ss::vectorStats(v, -1e30f, p).percentiles, (std::vector<float>{10, 30}));
}

TEST(VectorStats, OnlyUsableValuesCount) {
  const float inf = std::numeric_limits<float>::infinity();
  const std::vector<float> v = {ss::kRealNull, 5, std::nanf(""), inf, -inf, 9.5e19f, -1.0e20f, 2, 0, -1};
  const ss::VectorStats s = ss::vectorStats(v, ss::kRealNull / 2, {});
  EXPECT_EQ(s.count, 4);  // 5, 2, 0, -1
  EXPECT_EQ(s.min, -1.0f);
  EXPECT_EQ(s.max, 5.0f);
  // A bound of 0 (log axes) leaves out zero and the negatives too.
  const ss::VectorStats positive = ss::vectorStats(v, 0.0f, {});
  EXPECT_EQ(positive.count, 2);
  EXPECT_EQ(positive.min, 2.0f);
}

TEST(VectorStats, NoUsableValueGivesZeros) {
  const std::vector<float> v = {ss::kRealNull, ss::kRealNull};
  const float p[] = {50};
  const ss::VectorStats s = ss::vectorStats(v, ss::kRealNull / 2, p);
  EXPECT_EQ(s.count, 0);
  EXPECT_EQ(s.percentiles, std::vector<float>{0.0f});
}

TEST(VectorStats, ExportedRoutineMatchesTheEngine) {
  const std::vector<float> v = {3, ss::kRealNull, 1, 2};
  const int n = 4, np = 2;
  const float bound = ss::kRealNull / 2, p[] = {50, 100};
  int count = 0;
  float lo = 0, hi = 0, out[2] = {0, 0};
  A_VECSTATS1(&n, v.data(), &bound, &np, p, &count, &lo, &hi, out);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(lo, 1.0f);
  EXPECT_EQ(hi, 3.0f);
  EXPECT_EQ(out[0], 2.0f);
  EXPECT_EQ(out[1], 3.0f);
}

struct RoundCase {
  float vmin, vmax;
  bool log;
  float low, high, step;
};

class RoundAxisLimits : public ::testing::TestWithParam<RoundCase> {};

TEST_P(RoundAxisLimits, MoveOutwardsToNiceSteps) {
  const RoundCase& c = GetParam();
  const ss::RoundLimits r = ss::roundAxisLimits(c.vmin, c.vmax, c.log);
  EXPECT_FLOAT_EQ(r.low, c.low);
  EXPECT_FLOAT_EQ(r.high, c.high);
  EXPECT_FLOAT_EQ(r.step, c.step);
  EXPECT_FALSE(std::signbit(r.low) && r.low == 0.0f) << "negative zero";
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RoundAxisLimits,
    ::testing::Values(RoundCase{0.13f, 9.7f, false, 0, 10, 2}, RoundCase{1234, 1297, false, 1220, 1300, 20},
                      RoundCase{-3.2f, 41, false, -10, 50, 10}, RoundCase{9.7f, 0.13f, false, 0, 10, 2},
                      RoundCase{0, 1, false, 0, 1, 0.2f}, RoundCase{0, 10, false, 0, 10, 2},
                      RoundCase{0.001f, 0.0123f, false, 0, 0.0125f, 0.0025f},
                      RoundCase{-0.4f, -0.1f, false, -0.4f, -0.1f, 0.1f},
                      RoundCase{3, 470, true, 1, 1000, 10}, RoundCase{10, 100, true, 10, 100, 10},
                      RoundCase{0.02f, 0.05f, true, 0.01f, 0.1f, 10}, RoundCase{5, 5, false, 5, 5, 0},
                      RoundCase{-2, 4, true, -2, 4, 2}));  // a log axis cannot show -2: rounded as linear

TEST(RoundAxisLimits, ExportedRoutine) {
  const float lo = 3, hi = 470;
  const int log = 1;
  float low = 0, high = 0, step = 0;
  A_AXLIM(&lo, &hi, &log, &low, &high, &step);
  EXPECT_EQ(low, 1.0f);
  EXPECT_EQ(high, 1000.0f);
  const int v = 12, a = 1, b = 10;
  EXPECT_EQ(IA_ILIMIT(&v, &a, &b), 10);
}

}  // namespace
