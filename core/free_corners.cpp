#include "core/free_corners.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <vector>

#include <fmt/format.h>

#include "core/quadrilateral_check.h"
#include "core/row_rectangles.h"

namespace subsurf {
namespace {

std::string_view trimmed(std::string_view s) {
  const auto first = s.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  const auto last = s.find_last_not_of(" \t\r\n");
  return s.substr(first, last - first + 1);
}

// Twice the signed area of the triangle a, b, c; positive when the turn
// a -> b -> c is clockwise on the photograph (y runs down).
long long turn(const FreeCorners& c, int a, int b, int d) {
  const long long abx = c.x[b] - c.x[a], aby = c.y[b] - c.y[a];
  const long long bdx = c.x[d] - c.x[b], bdy = c.y[d] - c.y[b];
  return abx * bdy - aby * bdx;
}

int signOf(long long v) { return v > 0 ? 1 : v < 0 ? -1 : 0; }

// Whether side a-b crosses side c-d (no three of the points on one line).
bool sidesCross(const FreeCorners& q, int a, int b, int c, int d) {
  return signOf(turn(q, a, b, c)) != signOf(turn(q, a, b, d)) && signOf(turn(q, c, d, a)) != signOf(turn(q, c, d, b));
}

int next(int i) { return (i + 1) % 4; }
int previous(int i) { return (i + 3) % 4; }

}  // namespace

std::string cornersText(const FreeCorners& c) {
  return fmt::format("{},{},{},{},{},{},{},{}", c.x[0], c.y[0], c.x[1], c.y[1], c.x[2], c.y[2], c.x[3], c.y[3]);
}

bool cornerValue(double value, int& out) {
  if (!std::isfinite(value) || std::fabs(value) > 1.0e9) return false;
  out = static_cast<int>(std::lround(value));
  return true;
}

bool parseCorners(std::string_view text, FreeCorners& corners, std::string& problem) {
  const std::vector<std::string_view> parts = commaFields(text);
  if (parts.size() != 8) {
    problem = fmt::format("\"{}\" is not x1,y1,x2,y2,x3,y3,x4,y4 (eight numbers of pixels)", text);
    return false;
  }
  FreeCorners read;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::string_view t = trimmed(parts[i]);
    double v = 0.0;
    const auto [end, ec] = std::from_chars(t.data(), t.data() + t.size(), v);
    const bool number = !t.empty() && ec == std::errc() && end == t.data() + t.size();
    int& target = i % 2 == 0 ? read.x[i / 2] : read.y[i / 2];
    if (!number || !cornerValue(v, target)) {
      problem = fmt::format("\"{}\" is not x1,y1,x2,y2,x3,y3,x4,y4: \"{}\" is not {}number of pixels", text, t,
                            number ? "a finite " : "a ");
      return false;
    }
  }
  corners = read;
  return true;
}

std::string cornersProblem(const FreeCorners& c, int number, int width, int height) {
  const std::string what = fmt::format("Rectangle {} (corners {})", number, cornersText(c));
  std::array<image::PlanePoint, 4> points;
  for (int i = 0; i < 4; ++i) points[i] = {double(c.x[i]), double(c.y[i])};
  // Whole pixels: three corners are on one line only when exactly so.
  const QuadrilateralVerdict v = checkQuadrilateral(points, width, height, true, 0.0);
  const auto& k = v.corners;
  switch (v.fault) {
    case QuadrilateralFault::None:
      return {};
    case QuadrilateralFault::Outside:
      return fmt::format("{}: corner {} ({},{}) lies outside the photo ({} x {} pixels)", what, k[0], c.x[k[0] - 1],
                         c.y[k[0] - 1], width, height);
    case QuadrilateralFault::SamePoint:
      return fmt::format("{}: corners {} and {} are the same point", what, k[0], k[1]);
    case QuadrilateralFault::OnOneLine:
      return fmt::format("{} has no area: corners {}, {} and {} lie on one line", what, k[0], k[1], k[2]);
    case QuadrilateralFault::SidesCross:
      return fmt::format("{} crosses itself: side {} crosses side {}", what, k[0] == 1 ? "1-2" : "2-3",
                         k[0] == 1 ? "3-4" : "4-1");
    case QuadrilateralFault::NotConvex:
      return fmt::format("{} is not convex: corner {} points inwards", what, k[0]);
  }
  return {};
}

FreeCorners orderedCorners(const FreeCorners& c) {
  long long area = 0;
  for (int i = 0; i < 4; ++i)
    area += static_cast<long long>(c.x[i]) * c.y[next(i)] - static_cast<long long>(c.x[next(i)]) * c.y[i];
  std::array<int, 4> order{0, 1, 2, 3};
  if (area < 0) order = {0, 3, 2, 1};  // anticlockwise on the photograph
  auto before = [&](int a, int b) {
    const long long sa = static_cast<long long>(c.x[a]) + c.y[a], sb = static_cast<long long>(c.x[b]) + c.y[b];
    if (sa != sb) return sa < sb;
    return c.y[a] < c.y[b];
  };
  int first = 0;
  for (int k = 1; k < 4; ++k)
    if (before(order[k], order[first])) first = k;
  FreeCorners out;
  for (int k = 0; k < 4; ++k) {
    const int from = order[(first + k) % 4];
    out.x[k] = c.x[from];
    out.y[k] = c.y[from];
  }
  return out;
}

FreeCorners cornersOf(const Polygon& p) {
  FreeCorners c;
  for (std::size_t i = 0; i < 4 && i < p.px.size() && i < p.py.size(); ++i) {
    c.x[i] = p.px[i];
    c.y[i] = p.py[i];
  }
  return c;
}

bool isConvexQuadrilateral(const Polygon& p) {
  if (p.n != 4 || p.px.size() < 4 || p.py.size() < 4) return false;
  const FreeCorners c = cornersOf(p);
  // Far beyond any photograph; also keeps the products below in range.
  constexpr int kFarthest = 1 << 28;
  for (int i = 0; i < 4; ++i)
    if (std::abs(c.x[i]) > kFarthest || std::abs(c.y[i]) > kFarthest) return false;
  int clockwise = 0;
  for (int i = 0; i < 4; ++i) {
    const int s = signOf(turn(c, previous(i), i, next(i)));
    if (s == 0) return false;
    clockwise += s;
  }
  return (clockwise == 4 || clockwise == -4) && !sidesCross(c, 0, 1, 2, 3) && !sidesCross(c, 1, 2, 3, 0);
}

void setFreeCorners(const CoreSession& session, CoreRectangle& rectangle, const FreeCorners& corners) {
  const FreeCorners ordered = orderedCorners(corners);
  CoreSession::setVertexCount(rectangle, 4);
  for (std::size_t i = 0; i < 4; ++i) {
    rectangle.polygon.px[i] = ordered.x[i];
    rectangle.polygon.py[i] = ordered.y[i];
  }
  rectangle.polygon.freeCorners = true;
  session.updateWorld(rectangle);
}

void squareRectangle(const CoreSession& session, CoreRectangle& rectangle) {
  Polygon& p = rectangle.polygon;
  const std::size_t n = std::min({static_cast<std::size_t>(std::max(p.n, 0)), p.px.size(), p.py.size()});
  if (n == 0) {
    p.freeCorners = false;
    return;
  }
  const auto [left, right] = std::minmax_element(p.px.begin(), p.px.begin() + static_cast<std::ptrdiff_t>(n));
  const auto [top, bottom] = std::minmax_element(p.py.begin(), p.py.begin() + static_cast<std::ptrdiff_t>(n));
  const int xs[4] = {*left, *right, *right, *left};
  const int ys[4] = {*top, *top, *bottom, *bottom};
  CoreSession::setVertexCount(rectangle, 4);
  for (std::size_t i = 0; i < 4; ++i) {
    p.px[i] = xs[i];
    p.py[i] = ys[i];
  }
  p.freeCorners = false;
  session.updateWorld(rectangle);
}

}  // namespace subsurf
