#include "core/tray_corners.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include <fmt/format.h>

namespace subsurf {
namespace {

using image::PlanePoint;

PlanePoint operator-(PlanePoint a, PlanePoint b) { return {a.x - b.x, a.y - b.y}; }
PlanePoint operator+(PlanePoint a, PlanePoint b) { return {a.x + b.x, a.y + b.y}; }
PlanePoint operator*(double k, PlanePoint a) { return {k * a.x, k * a.y}; }
double cross(PlanePoint a, PlanePoint b) { return a.x * b.y - a.y * b.x; }
double dot(PlanePoint a, PlanePoint b) { return a.x * b.x + a.y * b.y; }
double norm(PlanePoint a) { return std::hypot(a.x, a.y); }

double polygonArea(const std::vector<PlanePoint>& p) {
  double a = 0;
  for (std::size_t i = 0; i < p.size(); ++i) a += cross(p[i], p[(i + 1) % p.size()]);
  return std::fabs(a) / 2;
}

// A line through `at` along the unit vector `along`.
struct Line {
  PlanePoint at, along;
};

bool meet(const Line& a, const Line& b, PlanePoint& out) {
  const double d = cross(a.along, b.along);
  if (std::fabs(d) < 1e-9) return false;
  const double t = cross(b.at - a.at, b.along) / d;
  out = a.at + t * a.along;
  return true;
}

// The photograph as float RGB, sampled between pixels.
struct Picture {
  int w = 0, h = 0;
  std::vector<float> v;
  explicit Picture(const image::RasterView& r) : w(r.width), h(r.height), v(static_cast<std::size_t>(w) * h * 3) {
    for (int y = 0; y < h; ++y) std::copy_n(r.row(y), 3 * static_cast<std::size_t>(w), v.begin() + 3L * w * y);
  }
  // Bilinear, at a point in pixel-edge coordinates (centres at half-integers).
  std::array<float, 3> at(PlanePoint p) const {
    const double fx = std::clamp(p.x - 0.5, 0.0, w - 1.0), fy = std::clamp(p.y - 0.5, 0.0, h - 1.0);
    const int x0 = std::min(static_cast<int>(fx), w - 2 < 0 ? 0 : w - 2), y0 = std::min(static_cast<int>(fy), h - 2 < 0 ? 0 : h - 2);
    const double tx = fx - x0, ty = fy - y0;
    std::array<float, 3> c{};
    for (int k = 0; k < 3; ++k) {
      auto px = [&](int x, int y) { return v[(static_cast<std::size_t>(y) * w + x) * 3 + k]; };
      const double top = px(x0, y0) + (px(x0 + 1, y0) - px(x0, y0)) * tx;
      const double bottom = px(x0, y0 + 1) + (px(x0 + 1, y0 + 1) - px(x0, y0 + 1)) * tx;
      c[k] = static_cast<float>(top + (bottom - top) * ty);
    }
    return c;
  }
};

double median(std::vector<double> v) {
  if (v.empty()) return 0;
  std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(v.size() / 2), v.end());
  return v[v.size() / 2];
}

// Andrew's monotone chain; the hull in order, no point repeated.
std::vector<PlanePoint> convexHull(std::vector<PlanePoint> p) {
  std::sort(p.begin(), p.end(), [](PlanePoint a, PlanePoint b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
  if (p.size() < 3) return p;
  std::vector<PlanePoint> h(2 * p.size());
  std::size_t k = 0;
  for (std::size_t i = 0; i < p.size(); ++i) {
    while (k >= 2 && cross(h[k - 1] - h[k - 2], p[i] - h[k - 2]) <= 0) --k;
    h[k++] = p[i];
  }
  for (std::size_t i = p.size() - 1, t = k + 1; i-- > 0;) {
    while (k >= t && cross(h[k - 1] - h[k - 2], p[i] - h[k - 2]) <= 0) --k;
    h[k++] = p[i];
  }
  h.resize(k - 1);
  return h;
}

// Cuts a convex polygon down to four sides: each step drops the side whose
// neighbours, extended to meet, add the least area.
std::vector<PlanePoint> fourSides(std::vector<PlanePoint> h) {
  while (h.size() > 4) {
    const std::size_t n = h.size();
    std::size_t best = n;
    double bestArea = std::numeric_limits<double>::infinity();
    PlanePoint bestPoint;
    for (std::size_t i = 0; i < n; ++i) {
      const PlanePoint a0 = h[(i + n - 1) % n], a = h[i], b = h[(i + 1) % n], b0 = h[(i + 2) % n];
      const PlanePoint da = a - a0, db = b - b0;
      const double d = cross(da, db);
      if (std::fabs(d) < 1e-12) continue;
      const double t = cross(b - a, db) / d;  // a + t da
      if (t < 0) continue;
      const PlanePoint x = a + t * da;
      if (dot(x - b, db) < 0) continue;  // must lie beyond b, seen from b0
      const double area = std::fabs(cross(a - x, b - x)) / 2;
      if (area < bestArea) bestArea = area, best = i, bestPoint = x;
    }
    if (best == n) {
      // No side can be dropped that way (nearly a triangle): drop the vertex
      // that matters least.
      std::size_t drop = 0;
      double least = std::numeric_limits<double>::infinity();
      for (std::size_t i = 0; i < n; ++i) {
        const double area = std::fabs(cross(h[i] - h[(i + n - 1) % n], h[(i + 1) % n] - h[i]));
        if (area < least) least = area, drop = i;
      }
      h.erase(h.begin() + static_cast<std::ptrdiff_t>(drop));
      continue;
    }
    h[best] = bestPoint;
    h.erase(h.begin() + static_cast<std::ptrdiff_t>((best + 1) % n));
  }
  return h;
}

// The table's colour, and how far a colour is from it. The table in shadow
// is the table's colour darker: that counts for little, so shadows do not
// join the tray.
struct Table {
  double rgb[3] = {0, 0, 0};
  double norm2 = 1e-9;
  double distance(double r, double g, double b) const {
    const double k = (r * rgb[0] + g * rgb[1] + b * rgb[2]) / norm2;
    if (k >= 1.0) return std::sqrt((r - rgb[0]) * (r - rgb[0]) + (g - rgb[1]) * (g - rgb[1]) + (b - rgb[2]) * (b - rgb[2]));
    const double dr = r - k * rgb[0], dg = g - k * rgb[1], db = b - k * rgb[2];
    return std::sqrt(dr * dr + dg * dg + db * db) + 0.25 * (1.0 - k) * std::sqrt(norm2);
  }
};

// The tray's rim along one side: the outermost sharp colour edge across the
// coarse side at many places, and the straight line through them.
struct SideFit {
  Line line;
  double support = 0.0;  // share of the places whose edge lies on the line
};

SideFit fitSide(const Picture& pic, const Table& table, double threshold, PlanePoint a, PlanePoint b,
                PlanePoint centre, double radius) {
  SideFit fit;
  const PlanePoint along = (1.0 / norm(b - a)) * (b - a);
  PlanePoint out{-along.y, along.x};
  if (dot(out, 0.5 * (a + b) - centre) < 0) out = -1.0 * out;
  constexpr int kPlaces = 80;
  std::vector<PlanePoint> points;
  for (int i = 0; i < kPlaces; ++i) {
    const PlanePoint p = a + ((0.08 + 0.84 * i / (kPlaces - 1)) * (b - a));
    // From outside inwards, the first point that is no longer table (nor
    // its shadow): the rim, or something lying on it, such as a label.
    double s = radius;
    for (; s >= -radius; s -= 0.5) {
      const auto c = pic.at(p + ((s - 1.0) * out));
      if (table.distance(c[0], c[1], c[2]) > threshold) break;
    }
    if (s < -radius || s >= radius) continue;  // no tray here, or no table outside it
    // The edge is where the colour changes most, within 1.5 pixels of it.
    double best = -1, bestAt = s;
    for (double t = s + 1.5; t >= s - 1.5; t -= 0.25) {
      const auto c1 = pic.at(p + ((t + 1) * out)), c0 = pic.at(p + ((t - 1) * out));
      const double step = std::sqrt((c1[0] - c0[0]) * (c1[0] - c0[0]) + (c1[1] - c0[1]) * (c1[1] - c0[1]) +
                                    (c1[2] - c0[2]) * (c1[2] - c0[2]));
      if (step > best) best = step, bestAt = t;
    }
    points.push_back(p + (bestAt * out));
  }
  fit.line = {0.5 * (a + b), along};
  if (points.size() < 8) return fit;
  // The line through two points far apart that most points lie on (within
  // a pixel): labels and tape lying over the rim are left out however many
  // of them there are, as long as most of the rim shows.
  constexpr double kOnLine = 1.0;
  const std::size_t n = points.size();
  std::vector<PlanePoint> best;
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = i + n / 4; j < n; ++j) {
      const PlanePoint d = points[j] - points[i];
      const double len = norm(d);
      if (len < 1e-9) continue;
      const PlanePoint u = (1.0 / len) * d;
      std::size_t count = 0;
      for (const PlanePoint& p : points) count += std::fabs(cross(u, p - points[i])) <= kOnLine;
      if (count <= best.size()) continue;
      best.clear();
      for (const PlanePoint& p : points)
        if (std::fabs(cross(u, p - points[i])) <= kOnLine) best.push_back(p);
    }
  if (best.size() < 8) return fit;
  // Least squares through the points on it.
  PlanePoint mean{0, 0};
  for (const PlanePoint& p : best) mean = mean + p;
  mean = (1.0 / best.size()) * mean;
  double sxx = 0, sxy = 0, syy = 0;
  for (const PlanePoint& p : best) {
    const PlanePoint d = p - mean;
    sxx += d.x * d.x, sxy += d.x * d.y, syy += d.y * d.y;
  }
  const double angle = 0.5 * std::atan2(2 * sxy, sxx - syy);
  fit.line = {mean, {std::cos(angle), std::sin(angle)}};
  // How much of the side holds: the share of places on the line, counted
  // only when the line is seen at both ends of the side.
  double first = 1e300, last = -1e300;
  for (const PlanePoint& p : best) {
    const double t = dot(p - a, along) / norm(b - a);
    first = std::min(first, t), last = std::max(last, t);
  }
  fit.support = first < 0.3 && last > 0.7 ? static_cast<double>(best.size()) / kPlaces : 0.0;
  return fit;
}

}  // namespace

bool TrayCornerDetection::sure() const { return found && confidence >= TrayCornerFinder::kConfidenceThreshold; }

TrayCornerDetection TrayCornerFinder::find(const image::RasterView& reduced, int fullWidth, int fullHeight) const {
  TrayCornerDetection result;
  const int w = reduced.width, h = reduced.height;
  if (w < 16 || h < 16) {
    result.doubt = "the photo is too small";
    return result;
  }
  const Picture pic(reduced);

  // 1. The table: the median colour of the photograph's border.
  const int band = std::max(2, std::min(w, h) / 50);
  std::array<std::vector<double>, 3> border;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      if (x >= band && x < w - band && y >= band && y < h - band) x = w - band;
      const std::uint8_t* p = reduced.pixel(x, y);
      for (int k = 0; k < 3; ++k) border[k].push_back(p[k]);
    }
  const double table[3] = {median(border[0]), median(border[1]), median(border[2])};
  Table model;
  for (int k = 0; k < 3; ++k) model.rgb[k] = table[k];
  model.norm2 = table[0] * table[0] + table[1] * table[1] + table[2] * table[2] + 1e-9;
  auto distance = [&](const std::uint8_t* p) { return model.distance(p[0], p[1], p[2]); };
  std::vector<double> borderDistance;
  for (std::size_t i = 0; i < border[0].size(); ++i) {
    const std::uint8_t p[3] = {static_cast<std::uint8_t>(border[0][i]), static_cast<std::uint8_t>(border[1][i]),
                               static_cast<std::uint8_t>(border[2][i])};
    borderDistance.push_back(distance(p));
  }
  const double tableSpread = median(borderDistance);

  // 2. The tray: what differs from the table, the largest patch, holes filled.
  std::vector<float> d(static_cast<std::size_t>(w) * h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const double v = distance(reduced.pixel(x, y));
      d[static_cast<std::size_t>(y) * w + x] = static_cast<float>(v);
    }
  const double threshold = std::max(20.0, 3 * tableSpread + 12);
  std::vector<std::uint8_t> mask(d.size());
  for (std::size_t i = 0; i < d.size(); ++i) mask[i] = d[i] > threshold;
  std::vector<int> label(d.size(), 0), stack;
  int bestLabel = 0, next = 0;
  long bestArea = 0;
  for (std::size_t start = 0; start < d.size(); ++start) {
    if (!mask[start] || label[start]) continue;
    ++next;
    long area = 0;
    stack.assign(1, static_cast<int>(start));
    label[start] = next;
    while (!stack.empty()) {
      const int i = stack.back();
      stack.pop_back();
      ++area;
      const int x = i % w, y = i / w;
      const int around[4] = {x > 0 ? i - 1 : -1, x + 1 < w ? i + 1 : -1, y > 0 ? i - w : -1, y + 1 < h ? i + w : -1};
      for (int j : around)
        if (j >= 0 && mask[j] && !label[j]) label[j] = next, stack.push_back(j);
    }
    if (area > bestArea) bestArea = area, bestLabel = next;
  }
  if (bestArea < 0.05 * w * h) {
    result.doubt = "no tray stands out from the table";
    return result;
  }
  // Holes and bays: a tray is convex, so whatever lies between the patch's
  // first and last pixel along both a row and a column is tray.
  std::vector<int> rowFirst(h, w), rowLast(h, -1), colFirst(w, h), colLast(w, -1);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x)
      if (label[static_cast<std::size_t>(y) * w + x] == bestLabel) {
        rowFirst[y] = std::min(rowFirst[y], x), rowLast[y] = std::max(rowLast[y], x);
        colFirst[x] = std::min(colFirst[x], y), colLast[x] = std::max(colLast[x], y);
      }
  long trayArea = 0;
  std::vector<PlanePoint> rim;
  for (int y = 0; y < h; ++y) {
    int first = -1, last = -1;
    for (int x = rowFirst[y]; x <= rowLast[y]; ++x)
      if (y >= colFirst[x] && y <= colLast[x]) {
        ++trayArea;
        if (first < 0) first = x;
        last = x;
      }
    if (first < 0) continue;
    rim.push_back({double(first), double(y)});
    rim.push_back({double(first), y + 1.0});
    rim.push_back({last + 1.0, double(y)});
    rim.push_back({last + 1.0, y + 1.0});
  }

  // 3. Four sides round the patch.
  std::vector<PlanePoint> quad = fourSides(convexHull(rim));
  if (quad.size() != 4) {
    result.doubt = "the tray's outline has not four sides";
    return result;
  }
  const double coarseArea = polygonArea(quad);

  // 4. The rim along each side, and the corners where the sides meet.
  PlanePoint centre{0, 0};
  for (const PlanePoint& p : quad) centre = centre + 0.25 * p;
  const double radius = std::max(4.0, 0.015 * std::max(w, h));
  std::array<SideFit, 4> sides;
  for (int i = 0; i < 4; ++i)
    sides[i] = fitSide(pic, model, threshold, quad[i], quad[(i + 1) % 4], centre, radius);
  std::array<PlanePoint, 4> corners;
  for (int i = 0; i < 4; ++i) {
    PlanePoint p;
    const bool met = meet(sides[(i + 3) % 4].line, sides[i].line, p);
    corners[i] = met && norm(p - quad[i]) < 3 * radius ? p : quad[i];
  }

  // Confidence.
  double support = 1.0;
  for (const SideFit& side : sides) support = std::min(support, side.support);
  const double fill = static_cast<double>(trayArea) / std::max(1.0, coarseArea);
  const double supportFactor = std::clamp((support - 0.35) / 0.25, 0.0, 1.0);
  const double fillFactor = std::clamp((fill - 0.86) / 0.08, 0.0, 1.0);
  const double margin = 0.004 * std::max(w, h);
  bool atEdge = false;
  for (const PlanePoint& p : corners)
    atEdge = atEdge || p.x < margin || p.y < margin || p.x > w - margin || p.y > h - margin;
  result.confidence = supportFactor * fillFactor * (atEdge ? 0.3 : 1.0);
  if (atEdge) result.doubt = "the tray reaches the edge of the photo";
  else if (supportFactor < fillFactor) result.doubt = fmt::format("one side of the tray is not straight ({:.0f}% of it)", 100 * support);
  else if (fillFactor < 1.0) result.doubt = fmt::format("the tray is not four-sided (it fills {:.0f}% of its outline)", 100 * fill);

  const double sx = static_cast<double>(fullWidth) / w, sy = static_cast<double>(fullHeight) / h;
  for (int i = 0; i < 4; ++i) {
    result.corners[i] = {std::clamp(corners[i].x * sx, 0.0, double(fullWidth)),
                         std::clamp(corners[i].y * sy, 0.0, double(fullHeight))};
  }
  const Status ordered = orderTrayCorners(result.corners, fullWidth, fullHeight);
  result.found = static_cast<bool>(ordered);
  if (!result.found) {
    result.confidence = 0.0;
    result.doubt = "the corners found do not make a tray";
  }
  if (result.sure()) result.doubt.clear();
  return result;
}

}  // namespace subsurf
