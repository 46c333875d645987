// Choices drawn from a seed that come out the same on every platform: the
// engine's raw output is fixed by the C++ standard, the library's
// distributions are not, so the choices are made from the raw bits.
#pragma once

#include <cstdint>
#include <random>

namespace subsurf::drawing {

struct SeededChoice {
  std::mt19937_64 engine;
  explicit SeededChoice(std::uint64_t state) : engine(state) {}
  double uniform(double a, double b) { return a + (b - a) * ((engine() >> 11) * 0x1.0p-53); }
  int between(int a, int b) { return a + static_cast<int>(engine() % static_cast<std::uint64_t>(b - a + 1)); }
  bool chance(double p) { return uniform(0, 1) < p; }
};

}  // namespace subsurf::drawing
