// Generated trays for the row tests.
#pragma once

#include <cstdint>

#include "host/drawing/varied_tray.h"

namespace subsurf::testing {

// A wooden tray photographed square on, in even light, with rows across.
inline drawing::VariedTraySpec squareOnTray(int width, int height, int rows, std::uint64_t seed) {
  drawing::VariedTraySpec spec;
  spec.tray.width = width;
  spec.tray.height = height;
  spec.tray.rows = rows;
  spec.tray.seed = seed;
  return spec;
}

}  // namespace subsurf::testing
