#include "host/drawing/png_writer.h"

#include <libdeflate.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace subsurf::drawing {
namespace {

// Level 1 is slower than 2 on drawn pages (long flat runs); 2 gives files
// about as small as zlib's level 2 in three quarters of the time.
constexpr int kCompressionLevel = 2;

// Cairo holds premultiplied alpha; PNG wants it undone.
std::uint8_t unpremultiply(std::uint32_t c, std::uint32_t a) {
  return static_cast<std::uint8_t>(a == 0 ? 0 : (c * 255 + a / 2) / a);
}

void putBigEndian(std::vector<std::uint8_t>& out, std::uint32_t v) {
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<std::uint8_t>(v >> shift));
}

// One chunk: length, type, data, and the CRC of type and data.
void putChunk(std::vector<std::uint8_t>& out, const char (&type)[5], const std::uint8_t* data, std::size_t n) {
  putBigEndian(out, static_cast<std::uint32_t>(n));
  const std::size_t start = out.size();
  out.insert(out.end(), type, type + 4);
  out.insert(out.end(), data, data + n);
  putBigEndian(out, libdeflate_crc32(0, out.data() + start, n + 4));
}

// The image's rows as PNG scanlines: a filter byte ("None": drawn pages are
// flat colour, which deflate finds without help) and RGB or RGBA bytes.
std::vector<std::uint8_t> scanlines(const unsigned char* data, int w, int h, int stride, bool opaque) {
  const std::size_t channels = opaque ? 3 : 4, rowBytes = 1 + static_cast<std::size_t>(w) * channels;
  std::vector<std::uint8_t> raw(rowBytes * static_cast<std::size_t>(h));
  for (int y = 0; y < h; ++y) {
    const auto* src = reinterpret_cast<const std::uint32_t*>(data + static_cast<std::ptrdiff_t>(y) * stride);
    std::uint8_t* out = raw.data() + rowBytes * static_cast<std::size_t>(y);
    *out++ = 0;
    if (opaque) {
      for (int x = 0; x < w; ++x, out += 3) {
        const std::uint32_t p = src[x];
        out[0] = static_cast<std::uint8_t>(p >> 16);
        out[1] = static_cast<std::uint8_t>(p >> 8);
        out[2] = static_cast<std::uint8_t>(p);
      }
    } else {
      for (int x = 0; x < w; ++x) {
        const std::uint32_t p = src[x], a = p >> 24;
        *out++ = unpremultiply((p >> 16) & 0xFF, a);
        *out++ = unpremultiply((p >> 8) & 0xFF, a);
        *out++ = unpremultiply(p & 0xFF, a);
        *out++ = static_cast<std::uint8_t>(a);
      }
    }
  }
  return raw;
}

}  // namespace

Status writePng(cairo_surface_t* image, const std::function<void(std::string_view)>& sink) {
  cairo_surface_flush(image);
  const int w = cairo_image_surface_get_width(image), h = cairo_image_surface_get_height(image);
  const int stride = cairo_image_surface_get_stride(image);
  const unsigned char* data = cairo_image_surface_get_data(image);
  if (!data || w <= 0 || h <= 0) return Status::error("no picture to write");
  // A page is opaque when every alpha is 255: one AND over all pixels (it vectorises).
  std::uint32_t all = 0xFFFFFFFFu;
  for (int y = 0; y < h; ++y) {
    const auto* row = reinterpret_cast<const std::uint32_t*>(data + static_cast<std::ptrdiff_t>(y) * stride);
    for (int x = 0; x < w; ++x) all &= row[x];
  }
  const bool opaque = (all >> 24) == 0xFF;
  const std::vector<std::uint8_t> raw = scanlines(data, w, h, stride, opaque);

  std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> compressor(
      libdeflate_alloc_compressor(kCompressionLevel), libdeflate_free_compressor);
  if (!compressor) return Status::error("out of memory for the PNG writer");
  std::vector<std::uint8_t> packed(libdeflate_zlib_compress_bound(compressor.get(), raw.size()));
  const std::size_t packedSize =
      libdeflate_zlib_compress(compressor.get(), raw.data(), raw.size(), packed.data(), packed.size());
  if (packedSize == 0) return Status::error("the PNG writer failed");

  std::vector<std::uint8_t> png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  png.reserve(packedSize + 64);
  std::vector<std::uint8_t> header;
  putBigEndian(header, static_cast<std::uint32_t>(w));
  putBigEndian(header, static_cast<std::uint32_t>(h));
  // 8 bits per sample; colour type 2 (RGB) or 6 (RGBA); deflate; adaptive filters; no interlace.
  header.insert(header.end(), {8, static_cast<std::uint8_t>(opaque ? 2 : 6), 0, 0, 0});
  putChunk(png, "IHDR", header.data(), header.size());
  putChunk(png, "IDAT", packed.data(), packedSize);
  putChunk(png, "IEND", nullptr, 0);
  sink(std::string_view(reinterpret_cast<const char*>(png.data()), png.size()));
  return Status::ok();
}

}  // namespace subsurf::drawing
