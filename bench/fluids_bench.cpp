// Calculate-all over one million cases held in a CSV-like array (one column
// per given entry). The cases are the ones fluids_numpy.py generates, so the
// two programs' rates compare like for like.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "fluids/calculate_all.h"
#include "fluids/fluid_batch.h"
#include "fluids/fluid_entries.h"
#include "subsurf/fluids.h"
#include "subsurf/units.h"

namespace {

using subsurf::fluids::Entry;
using subsurf::fluids::FluidTable;

constexpr std::size_t kCases = 1'000'000;

// Columns of a CSV-like array of cases, one per given entry.
struct Cases {
  std::vector<float> dres, oden, sgden, solgor, gden;
};

// lo + (hi - lo) * frac(k * step) for k = 1..n, rounded to single precision.
std::vector<float> column(std::size_t n, double lo, double hi, double step) {
  std::vector<float> v(n);
  for (std::size_t k = 0; k < n; ++k) {
    double whole;
    v[k] = static_cast<float>(lo + (hi - lo) * std::modf(static_cast<double>(k + 1) * step, &whole));
  }
  return v;
}

const Cases& cases() {
  static const Cases c{column(kCases, 2000.0, 12000.0, 0.6180339887498949),
                       column(kCases, 15.0, 50.0, 0.4142135623730951),
                       column(kCases, 0.6, 1.0, 0.7320508075688772),
                       column(kCases, 100.0, 1500.0, 0.2360679774997897),
                       column(kCases, 0.6, 1.0, 0.6457513110645906)};
  return c;
}

// The batch engine: the array's columns become the given entries of one
// million cases, calculate-all runs over them, and every entry's column is
// the output.
void BM_CalculateAll(benchmark::State& state) {
  const Cases& c = cases();
  FluidTable prototype;
  prototype.create(1);
  subsurf::fluids::FluidBatch batch(prototype, kCases);
  auto give = [&](Entry e, const std::vector<float>& column) {
    std::copy(column.begin(), column.end(), batch.values(e));
    std::fill_n(batch.states(e), kCases, subsurf::fluids::kStateTyped);
  };
  for (auto _ : state) {
    give(Entry::Dres, c.dres);
    give(Entry::Oden, c.oden);
    give(Entry::Sgden, c.sgden);
    give(Entry::Solgor, c.solgor);
    give(Entry::Gden, c.gden);
    batch.calculateAll();
    benchmark::DoNotOptimize(batch.values(Entry::Ghi));
    benchmark::ClobberMemory();
  }
  state.counters["cases_per_second"] =
      benchmark::Counter(static_cast<double>(kCases), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_CalculateAll)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// Case by case through one table, as the single-case calculator runs.
void BM_CalculateAllOneTable(benchmark::State& state) {
  const Cases& c = cases();
  constexpr std::size_t n = 200'000;
  FluidTable table;
  table.create(1);
  const auto unit = [&](Entry e) { return table.fixedUnit(e); };
  for (auto _ : state) {
    for (std::size_t k = 0; k < n; ++k) {
      // Every case types the same five entries, so the table needs no reset:
      // everything else is calculated and is recalculated for the next case.
      table.set(Entry::Dres, unit(Entry::Dres), c.dres[k], subsurf::fluids::kStateTyped);
      table.set(Entry::Oden, unit(Entry::Oden), c.oden[k], subsurf::fluids::kStateTyped);
      table.set(Entry::Sgden, unit(Entry::Sgden), c.sgden[k], subsurf::fluids::kStateTyped);
      table.set(Entry::Solgor, unit(Entry::Solgor), c.solgor[k], subsurf::fluids::kStateTyped);
      table.set(Entry::Gden, unit(Entry::Gden), c.gden[k], subsurf::fluids::kStateTyped);
      subsurf::fluids::calculateAll(table);
      benchmark::DoNotOptimize(table.storedValue(Entry::Ghi));
    }
  }
  state.counters["cases_per_second"] =
      benchmark::Counter(static_cast<double>(n), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_CalculateAllOneTable)->Unit(benchmark::kMillisecond);

// The same through the C interface by name, as a host program would call it
// (100 000 cases: names are looked up and units resolved on every call).
void BM_CalculateAllThroughExports(benchmark::State& state) {
  const Cases& c = cases();
  constexpr std::size_t n = 100'000;
  int oilfield = 1, typed = 1;
  FC_INIT(&oilfield);
  const char* names[] = {"dres                ", "oden                ", "sgden               ",
                         "solgor              ", "gden                "};
  const char* units[] = {"ft              ", "api             ", "(air=1)         ",
                         "scf/stb         ", "(air=1)         "};
  for (auto _ : state) {
    for (std::size_t k = 0; k < n; ++k) {
      float v[] = {c.dres[k], c.oden[k], c.sgden[k], c.solgor[k], c.gden[k]};
      for (int i = 0; i < 5; ++i) FC_SETV(names[i], units[i], &v[i], &typed);
      FC_CALCALL();
      float z;
      int st, missing;
      FC_GETV("zfact               ", "-               ", &z, &st, &missing);
      benchmark::DoNotOptimize(z);
    }
  }
  FC_CLOSE();
  state.counters["cases_per_second"] =
      benchmark::Counter(static_cast<double>(n), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_CalculateAllThroughExports)->Unit(benchmark::kMillisecond);

}  // namespace

// The units registry is loaded first, as every program does at start.
int main(int argc, char** argv) {
  X_INIT();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
