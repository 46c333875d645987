// The correlations' exp, log, pow and sqrt: the single-precision value nearest
// the true one (checked against the C library's double-precision functions,
// rounded once), and the C library's results for special values.
#include <gtest/gtest.h>

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
