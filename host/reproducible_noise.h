// A small reproducible random generator for synthetic data (examples,
// benchmarks, tests): a 64-bit linear congruential generator (Knuth's
// MMIX constants) with Box-Muller normals. The same seed gives the same
// numbers on every platform, and the scripts that compare against other
// tools can make the same sequence.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace subsurf {

class ReproducibleNoise {
 public:
  explicit ReproducibleNoise(std::uint64_t seed) : s_(seed) {}
  // Uniform in [0, 1), 53 bits.
  double uniform() {
    s_ = s_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(s_ >> 11) / 9007199254740992.0;
  }
  // Standard normal, from two uniforms.
  double normal() {
    const double u = std::max(1e-12, uniform()), v = uniform();
    return std::sqrt(-2 * std::log(u)) * std::cos(2 * 3.14159265358979323846 * v);
  }

 private:
  std::uint64_t s_;
};

}  // namespace subsurf
