// Elementary functions for the single-precision correlations.
//
// The correlations are defined in single precision, so each exp, log and
// power is wanted as the single-precision value nearest to the true one.
// These routines work in double precision internally (relative error a few
// units of 1e-16) and round once, which gives that nearest value except in
// the rare case where the true value lies within about 1e-8 of a unit in the
// last place of the midpoint between two floats. The C library's own powf is
// slightly less careful (it rounds the wrong way in a few cases in ten
// thousand), so using one definition everywhere also keeps a case computed
// alone and the same case computed in a batch bit-for-bit equal.
//
// Everything here is branch-free straight-line code: the batch calculation
// runs it in loops that the compiler turns into SIMD code.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

// Small enough to fold into every loop that uses them, which is what lets
// the loops vectorise; forced, since a large loop body can exhaust the
// compiler's own inlining budget.
#if defined(__GNUC__)
#define SUBSURF_FLUIDS_INLINE [[gnu::always_inline]] inline
#else
#define SUBSURF_FLUIDS_INLINE inline
#endif

namespace subsurf::fluids::fmath {

// e^x for the arguments that matter to a single-precision result: beyond
// +-120 the result is far outside the float range either way, so the argument
// is clamped there (infinities included); NaN stays NaN.
SUBSURF_FLUIDS_INLINE double expWide(double x) {
  const double xc = x < -120.0 ? -120.0 : (x > 120.0 ? 120.0 : x);
  constexpr double kInvLn2 = 1.4426950408889634;
  constexpr double kLn2Hi = 0x1.62e42fee00000p-1;  // trailing zeros: k * kLn2Hi is exact
  constexpr double kLn2Lo = 0x1.a39ef35793c76p-33;
  constexpr double kShifter = 0x1.8p52;  // adding it rounds to an integer held in the low bits
  const double t = xc * kInvLn2 + kShifter;
  const double k = t - kShifter;
  const double r = (xc - k * kLn2Hi) - k * kLn2Lo;  // |r| <= ln2 / 2
  // Taylor series of e^r to r^13 / 13!; the first omitted term is below 1e-17.
  double p = 1.0 / 6227020800.0;
  p = p * r + 1.0 / 479001600.0;
  p = p * r + 1.0 / 39916800.0;
  p = p * r + 1.0 / 3628800.0;
  p = p * r + 1.0 / 362880.0;
  p = p * r + 1.0 / 40320.0;
  p = p * r + 1.0 / 5040.0;
  p = p * r + 1.0 / 720.0;
  p = p * r + 1.0 / 120.0;
  p = p * r + 1.0 / 24.0;
  p = p * r + 1.0 / 6.0;
  p = p * r + 0.5;
  p = p * r + 1.0;
  p = p * r + 1.0;
  // Scale by 2^k: the low bits of t hold k, and shifting them into the
  // exponent field adds k to p's exponent (|k| <= 174 keeps it normal).
  const std::uint64_t scaled =
      std::bit_cast<std::uint64_t>(p) + (std::bit_cast<std::uint64_t>(t) << 52);
  const double y = std::bit_cast<double>(scaled);
  return x != x ? x : y;
}

// Table for the logarithm: x is reduced to z in [0.6875, 1.375) (an interval
// about 1, so values near 1 lose nothing to cancellation), split into 128
// buckets by its leading mantissa bits; each bucket starts at c, and the
// table holds 1/c and log(c) (from the C library, in double precision).
struct LogTable {
  static constexpr std::uint64_t kOffset = 0x3fe6000000000000ULL;  // bits of 0.6875
  static constexpr int kBucketShift = 45;                          // 52 - 7 bits
  double invC[128];
  double logC[128];
};

#if defined(__GNUC__) && !defined(__clang__)
// GCC evaluates its logarithm at compile time (correctly rounded), so the
// table is a constant and ready before any code runs.
#define SUBSURF_LOG_TABLE_CONSTEXPR constexpr
inline constexpr double tableLog(double c) { return __builtin_log(c); }
#else
#define SUBSURF_LOG_TABLE_CONSTEXPR const
inline double tableLog(double c) { return std::log(c); }
#endif

inline SUBSURF_LOG_TABLE_CONSTEXPR LogTable makeLogTable() {
  LogTable t{};
  for (std::uint64_t i = 0; i < 128; ++i) {
    const double c = std::bit_cast<double>(LogTable::kOffset + (i << LogTable::kBucketShift));
    t.invC[i] = 1.0 / c;
    t.logC[i] = tableLog(c);
  }
  return t;
}
inline SUBSURF_LOG_TABLE_CONSTEXPR LogTable kLogTable = makeLogTable();

// Natural logarithm of a value converted from single precision (so never
// subnormal): -inf at 0, NaN below 0 and for NaN, +inf at +inf. Relative
// error a few units of 1e-16, and none of the division of the usual series.
SUBSURF_FLUIDS_INLINE double logWide(double x) {
  const std::uint64_t bits = std::bit_cast<std::uint64_t>(x);
  const std::uint64_t tmp = bits - LogTable::kOffset;
  const std::uint64_t i = (tmp >> LogTable::kBucketShift) & 127;
  const std::int64_t k = static_cast<std::int64_t>(tmp) >> 52;  // x = z * 2^k
  const std::uint64_t zBits = bits - (tmp & 0xfff0000000000000ULL);
  const double z = std::bit_cast<double>(zBits);
  // The bucket's start: z with the bits below the bucket index cleared, so
  // z - c is exact and r is small (|r| < 2^-8).
  const double c = std::bit_cast<double>(zBits & ~((std::uint64_t{1} << LogTable::kBucketShift) - 1));
  const double r = (z - c) * kLogTable.invC[i];
  // k as a double without a 64-bit integer conversion (which older vector
  // instruction sets lack): add it to the mantissa of 1.5 * 2^52.
  const double kd =
      std::bit_cast<double>(static_cast<std::uint64_t>(k) + 0x4338000000000000ULL) - 0x1.8p52;
  // log(1 + r) to r^7; the first omitted term is below 1e-20.
  double q = 1.0 / 7.0;
  q = q * r - 1.0 / 6.0;
  q = q * r + 1.0 / 5.0;
  q = q * r - 1.0 / 4.0;
  q = q * r + 1.0 / 3.0;
  q = q * r - 0.5;
  const double log1pR = r + (r * r) * q;
  const double hi = kd * 0x1.62e42fee00000p-1 + kLogTable.logC[i];
  const double y = hi + (kd * 0x1.a39ef35793c76p-33 + log1pR);

  constexpr double kInf = std::numeric_limits<double>::infinity();
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  double out = x == kInf ? kInf : y;
  out = x == 0.0 ? -kInf : out;
  out = ((x < 0.0) | (x != x)) ? kNaN : out;
  return out;
}

// Square root, correctly rounded: Newton's iteration in double from a guess
// that halves the exponent (within 4 per cent) converges to a double within
// an ulp, and a float square root is never close enough to a rounding
// midpoint for that ulp to matter. Written out rather than calling the C
// library so that loops over it vectorise without an errno check.
SUBSURF_FLUIDS_INLINE float sqrt(float x) {
  const double d = static_cast<double>(x);
  double y = std::bit_cast<double>((std::bit_cast<std::uint64_t>(d) >> 1) + 0x1ff8000000000000ULL);
  y = 0.5 * (y + d / y);
  y = 0.5 * (y + d / y);
  y = 0.5 * (y + d / y);
  y = 0.5 * (y + d / y);
  y = 0.5 * (y + d / y);
  constexpr double kInf = std::numeric_limits<double>::infinity();
  y = d == kInf ? kInf : y;
  y = d == 0.0 ? d : y;
  y = ((d < 0.0) | (d != d)) ? std::numeric_limits<double>::quiet_NaN() : y;
  return static_cast<float>(y);
}

SUBSURF_FLUIDS_INLINE float exp(float x) { return static_cast<float>(expWide(static_cast<double>(x))); }

SUBSURF_FLUIDS_INLINE float log(float x) { return static_cast<float>(logWide(static_cast<double>(x))); }

// x^y with the special values of the C library's powf: y = 0 or x = 1 give 1;
// a negative base needs an integer exponent (NaN otherwise) and keeps its sign
// for an odd one; zero and infinite bases and exponents go to 0 or infinity.
SUBSURF_FLUIDS_INLINE float pow(float x, float y) {
  constexpr float kInfF = std::numeric_limits<float>::infinity();
  // Integer and odd-integer tests by rounding through 2^23: every float of
  // that size or more is an integer, and below it the sum has unit spacing.
  // (Bitwise & and | keep the tests free of branches.)
  const float ay = y < 0.0f ? -y : y;
  const bool integral = (ay >= 0x1p23f) | (((ay + 0x1p23f) - 0x1p23f) == ay);
  const float half = ay * 0.5f;
  const bool odd = integral & (ay < 0x1p24f) & (((half + 0x1p23f) - 0x1p23f) != half);
  const bool negativeBase = std::bit_cast<std::int32_t>(x) < 0;  // -0 included

  const double ax = static_cast<double>(negativeBase ? -x : x);
  double r = expWide(static_cast<double>(y) * logWide(ax));
  // |x| = 1 with an infinite exponent is 1 (the product above is NaN).
  r = ((ax == 1.0) & (ay == kInfF)) ? 1.0 : r;
  r = (negativeBase & odd) ? -r : r;
  r = ((x < 0.0f) & (x > -kInfF) & !integral) ? std::numeric_limits<double>::quiet_NaN() : r;
  r = ((y == 0.0f) | (x == 1.0f)) ? 1.0 : r;
  return static_cast<float>(r);
}

}  // namespace subsurf::fluids::fmath
