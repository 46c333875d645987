// Keyword files: text files of comma-separated records whose first field is a
// keyword. Tools keep their sessions, templates and settings in them.
//
// Reading loads the whole file (they are small) and hands out records with
// their line numbers, so a fault can be reported as "file, line N". Writing goes
// through AtomicFile: the target is replaced only when the whole file is written.
#pragma once

#include <istream>
#include <string>
#include <string_view>
#include <vector>

#include "host/atomic_file.h"
#include "host/csv_row.h"
#include "host/status.h"

namespace subsurf {

class KeywordFileReader {
 public:
  Status open(const std::string& path);
  // The next non-blank record; false at the end of the file.
  bool next(CsvRow& row);
  // Line number (from 1) of the record last returned by next().
  int lineNumber() const { return lineNumber_; }
  const std::string& path() const { return path_; }
  // "FILE, line N: what" - the form every read error is reported in.
  std::string where(std::string_view what) const;

 private:
  std::string path_;
  std::vector<std::string> lines_;
  std::size_t nextLine_ = 0;
  int lineNumber_ = 0;
};

class KeywordFileWriter {
 public:
  Status open(const std::string& path) { return file_.open(path); }
  void writeRow(const CsvRow& row) { file_.writeLine(row.str()); }
  void writeLine(std::string_view line) { file_.writeLine(line); }
  Status commit() { return file_.commit(); }
  void discard() { file_.discard(); }
  bool isOpen() const { return file_.isOpen(); }

 private:
  AtomicFile file_;
};

// Limits on the text files the programs read (sessions, templates, settings,
// definitions): a line longer than kMaxTextLineBytes or a file larger than
// kMaxTextFileBytes is refused with a message naming the file (and line).
inline constexpr std::size_t kMaxTextLineBytes = std::size_t{1} << 20;   // 1 MiB
inline constexpr std::size_t kMaxTextFileBytes = std::size_t{64} << 20;  // 64 MiB
inline constexpr std::string_view kUtf8ByteOrderMark = "\xEF\xBB\xBF";

// Reads the next line of a stream into `line` (without its line break), as
// std::getline does, but stops at kMaxTextLineBytes: false at the end of the
// stream or, with `tooLong` set, for a longer line (the stream is then left
// failed). For files read a line at a time, such as a batch of cases.
bool readBoundedLine(std::istream& in, std::string& line, bool& tooLong);

// Reads every line of a text file (without line breaks, and without the
// byte-order mark an editor may put first), within the limits above.
Status readLines(const std::string& path, std::vector<std::string>& lines);

}  // namespace subsurf
