#include "plot/bin_statistics.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <fmt/format.h>

#include "host/nulls.h"
#include "host/number_text.h"

namespace subsurf {

namespace {

constexpr double kEdgeTolerance = 0.000001;
constexpr std::array<double, 7> kPercentiles = {100, 95, 90, 50, 10, 5, 0};

double lowerReach(double edge) { return edge - std::fabs(edge) * kEdgeTolerance; }
double upperReach(double edge) { return edge + std::fabs(edge) * kEdgeTolerance; }

bool usable(float v) { return std::isfinite(v) && !isNull(v) && !isNoValue(v); }

// The percentile of the sorted-rank rule (plot/sorted_percentile.h) found by
// selection instead of a full sort: the two ranks around (m-1)·p/100 are put
// in place by nth_element, so a bin costs O(m) per percentile. Reorders x.
double selectedPercentile(std::vector<double>& x, double p) {
  const double h = (static_cast<double>(x.size()) - 1.0) * p / 100.0;
  const auto low = static_cast<std::size_t>(std::floor(h));
  std::nth_element(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(low), x.end());
  const double below = x[low];
  if (low + 1 >= x.size() || h == static_cast<double>(low)) return below;
  const double above = *std::min_element(x.begin() + static_cast<std::ptrdiff_t>(low) + 1, x.end());
  return below + (h - static_cast<double>(low)) * (above - below);
}

// A weighted mean of three percentiles with single-precision weights, the outer
// two sharing one weight; rounded to single precision.
double weightedMean(float outer, float middle, double low, double mid, double high) {
  return static_cast<float>(static_cast<double>(outer) * low + static_cast<double>(middle) * mid +
                            static_cast<double>(outer) * high);
}

void summarise(std::vector<double>& x, BinStatisticsRow& row) {
  row.np = static_cast<int>(x.size());
  if (x.empty()) {
    row.percentiles.fill(kDoubleNull);
    row.mean = row.adev = row.sdev = row.medianDev = row.pearMean = row.swanMean = row.geoMean = row.arithMean =
        row.harmMean = kDoubleNull;
    return;
  }
  for (std::size_t k = 0; k < kPercentiles.size(); ++k) row.percentiles[k] = selectedPercentile(x, kPercentiles[k]);
  const double m = static_cast<double>(x.size());
  double sum = 0, logSum = 0, reciprocalSum = 0;
  bool positive = true;
  for (double v : x) {
    sum += v;
    if (v > 0) {
      logSum += std::log(v);
      reciprocalSum += 1.0 / v;
    } else {
      positive = false;
    }
  }
  row.mean = row.arithMean = sum / m;
  double absSum = 0, squareSum = 0;
  for (double v : x) {
    absSum += std::fabs(v - row.mean);
    squareSum += (v - row.mean) * (v - row.mean);
  }
  row.adev = absSum / m;
  row.sdev = x.size() > 1 ? std::sqrt(squareSum / (m - 1.0)) : 0.0;
  const double median = row.percentiles[3];
  std::vector<double> deviations(x.size());
  std::transform(x.begin(), x.end(), deviations.begin(), [&](double v) { return std::fabs(v - median); });
  row.medianDev = selectedPercentile(deviations, 50);
  const auto& p = row.percentiles;
  row.pearMean = weightedMean(0.185f, 0.63f, p[5], p[3], p[1]);
  row.swanMean = weightedMean(0.3f, 0.4f, p[4], p[3], p[2]);
  row.geoMean = positive ? std::exp(logSum / m) : kDoubleNull;
  row.harmMean = positive ? m / reciprocalSum : kDoubleNull;
}

}  // namespace

std::array<double, 21> BinStatisticsRow::columns() const {
  const auto& p = percentiles;
  return {static_cast<double>(bin), minV, maxV, midV, static_cast<double>(np), p[0], p[1], p[2], p[3], p[4], p[5],
          p[6], mean, adev, sdev, medianDev, pearMean, swanMean, geoMean, arithMean, harmMean};
}

std::vector<double> equalBinEdges(double low, double high, int count) {
  std::vector<double> edges;
  if (count < 1) return edges;
  for (int i = 0; i <= count; ++i) edges.push_back(i == count ? high : low + (high - low) * i / count);
  return edges;
}

Status binStatistics(std::span<const float> by, std::span<const float> values, std::span<const double> edges,
                     BinStatistics& out) {
  out = BinStatistics{};
  if (by.size() != values.size())
    return Status::error(fmt::format("The bin column has {} values and the value column {}", by.size(), values.size()));
  if (edges.size() < 2) return Status::error("Binning needs at least two edges");
  for (std::size_t i = 0; i < edges.size(); ++i) {
    if (!std::isfinite(edges[i])) return Status::error(fmt::format("Bin edge {} is not a number", i + 1));
    if (i > 0 && !(edges[i] > edges[i - 1]))
      return Status::error(fmt::format("Bin edges must ascend: edge {} ({}) is not above edge {} ({})", i + 1,
                                       formatReal(edges[i], -6), i, formatReal(edges[i - 1], -6)));
  }
  const std::size_t bins = edges.size() - 1;
  std::vector<double> reach(bins);
  for (std::size_t i = 0; i < bins; ++i) reach[i] = lowerReach(edges[i]);
  const double top = upperReach(edges[bins]);

  // Two passes: the bin of every point (or none), then each bin's values in
  // one allocation.
  constexpr std::uint32_t kNoBin = UINT32_MAX;
  std::vector<std::uint32_t> binOf(by.size(), kNoBin);
  std::vector<std::size_t> sizes(bins, 0);
  for (std::size_t i = 0; i < by.size(); ++i) {
    if (!usable(by[i]) || !usable(values[i])) {
      ++out.leftOut;
      continue;
    }
    const double b = by[i];
    const auto above = std::upper_bound(reach.begin(), reach.end(), b);
    if (above == reach.begin() || b > top) {
      ++out.outside;
      continue;
    }
    binOf[i] = static_cast<std::uint32_t>(above - reach.begin() - 1);
    ++sizes[binOf[i]];
  }
  std::vector<std::vector<double>> members(bins);
  for (std::size_t k = 0; k < bins; ++k) members[k].reserve(sizes[k]);
  for (std::size_t i = 0; i < by.size(); ++i)
    if (binOf[i] != kNoBin) members[binOf[i]].push_back(values[i]);
  out.rows.resize(bins);
  for (std::size_t i = 0; i < bins; ++i) {
    BinStatisticsRow& row = out.rows[i];
    row.bin = static_cast<int>(i) + 1;
    row.minV = edges[i];
    row.maxV = edges[i + 1];
    row.midV = 0.5 * (edges[i] + edges[i + 1]);
    summarise(members[i], row);
  }
  return Status::ok();
}

std::string binStatisticsCsv(const BinStatistics& table) {
  std::string text;
  for (std::size_t k = 0; k < kBinStatisticsHeadings.size(); ++k) {
    if (k) text += ',';
    text += kBinStatisticsHeadings[k];
  }
  text += '\n';
  for (const BinStatisticsRow& row : table.rows) {
    const auto columns = row.columns();
    for (std::size_t k = 0; k < columns.size(); ++k) {
      if (k) text += ',';
      text += formatReal(columns[k], -6);
    }
    text += '\n';
  }
  return text;
}

}  // namespace subsurf
