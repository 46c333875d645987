// Statistics of a vector of reals for axis limits: the usable count, the
// extremes and percentiles, and round axis limits.
//
// Usable values: finite, above the caller's exclusion bound, and of magnitude
// below 9.0e19 (larger magnitudes are null marks and count as no value).
//
// Percentiles are interpolated linearly between the two nearest ranks: with m
// usable values sorted as x[0] <= ... <= x[m-1], percentile p (0..100) lies at
// rank h = (m - 1) * p / 100 and is x[floor h] + (h - floor h) * (x[floor h + 1]
// - x[floor h]). This is the common "linear" definition (numpy's default), so
// the 1st percentile of 0..100 is 1 and the median of an even count is the
// mean of the middle two. p below 0 or above 100 is taken as 0 or 100. They are
// found by selection, not by sorting: O(m) per percentile.
//
// Round axis limits (roundAxisLimits): for a linear axis the step is the
// smallest of 1, 2, 2.5 and 5 times a power of ten that is at least a fifth of
// the range; the limits are the extremes moved outwards to multiples of that
// step (0.13..9.7 gives 0..10 with step 2; 1234..1297 gives 1220..1300 with
// step 20; -3.2..41 gives -10..50 with step 10). For a log axis
// the limits are the powers of ten around the extremes (3..470 gives 1..1000)
// and the step is 10. Equal extremes are returned unchanged with step 0: the
// caller decides what a single value's axis is.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace subsurf {

struct VectorStats {
  int count = 0;  // usable values
  float min = 0.0f, max = 0.0f;  // meaningful only when count > 0
  std::vector<float> percentiles;  // one per requested percentile, in request order
};

VectorStats vectorStats(std::span<const float> values, float exclusionBound, std::span<const float> percentiles);

struct RoundLimits {
  float low = 0.0f, high = 0.0f, step = 0.0f;
};

RoundLimits roundAxisLimits(float vmin, float vmax, bool logAxis);

}  // namespace subsurf
