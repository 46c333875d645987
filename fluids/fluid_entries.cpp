#include "fluids/fluid_entries.h"

#include <algorithm>

#include "host/fixed_text.h"
#include "units/units_registry.h"

namespace subsurf::fluids {
namespace {

// clang-format off
const std::array<EntryInfo, kEntryCount> kEntries = {{
  {Entry::Dres,    "dres",    "Reservoir depth",                    Form::Reservoir, "depth",           "ft"},
  {Entry::Tres,    "tres",    "Reservoir temperature",              Form::Reservoir, "temperature",     "degf"},
  {Entry::Pres,    "pres",    "Reservoir pressure",                 Form::Reservoir, "pressure",        "psia"},
  {Entry::Tsc,     "tsc",     "Standard temperature",               Form::Reservoir, "temperature",     "degf"},
  {Entry::Psc,     "psc",     "Standard pressure",                  Form::Reservoir, "pressure",        "psia"},
  {Entry::Oden,    "oden",    "Oil gravity",                        Form::Oil,       "oil gravity",     "api"},
  {Entry::Sgden,   "sgden",   "Separator gas gravity",              Form::Oil,       "gas gravity",     "(air=1)"},
  {Entry::Solgor,  "solgor",  "Solution gas-oil ratio",             Form::Oil,       "gas oil ratio",   "scf/stb"},
  {Entry::Pbubble, "pbubble", "Bubble-point pressure",              Form::Oil,       "pressure",        "psia"},
  {Entry::Bo,      "bo",      "Oil formation volume factor",        Form::Oil,       "volume factor",   "bbl/stb"},
  {Entry::Oviscd,  "oviscd",  "Dead-oil viscosity",                 Form::Oil,       "viscosity",       "cp"},
  {Entry::Oviscdt, "oviscdt", "Dead-oil viscosity temperature",     Form::Oil,       "temperature",     "degf"},
  {Entry::Ovisc,   "ovisc",   "Live-oil viscosity",                 Form::Oil,       "viscosity",       "cp"},
  {Entry::Ocomp,   "ocomp",   "Oil compressibility",                Form::Oil,       "compressibility", "1/psi"},
  {Entry::Gden,    "gden",    "Gas gravity",                        Form::Gas,       "gas gravity",     "(air=1)"},
  {Entry::N2,      "n2",      "Nitrogen mole fraction",             Form::Gas,       "fraction",        "vol/vol"},
  {Entry::Co2,     "co2",     "Carbon dioxide mole fraction",       Form::Gas,       "fraction",        "vol/vol"},
  {Entry::H2s,     "h2s",     "Hydrogen sulphide mole fraction",    Form::Gas,       "fraction",        "vol/vol"},
  {Entry::Bg,      "bg",      "Gas expansion factor",               Form::Gas,       "gas expansion",   "scf/cf"},
  {Entry::Gdenres, "gdenres", "Gas density at reservoir conditions", Form::Gas,      "density",         "g/cc"},
  {Entry::Gvisc,   "gvisc",   "Gas viscosity",                      Form::Gas,       "viscosity",       "cp"},
  {Entry::Ghi,     "ghi",     "Gas hydrogen index",                 Form::Gas,       "dimensionless",   ""},
  {Entry::Zfact,   "zfact",   "Gas z-factor",                       Form::Gas,       "dimensionless",   "-"},
}};
// clang-format on

// Finds the series of an entry: by its name, else through its fixed unit.
int seriesFor(const EntryInfo& info) {
  const UnitsRegistry& reg = unitsRegistry();
  int iser = reg.findSeries(info.series);
  if (iser < 0 && info.fixedUnit[0] != '\0') iser = reg.guessSeries(info.fixedUnit);
  return iser;
}

bool isBlank(std::string_view s) { return trimBlanks(s).empty(); }

template <std::size_t N>
void setName(char (&field)[N], std::string_view text) {
  const std::string lowered = lowerCase(trimBlanks(text));
  const std::size_t n = std::min(N - 1, lowered.size());
  lowered.copy(field, n);
  field[n] = '\0';
}

}  // namespace

const EntryInfo& entryInfo(Entry e) { return kEntries[static_cast<std::size_t>(e)]; }

const std::array<EntryInfo, kEntryCount>& allEntries() { return kEntries; }

std::optional<Entry> findEntry(std::string_view name) {
  const std::string key = lowerCase(trimBlanks(name));
  for (const EntryInfo& info : kEntries) {
    if (key == info.name) return info.entry;
  }
  return std::nullopt;
}

const char* formTitle(Form form) {
  switch (form) {
    case Form::Reservoir: return "Reservoir conditions";
    case Form::Oil: return "Oil properties";
    case Form::Gas: return "Gas properties";
  }
  return "";
}

void FluidTable::create(int unitSystem) {
  const UnitsRegistry& reg = unitsRegistry();
  for (const EntryInfo& info : kEntries) {
    Record& r = records_[index(info.entry)];
    r = Record{};
    r.iser = seriesFor(info);
    setName(r.unit, info.fixedUnit);
    if (r.iser >= 0) {
      int iun = reg.defaultUnit(r.iser, unitSystem);
      if (iun < 1 || iun > reg.unitCount(r.iser)) iun = reg.findUnit(r.iser, info.fixedUnit);
      if (iun >= 1) {
        r.iun = iun;
        setName(r.unit, reg.unitName(r.iser, iun));
      }
    }
  }
  exists_ = true;
  const EntryUnit unavailable{-1, -1};
  for (const EntryInfo& info : kEntries) {
    fixed_[index(info.entry)] = unitOf(info.entry, info.fixedUnit).value_or(unavailable);
  }
  rankine_ = unitOf(Entry::Tres, "degr").value_or(unavailable);

  // Defaults that make a fresh table usable: no impurities, and the usual
  // standard conditions held as calculated values.
  for (Entry e : {Entry::N2, Entry::Co2, Entry::H2s}) set(e, fixedUnit(e), 0.0f, kStateEmpty);
  set(Entry::Tsc, fixedUnit(Entry::Tsc), 60.0f, kStateCalculated);
  set(Entry::Psc, fixedUnit(Entry::Psc), 14.7f, kStateCalculated);
}

void FluidTable::destroy() {
  records_ = {};
  fixed_ = {};
  rankine_ = {};
  exists_ = false;
}

std::optional<EntryUnit> FluidTable::unitOf(Entry e, std::string_view unitName) const {
  const Record& r = records_[index(e)];
  if (isBlank(unitName)) return EntryUnit{r.iser, 0};
  const std::string name = lowerCase(trimBlanks(unitName));
  if (name == r.unit) return EntryUnit{r.iser, r.iun > 0 ? r.iun : 0};
  if (r.iser < 0) return std::nullopt;
  const int iun = unitsRegistry().findUnit(r.iser, name);
  if (iun < 1) return std::nullopt;
  return EntryUnit{r.iser, iun};
}

float FluidTable::convert(float value, int iser, int from, int to) {
  int err = 0;
  const float out = unitsRegistry().convert(value, iser, from, to, err);
  return err == 0 ? out : kRealNull;
}

EntryReading FluidTable::get(Entry e, EntryUnit unit) const {
  EntryReading out;
  if (!exists_) return out;
  const Record& r = records_[index(e)];
  out.state = r.state;
  if (isNull(r.value) || unit.iun < 0) return out;
  if (unit.iun < 1 || unit.iun == r.iun || r.iun < 1) {
    out.value = r.value;
  } else {
    out.value = convert(r.value, r.iser, r.iun, unit.iun);
    if (isNull(out.value)) return out;
  }
  out.missing = false;
  return out;
}

void FluidTable::set(Entry e, EntryUnit unit, float value, int state) {
  if (!exists_ || unit.iun < 0) return;
  Record& r = records_[index(e)];
  r.state = state;
  if (isNull(value) || unit.iun < 1 || unit.iun == r.iun || r.iun < 1) {
    r.value = value;
  } else {
    r.value = convert(value, r.iser, unit.iun, r.iun);
  }
}

EntryReading FluidTable::get(std::string_view name, std::string_view unit) const {
  const std::optional<Entry> e = findEntry(name);
  if (!e || !exists_) return {};
  const std::optional<EntryUnit> u = unitOf(*e, unit);
  if (!u) {
    EntryReading out;
    out.state = records_[index(*e)].state;
    return out;
  }
  return get(*e, *u);
}

Status FluidTable::set(std::string_view name, std::string_view unit, float value, int state) {
  const std::optional<Entry> e = findEntry(name);
  if (!e) return Status::error("Unknown entry \"" + trimBlanks(name) + "\"");
  if (!exists_) return Status::error("The fluid table is not open");
  const std::optional<EntryUnit> u = unitOf(*e, unit);
  if (!u) {
    return Status::error("\"" + trimBlanks(unit) + "\" is not a unit of " +
                         entryInfo(*e).series + " for entry \"" + entryInfo(*e).name + "\"");
  }
  set(*e, *u, value, state);
  return Status::ok();
}

std::string FluidTable::storedUnitName(Entry e) const {
  const Record& r = records_[index(e)];
  if (r.iser >= 0 && r.iun >= 1) return trimBlanks(unitsRegistry().unitName(r.iser, r.iun));
  return std::string(r.unit);
}

Status FluidTable::setStoredUnit(Entry e, std::string_view unitName) {
  const std::optional<EntryUnit> u = unitOf(e, unitName);
  if (!u) {
    return Status::error("\"" + trimBlanks(unitName) + "\" is not a unit of " +
                         entryInfo(e).series + " for entry \"" + entryInfo(e).name + "\"");
  }
  Record& r = records_[index(e)];
  if (u->iun < 1 || u->iun == r.iun) return Status::ok();
  if (!isNull(r.value)) r.value = convert(r.value, r.iser, r.iun, u->iun);
  r.iun = u->iun;
  setName(r.unit, unitsRegistry().unitName(r.iser, r.iun));
  return Status::ok();
}

FluidTable& fluidTable() {
  static FluidTable table;
  return table;
}

}  // namespace subsurf::fluids
