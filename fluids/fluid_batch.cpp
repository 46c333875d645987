// Column-wise calculate-all. The steps, their order and every rule about
// which entries are due mirror calculateAll() in calculate_all.cpp; a change
// to one must be made to the other (the batch tests compare them bit for bit).
//
// Loops here are compiled for speed: vectorised, with floating-point traps
// assumed off (nothing reads the exception flags) so that selections become
// blends, and with no multiply-adds contracted (the math writes its fused
// ones out; contracting others would change results). Jump
// threading and partial-redundancy elimination are off because, on these
// long branch-free bodies, they reintroduce branches or mixed-width values
// that stop GCC 12 from vectorising the loops. Scheduling before register
// allocation interleaves the long dependent chains of the polynomials (about
// 4 per cent faster here); unrolling the loops (the short bookkeeping loops
// up to eight times over, a few correlation loops twice) gives it more to
// interleave and fewer loop overheads (about 2 per cent more).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC optimize("O3", "no-trapping-math", "no-math-errno", "fp-contract=off")
#pragma GCC optimize("no-thread-jumps", "no-tree-pre", "schedule-insns", "sched-pressure")
#pragma GCC optimize("unroll-loops")
#endif

#include "fluids/fluid_batch.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <array>
#include <cstdint>
#include <memory>
#include <utility>

#include "fluids/calculate_all.h"
#include "fluids/case_packing.h"
#include "fluids/correlation_kernels.h"
#include "fluids/gas_correlations.h"
#include "fluids/z_factor_chart.h"
#include "host/nulls.h"
#include "units/units_registry.h"

// The correlation loops are compiled for AVX-512, for AVX2 with FMA (the
// x86-64-v3 level) and for the baseline. The level must be named as such:
// "arch=haswell" would be chosen only on Haswell processors themselves, and
// every other AVX2 machine would run the baseline, which calls the C library
// for each fma (ten times slower). Code compiled for a named level only takes
// in functions forced inline, which everything the kernels call is. The
// block's bookkeeping calls ordinary functions, so its versions name
// instruction sets only.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__)
#define SUBSURF_SIMD_CLONES [[gnu::target_clones("avx512f", "arch=x86-64-v3", "default")]]
#define SUBSURF_BLOCK_CLONES [[gnu::target_clones("avx512f", "avx2", "default")]]
#else
#define SUBSURF_SIMD_CLONES
#define SUBSURF_BLOCK_CLONES
#endif
// The block's helpers are folded into each instruction-set version of it.
#if defined(__GNUC__)
#define SUBSURF_INLINE __attribute__((always_inline))
#else
#define SUBSURF_INLINE
#endif

namespace subsurf::fluids {

// Correlation loops, each over one block of cases. Compiled once per
// instruction set and chosen at run time.
namespace batch_loops {

// Block columns never overlap.
using In = const float* __restrict;
using Out = float* __restrict;
using OutFlags = int* __restrict;

SUBSURF_SIMD_CLONES
void geothermal(In depth, Out out, int n) {
  for (int i = 0; i < n; ++i) out[i] = kernels::geothermalTemperatureF(depth[i]);
}

SUBSURF_SIMD_CLONES
void vasquezBeggsTerm(In api, In tR, Out out, int n) {
  for (int i = 0; i < n; ++i) out[i] = kernels::vasquezBeggsTerm(api[i], tR[i]);
}

SUBSURF_SIMD_CLONES
void bubblePoint(In gor, In gg, In api, In tR, In term, Out out, int n) {
  for (int i = 0; i < n; ++i) out[i] = kernels::bubblePoint(gor[i], gg[i], api[i], tR[i], term[i]);
}

SUBSURF_SIMD_CLONES
void volumeFactor(In gor, In gg, In api, In tR, In p, In pb, Out out, int n) {
  for (int i = 0; i < n; ++i) {
    out[i] = kernels::formationVolumeFactor(gor[i], gg[i], api[i], tR[i], p[i], pb[i]);
  }
}

SUBSURF_SIMD_CLONES
void deadViscosityTerm(In tF, Out out, int n) {
  for (int i = 0; i < n; ++i) out[i] = kernels::deadViscosityTerm(tF[i]);
}

SUBSURF_SIMD_CLONES
void deadViscosity(In api, In tF, In term, Out out, int n) {
  for (int i = 0; i < n; ++i) out[i] = kernels::deadViscosity(api[i], tF[i], term[i]);
}

SUBSURF_SIMD_CLONES
void liveViscosity(In dead, In tF, In refF, In gor, Out out, int n) {
  for (int i = 0; i < n; ++i) {
    const float atReservoir = kernels::deadViscosityAt(dead[i], tF[i], refF[i]);
    out[i] = kernels::liveViscosity(atReservoir, gor[i]);
  }
}

SUBSURF_SIMD_CLONES
void undersaturatedCompressibility(In gor, In gg, In api, In tR, In p, In pb, Out out, int n) {
  for (int i = 0; i < n; ++i) {
    out[i] = kernels::undersaturatedFormCompressibility(gor[i], gg[i], api[i], tR[i], p[i], pb[i]);
  }
}

// Over the saturated cases only, packed together (see calculateRange).
SUBSURF_SIMD_CLONES
void saturatedCompressibility(In gg, In api, In tR, In p, In pb, In term, Out out, int n) {
  for (int i = 0; i < n; ++i) {
    out[i] = kernels::saturatedFormCompressibility(gg[i], api[i], tR[i], p[i], pb[i], term[i]);
  }
}

SUBSURF_SIMD_CLONES
void pseudoReduced(In g, In n2, In co2, In h2s, In p, In tR, Out tpr, Out ppr, int n) {
  for (int i = 0; i < n; ++i) {
    const float a = kernels::clampFraction(n2[i]);
    const float b = kernels::clampFraction(co2[i]);
    const float c = kernels::clampFraction(h2s[i]);
    tpr[i] = tR[i] / kernels::pseudoCriticalTemperature(g[i], a, b, c);
    ppr[i] = p[i] / kernels::pseudoCriticalPressure(g[i], a, b, c);
  }
}

SUBSURF_SIMD_CLONES
void chartZ(In tpr, In ppr, Out z, OutFlags status, int n) {
  for (int i = 0; i < n; ++i) {
    kernels::ChartBracket bracket;
    int st;
    z[i] = kernels::chartZ(tpr[i], ppr[i], st, bracket);
    status[i] = st;
  }
}

SUBSURF_SIMD_CLONES
void gasProperties(In g, In z, In tR, In p, In tsc, In psc, Out bg, Out visc, Out dens, int n) {
  for (int i = 0; i < n; ++i) {
    bg[i] = kernels::expansionFactor(z[i], tR[i], p[i], tsc[i], psc[i]);
    visc[i] = kernels::viscosity(g[i], z[i], tR[i], p[i]);
    dens[i] = kernels::density(g[i], z[i], tR[i], p[i]);
  }
}

}  // namespace batch_loops

namespace {

// Cases per block: small enough for every column of a block (and the
// block's working columns, about 150 KB) to stay in the second-level cache,
// large enough to spread each block's fixed costs (the registry's unit
// conversions, the set-up of some sixty short loops). 512 was 6 per cent
// slower over a million cases here, 2048 no faster.
constexpr int kBlock = 1024;

// Flags are ints rather than bools so that every array in a loop has
// four-byte elements, which keeps the loops vectorisable on every
// instruction set.
using Flag = std::int32_t;

// Converts a block into `to` through the registry's vector conversion; should
// any value fail, the block is redone value by value from `from` so that
// failures become nulls just as in a single table.
void convertBlock(const float* from, float* to, int n, int iser, int fromUnit, int toUnit) {
  int err = 0;
  unitsRegistry().convert(from, to, static_cast<std::size_t>(n), iser, fromUnit, toUnit, err);
  if (err == 0) return;
  for (int i = 0; i < n; ++i) to[i] = FluidTable::convert(from[i], iser, fromUnit, toUnit);
}

// Whether values stored in one unit are read or written in another as they
// are, as FluidTable::get and set decide it.
bool asStored(EntryUnit stored, EntryUnit unit) {
  return unit.iun < 1 || unit.iun == stored.iun || stored.iun < 1;
}

}  // namespace

FluidBatch::FluidBatch(const FluidTable& prototype, std::size_t cases) : prototype_(prototype) {
  resize(cases);
}

void FluidBatch::resize(std::size_t cases) {
  for (const EntryInfo& info : allEntries()) {
    values_[index(info.entry)].resize(cases, prototype_.storedValue(info.entry));
    states_[index(info.entry)].resize(cases, batchState(prototype_.state(info.entry)));
  }
  size_ = cases;
}

void FluidBatch::set(std::size_t row, Entry e, EntryUnit unit, float value, int state) {
  if (!prototype_.exists() || unit.iun < 0) return;
  const EntryUnit stored = prototype_.storedUnit(e);
  states_[index(e)][row] = batchState(state);
  const bool asGiven = isNull(value) || unit.iun < 1 || unit.iun == stored.iun || stored.iun < 1;
  values_[index(e)][row] =
      asGiven ? value : FluidTable::convert(value, stored.iser, unit.iun, stored.iun);
}

FluidTable FluidBatch::caseTable(std::size_t row) const {
  FluidTable one = prototype_;
  for (const EntryInfo& info : allEntries()) {
    one.setStored(info.entry, values_[index(info.entry)][row], states_[index(info.entry)][row]);
  }
  return one;
}

// A block's working columns: some 150 KB, too much for the stack of a
// thread an embedding application may call from, so they live on the heap,
// allocated once per calculation and used by every block in turn.
struct alignas(64) BlockWork {
  float converted[kBlock];
  Flag mask[kBlock];
  float result[kBlock];
  float scratch[kBlock];
  float depthCopy[kBlock];
  float pres[kBlock];
  float tscCopy[kBlock];
  float pscCopy[kBlock];
  float odenCopy[kBlock];
  float sgdenCopy[kBlock];
  float solgorCopy[kBlock];
  float tR[kBlock];
  float tFCopy[kBlock];
  float term[kBlock];
  float pbCopy[kBlock];
  float oviscdt[kBlock];
  float oviscd[kBlock];
  float viscosityTerm[kBlock];
  Flag saturated[kBlock];
  float in[6][kBlock + kPackSlack];
  float out[kBlock + kPackSlack];
  float gdenCopy[kBlock];
  float n2Copy[kBlock];
  float co2Copy[kBlock];
  float h2sCopy[kBlock];
  float gp[kBlock];
  float tpr[kBlock];
  float ppr[kBlock];
  float z[kBlock];
  Flag reduced[kBlock];
  int chartStatus[kBlock];
  float bg[kBlock];
  float gvisc[kBlock];
  float gdenres[kBlock];
  float nullColumn[kBlock];
  Flag dueNow[kBlock];
};

void FluidBatch::calculateAll() {
  if (!prototype_.exists()) return;
  chartRead_ = false;
  // Left uninitialised: each block writes what it reads.
  const std::unique_ptr<BlockWork> work(new BlockWork);
  for (std::size_t first = 0; first < size_; first += kBlock) {
    calculateRange(first, std::min<std::size_t>(kBlock, size_ - first), *work);
  }
  if (chartRead_) {
    int st;
    zFactorChart().evaluate(lastTpr_, lastPpr_, st);
  }
}

SUBSURF_BLOCK_CLONES
void FluidBatch::calculateRange(std::size_t first, std::size_t count, BlockWork& work) {
  const int n = static_cast<int>(count);
  const EntryUnit degR = prototype_.rankine();
  auto column = [&](Entry e) SUBSURF_INLINE { return values_[index(e)].data() + first; };
  auto states = [&](Entry e) SUBSURF_INLINE { return states_[index(e)].data() + first; };

  // An entry's values in a unit, as FluidTable::get reads them (null where
  // missing): the column itself when the unit is the stored one, else a
  // converted copy in `scratch`. A column read this way shows later stores to
  // the entry; readCopy() takes a copy that does not.
  auto read = [&](Entry e, EntryUnit unit, float* scratch) SUBSURF_INLINE -> const float* {
    const EntryUnit stored = prototype_.storedUnit(e);
    if (unit.iun < 0) {
      std::fill_n(scratch, n, kRealNull);
      return scratch;
    }
    if (asStored(stored, unit)) return column(e);
    convertBlock(column(e), scratch, n, stored.iser, stored.iun, unit.iun);
    return scratch;
  };
  auto readCopy = [&](Entry e, EntryUnit unit, float* copy) SUBSURF_INLINE {
    const float* v = read(e, unit, copy);
    if (v != copy) std::copy_n(v, n, copy);
  };
  auto fixedUnit = [&](Entry e) SUBSURF_INLINE { return prototype_.fixedUnit(e); };
  // Due for calculation: missing, or calculated before.
  auto due = [&](const float* v, const BatchState* s, Flag* out) SUBSURF_INLINE {
    for (int i = 0; i < n; ++i) out[i] = isNull(v[i]) | (s[i] > kStateTyped);
  };

  // Whether a mask selects no case at all. Most blocks store nothing to some
  // entries (the clamped contents, the gas entries cleared without reduced
  // values), and a look at the mask costs less than a pass over the columns.
  auto none = [&](const Flag* mask) SUBSURF_INLINE {
    Flag any = 0;
    for (int i = 0; i < n; ++i) any |= mask[i];
    return any == 0;
  };

  // Stores values given in the entry's fixed unit where mask is set, as
  // FluidTable::set does; store() also marks them calculated, storeValues()
  // leaves each case's state as it is.
  float (&converted)[kBlock] = work.converted;
  auto writeValues = [&](Entry e, const float* in, const Flag* mask) SUBSURF_INLINE {
    const EntryUnit unit = fixedUnit(e);
    const EntryUnit stored = prototype_.storedUnit(e);
    float* v = column(e);
    // A result past the range of a float is stored as null, as store() in
    // calculate_all.cpp does.
    auto finiteOrNull = [](float x) SUBSURF_INLINE { return std::isfinite(x) ? x : kRealNull; };
    if (asStored(stored, unit)) {
      for (int i = 0; i < n; ++i) v[i] = mask[i] ? finiteOrNull(in[i]) : v[i];
      return;
    }
    convertBlock(in, converted, n, stored.iser, unit.iun, stored.iun);
    for (int i = 0; i < n; ++i) v[i] = mask[i] ? (isNull(in[i]) ? in[i] : finiteOrNull(converted[i])) : v[i];
  };
  auto storeValues = [&](Entry e, const float* in, const Flag* mask) SUBSURF_INLINE {
    if (fixedUnit(e).iun < 0 || none(mask)) return;
    writeValues(e, in, mask);
  };
  auto store = [&](Entry e, const float* in, const Flag* mask) SUBSURF_INLINE {
    if (fixedUnit(e).iun < 0 || none(mask)) return;
    BatchState* s = states(e);
    for (int i = 0; i < n; ++i) s[i] = mask[i] ? BatchState{kStateCalculated} : s[i];
    writeValues(e, in, mask);
  };

  Flag (&mask)[kBlock] = work.mask;
  float (&result)[kBlock] = work.result;
  float (&scratch)[kBlock] = work.scratch;

  // Reservoir temperature and pressure from the depth.
  const float* depth = read(Entry::Dres, fixedUnit(Entry::Dres), work.depthCopy);
  {
    const float* tres = read(Entry::Tres, degR, scratch);
    const BatchState* s = states(Entry::Tres);
    for (int i = 0; i < n; ++i) {
      mask[i] = (isNull(tres[i]) | (s[i] > kStateTyped)) & (depth[i] >= -1000.0f);
    }
  }
  batch_loops::geothermal(depth, result, n);
  store(Entry::Tres, result, mask);
  float (&pres)[kBlock] = work.pres;
  {
    const float* given = read(Entry::Pres, fixedUnit(Entry::Pres), scratch);
    const BatchState* s = states(Entry::Pres);
    for (int i = 0; i < n; ++i) {
      mask[i] = (isNull(given[i]) | (s[i] > kStateTyped)) & (depth[i] >= -1000.0f);
      pres[i] = mask[i] ? kernels::hydrostaticPressure(depth[i]) : given[i];
    }
  }
  store(Entry::Pres, pres, mask);

  // Standard conditions: reset when calculated, but used as they were. (They
  // are read here and reset once the gas properties have used them.)
  const float* tsc = read(Entry::Tsc, degR, work.tscCopy);
  const float* psc = read(Entry::Psc, fixedUnit(Entry::Psc), work.pscCopy);

  // Oil. (Inputs never stored to can be read in place.)
  float (&tR)[kBlock] = work.tR;
  const float* oden = read(Entry::Oden, fixedUnit(Entry::Oden), work.odenCopy);
  const float* sgden = read(Entry::Sgden, fixedUnit(Entry::Sgden), work.sgdenCopy);
  const float* solgor = read(Entry::Solgor, fixedUnit(Entry::Solgor), work.solgorCopy);
  readCopy(Entry::Tres, degR, tR);
  const float* tF = read(Entry::Tres, fixedUnit(Entry::Tres), work.tFCopy);
  float (&term)[kBlock] = work.term;
  batch_loops::vasquezBeggsTerm(oden, tR, term, n);
  due(read(Entry::Pbubble, fixedUnit(Entry::Pbubble), scratch), states(Entry::Pbubble), mask);
  batch_loops::bubblePoint(solgor, sgden, oden, tR, term, result, n);
  store(Entry::Pbubble, result, mask);
  const float* pb = read(Entry::Pbubble, fixedUnit(Entry::Pbubble), work.pbCopy);
  // The volume factor follows a calculated bubble point, whatever its own state.
  due(pb, states(Entry::Pbubble), mask);
  batch_loops::volumeFactor(solgor, sgden, oden, tR, pres, pb, result, n);
  store(Entry::Bo, result, mask);

  float (&oviscdt)[kBlock] = work.oviscdt;
  float (&oviscd)[kBlock] = work.oviscd;
  {
    const float* given = read(Entry::Oviscdt, fixedUnit(Entry::Oviscdt), scratch);
    due(given, states(Entry::Oviscdt), mask);
    for (int i = 0; i < n; ++i) oviscdt[i] = mask[i] ? 60.0f : given[i];
  }
  store(Entry::Oviscdt, oviscdt, mask);
  {
    // Mostly the default temperature for every case: then one term serves all.
    float (&viscosityTerm)[kBlock] = work.viscosityTerm;
    Flag differs = 0;
    const std::uint32_t firstBits = n > 0 ? std::bit_cast<std::uint32_t>(oviscdt[0]) : 0;
    for (int i = 0; i < n; ++i) differs |= std::bit_cast<std::uint32_t>(oviscdt[i]) != firstBits;
    if (differs) {
      batch_loops::deadViscosityTerm(oviscdt, viscosityTerm, n);
    } else if (n > 0) {
      std::fill_n(viscosityTerm, n, kernels::deadViscosityTerm(oviscdt[0]));
    }
    batch_loops::deadViscosity(oden, oviscdt, viscosityTerm, result, n);
  }
  {
    const float* given = read(Entry::Oviscd, fixedUnit(Entry::Oviscd), scratch);
    due(given, states(Entry::Oviscd), mask);
    for (int i = 0; i < n; ++i) oviscd[i] = mask[i] ? result[i] : given[i];
  }
  store(Entry::Oviscd, oviscd, mask);
  due(read(Entry::Ovisc, fixedUnit(Entry::Ovisc), scratch), states(Entry::Ovisc), mask);
  batch_loops::liveViscosity(oviscd, tF, oviscdt, solgor, result, n);
  store(Entry::Ovisc, result, mask);

  // Compressibility: McCain's saturated form costs a dozen logarithms and
  // powers, so it is worked out only for the due cases at or below their
  // bubble point, packed together, and Vasquez-Beggs for the rest.
  due(read(Entry::Ocomp, fixedUnit(Entry::Ocomp), scratch), states(Entry::Ocomp), mask);
  batch_loops::undersaturatedCompressibility(solgor, sgden, oden, tR, pres, pb, result, n);
  {
    Flag (&saturated)[kBlock] = work.saturated;
    for (int i = 0; i < n; ++i) {
      saturated[i] = mask[i] & kernels::formCompressibilityIsSaturated(pres[i], pb[i]);
    }
    float (&in)[6][kBlock + kPackSlack] = work.in;
    float (&out)[kBlock + kPackSlack] = work.out;
    const float* from[6] = {sgden, oden, tR, pres, pb, term};
    float* to[6] = {in[0], in[1], in[2], in[3], in[4], in[5]};
    const int m = packCases(saturated, n, from, to, 6);
    batch_loops::saturatedCompressibility(in[0], in[1], in[2], in[3], in[4], in[5], out, m);
    unpackCases(saturated, n, out, result);
  }
  store(Entry::Ocomp, result, mask);

  // Gas: pseudo-reduced values as tablePseudoReduced() forms them.
  // (The contents are stored to only after their last reading below.)
  const float* gden = read(Entry::Gden, fixedUnit(Entry::Gden), work.gdenCopy);
  const float* n2 = read(Entry::N2, fixedUnit(Entry::N2), work.n2Copy);
  const float* co2 = read(Entry::Co2, fixedUnit(Entry::Co2), work.co2Copy);
  const float* h2s = read(Entry::H2s, fixedUnit(Entry::H2s), work.h2sCopy);
  const float* gpRead = read(Entry::Pres, fixedUnit(Entry::Pres), work.gp);
  const float* gtRead = tR;  // the temperature has not changed since
  float (&tpr)[kBlock] = work.tpr;
  float (&ppr)[kBlock] = work.ppr;
  float (&z)[kBlock] = work.z;
  Flag (&reduced)[kBlock] = work.reduced;
  int (&chartStatus)[kBlock] = work.chartStatus;
  batch_loops::pseudoReduced(gden, n2, co2, h2s, gpRead, gtRead, tpr, ppr, n);
  for (int i = 0; i < n; ++i) {
    const Flag absent = isNull(gden[i]) | isNull(n2[i]) | isNull(co2[i]) | isNull(h2s[i]) |
                        isNull(gpRead[i]) | isNull(gtRead[i]);
    reduced[i] = (absent == 0) & (gden[i] > 0.0f);
  }
  // Negative contents were read as zero; the form shows the zero.
  for (auto [e, fraction] : {std::pair{Entry::N2, n2}, std::pair{Entry::Co2, co2},
                             std::pair{Entry::H2s, h2s}}) {
    for (int i = 0; i < n; ++i) {
      result[i] = kernels::clampFraction(fraction[i]);
      mask[i] = reduced[i] & (result[i] != fraction[i]);
    }
    storeValues(e, result, mask);  // each case keeps its state
  }

  batch_loops::chartZ(tpr, ppr, z, chartStatus, n);
  for (int i = 0; i < n; ++i) {
    z[i] = reduced[i] ? z[i] : kRealNull;
    mask[i] = true;
  }
  for (int i = n - 1; i >= 0; --i) {
    if (reduced[i] && chartStatus[i] != kFluidNoInput) {
      chartRead_ = true;
      lastTpr_ = tpr[i];
      lastPpr_ = ppr[i];
      break;
    }
  }
  // Without reduced values "zfact" is stored null as well.
  store(Entry::Zfact, z, mask);

  float (&bg)[kBlock] = work.bg;
  float (&gvisc)[kBlock] = work.gvisc;
  float (&gdenres)[kBlock] = work.gdenres;
  batch_loops::gasProperties(gden, z, tR, pres, tsc, psc, bg, gvisc, gdenres, n);
  for (auto [e, standard] : {std::pair{Entry::Tsc, 60.0f}, std::pair{Entry::Psc, 14.7f}}) {
    const BatchState* s = states(e);
    for (int i = 0; i < n; ++i) {
      mask[i] = s[i] > kStateTyped;
      result[i] = standard;
    }
    store(e, result, mask);
  }
  float (&nullColumn)[kBlock] = work.nullColumn;
  std::fill_n(nullColumn, n, kRealNull);
  // Calculated where due with reduced values; cleared where calculated
  // earlier without them.
  Flag (&dueNow)[kBlock] = work.dueNow;
  auto gasEntry = [&](Entry e, const float* computed) SUBSURF_INLINE {
    for (int i = 0; i < n; ++i) mask[i] = reduced[i] & dueNow[i];
    store(e, computed, mask);
    const BatchState* s = states(e);
    for (int i = 0; i < n; ++i) mask[i] = (reduced[i] == 0) & (s[i] > kStateTyped);
    store(e, nullColumn, mask);
  };
  due(read(Entry::Bg, fixedUnit(Entry::Bg), scratch), states(Entry::Bg), dueNow);
  gasEntry(Entry::Bg, bg);
  due(read(Entry::Gvisc, fixedUnit(Entry::Gvisc), scratch), states(Entry::Gvisc), dueNow);
  gasEntry(Entry::Gvisc, gvisc);
  {
    const float* given = read(Entry::Gdenres, fixedUnit(Entry::Gdenres), scratch);
    due(given, states(Entry::Gdenres), dueNow);
    for (int i = 0; i < n; ++i) gdenres[i] = (reduced[i] & dueNow[i]) ? gdenres[i] : given[i];
  }
  gasEntry(Entry::Gdenres, gdenres);
  for (int i = 0; i < n; ++i) result[i] = kernels::gasHydrogenIndex(gdenres[i]);
  due(read(Entry::Ghi, fixedUnit(Entry::Ghi), scratch), states(Entry::Ghi), dueNow);
  gasEntry(Entry::Ghi, result);
}

}  // namespace subsurf::fluids
