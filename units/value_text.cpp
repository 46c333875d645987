#include "units/value_text.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "host/number_text.h"
#include "units/scalar_units.h"
#include "units/units_registry.h"

namespace subsurf {
namespace {

// Above these magnitudes the units digit of a value is no longer exact in the
// record's precision, so whole digits are not worth spelling out.
constexpr double kSingleWholeDigitsLimit = 1.0e7;
constexpr double kDoubleWholeDigitsLimit = 1.0e12;

std::string formatNumber(double value, int format, bool single) {
  if (isNull(value) || isNull(static_cast<float>(value))) return {};
  if (format >= 0 || !std::isfinite(value)) return formatReal(value, format);
  const int digits = format < -15 ? 15 : -format;  // never negates the smallest int
  const double magnitude = std::fabs(value);
  const double limit = single ? kSingleWholeDigitsLimit : kDoubleWholeDigitsLimit;
  if (magnitude >= std::pow(10.0, digits - 1) && magnitude < limit) {
    std::string s = fmt::format("{:.1f}", value);
    if (s.ends_with(".0")) s.resize(s.size() - 2);
    if (s == "-0") s = "0";
    return s;
  }
  return formatReal(value, format);
}

bool hasRelativeError(double relativeError) {
  return std::isfinite(relativeError) && !isNoValue(relativeError);
}

// Position and length of the uncertainty marker, or npos.
std::pair<std::size_t, std::size_t> findMarker(std::string_view text) {
  for (std::string_view marker : {"+/-", "+-"}) {
    const std::size_t at = text.find(marker);
    if (at != std::string_view::npos) return {at, marker.size()};
  }
  for (std::size_t k = 0; k + 1 < text.size(); ++k)
    if ((text[k] == 'e' || text[k] == 'E') && text[k + 1] == '=') return {k, 2};
  return {std::string_view::npos, 0};
}

bool startsUnit(char c) {
  const auto u = static_cast<unsigned char>(c);
  return std::isalpha(u) || c == '%' || u >= 0x80;  // letters, percent, degree signs
}

enum class NumberRead { Ok, BadNumber };

// "1234.5", "1234.5 m", "20degc": the number and an optional unit name after it.
NumberRead readNumberAndUnit(std::string_view text, bool single, double& value, std::string& unit) {
  const std::string t = trimBlanks(text);
  const char* first = t.data();
  const char* last = t.data() + t.size();
  if (first != last && *first == '+') ++first;
  double v = 0.0;
  const auto [ptr, ec] = std::from_chars(first, last, v);
  if (ec != std::errc() || ptr == first || !std::isfinite(v)) return NumberRead::BadNumber;
  if (single && std::fabs(v) > std::numeric_limits<float>::max()) return NumberRead::BadNumber;
  unit.clear();
  if (ptr != last) {
    const char next = *ptr;
    if (next != ' ' && next != '\t' && !startsUnit(next)) return NumberRead::BadNumber;  // "12,5", "1.2.3"
    unit = trimBlanks(std::string_view(ptr, static_cast<std::size_t>(last - ptr)));
  }
  value = v;
  return NumberRead::Ok;
}

Status fail(const char* message) {
  host::showMessage(message);
  return Status::error(message);
}

template <typename R>
Status readInto(R& rec, std::string_view text) {
  using Value = decltype(rec.V);
  constexpr bool single = std::is_same_v<Value, float>;
  const Value null = single ? Value(kRealNull) : Value(kDoubleNull);
  const std::string t = trimBlanks(text);
  if (t.empty() || t == "()") {
    rec.V = null;
    rec.RELERR = null;
    setDisplayText(rec);
    return Status::ok();
  }

  const ValueTextParts parts = splitValueText(t);
  double value = 0.0;
  std::string unit;
  if (readNumberAndUnit(parts.number, single, value, unit) != NumberRead::Ok) {
    setDisplayText(rec);
    return fail(kInvalidNumber);
  }
  int iun = 0;
  if (!unit.empty()) {
    // An entry field takes a unit as people type it: other names too ("psi", "cc").
    iun = unitsRegistry().findTypedUnit(rec.VU.ISER, unit).iun;
    if (iun < 1) {
      setDisplayText(rec);
      return fail(kInvalidUnit);
    }
  }
  double percent = 0.0;
  if (parts.hasUncertainty && !parseReal(parts.uncertainty, percent)) {
    setDisplayText(rec);
    return fail(kInvalidNumber);
  }

  rec.RELERR = parts.hasUncertainty ? Value(percent / 100.0) : null;
  if (iun >= 1)
    setValueIn(rec, iun, Value(value));  // converts into the record's unit and refreshes the text
  else
    rec.V = Value(value);
  setDisplayText(rec);
  return Status::ok();
}

}  // namespace

std::string formatValue(float value, int format) { return formatNumber(value, format, true); }
std::string formatValue(double value, int format) { return formatNumber(value, format, false); }

std::string valueText(double value, bool single, int format, double relativeError, std::size_t width) {
  std::string number = formatNumber(value, format, single);
  // A number too long for the field (many decimals of a large value) is shown
  // with fewer significant digits rather than cut.
  for (int digits = 7; number.size() > width && digits >= 1; --digits) number = formatReal(value, -digits);
  if (number.empty() || !hasRelativeError(relativeError)) return number;
  const std::string percent = formatReal(relativeError * 100.0, -3) + "%";
  for (const std::string& text : {number + " +/- " + percent, number + "+/-" + percent})
    if (text.size() <= width) return text;
  return number;
}

void setDisplayText(DT_RSCA& rec) {
  setFixed(rec.CHU, valueText(rec.V, true, rec.FMT, rec.RELERR, sizeof rec.CHU));
}

void setDisplayText(DT_DSCA& rec) {
  setFixed(rec.CHU, valueText(rec.V, false, rec.FMT, rec.RELERR, sizeof rec.CHU));
}

void setOutputText(DT_RSCA& rec) {
  if (isNull(rec.V))
    setFixed(rec.CHU, "()");
  else
    setDisplayText(rec);
}

void setOutputText(DT_DSCA& rec) {
  if (isNull(rec.V))
    setFixed(rec.CHU, "()");
  else
    setDisplayText(rec);
}

ValueTextParts splitValueText(std::string_view text) {
  ValueTextParts parts;
  const auto [at, length] = findMarker(text);
  if (at == std::string_view::npos) {
    parts.number = trimBlanks(text);
    return parts;
  }
  parts.hasUncertainty = true;
  parts.number = trimBlanks(text.substr(0, at));
  std::string_view after = text.substr(at + length);
  const std::size_t percent = after.find('%');
  if (percent != std::string_view::npos) after = after.substr(0, percent);
  parts.uncertainty = trimBlanks(after);
  return parts;
}

Status readDisplayText(DT_RSCA& rec, std::string_view text) { return readInto(rec, text); }
Status readDisplayText(DT_DSCA& rec, std::string_view text) { return readInto(rec, text); }
Status readDisplayText(DT_RSCA& rec) { return readInto(rec, fixedText(rec.CHU)); }
Status readDisplayText(DT_DSCA& rec) { return readInto(rec, fixedText(rec.CHU)); }

std::string integerText(const DT_ISCA& rec) {
  if (isNull(rec.V)) return {};
  return fmt::format("{}", rec.V);
}

Status readIntegerText(DT_ISCA& rec, std::string_view text) {
  const std::string t = trimBlanks(text);
  if (t.empty() || t == "()") {
    rec.V = kIntNull;
    return Status::ok();
  }
  int value = 0;
  if (!parseInteger(t, value)) return fail(kInvalidNumber);
  rec.V = value;
  return Status::ok();
}

float percentUnitFactor(std::string_view unitName) {
  const std::string name = lowerCase(trimBlanks(unitName));
  if (name == "%" || name == "pu" || name == "p.u.") return 0.01f;
  if (name == "fr" || name == "v/v" || name == "-") return 1.0f;
  return 0.0f;
}

PercentDecision percentFactor(std::string_view unitName, const float* values, int count) {
  PercentDecision decision;
  const float known = percentUnitFactor(unitName);
  if (known > 0.0f) {
    decision.factor = known;
    return decision;
  }
  int present = 0, inRange = 0;
  double sum = 0.0;
  for (int k = 0; values && k < count; ++k) {
    const float v = values[k];
    if (isNoValue(v)) continue;
    ++present;
    if (v >= -4.0f && v <= 60.0f) {
      ++inRange;
      sum += v;
    }
  }
  if (present == 0) return decision;  // nothing to judge by
  if (inRange == 0) {
    decision.factor = 0.01f;
    return decision;
  }
  // Averaged in single precision, as the values are held, so that a vector of
  // 0.8 compares equal to the 0.8 bound.
  const float average = static_cast<float>(sum / inRange);
  if (average <= 0.8f) {
    decision.factor = 1.0f;
    decision.newUnit = "fr";
  } else {
    decision.factor = 0.01f;
    decision.newUnit = "%";
  }
  return decision;
}

}  // namespace subsurf
