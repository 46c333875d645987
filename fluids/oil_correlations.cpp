#include "fluids/oil_correlations.h"

#include <bit>
#include <cmath>
#include <cstdint>

#include "fluids/correlation_kernels.h"
#include "fluids/float_math.h"
#include "host/nulls.h"

namespace subsurf::fluids {
namespace {

// Single-precision values compared as signed integers: this orders positive
// values as numbers do and puts every negative value below every positive one.
std::int32_t bitsOf(float x) { return std::bit_cast<std::int32_t>(x); }

}  // namespace

SUBSURF_FMA_CLONES
float oilBubblePoint(float gor, float gasGravity, float api, float temperatureR) {
  return kernels::bubblePoint(gor, gasGravity, api, temperatureR);
}

SUBSURF_FMA_CLONES
float oilSolutionGor(float temperatureR, float pressure, float api, float gasGravity) {
  return kernels::solutionGor(temperatureR, pressure, api, gasGravity);
}

SUBSURF_FMA_CLONES
float oilFormationVolumeFactor(float gor, float gasGravity, float api, float temperatureR,
                               float pressure, float bubblePoint) {
  return kernels::formationVolumeFactor(gor, gasGravity, api, temperatureR, pressure, bubblePoint);
}

SUBSURF_FMA_CLONES
float oilCompressibility(float gor, float gasGravity, float api, float temperature,
                         float pressure, int method, float bubblePoint, float /*otherGor*/) {
  return kernels::compressibility(gor, gasGravity, api, temperature, pressure, method, bubblePoint);
}

SUBSURF_FMA_CLONES
float oilDeadViscosity(float api, float temperatureF) {
  return kernels::deadViscosity(api, temperatureF);
}

SUBSURF_FMA_CLONES
float oilDeadViscosityAt(float knownViscosity, float targetF, float referenceF) {
  return kernels::deadViscosityAt(knownViscosity, targetF, referenceF);
}

SUBSURF_FMA_CLONES
float oilLiveViscosity(float deadViscosity, float gor) {
  return kernels::liveViscosity(deadViscosity, gor);
}

float oilDensity(float bo, float bubblePoint, float pressure, float gor, float gorAtBubblePoint,
                 float oilSpecificGravity, float gasGravity) {
  if (!(bo > 0.0f) || !(bubblePoint > 0.0f) || !(pressure > 0.0f) || !(gor > 0.0f) ||
      !(gorAtBubblePoint > 0.0f) || !(oilSpecificGravity > 0.0f) || !(gasGravity > 0.0f)) {
    return kRealNull;
  }
  // Above the bubble point all the gas stays dissolved.
  const float rs = pressure >= bubblePoint ? gorAtBubblePoint : gor;
  return ((350.0f * oilSpecificGravity + 0.0764f * rs * gasGravity) / 5.615f / bo) * 0.016042899f;
}

float oilHydrogenIndex(float density) {
  if (!(density > 0.0f)) return kRealNull;
  const float d = 0.9f - density;
  return 9.0f * density * (0.15f + 0.2f * (d * d));
}

SUBSURF_FMA_CLONES
float oilHydrogenIndexFromViscosity(float liveViscosity, float gor, float temperatureF) {
  if (liveViscosity <= 0.0f || gor < 0.0f || temperatureF < -32.0f) return 1.0f;
  const float dead =
      fmath::pow(liveViscosity / kernels::liveA(gor), 1.0f / kernels::liveB(gor));
  const float y = fmath::log(dead + 1.0f) / 2.3025851f;
  const float api = (6.9824f - fmath::log(fmath::pow(temperatureF, 1.163f) * y)) / 0.04658f;
  if (bitsOf(api) < bitsOf(10.0f)) return 0.705f;
  if (bitsOf(api) <= bitsOf(24.0f)) return 0.0015741f * (api * api) - 0.0746249f * api + 0.1150035f;
  return 1.0f;
}

}  // namespace subsurf::fluids
