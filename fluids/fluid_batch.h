// Calculate-all over many cases at once.
//
// A batch holds one column per entry (values in the prototype table's stored
// units, and states) and one row per case. Every case starts as a copy of the
// prototype's entries, so defaults and units set up once apply to all. The
// calculation gives each case exactly what calculateAll() gives that case in
// a table of its own, bit for bit; it only runs column by column, through
// the registry's vector conversions and correlation loops the compiler turns
// into SIMD code, which makes it many times faster for large batches.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

#include "fluids/fluid_entries.h"

namespace subsurf::fluids {

// Allocates a batch's columns on 64-byte boundaries, the width of a cache
// line and of an AVX-512 register. The C library's large blocks start 16
// bytes past a page boundary, so without this every full-width load and
// store of a column would straddle two cache lines.
template <typename T>
struct ColumnAllocator {
  using value_type = T;
  static constexpr std::align_val_t kAlignment{64};
  ColumnAllocator() = default;
  template <typename U>
  ColumnAllocator(const ColumnAllocator<U>&) {}
  T* allocate(std::size_t n) { return static_cast<T*>(::operator new(n * sizeof(T), kAlignment)); }
  void deallocate(T* p, std::size_t) { ::operator delete(p, kAlignment); }
  template <typename U>
  bool operator==(const ColumnAllocator<U>&) const { return true; }
};
template <typename T>
using Column = std::vector<T, ColumnAllocator<T>>;

// A case's entry state in a batch, kept in one byte (a batch of a million
// cases reads and writes every state column, so their size is memory
// traffic). States a calculation gives are 0 to 2 and anything above 1 counts
// as calculated; states outside -128..127 are clamped, which keeps their meaning.
using BatchState = std::int8_t;
inline BatchState batchState(int state) {
  return static_cast<BatchState>(state < -128 ? -128 : (state > 127 ? 127 : state));
}

struct BlockWork;

class FluidBatch {
 public:
  explicit FluidBatch(const FluidTable& prototype, std::size_t cases = 0);

  // Grows or shrinks the batch; new cases are copies of the prototype.
  void resize(std::size_t cases);
  std::size_t size() const { return size_; }

  // Columns in the prototype's stored unit of each entry.
  float* values(Entry e) { return values_[index(e)].data(); }
  const float* values(Entry e) const { return values_[index(e)].data(); }
  BatchState* states(Entry e) { return states_[index(e)].data(); }
  const BatchState* states(Entry e) const { return states_[index(e)].data(); }

  // One case's entry from a value in a unit of the entry's series, as
  // FluidTable::set does it (unit from the prototype's unitOf()).
  void set(std::size_t row, Entry e, EntryUnit unit, float value, int state);

  // Calculate-all on every case.
  void calculateAll();

  // One case as a table of its own.
  FluidTable caseTable(std::size_t row) const;

  const FluidTable& prototype() const { return prototype_; }

 private:
  static std::size_t index(Entry e) { return static_cast<std::size_t>(e); }
  void calculateRange(std::size_t first, std::size_t count, BlockWork& work);

  FluidTable prototype_;
  std::size_t size_ = 0;
  std::array<Column<float>, kEntryCount> values_;
  std::array<Column<BatchState>, kEntryCount> states_;
  // The last case whose z-factor was read from the chart, so that the chart's
  // remembered bracket ends as a case-by-case run would leave it.
  bool chartRead_ = false;
  float lastTpr_ = 0.0f, lastPpr_ = 0.0f;
};

}  // namespace subsurf::fluids
