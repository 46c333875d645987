// Believable photographs of boxed core trays, drawn from a seed, for sample
// data, demonstrations and benchmarks.
//
// A tray is drawn as it would be photographed from above on a core-shed
// table: a wooden tray with a header board (label card with well name and
// depth interval, measuring tape), a number of channels separated by
// dividing walls, and in each channel a row of core laid top-left to
// bottom-right: cylinders of rock with colour, grain and bedding that change
// with lithology, broken into pieces with gaps, rubble zones and fractures,
// and a stretch of missing core at the end of some rows. The same seed gives
// the same picture.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/image/raster.h"

namespace subsurf::drawing {

// What the tray is made of. Wood is the default look; plastic trays are one
// flat colour, cardboard ones pale and fibrous.
enum class TrayMaterial { Wood, Plastic, Cardboard };

// Departures from the default look, for test sets that must be varied. The
// defaults draw the default tray exactly as before.
struct TrayLook {
  TrayMaterial material = TrayMaterial::Wood;
  double colour[3] = {60, 62, 70};  // RGB 0..255 of a plastic tray
  double emptyRowChance = 0.0;      // chance that a compartment holds no core
  bool sideObjects = false;         // colour chart, ruler and board beside a narrower tray
  std::uint64_t seed = 0;           // of these choices, apart from the drawing's own
};

struct SampleTraySpec {
  int width = 2400;
  int height = 1600;
  int rows = 5;
  double topDepth = 1234.5;  // metres, at the left end of the first row
  double rowLength = 1.0;    // metres of core per row
  std::string well = "SUBSURF-1";
  int trayNumber = 1;
  std::uint64_t seed = 1;
  TrayLook look;
};

// One core row as drawn: its depth interval and the pixel rectangle holding
// the core (the channel's full length, the core's full diameter).
struct SampleRow {
  int index = 0;  // 1 for the top row
  double top = 0.0;
  double base = 0.0;
  image::PixelBox box;
  image::PixelBox compartment;  // the whole channel between its walls
};

struct SampleTray {
  image::Raster pixels;
  double top = 0.0;
  double base = 0.0;
  std::vector<SampleRow> rows;
  image::PixelBox trayBox;  // the tray's outer frame
};

// Draws one tray photograph.
SampleTray renderSampleTray(const SampleTraySpec& spec);

// The colour of the table round the tray of `spec` at pixel (x, y) of its
// photograph, without the tray's shadow; also beyond the photograph's edges,
// as if the table went on.
void tableColourAt(const SampleTraySpec& spec, double x, double y, std::uint8_t rgb[3]);

// "TRAY_1234_5-1239_5.jpg": the depths to one decimal, four digits before it.
std::string sampleTrayFileName(double top, double base);

}  // namespace subsurf::drawing
