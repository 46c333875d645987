// Where a core row lies in its photograph, and how it is turned so that depth
// increases from left to right in the row image.
//
// A rectangle is drawn round each core row on the photograph as it was shown
// in the photo window. Before the row is cut:
//   * the rectangle's outline is reduced to its bounding box, the box's edges
//     lying on pixel corners (a box from x = 10 to x = 20 holds ten columns);
//   * the row's axis (along x or along y) and which end holds the shallower
//     core are decided from the image's "Horizontal" and "Reverse" settings;
//   * a row holding less core than a full core length is shortened to the part
//     that holds core, measured from its shallow end;
//   * the box is scaled from the coordinates of the displayed picture to those
//     of the photograph file.
// The reasons for each choice are in docs/split-orientation.md.
#pragma once

#include <vector>

#include "host/image/raster.h"

namespace subsurf::split {

struct PixelPoint {
  int x = 0;
  int y = 0;
};

// Coordinates are held within this distance of 0 (far beyond any photograph),
// so that a session with absurd vertices gives a row outside the photograph
// rather than an overflow in the box arithmetic.
inline constexpr int kCoordinateLimit = 1 << 28;

// Half-open box [left, right) x [top, bottom) in pixel-corner coordinates.
struct RowBox {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  int width() const { return right - left; }
  int height() const { return bottom - top; }
  bool empty() const { return right <= left || bottom <= top; }
  image::PixelBox pixelBox() const { return {left, top, right - left, bottom - top}; }
  bool operator==(const RowBox&) const = default;
};

// The bounding box of a rectangle's vertices (each held within
// kCoordinateLimit); empty for fewer than two vertices.
RowBox boundingBox(const std::vector<PixelPoint>& vertices);

// Which way the core runs in the photograph.
enum class RowAxis { AlongX, AlongY };

struct RowOrientation {
  RowAxis axis = RowAxis::AlongX;
  // False: depth increases to the right (AlongX) or downwards (AlongY), the
  // way trays are laid out and photographed. True: the opposite way.
  bool reversed = false;

  // Clockwise quarter turns that bring the shallow end to the left of the row
  // image: 0, 2 (half turn), 3 (a quarter turn anticlockwise) or 1.
  int quarterTurns() const;
  bool operator==(const RowOrientation&) const = default;
};

// "Horizontal" setting 1: the rows run along x; 0: along y; any other value
// (unset): along the longer side of the rectangle, x when it is square.
// "Reverse" setting 1: depth runs right to left (or bottom to top).
RowOrientation decideOrientation(int horizontalSetting, int reverseSetting, const RowBox& box);

// The fraction of the rectangle that holds core: (base - top) / core length
// when shortening is on, else 1; 1 when the core length is unset or not
// positive. Above 1 for a row spanning more than a core length, whose cut then
// reaches past its rectangle (the caller clips it to the photograph). May be 0
// or negative for a row whose base is not below its top, which the caller
// rejects.
float coreFraction(float top, float base, float coreLength, bool shortenRows);

// The box cut to the part holding core: along the row's axis, from its shallow
// end s to round((e - s) * fraction + s) where e is the deep end (beyond e for
// a fraction above 1), held within kCoordinateLimit.
RowBox shortenRow(const RowBox& box, const RowOrientation& orientation, float fraction);

// Factors from the coordinates in which the rectangles were drawn to the
// photograph file's pixels.
struct SizeFactors {
  float x = 1.0f;
  float y = 1.0f;
  bool operator==(const SizeFactors&) const = default;
};

// The photograph file is fileWidth x fileHeight ("npixx", "npixy"); it was
// shown at shownWidth x shownHeight when the rectangles were drawn (0 or less:
// not recorded, taken as the file's own proportions) reduced by the photo
// window's display reduction factor (0 or less: none).
// With rFile = fileHeight / fileWidth and rShown = shownHeight / shownWidth:
// when rShown <= rFile the y factor is rFile / rShown, else the x factor is
// rShown / rFile; a factor is used only when the ratio it divides by truncates
// to 1 or more, and is 1 otherwise. Both are divided by the reduction factor.
SizeFactors sizeFactors(int fileWidth, int fileHeight, int shownWidth, int shownHeight,
                        float reductionFactor);

// The box with x coordinates multiplied by factors.x and y by factors.y, each
// rounded to the nearest pixel.
RowBox scaleBox(const RowBox& box, const SizeFactors& factors);

}  // namespace subsurf::split
