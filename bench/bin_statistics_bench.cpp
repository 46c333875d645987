// Binned statistics of ten million values in 100 bins (the table of
// ZW_BINSTATS). Its peer, bench/bin_statistics_numpy.py, computes the same
// table with NumPy from the same values; bench/run_bin_statistics.sh runs both.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "plot/bin_statistics.h"

namespace {

constexpr std::size_t kValues = 10'000'000;
constexpr int kBins = 100;

// The values of the peer: by = frac(i·0.6180339887), value = exp(3·by + frac(i·0.7548776662)),
// in single precision.
void makeValues(std::vector<float>& by, std::vector<float>& value) {
  by.resize(kValues);
  value.resize(kValues);
  for (std::size_t i = 0; i < kValues; ++i) {
    const double a = std::fmod(static_cast<double>(i) * 0.6180339887, 1.0);
    const double b = std::fmod(static_cast<double>(i) * 0.7548776662, 1.0);
    by[i] = static_cast<float>(a);
    value[i] = static_cast<float>(std::exp(3.0 * a + b));
  }
}

void BM_BinStatistics(benchmark::State& state) {
  std::vector<float> by, value;
  makeValues(by, value);
  const std::vector<double> edges = subsurf::equalBinEdges(0.0, 1.0, kBins);
  for (auto _ : state) {
    subsurf::BinStatistics table;
    if (!subsurf::binStatistics(by, value, edges, table)) state.SkipWithError("binning failed");
    benchmark::DoNotOptimize(table.rows.data());
  }
}

}  // namespace

BENCHMARK(BM_BinStatistics)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

BENCHMARK_MAIN();
