// UnitsRegistry: the process-wide table of dimensions, units and unit series.
//
// A unit is named everywhere by the pair (iser, iun): the series number (a
// dimension seen in one role, such as "depth" or "pressure") and the unit's
// position within that series, counted from 1. A position below 1 means no unit.
// Unit systems are numbered 1 = oilfield, 2 = metric, 3 = SI.
//
// A unit u relates to the SI value v of its dimension by
//     v = c4 * (c1 * (u + c2)) ^ c3
// with the later coefficients absent when the unit has fewer of them.
// Conversions between units that differ only in scale and offset are done with
// direct linear coefficients (exact to double rounding); others go through SI.
//
// The registry is filled once from the definitions file "x_units.def" and never
// changes afterwards. Before it is loaded every query answers as for no series.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/status.h"
#include "units/unit_name_index.h"

namespace subsurf {

enum class UnitSystem { Oilfield = 1, Metric = 2, SI = 3 };

struct UnitDimension {
  int id = 0;
  std::string name;  // up to 32 characters
};

struct UnitDefinition {
  double c1 = 1.0, c2 = 0.0, c3 = 1.0, c4 = 1.0;
  int nc = 1;       // coefficients in force, 1..4 (0: an id the file left undefined)
  int dimension = 0;
  std::string name;         // display name, up to 16 characters
  std::string otherName;    // alternative name, up to 16 characters
  std::string description;  // what the unit is, for searches; up to 60 characters
};

struct UnitSeries {
  int dimension = 0;
  int firstEntry = 0;  // index into the series-entry table (from 1)
  int lastEntry = -1;
  int unitCount = 0;   // highest iun accepted
  std::string metricDefault, oilfieldDefault, siDefault;  // unit names
  std::string name;    // up to 20 characters
};

struct SeriesEntry {
  int unitId = 0;     // row of the units table, from 1
  int reserved = 0;
  int listing = 0;    // 0: listed in pick lists; anything else hides the unit
};

// A unit as a user typed it, found by findTypedUnit.
struct TypedUnit {
  enum class By { None, Name, OtherName };
  int iun = 0;           // below 1 when nothing matched
  By by = By::None;      // which of the unit's names matched
  bool exactCase = true; // false when only a match ignoring letter case was found
};

// Direct linear conversion y = a*x + b, reciprocal afterwards when reciprocal is set.
struct LinearConversion {
  float a = 1.0f, b = 0.0f;
  bool reciprocal = false;
};

class UnitsRegistry {
 public:
  // Reads a definitions file. On failure the registry is left empty and the
  // returned status names the file; malformed rows are reported (naming the
  // line) through the host's messages and skipped.
  Status load(const std::string& path);
  bool loaded() const { return !series_.empty(); }
  void clear();

  // Number of the last series (series run from 0 to this number).
  int lastSeries() const;
  bool validSeries(int iser) const;
  int unitCount(int iser) const;        // 0 for a bad iser
  int listedUnitCount(int iser) const;  // units whose listing flag is 0
  bool isListed(int iser, int iun) const;  // offered in pick lists
  std::string seriesName(int iser) const;                  // "" for a bad iser
  int findSeries(std::string_view name) const;             // -1 when none
  int guessSeries(std::string_view unitName) const;        // -1 when none
  // The first series that holds both units; -1 when none does.
  int guessSeries(std::string_view unitA, std::string_view unitB) const;
  int findUnit(int iser, std::string_view unitName) const; // below 1 when none
  // A unit as people type it: its name, then its other name, each first in the
  // exact letter case, then ignoring case (so "mPa" finds millipascal where the
  // series has it, "MPA" megapascal). For the command line and entry fields;
  // findUnit above compares names only.
  TypedUnit findTypedUnit(int iser, std::string_view typed) const;
  // The first series that holds the typed unit, or both typed units; -1 when none.
  int guessSeriesTyped(std::string_view typed) const;
  int guessSeriesTyped(std::string_view typedA, std::string_view typedB) const;
  int unitId(int iser, int iun) const;                     // 0 when none
  std::string unitName(int iser, int iun) const;           // "" when none
  std::string unitOtherName(int iser, int iun) const;
  std::string unitDescription(int iser, int iun) const;     // "" when none
  // system 1..3: the default unit's position; 4: the series' dimension.
  // -32768 for an iser out of range.
  int defaultUnit(int iser, int system) const;
  std::vector<std::string> listedUnitNames(int iser) const;

  // Direct coefficients; err 0 on success, 1 out of range, -1 not linear.
  LinearConversion linearCoefficients(int iser, int from, int to, int& err) const;

  float convert(float value, int iser, int from, int to, int& err) const;
  double convert(double value, int iser, int from, int to, int& err) const;
  // Converts in place; err is that of the last failing element (0 when all succeed).
  void convert(float* values, std::size_t n, int iser, int from, int to, int& err) const;
  void convert(double* values, std::size_t n, int iser, int from, int to, int& err) const;
  // The same from `in` into `out` (which may be `in` itself), in one pass.
  void convert(const float* in, float* out, std::size_t n, int iser, int from, int to,
               int& err) const;

  // Converts between units given by name within a series; an empty name returns
  // the value unchanged. err is 1 when a name is not a unit of the series.
  double convertByName(double value, int iser, std::string_view from, std::string_view to, int& err) const;

  // The SQL script that creates and fills an equivalent relational schema, one
  // line per element, and the same written to a file.
  std::vector<std::string> sqlScript() const;
  Status writeSqlScript(const std::string& path) const;

  // Answer of defaultUnit() for a series out of range.
  static constexpr int kNoDimension = -32768;

  const std::vector<UnitDimension>& dimensions() const { return dimensions_; }
  const std::vector<UnitDefinition>& units() const { return units_; }
  const std::vector<UnitSeries>& series() const { return series_; }
  const std::vector<SeriesEntry>& entries() const { return entries_; }

 private:
  struct Plan;
  friend class DefinitionsReader;

  const SeriesEntry* entryOf(int iser, int iun) const;
  const UnitDefinition* unitOf(int iser, int iun) const;
  // How to convert from one position to another: resolved once, then applied to
  // any number of values.
  Plan plan(int iser, int from, int to) const;

  std::vector<UnitDimension> dimensions_;
  std::vector<UnitDefinition> units_;
  std::vector<UnitSeries> series_;     // index = iser
  std::vector<SeriesEntry> entries_;   // index = entry number - 1
  UnitNameIndex names_;                // every series' unit names, for lookups
};

// The process-wide registry. It stays empty, answering every query as for no
// series, until X_INIT (reloadUnitsRegistry) has read "deflib:x_units.def";
// a program calls X_INIT at start.
UnitsRegistry& unitsRegistry();

// Where the process-wide registry is read from.
inline constexpr const char* kUnitsDefinitionsFile = "deflib:x_units.def";

// (Re)loads the process-wide registry from kUnitsDefinitionsFile, showing the
// user a message when the file cannot be read.
Status reloadUnitsRegistry();

}  // namespace subsurf
