// Fixed-width, blank-padded text fields, as held in records and passed across
// the C interface (unit names 16 characters, series names 20, text values 40,
// file names 260). An unavailable text is all blanks.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace subsurf {

// Copies text into a field of the given width: cut when longer, blank-padded when shorter.
inline void setFixed(char* field, std::size_t width, std::string_view text) {
  const std::size_t n = std::min(width, text.size());
  std::memcpy(field, text.data(), n);
  std::memset(field + n, ' ', width - n);
}

template <std::size_t N>
inline void setFixed(char (&field)[N], std::string_view text) { setFixed(field, N, text); }

inline void blankFixed(char* field, std::size_t width) { std::memset(field, ' ', width); }

// The field's text without its trailing blanks (and without anything after a NUL,
// which callers from C sometimes leave in a field).
inline std::string fixedText(const char* field, std::size_t width) {
  std::size_t n = 0;
  while (n < width && field[n] != '\0') ++n;
  while (n > 0 && field[n - 1] == ' ') --n;
  return std::string(field, n);
}

template <std::size_t N>
inline std::string fixedText(const char (&field)[N]) { return fixedText(field, N); }

// The text without the blanks, tabs and line ends around it.
inline std::string_view trimmedBlanks(std::string_view s) {
  std::size_t b = 0, e = s.size();
  while (b < e && (s[b] == ' ' || s[b] == '\t' || s[b] == '\r' || s[b] == '\n')) ++b;
  while (e > b && (s[e - 1] == ' ' || s[e - 1] == '\t' || s[e - 1] == '\r' || s[e - 1] == '\n')) --e;
  return s.substr(b, e - b);
}

inline std::string trimBlanks(std::string_view s) { return std::string(trimmedBlanks(s)); }

inline std::string lowerCase(std::string_view s) {
  std::string out(s);
  for (char& c : out) if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return out;
}

}  // namespace subsurf
