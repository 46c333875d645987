// Packing the cases a formula applies to and spreading its results back:
// the vector version against the case-by-case one and against the cases
// picked out plainly, for blocks that end inside and at the edge of a group
// of 16, with none, all and some of the cases kept.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "fluids/case_packing.h"

namespace subsurf::fluids {
namespace {

constexpr float kGuard = -12345.0f;

struct Block {
  std::vector<std::int32_t> keep;
  std::vector<std::vector<float>> columns;
};

Block makeBlock(int n, int columns, double share, std::mt19937& rng) {
  std::bernoulli_distribution kept(share);
  std::uniform_real_distribution<float> value(-100.0f, 100.0f);
  Block b;
  for (int i = 0; i < n; ++i) b.keep.push_back(kept(rng) ? 1 : 0);
  b.columns.assign(static_cast<std::size_t>(columns), std::vector<float>(n));
  for (auto& column : b.columns) {
    for (float& v : column) v = value(rng);
  }
  return b;
}

// Packs with the given method into columns with room to spare, which are
// filled with a guard value first: the guard must survive beyond the slack.
std::vector<std::vector<float>> packed(const Block& b, Packing how, int& count) {
  const int n = static_cast<int>(b.keep.size());
  std::vector<std::vector<float>> to(b.columns.size(),
                                     std::vector<float>(n + kPackSlack + 8, kGuard));
  std::vector<const float*> from;
  std::vector<float*> into;
  for (std::size_t c = 0; c < b.columns.size(); ++c) {
    from.push_back(b.columns[c].data());
    into.push_back(to[c].data());
  }
  count = packCases(b.keep.data(), n, from.data(), into.data(), static_cast<int>(from.size()), how);
  return to;
}

TEST(CasePacking, BothMethodsPickTheKeptCasesInOrder) {
  std::mt19937 rng(7);
  for (int n : {0, 1, 15, 16, 17, 31, 32, 100, 1023, 1024}) {
    for (double share : {0.0, 1.0, 0.58, 0.05}) {
      SCOPED_TRACE(::testing::Message() << n << " cases, share " << share);
      const Block b = makeBlock(n, 3, share, rng);
      int fastCount = -1, plainCount = -1;
      const auto fast = packed(b, Packing::Fastest, fastCount);
      const auto plain = packed(b, Packing::CaseByCase, plainCount);
      std::vector<std::vector<float>> expected(3);
      for (int i = 0; i < n; ++i) {
        if (b.keep[i] == 0) continue;
        for (int c = 0; c < 3; ++c) expected[c].push_back(b.columns[c][i]);
      }
      const int count = static_cast<int>(expected[0].size());
      ASSERT_EQ(fastCount, count);
      ASSERT_EQ(plainCount, count);
      for (int c = 0; c < 3; ++c) {
        for (int j = 0; j < count; ++j) {
          EXPECT_EQ(fast[c][j], expected[c][j]) << "column " << c << " packed case " << j;
          EXPECT_EQ(plain[c][j], expected[c][j]) << "column " << c << " packed case " << j;
        }
        for (std::size_t j = static_cast<std::size_t>(n + kPackSlack); j < fast[c].size(); ++j) {
          EXPECT_EQ(fast[c][j], kGuard) << "written beyond the slack at " << j;
        }
      }
    }
  }
}

TEST(CasePacking, UnpackingFillsOnlyTheKeptCases) {
  std::mt19937 rng(8);
  for (int n : {0, 1, 15, 16, 17, 33, 1024}) {
    for (double share : {0.0, 1.0, 0.58}) {
      SCOPED_TRACE(::testing::Message() << n << " cases, share " << share);
      const Block b = makeBlock(n, 1, share, rng);
      int count = 0;
      for (std::int32_t k : b.keep) count += k != 0;
      std::vector<float> results(static_cast<std::size_t>(count + kPackSlack), kGuard);
      for (int j = 0; j < count; ++j) results[j] = 1000.0f + static_cast<float>(j);
      for (Packing how : {Packing::Fastest, Packing::CaseByCase}) {
        std::vector<float> to = b.columns[0];
        unpackCases(b.keep.data(), n, results.data(), to.data(), how);
        int j = 0;
        for (int i = 0; i < n; ++i) {
          const float expected = b.keep[i] != 0 ? 1000.0f + static_cast<float>(j++) : b.columns[0][i];
          EXPECT_EQ(to[i], expected) << "case " << i;
        }
      }
    }
  }
}

}  // namespace
}  // namespace subsurf::fluids
