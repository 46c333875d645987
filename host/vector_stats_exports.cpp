// C entry points of the vector statistics and round axis limits.
#include <algorithm>
#include <span>

#include "host/vector_stats.h"
#include "subsurf/host.h"

extern "C" {

void A_VECSTATS1(const int* n, const float* values, const float* bound, const int* npct, const float* pcts,
                 int* count, float* vmin, float* vmax, float* pctvalues) {
  if (count) *count = 0;
  if (vmin) *vmin = 0.0f;
  if (vmax) *vmax = 0.0f;
  const std::size_t nv = n && values && *n > 0 ? static_cast<std::size_t>(*n) : 0;
  const std::size_t np = npct && pcts && *npct > 0 ? static_cast<std::size_t>(*npct) : 0;
  try {
    const subsurf::VectorStats s =
        subsurf::vectorStats(std::span<const float>(values, nv), bound ? *bound : -3.4e38f, std::span<const float>(pcts, np));
    if (count) *count = s.count;
    if (vmin) *vmin = s.min;
    if (vmax) *vmax = s.max;
    if (pctvalues) std::copy(s.percentiles.begin(), s.percentiles.end(), pctvalues);
  } catch (...) {
    // Out of memory for the work copy: no usable values reported.
    if (count) *count = 0;
  }
}

void A_AXLIM(const float* vmin, const float* vmax, const int* log, float* low, float* high, float* step) {
  if (!vmin || !vmax) return;
  const subsurf::RoundLimits r = subsurf::roundAxisLimits(*vmin, *vmax, log && *log == 1);
  if (low) *low = r.low;
  if (high) *high = r.high;
  if (step) *step = r.step;
}

}  // extern "C"
