// A fast PNG writer for drawn pages.
//
// Cairo's own PNG writer lets libpng try every row filter at its default
// compression, which costs more than drawing a million points. Drawn pages
// are mostly flat colour: unfiltered rows compressed whole by libdeflate at a
// fast level give files as small as zlib's fast levels in about two thirds of
// its time (zlib's checksum alone is a tenth of a million-point page).
#pragma once

#include <cairo.h>

#include <functional>
#include <string>
#include <string_view>

#include "host/status.h"

namespace subsurf::drawing {

// Writes an ARGB32 image surface as an 8-bit RGB PNG (opaque pages) or RGBA
// (pages with transparency), handing the bytes to sink.
Status writePng(cairo_surface_t* image, const std::function<void(std::string_view)>& sink);

}  // namespace subsurf::drawing
