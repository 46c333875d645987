// Reading the units definitions file into the registry's four tables.
//
// The file is a sequence of sections, each opened by a row whose first field
// starts with "**". A section is recognised by a fragment of its header word
// rather than the whole word, so that "**Units" and "**units" both work; the
// fragments are tried in a fixed order and the first one found wins, which makes
// "**Series units" a units section. Rows hold the table's columns in the order
// documented at the top of data/x_units.def and in docs/file-formats.md.
//
// Every row names its own number (dimension, unit, series or entry), and rows
// are stored at that number: a bad row is reported and leaves a gap instead of
// shifting every later row onto the wrong number.
#include <cstddef>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "host/csv_row.h"
#include "host/fixed_text.h"
#include "host/keyword_file.h"
#include "host/messages.h"
#include "units/units_registry.h"

namespace subsurf {

namespace {

enum class Section { None, Unknown, Dimensions, Units, Series, Entries };

// Field widths of the tables' text columns.
constexpr std::size_t kHeaderWidth = 40;
constexpr std::size_t kDimensionNameWidth = 32;
constexpr std::size_t kUnitNameWidth = 16;
constexpr std::size_t kSeriesNameWidth = 20;
constexpr std::size_t kDescriptionWidth = 60;

// Row numbers beyond this are taken for typing errors rather than allocated.
constexpr int kMaxRowNumber = 100000;

Section sectionOf(std::string_view header) {
  header = header.substr(0, kHeaderWidth);
  if (header.find("imens") != std::string_view::npos) return Section::Dimensions;
  if (header.find("nits") != std::string_view::npos) return Section::Units;
  if (header.find("eries") != std::string_view::npos) return Section::Series;
  if (header.find("ntries") != std::string_view::npos) return Section::Entries;
  return Section::Unknown;
}

// A text column cut to its field width, without trailing blanks.
std::string fieldText(const CsvRow& row, int column, std::size_t width) {
  std::string text;
  row.text(column, text);
  if (text.size() > width) text.resize(width);
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

template <typename T>
void storeAt(std::vector<T>& table, int number, T value, const T& gap) {
  if (static_cast<int>(table.size()) < number) table.resize(static_cast<std::size_t>(number), gap);
  table[static_cast<std::size_t>(number - 1)] = std::move(value);
}

}  // namespace

// Fills a registry from one definitions file; a friend of UnitsRegistry.
class DefinitionsReader {
 public:
  explicit DefinitionsReader(UnitsRegistry& registry) : reg_(registry) {}

  Status read(const std::string& path) {
    KeywordFileReader file;
    if (!file.open(path)) return Status::error("Cannot read units definitions file " + path);

    Section section = Section::None;
    CsvRow row;
    while (file.next(row)) {
      std::string first;
      row.text(1, first);
      if (!first.empty() && first[0] == '#') continue;  // comment line
      if (first.rfind("**", 0) == 0) {
        section = sectionOf(first);
        if (section == Section::Unknown)
          reject(file, fmt::format("unknown section {} - its rows are skipped", first.substr(0, kHeaderWidth)));
        continue;
      }
      switch (section) {
        case Section::None: reject(file, "row outside a section - row skipped"); break;
        case Section::Unknown: break;
        case Section::Dimensions: dimensionRow(file, row); break;
        case Section::Units: unitRow(file, row); break;
        case Section::Series: seriesRow(file, row); break;
        case Section::Entries: entryRow(file, row); break;
      }
    }
    checkReferences(path);
    if (reg_.series_.empty()) return Status::error("Units definitions file " + path + " defines no unit series");
    return Status::ok();
  }

 private:
  static void reject(const KeywordFileReader& file, std::string_view what) { host::showMessage(file.where(what)); }

  // Reads an integer column; reports the row when it is missing or not a number.
  bool integerAt(const KeywordFileReader& file, const CsvRow& row, int column, const char* name, int& out) {
    if (row.integer(column, out) == CsvRow::kOk) return true;
    reject(file, fmt::format("bad {} - row skipped", name));
    return false;
  }

  // Reads an optional integer column: absent or empty gives the fallback.
  bool optionalIntegerAt(const KeywordFileReader& file, const CsvRow& row, int column, const char* name,
                         int fallback, int& out) {
    const int status = row.integer(column, out);
    if (status == CsvRow::kOk) return true;
    if (status == CsvRow::kAbsent) {
      out = fallback;
      return true;
    }
    reject(file, fmt::format("bad {} - row skipped", name));
    return false;
  }

  // What is known of each row number of a table.
  enum class RowState : unsigned char { Unseen, Defined, Rejected };
  using RowStates = std::vector<RowState>;

  // The row's own number in lowest..kMaxRowNumber, not defined before.
  bool rowNumberAt(const KeywordFileReader& file, const CsvRow& row, const char* name, int lowest, RowStates& states,
                   int& number) {
    if (!integerAt(file, row, 1, name, number)) return false;
    if (number < lowest || number > kMaxRowNumber) {
      reject(file, fmt::format("bad {} - row skipped", name));
      return false;
    }
    const auto slot = static_cast<std::size_t>(number - lowest);
    if (states.size() <= slot) states.resize(slot + 1, RowState::Unseen);
    if (states[slot] == RowState::Defined) {
      reject(file, fmt::format("{} {} defined twice - row skipped", name, number));
      return false;
    }
    states[slot] = RowState::Defined;
    return true;
  }

  static bool isDefined(const RowStates& states, std::size_t slot) {
    return slot < states.size() && states[slot] == RowState::Defined;
  }

  void dimensionRow(const KeywordFileReader& file, const CsvRow& row) {
    int id = 0;
    if (!rowNumberAt(file, row, "dim_id", 1, dimensionStates_, id)) return;
    UnitDimension d;
    d.id = id;
    d.name = fieldText(row, 2, kDimensionNameWidth);
    if (d.name.empty()) {
      dimensionStates_[static_cast<std::size_t>(id - 1)] = RowState::Rejected;
      reject(file, "bad dim_name - row skipped");
      return;
    }
    storeAt(reg_.dimensions_, id, std::move(d), UnitDimension{});
  }

  void unitRow(const KeywordFileReader& file, const CsvRow& row) {
    int id = 0;
    if (!rowNumberAt(file, row, "unit_id", 1, unitStates_, id)) return;
    auto undefine = [&] { unitStates_[static_cast<std::size_t>(id - 1)] = RowState::Rejected; };

    UnitDefinition u;
    u.name = fieldText(row, 2, kUnitNameWidth);  // may be blank: the unit of plain numbers
    u.otherName = fieldText(row, 3, kUnitNameWidth);
    if (!integerAt(file, row, 4, "unit_dim", u.dimension) || !integerAt(file, row, 5, "unit_nc", u.nc)) {
      undefine();
      return;
    }
    if (u.nc < 1 || u.nc > 4) {
      undefine();
      reject(file, "bad unit_nc - row skipped");
      return;
    }
    // The coefficients in force must be there; those beyond unit_nc keep their
    // neutral values whatever the row holds, so that no rule of the conversion
    // picks up a coefficient the unit does not use.
    double* coefficient[4] = {&u.c1, &u.c2, &u.c3, &u.c4};
    static const char* const kNames[4] = {"unit_c1", "unit_c2", "unit_c3", "unit_c4"};
    for (int k = 0; k < u.nc; ++k) {
      if (row.real8(6 + k, *coefficient[k]) != CsvRow::kOk) {
        undefine();
        reject(file, fmt::format("bad {} - row skipped", kNames[k]));
        return;
      }
    }
    // A zero scale makes every value of the unit zero (100 ft would be 0 m):
    // a typing error, never a unit.
    for (int k : {0, 3}) {
      if (k < u.nc && *coefficient[k] == 0.0) {
        undefine();
        reject(file, fmt::format("{} is zero - row skipped", kNames[k]));
        return;
      }
    }
    u.description = fieldText(row, 10, kDescriptionWidth);  // optional
    storeAt(reg_.units_, id, std::move(u), kUnitGap);
  }

  void seriesRow(const KeywordFileReader& file, const CsvRow& row) {
    int iser = 0;
    if (!rowNumberAt(file, row, "ser_id", 0, seriesStates_, iser)) return;
    auto undefine = [&] { seriesStates_[static_cast<std::size_t>(iser)] = RowState::Rejected; };

    UnitSeries s;
    s.name = fieldText(row, 2, kSeriesNameWidth);
    if (s.name.empty()) {
      undefine();
      reject(file, "bad ser_name - row skipped");
      return;
    }
    if (!integerAt(file, row, 3, "ser_dim", s.dimension) || !integerAt(file, row, 4, "first entry", s.firstEntry) ||
        !integerAt(file, row, 5, "last entry", s.lastEntry)) {
      undefine();
      return;
    }
    // An empty series (last = first - 1) is allowed.
    if (s.firstEntry < 1 || s.firstEntry > kMaxRowNumber || s.lastEntry < s.firstEntry - 1 ||
        s.lastEntry > kMaxRowNumber) {
      undefine();
      reject(file, "bad first entry or last entry - row skipped");
      return;
    }
    const int entryCount = s.lastEntry - s.firstEntry + 1;
    if (!optionalIntegerAt(file, row, 6, "unit count", entryCount, s.unitCount)) {
      undefine();
      return;
    }
    if (s.unitCount < 0 || s.unitCount > entryCount) {
      undefine();
      reject(file, "bad unit count - row skipped");
      return;
    }
    s.metricDefault = fieldText(row, 7, kUnitNameWidth);
    s.oilfieldDefault = fieldText(row, 8, kUnitNameWidth);
    s.siDefault = fieldText(row, 9, kUnitNameWidth);
    const auto slot = static_cast<std::size_t>(iser);
    if (reg_.series_.size() <= slot) reg_.series_.resize(slot + 1);
    reg_.series_[slot] = std::move(s);
  }

  void entryRow(const KeywordFileReader& file, const CsvRow& row) {
    int number = 0;
    if (!rowNumberAt(file, row, "entry", 1, entryStates_, number)) return;
    SeriesEntry e;
    if (!integerAt(file, row, 2, "unit_id", e.unitId) ||
        !optionalIntegerAt(file, row, 3, "reserved", 0, e.reserved) ||
        !optionalIntegerAt(file, row, 4, "listing flag", 0, e.listing)) {
      entryStates_[static_cast<std::size_t>(number - 1)] = RowState::Rejected;
      return;
    }
    storeAt(reg_.entries_, number, e, SeriesEntry{});
  }

  // Once every section is in: an entry must name a unit the file defines, and a
  // series must only span entries the file defines. Faults are reported and
  // leave the entry or series without units rather than pointing anywhere.
  void checkReferences(const std::string& path) {
    for (std::size_t k = 0; k < reg_.entries_.size(); ++k) {
      SeriesEntry& e = reg_.entries_[k];
      if (!isDefined(entryStates_, k)) continue;
      const int id = e.unitId;
      if (id < 1 || id > static_cast<int>(reg_.units_.size()) || reg_.units_[static_cast<std::size_t>(id - 1)].nc == 0) {
        host::showMessage(fmt::format("{}: entry {} names undefined unit_id {}", path, k + 1, id));
        e.unitId = 0;
      }
    }
    for (std::size_t iser = 0; iser < reg_.series_.size(); ++iser) {
      UnitSeries& s = reg_.series_[iser];
      if (!isDefined(seriesStates_, iser)) {
        // A rejected row has been reported already; a number never seen is a gap.
        if (iser >= seriesStates_.size() || seriesStates_[iser] == RowState::Unseen)
          host::showMessage(fmt::format("{}: series {} is not defined", path, iser));
        continue;
      }
      for (int n = s.firstEntry; n < s.firstEntry + s.unitCount; ++n) {
        const auto k = static_cast<std::size_t>(n - 1);
        if (!isDefined(entryStates_, k)) {
          host::showMessage(fmt::format("{}: series {} uses undefined entry {} - it is left without units", path,
                                        s.name, n));
          s.lastEntry = s.firstEntry - 1;
          s.unitCount = 0;
          break;
        }
      }
    }
  }

  // A unit id the file leaves undefined: nc 0 marks it as no unit.
  inline static const UnitDefinition kUnitGap = [] {
    UnitDefinition u;
    u.nc = 0;
    return u;
  }();

  UnitsRegistry& reg_;
  RowStates dimensionStates_, unitStates_, seriesStates_, entryStates_;
};

Status UnitsRegistry::load(const std::string& path) {
  clear();
  const Status status = DefinitionsReader(*this).read(path);
  if (!status) {
    clear();
    return status;
  }
  for (int iser = 0; iser <= lastSeries(); ++iser) {
    for (int iun = 1; iun <= series_[static_cast<std::size_t>(iser)].unitCount; ++iun)
      if (const UnitDefinition* u = unitOf(iser, iun)) names_.add(iser, iun, u->name, u->otherName);
  }
  return status;
}

void UnitsRegistry::clear() {
  dimensions_.clear();
  units_.clear();
  series_.clear();
  entries_.clear();
  names_.clear();
}

}  // namespace subsurf
