#include "straighten_command.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "cli_support.h"
#include "core/core_session.h"
#include "core/session_files.h"
#include "core/split_naming.h"
#include "core/split_process.h"
#include "core/tray_corners.h"
#include "core/tray_straightening.h"
#include "host/image/reduced_photo.h"
#include "host/messages.h"

namespace subsurf::cli {
namespace {

struct StraightenArgs {
  std::string session;
  int image = 0;  // 0: every image not yet straightened
  std::string corners;
  bool cornersGiven = false;
};

int fail(const std::string& text) {
  host::showMessage(text);
  return kExitBadInput;
}

std::string fileName(const std::string& path) { return path.substr(split::fileNameStart(path)); }

void printStraightened(int place, const Straightened& done, const std::string& how) {
  std::printf("  %3d %s: %s -> %s (%d x %d pixels)\n", place, fileName(done.original).c_str(), how.c_str(),
              fileName(done.copy).c_str(), done.width, done.height);
  if (done.rectanglesRemoved > 0)
    std::printf("      %d rectangle%s removed: lay the rows again on the straight tray\n", done.rectanglesRemoved,
                done.rectanglesRemoved == 1 ? "" : "s");
}

int runStraighten(const StraightenArgs& args) {
  TrayCorners corners;
  const bool given = args.cornersGiven;
  if (given) {
    if (args.image == 0) return fail("--corners needs --image: the corners are those of one photo");
    Status s = parseTrayCorners(args.corners, corners);
    if (!s) return fail(s.message());
  }
  if (!std::filesystem::exists(args.session)) return fail(fmt::format("{}: no such session file", args.session));
  CoreSession session;
  SessionOptions options;
  if (!readSession(session, options, args.session)) return kExitBadInput;
  if (args.image != 0 && !session.imageAt(args.image))
    return fail(fmt::format("Image {} is not in {} (it holds {} image{})", args.image, args.session,
                            session.imageCount(), session.imageCount() == 1 ? "" : "s"));
  if (given) {
    Straightened done;
    if (!straightenImage(session, *session.imageAt(args.image), corners, done)) return kExitBadInput;  // shown
    if (!saveSession(session, options, args.session)) return kExitBadInput;
    std::printf("Trays straightened in %s\n", args.session.c_str());
    printStraightened(args.image, done, "corners given " + cornersText(trayOrigin(*session.imageAt(args.image)).corners));
    return kExitOk;
  }

  std::printf("Trays straightened in %s\n", args.session.c_str());
  std::vector<std::string> unsure;
  bool changed = false;
  int straightened = 0, skipped = 0;
  for (int place = 1; place <= session.imageCount(); ++place) {
    if (args.image != 0 && place != args.image) continue;
    CoreImage& image = *session.imageAt(place);
    if (args.image == 0 && trayOrigin(image).straightened) {
      ++skipped;  // asked for by place, it is straightened again from its original
      continue;
    }
    const std::string check = straightenByCornersFound(session, image, place);
    if (check.empty()) ++straightened, changed = true;
    else unsure.push_back(check);
  }
  if (changed && !saveSession(session, options, args.session)) return kExitBadInput;
  std::printf("  trays straightened: %d", straightened);
  if (skipped > 0) std::printf(", already straight: %d", skipped);
  std::printf("\n");
  for (const std::string& line : unsure) std::printf("%s\n", line.c_str());
  std::fflush(stdout);
  return unsure.empty() ? kExitOk : kExitPartial;
}

}  // namespace

std::string straightenByCornersFound(CoreSession& session, CoreImage& image, int place) {
  const TrayOrigin origin = trayOrigin(image);
  const std::string photo = origin.straightened ? origin.original : split::locatePhoto(image.sourceFile());
  image::Raster reduced;
  image::PixelSize full;
  if (!image::loadReducedPhoto(photo, TrayCornerFinder::kWorkingSize, reduced, full))
    return fmt::format("check the tray corners of {} (it could not be read)", fileName(photo));
  const TrayCornerDetection found = TrayCornerFinder().find(reduced.view(), full.width, full.height);
  if (!found.sure()) {
    std::printf("  %3d %s: tray corners unsure, confidence %.2f\n", place, fileName(photo).c_str(), found.confidence);
    return fmt::format("check the tray corners of {} (confidence {:.2f}: {})", fileName(photo), found.confidence,
                       found.doubt);
  }
  Straightened done;
  if (!straightenImage(session, image, found.corners, done))  // the reason has been shown
    return fmt::format("check the tray corners of {} (it could not be straightened)", fileName(photo));
  printStraightened(place, done, fmt::format("corners found, confidence {:.2f}", found.confidence));
  return "";
}

void addStraightenCommand(CLI::App& app, int& exitCode) {
  auto args = std::make_shared<StraightenArgs>();
  CLI::App* cmd = app.add_subcommand(
      "straighten",
      "Straighten a tray photographed at an angle: map its four corners onto an upright rectangle, write the\n"
      "straight copy beside the photo as NAME-straight.EXT (the photo itself is never changed) and point the\n"
      "image at it; rows, templates, detect and split then work on the straight tray. Exit status 0 when done,\n"
      "1 when some photos' corners must be checked, 2 for bad input");
  cmd->add_option("session", args->session, "Session file (.slbs)")->required();
  cmd->add_option("--image", args->image,
                  "Place of the image (from 1); without it every image not yet straightened,\n"
                  "by the corners found")
      ->check(CLI::PositiveNumber);
  CLI::Option* corners = cmd->add_option("--corners", args->corners,
                  "The tray's corners in pixels of the original photo, in order round the tray\n"
                  "from any corner: x1,y1,x2,y2,x3,y3,x4,y4. Without it the corners are found in\n"
                  "the photo; a photo whose corners are unsure is named (\"check the tray corners\n"
                  "of ...\"), left as it is, and the exit status is 1");
  cmd->callback([args, corners, &exitCode] {
    args->cornersGiven = corners->count() > 0;
    exitCode = runStraighten(*args);
  });
}

}  // namespace subsurf::cli
