// Shared checks for the fluid tests: results are single precision, so values
// worked out by hand in double precision are compared with a relative tolerance.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string_view>

#include "fluids/fluid_entries.h"
#include "host/fixed_text.h"
#include "host/nulls.h"

namespace subsurf::fluids::testing {

// A few float roundings through exp/pow chains stay well inside this.
inline constexpr double kSingleRel = 2e-5;
// Results of calculate-all compound a dozen single-precision steps.
inline constexpr double kChainRel = 1e-4;

inline ::testing::AssertionResult nearRel(float actual, double expected, double rel = kSingleRel) {
  const double diff = std::fabs(static_cast<double>(actual) - expected);
  if (diff <= rel * std::fabs(expected) || diff <= 1e-30) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "actual " << actual << " expected " << expected
                                       << " (relative difference " << diff / std::fabs(expected)
                                       << ")";
}

// Blank-padded field as a caller from another language passes it.
template <std::size_t W>
struct Fixed {
  explicit Fixed(const char* s) { setFixed(field.data(), field.size(), s); }
  std::array<char, W> field;
  const char* c_str() const { return field.data(); }
};
using Name = Fixed<kEntryNameWidth>;
using Unit = Fixed<kUnitNameWidth>;

// 8000 ft, 35 API, separator gas 0.75, 600 scf/stb, gas 0.7: undersaturated.
// The whole chain worked out by hand in double precision, in oilfield units.
struct ChainValue {
  const char* name;
  const char* unit;
  double value;
};
inline constexpr ChainValue kUndersaturated[] = {
    {"tres", "degf", 171.0},           {"pres", "psia", 3520.0},
    {"pbubble", "psia", 2715.0214893949105}, {"bo", "bbl/stb", 0.9798089702187491},
    {"oviscd", "cp", 62.777742387738556},    {"ovisc", "cp", 0.6129627075641453},
    {"ocomp", "1/psi", 0.00034008164772727275}, {"zfact", "-", 0.8621235022251834},
    {"bg", "scf/cf", 228.86602020742745},    {"gvisc", "cp", 0.022807534898589575},
    {"gdenres", "g/cc", 0.19595484765094437}, {"ghi", "", 0.4408984072146248},
};
inline double undersaturated(const char* name) {
  for (const ChainValue& c : kUndersaturated)
    if (std::string_view(c.name) == name) return c.value;
  return NAN;
}

}  // namespace subsurf::fluids::testing
