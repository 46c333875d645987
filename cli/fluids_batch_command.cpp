#include "fluids_batch_command.h"

#include <fmt/format.h>

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <vector>

#include "cli_support.h"
#include "fluids/fluid_batch.h"
#include "host/atomic_file.h"
#include "host/csv_row.h"
#include "host/fixed_text.h"
#include "host/keyword_file.h"
#include "host/nulls.h"
#include "host/number_text.h"

namespace subsurf::cli {
namespace {

using fluids::Entry;
using fluids::EntryUnit;
using fluids::FluidTable;

// Cases are read, calculated and written this many at a time, so that a file
// of millions of cases needs the memory of one chunk only. Large enough for
// the calculation to run at full speed.
constexpr std::size_t kChunkCases = 32768;

// Splits one CSV line into blank-trimmed cells. Lines with quotes (cells
// holding commas or quotes) are rare and go through the keyword files' CSV
// reader, whose unquoted texts the cells then point into.
void splitCsv(std::string_view line, std::vector<std::string_view>& cells,
              std::vector<std::string>& unquoted) {
  cells.clear();
  if (line.find('"') == std::string_view::npos) {
    std::size_t start = 0;
    for (;;) {
      const std::size_t comma = line.find(',', start);
      cells.push_back(trimmedBlanks(line.substr(start, comma - start)));
      if (comma == std::string_view::npos) return;
      start = comma + 1;
    }
  }
  const CsvRow row = CsvRow::parse(line);
  unquoted.clear();
  for (int column = 1; column <= static_cast<int>(row.size()); ++column) {
    unquoted.push_back(row.field(column));
  }
  for (const std::string& s : unquoted) cells.push_back(trimmedBlanks(s));
}

// A header cell "name" or "name[unit]".
struct Column {
  Entry entry;
  EntryUnit unit;
  std::size_t column = 0;  // in the header, from 1
};

std::string headerOf(const FluidTable& table, Entry e) {
  const std::string unit = table.storedUnitName(e);
  const char* name = fluids::entryInfo(e).name;
  return trimBlanks(unit).empty() ? std::string(name) : fmt::format("{}[{}]", name, unit);
}

// The columns the header names, or nothing after reporting every bad one.
std::optional<std::vector<Column>> readHeader(const std::vector<std::string_view>& cells,
                                              const std::string& inPath,
                                              const FluidTable& prototype) {
  std::vector<Column> columns;
  bool bad = false;
  for (std::size_t col = 1; col <= cells.size(); ++col) {
    const std::string_view cell = cells[col - 1];
    std::string name(cell), unit;
    if (const auto open = cell.find('['); open != std::string_view::npos) {
      const auto close = cell.find(']', open);
      name = trimBlanks(cell.substr(0, open));
      unit = trimBlanks(cell.substr(open + 1, close == std::string_view::npos
                                                  ? std::string_view::npos
                                                  : close - open - 1));
    }
    const auto entry = fluids::findEntry(name);
    if (!entry) {
      std::cerr << fmt::format("subsurf fluids: {} column {}: Unknown entry \"{}\"\n", inPath,
                               col, name);
      bad = true;
      continue;
    }
    const auto u = prototype.unitOf(*entry, unit);
    if (!u) {
      std::cerr << fmt::format("subsurf fluids: {} column {}: {}\n", inPath, col,
                               notAUnitMessage(*entry, unit));
      bad = true;
      continue;
    }
    const auto same = std::find_if(columns.begin(), columns.end(),
                                   [&](const Column& c) { return c.entry == *entry; });
    if (same != columns.end()) {
      std::cerr << fmt::format("subsurf fluids: {} columns {} (\"{}\") and {} (\"{}\") both give \"{}\"\n", inPath,
                               same->column, cells[same->column - 1], col, cell, fluids::entryInfo(*entry).name);
      bad = true;
      continue;
    }
    columns.push_back({*entry, *u, col});
  }
  if (bad) return std::nullopt;
  return columns;
}

// Where the results go: a file replaced only when complete, or standard output.
class ResultsOutput {
 public:
  Status open(const std::string& path) { return path.empty() ? Status() : file_.open(path); }
  void write(std::string_view text) {
    if (file_.isOpen()) {
      file_.write(text);
    } else {
      std::fwrite(text.data(), 1, text.size(), stdout);
    }
  }
  Status finish() {
    if (file_.isOpen()) return file_.commit();
    return std::fflush(stdout) == 0 ? Status() : Status::error("cannot write standard output");
  }

 private:
  AtomicFile file_;
};

// A results file is replaced only by results: a file already at the target
// whose first line is not a header this command writes (the first entry,
// "dres", with its unit) is left alone.
Status checkResultsReplaceable(const std::string& path) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode) || st.st_size == 0) return Status();
  std::ifstream in(path, std::ios::binary);
  std::string first(5, '\0');
  in.read(first.data(), 5);
  if (in && (first == "dres[" || first == "dres,")) return Status();
  return Status::error("it is not a results file of this command; it is left as it is");
}

// Every entry of the batch's cases as CSV rows; a case that cannot be trusted
// keeps every result empty.
void appendRows(const fluids::FluidBatch& batch, const std::vector<bool>& valid,
                std::string& text) {
  for (std::size_t k = 0; k < batch.size(); ++k) {
    if (!valid[k]) {
      text.append(fluids::kEntryCount - 1, ',');
    } else {
      for (const fluids::EntryInfo& info : fluids::allEntries()) {
        if (info.entry != Entry::Dres) text += ',';
        // A result past the range of a float is no result: an empty cell.
        const float v = batch.values(info.entry)[k];
        if (!isNull(v) && std::isfinite(v)) appendGeneralFloat(text, v);
      }
    }
    text += '\n';
  }
}

}  // namespace

std::optional<float> readEntryNumber(std::string_view text) {
  double d = 0.0;
  if (!parseReal(text, d)) return std::nullopt;
  const float f = static_cast<float>(d);
  if (!std::isfinite(f)) return std::nullopt;
  return f;
}

std::string notAUnitMessage(Entry e, const std::string& unit) {
  const fluids::EntryInfo& info = fluids::entryInfo(e);
  return fmt::format("\"{}\" is not a unit of {} (entry \"{}\")", unit, info.series, info.name);
}

int runFluidsBatch(const std::string& inPath, const std::string& outPath,
                   const FluidTable& prototype) {
  std::ifstream in(inPath);
  if (!in) {
    std::cerr << fmt::format("subsurf fluids: cannot open \"{}\"\n", inPath);
    return kExitBadInput;
  }
  std::string line;
  std::vector<std::string_view> cells;
  std::vector<std::string> unquoted;
  std::size_t row = 0;
  std::optional<std::vector<Column>> header;
  bool tooLong = false;
  // A line beyond the limit (a file of no lines at all, such as /dev/zero)
  // ends the reading with a message instead of filling the memory.
  auto lineTooLong = [&] {
    std::cerr << fmt::format("subsurf fluids: {} row {}: longer than {} bytes, not read\n", inPath, row + 1,
                             kMaxTextLineBytes);
    return kExitBadInput;
  };
  while (!header && readBoundedLine(in, line, tooLong)) {
    ++row;
    // Spreadsheets saving "CSV UTF-8" put a byte-order mark before the header.
    if (row == 1 && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
    if (trimmedBlanks(line).empty()) continue;
    splitCsv(line, cells, unquoted);
    header = readHeader(cells, inPath, prototype);
    if (!header) return kExitBadInput;
  }
  if (tooLong) return lineTooLong();
  if (!header) {
    std::cerr << fmt::format("subsurf fluids: \"{}\" has no header row\n", inPath);
    return kExitBadInput;
  }
  const std::vector<Column>& columns = *header;

  ResultsOutput out;
  Status opened = outPath.empty() ? Status() : checkResultsReplaceable(outPath);
  if (opened.isOk()) opened = out.open(outPath);
  if (!opened.isOk()) {
    std::cerr << fmt::format("subsurf fluids: cannot write \"{}\": {}\n", outPath,
                             opened.message());
    return kExitBadInput;
  }
  std::string text;
  for (const fluids::EntryInfo& info : fluids::allEntries()) {
    if (!text.empty()) text += ',';
    text += headerOf(prototype, info.entry);
  }
  text += '\n';

  fluids::FluidBatch batch(prototype);
  std::vector<bool> valid;
  int exitCode = kExitOk;
  bool more = true;
  while (more) {
    // Each chunk starts from the prototype's entries.
    batch.resize(0);
    batch.resize(kChunkCases);
    valid.assign(kChunkCases, true);
    std::size_t k = 0;
    while (k < kChunkCases && (more = readBoundedLine(in, line, tooLong))) {
      ++row;
      if (trimmedBlanks(line).empty()) continue;
      splitCsv(line, cells, unquoted);
      if (cells.size() > columns.size()) {
        std::cerr << fmt::format("subsurf fluids: {} row {}: {} cells for {} columns\n", inPath,
                                 row, cells.size(), columns.size());
        valid[k] = false;
      }
      for (std::size_t c = 0; c < cells.size() && c < columns.size(); ++c) {
        if (cells[c].empty()) continue;  // not given: calculated
        const auto v = readEntryNumber(cells[c]);
        if (!v) {
          std::cerr << fmt::format(
              "subsurf fluids: {} row {}, column {} ({}): cannot read \"{}\" as a number\n",
              inPath, row, c + 1, fluids::entryInfo(columns[c].entry).name, cells[c]);
          valid[k] = false;
          continue;
        }
        batch.set(k, columns[c].entry, columns[c].unit, *v, fluids::kStateTyped);
      }
      if (!valid[k]) exitCode = kExitPartial;
      ++k;
    }
    batch.resize(k);
    batch.calculateAll();
    appendRows(batch, valid, text);
    out.write(text);
    text.clear();
  }
  if (tooLong) return lineTooLong();
  if (in.bad()) {
    std::cerr << fmt::format("subsurf fluids: cannot read \"{}\" to the end\n", inPath);
    return kExitBadInput;
  }
  if (const Status done = out.finish(); !done.isOk()) {
    std::cerr << fmt::format("subsurf fluids: {}\n", done.message());
    return kExitBadInput;
  }
  return exitCode;
}

}  // namespace subsurf::cli
