#include "host/paths.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "host/fixed_text.h"

namespace subsurf {
namespace {

namespace fs = std::filesystem;

std::string env(const char* name) {
  const char* v = std::getenv(name);
  return v && *v ? std::string(v) : std::string();
}

std::string deflibFolder() {
  if (auto v = env("SUBSURF_DEFLIB"); !v.empty()) return v;
  std::error_code ec;
#ifdef SUBSURF_SOURCE_DATA_DIR
  if (fs::is_directory(SUBSURF_SOURCE_DATA_DIR, ec)) return SUBSURF_SOURCE_DATA_DIR;
#endif
#ifdef SUBSURF_INSTALL_DATA_DIR
  return SUBSURF_INSTALL_DATA_DIR;
#else
  return "/usr/local/share/subsurf";
#endif
}

std::string userlibFolder() {
  if (auto v = env("SUBSURF_USERLIB"); !v.empty()) return v;
  if (auto v = env("XDG_DATA_HOME"); !v.empty()) return (fs::path(v) / "subsurf").string();
  if (auto v = env("HOME"); !v.empty()) return (fs::path(v) / ".local/share/subsurf").string();
  return (fs::temp_directory_path() / "subsurf-user").string();
}

std::string tempFolder() {
  if (auto v = env("SUBSURF_TEMP"); !v.empty()) return v;
  if (auto v = env("TMPDIR"); !v.empty()) return v;
  return "/tmp";
}

std::string tempdirFolder() {
  if (auto v = env("SUBSURF_TEMPDIR"); !v.empty()) return v;
  return (fs::path(tempFolder()) / "subsurf").string();
}

std::string helpFolder() {
  if (auto v = env("SUBSURF_HELPPATH"); !v.empty()) return v;
  return (fs::path(deflibFolder()) / "help").string();
}

}  // namespace

std::string logicalFolder(std::string_view prefix) {
  const std::string p = lowerCase(trimBlanks(prefix));
  if (p == "deflib:") return deflibFolder();
  if (p == "userlib:") return userlibFolder();
  if (p == "temp:") return tempFolder();
  if (p == "tempdir:") return tempdirFolder();
  if (p == "helppath:") return helpFolder();
  return {};
}

std::string resolvePath(std::string_view logicalName) {
  const std::string name = trimBlanks(logicalName);
  const auto colon = name.find(':');
  // A single letter before the colon is a drive, not a prefix.
  if (colon == std::string::npos || colon < 2) return name;
  const std::string folder = logicalFolder(std::string_view(name).substr(0, colon + 1));
  if (folder.empty()) return name;
  std::string rest = name.substr(colon + 1);
  while (!rest.empty() && (rest.front() == '/' || rest.front() == '\\')) rest.erase(0, 1);
  if (rest.empty()) return folder;
  return (fs::path(folder) / rest).string();
}

std::string makeFileName(std::string_view location, std::string_view name, std::string_view type) {
  std::string file = trimBlanks(name);
  const std::string ext = trimBlanks(type);
  if (!ext.empty()) file += "." + ext;
  const std::string loc = trimBlanks(location);
  if (loc.empty()) return file;
  return (fs::path(resolvePath(loc)) / file).string();
}

bool ensureParentFolder(const std::string& file) {
  const fs::path parent = fs::path(file).parent_path();
  if (parent.empty()) return true;
  std::error_code ec;
  fs::create_directories(parent, ec);
  return fs::is_directory(parent, ec);
}

bool fileExists(const std::string& path) {
  std::error_code ec;
  return fs::is_regular_file(path, ec);
}

}  // namespace subsurf
