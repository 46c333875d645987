// slabber rows: giving one photograph of a session its row rectangles from the
// command line, for scripts and for boxes another program found.
//
//   slabber rows SESSION --image K --set x,y,w,h [--set ...]
//   slabber rows SESSION --image K --from BOXES.json|BOXES.csv
//   slabber rows SESSION --image K --row R --corners x1,y1,x2,y2,x3,y3,x4,y4
//   slabber rows SESSION --image K --row R --square
//
// --corners makes one row free-cornered (a row of a tray photographed at an
// angle, which the split straightens); --square makes it an upright
// rectangle again.
//
// Boxes are in pixels of the upright photograph. Exit status 0 when saved, 2
// for bad arguments, boxes off the photo and unreadable files (the session
// file on disk is then left as it was).
#pragma once

#include <CLI/CLI.hpp>

namespace subsurf::cli {

void addRowsCommand(CLI::App& app, int& exitCode);

}  // namespace subsurf::cli
