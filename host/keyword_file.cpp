#include "host/keyword_file.h"

#include <cerrno>
#include <cstring>
#include <cstdio>
#include <memory>

#include <fmt/format.h>

namespace subsurf {

Status readLines(const std::string& path, std::vector<std::string>& lines) {
  lines.clear();
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) return Status::error(fmt::format("Cannot open {}: {}", path, std::strerror(errno)));
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> closer(file, std::fclose);
  std::string line;
  std::size_t total = 0;
  char buffer[1 << 14];
  bool atStart = true;
  auto endLine = [&] {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(std::move(line));
    line.clear();
  };
  for (;;) {
    const std::size_t n = std::fread(buffer, 1, sizeof buffer, file);
    if (n == 0) break;
    total += n;
    // A device or a runaway file (/dev/zero, a photograph given by mistake)
    // is refused before it fills the memory.
    if (total > kMaxTextFileBytes) {
      lines.clear();
      return Status::error(fmt::format("{}: larger than {} bytes, not read", path, kMaxTextFileBytes));
    }
    std::string_view chunk(buffer, n);
    // The byte-order mark spreadsheets and Windows editors put first.
    if (atStart && chunk.starts_with(kUtf8ByteOrderMark)) chunk.remove_prefix(kUtf8ByteOrderMark.size());
    atStart = false;
    while (!chunk.empty()) {
      const std::size_t end = chunk.find('\n');
      line.append(chunk.substr(0, end));
      // The carriage return of a Windows line ending is not part of the line.
      const bool returnLast = !line.empty() && line.back() == '\r';
      if (line.size() - (returnLast ? 1 : 0) > kMaxTextLineBytes) {
        const std::size_t number = lines.size() + 1;
        lines.clear();
        return Status::error(
            fmt::format("{}, line {}: longer than {} bytes, not read", path, number, kMaxTextLineBytes));
      }
      if (end == std::string_view::npos) break;
      endLine();
      chunk.remove_prefix(end + 1);
    }
  }
  if (std::ferror(file)) {
    lines.clear();
    return Status::error(fmt::format("Cannot read {}: {}", path, std::strerror(errno)));
  }
  if (!line.empty()) endLine();
  return Status::ok();
}

bool readBoundedLine(std::istream& in, std::string& line, bool& tooLong) {
  tooLong = false;
  line.clear();
  // Room for the longest line allowed and the carriage return of a Windows
  // line end; istream::getline stops there instead of growing a string.
  constexpr std::streamsize kRoom = static_cast<std::streamsize>(kMaxTextLineBytes) + 2;
  thread_local std::unique_ptr<char[]> buffer(new char[kRoom]);
  in.getline(buffer.get(), kRoom);
  const std::streamsize got = in.gcount();
  const bool tookLineBreak = !in.fail() && !in.eof();
  if (in.fail() && !in.eof()) {  // no room left before a line break
    tooLong = got > 0;
    return false;
  }
  if (got == 0) return false;  // the end of the stream
  line.assign(buffer.get(), static_cast<std::size_t>(tookLineBreak ? got - 1 : got));
  if (!line.empty() && line.back() == '\r') line.pop_back();
  if (line.size() > kMaxTextLineBytes) {
    tooLong = true;
    in.setstate(std::ios::failbit);
    return false;
  }
  if (in.fail()) in.clear(std::ios::eofbit);  // a last line without a line break
  return true;
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
