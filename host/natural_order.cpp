#include "host/natural_order.h"

#include <cctype>

namespace subsurf {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
int lower(char c) { return std::tolower(static_cast<unsigned char>(c)); }

// Compares the digit runs starting at i and j by value; advances both past them.
int compareNumbers(std::string_view a, std::size_t& i, std::string_view b, std::size_t& j) {
  while (i < a.size() && a[i] == '0') ++i;
  while (j < b.size() && b[j] == '0') ++j;
  const std::size_t si = i, sj = j;
  while (i < a.size() && isDigit(a[i])) ++i;
  while (j < b.size() && isDigit(b[j])) ++j;
  const std::size_t la = i - si, lb = j - sj;
  if (la != lb) return la < lb ? -1 : 1;
  const int c = a.substr(si, la).compare(b.substr(sj, lb));
  return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

}  // namespace

bool naturalLess(std::string_view a, std::string_view b) {
  std::size_t i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (isDigit(a[i]) && isDigit(b[j])) {
      const int c = compareNumbers(a, i, b, j);
      if (c != 0) return c < 0;
      continue;
    }
    const int ca = lower(a[i]), cb = lower(b[j]);
    if (ca != cb) return ca < cb;
    ++i;
    ++j;
  }
  if ((i < a.size()) != (j < b.size())) return j < b.size();
  return a < b;
}

}  // namespace subsurf
