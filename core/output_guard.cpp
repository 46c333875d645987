#include "core/output_guard.h"

#include <sys/stat.h>

#include <fstream>

#include <fmt/format.h>

#include "core/session_files.h"
#include "core/split_manifest.h"
#include "core/split_report.h"
#include "host/fixed_text.h"

namespace subsurf::split {
namespace {

constexpr std::string_view kSessionHead = "version,";
constexpr std::string_view kMarkedSessionHead = "\xEF\xBB\xBFversion,";  // after a byte-order mark

bool isPlainFileName(std::string_view name) {
  return name.find_first_of("/\\") == std::string_view::npos && name.find("..") == std::string_view::npos;
}

Status checkName(std::string_view sessionFile, std::string_view keyword, const std::string& value) {
  const std::string name = trimBlanks(value);
  if (isPlainFileName(name)) return Status::ok();
  return Status::error(fmt::format(
      "{}: \"{}\" \"{}\" is refused: it must be a file name, without \"/\", \"\\\" or \"..\", so that nothing is "
      "written outside the output folder",
      sessionFile, keyword, name));
}

// True when path is missing, empty or not a regular file (which the writer
// itself handles), or when it begins with the text this run writes first.
bool beginsAs(const std::string& path, std::string_view head) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode) || st.st_size == 0) return true;
  std::ifstream in(path, std::ios::binary);
  std::string first(head.size(), '\0');
  in.read(first.data(), static_cast<std::streamsize>(first.size()));
  return in && first == head;
}

}  // namespace

Status checkSessionOutputNames(const SessionOptions& session, std::string_view sessionFile,
                               bool reportNamedElsewhere) {
  if (session.override == 1) {
    if (Status s = checkName(sessionFile, "rootname", session.rootName); !s) return s;
  }
  if (session.doReport == 1 && !reportNamedElsewhere) {
    if (Status s = checkName(sessionFile, "report_root", session.reportRoot); !s) return s;
  }
  return Status::ok();
}

Status checkReportReplaceable(const std::string& path) {
  if (beginsAs(path, kReportTitle)) return Status::ok();
  return Status::error(
      fmt::format("{} is not a table of clipping depths; it is left as it is (name another report file)", path));
}

Status checkManifestReplaceable(const std::string& path) {
  if (beginsAs(path, kManifestHeader)) return Status::ok();
  return Status::error(
      fmt::format("{} is not a split manifest; it is left as it is (name another manifest file)", path));
}

Status checkSessionReplaceable(const std::string& path) {
  if (beginsAs(path, kSessionHead) || beginsAs(path, kMarkedSessionHead))
    return Status::ok();
  return Status::error(
      fmt::format("{} is not a session file; it is left as it is (name another session file)", path));
}

}  // namespace subsurf::split
