// subsurf: command-line access to the units registry, fluid properties, dates, questionnaires and plots.
#include <CLI/CLI.hpp>

#include "cli_support.h"
#include "subsurf/units.h"

#include "units_command.h"
#include "fluids_command.h"
#include "date_command.h"
#include "quiz_command.h"
#include "plot_command.h"
#include "stats_command.h"

int main(int argc, char** argv) {
  subsurf::cli::installTerminalHost("subsurf");
  X_INIT();  // the units registry, before any command asks it
  CLI::App app{"subsurf: subsurface engineering tools (units, fluid properties, dates, questionnaires, plots)"};
  app.require_subcommand(1);
  int exitCode = subsurf::cli::kExitOk;
  subsurf::cli::addUnitsCommand(app, exitCode);
  subsurf::cli::addFluidsCommand(app, exitCode);
  subsurf::cli::addDateCommand(app, exitCode);
  subsurf::cli::addQuizCommand(app, exitCode);
  subsurf::cli::addPlotCommand(app, exitCode);
  subsurf::cli::addStatsCommand(app, exitCode);
  return subsurf::cli::runApp(app, argc, argv, exitCode);
}
