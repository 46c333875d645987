// Natural-gas property correlations in fixed oilfield units.
//
// Every routine works in single precision, exactly as the fluid forms have
// always computed, so that a value typed into a form today matches the value
// the same inputs gave in older reports. Units inside these routines never
// change: pressure in psia, temperature in degrees Rankine, gas gravity
// relative to air, impurity contents as fractions (0..1), density in g/cc,
// viscosity in cp, gas expansion factor in scf/cf.
//
// A missing or non-physical input gives kRealNull, never a message. Where a
// routine has a status it is 0 when computed normally, 1 when an input was
// missing or not positive (result null), and -1 when a reduced value lay
// outside the correlation's range (the result is still computed).
#pragma once

namespace subsurf::fluids {

inline constexpr int kFluidOk = 0;
inline constexpr int kFluidNoInput = 1;
inline constexpr int kFluidOutOfRange = -1;

// Pseudo-critical pressure (psia) from gas gravity and impurity fractions.
// Negative fractions are clamped to 0 and the clamped values written back.
float gasPseudoCriticalPressure(float gravity, float& n2, float& co2, float& h2s, int& status);
// Pseudo-critical temperature (degR); same clamping as the pressure.
float gasPseudoCriticalTemperature(float gravity, float& n2, float& co2, float& h2s, int& status);

// Pseudo-reduced temperature and pressure from the gas composition and the
// reservoir pressure (psia) and temperature (degR). Both outputs are null and
// the status 1 when the gravity is not positive. The fractions are clamped in
// place as by the pseudo-critical routines.
void gasPseudoReduced(float gravity, float& n2, float& co2, float& h2s, float pressure,
                      float temperature, float& tpr, float& ppr, int& status);

// Newton steps allowed before the reduced-density iteration gives up. Inside
// the correlation's range the iteration converges in well under twenty steps;
// the cap only stops a runaway far outside it.
inline constexpr int kReducedDensityMaxSteps = 500;

// Reduced density from the eight-constant Dranchuk-Purvis-Robinson equation of
// state, solved by Newton's method from z = 1. Status -1 flags a reduced value
// outside Tpr 1.05..3.0 / Ppr 0..30 (the iteration still runs) or an iteration
// that hit the step cap (the last iterate is returned).
float gasReducedDensity(float tpr, float ppr, int& status);

// z-factor from the equation of state: 0.27 Ppr / (Tpr rho).
float gasZFactorEos(float tpr, float ppr, int& status);

// Gas expansion factor E = P Tsc / (z T Psc), scf/cf.
float gasExpansionFactor(float z, float temperature, float pressure, float tsc, float psc);

// Gas viscosity by Lee-Gonzalez-Eakin, cp.
float gasViscosity(float gravity, float z, float temperature, float pressure);

// Gas density at reservoir conditions, g/cc.
float gasDensity(float gravity, float z, float temperature, float pressure);

// Gas hydrogen index from its reservoir density (g/cc).
float gasHydrogenIndex(float density);

// Weighted mixing rule: sum(weights[k] * values[k]) / divisor over n terms.
float gasMixingRule(const float* values, float divisor, const float* weights, int n);

}  // namespace subsurf::fluids
