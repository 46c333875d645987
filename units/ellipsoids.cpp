#include "units/ellipsoids.h"

namespace subsurf {

// Semi-major axes and inverse flattenings as published with each ellipsoid's
// definition (the WGS 84 / NIMA TR8350.2 tables for the national variants).
const std::array<ReferenceEllipsoid, kEllipsoidCount>& referenceEllipsoids() {
  static constexpr std::array<ReferenceEllipsoid, kEllipsoidCount> kTable = {{
      {"Airy 1849", 6377563.396, 299.3249646},
      {"Modified Airy", 6377340.189, 299.3249646},
      {"Australian National 1965", 6378160.0, 298.25},
      {"Bessel 1841", 6377397.155, 299.1528128},
      {"Bessel 1841 (Namibia)", 6377483.865, 299.1528128},
      {"Clarke 1866", 6378206.4, 294.9786982},
      {"Clarke 1880", 6378249.145, 293.465},
      {"Everest 1830", 6377276.345, 300.8017},
      {"Everest 1948", 6377304.063, 300.8017},
      {"Everest 1956", 6377301.243, 300.8017},
      {"Everest 1969", 6377295.664, 300.8017},
      {"Everest (Sabah and Sarawak)", 6377298.556, 300.8017},
      {"Fischer 1960 (Mercury)", 6378166.0, 298.3},
      {"Modified Fischer 1960", 6378155.0, 298.3},
      {"Fischer 1968", 6378150.0, 298.3},
      {"GRS 1967", 6378160.0, 298.247167427},
      {"GRS 1980", 6378137.0, 298.257222101},
      {"Helmert 1906", 6378200.0, 298.3},
      {"Hough 1960", 6378270.0, 297.0},
      {"Indonesian 1974", 6378160.0, 298.247},
      {"International 1924", 6378388.0, 297.0},
      {"Krassovsky 1940", 6378245.0, 298.3},
      {"South American 1969", 6378160.0, 298.25},
      {"WGS 1960", 6378165.0, 298.3},
      {"WGS 1966", 6378145.0, 298.25},
      {"WGS 1972", 6378135.0, 298.26},
      {"WGS 1984", 6378137.0, 298.257223563},
  }};
  return kTable;
}

}  // namespace subsurf
