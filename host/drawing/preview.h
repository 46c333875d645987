// Layout previews: a reduced copy of a tray photograph with the core-row
// outlines drawn over it and each labelled with its depth interval, written as
// PNG so that a user can check a layout by eye before (or after) a split.
#pragma once

#include <string>
#include <vector>

#include "host/image/photo.h"
#include "host/image/raster.h"
#include "host/status.h"

namespace subsurf::drawing {

struct PreviewPoint {
  double x = 0.0;  // photo pixel column (upright photograph)
  double y = 0.0;  // photo pixel row
};

// One core row's outline in photo pixel coordinates, with its label text
// (such as "1234.50-1235.50") and its number in the layout.
struct PreviewOutline {
  std::vector<PreviewPoint> points;
  std::string label;
  int index = 0;
};

// A row straightened from four free corners, shown beside the photograph
// (the pixels at any size; they are scaled to the column).
struct PreviewRowImage {
  image::Raster pixels;
  std::string label;
  int index = 0;
};

struct PreviewOptions {
  int longestSide = 1600;   // the preview is reduced so its longer side is at most this
  double lineWidth = 3.0;   // outline thickness in preview pixels
  double fontSize = 0.0;    // label height in preview pixels; 0 picks one from the preview size
  std::string warning;      // when not empty, written in a red band across the top
  // When not empty, drawn in a column to the right of the photograph, top row
  // first, each under its label, so the straightened rows can be checked.
  std::vector<PreviewRowImage> straightenedRows;
};

// Draws the preview of the photograph at photoPath into pngPath (written
// under a temporary name and renamed when complete). Decodes only as much of
// the photograph as the reduced size needs. Failures are shown and returned:
// "Error loading: <photo> (...)" or "<png>" / "Conversion failed. (...)".
Status drawPreview(const std::string& photoPath, const std::vector<PreviewOutline>& outlines,
                   const std::string& pngPath, const PreviewOptions& options = {});

// The same from a photograph already decoded for cutting.
Status drawPreview(const image::Photo& photo, const std::vector<PreviewOutline>& outlines,
                   const std::string& pngPath, const PreviewOptions& options = {});

// The colour an outline with this index is drawn in (RGB, 0..1): a small
// cycle of strong colours that stand out on rock, wood and plastic.
void previewColour(int index, double rgb[3]);

}  // namespace subsurf::drawing
