// The gas and oil correlations as branch-free inline kernels.
//
// These are the single definitions of the formulas: the routines declared in
// gas_correlations.h and oil_correlations.h call them one value at a time,
// and the batch calculation calls them in loops the compiler vectorises.
// Each kernel computes its formula unconditionally and then selects the null
// result for inputs outside the formula's domain, so no branch depends on
// the data. Units and nulls are those of the public routines.
#pragma once

#include <cmath>
#include <cstdint>

#include "fluids/float_math.h"
#include "host/nulls.h"

namespace subsurf::fluids::kernels {

// ---------------------------------------------------------------- gas ----

// A negative impurity content counts as none.
SUBSURF_FLUIDS_INLINE float clampFraction(float f) { return f < 0.0f ? 0.0f : f; }

// Pseudo-critical pressure (psia) and temperature (degR) from a positive gas
// gravity and clamped fractions. Note the different sign patterns of the
// impurity terms in the two: they are the coefficients this suite has always
// used and results depend on them.
SUBSURF_FLUIDS_INLINE float pseudoCriticalPressure(float g, float n2, float co2, float h2s) {
  return 693.0f - 35.0f * g + 432.9f * n2 - 167.3f * co2 + 654.0f * h2s;
}
SUBSURF_FLUIDS_INLINE float pseudoCriticalTemperature(float g, float n2, float co2, float h2s) {
  return 158.0f + 333.0f * g - 167.3f * n2 + 279.9f * co2 - 127.0f * h2s;
}

SUBSURF_FLUIDS_INLINE float expansionFactor(float z, float t, float p, float tsc, float psc) {
  const bool ok = (z > 0.0f) & (t > 0.0f) & (p > 0.0f) & (tsc > 0.0f) & (psc > 0.0f);
  const float e = (p * tsc) / (z * t * psc);
  return ok ? e : kRealNull;
}

// Lee-Gonzalez-Eakin. 669.8 is the gas-law constant with the lb/ft3 to g/cc
// factor folded in, as the correlation has always been written here.
SUBSURF_FLUIDS_INLINE float viscosity(float g, float z, float t, float p) {
  const bool ok = (g > 0.0f) & (z > 0.0f) & (t > 0.0f) & (p > 0.0f);
  const float m = 29.0f * g;
  const float rho = p * m / (z * t * 669.8f);
  const float k = (9.4f + 0.02f * m) * fmath::threeHalvesPower(t) / ((209.0f + 19.0f * m + t) * 10000.0f);
  const float x = 3.5f + 986.0f / t + 0.01f * m;
  const float y = 2.4f - 0.2f * x;
  const float mu = k * fmath::exp(x * fmath::pow(rho, y));
  return ok ? mu : kRealNull;
}

// Real-gas law in lb/ft3 (R = 10.732 psia ft3 / lbmol degR), rounded, then to g/cc.
SUBSURF_FLUIDS_INLINE float density(float g, float z, float t, float p) {
  const bool ok = (g > 0.0f) & (z > 0.0f) & (t > 0.0f) & (p > 0.0f);
  const float lbPerCuft = p * 28.97f * g / (z * t * 10.732f);
  const float d = lbPerCuft * 0.0160184f;
  return ok ? d : kRealNull;
}

SUBSURF_FLUIDS_INLINE float gasHydrogenIndex(float density) {
  return density > 0.0f ? 2.25f * density : kRealNull;
}

// The Standing-Katz chart, digitised: z by pseudo-reduced temperature (rows)
// and pseudo-reduced pressure (columns).
inline constexpr int kChartRows = 14;
inline constexpr int kChartColumns = 14;
inline constexpr float kChartTemperatures[kChartRows] = {1.2f, 1.25f, 1.3f, 1.35f, 1.4f,
                                                         1.45f, 1.5f, 1.6f, 1.7f,  1.8f,
                                                         2.0f, 2.2f, 2.6f, 3.0f};
inline constexpr float kChartPressures[kChartColumns] = {0.0f, 1.0f, 1.5f, 2.0f, 2.5f,
                                                         3.0f, 3.5f, 4.0f, 5.0f, 6.0f,
                                                         7.0f, 8.0f, 12.0f, 15.0f};
// clang-format off
inline constexpr float kChart[kChartRows][kChartColumns] = {
  // Ppr: 0.0   1.0     1.5     2.0     2.5     3.0     3.5     4.0     5.0     6.0     7.0     8.0     12.0    15.0
  {1.0f, 0.806f, 0.657f, 0.555f, 0.519f, 0.534f, 0.566f, 0.608f, 0.694f, 0.790f, 0.890f, 0.988f, 1.364f, 1.645f},  // 1.2
  {1.0f, 0.813f, 0.710f, 0.627f, 0.581f, 0.581f, 0.602f, 0.633f, 0.709f, 0.797f, 0.890f, 0.979f, 1.344f, 1.613f},  // 1.25
  {1.0f, 0.838f, 0.757f, 0.687f, 0.638f, 0.624f, 0.633f, 0.653f, 0.720f, 0.803f, 0.890f, 0.977f, 1.327f, 1.588f},  // 1.3
  {1.0f, 0.856f, 0.791f, 0.732f, 0.687f, 0.669f, 0.670f, 0.687f, 0.742f, 0.814f, 0.896f, 0.976f, 1.310f, 1.558f},  // 1.35
  {1.0f, 0.875f, 0.817f, 0.767f, 0.728f, 0.707f, 0.704f, 0.716f, 0.760f, 0.828f, 0.902f, 0.980f, 1.299f, 1.529f},  // 1.4
  {1.0f, 0.890f, 0.841f, 0.799f, 0.765f, 0.745f, 0.739f, 0.746f, 0.787f, 0.845f, 0.913f, 0.984f, 1.284f, 1.508f},  // 1.45
  {1.0f, 0.901f, 0.859f, 0.824f, 0.796f, 0.777f, 0.771f, 0.776f, 0.810f, 0.863f, 0.922f, 0.990f, 1.278f, 1.493f},  // 1.5
  {1.0f, 0.923f, 0.889f, 0.861f, 0.840f, 0.825f, 0.817f, 0.818f, 0.846f, 0.892f, 0.944f, 1.001f, 1.266f, 1.470f},  // 1.6
  {1.0f, 0.941f, 0.915f, 0.893f, 0.876f, 0.864f, 0.858f, 0.856f, 0.879f, 0.918f, 0.965f, 1.018f, 1.256f, 1.442f},  // 1.7
  {1.0f, 0.953f, 0.934f, 0.918f, 0.904f, 0.896f, 0.891f, 0.892f, 0.912f, 0.946f, 0.988f, 1.033f, 1.249f, 1.424f},  // 1.8
  {1.0f, 0.970f, 0.957f, 0.947f, 0.941f, 0.938f, 0.937f, 0.939f, 0.954f, 0.986f, 1.020f, 1.059f, 1.244f, 1.390f},  // 2.0
  {1.0f, 0.981f, 0.974f, 0.968f, 0.963f, 0.962f, 0.963f, 0.968f, 0.988f, 1.013f, 1.044f, 1.078f, 1.240f, 1.362f},  // 2.2
  {1.0f, 0.996f, 0.995f, 0.995f, 0.995f, 0.997f, 1.000f, 1.007f, 1.027f, 1.050f, 1.073f, 1.100f, 1.235f, 1.340f},  // 2.6
  {1.0f, 1.007f, 1.010f, 1.014f, 1.019f, 1.024f, 1.030f, 1.035f, 1.049f, 1.066f, 1.086f, 1.110f, 1.232f, 1.333f},  // 3.0
};
// clang-format on

// The chart's values in pairs, each with its neighbour at the next higher
// pressure, as one 64-bit word (the value's bits low, the neighbour's high):
// a reading needs both, and vector code then fetches each pair with one load.
struct ChartPairs {
  std::uint64_t pair[kChartRows][kChartColumns - 1];
};
constexpr ChartPairs chartPairs() {
  ChartPairs p{};
  for (int r = 0; r < kChartRows; ++r) {
    for (int c = 0; c + 1 < kChartColumns; ++c) {
      p.pair[r][c] = __builtin_bit_cast(std::uint32_t, kChart[r][c]) |
                     (static_cast<std::uint64_t>(__builtin_bit_cast(std::uint32_t, kChart[r][c + 1]))
                      << 32);
    }
  }
  return p;
}
inline constexpr ChartPairs kChartPairs = chartPairs();

// Where a reading of the chart fell: 1-based upper row and column of the
// cell (rows i-1..i, columns j-1..j), the fractions along each axis and the
// two values interpolated along temperature.
struct ChartBracket {
  int row = 0, column = 0;
  float ft = 0.0f, fp = 0.0f, z1 = 0.0f, z2 = 0.0f;
};

// Upper bracket index: the first 1-based i in 2..n whose grid value exceeds
// x, n when none does (outside). Counting the grid values at or below x gives
// the same index without a data-dependent branch; the bracket's two grid
// values are picked up on the way (selects rather than table look-ups, which
// vector code would have to gather).
template <int N>
SUBSURF_FLUIDS_INLINE int upperBracket(const float (&grid)[N], float x, bool& outside, float& lo,
                                       float& hi) {
  int below = 0;
  lo = grid[0];
  hi = grid[1];
  // Unrolled completely, so that loops over many readings see straight-line code.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC unroll 16
#endif
  for (int g = 1; g < N - 1; ++g) {
    const bool atOrBelow = grid[g] <= x;
    below += atOrBelow ? 1 : 0;
    lo = atOrBelow ? grid[g] : lo;
    hi = atOrBelow ? grid[g + 1] : hi;
  }
  below += grid[N - 1] <= x ? 1 : 0;  // beyond the grid the last interval stays
  outside = below == N - 1;
  return below == N - 1 ? N : below + 2;
}

// z from the chart, interpolated bilinearly and extrapolated linearly from
// the last interval beyond the grid. Status 1 (null) unless both reduced
// values are positive; -1 beyond the last row or column; 0 otherwise. A
// temperature below the first row extrapolates with status 0.
SUBSURF_FLUIDS_INLINE float chartZ(float tpr, float ppr, int& status, ChartBracket& b) {
  const bool ok = (tpr > 0.0f) & (ppr > 0.0f);
  bool outT, outP;
  float t0, t1, p0, p1;
  b.row = upperBracket(kChartTemperatures, tpr, outT, t0, t1);
  b.column = upperBracket(kChartPressures, ppr, outP, p0, p1);
  const int r0 = b.row - 2, r1 = b.row - 1;
  const int c0 = b.column - 2;
  b.ft = (tpr - t0) / (t1 - t0);
  b.fp = (ppr - p0) / (p1 - p0);
  // Corners through a flat index (which vectorised loops can gather from),
  // two at a time.
  const std::uint64_t* flat = &kChartPairs.pair[0][0];
  const std::uint64_t lower = flat[r0 * (kChartColumns - 1) + c0];
  const std::uint64_t upper = flat[r1 * (kChartColumns - 1) + c0];
  const float z00 = fmath::bitsAs<float>(static_cast<std::uint32_t>(lower));
  const float z01 = fmath::bitsAs<float>(static_cast<std::uint32_t>(lower >> 32));
  const float z10 = fmath::bitsAs<float>(static_cast<std::uint32_t>(upper));
  const float z11 = fmath::bitsAs<float>(static_cast<std::uint32_t>(upper >> 32));
  b.z1 = z00 + b.ft * (z10 - z00);
  b.z2 = z01 + b.ft * (z11 - z01);
  const float z = b.z1 + b.fp * (b.z2 - b.z1);
  status = ok ? ((outT | outP) ? -1 : 0) : 1;
  return ok ? z : kRealNull;
}

// ---------------------------------------------------------------- oil ----

// Vasquez-Beggs solution-GOR constants: heavy oil (API <= 30) and light oil.
SUBSURF_FLUIDS_INLINE float vasquezBeggsC1(float api) { return api <= 30.0f ? 0.0362f : 0.0178f; }
SUBSURF_FLUIDS_INLINE float vasquezBeggsC2(float api) { return api <= 30.0f ? 1.0937f : 1.187f; }
SUBSURF_FLUIDS_INLINE float vasquezBeggsC3(float api) { return api <= 30.0f ? 25.724f : 23.931f; }

// e^(C3 * API / T), the temperature term of both Vasquez-Beggs forms: one
// calculation of an oil can work it out once for the two.
SUBSURF_FLUIDS_INLINE float vasquezBeggsTerm(float api, float tR) {
  return fmath::exp(vasquezBeggsC3(api) * api / tR);
}

SUBSURF_FLUIDS_INLINE float bubblePoint(float gor, float gg, float api, float tR, float term) {
  const bool ok = (gor >= 0.0f) & (gg > 0.0f) & (api > 0.0f) & (tR > 0.0f);
  const float c1 = vasquezBeggsC1(api), c2 = vasquezBeggsC2(api);
  const float pb = fmath::pow(gor / (gg * c1 * term), 1.0f / c2);
  return ok ? pb : kRealNull;
}
SUBSURF_FLUIDS_INLINE float bubblePoint(float gor, float gg, float api, float tR) {
  return bubblePoint(gor, gg, api, tR, vasquezBeggsTerm(api, tR));
}

// The factor beside C1 is the API gravity (not the gas gravity of the
// published form); the gas gravity is only checked. Results have always
// been computed this way.
SUBSURF_FLUIDS_INLINE float solutionGor(float tR, float p, float api, float gg, float term) {
  const bool ok = (tR > 0.0f) & (p > 0.0f) & (api > 0.0f) & (gg > 0.0f);
  const float c1 = vasquezBeggsC1(api), c2 = vasquezBeggsC2(api);
  const float rs = c1 * api * fmath::pow(p, c2) * term;
  return ok ? rs : kRealNull;
}
SUBSURF_FLUIDS_INLINE float solutionGor(float tR, float p, float api, float gg) {
  return solutionGor(tR, p, api, gg, vasquezBeggsTerm(api, tR));
}

inline constexpr int kCoVasquezBeggs = 1;
inline constexpr int kCoMcCainNoBubblePoint = 2;
inline constexpr int kCoMcCain = 3;

// Vasquez-Beggs undersaturated compressibility (method 1), divided by
// P * 10000 as required of it.
SUBSURF_FLUIDS_INLINE float vasquezBeggsCompressibility(float gor, float gg, float api, float t,
                                                        float p) {
  return (5.0f * gor + 17.2f * t + 12.61f * api - 1180.0f * gg - 1433.0f) / (p * 10000.0f);
}

SUBSURF_FLUIDS_INLINE float compressibility(float gor, float gg, float api, float t, float p,
                                            int method, float pb) {
  const bool ok = (gor >= 0.0f) & (gg > 0.0f) & (api > 0.0f) & (t > 0.0f) & (p > 0.0f) &
                  (pb > 0.0f);
  const float co1 = vasquezBeggsCompressibility(gor, gg, api, t, p);
  // McCain's two forms share one exponential: the exponent is chosen first.
  const float lnP = fmath::log(p), lnT = fmath::log(t), lnApi = fmath::log(api);
  const float lnRs = fmath::log(gor);
  const float arg2 = -7.633f - 1.497f * lnP + 1.115f * lnT + 0.533f * lnApi + 0.184f * lnRs;
  const float arg3 = -7.573f - 1.45f * lnP - 0.383f * fmath::log(pb) + 1.402f * lnT +
                     0.256f * lnApi + 0.449f * lnRs;
  const float coMcCain = fmath::exp(method == kCoMcCainNoBubblePoint ? arg2 : arg3);
  float co = kRealNull;
  co = method == kCoVasquezBeggs ? co1 : co;
  co = (method == kCoMcCainNoBubblePoint) | (method == kCoMcCain) ? coMcCain : co;
  return ok ? co : kRealNull;
}

// Standing's saturated volume factor, with (T - 520) on degrees Rankine where
// Standing has degrees Fahrenheit (about 0.33 degF apart), kept so results
// stay comparable; above the bubble point it shrinks with the method-1
// compressibility.
SUBSURF_FLUIDS_INLINE float formationVolumeFactor(float gor, float gg, float api, float tR, float p, float pb) {
  const bool ok = (gor >= 0.0f) & (gg > 0.0f) & (api > 0.0f) & (tR > 0.0f) & (p > 0.0f) &
                  (pb > 0.0f);
  const float so = 141.5f / (api + 131.5f);
  const float f = gor * fmath::sqrt(gg / so) + 1.25f * (tR - 520.0f);
  const float bob = 0.9759f + 0.00012f * fmath::pow(f, 1.2f);
  // (Where it applies, the inputs are valid, so this is what the method-1
  // compressibility routine returns.)
  const float co = vasquezBeggsCompressibility(gor, gg, api, tR, p);
  const float bo = pb < p ? bob * fmath::exp(co * (pb - p)) : bob;
  return ok ? bo : kRealNull;
}

// Beggs-Robinson dead-oil viscosity at a temperature in degF.
// (The temperature term, tF^-1.163, is a step of its own: a batch usually
// takes every dead-oil viscosity at the same temperature, 60 degF, and then
// works it out once.)
SUBSURF_FLUIDS_INLINE float deadViscosityTerm(float tF) { return fmath::pow(tF, -1.163f); }
SUBSURF_FLUIDS_INLINE float deadViscosity(float api, float tF, float term) {
  const bool ok = (api > 0.0f) & (tF > -200.0f);
  const float x = term * fmath::exp(6.9824f - 0.04658f * api);
  const float mu = fmath::exp10(x) - 1.0f;
  return ok ? mu : kRealNull;
}
SUBSURF_FLUIDS_INLINE float deadViscosity(float api, float tF) {
  return deadViscosity(api, tF, deadViscosityTerm(tF));
}

SUBSURF_FLUIDS_INLINE float deadViscosityAt(float known, float targetF, float referenceF) {
  const bool ok = (known > 0.0f) & (targetF >= -100.0f) & (referenceF >= -100.0f);
  const float mu = fmath::pow(known + 1.0f, fmath::pow(targetF / referenceF, -1.163f)) - 1.0f;
  return ok ? mu : kRealNull;
}

// Beggs-Robinson live-oil viscosity: mu = A * mu_dead ^ B.
SUBSURF_FLUIDS_INLINE float liveA(float gor) { return 10.715f * fmath::pow(gor + 100.0f, -0.515f); }
SUBSURF_FLUIDS_INLINE float liveB(float gor) { return 5.44f * fmath::pow(gor + 150.0f, -0.338f); }

SUBSURF_FLUIDS_INLINE float liveViscosity(float dead, float gor) {
  const bool ok = (dead > 0.0f) & (gor >= 0.0f);
  const float mu = liveA(gor) * fmath::pow(dead, liveB(gor));
  return ok ? mu : kRealNull;
}

// ------------------------------------------------------- the forms' rules ----

// Two-segment geothermal gradient from a 60 degF surface: 1.5 degF per 100 ft
// down to 5000 ft, 1.2 degF per 100 ft below.
SUBSURF_FLUIDS_INLINE float geothermalTemperatureF(float depthFt) {
  const float upper = 5000.0f < depthFt ? 5000.0f : depthFt;  // min(depth, 5000)
  const float below = depthFt - 5000.0f;
  const float lower = below < 0.0f ? 0.0f : below;             // max(depth - 5000, 0)
  return 60.0f + 0.015f * upper + 0.012f * lower;
}

// Hydrostatic pressure at 0.44 psi/ft.
SUBSURF_FLUIDS_INLINE float hydrostaticPressure(float depthFt) { return 0.44f * depthFt; }

// The oil form's compressibility: McCain's saturated form with the gas-oil
// ratio at reservoir pressure when the oil is at or below its bubble point,
// Vasquez-Beggs with the solution ratio when it is undersaturated.
// (A batch works the two forms out separately, each for the cases it applies
// to; `term` is vasquezBeggsTerm(oden, tR).)
SUBSURF_FLUIDS_INLINE bool formCompressibilityIsSaturated(float pres, float pb) {
  return pres <= pb;
}
SUBSURF_FLUIDS_INLINE float saturatedFormCompressibility(float sgden, float oden, float tR,
                                                         float pres, float pb, float term) {
  return compressibility(solutionGor(tR, pres, oden, sgden, term), sgden, oden, tR, pres,
                         kCoMcCain, pb);
}
SUBSURF_FLUIDS_INLINE float undersaturatedFormCompressibility(float solgor, float sgden,
                                                              float oden, float tR, float pres,
                                                              float pb) {
  return compressibility(solgor, sgden, oden, tR, pres, kCoVasquezBeggs, pb);
}
SUBSURF_FLUIDS_INLINE float formCompressibility(float solgor, float sgden, float oden, float tR,
                                                float pres, float pb) {
  return formCompressibilityIsSaturated(pres, pb)
             ? saturatedFormCompressibility(sgden, oden, tR, pres, pb, vasquezBeggsTerm(oden, tR))
             : undersaturatedFormCompressibility(solgor, sgden, oden, tR, pres, pb);
}

}  // namespace subsurf::fluids::kernels
