// slabber: cut photographs of core trays into one image per core row.
#include <CLI/CLI.hpp>

#include "cli_support.h"
#include "subsurf/units.h"

#include "detect_command.h"
#include "edit_command.h"
#include "rows_command.h"
#include "session_command.h"
#include "split_command.h"
#include "straighten_command.h"

int main(int argc, char** argv) {
  subsurf::cli::installTerminalHost("slabber");
  X_INIT();  // the units registry, before any command asks it
  CLI::App app{
      "slabber: cut photographs of boxed core trays into one image per core row, named by depth,\n"
      "with a comma-separated table of clipping depths."};
  app.require_subcommand(1);
  int exitCode = subsurf::cli::kExitOk;
  subsurf::cli::addSessionCommands(app, exitCode);
  subsurf::cli::addSplitCommands(app, exitCode);
  subsurf::cli::addRowsCommand(app, exitCode);
  subsurf::cli::addEditCommand(app, exitCode);
  subsurf::cli::addDetectCommand(app, exitCode);
  subsurf::cli::addStraightenCommand(app, exitCode);
  return subsurf::cli::runApp(app, argc, argv, exitCode);
}
