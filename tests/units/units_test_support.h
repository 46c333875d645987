// Helpers shared by the units registry tests.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/messages.h"
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
// A value reached through an offset (a gauge pressure, degrees Fahrenheit) can
// only be as exact as that offset allows: `floor` raises the scale to it.
inline ::testing::AssertionResult closeTo(double actual, double expected, double tol = 1e-12, double floor = 1.0) {
  const double scale = std::max({std::fabs(expected), 1.0, std::fabs(floor)});
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

// A fixture whose suite shares the registry read from the shipped definitions file.
class ShippedRegistryTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    host::clearRecorded();
    reg_ = new UnitsRegistry;
    ASSERT_TRUE(reg_->load(shippedDefinitions()).isOk());
    ASSERT_TRUE(host::recordedMessages().empty()) << host::recordedMessages().front();
  }
  static void TearDownTestSuite() {
    delete reg_;
    reg_ = nullptr;
  }
  static const UnitsRegistry& reg() { return *reg_; }

 private:
  static inline UnitsRegistry* reg_ = nullptr;
};

}  // namespace subsurf::testing
