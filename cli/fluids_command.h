// `subsurf fluids`: the fluid-property calculator from the command line.
//
//   subsurf fluids [--set NAME=VALUE[:UNIT]]... [--units oilfield|metric|si]
//                  [--calc NAME] [--json]
//   subsurf fluids --batch IN.csv [--out OUT.csv] [--set ...] [--units ...]
//
// Given entries are typed in any unit of their series; everything else is
// calculated and the three forms are printed (or one CSV row per case).
#pragma once

#include <CLI/CLI.hpp>

namespace subsurf::cli {

// Adds the "fluids" subcommand; its outcome is written to exitCode when it runs.
void addFluidsCommand(CLI::App& app, int& exitCode);

}  // namespace subsurf::cli
