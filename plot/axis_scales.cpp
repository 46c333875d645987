#include "plot/axis_scales.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "host/nulls.h"
#include "host/vector_stats.h"
#include "units/units_registry.h"

namespace subsurf {
namespace {

std::string field(std::string_view text, int index, int width) {
  std::string s(text.substr(static_cast<std::size_t>(index * width), static_cast<std::size_t>(width)));
  while (!s.empty() && s.back() == ' ') s.pop_back();
  return s;
}

int clampInto(int v, int lo, int hi) { return std::clamp(v, lo, hi); }

// The decade around v: 10^k .. 10^(k+1), k from the magnitude of v, truncated
// toward zero and one less below 1 (k = -1 for 0). The magnitude is used on
// purpose: equal negative values get positive decade limits as well.
Limits decadeAround(float v) {
  const double magnitude = std::fabs(static_cast<double>(v));
  int k = -1;
  if (magnitude > 0.0) {
    k = static_cast<int>(std::trunc(std::log10(magnitude)));
    if (magnitude < 1.0) k -= 1;
  }
  return {static_cast<float>(std::pow(10.0, k)), static_cast<float>(std::pow(10.0, k + 1))};
}

// Standard normal distribution and its inverse (Acklam's rational
// approximation refined by one Halley step: better than 1e-12).
double normalCdf(double z) { return 0.5 * std::erfc(-z / std::sqrt(2.0)); }

double normalQuantile(double p) {
  if (!(p > 0.0 && p < 1.0)) return p == 0.0 ? -INFINITY : p == 1.0 ? INFINITY : NAN;
  static constexpr double a[] = {-3.969683028665376e+01, 2.209460984245205e+02, -2.759285104469687e+02,
                                 1.383577518672690e+02,  -3.066479806614716e+01, 2.506628277459239e+00};
  static constexpr double b[] = {-5.447609879822406e+01, 1.615858368580409e+02, -1.556989798598866e+02,
                                 6.680131188771972e+01,  -1.328068155288572e+01};
  static constexpr double c[] = {-7.784894002430293e-03, -3.223964580411365e-01, -2.400758277161838e+00,
                                 -2.549732539343734e+00, 4.374664141464968e+00,  2.938163982698783e+00};
  static constexpr double d[] = {7.784695709041462e-03, 3.224671290700398e-01, 2.445134137142996e+00,
                                 3.754408661907416e+00};
  double x;
  if (p < 0.02425) {
    const double q = std::sqrt(-2 * std::log(p));
    x = (((((c[0] * q + c[1]) * q + c[2]) * q + c[3]) * q + c[4]) * q + c[5]) /
        ((((d[0] * q + d[1]) * q + d[2]) * q + d[3]) * q + 1);
  } else if (p > 1 - 0.02425) {
    const double q = std::sqrt(-2 * std::log(1 - p));
    x = -(((((c[0] * q + c[1]) * q + c[2]) * q + c[3]) * q + c[4]) * q + c[5]) /
        ((((d[0] * q + d[1]) * q + d[2]) * q + d[3]) * q + 1);
  } else {
    const double q = p - 0.5, r = q * q;
    x = (((((a[0] * r + a[1]) * r + a[2]) * r + a[3]) * r + a[4]) * r + a[5]) * q /
        (((((b[0] * r + b[1]) * r + b[2]) * r + b[3]) * r + b[4]) * r + 1);
  }
  const double e = normalCdf(x) - p;
  const double u = e * std::sqrt(2 * M_PI) * std::exp(x * x / 2);
  return x - u / (1 + x * u / 2);
}

}  // namespace

std::string rangeModeName(int mode) { return mode >= 1 && mode <= 6 ? field(kScaleNames, mode - 1, 8) : ""; }
std::string scaleTypeName(int type) { return type >= 1 && type <= 8 ? field(kScaleNames, type + 5, 8) : ""; }
std::string monthLabel(int month) { return month >= 1 && month <= 12 ? field(kMonthLabels, month - 1, 3) : ""; }
std::string probabilityLabel(int index) {
  if (index < 0 || index >= kProbabilityLabelCount) return "";
  return std::string(kProbabilityLabels.substr(static_cast<std::size_t>(index * 2), 2));
}
int probabilityLabelValue(int index) {
  const std::string label = probabilityLabel(index);
  return label.empty() ? 0 : std::stoi(label);
}

Limits fallbackLimits(int scaleType) {
  static constexpr Limits kFallback[8] = {{0, 1}, {0.1f, 100}, {0, 100}, {0, 1}, {0, 1}, {1, 99}, {0, 1}, {-3, 3}};
  return kFallback[clampInto(scaleType, 1, 8) - 1];
}

Limits emptyVectorLimits(int scaleType) {
  return clampInto(scaleType, 1, 8) == kLog ? Limits{0.1f, 10} : Limits{0, 1};
}

void setAxisLimits(std::span<const float> values, ZW_SCALE& scale) {
  scale.MODE = clampInto(scale.MODE, kManual, kP90P10);
  scale.TYPE = clampInto(scale.TYPE, kLinear, kProb);
  const bool log = scale.TYPE == kLog;
  const float bound = log ? 0.0f : kRealNull / 2;
  const Limits fallback = fallbackLimits(scale.TYPE);

  if (values.empty()) {
    const bool keep = scale.MODE == kManual && scale.MIN > bound && scale.MAX > bound && scale.MIN != scale.MAX;
    if (!keep) scale.MIN = fallback.min, scale.MAX = fallback.max;
    return;
  }

  // A manual scale keeps what the user set; only unset limits come from the data.
  bool manualFill = false;
  if (scale.MODE == kManual) {
    if (scale.MIN > bound && std::fabs(scale.MAX - scale.MIN) == 0.0f) {
      scale.MODE = kAutoRound;  // a window of no width is no window: find one
    } else if (scale.MIN > bound && scale.MAX > bound) {
      return;
    } else {
      manualFill = true;
    }
  }

  const int mode = manualFill ? kAutoRound : scale.MODE;
  float pcts[2] = {0, 0};
  std::span<const float> wanted;
  if (mode == kP99P1) pcts[0] = 1, pcts[1] = 99;
  if (mode == kP95P5) pcts[0] = 5, pcts[1] = 95;
  if (mode == kP90P10) pcts[0] = 10, pcts[1] = 90;
  if (mode >= kP99P1) wanted = std::span<const float>(pcts, 2);
  const VectorStats stats = vectorStats(values, bound, wanted);

  Limits found = fallback;
  if (stats.count > 0) {
    if (mode == kAuto) {
      found = {stats.min, stats.max};
    } else if (mode == kAutoRound) {
      const RoundLimits r = roundAxisLimits(stats.min, stats.max, log);
      found = {r.low, r.high};
    } else {
      found = {stats.percentiles[0], stats.percentiles[1]};
    }
    if (!(std::fabs(found.max - found.min) > 0.0f)) found = decadeAround(found.min);
  }

  if (manualFill) {
    if (!(scale.MIN > bound)) scale.MIN = found.min;
    if (!(scale.MAX > bound)) scale.MAX = found.max;
    if (!(std::fabs(scale.MAX - scale.MIN) > 0.0f)) {
      const Limits decade = decadeAround(scale.MIN);
      scale.MIN = decade.min, scale.MAX = decade.max;
    }
    return;
  }
  scale.MIN = found.min;
  scale.MAX = found.max;
}

void setAxisLimits(const DT_RVEC& vector, ZW_SCALE& scale) {
  if (vector.N < 1 || !vector.V) {
    const Limits empty = emptyVectorLimits(scale.TYPE);
    scale.MIN = empty.min, scale.MAX = empty.max;
    return;
  }
  std::vector<float> work(vector.V, vector.V + vector.N);
  std::string unit(scale.UNIT, sizeof scale.UNIT);
  while (!unit.empty() && (unit.back() == ' ' || unit.back() == '\0')) unit.pop_back();
  if (!unit.empty() && vector.VU.ISER >= 0 && vector.VU.IUN >= 1) {
    const UnitsRegistry& units = unitsRegistry();
    const int to = units.findUnit(vector.VU.ISER, unit);
    if (to >= 1 && to != vector.VU.IUN) {
      int err = 0;
      units.convert(work.data(), work.size(), vector.VU.ISER, vector.VU.IUN, to, err);
    }
  }
  setAxisLimits(std::span<const float>(work), scale);
}

int step125(int n) {
  if (n < 1) return 1;
  int m = 1;  // 10 to the power of log10(n) truncated
  while (m <= n / 10) m *= 10;
  const double ratio = static_cast<double>(n) / m;
  if (ratio > 5) n = m;
  else if (ratio > 2) n = m / 2;
  else n = m / 5;
  return std::max(n, 1);
}

double scaleTransform(int type, double v) {
  switch (clampInto(type, 1, 8)) {
    case kLog: return v > 0 ? std::log10(v) : NAN;
    case kSquare: return v * std::fabs(v);
    case kSqrt: return v >= 0 ? std::sqrt(v) : -std::sqrt(-v);
    case kRecip: return v != 0 ? -1.0 / v : NAN;  // negated so that larger values lie further along
    case kNorm: return v > 0 && v < 100 ? normalQuantile(v / 100.0) : NAN;
    default: return v;  // Linear, Stan (standardised values) and Prob (standard deviations) are linear in value
  }
}

double scaleInverse(int type, double t) {
  switch (clampInto(type, 1, 8)) {
    case kLog: return std::pow(10.0, t);
    case kSquare: return t >= 0 ? std::sqrt(t) : -std::sqrt(-t);
    case kSqrt: return t * std::fabs(t);
    case kRecip: return t != 0 ? -1.0 / t : NAN;
    case kNorm: return 100.0 * normalCdf(t);
    default: return t;
  }
}

ZW_SCALE drawableScale(const ZW_SCALE& scale) {
  ZW_SCALE s = scale;
  s.TYPE = clampInto(s.TYPE, kLinear, kProb);
  auto showable = [&](float v) { return !isNull(v) && std::isfinite(scaleTransform(s.TYPE, v)); };
  auto repair = [&](float& bad, float other) {
    if (showable(bad)) return;
    if (s.TYPE == kNorm) bad = isNull(bad) || bad <= 0 ? 0.1f : 99.9f;
    if (!showable(other)) return;
    if (s.TYPE == kLog) bad = other / 1000.0f;
    else if (s.TYPE == kRecip) bad = other / 100.0f;
  };
  repair(s.MIN, s.MAX);
  repair(s.MAX, s.MIN);
  if (!showable(s.MIN) || !showable(s.MAX) || s.MIN == s.MAX ||
      (s.TYPE == kRecip && (s.MIN < 0) != (s.MAX < 0))) {
    const Limits f = fallbackLimits(s.TYPE);
    s.MIN = f.min;
    s.MAX = f.max;
    if (s.TYPE == kRecip) s.MIN = 0.1f;  // the fallback's 0 is not on a reciprocal axis
  }
  return s;
}

double axisFraction(const ZW_SCALE& scale, double value) {
  const double t0 = scaleTransform(scale.TYPE, scale.MIN), t1 = scaleTransform(scale.TYPE, scale.MAX);
  const double t = scaleTransform(scale.TYPE, value);
  if (!std::isfinite(t0) || !std::isfinite(t1) || !std::isfinite(t) || t1 == t0) return NAN;
  return (t - t0) / (t1 - t0);
}

double axisValue(const ZW_SCALE& scale, double fraction) {
  const double t0 = scaleTransform(scale.TYPE, scale.MIN), t1 = scaleTransform(scale.TYPE, scale.MAX);
  if (!std::isfinite(t0) || !std::isfinite(t1)) return NAN;
  return scaleInverse(scale.TYPE, t0 + fraction * (t1 - t0));
}

}  // namespace subsurf
