// The named entries of the fluid-correlation tool and the table that holds them.
//
// The tool shows three forms: "Reservoir conditions", "Oil properties" and
// "Gas properties", plus the z-factor entry "zfact". Each entry holds one
// single-precision value in the unit the user sees it in (its stored unit),
// and a state:
//   0  nothing typed (the value may still be a default, such as no impurities);
//   1  typed by the user: calculations never overwrite it;
//   2  calculated: the next calculation overwrites it.
// Calculations read and write entries in the fixed units of the correlations;
// the table converts between those and each entry's stored unit.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "host/nulls.h"
#include "host/status.h"

namespace subsurf::fluids {

enum class Entry : int {
  // Reservoir conditions
  Dres, Tres, Pres, Tsc, Psc,
  // Oil properties
  Oden, Sgden, Solgor, Pbubble, Bo, Oviscd, Oviscdt, Ovisc, Ocomp,
  // Gas properties
  Gden, N2, Co2, H2s, Bg, Gdenres, Gvisc, Ghi,
  // The z-factor, kept beside the gas form.
  Zfact,
};

inline constexpr std::size_t kEntryCount = static_cast<std::size_t>(Entry::Zfact) + 1;
inline constexpr std::size_t kEntryNameWidth = 20;
inline constexpr std::size_t kUnitNameWidth = 16;

inline constexpr int kStateEmpty = 0;
inline constexpr int kStateTyped = 1;
inline constexpr int kStateCalculated = 2;

enum class Form : int { Reservoir, Oil, Gas };

struct EntryInfo {
  Entry entry;
  const char* name;         // the key, as typed by users ("dres")
  const char* description;  // a short label for the forms
  Form form;
  const char* series;       // the unit series its values belong to
  const char* fixedUnit;    // the unit calculations store it in
};

const EntryInfo& entryInfo(Entry e);
const std::array<EntryInfo, kEntryCount>& allEntries();
// Case-insensitive, blanks around the name ignored.
std::optional<Entry> findEntry(std::string_view name);
const char* formTitle(Form form);

// One entry as read in a given unit.
struct EntryReading {
  float value = kRealNull;
  int state = kStateEmpty;
  bool missing = true;
  // Due for calculation: missing, or calculated earlier.
  bool due() const { return missing || state > kStateTyped; }
};

// A unit within an entry's series: position from 1, 0 for "as stored", -1 for
// a unit the registry does not have (reads as missing, writes nothing).
struct EntryUnit {
  int iser = -1;
  int iun = 0;
};

class FluidTable {
 public:
  // Creates every entry, stored in the default units of the unit system
  // (1 oilfield, 2 metric, 3 SI): all empty, except no impurities (0, state
  // 0) and standard conditions of 60 degF and 14.7 psia, held as calculated
  // so that calculate-all keeps them at the standard until the user types
  // others.
  void create(int unitSystem = 1);
  // Drops the table; reads then find every entry missing.
  void destroy();
  bool exists() const { return exists_; }

  // Reads an entry converted into a unit (resolved with unitOf).
  EntryReading get(Entry e, EntryUnit unit) const;
  // Stores a value given in a unit, converting it into the stored unit.
  void set(Entry e, EntryUnit unit, float value, int state);

  // The same by names. A blank unit name means the stored unit. An unknown
  // entry, or a unit that is not of the entry's series, reads as missing;
  // set() then refuses with a message naming them.
  EntryReading get(std::string_view name, std::string_view unit) const;
  Status set(std::string_view name, std::string_view unit, float value, int state);

  // Resolves a unit name within an entry's series; nullopt when it is not one.
  // A blank name gives the stored unit.
  std::optional<EntryUnit> unitOf(Entry e, std::string_view unitName) const;

  // The stored unit and its name.
  EntryUnit storedUnit(Entry e) const { return {records_[index(e)].iser, records_[index(e)].iun}; }
  std::string storedUnitName(Entry e) const;
  // Changes the stored unit, converting the value held.
  Status setStoredUnit(Entry e, std::string_view unitName);

  // Units the calculations use, resolved once when the table is created: the
  // entry's fixed unit, and degrees Rankine for the temperature entries.
  EntryUnit fixedUnit(Entry e) const { return fixed_[index(e)]; }
  EntryUnit rankine() const { return rankine_; }

  // The raw record, as stored.
  float storedValue(Entry e) const { return records_[index(e)].value; }
  int state(Entry e) const { return records_[index(e)].state; }
  // Replaces the raw record (value in the stored unit).
  void setStored(Entry e, float value, int state) {
    records_[index(e)].value = value;
    records_[index(e)].state = state;
  }

  // Converts a value between two units of a series through the registry;
  // null when the registry cannot convert it.
  static float convert(float value, int iser, int from, int to);

 private:
  struct Record {
    float value = kRealNull;
    int state = kStateEmpty;
    int iser = -1;   // -1: the registry has no series for it
    int iun = 0;
    // The stored unit's name in lower case, as a fixed field so that a table
    // is a plain block of memory, cheap to copy for each case of a batch.
    char unit[kUnitNameWidth + 1] = {};
  };
  static std::size_t index(Entry e) { return static_cast<std::size_t>(e); }

  std::array<Record, kEntryCount> records_{};
  std::array<EntryUnit, kEntryCount> fixed_{};
  EntryUnit rankine_{};
  bool exists_ = false;
};

// The tool's table: one for the process, living from the tool's start to its close.
FluidTable& fluidTable();

}  // namespace subsurf::fluids
