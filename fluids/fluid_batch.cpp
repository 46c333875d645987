// Column-wise calculate-all. The steps, their order and every rule about
// which entries are due mirror calculateAll() in calculate_all.cpp; a change
// to one must be made to the other (the batch tests compare them bit for bit).
//
// Loops here are compiled for speed: vectorised, with floating-point traps
// assumed off (nothing reads the exception flags) so that selections become
// blends, and without fused multiply-adds, which would change results. Jump
// threading and partial-redundancy elimination are off because, on these
// long branch-free bodies, they reintroduce branches or mixed-width values
// that stop GCC 12 from vectorising the loops.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC optimize("O3", "no-trapping-math", "no-math-errno", "fp-contract=off")
#pragma GCC optimize("no-thread-jumps", "no-tree-pre")
#endif

#include "fluids/fluid_batch.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include "fluids/calculate_all.h"
#include "fluids/correlation_kernels.h"
#include "fluids/gas_correlations.h"
#include "fluids/z_factor_chart.h"
#include "host/nulls.h"
#include "units/units_registry.h"

// The correlation loops are compiled for AVX-512, for AVX2 with FMA (the
// Haswell set) and for the baseline. Code compiled for a named processor
// only takes in functions forced inline, which everything the kernels call
// is. The block's bookkeeping calls ordinary functions, so its versions name
// instruction sets only.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__)
#define SUBSURF_SIMD_CLONES [[gnu::target_clones("avx512f", "arch=haswell", "default")]]
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
void bubblePoint(In gor, In gg, In api, In tR, Out out, int n) {
  for (int i = 0; i < n; ++i) out[i] = kernels::bubblePoint(gor[i], gg[i], api[i], tR[i]);
}

SUBSURF_SIMD_CLONES
void volumeFactor(In gor, In gg, In api, In tR, In p, In pb, Out out, int n) {
  for (int i = 0; i < n; ++i) {
    out[i] = kernels::formationVolumeFactor(gor[i], gg[i], api[i], tR[i], p[i], pb[i]);
  }
}

SUBSURF_SIMD_CLONES
void deadViscosity(In api, In tF, Out out, int n) {
  for (int i = 0; i < n; ++i) out[i] = kernels::deadViscosity(api[i], tF[i]);
}

SUBSURF_SIMD_CLONES
void liveViscosity(In dead, In tF, In refF, In gor, Out out, int n) {
  for (int i = 0; i < n; ++i) {
    const float atReservoir = kernels::deadViscosityAt(dead[i], tF[i], refF[i]);
    out[i] = kernels::liveViscosity(atReservoir, gor[i]);
  }
}

SUBSURF_SIMD_CLONES
void compressibility(In gor, In gg, In api, In tR, In p, In pb, Out out, int n) {
  for (int i = 0; i < n; ++i) {
    out[i] = kernels::formCompressibility(gor[i], gg[i], api[i], tR[i], p[i], pb[i]);
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

// Cases per block: small enough for every column of a block to stay in cache.
constexpr int kBlock = 512;

// One entry of a block as read in a unit. Flags are ints rather than bools so
// that every array in a loop has four-byte elements, which keeps the loops
// vectorisable on every instruction set.
using Flag = std::int32_t;
struct Column {
  float value[kBlock];
  int state[kBlock];
  Flag missing[kBlock];
  Flag due(int i) const { return missing[i] | (state[i] > kStateTyped); }
};

// Converts a block through the registry's vector conversion; should any value
// fail, the block is redone value by value so that failures become nulls just
// as in a single table.
void convertBlock(float* v, int n, int iser, int from, int to) {
  float original[kBlock];
  std::memcpy(original, v, sizeof(float) * static_cast<std::size_t>(n));
  int err = 0;
  unitsRegistry().convert(v, static_cast<std::size_t>(n), iser, from, to, err);
  if (err == 0) return;
  for (int i = 0; i < n; ++i) v[i] = FluidTable::convert(original[i], iser, from, to);
}

}  // namespace

FluidBatch::FluidBatch(const FluidTable& prototype, std::size_t cases) : prototype_(prototype) {
  resize(cases);
}

void FluidBatch::resize(std::size_t cases) {
  for (const EntryInfo& info : allEntries()) {
    values_[index(info.entry)].resize(cases, prototype_.storedValue(info.entry));
    states_[index(info.entry)].resize(cases, prototype_.state(info.entry));
  }
  size_ = cases;
}

void FluidBatch::set(std::size_t row, Entry e, EntryUnit unit, float value, int state) {
  if (!prototype_.exists() || unit.iun < 0) return;
  const EntryUnit stored = prototype_.storedUnit(e);
  states_[index(e)][row] = state;
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

void FluidBatch::calculateAll() {
  if (!prototype_.exists()) return;
  chartRead_ = false;
  for (std::size_t first = 0; first < size_; first += kBlock) {
    calculateRange(first, std::min<std::size_t>(kBlock, size_ - first));
  }
  if (chartRead_) {
    int st;
    zFactorChart().evaluate(lastTpr_, lastPpr_, st);
  }
}

SUBSURF_BLOCK_CLONES
void FluidBatch::calculateRange(std::size_t first, std::size_t count) {
  const int n = static_cast<int>(count);
  const EntryUnit degR = prototype_.rankine();

  // Reads an entry of the block in a unit, as FluidTable::get does.
  auto read = [&](Entry e, EntryUnit unit, Column& c) SUBSURF_INLINE {
    const float* v = values_[index(e)].data() + first;
    const int* s = states_[index(e)].data() + first;
    const EntryUnit stored = prototype_.storedUnit(e);
    const Flag unavailable = unit.iun < 0;
    for (int i = 0; i < n; ++i) {
      c.state[i] = s[i];
      c.missing[i] = isNull(v[i]) | unavailable;
      c.value[i] = c.missing[i] ? kRealNull : v[i];
    }
    if (unit.iun < 1 || unit.iun == stored.iun || stored.iun < 1) return;
    convertBlock(c.value, n, stored.iser, stored.iun, unit.iun);
    for (int i = 0; i < n; ++i) c.missing[i] = c.missing[i] | isNull(c.value[i]);
  };
  auto fixedRead = [&](Entry e, Column& c) SUBSURF_INLINE {
    read(e, prototype_.fixedUnit(e), c);
  };

  // Stores the values where mask is set, as FluidTable::set does, with the
  // given state (or each case's own when states is given).
  auto storeWith = [&](Entry e, const float* in, const Flag* mask, int state,
                       const int* states) SUBSURF_INLINE {
    const EntryUnit unit = prototype_.fixedUnit(e);
    if (unit.iun < 0) return;
    const EntryUnit stored = prototype_.storedUnit(e);
    float converted[kBlock];
    std::memcpy(converted, in, sizeof(float) * count);
    if (!(unit.iun < 1 || unit.iun == stored.iun || stored.iun < 1)) {
      convertBlock(converted, n, stored.iser, unit.iun, stored.iun);
    }
    float* v = values_[index(e)].data() + first;
    int* s = states_[index(e)].data() + first;
    if (states) {
      for (int i = 0; i < n; ++i) s[i] = mask[i] ? states[i] : s[i];
    } else {
      for (int i = 0; i < n; ++i) s[i] = mask[i] ? state : s[i];
    }
    for (int i = 0; i < n; ++i) v[i] = mask[i] ? (isNull(in[i]) ? in[i] : converted[i]) : v[i];
  };
  auto store = [&](Entry e, const float* in, const Flag* mask) SUBSURF_INLINE {
    storeWith(e, in, mask, kStateCalculated, nullptr);
  };

  Column c, tsc, psc;
  Flag mask[kBlock];
  float depth[kBlock], pres[kBlock], result[kBlock];
  float oden[kBlock], sgden[kBlock], solgor[kBlock], tR[kBlock], tF[kBlock], pb[kBlock];

  // Reservoir temperature and pressure from the depth.
  fixedRead(Entry::Dres, c);
  std::copy_n(c.value, n, depth);
  read(Entry::Tres, degR, c);
  for (int i = 0; i < n; ++i) mask[i] = c.due(i) & (depth[i] >= -1000.0f);
  batch_loops::geothermal(depth, result, n);
  store(Entry::Tres, result, mask);
  fixedRead(Entry::Pres, c);
  for (int i = 0; i < n; ++i) {
    mask[i] = c.due(i) & (depth[i] >= -1000.0f);
    pres[i] = mask[i] ? kernels::hydrostaticPressure(depth[i]) : c.value[i];
  }
  store(Entry::Pres, pres, mask);

  // Standard conditions: reset when calculated, but used as they were.
  read(Entry::Tsc, degR, tsc);
  for (int i = 0; i < n; ++i) {
    mask[i] = tsc.state[i] > kStateTyped;
    result[i] = 60.0f;
  }
  store(Entry::Tsc, result, mask);
  fixedRead(Entry::Psc, psc);
  for (int i = 0; i < n; ++i) {
    mask[i] = psc.state[i] > kStateTyped;
    result[i] = 14.7f;
  }
  store(Entry::Psc, result, mask);

  // Oil.
  fixedRead(Entry::Oden, c);
  std::copy_n(c.value, n, oden);
  fixedRead(Entry::Sgden, c);
  std::copy_n(c.value, n, sgden);
  fixedRead(Entry::Solgor, c);
  std::copy_n(c.value, n, solgor);
  read(Entry::Tres, degR, c);
  std::copy_n(c.value, n, tR);
  fixedRead(Entry::Tres, c);
  std::copy_n(c.value, n, tF);
  fixedRead(Entry::Pbubble, c);
  for (int i = 0; i < n; ++i) mask[i] = c.due(i);
  batch_loops::bubblePoint(solgor, sgden, oden, tR, result, n);
  store(Entry::Pbubble, result, mask);
  fixedRead(Entry::Pbubble, c);
  std::copy_n(c.value, n, pb);
  // The volume factor follows a calculated bubble point, whatever its own state.
  for (int i = 0; i < n; ++i) mask[i] = c.due(i);
  batch_loops::volumeFactor(solgor, sgden, oden, tR, pres, pb, result, n);
  store(Entry::Bo, result, mask);

  float oviscdt[kBlock], oviscd[kBlock];
  fixedRead(Entry::Oviscdt, c);
  for (int i = 0; i < n; ++i) {
    mask[i] = c.due(i);
    oviscdt[i] = mask[i] ? 60.0f : c.value[i];
  }
  store(Entry::Oviscdt, oviscdt, mask);
  fixedRead(Entry::Oviscd, c);
  batch_loops::deadViscosity(oden, oviscdt, result, n);
  for (int i = 0; i < n; ++i) {
    mask[i] = c.due(i);
    oviscd[i] = mask[i] ? result[i] : c.value[i];
  }
  store(Entry::Oviscd, oviscd, mask);
  fixedRead(Entry::Ovisc, c);
  for (int i = 0; i < n; ++i) mask[i] = c.due(i);
  batch_loops::liveViscosity(oviscd, tF, oviscdt, solgor, result, n);
  store(Entry::Ovisc, result, mask);
  fixedRead(Entry::Ocomp, c);
  for (int i = 0; i < n; ++i) mask[i] = c.due(i);
  batch_loops::compressibility(solgor, sgden, oden, tR, pres, pb, result, n);
  store(Entry::Ocomp, result, mask);

  // Gas: pseudo-reduced values as tablePseudoReduced() forms them.
  Column gden, n2, co2, h2s, gp, gt;
  fixedRead(Entry::Gden, gden);
  fixedRead(Entry::N2, n2);
  fixedRead(Entry::Co2, co2);
  fixedRead(Entry::H2s, h2s);
  fixedRead(Entry::Pres, gp);
  read(Entry::Tres, degR, gt);
  float tpr[kBlock], ppr[kBlock], z[kBlock];
  Flag reduced[kBlock];
  int chartStatus[kBlock];
  batch_loops::pseudoReduced(gden.value, n2.value, co2.value, h2s.value, gp.value, gt.value, tpr,
                             ppr, n);
  for (int i = 0; i < n; ++i) {
    const Flag absent = gden.missing[i] | n2.missing[i] | co2.missing[i] | h2s.missing[i] |
                        gp.missing[i] | gt.missing[i];
    reduced[i] = (absent == 0) & (gden.value[i] > 0.0f);
  }
  // Negative contents were read as zero; the form shows the zero.
  const std::array<std::pair<Entry, Column*>, 3> fractions{
      {{Entry::N2, &n2}, {Entry::Co2, &co2}, {Entry::H2s, &h2s}}};
  for (auto [e, col] : fractions) {
    for (int i = 0; i < n; ++i) {
      result[i] = kernels::clampFraction(col->value[i]);
      mask[i] = reduced[i] & (result[i] != col->value[i]);
    }
    storeWith(e, result, mask, 0, col->state);
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

  float bg[kBlock], gvisc[kBlock], gdenres[kBlock];
  batch_loops::gasProperties(gden.value, z, tR, pres, tsc.value, psc.value, bg, gvisc, gdenres, n);
  float nullColumn[kBlock];
  std::fill_n(nullColumn, n, kRealNull);
  // Calculated where due with reduced values; cleared where calculated
  // earlier without them.
  auto gasEntry = [&](Entry e, const float* computed) SUBSURF_INLINE {
    fixedRead(e, c);
    for (int i = 0; i < n; ++i) mask[i] = reduced[i] & c.due(i);
    store(e, computed, mask);
    for (int i = 0; i < n; ++i) mask[i] = (reduced[i] == 0) & (c.state[i] > kStateTyped);
    store(e, nullColumn, mask);
  };
  gasEntry(Entry::Bg, bg);
  gasEntry(Entry::Gvisc, gvisc);
  fixedRead(Entry::Gdenres, c);
  for (int i = 0; i < n; ++i) gdenres[i] = (reduced[i] & c.due(i)) ? gdenres[i] : c.value[i];
  gasEntry(Entry::Gdenres, gdenres);
  for (int i = 0; i < n; ++i) result[i] = kernels::gasHydrogenIndex(gdenres[i]);
  gasEntry(Entry::Ghi, result);
}

}  // namespace subsurf::fluids
