#include "fluids/z_factor_chart.h"

#include "fluids/correlation_kernels.h"
#include "fluids/gas_correlations.h"
#include "host/nulls.h"

namespace subsurf::fluids {

const float (&ZFactorChart::kTemperatures)[kRows] = kernels::kChartTemperatures;
const float (&ZFactorChart::kPressures)[kColumns] = kernels::kChartPressures;
const float (&ZFactorChart::kTable)[kRows][kColumns] = kernels::kChart;

float ZFactorChart::evaluate(float tpr, float ppr, int& status) {
  kernels::ChartBracket b;
  const float z = kernels::chartZ(tpr, ppr, status, b);
  // A reading that could not be made leaves the last bracket in place.
  if (status != kFluidNoInput) bracket_ = b;
  return z;
}

ZFactorChart& zFactorChart() {
  static ZFactorChart chart;
  return chart;
}

}  // namespace subsurf::fluids
