// `subsurf plot`: cross-plots from CSV files, plot files, and drawing them.
#pragma once

#include <CLI/CLI.hpp>

namespace subsurf::cli {

void addPlotCommand(CLI::App& app, int& exitCode);

}  // namespace subsurf::cli
