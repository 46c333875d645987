#include "fluids/gas_correlations.h"

#include <cmath>

#include "fluids/correlation_kernels.h"
#include "fluids/float_math.h"
#include "host/nulls.h"

namespace subsurf::fluids {
namespace {

// Impurities cannot be negative; a negative content typed by mistake counts
// as none, and the caller is shown the corrected value.
void clampFractions(float& n2, float& co2, float& h2s) {
  n2 = kernels::clampFraction(n2);
  co2 = kernels::clampFraction(co2);
  h2s = kernels::clampFraction(h2s);
}

}  // namespace

float gasPseudoCriticalPressure(float gravity, float& n2, float& co2, float& h2s, int& status) {
  if (!(gravity > 0.0f)) {
    status = kFluidNoInput;
    return kRealNull;
  }
  status = kFluidOk;
  clampFractions(n2, co2, h2s);
  return kernels::pseudoCriticalPressure(gravity, n2, co2, h2s);
}

float gasPseudoCriticalTemperature(float gravity, float& n2, float& co2, float& h2s, int& status) {
  if (!(gravity > 0.0f)) {
    status = kFluidNoInput;
    return kRealNull;
  }
  status = kFluidOk;
  clampFractions(n2, co2, h2s);
  return kernels::pseudoCriticalTemperature(gravity, n2, co2, h2s);
}

void gasPseudoReduced(float gravity, float& n2, float& co2, float& h2s, float pressure,
                      float temperature, float& tpr, float& ppr, int& status) {
  tpr = kRealNull;
  ppr = kRealNull;
  status = kFluidNoInput;
  int st = kFluidOk;
  const float ppc = gasPseudoCriticalPressure(gravity, n2, co2, h2s, st);
  if (st != kFluidOk) return;
  const float tpc = gasPseudoCriticalTemperature(gravity, n2, co2, h2s, st);
  if (st != kFluidOk) return;
  tpr = temperature / tpc;
  ppr = pressure / ppc;
  status = kFluidOk;
}

SUBSURF_FMA_CLONES
float gasReducedDensity(float tpr, float ppr, int& status) {
  if (tpr < 1.05f || tpr > 3.0f) {
    status = kFluidOutOfRange;
  } else if (ppr < 0.0f || ppr > 30.0f) {
    status = kFluidOutOfRange;
  } else {
    status = kFluidOk;
  }

  constexpr float a1 = 0.3151f, a2 = -1.0467f, a3 = -0.5783f, a4 = 0.5353f, a5 = -0.6123f;
  constexpr float a5a6 = 0.06423f, a7 = 0.6816f, a8 = 0.6845f;

  const float tpr3 = tpr * tpr * tpr;
  const float t1 = a1 + a2 / tpr + a3 / tpr3;
  const float t2 = a4 + a5 / tpr;
  const float t3 = a5a6 / tpr;
  const float t4 = a7 / tpr3;
  const float t5 = 0.27f * ppr / tpr;

  // Start from the ideal gas (z = 1).
  float rho = t5;
  for (int step = 0; step < kReducedDensityMaxSteps; ++step) {
    const float r2 = rho * rho;
    const float r3 = r2 * rho;
    const float r5 = r3 * r2;
    const float r6 = r3 * r3;
    const float e = fmath::exp(-a8 * r2);
    const float f = rho + t1 * r2 + t2 * r3 + t3 * r6 + t4 * r3 * (1.0f + a8 * r2) * e - t5;
    const float df = 1.0f + 2.0f * t1 * rho + 3.0f * t2 * r2 + 6.0f * t3 * r5 +
                     t4 * r2 * (3.0f + a8 * r2 * (3.0f - 2.0f * a8 * r2)) * e;
    const float next = rho - f / df;
    if (std::fabs(next - rho) < 1.0e-6f) return next;
    rho = next;
  }
  // Newton did not settle: far outside the fit, where the answer means little.
  status = kFluidOutOfRange;
  return rho;
}

float gasZFactorEos(float tpr, float ppr, int& status) {
  const float rho = gasReducedDensity(tpr, ppr, status);
  // A zero density (zero pressure) leaves z undefined by this form.
  if (!(rho > 0.0f) || !(tpr > 0.0f)) {
    status = kFluidNoInput;
    return kRealNull;
  }
  return 0.27f * ppr / (tpr * rho);
}

float gasExpansionFactor(float z, float temperature, float pressure, float tsc, float psc) {
  return kernels::expansionFactor(z, temperature, pressure, tsc, psc);
}

SUBSURF_FMA_CLONES
float gasViscosity(float gravity, float z, float temperature, float pressure) {
  return kernels::viscosity(gravity, z, temperature, pressure);
}

float gasDensity(float gravity, float z, float temperature, float pressure) {
  return kernels::density(gravity, z, temperature, pressure);
}

float gasHydrogenIndex(float density) { return kernels::gasHydrogenIndex(density); }

float gasMixingRule(const float* values, float divisor, const float* weights, int n) {
  float sum = 0.0f;
  for (int k = 0; k < n; ++k) sum += weights[k] * values[k];
  return sum / divisor;
}

}  // namespace subsurf::fluids
