// The correlations' exp, log, powers and square root: within a little over
// half a unit in the last place of the true value (checked against the C
// library's long-double functions), and the C library's results for special
// values.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include "fluids/float_math.h"

namespace subsurf::fluids {
namespace {

namespace fm = fmath;

bool sameFloat(float a, float b) {
  return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
         (std::isnan(a) && std::isnan(b));
}

// The error of a float result in units of the last place of the true value
// (the spacing of floats at its size; subnormal spacing below the normal
// range).
double ulpError(float result, long double exact) {
  const long double size = std::fabs(exact);
  int e = 0;
  std::frexp(static_cast<double>(size), &e);
  const long double spacing = size < 0x1p-126L ? 0x1p-149L : std::ldexp(1.0L, e - 24);
  return static_cast<double>(std::fabs(static_cast<long double>(result) - exact) / spacing);
}

// The largest error over a sample and how often the result is not the
// float nearest the true value. Results below the normal range (which no
// correlation comes near) are kept apart: scaling into it rounds a second
// time, so they are only within one unit.
struct Accuracy {
  double worst = 0.0, worstSubnormal = 0.0;
  int notNearest = 0;
  void add(float result, long double exact) {
    const double error = ulpError(result, exact);
    if (std::fabs(exact) < 0x1p-126L) {
      worstSubnormal = std::max(worstSubnormal, error);
      return;
    }
    worst = std::max(worst, error);
    notNearest += result != static_cast<float>(exact);
  }
};

// Random arguments: exp over its finite range, log over every positive float
// (subnormals too), pow over the bases and exponents the correlations use.
// Each is within a little over half a unit in the last place of the true
// value (long double), so the result is the nearest float or, rarely, its
// neighbour: these bounds are what the polynomials and the carried roundings
// give, with a small margin, and a wrong coefficient or a lost rounding term
// breaks them by far.
TEST(FloatMath, RandomArgumentsWithinAHalfUnitAndABit) {
  std::mt19937 rng(5);
  std::uniform_real_distribution<float> expArg(-103.0f, 88.7f), base(0.0f, 10000.0f),
      exponent(-3.0f, 3.0f), decimalExponent(-37.0f, 38.0f);
  std::uniform_int_distribution<std::uint32_t> positive(1u, 0x7f7fffffu);
  using LD = long double;
  constexpr int kSamples = 200000;
  Accuracy exp, log, pow, exp10;
  int sqrtMiss = 0, halvesMiss = 0;
  for (int k = 0; k < kSamples; ++k) {
    const float x = expArg(rng), y = std::bit_cast<float>(positive(rng));
    const float b = base(rng), e = exponent(rng), t = decimalExponent(rng);
    exp.add(fm::exp(x), std::exp(static_cast<LD>(x)));
    log.add(fm::log(y), std::log(static_cast<LD>(y)));
    const LD power = std::pow(static_cast<LD>(b), static_cast<LD>(e));
    if (power < 0x1p127L) pow.add(fm::pow(b, e), power);
    exp10.add(fm::exp10(t), std::pow(10.0L, static_cast<LD>(t)));
    sqrtMiss += fm::sqrt(y) != static_cast<float>(std::sqrt(static_cast<LD>(y)));
    halvesMiss += fm::threeHalvesPower(b) != static_cast<float>(std::pow(static_cast<LD>(b), 1.5L));
  }
  EXPECT_LT(exp.worst, 0.63);
  EXPECT_LT(log.worst, 0.58);
  EXPECT_LT(pow.worst, 0.73);
  EXPECT_LT(exp10.worst, 0.62);
  for (const Accuracy* a : {&exp, &log, &pow, &exp10}) {
    EXPECT_LT(a->notNearest, kSamples / 50);
    EXPECT_LT(a->worstSubnormal, 1.0);
  }
  EXPECT_GT(exp.worstSubnormal, 0.0);  // the sample does reach below the normal range
  // Correctly rounded, both.
  EXPECT_EQ(sqrtMiss, 0);
  EXPECT_EQ(halvesMiss, 0);
  // Exact cases stay exact, and the exponents the correlations use come out
  // as the nearest float on their usual bases.
  EXPECT_EQ(fm::pow(10.0f, 2.0f), 100.0f);
  EXPECT_EQ(fm::pow(2.0f, -1.0f), 0.5f);
  EXPECT_EQ(fm::pow(4.0f, 0.5f), 2.0f);
  EXPECT_EQ(fm::exp(0.0f), 1.0f);
  EXPECT_EQ(fm::log(1.0f), 0.0f);
  EXPECT_EQ(fm::exp10(3.0f), 1000.0f);
  EXPECT_EQ(fm::sqrt(4.0f), 2.0f);
  EXPECT_EQ(fm::pow(600.0f, 1.2f), static_cast<float>(std::pow(600.0L, static_cast<LD>(1.2f))));
}

// A power's error grows with its exponent (the logarithm's own error is
// multiplied by it), by about a tenth of a unit in the last place per unit
// of exponent: still well within two units at twelve.
TEST(FloatMath, PowerErrorGrowsSlowlyWithTheExponent) {
  std::mt19937 rng(11);
  std::uniform_real_distribution<float> base(0.01f, 100.0f), exponent(-12.0f, 12.0f);
  Accuracy pow;
  for (int k = 0; k < 200000; ++k) {
    const float b = base(rng), e = exponent(rng);
    const long double exact = std::pow(static_cast<long double>(b), static_cast<long double>(e));
    if (exact > 0x1p-126L && exact < 0x1p127L) pow.add(fm::pow(b, e), exact);
  }
  EXPECT_LT(pow.worst, 2.0);
  EXPECT_GT(pow.worst, 0.5);  // the sample does reach large exponents
}

// The reductions at their edges: arguments near multiples of ln 2 (where
// the reduced argument is tiny or at its largest), logarithms of floats just
// either side of the reduction's boundary sqrt(2)/2 and of powers of two,
// and results at the ends of the float range, gradual underflow included.
TEST(FloatMath, ReductionEdges) {
  Accuracy exp, log;
  for (int k = -149; k <= 127; ++k) {
    const long double multiple = k * 0.693147180559945309417L;
    for (int step = -4; step <= 4; ++step) {
      const float x = std::nextafter(static_cast<float>(multiple), step < 0 ? -200.0f : 200.0f);
      const float shifted = static_cast<float>(multiple) + step * 0.0866f;  // up to half of ln2 / 2
      for (float v : {x, shifted}) {
        const long double exact = std::exp(static_cast<long double>(v));
        if (exact < 0x1p128L) exp.add(fm::exp(v), exact);
      }
    }
    const float power = std::ldexp(1.0f, k);
    const float boundary = std::ldexp(0.70710677f, k);
    for (float v : {power, std::nextafter(power, 0.0f), std::nextafter(power, 1e30f), boundary,
                    std::nextafter(boundary, 0.0f), std::nextafter(boundary, 1e30f)}) {
      if (v > 0.0f && v != 1.0f) log.add(fm::log(v), std::log(static_cast<long double>(v)));
    }
  }
  EXPECT_LT(exp.worst, 0.63);
  EXPECT_LT(exp.worstSubnormal, 1.0);
  EXPECT_LT(log.worst, 0.58);
  EXPECT_EQ(fm::exp(88.72283f), std::exp(88.72283f));  // the largest finite result
  EXPECT_EQ(fm::exp(88.72284f), std::numeric_limits<float>::infinity());
  EXPECT_EQ(fm::exp(-103.97208f), 0x1p-149f);  // the smallest subnormal
  EXPECT_EQ(fm::log(0x1p-149f), std::log(0x1p-149f));
}

TEST(FloatMath, SpecialValuesAsTheCLibraryGivesThem) {
  constexpr float inf = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (float x : {-inf, inf, nan, 89.0f, -104.0f, 0.0f, -0.0f}) {
    EXPECT_TRUE(sameFloat(fm::exp(x), std::exp(x))) << "exp " << x;
  }
  for (float x : {0.0f, -0.0f, -1.0f, inf, -inf, nan, 1.0f, 1.0e-45f}) {
    EXPECT_TRUE(sameFloat(fm::log(x), std::log(x))) << "log " << x;
    EXPECT_TRUE(sameFloat(fm::sqrt(x), std::sqrt(x))) << "sqrt " << x;
    EXPECT_TRUE(sameFloat(fm::threeHalvesPower(x), std::pow(x, 1.5f))) << "x^1.5 " << x;
  }
  for (float x : {-inf, inf, nan, 0.0f, -0.0f, 39.0f, -46.0f, 2.0f}) {
    EXPECT_TRUE(sameFloat(fm::exp10(x), std::pow(10.0f, x))) << "10^" << x;
  }
  const float cases[][2] = {
      {0.0f, 2.0f},    {0.0f, -1.163f}, {-0.0f, -1.0f}, {-0.0f, 0.5f},  {-0.0f, 3.0f},
      {-2.0f, 3.0f},   {-2.0f, 2.0f},   {-8.0f, 0.25f}, {-8.0f, -3.0f}, {1.0f, nan},
      {nan, 0.0f},     {nan, 2.0f},     {2.0f, nan},    {-inf, 0.5f},   {-inf, 3.0f},
      {-inf, -3.0f},   {inf, -1.0f},    {inf, 0.5f},    {2.0f, inf},    {0.5f, inf},
      {2.0f, -inf},    {-1.0f, inf},    {-1.0f, -inf},  {-3.0f, 1.0e30f}, {-3.0f, 16777215.0f},
      {10.0f, 40.0f},  {10.0f, -50.0f},
  };
  for (const auto& c : cases) {
    EXPECT_TRUE(sameFloat(fm::pow(c[0], c[1]), std::pow(c[0], c[1])))
        << "pow(" << c[0] << ", " << c[1] << ") = " << fm::pow(c[0], c[1]) << ", C library "
        << std::pow(c[0], c[1]);
  }
}

}  // namespace
}  // namespace subsurf::fluids
