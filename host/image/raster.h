// Pixel rectangles, RGB rasters and sources of pixel rows.
//
// Everything the image services hand around is 8-bit RGB, three bytes per
// pixel, rows top to bottom. A row image cut from a tray photograph can be
// large (a 24-megapixel photo gives rows of several megabytes), so writers do
// not ask for a whole raster: they pull strips of rows from a RowSource, which
// may be a raster in memory or a view straight into the decoded photograph.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/status.h"

namespace subsurf::image {

// A rectangle in pixel coordinates: origin at the top-left pixel, x to the
// right, y down; left/top inclusive, width/height in pixels.
struct PixelBox {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;

  int right() const { return left + width; }    // one past the last column
  int bottom() const { return top + height; }   // one past the last row
  bool empty() const { return width <= 0 || height <= 0; }
  bool operator==(const PixelBox&) const = default;
};

// The part of box that lies on a width x height picture; empty when they do not meet.
PixelBox clipBox(const PixelBox& box, int width, int height);

// Read-only view of RGB pixels owned by someone else.
struct RasterView {
  const std::uint8_t* data = nullptr;
  int width = 0;
  int height = 0;
  std::size_t stride = 0;  // bytes from one row to the next (at least 3 * width)

  const std::uint8_t* row(int y) const { return data + static_cast<std::size_t>(y) * stride; }
  const std::uint8_t* pixel(int x, int y) const { return row(y) + 3 * static_cast<std::size_t>(x); }
  bool empty() const { return width <= 0 || height <= 0 || data == nullptr; }
};

// An RGB raster that owns its pixels, rows packed without padding.
class Raster {
 public:
  Raster() = default;
  Raster(int width, int height);

  int width() const { return width_; }
  int height() const { return height_; }
  bool empty() const { return width_ <= 0 || height_ <= 0; }
  std::uint8_t* row(int y) { return pixels_.data() + static_cast<std::size_t>(y) * stride(); }
  const std::uint8_t* row(int y) const { return pixels_.data() + static_cast<std::size_t>(y) * stride(); }
  std::uint8_t* pixel(int x, int y) { return row(y) + 3 * static_cast<std::size_t>(x); }
  const std::uint8_t* pixel(int x, int y) const { return row(y) + 3 * static_cast<std::size_t>(x); }
  std::size_t stride() const { return 3 * static_cast<std::size_t>(width_); }
  std::vector<std::uint8_t>& bytes() { return pixels_; }
  const std::vector<std::uint8_t>& bytes() const { return pixels_; }
  RasterView view() const { return {pixels_.data(), width_, height_, stride()}; }

 private:
  int width_ = 0;
  int height_ = 0;
  std::vector<std::uint8_t> pixels_;
};

// Something that can deliver the rows of an RGB picture on demand, in any
// order, a strip at a time. Writers ask for strips of a few dozen rows so that
// a whole row image never has to exist in memory at once.
class RowSource {
 public:
  virtual ~RowSource() = default;
  virtual int width() const = 0;
  virtual int height() const = 0;
  // Copies rows y0 .. y0 + count - 1 into dst, one row every dstStride bytes.
  // On failure the message says what went wrong (without naming any file).
  virtual Status readRows(int y0, int count, std::uint8_t* dst, std::size_t dstStride) = 0;
  // The row itself when the pixels already sit in memory, so that writers can
  // read them in place instead of copying them first; null otherwise.
  virtual const std::uint8_t* directRow(int /*y*/) const { return nullptr; }
};

// A RowSource over pixels already in memory.
class ViewRowSource : public RowSource {
 public:
  explicit ViewRowSource(RasterView view) : view_(view) {}
  int width() const override { return view_.width; }
  int height() const override { return view_.height; }
  Status readRows(int y0, int count, std::uint8_t* dst, std::size_t dstStride) override;
  const std::uint8_t* directRow(int y) const override { return view_.row(y); }

 private:
  RasterView view_;
};

// Reads a whole source into a raster (for callers that want the pixels themselves).
Status readAllRows(RowSource& source, Raster& out);

}  // namespace subsurf::image
