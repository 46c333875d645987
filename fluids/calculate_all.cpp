#include "fluids/calculate_all.h"

#include <algorithm>
#include <cmath>

#include "fluids/correlation_kernels.h"
#include "fluids/gas_correlations.h"
#include "fluids/oil_correlations.h"
#include "fluids/z_factor_chart.h"
#include "host/messages.h"
#include "host/nulls.h"

namespace subsurf::fluids {
namespace {

// Depths above this (ft, negative upwards) are taken as real reservoir depths.
constexpr float kShallowestDepth = -1000.0f;

using kernels::geothermalTemperatureF;
using kernels::hydrostaticPressure;

constexpr float kStandardTemperatureF = 60.0f;
constexpr float kStandardPressure = 14.7f;
// Temperature at which a dead-oil viscosity is taken when none is given.
constexpr float kDefaultViscosityTemperatureF = 60.0f;

// Reads an entry in its fixed calculation unit.
EntryReading fixedRead(const FluidTable& t, Entry e) { return t.get(e, t.fixedUnit(e)); }

// A correlation driven past the range of a float (a depth of 1e30 ft) has no
// result: it is stored as null, never as an infinity or not-a-number.
void store(FluidTable& t, Entry e, float value) {
  t.set(e, t.fixedUnit(e), std::isfinite(value) ? value : kRealNull, kStateCalculated);
}

SUBSURF_FMA_CLONES
float formCompressibility(float solgor, float sgden, float oden, float tR, float pres, float pb) {
  return kernels::formCompressibility(solgor, sgden, oden, tR, pres, pb);
}

Status answer(const char* text) {
  host::showMessage(text);
  return Status::error(text);
}

}  // namespace

void tablePseudoReduced(FluidTable& t, float& tpr, float& ppr, int& status) {
  tpr = kRealNull;
  ppr = kRealNull;
  status = kFluidNoInput;
  const EntryReading gravity = fixedRead(t, Entry::Gden);
  if (gravity.missing) return;
  EntryReading n2 = fixedRead(t, Entry::N2);
  if (n2.missing) return;
  EntryReading co2 = fixedRead(t, Entry::Co2);
  if (co2.missing) return;
  EntryReading h2s = fixedRead(t, Entry::H2s);
  if (h2s.missing) return;
  const EntryReading pres = fixedRead(t, Entry::Pres);
  if (pres.missing) return;
  const EntryReading tres = t.get(Entry::Tres, t.rankine());
  if (tres.missing) return;

  const float n2Before = n2.value, co2Before = co2.value, h2sBefore = h2s.value;
  gasPseudoReduced(gravity.value, n2.value, co2.value, h2s.value, pres.value, tres.value, tpr, ppr,
                   status);
  // The user sees a negative content replaced by the zero that was used.
  if (n2.value != n2Before) t.set(Entry::N2, t.fixedUnit(Entry::N2), n2.value, n2.state);
  if (co2.value != co2Before) t.set(Entry::Co2, t.fixedUnit(Entry::Co2), co2.value, co2.state);
  if (h2s.value != h2sBefore) t.set(Entry::H2s, t.fixedUnit(Entry::H2s), h2s.value, h2s.state);
}

void calculateAll(FluidTable& t) {
  const EntryUnit degR = t.rankine();

  // Reservoir temperature and pressure from the depth.
  const float depth = fixedRead(t, Entry::Dres).value;  // null (very negative) when missing
  if (t.get(Entry::Tres, degR).due() && depth >= kShallowestDepth) {
    store(t, Entry::Tres, geothermalTemperatureF(depth));
  }
  const EntryReading presRead = fixedRead(t, Entry::Pres);
  float pres = presRead.value;
  if (presRead.due() && depth >= kShallowestDepth) {
    pres = hydrostaticPressure(depth);
    store(t, Entry::Pres, pres);
  }

  // Standard conditions: calculated ones go back to the standard, but this
  // run still uses the values held until now.
  const EntryReading tscRead = t.get(Entry::Tsc, degR);
  if (tscRead.state > kStateTyped) store(t, Entry::Tsc, kStandardTemperatureF);
  const EntryReading pscRead = fixedRead(t, Entry::Psc);
  if (pscRead.state > kStateTyped) store(t, Entry::Psc, kStandardPressure);

  // Oil.
  const float oden = fixedRead(t, Entry::Oden).value;
  const float sgden = fixedRead(t, Entry::Sgden).value;
  const float solgor = fixedRead(t, Entry::Solgor).value;
  const float tR = t.get(Entry::Tres, degR).value;
  const float tF = fixedRead(t, Entry::Tres).value;
  if (fixedRead(t, Entry::Pbubble).due()) {
    store(t, Entry::Pbubble, oilBubblePoint(solgor, sgden, oden, tR));
  }
  const EntryReading pbRead = fixedRead(t, Entry::Pbubble);
  const float pb = pbRead.value;
  // The volume factor follows the bubble point: it is recalculated whenever the
  // bubble point is a calculated one, and left alone when the bubble point was
  // typed, whatever the state of "bo" itself.
  if (pbRead.due()) {
    store(t, Entry::Bo, oilFormationVolumeFactor(solgor, sgden, oden, tR, pres, pb));
  }

  const EntryReading viscTRead = fixedRead(t, Entry::Oviscdt);
  float oviscdt = viscTRead.value;
  if (viscTRead.due()) {
    oviscdt = kDefaultViscosityTemperatureF;
    store(t, Entry::Oviscdt, oviscdt);
  }
  const EntryReading deadRead = fixedRead(t, Entry::Oviscd);
  float oviscd = deadRead.value;
  if (deadRead.due()) {
    oviscd = oilDeadViscosity(oden, oviscdt);
    store(t, Entry::Oviscd, oviscd);
  }
  const float deadAtReservoir = oilDeadViscosityAt(oviscd, tF, oviscdt);
  if (fixedRead(t, Entry::Ovisc).due()) {
    store(t, Entry::Ovisc, oilLiveViscosity(deadAtReservoir, solgor));
  }
  if (fixedRead(t, Entry::Ocomp).due()) {
    store(t, Entry::Ocomp, formCompressibility(solgor, sgden, oden, tR, pres, pb));
  }

  // Gas.
  const float gden = fixedRead(t, Entry::Gden).value;
  float tpr, ppr;
  int status;
  tablePseudoReduced(t, tpr, ppr, status);
  if (status == kFluidOk) {
    int zStatus;
    const float z = zFactorChart().evaluate(tpr, ppr, zStatus);
    store(t, Entry::Zfact, z);
    if (fixedRead(t, Entry::Bg).due()) {
      store(t, Entry::Bg, gasExpansionFactor(z, tR, pres, tscRead.value, pscRead.value));
    }
    if (fixedRead(t, Entry::Gvisc).due()) {
      store(t, Entry::Gvisc, gasViscosity(gden, z, tR, pres));
    }
    const EntryReading densRead = fixedRead(t, Entry::Gdenres);
    float gdenres = densRead.value;
    if (densRead.due()) {
      gdenres = gasDensity(gden, z, tR, pres);
      store(t, Entry::Gdenres, gdenres);
    }
    if (fixedRead(t, Entry::Ghi).due()) store(t, Entry::Ghi, gasHydrogenIndex(gdenres));
  } else {
    // Without reduced values there is no z-factor, and nothing calculated from
    // an earlier one may stay on the form.
    store(t, Entry::Zfact, kRealNull);
    for (Entry e : {Entry::Bg, Entry::Gvisc, Entry::Gdenres, Entry::Ghi}) {
      if (t.state(e) > kStateTyped) store(t, e, kRealNull);
    }
  }
}

Status calculateEntry(FluidTable& t, Entry entry) {
  const EntryUnit degR = t.rankine();
  auto value = [&](Entry e) { return fixedRead(t, e).value; };
  auto chartZ = [&](float& tR, float& pres) {
    float tpr, ppr;
    int status;
    tablePseudoReduced(t, tpr, ppr, status);
    tR = t.get(Entry::Tres, degR).value;
    pres = value(Entry::Pres);
    if (status != kFluidOk) return kRealNull;
    return zFactorChart().evaluate(tpr, ppr, status);
  };

  switch (entry) {
    case Entry::Tres:
    case Entry::Pres: {
      const EntryReading depth = fixedRead(t, Entry::Dres);
      // A depth far above the surface is as good as none.
      if (depth.missing || depth.value < kShallowestDepth) return answer(kNeedDepthMessage);
      store(t, entry, entry == Entry::Tres ? geothermalTemperatureF(depth.value)
                                           : hydrostaticPressure(depth.value));
      return Status::ok();
    }
    case Entry::Tsc: store(t, entry, kStandardTemperatureF); return Status::ok();
    case Entry::Psc: store(t, entry, kStandardPressure); return Status::ok();
    case Entry::Oviscdt: store(t, entry, kDefaultViscosityTemperatureF); return Status::ok();
    case Entry::Pbubble:
      store(t, entry, oilBubblePoint(value(Entry::Solgor), value(Entry::Sgden), value(Entry::Oden),
                                     t.get(Entry::Tres, degR).value));
      return Status::ok();
    case Entry::Bo:
      store(t, entry,
            oilFormationVolumeFactor(value(Entry::Solgor), value(Entry::Sgden), value(Entry::Oden),
                                     t.get(Entry::Tres, degR).value, value(Entry::Pres),
                                     value(Entry::Pbubble)));
      return Status::ok();
    case Entry::Oviscd:
      store(t, entry, oilDeadViscosity(value(Entry::Oden), value(Entry::Oviscdt)));
      return Status::ok();
    case Entry::Ovisc: {
      const float dead =
          oilDeadViscosityAt(value(Entry::Oviscd), value(Entry::Tres), value(Entry::Oviscdt));
      store(t, entry, oilLiveViscosity(dead, value(Entry::Solgor)));
      return Status::ok();
    }
    case Entry::Ocomp:
      store(t, entry,
            formCompressibility(value(Entry::Solgor), value(Entry::Sgden), value(Entry::Oden),
                                t.get(Entry::Tres, degR).value, value(Entry::Pres),
                                value(Entry::Pbubble)));
      return Status::ok();
    case Entry::Zfact: {
      float tR, pres;
      store(t, entry, chartZ(tR, pres));
      return Status::ok();
    }
    case Entry::Bg: {
      float tR, pres;
      const float z = chartZ(tR, pres);
      store(t, entry, gasExpansionFactor(z, tR, pres, t.get(Entry::Tsc, degR).value,
                                         value(Entry::Psc)));
      return Status::ok();
    }
    case Entry::Gvisc: {
      float tR, pres;
      const float z = chartZ(tR, pres);
      store(t, entry, gasViscosity(value(Entry::Gden), z, tR, pres));
      return Status::ok();
    }
    case Entry::Gdenres: {
      float tR, pres;
      const float z = chartZ(tR, pres);
      store(t, entry, gasDensity(value(Entry::Gden), z, tR, pres));
      return Status::ok();
    }
    case Entry::Ghi: {
      // From the density on the form; from the gas itself when there is none.
      float density = value(Entry::Gdenres);
      if (isNull(density)) {
        float tR, pres;
        const float z = chartZ(tR, pres);
        density = gasDensity(value(Entry::Gden), z, tR, pres);
      }
      store(t, entry, gasHydrogenIndex(density));
      return Status::ok();
    }
    case Entry::Dres:
    case Entry::Oden:
    case Entry::Sgden:
    case Entry::Solgor:
    case Entry::Gden:
    case Entry::N2:
    case Entry::Co2:
    case Entry::H2s:
      break;
  }
  return answer(kNoCalculationMessage);
}

}  // namespace subsurf::fluids
