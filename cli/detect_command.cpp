#include "detect_command.h"

#include <cstdio>
#include <filesystem>

#include <fmt/format.h>

#include "cli_support.h"
#include "core/core_session.h"
#include "core/session_files.h"
#include "host/messages.h"

namespace subsurf::cli {
namespace {

struct DetectArgs {
  std::string session;
  int image = 0;
  int cores = 0;
  int jobs = 0;
};

int runDetect(const DetectArgs& args) {
  if (!std::filesystem::exists(args.session)) {
    host::showMessage(fmt::format("{}: no such session file", args.session));
    return kExitBadInput;
  }
  CoreSession session;
  SessionOptions options;
  if (!readSession(session, options, args.session)) return kExitBadInput;
  std::vector<int> places;
  if (args.image != 0) {
    if (args.image < 1 || args.image > session.imageCount()) {
      host::showMessage(fmt::format("Image {} is not in {} (it holds {} image{})", args.image, args.session,
                                    session.imageCount(), session.imageCount() == 1 ? "" : "s"));
      return kExitBadInput;
    }
    places.push_back(args.image);
  }
  const std::vector<PhotoRows> results = detectRows(session, places, args.cores, args.jobs);
  if (!saveSession(session, options, args.session)) return kExitBadInput;
  std::printf("Rows found in %s\n", args.session.c_str());
  const int unsure = printDetections(results);
  return unsure > 0 ? kExitPartial : kExitOk;
}

}  // namespace

int printDetections(const std::vector<PhotoRows>& results) {
  int unsure = 0, rows = 0;
  for (const PhotoRows& r : results) {
    if (r.read) rows += static_cast<int>(r.found.rows.size());
    std::printf("  %3d %s\n", r.place, detectionSummary(r).c_str());
  }
  std::printf("  photos: %zu, rows laid: %d\n", results.size(), rows);
  for (const PhotoRows& r : results) {
    const std::string note = checkRowsNote(r);
    if (note.empty()) continue;
    ++unsure;
    std::printf("%s\n", note.c_str());
  }
  std::fflush(stdout);
  return unsure;
}

void addDetectCommand(CLI::App& app, int& exitCode) {
  auto args = std::make_shared<DetectArgs>();
  CLI::App* detect = app.add_subcommand(
      "detect", "Find the core rows of each photograph and lay one rectangle per row on it (top row first; "
                "left to right when rows run down the photo)");
  detect->add_option("session", args->session, "Session file (.slbs)")->required();
  detect->add_option("--image", args->image, "Only the image at this place (from 1)")->check(CLI::PositiveNumber);
  detect->add_option("--cores", args->cores, "Core rows expected in each tray (default: each image's Core Number)")
      ->check(CLI::Range(1, kMaxRectangleId));
  detect->add_option("-j,--jobs", args->jobs, "Photographs read at once (default: the number of cores)")
      ->check(CLI::Range(1, 1024));
  detect->callback([args, &exitCode] { exitCode = runDetect(*args); });
}

}  // namespace subsurf::cli
