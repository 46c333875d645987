#include "host/number_text.h"

#include <charconv>
#include <cmath>

#include <fmt/format.h>

#include "host/fixed_text.h"
#include "host/nulls.h"

namespace subsurf {
namespace {

template <typename T>
bool parseWhole(std::string_view text, T& out) {
  std::string t = trimBlanks(text);
  if (t.empty()) return false;
  const char* first = t.data();
  const char* last = t.data() + t.size();
  if (*first == '+') ++first;
  T value{};
  auto [ptr, ec] = std::from_chars(first, last, value);
  if (ec != std::errc() || ptr != last) return false;
  out = value;
  return true;
}

}  // namespace

std::string formatReal(double value, int code) {
  if (isNull(value) || isNull(static_cast<float>(value))) return {};
  if (std::isnan(value)) return "NaN";
  if (code >= 0) return fmt::format("{:.{}f}", value, code > 15 ? 15 : code);
  int digits = -code;
  if (digits > 15) digits = 15;
  std::string s = fmt::format("{:.{}g}", value, digits);
  if (s == "-0") s = "0";
  return s;
}

bool parseInteger(std::string_view text, int& out) { return parseWhole(text, out); }
bool parseReal(std::string_view text, double& out) { return parseWhole(text, out); }
bool parseReal(std::string_view text, float& out) { return parseWhole(text, out); }

}  // namespace subsurf
