#include "host/drawing/png_writer.h"

#include <png.h>

#include <cstdint>
#include <vector>

namespace subsurf::drawing {
namespace {

void writeData(png_structp png, png_bytep data, png_size_t length) {
  auto* sink = static_cast<const std::function<void(std::string_view)>*>(png_get_io_ptr(png));
  (*sink)(std::string_view(reinterpret_cast<const char*>(data), length));
}

void flushData(png_structp) {}

// Cairo holds premultiplied alpha; PNG wants it undone.
std::uint8_t unpremultiply(std::uint32_t c, std::uint32_t a) {
  return static_cast<std::uint8_t>(a == 0 ? 0 : (c * 255 + a / 2) / a);
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
    const auto* row = reinterpret_cast<const std::uint32_t*>(data + y * stride);
    for (int x = 0; x < w; ++x) all &= row[x];
  }
  const bool opaque = (all >> 24) == 0xFF;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (!png || !info) {
    png_destroy_write_struct(&png, &info);
    return Status::error("out of memory for the PNG writer");
  }
  const int channels = opaque ? 3 : 4;
  std::vector<png_byte> row(static_cast<std::size_t>(w) * channels);
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    return Status::error("the PNG writer failed");
  }
  png_set_write_fn(png, const_cast<std::function<void(std::string_view)>*>(&sink), writeData, flushData);
  png_set_IHDR(png, info, static_cast<png_uint_32>(w), static_cast<png_uint_32>(h), 8,
               opaque ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
  png_set_compression_level(png, 2);
  png_write_info(png, info);
  for (int y = 0; y < h; ++y) {
    const auto* src = reinterpret_cast<const std::uint32_t*>(data + y * stride);
    png_byte* out = row.data();
    if (opaque) {
      for (int x = 0; x < w; ++x, out += 3) {
        const std::uint32_t p = src[x];
        out[0] = static_cast<png_byte>(p >> 16);
        out[1] = static_cast<png_byte>(p >> 8);
        out[2] = static_cast<png_byte>(p);
      }
    } else {
      for (int x = 0; x < w; ++x) {
        const std::uint32_t p = src[x], a = p >> 24;
        *out++ = unpremultiply((p >> 16) & 0xFF, a);
        *out++ = unpremultiply((p >> 8) & 0xFF, a);
        *out++ = unpremultiply(p & 0xFF, a);
        *out++ = static_cast<png_byte>(a);
      }
    }
    png_write_row(png, row.data());
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return Status::ok();
}

}  // namespace subsurf::drawing
