#include "stats_command.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "binned_input.h"
#include "cli_support.h"
#include "host/csv_row.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "host/number_text.h"
#include "plot/bin_statistics.h"
#include "plot/crossplot.h"

namespace subsurf::cli {
namespace {

struct BinsOptions : BinnedInput {
  bool csv = false, json = false;
};

void fail(const std::string& text) { host::showMessage(text); }

// Columns padded to their widest entry, numbers right-aligned.
void printAligned(const BinStatistics& table) {
  std::vector<std::vector<std::string>> cells(1);
  for (const char* h : kBinStatisticsHeadings) cells[0].push_back(h);
  for (const BinStatisticsRow& row : table.rows) {
    cells.emplace_back();
    for (double v : row.columns()) cells.back().push_back(isNull(v) ? "-" : formatReal(v, -6));
  }
  std::vector<std::size_t> width(kBinStatisticsHeadings.size(), 0);
  for (const auto& line : cells)
    for (std::size_t k = 0; k < line.size(); ++k) width[k] = std::max(width[k], line[k].size());
  for (const auto& line : cells) {
    std::string text;
    for (std::size_t k = 0; k < line.size(); ++k) text += fmt::format("{}{:>{}}", k ? "  " : "", line[k], width[k]);
    std::printf("%s\n", text.c_str());
  }
}

// Rows keyed by the headings in table order. The data are single precision, so
// each statistic is given as the short decimal of its single value (0.055, not
// 0.054999999701976776); counts as whole numbers; nulls as null.
nlohmann::ordered_json tableJson(const BinStatistics& table) {
  nlohmann::ordered_json rows = nlohmann::ordered_json::array();
  for (const BinStatisticsRow& row : table.rows) {
    nlohmann::ordered_json r;
    const auto columns = row.columns();
    for (std::size_t k = 0; k < columns.size(); ++k) {
      const char* key = kBinStatisticsHeadings[k];
      if (k == 0 || k == 4) r[key] = static_cast<long>(columns[k]);
      else if (isNull(columns[k])) r[key] = nullptr;
      else r[key] = std::stod(shortestText(static_cast<float>(columns[k])));
    }
    rows.push_back(r);
  }
  return rows;
}

int runBins(const BinsOptions& o) {
  if (o.csv && o.json) {
    fail("give --csv or --json, not both");
    return kExitBadInput;
  }
  CrossplotData data;
  BinStatistics table;
  if (!readBinnedTable(o, data, table)) return kExitBadInput;
  if (o.json) {
    nlohmann::ordered_json report = {{"file", o.data},       {"by", data.xColumn},     {"value", data.yColumn},
                             {"rows", data.rows},    {"binned", data.x.size() - static_cast<std::size_t>(table.outside)},
                             {"outside", table.outside},
                             {"left_out", {{"empty", data.emptyCells}, {"null", data.nullValues}, {"non_finite", data.nonFinite}}},
                             {"bins", tableJson(table)}};
    std::printf("%s\n", report.dump(2).c_str());
    return kExitOk;
  }
  if (o.csv) std::fputs(binStatisticsCsv(table).c_str(), stdout);
  else printAligned(table);
  if (const std::string leftOut = binnedLeftOutText(o, data, table); !leftOut.empty()) fail(leftOut);
  return kExitOk;
}

}  // namespace

void addStatsCommand(CLI::App& app, int& exitCode) {
  auto o = std::make_shared<BinsOptions>();
  CLI::App* stats = app.add_subcommand("stats", "Statistics of CSV columns");
  stats->require_subcommand(1);
  CLI::App* bins = stats->add_subcommand(
      "bins", "Binned statistics: one column cut into bins along another (docs/binned-statistics.md)");
  bins->add_option("data", o->data, "The CSV file (header: names, units in brackets)")->required();
  bins->add_option("--by", o->by, "Column along which the bins are cut")->required();
  bins->add_option("--value", o->value, "Column whose values are summarised")->required();
  bins->add_option("--by-unit", o->byUnit, "Unit of the bin column (converted from the column's)");
  bins->add_option("--value-unit", o->valueUnit, "Unit of the values");
  auto* count = bins->add_option("--bins", o->bins, "Equal bins between the smallest and largest bin value (default 10)")
                    ->check(CLI::Range(1, 100000));
  bins->add_option("--edges", o->edges, "Bin edges instead, ascending and comma-separated: 0,0.1,0.2,0.3")
      ->excludes(count);
  bins->add_flag("--csv", o->csv, "Print the table as CSV");
  bins->add_flag("--json", o->json, "Print the table and counts as JSON");
  bins->callback([o, &exitCode] { exitCode = runBins(*o); });
}

}  // namespace subsurf::cli
