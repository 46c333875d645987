// Packing the cases of a block that a costly formula applies to, and
// spreading its results back.
//
// The batch calculation works out some formulas (McCain's compressibility,
// a dozen logarithms and powers) only for the cases they apply to: those
// cases' inputs are packed together, the formula runs over the packed
// columns, and its results go back to the cases they belong to. Where the
// processor has AVX-512, its compress and expand instructions move 16 cases
// at a time; elsewhere a plain loop does it case by case. Both give the same
// result.
#pragma once

#include <cstdint>

namespace subsurf::fluids {

// Room a packed column needs beyond the block's cases (and a packed results
// column beyond its kept ones): the vector version writes and reads whole
// groups of 16.
inline constexpr int kPackSlack = 16;

enum class Packing { Fastest, CaseByCase };

// Copies from[c][i] for every case i with keep[i] != 0, in order, to the
// front of to[c], for each of `columns` columns; returns how many were kept.
int packCases(const std::int32_t* keep, int n, const float* const* from, float* const* to,
              int columns, Packing how = Packing::Fastest);

// The reverse for one column of results: to[i] = from[j] for the j-th kept
// case i; the other cases of `to` keep their values.
void unpackCases(const std::int32_t* keep, int n, const float* from, float* to,
                 Packing how = Packing::Fastest);

}  // namespace subsurf::fluids
