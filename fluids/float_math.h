// Elementary functions for the single-precision correlations.
//
// The correlations are defined in single precision, and these are their exp,
// log, powers and square root, computed in single precision: each result is
// within a little over half a unit in the last place of the true value
// (measured: exp 0.63, log 0.58, 10^x 0.62, and x^y 0.72 for exponents up to
// 3 in size, which covers every exponent the correlations use; a power's
// error grows by about a tenth of a unit per unit of exponent beyond that).
// The result is therefore the float nearest the true value in all but one or
// two cases in a hundred, and its neighbour in those. The square root is
// correctly rounded, and so, all but always, is x^1.5 (formed in double
// precision). The roundings that would matter are carried beside the result
// as a second float (a value held as the unevaluated sum hi + lo) until the
// last addition.
//
// Single precision fills twice the lanes of a vector register that double
// precision does, and the batch calculation spends most of its time here.
//
// One definition serves the one-value routines and the batch alike, so a
// case computed alone and the same case in a batch are equal bit for bit.
// Every operation is an IEEE one (no contraction, fused multiply-adds only
// where written), so the bits do not depend on the instruction set either.
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
SUBSURF_FLUIDS_INLINE float fma(float a, float b, float c) {
#if defined(__GNUC__)
  return __builtin_fmaf(a, b, c);
#else
  return std::fma(a, b, c);
#endif
}

// ln 2 split in two: kLn2HiF has 15 significant bits, so that k times it is
// exact for every |k| below 512, and kLn2LoF is the float nearest the rest.
inline constexpr float kLn2HiF = 0x1.62e4p-1f;
inline constexpr float kLn2LoF = 0x1.7f7d1cp-20f;

// ------------------------------------------------------------ exponential ----

// e^(r + rLo) for |r| <= ln2/2 (a little beyond, for the roundings of r) and
// rLo below half a unit in the last place of r: 1 + r + rLo + r^2 q(r), where
// q(r) = (e^r - 1 - r) / r^2 is the polynomial of degree 5 with the smallest
// largest relative error on the interval (Remez; scripts/fit_polynomials.py
// prints the coefficients): 1.1e-8 with the coefficients rounded to float,
// which moves e^r by less than 1e-9 of itself. 1 + r is formed with its
// rounding error kept (exact, since |r| < 1), so that the only rounding of
// the size of the result's last place is the final addition.
SUBSURF_FLUIDS_INLINE float expReduced(float r, float rLo) {
  constexpr float q0 = 0x1p-1f, q1 = 0x1.555556p-3f, q2 = 0x1.5554eap-5f;
  constexpr float q3 = 0x1.11114cp-7f, q4 = 0x1.6d42cap-10f, q5 = 0x1.a072cp-13f;
  const float r2 = r * r;
  const float q01 = fma(r, q1, q0);
  const float q23 = fma(r, q3, q2);
  const float q45 = fma(r, q5, q4);
  const float q = fma(r2, fma(r2, q45, q23), q01);
  const float sum = 1.0f + r;
  // e^(r + rLo) = e^r (1 + rLo) to far below a float's precision, and of
  // e^r rLo the terms rLo + r rLo are all that reach the last place.
  const float sumLo = ((1.0f - sum) + r) + fma(r, rLo, rLo);
  return sum + fma(r2, q, sumLo);
}

// p * 2^n for p near 1 and |n| <= 180, with the range of floats honoured: two
// factors of 2^(n/2), each a normal float, so that p times the first is exact
// and the second rounds once, to infinity or gradually to zero as it must.
SUBSURF_FLUIDS_INLINE float scaleByPowerOfTwo(float p, std::int32_t n) {
  const std::int32_t n1 = n >> 1, n2 = n - n1;
  const float s1 = bitsAs<float>(static_cast<std::uint32_t>(n1 + 127) << 23);
  const float s2 = bitsAs<float>(static_cast<std::uint32_t>(n2 + 127) << 23);
  return (p * s1) * s2;
}

// e^(x + xLo), for xLo below half a unit in the last place of x. x = n ln2 +
// r: n rounded from x / ln2 (the low bits of x / ln2 + 1.5 * 2^23 hold it),
// x - n kLn2HiF, which is exact, plus the small rest xLo - n kLn2LoF, with
// the rounding of that sum carried beside it. Beyond -110 and 100 the result
// is 0 or infinite either way, so x is clamped there (and xLo dropped); NaN
// stays NaN.
SUBSURF_FLUIDS_INLINE float expOfSplit(float x, float xLo) {
  const float xc = x < -110.0f ? -110.0f : (x > 100.0f ? 100.0f : x);
  constexpr float kInvLn2 = 0x1.715476p+0f;
  constexpr float kShifter = 0x1.8p23f;
  const float t = fma(xc, kInvLn2, kShifter);
  const float n = t - kShifter;
  const float rExact = fma(-n, kLn2HiF, xc);
  const float rest = fma(-n, kLn2LoF, xc == x ? xLo : 0.0f);
  const float r = rExact + rest;
  const float rLo = (rExact - r) + rest;  // what the sum rounded away
  const float y = scaleByPowerOfTwo(expReduced(r, rLo),
                                    bitsAs<std::int32_t>(t) - bitsAs<std::int32_t>(kShifter));
  return x != x ? x : y;
}

SUBSURF_FLUIDS_INLINE float exp(float x) { return expOfSplit(x, 0.0f); }

// ------------------------------------------------------------- logarithm ----

// A positive float as 2^k (1 + f) with 1 + f in [sqrt(2)/2, sqrt(2)); f is
// exact. Subnormals are scaled into the normal range first.
struct Reduced {
  std::int32_t k;
  float f;
};
SUBSURF_FLUIDS_INLINE Reduced reduceForLog(float x) {
  const bool tiny = x < 0x1p-126f;
  const float xn = tiny ? x * 0x1p23f : x;
  constexpr std::uint32_t kLowest = 0x3f3504f3u;  // bits of sqrt(2)/2
  const std::uint32_t bits = bitsAs<std::uint32_t>(xn);
  const std::uint32_t tmp = bits - kLowest;
  const std::int32_t k = (static_cast<std::int32_t>(tmp) >> 23) - (tiny ? 23 : 0);
  const float m = bitsAs<float>(bits - (tmp & 0xff800000u));
  return {k, m - 1.0f};
}

// log(1 + f) for 1 + f in [sqrt(2)/2, sqrt(2)), as hi + lo. With s = f /
// (2 + f) and w = s^2, log(1 + f) = 2 atanh(s) = f - f^2/2 + s (f^2/2 + R),
// R = w r(w), where r(w) = 2 (1/3 + w/5 + w^2/7 + ...) is the polynomial of
// degree 2 with the smallest largest relative error on [0, 0.02944] (Remez;
// scripts/fit_polynomials.py prints the coefficients): 3e-7 with the
// coefficients rounded to float, which moves the logarithm by less than 1e-8
// of itself. The leading terms f - f^2/2 are kept exactly as hi + lo; only the
// small last term, below 2 per cent of the whole, carries the roundings of
// the quotient and the polynomial.
struct Split {
  float hi, lo;
};
SUBSURF_FLUIDS_INLINE Split logOnePlus(float f) {
  constexpr float r0 = 0x1.55555cp-1f, r1 = 0x1.997c24p-2f, r2 = 0x1.2ee7cap-2f;
  const float s = f / (2.0f + f);
  const float w = s * s;
  const float bigR = w * fma(w, fma(w, r2, r1), r0);
  const float halfF = 0.5f * f;                // exact
  const float halfSquare = halfF * f;
  const float halfSquareLo = fma(halfF, f, -halfSquare);  // exact: the two sum to f^2/2
  const float hi = f - halfSquare;
  const float hiLo = (f - hi) - halfSquare;  // exact, since |f| >= f^2/2
  return {hi, (hiLo - halfSquareLo) + s * (halfSquare + bigR)};
}

// log x as hi + lo: k ln2 + log(1 + f), with k kLn2HiF exact and its sum
// with the leading part of log(1 + f) kept exactly too. Only for positive
// finite floats (log() and pow() take the others apart).
SUBSURF_FLUIDS_INLINE Split logSplit(float x) {
  const Reduced x2 = reduceForLog(x);
  const Split l = logOnePlus(x2.f);
  const float kf = static_cast<float>(x2.k);
  const float a = kf * kLn2HiF;  // exact
  const float hi = a + l.hi;
  const float hiLo = (a - hi) + l.hi;  // exact: |a| >= |l.hi| unless a is 0
  return {hi, hiLo + fma(kf, kLn2LoF, l.lo)};
}

// Natural logarithm: -inf at 0, NaN below 0 and for NaN, +inf at +inf.
SUBSURF_FLUIDS_INLINE float log(float x) {
  const Split l = logSplit(x);
  constexpr float kInf = std::numeric_limits<float>::infinity();
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  float out = x == kInf ? kInf : l.hi + l.lo;
  out = x == 0.0f ? -kInf : out;
  out = ((x < 0.0f) | (x != x)) ? kNaN : out;
  return out;
}

// ----------------------------------------------------------------- others ----

// Square root, correctly rounded (as every IEEE square root is).
SUBSURF_FLUIDS_INLINE float sqrt(float x) {
#if defined(__GNUC__)
  return __builtin_sqrtf(x);
#else
  return std::sqrt(x);
#endif
}

// x^y with the special values of the C library's powf: y = 0 or x = 1 give 1;
// a negative base needs an integer exponent (NaN otherwise) and keeps its sign
// for an odd one; zero and infinite bases and exponents go to 0 or infinity.
// y log|x| is formed as a hi + lo pair, from log|x| as one.
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

  // y log|x| as a product of hi + lo pairs: the fused multiply-add gives the
  // product's rounding error exactly.
  const float ax = negativeBase ? -x : x;
  const Split l = logSplit(ax);
  float logHi = ax == kInfF ? kInfF : l.hi;
  logHi = ax == 0.0f ? -kInfF : logHi;
  logHi = ax != ax ? ax : logHi;
  const float t = y * logHi;
  float r = expOfSplit(t, fma(y, logHi, -t) + y * l.lo);
  // |x| = 1 with an infinite exponent is 1 (the product above is NaN).
  r = ((ax == 1.0f) & (ay == kInfF)) ? 1.0f : r;
  r = (negativeBase & odd) ? -r : r;
  r = ((x < 0.0f) & (x > -kInfF) & !integral) ? std::numeric_limits<float>::quiet_NaN() : r;
  r = ((y == 0.0f) | (x == 1.0f)) ? 1.0f : r;
  return r;
}

// 10^x, as pow(10, x) gives it, with ln 10 known rather than computed.
SUBSURF_FLUIDS_INLINE float exp10(float x) {
  constexpr float kLn10Hi = 0x1.26bb1cp+1f, kLn10Lo = -0x1.12aabap-25f;
  const float t = x * kLn10Hi;
  return expOfSplit(t, fma(x, kLn10Hi, -t) + x * kLn10Lo);
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
