#include "detect_command.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <thread>

#include <fmt/format.h>

#include "cli_support.h"
#include "core/core_session.h"
#include "core/row_layout.h"
#include "core/session_files.h"
#include "core/split_naming.h"
#include "core/split_process.h"
#include "host/image/reduced_photo.h"
#include "host/messages.h"
#include "host/nulls.h"

namespace subsurf::cli {
namespace {

struct DetectArgs {
  std::string session;
  int image = 0;
  int cores = 0;
  int jobs = 0;
};

struct Work {
  CoreImage* image = nullptr;
  std::string photo;
  int expected = 0;
  image::Raster reduced;
  image::PixelSize full;
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

std::vector<PhotoRows> detectRows(CoreSession& session, const std::vector<int>& places, int cores, int jobs) {
  std::vector<int> chosen = places;
  if (chosen.empty())
    for (int p = 1; p <= session.imageCount(); ++p) chosen.push_back(p);
  std::vector<Work> work(chosen.size());
  std::vector<PhotoRows> results(chosen.size());
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    CoreImage* image = session.imageAt(chosen[i]);
    work[i].image = image;
    work[i].photo = split::locatePhoto(image->sourceFile());
    const int number = image->intValue(kIntCoreNumber);
    work[i].expected = cores >= 1 ? cores : (!isNull(number) && number >= 1 ? number : 0);
    results[i].place = chosen[i];
    results[i].file = work[i].photo.substr(split::fileNameStart(work[i].photo));
  }
  // Each photograph is decoded and read on its own; the rows are laid on the
  // session afterwards, on this thread.
  const RowDetector detector;
  std::atomic<std::size_t> next{0};
  auto loop = [&] {
    for (std::size_t i = next++; i < work.size(); i = next++) {
      Work& w = work[i];
      results[i].read = static_cast<bool>(
          image::loadReducedPhoto(w.photo, RowDetector::kWorkingSize, w.reduced, w.full));
      if (results[i].read)
        results[i].found = detector.detect(w.reduced.view(), w.full.width, w.full.height, w.expected);
      w.reduced = image::Raster();
    }
  };
  const unsigned hardware = std::max(1u, std::thread::hardware_concurrency());
  const std::size_t threads = std::min<std::size_t>(work.size(), jobs > 0 ? jobs : hardware);
  std::vector<std::thread> pool;
  for (std::size_t t = 1; t < threads; ++t) pool.emplace_back(loop);
  loop();
  for (std::thread& t : pool) t.join();

  for (std::size_t i = 0; i < work.size(); ++i)
    if (results[i].read) layDetectedRows(session, *work[i].image, results[i].found, work[i].full.width, work[i].full.height);
  return results;
}

int printDetections(const std::vector<PhotoRows>& results) {
  int unsure = 0, rows = 0;
  for (const PhotoRows& r : results) {
    if (!r.read) {
      std::printf("  %3d %s: not read\n", r.place, r.file.c_str());
      continue;
    }
    rows += static_cast<int>(r.found.rows.size());
    std::printf("  %3d %s: %zu row%s %s, confidence %.2f\n", r.place, r.file.c_str(), r.found.rows.size(),
                r.found.rows.size() == 1 ? "" : "s", r.found.rowsAcross ? "across" : "down", r.found.confidence);
  }
  std::printf("  photos: %zu, rows laid: %d\n", results.size(), rows);
  for (const PhotoRows& r : results) {
    if (r.read && r.found.sure()) continue;
    ++unsure;
    const std::string why = !r.read ? "it could not be read" : fmt::format("confidence {:.2f}: {}", r.found.confidence, r.found.doubt);
    std::printf("check the rows of %s (%s)\n", r.file.c_str(), why.c_str());
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
