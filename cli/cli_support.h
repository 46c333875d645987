// Shared pieces of the command-line programs.
#pragma once

#include <CLI/CLI.hpp>

namespace subsurf::cli {

// Exit statuses of the programs.
inline constexpr int kExitOk = 0;
inline constexpr int kExitPartial = 1;     // the job ran but some of it failed
inline constexpr int kExitBadInput = 2;    // bad arguments, unreadable or impossible input

// Messages from the library go to standard error with the program's name in front.
void installTerminalHost(const char* programName);

// Parses the command line and runs the chosen subcommand. Returns the exit status:
// the subcommand's own (exitCode), 0 for --help, kExitBadInput for bad arguments
// and for any exception a command lets escape (printed after the program's name).
int runApp(CLI::App& app, int argc, char** argv, const int& exitCode);

}  // namespace subsurf::cli
