#include "plot/stereonet_projection.h"

#include <cmath>

#include "host/nulls.h"

namespace subsurf {

namespace {

double sinDeg(double d) { return std::sin(d / kDegreesPerRadian); }
double tanDeg(double d) { return std::tan(d / kDegreesPerRadian); }

}  // namespace

double stereoRadius(int p, int a, int n, double c, double w, int i) {
  const double index = i;
  switch (p) {
    case kEqualAngle:
      if (a > 0) return kNetRadius * tanDeg((9.0 - index) * (w * 90.0 / 2.0) / a);
      return kNetRadius * tanDeg(45.0 - index * w / 2.0);
    case kEqualArea: {
      const double r = kNetRadius * std::sqrt(std::fmax(0.0, 1.0 - sinDeg(index * w)));
      if (a <= 0) return r;
      const double stretch = std::sqrt(std::fmax(0.0, 1.0 - sinDeg(90.0 - a)));
      // Within rounding of zero (a a whole turn) the stretch has no meaning.
      return stretch > 1e-4 ? r / stretch : kDoubleNull;
    }
    case kScaledSquare:
      return n != 0 ? index * c * c / n : kDoubleNull;
    default:
      return n != 0 ? index / n : kDoubleNull;
  }
}

}  // namespace subsurf
