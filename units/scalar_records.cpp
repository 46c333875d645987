#include "units/scalar_records.h"

#include <cmath>
#include <limits>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "units/scalar_units.h"
#include "units/value_text.h"

namespace subsurf {
namespace {

template <std::size_t N>
void blank(char (&field)[N]) {
  blankFixed(field, N);
}

// A text field of one width copied into another: cut or blank-padded.
template <std::size_t N, std::size_t M>
void copyText(const char (&from)[N], char (&to)[M]) {
  setFixed(to, fixedText(from));
}

template <typename R>
void setRealDefaults(R& rec, decltype(rec.V) null) {
  rec.V = null;
  rec.VMIN = rec.VMAX = rec.VDEF = null;
  rec.RELERR = null;
  blank(rec.CHU);
  rec.VU.IUN = 1;
  rec.VU.ISER = -1;
  blank(rec.VU.CU);
  rec.SET = DT_STATE_DEFAULT;
  rec.SET2 = DT_FREE;
  rec.FMT = -4;
  blank(rec.LABEL);
  blank(rec.SHORT);
  blank(rec.CODE);
  blank(rec.DESC);
}

float narrow(double v) {
  if (isNull(v)) return kRealNull;
  if (std::isfinite(v) && std::fabs(v) > std::numeric_limits<float>::max()) return kRealNull;
  return static_cast<float>(v);
}

template <typename T>
void setTextDefaults(T& rec, std::string_view text) {
  setFixed(rec.V, text);
  setFixed(rec.VDEF, text);
  rec.SET = DT_STATE_DEFAULT;
  rec.SET2 = DT_FREE;
  blank(rec.CODE);
  blank(rec.LABEL);
  blank(rec.DESC);
}

template <typename R>
void labelRecord(R& rec, std::string_view code, std::string_view label, std::string_view description,
                 std::string_view shortText) {
  setFixed(rec.CODE, code);
  setFixed(rec.LABEL, label);
  setFixed(rec.DESC, description);
  setFixed(rec.SHORT, shortText);
}

}  // namespace

void setDefaults(DT_RSCA& rec) { setRealDefaults(rec, kRealNull); }

void setDefaults(DT_DSCA& rec) {
  setRealDefaults(rec, kDoubleNull);
  rec.IEXTRA = 0;
}

void setDefaults(DT_ISCA& rec, int vmin, int vmax, int vdef) {
  rec.V = vdef;
  rec.VDEF = vdef;
  rec.VMIN = vmin;
  rec.VMAX = vmax;
  rec.SET = DT_STATE_DEFAULT;
  rec.SET2 = DT_FREE;
  blank(rec.CODE);
  blank(rec.SHORT);
  blank(rec.KEY);
  blank(rec.LABEL);
  blank(rec.DESC);
}

void setDefaults(DT_CSCA& rec, std::string_view text) { setTextDefaults(rec, text); }
void setDefaults(DT_FSCA& rec, std::string_view text) { setTextDefaults(rec, text); }

void copyMain(const DT_RSCA& from, DT_RSCA& to) {
  copyValue(from, to);
  to.SET = from.SET;
  to.SET2 = from.SET2;
  copyText(from.CODE, to.CODE);
}

void copyValue(const DT_RSCA& from, DT_RSCA& to) {
  to.V = from.V;
  copyText(from.CHU, to.CHU);
  to.VU = from.VU;
  to.RELERR = from.RELERR;
}

void copyToDouble(const DT_RSCA& from, DT_DSCA& to) {
  to.V = from.V;
  copyText(from.CHU, to.CHU);
  to.VU = from.VU;
  to.SET = from.SET;
  to.SET2 = from.SET2;
  to.FMT = from.FMT;
  copyText(from.CODE, to.CODE);
  copyText(from.SHORT, to.SHORT);
  to.VMIN = from.VMIN;
  to.VMAX = from.VMAX;
  to.VDEF = from.VDEF;
  copyText(from.LABEL, to.LABEL);
  copyText(from.DESC, to.DESC);
  to.RELERR = from.RELERR;
}

void copyToReal(const DT_DSCA& from, DT_RSCA& to) {
  to.V = narrow(from.V);
  copyText(from.CHU, to.CHU);
  to.VU = from.VU;
  to.SET = from.SET;
  to.SET2 = from.SET2;
  to.FMT = from.FMT;
  copyText(from.LABEL, to.LABEL);
  copyText(from.SHORT, to.SHORT);
  copyText(from.CODE, to.CODE);
  to.VMIN = narrow(from.VMIN);
  to.VMAX = narrow(from.VMAX);
  to.VDEF = narrow(from.VDEF);
  copyText(from.DESC, to.DESC);
  to.RELERR = narrow(from.RELERR);
}

std::string key(const DT_ISCA& rec) { return fixedText(rec.KEY); }
std::string key(const DT_RSCA& rec) { return fixedText(rec.CODE); }
std::string key(const DT_DSCA& rec) { return fixedText(rec.CODE); }
std::string key(const DT_CSCA& rec) { return fixedText(rec.CODE); }
std::string key(const DT_FSCA& rec) { return fixedText(rec.CODE); }
std::string code(const DT_ISCA& rec) { return fixedText(rec.CODE); }

std::string unitName(const DT_UNIT& unit) { return fixedText(unit.CU); }
std::string label(const DT_RSCA& rec) { return fixedText(rec.LABEL); }
std::string label(const DT_DSCA& rec) { return fixedText(rec.LABEL); }
std::string label(const DT_ISCA& rec) { return fixedText(rec.LABEL); }
std::string description(const DT_RSCA& rec) { return fixedText(rec.DESC); }
std::string displayText(const DT_RSCA& rec) { return fixedText(rec.CHU); }
std::string displayText(const DT_DSCA& rec) { return fixedText(rec.CHU); }
std::string textValue(const DT_CSCA& rec) { return fixedText(rec.V); }
std::string textValue(const DT_FSCA& rec) { return fixedText(rec.V); }

void labelReal(DT_RSCA& rec, std::string_view code, std::string_view label, std::string_view description,
               std::string_view shortText) {
  labelRecord(rec, code, label, description, shortText);
}

void labelDouble(DT_DSCA& rec, std::string_view code, std::string_view label, std::string_view description,
                 std::string_view shortText) {
  labelRecord(rec, code, label, description, shortText);
}

void labelInteger(DT_ISCA& rec, std::string_view key, std::string_view label, std::string_view description,
                  std::string_view code) {
  setFixed(rec.KEY, key);
  setFixed(rec.LABEL, label);
  setFixed(rec.DESC, description);
  setFixed(rec.CODE, code);
}

void labelText(DT_CSCA& rec, std::string_view code, std::string_view label, std::string_view description) {
  setFixed(rec.CODE, code);
  setFixed(rec.LABEL, label);
  setFixed(rec.DESC, description);
}

void labelFileName(DT_FSCA& rec, std::string_view code, std::string_view label, std::string_view description) {
  setFixed(rec.CODE, code);
  setFixed(rec.LABEL, label);
  setFixed(rec.DESC, description);
}

void setTextValue(DT_CSCA& rec, std::string_view text, const int* state) {
  setFixed(rec.V, text);
  if (state) rec.SET = *state;
}

void setTextValue(DT_FSCA& rec, std::string_view text, const int* state) {
  setFixed(rec.V, text);
  if (state) rec.SET = *state;
}

namespace {
// A real record of either precision with its code, unit and value.
template <typename Record, typename Value>
Record makeRealRecord(std::string_view code, int iser, std::string_view unit, Value value) {
  Record rec;
  setDefaults(rec);
  setFixed(rec.CODE, code);
  setSeriesUnit(rec, iser, unit);
  rec.V = value;
  setDisplayText(rec);
  return rec;
}
}  // namespace

DT_RSCA makeReal(std::string_view code, int iser, std::string_view unit, float value) {
  return makeRealRecord<DT_RSCA>(code, iser, unit, value);
}

DT_DSCA makeDouble(std::string_view code, int iser, std::string_view unit, double value) {
  return makeRealRecord<DT_DSCA>(code, iser, unit, value);
}

DT_ISCA makeInteger(std::string_view key, int value, int vmin, int vmax) {
  DT_ISCA rec;
  setDefaults(rec, vmin, vmax, value);
  setFixed(rec.KEY, key);
  return rec;
}

DT_CSCA makeText(std::string_view code, std::string_view value) {
  DT_CSCA rec;
  setDefaults(rec, value);
  setFixed(rec.CODE, code);
  return rec;
}

DT_FSCA makeFileName(std::string_view code, std::string_view value) {
  DT_FSCA rec;
  setDefaults(rec, value);
  setFixed(rec.CODE, code);
  return rec;
}

}  // namespace subsurf
