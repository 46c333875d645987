// Gas z-factor read from the Standing-Katz chart, digitised as a table of
// pseudo-reduced temperature (rows) by pseudo-reduced pressure (columns) and
// interpolated bilinearly.
//
// The chart remembers the bracket it used last (row and column indices,
// interpolation fractions and the two partial values along temperature), so
// a caller can show how a value was read. That memory makes it non-re-entrant:
// the process has one chart, used from one thread.
#pragma once

#include "fluids/correlation_kernels.h"

namespace subsurf::fluids {

class ZFactorChart {
 public:
  static constexpr int kRows = 14;
  static constexpr int kColumns = 14;

  // z-factor at (Tpr, Ppr). Status 1 and null when either is not positive;
  // -1 when either lies beyond the last grid value, in which case the value
  // is extrapolated linearly from the last interval. A temperature below the
  // first grid row extrapolates from the first interval with status 0.
  float evaluate(float tpr, float ppr, int& status);

  // The bracket of the last successful evaluation, with 1-based upper indices
  // as the chart is usually described: row i-1..i, column j-1..j.
  int upperRow() const { return bracket_.row; }
  int upperColumn() const { return bracket_.column; }
  float temperatureFraction() const { return bracket_.ft; }
  float pressureFraction() const { return bracket_.fp; }
  float lowerPressureValue() const { return bracket_.z1; }
  float upperPressureValue() const { return bracket_.z2; }
  const kernels::ChartBracket& bracket() const { return bracket_; }

  static const float (&kTemperatures)[kRows];
  static const float (&kPressures)[kColumns];
  static const float (&kTable)[kRows][kColumns];

 private:
  kernels::ChartBracket bracket_;
};

// The process-wide chart behind the "zfact" entry and FC_GASZ2.
ZFactorChart& zFactorChart();

}  // namespace subsurf::fluids
