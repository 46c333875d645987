// Percentile of values already sorted ascending, linear between the two
// nearest ranks: percentile p (0..100) of x(0) <= ... <= x(m-1) lies at rank
// (m-1)·p/100. The same rule as the axis statistics of host/vector_stats.h.
#pragma once

#include <cmath>
#include <vector>

namespace subsurf {

inline double percentileOfSorted(const std::vector<double>& sorted, double p) {
  const double h = (static_cast<double>(sorted.size()) - 1.0) * p / 100.0;
  const auto low = static_cast<std::size_t>(std::floor(h));
  if (low + 1 >= sorted.size()) return sorted.back();
  return sorted[low] + (h - static_cast<double>(low)) * (sorted[low + 1] - sorted[low]);
}

}  // namespace subsurf
