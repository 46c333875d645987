// Plot drawing and axis limits at scale: one million points cross-plotted to
// a 1600x1200 PNG (100 dpi, 16 x 12 inches) and to SVG, and the P99-P1 limits
// of ten million values. bench/run_plot.sh runs these beside matplotlib and
// numpy doing the same work.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/peak_memory.h"
#include "plot/axis_scales.h"
#include "plot/plot_drawing.h"
#include "subsurf/plot.h"

namespace ss = subsurf;

namespace {

// The same points bench/plot_matplotlib.py makes: x normal, y = x plus noise,
// from a 64-bit LCG with Box-Muller (so both sides draw identical data).
void points(std::size_t n, std::vector<float>& x, std::vector<float>& y) {
  std::uint64_t s = 12345;
  auto uniform = [&] {
    s = s * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(s >> 11) / 9007199254740992.0;
  };
  x.resize(n);
  y.resize(n);
  for (std::size_t k = 0; k < n; ++k) {
    const double u = std::max(1e-12, uniform()), v = uniform();
    const double r = std::sqrt(-2 * std::log(u));
    x[k] = static_cast<float>(r * std::cos(2 * M_PI * v));
    y[k] = static_cast<float>(0.6 * x[k] + 0.8 * r * std::sin(2 * M_PI * v));
  }
}

ss::PlotRecord millionPointPlot() {
  ss::PlotRecord p;
  p.annotation.texts = {};
  p.fields.title = "One million points";
  p.sets.emplace_back();
  ss::PlotSet& set = p.sets.back();
  points(1000000, set.data[0], set.data[1]);
  set.labels = {"x", "y", "", "", ""};
  set.defs.iop[0] = 5;   // 0.5 mm markers
  set.defs.iop[1] = 30;  // 30 % opaque
  for (int a = 0; a < 2; ++a) {
    ZW_SCALE& s = set.scales[static_cast<std::size_t>(a)];
    s.MODE = ss::kAutoRound;
    ss::setAxisLimits(set.data[static_cast<std::size_t>(a)], s);
  }
  return p;
}

void drawTo(benchmark::State& state, ss::drawing::OutputKind kind, const char* ext) {
  const ss::PlotRecord plot = millionPointPlot();
  ss::DrawOptions o;
  o.kind = kind;
  o.path = "/tmp/subsurf_plot_bench_" + std::to_string(::getpid()) + ext;
  o.dpi = 100;
  o.widthMm = 16 * 25.4;
  o.heightMm = 12 * 25.4;
  const double before = peakRssMb();
  for (auto _ : state) {
    const ss::Status s = ss::drawPlot(plot, o);
    if (!s) state.SkipWithError(s.message().c_str());
  }
  state.counters["points_per_second"] = benchmark::Counter(1e6, benchmark::Counter::kIsIterationInvariantRate);
  state.counters["peak_rss_mb"] = peakRssMb();
  state.counters["rss_before_mb"] = before;
  if (!std::getenv("SUBSURF_BENCH_KEEP")) ::unlink(o.path.c_str());
}

void BM_DrawPng(benchmark::State& state) { drawTo(state, ss::drawing::OutputKind::Png, ".png"); }
void BM_DrawSvg(benchmark::State& state) { drawTo(state, ss::drawing::OutputKind::Svg, ".svg"); }

void BM_AxlimsP99P1(benchmark::State& state) {
  std::vector<float> v, unused;
  points(10000000, v, unused);
  unused = {};
  const int n = static_cast<int>(v.size());
  ZW_SCALE s{};
  for (auto _ : state) {
    s.TYPE = 1;
    s.MODE = ss::kP99P1;
    ZW_AXLIMS(&n, v.data(), &s);
    benchmark::DoNotOptimize(s);
  }
  state.counters["min"] = s.MIN;
  state.counters["max"] = s.MAX;
  state.counters["values_per_second"] = benchmark::Counter(1e7, benchmark::Counter::kIsIterationInvariantRate);
}

BENCHMARK(BM_DrawPng)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(BM_DrawSvg)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
BENCHMARK(BM_AxlimsP99P1)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

}  // namespace

BENCHMARK_MAIN();
