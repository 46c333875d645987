#include "units_command.h"

#include <fmt/format.h>

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
    iser = reg.guessSeries(o.from, o.to);
    if (iser < 0) iser = reg.guessSeries(o.from);
    if (iser < 0) iser = reg.guessSeries(o.to);
    if (iser < 0) {
      host::showMessage(fmt::format("Unknown units \"{}\" and \"{}\": no series holds either", o.from, o.to));
      return kExitBadInput;
    }
  }
  const int from = reg.findUnit(iser, o.from);
  const int to = reg.findUnit(iser, o.to);
  for (const auto& [iun, name] : {std::pair{from, o.from}, std::pair{to, o.to}}) {
    if (iun < 1) {
      reportUnknownUnit(reg, iser, name);
      return kExitBadInput;
    }
  }

  int err = 0;
  const double result = reg.convert(value, iser, from, to, err);
  if (err != 0) {
    host::showMessage(fmt::format("Cannot convert {} {} to {}{}", o.value, o.from, o.to,
                                  err == -1 ? ": the reciprocal of zero" : ""));
    return kExitBadInput;
  }
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

  CLI::App* sql = units->add_subcommand("sql", "Write the SQL script that creates and fills a units database");
  sql->add_option("file", options->file, "Where to write it (default: tempdir:sql/create_units.sql)");
  sql->callback([options, &exitCode] { exitCode = runSql(*options); });
}

}  // namespace subsurf::cli
