// subsurf: command-line access to the units registry and the fluid-property calculator.
#include <CLI/CLI.hpp>

#include "cli_support.h"

#include "units_command.h"
#include "fluids_command.h"
#include "plot_command.h"

int main(int argc, char** argv) {
  subsurf::cli::installTerminalHost("subsurf");
  CLI::App app{"subsurf: subsurface engineering tools (units, fluid properties, plots)"};
  app.require_subcommand(1);
  int exitCode = subsurf::cli::kExitOk;
  subsurf::cli::addUnitsCommand(app, exitCode);
  subsurf::cli::addFluidsCommand(app, exitCode);
  subsurf::cli::addPlotCommand(app, exitCode);
  return subsurf::cli::runApp(app, argc, argv, exitCode);
}
