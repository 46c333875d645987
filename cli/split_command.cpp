#include "split_command.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>

#include "cli_support.h"
#include "core/core_session.h"
#include "core/depth_sources.h"
#include "core/image_settings.h"
#include "core/layout_checks.h"
#include "core/output_guard.h"
#include "core/output_plan.h"
#include "core/row_layout.h"
#include "core/session_files.h"
#include "core/split_manifest.h"
#include "core/split_naming.h"
#include "core/split_process.h"
#include "host/drawing/preview.h"
#include "host/fixed_text.h"
#include "host/image/photo.h"
#include "host/image/pixel_limit.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "host/paths.h"

namespace subsurf::cli {
namespace {

// A photograph named by the session that is not there to be opened is
// unreadable input (exit 2); one that opens but is damaged, or claims more
// pixels than the limit, costs only its own rows (exit 1).
bool photoFileMissing(const std::string& path) {
  std::error_code ec;
  return !std::filesystem::is_regular_file(path, ec) || ::access(path.c_str(), R_OK) != 0;
}

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// ---------------------------------------------------------------------------
// What the user sees while a run goes on: on a terminal a progress bar on
// standard error, redrawn in place, with messages printed above it; otherwise
// one plain line per photograph, so logs of batch runs stay readable.

class Console {
 public:
  explicit Console(bool terminal) : terminal_(terminal) {}

  void start(int photos, int rows) {
    std::lock_guard lock(mutex_);
    photos_ = photos;
    rows_ = rows;
    started_ = Clock::now();
    if (!terminal_) std::fprintf(stderr, "%s\n", std::string(split::kProcessingImages).c_str());
    drawLocked(true);
  }

  void rowStarted() {
    std::lock_guard lock(mutex_);
    ++rowsStarted_;
    drawLocked(false);
  }

  void photoDone(const split::PhotoOutcome& outcome) {
    std::lock_guard lock(mutex_);
    ++photosDone_;
    rowsWritten_ += outcome.rowsWritten();
    if (!terminal_) {
      std::fprintf(stderr, "photo %d/%d: %s: %d of %zu rows written\n", photosDone_, photos_,
                   outcome.sourceFile.c_str(), outcome.rowsWritten(), outcome.rows.size());
    }
    drawLocked(true);
  }

  // The host's message callback while a run is on: printed above the bar.
  void message(const char* text) {
    std::lock_guard lock(mutex_);
    ++messages_;
    clearLocked();
    std::fprintf(stderr, "slabber: %s\n", text);
    drawLocked(true);
  }

  void finish() {
    std::lock_guard lock(mutex_);
    if (terminal_ && barShown_) {
      drawLocked(true);
      std::fputc('\n', stderr);
      barShown_ = false;
    }
    std::fflush(stderr);
  }

  int messages() const {
    std::lock_guard lock(mutex_);
    return messages_;
  }

 private:
  void clearLocked() {
    if (terminal_ && barShown_) std::fputs("\r\033[K", stderr);
  }

  void drawLocked(bool force) {
    if (!terminal_ || photos_ == 0) return;
    const auto now = Clock::now();
    if (!force && now - lastDraw_ < std::chrono::milliseconds(100)) return;
    lastDraw_ = now;
    constexpr int kWidth = 24;
    const double done = rows_ > 0 ? std::min(1.0, static_cast<double>(rowsStarted_) / rows_)
                                  : static_cast<double>(photosDone_) / photos_;
    const double photoShare = static_cast<double>(photosDone_) / photos_;
    const int filled = static_cast<int>(photoShare * kWidth + 0.5);
    std::string bar(static_cast<std::size_t>(filled), '=');
    if (filled < kWidth) bar += '>';
    bar.resize(kWidth, ' ');
    std::string left = "--:--";
    const double elapsed = std::chrono::duration<double>(now - started_).count();
    if (photosDone_ == photos_) {
      left = "0:00";
    } else if (done > 0.02 && elapsed > 0.5) {
      const int seconds = static_cast<int>(elapsed * (1.0 - done) / done + 0.5);
      left = fmt::format("{}:{:02}", seconds / 60, seconds % 60);
    }
    std::fprintf(stderr, "\r[%s] %d/%d photos  %d rows written  %s left\033[K", bar.c_str(), photosDone_, photos_,
                 rowsWritten_, left.c_str());
    std::fflush(stderr);
    barShown_ = true;
  }

  mutable std::mutex mutex_;
  bool terminal_;
  bool barShown_ = false;
  int photos_ = 0, rows_ = 0, photosDone_ = 0, rowsStarted_ = 0, rowsWritten_ = 0, messages_ = 0;
  Clock::time_point started_ = Clock::now(), lastDraw_{};
};

Console* gConsole = nullptr;
void consoleMessage(void*, const char* text) {
  if (gConsole) gConsole->message(text);
}

// A yes/no question asked at the terminal (when neither --yes nor --no was given).
int terminalQuestion(void*, const char* text) {
  std::fprintf(stderr, "slabber: %s [y/N] ", text);
  std::fflush(stderr);
  std::string answer;
  if (!std::getline(std::cin, answer)) return 0;
  answer = trimBlanks(answer);
  return !answer.empty() && (answer[0] == 'y' || answer[0] == 'Y') ? 1 : 0;
}

// Routes messages through the console for the length of a run, and back.
class ConsoleHost {
 public:
  ConsoleHost(Console& console, bool interactive) {
    gConsole = &console;
    host::HostCallbacks cb;
    cb.message = consoleMessage;
    if (interactive) cb.question = terminalQuestion;
    host::setHostCallbacks(cb);
  }
  ~ConsoleHost() {
    installTerminalHost("slabber");
    gConsole = nullptr;
  }
};

// ---------------------------------------------------------------------------
// The session and the options of a run.

// Reads the session file and the user's settings into the split options.
// False (the reason shown) when the session cannot be read.
// The session's output names are checked (see core/output_guard.h); its
// report name is not used when the command line names the report.
bool loadSession(const std::string& path, CoreSession& session, split::SplitOptions& options,
                 bool reportNamedElsewhere = false) {
  if (!fileExists(path)) {
    host::showMessage(fmt::format("{}: no such session file", path));
    return false;
  }
  session.init();
  SessionOptions sessionOptions;
  if (!readSession(session, sessionOptions, path)) return false;  // the reason has been shown
  if (Status s = split::checkSessionOutputNames(sessionOptions, path, reportNamedElsewhere); !s) {
    host::showMessage(s.message());
    return false;
  }
  UserSettings user;
  const std::string userFile = userSettingsFile();
  if (fileExists(userFile)) readUserSettings(userFile, user);  // a bad file leaves the defaults
  applyUserSettings(user, options);
  applySessionOptions(sessionOptions, options);
  return true;
}

std::string sessionFolder(const std::string& sessionPath) {
  fs::path folder = fs::absolute(fs::path(sessionPath)).parent_path();
  return folder.string();
}

// Runs work(i) for i in [0, count) on up to `jobs` threads.
template <class Work>
void runParallel(std::size_t count, int jobs, Work work) {
  const std::size_t threads = std::min<std::size_t>(count, static_cast<std::size_t>(std::max(1, jobs)));
  std::atomic<std::size_t> next{0};
  auto loop = [&] {
    for (std::size_t i = next++; i < count; i = next++) work(i);
  };
  if (threads <= 1) {
    loop();
    return;
  }
  std::vector<std::thread> pool;
  pool.reserve(threads);
  for (std::size_t t = 0; t < threads; ++t) pool.emplace_back(loop);
  for (std::thread& t : pool) t.join();
}

int defaultJobs() {
  const unsigned n = std::thread::hardware_concurrency();
  return n == 0 ? 1 : static_cast<int>(n);
}

std::string fileNameOf(const std::string& path) { return path.substr(split::fileNameStart(path)); }

std::string_view rowProblem(const split::RowOutcome& r) {
  if (!r.problem.empty()) return r.problem;
  return "not written";
}

// ---------------------------------------------------------------------------
// slabber split

struct SplitArgs {
  std::string session;
  std::string out;
  std::string format;
  std::string report;
  bool yes = false;
  bool no = false;
  int jobs = 0;
  bool unique = false;
  std::string manifest;
  bool noManifest = false;
  std::string hole;
  double maxMegapixels = 0.0;
};

// A decoded tray photograph is one block of tens of megabytes (72 MB for a
// 24-megapixel camera). glibc hands out blocks that large as fresh mappings
// and returns them to the system when freed, so every photograph would fault
// in (and have zeroed) some 18000 new pages; that costs a third as much again
// as decoding the photograph. Keeping freed blocks in the heap lets the next
// photograph reuse the same pages. The memory kept is what one photograph per
// thread needs anyway.
void keepLargeBlocksForReuse() {
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
}

int runSplit(const SplitArgs& args) {
  keepLargeBlocksForReuse();
  if (args.maxMegapixels > 0.0) image::setMaxMegapixels(args.maxMegapixels);
  split::SplitOptions options;
  split::RowFormat format = split::RowFormat::Bmp;
  if (!args.format.empty() && !split::parseRowFormat(args.format, format)) {
    host::showMessage(fmt::format("--format {}: not one of bmp, cgm, png, jpg, tif", args.format));
    return kExitBadInput;
  }
  if (args.yes) host::setDefaultAnswer(true);
  if (args.no) host::setDefaultAnswer(false);

  CoreSession session;
  if (!loadSession(args.session, session, options, !args.report.empty())) return kExitBadInput;
  if (!args.format.empty()) {
    options.naming.format = format;
    options.formatChosen = true;
  }
  if (!args.out.empty()) {
    options.naming.outputFolder = args.out;
    options.naming.outputBesidePhoto = false;
  }
  if (!options.naming.outputBesidePhoto && trimBlanks(options.naming.outputFolder).empty()) {
    host::showMessage("The session names no output folder: give one with --out DIR");
    return kExitBadInput;
  }
  if (!options.naming.outputBesidePhoto) {
    // The table names every row image by its full path, so that it can be
    // loaded from anywhere.
    options.naming.outputFolder = fs::absolute(fs::path(trimBlanks(options.naming.outputFolder))).lexically_normal().string();
  }
  if (!args.report.empty()) {
    options.writeReport = true;
    options.reportFile = args.report;
  } else if (options.writeReport) {
    options.reportFile = split::reportFileFor(options, sessionFolder(args.session));
  }
  if (!options.naming.outputBesidePhoto) {
    std::error_code ec;
    fs::create_directories(options.naming.outputFolder, ec);
    if (ec) {
      // Every row will fail and be named; the reason is said once here.
      host::showMessage(fmt::format("Cannot make the output folder {} ({})", options.naming.outputFolder, ec.message()));
    }
  }

  const bool terminal = ::isatty(STDERR_FILENO) == 1;
  const bool interactive = !args.yes && !args.no && ::isatty(STDIN_FILENO) == 1;
  Console console(terminal);
  ConsoleHost consoleHost(console, interactive);

  std::vector<bool> hadDepths;
  for (CoreImage* image : session.images()) hadDepths.push_back(hasTrayDepths(*image));
  std::vector<split::PhotoJob> jobs;
  if (!split::prepareRun(session, options, jobs)) {
    console.finish();
    return kExitBadInput;  // "No images found" has been shown
  }
  const std::vector<CarriedTray> carried = traysGivenDepths(session, hadDepths);
  // Rows the finder was unsure of are not cut until a person has looked:
  // cut, they would carry depths nobody vouched for.
  std::vector<std::string> held;
  std::erase_if(jobs, [&](const split::PhotoJob& job) {
    const CoreImage* image = session.imageAt(job.place);
    if (!image || !rowsNeedChecking(*image)) return false;
    held.push_back(fmt::format("{}: not cut, its rows need checking ({}); correct them, or accept them with: "
                               "slabber rows {} --image {} --checked",
                               fileNameOf(job.sourceFile), rowVerdict(*image), args.session, job.place));
    return true;
  });
  for (const std::string& m : held) host::showMessage(m);
  // Every row's file is known before the first is written: two rows under
  // one name would leave only one of them.
  const split::OutputPlan plan = split::planOutputs(jobs, options, args.unique);
  for (const std::string& m : plan.collisions) host::showMessage(m);
  if (!plan.ok()) {
    host::showMessage("Nothing written: give --unique to add a distinguishing part to such names");
    console.finish();
    return kExitBadInput;
  }
  for (const std::string& m : plan.renamed) host::showMessage(m);
  for (const split::PhotoJob& job : jobs) {
    // Without reading the photographs: the frame the rectangles were drawn on.
    const bool frameKnown = job.displayReduction == 1.0f;
    for (const std::string& w : split::layoutWarnings(fileNameOf(job.sourceFile), split::rowBoxes(job, 0, 0),
                                                      frameKnown ? job.shownWidth : 0, frameKnown ? job.shownHeight : 0))
      host::showMessage(w);
  }
  int rowCount = 0;
  for (const auto& job : jobs) rowCount += static_cast<int>(job.rows.size());

  options.progress = [&console](int, int, std::string_view) { console.rowStarted(); };
  const int jobCount = args.jobs > 0 ? args.jobs : defaultJobs();
  console.start(static_cast<int>(jobs.size()), rowCount);

  // Each photograph is a job of its own: its outcome (files, report lines,
  // messages) depends on nothing else, so the table below comes out the same
  // whatever the number of threads.
  std::vector<split::PhotoOutcome> outcomes(jobs.size());
  runParallel(jobs.size(), jobCount, [&](std::size_t i) {
    try {
      outcomes[i] = split::splitPhoto(jobs[i], options);
    } catch (const std::exception& e) {
      split::PhotoOutcome failed;
      failed.place = jobs[i].place;
      failed.sourceFile = jobs[i].sourceFile;
      failed.status = 1;
      failed.reportLines.push_back(split::reportSourceLine(jobs[i].sourceFile));
      for (const auto& row : jobs[i].rows) {
        split::RowOutcome r;
        r.number = row.number;
        r.result = split::RowResult::CutFailed;
        r.problem = e.what();
        failed.rows.push_back(r);
      }
      failed.messages.push_back(fmt::format("{}: {}", jobs[i].sourceFile, e.what()));
      outcomes[i] = std::move(failed);
    }
    console.photoDone(outcomes[i]);
    for (const std::string& m : outcomes[i].messages) host::showMessage(m);
  });

  bool reportWritten = false;
  bool reportFailed = false;
  if (options.writeReport && !trimBlanks(options.reportFile).empty()) {
    reportWritten = static_cast<bool>(split::writeReportFile(options.reportFile, split::reportLines(outcomes)));
    reportFailed = !reportWritten;
  }
  split::ManifestOptions manifest;
  if (!args.noManifest) {
    manifest.path = !args.manifest.empty() ? args.manifest
                    : options.naming.outputBesidePhoto
                        ? split::joinFolder(sessionFolder(args.session), "manifest.csv")
                        : split::joinFolder(options.naming.outputFolder, "manifest.csv");
    manifest.hole = args.hole;
    manifest.unitOf = [&](int place) {
      if (!trimBlanks(options.reportUnit).empty()) return trimBlanks(options.reportUnit);
      const CoreImage* image = session.imageAt(place);
      return image ? depthUnitOf(image->realSetting(kRealTop)) : std::string();
    };
    if (!split::writeManifest(manifest, split::manifestLines(jobs, outcomes, options, manifest))) {
      reportFailed = true;
      manifest.path.clear();
    }
  }
  console.finish();

  const split::RunTotals totals = split::totalsOf(outcomes);
  std::printf("Split of %s\n", args.session.c_str());
  std::printf("  photos:        %d", totals.photos);
  if (totals.photosFailed > 0) std::printf(" (%d could not be read)", totals.photosFailed);
  std::printf("\n  rows:          %d written of %d\n", totals.rowsWritten, totals.rows);
  std::printf("  files written: %d", totals.rowsWritten + (reportWritten ? 1 : 0) + (manifest.path.empty() ? 0 : 1));
  if (reportWritten) std::printf(" (the table of clipping depths: %s)", options.reportFile.c_str());
  if (!options.writeReport) std::printf("\n  (no table of clipping depths: the session does not ask for one; give --report FILE)");
  if (!manifest.path.empty()) std::printf("\n  manifest:      %s", manifest.path.c_str());
  std::printf("\n  warnings:      %d\n", console.messages());
  for (const CarriedTray& c : carried) {
    const std::string photo = session.imageAt(c.place)->sourceFile();
    std::printf("  carried:       %s\n", photo.substr(split::fileNameStart(photo)).c_str());
  }
  std::printf("  %s\n", countDepths(session, carried).text().c_str());
  if (!held.empty()) std::printf("  held for checking: %zu photo%s, not cut\n", held.size(), held.size() == 1 ? "" : "s");
  if (totals.rowsFailed > 0) {
    std::printf("Rows not written:\n");
    for (const auto& o : outcomes)
      for (const auto& r : o.rows)
        if (r.result != split::RowResult::Written)
          std::printf("  %s Core %d: %s\n", o.sourceFile.c_str(), r.number, std::string(rowProblem(r)).c_str());
  }
  std::fflush(stdout);
  for (const auto& o : outcomes)
    if (o.status != 0 && photoFileMissing(split::locatePhoto(o.sourceFile))) return kExitBadInput;
  return totals.rowsFailed > 0 || reportFailed || !held.empty() ? kExitPartial : kExitOk;
}

// ---------------------------------------------------------------------------
// slabber preview

struct PreviewArgs {
  std::string session;
  std::string out;
  int size = 1600;
  double maxMegapixels = 0.0;
};

// "1234.50-1235.50": the row's interval with the precision of the names.
std::string intervalLabel(float top, float base, int precisionOption) {
  const int decimals = precisionOption == split::kPrecisionMillimetre ? 3 : 2;
  return trimBlanks(split::fixedField(top, 0, decimals)) + "-" + trimBlanks(split::fixedField(base, 0, decimals));
}

// Straightened rows are drawn beside the preview from copies at most this wide.
constexpr double kStraightenedPreviewWidth = 800.0;

int runPreview(const PreviewArgs& args) {
  if (args.maxMegapixels > 0.0) image::setMaxMegapixels(args.maxMegapixels);
  split::SplitOptions options;
  CoreSession session;
  if (!loadSession(args.session, session, options)) return kExitBadInput;
  std::string folder = args.out;
  if (folder.empty()) folder = options.naming.outputBesidePhoto ? std::string() : trimBlanks(options.naming.outputFolder);
  if (folder.empty()) folder = sessionFolder(args.session);
  std::error_code ec;
  fs::create_directories(folder, ec);

  const auto images = split::imagesToProcess(session);
  if (images.empty()) {
    host::showMessage(split::kNoImagesFound);
    return kExitBadInput;
  }
  std::map<std::string, int> stubs;
  for (const auto& ri : images)
    ++stubs[split::fileStub(split::namingPhoto(*ri.image, split::locatePhoto(ri.image->sourceFile())))];

  drawing::PreviewOptions previewOptions;
  previewOptions.longestSide = args.size;
  int written = 0, failed = 0, unreadable = 0;
  for (const auto& ri : images) {
    const split::PhotoJob job = split::makePhotoJob(*ri.image, ri.place, options);
    image::PixelSize size;
    if (!image::readPixelSize(job.photoPath, size)) {  // "Error loading: ..." shown
      ++failed;
      if (photoFileMissing(job.photoPath)) ++unreadable;
      continue;
    }
    std::vector<drawing::PreviewOutline> outlines;
    previewOptions.straightenedRows.clear();
    image::Photo photo;  // decoded only for rows to straighten
    bool photoTried = false;
    for (const auto& row : job.rows) {
      const split::RowPlan plan = split::planRow(job, row, options, size.width, size.height);
      if (row.freeCorners) {
        // Drawn as it is, and straightened beside the photo when it is cut.
        const split::SizeFactors f =
            split::sizeFactors(size.width, size.height, job.shownWidth, job.shownHeight, job.displayReduction);
        std::vector<split::PixelPoint> corners;
        for (const split::PixelPoint& p : row.vertices)
          corners.push_back({static_cast<int>(std::lround(p.x * f.x)), static_cast<int>(std::lround(p.y * f.y))});
        drawing::PreviewOutline outline;
        outline.index = row.number;
        outline.label = plan.usable ? intervalLabel(row.top, row.base, options.naming.precisionOption)
                        : isNoValue(row.top) || isNoValue(row.base)
                            ? fmt::format("Core {}: no depths", row.number)
                            : intervalLabel(row.top, row.base, options.naming.precisionOption) + " (not cut)";
        for (const split::PixelPoint& p : split::cutPoints(corners, job.angleDegrees, size.width, size.height))
          outline.points.push_back({double(p.x), double(p.y)});
        if (plan.usable && !photoTried) {
          photoTried = true;
          image::Photo::load(job.photoPath, photo);  // shows "Error loading: ..." itself
        }
        if (plan.usable && photo.loaded()) {
          drawing::PreviewRowImage straightened;
          straightened.index = row.number;
          straightened.label = outline.label;
          const double scale = std::min(1.0, kStraightenedPreviewWidth / std::max(1, plan.width));
          if (split::straightenRow(photo, plan, job.angleDegrees, scale, straightened.pixels))
            previewOptions.straightenedRows.push_back(std::move(straightened));
        }
        outlines.push_back(std::move(outline));
        continue;
      }
      split::RowBox box = plan.box;
      std::string label = intervalLabel(row.top, row.base, options.naming.precisionOption);
      if (!plan.usable) {
        // Shown where it was drawn, so the user sees which rectangle lacks depths.
        const split::SizeFactors f =
            split::sizeFactors(size.width, size.height, job.shownWidth, job.shownHeight, job.displayReduction);
        box = split::scaleBox(plan.drawn, f);
        label = isNoValue(row.top) || isNoValue(row.base) ? fmt::format("Core {}: no depths", row.number)
                                                          : label + " (not cut)";
      }
      drawing::PreviewOutline outline;
      outline.index = row.number;
      outline.label = label;
      // Where the row really comes from: a turned photograph is cut after turning.
      for (const split::PixelPoint& p : split::cutOutline(box, job.angleDegrees, size.width, size.height))
        outline.points.push_back({double(p.x), double(p.y)});
      outlines.push_back(std::move(outline));
    }
    for (const std::string& w : split::layoutWarnings(fileNameOf(job.sourceFile),
                                                      split::rowBoxes(job, size.width, size.height), size.width,
                                                      size.height))
      host::showMessage(w);
    previewOptions.warning = rowsNeedChecking(*ri.image) ? "! " + rowVerdict(*ri.image) : std::string();
    std::string stub = split::fileStub(job.namingPath);
    if (stubs[stub] > 1) stub += fmt::format("_{}", ri.place);
    const std::string png = split::joinFolder(folder, stub + "_preview.png");
    const Status drawn = photo.loaded() ? drawing::drawPreview(photo, outlines, png, previewOptions)
                                        : drawing::drawPreview(job.photoPath, outlines, png, previewOptions);
    if (drawn) {
      ++written;
      std::printf("%s\n", png.c_str());
    } else {
      ++failed;
    }
  }
  std::printf("Previews written: %d of %zu\n", written, images.size());
  if (unreadable > 0) return kExitBadInput;
  return failed > 0 ? kExitPartial : kExitOk;
}

void addMegapixelOption(CLI::App& command, double& value) {
  command
      .add_option("--max-megapixels", value,
                  fmt::format("Refuse photographs larger than this, before decoding them (default {:g}, or "
                              "SUBSURF_MAX_MEGAPIXELS)",
                              image::kDefaultMegapixels))
      ->check(CLI::PositiveNumber);
}

}  // namespace

void addSplitCommands(CLI::App& app, int& exitCode) {
  auto splitArgs = std::make_shared<SplitArgs>();
  CLI::App* split = app.add_subcommand(
      "split", "Cut every core row of a session's photographs into an image named by its depths, "
               "with the table of clipping depths");
  split->add_option("session", splitArgs->session, "Session file (.slbs)")->required();
  split->add_option("-o,--out", splitArgs->out, "Folder for the row images (default: the session's)");
  split->add_option("-f,--format", splitArgs->format, "Row image format: bmp, cgm, png, jpg or tif "
                                                     "(default: the session's, bmp or cgm)");
  split->add_option("-r,--report", splitArgs->report, "Write the table of clipping depths to this file");
  auto* yes = split->add_flag("-y,--yes", splitArgs->yes, "Answer yes to questions: derive what is missing,\n"
                                                          "rectangles from the first image and depths, for photos\n"
                                                          "without any, carried from the tray before");
  split->add_flag("-n,--no", splitArgs->no, "Answer no to questions")->excludes(yes);
  split->add_option("-j,--jobs", splitArgs->jobs, "Photographs cut at once (default: the number of cores)")
      ->check(CLI::Range(1, 1024));
  split->add_flag("--unique", splitArgs->unique,
                  "When rows would be written to the same file (photos whose names agree up to\n"
                  "their first \".\"), add a distinguishing part to their names instead of stopping");
  auto* manifest = split->add_option("--manifest", splitArgs->manifest,
                                     "Write the manifest (hole, photo, row, top, base, unit, light, file,\n"
                                     "width, height) here (default: manifest.csv beside the rows)");
  split->add_flag("--no-manifest", splitArgs->noManifest, "Write no manifest")->excludes(manifest);
  split->add_option("--hole", splitArgs->hole,
                    "Hole name for the manifest (default: read from each photo's name)");
  addMegapixelOption(*split, splitArgs->maxMegapixels);
  split->callback([splitArgs, &exitCode] { exitCode = runSplit(*splitArgs); });

  auto previewArgs = std::make_shared<PreviewArgs>();
  CLI::App* preview = app.add_subcommand(
      "preview", "Draw each photograph reduced, with its row rectangles and depth intervals, to check the layout");
  preview->add_option("session", previewArgs->session, "Session file (.slbs)")->required();
  preview->add_option("-o,--out", previewArgs->out, "Folder for the previews (default: the session's output folder)");
  preview->add_option("--size", previewArgs->size, "Longest side of a preview in pixels")
      ->check(CLI::Range(64, 20000))
      ->capture_default_str();
  addMegapixelOption(*preview, previewArgs->maxMegapixels);
  preview->callback([previewArgs, &exitCode] { exitCode = runPreview(*previewArgs); });
}

}  // namespace subsurf::cli
