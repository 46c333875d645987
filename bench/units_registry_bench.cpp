// Units registry start-up and lookups.
//
// Load: reading and indexing the shipped data/x_units.def (what X_INIT does),
// against reading the same file's bytes into memory, the least any loader must
// do. The target is under 5 ms a load.
//
// Lookups: every unit name of every series looked up by findUnit (names only,
// ignoring case, as X_GETIUN) and by findTypedUnit (names and other names),
// against a scan of the series' names such as the registry used to do. The hash
// tables keep a lookup's time flat however long a series grows.
#include <benchmark/benchmark.h>

#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/paths.h"
#include "units/units_registry.h"

namespace {

using subsurf::UnitsRegistry;

std::string definitionsFile() { return subsurf::resolvePath(subsurf::kUnitsDefinitionsFile); }

void BM_LoadRegistry(benchmark::State& state) {
  const std::string path = definitionsFile();
  for (auto _ : state) {
    UnitsRegistry reg;
    if (!reg.load(path)) state.SkipWithError("cannot load the definitions file");
    benchmark::DoNotOptimize(reg.lastSeries());
  }
}

void BM_ReadFileBytes(benchmark::State& state) {
  const std::string path = definitionsFile();
  for (auto _ : state) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    std::string text = bytes.str();
    benchmark::DoNotOptimize(text.data());
  }
}

// Every (series, typed name) of the registry, in upper case so that no lookup
// is helped by an exact match.
const UnitsRegistry& registry() {
  static const UnitsRegistry reg = [] {
    UnitsRegistry r;
    r.load(definitionsFile());
    return r;
  }();
  return reg;
}

const std::vector<std::pair<int, std::string>>& names() {
  static const std::vector<std::pair<int, std::string>> all = [] {
    std::vector<std::pair<int, std::string>> out;
    const UnitsRegistry& reg = registry();
    for (int iser = 0; iser <= reg.lastSeries(); ++iser)
      for (int iun = 1; iun <= reg.unitCount(iser); ++iun) {
        std::string n = reg.unitName(iser, iun);
        for (char& c : n) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        out.emplace_back(iser, n);
      }
    return out;
  }();
  return all;
}

void countLookups(benchmark::State& state) {
  state.counters["time/lookup"] = benchmark::Counter(static_cast<double>(names().size()),
                                                     benchmark::Counter::kIsIterationInvariantRate |
                                                         benchmark::Counter::kInvert);
}

void BM_FindUnit(benchmark::State& state) {
  const UnitsRegistry& reg = registry();
  for (auto _ : state)
    for (const auto& [iser, name] : names()) benchmark::DoNotOptimize(reg.findUnit(iser, name));
  countLookups(state);
}

void BM_FindTypedUnit(benchmark::State& state) {
  const UnitsRegistry& reg = registry();
  for (auto _ : state)
    for (const auto& [iser, name] : names()) benchmark::DoNotOptimize(reg.findTypedUnit(iser, name).iun);
  countLookups(state);
}

// The reference: lower the name and compare it with each unit of the series in turn.
void BM_ScanSeriesNames(benchmark::State& state) {
  const UnitsRegistry& reg = registry();
  std::vector<std::vector<std::string>> lowered(static_cast<std::size_t>(reg.lastSeries() + 1));
  for (int iser = 0; iser <= reg.lastSeries(); ++iser)
    for (int iun = 1; iun <= reg.unitCount(iser); ++iun)
      lowered[static_cast<std::size_t>(iser)].push_back(subsurf::lowerCase(reg.unitName(iser, iun)));
  for (auto _ : state) {
    for (const auto& [iser, name] : names()) {
      const std::string key = subsurf::lowerCase(name);
      int found = 0;
      const auto& series = lowered[static_cast<std::size_t>(iser)];
      for (std::size_t k = 0; k < series.size() && found == 0; ++k)
        if (series[k] == key) found = static_cast<int>(k) + 1;
      benchmark::DoNotOptimize(found);
    }
  }
  countLookups(state);
}

BENCHMARK(BM_ReadFileBytes)->Unit(benchmark::kMicrosecond)->Repetitions(5);
BENCHMARK(BM_LoadRegistry)->Unit(benchmark::kMicrosecond)->Repetitions(5);
BENCHMARK(BM_ScanSeriesNames)->Unit(benchmark::kMicrosecond)->Repetitions(5);
BENCHMARK(BM_FindUnit)->Unit(benchmark::kMicrosecond)->Repetitions(5);
BENCHMARK(BM_FindTypedUnit)->Unit(benchmark::kMicrosecond)->Repetitions(5);

}  // namespace

int main(int argc, char** argv) {
  subsurf::host::setQuiet(true);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
