// Binned statistics: headings in order, percentiles, deviations and weighted
// means of hand-worked bins, edge tolerances, empty bins, nulls, bad edges,
// the CSV table and the C routine.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "host/messages.h"
#include "host/nulls.h"
#include "plot/bin_statistics.h"
#include "subsurf/plot_statistics.h"

namespace ss = subsurf;

namespace {

const std::vector<double> kEdges = {0, 10, 20, 30};

ss::BinStatistics binned(const std::vector<float>& by, const std::vector<float>& values,
                         const std::vector<double>& edges = kEdges) {
  ss::BinStatistics table;
  const ss::Status s = ss::binStatistics(by, values, edges, table);
  EXPECT_TRUE(s.isOk()) << s.message();
  return table;
}

std::string refusal(const std::vector<double>& edges, std::size_t values = 1, std::size_t by = 1) {
  ss::BinStatistics table;
  const ss::Status s =
      ss::binStatistics(std::vector<float>(by, 1.0f), std::vector<float>(values, 1.0f), edges, table);
  EXPECT_FALSE(s.isOk());
  return s.message();
}

}  // namespace

TEST(BinStatistics, HeadingsInTableOrder) {
  char text[252];
  ZW_BINHEADS(text);
  const std::string expected[] = {"Bin",  "MinV", "MaxV", "MidV",       "NP",        "P100",      "P95",
                                  "P90",  "P50",  "P10",  "P5",         "P0",        "Mean",      "ADev",
                                  "SDev", "Median Dev", "Pear Mean", "Swan Mean", "Geo Mean", "Arith Mean",
                                  "Harm Mean"};
  for (std::size_t k = 0; k < 21; ++k) {
    std::string field(text + 12 * k, 12);
    field.erase(field.find_last_not_of(' ') + 1);
    EXPECT_EQ(field, expected[k]) << k;
  }
}

TEST(BinStatistics, HandWorkedBinOfFourValues) {
  const auto table = binned({1, 3, 5, 9, 15}, {4, 1, 3, 2, 10});
  ASSERT_EQ(table.rows.size(), 3u);
  const auto& r = table.rows[0];
  EXPECT_EQ(r.bin, 1);
  EXPECT_EQ(r.np, 4);
  EXPECT_EQ(r.minV, 0);
  EXPECT_EQ(r.maxV, 10);
  EXPECT_EQ(r.midV, 5);
  // Ranks (m-1)·P/100 over 1, 2, 3, 4.
  const double expected[] = {4, 3.85, 3.7, 2.5, 1.3, 1.15, 1};
  for (std::size_t k = 0; k < 7; ++k) EXPECT_NEAR(r.percentiles[k], expected[k], 1e-12) << k;
  EXPECT_DOUBLE_EQ(r.mean, 2.5);
  EXPECT_DOUBLE_EQ(r.arithMean, 2.5);
  EXPECT_DOUBLE_EQ(r.adev, 1.0);
  EXPECT_DOUBLE_EQ(r.sdev, std::sqrt(5.0 / 3.0));
  EXPECT_DOUBLE_EQ(r.medianDev, 1.0);
  EXPECT_NEAR(r.swanMean, 0.3 * 1.3 + 0.4 * 2.5 + 0.3 * 3.7, 1e-6);
  EXPECT_NEAR(r.pearMean, 0.185 * 1.15 + 0.63 * 2.5 + 0.185 * 3.85, 1e-6);
  EXPECT_NEAR(r.geoMean, std::pow(24.0, 0.25), 1e-12);
  EXPECT_NEAR(r.harmMean, 4.0 / (1 + 0.5 + 1.0 / 3 + 0.25), 1e-12);
}

TEST(BinStatistics, WeightedMeansOfEqualValuesAreThatValue) {
  for (float v : {0.1f, 7.3f, 1234.567f, -3.3f, 1e-7f, 98765.43f}) {
    const auto table = binned({1, 2, 3, 4, 5}, {v, v, v, v, v});
    EXPECT_EQ(table.rows[0].swanMean, static_cast<double>(v)) << v;
    EXPECT_EQ(table.rows[0].pearMean, static_cast<double>(v)) << v;
    EXPECT_EQ(table.rows[0].sdev, 0.0);
    EXPECT_EQ(table.rows[0].medianDev, 0.0);
  }
}

TEST(BinStatistics, SingleValueAndEmptyBins) {
  const auto table = binned({1, 15}, {2, 10});
  const auto& one = table.rows[1];
  EXPECT_EQ(one.np, 1);
  EXPECT_EQ(one.sdev, 0.0);
  EXPECT_EQ(one.percentiles[0], 10.0);
  EXPECT_EQ(one.percentiles[6], 10.0);
  const auto& empty = table.rows[2];
  EXPECT_EQ(empty.np, 0);
  for (double v : empty.percentiles) EXPECT_TRUE(ss::isNull(v));
  EXPECT_TRUE(ss::isNull(empty.mean));
  EXPECT_TRUE(ss::isNull(empty.swanMean));
  EXPECT_TRUE(ss::isNull(empty.harmMean));
}

TEST(BinStatistics, EdgesWidenedByAMillionthOfTheirMagnitude) {
  // 10 reaches down to 9.99999; 30 reaches up to 30.00003; 0 has no reach.
  const auto table = binned({9.99999f, 9.9999f, 10.0f, 30.00002f, 30.0001f, -1e-7f, 0.0f}, {1, 2, 3, 4, 5, 6, 7});
  EXPECT_EQ(table.rows[0].np, 2);  // 9.9999 and 0
  EXPECT_EQ(table.rows[1].np, 2);  // 9.99999 and 10 (an inner edge belongs to the bin above)
  EXPECT_EQ(table.rows[2].np, 1);  // 30.00002
  EXPECT_EQ(table.outside, 2);
  EXPECT_EQ(table.rows[0].percentiles[0], 7.0);
  EXPECT_EQ(table.rows[1].percentiles[6], 1.0);
  // Negative edges widen outwards too.
  const auto negative = binned({-10.00001f, -5.0f, -0.5f}, {1, 2, 3}, {-10, -5, -1});
  EXPECT_EQ(negative.rows[0].np, 1);
  EXPECT_EQ(negative.rows[1].np, 1);
  EXPECT_EQ(negative.outside, 1);
}

TEST(BinStatistics, NullsAndNonPositiveValuesForTheLogMeans) {
  const float null = ss::kRealNull;
  const auto table = binned({1, 2, null, 4, NAN}, {-1, 2, 3, null, 5});
  EXPECT_EQ(table.leftOut, 3);
  EXPECT_EQ(table.rows[0].np, 2);
  EXPECT_TRUE(ss::isNull(table.rows[0].geoMean));
  EXPECT_TRUE(ss::isNull(table.rows[0].harmMean));
  EXPECT_DOUBLE_EQ(table.rows[0].mean, 0.5);
}

TEST(BinStatistics, BadEdgesAndColumnsAreNamed) {
  EXPECT_EQ(refusal({1}), "Binning needs at least two edges");
  EXPECT_EQ(refusal({0, 5, 5}), "Bin edges must ascend: edge 3 (5) is not above edge 2 (5)");
  EXPECT_EQ(refusal({0, NAN}), "Bin edge 2 is not a number");
  EXPECT_EQ(refusal({0, 1}, 2, 3), "The bin column has 3 values and the value column 2");
}

TEST(BinStatistics, EqualWidthEdgesEndExactlyOnTheHighValue) {
  const auto edges = ss::equalBinEdges(0.1, 0.7, 3);
  ASSERT_EQ(edges.size(), 4u);
  EXPECT_EQ(edges.front(), 0.1);
  EXPECT_EQ(edges.back(), 0.7);
  EXPECT_NEAR(edges[1], 0.3, 1e-15);
  EXPECT_TRUE(ss::equalBinEdges(0, 1, 0).empty());
}

TEST(BinStatistics, CsvTableHasHeadingsAndEmptyCellsForNulls) {
  const auto table = binned({1, 15}, {2, 10});
  const std::string csv = ss::binStatisticsCsv(table);
  const std::string heading =
      "Bin,MinV,MaxV,MidV,NP,P100,P95,P90,P50,P10,P5,P0,Mean,ADev,SDev,Median Dev,Pear Mean,Swan Mean,Geo Mean,"
      "Arith Mean,Harm Mean\n";
  EXPECT_EQ(csv.substr(0, heading.size()), heading);
  EXPECT_NE(csv.find("\n2,10,20,15,1,10,10,10,10,10,10,10,10,0,0,0,10,10,10,10,10\n"), std::string::npos) << csv;
  const std::string emptyBin = "\n3,20,30,25,0,,,,,,,,,,,,,,,,\n";
  EXPECT_EQ(csv.substr(csv.size() - emptyBin.size()), emptyBin);
}

TEST(BinStatistics, RoutineFillsRowsAndReportsBadEdges) {
  const float by[] = {1, 3, 15}, values[] = {2, 4, 10}, edges[] = {0, 10, 20, 30};
  float table[3 * 21];
  int n = 3, bins = 3, leftout = -1, status = -1;
  ZW_BINSTATS(&n, by, values, &bins, edges, table, &leftout, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(leftout, 0);
  EXPECT_EQ(table[0], 1.0f);
  EXPECT_EQ(table[4], 2.0f);        // NP
  EXPECT_EQ(table[12], 3.0f);       // Mean
  EXPECT_EQ(table[21 + 4], 1.0f);   // second bin NP
  EXPECT_EQ(table[42 + 4], 0.0f);   // third bin NP
  EXPECT_EQ(table[42 + 12], ss::kRealNull);
  ss::host::clearRecorded();
  const float bad[] = {0, 10, 5, 30};
  ZW_BINSTATS(&n, by, values, &bins, bad, table, &leftout, &status);
  EXPECT_EQ(status, 1);
  ASSERT_EQ(ss::host::recordedMessages().size(), 1u);
  EXPECT_EQ(ss::host::recordedMessages()[0], "Bin edges must ascend: edge 3 (5) is not above edge 2 (10)");
}

TEST(BinStatistics, SelectionGivesTheSortedRankPercentilesOnLargeBins) {
  // 1001 and 1000 values (odd and even counts) in scrambled order.
  for (int m : {1001, 1000}) {
    std::vector<float> by, values;
    for (int i = 0; i < m; ++i) {
      by.push_back(0.5f);
      values.push_back(static_cast<float>((i * 7919) % m));
    }
    const auto table = binned(by, values, {0, 1});
    const auto& p = table.rows[0].percentiles;
    const double top = m - 1;
    EXPECT_DOUBLE_EQ(p[0], top);
    EXPECT_DOUBLE_EQ(p[1], top * 0.95);
    EXPECT_DOUBLE_EQ(p[3], top * 0.5);
    EXPECT_DOUBLE_EQ(p[5], top * 0.05);
    EXPECT_DOUBLE_EQ(p[6], 0.0);
    EXPECT_DOUBLE_EQ(table.rows[0].medianDev, 250.0);  // |x - median| has median 250 for both counts
  }
}
