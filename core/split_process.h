// Splitting: every core rectangle of every core image is cut out of its
// photograph and written as a row image named after the row's depth interval,
// and the table of clipping depths lists them.
//
// The work is split in three so that a program may cut several photographs at
// once without sharing anything between threads:
//   1. prepareRun() (on the session's thread) checks the session, asks about
//      missing depths and rectangles, and copies what each photograph needs
//      into a PhotoJob, a plain value that no longer refers to the session;
//   2. splitPhoto() cuts one photograph: a function of its job and the options
//      alone, returning the files written, the report lines and the messages;
//      any number of them may run at the same time on different jobs;
//   3. finishRun() shows the messages and writes the report in session order,
//      so the outcome is the same however many photographs ran at once.
// The library itself starts no threads; processSession() runs the three steps
// one photograph after another.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/split_geometry.h"
#include "core/split_naming.h"
#include "core/split_report.h"
#include "host/image/photo.h"
#include "host/image/projective.h"
#include "host/status.h"

namespace subsurf {
class CoreSession;
struct CoreImage;
}  // namespace subsurf

namespace subsurf::split {

// The exact texts a user sees from a run.
inline constexpr std::string_view kProcessingImages = "Processing images...";
inline constexpr std::string_view kProcessingImage = "Processing image: ";
inline constexpr std::string_view kNoImagesFound = "No images found";
inline constexpr std::string_view kCoreTableNotComplete = "Core table not complete for one or more rectangles";
inline constexpr std::string_view kProblemsWritingImages = "Problems writing images ";
inline constexpr std::string_view kAskDeriveDepthsAndRectangles =
    "Some depth ranges and rectangles are missing. Do you want to derive this information from the first image?";
inline constexpr std::string_view kAskDeriveDepths =
    "Some depth ranges are missing. Do you want to derive this information from the first image?";

// What the error count of a photograph grows by: a row without depths counts
// 100, a row that could not be cut or written the failing routine's status (1).
inline constexpr int kMissingDepthPenalty = 100;

// Called before each row is cut: the photograph's place in the session (from
// 1), the row's number (from 1) and the progress text "Processing image:
// <stub>: Core <k>". May be called from several threads at once when
// photographs are cut in parallel.
using ProgressCallback = std::function<void(int place, int row, std::string_view text)>;

struct SplitOptions {
  NamingOptions naming;         // folder, stub, precision and the session's format (bmp or cgm)
  bool formatChosen = false;    // naming.format was chosen for this run and beats each image's "CGM"
  bool shortenRows = true;      // cut rows holding less than a core length to the core present
  bool writeReport = false;     // write the table of clipping depths
  std::string reportFile;       // where (see defaultReportFile)
  int reportStyle = kReportStyleFull;
  std::string reportUnit;       // depth unit of names and report; blank: the images' own
  float displayReduction = 1.0f;  // for images that recorded none
  image::WriteOptions writeOptions;
  ProgressCallback progress;
};

// What one row needs: its outline (photo-window pixel coordinates) and depths
// (nulls when unset), already in the unit the run names and reports in.
struct RowJob {
  int number = 0;  // k, from 1, in rectangle list order
  std::vector<PixelPoint> vertices;
  // Four free corners (core/free_corners.h), clockwise from the top-left: the
  // row is straightened rather than cut as its bounding box.
  bool freeCorners = false;
  float top = 0.0f;
  float base = 0.0f;
  std::string outputName;  // set by the run's output plan; empty: from the naming options
};

// A copy of what a photograph's split needs.
struct PhotoJob {
  int place = 0;      // in the session, from 1
  int imageId = 0;
  std::string sourceFile;  // as the session holds it (shown in the report)
  std::string photoPath;   // where the photograph is found on this machine
  // The photograph the rows, the preview and the manifest are named after:
  // photoPath, or for a straightened copy its original (see namingPhoto).
  std::string namingPath;
  int uvSetting = 0;
  int horizontalSetting = 0;
  int reverseSetting = 0;
  int shownWidth = 0;   // the photograph's size as displayed when the rectangles were drawn
  int shownHeight = 0;
  float coreLength = 0.0f;
  float angleDegrees = 0.0f;
  float displayReduction = 1.0f;
  RowFormat format = RowFormat::Bmp;
  std::vector<RowJob> rows;
};

enum class RowResult {
  Written,      // the row image exists under its name
  NoDepths,     // top or base unset: skipped
  NoCore,       // base not below top, or a rectangle without area: skipped
  Outside,      // the rectangle lies wholly outside the photograph
  CutFailed,    // the row could not be cut or written
  NotReached,   // the photograph could not be read
};

struct RowOutcome {
  int number = 0;
  RowResult result = RowResult::NotReached;
  std::string outputName;  // the name it has (or would have had)
  std::string problem;     // why it was not written
  image::PixelBox cut;     // the part of the photograph cut, before turning
  int quarterTurns = 0;
  // The row image's size as written (0 until written).
  int width = 0;
  int height = 0;
};

struct PhotoOutcome {
  int place = 0;
  std::string sourceFile;
  int status = 0;      // 1 when the photograph could not be read (none of its rows written)
  int errorCount = 0;  // 100 per row without depths, plus the status of each failed cut
  std::vector<std::string> reportLines;  // "Source Image, ..." and one line per row written
  std::vector<RowOutcome> rows;
  std::vector<std::string> messages;     // to be shown, in order
  int rowsWritten() const;
  int rowsFailed() const;  // every row not written
};

// The photograph's path on this machine: the session's own text when such a
// file exists; otherwise, for sessions made on Windows, the same with "\"
// read as "/" when that one exists; else the text as given.
std::string locatePhoto(std::string_view sourceFile);

// The photograph an image's row images are named after, given where its
// photograph is found: for a straightened copy ("T1-straight.jpg") the
// original beside it ("T1.jpg"), so that the rows of a tray photographed at
// an angle get the names they would have had if it had been photographed
// square on; otherwise photoPath itself.
std::string namingPhoto(const CoreImage& image, const std::string& photoPath);

// The format an image's rows are written in: the run's chosen format, else the
// image's own "CGM" setting when its "Override" is 1, else the session's.
RowFormat formatForImage(const CoreImage& image, const SplitOptions& options);

// The job of one image at `place`: every rectangle with its depths.
PhotoJob makePhotoJob(const CoreImage& image, int place, const SplitOptions& options);

// The name a row is written under: its planned name, else the one the
// naming options give.
std::string plannedRowName(const PhotoJob& job, const RowJob& row, const SplitOptions& options);

// Where one row is cut from a photograph of photoWidth x photoHeight pixels:
// the box in the photograph's pixels (shortened to the core present and
// scaled from the displayed picture, not yet clipped), the way it is turned,
// and its output name. Rows without depths or with a base not below the top
// have no plan (usable false).
//
// A free-cornered row is straightened: its quadrilateral is mapped onto an
// upright rectangle as wide as the longer of its sides along the top and
// bottom and as high as the longer of the other two (in the photograph's
// pixels), shortened there to the core present and turned like any row. The
// plan then gives the point of the photograph under each corner of the row
// image (top-left, top-right, bottom-right, bottom-left) and the image's
// size; box is the part of the photograph under the quadrilateral.
struct RowPlan {
  bool usable = false;
  RowBox drawn;          // bounding box of the outline as drawn
  RowBox box;            // in the photograph's pixels
  RowOrientation orientation;
  float fraction = 1.0f;
  std::string outputName;
  bool straightened = false;
  std::array<image::PlanePoint, 4> sourceCorners{};
  int width = 0;   // of the straightened row image, after turning
  int height = 0;
};
RowPlan planRow(const PhotoJob& job, const RowJob& row, const SplitOptions& options, int photoWidth,
                int photoHeight);

// The row image of a straightened row (plan.straightened), `scale` times its
// size (at least a pixel each way): the part of the photograph (turned by
// angleDegrees) under the quadrilateral, mapped onto the upright rectangle
// and sampled bilinearly; parts off the photograph are black.
Status straightenRow(const image::Photo& photo, const RowPlan& plan, double angleDegrees, double scale,
                     image::Raster& out);

// Cuts one photograph (see the file comment). Never touches the session.
PhotoOutcome splitPhoto(const PhotoJob& job, const SplitOptions& options);

// Images that take part in a run ("Use" not 0), in session order with places.
struct RunImage {
  int place = 0;
  CoreImage* image = nullptr;
};
std::vector<RunImage> imagesToProcess(CoreSession& session);

// Checks the session before a run: shows "No images found" (and returns an
// error) when there is nothing to process; when some images lack depths (or
// rectangles), asks whether they should be derived from the first image and,
// on yes, carries the first image's depths forward and lays its rectangles on
// the images that have none. Then makes the jobs.
Status prepareRun(CoreSession& session, const SplitOptions& options, std::vector<PhotoJob>& jobs);

// The table of clipping depths for outcomes in session order, as its lines.
std::vector<std::string> reportLines(const std::vector<PhotoOutcome>& outcomes);

// Writes the lines to path, complete or not at all (the folder is made when
// missing). Failures are shown, naming the file.
Status writeReportFile(const std::string& path, const std::vector<std::string>& lines);

// The report file a run writes when none is named: <folder>/<root>.csv, the
// root being the naming root name when set, else "clipping_depths", and the
// folder the output folder (or `besideFolder` when rows go beside the photos).
std::string defaultReportFile(const SplitOptions& options, std::string_view besideFolder);

// The report file of a run: the named one (options.reportFile, a bare name
// being put in the output folder, or `besideFolder` when rows go beside the
// photos, and given ".csv" when it has no suffix), else defaultReportFile.
std::string reportFileFor(const SplitOptions& options, std::string_view besideFolder);

// Shows each outcome's messages in order and, when the report is on, writes
// it (complete or not at all). Returns the report's failure, if any.
Status finishRun(const std::vector<PhotoOutcome>& outcomes, const SplitOptions& options);

// Totals of a run, for summaries.
struct RunTotals {
  int photos = 0;
  int photosFailed = 0;
  int rows = 0;
  int rowsWritten = 0;
  int rowsFailed = 0;
};
RunTotals totalsOf(const std::vector<PhotoOutcome>& outcomes);

// The whole run, one photograph after another: "Processing images...", then
// prepareRun, splitPhoto for each job, finishRun. Returns 0 when every row
// was written, 1 otherwise (or when there was nothing to do).
int processSession(CoreSession& session, const SplitOptions& options,
                   std::vector<PhotoOutcome>* outcomes = nullptr);

// The tool's output options behind the exported routines (set by the outputs
// dialog and the session file).
SplitOptions& toolSplitOptions();

}  // namespace subsurf::split
