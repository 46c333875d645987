#include "fluids_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli_support.h"
#include "fluids_batch_command.h"
#include "fluids/calculate_all.h"
#include "fluids/fluid_batch.h"
#include "fluids/fluid_entries.h"
#include "host/fixed_text.h"
#include "host/nulls.h"

namespace subsurf::cli {
namespace {

using fluids::Entry;
using fluids::EntryUnit;
using fluids::FluidTable;

struct FluidsOptions {
  std::vector<std::string> sets;
  std::string units = "oilfield";
  std::string calc;
  std::string batch;
  std::string out;
  bool json = false;
};

int unitSystemOf(const std::string& name) {
  if (name == "metric") return 2;
  if (name == "si") return 3;
  return 1;
}

// Compact number text; single-precision values keep six significant digits.
std::string numberText(float v) {
  if (isNull(v)) return "";
  return fmt::format("{:g}", v);
}

// One value to type into an entry, as given on the command line or in a cell.
struct GivenValue {
  Entry entry;
  EntryUnit unit;
  float value;
};

// Parses NAME=VALUE[:UNIT]; an error message on failure.
std::optional<GivenValue> parseSet(const FluidTable& table, const std::string& arg,
                                   std::string& error) {
  const auto eq = arg.find('=');
  if (eq == std::string::npos) {
    error = fmt::format("--set \"{}\": expected NAME=VALUE[:UNIT]", arg);
    return std::nullopt;
  }
  const std::string name = trimBlanks(arg.substr(0, eq));
  std::string valueText = arg.substr(eq + 1);
  std::string unitText;
  if (const auto colon = valueText.find(':'); colon != std::string::npos) {
    unitText = trimBlanks(valueText.substr(colon + 1));
    valueText = valueText.substr(0, colon);
  }
  const auto entry = fluids::findEntry(name);
  if (!entry) {
    error = fmt::format("Unknown entry \"{}\"", name);
    return std::nullopt;
  }
  const auto value = readEntryNumber(valueText);
  if (!value) {
    error = fmt::format("Cannot read \"{}\" as a number for entry \"{}\"", trimBlanks(valueText),
                        name);
    return std::nullopt;
  }
  const auto unit = table.unitOf(*entry, unitText);
  if (!unit) {
    error = notAUnitMessage(*entry, unitText);
    return std::nullopt;
  }
  return GivenValue{*entry, *unit, *value};
}

const char* stateText(const FluidTable& table, Entry e) {
  switch (table.state(e)) {
    case fluids::kStateTyped: return "given";
    case fluids::kStateCalculated: return "calculated";
    default: return isNull(table.storedValue(e)) ? "" : "default";
  }
}

void printForms(const FluidTable& table, std::ostream& os) {
  for (fluids::Form form : {fluids::Form::Reservoir, fluids::Form::Oil, fluids::Form::Gas}) {
    os << fluids::formTitle(form) << "\n";
    os << fmt::format("  {:<9} {:<37} {:>12}  {:<9} {}\n", "entry", "description", "value", "unit",
                      "state");
    for (const fluids::EntryInfo& info : fluids::allEntries()) {
      if (info.form != form) continue;
      os << fmt::format("  {:<9} {:<37} {:>12}  {:<9} {}\n", info.name, info.description,
                        numberText(table.storedValue(info.entry)),
                        table.storedUnitName(info.entry), stateText(table, info.entry));
    }
    os << "\n";
  }
}

// A float as JSON: the shortest decimal that reads back as the same float.
nlohmann::ordered_json jsonNumber(float v) {
  if (isNull(v) || !std::isfinite(v)) return nullptr;
  return std::strtod(fmt::format("{}", v).c_str(), nullptr);
}

void printJson(const FluidTable& table, const std::string& units, std::ostream& os) {
  nlohmann::ordered_json forms = nlohmann::ordered_json::array();
  for (fluids::Form form : {fluids::Form::Reservoir, fluids::Form::Oil, fluids::Form::Gas}) {
    nlohmann::ordered_json entries = nlohmann::ordered_json::array();
    for (const fluids::EntryInfo& info : fluids::allEntries()) {
      if (info.form != form) continue;
      entries.push_back({{"name", info.name},
                         {"description", info.description},
                         {"value", jsonNumber(table.storedValue(info.entry))},
                         {"unit", table.storedUnitName(info.entry)},
                         {"state", stateText(table, info.entry)}});
    }
    forms.push_back({{"title", fluids::formTitle(form)}, {"entries", entries}});
  }
  // Unit names come from a definitions file and need not be valid UTF-8: a
  // byte that is not is written as U+FFFD rather than stopping the program.
  os << nlohmann::ordered_json{{"units", units}, {"forms", forms}}.dump(
            2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
     << "\n";
}

int runFluids(const FluidsOptions& opt) {
  FluidTable table;
  table.create(unitSystemOf(opt.units));

  bool bad = false;
  for (const std::string& arg : opt.sets) {
    std::string error;
    const auto given = parseSet(table, arg, error);
    if (!given) {
      std::cerr << "subsurf fluids: " << error << "\n";
      bad = true;
      continue;
    }
    table.set(given->entry, given->unit, given->value, fluids::kStateTyped);
  }
  std::optional<Entry> calcEntry;
  if (!opt.calc.empty()) {
    calcEntry = fluids::findEntry(opt.calc);
    if (!calcEntry) {
      std::cerr << fmt::format("subsurf fluids: Unknown entry \"{}\"\n", opt.calc);
      bad = true;
    }
  }
  if (bad) return kExitBadInput;

  if (!opt.batch.empty()) return runFluidsBatch(opt.batch, opt.out, table);

  int exitCode = kExitOk;
  if (calcEntry) {
    // The answer, if any, has already been shown to the user.
    if (!fluids::calculateEntry(table, *calcEntry).isOk()) exitCode = kExitPartial;
  } else {
    fluids::calculateAll(table);
  }
  if (opt.json) {
    printJson(table, opt.units, std::cout);
  } else {
    printForms(table, std::cout);
  }
  return exitCode;
}

}  // namespace

void addFluidsCommand(CLI::App& app, int& exitCode) {
  auto opt = std::make_shared<FluidsOptions>();
  CLI::App* cmd = app.add_subcommand(
      "fluids", "Fluid-property calculator: fill reservoir, oil and gas properties from a few given values");
  cmd->add_option("--set", opt->sets, "Give an entry: NAME=VALUE[:UNIT] (unit of the entry's series)")
      ->type_name("NAME=VALUE[:UNIT]");
  cmd->add_option("--units", opt->units, "Units the entries are shown in")
      ->check(CLI::IsMember({"oilfield", "metric", "si"}))
      ->default_str("oilfield");
  CLI::Option* calc = cmd->add_option("--calc", opt->calc, "Calculate this entry alone instead of all")
                          ->type_name("NAME");
  cmd->add_flag("--json", opt->json, "Print the forms as JSON");
  CLI::Option* batch =
      cmd->add_option("--batch", opt->batch, "CSV of cases: header of entry names, e.g. dres[m]")
          ->type_name("IN.csv")
          ->excludes(calc);
  cmd->add_option("--out", opt->out, "Where the batch results go (standard output by default)")
      ->type_name("OUT.csv")
      ->needs(batch);
  cmd->callback([opt, &exitCode]() { exitCode = runFluids(*opt); });
}

}  // namespace subsurf::cli
