// slabber edit: the session editor in the browser.
//
//   slabber edit SESSION [--port N] [--open]
//
// Serves the editor page on 127.0.0.1 until interrupted (Ctrl-C) and prints
// its address, which holds the token every request must carry.
#pragma once

#include <CLI/CLI.hpp>

namespace subsurf::cli {

void addEditCommand(CLI::App& app, int& exitCode);

}  // namespace subsurf::cli
