#include "core/split_geometry.h"

#include <algorithm>
#include <cmath>

namespace subsurf::split {

namespace {
// A coordinate held within kCoordinateLimit of 0 (see the header).
int heldCoordinate(float v) {
  const float limit = static_cast<float>(kCoordinateLimit);
  if (!(v > -limit)) return -kCoordinateLimit;  // also a NaN
  if (!(v < limit)) return kCoordinateLimit;
  return static_cast<int>(std::lround(v));
}
int heldCoordinate(int v) { return std::clamp(v, -kCoordinateLimit, kCoordinateLimit); }
}  // namespace

RowBox boundingBox(const std::vector<PixelPoint>& vertices) {
  if (vertices.size() < 2) return {};
  const int x0 = heldCoordinate(vertices[0].x), y0 = heldCoordinate(vertices[0].y);
  RowBox box{x0, y0, x0, y0};
  for (const PixelPoint& p : vertices) {
    const int x = heldCoordinate(p.x), y = heldCoordinate(p.y);
    box.left = std::min(box.left, x);
    box.right = std::max(box.right, x);
    box.top = std::min(box.top, y);
    box.bottom = std::max(box.bottom, y);
  }
  return box;
}

int RowOrientation::quarterTurns() const {
  if (axis == RowAxis::AlongX) return reversed ? 2 : 0;
  // A column whose shallow end is at the top: a quarter turn anticlockwise
  // brings the top to the left. Shallow end at the bottom: clockwise.
  return reversed ? 1 : 3;
}

RowOrientation decideOrientation(int horizontalSetting, int reverseSetting, const RowBox& box) {
  RowOrientation o;
  if (horizontalSetting == 1) o.axis = RowAxis::AlongX;
  else if (horizontalSetting == 0) o.axis = RowAxis::AlongY;
  else o.axis = box.height() > box.width() ? RowAxis::AlongY : RowAxis::AlongX;
  o.reversed = reverseSetting == 1;
  return o;
}

float coreFraction(float top, float base, float coreLength, bool shortenRows) {
  if (!shortenRows) return 1.0f;
  if (!(coreLength > 0.0f) || !std::isfinite(coreLength)) return 1.0f;
  const float f = (base - top) / coreLength;
  if (!std::isfinite(f)) return 1.0f;
  return f;
}

namespace {
// round((e - s) * f + s) in single precision, as the depths themselves are held.
int shortenedEnd(int s, int e, float f) {
  return heldCoordinate(static_cast<float>(e - s) * f + static_cast<float>(s));
}
}  // namespace

RowBox shortenRow(const RowBox& box, const RowOrientation& orientation, float fraction) {
  if (fraction == 1.0f) return box;
  RowBox out = box;
  if (orientation.axis == RowAxis::AlongX) {
    if (orientation.reversed) out.left = shortenedEnd(box.right, box.left, fraction);
    else out.right = shortenedEnd(box.left, box.right, fraction);
  } else {
    if (orientation.reversed) out.top = shortenedEnd(box.bottom, box.top, fraction);
    else out.bottom = shortenedEnd(box.top, box.bottom, fraction);
  }
  return out;
}

SizeFactors sizeFactors(int fileWidth, int fileHeight, int shownWidth, int shownHeight,
                        float reductionFactor) {
  SizeFactors f;
  if (fileWidth >= 1 && fileHeight >= 1) {
    const float rFile = static_cast<float>(fileHeight) / static_cast<float>(fileWidth);
    const float rShown = (shownWidth >= 1 && shownHeight >= 1)
                             ? static_cast<float>(shownHeight) / static_cast<float>(shownWidth)
                             : rFile;
    // The truncation test below looks odd (a landscape picture, ratio below 1,
    // never gets a factor) but rectangles in existing sessions were drawn and
    // checked under exactly this rule, so it stays.
    if (rShown <= rFile) {
      f.y = std::trunc(rShown) >= 1.0f ? rFile / rShown : 1.0f;
    } else {
      f.x = std::trunc(rFile) >= 1.0f ? rShown / rFile : 1.0f;
    }
  }
  if (reductionFactor > 0.0f && std::isfinite(reductionFactor)) {
    f.x /= reductionFactor;
    f.y /= reductionFactor;
  }
  return f;
}

RowBox scaleBox(const RowBox& box, const SizeFactors& factors) {
  auto sx = [&](int v) { return heldCoordinate(static_cast<float>(v) * factors.x); };
  auto sy = [&](int v) { return heldCoordinate(static_cast<float>(v) * factors.y); };
  return {sx(box.left), sy(box.top), sx(box.right), sy(box.bottom)};
}

}  // namespace subsurf::split
