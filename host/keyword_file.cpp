#include "host/keyword_file.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include <fmt/format.h>

namespace subsurf {

Status readLines(const std::string& path, std::vector<std::string>& lines) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return Status::error(fmt::format("Cannot open {}: {}", path, std::strerror(errno)));
  lines.clear();
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(std::move(line));
  }
  if (in.bad()) return Status::error(fmt::format("Cannot read {}", path));
  return Status::ok();
}

Status KeywordFileReader::open(const std::string& path) {
  path_ = path;
  nextLine_ = 0;
  lineNumber_ = 0;
  return readLines(path, lines_);
}

bool KeywordFileReader::next(CsvRow& row) {
  while (nextLine_ < lines_.size()) {
    const std::string& line = lines_[nextLine_++];
    if (line.find_first_not_of(" \t") == std::string::npos) continue;
    row = CsvRow::parse(line);
    lineNumber_ = static_cast<int>(nextLine_);
    return true;
  }
  lineNumber_ = static_cast<int>(lines_.size()) + 1;
  return false;
}

std::string KeywordFileReader::where(std::string_view what) const {
  return fmt::format("{}, line {}: {}", path_, lineNumber_, what);
}

}  // namespace subsurf
