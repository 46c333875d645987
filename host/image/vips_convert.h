// libvips helpers shared by the image and drawing services (library-internal).
#pragma once

#include <string>

#include <vips/vips8>

namespace subsurf::image {

// Brings any picture libvips can read to three-band 8-bit sRGB: grey scans get
// three equal bands, 16-bit pictures are scaled down, CMYK is converted and
// transparency is laid over white. Throws vips::VError.
vips::VImage toRgb8(vips::VImage image);

// A libvips error as one line, clearing libvips's error buffer.
std::string vipsReason(const vips::VError& error);

}  // namespace subsurf::image
