#include "host/image/projective.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace subsurf::image {
namespace {

// Solves the n x n system a x = b in place (partial pivoting); false when singular.
template <int n>
bool solve(double (&a)[n][n], double (&b)[n]) {
  for (int col = 0; col < n; ++col) {
    int pivot = col;
    for (int r = col + 1; r < n; ++r)
      if (std::fabs(a[r][col]) > std::fabs(a[pivot][col])) pivot = r;
    if (std::fabs(a[pivot][col]) < 1e-12) return false;
    if (pivot != col) {
      for (int c = 0; c < n; ++c) std::swap(a[col][c], a[pivot][c]);
      std::swap(b[col], b[pivot]);
    }
    for (int r = 0; r < n; ++r) {
      if (r == col) continue;
      const double f = a[r][col] / a[col][col];
      if (f == 0.0) continue;
      for (int c = col; c < n; ++c) a[r][c] -= f * a[col][c];
      b[r] -= f * b[col];
    }
  }
  for (int r = 0; r < n; ++r) b[r] /= a[r][r];
  return true;
}

// True when three of the four points lie on one line (within rounding).
bool threeInLine(const std::array<PlanePoint, 4>& p) {
  double size = 0;
  for (const PlanePoint& q : p) size = std::max({size, std::fabs(q.x - p[0].x), std::fabs(q.y - p[0].y)});
  for (int skip = 0; skip < 4; ++skip) {
    int i[3], n = 0;
    for (int k = 0; k < 4; ++k)
      if (k != skip) i[n++] = k;
    const PlanePoint a = p[i[0]], b = p[i[1]], c = p[i[2]];
    const double cross = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
    if (std::fabs(cross) <= 1e-9 * size * size) return true;
  }
  return false;
}

}  // namespace

Homography::Homography() : m_{1, 0, 0, 0, 1, 0, 0, 0, 1} {}

bool Homography::fromQuads(const std::array<PlanePoint, 4>& from, const std::array<PlanePoint, 4>& to,
                           Homography& out) {
  if (threeInLine(from) || threeInLine(to)) return false;
  // x' = (h0 x + h1 y + h2) / (h6 x + h7 y + 1), y' likewise with h3..h5.
  double a[8][8] = {};
  double b[8] = {};
  for (int i = 0; i < 4; ++i) {
    const double x = from[i].x, y = from[i].y, u = to[i].x, v = to[i].y;
    double* r0 = a[2 * i];
    double* r1 = a[2 * i + 1];
    r0[0] = x, r0[1] = y, r0[2] = 1, r0[6] = -u * x, r0[7] = -u * y;
    r1[3] = x, r1[4] = y, r1[5] = 1, r1[6] = -v * x, r1[7] = -v * y;
    b[2 * i] = u;
    b[2 * i + 1] = v;
  }
  if (!solve(a, b)) return false;
  Homography h;
  for (int i = 0; i < 8; ++i) h.m_[i] = b[i];
  h.m_[8] = 1.0;
  out = h;
  return true;
}

PlanePoint Homography::apply(PlanePoint p) const {
  const double w = m_[6] * p.x + m_[7] * p.y + m_[8];
  return {(m_[0] * p.x + m_[1] * p.y + m_[2]) / w, (m_[3] * p.x + m_[4] * p.y + m_[5]) / w};
}

bool Homography::inverse(Homography& out) const {
  const auto& m = m_;
  const double c00 = m[4] * m[8] - m[5] * m[7], c01 = m[5] * m[6] - m[3] * m[8], c02 = m[3] * m[7] - m[4] * m[6];
  const double det = m[0] * c00 + m[1] * c01 + m[2] * c02;
  if (std::fabs(det) < 1e-15) return false;
  std::array<double, 9> r{c00,
                          m[2] * m[7] - m[1] * m[8],
                          m[1] * m[5] - m[2] * m[4],
                          c01,
                          m[0] * m[8] - m[2] * m[6],
                          m[2] * m[3] - m[0] * m[5],
                          c02,
                          m[1] * m[6] - m[0] * m[7],
                          m[0] * m[4] - m[1] * m[3]};
  for (double& v : r) v /= det;
  const double norm = r[8];
  if (std::fabs(norm) < 1e-15) return false;
  for (double& v : r) v /= norm;
  out.m_ = r;
  return true;
}

void warpPicture(const RasterView& source, const Homography& outToSource, Raster& out, const std::uint8_t fill[3]) {
  const int sw = source.width, sh = source.height;
  for (int y = 0; y < out.height(); ++y) {
    std::uint8_t* dst = out.row(y);
    for (int x = 0; x < out.width(); ++x, dst += 3) {
      // Pixel centres lie at half-integers.
      const PlanePoint p = outToSource.apply({x + 0.5, y + 0.5});
      const double fx = p.x - 0.5, fy = p.y - 0.5;
      if (!(fx >= 0.0 && fy >= 0.0 && fx <= sw - 1 && fy <= sh - 1)) {
        dst[0] = fill[0], dst[1] = fill[1], dst[2] = fill[2];
        continue;
      }
      const int x0 = static_cast<int>(fx), y0 = static_cast<int>(fy);
      const int x1 = x0 + 1 < sw ? x0 + 1 : x0, y1 = y0 + 1 < sh ? y0 + 1 : y0;
      const double tx = fx - x0, ty = fy - y0;
      const std::uint8_t* a = source.pixel(x0, y0);
      const std::uint8_t* b = source.pixel(x1, y0);
      const std::uint8_t* c = source.pixel(x0, y1);
      const std::uint8_t* d = source.pixel(x1, y1);
      for (int k = 0; k < 3; ++k) {
        const double top = a[k] + (b[k] - a[k]) * tx;
        const double bottom = c[k] + (d[k] - c[k]) * tx;
        dst[k] = static_cast<std::uint8_t>(std::lround(top + (bottom - top) * ty));
      }
    }
  }
}

bool cutQuadrilateral(const RasterView& source, const std::array<PlanePoint, 4>& corners, Raster& out,
                      const std::uint8_t fill[3]) {
  auto length = [](PlanePoint a, PlanePoint b) { return std::hypot(b.x - a.x, b.y - a.y); };
  const double width = std::max(length(corners[0], corners[1]), length(corners[3], corners[2]));
  const double height = std::max(length(corners[1], corners[2]), length(corners[0], corners[3]));
  const int w = std::max(1, static_cast<int>(std::lround(width)));
  const int h = std::max(1, static_cast<int>(std::lround(height)));
  const std::array<PlanePoint, 4> upright{PlanePoint{0, 0}, {double(w), 0}, {double(w), double(h)}, {0, double(h)}};
  Homography toSource;
  if (!Homography::fromQuads(upright, corners, toSource)) {
    out = Raster();
    return false;
  }
  out = Raster(w, h);
  warpPicture(source, toSource, out, fill);
  return true;
}

}  // namespace subsurf::image
