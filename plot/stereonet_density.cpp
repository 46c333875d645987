#include "plot/stereonet_density.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include <fmt/format.h>

#include "host/nulls.h"

namespace subsurf {

namespace {

constexpr double kPi = 3.14159265358979323846;
// Weights below exp(-kCutoff) are left out.
constexpr double kCutoff = 40.0;
constexpr std::size_t kMostAxes = 1000000000;

using Vec = std::array<double, 3>;  // north, east, down

Vec unitVector(Orientation o) {
  const double p = o.plunge * kPi / 180.0, t = o.trend * kPi / 180.0;
  return {std::cos(p) * std::cos(t), std::cos(p) * std::sin(t), std::sin(p)};
}

double dot(const Vec& a, const Vec& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

double kambExponent(std::size_t n, double smoothing) {
  return 2.0 * (1.0 + static_cast<double>(n) / (smoothing * smoothing));
}

// The axes, both ends of each, sorted into cubic cells over [-1, 1]^3 no
// smaller than the chord of the cutoff angle, so that every end within the
// cutoff of a direction lies in the direction's cell or a neighbour.
class AxisCells {
 public:
  AxisCells(std::span<const Vec> axes, double chord) {
    cells_ = std::clamp(static_cast<int>(2.0 / chord), 1, 128);
    const std::size_t total = static_cast<std::size_t>(cells_) * cells_ * cells_;
    start_.assign(total + 1, 0);
    std::vector<std::uint32_t> cellOf;
    cellOf.reserve(2 * axes.size());
    for (const Vec& v : axes)
      for (double sign : {1.0, -1.0}) {
        cellOf.push_back(static_cast<std::uint32_t>(cellIndex({sign * v[0], sign * v[1], sign * v[2]})));
        ++start_[cellOf.back() + 1];
      }
    for (std::size_t c = 0; c < total; ++c) start_[c + 1] += start_[c];
    ends_.resize(cellOf.size());
    std::vector<std::uint32_t> fill(start_.begin(), start_.end() - 1);
    std::size_t k = 0;
    for (const Vec& v : axes)
      for (double sign : {1.0, -1.0}) ends_[fill[cellOf[k++]]++] = {sign * v[0], sign * v[1], sign * v[2], sign};
  }

  // Sum of exp(f (|g.v| - 1)) over the axes v with f (1 - |g.v|) <= kCutoff:
  // of each axis the end on g's side counts (the first end when the axis is
  // square to g).
  double sum(const Vec& g, double f) const {
    const double least = 1.0 - kCutoff / f;
    std::array<int, 3> c{};
    for (std::size_t a = 0; a < 3; ++a) c[a] = coordinate(g[a]);
    double s = 0;
    for (int i = std::max(0, c[0] - 1); i <= std::min(cells_ - 1, c[0] + 1); ++i)
      for (int j = std::max(0, c[1] - 1); j <= std::min(cells_ - 1, c[1] + 1); ++j)
        for (int k = std::max(0, c[2] - 1); k <= std::min(cells_ - 1, c[2] + 1); ++k) {
          const std::size_t cell = (static_cast<std::size_t>(i) * cells_ + j) * cells_ + k;
          for (std::uint32_t e = start_[cell]; e < start_[cell + 1]; ++e) {
            const End& end = ends_[e];
            const double d = g[0] * end[0] + g[1] * end[1] + g[2] * end[2];
            if (d >= least && (d > 0 || (d == 0 && end[3] > 0))) s += std::exp(f * (d - 1.0));
          }
        }
    return s;
  }

 private:
  int coordinate(double u) const {
    return std::clamp(static_cast<int>((u + 1.0) * 0.5 * cells_), 0, cells_ - 1);
  }
  std::size_t cellIndex(const Vec& v) const {
    return (static_cast<std::size_t>(coordinate(v[0])) * cells_ + coordinate(v[1])) * cells_ + coordinate(v[2]);
  }

  using End = std::array<double, 4>;  // the end's vector, and +1 or -1 for which end

  int cells_ = 1;
  std::vector<std::uint32_t> start_;
  std::vector<End> ends_;
};

}  // namespace

Orientation lineAtNetPosition(double x, double y, int projection) {
  const double u = std::hypot(x, y) / kNetRadius;
  double plunge = 0;
  if (projection == kEqualAngle) plunge = 90.0 - 2.0 * std::atan(u) * kDegreesPerRadian;
  else plunge = std::asin(std::clamp(1.0 - u * u, -1.0, 1.0)) * kDegreesPerRadian;
  const double trend = u == 0.0 ? 0.0 : std::atan2(x, y) * 180.0 / kPi;
  return {plunge, trend};
}

double DensityGrid::maximumSigmas(NetPoint* at) const {
  double best = 0;
  for (int j = 0; j < size; ++j)
    for (int i = 0; i < size; ++i)
      if (std::hypot(x(i), x(j)) <= kNetRadius && sigmas(i, j) > best) {
        best = sigmas(i, j);
        if (at) *at = {x(i), x(j)};
      }
  return best;
}

Status kambDensity(std::span<const Orientation> axes, int projection, int size, double smoothing, DensityGrid& out) {
  out = DensityGrid{};
  if (projection != kEqualArea && projection != kEqualAngle)
    return Status::error(fmt::format("Projection {} is not equal-angle (2) or equal-area (3)", projection));
  if (size < 3 || size > 1000) return Status::error(fmt::format("A density grid of {} nodes a side is not 3 to 1000", size));
  if (!(smoothing > 0) || !std::isfinite(smoothing))
    return Status::error(fmt::format("A smoothing of {} is not above 0", smoothing));
  std::vector<Vec> v;
  v.reserve(axes.size());
  for (const Orientation& o : axes)
    if (std::isfinite(o.plunge) && std::isfinite(o.trend)) v.push_back(unitVector(o));
  if (v.empty()) return Status::error("No valid data points!");
  // Both ends of every axis are indexed in 32 bits.
  if (v.size() > kMostAxes) return Status::error(fmt::format("{} axes are more than the {} a density counts", v.size(), kMostAxes));
  const double f = kambExponent(v.size(), smoothing);
  out.size = size;
  out.projection = projection;
  out.smoothing = smoothing;
  out.expected = static_cast<double>(v.size()) / f;
  out.deviation = std::sqrt(static_cast<double>(v.size()) * (f / 2.0 - 1.0)) / f;
  out.counts.assign(static_cast<std::size_t>(size) * size, 0.0);
  // The chord of the cutoff angle; past a half turn every axis counts.
  const double chord = std::sqrt(2.0 * std::min(2.0, kCutoff / f));
  const AxisCells cells(v, chord);
  for (int j = 0; j < size; ++j)
    for (int i = 0; i < size; ++i) {
      const Vec g = unitVector(lineAtNetPosition(out.x(i), out.x(j), projection));
      out.counts[static_cast<std::size_t>(j) * size + i] = cells.sum(g, f);
    }
  return Status::ok();
}

double kambSigmasAt(std::span<const Orientation> axes, Orientation at, double smoothing) {
  const double f = kambExponent(axes.size(), smoothing);
  const Vec g = unitVector(at);
  double s = 0;
  for (const Orientation& o : axes) s += std::exp(f * (std::fabs(dot(g, unitVector(o))) - 1.0));
  return s / (std::sqrt(static_cast<double>(axes.size()) * (f / 2.0 - 1.0)) / f);
}

std::vector<double> contourLevels(double maximumSigmas, double step, int maxLevels) {
  std::vector<double> levels;
  if (!(step > 0) || !std::isfinite(maximumSigmas)) return levels;
  while (maximumSigmas / step > maxLevels) step *= 2.0;
  for (int k = 1; k * step <= maximumSigmas; ++k) levels.push_back(k * step);
  return levels;
}

namespace {

// A piece of a contour clipped to the rim; false when none of it is on the net.
bool clipToRim(NetPoint& a, NetPoint& b) {
  const double r2 = kNetRadius * kNetRadius;
  const bool inA = a.x * a.x + a.y * a.y <= r2, inB = b.x * b.x + b.y * b.y <= r2;
  if (inA && inB) return true;
  if (!inA && !inB) return false;
  NetPoint& out = inA ? b : a;
  const NetPoint& in = inA ? a : b;
  // The point in + t (out - in) on the rim, 0 <= t <= 1.
  const double dx = out.x - in.x, dy = out.y - in.y;
  const double qa = dx * dx + dy * dy, qb = 2 * (in.x * dx + in.y * dy), qc = in.x * in.x + in.y * in.y - r2;
  const double t = (-qb + std::sqrt(std::max(0.0, qb * qb - 4 * qa * qc))) / (2 * qa);
  out = {in.x + t * dx, in.y + t * dy};
  return true;
}

}  // namespace

std::vector<ContourLine> densityContours(const DensityGrid& grid, std::span<const double> levels) {
  std::vector<ContourLine> lines;
  const int n = grid.size;
  const double h = 2.0 * kNetRadius / (n - 1);
  for (double level : levels) {
    ContourLine line;
    line.level = level;
    auto add = [&](NetPoint a, NetPoint b) {
      if (!clipToRim(a, b)) return;
      line.x.insert(line.x.end(), {static_cast<float>(a.x), static_cast<float>(b.x), kRealNull});
      line.y.insert(line.y.end(), {static_cast<float>(a.y), static_cast<float>(b.y), kRealNull});
    };
    for (int j = 0; j + 1 < n; ++j)
      for (int i = 0; i + 1 < n; ++i) {
        // Corners counter-clockwise from the lower left, and where the level
        // crosses each side (bottom, right, top, left).
        const double v[4] = {grid.sigmas(i, j), grid.sigmas(i + 1, j), grid.sigmas(i + 1, j + 1), grid.sigmas(i, j + 1)};
        const double cx[4] = {grid.x(i), grid.x(i) + h, grid.x(i) + h, grid.x(i)};
        const double cy[4] = {grid.x(j), grid.x(j), grid.x(j) + h, grid.x(j) + h};
        int code = 0;
        for (int k = 0; k < 4; ++k) code |= (v[k] >= level ? 1 : 0) << k;
        if (code == 0 || code == 15) continue;
        auto cross = [&](int side) {
          const int a = side, b = (side + 1) % 4;
          const double t = (level - v[a]) / (v[b] - v[a]);
          return NetPoint{cx[a] + t * (cx[b] - cx[a]), cy[a] + t * (cy[b] - cy[a])};
        };
        // The sides the level crosses, paired by walking around the cell; a
        // saddle (two opposite corners above) is split by the cell's mean.
        std::vector<int> sides;
        for (int s = 0; s < 4; ++s)
          if (((code >> s) & 1) != ((code >> ((s + 1) % 4)) & 1)) sides.push_back(s);
        if (sides.size() == 2) {
          add(cross(sides[0]), cross(sides[1]));
        } else {
          const bool centreAbove = (v[0] + v[1] + v[2] + v[3]) / 4.0 >= level;
          // Corner 0 above and the centre too: the above region joins 0 and 2,
          // so cut corners 1 and 3 off; otherwise cut corners 0 and 2 off.
          if (((code & 1) != 0) == centreAbove) {
            add(cross(0), cross(1));
            add(cross(2), cross(3));
          } else {
            add(cross(3), cross(0));
            add(cross(1), cross(2));
          }
        }
      }
    lines.push_back(std::move(line));
  }
  return lines;
}

}  // namespace subsurf
