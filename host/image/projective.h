// Projective transforms of the plane (homographies) and resampling a picture
// through one.
//
// A photograph of a flat tray taken from an angle is the flat tray seen
// through a homography: straight lines stay straight, parallel ones meet.
// Four points and where they go fix the transform.
#pragma once

#include <array>

#include "host/image/raster.h"

namespace subsurf::image {

struct PlanePoint {
  double x = 0.0;
  double y = 0.0;
};

class Homography {
 public:
  Homography();  // the identity

  // The transform taking from[i] to to[i] (i = 0..3). False, leaving the
  // identity, when three of either set lie on one line.
  static bool fromQuads(const std::array<PlanePoint, 4>& from, const std::array<PlanePoint, 4>& to,
                        Homography& out);

  PlanePoint apply(PlanePoint p) const;
  // False when the transform cannot be inverted.
  bool inverse(Homography& out) const;

 private:
  std::array<double, 9> m_;  // row major, m_[8] normalised to 1
};

// Fills `out` (whose size the caller has set) with the picture `source` seen
// through a transform: outToSource takes each output pixel centre to the
// point of the source it shows, sampled bilinearly; points off the source
// take the colour `fill`.
void warpPicture(const RasterView& source, const Homography& outToSource, Raster& out, const std::uint8_t fill[3]);

// Cuts the quadrilateral `corners` out of `source` and maps it onto an
// upright rectangle: corners[0] to the top-left, [1] top-right, [2]
// bottom-right, [3] bottom-left. The result is as wide as the longer of the
// sides 0-1 and 3-2 and as high as the longer of 1-2 and 0-3 (rounded to whole
// pixels, at least 1), sampled bilinearly; parts of the quadrilateral off the
// source take the colour `fill`. False, leaving `out` empty, when three
// corners lie on one line.
bool cutQuadrilateral(const RasterView& source, const std::array<PlanePoint, 4>& corners, Raster& out,
                      const std::uint8_t fill[3]);

}  // namespace subsurf::image
