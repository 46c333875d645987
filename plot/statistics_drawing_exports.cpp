// C entry points that draw the current set's values as a histogram or as
// binned statistics into the current plot's window (declared in
// include/subsurf/plot_statistics.h). The drawing replaces what the window
// showed; the plot tree is not changed.
#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "plot/bin_statistics.h"
#include "plot/binned_plot.h"
#include "plot/histogram_plot.h"
#include "plot/plot_drawing.h"
#include "plot/window_drawing.h"
#include "subsurf/plot_statistics.h"

namespace ss = subsurf;

namespace {

constexpr int kDefaultBins = 10;

// The window's plot: the current plot's title, the set's name and labels.
template <typename Make>
void drawStatistics(int* status, Make&& make) {
  ss::drawInCurrentWindow(status, true, [&](ss::drawing::Canvas& canvas, ss::PlotRecord& plot,
                                            const ss::PlotSet* set) {
    ss::PlotRecord drawn;
    const ss::Status s = make(plot, *set, drawn);
    if (!s) {
      ss::host::showMessage(s.message());
      return false;
    }
    drawn.layout = plot.layout;
    ss::drawPlotOn(drawn, canvas);
    return true;
  });
}

std::string unitOf(const ZW_SCALE& scale) { return ss::fixedText(scale.UNIT); }

}  // namespace

extern "C" {

void ZW_DRAWHIST(int* nclass, int* npoints, int* status) {
  drawStatistics(status, [&](const ss::PlotRecord& plot, const ss::PlotSet& set, ss::PlotRecord& drawn) {
    ss::Histogram h;
    if (ss::Status s = ss::countHistogram(set.data[0], nclass && *nclass > 0 ? *nclass : 0, h); !s) return s;
    drawn = ss::makeHistogramPlot(h, set.labels[0], unitOf(set.scales[0]), plot.fields.title, set.name);
    if (nclass) *nclass = static_cast<int>(h.counts.size());
    if (npoints) *npoints = h.points;
    return ss::Status::ok();
  });
}

void ZW_DRAWBIN(const int* nbins, const float* edges, int* status) {
  drawStatistics(status, [&](const ss::PlotRecord& plot, const ss::PlotSet& set, ss::PlotRecord& drawn) {
    const std::vector<float>& by = set.data[0];
    const std::vector<float>& values = set.data[1];
    const int n = nbins && *nbins > 0 ? *nbins : kDefaultBins;
    std::vector<double> bounds;
    if (edges && nbins && *nbins > 0) {
      bounds.assign(edges, edges + n + 1);
    } else {
      std::vector<float> usable;
      for (std::size_t i = 0; i < by.size() && i < values.size(); ++i)
        if (!ss::isNull(by[i]) && std::isfinite(by[i]) && !ss::isNull(values[i]) && std::isfinite(values[i]))
          usable.push_back(by[i]);
      if (usable.empty()) return ss::Status::error("No valid data points!");
      const auto [lo, hi] = std::minmax_element(usable.begin(), usable.end());
      bounds = ss::equalBinEdges(*lo, *hi > *lo ? *hi : *lo + 1.0, n);
    }
    ss::BinStatistics table;
    const std::size_t count = std::min(by.size(), values.size());
    if (ss::Status s = ss::binStatistics(std::span<const float>(by.data(), count),
                                         std::span<const float>(values.data(), count), bounds, table);
        !s)
      return s;
    ss::BinnedPlotRequest request;
    request.byColumn = set.labels[0];
    request.byUnit = unitOf(set.scales[0]);
    request.valueColumn = set.labels[1];
    request.valueUnit = unitOf(set.scales[1]);
    request.valueScale = set.scales[1].TYPE == 2 ? 2 : 1;
    request.title = plot.fields.title;
    request.setName = set.name;
    drawn = ss::makeBinnedPlot(table, request);
    return ss::Status::ok();
  });
}

}  // extern "C"
