// A tray photographed at an angle, with the same tray photographed square on:
// for testing and measuring how trays are straightened.
//
// The flat photograph is an ordinary sample tray (sample_tray.h). The angled
// one is that photograph seen through a known homography: the camera tilted
// so that the far side of the tray is narrower, turned a few degrees, and a
// little further away. The tray's four corners in the angled photograph and
// its rows in the flat one are therefore known exactly.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "host/drawing/sample_tray.h"
#include "host/image/projective.h"

namespace subsurf::drawing {

// Which side of the tray is furthest from the camera (and so narrowest).
enum class FarSide { Top, Right, Bottom, Left };

struct PerspectiveTraySpec {
  SampleTraySpec tray;           // the flat tray, and the size of both photographs
  FarSide farSide = FarSide::Top;
  double keystone = 0.12;        // the far side is this share shorter than the near one
  double scale = 0.85;           // the tray's size in the angled photograph against the flat one
  double rotationDegrees = 0.0;  // the camera turned (clockwise positive)
  double shiftX = 0.0;           // the tray's centre moved by these shares of the photograph
  double shiftY = 0.0;
};

// A spec drawn from a seed: tray material, 3 to 8 rows, far side, keystone
// of 5 to 20 %, turn of up to 6 degrees. The same seed gives the same spec.
PerspectiveTraySpec perspectiveTraySpec(std::uint64_t seed, int width, int height, double topDepth,
                                        const std::string& well);

struct PerspectiveTray {
  SampleTray flat;                             // the tray square on, with its rows and frame
  image::Raster photo;                         // the same tray photographed at the angle
  std::array<image::PlanePoint, 4> corners;    // the frame's corners in `photo`: top-left, top-right,
                                               // bottom-right, bottom-left of the flat tray
  image::Homography flatToPhoto;
};

PerspectiveTray renderPerspectiveTray(const PerspectiveTraySpec& spec);

// One line describing a spec ("wood, 5 rows, far side top, keystone 12.0%, turned 2.31 deg").
std::string describeSpec(const PerspectiveTraySpec& spec);

}  // namespace subsurf::drawing
