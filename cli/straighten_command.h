// slabber straighten: maps a tray photographed at an angle onto an upright
// rectangle, writes the straight copy beside the photograph and points the
// session's image at it (see core/tray_straightening.h).
//
//   slabber straighten SESSION --image N --corners x1,y1,x2,y2,x3,y3,x4,y4
//   slabber straighten SESSION [--image N]
//
// Without --corners the tray's corners are found in the photograph (see
// core/tray_corners.h); a photograph whose corners are unsure is named,
// "check the tray corners of <photo> (confidence ...: why)", is left as it
// was, and the exit status is 1.
#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace subsurf {
class CoreSession;
struct CoreImage;
}  // namespace subsurf

namespace subsurf::cli {

void addStraightenCommand(CLI::App& app, int& exitCode);

// Finds the tray's corners in the image's photograph (its original when it
// was straightened before) and, when sure, straightens it, printing one
// line (`place` is the image's place in the session). Returns "" when done,
// else the line "check the tray corners of <photo> (...)" for a person.
std::string straightenByCornersFound(CoreSession& session, CoreImage& image, int place);

}  // namespace subsurf::cli
