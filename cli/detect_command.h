// slabber detect: finds the core rows of a session's photographs and lays one
// rectangle per row on each, in reading order (top row first; left to right
// when the rows run down the photograph).
//
//   slabber detect SESSION [--image N] [--cores N] [--jobs N]
//
// Photographs the finder is unsure of are listed as "check the rows of
// <photo>" and the exit status is then 1; the session is saved either way
// (whole or not at all). `slabber new ... --detect-rows` does the same for a
// new session.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "core/photo_row_finding.h"

namespace subsurf::cli {

void addDetectCommand(CLI::App& app, int& exitCode);

// Prints one line per photograph and "check the rows of ..." for each unsure
// one; returns how many photographs need checking (or could not be read).
int printDetections(const std::vector<PhotoRows>& results);

}  // namespace subsurf::cli
