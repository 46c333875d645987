#include "plot/binned_plot.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "plot/axis_scales.h"
#include "plot/single_set_plot.h"

namespace subsurf {

namespace {

constexpr int kBoxColour = 6;     // blue
constexpr int kMedianColour = 1;  // black
constexpr int kMeanColour = 7;    // vermillion
constexpr int kDiamond = 4;
constexpr float kBoxShare = 0.6f;  // of the bin's width
constexpr std::size_t kBaseLeft = 3;  // annotation place: the base strip's left

// Percentile places in BinStatisticsRow::percentiles.
constexpr std::size_t kP95 = 1, kP90 = 2, kP50 = 3, kP10 = 4, kP5 = 5;

LineElement segment(std::vector<float> x, std::vector<float> y, int colour, float width, bool closed = false) {
  LineElement l;
  l.COLOUR = colour;
  l.WIDTH = width;
  l.CLOSED = closed ? 1 : 0;
  l.setPoints(std::move(x), std::move(y));
  return l;
}

}  // namespace

PlotRecord makeBinnedPlot(const BinStatistics& table, const BinnedPlotRequest& r) {
  PlotRecord plot = singleSetPlot(r.title, r.setName);
  PlotSet& set = plot.sets.back();
  set.sym = 0;
  set.legend = 0;
  set.labels[0] = fieldText(r.byColumn, kAxisLabelWidth);
  set.labels[1] = fieldText(r.valueColumn, kAxisLabelWidth);
  setFixed(set.scales[0].UNIT, r.byUnit);
  setFixed(set.scales[1].UNIT, r.valueUnit);

  std::vector<float> reach;  // what the y axis must show
  int points = 0;
  for (const BinStatisticsRow& row : table.rows) {
    points += row.np;
    if (row.np == 0) continue;
    const auto p = [&](std::size_t k) { return static_cast<float>(row.percentiles[k]); };
    const float half = static_cast<float>(row.maxV - row.minV) * kBoxShare / 2;
    const float mid = static_cast<float>(row.midV), a = mid - half, b = mid + half;
    set.lines.add(segment({a, a, b, b}, {p(kP10), p(kP90), p(kP90), p(kP10)}, kBoxColour, 0.35f, true));
    set.lines.add(segment({mid, mid}, {p(kP90), p(kP95)}, kBoxColour, 0.25f));
    set.lines.add(segment({mid, mid}, {p(kP10), p(kP5)}, kBoxColour, 0.25f));
    set.lines.add(segment({a, b}, {p(kP50), p(kP50)}, kMedianColour, 0.6f));
    ZW_SYMB mean = defaultSymbol();
    mean.X = mid;
    mean.Y = static_cast<float>(row.mean);
    mean.STYLE = kDiamond;
    mean.COLOUR = kMeanColour;
    mean.SIZE = 2.0f;
    mean.FILL = 1;
    set.symbols.add(mean);
    reach.insert(reach.end(), {p(kP5), p(kP95), mean.Y});
  }

  ZW_SCALE& xs = set.scales[0];
  xs.TYPE = 1;
  xs.MODE = kManual;
  xs.MIN = table.rows.empty() ? 0.0f : static_cast<float>(table.rows.front().minV);
  xs.MAX = table.rows.empty() ? 1.0f : static_cast<float>(table.rows.back().maxV);
  ZW_SCALE& ys = set.scales[1];
  ys.TYPE = r.valueScale;
  ys.MODE = kAutoRound;
  ys.MIN = ys.MAX = kRealNull;
  // Room above the tallest whisker for the two texts.
  if (!reach.empty()) {
    const auto [lo, hi] = std::minmax_element(reach.begin(), reach.end());
    const bool log = r.valueScale == 2 && *lo > 0;
    reach.push_back(log ? *hi * std::pow(*hi / *lo, 0.15f) : *hi + 0.15f * (*hi - *lo));
  }
  setAxisLimits(reach, ys);

  // Texts sit in the top corners, a little below the top of the axes.
  const bool logY = ys.TYPE == 2 && ys.MIN > 0;
  const float top = logY ? ys.MIN * std::pow(ys.MAX / ys.MIN, 0.96f) : ys.MIN + 0.96f * (ys.MAX - ys.MIN);
  ZW_TEXT count = defaultText();
  count.X = xs.MAX;
  count.Y = top;
  count.ALIGN = 3;
  setFixed(count.TEXT, fmt::format("No. of points: {}  Bins: {}", points, table.rows.size()));
  set.texts.add(count);
  // The key goes below the axes, where it cannot meet a box or the count.
  plot.annotation.texts[kBaseLeft] = {kBinnedPlotKey};
  plot.annotation.basemar = 0;
  return plot;
}

}  // namespace subsurf
