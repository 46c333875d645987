#include "units_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cli_support.h"
#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/number_text.h"
#include "host/paths.h"
#include "units/units_registry.h"

namespace subsurf::cli {
namespace {

struct UnitsOptions {
  std::string series;  // list: optional series; convert: --series
  std::string value, from, to;
  std::string file;
  std::string text;    // search
};

// A unit name as shown to a user: the blank unit of plain numbers is quoted.
std::string shownUnit(const std::string& name) { return name.empty() ? "\" \"" : name; }

// Series by name (any letter case) or by number.
int seriesArgument(const UnitsRegistry& reg, const std::string& text) {
  int number = 0;
  if (parseInteger(text, number)) return reg.validSeries(number) ? number : -1;
  return reg.findSeries(text);
}

void reportUnknownSeries(const UnitsRegistry& reg, const std::string& name) {
  std::string names;
  for (int iser = 0; iser <= reg.lastSeries(); ++iser) {
    if (!names.empty()) names += ", ";
    names += reg.seriesName(iser);
  }
  host::showMessage(fmt::format("Unknown series \"{}\"; the series are: {}", name, names));
}

void reportUnknownUnit(const UnitsRegistry& reg, int iser, const std::string& unit) {
  std::string names;
  for (int iun = 1; iun <= reg.unitCount(iser); ++iun) {
    if (!names.empty()) names += ", ";
    names += shownUnit(reg.unitName(iser, iun));
  }
  host::showMessage(fmt::format("Unknown unit \"{}\" in series \"{}\"; admissible units: {}", unit,
                                reg.seriesName(iser), names));
}

// A unit typed other than by its exact name (another name, or other letter
// case) is said by its name, so that megapascal is never taken for millipascal
// unseen.
void reportUnitTaken(const UnitsRegistry& reg, int iser, const TypedUnit& unit, const std::string& typed) {
  const std::string name = reg.unitName(iser, unit.iun);
  if (unit.by == TypedUnit::By::Name && unit.exactCase) return;
  const std::string description = reg.unitDescription(iser, unit.iun);
  host::showMessage(fmt::format("\"{}\" taken as {}{} in series \"{}\"", typed, shownUnit(name),
                                description.empty() ? "" : " (" + description + ")", reg.seriesName(iser)));
}

// Gas measured in standard cubic feet (60 degF, 14.696 psia) against a metric
// volume (15 degC, 101.325 kPa): the conversion is of plain volumes, and the
// user is told so, with the size of the difference.
void noteGasConvention(const UnitsRegistry& reg, int iser, int from, int to) {
  auto description = [&](int iun) {
    return lowerCase(reg.unitDescription(iser, iun));
  };
  auto standardFeet = [](const std::string& d) { return d.find("standard cubic f") != std::string::npos; };
  auto metric = [](const std::string& d) {
    return d.find("metre") != std::string::npos || d.find("litre") != std::string::npos;
  };
  const std::string a = description(from), b = description(to);
  if ((standardFeet(a) && metric(b)) || (standardFeet(b) && metric(a)))
    host::showMessage(
        "gas volumes converted as plain volumes (1 scf = 0.0283168 m3); between 60 degF and 14.696 psia and 15 degC "
        "and 101.325 kPa the same gas differs by 0.19% (docs/units.md)");
}

int listSeries(const UnitsRegistry& reg) {
  for (int iser = 0; iser <= reg.lastSeries(); ++iser) {
    const int n = reg.unitCount(iser);
    std::printf("%3d  %-20s %d unit%s\n", iser, reg.seriesName(iser).c_str(), n, n == 1 ? "" : "s");
  }
  return kExitOk;
}

// One series' units in display order; the defaults of the three unit systems are
// marked, and units hidden from pick lists are said to be.
int listUnits(const UnitsRegistry& reg, int iser) {
  std::printf("%s\n", reg.seriesName(iser).c_str());
  const int oilfield = reg.defaultUnit(iser, static_cast<int>(UnitSystem::Oilfield));
  const int metric = reg.defaultUnit(iser, static_cast<int>(UnitSystem::Metric));
  const int si = reg.defaultUnit(iser, static_cast<int>(UnitSystem::SI));
  for (int iun = 1; iun <= reg.unitCount(iser); ++iun) {
    const std::string name = reg.unitName(iser, iun);
    std::vector<std::string> marks;
    if (iun == oilfield) marks.push_back("oilfield");
    if (iun == metric) marks.push_back("metric");
    if (iun == si) marks.push_back("SI");
    std::string line = fmt::format("  {:<16}", shownUnit(name));
    if (!marks.empty()) line += fmt::format(" default: {}", fmt::join(marks, ", "));
    if (!reg.isListed(iser, iun)) line += " (hidden)";
    while (!line.empty() && line.back() == ' ') line.pop_back();
    std::printf("%s\n", line.c_str());
  }
  return kExitOk;
}

int runList(const UnitsOptions& o) {
  const UnitsRegistry& reg = unitsRegistry();
  if (!reg.loaded()) return kExitBadInput;  // the load has told the user why
  if (o.series.empty()) return listSeries(reg);
  const int iser = seriesArgument(reg, o.series);
  if (iser < 0) {
    reportUnknownSeries(reg, o.series);
    return kExitBadInput;
  }
  return listUnits(reg, iser);
}

int runConvert(const UnitsOptions& o) {
  const UnitsRegistry& reg = unitsRegistry();
  if (!reg.loaded()) return kExitBadInput;
  double value = 0.0;
  if (!parseReal(o.value, value) || !std::isfinite(value)) {
    host::showMessage(fmt::format("\"{}\" is not a number", o.value));
    return kExitBadInput;
  }

  int iser = -1;
  if (!o.series.empty()) {
    iser = seriesArgument(reg, o.series);
    if (iser < 0) {
      reportUnknownSeries(reg, o.series);
      return kExitBadInput;
    }
  } else {
    // A unit name can sit in several series ("m" is a depth and a length): the
    // first series holding both units is the one meant.
    iser = reg.guessSeriesTyped(o.from, o.to);
    if (iser < 0) iser = reg.guessSeriesTyped(o.from);
    if (iser < 0) iser = reg.guessSeriesTyped(o.to);
    if (iser < 0) {
      host::showMessage(fmt::format("Unknown units \"{}\" and \"{}\": no series holds either", o.from, o.to));
      return kExitBadInput;
    }
  }
  const TypedUnit from = reg.findTypedUnit(iser, o.from);
  const TypedUnit to = reg.findTypedUnit(iser, o.to);
  for (const auto& [unit, name] : {std::pair{from, o.from}, std::pair{to, o.to}}) {
    if (unit.iun < 1) {
      reportUnknownUnit(reg, iser, name);
      return kExitBadInput;
    }
  }
  for (const auto& [unit, name] : {std::pair{from, o.from}, std::pair{to, o.to}}) reportUnitTaken(reg, iser, unit, name);

  int err = 0;
  const double result = reg.convert(value, iser, from.iun, to.iun, err);
  if (err != 0) {
    host::showMessage(fmt::format("Cannot convert {} {} to {}{}", o.value, o.from, o.to,
                                  err == -1 ? ": the reciprocal of zero" : ""));
    return kExitBadInput;
  }
  noteGasConvention(reg, iser, from.iun, to.iun);
  std::printf("%s\n", formatCompact(result).c_str());
  return kExitOk;
}

// The arguments set aside by the parser: one negative value, which goes before
// the two units that took its place. Anything else is a usage error.
bool takeBackNegativeValue(const std::vector<std::string>& setAside, UnitsOptions& o) {
  if (setAside.size() == 1 && setAside[0].size() > 1 && setAside[0][0] == '-' && o.to.empty()) {
    o.to = std::move(o.from);
    o.from = std::move(o.value);
    o.value = setAside[0];
  } else if (!setAside.empty()) {
    host::showMessage(fmt::format("Unexpected arguments: {}", fmt::join(setAside, " ")));
    return false;
  }
  if (o.value.empty() || o.from.empty() || o.to.empty()) {
    host::showMessage("units convert needs a value, its unit and the unit wanted: units convert VALUE FROM TO");
    return false;
  }
  return true;
}

// Units whose name, other name or description holds the text (any letter
// case), one line each with the series that hold them, in series order.
int runSearch(const UnitsOptions& o) {
  const UnitsRegistry& reg = unitsRegistry();
  if (!reg.loaded()) return kExitBadInput;
  const std::string needle = lowerCase(trimBlanks(o.text));
  std::vector<int> found;                        // unit ids, first seen first
  std::vector<std::vector<std::string>> seriesOf(reg.units().size() + 1);
  for (int iser = 0; iser <= reg.lastSeries(); ++iser) {
    for (int iun = 1; iun <= reg.unitCount(iser); ++iun) {
      const int id = reg.unitId(iser, iun);
      if (id < 1 || id > static_cast<int>(reg.units().size())) continue;
      const UnitDefinition& u = reg.units()[static_cast<std::size_t>(id - 1)];
      if (u.nc == 0) continue;
      bool matches = false;
      for (const std::string* field : {&u.name, &u.otherName, &u.description})
        matches = matches || lowerCase(*field).find(needle) != std::string::npos;
      if (!matches) continue;
      auto& series = seriesOf[static_cast<std::size_t>(id)];
      if (series.empty()) found.push_back(id);
      if (std::find(series.begin(), series.end(), reg.seriesName(iser)) == series.end())
        series.push_back(reg.seriesName(iser));
    }
  }
  if (needle.empty() || found.empty()) {
    host::showMessage(fmt::format("No unit matches \"{}\"", o.text));
    return kExitBadInput;
  }
  for (int id : found) {
    const UnitDefinition& u = reg.units()[static_cast<std::size_t>(id - 1)];
    std::printf("%s\n", fmt::format("{:<16} {:<16} {:<44} [{}]", shownUnit(u.name), u.otherName, u.description,
                                    fmt::join(seriesOf[static_cast<std::size_t>(id)], ", "))
                            .c_str());
  }
  return kExitOk;
}

int runSql(const UnitsOptions& o) {
  const UnitsRegistry& reg = unitsRegistry();
  if (!reg.loaded()) return kExitBadInput;
  const std::string path = o.file.empty() ? makeFileName("tempdir:sql", "create_units", "sql") : o.file;
  const Status status = reg.writeSqlScript(path);
  if (!status) {
    host::showMessage(status.message());
    return kExitBadInput;
  }
  std::printf("SQL script written to %s\n", path.c_str());
  return kExitOk;
}

}  // namespace

void addUnitsCommand(CLI::App& app, int& exitCode) {
  auto options = std::make_shared<UnitsOptions>();
  CLI::App* units = app.add_subcommand("units", "Units registry: series, units and conversions");
  units->require_subcommand(1);

  CLI::App* list = units->add_subcommand("list", "List the series, or the units of one series");
  list->add_option("series", options->series, "Series name or number");
  list->callback([options, &exitCode] { exitCode = runList(*options); });

  CLI::App* convert = units->add_subcommand("convert", "Convert a value from one unit to another");
  convert->add_option("value", options->value, "The value (a negative one may be written -5 or -inf)");
  convert->add_option("from", options->from, "Its unit");
  convert->add_option("to", options->to, "The unit wanted");
  convert->add_option("--series", options->series, "Series of the units (guessed from the units when left out)");
  // A value such as "-inf" or "-.5" looks like a cluster of short options to the
  // parser, which sets it aside; it is taken back as the value here.
  convert->allow_extras();
  convert->callback([convert, options, &exitCode] {
    if (!takeBackNegativeValue(convert->remaining(), *options)) {
      exitCode = kExitBadInput;
      return;
    }
    exitCode = runConvert(*options);
  });

  CLI::App* search = units->add_subcommand(
      "search", "List the units whose name, other name or description holds TEXT, with their series");
  search->add_option("text", options->text, "What to look for (letter case is ignored)")->required();
  search->callback([options, &exitCode] { exitCode = runSearch(*options); });

  CLI::App* sql = units->add_subcommand("sql", "Write the SQL script that creates and fills a units database");
  sql->add_option("file", options->file, "Where to write it (default: tempdir:sql/create_units.sql)");
  sql->callback([options, &exitCode] { exitCode = runSql(*options); });
}

}  // namespace subsurf::cli
