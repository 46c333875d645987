// Elementary functions for the single-precision correlations.
//
// The correlations are defined in single precision, so each exp, log and
// power is wanted as the single-precision value nearest to the true one.
// These routines work in double precision internally and round once. The
// double exponential has a relative error below 1.4e-14 (a short polynomial:
// the batch loops are bound by their arithmetic), the double logarithm one of
// a few units of 1e-16, so the rounding gives that nearest value except in the
// rare case where the true value lies closer to the midpoint between two
// floats than the double's error, a few units of 1e-7 of a unit in the last
// place: for exp, exp10 and pow about one result in ten million, for log far
// fewer. The C library's own powf is slightly less careful (it rounds the
// wrong way in a few cases in ten thousand), so using one definition
// everywhere also keeps a case computed alone and the same case computed in a
// batch bit-for-bit equal. Every operation is an IEEE one (no contraction,
// fused multiply-adds only where written), so the bits do not depend on the
// instruction set either.
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

// Routines that evaluate these one value at a time are compiled twice, with
// and without the processor's FMA instructions, and the better version is
// chosen when the program starts; without them each fma() is a call to the
// C library, which gives the same bits more slowly.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__)
#define SUBSURF_FMA_CLONES [[gnu::target_clones("fma", "default")]]
#else
#define SUBSURF_FMA_CLONES
#endif

namespace subsurf::fluids::fmath {

// std::bit_cast, forced inline: a library function is not folded into the
// loops compiled for another processor (target clones), and a call there
// keeps the loop from being vectorised.
template <typename To, typename From>
SUBSURF_FLUIDS_INLINE To bitsAs(const From& from) {
  static_assert(sizeof(To) == sizeof(From));
  return __builtin_bit_cast(To, from);
}

// Fused multiply-add: a * b + c rounded once. Exact by definition, so every
// instruction set (and the C library where there is no FMA instruction) gives
// the same bits; it is also what makes the reductions below exact.
SUBSURF_FLUIDS_INLINE double fma(double a, double b, double c) {
#if defined(__GNUC__)
  return __builtin_fma(a, b, c);
#else
  return std::fma(a, b, c);
#endif
}

// ln 2 split in two: kLn2Hi is ln 2 rounded to double, kLn2Lo the rest.
inline constexpr double kLn2Hi = 0x1.62e42fefa39efp-1;
inline constexpr double kLn2Lo = 0x1.abc9e3b39803fp-56;

// e^x for the arguments that matter to a single-precision result: beyond
// +-120 the result is far outside the float range either way, so the argument
// is clamped there (infinities included); NaN stays NaN.
SUBSURF_FLUIDS_INLINE double expWide(double x) {
  const double xc = x < -120.0 ? -120.0 : (x > 120.0 ? 120.0 : x);
  constexpr double kInvLn2 = 1.4426950408889634;
  constexpr double kShifter = 0x1.8p52;  // adding it rounds to an integer held in the low bits
  const double t = fma(xc, kInvLn2, kShifter);
  const double k = t - kShifter;
  // r = x - k ln 2, |r| <= ln2 / 2: each fma rounds once, on the small result.
  const double r = fma(-k, kLn2Lo, fma(-k, kLn2Hi, xc));
  // e^r by the polynomial of degree 9 with the smallest largest relative
  // error on [-ln2/2, ln2/2] (Remez; scripts/fit_polynomials.py prints the
  // coefficients): relative error below 1.36e-14 there, the coefficients'
  // rounding to double included; a Taylor series needs two more terms for
  // that. Summed in pairs (Estrin's scheme) so that the terms are formed side
  // by side rather than one after another.
  constexpr double c0 = 0x1.0000000000039p+0, c1 = 0x1.ffffffffffc3ap-1;
  constexpr double c2 = 0x1.ffffffffe8295p-2, c3 = 0x1.55555555bb649p-3;
  constexpr double c4 = 0x1.555555879bab3p-5, c5 = 0x1.1111105b5e0eap-7;
  constexpr double c6 = 0x1.6c162d92756c3p-10, c7 = 0x1.a01bc27002c89p-13;
  constexpr double c8 = 0x1.a17c025e6b7c9p-16, c9 = 0x1.70dc13f82c86ap-19;
  const double r2 = r * r, r4 = r2 * r2, r8 = r4 * r4;
  const double a01 = fma(r, c1, c0);
  const double a23 = fma(r, c3, c2);
  const double a45 = fma(r, c5, c4);
  const double a67 = fma(r, c7, c6);
  const double a89 = fma(r, c9, c8);
  const double a03 = fma(r2, a23, a01);
  const double a47 = fma(r2, a67, a45);
  const double a07 = fma(r4, a47, a03);
  const double p = fma(r8, a89, a07);
  // Scale by 2^k: the low bits of t hold k, and shifting them into the
  // exponent field adds k to p's exponent (|k| <= 174 keeps it normal).
  const std::uint64_t scaled =
      bitsAs<std::uint64_t>(p) + (bitsAs<std::uint64_t>(t) << 52);
  const double y = bitsAs<double>(scaled);
  return x != x ? x : y;
}

// Natural logarithm of a value converted from single precision (so never
// subnormal): -inf at 0, NaN below 0 and for NaN, +inf at +inf. Relative
// error a few units of 1e-16. No table: looking values up in one costs more
// than the division below once the loops run on vector registers.
SUBSURF_FLUIDS_INLINE double logWide(double x) {
  // x = 2^k * z with z in [sqrt(2)/2, sqrt(2)), taken from the bits.
  constexpr std::uint64_t kLowest = 0x3fe6a09e667f3bcdULL;  // bits of sqrt(2)/2
  const std::uint64_t bits = bitsAs<std::uint64_t>(x);
  const std::uint64_t tmp = bits - kLowest;
  const std::int64_t k = static_cast<std::int64_t>(tmp) >> 52;
  const double z = bitsAs<double>(bits - (tmp & 0xfff0000000000000ULL));
  // k as a double without a 64-bit integer conversion (which older vector
  // instruction sets lack): add it to the mantissa of 1.5 * 2^52.
  const double kd =
      bitsAs<double>(static_cast<std::uint64_t>(k) + 0x4338000000000000ULL) - 0x1.8p52;
  // log z = 2 atanh(s) = s q(w) with s = (z - 1) / (z + 1), |s| < 0.1716,
  // and w = s^2 < 0.02944, where q(w) = 2 atanh(sqrt w) / sqrt w is the series
  // 2 (1 + w/3 + w^2/5 + ...). q by the polynomial of degree 6 in w with the
  // smallest largest relative error on [0, 0.02944] (Remez;
  // scripts/fit_polynomials.py prints the coefficients): relative error below
  // 2.3e-16 there, the coefficients' rounding to double included, where the
  // series needs ten terms. Summed in pairs.
  constexpr double c0 = 0x1.0000000000001p+1, c1 = 0x1.5555555552d0cp-1;
  constexpr double c2 = 0x1.999999a442662p-2, c3 = 0x1.249240b0c5295p-2;
  constexpr double c4 = 0x1.c722d0e9280c7p-3, c5 = 0x1.7322a70e4be12p-3;
  constexpr double c6 = 0x1.58db468358a55p-3;
  const double f = z - 1.0;  // exact
  const double s = f / (2.0 + f);
  const double w = s * s, w2 = w * w, w4 = w2 * w2;
  const double a01 = fma(w, c1, c0);
  const double a23 = fma(w, c3, c2);
  const double a45 = fma(w, c5, c4);
  const double a03 = fma(w2, a23, a01);
  const double a46 = fma(w2, c6, a45);
  const double q = fma(w4, a46, a03);
  const double y = fma(kd, kLn2Hi, fma(kd, kLn2Lo, s * q));

  constexpr double kInf = std::numeric_limits<double>::infinity();
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  double out = x == kInf ? kInf : y;
  out = x == 0.0 ? -kInf : out;
  out = ((x < 0.0) | (x != x)) ? kNaN : out;
  return out;
}

// Square root, correctly rounded: the double square root is correctly
// rounded, and rounding it again to single precision cannot go wrong (a
// double carries more than twice the digits of a float).
SUBSURF_FLUIDS_INLINE float sqrt(float x) {
  return static_cast<float>(std::sqrt(static_cast<double>(x)));
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
  const bool negativeBase = bitsAs<std::int32_t>(x) < 0;  // -0 included

  const double ax = static_cast<double>(negativeBase ? -x : x);
  double r = expWide(static_cast<double>(y) * logWide(ax));
  // |x| = 1 with an infinite exponent is 1 (the product above is NaN).
  r = ((ax == 1.0) & (ay == kInfF)) ? 1.0 : r;
  r = (negativeBase & odd) ? -r : r;
  r = ((x < 0.0f) & (x > -kInfF) & !integral) ? std::numeric_limits<double>::quiet_NaN() : r;
  r = ((y == 0.0f) | (x == 1.0f)) ? 1.0 : r;
  return static_cast<float>(r);
}

// 10^x, as pow(10, x) gives it, with ln 10 known rather than computed.
SUBSURF_FLUIDS_INLINE float exp10(float x) {
  constexpr double kLn10 = 2.302585092994046;
  return static_cast<float>(expWide(static_cast<double>(x) * kLn10));
}

// x^1.5, as pow(x, 1.5) gives it: x * sqrt(x) in double precision (within
// two units in the last place of a double) instead of a logarithm and an
// exponential. The C library's powf(-inf, 1.5) is +inf.
SUBSURF_FLUIDS_INLINE float threeHalvesPower(float x) {
  const double d = static_cast<double>(x);
  const double r = d * std::sqrt(d);
  return static_cast<float>(d == -std::numeric_limits<double>::infinity() ? -d : r);
}

}  // namespace subsurf::fluids::fmath
