#include "straighten_command.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "cli_support.h"
#include "core/core_session.h"
#include "core/session_files.h"
#include "core/split_naming.h"
#include "core/tray_straightening.h"
#include "host/messages.h"

namespace subsurf::cli {
namespace {

struct StraightenArgs {
  std::string session;
  int image = 0;
  std::string corners;
};

int fail(const std::string& text) {
  host::showMessage(text);
  return kExitBadInput;
}

std::string fileName(const std::string& path) { return path.substr(split::fileNameStart(path)); }

int runStraighten(const StraightenArgs& args) {
  TrayCorners corners;
  Status s = parseTrayCorners(args.corners, corners);
  if (!s) return fail(s.message());
  if (!std::filesystem::exists(args.session)) return fail(fmt::format("{}: no such session file", args.session));
  CoreSession session;
  SessionOptions options;
  if (!readSession(session, options, args.session)) return kExitBadInput;
  CoreImage* image = session.imageAt(args.image);
  if (!image)
    return fail(fmt::format("Image {} is not in {} (it holds {} image{})", args.image, args.session,
                            session.imageCount(), session.imageCount() == 1 ? "" : "s"));
  Straightened done;
  if (!straightenImage(session, *image, corners, done)) return kExitBadInput;  // shown
  if (!saveSession(session, options, args.session)) return kExitBadInput;
  const TrayOrigin origin = trayOrigin(*image);
  std::printf("%s: image %d straightened: %s (%d x %d pixels) from %s\n", args.session.c_str(), args.image,
              fileName(done.copy).c_str(), done.width, done.height, fileName(done.original).c_str());
  std::printf("  tray corners: %s\n", cornersText(origin.corners).c_str());
  if (done.rectanglesRemoved > 0)
    std::printf("  %d rectangle%s removed: lay the rows again on the straight tray\n", done.rectanglesRemoved,
                done.rectanglesRemoved == 1 ? "" : "s");
  return kExitOk;
}

}  // namespace

void addStraightenCommand(CLI::App& app, int& exitCode) {
  auto args = std::make_shared<StraightenArgs>();
  CLI::App* cmd = app.add_subcommand(
      "straighten",
      "Straighten a tray photographed at an angle: map its four corners onto an upright rectangle, write the "
      "straight copy beside the photo as NAME-straight.EXT (the photo itself is never changed) and point the "
      "image at it; rows, templates, detect and split then work on the straight tray");
  cmd->add_option("session", args->session, "Session file (.slbs)")->required();
  cmd->add_option("--image", args->image, "Place of the image (from 1)")->required()->check(CLI::PositiveNumber);
  cmd->add_option("--corners", args->corners,
                  "The tray's corners in pixels of the original photo, in order round the tray from any corner: "
                  "x1,y1,x2,y2,x3,y3,x4,y4")
      ->required();
  cmd->callback([args, &exitCode] { exitCode = runStraighten(*args); });
}

}  // namespace subsurf::cli
