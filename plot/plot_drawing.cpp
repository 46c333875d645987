#include "plot/plot_drawing.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>
#include <numeric>

#include <fmt/format.h>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "host/paths.h"
#include "plot/axis_scales.h"
#include "plot/axis_ticks.h"
#include "plot/colour_bar_drawing.h"

namespace subsurf {
namespace {

using drawing::Align;
using drawing::Baseline;
using drawing::Canvas;
using drawing::Rgb;

constexpr double kMajorTick = 1.6;   // mm
constexpr double kMinorTick = 0.9;
constexpr double kTickGap = 1.0;     // between tick and number
constexpr double kLabelGap = 2.0;    // between numbers and axis label
constexpr double kFrameWidth = 0.25;

struct Rect {
  double left, top, right, bottom;
  double width() const { return right - left; }
  double height() const { return bottom - top; }
};

Rgb rgbOf(const std::array<int, 3>& c) { return drawing::rgb255(c[0], c[1], c[2]); }

std::string loginName() {
  if (const char* u = std::getenv("USER"); u && *u) return u;
  if (const passwd* pw = ::getpwuid(::getuid()); pw && pw->pw_name) return pw->pw_name;
  return "user";
}

std::string today() {
  const auto now = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
  const std::chrono::year_month_day d{now};
  return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(d.year()), static_cast<unsigned>(d.month()),
                     static_cast<unsigned>(d.day()));
}

void setDash(cairo_t* cr, int style, double width) {
  const double w = std::max(width, 0.2);
  switch (style) {
    case 2: {
      const double d[] = {4 * w + 1.5, 2 * w + 1.0};
      cairo_set_dash(cr, d, 2, 0);
      break;
    }
    case 3: {
      const double d[] = {0.01, 2 * w + 0.6};
      cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
      cairo_set_dash(cr, d, 2, 0);
      break;
    }
    case 4: {
      const double d[] = {4 * w + 1.5, 1.5 * w + 0.6, 0.01, 1.5 * w + 0.6};
      cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
      cairo_set_dash(cr, d, 4, 0);
      break;
    }
    default:
      cairo_set_dash(cr, nullptr, 0, 0);
  }
}

// Marker shapes: 1 circle, 2 square, 3 triangle, 4 diamond, 5 inverted
// triangle, 6 plus, 7 cross, 8 star. Shapes 6 to 8 are strokes, the rest filled.
bool markerIsStroke(int shape) { return shape >= 6 && shape <= 8; }

void markerPath(cairo_t* cr, int shape, double x, double y, double r) {
  switch (shape) {
    case 2:
      cairo_rectangle(cr, x - r * 0.85, y - r * 0.85, 1.7 * r, 1.7 * r);
      break;
    case 3:
    case 5: {
      const double s = shape == 3 ? 1.0 : -1.0;
      cairo_move_to(cr, x, y - s * r * 1.1);
      cairo_line_to(cr, x + r * 0.95, y + s * r * 0.65);
      cairo_line_to(cr, x - r * 0.95, y + s * r * 0.65);
      cairo_close_path(cr);
      break;
    }
    case 4:
      cairo_move_to(cr, x, y - r * 1.15);
      cairo_line_to(cr, x + r * 0.85, y);
      cairo_line_to(cr, x, y + r * 1.15);
      cairo_line_to(cr, x - r * 0.85, y);
      cairo_close_path(cr);
      break;
    case 6:
      cairo_move_to(cr, x - r, y);
      cairo_line_to(cr, x + r, y);
      cairo_move_to(cr, x, y - r);
      cairo_line_to(cr, x, y + r);
      break;
    case 7:
      cairo_move_to(cr, x - r * 0.8, y - r * 0.8);
      cairo_line_to(cr, x + r * 0.8, y + r * 0.8);
      cairo_move_to(cr, x - r * 0.8, y + r * 0.8);
      cairo_line_to(cr, x + r * 0.8, y - r * 0.8);
      break;
    case 8:
      for (int k = 0; k < 3; ++k) {
        const double a = k * M_PI / 3;
        cairo_move_to(cr, x - r * std::cos(a), y - r * std::sin(a));
        cairo_line_to(cr, x + r * std::cos(a), y + r * std::sin(a));
      }
      break;
    default:
      cairo_new_sub_path(cr);
      cairo_arc(cr, x, y, r, 0, 2 * M_PI);
      cairo_close_path(cr);
  }
}

void paintMarkers(cairo_t* cr, int shape, double r) {
  if (markerIsStroke(shape)) {
    cairo_set_line_width(cr, std::max(0.15, r * 0.3));
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_stroke(cr);
  } else {
    cairo_fill(cr);
  }
}

// Maps data values of a set onto the page.
class Mapper {
 public:
  Mapper(const ZW_SCALE& x, const ZW_SCALE& y, const Rect& area) : x_(x), y_(y), area_(area) {}
  // False when the point cannot be shown (null, or outside what the scale can map).
  bool map(double vx, double vy, double& px, double& py) const {
    if (isNull(static_cast<float>(vx)) || isNull(static_cast<float>(vy))) return false;
    const double fx = axisFraction(x_, vx), fy = axisFraction(y_, vy);
    if (!std::isfinite(fx) || !std::isfinite(fy)) return false;
    px = area_.left + fx * area_.width();
    py = area_.bottom - fy * area_.height();
    return true;
  }

 private:
  const ZW_SCALE& x_;
  const ZW_SCALE& y_;
  Rect area_;
};

// One axis's values to device positions, with the scale's transform of its
// limits worked out once: position = origin + length * fraction. Nulls and
// values the scale cannot show give NaN.
class AxisMap {
 public:
  AxisMap(const ZW_SCALE& s, double origin, double length) : type_(s.TYPE) {
    const double t0 = scaleTransform(type_, s.MIN), t1 = scaleTransform(type_, s.MAX);
    slope_ = length / (t1 - t0);
    offset_ = origin - t0 * slope_;
    if (!std::isfinite(slope_) || !std::isfinite(offset_)) slope_ = offset_ = NAN;
  }
  double operator()(float v) const {
    if (isNull(v)) return NAN;
    const double t = type_ == kLinear || type_ == kStan || type_ == kProb ? v : scaleTransform(type_, v);
    return offset_ + slope_ * t;
  }

 private:
  int type_;
  double slope_ = 0, offset_ = 0;
};

// Premultiplied "over" of src on dst, k = 255 - src alpha: each channel is
// src + dst * k / 255, the division rounded exactly (two channels at a time),
// so an opaque page stays opaque.
inline std::uint32_t over(std::uint32_t src, std::uint32_t dst, std::uint32_t k) {
  std::uint32_t rb = (dst & 0x00FF00FF) * k + 0x00800080;
  rb = ((rb + ((rb >> 8) & 0x00FF00FF)) >> 8) & 0x00FF00FF;
  std::uint32_t ag = ((dst >> 8) & 0x00FF00FF) * k + 0x00800080;
  ag = (ag + ((ag >> 8) & 0x00FF00FF)) & 0xFF00FF00;
  return src + rb + ag;
}

// The markers of a large data set, drawn as a density: each marker adds its
// pre-drawn coverage to a layer of counts, and the layer is put on the page
// once. All markers of a set share one colour and opacity, so n markers over
// a pixel give it 1 - (1 - a)^n of the colour whatever their order, exactly
// what painting them one by one gives; a point costs a few integer additions.
class MarkerLayer {
 public:
  MarkerLayer(int shape, double radiusPx, double opacity, int x0, int y0, int x1, int y1)
      : x0_(x0), y0_(y0), width_(std::max(0, x1 - x0)), height_(std::max(0, y1 - y0)) {
    half_ = static_cast<int>(std::ceil(radiusPx * 1.2 + 0.5));
    size_ = 2 * half_ + 1;
    cairo_surface_t* s = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size_, size_);
    cairo_t* cr = cairo_create(s);
    cairo_set_source_rgba(cr, 0, 0, 0, opacity);
    markerPath(cr, shape, half_ + 0.5, half_ + 0.5, radiusPx);
    if (markerIsStroke(shape)) {
      cairo_set_line_width(cr, std::max(1.0, radiusPx * 0.3));
      cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
      cairo_stroke(cr);
    } else {
      cairo_fill(cr);
    }
    cairo_destroy(cr);
    cairo_surface_flush(s);
    const unsigned char* data = cairo_image_surface_get_data(s);
    const int stride = cairo_image_surface_get_stride(s);
    // Coverage a as the count that transmits 1 - a: -ln(1 - a), in 1/256 units.
    weights_.assign(static_cast<std::size_t>(size_ * size_), 0);
    spans_.assign(static_cast<std::size_t>(size_), {0, 0});
    for (int row = 0; row < size_; ++row) {
      int first = size_, last = -1;
      for (int c = 0; c < size_; ++c) {
        const std::uint32_t a = reinterpret_cast<const std::uint32_t*>(data + row * stride)[c] >> 24;
        if (a == 0) continue;
        const double w = a >= 255 ? kCap : std::min<double>(kCap, std::round(-std::log(1.0 - a / 255.0) * kUnit));
        weights_[static_cast<std::size_t>(row * size_ + c)] = static_cast<std::uint32_t>(std::max(1.0, w));
        first = std::min(first, c);
        last = c;
      }
      if (last >= 0) spans_[static_cast<std::size_t>(row)] = {first, last + 1};
    }
    cairo_surface_destroy(s);
    counts_.assign(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), 0);
    hitsWidth_ = width_ + 2 * half_;
    hitsHeight_ = height_ + 2 * half_;
    hits_.assign(static_cast<std::size_t>(hitsWidth_) * static_cast<std::size_t>(hitsHeight_), 0);
  }

  // How far a marker reaches from its centre, in pixels.
  int reach() const { return half_; }

  // Counts a marker centred at (hx, hy), counted from the layer's corner less
  // the reach: centres outside the area count for the part of them that shows.
  // The count for such a centre, or null when none of the marker shows.
  std::uint16_t* cell(int hx, int hy) {
    if (static_cast<unsigned>(hx) >= static_cast<unsigned>(hitsWidth_) ||
        static_cast<unsigned>(hy) >= static_cast<unsigned>(hitsHeight_))
      return nullptr;
    return &hits_[static_cast<std::size_t>(hy) * static_cast<std::size_t>(hitsWidth_) + static_cast<std::size_t>(hx)];
  }
  static void add(std::uint16_t& h) {
    h = static_cast<std::uint16_t>(h + (h < kCap));  // kCap markers cover a pixel fully whatever their weight
  }

  // Spreads each pixel's markers by the marker's coverage: one pass over the
  // pixels that hold centres, however many markers share them.
  void spread() {
    for (int hy = 0; hy < hitsHeight_; ++hy) {
      const std::uint16_t* row = &hits_[static_cast<std::size_t>(hy) * static_cast<std::size_t>(hitsWidth_)];
      for (int hx = 0; hx < hitsWidth_; ++hx) {
        const std::uint32_t n = row[hx];
        if (n == 0) continue;
        // The marker's top-left corner in area pixels.
        const int left = hx - 2 * half_, top = hy - 2 * half_;
        const int r0 = std::max(0, -top), r1 = std::min(size_, height_ - top);
        for (int r = r0; r < r1; ++r) {
          const auto [s0, s1] = spans_[static_cast<std::size_t>(r)];
          const int c0 = std::max(s0, -left), c1 = std::min(s1, width_ - left);
          std::uint16_t* dst = &counts_[static_cast<std::size_t>(top + r) * static_cast<std::size_t>(width_)] + left;
          const std::uint32_t* w = &weights_[static_cast<std::size_t>(r * size_)];
          for (int c = c0; c < c1; ++c) dst[c] = static_cast<std::uint16_t>(std::min<std::uint32_t>(dst[c] + n * w[c], kCap));
        }
      }
    }
  }

  // Lays the colour over the page where markers fell, as much as they cover.
  void paint(unsigned char* data, int stride, const Rgb& colour) const {
    std::array<std::uint8_t, kCap + 1> alpha{};
    for (int t = 0; t <= kCap; ++t) alpha[static_cast<std::size_t>(t)] = static_cast<std::uint8_t>(std::lround(255.0 * (1.0 - std::exp(-t / static_cast<double>(kUnit)))));
    const std::uint32_t cr = static_cast<std::uint32_t>(std::lround(colour.r * 255)),
                        cg = static_cast<std::uint32_t>(std::lround(colour.g * 255)),
                        cb = static_cast<std::uint32_t>(std::lround(colour.b * 255));
    for (int y = 0; y < height_; ++y) {
      const std::uint16_t* row = &counts_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_)];
      auto* dst = reinterpret_cast<std::uint32_t*>(data + (y0_ + y) * stride) + x0_;
      for (int x = 0; x < width_; ++x) {
        if (row[x] == 0) continue;
        const std::uint32_t a = alpha[row[x]], k = 255 - a;
        const std::uint32_t src = (a << 24) | (((cr * a + 127) / 255) << 16) | (((cg * a + 127) / 255) << 8) | ((cb * a + 127) / 255);
        dst[x] = over(src, dst[x], k);
      }
    }
  }

  bool visible() const {
    return std::any_of(spans_.begin(), spans_.end(), [](const auto& s) { return s.second > s.first; });
  }

 private:
  static constexpr int kUnit = 256;       // counts per unit of -ln(transmission)
  static constexpr int kCap = 12 * kUnit; // beyond this a pixel is fully covered
  int x0_, y0_, width_, height_;
  int half_ = 0, size_ = 0;
  int hitsWidth_ = 0, hitsHeight_ = 0;
  std::vector<std::uint32_t> weights_;     // at most kCap each
  std::vector<std::uint16_t> counts_, hits_;  // both held at or below kCap
  std::vector<std::pair<int, int>> spans_;
};

// Beyond these counts a set's markers are laid as a density (see MarkerLayer):
// straight into a PNG page, and as one embedded image on a vector page.
constexpr std::size_t kManyPoints = 500;
constexpr std::size_t kVectorPoints = 50000;

}  // namespace

// Lays a plot out on a canvas and draws it whole or piece by piece.
class PlotPainter {
 public:
  PlotPainter(const PlotRecord& plot, Canvas& canvas, const DrawOptions& options)
      : plot_(plot), c_(canvas), cr_(canvas.cr()), options_(options) {}

  void paint() {
    c_.setColour(plot_.fields.plotBg);
    cairo_paint(cr_);
    layOut(true);
    dataArea();
    for (const PlotSet* set : setsInOrder()) drawSet(*set);
    cairo_reset_clip(cr_);
    axes();
    legend();
    colourBar();
  }

  // Finds the data area as paint() does, drawing nothing.
  void layOut() { layOut(false); }

  // One axis (0 x, 1 y) of set, laid out as if set carried the plot's axes.
  void axisOf(const PlotSet& set, int which) {
    if (&set != axesSet_) layOut(false, &set);
    axis(which);
  }

  // One element of a set, clipped to the data area as in a whole drawing.
  template <typename Draw>
  void element(const PlotSet& set, Draw&& draw) {
    const ZW_SCALE sx = drawableScale(set.scales[0]), sy = drawableScale(set.scales[1]);
    const Mapper map(sx, sy, area_);  // holds the scales by reference
    cairo_save(cr_);
    cairo_rectangle(cr_, area_.left, area_.top, area_.width(), area_.height());
    cairo_clip(cr_);
    draw(map);
    cairo_restore(cr_);
  }
  void symbol(const PlotSet& set, const ZW_SYMB& s) {
    element(set, [&](const Mapper& map) { symbolElement(s, map); });
  }
  void text(const PlotSet& set, const ZW_TEXT& t) {
    element(set, [&](const Mapper& map) { textElement(t, map); });
  }
  void line(const PlotSet& set, const LineElement& l) {
    element(set, [&](const Mapper& map) { lineElement(l, map); });
  }

  // The legend's rows and the box they are drawn in (page millimetres).
  struct LegendLayout {
    std::vector<ZW_LEG> rows;
    std::vector<const PlotSet*> rowSets;
    double left = 0, top = 0, width = 0, height = 0;
    double textHeight = 0, rowHeight = 0, sample = 0, pad = 0;
  };
  LegendLayout legendLayout() {
    LegendLayout g;
    g.rows.assign(plot_.legend.rows.begin(), plot_.legend.rows.end());
    g.rowSets.assign(g.rows.size(), nullptr);
    if (g.rows.empty()) {
      const auto sets = setsInOrder();
      int named = 0;
      for (const PlotSet* s : sets) named += (s->legend && !s->name.empty()) ? 1 : 0;
      if (named >= 2)
        for (const PlotSet* s : sets)
          if (s->legend && !s->name.empty()) {
            ZW_LEG row = defaultLegendRow();
            row.KIND = 6;
            setFixed(row.TEXT, s->name);
            g.rows.push_back(row);
            g.rowSets.push_back(s);
          }
    }
    if (g.rows.empty()) return g;
    g.textHeight = numberHeight();
    g.rowHeight = g.textHeight * 1.9;
    g.sample = 7.0;
    g.pad = g.textHeight * 0.8;
    c_.setFont(g.textHeight);
    double widest = 0;
    for (const ZW_LEG& r : g.rows) widest = std::max(widest, c_.textWidth(fixedText(r.TEXT)));
    g.width = g.pad + g.sample + g.pad * 0.8 + widest + g.pad;
    g.height = g.pad + g.rowHeight * static_cast<double>(g.rows.size()) + g.pad * 0.2;
    double right = area_.left + plot_.legend.fx * area_.width() - g.pad * 0.5;
    double top = area_.bottom - plot_.legend.fy * area_.height() + g.pad * 0.5;
    right = std::clamp(right, area_.left + g.width, area_.right - 0.5);
    g.top = std::clamp(top, area_.top + 0.5, area_.bottom - g.height);
    g.left = right - g.width;
    return g;
  }

  void legend() {
    const LegendLayout g = legendLayout();
    if (g.rows.empty()) return;
    cairo_rectangle(cr_, g.left, g.top, g.width, g.height);
    c_.setColour(drawing::paletteColour(0), 0.88);
    cairo_fill_preserve(cr_);
    c_.setColour(drawing::paletteColour(9));
    cairo_set_line_width(cr_, 0.2);
    cairo_stroke(cr_);
    for (std::size_t k = 0; k < g.rows.size(); ++k) {
      const ZW_LEG& r = g.rows[k];
      const double cy = g.top + g.pad + g.rowHeight * (static_cast<double>(k) + 0.5);
      const double sx = g.left + g.pad;
      legendSample(r, g.rowSets[k], sx, cy, g.sample, g.textHeight);
      c_.setFont(g.textHeight);
      c_.setColour(1);
      c_.text(fixedText(r.TEXT), sx + g.sample + g.pad * 0.8, cy, Align::Left, Baseline::Middle);
    }
  }

  // The colour bar beside the data area; false when the plot has none.
  bool colourBar() {
    if (!plot_.colourBar) return false;
    drawColourBar(c_, *plot_.colourBar, {barLeft_, area_.top, area_.bottom, numberHeight()});
    return true;
  }

 private:
  void layOut(bool drawing, const PlotSet* carrier = nullptr) {
    drawing_ = drawing;
    const Layout& l = plot_.layout;
    const double w = c_.page().widthMm, h = c_.page().heightMm;
    Rect box{l.ml, l.mt, w - l.mr, h - l.mb};
    if (box.width() < 20 || box.height() < 20) box = {0.05 * w, 0.05 * h, 0.95 * w, 0.95 * h};
    axesSet_ = carrier ? carrier : firstShownSet();
    if (axesSet_) axisScales_ = {drawableScale(axesSet_->scales[0]), drawableScale(axesSet_->scales[1])};
    annotationStrips(box);
    title(box);
    if (plot_.colourBar) box.right -= colourBarWidth(c_, *plot_.colourBar, numberHeight());
    layoutAxes(box);
    barLeft_ = box.right;
  }


  const PlotSet* firstShownSet() const {
    for (const PlotSet& s : plot_.sets)
      if (s.defs.show != 0) return &s;
    return plot_.sets.empty() ? nullptr : &plot_.sets.front();
  }

  std::vector<const PlotSet*> setsInOrder() const {
    std::vector<const PlotSet*> sets;
    for (const PlotSet& s : plot_.sets)
      if (s.defs.show != 0) sets.push_back(&s);
    std::stable_sort(sets.begin(), sets.end(), [](const PlotSet* a, const PlotSet* b) { return a->defs.iord < b->defs.iord; });
    return sets;
  }

  double numberHeight() const { return axesSet_ ? axesSet_->axnumht : 3.0; }
  double labelHeight() const { return axesSet_ ? axesSet_->axlabht : 3.5; }

  std::string replaced(const std::string& line) const {
    return annotationText(line, options_.user.empty() ? loginName() : options_.user,
                          options_.date.empty() ? today() : options_.date);
  }

  // One strip of three places (left, centre, right), each a list of lines.
  void strip(Rect& box, int first, int bg, int boxed, float margin, bool top) {
    const Annotation& a = plot_.annotation;
    std::size_t lines = 0;
    for (int k = first; k < first + 3; ++k) lines = std::max(lines, a.texts[static_cast<std::size_t>(k)].size());
    bool any = false;
    for (int k = first; k < first + 3; ++k)
      for (const auto& t : a.texts[static_cast<std::size_t>(k)]) any = any || !t.empty();
    if (!any) return;
    const double textH = numberHeight(), lineH = textH * 1.6;
    const double height = std::max<double>(margin, static_cast<double>(lines) * lineH + textH);
    Rect r = top ? Rect{box.left, box.top, box.right, box.top + height} : Rect{box.left, box.bottom - height, box.right, box.bottom};
    if (top) box.top = r.bottom + textH;
    else box.bottom = r.top - textH;
    if (!drawing_) return;
    if (bg > 0) {
      c_.setColour(bg);
      cairo_rectangle(cr_, r.left, r.top, r.width(), r.height());
      cairo_fill(cr_);
    }
    if (boxed) frame(r);
    c_.setFont(textH);
    c_.setColour(1);
    const double pad = textH * 0.6;
    for (int k = 0; k < 3; ++k) {
      const auto& texts = a.texts[static_cast<std::size_t>(first + k)];
      const Align align = k == 0 ? Align::Left : k == 1 ? Align::Centre : Align::Right;
      const double x = k == 0 ? r.left + pad : k == 1 ? (r.left + r.right) / 2 : r.right - pad;
      for (std::size_t n = 0; n < texts.size(); ++n)
        c_.text(replaced(texts[n]), x, r.top + pad + static_cast<double>(n) * lineH, align, Baseline::Top);
    }
  }

  void annotationStrips(Rect& box) {
    const Annotation& a = plot_.annotation;
    strip(box, 0, a.topbg, a.topbox, a.topmar, true);
    strip(box, 3, a.basebg, a.basebox, a.basemar, false);
  }

  void title(Rect& box) {
    if (plot_.fields.title.empty()) return;
    double th = labelHeight() * 1.15;
    c_.setFont(th, true);
    // A long title is set smaller rather than cut or run off the page.
    const double width = c_.textWidth(plot_.fields.title);
    if (width > box.width()) {
      th *= box.width() / width;
      c_.setFont(th, true);
    }
    if (drawing_) {
      c_.setColour(1);
      c_.text(plot_.fields.title, (box.left + box.right) / 2, box.top, Align::Centre, Baseline::Top);
    }
    box.top += th * 2.0;
  }

  static std::string axisLabel(const PlotRecord& plot, const PlotSet& set, int axis) {
    const std::string& label = set.labels[static_cast<std::size_t>(axis)];
    const std::string unit = fixedText(set.scales[static_cast<std::size_t>(axis)].UNIT);
    if (unit.empty() || plot.fields.bllab == 0 || isDateScale(set.scales[static_cast<std::size_t>(axis)])) return label;
    return label.empty() ? "(" + unit + ")" : label + " (" + unit + ")";
  }

  // Finds the data area: room for numbers and labels on the sides that carry them.
  void layoutAxes(const Rect& box) {
    const double nh = numberHeight(), lh = labelHeight();
    if (!axesSet_) {
      area_ = box;
      keepShape();
      return;
    }
    const int xPlace = axesSet_->ax[0], yPlace = axesSet_->ax[1];
    const std::string xLabel = axisLabel(plot_, *axesSet_, 0), yLabel = axisLabel(plot_, *axesSet_, 1);
    const double xBand = xPlace > 0 ? kMajorTick + kTickGap + nh + (xLabel.empty() ? 0 : kLabelGap + lh) + nh * 0.4 : 0;
    area_ = box;
    if (yPlace > 0) area_.top += nh * 0.7;  // half a number above the top tick of the y axis
    if (xPlace == 2) area_.top += xBand;
    else if (xPlace > 0) area_.bottom -= xBand;
    // The y numbers' widths depend on which ticks fit the height.
    c_.setFont(nh);
    yTicks_ = axisTicks(axisScales_[1], area_.height(), [nh](const std::string&) { return nh; }, nh * 1.6);
    double widest = 0;
    for (const Tick& t : yTicks_) widest = std::max(widest, c_.textWidth(t.label));
    const double yBand = yPlace > 0 ? kMajorTick + kTickGap + widest + (yLabel.empty() ? 0 : kLabelGap + lh) + nh * 0.3 : 0;
    const double lastNumber = xPlace > 0 ? nh * 1.5 : 0;  // half of a last x number
    if (yPlace == 2) {
      area_.right -= yBand;
      area_.left += lastNumber;
    } else {
      area_.left += yBand;
      area_.right -= lastNumber;
    }
    if (area_.width() < 5 || area_.height() < 5) area_ = box;
    if (keepShape()) yTicks_ = axisTicks(axisScales_[1], area_.height(), [nh](const std::string&) { return nh; }, nh * 1.6);
    xTicks_ = axisTicks(axisScales_[0], area_.width(),
                        [this](const std::string& s) { return c_.textWidth(s); }, nh * 1.2);
  }

  // A plot whose layout fixes the data area's shape (height over width; a
  // stereonet's is 1, so that its circles stay round) gets the largest area
  // of that shape the room allows, centred in the room. False when the shape
  // is free or already right.
  bool keepShape() {
    const double aspect = plot_.layout.aspect;
    if (!(aspect > 0) || !std::isfinite(aspect)) return false;
    const double w = area_.width(), h = area_.height();
    if (h > w * aspect) {
      const double cut = (h - w * aspect) / 2;
      area_.top += cut;
      area_.bottom -= cut;
    } else {
      const double cut = (w - h / aspect) / 2;
      area_.left += cut;
      area_.right -= cut;
    }
    return true;
  }

  void dataArea() {
    if (plot_.fields.dataBg > 0) {
      c_.setColour(plot_.fields.dataBg);
      cairo_rectangle(cr_, area_.left, area_.top, area_.width(), area_.height());
      cairo_fill(cr_);
    }
    cairo_rectangle(cr_, area_.left, area_.top, area_.width(), area_.height());
    cairo_clip(cr_);
    bitmaps();
    grid();
  }

  void bitmaps() {
    if (!axesSet_) return;
    const Mapper map(axisScales_[0], axisScales_[1], area_);
    for (const ZW_ZBM& b : plot_.bitmaps) {
      const std::string file = resolvePath(fixedText(b.FILE));
      cairo_surface_t* img = cairo_image_surface_create_from_png(file.c_str());
      if (cairo_surface_status(img) != CAIRO_STATUS_SUCCESS) {
        host::showMessage(fmt::format("Cannot draw the bitmap {} (only PNG files are drawn)", file));
        cairo_surface_destroy(img);
        continue;
      }
      Rect r = area_;
      double x1, y1, x2, y2;
      if (map.map(b.X1, b.Y1, x1, y1) && map.map(b.X2, b.Y2, x2, y2))
        r = {std::min(x1, x2), std::min(y1, y2), std::max(x1, x2), std::max(y1, y2)};
      const int iw = cairo_image_surface_get_width(img), ih = cairo_image_surface_get_height(img);
      if (iw > 0 && ih > 0 && r.width() > 0 && r.height() > 0) {
        cairo_save(cr_);
        cairo_translate(cr_, r.left, r.top);
        cairo_scale(cr_, r.width() / iw, r.height() / ih);
        cairo_set_source_surface(cr_, img, 0, 0);
        cairo_paint(cr_);
        cairo_restore(cr_);
      }
      cairo_surface_destroy(img);
    }
  }

  void grid() {
    const PlotFields& f = plot_.fields;
    if (!axesSet_ || (f.grlc1 <= 0 && f.grlc2 <= 0)) return;
    auto lines = [&](bool major, int colour, double width, double alpha) {
      c_.setColour(drawing::paletteColour(colour), alpha);
      cairo_set_line_width(cr_, width);
      setDash(cr_, major ? 1 : (f.sgsty == 3 ? 1 : f.sgsty), width);
      for (const Tick& t : xTicks_)
        if (t.label.empty() != major) {
          const double x = area_.left + t.fraction * area_.width();
          cairo_move_to(cr_, x, area_.top);
          cairo_line_to(cr_, x, area_.bottom);
        }
      for (const Tick& t : yTicks_)
        if (t.label.empty() != major) {
          const double y = area_.bottom - t.fraction * area_.height();
          cairo_move_to(cr_, area_.left, y);
          cairo_line_to(cr_, area_.right, y);
        }
      cairo_stroke(cr_);
      setDash(cr_, 1, width);
    };
    if (f.grlc2 > 0) lines(false, f.grlc2, 0.12, 0.10);
    if (f.grlc1 > 0) lines(true, f.grlc1, 0.2, 0.18);
  }

  void drawSet(const PlotSet& set) {
    const ZW_SCALE sx = drawableScale(set.scales[0]), sy = drawableScale(set.scales[1]);
    const Mapper map(sx, sy, area_);
    const auto& xs = set.data[0];
    const auto& ys = set.data[1];
    const std::size_t n = std::min(xs.size(), ys.size());
    const Rgb lineColour = rgbOf(set.lirgb), symbolColour = rgbOf(set.syrgb);
    if (set.shd > 0 && n > 1) shading(set, map, n);
    if (set.lin > 0 && n > 1) {
      cairo_new_path(cr_);
      bool drawing = false;
      for (std::size_t k = 0; k < n; ++k) {
        double px, py;
        if (!map.map(xs[k], ys[k], px, py)) {
          drawing = false;
          continue;
        }
        if (drawing) cairo_line_to(cr_, px, py);
        else cairo_move_to(cr_, px, py);
        drawing = true;
      }
      c_.setColour(lineColour);
      cairo_set_line_width(cr_, 0.35);
      cairo_set_line_join(cr_, CAIRO_LINE_JOIN_ROUND);
      setDash(cr_, set.lin, 0.35);
      cairo_stroke(cr_);
      setDash(cr_, 1, 0.35);
    }
    if (set.sym > 0 && n > 0) markers(set, sx, sy, map, n, symbolColour);
    for (const LineElement& l : set.lines) lineElement(l, map);
    for (const ZW_SYMB& s : set.symbols) symbolElement(s, map);
    for (const ZW_TEXT& t : set.texts) textElement(t, map);
  }

  void symbolElement(const ZW_SYMB& s, const Mapper& map) {
    double px, py;
    if (!map.map(s.X, s.Y, px, py)) return;
    c_.setColour(s.COLOUR);
    markerPath(cr_, s.STYLE, px, py, std::max(0.2f, s.SIZE) / 2);
    if (s.FILL || markerIsStroke(s.STYLE)) paintMarkers(cr_, s.STYLE, std::max(0.2f, s.SIZE) / 2);
    else {
      cairo_set_line_width(cr_, 0.25);
      cairo_stroke(cr_);
    }
  }

  void textElement(const ZW_TEXT& t, const Mapper& map) {
    double px, py;
    if (!map.map(t.X, t.Y, px, py)) return;
    double height = std::max(0.5f, t.HEIGHT);
    c_.setFont(height);
    c_.setColour(t.COLOUR);
    const Align align = t.ALIGN == 2 ? Align::Centre : t.ALIGN == 3 ? Align::Right : Align::Left;
    const std::string text = fixedText(t.TEXT);
    if (t.ANGLE == 0) keepInsideArea(text, height, align, px, py);
    c_.text(text, px, py, align, Baseline::Middle, t.ANGLE);
  }

  // Text is clipped to the data area, so a level text anchored inside it
  // that would run over an edge (a right-aligned label at the edge, any label
  // on a small page) is moved in, clear of the frame, rather than cut; one
  // wider than the area is set smaller, as a long title is.
  void keepInsideArea(const std::string& text, double& height, Align align, double& px, double& py) {
    if (px < area_.left || px > area_.right || py < area_.top || py > area_.bottom) return;
    double width = c_.textWidth(text), pad = height * 0.3;
    if (width > area_.width() - 2 * pad && area_.width() > 2 * pad) {
      height *= (area_.width() - 2 * pad) / width * 0.98;
      c_.setFont(height);
      width = c_.textWidth(text);
    }
    double left = align == Align::Centre ? px - width / 2 : align == Align::Right ? px - width : px;
    const double over = std::max(0.0, left + width - (area_.right - pad));
    left -= over;
    px -= over;
    if (left < area_.left + pad) px += area_.left + pad - left;  // a text wider than the area keeps its start
    // Cap height above the middle, with room for accents; descenders below.
    const double above = height * 0.5 + height * 0.25, below = height * 0.5 + height * 0.3;
    if (py + below > area_.bottom - pad) py = area_.bottom - pad - below;
    if (py - above < area_.top + pad) py = area_.top + pad + above;
  }

  void shading(const PlotSet& set, const Mapper& map, std::size_t n) {
    // The area between the data line and the bottom of the data area.
    cairo_new_path(cr_);
    bool any = false;
    double firstX = 0, lastX = 0;
    for (std::size_t k = 0; k < n; ++k) {
      double px, py;
      if (!map.map(set.data[0][k], set.data[1][k], px, py)) continue;
      if (!any) {
        cairo_move_to(cr_, px, area_.bottom);
        firstX = px;
      }
      cairo_line_to(cr_, px, py);
      lastX = px;
      any = true;
    }
    if (!any) return;
    cairo_line_to(cr_, lastX, area_.bottom);
    cairo_line_to(cr_, firstX, area_.bottom);
    cairo_close_path(cr_);
    c_.setColour(rgbOf(set.shrgb), 0.35);
    cairo_fill(cr_);
  }

  // The markers of many points laid through a MarkerLayer onto ARGB pixels
  // (data, stride) inside [x0, x1) x [y0, y1). The data area's lower-left
  // corner lies at pixel (left, bottom) and is width x height pixels.
  struct PixelArea {
    double left, bottom, width, height;
    int x0, y0, x1, y1;
  };
  static void layMarkers(int shape, double radiusPx, double opacity, const Rgb& colour, const PixelArea& a,
                         const ZW_SCALE& sx, const ZW_SCALE& sy, const std::vector<float>& xs,
                         const std::vector<float>& ys, std::size_t n, unsigned char* data, int stride) {
    MarkerLayer layer(shape, radiusPx, opacity, a.x0, a.y0, a.x1, a.y1);
    if (!layer.visible()) return;
    // Positions counted from the layer's corner, so one unsigned compare per
    // axis tells a centre the layer holds; nulls, NaN and far values fail it.
    const AxisMap mx(sx, a.left - a.x0 + layer.reach(), a.width);
    const AxisMap my(sy, a.bottom - a.y0 + layer.reach(), -a.height);
    // Counts are scattered over megabytes in the data's order: the cells of a
    // batch are found and fetched first, so their cache misses overlap.
    constexpr std::size_t kBatch = 64;
    std::array<std::uint16_t*, kBatch> cells{};
    for (std::size_t start = 0; start < n; start += kBatch) {
      const std::size_t m = std::min(kBatch, n - start);
      std::size_t found = 0;
      for (std::size_t k = start; k < start + m; ++k) {
        const double dx = mx(xs[k]), dy = my(ys[k]);
        if (!(std::fabs(dx) < 1e9 && std::fabs(dy) < 1e9)) continue;
        // Floor, not truncation, for the few centres left of or above the corner.
        if (std::uint16_t* c = layer.cell(static_cast<int>(dx + 1e9) - 1000000000, static_cast<int>(dy + 1e9) - 1000000000)) {
          __builtin_prefetch(c, 1);
          cells[found++] = c;
        }
      }
      for (std::size_t k = 0; k < found; ++k) MarkerLayer::add(*cells[k]);
    }
    layer.spread();
    layer.paint(data, stride, colour);
  }

  void markers(const PlotSet& set, const ZW_SCALE& sx, const ZW_SCALE& sy, const Mapper& map, std::size_t n,
               const Rgb& colour) {
    const double r = markerSizeMm(set) / 2, opacity = markerOpacity(set);
    const auto& xs = set.data[0];
    const auto& ys = set.data[1];
    if (cairo_surface_t* raster = c_.raster(); raster && n > kManyPoints) {
      // Device pixels: the page is scaled by dpi / 25.4.
      const double scale = 1.0 / c_.deviceUnitMm();
      const int x0 = static_cast<int>(std::ceil(area_.left * scale)), x1 = static_cast<int>(std::floor(area_.right * scale));
      const int y0 = static_cast<int>(std::ceil(area_.top * scale)), y1 = static_cast<int>(std::floor(area_.bottom * scale));
      cairo_surface_flush(raster);
      const PixelArea pa{area_.left * scale, area_.bottom * scale, area_.width() * scale, area_.height() * scale,
                         x0, y0, x1, y1};
      layMarkers(set.sym, r * scale, opacity, colour, pa, sx, sy, xs, ys, n, cairo_image_surface_get_data(raster),
                 cairo_image_surface_get_stride(raster));
      cairo_surface_mark_dirty(raster);
      return;
    }
    if (n > kVectorPoints) {
      // Hundreds of thousands of vector markers make files no viewer opens:
      // the markers of a set this large go on the page as one image of the
      // data area (axes and text stay vector), at the resolution asked for.
      const double scale = std::max(options_.dpi, 150.0) / 25.4;
      const int w = std::max(1, static_cast<int>(std::ceil(area_.width() * scale)));
      const int h = std::max(1, static_cast<int>(std::ceil(area_.height() * scale)));
      cairo_surface_t* image = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h);
      if (cairo_surface_status(image) == CAIRO_STATUS_SUCCESS) {
        cairo_surface_flush(image);
        const PixelArea pa{0.0, area_.height() * scale, area_.width() * scale, area_.height() * scale, 0, 0, w, h};
        layMarkers(set.sym, r * scale, opacity, colour, pa, sx, sy, xs, ys, n, cairo_image_surface_get_data(image),
                   cairo_image_surface_get_stride(image));
        cairo_surface_mark_dirty(image);
        cairo_save(cr_);
        cairo_translate(cr_, area_.left, area_.top);
        cairo_scale(cr_, 1.0 / scale, 1.0 / scale);
        cairo_set_source_surface(cr_, image, 0, 0);
        cairo_paint(cr_);
        cairo_restore(cr_);
      }
      cairo_surface_destroy(image);
      return;
    }
    cairo_new_path(cr_);
    std::size_t inPath = 0;
    c_.setColour(colour, opacity);
    for (std::size_t k = 0; k < n; ++k) {
      double px, py;
      if (!map.map(xs[k], ys[k], px, py)) continue;
      if (px < area_.left - r || px > area_.right + r || py < area_.top - r || py > area_.bottom + r) continue;
      markerPath(cr_, set.sym, px, py, r);
      // Translucent markers are painted one by one so that overlaps darken.
      if (opacity < 1.0 || ++inPath == 4096) {
        paintMarkers(cr_, set.sym, r);
        inPath = 0;
      }
    }
    if (inPath > 0) paintMarkers(cr_, set.sym, r);
    cairo_new_path(cr_);
  }

  void lineElement(const LineElement& l, const Mapper& map) {
    if (l.x.empty()) return;
    cairo_new_path(cr_);
    bool drawing = false;
    std::vector<std::pair<double, double>> points;
    for (std::size_t k = 0; k < l.x.size(); ++k) {
      double px, py;
      if (!map.map(l.x[k], l.y[k], px, py)) {
        drawing = false;
        continue;
      }
      points.emplace_back(px, py);
      if (drawing) cairo_line_to(cr_, px, py);
      else cairo_move_to(cr_, px, py);
      drawing = true;
    }
    if (l.CLOSED) cairo_close_path(cr_);
    c_.setColour(l.COLOUR);
    if (l.STYLE > 0) {
      cairo_set_line_width(cr_, std::max(0.05f, l.WIDTH));
      cairo_set_line_join(cr_, CAIRO_LINE_JOIN_ROUND);
      setDash(cr_, l.STYLE, l.WIDTH);
      cairo_stroke(cr_);
      setDash(cr_, 1, l.WIDTH);
    }
    cairo_new_path(cr_);
    if (l.SYMBOL > 0) {
      for (const auto& [px, py] : points) markerPath(cr_, l.SYMBOL, px, py, 0.8);
      paintMarkers(cr_, l.SYMBOL, 0.8);
    }
  }

  void frame(const Rect& r) {
    c_.setColour(1);
    cairo_set_line_width(cr_, kFrameWidth);
    cairo_rectangle(cr_, r.left, r.top, r.width(), r.height());
    cairo_stroke(cr_);
  }

  void axes() {
    if (plot_.annotation.plotbox) frame(area_);
    axis(0);
    axis(1);
  }

  // One axis (0 x, 1 y) of the set that carries the axes: its ticks on the
  // sides its placement names, pointing outwards, its numbers and its label.
  void axis(int which) {
    if (!axesSet_) return;
    const double nh = numberHeight(), lh = labelHeight();
    c_.setColour(1);
    cairo_set_line_width(cr_, kFrameWidth);
    const int place = axesSet_->ax[static_cast<std::size_t>(which)];
    if (which == 0) {
      auto ticksAt = [&](double y, double dir) {
        for (const Tick& t : xTicks_) {
          const double x = area_.left + t.fraction * area_.width();
          cairo_move_to(cr_, x, y);
          cairo_line_to(cr_, x, y + dir * (t.label.empty() ? kMinorTick : kMajorTick));
        }
      };
      if (place == 1 || place == 3) ticksAt(area_.bottom, 1);
      if (place == 2 || place == 3) ticksAt(area_.top, -1);
      cairo_stroke(cr_);
      if (place <= 0) return;
      c_.setFont(nh);
      const bool top = place == 2;
      const double y = top ? area_.top - kMajorTick - kTickGap : area_.bottom + kMajorTick + kTickGap;
      for (const Tick& t : xTicks_)
        if (!t.label.empty())
          c_.text(t.label, area_.left + t.fraction * area_.width(), y, Align::Centre, top ? Baseline::Bottom : Baseline::Top);
      const std::string label = axisLabel(plot_, *axesSet_, 0);
      if (!label.empty()) {
        c_.setFont(lh);
        const double ly = top ? y - nh - kLabelGap : y + nh + kLabelGap;
        c_.text(label, (area_.left + area_.right) / 2, ly, Align::Centre, top ? Baseline::Bottom : Baseline::Top);
      }
      return;
    }
    auto ticksAt = [&](double x, double dir) {
      for (const Tick& t : yTicks_) {
        const double y = area_.bottom - t.fraction * area_.height();
        cairo_move_to(cr_, x, y);
        cairo_line_to(cr_, x + dir * (t.label.empty() ? kMinorTick : kMajorTick), y);
      }
    };
    if (place == 1 || place == 3) ticksAt(area_.left, -1);
    if (place == 2 || place == 3) ticksAt(area_.right, 1);
    cairo_stroke(cr_);
    if (place <= 0) return;
    c_.setFont(nh);
    const bool right = place == 2;
    const double x = right ? area_.right + kMajorTick + kTickGap : area_.left - kMajorTick - kTickGap;
    double widest = 0;
    for (const Tick& t : yTicks_)
      if (!t.label.empty()) {
        c_.text(t.label, x, area_.bottom - t.fraction * area_.height(), right ? Align::Left : Align::Right,
                Baseline::Middle);
        widest = std::max(widest, c_.textWidth(t.label));
      }
    const std::string label = axisLabel(plot_, *axesSet_, 1);
    if (!label.empty()) {
      c_.setFont(lh);
      const double lx = right ? x + widest + kLabelGap : x - widest - kLabelGap;
      // Read from below (turned anticlockwise) on the left, from above on the right.
      c_.text(label, lx, (area_.top + area_.bottom) / 2, Align::Centre, right ? Baseline::Top : Baseline::Bottom,
              right ? -90.0 : 90.0);
    }
  }

  void legendSample(const ZW_LEG& r, const PlotSet* set, double x, double cy, double w, double th) {
    switch (r.KIND) {
      case 2:
        c_.setColour(r.COLOUR);
        cairo_set_line_width(cr_, std::max(0.1f, r.SIZE));
        setDash(cr_, r.STYLE, r.SIZE);
        cairo_move_to(cr_, x, cy);
        cairo_line_to(cr_, x + w, cy);
        cairo_stroke(cr_);
        setDash(cr_, 1, r.SIZE);
        break;
      case 3:
        c_.setColour(r.COLOUR);
        cairo_rectangle(cr_, x, cy - th * 0.6, w, th * 1.2);
        cairo_fill(cr_);
        break;
      case 4:
      case 5:
        c_.setColour(r.COLOUR);
        markerPath(cr_, r.STYLE, x + w / 2, cy, r.KIND == 5 ? 0.6 : std::max(0.3, r.SIZE / 2.0));
        paintMarkers(cr_, r.STYLE, r.KIND == 5 ? 0.6 : r.SIZE / 2.0);
        break;
      case 6:
        if (set) {
          if (set->lin > 0) {
            c_.setColour(rgbOf(set->lirgb));
            cairo_set_line_width(cr_, 0.35);
            setDash(cr_, set->lin, 0.35);
            cairo_move_to(cr_, x, cy);
            cairo_line_to(cr_, x + w, cy);
            cairo_stroke(cr_);
            setDash(cr_, 1, 0.35);
          }
          if (set->sym > 0) {
            c_.setColour(rgbOf(set->syrgb));
            const double rr = std::max(0.8, markerSizeMm(*set) / 2);
            markerPath(cr_, set->sym, x + w / 2, cy, rr);
            paintMarkers(cr_, set->sym, rr);
          }
        } else {
          c_.setColour(r.COLOUR);
          markerPath(cr_, r.STYLE > 0 ? r.STYLE : 1, x + w / 2, cy, 0.9);
          paintMarkers(cr_, r.STYLE, 0.9);
        }
        break;
      default:
        break;  // a text row has no sample
    }
  }

  const PlotRecord& plot_;
  Canvas& c_;
  cairo_t* cr_;
  const DrawOptions& options_;
  bool drawing_ = true;
  const PlotSet* axesSet_ = nullptr;
  std::array<ZW_SCALE, 2> axisScales_{};
  Rect area_{};
  double barLeft_ = 0;  // where the colour bar's column starts
  std::vector<Tick> xTicks_, yTicks_;
};

std::string annotationText(const std::string& line, const std::string& user, const std::string& date) {
  std::string out;
  for (std::size_t k = 0; k < line.size();) {
    if (line.compare(k, 5, "@user") == 0) {
      out += user;
      k += 5;
    } else if (line.compare(k, 5, "@date") == 0) {
      out += date;
      k += 5;
    } else {
      out += line[k++];
    }
  }
  return out;
}

double markerSizeMm(const PlotSet& set) {
  const int tenths = set.defs.iop[0];
  return tenths > 0 ? std::min(20.0, tenths / 10.0) : 1.5;
}

double markerOpacity(const PlotSet& set) {
  const int percent = set.defs.iop[1];
  return percent > 0 ? std::min(100, percent) / 100.0 : 1.0;
}

Status drawPlot(const PlotRecord& plot, const DrawOptions& options) {
  drawing::PageSetup page;
  page.widthMm = options.widthMm > 0 ? options.widthMm : plot.layout.pagex;
  page.heightMm = options.heightMm > 0 ? options.heightMm : plot.layout.pagey;
  page.dpi = options.dpi;
  Status status;
  std::unique_ptr<Canvas> canvas = Canvas::open(options.kind, options.path, page, status);
  if (!canvas) return status;
  PlotPainter(plot, *canvas, options).paint();
  return canvas->finish();
}

void drawPlotOn(const PlotRecord& plot, Canvas& canvas, const DrawOptions& options) {
  PlotPainter(plot, canvas, options).paint();
}

PlotPieces::PlotPieces(const PlotRecord& plot, Canvas& canvas, const DrawOptions& options)
    : options_(options), painter_(std::make_unique<PlotPainter>(plot, canvas, options_)) {
  painter_->layOut();
}

PlotPieces::~PlotPieces() = default;

void PlotPieces::symbol(const PlotSet& set, const ZW_SYMB& s) { painter_->symbol(set, s); }
void PlotPieces::text(const PlotSet& set, const ZW_TEXT& t) { painter_->text(set, t); }
void PlotPieces::line(const PlotSet& set, const LineElement& l) { painter_->line(set, l); }
void PlotPieces::legend() { painter_->legend(); }
bool PlotPieces::colourBar() { return painter_->colourBar(); }
void PlotPieces::axis(const PlotSet& set, int which) { painter_->axisOf(set, which); }

bool PlotPieces::legendBox(double& left, double& top, double& width, double& height) {
  const PlotPainter::LegendLayout g = painter_->legendLayout();
  if (g.rows.empty()) return false;
  left = g.left;
  top = g.top;
  width = g.width;
  height = g.height;
  return true;
}

}  // namespace subsurf
