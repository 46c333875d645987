// `subsurf date`: dates as text and as seconds since 1846-07-30 00:00.
//
//   subsurf date TEXT [--mask M]          the seconds value of a date written under the mask
//   subsurf date SECONDS [--mask M]       the date of a seconds value, written under the mask
//   --add N --unit U                      add N (may be fractional) years, months, weeks,
//                                         days, hours, minutes or seconds first
//   --round-down N / --round-up N         then round to a multiple of N units
//   --to text|seconds                     choose the form printed (the other form by default)
//   --parse                               read a plain number as a date text (e.g. "2000" under "yyyy")
//   --json                                print seconds, text, mask and the date's parts as JSON
//
// The mask defaults to the "datefmt" setting, else "dd.mon.yy hr:min".
// Exit status 0 when done, 2 for a text that is not a date under the mask or a bad option.
#pragma once

#include <CLI/CLI.hpp>

namespace subsurf::cli {

void addDateCommand(CLI::App& app, int& exitCode);

}  // namespace subsurf::cli
