// Canvas: a drawing surface over cairo that writes SVG, PNG or PDF.
//
// Drawing units are millimetres from the top-left corner of the page. Vector
// pages are sized in points (1 mm = 72/25.4 pt); a PNG page has its size in
// millimetres times dots per inch / 25.4 pixels. The file is written under a
// temporary name and renamed over the target only by finish(), so an
// abandoned or failed drawing leaves no file behind and the old one whole.
#pragma once

#include <cairo.h>

#include <memory>
#include <string>
#include <string_view>

#include "host/atomic_file.h"
#include "host/drawing/palette.h"
#include "host/status.h"

namespace subsurf::drawing {

enum class OutputKind { Svg, Png, Pdf };

// The kind a file name asks for by its extension (any letter case); false when
// it is none of .svg, .png, .pdf.
bool outputKindOf(std::string_view path, OutputKind& kind);
const char* outputKindName(OutputKind kind);

struct PageSetup {
  double widthMm = 297.0;
  double heightMm = 210.0;
  double dpi = 150.0;  // PNG only
};

enum class Align { Left, Centre, Right };
enum class Baseline { Top, Middle, Bottom };

class Canvas {
 public:
  ~Canvas();
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  // Opens a page for path; the message names the file when it cannot.
  static std::unique_ptr<Canvas> open(OutputKind kind, const std::string& path, const PageSetup& page,
                                      Status& status);

  cairo_t* cr() { return cr_; }
  OutputKind kind() const { return kind_; }
  const PageSetup& page() const { return page_; }
  // The size of one device pixel in millimetres (PNG), or a hundredth of a
  // millimetre for vector pages.
  double deviceUnitMm() const;
  // The raster surface of a PNG page (null for vector pages), for painting
  // many markers directly. Its pixels are device pixels.
  cairo_surface_t* raster() { return kind_ == OutputKind::Png ? surface_ : nullptr; }

  void setColour(const Rgb& c, double alpha = 1.0);
  void setColour(int paletteIndex) { setColour(paletteColour(paletteIndex)); }
  // Text in the sans-serif face, height in mm (the height of a capital).
  void setFont(double heightMm, bool bold = false);
  double textWidth(std::string_view text);
  // Draws text anchored at (x, y) by align and baseline, turned by angle
  // degrees anticlockwise about the anchor.
  void text(std::string_view text, double x, double y, Align align, Baseline baseline, double angleDegrees = 0.0);

  // A page over an image surface the caller owns (a window's pixels): no
  // file; the page is the surface's size at dpi, drawing goes straight in.
  static std::unique_ptr<Canvas> onImage(cairo_surface_t* image, double dpi, Status& status);

  // Completes the page and puts the file in place.
  Status finish();

 private:
  Canvas() = default;
  static cairo_status_t writeChunk(void* closure, const unsigned char* data, unsigned int length);

  OutputKind kind_ = OutputKind::Svg;
  PageSetup page_;
  AtomicFile file_;
  cairo_surface_t* surface_ = nullptr;
  cairo_t* cr_ = nullptr;
  double fontMm_ = 3.0;
  bool finished_ = false;
};

}  // namespace subsurf::drawing
