#include "fluids/case_packing.h"

#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__)
#include <immintrin.h>
#define SUBSURF_AVX512_PACKING 1
#endif

namespace subsurf::fluids {
namespace {

#if defined(SUBSURF_AVX512_PACKING)
// The cases of a group of 16 that exist (the last group may be short) and
// those of them to keep.
[[gnu::target("avx512f")]] inline __mmask16 groupOf(int remaining) {
  return remaining >= 16 ? __mmask16{0xffff} : static_cast<__mmask16>((1u << remaining) - 1u);
}
[[gnu::target("avx512f")]] inline __mmask16 keptOf(const std::int32_t* keep, __mmask16 group) {
  const __m512i k = _mm512_maskz_loadu_epi32(group, keep);
  return _mm512_mask_test_epi32_mask(group, k, k);
}

// The compress goes to a register and is stored whole: the memory form of
// the instruction is much slower on Intel processors.
[[gnu::target("avx512f")]] int packAvx512(const std::int32_t* keep, int n,
                                          const float* const* from, float* const* to,
                                          int columns) {
  int m = 0;
  for (int i = 0; i < n; i += 16) {
    const __mmask16 group = groupOf(n - i);
    const __mmask16 kept = keptOf(keep + i, group);
    for (int c = 0; c < columns; ++c) {
      const __m512 v = _mm512_maskz_loadu_ps(group, from[c] + i);
      _mm512_storeu_ps(to[c] + m, _mm512_maskz_compress_ps(kept, v));
    }
    m += __builtin_popcount(kept);
  }
  return m;
}

[[gnu::target("avx512f")]] void unpackAvx512(const std::int32_t* keep, int n, const float* from,
                                             float* to) {
  int m = 0;
  for (int i = 0; i < n; i += 16) {
    const __mmask16 group = groupOf(n - i);
    const __mmask16 kept = keptOf(keep + i, group);
    const __m512 old = _mm512_maskz_loadu_ps(group, to + i);
    _mm512_mask_storeu_ps(to + i, group, _mm512_mask_expand_ps(old, kept, _mm512_loadu_ps(from + m)));
    m += __builtin_popcount(kept);
  }
}

bool hasAvx512() {
  static const bool has = __builtin_cpu_supports("avx512f");
  return has;
}
#endif

}  // namespace

int packCases(const std::int32_t* keep, int n, const float* const* from, float* const* to,
              int columns, Packing how) {
#if defined(SUBSURF_AVX512_PACKING)
  if (how == Packing::Fastest && hasAvx512()) return packAvx512(keep, n, from, to, columns);
#endif
  (void)how;
  int m = 0;
  for (int i = 0; i < n; ++i) {
    if (keep[i] == 0) continue;
    for (int c = 0; c < columns; ++c) to[c][m] = from[c][i];
    ++m;
  }
  return m;
}

void unpackCases(const std::int32_t* keep, int n, const float* from, float* to, Packing how) {
#if defined(SUBSURF_AVX512_PACKING)
  if (how == Packing::Fastest && hasAvx512()) {
    unpackAvx512(keep, n, from, to);
    return;
  }
#endif
  (void)how;
  int m = 0;
  for (int i = 0; i < n; ++i) {
    if (keep[i] != 0) to[i] = from[m++];
  }
}

}  // namespace subsurf::fluids
