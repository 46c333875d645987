#include "host/settings.h"

#include <cctype>
#include <cstdlib>

#include "host/fixed_text.h"
#include "host/keyword_file.h"
#include "host/paths.h"

namespace subsurf {

std::string settingsFile() { return resolvePath("userlib:settings.cfg"); }

std::optional<std::string> setting(std::string_view key) {
  const std::string k = lowerCase(trimBlanks(key));
  if (k.empty()) return std::nullopt;
  std::string var = "SUBSURF_";
  for (char c : k) var.push_back(std::isalnum(static_cast<unsigned char>(c)) ? static_cast<char>(std::toupper(c)) : '_');
  if (const char* v = std::getenv(var.c_str())) return std::string(v);

  KeywordFileReader reader;
  if (!reader.open(settingsFile())) return std::nullopt;
  CsvRow row;
  while (reader.next(row)) {
    if (lowerCase(row.field(1)) == k) return row.field(2);
  }
  return std::nullopt;
}

}  // namespace subsurf
