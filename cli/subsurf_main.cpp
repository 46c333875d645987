// subsurf: command-line access to the units registry and the fluid-property calculator.
#include <CLI/CLI.hpp>

#include "cli_support.h"

#if __has_include("units_command.h")
#include "units_command.h"
#define SUBSURF_HAVE_UNITS_COMMAND 1
#endif
#if __has_include("fluids_command.h")
#include "fluids_command.h"
#define SUBSURF_HAVE_FLUIDS_COMMAND 1
#endif

int main(int argc, char** argv) {
  subsurf::cli::installTerminalHost("subsurf");
  CLI::App app{"subsurf: subsurface engineering tools (units, fluid properties)"};
  app.require_subcommand(1);
  int exitCode = subsurf::cli::kExitOk;
#ifdef SUBSURF_HAVE_UNITS_COMMAND
  subsurf::cli::addUnitsCommand(app, exitCode);
#endif
#ifdef SUBSURF_HAVE_FLUIDS_COMMAND
  subsurf::cli::addFluidsCommand(app, exitCode);
#endif
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    const int rc = app.exit(e);
    return rc == 0 ? 0 : subsurf::cli::kExitBadInput;
  }
  return exitCode;
}
