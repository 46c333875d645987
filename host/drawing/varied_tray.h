// Varied tray photographs with their true rows, for measuring how well rows
// are found: trays of wood, plastic or cardboard; one to ten rows running
// across or down the photograph; empty compartments; a colour chart, ruler
// and board beside the tray; one or two trays in one photograph; a camera a
// little turned or tilted; light falling off across the table; the colours
// of a photograph taken under ultraviolet light.
//
// A row's truth is its compartment (the channel between its walls) as it
// appears in the photograph: four corners, and their bounding box.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "host/drawing/sample_tray.h"
#include "host/image/projective.h"

namespace subsurf::drawing {

struct VariedTraySpec {
  SampleTraySpec tray;            // size of the whole photograph, rows and look of each tray
  int trays = 1;                  // 1 or 2, one beside the other across the rows
  bool rowsDown = false;          // the photograph turned a quarter anticlockwise: rows run down it
  double rotationDegrees = 0.0;   // the camera turned (clockwise positive)
  double keystone = 0.0;          // the camera tilted: the far end is this share narrower
  bool ultraviolet = false;
  double lightFalloff = 0.0;      // light falls by this share from one side to the other
};

// The varied spec of one photograph, drawn from a seed (the same seed gives
// the same spec on every platform).
VariedTraySpec variedTraySpec(std::uint64_t seed, int width, int height, double topDepth, const std::string& well);

struct TrueRow {
  int index = 0;  // in reading order: top first, left to right when rows run down
  double top = 0.0;
  double base = 0.0;
  std::array<image::PlanePoint, 4> corners;  // round the compartment
  image::PixelBox box;                        // their bounding box
};

struct VariedTray {
  image::Raster pixels;
  double top = 0.0;
  double base = 0.0;
  std::vector<TrueRow> rows;
};

VariedTray renderVariedTray(const VariedTraySpec& spec);

// One line describing a spec, for the set's listing ("plastic, 6 rows down, uv").
std::string describeSpec(const VariedTraySpec& spec);

}  // namespace subsurf::drawing
