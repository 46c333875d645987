#include "core/layout_checks.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace subsurf::split {
namespace {

// Rows lying side by side (taller than wide) are read left to right; rows
// stacked as bands, top to bottom.
bool stackedAsBands(const std::vector<NumberedBox>& boxes) {
  int wide = 0;
  for (const NumberedBox& b : boxes) wide += b.box.width() >= b.box.height() ? 1 : -1;
  return wide >= 0;
}

// The outline of a row as a convex polygon: its free corners, or its box.
std::vector<PixelPoint> outlineOf(const NumberedBox& n) {
  if (!n.corners.empty()) return n.corners;
  const RowBox& b = n.box;
  return {{b.left, b.top}, {b.right, b.top}, {b.right, b.bottom}, {b.left, b.bottom}};
}

// Whether some side of `a` has all of `b` on its outer side (touching counts
// as outside): then the two convex outlines do not overlap.
bool separatedBySideOf(const std::vector<PixelPoint>& a, const std::vector<PixelPoint>& b) {
  // The turn of a's own corners tells which side is inside.
  long long area = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const PixelPoint& p = a[i];
    const PixelPoint& q = a[(i + 1) % a.size()];
    area += static_cast<long long>(p.x) * q.y - static_cast<long long>(q.x) * p.y;
  }
  const int inside = area >= 0 ? 1 : -1;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const PixelPoint& p = a[i];
    const PixelPoint& q = a[(i + 1) % a.size()];
    bool allOutside = true;
    for (const PixelPoint& r : b) {
      const long long cross = static_cast<long long>(q.x - p.x) * (r.y - p.y) - static_cast<long long>(q.y - p.y) * (r.x - p.x);
      if (cross * inside > 0) {
        allOutside = false;
        break;
      }
    }
    if (allOutside) return true;
  }
  return false;
}

bool outlinesOverlap(const NumberedBox& a, const NumberedBox& b) {
  const std::vector<PixelPoint> pa = outlineOf(a), pb = outlineOf(b);
  return !separatedBySideOf(pa, pb) && !separatedBySideOf(pb, pa);
}

}  // namespace

std::vector<NumberedBox> rowBoxes(const PhotoJob& job, int photoWidth, int photoHeight) {
  std::vector<NumberedBox> boxes;
  const bool scaled = photoWidth > 0 && photoHeight > 0;
  const SizeFactors f = scaled ? sizeFactors(photoWidth, photoHeight, job.shownWidth, job.shownHeight,
                                             job.displayReduction)
                               : SizeFactors{};
  for (const RowJob& row : job.rows) {
    const RowBox drawn = boundingBox(row.vertices);
    if (drawn.empty()) continue;
    NumberedBox n{row.number, scaled ? scaleBox(drawn, f) : drawn, {}};
    if (row.freeCorners)
      for (const PixelPoint& p : row.vertices)
        n.corners.push_back(scaled ? PixelPoint{static_cast<int>(std::lround(p.x * f.x)), static_cast<int>(std::lround(p.y * f.y))}
                                   : p);
    boxes.push_back(std::move(n));
  }
  return boxes;
}

std::vector<std::string> layoutWarnings(const std::string& photoName, const std::vector<NumberedBox>& boxes,
                                        int frameWidth, int frameHeight) {
  std::vector<std::string> warnings;
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    for (std::size_t j = i + 1; j < boxes.size(); ++j) {
      if (!boxes[i].corners.empty() || !boxes[j].corners.empty()) {
        if (outlinesOverlap(boxes[i], boxes[j]))
          warnings.push_back(fmt::format("{}: rows {} and {} overlap", photoName, boxes[i].number, boxes[j].number));
        continue;
      }
      const RowBox& a = boxes[i].box;
      const RowBox& b = boxes[j].box;
      const int w = std::min(a.right, b.right) - std::max(a.left, b.left);
      const int h = std::min(a.bottom, b.bottom) - std::max(a.top, b.top);
      if (w > 0 && h > 0)
        warnings.push_back(fmt::format("{}: rows {} and {} overlap by {} x {} pixels", photoName, boxes[i].number,
                                       boxes[j].number, w, h));
    }
  }
  if (frameWidth > 0 && frameHeight > 0) {
    for (const NumberedBox& n : boxes) {
      const RowBox& b = n.box;
      const bool inside = b.left >= 0 && b.top >= 0 && b.right <= frameWidth && b.bottom <= frameHeight;
      const bool wholly = b.right <= 0 || b.bottom <= 0 || b.left >= frameWidth || b.top >= frameHeight;
      if (inside || wholly) continue;  // a row wholly outside is reported when it is cut
      warnings.push_back(fmt::format("{}: row {} ({}, {}) to ({}, {}) reaches outside the {} x {} photograph; it is "
                                     "clipped",
                                     photoName, n.number, b.left, b.top, b.right, b.bottom, frameWidth, frameHeight));
    }
  }
  const bool bands = stackedAsBands(boxes);
  for (std::size_t i = 1; i < boxes.size(); ++i) {
    const RowBox& before = boxes[i - 1].box;
    const RowBox& after = boxes[i].box;
    const int a = bands ? before.top + before.bottom : before.left + before.right;
    const int b = bands ? after.top + after.bottom : after.left + after.right;
    if (b < a)
      warnings.push_back(fmt::format("{}: row {} is listed after row {} but lies {} it; rows are given depths in "
                                     "list order",
                                     photoName, boxes[i].number, boxes[i - 1].number, bands ? "above" : "left of"));
  }
  return warnings;
}

std::vector<PixelPoint> cutOutline(const RowBox& box, double angleDegrees, int photoWidth, int photoHeight) {
  return cutPoints({{box.left, box.top}, {box.right, box.top}, {box.right, box.bottom}, {box.left, box.bottom}},
                   angleDegrees, photoWidth, photoHeight);
}

std::vector<PixelPoint> cutPoints(const std::vector<PixelPoint>& corners, double angleDegrees, int photoWidth,
                                  int photoHeight) {
  const double angle = std::fmod(angleDegrees, 360.0);
  if (!std::isfinite(angle) || angle == 0.0) return corners;
  // The cut turns the picture by M about its centre and takes the box from
  // the result; a point P of the box comes from M^-1 (P - centre) + centre.
  const double a = angle * std::numbers::pi / 180.0;
  const double c = std::cos(a), s = std::sin(a);
  const double cx = (photoWidth - 1) / 2.0, cy = (photoHeight - 1) / 2.0;
  std::vector<PixelPoint> out;
  for (const PixelPoint& p : corners) {
    const double dx = p.x - cx, dy = p.y - cy;
    out.push_back({static_cast<int>(std::lround(c * dx + s * dy + cx)), static_cast<int>(std::lround(-s * dx + c * dy + cy))});
  }
  return out;
}

}  // namespace subsurf::split
