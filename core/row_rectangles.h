// Giving a photograph its row rectangles from outside: boxes typed on the
// command line, found by another program (a detector writing JSON or CSV) or
// sent by the editor page.
//
// A box is x, y, width and height in pixels of the upright photograph, from
// its top-left corner. Each becomes a four-cornered outline running clockwise
// from the box's top-left corner, the order every other routine expects, so
// that corner dragging and the split treat it like a drawn rectangle.
//
// Boxes are checked before anything changes: every box must have a width and
// a height and lie on the photograph, and a photo holds at most 100 rows. The
// messages name the box (by its number from 1, and its values) and, for boxes
// read from a file, the file and line.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/core_session.h"
#include "core/free_corners.h"
#include "host/status.h"

namespace subsurf {

// A row given from outside: an upright box, or four free corners (a row of a
// tray photographed at an angle), in which case x, y, width and height are
// the box round the corners.
struct PixelBox {
  PixelBox() = default;
  PixelBox(int left, int top, int w, int h) : x(left), y(top), width(w), height(h) {}
  int x = 0, y = 0, width = 0, height = 0;
  std::optional<FreeCorners> corners;
};

// The row as four free corners (the box round them as x, y, width, height).
PixelBox boxOfCorners(const FreeCorners& corners);

// "x,y,w,h" (or the corners "x1,y1,...,x4,y4") as text, for messages.
std::string boxText(const PixelBox& box);

// The fields of a comma-separated text typed on the command line (no quoting).
std::vector<std::string_view> commaFields(std::string_view text);

// Reads "x,y,w,h" (blanks allowed around the numbers). Numbers with a
// fraction are rounded to the nearest pixel. On failure `problem` says why
// and false is returned.
bool parseBox(std::string_view text, PixelBox& box, std::string& problem);

// Reads boxes from a file another program wrote:
//   *.json  an array whose elements are [x, y, w, h] arrays or objects with
//           "x", "y", "width" and "height" (also "w" and "h"); an object
//           holding such an array under "rows" or "rectangles" also reads;
//           a row with free corners is [x1, y1, x2, y2, x3, y3, x4, y4] or
//           {"corners": [[x1, y1], [x2, y2], [x3, y3], [x4, y4]]};
//   *.csv   one box per line "x,y,w,h", or corners "x1,y1,x2,y2,x3,y3,x4,y4";
//           blank lines, lines starting with "#" and a first line of names
//           (starting "x," or "x1,") are skipped.
// Failures name the file and the line or element at fault and are shown
// (host::showMessage); `boxes` is left alone then.
Status readBoxes(const std::string& path, std::vector<PixelBox>& boxes);

// Why a box cannot be a row of a width x height photograph ("" when it can).
// `number` counts the boxes from 1 for the message. Corners are checked as
// cornersProblem does.
std::string boxProblem(const PixelBox& box, int number, int width, int height);

// Replaces the image's rectangles with the boxes, drawn on a photograph of
// width x height pixels. Checked first (see above); on a failure the message
// is shown and nothing changes. Afterwards "Core Number" is the number of
// rows (with "Warning - more than 10 cores in tray!" when there are more than
// ten and the tray is not long core laid out in one picture), and when the
// number of rows changed on a tray with both depths set, the row depths are
// laid out again as equal parts of the tray (relaidRows() says so).
class RowRectangles {
 public:
  explicit RowRectangles(CoreSession& session) : session_(session) {}
  Status set(CoreImage& image, const std::vector<PixelBox>& boxes, int width, int height);
  bool relaidRows() const { return relaid_; }

 private:
  CoreSession& session_;
  bool relaid_ = false;
};

// Lays the rows of one tray out as equal parts of its depth interval: "Core
// Length" = (base - top) / "Core Number", "Tray Length" = base - top, row r
// from top + (r-1) * core length, the last ending at the base. Returns 1
// (nothing changed) while top, base or the core number is unset or top is not
// above base.
int layOutTrayRows(CoreImage& image);

}  // namespace subsurf
