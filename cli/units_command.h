// `subsurf units`: the units registry from the command line.
//
//   subsurf units list [SERIES]                      the series, or one series' units
//   subsurf units convert VALUE FROM TO [--series S] the value in another unit
//   subsurf units search TEXT                        units whose names or description hold TEXT
//   subsurf units sql [FILE]                         write the registry's SQL script
//
// Exit status 0 when done, 2 for an unknown series or unit, a bad number or a
// file that cannot be written.
#pragma once

#include <CLI/CLI.hpp>

namespace subsurf::cli {

// Adds the "units" subcommand; its outcome is written to exitCode when it runs.
void addUnitsCommand(CLI::App& app, int& exitCode);

}  // namespace subsurf::cli
