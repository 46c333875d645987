// slabber rows: giving one photograph of a session its row rectangles from the
// command line, for scripts and for boxes another program found.
//
//   slabber rows SESSION --image K --set x,y,w,h [--set ...]
//   slabber rows SESSION --image K --from BOXES.json|BOXES.csv
//
// Boxes are in pixels of the upright photograph. Exit status 0 when saved, 2
// for bad arguments, boxes off the photo and unreadable files (the session
// file on disk is then left as it was).
#pragma once

#include <CLI/CLI.hpp>

namespace subsurf::cli {

void addRowsCommand(CLI::App& app, int& exitCode);

}  // namespace subsurf::cli
