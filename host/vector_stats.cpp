#include "host/vector_stats.h"

#include <algorithm>
#include <cmath>

#include "host/nulls.h"

namespace subsurf {

VectorStats vectorStats(std::span<const float> values, float exclusionBound, std::span<const float> percentiles) {
  VectorStats stats;
  stats.percentiles.assign(percentiles.size(), 0.0f);
  std::vector<float> work;
  work.reserve(percentiles.empty() ? 0 : values.size());
  float lo = 0.0f, hi = 0.0f;
  for (float v : values) {
    if (!(v > exclusionBound) || !(std::fabs(v) < kNoValueMagnitude)) continue;  // NaN fails both
    if (stats.count == 0) lo = hi = v;
    lo = std::min(lo, v);
    hi = std::max(hi, v);
    ++stats.count;
    if (!percentiles.empty()) work.push_back(v);
  }
  stats.min = lo;
  stats.max = hi;
  if (stats.count == 0 || percentiles.empty()) return stats;

  // Ascending requests let each selection work on what lies above the last one.
  std::vector<std::size_t> order(percentiles.size());
  for (std::size_t k = 0; k < order.size(); ++k) order[k] = k;
  auto clampedP = [&](std::size_t k) { return std::clamp(static_cast<double>(percentiles[k]), 0.0, 100.0); };
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return clampedP(a) < clampedP(b); });
  const std::size_t m = work.size();
  std::size_t sortedFrom = 0;
  for (std::size_t k : order) {
    const double h = static_cast<double>(m - 1) * clampedP(k) / 100.0;
    const std::size_t r = std::min(m - 1, static_cast<std::size_t>(std::floor(h)));
    const double frac = h - static_cast<double>(r);
    std::nth_element(work.begin() + static_cast<std::ptrdiff_t>(sortedFrom), work.begin() + static_cast<std::ptrdiff_t>(r),
                     work.end());
    sortedFrom = r;
    const double below = work[r];
    double above = below;
    if (frac > 0.0 && r + 1 < m) above = *std::min_element(work.begin() + static_cast<std::ptrdiff_t>(r + 1), work.end());
    stats.percentiles[k] = static_cast<float>(below + frac * (above - below));
  }
  return stats;
}

namespace {

// The nice step (1, 2, 2.5 or 5 times a power of ten) at least rough.
double niceStep(double rough) {
  const double magnitude = std::pow(10.0, std::floor(std::log10(rough)));
  for (double nice : {1.0, 2.0, 2.5, 5.0, 10.0})
    if (nice * magnitude >= rough * (1.0 - 1e-9)) return nice * magnitude;
  return 10.0 * magnitude;
}

}  // namespace

RoundLimits roundAxisLimits(float vmin, float vmax, bool logAxis) {
  double a = std::min(vmin, vmax), b = std::max(vmin, vmax);
  RoundLimits out{static_cast<float>(a), static_cast<float>(b), 0.0f};
  if (!(b > a) || !std::isfinite(a) || !std::isfinite(b)) return out;
  if (logAxis && a > 0.0) {
    // A small tolerance keeps exact powers of ten (held in single precision) on themselves.
    const double ka = std::floor(std::log10(a) + 1e-6), kb = std::ceil(std::log10(b) - 1e-6);
    out.low = static_cast<float>(std::pow(10.0, ka));
    out.high = static_cast<float>(std::pow(10.0, std::max(kb, ka + 1)));
    out.step = 10.0f;
    return out;
  }
  const double step = niceStep((b - a) / 5.0);
  // The tolerance keeps a limit that is already a multiple (within float noise) where it is.
  const double low = std::floor(a / step + 1e-6) * step;
  const double high = std::ceil(b / step - 1e-6) * step;
  out.low = static_cast<float>(low + 0.0);  // + 0.0: never a negative zero
  out.high = static_cast<float>(high + 0.0);
  out.step = static_cast<float>(step);
  return out;
}

}  // namespace subsurf
