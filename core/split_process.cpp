#include "core/split_process.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include <fmt/format.h>

#include "core/core_session.h"
#include "core/depth_sources.h"
#include "core/free_corners.h"
#include "core/output_guard.h"
#include "core/output_plan.h"
#include "core/tray_straightening.h"
#include "host/atomic_file.h"
#include "host/fixed_text.h"
#include "host/image/image_messages.h"
#include "host/image/jpeg_row_cutter.h"
#include "host/image/image_writer.h"
#include "host/image/photo.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "host/paths.h"
#include "units/scalar_units.h"

namespace subsurf::split {

namespace {

bool hasValue(float v) { return !isNoValue(v); }

// A row depth in the unit the run names and reports in.
float depthIn(const DT_RSCA& rec, const std::string& unit) {
  if (!hasValue(rec.V) || unit.empty()) return rec.V;
  return valueIn(rec, unit);
}

bool rowHasDepths(const CoreImage& image, int row) {
  if (row > kMaxStoredRows) return false;
  return hasValue(image.realValue(rowTopSetting(row))) && hasValue(image.realValue(rowBaseSetting(row)));
}

}  // namespace

int PhotoOutcome::rowsWritten() const {
  return static_cast<int>(std::count_if(rows.begin(), rows.end(),
                                        [](const RowOutcome& r) { return r.result == RowResult::Written; }));
}

int PhotoOutcome::rowsFailed() const { return static_cast<int>(rows.size()) - rowsWritten(); }

std::string locatePhoto(std::string_view sourceFile) {
  std::string path = trimBlanks(sourceFile);
  if (path.empty() || fileExists(path)) return path;
  if (path.find('\\') != std::string::npos) {
    std::string forward = path;
    std::replace(forward.begin(), forward.end(), '\\', '/');
    if (fileExists(forward)) return forward;
  }
  return path;
}

std::string namingPhoto(const CoreImage& image, const std::string& photoPath) {
  const TrayOrigin origin = trayOrigin(image);
  if (!origin.straightened) return photoPath;
  // Only the original's file name counts: the copy sits beside it, and a
  // folder in the setting must not move the rows elsewhere.
  const std::string name = origin.original.substr(fileNameStart(origin.original));
  if (name.empty()) return photoPath;
  return folderOf(photoPath) + name;
}

RowFormat formatForImage(const CoreImage& image, const SplitOptions& options) {
  if (options.formatChosen) return options.naming.format;
  if (image.intValue(kIntOverride) == 1) return image.intValue(kIntCgm) == 1 ? RowFormat::Cgm : RowFormat::Bmp;
  return options.naming.format;
}

PhotoJob makePhotoJob(const CoreImage& image, int place, const SplitOptions& options) {
  PhotoJob job;
  job.place = place;
  job.imageId = image.id;
  job.sourceFile = image.sourceFile();
  job.photoPath = locatePhoto(job.sourceFile);
  job.namingPath = namingPhoto(image, job.photoPath);
  job.uvSetting = image.intValue(kIntUV);
  job.horizontalSetting = image.intValue(kIntHorizontal);
  job.reverseSetting = image.intValue(kIntReverse);
  job.shownWidth = image.intValue(kIntPixelWidth);
  job.shownHeight = image.intValue(kIntPixelHeight);
  const std::string unit = trimBlanks(options.reportUnit);
  job.coreLength = depthIn(image.realSetting(kRealCoreLength), unit);
  job.angleDegrees = hasValue(image.angle) ? image.angle : 0.0f;
  job.displayReduction =
      hasValue(image.displayReduction) && image.displayReduction > 0.0f ? image.displayReduction
                                                                        : options.displayReduction;
  job.format = formatForImage(image, options);
  int k = 0;
  for (const CoreRectangle* r = image.rectangles; r != nullptr; r = r->next) {
    RowJob row;
    row.number = ++k;
    const Polygon& poly = r->polygon;
    const int n = std::min({poly.n, static_cast<int>(poly.px.size()), static_cast<int>(poly.py.size())});
    for (int i = 0; i < n; ++i) row.vertices.push_back({poly.px[i], poly.py[i]});
    row.freeCorners = poly.freeCorners && isConvexQuadrilateral(poly);
    if (k <= kMaxStoredRows) {
      row.top = depthIn(image.realSetting(rowTopSetting(k)), unit);
      row.base = depthIn(image.realSetting(rowBaseSetting(k)), unit);
    } else {
      // Rows beyond the last depth setting have no depths of their own.
      row.top = kRealNull;
      row.base = kRealNull;
    }
    job.rows.push_back(std::move(row));
  }
  return job;
}

namespace {

double sideLength(image::PlanePoint a, image::PlanePoint b) { return std::hypot(b.x - a.x, b.y - a.y); }

// The straightened row of a free-cornered outline (see RowPlan).
void planStraightenedRow(const PhotoJob& job, const RowJob& row, const SizeFactors& factors, RowPlan& plan) {
  std::array<image::PlanePoint, 4> q;
  for (std::size_t i = 0; i < 4; ++i) {
    q[i] = {row.vertices[i].x * static_cast<double>(factors.x), row.vertices[i].y * static_cast<double>(factors.y)};
    if (!std::isfinite(q[i].x) || !std::isfinite(q[i].y)) return;  // no plan: nothing sensible to cut
  }
  const double wide = std::max(sideLength(q[0], q[1]), sideLength(q[3], q[2]));
  const double high = std::max(sideLength(q[1], q[2]), sideLength(q[0], q[3]));
  const RowBox upright{0, 0, std::max(1, static_cast<int>(std::lround(wide))),
                       std::max(1, static_cast<int>(std::lround(high)))};
  plan.orientation = decideOrientation(job.horizontalSetting, job.reverseSetting, upright);
  image::Homography toPhoto;
  const std::array<image::PlanePoint, 4> frame{image::PlanePoint{0, 0}, {double(upright.right), 0},
                                               {double(upright.right), double(upright.bottom)},
                                               {0, double(upright.bottom)}};
  if (!image::Homography::fromQuads(frame, q, toPhoto)) return;
  // Shortened in the upright frame, where lengths along the row are true.
  const RowBox kept = shortenRow(upright, plan.orientation, plan.fraction);
  const std::array<image::PlanePoint, 4> keptCorners{
      toPhoto.apply({double(kept.left), double(kept.top)}), toPhoto.apply({double(kept.right), double(kept.top)}),
      toPhoto.apply({double(kept.right), double(kept.bottom)}), toPhoto.apply({double(kept.left), double(kept.bottom)})};
  // Turning the row image by t clockwise quarter turns brings the corner
  // that was at place i - t to place i.
  const int turns = plan.orientation.quarterTurns();
  for (int i = 0; i < 4; ++i) plan.sourceCorners[static_cast<std::size_t>(i)] = keptCorners[static_cast<std::size_t>((i - turns + 4) % 4)];
  plan.width = turns % 2 == 0 ? kept.width() : kept.height();
  plan.height = turns % 2 == 0 ? kept.height() : kept.width();
  double left = keptCorners[0].x, right = left, top = keptCorners[0].y, bottom = top;
  for (const image::PlanePoint& p : keptCorners) {
    left = std::min(left, p.x), right = std::max(right, p.x);
    top = std::min(top, p.y), bottom = std::max(bottom, p.y);
  }
  const auto held = [](double v) {
    if (!std::isfinite(v)) return v > 0 ? kCoordinateLimit : -kCoordinateLimit;
    return static_cast<int>(std::clamp(v, -double(kCoordinateLimit), double(kCoordinateLimit)));
  };
  // One pixel more each way, for the bilinear samples at the edges.
  plan.box = {held(std::floor(left)) - 1, held(std::floor(top)) - 1, held(std::ceil(right)) + 1,
              held(std::ceil(bottom)) + 1};
  plan.straightened = true;
  plan.usable = kept.width() > 0 && kept.height() > 0;
}

}  // namespace

RowPlan planRow(const PhotoJob& job, const RowJob& row, const SplitOptions& options, int photoWidth,
                int photoHeight) {
  RowPlan plan;
  plan.drawn = boundingBox(row.vertices);
  plan.orientation = decideOrientation(job.horizontalSetting, job.reverseSetting, plan.drawn);
  if (!hasValue(row.top) || !hasValue(row.base)) return plan;
  plan.outputName = plannedRowName(job, row, options);
  plan.fraction = coreFraction(row.top, row.base, job.coreLength, options.shortenRows);
  if (plan.fraction <= 0.0f || plan.drawn.empty()) return plan;
  const SizeFactors factors = sizeFactors(photoWidth, photoHeight, job.shownWidth, job.shownHeight, job.displayReduction);
  if (row.freeCorners && row.vertices.size() == 4) {
    planStraightenedRow(job, row, factors, plan);
    return plan;
  }
  plan.box = scaleBox(shortenRow(plan.drawn, plan.orientation, plan.fraction), factors);
  plan.usable = true;
  return plan;
}

namespace {

// Rows cut while the photograph was decoded, ahead of the row loop.
struct StreamedRows {
  bool done = false;  // every row to be cut was tried; the photograph is not loaded
  int width = 0;
  int height = 0;
  std::vector<Status> written;  // per row of the job
};

// The common case, an upright JPEG whose rows are plain rectangles written as
// BMP, is cut in a single decoding pass with no photograph held in memory
// (see jpeg_row_cutter.h). The rows are planned exactly as the loop in
// splitPhoto plans them; anything else (another format, an angle, a row to
// be turned, a photograph the cutter does not take or cannot decode) is left
// to the general way, which also words every message about the photograph.
StreamedRows cutWhileDecoding(const PhotoJob& job, const SplitOptions& options) {
  StreamedRows streamed;
  if (job.format != RowFormat::Bmp || job.angleDegrees != 0.0f) return streamed;
  for (const RowJob& row : job.rows)
    if (row.freeCorners) return streamed;
  image::JpegRowCutter cutter;
  std::vector<image::JpegRowCut> cuts;
  std::vector<std::size_t> rowOfCut;
  bool opened = false;
  for (std::size_t i = 0; i < job.rows.size(); ++i) {
    const RowJob& row = job.rows[i];
    if (!hasValue(row.top) || !hasValue(row.base)) continue;
    const RowPlan early = planRow(job, row, options, 0, 0);
    if (early.fraction <= 0.0f || early.drawn.empty()) continue;
    if (!opened) {
      if (!cutter.open(job.photoPath) || cutter.width() < 1 || cutter.height() < 1) return streamed;
      opened = true;
    }
    const RowPlan plan = planRow(job, row, options, cutter.width(), cutter.height());
    if (plan.orientation.quarterTurns() != 0) return streamed;
    const image::PixelBox box = image::clipBox(plan.box.pixelBox(), cutter.width(), cutter.height());
    if (box.empty()) continue;
    cuts.push_back({box, plan.outputName});
    rowOfCut.push_back(i);
  }
  if (cuts.empty()) return streamed;
  std::vector<Status> results;
  if (!cutter.cutToBmp(cuts, results)) return streamed;
  streamed.done = true;
  streamed.width = cutter.width();
  streamed.height = cutter.height();
  streamed.written.assign(job.rows.size(), Status::error("the row was not cut"));
  for (std::size_t k = 0; k < cuts.size(); ++k) streamed.written[rowOfCut[k]] = results[k];
  return streamed;
}

}  // namespace

namespace {

// Writes a straightened row; parts of the quadrilateral off the photograph
// come out black.
Status writeStraightenedRow(const image::Photo& photo, const RowPlan& plan, const image::CutSpec& spec,
                            RowOutcome& ro, RowFormat format, const image::WriteOptions& writeOptions) {
  image::Raster row;
  Status s = straightenRow(photo, plan, spec.angleDegrees, 1.0, row);
  if (s) s = image::writeImage(row.view(), ro.outputName, format, writeOptions);
  if (s) {
    ro.width = row.width();
    ro.height = row.height();
  }
  return s;
}

}  // namespace

Status straightenRow(const image::Photo& photo, const RowPlan& plan, double angleDegrees, double scale,
                     image::Raster& out) {
  image::CutSpec under;
  under.box = plan.box.pixelBox();
  under.angleDegrees = angleDegrees;
  under.box = photo.clippedBox(under);
  if (under.box.empty()) return Status::error("the row lies outside the photograph");
  image::Raster piece;
  Status s = photo.cut(under, piece);
  if (!s) return s;
  const double width = std::max(1.0, std::round(plan.width * scale));
  const double height = std::max(1.0, std::round(plan.height * scale));
  const std::array<image::PlanePoint, 4> frame{image::PlanePoint{0, 0}, {width, 0}, {width, height}, {0, height}};
  std::array<image::PlanePoint, 4> inPiece = plan.sourceCorners;
  for (image::PlanePoint& p : inPiece) {
    p.x -= under.box.left;
    p.y -= under.box.top;
  }
  image::Homography toPiece;
  if (!image::Homography::fromQuads(frame, inPiece, toPiece))
    return Status::error("the row's corners cannot be straightened");
  out = image::Raster(static_cast<int>(width), static_cast<int>(height));
  const std::uint8_t black[3] = {0, 0, 0};
  image::warpPicture(piece.view(), toPiece, out, black);
  return Status::ok();
}

PhotoOutcome splitPhoto(const PhotoJob& job, const SplitOptions& options) {
  PhotoOutcome out;
  out.place = job.place;
  out.sourceFile = job.sourceFile;
  out.reportLines.push_back(reportSourceLine(job.sourceFile));
  const std::string stub = outputStub(job.photoPath, options.naming);
  const std::string& photoName = job.sourceFile;

  const StreamedRows streamed = cutWhileDecoding(job, options);
  image::Photo photo;
  bool photoTried = false;
  for (std::size_t i = 0; i < job.rows.size(); ++i) {
    const RowJob& row = job.rows[i];
    RowOutcome ro;
    ro.number = row.number;

    if (!hasValue(row.top) || !hasValue(row.base)) {
      ro.result = RowResult::NoDepths;
      ro.problem = "no top or base depth";
      out.errorCount += kMissingDepthPenalty;
      out.messages.push_back(fmt::format("{}: Core {}: no top or base depth, row skipped", photoName, row.number));
      out.rows.push_back(std::move(ro));
      continue;
    }
    // The photograph's size is not needed for the name or the depth checks.
    const RowPlan early = planRow(job, row, options, 0, 0);
    ro.outputName = early.outputName;
    if (early.fraction <= 0.0f) {
      // A base at or above the top is a fault in the depth table, not a row
      // of no length: nothing sensible can be cut for it.
      ro.result = RowResult::NoCore;
      ro.problem = "base depth not below top depth";
      out.errorCount += kMissingDepthPenalty;
      out.messages.push_back(fmt::format("{}: Core {}: base depth {} is not below top depth {}, row skipped",
                                         photoName, row.number, trimBlanks(reportDepth(row.base)),
                                         trimBlanks(reportDepth(row.top))));
      out.rows.push_back(std::move(ro));
      continue;
    }
    if (early.drawn.empty()) {
      ro.result = RowResult::NoCore;
      ro.problem = "the rectangle has no area";
      out.errorCount += 1;
      out.messages.push_back(fmt::format("{}: Core {}: the rectangle has no area, row skipped", photoName, row.number));
      out.rows.push_back(std::move(ro));
      continue;
    }

    if (options.progress) {
      options.progress(job.place, row.number, fmt::format("{}{}: Core {}", kProcessingImage, stub, row.number));
    }

    // The photograph is decoded once, when its first row with depths comes up
    // (a tray with no depths at all is never decoded), unless its rows were
    // already cut while decoding it.
    if (!photoTried && !streamed.done) {
      photoTried = true;
      image::Photo::load(job.photoPath, photo);  // shows "Error loading: ..." itself
    }
    if (!streamed.done && (!photo.loaded() || photo.width() < 1 || photo.height() < 1)) {
      out.status = 1;
      int notReached = 0;
      for (std::size_t j = i; j < job.rows.size(); ++j) {
        RowOutcome skipped;
        skipped.number = job.rows[j].number;
        skipped.result = RowResult::NotReached;
        skipped.problem = "the photograph could not be read";
        if (j == i) skipped.outputName = ro.outputName;
        out.rows.push_back(std::move(skipped));
        ++notReached;
      }
      out.messages.push_back(fmt::format("{}: the photograph could not be read; {} row{} not written", photoName,
                                         notReached, notReached == 1 ? "" : "s"));
      return out;
    }

    const int photoWidth = streamed.done ? streamed.width : photo.width();
    const int photoHeight = streamed.done ? streamed.height : photo.height();
    const RowPlan plan = planRow(job, row, options, photoWidth, photoHeight);
    const RowBox& box = plan.box;
    image::CutSpec spec;
    spec.box = box.pixelBox();
    spec.quarterTurns = plan.straightened ? 0 : plan.orientation.quarterTurns();
    spec.angleDegrees = job.angleDegrees;
    ro.quarterTurns = plan.orientation.quarterTurns();
    ro.cut = streamed.done ? image::clipBox(spec.box, photoWidth, photoHeight) : photo.clippedBox(spec);
    // Every row that reaches its cut has its line in the table, written or
    // not: the error count and the end message tell of the failure.
    out.reportLines.push_back(reportRowLine(row.top, row.base, ro.outputName, options.reportStyle));
    if (ro.cut.empty()) {
      ro.result = RowResult::Outside;
      ro.problem = "the rectangle lies outside the photograph";
      out.errorCount += 1;
      out.messages.push_back(fmt::format(
          "{}: Core {}: the rectangle ({}, {}) to ({}, {}) lies outside the {} x {} photograph, row skipped",
          photoName, row.number, box.left, box.top, box.right, box.bottom, photoWidth, photoHeight));
      out.rows.push_back(std::move(ro));
      continue;
    }

    // Written under a temporary name and renamed when complete; on failure
    // the back-end shows why and leaves nothing behind.
    const Status written =
        plan.straightened ? writeStraightenedRow(photo, plan, spec, ro, job.format, options.writeOptions)
        : !streamed.done  ? image::cutToFile(photo, spec, ro.outputName, job.format, options.writeOptions)
        : streamed.written[i] ? Status::ok()
                              : image::reportWriteFailure(ro.outputName, true, streamed.written[i].message());
    if (!written) {
      ro.result = RowResult::CutFailed;
      ro.problem = written.message();
      out.errorCount += std::abs(image::statusWord(written));
      out.messages.push_back(fmt::format("{}: Core {}: {} not written", photoName, row.number, ro.outputName));
      out.rows.push_back(std::move(ro));
      continue;
    }
    ro.result = RowResult::Written;
    if (ro.width == 0) {
      ro.width = ro.quarterTurns % 2 == 0 ? ro.cut.width : ro.cut.height;
      ro.height = ro.quarterTurns % 2 == 0 ? ro.cut.height : ro.cut.width;
    }
    out.rows.push_back(std::move(ro));
  }

  if (out.errorCount >= kMissingDepthPenalty) out.messages.emplace_back(kCoreTableNotComplete);
  else if (out.errorCount > 0) out.messages.emplace_back(kProblemsWritingImages);
  return out;
}

std::string plannedRowName(const PhotoJob& job, const RowJob& row, const SplitOptions& options) {
  if (!row.outputName.empty()) return row.outputName;
  NamingOptions naming = options.naming;
  naming.format = job.format;
  return rowImageName(job.namingPath, job.uvSetting, row.top, row.base, naming);
}

std::vector<RunImage> imagesToProcess(CoreSession& session) {
  std::vector<RunImage> list;
  int place = 0;
  for (CoreImage* image : session.images()) {
    ++place;
    if (image->intValue(kIntUse) == 0) continue;  // left out of processing by the user
    list.push_back({place, image});
  }
  return list;
}

namespace {

// Lays the first image's rectangles on an image that has none, scaled when
// both photographs' displayed sizes are known.
void deriveRectangles(CoreSession& session, const CoreImage& first, CoreImage& image) {
  int w1 = first.intValue(kIntPixelWidth), h1 = first.intValue(kIntPixelHeight);
  int w = image.intValue(kIntPixelWidth), h = image.intValue(kIntPixelHeight);
  if (w1 < 1 || h1 < 1) w1 = h1 = 1;
  if (w < 1 || h < 1 || w1 == 1) {
    w = w1;
    h = h1;
  }
  RectangleTemplate holder;
  CoreSession::templateFromImage(first, holder, w1, h1);
  session.applyTemplate(image, holder, w, h);
}

}  // namespace

Status prepareRun(CoreSession& session, const SplitOptions& options, std::vector<PhotoJob>& jobs) {
  jobs.clear();
  std::vector<RunImage> list = imagesToProcess(session);
  if (list.empty()) {
    host::showMessage(kNoImagesFound);
    return Status::error(std::string(kNoImagesFound));
  }

  bool missingRectangles = false, missingDepths = false;
  for (const RunImage& ri : list) {
    const int n = CoreSession::rectangleCount(*ri.image);
    if (n == 0) missingRectangles = true;
    for (int k = 1; k <= n; ++k)
      if (!rowHasDepths(*ri.image, k)) missingDepths = true;
  }
  if (missingRectangles || missingDepths) {
    const std::string_view question = missingRectangles ? kAskDeriveDepthsAndRectangles : kAskDeriveDepths;
    if (host::askQuestion(question)) {
      CoreImage& first = *list.front().image;
      if (missingRectangles && CoreSession::rectangleCount(first) > 0) {
        for (const RunImage& ri : list)
          if (ri.image != &first && CoreSession::rectangleCount(*ri.image) == 0)
            deriveRectangles(session, first, *ri.image);
      }
      // Only what is missing is derived: trays with depths keep them (read,
      // typed or imported), those without are carried on from the tray before.
      layOutRowsFromTrayDepths(session);
      carryIntoMissing(session);
    }
  }

  for (const RunImage& ri : list) jobs.push_back(makePhotoJob(*ri.image, ri.place, options));

  return Status::ok();
}

std::vector<std::string> reportLines(const std::vector<PhotoOutcome>& outcomes) {
  std::vector<std::string> lines = reportHeaderLines();
  for (const PhotoOutcome& o : outcomes) lines.insert(lines.end(), o.reportLines.begin(), o.reportLines.end());
  return lines;
}

std::string defaultReportFile(const SplitOptions& options, std::string_view besideFolder) {
  std::string root = options.naming.useRootName ? trimBlanks(options.naming.rootName) : std::string();
  if (root.empty()) root = "clipping_depths";
  const std::string folder =
      options.naming.outputBesidePhoto ? std::string(besideFolder) : trimBlanks(options.naming.outputFolder);
  return joinFolder(folder, root + ".csv");
}

std::string reportFileFor(const SplitOptions& options, std::string_view besideFolder) {
  std::string file = trimBlanks(options.reportFile);
  if (file.empty()) return defaultReportFile(options, besideFolder);
  if (fileNameStart(file) == 0) {
    const std::string folder =
        options.naming.outputBesidePhoto ? std::string(besideFolder) : trimBlanks(options.naming.outputFolder);
    file = joinFolder(folder, file);
  }
  if (file.find('.', fileNameStart(file)) == std::string::npos) file += ".csv";
  return file;
}

Status writeReportFile(const std::string& path, const std::vector<std::string>& lines) {
  if (!ensureParentFolder(path)) {
    std::string text = fmt::format("{}: the folder for the table of clipping depths cannot be made", path);
    host::showMessage(text);
    return Status::error(std::move(text));
  }
  if (Status guard = checkReportReplaceable(path); !guard) {
    host::showMessage(guard.message());
    return guard;
  }
  AtomicFile file;
  Status s = file.open(path);
  if (s) {
    for (const std::string& line : lines) file.writeLine(line);
    s = file.commit();
  }
  if (!s) {
    std::string text = fmt::format("{}: the table of clipping depths was not written ({})", path, s.message());
    host::showMessage(text);
    return Status::error(std::move(text));
  }
  return Status::ok();
}

Status finishRun(const std::vector<PhotoOutcome>& outcomes, const SplitOptions& options) {
  for (const PhotoOutcome& o : outcomes)
    for (const std::string& m : o.messages) host::showMessage(m);
  if (!options.writeReport) return Status::ok();
  const std::string path = trimBlanks(options.reportFile);
  if (path.empty()) return Status::ok();
  return writeReportFile(path, reportLines(outcomes));
}

RunTotals totalsOf(const std::vector<PhotoOutcome>& outcomes) {
  RunTotals t;
  for (const PhotoOutcome& o : outcomes) {
    ++t.photos;
    if (o.status != 0) ++t.photosFailed;
    t.rows += static_cast<int>(o.rows.size());
    t.rowsWritten += o.rowsWritten();
    t.rowsFailed += o.rowsFailed();
  }
  return t;
}

int processSession(CoreSession& session, const SplitOptions& options, std::vector<PhotoOutcome>* outcomes) {
  if (options.progress) options.progress(0, 0, kProcessingImages);
  std::vector<PhotoJob> jobs;
  if (!prepareRun(session, options, jobs)) return 1;
  // Rows that would share a file are named, so the user knows which were lost.
  for (const std::string& m : planOutputs(jobs, options, false).collisions) host::showMessage(m);
  std::vector<PhotoOutcome> results;
  results.reserve(jobs.size());
  for (const PhotoJob& job : jobs) results.push_back(splitPhoto(job, options));
  const Status report = finishRun(results, options);
  const RunTotals totals = totalsOf(results);
  if (outcomes) *outcomes = std::move(results);
  return report && totals.rowsFailed == 0 ? 0 : 1;
}

SplitOptions& toolSplitOptions() {
  static SplitOptions options;
  return options;
}

}  // namespace subsurf::split
