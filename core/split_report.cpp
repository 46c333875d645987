#include "core/split_report.h"

#include "core/split_naming.h"
#include "host/csv_row.h"

namespace subsurf::split {

namespace {
// Text from a session (a photograph's path, a name made from it) as one field
// of the table: quoted, quotes doubled, when it holds what would end the
// field or the line.
void appendField(std::string& line, std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) line += text;
  else appendQuotedCsvField(line, text);
}
}  // namespace

std::vector<std::string> reportHeaderLines() {
  return {std::string(kReportTitle), std::string(kReportColumns)};
}

std::string reportSourceLine(std::string_view sourcePath) {
  std::string line(kReportSourcePrefix);
  appendField(line, sourcePath);
  return line;
}

std::string reportDepth(float depth) { return fixedField(depth, 10, 3); }

std::string reportRowLine(float top, float base, std::string_view outputName, int style) {
  std::string line = reportDepth(top);
  if (style == kReportStyleFull) {
    line += ", 0, ";
    line += reportDepth(base);
    line += ", 0, , ";
  } else {
    line += ", ";
    line += reportDepth(base);
    line += ", ";
  }
  appendField(line, outputName);
  return line;
}

}  // namespace subsurf::split
