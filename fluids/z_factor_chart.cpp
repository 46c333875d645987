#include "fluids/z_factor_chart.h"

#include "fluids/gas_correlations.h"
#include "host/nulls.h"

namespace subsurf::fluids {

const float ZFactorChart::kTemperatures[kRows] = {1.2f, 1.25f, 1.3f, 1.35f, 1.4f, 1.45f, 1.5f,
                                                  1.6f, 1.7f,  1.8f, 2.0f,  2.2f, 2.6f,  3.0f};

const float ZFactorChart::kPressures[kColumns] = {0.0f, 1.0f, 1.5f, 2.0f, 2.5f, 3.0f,  3.5f,
                                                  4.0f, 5.0f, 6.0f, 7.0f, 8.0f, 12.0f, 15.0f};

// clang-format off
const float ZFactorChart::kTable[kRows][kColumns] = {
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

namespace {

// First 1-based index i in 2..n whose grid value exceeds x; n when none does,
// with outside set, so the last interval is extended.
int upperBracket(const float* grid, int n, float x, bool& outside) {
  for (int i = 2; i <= n; ++i) {
    if (grid[i - 1] > x) return i;
  }
  outside = true;
  return n;
}

}  // namespace

float ZFactorChart::evaluate(float tpr, float ppr, int& status) {
  if (!(tpr > 0.0f) || !(ppr > 0.0f)) {
    status = kFluidNoInput;
    return kRealNull;
  }
  status = kFluidOk;
  bool outside = false;
  row_ = upperBracket(kTemperatures, kRows, tpr, outside);
  column_ = upperBracket(kPressures, kColumns, ppr, outside);
  if (outside) status = kFluidOutOfRange;

  // Zero-based corners of the cell: lower row/column r0, c0 and upper r1, c1.
  const int r0 = row_ - 2, r1 = row_ - 1;
  const int c0 = column_ - 2, c1 = column_ - 1;
  ft_ = (tpr - kTemperatures[r0]) / (kTemperatures[r1] - kTemperatures[r0]);
  fp_ = (ppr - kPressures[c0]) / (kPressures[c1] - kPressures[c0]);
  z1_ = kTable[r0][c0] + ft_ * (kTable[r1][c0] - kTable[r0][c0]);
  z2_ = kTable[r0][c1] + ft_ * (kTable[r1][c1] - kTable[r0][c1]);
  return z1_ + fp_ * (z2_ - z1_);
}

ZFactorChart& zFactorChart() {
  static ZFactorChart chart;
  return chart;
}

}  // namespace subsurf::fluids
