// `subsurf stats`: statistics of CSV columns (binned statistics).
#pragma once

#include <CLI/CLI.hpp>

namespace subsurf::cli {

void addStatsCommand(CLI::App& app, int& exitCode);

}  // namespace subsurf::cli
