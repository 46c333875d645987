#include "plot/stereonet_plot.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "host/number_text.h"
#include "plot/single_set_plot.h"

namespace subsurf {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr float kWindow = 100.0f;
constexpr int kNetColour = 1, kCircleColour = 4, kPetalColour = 2;
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
  setFixed(t.TEXT, text);
  set.texts.add(t);
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

Status makeStereonetPlot(std::span<const float> dips, std::span<const float> azimuths, const StereonetRequest& request,
                         PlotRecord& plot, StereonetSummary& summary) {
  summary = StereonetSummary{};
  if (dips.size() != azimuths.size())
    return Status::error(fmt::format("{} dips but {} azimuths", dips.size(), azimuths.size()));
  if (request.projection != kEqualArea && request.projection != kEqualAngle)
    return Status::error(fmt::format("Projection {} is not equal-angle (2) or equal-area (3)", request.projection));
  std::vector<double> dip, azimuth;
  for (std::size_t i = 0; i < dips.size(); ++i) {
    const float d = dips[i], a = azimuths[i];
    if (isNull(d) || isNull(a) || !std::isfinite(d) || !std::isfinite(a) || d < 0.0f || d > 90.0f) {
      ++summary.leftOut;
      continue;
    }
    dip.push_back(d);
    azimuth.push_back(std::fmod(std::fmod(static_cast<double>(a), 360.0) + 360.0, 360.0));
  }
  summary.observations = static_cast<int>(dip.size());
  if (dip.empty()) return Status::error("No valid data points!");

  plot = singleSetPlot(request.title, request.setName);
  plot.fields.grlc1 = 0;
  PlotSet& set = plot.sets.back();
  set.ax = {0, 0, 0, 0, 0};
  for (int a = 0; a < 2; ++a) {
    ZW_SCALE& s = set.scales[static_cast<std::size_t>(a)];
    s.TYPE = 1;
    s.MODE = 1;
    s.MIN = -kWindow;
    s.MAX = kWindow;
  }
  addRim(set);
  const float labelX = -kWindow, labelY = 96.0f;
  const std::string net = request.projection == kEqualArea ? "Equal area" : "Equal angle";

  if (request.rose) {
    std::vector<int> counts;
    if (Status s = roseCounts(azimuth, request.roseWidth, request.roseStart, counts); !s) return s;
    summary.roseMaximum = *std::max_element(counts.begin(), counts.end());
    addRose(set, counts, request);
    set.sym = 0;
    addText(set, labelX, labelY, fmt::format("Frequency: 0 to {}", summary.roseMaximum));
    addText(set, labelX, labelY - 6, fmt::format("Observations: {}", summary.observations));
    return Status::ok();
  }

  std::vector<Orientation> lines;
  for (std::size_t i = 0; i < dip.size(); ++i)
    lines.push_back(request.poles ? poleOfPlane(dip[i], azimuth[i]) : Orientation{dip[i], azimuth[i]});
  for (const Orientation& o : lines) {
    const NetPoint p = projectLine(o, request.projection);
    set.data[0].push_back(static_cast<float>(p.x));
    set.data[1].push_back(static_cast<float>(p.y));
  }
  set.defs.iop[0] = lines.size() <= 2000 ? 15 : 6;
  set.defs.iop[1] = lines.size() <= 2000 ? 0 : 40;
  if (request.planes)
    for (std::size_t i = 0; i < dip.size() && i < kMaxGreatCircles; ++i) {
      std::vector<float> x, y;
      for (const NetPoint& p : greatCircle(dip[i], azimuth[i], request.projection)) {
        x.push_back(static_cast<float>(p.x));
        y.push_back(static_cast<float>(p.y));
      }
      set.lines.add(polyline(std::move(x), std::move(y), kCircleColour, 0.2f, 0));
    }
  addText(set, labelX, labelY, fmt::format("{} {}", request.poles ? "Poles:" : "Scatter:", summary.observations));
  addText(set, labelX, labelY - 6, net);
  if (fisherMean(lines, summary.mean)) {
    const FisherMean& m = summary.mean;
    std::string text = fmt::format("Mean {}/{:03}", std::lround(m.mean.plunge), std::lround(m.mean.trend) % 360);
    if (!isNull(m.kappa)) text += fmt::format(", k={}, a95={}", formatReal(m.kappa, -3), formatReal(m.alpha95, -2));
    addText(set, kWindow, labelY, text, 3);
  }
  return Status::ok();
}

}  // namespace subsurf
