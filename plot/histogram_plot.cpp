#include "plot/histogram_plot.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "plot/axis_scales.h"
#include "plot/single_set_plot.h"

namespace subsurf {

int defaultClassCount(std::size_t points) {
  if (points < 2) return 1;
  return std::clamp(static_cast<int>(std::ceil(std::log2(static_cast<double>(points)))) + 1, 1, 100);
}

Status countHistogram(std::span<const float> values, int classes, Histogram& out) {
  out = Histogram{};
  std::vector<float> usable;
  for (float v : values) {
    if (isNull(v) || isNoValue(v) || !std::isfinite(v)) ++out.leftOut;
    else usable.push_back(v);
  }
  if (usable.empty()) return Status::error("No valid data points!");
  if (classes < 0 || classes > 100000) return Status::error(fmt::format("{} classes; a histogram has 1 to 100000", classes));
  const int n = classes == 0 ? defaultClassCount(usable.size()) : classes;
  const auto [lo, hi] = std::minmax_element(usable.begin(), usable.end());
  const double low = *lo, high = *hi > *lo ? *hi : *lo + 1.0;
  for (int k = 0; k <= n; ++k) out.edges.push_back(k == n ? high : low + (high - low) * k / n);
  out.counts.assign(static_cast<std::size_t>(n), 0);
  for (float v : usable) {
    auto k = static_cast<std::size_t>(std::upper_bound(out.edges.begin(), out.edges.end() - 1, double{v}) -
                                      out.edges.begin()) - 1;
    ++out.counts[std::min(k, out.counts.size() - 1)];
  }
  out.points = static_cast<int>(usable.size());
  return Status::ok();
}

PlotRecord makeHistogramPlot(const Histogram& h, const std::string& column, const std::string& unit,
                             const std::string& title, const std::string& setName) {
  PlotRecord plot = singleSetPlot(title, setName);
  PlotSet& set = plot.sets.back();
  set.sym = 0;
  set.labels[0] = fieldText(column, kAxisLabelWidth);
  set.labels[1] = "Frequency";
  setFixed(set.scales[0].UNIT, unit);
  const int most = h.counts.empty() ? 0 : *std::max_element(h.counts.begin(), h.counts.end());
  set.scales[0].TYPE = set.scales[1].TYPE = 1;
  set.scales[0].MODE = set.scales[1].MODE = 1;
  set.scales[0].MIN = static_cast<float>(h.edges.front());
  set.scales[0].MAX = static_cast<float>(h.edges.back());
  set.scales[1].MIN = 0.0f;
  set.scales[1].MAX = static_cast<float>(std::max(1, most)) * 1.2f;  // room for the count above the bars
  for (std::size_t k = 0; k < h.counts.size(); ++k) {
    if (h.counts[k] == 0) continue;
    LineElement bar;
    bar.COLOUR = 4;
    bar.WIDTH = 0.3f;
    bar.CLOSED = 1;
    const auto a = static_cast<float>(h.edges[k]), b = static_cast<float>(h.edges[k + 1]);
    const auto c = static_cast<float>(h.counts[k]);
    bar.setPoints({a, a, b, b}, {0.0f, c, c, 0.0f});
    set.lines.add(std::move(bar));
  }
  ZW_TEXT label = defaultText();
  label.X = set.scales[0].MAX;
  label.Y = set.scales[1].MAX * 0.96f;
  label.ALIGN = 3;
  setFixed(label.TEXT, fmt::format("No. of points: {}  Classes: {}", h.points, h.counts.size()));
  set.texts.add(label);
  return plot;
}

}  // namespace subsurf
