// Straightening a tray photographed at an angle.
//
// A tray photographed from an angle shows as a quadrilateral: its far side
// shorter, its sides leaning in. Given its four corners, the tray is mapped
// onto an upright rectangle (as wide as its longer long side, as high as its
// longer short side) and written as a copy of the photograph beside the
// original, "STEM-straight.jpg" for "STEM.jpg", in the original's format.
// The image then points at the copy, so rows, templates, equal rows, row
// finding and the split all work on the straight tray unchanged. The
// original is never written to.
//
// The image remembers where its copy came from: the original's file name (in
// the file-name setting kTrayOriginalFile; the copy always sits beside it)
// and the corners (text settings kTrayCornersText and the one after it,
// "x1,y1,x2,y2" and "x3,y3,x4,y4"). These are ordinary image settings, which
// older readers carry along without knowing them. Straightening such an image
// again starts from the original, with corners in the original's pixels, and
// may replace the copy. A JPEG copy also says whose copy it is (EXIF
// "ImageDescription"), so a new session may replace it too; any other file
// at the copy's name is left alone.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "core/core_session.h"
#include "host/image/projective.h"
#include "host/status.h"

namespace subsurf {

// Corners in pixels of the photograph (origin at its top-left corner, pixel
// edges on whole numbers): the tray's top-left, top-right, bottom-right and
// bottom-left once ordered.
using TrayCorners = std::array<image::PlanePoint, 4>;

inline constexpr int kTrayOriginalFile = 10;  // file-name setting ("file10")
inline constexpr int kTrayCornersText = 7;    // text settings 7 and 8 ("text7", "text8")

// Reads "x1,y1,x2,y2,x3,y3,x4,y4". Messages (returned, not shown):
//   "--corners needs 8 numbers (x1,y1,...,x4,y4), found 6"
//   "--corners: \"12a\" is not a number"
Status parseTrayCorners(std::string_view text, TrayCorners& out);

// Checks corners given in order round the tray (either way, from any corner)
// against a photograph of width x height pixels, and orders them clockwise
// from the one nearest the photograph's top-left corner. Messages:
//   "--corners: corner 3 (5000,20) is outside the photo (4000 x 3000 pixels)"
//   "--corners: corners 1, 2 and 3 lie on one line"
//   "--corners: the sides of the tray cross; give the corners in order round the tray"
//   "--corners: the outline is not convex at corner 2 (410,300)"
Status orderTrayCorners(TrayCorners& corners, int width, int height);

// "x1,y1 x2,y2 x3,y3 x4,y4" with one decimal.
std::string cornersText(const TrayCorners& corners);

// The copy's path for an original: "dir/STEM-straight.EXT".
std::string straightenedCopyPath(std::string_view original);
// What a JPEG copy says of itself (its EXIF "ImageDescription"):
// "subsurf straightened copy of STEM.jpg".
std::string straightenedCopyDescription(std::string_view original);

// Where an image's photograph came from, when it is a straightened copy.
struct TrayOrigin {
  bool straightened = false;
  std::string original;  // path, in the copy's folder
  TrayCorners corners{};
};
TrayOrigin trayOrigin(const CoreImage& image);

struct Straightened {
  std::string original;  // the photograph read
  std::string copy;      // the photograph written
  int width = 0;
  int height = 0;
  int rectanglesRemoved = 0;
};

// Straightens image's tray (corners in the original photograph's pixels,
// checked and ordered here), writes the copy and points the image at it.
// The image's rectangles are removed (they belong to the picture as it was),
// its turn ("Angle") is cleared and its displayed size becomes the copy's.
// Failures are shown and returned; the session is then unchanged.
Status straightenImage(CoreSession& session, CoreImage& image, TrayCorners corners, Straightened& out);

}  // namespace subsurf
