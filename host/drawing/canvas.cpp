#include "host/drawing/canvas.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <cmath>

#include <fmt/format.h>

#include "host/drawing/png_writer.h"
#include "host/fixed_text.h"

namespace subsurf::drawing {
namespace {

constexpr double kPointsPerMm = 72.0 / 25.4;
// Cap height of the face as a fraction of its cairo font size.
constexpr double kCapHeight = 0.73;
// Largest raster page: beyond this a mistyped DPI would exhaust memory.
constexpr double kMaxRasterPixels = 400.0e6;

}  // namespace

bool outputKindOf(std::string_view path, OutputKind& kind) {
  const std::size_t dot = path.rfind('.');
  if (dot == std::string_view::npos) return false;
  const std::string ext = lowerCase(path.substr(dot + 1));
  if (ext == "svg") kind = OutputKind::Svg;
  else if (ext == "png") kind = OutputKind::Png;
  else if (ext == "pdf") kind = OutputKind::Pdf;
  else return false;
  return true;
}

const char* outputKindName(OutputKind kind) {
  switch (kind) {
    case OutputKind::Svg: return "SVG";
    case OutputKind::Png: return "PNG";
    case OutputKind::Pdf: return "PDF";
  }
  return "";
}

cairo_status_t Canvas::writeChunk(void* closure, const unsigned char* data, unsigned int length) {
  auto* self = static_cast<Canvas*>(closure);
  self->file_.write(std::string_view(reinterpret_cast<const char*>(data), length));
  return CAIRO_STATUS_SUCCESS;
}

std::unique_ptr<Canvas> Canvas::open(OutputKind kind, const std::string& path, const PageSetup& page,
                                     Status& status) {
  std::unique_ptr<Canvas> c(new Canvas());
  c->kind_ = kind;
  c->page_ = page;
  if (!(page.widthMm > 1.0 && page.heightMm > 1.0 && page.widthMm < 10000.0 && page.heightMm < 10000.0)) {
    status = Status::error(fmt::format("{}: page size {} x {} mm is not drawable", path, page.widthMm, page.heightMm));
    return nullptr;
  }
  if (kind == OutputKind::Png) {
    const double px = std::round(page.widthMm / 25.4 * page.dpi), py = std::round(page.heightMm / 25.4 * page.dpi);
    if (!(page.dpi >= 10.0 && page.dpi <= 2400.0) || px * py > kMaxRasterPixels) {
      status = Status::error(fmt::format("{}: {} dots per inch on {} x {} mm is too large or too small a picture",
                                         path, page.dpi, page.widthMm, page.heightMm));
      return nullptr;
    }
  }
  if (Status s = c->file_.open(path); !s) {
    status = s;
    return nullptr;
  }
  const double wPt = page.widthMm * kPointsPerMm, hPt = page.heightMm * kPointsPerMm;
  double scale = kPointsPerMm;
  switch (kind) {
    case OutputKind::Svg:
      c->surface_ = cairo_svg_surface_create_for_stream(&Canvas::writeChunk, c.get(), wPt, hPt);
      cairo_svg_surface_restrict_to_version(c->surface_, CAIRO_SVG_VERSION_1_1);
      break;
    case OutputKind::Pdf:
      c->surface_ = cairo_pdf_surface_create_for_stream(&Canvas::writeChunk, c.get(), wPt, hPt);
      break;
    case OutputKind::Png: {
      const int px = static_cast<int>(std::round(page.widthMm / 25.4 * page.dpi));
      const int py = static_cast<int>(std::round(page.heightMm / 25.4 * page.dpi));
      c->surface_ = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, px, py);
      scale = page.dpi / 25.4;
      break;
    }
  }
  if (cairo_surface_status(c->surface_) != CAIRO_STATUS_SUCCESS) {
    status = Status::error(fmt::format("{}: cannot make a {} page ({})", path, outputKindName(kind),
                                       cairo_status_to_string(cairo_surface_status(c->surface_))));
    c->file_.discard();
    return nullptr;
  }
  c->cr_ = cairo_create(c->surface_);
  cairo_scale(c->cr_, scale, scale);
  c->setFont(3.0);
  status = Status::ok();
  return c;
}

std::unique_ptr<Canvas> Canvas::onImage(cairo_surface_t* image, double dpi, Status& status) {
  if (!image || cairo_surface_get_type(image) != CAIRO_SURFACE_TYPE_IMAGE ||
      cairo_surface_status(image) != CAIRO_STATUS_SUCCESS || !(dpi >= 10.0 && dpi <= 2400.0)) {
    status = Status::error("The window has no drawable image");
    return nullptr;
  }
  std::unique_ptr<Canvas> c(new Canvas());
  c->kind_ = OutputKind::Png;
  c->page_.dpi = dpi;
  c->page_.widthMm = cairo_image_surface_get_width(image) * 25.4 / dpi;
  c->page_.heightMm = cairo_image_surface_get_height(image) * 25.4 / dpi;
  c->surface_ = cairo_surface_reference(image);
  c->finished_ = true;  // nothing to write: the pixels are the result
  c->cr_ = cairo_create(image);
  cairo_scale(c->cr_, dpi / 25.4, dpi / 25.4);
  c->setFont(3.0);
  status = Status::ok();
  return c;
}

Canvas::~Canvas() {
  if (cr_) cairo_destroy(cr_);
  if (surface_) {
    if (!finished_ && kind_ != OutputKind::Png) cairo_surface_finish(surface_);  // flushes into the discarded file
    cairo_surface_destroy(surface_);
  }
  if (!finished_) file_.discard();
}

double Canvas::deviceUnitMm() const { return kind_ == OutputKind::Png ? 25.4 / page_.dpi : 0.01; }

void Canvas::setColour(const Rgb& c, double alpha) {
  if (alpha >= 1.0) cairo_set_source_rgb(cr_, c.r, c.g, c.b);
  else cairo_set_source_rgba(cr_, c.r, c.g, c.b, alpha);
}

void Canvas::setFont(double heightMm, bool bold) {
  fontMm_ = heightMm;
  cairo_select_font_face(cr_, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(cr_, heightMm / kCapHeight);
}

double Canvas::textWidth(std::string_view text) {
  const std::string s(text);
  cairo_text_extents_t ext;
  cairo_text_extents(cr_, s.c_str(), &ext);
  return ext.x_advance;
}

void Canvas::text(std::string_view text, double x, double y, Align align, Baseline baseline, double angleDegrees) {
  const std::string s(text);
  const double w = textWidth(s);
  double dx = 0.0, dy = 0.0;
  if (align == Align::Centre) dx = -w / 2;
  if (align == Align::Right) dx = -w;
  if (baseline == Baseline::Top) dy = fontMm_;
  if (baseline == Baseline::Middle) dy = fontMm_ / 2;
  cairo_save(cr_);
  cairo_translate(cr_, x, y);
  if (angleDegrees != 0.0) cairo_rotate(cr_, -angleDegrees * M_PI / 180.0);
  cairo_move_to(cr_, dx, dy);
  cairo_show_text(cr_, s.c_str());
  cairo_restore(cr_);
}

Status Canvas::finish() {
  if (finished_) return Status::error(fmt::format("{}: already finished", file_.target()));
  cairo_destroy(cr_);
  cr_ = nullptr;
  cairo_status_t drawn = cairo_surface_status(surface_);
  if (kind_ == OutputKind::Png) {
    if (drawn == CAIRO_STATUS_SUCCESS) {
      const Status written = writePng(surface_, [this](std::string_view bytes) { file_.write(bytes); });
      if (!written) {
        finished_ = true;
        file_.discard();
        return Status::error(fmt::format("{}: {}", file_.target(), written.message()));
      }
    }
  } else {
    cairo_surface_finish(surface_);
    if (drawn == CAIRO_STATUS_SUCCESS) drawn = cairo_surface_status(surface_);
  }
  finished_ = true;
  if (drawn != CAIRO_STATUS_SUCCESS) {
    file_.discard();
    return Status::error(fmt::format("{}: drawing failed ({})", file_.target(), cairo_status_to_string(drawn)));
  }
  return file_.commit();
}

}  // namespace subsurf::drawing
