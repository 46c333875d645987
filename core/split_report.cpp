#include "core/split_report.h"

#include "core/split_naming.h"

namespace subsurf::split {

std::vector<std::string> reportHeaderLines() {
  return {std::string(kReportTitle), std::string(kReportColumns)};
}

std::string reportSourceLine(std::string_view sourcePath) {
  std::string line(kReportSourcePrefix);
  line += sourcePath;
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
  line += outputName;
  return line;
}

}  // namespace subsurf::split
