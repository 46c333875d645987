#include "host/drawing/preview.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

#include <fmt/format.h>
#include <vips/vips8>

#include "host/image/atomic_output.h"
#include "host/image/bmp.h"
#include "host/image/image_messages.h"
#include "host/image/vips_convert.h"
#include "host/image/vips_runtime.h"

namespace subsurf::drawing {
namespace {

using image::reportWriteFailure;
using vips::VImage;

struct SurfaceDeleter {
  void operator()(cairo_surface_t* s) const { cairo_surface_destroy(s); }
};
struct ContextDeleter {
  void operator()(cairo_t* c) const { cairo_destroy(c); }
};

// Scale that brings the longer side down to longestSide (never up).
double reduction(int width, int height, int longestSide) {
  const int longest = std::max(width, height);
  if (longestSide <= 0 || longest <= longestSide) return 1.0;
  return static_cast<double>(longestSide) / longest;
}

void drawLabel(cairo_t* cr, const std::string& text, double x, double y, double fontSize, const double rgb[3],
               int surfaceWidth, int surfaceHeight) {
  cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
  cairo_set_font_size(cr, fontSize);
  cairo_text_extents_t ext;
  cairo_text_extents(cr, text.c_str(), &ext);
  const double pad = std::max(2.0, fontSize * 0.25);
  const double boxW = ext.x_advance + 2 * pad;
  const double boxH = fontSize * 1.25 + 2 * pad;
  // Keep the label on the picture even for outlines that run off its edge.
  x = std::clamp(x, 0.0, std::max(0.0, surfaceWidth - boxW));
  y = std::clamp(y, 0.0, std::max(0.0, surfaceHeight - boxH));
  cairo_set_source_rgba(cr, 0.0, 0.0, 0.0, 0.72);
  cairo_rectangle(cr, x, y, boxW, boxH);
  cairo_fill(cr);
  cairo_set_source_rgb(cr, rgb[0], rgb[1], rgb[2]);
  cairo_move_to(cr, x + pad, y + pad + fontSize);
  cairo_show_text(cr, text.c_str());
}

// The straightened rows in a column from x = left, `width` wide and `height`
// high: each row scaled to the column's width (less, when the rows would not
// otherwise fit its height) under its label.
void drawStraightenedRows(cairo_t* cr, const std::vector<PreviewRowImage>& rows, int left, int width, int height,
                          double fontSize) {
  cairo_set_source_rgb(cr, 0.16, 0.16, 0.16);
  cairo_rectangle(cr, left, 0, width, height);
  cairo_fill(cr);
  const double margin = std::max(6.0, fontSize * 0.5);
  const double labelHeight = fontSize * 1.25 + 2 * std::max(2.0, fontSize * 0.25);
  const double inner = width - 2 * margin;
  double stack = margin;
  for (const PreviewRowImage& r : rows)
    if (!r.pixels.empty()) stack += labelHeight + inner * r.pixels.height() / r.pixels.width() + margin;
  const double fit = stack > height ? std::max(0.05, (height - margin - rows.size() * (labelHeight + margin)) /
                                                         std::max(1.0, stack - margin - rows.size() * (labelHeight + margin)))
                                    : 1.0;
  double y = margin;
  for (const PreviewRowImage& r : rows) {
    if (r.pixels.empty()) continue;
    double rgb[3];
    previewColour(r.index, rgb);
    const std::string text = r.label.empty() ? fmt::format("{}", r.index) : fmt::format("{}: {}", r.index, r.label);
    drawLabel(cr, text, left + margin, y, fontSize, rgb, left + width, height);
    y += labelHeight;
    const int pw = r.pixels.width(), ph = r.pixels.height();
    std::unique_ptr<cairo_surface_t, SurfaceDeleter> picture(cairo_image_surface_create(CAIRO_FORMAT_RGB24, pw, ph));
    if (cairo_surface_status(picture.get()) != CAIRO_STATUS_SUCCESS) continue;
    cairo_surface_flush(picture.get());
    unsigned char* data = cairo_image_surface_get_data(picture.get());
    const int stride = cairo_image_surface_get_stride(picture.get());
    for (int py = 0; py < ph; ++py) {
      auto* out = reinterpret_cast<std::uint32_t*>(data + static_cast<std::size_t>(py) * stride);
      const std::uint8_t* in = r.pixels.row(py);
      for (int px = 0; px < pw; ++px, in += 3)
        out[px] = (std::uint32_t{in[0]} << 16) | (std::uint32_t{in[1]} << 8) | in[2];
    }
    cairo_surface_mark_dirty(picture.get());
    const double scale = inner * fit / pw;
    cairo_save(cr);
    cairo_translate(cr, left + margin, y);
    cairo_scale(cr, scale, scale);
    cairo_set_source_surface(cr, picture.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
    cairo_paint(cr);
    cairo_restore(cr);
    y += ph * scale + margin;
  }
}

// Draws on a reduced RGB picture; scale maps photo pixels to preview pixels.
Status render(const VImage& reduced, double scaleX, double scaleY, const std::vector<PreviewOutline>& outlines,
              const std::string& pngPath, const PreviewOptions& options) {
  const int w = reduced.width();
  const int h = reduced.height();
  // The column of straightened rows, half as wide as the photograph.
  const int column = options.straightenedRows.empty() ? 0 : std::max(200, w / 2);
  std::unique_ptr<cairo_surface_t, SurfaceDeleter> surface(
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, w + column, h));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
    return reportWriteFailure(pngPath, false, cairo_status_to_string(cairo_surface_status(surface.get())));
  }
  {
    std::size_t bytes = 0;
    std::unique_ptr<void, decltype(&g_free)> rgb(nullptr, &g_free);
    try {
      rgb.reset(reduced.write_to_memory(&bytes));
    } catch (const vips::VError& e) {
      return image::reportPhotoFailure(image::kErrorConverting, pngPath, image::vipsReason(e));
    }
    cairo_surface_flush(surface.get());
    unsigned char* data = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    const auto* in = static_cast<const std::uint8_t*>(rgb.get());
    for (int y = 0; y < h; ++y) {
      auto* row = reinterpret_cast<std::uint32_t*>(data + static_cast<std::size_t>(y) * stride);
      for (int x = 0; x < w; ++x, in += 3) row[x] = (std::uint32_t{in[0]} << 16) | (std::uint32_t{in[1]} << 8) | in[2];
    }
    cairo_surface_mark_dirty(surface.get());
  }

  std::unique_ptr<cairo_t, ContextDeleter> cr(cairo_create(surface.get()));
  const double fontSize = options.fontSize > 0 ? options.fontSize : std::max(12.0, std::max(w, h) / 70.0);
  const double lineWidth = options.lineWidth > 0 ? options.lineWidth : 3.0;
  cairo_set_line_join(cr.get(), CAIRO_LINE_JOIN_MITER);
  for (const PreviewOutline& outline : outlines) {
    if (outline.points.empty()) continue;
    double rgb[3];
    previewColour(outline.index, rgb);
    cairo_new_path(cr.get());
    for (const PreviewPoint& p : outline.points) cairo_line_to(cr.get(), p.x * scaleX, p.y * scaleY);
    cairo_close_path(cr.get());
    // A dark edge under the coloured line keeps it visible on pale rock too.
    cairo_set_source_rgba(cr.get(), 0, 0, 0, 0.6);
    cairo_set_line_width(cr.get(), lineWidth + 2.0);
    cairo_stroke_preserve(cr.get());
    cairo_set_source_rgb(cr.get(), rgb[0], rgb[1], rgb[2]);
    cairo_set_line_width(cr.get(), lineWidth);
    cairo_stroke(cr.get());
  }
  // Labels after all outlines, so that no outline crosses a label.
  for (const PreviewOutline& outline : outlines) {
    if (outline.points.empty()) continue;
    double rgb[3];
    previewColour(outline.index, rgb);
    double left = outline.points.front().x, top = outline.points.front().y;
    for (const PreviewPoint& p : outline.points) {
      left = std::min(left, p.x);
      top = std::min(top, p.y);
    }
    const std::string text =
        outline.label.empty() ? fmt::format("{}", outline.index) : fmt::format("{}: {}", outline.index, outline.label);
    const double inset = lineWidth + 2.0;
    drawLabel(cr.get(), text, left * scaleX + inset, top * scaleY + inset, fontSize, rgb, w, h);
  }
  if (!options.warning.empty()) {
    // Across the whole top, so that it cannot be missed among the outlines.
    cairo_select_font_face(cr.get(), "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
    cairo_set_font_size(cr.get(), fontSize * 1.2);
    const double band = fontSize * 2.2;
    cairo_set_source_rgba(cr.get(), 0.85, 0.05, 0.05, 0.88);
    cairo_rectangle(cr.get(), 0, 0, w, band);
    cairo_fill(cr.get());
    cairo_set_source_rgb(cr.get(), 1, 1, 1);
    cairo_move_to(cr.get(), fontSize * 0.6, band * 0.5 + fontSize * 0.45);
    cairo_show_text(cr.get(), options.warning.c_str());
  }
  if (column > 0) drawStraightenedRows(cr.get(), options.straightenedRows, w, column, h, fontSize);
  cr.reset();
  cairo_surface_flush(surface.get());

  image::AtomicOutput out(pngPath);
  Status s = out.open();
  if (s) s = out.closeStream();
  if (s) {
    const cairo_status_t written = cairo_surface_write_to_png(surface.get(), out.tempPath().c_str());
    if (written != CAIRO_STATUS_SUCCESS) s = Status::error(cairo_status_to_string(written));
  }
  if (s) s = out.commit();
  if (!s) {
    out.discard();
    return reportWriteFailure(pngPath, false, s.message());
  }
  return Status::ok();
}

}  // namespace

void previewColour(int index, double rgb[3]) {
  static constexpr double kColours[][3] = {
      {1.00, 0.92, 0.10},  // yellow
      {0.10, 0.90, 1.00},  // cyan
      {1.00, 0.25, 0.85},  // magenta
      {0.45, 1.00, 0.20},  // green
      {1.00, 0.55, 0.10},  // orange
      {0.55, 0.65, 1.00},  // light blue
  };
  constexpr int n = static_cast<int>(std::size(kColours));
  const int i = ((index % n) + n) % n;
  std::memcpy(rgb, kColours[i], sizeof kColours[i]);
}

Status drawPreview(const image::Photo& photo, const std::vector<PreviewOutline>& outlines,
                   const std::string& pngPath, const PreviewOptions& options) {
  if (!photo.loaded()) return reportWriteFailure(pngPath, false, "no photograph loaded");
  const double scale = reduction(photo.width(), photo.height(), options.longestSide);
  VImage reduced;
  try {
    reduced = scale < 1.0 ? photo.uprightImage().resize(scale) : photo.uprightImage();
  } catch (const vips::VError& e) {
    return image::reportPhotoFailure(image::kErrorConverting, photo.path(), image::vipsReason(e));
  }
  return render(reduced, static_cast<double>(reduced.width()) / photo.width(),
                static_cast<double>(reduced.height()) / photo.height(), outlines, pngPath, options);
}

Status drawPreview(const std::string& photoPath, const std::vector<PreviewOutline>& outlines,
                   const std::string& pngPath, const PreviewOptions& options) {
  if (image::looksLikeBmp(photoPath)) {
    // Bitmaps are read by our own reader, which has no reduced decoding.
    image::Photo photo;
    if (Status s = image::Photo::load(photoPath, photo); !s) return s;
    return drawPreview(photo, outlines, pngPath, options);
  }
  image::PixelSize full;
  if (Status s = image::readPixelSize(photoPath, full); !s) return s;
  const double scale = reduction(full.width, full.height, options.longestSide);
  const int target = std::max(1, static_cast<int>(std::lround(std::max(full.width, full.height) * scale)));
  VImage reduced;
  try {
    // Thumbnailing lets the JPEG decoder skip detail it would throw away, and
    // turns the picture upright like Photo does.
    // A damaged file (any warning of the decoder) is an error, as when a
    // photograph is split.
    const std::string damagedFails = photoPath + "[fail_on=warning]";
    reduced = image::toRgb8(VImage::thumbnail(damagedFails.c_str(), target,
                                              VImage::option()->set("height", target)->set("size", VIPS_SIZE_DOWN)))
                  .copy_memory();
  } catch (const vips::VError& e) {
    return image::reportPhotoFailure(image::kErrorLoading, photoPath, image::vipsReason(e));
  }
  return render(reduced, static_cast<double>(reduced.width()) / full.width,
                static_cast<double>(reduced.height()) / full.height, outlines, pngPath, options);
}

}  // namespace subsurf::drawing
