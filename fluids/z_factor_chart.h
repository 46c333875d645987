// Gas z-factor read from the Standing-Katz chart, digitised as a table of
// pseudo-reduced temperature (rows) by pseudo-reduced pressure (columns) and
// interpolated bilinearly.
//
// The chart remembers the bracket it used last (row and column indices,
// interpolation fractions and the two partial values along temperature), so
// a caller can show how a value was read. That memory makes it non-re-entrant:
// the process has one chart, used from one thread.
#pragma once

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
  int upperRow() const { return row_; }
  int upperColumn() const { return column_; }
  float temperatureFraction() const { return ft_; }
  float pressureFraction() const { return fp_; }
  float lowerPressureValue() const { return z1_; }
  float upperPressureValue() const { return z2_; }

  static const float kTemperatures[kRows];
  static const float kPressures[kColumns];
  static const float kTable[kRows][kColumns];

 private:
  int row_ = 0;
  int column_ = 0;
  float ft_ = 0.0f;
  float fp_ = 0.0f;
  float z1_ = 0.0f;
  float z2_ = 0.0f;
};

// The process-wide chart behind the "zfact" entry and FC_GASZ2.
ZFactorChart& zFactorChart();

}  // namespace subsurf::fluids
