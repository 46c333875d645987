// Units registry: lookups and conversions over the tables read from x_units.def.
//
// A conversion is first resolved into a plan (nothing to do, a straight line
// y = a*x + b, a line followed by a reciprocal, or the full route through the
// dimension's SI unit), then the plan is applied to every value. Resolving once
// keeps the per-value work of a vector conversion to a multiply and an add.
#include "units/units_registry.h"

#include <cmath>
#include <limits>

#include "host/fixed_text.h"
#include "host/guarded_math.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "host/paths.h"

namespace subsurf {

namespace {

// Exponents this close count as equal when choosing a direct conversion. The
// bound is the single-precision 0.01, a hair below the double one.
constexpr double kSameExponent = 0.01f;
// Below this magnitude a value is too small to be raised to a negative power.
constexpr double kTinyMagnitude = 1.0e-20;

// A unit name as compared: cut to its field width, trailing blanks dropped, lower case.
LowerText lookupName(std::string_view name) {
  name = name.substr(0, 16);
  while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
  return LowerText(name);
}

bool beyondConversion(double v) { return std::fabs(v) > static_cast<double>(kNeverConvertMagnitude); }

}  // namespace

// ---------------------------------------------------------------------------
// Queries

int UnitsRegistry::lastSeries() const { return static_cast<int>(series_.size()) - 1; }

bool UnitsRegistry::validSeries(int iser) const { return iser >= 0 && iser < static_cast<int>(series_.size()); }

int UnitsRegistry::unitCount(int iser) const {
  if (!validSeries(iser)) return 0;
  const UnitSeries& s = series_[static_cast<std::size_t>(iser)];
  return s.lastEntry - s.firstEntry + 1;
}

int UnitsRegistry::listedUnitCount(int iser) const {
  if (!validSeries(iser)) return 0;
  int n = 0;
  for (int iun = 1; iun <= unitCount(iser); ++iun) n += isListed(iser, iun) ? 1 : 0;
  return n;
}

bool UnitsRegistry::isListed(int iser, int iun) const {
  const SeriesEntry* e = entryOf(iser, iun);
  return e && e->listing == 0;
}

std::string UnitsRegistry::seriesName(int iser) const {
  return validSeries(iser) ? series_[static_cast<std::size_t>(iser)].name : std::string();
}

int UnitsRegistry::findSeries(std::string_view name) const {
  std::string key(name.substr(0, 20));
  key = lowerCase(trimBlanks(key));
  if (key.empty()) return -1;
  for (std::size_t i = 0; i < series_.size(); ++i)
    if (lowerCase(series_[i].name) == key) return static_cast<int>(i);
  return -1;
}

int UnitsRegistry::guessSeries(std::string_view unitName) const {
  return names_.firstSeriesWithName(lookupName(unitName).view());
}

int UnitsRegistry::guessSeries(std::string_view unitA, std::string_view unitB) const {
  for (int iser = 0; iser <= lastSeries(); ++iser)
    if (findUnit(iser, unitA) >= 1 && findUnit(iser, unitB) >= 1) return iser;
  return -1;
}

const SeriesEntry* UnitsRegistry::entryOf(int iser, int iun) const {
  if (!validSeries(iser)) return nullptr;
  const UnitSeries& s = series_[static_cast<std::size_t>(iser)];
  if (iun < 1 || iun > s.unitCount) return nullptr;
  const int index = s.firstEntry + iun - 1;
  if (index < 1 || index > static_cast<int>(entries_.size())) return nullptr;
  return &entries_[static_cast<std::size_t>(index - 1)];
}

const UnitDefinition* UnitsRegistry::unitOf(int iser, int iun) const {
  const SeriesEntry* e = entryOf(iser, iun);
  if (!e || e->unitId < 1 || e->unitId > static_cast<int>(units_.size())) return nullptr;
  const UnitDefinition& u = units_[static_cast<std::size_t>(e->unitId - 1)];
  return u.nc == 0 ? nullptr : &u;
}

int UnitsRegistry::findUnit(int iser, std::string_view unitName) const {
  if (!validSeries(iser)) return 0;
  return names_.find(UnitNameIndex::Table::LowerName, iser, lookupName(unitName).view());
}

TypedUnit UnitsRegistry::findTypedUnit(int iser, std::string_view typed) const {
  if (!validSeries(iser)) return {};
  using Table = UnitNameIndex::Table;
  struct Step {
    Table table;
    TypedUnit::By by;
    bool exactCase;
  };
  static constexpr Step kOrder[] = {{Table::Name, TypedUnit::By::Name, true},
                                    {Table::OtherName, TypedUnit::By::OtherName, true},
                                    {Table::LowerName, TypedUnit::By::Name, false},
                                    {Table::LowerOtherName, TypedUnit::By::OtherName, false}};
  const std::string_view text = trimmedBlanks(typed);
  const LowerText lower(text);
  if (!lower.fits()) return {};
  for (const Step& step : kOrder) {
    const int iun = names_.find(step.table, iser, step.exactCase ? text : lower.view());
    if (iun >= 1) return {iun, step.by, step.exactCase};
  }
  return {};
}

int UnitsRegistry::guessSeriesTyped(std::string_view typed) const {
  for (int iser = 0; iser <= lastSeries(); ++iser)
    if (findTypedUnit(iser, typed).iun >= 1) return iser;
  return -1;
}

int UnitsRegistry::guessSeriesTyped(std::string_view typedA, std::string_view typedB) const {
  for (int iser = 0; iser <= lastSeries(); ++iser)
    if (findTypedUnit(iser, typedA).iun >= 1 && findTypedUnit(iser, typedB).iun >= 1) return iser;
  return -1;
}

int UnitsRegistry::unitId(int iser, int iun) const {
  const SeriesEntry* e = entryOf(iser, iun);
  return e ? e->unitId : 0;
}

std::string UnitsRegistry::unitName(int iser, int iun) const {
  const UnitDefinition* u = unitOf(iser, iun);
  return u ? u->name : std::string();
}

std::string UnitsRegistry::unitOtherName(int iser, int iun) const {
  const UnitDefinition* u = unitOf(iser, iun);
  return u ? u->otherName : std::string();
}

std::string UnitsRegistry::unitDescription(int iser, int iun) const {
  const UnitDefinition* u = unitOf(iser, iun);
  return u ? u->description : std::string();
}

int UnitsRegistry::defaultUnit(int iser, int system) const {
  if (!validSeries(iser)) return kNoDimension;
  const UnitSeries& s = series_[static_cast<std::size_t>(iser)];
  switch (system) {
    case static_cast<int>(UnitSystem::Oilfield): return findUnit(iser, s.oilfieldDefault);
    case static_cast<int>(UnitSystem::Metric): return findUnit(iser, s.metricDefault);
    case static_cast<int>(UnitSystem::SI): return findUnit(iser, s.siDefault);
    case 4: return s.dimension;
    default: return 0;
  }
}

std::vector<std::string> UnitsRegistry::listedUnitNames(int iser) const {
  std::vector<std::string> names;
  for (int iun = 1; iun <= unitCount(iser); ++iun)
    if (isListed(iser, iun)) names.push_back(unitName(iser, iun));
  return names;
}

// ---------------------------------------------------------------------------
// Conversion plans

struct UnitsRegistry::Plan {
  enum class Kind { Same, Invalid, Linear, Reciprocal, ThroughSI };
  Kind kind = Kind::Invalid;
  double a = 1.0, b = 0.0;  // Linear and Reciprocal
  const UnitDefinition* from = nullptr;  // ThroughSI
  const UnitDefinition* to = nullptr;
  bool skipFrom = false, skipTo = false;
};

namespace {

// Direct coefficients between two units of one series. err 0: y = a*x + b, then
// y = 1/y when reciprocal; err -1: the pair has no direct form.
//
// Units with the same exponent are a scale and an offset apart. Units whose
// exponents differ and that have no offsets are treated as a reciprocal pair;
// that rule takes the two scale factors to be each other's inverse, which the
// definitions file arranges for every pair it lets through (see its header).
void directCoefficients(const UnitDefinition& f, const UnitDefinition& t, double& a, double& b, bool& reciprocal,
                        int& err) {
  a = 1.0;
  b = 0.0;
  reciprocal = false;
  err = -1;
  if (f.nc == 4 || t.nc == 4) return;
  if (std::fabs(f.c3 - t.c3) <= kSameExponent) {
    if (t.c1 == 0.0) return;  // cannot be undone directly; the SI route reports it
    a = f.c1 / t.c1;
    b = f.c2 * f.c1 / t.c1 - t.c2;
    err = 0;
    return;
  }
  if (f.c2 != 0.0 || t.c2 != 0.0) return;
  if (f.c3 >= 0.5) {
    a = 1.0 / (t.c1 * f.c1);
    reciprocal = true;
    err = 0;
  }
}

// One value through the dimension's SI unit:  v = c4 * (c1 * (u + c2)) ^ c3
// for the source unit, then the same steps undone in reverse for the target
// (the power undone by the power 1/c3, which for the exponents 1 and -1 of the
// units in use is the exponent itself).
double throughSI(double value, const UnitDefinition& f, const UnitDefinition& t, bool skipFrom, bool skipTo, int& err) {
  double x = value;
  if (!skipFrom) {
    if (f.nc > 1) x += f.c2;
    x *= f.c1;
    if (f.nc > 2) {
      if (std::fabs(x) >= kTinyMagnitude) {
        int powerErr = 0;
        x = guardedPower(x, f.c3, powerErr);
        if (powerErr != 0) {
          err = powerErr;
          return value;
        }
      } else {
        x = 0.0;
        if (f.c3 < 0.0) {  // a reciprocal of (nearly) nothing
          err = 1;
          return value;
        }
      }
    }
    if (f.nc > 3) x *= f.c4;
  }
  if (!skipTo) {
    // A step that cannot be undone (zero coefficient) is reported and left out;
    // the others still run.
    if (t.nc > 3) {
      if (t.c4 == 0.0) err = 1;
      else x /= t.c4;
    }
    if (t.nc > 2) {
      if (t.c3 == 0.0) {
        err = 1;
      } else {
        int powerErr = 0;
        const double y = guardedPower(x, 1.0 / t.c3, powerErr);
        if (powerErr != 0) err = powerErr;
        else x = y;
      }
    }
    if (t.c1 == 0.0) err = 1;
    else x /= t.c1;
    if (t.nc > 1) x -= t.c2;
  }
  return x;
}

}  // namespace

UnitsRegistry::Plan UnitsRegistry::plan(int iser, int from, int to) const {
  Plan p;
  if (from == to) {
    p.kind = Plan::Kind::Same;
    return p;
  }
  const UnitDefinition* f = unitOf(iser, from);
  const UnitDefinition* t = unitOf(iser, to);
  if (!f || !t) return p;  // Invalid

  int err = 0;
  bool reciprocal = false;
  directCoefficients(*f, *t, p.a, p.b, reciprocal, err);
  if (err == 0) {
    p.kind = reciprocal ? Plan::Kind::Reciprocal : Plan::Kind::Linear;
    return p;
  }
  p.kind = Plan::Kind::ThroughSI;
  p.from = f;
  p.to = t;
  // The SI unit itself needs no steps. It is recognised by its unit id being
  // the series' first-entry number, which the definitions file lays out to hold.
  const int first = series_[static_cast<std::size_t>(iser)].firstEntry;
  p.skipFrom = unitId(iser, from) == first;
  p.skipTo = unitId(iser, to) == first;
  return p;
}

LinearConversion UnitsRegistry::linearCoefficients(int iser, int from, int to, int& err) const {
  LinearConversion out;
  err = 1;
  const UnitDefinition* f = unitOf(iser, from);
  const UnitDefinition* t = unitOf(iser, to);
  if (!f || !t) return out;
  double a = 1.0, b = 0.0;
  bool reciprocal = false;
  directCoefficients(*f, *t, a, b, reciprocal, err);
  if (err == 0) {
    out.a = static_cast<float>(a);
    out.b = static_cast<float>(b);
    out.reciprocal = reciprocal;
  }
  return out;
}

namespace {

// a*x + b, with a result that is only rounding noise taken as 0. An offset
// conversion cancels at one point (32 degF is 0 degC): there a*x is close to -b,
// and the rounding of a, b and the sum leaves a few units of the last place of
// b. A result within that of zero is zero, which is what a user expects to read.
constexpr double kNoise = 16.0 * std::numeric_limits<double>::epsilon();

inline double cancellationNoise(double b) { return kNoise * std::fabs(b); }

inline double affine(double a, double b, double x) {
  const double y = a * x + b;
  return std::fabs(y) <= cancellationNoise(b) ? 0.0 : y;
}

// Applies a resolved plan to one value (the value is known to be convertible).
template <typename Plan>
double applyOne(const Plan& p, double x, int& err) {
  using Kind = typename Plan::Kind;
  switch (p.kind) {
    case Kind::Same: return x;
    case Kind::Invalid: err = 1; return x;
    case Kind::Linear: return affine(p.a, p.b, x);
    case Kind::Reciprocal: {
      const double y = p.a * x + p.b;
      if (y == 0.0) err = -1;  // and the result is an infinity
      return 1.0 / y;
    }
    case Kind::ThroughSI: return throughSI(x, *p.from, *p.to, p.skipFrom, p.skipTo, err);
  }
  return x;
}

// The vector loops. Nulls and other marks beyond the conversion limit keep their
// exact bits. Every value's result is computed and the kept one selected, with
// no branch, so that the loop becomes SIMD code. GCC only turns such a select
// into a blend when it may ignore floating-point exception flags, which nothing
// here reads.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__)
// Also compiled for the wider vector registers, chosen when the program starts.
#define SUBSURF_SIMD_LOOP \
  [[gnu::optimize("no-trapping-math"), gnu::target_clones("avx512f", "avx2", "default")]]
#elif defined(__GNUC__) && !defined(__clang__)
#define SUBSURF_SIMD_LOOP [[gnu::optimize("no-trapping-math")]]
#else
#define SUBSURF_SIMD_LOOP
#endif

// y = a*x + b, from `in` into `out` (which may be `in` itself). Floats are
// worked in double so that the coefficients keep their full precision; the
// result is rounded once. A pure scale (b = 0, most conversions) needs no
// check for cancellation and has a loop of its own.
template <typename T>
SUBSURF_SIMD_LOOP void linearLoop(const T* in, T* out, std::size_t n, double a, double b) {
  const double limit = kNeverConvertMagnitude;
  if (b == 0.0) {
    for (std::size_t i = 0; i < n; ++i) {
      const double x = in[i];  // exact for a float, so a kept value keeps its bits
      out[i] = static_cast<T>(std::fabs(x) > limit ? x : a * x);
    }
    return;
  }
  const double noise = cancellationNoise(b);
  for (std::size_t i = 0; i < n; ++i) {
    // affine() written out: a call would keep GCC from turning the selects into blends.
    const double x = in[i];
    const double sum = a * x + b;
    const double y = std::fabs(sum) <= noise ? 0.0 : sum;
    out[i] = static_cast<T>(std::fabs(x) > limit ? x : y);
  }
}

// y = 1 / (a*x + b); true when some converted value met a zero denominator.
// (Only velocity and slowness pairs take this path; it is not vectorised.)
template <typename T>
bool reciprocalLoop(const T* in, T* out, std::size_t n, double a, double b) {
  const double limit = kNeverConvertMagnitude;
  bool zero = false;
  for (std::size_t i = 0; i < n; ++i) {
    const double x = in[i];
    out[i] = in[i];
    if (std::fabs(x) > limit) continue;
    const double d = a * x + b;
    zero |= d == 0.0;
    out[i] = static_cast<T>(1.0 / d);
  }
  return zero;
}

// Converts n values from `in` into `out`, which may be `in` itself.
template <typename T, typename Plan>
void applyMany(const Plan& p, const T* in, T* out, std::size_t n, int& err) {
  using Kind = typename Plan::Kind;
  switch (p.kind) {
    case Kind::Same:
      if (in != out) std::copy_n(in, n, out);
      return;
    case Kind::Linear: linearLoop(in, out, n, p.a, p.b); return;
    case Kind::Reciprocal:
      if (reciprocalLoop(in, out, n, p.a, p.b)) err = -1;
      return;
    case Kind::Invalid:
    case Kind::ThroughSI:
      for (std::size_t i = 0; i < n; ++i) {
        out[i] = in[i];
        if (beyondConversion(static_cast<double>(in[i]))) continue;
        int e = 0;
        const double y = applyOne(p, static_cast<double>(in[i]), e);
        out[i] = static_cast<T>(y);
        if (e != 0) err = e;
      }
      return;
  }
}

}  // namespace

double UnitsRegistry::convert(double value, int iser, int from, int to, int& err) const {
  err = 0;
  if (from == to || beyondConversion(value)) return value;
  const Plan p = plan(iser, from, to);
  return applyOne(p, value, err);
}

float UnitsRegistry::convert(float value, int iser, int from, int to, int& err) const {
  err = 0;
  if (from == to || beyondConversion(value)) return value;
  const Plan p = plan(iser, from, to);
  return static_cast<float>(applyOne(p, static_cast<double>(value), err));
}

void UnitsRegistry::convert(float* values, std::size_t n, int iser, int from, int to, int& err) const {
  convert(values, values, n, iser, from, to, err);
}

void UnitsRegistry::convert(double* values, std::size_t n, int iser, int from, int to, int& err) const {
  err = 0;
  if (from == to || values == nullptr || n == 0) return;
  applyMany(plan(iser, from, to), values, values, n, err);
}

void UnitsRegistry::convert(const float* in, float* out, std::size_t n, int iser, int from, int to,
                            int& err) const {
  err = 0;
  if (in == nullptr || out == nullptr || n == 0) return;
  if (from == to) {
    if (in != out) std::copy_n(in, n, out);
    return;
  }
  applyMany(plan(iser, from, to), in, out, n, err);
}

double UnitsRegistry::convertByName(double value, int iser, std::string_view from, std::string_view to,
                                    int& err) const {
  err = 0;
  if (lookupName(from).view().empty() || lookupName(to).view().empty()) return value;
  const int ifrom = findUnit(iser, from);
  const int ito = findUnit(iser, to);
  if (ifrom < 1 || ito < 1) {
    err = 1;
    return value;
  }
  return convert(value, iser, ifrom, ito, err);
}

// ---------------------------------------------------------------------------
// The process-wide registry

namespace {

UnitsRegistry& storage() {
  static UnitsRegistry registry;
  return registry;
}

}  // namespace

UnitsRegistry& unitsRegistry() { return storage(); }

Status reloadUnitsRegistry() {
  const Status status = storage().load(resolvePath(kUnitsDefinitionsFile));
  if (!status) host::showMessage(status.message());
  return status;
}

}  // namespace subsurf
