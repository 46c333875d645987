#include "host/number_text.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>

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
  // Compared before negating: the smallest int has no positive counterpart.
  const int digits = code < -15 ? 15 : -code;
  std::string s = fmt::format("{:.{}g}", value, digits);
  if (s == "-0") s = "0";
  return s;
}

namespace {

// 10^k for k = 0..22, every one exactly a double.
constexpr double kExactPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                        1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                        1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// |value| * 10^k with a single rounding, or 0 where 10^|k| is not exact.
double scaledByPowerOfTen(double value, int k) {
  if (k > 22 || k < -22) return 0.0;
  return k >= 0 ? value * kExactPowersOfTen[k] : value / kExactPowersOfTen[-k];
}

// The six significant digits of |v| (100000..999999) and the decimal exponent
// of the first, rounded to nearest; false when that cannot be told safely.
// Scaling a float (24 bits) into [1e5, 1e6) by an exact power of ten rounds
// once, by at most 2^-33; the digits are certain unless the scaled value lies
// within far more than that of a half.
bool sixDigits(double v, int& digits, int& exponent) {
  // From the binary exponent: v in [2^b, 2^(b+1)) puts the decimal exponent at
  // floor(b log10 2) or one above it.
  // (Both scalings are made and one kept: which one is hard to predict, and a
  // wrong guess costs more than the arithmetic.)
  // floor(b log10 2) as (b * 78913) >> 18, exact for |b| < 1700.
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  const int b = static_cast<int>((bits >> 52) & 0x7ff) - 1023;  // v is normal: it came from a float
  int e = (b * 78913) >> 18;
  const double low = scaledByPowerOfTen(v, 5 - e);
  const double high = scaledByPowerOfTen(v, 4 - e);
  const bool above = low >= 1e6;
  const double s = above ? high : low;
  e += above ? 1 : 0;
  if (s < 1e5 || s >= 1e6) return false;
  const double whole = static_cast<double>(static_cast<int>(s));  // s > 0
  const double fraction = s - whole;  // exact: s < 2^20
  if (std::fabs(fraction - 0.5) < 1e-6) return false;
  digits = static_cast<int>(whole) + (fraction > 0.5 ? 1 : 0);
  if (digits == 1000000) {
    digits = 100000;
    ++e;
  }
  exponent = e;
  return true;
}

}  // namespace

void appendGeneralFloat(std::string& out, float value) {
  const double v = static_cast<double>(value);
  if (v == 0.0) {
    out += std::signbit(v) ? "-0" : "0";
    return;
  }
  int digits = 0;
  int exponent = 0;
  if (!std::isfinite(v) || !sixDigits(std::fabs(v), digits, exponent)) {
    fmt::format_to(std::back_inserter(out), "{:g}", value);
    return;
  }
  // Two halves of three digits each, so that the divisions do not wait on
  // one another.
  const int high = digits / 1000, low = digits % 1000;
  const char six[6] = {static_cast<char>('0' + high / 100), static_cast<char>('0' + high / 10 % 10),
                       static_cast<char>('0' + high % 10),  static_cast<char>('0' + low / 100),
                       static_cast<char>('0' + low / 10 % 10), static_cast<char>('0' + low % 10)};
  int used = 6;  // significant digits left once trailing zeros go
  while (used > 1 && six[used - 1] == '0') --used;

  // At most "-0.000" + six digits, or "-d.ddddde-xx".
  char text[16];
  int n = 0;
  if (v < 0.0) text[n++] = '-';
  if (exponent >= -4 && exponent < 6) {
    if (exponent < 0) {
      text[n++] = '0';
      text[n++] = '.';
      for (int i = -1; i > exponent; --i) text[n++] = '0';
      for (int i = 0; i < used; ++i) text[n++] = six[i];
    } else {
      const int whole = exponent + 1;
      for (int i = 0; i < whole; ++i) text[n++] = six[i];
      if (used > whole) {
        text[n++] = '.';
        for (int i = whole; i < used; ++i) text[n++] = six[i];
      }
    }
  } else {
    text[n++] = six[0];
    if (used > 1) {
      text[n++] = '.';
      for (int i = 1; i < used; ++i) text[n++] = six[i];
    }
    text[n++] = 'e';
    text[n++] = exponent < 0 ? '-' : '+';
    const int magnitude = exponent < 0 ? -exponent : exponent;  // below 100 for a float
    text[n++] = static_cast<char>('0' + magnitude / 10);
    text[n++] = static_cast<char>('0' + magnitude % 10);
  }
  out.append(text, static_cast<std::size_t>(n));
}

bool parseInteger(std::string_view text, int& out) { return parseWhole(text, out); }
bool parseReal(std::string_view text, double& out) { return parseWhole(text, out); }
bool parseReal(std::string_view text, float& out) { return parseWhole(text, out); }

}  // namespace subsurf
