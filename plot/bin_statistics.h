// Binned statistics: values cut into bins along another variable and
// summarised bin by bin (the table of ZW_BINSTATS and `subsurf stats bins`).
//
// Bin membership. Bins are given by ascending edges e[0] < e[1] < ... < e[n].
// Each edge is widened by a millionth of its magnitude, so that a value that
// single precision stored a hair beside an edge counts where the user meant:
// bin i holds the values b with
//   e[i] - |e[i]|·1e-6  <=  b  <  e[i+1] - |e[i+1]|·1e-6,
// and the last bin also takes b up to e[n] + |e[n]|·1e-6 (for positive
// edges, the factors 1 - 0.000001 and 1.000001). A value lying on an inner
// edge belongs to the bin above it. Points whose bin value or value is null
// or not finite are left out and counted.
//
// Statistics of a bin's values x(0) <= ... <= x(m-1):
// - percentiles linear between the two nearest ranks, percentile P at rank
//   (m-1)·P/100 ("P100" the largest, "P0" the smallest);
// - "Mean" and "Arith Mean" the arithmetic mean; "ADev" the mean absolute
//   deviation from the mean; "SDev" the sample standard deviation (m-1 in
//   the divisor; 0 for one value); "Median Dev" the median of the absolute
//   deviations from the median;
// - "Swan Mean" = 0.3·P10 + 0.4·P50 + 0.3·P90 and "Pear Mean" = 0.185·P5 +
//   0.63·P50 + 0.185·P95 with the weights as single-precision constants, the
//   sums rounded to single precision (so a bin of equal values gives that value);
// - "Geo Mean" and "Harm Mean" over positive values only: null when a value
//   is 0 or negative.
// An empty bin has NP 0 and null statistics.
#pragma once

#include <array>
#include <span>
#include <string>
#include <vector>

#include "host/status.h"

namespace subsurf {

inline constexpr std::array<const char*, 21> kBinStatisticsHeadings = {
    "Bin",  "MinV", "MaxV", "MidV", "NP",   "P100",       "P95",       "P90",       "P50",      "P10",        "P5",
    "P0",   "Mean", "ADev", "SDev", "Median Dev", "Pear Mean", "Swan Mean", "Geo Mean", "Arith Mean", "Harm Mean"};

struct BinStatisticsRow {
  int bin = 0;  // from 1
  double minV = 0, maxV = 0, midV = 0;
  int np = 0;
  // P100, P95, P90, P50, P10, P5, P0.
  std::array<double, 7> percentiles{};
  double mean = 0, adev = 0, sdev = 0, medianDev = 0, pearMean = 0, swanMean = 0, geoMean = 0, arithMean = 0,
         harmMean = 0;

  // The 21 columns in heading order.
  std::array<double, 21> columns() const;
};

struct BinStatistics {
  std::vector<BinStatisticsRow> rows;
  int leftOut = 0;     // points with a null or non-finite bin value or value
  int outside = 0;     // usable points outside every bin
};

// Equal-width edges from low to high (count bins, count + 1 edges).
std::vector<double> equalBinEdges(double low, double high, int count);

// Fails with a message naming the fault when edges are fewer than two, not
// ascending or not finite, or the two columns differ in length.
Status binStatistics(std::span<const float> by, std::span<const float> values, std::span<const double> edges,
                     BinStatistics& out);

// The table as comma-separated text: the headings, then one line per bin,
// numbers in the compact six-digit form, nulls empty.
std::string binStatisticsCsv(const BinStatistics& table);

}  // namespace subsurf
