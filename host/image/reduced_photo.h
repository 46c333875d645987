// A photograph decoded small: the whole picture brought down so that its
// longer side is at most a given number of pixels, upright, as 8-bit RGB.
// JPEG photographs are reduced while they are decoded, so a 24-megapixel
// photograph costs a fraction of a full decode. For finding things in a
// photograph (rows, trays), where full detail is not needed.
#pragma once

#include <string>

#include "host/image/photo.h"
#include "host/image/raster.h"
#include "host/status.h"

namespace subsurf::image {

// Fills `out` with the reduced picture and `full` with the upright size of
// the photograph itself. On failure shows "Error loading: <file> (<reason>)"
// and returns it.
Status loadReducedPhoto(const std::string& path, int longestSide, Raster& out, PixelSize& full);

}  // namespace subsurf::image
