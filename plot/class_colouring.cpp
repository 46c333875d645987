#include "plot/class_colouring.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "host/drawing/palette.h"
#include "host/fixed_text.h"
#include "host/nulls.h"
#include "host/number_text.h"
#include "host/vector_stats.h"
#include "plot/single_set_plot.h"

namespace subsurf {

namespace {

constexpr int kColourAxis = 3;

std::array<int, 3> rgbOfIndex(int index) {
  const drawing::Rgb c = drawing::paletteColour(index);
  return {static_cast<int>(std::lround(c.r * 255)), static_cast<int>(std::lround(c.g * 255)),
          static_cast<int>(std::lround(c.b * 255))};
}

bool hasValue(float v) { return std::isfinite(v) && !isNull(v) && !isNoValue(v); }

// n classes of a round width (1, 2, 2.5 or 5 times a power of ten) from a
// multiple of that width, covering lo..hi: 0.002..0.597 in 6 gives 0..0.6.
void roundClassRange(double lo, double hi, int n, float& from, float& to) {
  const double least = (hi - lo) / n;
  double decade = std::pow(10.0, std::floor(std::log10(least)));
  for (int guard = 0; guard < 40; ++guard) {
    for (const double m : {1.0, 2.0, 2.5, 5.0}) {
      const double w = m * decade;
      if (w < least * (1 - 1e-6)) continue;
      const double start = std::floor(lo / w) * w;
      // hi is a single-precision value: 0.6f lies a hair above 6 * 0.1.
      if (start + n * w >= hi - 1e-6 * std::fabs(hi)) {
        from = static_cast<float>(std::min(start, lo));
        to = std::max(static_cast<float>(start + n * w), static_cast<float>(hi));
        return;
      }
    }
    decade *= 10;
  }
  from = static_cast<float>(lo);
  to = static_cast<float>(hi);
}

// A set that draws some of the points in one colour, on the axes of all.
PlotSet classSet(const PlotSet& all, const std::string& name, int colour, int markers) {
  PlotSet s;
  s.name = fieldText(name, kSetNameWidth);
  s.ids = all.ids;
  s.defs = all.defs;
  s.sym = markers;
  s.legend = 0;
  s.axlabht = all.axlabht;
  s.axnumht = all.axnumht;
  s.ax = all.ax;
  s.scales = all.scales;
  s.labels = all.labels;
  s.syrgb = rgbOfIndex(colour);
  return s;
}

}  // namespace

Status colourMapForValues(const std::vector<float>& values, int classes, bool logarithmic, ColourMap& map) {
  float lo = 0, hi = 0;
  bool any = false;
  for (const float v : values) {
    if (!hasValue(v) || (logarithmic && !(v > 0))) continue;
    lo = any ? std::min(lo, v) : v;
    hi = any ? std::max(hi, v) : v;
    any = true;
  }
  if (!any) return Status::error(logarithmic ? "Invalid value for log scale" : "No value to colour the points by");
  map = defaultColourMap();
  map.ifsc = logarithmic ? 2 : 1;
  // Round bounds where they cover the values: decades on a logarithmic
  // scale, round widths otherwise. One value (or all equal) still makes
  // classes: a range from it.
  map.min = lo;
  map.max = hi > lo ? hi : (logarithmic ? lo * 10 : lo + 1);
  if (logarithmic && hi > lo) {
    const RoundLimits r = roundAxisLimits(lo, hi, true);
    map.min = r.low;
    map.max = r.high;
  } else if (hi > lo && classes >= 1) {
    roundClassRange(lo, hi, classes, map.min, map.max);
  }
  if (Status s = allocateClasses(map, classes); !s) return s;
  setDefaultColours(map);
  if (Status s = setClassRanges(map); !s) return s;
  map.dmin = lo;
  map.dmax = hi;
  return Status::ok();
}

ClassCounts countByClass(const ColourMap& map, const std::vector<float>& values) {
  ClassCounts counts;
  const int n = map.classes();
  counts.perClass.assign(static_cast<std::size_t>(n), 0);
  for (const float v : values) {
    const int k = hasValue(v) ? classOf(map, v) : -1;
    if (k < 0) ++counts.noValue;
    else if (k == 0) ++counts.below;
    else if (k > n) ++counts.above;
    else ++counts.perClass[static_cast<std::size_t>(k - 1)];
  }
  return counts;
}

PlotRecord makeClassHistogram(const ColourMap& map, const std::vector<float>& values, const std::string& title,
                              ClassCounts& counts) {
  counts = countByClass(map, values);
  PlotRecord plot = singleSetPlot("", title);
  PlotSet& axes = plot.sets.back();
  axes.sym = 0;
  axes.legend = 0;
  axes.labels[0] = fieldText(title, kAxisLabelWidth);
  axes.labels[1] = "Frequency";
  const int n = map.classes();
  const bool categorical = map.icat == 1 || map.bounds.size() != static_cast<std::size_t>(n) + 1;
  const auto lower = [&](int k) { return categorical ? k - 0.4f : map.bounds[static_cast<std::size_t>(k - 1)]; };
  const auto upper = [&](int k) { return categorical ? k + 0.4f : map.bounds[static_cast<std::size_t>(k)]; };
  long most = 1, points = 0;
  for (const long c : counts.perClass) most = std::max(most, c), points += c;
  ZW_SCALE& xs = axes.scales[0];
  ZW_SCALE& ys = axes.scales[1];
  xs.TYPE = map.ifsc == 2 && !categorical && lower(1) > 0 ? 2 : 1;
  xs.MODE = ys.MODE = 1;
  ys.TYPE = 1;
  xs.MIN = n > 0 ? (categorical ? 0.5f : lower(1)) : 0.0f;
  xs.MAX = n > 0 ? (categorical ? n + 0.5f : upper(n)) : 1.0f;
  ys.MIN = 0;
  ys.MAX = static_cast<float>(most) * 1.15f;
  std::vector<PlotSet> bars;  // appended last: they are copied from the axes set
  for (int k = 1; k <= n; ++k) {
    const long c = counts.perClass[static_cast<std::size_t>(k - 1)];
    if (c == 0) continue;
    PlotSet bar = classSet(axes, classLabel(map, k), map.colours[static_cast<std::size_t>(k - 1)], 0);
    bar.lin = 1;
    bar.shd = 1;
    bar.lirgb = bar.shrgb = bar.syrgb;
    const float a = lower(k), b = upper(k), h = static_cast<float>(c);
    bar.data[0] = {a, a, b, b};
    bar.data[1] = {0, h, h, 0};
    bars.push_back(std::move(bar));
  }
  ZW_TEXT label = defaultText();
  label.X = xs.MAX;
  label.Y = ys.MAX * 0.96f;
  label.ALIGN = 3;
  setFixed(label.TEXT, fmt::format("No. of points: {}  Classes: {}", points, n));
  axes.texts.add(label);
  for (PlotSet& bar : bars) plot.sets.push_back(std::move(bar));
  return plot;
}

std::string classLabel(const ColourMap& map, int k) {
  const std::size_t i = static_cast<std::size_t>(k - 1);
  if (i < map.names.size() && !trimBlanks(map.names[i]).empty()) return trimBlanks(map.names[i]);
  if (map.icat == 1 || i + 1 >= map.bounds.size()) return std::to_string(k);
  return formatCompact(map.bounds[i]) + " - " + formatCompact(map.bounds[i + 1]);
}

Status colourPointsByClass(PlotRecord& plot, const std::vector<float>& colour, const ColourMap& map,
                           const std::string& title, ClassCounts& counts) {
  if (plot.sets.empty()) return Status::error("The plot has no points to colour");
  if (Status s = checkColourMap(map); !s) return s;
  PlotSet& all = plot.sets.front();
  if (colour.size() != all.data[0].size())
    return Status::error(fmt::format("{} colour values for {} points", colour.size(), all.data[0].size()));
  const int n = map.classes();
  const int markers = all.sym > 0 ? all.sym : 1;
  all.data[kColourAxis] = colour;
  all.labels[kColourAxis] = fieldText(title, kAxisLabelWidth);
  ZW_SCALE& cs = all.scales[kColourAxis];
  cs.TYPE = map.ifsc == 2 ? 2 : 1;
  cs.MODE = 1;
  cs.MIN = map.bounds.front();
  cs.MAX = map.bounds.back();

  // Sets: no value, below, the classes, above (drawn in that order).
  std::vector<PlotSet> sets;
  sets.push_back(classSet(all, "no value", kNoValueColour, markers));
  sets.push_back(classSet(all, "below", map.c0, map.c0 > 0 ? markers : 0));
  for (int k = 1; k <= n; ++k)
    sets.push_back(classSet(all, classLabel(map, k), map.colours[static_cast<std::size_t>(k - 1)], markers));
  sets.push_back(classSet(all, "above", map.c1, map.c1 > 0 ? markers : 0));
  counts = countByClass(map, colour);
  for (std::size_t i = 0; i < colour.size(); ++i) {
    const int k = hasValue(colour[i]) ? classOf(map, colour[i]) : -1;
    const std::size_t place = k < 0 ? 0 : k == 0 ? 1 : static_cast<std::size_t>(std::min(k, n + 1)) + 1;
    for (int a : {0, 1, kColourAxis})
      sets[place].data[static_cast<std::size_t>(a)].push_back(all.data[static_cast<std::size_t>(a)][i]);
  }
  all.sym = 0;  // the class sets draw the markers
  all.legend = 0;
  for (PlotSet& s : sets)
    if (s.pointCount() > 0 && s.sym > 0) plot.sets.push_back(std::move(s));

  ColourBar bar;
  bar.map = map;
  bar.title = title;
  bar.noValue = counts.noValue;
  plot.colourBar = std::move(bar);
  return Status::ok();
}

}  // namespace subsurf
