// Start-up of the libvips image library, once per process.
//
// Every image service calls ensureVips() before touching libvips; the first
// call on any thread starts the library and the others wait for it.
//
// The start-up is tuned for cutting tray photographs: the operation cache is
// switched off (each photo is decoded once and cut; caching decoded pixels
// between photos would only let memory grow over a long session), libvips
// works with one thread per call (unless VIPS_CONCURRENCY says otherwise;
// the programs parallelise over photographs instead), and the
// optional format modules (ImageMagick, PDF, HEIF, slide scanners) are not
// loaded unless SUBSURF_VIPS_MODULES=1 is set: they are not needed for the
// JPEG, PNG, TIFF and BMP photographs we read, and loading them costs tens of
// milliseconds and several megabytes per process. libvips's own warnings
// are silenced (their faults reach callers as errors) unless
// SUBSURF_VIPS_WARNINGS is set.
#pragma once

#include "host/status.h"

namespace subsurf::image {

// Starts libvips if that has not been done yet. Safe to call from any thread;
// the result of the first start-up is remembered and returned every time.
Status ensureVips();

// The text libvips left in its error buffer (trimmed), clearing the buffer.
std::string takeVipsError();

}  // namespace subsurf::image
