// The correlations' exp, log, pow and sqrt: the single-precision value nearest
// the true one (checked against the C library's double-precision functions,
// rounded once), and the C library's results for special values.
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

// Random arguments: exp over its finite range, log and sqrt over every positive
// float (subnormals too), pow over the bases and exponents the correlations use.
TEST(FloatMath, RandomArgumentsRoundTheDoubleResult) {
  std::mt19937 rng(5);
  std::uniform_real_distribution<float> expArg(-110.0f, 95.0f), base(0.0f, 10000.0f),
      exponent(-3.0f, 3.0f), decimalExponent(-46.0f, 39.0f);
  std::uniform_int_distribution<std::uint32_t> positive(1u, 0x7f7fffffu);
  auto d = [](float x) { return static_cast<double>(x); };
  int expMiss = 0, logMiss = 0, powMiss = 0, sqrtMiss = 0, exp10Miss = 0, halvesMiss = 0;
  for (int k = 0; k < 100000; ++k) {
    const float x = expArg(rng), y = std::bit_cast<float>(positive(rng));
    const float b = base(rng), e = exponent(rng);
    expMiss += fm::exp(x) != static_cast<float>(std::exp(d(x)));
    logMiss += fm::log(y) != static_cast<float>(std::log(d(y)));
    sqrtMiss += fm::sqrt(y) != std::sqrt(y);
    powMiss += !sameFloat(fm::pow(b, e), static_cast<float>(std::pow(d(b), d(e))));
    const float t = decimalExponent(rng);
    exp10Miss += fm::exp10(t) != static_cast<float>(std::pow(10.0, d(t)));
    halvesMiss += fm::threeHalvesPower(b) != static_cast<float>(std::pow(d(b), 1.5));
  }
  EXPECT_EQ(expMiss, 0);
  EXPECT_EQ(logMiss, 0);
  EXPECT_EQ(sqrtMiss, 0);
  EXPECT_EQ(powMiss, 0);
  EXPECT_EQ(exp10Miss, 0);
  EXPECT_EQ(halvesMiss, 0);
  // The exponents the correlations use, on their usual bases.
  EXPECT_EQ(fm::pow(600.0f, 1.2f), static_cast<float>(std::pow(600.0, d(1.2f))));
  EXPECT_EQ(fm::pow(10.0f, 2.0f), 100.0f);
  EXPECT_EQ(fm::pow(2.0f, -1.0f), 0.5f);
  EXPECT_EQ(fm::sqrt(4.0f), 2.0f);
}

// The double-precision kernels against the long-double functions on dense
// grids. e^x: the 1.36e-14 its degree-9 polynomial was fitted to, plus four
// roundings of a double near 1 in the sums; log x: a few units of 1e-16 (its
// polynomial is within 2.3e-16, and the quotient s and the sums round). The
// grids cover the reduced intervals, ends included, and arguments whose
// reduction subtracts multiples of ln 2 or takes out powers of two; a wrong
// or mistyped coefficient shows up here long before it changes a rounded
// float.
TEST(FloatMath, WideKernelsWithinTheirErrorBounds) {
  using LD = long double;
  constexpr double kHalfLn2 = 0.34657359027997264;
  constexpr int kSteps = 100000;
  LD expWorst = 0.0L, logWorst = 0.0L;
  for (int i = -kSteps; i <= kSteps; ++i) {
    const double r = kHalfLn2 * i / kSteps;
    for (double x : {r, r + 7.0 * fm::kLn2Hi, r - 60.0 * fm::kLn2Hi, r + 119.0}) {
      const LD exact = std::exp(static_cast<LD>(x));
      expWorst = std::max(expWorst, std::fabs(fm::expWide(x) / exact - 1.0L));
    }
  }
  // z over [sqrt(2)/2, sqrt(2)), the logarithm's reduced range, and scaled
  // by powers of two (exactly); x = 1 itself is checked on its own.
  const double lo = std::sqrt(0.5), hi = std::sqrt(2.0);
  for (int i = 0; i < 2 * kSteps; ++i) {
    const double z = lo + (hi - lo) * i / (2 * kSteps);
    for (int e : {0, 1, -1, 40, -126}) {
      const double x = std::ldexp(z, e);
      const LD exact = std::log(static_cast<LD>(x));
      if (exact != 0.0L) logWorst = std::max(logWorst, std::fabs(fm::logWide(x) / exact - 1.0L));
    }
  }
  EXPECT_LT(expWorst, 1.36e-14L + 4 * 0x1p-53L);
  EXPECT_LT(logWorst, 1.0e-15L);
  EXPECT_EQ(fm::logWide(1.0), 0.0);
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
