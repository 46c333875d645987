#include "host/guarded_math.h"

#include <cmath>

namespace subsurf {

double guardedPower(double x, double p, int& err) {
  err = 0;
  if ((x < 0.0 && p != std::floor(p)) || (x == 0.0 && p < 0.0)) {
    err = 1;
    return x;
  }
  const double y = std::pow(x, p);
  if (!std::isfinite(y)) {
    err = 1;
    return x;
  }
  return y;
}

int clampInt(int value, int low, int high) {
  if (value < low) return low;
  if (value > high) return high;
  return value;
}

}  // namespace subsurf
