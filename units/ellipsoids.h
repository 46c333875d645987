// Reference ellipsoids: the figures of the Earth that map coordinates are
// referred to. Each is given by its semi-major axis (metres) and its inverse
// flattening 1/f = a / (a - b).
#pragma once

#include <array>
#include <string_view>

namespace subsurf {

struct ReferenceEllipsoid {
  std::string_view name;       // up to 40 characters
  double semiMajorAxis;        // a, metres
  double inverseFlattening;    // 1/f
};

inline constexpr int kEllipsoidCount = 27;

// The classic ellipsoids in a fixed order, from "Airy 1849" to "WGS 1984":
// map settings store an ellipsoid by its place in this table (from 1).
const std::array<ReferenceEllipsoid, kEllipsoidCount>& referenceEllipsoids();

}  // namespace subsurf
