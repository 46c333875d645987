#include "core/split_naming.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

#include "host/fixed_text.h"

namespace subsurf::split {

std::string fixedField(double value, int width, int decimals) {
  if (decimals < 0) decimals = 0;
  if (decimals > 9) decimals = 9;
  double scale = 1.0;
  for (int i = 0; i < decimals; ++i) scale *= 10.0;
  // Depths are single-precision reals: multiplied by 10^3 or less they are
  // still exact in a double, so the rounding below sees the stored value itself
  // and a value lying exactly half way (1234.125 to two decimals) goes up, as
  // a user reading the number expects.
  const double scaled = std::round(value * scale);
  std::string text;
  if (!std::isfinite(scaled) || std::fabs(scaled) >= 9.0e18) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*f", decimals, value);
    text = buf;
  } else {
    const bool negative = scaled < 0;
    const auto units = static_cast<std::uint64_t>(std::fabs(scaled));
    const auto divisor = static_cast<std::uint64_t>(scale);
    char buf[64];
    if (decimals > 0) {
      std::snprintf(buf, sizeof buf, "%s%llu.%0*llu", negative ? "-" : "",
                    static_cast<unsigned long long>(units / divisor), decimals,
                    static_cast<unsigned long long>(units % divisor));
    } else {
      std::snprintf(buf, sizeof buf, "%s%llu", negative ? "-" : "", static_cast<unsigned long long>(units));
    }
    text = buf;
  }
  if (static_cast<int>(text.size()) < width) text.insert(0, static_cast<std::size_t>(width) - text.size(), ' ');
  return text;
}

std::string depthText(float top, float base, int precisionOption) {
  const bool fine = precisionOption == kPrecisionMillimetre;
  const int width = fine ? 9 : 8;
  const int decimals = fine ? 3 : 2;
  std::string text = fixedField(top, width, decimals) + "-" + fixedField(base, width, decimals);
  for (char& c : text) {
    if (c == '.') c = '_';
    else if (c == ' ') c = '0';
  }
  return text;
}

std::size_t fileNameStart(std::string_view path) {
  const std::size_t sep = path.find_last_of("/\\");
  return sep == std::string_view::npos ? 0 : sep + 1;
}

std::string fileStub(std::string_view sourcePath) {
  std::string_view name = sourcePath.substr(fileNameStart(sourcePath));
  const std::size_t dot = name.find('.');
  if (dot != std::string_view::npos) name = name.substr(0, dot);
  return trimBlanks(name);
}

std::string folderOf(std::string_view sourcePath) {
  return std::string(sourcePath.substr(0, fileNameStart(sourcePath)));
}

std::string_view lightTag(int uvSetting) { return uvSetting == 1 ? "UV" : "WL"; }

bool parseRowFormat(std::string_view text, RowFormat& out) {
  const std::string t = trimBlanks(text);
  if (t.empty() || t.find_first_of("./\\") != std::string::npos) return false;
  const auto format = image::formatForFileName("row." + t);
  if (!format) return false;
  out = *format;
  return true;
}

std::string joinFolder(std::string_view folder, std::string_view name) {
  std::string out(folder);
  if (!out.empty() && out.back() != '/' && out.back() != '\\') out += '/';
  out += name;
  return out;
}

std::string outputStub(std::string_view sourcePath, const NamingOptions& options) {
  if (options.useRootName) {
    std::string root = trimBlanks(options.rootName);
    if (!root.empty()) return root;
  }
  return fileStub(sourcePath);
}

std::string outputFolderFor(std::string_view sourcePath, const NamingOptions& options) {
  if (options.outputBesidePhoto) return folderOf(sourcePath);
  return trimBlanks(options.outputFolder);
}

std::string rowImageName(std::string_view sourcePath, int uvSetting, float top, float base,
                         const NamingOptions& options) {
  const std::string stub = outputStub(sourcePath, options);
  const std::string_view tag = lightTag(uvSetting);
  std::string name = stub;
  // A photograph already named "..._UV" (or "..._WL") is not tagged twice.
  if (stub.find(tag) == std::string::npos) {
    name += '_';
    name += tag;
  }
  name += '_';
  name += depthText(top, base, options.precisionOption);
  name += image::formatSuffix(options.format);
  return joinFolder(outputFolderFor(sourcePath, options), name);
}

}  // namespace subsurf::split
