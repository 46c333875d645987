// slabber session commands: making, showing and editing session files, and
// the library of rectangle templates.
//
//   slabber new SESSION PHOTO... [--template NAME | --rows N | --detect-rows] [--depths-from-names]
//                                [--top T --base B] [--cores N] [--uv] [--force]
//   slabber show SESSION [--rows]
//   slabber depths SESSION --from K --top T --base B [--cores N]
//   slabber templates list
//   slabber templates show NAME
//   slabber templates save NAME --from SESSION --image K [--description TEXT]
//
// Exit status 0 when done, 1 when a session was written but some photographs
// were left without depths, 2 for bad arguments, unreadable files and
// impossible depths (the session file on disk is then left as it was).
#pragma once

#include <CLI/CLI.hpp>

namespace subsurf::cli {

// Adds "new", "show", "depths" and "templates"; exitCode receives the outcome
// of whichever runs.
void addSessionCommands(CLI::App& app, int& exitCode);

}  // namespace subsurf::cli
