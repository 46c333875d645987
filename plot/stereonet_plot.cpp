#include "plot/stereonet_plot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include <fmt/format.h>

#include "host/drawing/palette.h"
#include "host/fixed_text.h"
#include "host/nulls.h"
#include "host/number_text.h"
#include "plot/axis_scales.h"
#include "plot/single_set_plot.h"
#include "plot/stereonet_density.h"

namespace subsurf {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr float kWindow = 100.0f;
// Labels keep this far (net units) inside the window's edges, clear of the frame.
constexpr float kInset = 2.0f;
constexpr int kNetColour = 1, kCircleColour = 4, kPetalColour = 2, kContourColour = 7, kRingColour = 9;
// Beyond this many planes the great circles hide each other and the data.
constexpr std::size_t kMaxGreatCircles = 2000;

LineElement polyline(std::vector<float> x, std::vector<float> y, int colour, float width, int closed) {
  LineElement line;
  line.COLOUR = colour;
  line.WIDTH = width;
  line.CLOSED = closed;
  line.setPoints(std::move(x), std::move(y));
  return line;
}

void addText(PlotSet& set, float x, float y, const std::string& text, int align = 1) {
  ZW_TEXT t = defaultText();
  t.X = x;
  t.Y = y;
  t.ALIGN = align;
  t.HEIGHT = 2.5f;
  setFixed(t.TEXT, text);
  set.texts.add(t);
}

// The square window of the net with hidden axes; every set of the plot shares it.
void netWindow(PlotSet& set) {
  set.ax = {0, 0, 0, 0, 0};
  set.legend = 0;
  for (int a = 0; a < 2; ++a) {
    ZW_SCALE& s = set.scales[static_cast<std::size_t>(a)];
    s.TYPE = 1;
    s.MODE = 1;
    s.MIN = -kWindow;
    s.MAX = kWindow;
  }
}

std::array<int, 3> rgbOfPalette(int index) {
  const drawing::Rgb c = drawing::paletteColour(index);
  auto byte = [](double v) { return static_cast<int>(v * 255.0 + 0.5); };
  return {byte(c.r), byte(c.g), byte(c.b)};
}

void addMarker(PlotSet& set, float x, float y, int style, int colour) {
  ZW_SYMB m{};
  m.X = x;
  m.Y = y;
  m.STYLE = style;
  m.COLOUR = colour;
  m.SIZE = 2.2f;
  m.FILL = 1;
  blankFixed(m.LABEL, sizeof m.LABEL);
  set.symbols.add(m);
}

// Class colours start after black; shapes run through the eight markers.
int classColour(std::size_t k) { return 2 + static_cast<int>(k); }
int classShape(std::size_t k) { return 1 + static_cast<int>(k % 8); }

// One key in a lower corner of the window: heading, then a marker and a name
// per class for as many rows as fit.
void addKey(PlotSet& set, float left, const std::string& heading, const std::vector<std::string>& names,
            bool byColour) {
  constexpr float kTop = -68.0f, kStep = 6.0f;
  constexpr std::size_t kRows = 5;
  addText(set, left, kTop, heading);
  const bool cut = names.size() > kRows;
  const std::size_t shown = cut ? kRows - 1 : names.size();
  for (std::size_t k = 0; k < shown; ++k) {
    const float y = kTop - kStep * static_cast<float>(k + 1);
    addMarker(set, left + 2.0f, y, byColour ? 1 : classShape(k), byColour ? classColour(k) : 1);
    addText(set, left + 5.0f, y, names[k]);
  }
  if (cut)
    addText(set, left, kTop - kStep * static_cast<float>(kRows), fmt::format("... {} more", names.size() - shown));
}

// Density contours of the plotted lines, above the data, thicker as they climb.
Status addContours(PlotSet& net, std::span<const Orientation> lines, const StereonetRequest& r,
                   StereonetSummary& summary) {
  DensityGrid grid;
  if (Status s = kambDensity(lines, r.projection, r.densityGrid, r.smoothing, grid); !s) return s;
  summary.densityMaximum = grid.maximumSigmas();
  summary.contourLevels = contourLevels(summary.densityMaximum, r.contourStep);
  const auto contours = densityContours(grid, summary.contourLevels);
  for (std::size_t k = 0; k < contours.size(); ++k) {
    if (contours[k].x.empty()) continue;
    const float width = 0.25f + 0.35f * static_cast<float>(k) / static_cast<float>(std::max<std::size_t>(1, contours.size() - 1));
    net.lines.add(polyline(contours[k].x, contours[k].y, kContourColour, width, 0));
  }
  return Status::ok();
}

// A dip in 0..90 and a finite azimuth, taken into 0..360.
bool usableOrientation(float d, float a, double& dip, double& azimuth) {
  if (isNull(d) || isNull(a) || !std::isfinite(d) || !std::isfinite(a) || d < 0.0f || d > 90.0f) return false;
  dip = d;
  azimuth = std::fmod(std::fmod(static_cast<double>(a), 360.0) + 360.0, 360.0);
  return true;
}

void addRim(PlotSet& set) {
  std::vector<float> x, y;
  for (int k = 0; k < 360; ++k) {
    x.push_back(static_cast<float>(kNetRadius * std::sin(k * kPi / 180.0)));
    y.push_back(static_cast<float>(kNetRadius * std::cos(k * kPi / 180.0)));
  }
  set.lines.add(polyline(std::move(x), std::move(y), kNetColour, 0.4f, 1));
  // The centre cross and the north mark.
  set.lines.add(polyline({-3, 3}, {0, 0}, kNetColour, 0.25f, 0));
  set.lines.add(polyline({0, 0}, {-3, 3}, kNetColour, 0.25f, 0));
  addText(set, 0.0f, 92.0f, "N", 2);
}

// Rings of equal frequency at a 1-2-5 step of the fullest class (the rim).
std::vector<int> ringCounts(int most) {
  std::vector<int> rings;
  for (int c = step125(most); c < most; c += step125(most)) rings.push_back(c);
  return rings;
}

void addRoseRings(PlotSet& set, int most) {
  for (int c : ringCounts(most)) {
    const double radius = kNetRadius * c / most;
    std::vector<float> x, y;
    for (int k = 0; k < 180; ++k) {
      x.push_back(static_cast<float>(radius * std::sin(k * 2 * kPi / 180.0)));
      y.push_back(static_cast<float>(radius * std::cos(k * 2 * kPi / 180.0)));
    }
    LineElement ring = polyline(std::move(x), std::move(y), kRingColour, 0.15f, 1);
    ring.STYLE = 2;
    set.lines.add(std::move(ring));
  }
}

// Each ring's count where it crosses east.
void addRingLabels(PlotSet& set, int most) {
  for (int c : ringCounts(most))
    addText(set, static_cast<float>(kNetRadius * c / most) + 0.8f, -2.5f, std::to_string(c));
}

void addRose(PlotSet& set, const std::vector<int>& counts, const StereonetRequest& r) {
  const int most = *std::max_element(counts.begin(), counts.end());
  for (std::size_t k = 0; k < counts.size() && most > 0; ++k) {
    if (counts[k] == 0) continue;
    const double radius = kNetRadius * counts[k] / most;
    std::vector<float> x{0}, y{0};
    const double from = r.roseStart + r.roseWidth * static_cast<double>(k);
    for (int s = 0; s <= 8; ++s) {
      const double a = (from + r.roseWidth * s / 8.0) * kPi / 180.0;
      x.push_back(static_cast<float>(radius * std::sin(a)));
      y.push_back(static_cast<float>(radius * std::cos(a)));
    }
    set.lines.add(polyline(std::move(x), std::move(y), kPetalColour, 0.3f, 1));
  }
}

}  // namespace

PlotSet netDataSet(const std::string& name, int colour, int shape) {
  PlotSet set;
  set.name = fieldText(name, kSetNameWidth);
  netWindow(set);
  if (colour > 0) set.syrgb = rgbOfPalette(colour);
  set.sym = shape;
  return set;
}

void addStereonetKey(PlotSet& net, const std::vector<std::string>& colours, const std::vector<std::string>& symbols) {
  if (!colours.empty()) addKey(net, -kWindow + kInset, "Colours:", colours, true);
  if (!symbols.empty()) addKey(net, 66.0f, "Symbols:", symbols, false);
}

Status addStereonetSet(PlotRecord& plot, std::span<const float> dips, std::span<const float> azimuths, int projection,
                       bool poles, const std::string& name, int colour, int shape, int& plotted) {
  plotted = 0;
  if (dips.size() != azimuths.size())
    return Status::error(fmt::format("{} dips but {} azimuths", dips.size(), azimuths.size()));
  if (projection != kEqualArea && projection != kEqualAngle)
    return Status::error(fmt::format("Projection {} is not equal-angle (2) or equal-area (3)", projection));
  PlotSet set = netDataSet(name, colour, shape);
  for (std::size_t i = 0; i < dips.size(); ++i) {
    double d = 0, a = 0;
    if (!usableOrientation(dips[i], azimuths[i], d, a)) continue;
    const NetPoint p = projectLine(poles ? poleOfPlane(d, a) : Orientation{d, a}, projection);
    set.data[0].push_back(static_cast<float>(p.x));
    set.data[1].push_back(static_cast<float>(p.y));
  }
  plotted = set.pointCount();
  if (plotted == 0) return Status::error("No valid data points!");
  set.defs.iop[0] = plotted <= 2000 ? 15 : 6;
  set.defs.iop[1] = plotted <= 2000 ? 0 : 40;
  plot.sets.push_back(std::move(set));
  return Status::ok();
}

void placeStereonet(PlotRecord& target, PlotRecord&& net) {
  target.sets = std::move(net.sets);
  target.currentSet = 1;
  target.fields.grlc1 = net.fields.grlc1;
  target.layout.aspect = net.layout.aspect;
  if (trimmedBlanks(target.fields.title).empty()) target.fields.title = net.fields.title;
}

ClassKey classKey(std::span<const std::string> classes) {
  ClassKey key;
  std::map<std::string, int> place;
  for (const std::string& c : classes) {
    const std::string name = trimBlanks(c).empty() ? "(blank)" : trimBlanks(c);
    auto [it, added] = place.emplace(name, static_cast<int>(key.names.size()));
    if (added) key.names.push_back(name);
    key.of.push_back(it->second);
  }
  return key;
}

Status makeStereonetPlot(const StereonetData& data, const StereonetRequest& request, PlotRecord& plot,
                         StereonetSummary& summary) {
  summary = StereonetSummary{};
  const std::size_t n = data.dips.size();
  if (data.azimuths.size() != n)
    return Status::error(fmt::format("{} dips but {} azimuths", n, data.azimuths.size()));
  for (const auto& [classes, what] : {std::pair{data.colourClasses, "colour"}, std::pair{data.symbolClasses, "symbol"}})
    if (!classes.empty() && classes.size() != n)
      return Status::error(fmt::format("{} dips but {} {} classes", n, classes.size(), what));
  if (request.projection != kEqualArea && request.projection != kEqualAngle)
    return Status::error(fmt::format("Projection {} is not equal-angle (2) or equal-area (3)", request.projection));
  std::vector<double> dip, azimuth;
  std::vector<std::string> colourOf, symbolOf;
  for (std::size_t i = 0; i < n; ++i) {
    double d = 0, a = 0;
    if (!usableOrientation(data.dips[i], data.azimuths[i], d, a)) {
      ++summary.leftOut;
      continue;
    }
    dip.push_back(d);
    azimuth.push_back(a);
    if (!data.colourClasses.empty()) colourOf.push_back(data.colourClasses[i]);
    if (!data.symbolClasses.empty()) symbolOf.push_back(data.symbolClasses[i]);
  }
  summary.observations = static_cast<int>(dip.size());
  if (dip.empty()) return Status::error("No valid data points!");

  plot = singleSetPlot(request.title, request.setName);
  plot.fields.grlc1 = 0;
  plot.layout.aspect = 1.0f;  // a square data area: the net stays a circle on any page
  netWindow(plot.sets.back());
  addRim(plot.sets.back());
  const float labelX = -kWindow + kInset, labelY = 96.0f, step = 6.0f;

  if (request.rose) {
    PlotSet& set = plot.sets.back();
    std::vector<int> counts;
    if (Status s = roseCounts(azimuth, request.roseWidth, request.roseStart, counts); !s) return s;
    summary.roseMaximum = *std::max_element(counts.begin(), counts.end());
    addRoseRings(set, summary.roseMaximum);
    addRose(set, counts, request);
    set.sym = 0;
    addText(set, labelX, labelY, fmt::format("Frequency: 0 to {}", summary.roseMaximum));
    addText(set, labelX, labelY - step, fmt::format("Observations: {}", summary.observations));
    addRingLabels(set, summary.roseMaximum);
    return Status::ok();
  }

  std::vector<Orientation> lines;
  for (std::size_t i = 0; i < dip.size(); ++i)
    lines.push_back(request.poles ? poleOfPlane(dip[i], azimuth[i]) : Orientation{dip[i], azimuth[i]});

  const ClassKey colours = classKey(colourOf), symbols = classKey(symbolOf);
  // Set 0 holds the net, its labels and (without classes) the data; each
  // class, or pair of classes, has a set of its own after it.
  std::map<int, std::size_t> setOfGroup;
  auto setFor = [&](std::size_t i) -> std::size_t {
    if (colours.names.empty() && symbols.names.empty()) return 0;
    const int c = colours.names.empty() ? 0 : colours.of[i], m = symbols.names.empty() ? 0 : symbols.of[i];
    const int group = c * static_cast<int>(std::max<std::size_t>(1, symbols.names.size())) + m;
    auto [it, added] = setOfGroup.emplace(group, plot.sets.size());
    if (added) {
      std::string name = colours.names.empty() ? "" : colours.names[static_cast<std::size_t>(c)];
      if (!symbols.names.empty()) name += (name.empty() ? "" : " / ") + symbols.names[static_cast<std::size_t>(m)];
      plot.sets.push_back(netDataSet(name, colours.names.empty() ? 0 : classColour(static_cast<std::size_t>(c)),
                                     symbols.names.empty() ? 1 : classShape(static_cast<std::size_t>(m))));
    }
    return it->second;
  };
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const NetPoint p = projectLine(lines[i], request.projection);
    PlotSet& set = plot.sets[setFor(i)];
    set.data[0].push_back(static_cast<float>(p.x));
    set.data[1].push_back(static_cast<float>(p.y));
  }
  for (PlotSet& set : plot.sets) {
    set.defs.iop[0] = lines.size() <= 2000 ? 15 : 6;
    set.defs.iop[1] = lines.size() <= 2000 ? 0 : 40;
  }
  PlotSet& net = plot.sets.front();
  if (net.pointCount() == 0) net.sym = 0;
  if (request.contours)
    if (Status s = addContours(net, lines, request, summary); !s) return s;
  if (request.planes)
    for (std::size_t i = 0; i < dip.size() && i < kMaxGreatCircles; ++i) {
      std::vector<float> x, y;
      for (const NetPoint& p : greatCircle(dip[i], azimuth[i], request.projection)) {
        x.push_back(static_cast<float>(p.x));
        y.push_back(static_cast<float>(p.y));
      }
      const int colour = colours.names.empty() ? kCircleColour : classColour(static_cast<std::size_t>(colours.of[i]));
      net.lines.add(polyline(std::move(x), std::move(y), colour, 0.2f, 0));
    }
  const std::string name = request.setName.empty() ? "dip and azimuth" : request.setName;
  addText(net, labelX, labelY, fmt::format("{} {}", request.poles ? "Poles:" : "Scatter:", name));
  addText(net, labelX, labelY - step, fmt::format("Observations: {}", summary.observations));
  addText(net, labelX, labelY - 2 * step,
          std::string(request.projection == kEqualArea ? "Equal area" : "Equal angle") +
              (request.poles ? " 90-0-90" : " 0-90-0"));
  addStereonetKey(net, colours.names, symbols.names);
  if (fisherMean(lines, summary.mean)) {
    const FisherMean& m = summary.mean;
    addText(net, kWindow - kInset, labelY, fmt::format("Mean {}/{:03}", std::lround(m.mean.plunge), std::lround(m.mean.trend) % 360), 3);
    if (!isNull(m.kappa))
      addText(net, kWindow - kInset, labelY - step, fmt::format("k={}, a95={}", formatReal(m.kappa, -3), formatReal(m.alpha95, -2)), 3);
  }
  if (request.contours) {
    std::string levels;
    for (double l : summary.contourLevels) levels += (levels.empty() ? "" : ", ") + formatReal(l, -6);
    // Below the net, between the keys.
    addText(net, 0.0f, -95.5f,
            fmt::format("Kamb contours: {} (maximum {:.1f} sigma)", levels.empty() ? "none" : levels + " sigma",
                        summary.densityMaximum),
            2);
  }
  return Status::ok();
}

}  // namespace subsurf
