#include "plot/stereonet_geometry.h"

#include <array>
#include <cmath>

#include <fmt/format.h>

#include "host/nulls.h"

namespace subsurf {

namespace {

constexpr double kPi = 3.14159265358979323846;
double rad(double d) { return d * kPi / 180.0; }
double deg(double r) { return r * 180.0 / kPi; }

using Vec = std::array<double, 3>;  // north, east, down

Vec unitVector(Orientation o) {
  const double p = rad(o.plunge), t = rad(o.trend);
  return {std::cos(p) * std::cos(t), std::cos(p) * std::sin(t), std::sin(p)};
}

// The line along a vector, turned into the lower hemisphere.
Orientation lineOf(Vec v) {
  if (v[2] < 0) v = {-v[0], -v[1], -v[2]};
  const double horizontal = std::hypot(v[0], v[1]);
  // A vertical line has no trend; rounding would give it any. Call it north.
  double trend = horizontal <= 1e-12 * std::fabs(v[2]) ? 0.0 : deg(std::atan2(v[1], v[0]));
  if (trend < 0) trend += 360.0;
  return {deg(std::atan2(v[2], horizontal)), trend};
}

}  // namespace

NetPoint projectLine(Orientation line, int projection) {
  // The radius counts the angle from the rim: a horizontal line (plunge 0)
  // lies on the rim, a vertical one in the centre.
  const double r = stereoRadius(projection, 0, 1, 0.0, line.plunge, 1);
  return {r * std::sin(rad(line.trend)), r * std::cos(rad(line.trend))};
}

Orientation poleOfPlane(double dip, double dipAzimuth) {
  return {90.0 - dip, std::fmod(dipAzimuth + 180.0, 360.0)};
}

std::vector<NetPoint> greatCircle(double dip, double dipAzimuth, int projection, int samples) {
  const Vec strike = unitVector({0.0, dipAzimuth - 90.0});
  const Vec down = unitVector({dip, dipAzimuth});
  std::vector<NetPoint> points;
  for (int k = 0; k <= samples; ++k) {
    const double a = rad(180.0 * k / samples);
    const Vec v = {std::cos(a) * strike[0] + std::sin(a) * down[0], std::cos(a) * strike[1] + std::sin(a) * down[1],
                   std::cos(a) * strike[2] + std::sin(a) * down[2]};
    Orientation line = lineOf(v);
    // Keep the ends on their own side of the net (a horizontal line has two trends).
    if (k == samples) line.trend = std::fmod(dipAzimuth + 90.0, 360.0);
    if (k == 0) line.trend = std::fmod(dipAzimuth + 270.0, 360.0);
    points.push_back(projectLine(line, projection));
  }
  return points;
}

Status roseCounts(std::span<const double> azimuths, double classWidth, double startAzimuth, std::vector<int>& counts) {
  const double classes = 360.0 / classWidth;
  if (!(classWidth > 0) || std::fabs(classes - std::round(classes)) > 1e-9)
    return Status::error(fmt::format("A rose class width of {} degrees does not divide 360", classWidth));
  counts.assign(static_cast<std::size_t>(std::lround(classes)), 0);
  for (double a : azimuths) {
    if (!std::isfinite(a) || isNull(a) || isNoValue(a)) continue;
    double from = std::fmod(a - startAzimuth, 360.0);
    if (from < 0) from += 360.0;
    auto k = static_cast<std::size_t>(from / classWidth);
    if (k >= counts.size()) k = counts.size() - 1;  // 359.9999... rounding
    ++counts[k];
  }
  return Status::ok();
}

Status fisherMean(std::span<const Orientation> lines, FisherMean& out) {
  out = FisherMean{};
  Vec sum{0, 0, 0};
  for (const Orientation& o : lines) {
    if (!std::isfinite(o.plunge) || !std::isfinite(o.trend)) continue;
    const Vec v = unitVector(o);
    for (int k = 0; k < 3; ++k) sum[static_cast<std::size_t>(k)] += v[static_cast<std::size_t>(k)];
    ++out.n;
  }
  if (out.n == 0) return Status::error("No valid data points!");
  out.resultant = std::sqrt(sum[0] * sum[0] + sum[1] * sum[1] + sum[2] * sum[2]);
  if (out.resultant == 0) return Status::error("The orientations cancel out: they have no mean");
  out.mean = lineOf(sum);
  const double n = out.n, r = out.resultant;
  if (out.n < 2 || n - r <= 1e-12 * n) {
    out.kappa = kDoubleNull;
    out.alpha95 = kDoubleNull;
    return Status::ok();
  }
  out.kappa = (n - 1.0) / (n - r);
  const double c = 1.0 - (n - r) / r * (std::pow(20.0, 1.0 / (n - 1.0)) - 1.0);
  out.alpha95 = c <= -1.0 ? 180.0 : deg(std::acos(c));
  return Status::ok();
}

}  // namespace subsurf
