// The largest photograph the programs will decode.
//
// A photograph's header states its width and height; a damaged or hostile
// file may claim 65000 x 65000 pixels (12 GB decoded) in a few hundred
// kilobytes. Every way of reading a photograph (the one-pass JPEG cutter, the
// general decoder, the size query behind previews) checks the stated size
// against this limit before it allocates anything for the pixels.
//
// The limit is kDefaultMegapixels unless the environment variable
// SUBSURF_MAX_MEGAPIXELS or setMaxMegapixels() (slabber's --max-megapixels)
// says otherwise.
#pragma once

#include <string>

#include "host/status.h"

namespace subsurf::image {

// About 750 MB decoded: well above any tray camera (24 to 100 megapixels)
// and a stitched long-core scan.
inline constexpr double kDefaultMegapixels = 250.0;

// The limit in force, in millions of pixels.
double maxMegapixels();
// Sets it (a value not above 0 restores the default).
void setMaxMegapixels(double megapixels);

// Fails, with a reason naming the size and the limit, when width x height
// exceeds the limit or either side is not positive.
Status checkPixelCount(long long width, long long height);

}  // namespace subsurf::image
