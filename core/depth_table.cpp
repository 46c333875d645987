#include "core/depth_table.h"

#include <fmt/format.h>

#include <cctype>
#include <cmath>
#include <filesystem>
#include <map>
#include <system_error>

#include "core/core_session.h"
#include "core/depth_sources.h"
#include "core/name_depths.h"
#include "core/split_naming.h"
#include "host/csv_row.h"
#include "host/keyword_file.h"

namespace subsurf {
namespace {

// A depth table has a line per photograph; anything near this size is not one.
constexpr std::uintmax_t kLargestTable = 16u << 20;
constexpr float kRowCountTolerance = 0.01f;

std::string lowered(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

std::string withoutSuffix(std::string_view name) {
  const auto dot = name.rfind('.');
  return std::string(dot == std::string_view::npos ? name : name.substr(0, dot));
}

bool allDigits(std::string_view s) {
  if (s.empty()) return false;
  for (char c : s)
    if (c < '0' || c > '9') return false;
  return true;
}

// Place (from 1) of the photo a table row names, 0 when none.
int placeNamed(CoreSession& session, const std::string& key) {
  const int count = session.imageCount();
  if (allDigits(key)) {
    const int place = key.size() > 6 ? 0 : std::stoi(key);
    return place >= 1 && place <= count ? place : 0;
  }
  const std::string wanted = lowered(key);
  for (const bool bare : {false, true}) {
    for (int place = 1; place <= count; ++place) {
      const std::string file = session.imageAt(place)->sourceFile();
      const std::string name = file.substr(split::fileNameStart(file));
      if (lowered(bare ? withoutSuffix(name) : name) == wanted) return place;
    }
  }
  return 0;
}

}  // namespace

Status readDepthTable(const std::string& path, std::vector<DepthTableRow>& rows) {
  rows.clear();
  std::error_code ec;
  const auto size = std::filesystem::file_size(path, ec);
  if (!ec && size > kLargestTable)
    return Status::error(fmt::format("{}: {} bytes is too large for a table of depths", path, size));
  std::vector<std::string> lines;
  if (Status s = readLines(path, lines); !s) return s;
  bool first = true;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].find_first_not_of(" \t,") == std::string::npos) continue;
    const int line = static_cast<int>(i + 1);
    const CsvRow row = CsvRow::parse(lines[i]);
    DepthTableRow r;
    r.line = line;
    r.photo = row.field(1);
    const bool header = first && row.real(2, r.top) != CsvRow::kOk;
    first = false;
    if (header) continue;
    if (r.photo.empty()) return Status::error(fmt::format("{}, line {}: no photo in the first column", path, line));
    const char* names[] = {"top", "base"};
    float* values[] = {&r.top, &r.base};
    for (int k = 0; k < 2; ++k) {
      if (row.real(2 + k, *values[k]) != CsvRow::kOk || !std::isfinite(*values[k]))
        return Status::error(
            fmt::format("{}, line {}: {} \"{}\" is not a number", path, line, names[k], row.field(2 + k)));
    }
    if (!(r.top < r.base))
      return Status::error(fmt::format("{}, line {}: Error - Top depth >= Base Depth!", path, line));
    if (!row.field(4).empty() && (row.integer(4, r.cores) != CsvRow::kOk || r.cores < 1 || r.cores > kMaxStoredRows))
      return Status::error(
          fmt::format("{}, line {}: cores \"{}\" is not a whole number from 1 to {}", path, line, row.field(4),
                      kMaxStoredRows));
    if (!row.field(5).empty()) {
      float length = 0.0f;
      if (row.real(5, length) != CsvRow::kOk || !(length > 0.001f))
        return Status::error(
            fmt::format("{}, line {}: core length \"{}\" is not a length above 0.001", path, line, row.field(5)));
      const float counted = std::trunc((r.base - r.top - kRowCountTolerance) / length) + 1.0f;
      if (counted > static_cast<float>(kMaxStoredRows))
        return Status::error(fmt::format("{}, line {}: core length {} gives more than {} cores", path, line,
                                         row.field(5), kMaxStoredRows));
      if (r.cores == 0) r.cores = static_cast<int>(counted);
    }
    rows.push_back(std::move(r));
  }
  return Status::ok();
}

Status applyDepthTable(CoreSession& session, const std::vector<DepthTableRow>& rows, const std::string& path,
                       DepthTableOutcome& outcome) {
  outcome = DepthTableOutcome{};
  std::map<int, int> lineOf;  // place -> line
  std::vector<std::pair<int, const DepthTableRow*>> matched;
  for (const DepthTableRow& r : rows) {
    const int place = placeNamed(session, r.photo);
    if (place == 0) {
      outcome.unmatched.push_back(
          fmt::format("{}, line {}: \"{}\" matches no photo of the session", path, r.line, r.photo));
      continue;
    }
    auto [it, fresh] = lineOf.emplace(place, r.line);
    if (!fresh) {
      const std::string file = session.imageAt(place)->sourceFile();
      return Status::error(fmt::format("{}, lines {} and {}: both give depths for {}", path, it->second, r.line,
                                       file.substr(split::fileNameStart(file))));
    }
    matched.emplace_back(place, &r);
  }
  for (const auto& [place, r] : matched) {
    setTrayDepths(*session.imageAt(place), r->top, r->base, r->cores);
    outcome.placesSet.push_back(place);
  }
  for (int place = 1; place <= session.imageCount(); ++place)
    if (!lineOf.count(place)) outcome.missed.push_back(place);
  return Status::ok();
}

}  // namespace subsurf
