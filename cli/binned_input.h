// The input of the binned-statistics commands (`stats bins`, `plot bins`):
// two columns of a CSV file and the bin edges, given or made equal.
#pragma once

#include <string>

#include "plot/bin_statistics.h"
#include "plot/crossplot.h"

namespace subsurf::cli {

struct BinnedInput {
  std::string data, by, value, byUnit, valueUnit;
  std::string edges;  // "0,0.1,0.2"; empty: `bins` equal bins between the extremes
  int bins = 10;
};

// Reads the columns and computes the table. A fault is shown (naming the
// file, line, column or edge) and gives false.
bool readBinnedTable(const BinnedInput& input, CrossplotData& data, BinStatistics& table);

// The message for rows left out and points outside the bins; empty when none.
std::string binnedLeftOutText(const BinnedInput& input, const CrossplotData& data, const BinStatistics& table);

}  // namespace subsurf::cli
