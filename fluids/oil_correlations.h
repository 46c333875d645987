// Black-oil property correlations in fixed oilfield units.
//
// Single precision throughout, with the formulas exactly as the oil form has
// always evaluated them (including a few long-standing peculiarities noted at
// each routine), so that results match earlier reports. Units: pressure psia,
// temperature degrees Rankine unless a routine says degrees Fahrenheit, oil
// gravity degrees API, gas gravity relative to air, gas-oil ratio scf/stb,
// formation volume factor bbl/stb, compressibility 1/psi, viscosity cp,
// density g/cc. A missing or out-of-range input gives kRealNull.
#pragma once

#include "fluids/correlation_kernels.h"

namespace subsurf::fluids {

// Methods of oilCompressibility.
inline constexpr int kCompressibilityVasquezBeggs = 1;        // undersaturated oil
inline constexpr int kCompressibilityMcCainNoBubblePoint = 2;  // saturated oil, bubble point unknown
inline constexpr int kCompressibilityMcCain = 3;              // saturated oil
static_assert(kCompressibilityVasquezBeggs == kernels::kCoVasquezBeggs &&
              kCompressibilityMcCainNoBubblePoint == kernels::kCoMcCainNoBubblePoint &&
              kCompressibilityMcCain == kernels::kCoMcCain);

// Bubble-point pressure (psia) from the Vasquez-Beggs solution-GOR relation.
float oilBubblePoint(float gor, float gasGravity, float api, float temperatureR);

// Solution gas-oil ratio (scf/stb) at a pressure (Vasquez-Beggs).
float oilSolutionGor(float temperatureR, float pressure, float api, float gasGravity);

// Oil formation volume factor (bbl/stb): Standing's saturated value, shrunk by
// the method-1 compressibility above the bubble point.
float oilFormationVolumeFactor(float gor, float gasGravity, float api, float temperatureR,
                               float pressure, float bubblePoint);

// Oil compressibility (1/psi) by method 1..3; any other method gives null.
// The last argument is a second gas-oil ratio that no method currently uses.
float oilCompressibility(float gor, float gasGravity, float api, float temperature,
                         float pressure, int method, float bubblePoint, float otherGor);

// Dead-oil viscosity (cp) by Beggs-Robinson at a temperature in degF.
float oilDeadViscosity(float api, float temperatureF);

// Dead-oil viscosity moved from a reference temperature to a target one (degF).
float oilDeadViscosityAt(float knownViscosity, float targetF, float referenceF);

// Live-oil viscosity (cp) from the dead-oil viscosity and the solution GOR.
float oilLiveViscosity(float deadViscosity, float gor);

// Oil density at reservoir conditions (g/cc).
float oilDensity(float bo, float bubblePoint, float pressure, float gor, float gorAtBubblePoint,
                 float oilSpecificGravity, float gasGravity);

// Oil hydrogen index from its density (g/cc).
float oilHydrogenIndex(float density);

// Hydrogen-index value from the live-oil viscosity, by inverting the
// viscosity correlations to an API gravity. Never null: inputs it cannot use
// give 1.0.
float oilHydrogenIndexFromViscosity(float liveViscosity, float gor, float temperatureF);

}  // namespace subsurf::fluids
