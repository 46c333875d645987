// Shared checks for the fluid tests: results are single precision, so values
// worked out by hand in double precision are compared with a relative tolerance.
#pragma once

#include <gtest/gtest.h>

#include <cmath>

#include "host/nulls.h"

namespace subsurf::fluids::testing {

// A few float roundings through exp/pow chains stay well inside this.
inline constexpr double kSingleRel = 2e-5;

inline ::testing::AssertionResult nearRel(float actual, double expected, double rel = kSingleRel) {
  const double diff = std::fabs(static_cast<double>(actual) - expected);
  if (diff <= rel * std::fabs(expected) || diff <= 1e-30) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "actual " << actual << " expected " << expected
                                       << " (relative difference " << diff / std::fabs(expected)
                                       << ")";
}

}  // namespace subsurf::fluids::testing
