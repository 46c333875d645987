// Units conversion speed: X_SICONVV on 10 million doubles, against the plain
// arithmetic loop over the same array, which is the most a conversion can hope
// for (memory traffic and one multiply, or a multiply and an add).
//
// Each iteration converts the array there and back (ft -> m -> ft), so the
// values stay in range however many iterations run, and the plain loop does the
// same two passes. About 1% of the values are nulls, as in well-log data.
//
// After the runs a summary gives nanoseconds per value and each conversion's
// time as a multiple of its plain loop.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "host/nulls.h"
#include "subsurf/units.h"

namespace {

constexpr std::size_t kValues = 10'000'000;

std::vector<double>& values() {
  static std::vector<double> v = [] {
    std::vector<double> out(kValues);
    std::mt19937_64 rng(42);
    std::uniform_real_distribution<double> depth(0.0, 15000.0);
    for (double& x : out) x = depth(rng);
    for (std::size_t i = 0; i < out.size(); i += 97) out[i] = subsurf::kDoubleNull;
    return out;
  }();
  return v;
}

struct Pair {
  int iser, from, to;
};

Pair unitPair(const char* series, const char* from, const char* to) {
  auto padded = [](std::string s, std::size_t width) { return s.append(width - s.size(), ' '); };
  Pair p{};
  X_GETISER(padded(series, 20).c_str(), &p.iser);
  X_GETIUN(&p.iser, padded(from, 16).c_str(), &p.from);
  X_GETIUN(&p.iser, padded(to, 16).c_str(), &p.to);
  return p;
}

void countValues(benchmark::State& state) {
  const double perIteration = 2.0 * static_cast<double>(kValues);
  state.counters["time/value"] =
      benchmark::Counter(perIteration, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void convertThereAndBack(benchmark::State& state, const Pair& p) {
  std::vector<double>& v = values();
  const int n = static_cast<int>(v.size());
  int err = 0;
  for (auto _ : state) {
    X_SICONVV(v.data(), &n, &p.iser, &p.from, &p.to, &err);
    X_SICONVV(v.data(), &n, &p.iser, &p.to, &p.from, &err);
    benchmark::DoNotOptimize(v.data());
    benchmark::ClobberMemory();
  }
  if (err != 0) state.SkipWithError("conversion failed");
  countValues(state);
}

void BM_FeetToMetres_SICONVV(benchmark::State& state) {
  convertThereAndBack(state, unitPair("depth", "ft", "m"));
}

void BM_FeetToMetres_PlainLoop(benchmark::State& state) {
  std::vector<double>& v = values();
  const double there = 0.3048, back = 1.0 / 0.3048;
  for (auto _ : state) {
    for (double& x : v) x *= there;
    benchmark::ClobberMemory();
    for (double& x : v) x *= back;
    benchmark::DoNotOptimize(v.data());
    benchmark::ClobberMemory();
  }
  countValues(state);
}

void BM_FahrenheitToCelsius_SICONVV(benchmark::State& state) {
  convertThereAndBack(state, unitPair("temperature", "degf", "degc"));
}

void BM_FahrenheitToCelsius_PlainLoop(benchmark::State& state) {
  std::vector<double>& v = values();
  const double a = 5.0 / 9.0, b = -160.0 / 9.0, backA = 1.8, backB = 32.0;
  for (auto _ : state) {
    for (double& x : v) x = a * x + b;
    benchmark::ClobberMemory();
    for (double& x : v) x = backA * x + backB;
    benchmark::DoNotOptimize(v.data());
    benchmark::ClobberMemory();
  }
  countValues(state);
}

// Plain loop and conversion alternate, so that a change in the machine's load
// falls on both alike.
BENCHMARK(BM_FeetToMetres_PlainLoop)->Unit(benchmark::kMillisecond)->MinTime(1.0)->Repetitions(5);
BENCHMARK(BM_FeetToMetres_SICONVV)->Unit(benchmark::kMillisecond)->MinTime(1.0)->Repetitions(5);
BENCHMARK(BM_FahrenheitToCelsius_PlainLoop)->Unit(benchmark::kMillisecond)->MinTime(1.0)->Repetitions(5);
BENCHMARK(BM_FahrenheitToCelsius_SICONVV)->Unit(benchmark::kMillisecond)->MinTime(1.0)->Repetitions(5);

double median(std::vector<double> v) {
  if (v.empty()) return 0.0;
  std::sort(v.begin(), v.end());
  const std::size_t m = v.size() / 2;
  return v.size() % 2 ? v[m] : 0.5 * (v[m - 1] + v[m]);
}

// Keeps each repetition's time per value (wall clock and CPU) so that the
// summary can set the conversions against their plain loops.
class SummaryReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& r : runs) {
      if (r.error_occurred || r.iterations == 0 || r.run_type != Run::RT_Iteration) continue;
      const double values = static_cast<double>(r.iterations) * 2.0 * kValues;
      Times& t = times_[r.run_name.function_name];
      t.real.push_back(r.real_accumulated_time * 1e9 / values);
      t.cpu.push_back(r.cpu_accumulated_time * 1e9 / values);
    }
  }

  void printSummary() const {
    std::printf("\nUnits conversion: %zu doubles there and back, median of the repetitions, ns per value\n",
                kValues);
    std::printf("%-20s %10s %10s %7s   %10s %10s %7s\n", "", "plain wall", "X_SICONVV", "ratio", "plain cpu",
                "X_SICONVV", "ratio");
    for (const char* name : {"FeetToMetres", "FahrenheitToCelsius"}) {
      const Times* plain = find(std::string("BM_") + name + "_PlainLoop");
      const Times* ours = find(std::string("BM_") + name + "_SICONVV");
      if (!plain || !ours) continue;
      const double pw = median(plain->real), ow = median(ours->real);
      const double pc = median(plain->cpu), oc = median(ours->cpu);
      std::printf("%-20s %10.3f %10.3f %7.2f   %10.3f %10.3f %7.2f\n", name, pw, ow, ow / pw, pc, oc, oc / pc);
    }
  }

 private:
  struct Times {
    std::vector<double> real, cpu;
  };
  const Times* find(const std::string& name) const {
    const auto it = times_.find(name);
    return it == times_.end() ? nullptr : &it->second;
  }
  std::map<std::string, Times> times_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  X_INIT();
  values();  // built before any timing
  SummaryReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.printSummary();
  benchmark::Shutdown();
  return 0;
}
