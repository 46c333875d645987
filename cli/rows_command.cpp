#include "rows_command.h"

#include <fmt/format.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "cli_support.h"
#include "core/core_session.h"
#include "core/free_corners.h"
#include "core/image_settings.h"
#include "core/row_layout.h"
#include "core/row_rectangles.h"
#include "core/session_files.h"
#include "host/image/photo.h"
#include "host/messages.h"
#include "host/nulls.h"

namespace subsurf::cli {
namespace {

struct RowsOptions {
  std::string session;
  int image = 0;
  std::vector<std::string> boxes;
  std::string from;
  int row = 0;          // --row: change this one row only
  std::string corners;  // --corners x1,y1,...,x4,y4
  bool square = false;  // --square
  bool checked = false;  // --checked: a person accepts the rows as they are
};

int fail(const std::string& text) {
  host::showMessage(text);
  return kExitBadInput;
}

std::string depthText(float v) { return isNull(v) ? "-" : fmt::format("{:.2f}", v); }

// Reads the session and finds the image and its photograph's size.
int openImage(const RowsOptions& o, CoreSession& session, SessionOptions& options, CoreImage*& image,
              image::PixelSize& size) {
  if (!readSession(session, options, o.session)) return kExitBadInput;
  image = session.imageAt(o.image);
  if (!image)
    return fail(fmt::format("Image {} is not in {} (it holds {} image{})", o.image, o.session, session.imageCount(),
                            session.imageCount() == 1 ? "" : "s"));
  if (!image::readPixelSize(image->sourceFile(), size)) return kExitBadInput;  // "Error loading: ..." shown
  return kExitOk;
}

// --row K --corners / --square: one row's outline changes, the others stay.
int runOneRow(const RowsOptions& o) {
  FreeCorners corners;
  std::string problem;
  if (!o.square && !parseCorners(o.corners, corners, problem)) return fail("--corners " + problem);
  CoreSession session;
  SessionOptions options;
  CoreImage* image = nullptr;
  image::PixelSize size;
  if (int status = openImage(o, session, options, image, size); status != kExitOk) return status;
  const int count = CoreSession::rectangleCount(*image);
  CoreRectangle* rectangle = o.row >= 1 ? session.rectangleAt(*image, o.row) : nullptr;
  if (!rectangle)
    return fail(fmt::format("Image {} has {} row{}; there is no row {}", o.image, count, count == 1 ? "" : "s", o.row));
  // The other rows are in the coordinates of the photo as it was shown when
  // they were drawn; corners are given in the photo's own pixels.
  const int shownWidth = image->intValue(kIntPixelWidth), shownHeight = image->intValue(kIntPixelHeight);
  const bool reduced = !isNull(image->displayReduction) && image->displayReduction > 0.0f &&
                       image->displayReduction != 1.0f;
  if (!o.square && ((!isNull(shownWidth) && shownWidth > 0 && (shownWidth != size.width || shownHeight != size.height)) ||
                    reduced))
    return fail(fmt::format("The rows of image {} were drawn on the photo shown at another size; give all its rows "
                            "with --set or --from",
                            o.image));
  if (o.square) {
    squareRectangle(session, *rectangle);
  } else {
    problem = cornersProblem(corners, o.row, size.width, size.height);
    if (!problem.empty()) return fail(problem);
    setFreeCorners(session, *rectangle, corners);
  }
  markRowsChecked(*image);
  image->dirty = 1;
  if (!saveSession(session, options, o.session)) return kExitBadInput;
  if (o.square) {
    const Polygon& p = rectangle->polygon;
    std::printf("%s: image %d row %d is an upright rectangle %d,%d,%d,%d\n", o.session.c_str(), o.image, o.row, p.px[0],
                p.py[0], p.px[2] - p.px[0], p.py[2] - p.py[0]);
  } else {
    std::printf("%s: image %d row %d has free corners %s\n", o.session.c_str(), o.image, o.row,
                cornersText(cornersOf(rectangle->polygon)).c_str());
  }
  return kExitOk;
}

// --checked alone: the rows stay as they are, and the finder's doubt is lifted.
int runChecked(const RowsOptions& o) {
  CoreSession session;
  SessionOptions options;
  CoreImage* image = nullptr;
  image::PixelSize size;
  if (int status = openImage(o, session, options, image, size); status != kExitOk) return status;
  const std::string before = rowVerdict(*image);
  markRowsChecked(*image);
  image->dirty = 1;
  if (!saveSession(session, options, o.session)) return kExitBadInput;
  std::printf("%s: the rows of image %d are marked as checked%s\n", o.session.c_str(), o.image,
              before.empty() ? "" : fmt::format(" (were: {})", before).c_str());
  return kExitOk;
}

int runRows(const RowsOptions& o) {
  if (o.row != 0) return runOneRow(o);
  if (o.boxes.empty() && o.from.empty()) return runChecked(o);
  std::vector<PixelBox> boxes;
  for (const std::string& text : o.boxes) {
    PixelBox box;
    std::string problem;
    if (!parseBox(text, box, problem)) return fail("--set " + problem);
    boxes.push_back(box);
  }
  if (!o.from.empty() && !readBoxes(o.from, boxes)) return kExitBadInput;

  CoreSession session;
  SessionOptions options;
  CoreImage* image = nullptr;
  image::PixelSize size;
  if (int status = openImage(o, session, options, image, size); status != kExitOk) return status;

  RowRectangles rows(session);
  if (!rows.set(*image, boxes, size.width, size.height)) return kExitBadInput;
  markRowsChecked(*image);
  if (!saveSession(session, options, o.session)) return kExitBadInput;

  std::printf("%s: image %d has %zu row%s\n", o.session.c_str(), o.image, boxes.size(), boxes.size() == 1 ? "" : "s");
  if (rows.relaidRows())
    std::printf("row depths laid out again as %zu equal parts of %s - %s\n", boxes.size(),
                depthText(image->realValue(kRealTop)).c_str(), depthText(image->realValue(kRealBase)).c_str());
  int k = 0;
  for (const RowDepths& d : session.rowDepths(*image)) {
    std::printf("  row %2d: %-20s %s - %s\n", k + 1, boxText(boxes[k]).c_str(), depthText(d.top).c_str(),
                depthText(d.base).c_str());
    ++k;
  }
  return kExitOk;
}

}  // namespace

void addRowsCommand(CLI::App& app, int& exitCode) {
  auto o = std::make_shared<RowsOptions>();
  CLI::App* rows = app.add_subcommand("rows", "Set one photograph's row rectangles (pixel boxes x,y,w,h, or four free corners) and save");
  rows->add_option("session", o->session, "Session file")->required();
  rows->add_option("--image", o->image, "Place of the image (from 1)")->required();
  auto* set = rows->add_option("--set", o->boxes, "A row: x,y,w,h in pixels of the upright photo (repeat, top row first)")
                  ->allow_extra_args(false);
  auto* from = rows->add_option("--from", o->from,
                                "Read the rows from a .json or .csv file of boxes (or of free corners x1,y1,...,x4,y4)");
  set->excludes(from);
  auto* row = rows->add_option("--row", o->row, "Change only this row (from 1), with --corners or --square");
  auto* corners = rows->add_option("--corners", o->corners,
                                   "The row's four free corners x1,y1,x2,y2,x3,y3,x4,y4 in pixels of the upright photo "
                                   "(a row seen at an angle; the split straightens it)");
  auto* square = rows->add_flag("--square", o->square, "Make the row an upright rectangle again (the box round its corners)");
  rows->add_flag("--checked", o->checked,
                 "Accept the rows as they are after looking at them: rows the finder was unsure of are cut by split "
                 "only once a person has placed or accepted them (any change by this command counts too)");
  row->excludes(set)->excludes(from);
  corners->needs(row)->excludes(square);
  square->needs(row);
  rows->callback([o, &exitCode] {
    if (o->row != 0 && o->corners.empty() && !o->square) {
      host::showMessage("give the row's outline with --corners x1,y1,x2,y2,x3,y3,x4,y4 or --square");
      exitCode = kExitBadInput;
      return;
    }
    if (o->row == 0 && o->boxes.empty() && o->from.empty() && !o->checked) {
      host::showMessage("give the rows with --set x,y,w,h or --from FILE (or accept them with --checked)");
      exitCode = kExitBadInput;
      return;
    }
    exitCode = runRows(*o);
  });
}

}  // namespace subsurf::cli
