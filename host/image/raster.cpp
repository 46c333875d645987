#include "host/image/raster.h"

#include <algorithm>
#include <cstring>

namespace subsurf::image {

PixelBox clipBox(const PixelBox& box, int width, int height) {
  if (box.empty() || width <= 0 || height <= 0) return {};
  // Work in 64 bits: a box far off the picture must not overflow on its way back.
  const long long l = std::max<long long>(box.left, 0);
  const long long t = std::max<long long>(box.top, 0);
  const long long r = std::min<long long>(static_cast<long long>(box.left) + box.width, width);
  const long long b = std::min<long long>(static_cast<long long>(box.top) + box.height, height);
  if (r <= l || b <= t) return {};
  return {static_cast<int>(l), static_cast<int>(t), static_cast<int>(r - l), static_cast<int>(b - t)};
}

Raster::Raster(int width, int height)
    : width_(std::max(width, 0)),
      height_(std::max(height, 0)),
      pixels_(3 * static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_)) {}

Status ViewRowSource::readRows(int y0, int count, std::uint8_t* dst, std::size_t dstStride) {
  if (y0 < 0 || count < 0 || y0 + count > view_.height) return Status::error("rows out of range");
  const std::size_t n = 3 * static_cast<std::size_t>(view_.width);
  for (int i = 0; i < count; ++i) std::memcpy(dst + i * dstStride, view_.row(y0 + i), n);
  return Status::ok();
}

Status readAllRows(RowSource& source, Raster& out) {
  out = Raster(source.width(), source.height());
  if (out.empty()) return Status::ok();
  return source.readRows(0, out.height(), out.row(0), out.stride());
}

}  // namespace subsurf::image
