// Core-tray photographs: reading, size, and cutting rows out of them.
//
// A photograph is decoded once into memory (8-bit RGB, about 72 MB for a
// 24-megapixel camera picture) and every row is cut from that copy: decoding
// is by far the slowest step of a split, and a tray has five or more rows.
// Cutting never makes another full-size copy: a row is computed strip by
// strip, straight from the decoded pixels, while it is being written.
//
// Photographs are shown and cut the way the camera was held: the orientation
// recorded by the camera (EXIF) is applied, and all pixel coordinates,
// including the sizes "npixx" and "npixy", refer to the upright picture.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/image/raster.h"
#include "host/status.h"

namespace vips {
class VImage;
}

namespace subsurf::image {

struct PixelSize {
  int width = 0;
  int height = 0;
};

// The upright size of a photograph, from its header only (no decoding).
// On failure shows "Error loading: <file> (<reason>)" and returns it.
Status readPixelSize(const std::string& path, PixelSize& size);

// The picture's own description, read from its header: a JPEG's EXIF
// "ImageDescription" (see WriteOptions::description). Empty when it has none
// or cannot be read; nothing is shown.
std::string readImageDescription(const std::string& path);

// The image attributes the splitter asks for by name: "npixx" (width) and
// "npixy" (height) of the upright photograph. Any other name is an error.
Status readImageAttribute(const std::string& path, std::string_view name, int& value);

// Decoded photographs hand their memory on to the next photograph decoded
// (a few buffers are kept for that). A host that has finished splitting can
// give the kept buffers back to the system with this.
void releaseKeptPhotoMemory();

enum class Flip { None, Horizontal, Vertical };

// How a row is cut out of a photograph, so that its depth increases from left
// to right in the row image whichever way the tray was photographed:
//  1. the whole photograph is turned by angleDegrees (clockwise positive)
//     about its centre, on a canvas of the photograph's own size: this
//     straightens a tray that lay askew under the camera;
//  2. box is cut from that picture; the part outside it is dropped (a box
//     wholly outside the picture is an error);
//  3. the piece is turned by quarterTurns clockwise quarter turns (negative:
//     anticlockwise);
//  4. and finally mirrored if flip says so.
struct CutSpec {
  PixelBox box;
  int quarterTurns = 0;
  double angleDegrees = 0.0;
  Flip flip = Flip::None;
};

class Photo {
 public:
  Photo();
  ~Photo();
  Photo(Photo&&) noexcept;
  Photo& operator=(Photo&&) noexcept;

  // Decodes the photograph at path (JPEG, PNG, TIFF or BMP) into memory.
  // On failure shows "Error loading: <file> (<reason>)" (or "Error
  // converting" / "Error rotating" for the colour and orientation steps)
  // and returns that message; out is left empty.
  static Status load(const std::string& path, Photo& out);

  bool loaded() const { return impl_ != nullptr; }
  const std::string& path() const;
  int width() const;   // upright
  int height() const;  // upright
  int orientation() const;  // the camera's EXIF orientation, 1 (upright) to 8

  // The part of the (straightened) picture a cut takes: spec.box clipped to
  // the picture. Empty when the box misses the picture altogether.
  PixelBox clippedBox(const CutSpec& spec) const;

  // Prepares a cut as a source of rows, computed on demand. Fails (showing
  // "Error converting: <file> (...)") when the box misses the photograph.
  // The source refers to this photo, which must outlive it.
  Status openCut(const CutSpec& spec, std::unique_ptr<RowSource>& rows) const;

  // A cut as a raster in memory.
  Status cut(const CutSpec& spec, Raster& out) const;

  // The upright picture as a libvips image (lazy: nothing is computed until
  // pixels are asked for), for services built on libvips such as previews.
  const vips::VImage& uprightImage() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace subsurf::image
