#include "units/scalar_units.h"

#include <cmath>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "units/units_registry.h"
#include "units/value_text.h"

namespace subsurf {
namespace {

bool validPosition(int iser, int iun) {
  return iun >= 1 && iun <= unitsRegistry().unitCount(iser);
}

template <typename T>
T convertValue(T value, const DT_UNIT& unit, int to) {
  int err = 0;
  return unitsRegistry().convert(value, unit.ISER, unit.IUN, to, err);
}

template <typename R>
bool convertRecord(R& rec, int iun) {
  if (!validPosition(rec.VU.ISER, iun)) return false;
  rec.V = convertValue(rec.V, rec.VU, iun);
  // Limits and default are held in the record's unit too.
  rec.VMIN = convertValue(rec.VMIN, rec.VU, iun);
  rec.VMAX = convertValue(rec.VMAX, rec.VU, iun);
  rec.VDEF = convertValue(rec.VDEF, rec.VU, iun);
  rec.VU.IUN = iun;
  setUnitName(rec.VU);
  setDisplayText(rec);
  return true;
}

template <typename R>
bool convertRecord(R& rec, std::string_view unit) {
  const int iun = unitPositionIn(rec.VU, unit);
  if (iun < 1) return false;
  return convertRecord(rec, iun);
}

template <typename R>
void convertArray(R* recs, int count, int iser, int iun) {
  if (!recs) return;
  for (int k = 0; k < count; ++k)
    if (recs[k].VU.ISER == iser) convertRecord(recs[k], iun);
}

template <typename R>
auto valueAt(const R& rec, int iun) -> decltype(rec.V) {
  if (iun < 1) return rec.V;
  return convertValue(rec.V, rec.VU, iun);
}

template <typename R>
auto valueNamed(const R& rec, std::string_view unit) -> decltype(rec.V) {
  if (trimBlanks(unit).empty()) return rec.V;
  return valueAt(rec, unitPositionIn(rec.VU, unit));
}

// Stores value given in unit position iun (below 1: not a unit of the series).
template <typename R, typename T>
void storeAt(R& rec, int iun, T value, const int* state) {
  if (rec.VU.IUN < 1) {
    // No unit yet: the record takes the unit the value came in.
    if (iun >= 1) {
      rec.VU.IUN = iun;
      setUnitName(rec.VU);
    }
    rec.V = value;
  } else {
    int err = 0;
    rec.V = unitsRegistry().convert(value, rec.VU.ISER, iun, rec.VU.IUN, err);
  }
  if (state) rec.SET = *state;
  setDisplayText(rec);
}

template <typename R, typename T>
bool storeNamed(R& rec, std::string_view unit, T value, const int* state) {
  if (trimBlanks(unit).empty()) {
    rec.V = value;
    if (state) rec.SET = *state;
    setDisplayText(rec);
    return true;
  }
  const int iun = unitPositionIn(rec.VU, unit);
  storeAt(rec, iun, value, state);
  return iun >= 1;
}

template <typename R, typename T>
bool storePositioned(R& rec, int iun, T value, const int* state) {
  const bool valid = validPosition(rec.VU.ISER, iun);
  storeAt(rec, valid ? iun : 0, value, state);
  return valid;
}

template <typename R>
void minMax(R& a, const R& b, int mode) {
  const auto bv = valueNamed(b, fixedText(a.VU.CU));
  if (mode > 0) {
    if (bv > a.V) a.V = bv;
  } else if (!isNoValue(a.V)) {
    if (!isNoValue(bv) && bv < a.V) a.V = bv;
  } else {
    a.V = bv;
  }
  setDisplayText(a);
}

}  // namespace

void setUnitPosition(DT_UNIT& unit) { unit.IUN = unitsRegistry().findUnit(unit.ISER, fixedText(unit.CU)); }

void setUnitName(DT_UNIT& unit) { setFixed(unit.CU, unitsRegistry().unitName(unit.ISER, unit.IUN)); }

void setSeriesUnit(DT_RSCA& rec, int iser, std::string_view unit) {
  rec.VU.ISER = iser;
  setFixed(rec.VU.CU, trimBlanks(unit));
  setUnitPosition(rec.VU);
}

void setSeriesUnit(DT_DSCA& rec, int iser, std::string_view unit) {
  rec.VU.ISER = iser;
  setFixed(rec.VU.CU, trimBlanks(unit));
  setUnitPosition(rec.VU);
}

int unitPositionIn(const DT_UNIT& unit, std::string_view name) {
  const std::string n = trimBlanks(name);
  if (n.empty()) return 0;
  return unitsRegistry().findUnit(unit.ISER, n);
}

bool convertToUnit(DT_RSCA& rec, std::string_view unit) { return convertRecord(rec, unit); }
bool convertToUnit(DT_DSCA& rec, std::string_view unit) { return convertRecord(rec, unit); }
bool convertToUnit(DT_RSCA& rec, int iun) { return convertRecord(rec, iun); }
bool convertToUnit(DT_DSCA& rec, int iun) { return convertRecord(rec, iun); }
void convertSeries(DT_RSCA* recs, int count, int iser, int iun) { convertArray(recs, count, iser, iun); }
void convertSeries(DT_DSCA* recs, int count, int iser, int iun) { convertArray(recs, count, iser, iun); }

float valueIn(const DT_RSCA& rec, std::string_view unit) { return valueNamed(rec, unit); }
double valueIn(const DT_DSCA& rec, std::string_view unit) { return valueNamed(rec, unit); }
float valueIn(const DT_RSCA& rec, int iun) { return valueAt(rec, iun); }
double valueIn(const DT_DSCA& rec, int iun) { return valueAt(rec, iun); }

bool setValueIn(DT_RSCA& rec, std::string_view unit, float value, const int* state) {
  return storeNamed(rec, unit, value, state);
}
bool setValueIn(DT_DSCA& rec, std::string_view unit, double value, const int* state) {
  return storeNamed(rec, unit, value, state);
}
bool setValueIn(DT_RSCA& rec, int iun, float value, const int* state) {
  return storePositioned(rec, iun, value, state);
}
bool setValueIn(DT_DSCA& rec, int iun, double value, const int* state) {
  return storePositioned(rec, iun, value, state);
}

bool equalValues(const DT_RSCA& a, const DT_RSCA& b) {
  const float av = a.V;
  const float bv = valueNamed(b, fixedText(a.VU.CU));
  if (av == 0.0f) return std::fabs(bv - av) <= 0.0f;
  return std::fabs((bv - av) / av) <= 1.0e-7f;
}

void combineMinMax(DT_RSCA& a, const DT_RSCA& b, int mode) { minMax(a, b, mode); }
void combineMinMax(DT_DSCA& a, const DT_DSCA& b, int mode) { minMax(a, b, mode); }

}  // namespace subsurf
