// The C interface of the fluid correlations: thin wrappers that take every
// argument by pointer and keep exceptions inside the library.
#include "subsurf/fluids.h"

#include "fluids/calculate_all.h"
#include "fluids/fluid_entries.h"
#include "fluids/gas_correlations.h"
#include "fluids/oil_correlations.h"
#include "fluids/z_factor_chart.h"
#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"

using namespace subsurf;
using namespace subsurf::fluids;

namespace {

std::string entryName(const char* field) { return fixedText(field, kEntryNameWidth); }
std::string unitName(const char* field) { return fixedText(field, kUnitNameWidth); }

}  // namespace

extern "C" {

float FC_GASPCP(float* gravity, float* n2, float* co2, float* h2s, int* status) {
  return gasPseudoCriticalPressure(*gravity, *n2, *co2, *h2s, *status);
}

float FC_GASPCT(float* gravity, float* n2, float* co2, float* h2s, int* status) {
  return gasPseudoCriticalTemperature(*gravity, *n2, *co2, *h2s, *status);
}

void FC_GASRED(float* tpr, float* ppr, int* status) {
  try {
    tablePseudoReduced(fluidTable(), *tpr, *ppr, *status);
  } catch (...) {
    *tpr = kRealNull;
    *ppr = kRealNull;
    *status = kFluidNoInput;
  }
}

void FC_GASRED1(float* gravity, float* n2, float* co2, float* h2s, float* pressure,
                float* temperature, float* tpr, float* ppr, int* status) {
  gasPseudoReduced(*gravity, *n2, *co2, *h2s, *pressure, *temperature, *tpr, *ppr, *status);
}

float FC_GASRD(float* tpr, float* ppr, int* status) { return gasReducedDensity(*tpr, *ppr, *status); }

float FC_GASZ1(float* tpr, float* ppr, int* status) { return gasZFactorEos(*tpr, *ppr, *status); }

float FC_GASZ2(float* tpr, float* ppr, int* status) {
  return zFactorChart().evaluate(*tpr, *ppr, *status);
}

float FC_GASFVF(float* z, float* temperature, float* pressure, float* tsc, float* psc) {
  return gasExpansionFactor(*z, *temperature, *pressure, *tsc, *psc);
}

float FC_GASVISC(float* gravity, float* z, float* temperature, float* pressure) {
  return gasViscosity(*gravity, *z, *temperature, *pressure);
}

float FC_GASDDENS(float* gravity, float* z, float* temperature, float* pressure) {
  return gasDensity(*gravity, *z, *temperature, *pressure);
}

float FC_GASHI(float* density) { return gasHydrogenIndex(*density); }

float FC_GPC(float* values, float* divisor, float* weights, int* count) {
  return gasMixingRule(values, *divisor, weights, *count);
}

float FC_OILPBP(float* gor, float* gasGravity, float* api, float* temperatureR) {
  return oilBubblePoint(*gor, *gasGravity, *api, *temperatureR);
}

float FC_OILGORB(float* temperatureR, float* pressure, float* api, float* gasGravity) {
  return oilSolutionGor(*temperatureR, *pressure, *api, *gasGravity);
}

float FC_OILBO(float* gor, float* gasGravity, float* api, float* temperatureR, float* pressure,
               float* bubblePoint) {
  return oilFormationVolumeFactor(*gor, *gasGravity, *api, *temperatureR, *pressure, *bubblePoint);
}

float FC_OILCO(float* gor, float* gasGravity, float* api, float* temperature, float* pressure,
               int* method, float* bubblePoint, float* otherGor) {
  return oilCompressibility(*gor, *gasGravity, *api, *temperature, *pressure, *method,
                            *bubblePoint, *otherGor);
}

float FC_OILDEADVISC(float* api, float* temperatureF) {
  return oilDeadViscosity(*api, *temperatureF);
}

float FC_OILDEADVISCT(float* knownViscosity, float* targetF, float* referenceF) {
  return oilDeadViscosityAt(*knownViscosity, *targetF, *referenceF);
}

float FC_OILVISC(float* deadViscosity, float* gor) { return oilLiveViscosity(*deadViscosity, *gor); }

float FC_OILDDENS(float* bo, float* bubblePoint, float* pressure, float* gor,
                  float* gorAtBubblePoint, float* oilSpecificGravity, float* gasGravity) {
  return oilDensity(*bo, *bubblePoint, *pressure, *gor, *gorAtBubblePoint, *oilSpecificGravity,
                    *gasGravity);
}

float FC_OILHI(float* density) { return oilHydrogenIndex(*density); }

float FC_OILHI1(float* liveViscosity, float* gor, float* temperatureF) {
  return oilHydrogenIndexFromViscosity(*liveViscosity, *gor, *temperatureF);
}

void FC_INIT(int* unitSystem) {
  try {
    const int system = (*unitSystem >= 1 && *unitSystem <= 3) ? *unitSystem : 1;
    fluidTable().create(system);
  } catch (...) {
    fluidTable().destroy();
  }
}

void FC_CLOSE(void) { fluidTable().destroy(); }

void FC_GETV(const char* name, const char* unit, float* value, int* state, int* missing) {
  *value = kRealNull;
  *state = kStateEmpty;
  *missing = 1;
  try {
    const EntryReading r = fluidTable().get(entryName(name), unitName(unit));
    *value = r.value;
    *state = r.state;
    *missing = r.missing ? 1 : 0;
  } catch (...) {
  }
}

void FC_SETV(const char* name, const char* unit, float* value, int* state) {
  try {
    (void)fluidTable().set(entryName(name), unitName(unit), *value, *state);
  } catch (...) {
  }
}

void FC_CALCALL(void) {
  try {
    calculateAll(fluidTable());
  } catch (...) {
  }
}

void FC_CALCENTRY(const char* name, int* status) {
  *status = 1;
  try {
    const auto entry = findEntry(entryName(name));
    if (!entry) {
      host::showMessage(kNoCalculationMessage);
      return;
    }
    *status = calculateEntry(fluidTable(), *entry).isOk() ? 0 : 1;
  } catch (...) {
  }
}

}  // extern "C"
