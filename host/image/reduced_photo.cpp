#include "host/image/reduced_photo.h"

#include <algorithm>
#include <cstring>

#include <vips/vips8>

#include "host/image/bmp.h"
#include "host/image/image_messages.h"
#include "host/image/vips_convert.h"
#include "host/image/vips_runtime.h"

namespace subsurf::image {

Status loadReducedPhoto(const std::string& path, int longestSide, Raster& out, PixelSize& full) {
  using vips::VImage;
  longestSide = std::max(16, longestSide);
  VImage reduced;
  if (looksLikeBmp(path)) {
    // Bitmaps are read by our own reader, which has no reduced decoding.
    Photo photo;
    if (Status s = Photo::load(path, photo); !s) return s;
    full = {photo.width(), photo.height()};
    const double scale = std::min(1.0, static_cast<double>(longestSide) / std::max(full.width, full.height));
    try {
      reduced = (scale < 1.0 ? photo.uprightImage().resize(scale) : photo.uprightImage()).copy_memory();
    } catch (const vips::VError& e) {
      return reportPhotoFailure(kErrorConverting, path, vipsReason(e));
    }
  } else {
    if (Status s = readPixelSize(path, full); !s) return s;
    try {
      reduced = toRgb8(VImage::thumbnail(path.c_str(), longestSide,
                                         VImage::option()->set("height", longestSide)->set("size", VIPS_SIZE_DOWN)))
                    .copy_memory();
    } catch (const vips::VError& e) {
      return reportPhotoFailure(kErrorLoading, path, vipsReason(e));
    }
  }
  std::size_t bytes = 0;
  void* pixels = nullptr;
  try {
    pixels = reduced.write_to_memory(&bytes);
  } catch (const vips::VError& e) {
    return reportPhotoFailure(kErrorConverting, path, vipsReason(e));
  }
  out = Raster(reduced.width(), reduced.height());
  std::memcpy(out.bytes().data(), pixels, std::min(bytes, out.bytes().size()));
  g_free(pixels);
  return Status::ok();
}

}  // namespace subsurf::image
