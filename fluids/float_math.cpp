#include "fluids/float_math.h"

#include <cmath>

namespace subsurf::fluids::fmath {

LogTable makeLogTable() {
  LogTable t{};
  for (std::uint64_t i = 0; i < 128; ++i) {
    const double c = std::bit_cast<double>(LogTable::kOffset + (i << LogTable::kBucketShift));
    t.invC[i] = 1.0 / c;
    t.logC[i] = std::log(c);
  }
  return t;
}

}  // namespace subsurf::fluids::fmath
