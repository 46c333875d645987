// Helpers shared by the units registry tests.
#pragma once

#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "units/units_registry.h"

namespace subsurf::testing {

// The definitions file shipped in data/.
inline std::string shippedDefinitions() { return std::string(SUBSURF_SOURCE_DATA_DIR) + "/x_units.def"; }

// Checks that a relative difference is within tol (an absolute one near zero).
inline ::testing::AssertionResult closeTo(double actual, double expected, double tol = 1e-12) {
  const double scale = std::fabs(expected) > 1.0 ? std::fabs(expected) : 1.0;
  if (std::fabs(actual - expected) <= tol * scale) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << actual << " is not within " << tol << " (relative) of " << expected;
}

// Converts between two named units of a named series; fails the test on any lookup miss.
inline double convertNamed(const UnitsRegistry& reg, const std::string& series, double value, const std::string& from,
                           const std::string& to, int* errOut = nullptr) {
  const int iser = reg.findSeries(series);
  EXPECT_GE(iser, 0) << "series " << series;
  const int f = reg.findUnit(iser, from);
  const int t = reg.findUnit(iser, to);
  EXPECT_GE(f, 1) << from << " in " << series;
  EXPECT_GE(t, 1) << to << " in " << series;
  int err = 99;
  const double y = reg.convert(value, iser, f, t, err);
  if (errOut) *errOut = err;
  else EXPECT_EQ(err, 0) << value << " " << from << " -> " << to;
  return y;
}

}  // namespace subsurf::testing
