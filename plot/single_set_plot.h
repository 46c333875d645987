// The frame of the plots the commands make: one plot set, a title, no
// annotation strips and narrow margins.
#pragma once

#include <string>

#include "plot/plot_tree.h"

namespace subsurf {

inline PlotRecord singleSetPlot(const std::string& title, const std::string& setName) {
  PlotRecord plot;
  plot.annotation.texts = {};
  plot.fields.title = fieldText(title, kPlotTextWidth);
  plot.layout.ml = plot.layout.mr = plot.layout.mt = plot.layout.mb = 8;
  plot.sets.emplace_back();
  plot.sets.back().name = fieldText(setName, kSetNameWidth);
  return plot;
}

}  // namespace subsurf
