#include "plot/stereonet_readout.h"

#include <cmath>

#include <fmt/format.h>

namespace subsurf {

namespace {

// Rounding slack: a position within it of the rim is on the rim.
constexpr double kRimSlack = 1e-6;

// One decimal place, never "-0.0".
std::string tenths(double v) {
  const double r = std::round(v * 10.0) / 10.0;
  return fmt::format("{:.1f}", r == 0.0 ? 0.0 : r);
}

// Degrees clockwise from north in 0 <= a < 360 at one decimal: an angle that
// rounds to 360.0 is north, 0.0.
std::string bearing(double a) {
  const double r = std::round(a * 10.0) / 10.0;
  return tenths(r >= 360.0 ? r - 360.0 : r);
}

// The plunge whose radial position is r, the inverse of stereoRadius at the
// same degrees per radian.
double plungeAt(double r, int projection) {
  const double u = std::fmin(1.0, r / kNetRadius);
  if (projection == kEqualAngle) return 90.0 - 2.0 * std::atan(u) * kDegreesPerRadian;
  return std::asin(std::fmax(-1.0, 1.0 - u * u)) * kDegreesPerRadian;
}

}  // namespace

Status readNetPosition(double x, double y, int projection, NetReadout& out) {
  out = NetReadout{};
  if (projection != kEqualAngle && projection != kEqualArea)
    return Status::error(fmt::format("Projection {} is not equal-angle (2) or equal-area (3)", projection));
  if (!std::isfinite(x) || !std::isfinite(y)) return Status::error("The position on the net is not a number");
  out.radius = std::hypot(x, y);
  // Azimuths are placed at the exact radian (projectLine); only the radial
  // position carries the net's 57.29583 degrees per radian.
  out.angle = out.radius == 0.0 ? 0.0 : std::atan2(x, y) * 180.0 / 3.14159265358979323846;
  if (out.angle < 0) out.angle += 360.0;
  out.texts[0] = "Radius = " + tenths(out.radius);
  out.texts[1] = "Angle = " + bearing(out.angle);
  out.onNet = out.radius <= kNetRadius + kRimSlack;
  if (!out.onNet) return Status::ok();
  out.line = {plungeAt(out.radius, projection), out.angle};
  out.correspondingDip = 90.0 - out.line.plunge;
  out.texts[2] = "Dip = " + tenths(out.line.plunge);
  out.texts[3] = "Az = " + bearing(out.line.trend);
  out.texts[4] = "Corresp. Point Dip = " + tenths(out.correspondingDip);
  return Status::ok();
}

}  // namespace subsurf
