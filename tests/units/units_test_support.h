// Helpers shared by the units registry tests.
#pragma once

#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "units/units_registry.h"

namespace subsurf::testing {

// The definitions file shipped in data/.
inline std::string shippedDefinitions() { return std::string(SUBSURF_SOURCE_DATA_DIR) + "/x_units.def"; }

// Sets an environment variable for its lifetime; restores the earlier state after.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const std::string& value) : name_(name) {
    if (const char* before = std::getenv(name)) saved_ = before, had_ = true;
    ::setenv(name, value.c_str(), 1);
  }
  ~ScopedEnv() { had_ ? ::setenv(name_, saved_.c_str(), 1) : ::unsetenv(name_); }

 private:
  const char* name_;
  std::string saved_;
  bool had_ = false;
};

// The lines of a text, each without its line end.
inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

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
