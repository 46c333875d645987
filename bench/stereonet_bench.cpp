// A stereonet with density contours of 100,000 poles, to a 1200x1200 PNG
// (8 x 8 inches at 150 dpi): Kamb counting with exponential smoothing on a
// 100 x 100 grid, contours every 2 standard deviations, the poles drawn as
// small translucent markers. BM_KambDensity is the counting alone.
// bench/run_stereonet.sh runs these beside matplotlib and NumPy doing the
// same work on the same poles (bench/stereonet_matplotlib.py).
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "host/reproducible_noise.h"
#include "bench/peak_memory.h"
#include "plot/plot_drawing.h"
#include "plot/stereonet_density.h"
#include "plot/stereonet_plot.h"

namespace ss = subsurf;

namespace {

constexpr int kPoles = 100000, kGrid = 100;

// Three joint sets and a tenth scattered at random; the recipe
// bench/stereonet_matplotlib.py repeats draw for draw.
void planes(std::vector<float>& dips, std::vector<float>& azimuths) {
  ss::ReproducibleNoise r(2024);
  struct Set {
    double below, dip, azimuth, spread;
  };
  const Set sets[] = {{0.35, 70, 120, 8}, {0.65, 60, 230, 10}, {0.90, 15, 300, 6}};
  dips.clear();
  azimuths.clear();
  for (int k = 0; k < kPoles; ++k) {
    const double u = r.uniform();
    double d = 0, a = 0;
    const Set* set = nullptr;
    for (const Set& s : sets)
      if (!set && u < s.below) set = &s;
    if (set) {
      d = std::clamp(set->dip + set->spread * r.normal(), 0.0, 90.0);
      a = std::fmod(set->azimuth + set->spread * r.normal() + 360.0, 360.0);
    } else {
      d = 90.0 * r.uniform();
      a = 360.0 * r.uniform();
    }
    dips.push_back(static_cast<float>(d));
    azimuths.push_back(static_cast<float>(a));
  }
}

ss::StereonetRequest contoured() {
  ss::StereonetRequest r;
  r.poles = true;
  r.contours = true;
  r.densityGrid = kGrid;
  r.contourStep = 2.0;
  r.setName = "joints";
  return r;
}

void BM_StereonetContoursPng(benchmark::State& state) {
  std::vector<float> dips, azimuths;
  planes(dips, azimuths);
  ss::DrawOptions o;
  o.kind = ss::drawing::OutputKind::Png;
  o.path = "/tmp/subsurf_stereonet_bench_" + std::to_string(::getpid()) + ".png";
  o.dpi = 150;
  o.widthMm = o.heightMm = 8 * 25.4;
  const double before = peakRssMb();
  ss::StereonetSummary summary;
  for (auto _ : state) {
    ss::PlotRecord plot;
    if (ss::Status s = ss::makeStereonetPlot(dips, azimuths, contoured(), plot, summary); !s)
      state.SkipWithError(s.message().c_str());
    if (ss::Status s = ss::drawPlot(plot, o); !s) state.SkipWithError(s.message().c_str());
  }
  state.counters["maximum_sigma"] = summary.densityMaximum;
  state.counters["levels"] = static_cast<double>(summary.contourLevels.size());
  state.counters["peak_rss_mb"] = peakRssMb();
  state.counters["rss_before_mb"] = before;
  if (!std::getenv("SUBSURF_BENCH_KEEP")) ::unlink(o.path.c_str());
}

void BM_KambDensity(benchmark::State& state) {
  std::vector<float> dips, azimuths;
  planes(dips, azimuths);
  std::vector<ss::Orientation> poles;
  for (std::size_t k = 0; k < dips.size(); ++k) poles.push_back(ss::poleOfPlane(dips[k], azimuths[k]));
  ss::DensityGrid grid;
  for (auto _ : state) {
    if (ss::Status s = ss::kambDensity(poles, ss::kEqualArea, kGrid, 3.0, grid); !s)
      state.SkipWithError(s.message().c_str());
    benchmark::DoNotOptimize(grid.counts.data());
  }
  state.counters["maximum_sigma"] = grid.maximumSigmas();
}

BENCHMARK(BM_StereonetContoursPng)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(BM_KambDensity)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

}  // namespace

BENCHMARK_MAIN();
