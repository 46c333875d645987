// slabber split and slabber preview: cutting a session's photographs into row
// images, and drawing layout previews to check the rectangles first.
#pragma once

#include <CLI/CLI.hpp>

namespace subsurf::cli {

// Adds "split" and "preview" to the program; exitCode receives the outcome
// of whichever runs (kExitOk, kExitPartial, kExitBadInput).
void addSplitCommands(CLI::App& app, int& exitCode);

}  // namespace subsurf::cli
