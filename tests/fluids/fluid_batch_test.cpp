// The batch calculation must give every case exactly what calculate-all gives
// it in a table of its own: same bits, same states, for any mix of typed,
// calculated, empty and nonsensical entries, in every unit system.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <random>

#include "fluids/calculate_all.h"
#include "fluids/fluid_batch.h"
#include "fluids/fluid_entries.h"
#include "fluids/z_factor_chart.h"
#include "host/nulls.h"

namespace subsurf::fluids {
namespace {

// Plausible ranges (fixed units) of each entry, for filling cases.
struct Range { float lo, hi; };
Range rangeOf(Entry e) {
  switch (e) {
    case Entry::Dres: return {-1500.0f, 15000.0f};
    case Entry::Tres: case Entry::Tsc: case Entry::Oviscdt: return {30.0f, 300.0f};
    case Entry::Pres: case Entry::Psc: case Entry::Pbubble: return {10.0f, 8000.0f};
    case Entry::Oden: return {10.0f, 60.0f};
    case Entry::Sgden: case Entry::Gden: return {0.55f, 1.3f};
    case Entry::Solgor: return {0.0f, 2500.0f};
    case Entry::N2: case Entry::Co2: case Entry::H2s: return {-0.05f, 0.2f};
    default: return {0.0f, 2.0f};
  }
}

// Fills a case: each entry is left as the prototype has it, typed, given as
// calculated earlier, or emptied; a few values are zero, negative or huge.
// With plainInputs, only those main inputs, as a batch read from a file
// usually has them (everything else as the prototype has it).
void fillCase(std::mt19937& rng, FluidTable& t, bool plainInputs) {
  std::uniform_int_distribution<int> pick(0, 9);
  std::uniform_real_distribution<float> unit(0.0f, 1.0f);
  for (const EntryInfo& info : allEntries()) {
    if (plainInputs) break;
    const Range r = rangeOf(info.entry);
    const int how = pick(rng);
    float v = r.lo + (r.hi - r.lo) * unit(rng);
    if (how == 0) continue;  // as the prototype has it
    if (how == 1) v = 0.0f;
    if (how == 2) v = -v;
    if (how == 3) v = 3.0e20f;
    const int state = how == 4 ? kStateEmpty : (how <= 6 ? kStateTyped : kStateCalculated);
    t.set(info.entry, t.fixedUnit(info.entry), how == 4 ? kRealNull : v, state);
  }
  // Most cases should get far: give the main inputs most of the time.
  if (plainInputs || pick(rng) < 7) {
    t.set(Entry::Dres, t.fixedUnit(Entry::Dres), 2000.0f + 10000.0f * unit(rng), kStateTyped);
    t.set(Entry::Oden, t.fixedUnit(Entry::Oden), 15.0f + 35.0f * unit(rng), kStateTyped);
    t.set(Entry::Sgden, t.fixedUnit(Entry::Sgden), 0.6f + 0.4f * unit(rng), kStateTyped);
    t.set(Entry::Solgor, t.fixedUnit(Entry::Solgor), 100.0f + 1400.0f * unit(rng), kStateTyped);
    t.set(Entry::Gden, t.fixedUnit(Entry::Gden), 0.6f + 0.4f * unit(rng), kStateTyped);
  }
}

void expectBatchMatchesTables(int unitSystem, std::size_t cases, unsigned seed,
                              bool plainInputs = false) {
  FluidTable prototype;
  prototype.create(unitSystem);
  std::mt19937 rng(seed);
  std::vector<FluidTable> tables(cases, prototype);
  FluidBatch batch(prototype, cases);
  for (std::size_t k = 0; k < cases; ++k) {
    fillCase(rng, tables[k], plainInputs);
    for (const EntryInfo& info : allEntries()) {
      batch.values(info.entry)[k] = tables[k].storedValue(info.entry);
      batch.states(info.entry)[k] = tables[k].state(info.entry);
    }
  }
  batch.calculateAll();
  const kernels::ChartBracket afterBatch = zFactorChart().bracket();
  for (FluidTable& t : tables) calculateAll(t);
  const kernels::ChartBracket afterTables = zFactorChart().bracket();

  int mismatches = 0;
  for (std::size_t k = 0; k < cases && mismatches < 10; ++k) {
    for (const EntryInfo& info : allEntries()) {
      const float expected = tables[k].storedValue(info.entry);
      const float actual = batch.values(info.entry)[k];
      if (std::bit_cast<std::uint32_t>(expected) != std::bit_cast<std::uint32_t>(actual) ||
          tables[k].state(info.entry) != batch.states(info.entry)[k]) {
        ADD_FAILURE() << "case " << k << " entry " << info.name << ": table " << expected
                      << " (state " << tables[k].state(info.entry) << "), batch " << actual
                      << " (state " << batch.states(info.entry)[k] << ")";
        ++mismatches;
      }
    }
  }
  // The chart bracket is left as the last case leaves it.
  EXPECT_EQ(afterBatch.row, afterTables.row);
  EXPECT_EQ(afterBatch.column, afterTables.column);
  EXPECT_EQ(afterBatch.ft, afterTables.ft);
  EXPECT_EQ(afterBatch.fp, afterTables.fp);
}

// Every unit system; more cases than one block (1024), and a partial last block.
TEST(FluidBatch, MatchesCaseByCaseInEveryUnitSystem) {
  for (int system : {1, 2, 3}) {
    SCOPED_TRACE(::testing::Message() << "unit system " << system);
    expectBatchMatchesTables(system, system == 1 ? 2500 : 1300, 10 + system);
  }
}

// Only the main inputs given: every case takes its dead-oil viscosity at the
// default temperature (worked out once per block), and oils above and below
// their bubble point alternate.
TEST(FluidBatch, MatchesCaseByCaseWithOnlyTheMainInputs) {
  for (int system : {1, 2}) {
    SCOPED_TRACE(::testing::Message() << "unit system " << system);
    expectBatchMatchesTables(system, 2100, 20 + system, true);
  }
}

TEST(FluidBatch, NewCasesStartAsThePrototype) {
  FluidTable prototype;
  prototype.create(2);
  ASSERT_TRUE(prototype.set("co2", "%", 3.0f, kStateTyped).isOk());
  FluidBatch batch(prototype, 2);
  batch.resize(5);
  EXPECT_EQ(batch.size(), 5u);
  EXPECT_FLOAT_EQ(batch.values(Entry::Co2)[4], 0.03f);  // metric fractions are "fr"
  EXPECT_EQ(batch.states(Entry::Co2)[4], kStateTyped);
  EXPECT_TRUE(isNull(batch.values(Entry::Dres)[4]));
  // Values given in another unit are stored in the prototype's.
  batch.set(3, Entry::Dres, *prototype.unitOf(Entry::Dres, "ft"), 1000.0f, kStateTyped);
  EXPECT_FLOAT_EQ(batch.values(Entry::Dres)[3], 304.8f);
  const FluidTable third = batch.caseTable(3);
  EXPECT_FLOAT_EQ(third.get("dres", "ft").value, 1000.0f);
  EXPECT_EQ(third.state(Entry::Dres), kStateTyped);
}

// States are kept in a byte: larger ones are clamped and keep their meaning.
TEST(FluidBatch, StatesBeyondAByteAreClampedAndKeepTheirMeaning) {
  FluidTable prototype;
  prototype.create(1);
  FluidBatch batch(prototype, 1);
  const EntryUnit ft = prototype.fixedUnit(Entry::Dres);
  batch.set(0, Entry::Dres, ft, 8000.0f, -1000);  // typed, however odd
  batch.set(0, Entry::Tres, prototype.fixedUnit(Entry::Tres), 500.0f, 1000);  // calculated
  EXPECT_EQ(batch.states(Entry::Dres)[0], -128);
  EXPECT_EQ(batch.states(Entry::Tres)[0], 127);
  batch.calculateAll();
  EXPECT_FLOAT_EQ(batch.values(Entry::Dres)[0], 8000.0f);
  // 60 degF + 1.5 degF per 100 ft to 5000 ft, 1.2 below: recalculated.
  EXPECT_FLOAT_EQ(batch.values(Entry::Tres)[0], 60.0f + 75.0f + 36.0f);
  EXPECT_EQ(batch.states(Entry::Tres)[0], kStateCalculated);
}

}  // namespace
}  // namespace subsurf::fluids
