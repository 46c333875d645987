#include "host/csv_row.h"

#include <charconv>
#include <fmt/format.h>

#include "host/fixed_text.h"

namespace subsurf {
namespace {

bool needsQuotes(std::string_view text) {
  if (text.empty()) return true;
  if (text.front() == ' ' || text.front() == '\t') return true;
  return text.find_first_of(",\"") != std::string_view::npos;
}

template <typename T>
int parseNumber(const std::string& field, T& out) {
  std::string t = trimBlanks(field);
  if (t.empty()) return CsvRow::kAbsent;
  const char* first = t.data();
  const char* last = t.data() + t.size();
  if (*first == '+') ++first;
  T value{};
  auto [ptr, ec] = std::from_chars(first, last, value);
  if (ec != std::errc() || ptr != last) return CsvRow::kUnreadable;
  out = value;
  return CsvRow::kOk;
}

}  // namespace

CsvRow CsvRow::parse(std::string_view line) {
  CsvRow row;
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  std::size_t i = 0;
  const std::size_t n = line.size();
  while (true) {
    std::size_t j = i;
    while (j < n && (line[j] == ' ' || line[j] == '\t')) ++j;
    Field f;
    if (j < n && line[j] == '"') {
      ++j;
      while (j < n) {
        if (line[j] == '"') {
          if (j + 1 < n && line[j + 1] == '"') {
            f.text.push_back('"');
            j += 2;
            continue;
          }
          ++j;
          break;
        }
        f.text.push_back(line[j++]);
      }
      while (j < n && line[j] != ',') ++j;  // anything after the closing quote is ignored
      f.quoteWhenWritten = true;
    } else {
      std::size_t end = line.find(',', i);
      if (end == std::string_view::npos) end = n;
      f.text = trimBlanks(line.substr(i, end - i));
      j = end;
    }
    row.fields_.push_back(std::move(f));
    if (j >= n) break;
    i = j + 1;  // skip the comma
  }
  if (row.fields_.size() == 1 && row.fields_[0].text.empty() && !row.fields_[0].quoteWhenWritten)
    row.fields_.clear();  // a blank line has no fields
  return row;
}

int CsvRow::text(int column, std::string& out) const {
  if (column < 1 || column > static_cast<int>(fields_.size())) return kAbsent;
  out = fields_[column - 1].text;
  return kOk;
}

std::string CsvRow::field(int column) const {
  std::string out;
  text(column, out);
  return out;
}

int CsvRow::integer(int column, int& out) const {
  if (column < 1 || column > static_cast<int>(fields_.size())) return kAbsent;
  return parseNumber(fields_[column - 1].text, out);
}

int CsvRow::real(int column, float& out) const {
  if (column < 1 || column > static_cast<int>(fields_.size())) return kAbsent;
  return parseNumber(fields_[column - 1].text, out);
}

int CsvRow::real8(int column, double& out) const {
  if (column < 1 || column > static_cast<int>(fields_.size())) return kAbsent;
  return parseNumber(fields_[column - 1].text, out);
}

CsvRow& CsvRow::addText(std::string_view text) {
  std::string t(text);
  for (char& c : t)
    if (c == '\n' || c == '\r') c = ' ';
  while (!t.empty() && t.back() == ' ') t.pop_back();
  Field f{t, needsQuotes(t)};
  fields_.push_back(std::move(f));
  return *this;
}

CsvRow& CsvRow::addInt(int value) {
  fields_.push_back({fmt::format("{}", value), false});
  return *this;
}

CsvRow& CsvRow::addReal(float value) {
  fields_.push_back({shortestText(value), false});
  return *this;
}

CsvRow& CsvRow::addReal8(double value) {
  fields_.push_back({shortestText(value), false});
  return *this;
}

std::string CsvRow::str() const {
  std::string out;
  for (std::size_t k = 0; k < fields_.size(); ++k) {
    if (k) out.push_back(',');
    const Field& f = fields_[k];
    if (f.quoteWhenWritten || needsQuotes(f.text)) {
      appendQuotedCsvField(out, f.text);
    } else {
      out += f.text;
    }
  }
  return out;
}

void appendQuotedCsvField(std::string& out, std::string_view text) {
  out.push_back('"');
  for (char c : text) {
    if (c == '"') out.push_back('"');
    out.push_back(c);
  }
  out.push_back('"');
}

std::string shortestText(float value) { return fmt::format("{}", value); }
std::string shortestText(double value) { return fmt::format("{}", value); }

}  // namespace subsurf
