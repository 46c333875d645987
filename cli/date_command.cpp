#include "date_command.h"

#include <fmt/format.h>

#include <cmath>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "cli_support.h"
#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/number_text.h"
#include "host/settings.h"
#include "units/date_time.h"

namespace subsurf::cli {
namespace {

struct DateOptions {
  std::string input;
  std::string mask;
  std::string to;
  std::string unit = "days";
  std::optional<double> add;
  std::optional<int> roundDown, roundUp;
  bool parse = false;
  bool json = false;
};

std::string defaultMask() {
  std::string mask = trimBlanks(setting("datefmt").value_or(""));
  return mask.empty() ? kDefaultDateMask : mask;
}

// Seconds as a user reads them: whole seconds without a fraction, else to the millisecond.
std::string secondsText(double v) {
  if (v == std::floor(v)) return fmt::format("{:.0f}", v);
  std::string s = fmt::format("{:.3f}", v);
  while (s.back() == '0') s.pop_back();
  return s;
}

int runDate(const DateOptions& opt) {
  const std::string mask = opt.mask.empty() ? defaultMask() : opt.mask;
  double value = 0.0;
  const bool givenAsSeconds = !opt.parse && parseReal(opt.input, value);
  if (!givenAsSeconds) {
    int errors = 0;
    value = parseDate(opt.input, mask, errors);
    if (errors > 0) {
      host::showMessage(fmt::format("Cannot read \"{}\" as a date under the mask \"{}\"", opt.input, mask));
      return kExitBadInput;
    }
  }
  if (!(std::fabs(value) <= kLargestDateValue)) {
    host::showMessage(fmt::format("{} is beyond the range of dates", opt.input));
    return kExitBadInput;
  }
  const int unitCode = dateUnitByName(opt.unit);
  if (unitCode == 0) {
    host::showMessage(fmt::format(
        "Unknown unit \"{}\"; the units are years, months, weeks, days, hours, minutes, seconds", opt.unit));
    return kExitBadInput;
  }
  const DateUnit unit = static_cast<DateUnit>(unitCode);
  if (opt.add) value = addDateSteps(value, unit, *opt.add);
  for (const auto& [step, up] : {std::pair{opt.roundDown, false}, std::pair{opt.roundUp, true}}) {
    if (!step) continue;
    if (*step < 1) {
      host::showMessage(fmt::format("The rounding step must be 1 or more, not {}", *step));
      return kExitBadInput;
    }
    value = up ? roundDateUp(value, unit, *step) : roundDateDown(value, unit, *step);
  }

  const std::string text = formatDate(value, mask);
  if (opt.json) {
    const BrokenDate d = brokenDate(value);
    nlohmann::ordered_json parts{{"year", d.year},     {"month", d.month},   {"day", d.day},
                                 {"hour", d.hour},     {"minute", d.minute}, {"second", d.second},
                                 {"millisecond", d.millisecond}};
    nlohmann::ordered_json out{{"seconds", value}, {"text", text}, {"mask", mask}, {"date", parts}};
    std::cout << out.dump(2) << "\n";
    return kExitOk;
  }
  const bool showText = opt.to.empty() ? givenAsSeconds : opt.to == "text";
  std::cout << (showText ? text : secondsText(value)) << "\n";
  return kExitOk;
}

}  // namespace

void addDateCommand(CLI::App& app, int& exitCode) {
  auto opt = std::make_shared<DateOptions>();
  CLI::App* cmd = app.add_subcommand(
      "date", "Dates: text to seconds since 1846-07-30 00:00 and back, under a mask; add and round");
  cmd->add_option("date", opt->input, "A date text (e.g. \"01 Jan 1970\") or a seconds value")->required();
  cmd->add_option("--mask", opt->mask, "Mask, e.g. \"dd mon yyyy hr:min\" (default: the datefmt setting)");
  cmd->add_option("--to", opt->to, "Form printed (default: the other form than given)")
      ->check(CLI::IsMember({"text", "seconds"}));
  cmd->add_option("--add", opt->add, "Add this many units (may be fractional or negative)");
  cmd->add_option("--round-down", opt->roundDown, "Round down to a multiple of this many units");
  cmd->add_option("--round-up", opt->roundUp, "Round up to a multiple of this many units");
  cmd->add_option("--unit", opt->unit, "Unit of --add and rounding: years, months, weeks, days, hours, minutes, seconds")
      ->default_str("days");
  cmd->add_flag("--parse", opt->parse, "Read the date as text even when it is a plain number");
  cmd->add_flag("--json", opt->json, "Print seconds, text, mask and the date's parts as JSON");
  cmd->callback([opt, &exitCode]() { exitCode = runDate(*opt); });
}

}  // namespace subsurf::cli
