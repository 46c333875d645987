// The C entry points of the units registry (declared in include/subsurf/units.h).
//
// Each routine reads its fixed-width text fields, asks the process-wide
// registry and writes its results back as blank-padded fields. No exception may
// reach a C or host caller: each body runs inside guarded(), which turns a
// failure into the routine's "not done" answer.
#include "subsurf/units.h"

#include <algorithm>
#include <exception>
#include <string>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/paths.h"
#include "units/ellipsoids.h"
#include "units/units_registry.h"

namespace {

using subsurf::UnitsRegistry;
using subsurf::unitsRegistry;

constexpr std::size_t kUnitWidth = 16;
constexpr std::size_t kSeriesWidth = 20;
constexpr std::size_t kEllipsoidWidth = 40;

// Runs body; on any exception runs onFailure instead and returns its answer.
template <typename Body, typename Failure>
auto guarded(Body body, Failure onFailure) noexcept -> decltype(body()) {
  try {
    return body();
  } catch (...) {
    try {
      return onFailure();
    } catch (...) {
      return decltype(body())();
    }
  }
}

int in(const int* p, int fallback = 0) { return p ? *p : fallback; }

std::string unitText(const char* field) { return field ? subsurf::fixedText(field, kUnitWidth) : std::string(); }
std::string seriesText(const char* field) { return field ? subsurf::fixedText(field, kSeriesWidth) : std::string(); }

void put(char* field, std::size_t width, std::string_view text) {
  if (field) subsurf::setFixed(field, width, text);
}
void blank(char* field, std::size_t width) {
  if (field) subsurf::blankFixed(field, width);
}
void set(int* out, int v) {
  if (out) *out = v;
}

int seriesByName(const char* name) { return unitsRegistry().findSeries(seriesText(name)); }

// Named-unit conversion of one value in place within a series; err 1 when a
// name is not a unit of the series.
template <typename T>
void convertNamed(T& value, int iser, const char* from, const char* to, int* err) {
  int e = 0;
  value = static_cast<T>(
      unitsRegistry().convertByName(static_cast<double>(value), iser, unitText(from), unitText(to), e));
  set(err, e);
}

// Lists the listed units' names into consecutive 16-character fields.
void listUnits(const int* iser, char* names, const int* capacity, int* count) {
  guarded(
      [&] {
        const auto list = unitsRegistry().listedUnitNames(in(iser, -1));
        const int room = std::max(0, in(capacity));
        for (int k = 0; k < room && k < static_cast<int>(list.size()); ++k)
          put(names + static_cast<std::size_t>(k) * kUnitWidth, kUnitWidth, list[static_cast<std::size_t>(k)]);
        set(count, static_cast<int>(list.size()));
      },
      [&] { set(count, 0); });
}

void convertVectorTo(DT_RVEC* vec, int iun) {
  if (!vec) return;
  const UnitsRegistry& reg = unitsRegistry();
  const int iser = vec->VU.ISER;
  if (iun < 1 || iun > reg.unitCount(iser)) return;
  if (vec->VU.IUN >= 1 && vec->V && vec->N > 0) {
    int err = 0;
    reg.convert(vec->V, static_cast<std::size_t>(vec->N), iser, vec->VU.IUN, iun, err);
  }
  vec->VU.IUN = iun;
  subsurf::setFixed(vec->VU.CU, reg.unitName(iser, iun));
}

// A conversion within the series of the given name, by unit names, in place.
template <typename T>
void convertInSeries(const char* seriesName, T* value, const char* from, const char* to, int* err) {
  guarded(
      [&] {
        if (!value) return set(err, 1);
        const int iser = unitsRegistry().findSeries(seriesName);
        if (iser < 0) return set(err, 1);
        convertNamed(*value, iser, from, to, err);
      },
      [&] { set(err, 1); });
}

// One value converted by position, single or double precision: a missing value
// or any failure inside gives err 1 and the value back unchanged.
template <typename T>
T convertOne(const T* value, const int* iser, const int* from, const int* to, int* err) {
  if (!value) {
    set(err, 1);
    return T(0);
  }
  return guarded(
      [&] {
        int e = 0;
        const T y = unitsRegistry().convert(*value, in(iser, -1), in(from), in(to), e);
        set(err, e);
        return y;
      },
      [&] {
        set(err, 1);
        return *value;
      });
}

}  // namespace

extern "C" {

void X_INIT(void) {
  // The ellipsoid table is compiled in; only the units need reading.
  guarded([] { subsurf::reloadUnitsRegistry(); }, [] {});
}

void X_NSER(int* count) {
  guarded([&] { set(count, unitsRegistry().lastSeries()); }, [&] { set(count, -1); });
}

void X_NSERUNITS(const int* iser, int* n) {
  guarded([&] { set(n, unitsRegistry().unitCount(in(iser, -1))); }, [&] { set(n, 0); });
}

void X_GETNULIST(const int* iser, int* n) {
  guarded([&] { set(n, unitsRegistry().listedUnitCount(in(iser, -1))); }, [&] { set(n, 0); });
}

void X_GETCSER(const int* iser, char* name) {
  guarded([&] { put(name, kSeriesWidth, unitsRegistry().seriesName(in(iser, -1))); },
          [&] { blank(name, kSeriesWidth); });
}

void X_GETISER(const char* name, int* iser) {
  guarded([&] { set(iser, seriesByName(name)); }, [&] { set(iser, -1); });
}

void X_GUESSISER(const char* unit, int* iser) {
  guarded([&] { set(iser, unitsRegistry().guessSeries(unitText(unit))); }, [&] { set(iser, -1); });
}

void X_GETIUN(const int* iser, const char* unit, int* iun) {
  guarded([&] { set(iun, unitsRegistry().findUnit(in(iser, -1), unitText(unit))); }, [&] { set(iun, 0); });
}

void X_GETIUNUM(const int* iser, const int* iun, int* id) {
  guarded([&] { set(id, unitsRegistry().unitId(in(iser, -1), in(iun))); }, [&] { set(id, 0); });
}

void X_GETCUN(const int* iser, const int* iun, char* name) {
  guarded([&] { put(name, kUnitWidth, unitsRegistry().unitName(in(iser, -1), in(iun))); },
          [&] { blank(name, kUnitWidth); });
}

void X_GETCUNO(const int* iser, const int* iun, char* name) {
  guarded([&] { put(name, kUnitWidth, unitsRegistry().unitOtherName(in(iser, -1), in(iun))); },
          [&] { blank(name, kUnitWidth); });
}

void X_GETSDEF(const int* iser, const int* system, int* value) {
  guarded([&] { set(value, unitsRegistry().defaultUnit(in(iser, -1), in(system))); },
          [&] { set(value, UnitsRegistry::kNoDimension); });
}

void X_GETUDEF(const int* iser, const int* iun, char* name) { X_GETCUN(iser, iun, name); }

void X_GETULISTA(const int* iser, char* names, const int* capacity, int* count) {
  listUnits(iser, names, capacity, count);
}

void X_GETULISTDS(const int* iser, char* names, const int* capacity, int* count) {
  listUnits(iser, names, capacity, count);
}

void X_SICF(const int* iser, const int* from, const int* to, float* a, float* b, float* s, int* err) {
  guarded(
      [&] {
        int e = 1;
        const subsurf::LinearConversion c = unitsRegistry().linearCoefficients(in(iser, -1), in(from), in(to), e);
        if (a) *a = c.a;
        if (b) *b = c.b;
        if (s) *s = c.reciprocal ? -1.0f : 1.0f;
        set(err, e);
      },
      [&] { set(err, 1); });
}

float X_SICONV(const float* value, const int* iser, const int* from, const int* to, int* err) {
  return convertOne(value, iser, from, to, err);
}

double X_SICONVD(const double* value, const int* iser, const int* from, const int* to, int* err) {
  return convertOne(value, iser, from, to, err);
}

void X_SICONVE(float* value, const int* iser, const int* from, const int* to, int* err) {
  if (!value) return set(err, 1);
  *value = X_SICONV(value, iser, from, to, err);
}

void X_SICONVV(double* values, const int* n, const int* iser, const int* from, const int* to, int* err) {
  guarded(
      [&] {
        int e = 0;
        if (values && in(n) > 0)
          unitsRegistry().convert(values, static_cast<std::size_t>(in(n)), in(iser, -1), in(from), in(to), e);
        set(err, e);
      },
      [&] { set(err, 1); });
}

float X_SCCONV(const float* value, const int* iser, const char* from, const char* to) {
  if (!value) return 0.0f;
  float v = *value;
  guarded([&] { convertNamed(v, in(iser, -1), from, to, nullptr); }, [] {});
  return v;
}

double X_SCCONVD(const double* value, const int* iser, const char* from, const char* to) {
  if (!value) return 0.0;
  double v = *value;
  guarded([&] { convertNamed(v, in(iser, -1), from, to, nullptr); }, [] {});
  return v;
}

void X_SCCONVV(double* values, const int* n, const int* iser, const char* from, const char* to) {
  guarded(
      [&] {
        const UnitsRegistry& reg = unitsRegistry();
        const std::string f = unitText(from), t = unitText(to);
        if (!values || in(n) <= 0 || f.empty() || t.empty()) return;
        const int s = in(iser, -1);
        const int ifrom = reg.findUnit(s, f), ito = reg.findUnit(s, t);
        if (ifrom < 1 || ito < 1) return;
        int e = 0;
        reg.convert(values, static_cast<std::size_t>(in(n)), s, ifrom, ito, e);
      },
      [] {});
}

void X_RVECCONVU(DT_RVEC* vector, const char* unit) {
  guarded(
      [&] {
        if (!vector) return;
        convertVectorTo(vector, unitsRegistry().findUnit(vector->VU.ISER, unitText(unit)));
      },
      [] {});
}

void X_RVECCONVUI(DT_RVEC* vector, const int* iun) {
  guarded([&] { convertVectorTo(vector, in(iun)); }, [] {});
}

void X_SQLSCRIPT(void) {
  guarded(
      [] {
        const std::string path = subsurf::makeFileName("tempdir:sql", "create_units", "sql");
        const subsurf::Status status = unitsRegistry().writeSqlScript(path);
        if (!status) subsurf::host::showMessage(status.message());
      },
      [] { subsurf::host::showMessage("The units SQL script could not be written"); });
}

void X_NELLIPSOIDS(int* n) { set(n, subsurf::kEllipsoidCount); }

void X_GETELLIPSOID(const int* index, char* name, double* a, double* invf, int* status) {
  const int k = in(index);
  if (k < 1 || k > subsurf::kEllipsoidCount) {
    blank(name, kEllipsoidWidth);
    if (a) *a = 0.0;
    if (invf) *invf = 0.0;
    return set(status, 1);
  }
  const subsurf::ReferenceEllipsoid& e = subsurf::referenceEllipsoids()[static_cast<std::size_t>(k - 1)];
  put(name, kEllipsoidWidth, e.name);
  if (a) *a = e.semiMajorAxis;
  if (invf) *invf = e.inverseFlattening;
  set(status, 0);
}

float A_XUN(const float* value, const int* iser, const char* from, const char* to, int* err) {
  if (!value) {
    set(err, 1);
    return 0.0f;
  }
  float v = *value;
  guarded([&] { convertNamed(v, in(iser, -1), from, to, err); }, [&] { set(err, 1); });
  return v;
}

float A_XUNI(const float* value, const int* iser, const int* from, const char* to, int* err) {
  if (!value) {
    set(err, 1);
    return 0.0f;
  }
  return guarded(
      [&] {
        const UnitsRegistry& reg = unitsRegistry();
        const int s = in(iser, -1);
        const int ito = reg.findUnit(s, unitText(to));
        if (ito < 1) {
          set(err, 1);
          return *value;
        }
        int e = 0;
        const float y = reg.convert(*value, s, in(from), ito, e);
        set(err, e);
        return y;
      },
      [&] {
        set(err, 1);
        return *value;
      });
}

void A_XUNS(float* values, const int* n, const int* iser, const char* from, const char* to, int* err) {
  guarded(
      [&] {
        const UnitsRegistry& reg = unitsRegistry();
        const std::string f = unitText(from), t = unitText(to);
        if (!values || in(n) <= 0 || f.empty() || t.empty()) return set(err, 0);
        const int s = in(iser, -1);
        const int ifrom = reg.findUnit(s, f), ito = reg.findUnit(s, t);
        if (ifrom < 1 || ito < 1) return set(err, 1);
        int e = 0;
        reg.convert(values, static_cast<std::size_t>(in(n)), s, ifrom, ito, e);
        set(err, e);
      },
      [&] { set(err, 1); });
}

void A_XUNCF(const int* iser, const char* from, const char* to, float* a, float* b, float* s, int* err) {
  guarded(
      [&] {
        const UnitsRegistry& reg = unitsRegistry();
        const int ser = in(iser, -1);
        const int ifrom = reg.findUnit(ser, unitText(from));
        const int ito = reg.findUnit(ser, unitText(to));
        X_SICF(&ser, &ifrom, &ito, a, b, s, err);
      },
      [&] { set(err, 1); });
}

float A_XUNSC(const float* value, const char* from, const char* to, int* err) {
  if (!value) {
    set(err, 1);
    return 0.0f;
  }
  float v = *value;
  guarded(
      [&] {
        const int s = unitsRegistry().guessSeries(unitText(from), unitText(to));
        if (s < 0) return set(err, 1);
        convertNamed(v, s, from, to, err);
      },
      [&] { set(err, 1); });
  return v;
}

float A_XUNCSC(const float* value, const char* series, const char* from, const char* to, int* err) {
  if (!value) {
    set(err, 1);
    return 0.0f;
  }
  float v = *value;
  guarded(
      [&] {
        const int s = seriesByName(series);
        if (s < 0) return set(err, 1);
        convertNamed(v, s, from, to, err);
      },
      [&] { set(err, 1); });
  return v;
}

void A_XUNGET(const int* iser, const int* iun, char* unit, char* series) {
  X_GETCUN(iser, iun, unit);
  X_GETCSER(iser, series);
}

void A_XUNGETNAME(const int* iser, char* series) { X_GETCSER(iser, series); }

void A_XUNGETUNAME(const int* iser, const int* iun, char* unit) { X_GETCUN(iser, iun, unit); }

void A_XUNGETSER(const char* series, int* iser) { X_GETISER(series, iser); }

int IA_XUNGETSER(const char* series) {
  int iser = -1;
  X_GETISER(series, &iser);
  return iser;
}

int IA_XUNGETSERDEF(const int* iser, const int* system) {
  int value = UnitsRegistry::kNoDimension;
  X_GETSDEF(iser, system, &value);
  return value;
}

int IA_XUNGETSERUN(const int* iser) {
  int n = 0;
  X_NSERUNITS(iser, &n);
  return n;
}

void A_DEPC(float* value, const char* from, const char* to, int* err) { convertInSeries("depth", value, from, to, err); }

void A_DEPC8(double* value, const char* from, const char* to, int* err) {
  convertInSeries("depth", value, from, to, err);
}

void A_LENC(float* value, const int* from, const int* to, int* err) {
  guarded(
      [&] {
        if (!value) return set(err, 1);
        const int iser = unitsRegistry().findSeries("length");
        int e = 0;
        *value = unitsRegistry().convert(*value, iser, in(from), in(to), e);
        set(err, e);
      },
      [&] { set(err, 1); });
}

void A_LENCC(float* value, const char* from, const char* to, int* err) {
  convertInSeries("length", value, from, to, err);
}

void A_TIMC(double* value, const char* from, const char* to, int* err) {
  convertInSeries("time", value, from, to, err);
}

}  // extern "C"
