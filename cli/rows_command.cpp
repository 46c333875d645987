#include "rows_command.h"

#include <fmt/format.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "cli_support.h"
#include "core/core_session.h"
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
};

int fail(const std::string& text) {
  host::showMessage(text);
  return kExitBadInput;
}

std::string depthText(float v) { return isNull(v) ? "-" : fmt::format("{:.2f}", v); }

int runRows(const RowsOptions& o) {
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
  if (!readSession(session, options, o.session)) return kExitBadInput;
  CoreImage* image = session.imageAt(o.image);
  if (!image)
    return fail(fmt::format("Image {} is not in {} (it holds {} image{})", o.image, o.session, session.imageCount(),
                            session.imageCount() == 1 ? "" : "s"));
  image::PixelSize size;
  if (!image::readPixelSize(image->sourceFile(), size)) return kExitBadInput;  // "Error loading: ..." shown

  RowRectangles rows(session);
  if (!rows.set(*image, boxes, size.width, size.height)) return kExitBadInput;
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
  CLI::App* rows = app.add_subcommand("rows", "Set one photograph's row rectangles (pixel boxes x,y,w,h) and save");
  rows->add_option("session", o->session, "Session file")->required();
  rows->add_option("--image", o->image, "Place of the image (from 1)")->required();
  auto* set = rows->add_option("--set", o->boxes, "A row: x,y,w,h in pixels of the upright photo (repeat, top row first)")
                  ->allow_extra_args(false);
  auto* from = rows->add_option("--from", o->from, "Read the rows from a .json or .csv file of boxes");
  set->excludes(from);
  rows->callback([o, &exitCode] {
    if (o->boxes.empty() && o->from.empty()) {
      host::showMessage("give the rows with --set x,y,w,h or --from FILE");
      exitCode = kExitBadInput;
      return;
    }
    exitCode = runRows(*o);
  });
}

}  // namespace subsurf::cli
