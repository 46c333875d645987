#include "binned_input.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "host/messages.h"
#include "host/number_text.h"

namespace subsurf::cli {

namespace {

bool parseEdges(const std::string& text, std::vector<double>& edges) {
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t comma = std::min(text.find(',', start), text.size());
    double v = 0;
    if (!parseReal(std::string_view(text).substr(start, comma - start), v)) {
      host::showMessage(fmt::format("--edges \"{}\": \"{}\" is not a number", text, text.substr(start, comma - start)));
      return false;
    }
    edges.push_back(v);
    start = comma + 1;
  }
  return true;
}

}  // namespace

bool readBinnedTable(const BinnedInput& o, CrossplotData& data, BinStatistics& table) {
  AxisRequest by, value;
  by.column = o.by;
  by.unit = o.byUnit;
  value.column = o.value;
  value.unit = o.valueUnit;
  if (Status s = readCrossplotData(o.data, by, value, data); !s) {
    host::showMessage(s.message());
    return false;
  }
  std::vector<double> edges;
  if (!o.edges.empty()) {
    if (!parseEdges(o.edges, edges)) return false;
  } else {
    if (data.x.empty()) {
      host::showMessage(
          fmt::format("{}: no row has values in both \"{}\" and \"{}\"", o.data, data.xColumn, data.yColumn));
      return false;
    }
    const auto [lo, hi] = std::minmax_element(data.x.begin(), data.x.end());
    edges = equalBinEdges(*lo, *hi > *lo ? *hi : *lo + 1.0, o.bins);
  }
  if (Status s = binStatistics(data.x, data.y, edges, table); !s) {
    host::showMessage(s.message());
    return false;
  }
  return true;
}

std::string binnedLeftOutText(const BinnedInput& o, const CrossplotData& data, const BinStatistics& table) {
  const long leftOut = data.emptyCells + data.nullValues + data.nonFinite;
  if (leftOut == 0 && table.outside == 0) return {};
  return fmt::format("{}: {} of {} rows left out ({} with an empty cell, {} null, {} not finite), {} outside the bins",
                     o.data, leftOut, data.rows, data.emptyCells, data.nullValues, data.nonFinite, table.outside);
}

}  // namespace subsurf::cli
