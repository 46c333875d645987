#include "plot/colour_bar_drawing.h"

#include <algorithm>
#include <cmath>

namespace subsurf {

namespace {

using drawing::Align;
using drawing::Baseline;

// In text heights.
constexpr double kGap = 2.0;         // between the data area and the bar
constexpr double kBoxWidth = 1.8;
constexpr double kLabelGap = 0.6;    // between the boxes and the bounds
constexpr double kNameGap = 1.0;     // between the bounds and the names
constexpr double kTitleRoom = 2.2;   // above the boxes
constexpr double kTextPitch = 1.4;   // least distance between two texts

double widest(drawing::Canvas& c, const std::vector<std::string>& texts) {
  double w = 0;
  for (const std::string& t : texts) w = std::max(w, c.textWidth(t));
  return w;
}

bool anyText(const std::vector<std::string>& texts) {
  return std::any_of(texts.begin(), texts.end(), [](const std::string& t) { return !t.empty(); });
}

// Every how many-th of items spaced pitch apart keeps texts of height h apart.
std::size_t textStride(double pitch, double h) {
  return pitch >= kTextPitch * h ? 1 : static_cast<std::size_t>(std::ceil(kTextPitch * h / std::max(pitch, 1e-6)));
}

}  // namespace

double colourBarBoxLeft(const ColourBarPlace& place) { return place.left + kGap * place.textHeight; }
double colourBarBoxWidth(double textHeight) { return kBoxWidth * textHeight; }

double colourBarWidth(drawing::Canvas& c, const ColourBar& bar, double h) {
  const ColourBarTexts t = colourBarTexts(bar);
  c.setFont(h);
  const double bounds = t.bounds.empty() ? 0 : kLabelGap * h + widest(c, t.bounds);
  const double names = anyText(t.names) ? (t.bounds.empty() ? kLabelGap : kNameGap) * h + widest(c, t.names) : 0;
  const double column = kBoxWidth * h + bounds + names;
  return kGap * h + std::max({column, c.textWidth(t.title), c.textWidth(t.footer)}) + 0.5 * h;
}

void drawColourBar(drawing::Canvas& c, const ColourBar& bar, const ColourBarPlace& place) {
  const ColourBarTexts t = colourBarTexts(bar);
  const std::size_t n = t.names.size();
  if (n == 0) return;
  const double h = place.textHeight;
  const double left = colourBarBoxLeft(place), width = colourBarBoxWidth(h);
  const double top = place.top + kTitleRoom * h, bottom = place.bottom;
  if (bottom - top < h) return;
  const double pitch = (bottom - top) / static_cast<double>(n);
  const auto edge = [&](std::size_t k) { return bottom - pitch * static_cast<double>(k); };
  cairo_t* cr = c.cr();

  for (std::size_t k = 0; k < n; ++k) {
    c.setColour(bar.map.colours[k]);
    // A hair taller than the class, so that no seam shows between boxes.
    cairo_rectangle(cr, left, edge(k + 1), width, pitch + (k + 1 < n ? 0.05 : 0.0));
    cairo_fill(cr);
  }
  c.setColour(1);
  cairo_set_line_width(cr, 0.2);
  cairo_rectangle(cr, left, top, width, bottom - top);
  cairo_stroke(cr);

  c.setFont(h);
  const double tick = 0.3 * h;
  const std::size_t every = textStride(pitch, h);
  double namesLeft = left + width + kLabelGap * h;  // as colourBarWidth counts it
  if (!t.bounds.empty()) {
    for (std::size_t k = 0; k < t.bounds.size(); ++k) {
      if (k % every != 0 && k + 1 != t.bounds.size()) continue;
      if (k + 1 == t.bounds.size() && k % every != 0 && pitch * static_cast<double>(k % every) < kTextPitch * h) continue;
      cairo_move_to(cr, left + width, edge(k));
      cairo_line_to(cr, left + width + tick, edge(k));
      cairo_stroke(cr);
      c.text(t.bounds[k], left + width + kLabelGap * h, edge(k), Align::Left, Baseline::Middle);
    }
    namesLeft += widest(c, t.bounds) + kNameGap * h;
  }
  for (std::size_t k = 0; k < n; k += every)
    if (!t.names[k].empty()) c.text(t.names[k], namesLeft, edge(k) - pitch / 2, Align::Left, Baseline::Middle);

  if (!t.title.empty()) c.text(t.title, left, place.top, Align::Left, Baseline::Top);
  if (!t.footer.empty()) c.text(t.footer, left, bottom + 1.2 * h, Align::Left, Baseline::Top);
}

}  // namespace subsurf
