// Value text: how a real value is shown in an entry field and read back.
//
// Shown form: the number, and when the record's relative error is set, its
// uncertainty in percent:
//     "1234.5"          a depth, no uncertainty
//     "12.5 +/- 3%"     relative error 0.03
// When that does not fit the record's text (20 characters for a real, 32 for a
// double) the blanks around "+/-" are dropped, and failing that the uncertainty.
//
// Number format, from the record's format word FMT:
//   FMT >= 0   that many decimals ("12.50" for 2).
//   FMT < 0    at least |FMT| significant digits: numbers below 10^(|FMT|-1)
//              show |FMT| significant digits (FMT -4: 0.01235, 12.35, 123.5);
//              numbers with |FMT| or more whole digits keep every whole digit
//              and one decimal, trailing zeros dropped (1234.5 stays "1234.5",
//              2500 shows "2500", 12345.67 shows "12345.7"). Depths, the
//              commonest values, thus keep their tenths, which users read and
//              type. From 1e7 (1e12 for doubles) up, where a single-precision
//              value no longer holds its units digit, and for tiny numbers,
//              general notation with |FMT| digits ("1.5e+07").
// A number that would not fit the text at all is shown with fewer significant
// digits (at most 7) instead of being cut.
// The uncertainty shows 3 significant digits without trailing zeros.
// A null value shows as an empty text (or "()" in output-only texts).
//
// Reading a text back:
//   * blank or "()" gives the null value (and no uncertainty);
//   * otherwise the text is searched for an uncertainty marker, first "+/-",
//     then "+-", then "e=" (also "E="); the text after it, with a "%" and what
//     follows removed, is the error in percent;
//   * the text before the marker is the value, optionally followed by a unit
//     name of the record's series ("1234.5 m", "20degc"): the value is then
//     converted into the record's unit (a record without a unit adopts it);
//   * a number that cannot be read is "Invalid number!", a unit name that is
//     not one of the series' is "Invalid unit!", both shown to the user.
// Without a marker the relative error becomes null: the text is the whole truth.
#pragma once

#include <string>
#include <string_view>

#include "host/status.h"
#include "subsurf/scalars.h"

namespace subsurf {

inline constexpr const char* kInvalidNumber = "Invalid number!";
inline constexpr const char* kInvalidUnit = "Invalid unit!";

// The number as it is shown under a format word (empty for the null).
std::string formatValue(float value, int format);
std::string formatValue(double value, int format);
// The shown text of a value and a relative error (fraction; null for none),
// fitted into width characters.
std::string valueText(double value, bool single, int format, double relativeError, std::size_t width);

// Refresh the display text from the value and the relative error.
void setDisplayText(DT_RSCA& rec);
void setDisplayText(DT_DSCA& rec);
// The same for texts that are only shown: a null value shows as "()".
void setOutputText(DT_RSCA& rec);
void setOutputText(DT_DSCA& rec);

// A text split at its uncertainty marker.
struct ValueTextParts {
  std::string number;       // the text before the marker (or all of it), trimmed
  std::string uncertainty;  // after the marker, "%" and what follows removed, trimmed
  bool hasUncertainty = false;
};
ValueTextParts splitValueText(std::string_view text);

// Reads text into the record's value and relative error (the display text is
// then rebuilt). On failure the message is shown, the value is left alone, the
// display text is rebuilt from it, and the returned status carries the message.
Status readDisplayText(DT_RSCA& rec, std::string_view text);
Status readDisplayText(DT_DSCA& rec, std::string_view text);
// Reads the record's own display text back.
Status readDisplayText(DT_RSCA& rec);
Status readDisplayText(DT_DSCA& rec);

// Integer value text: blank for the null; read back with blank or "()" giving
// the null, anything but a whole number being "Invalid number!".
std::string integerText(const DT_ISCA& rec);
Status readIntegerText(DT_ISCA& rec, std::string_view text);

// Percent-like unit names: the factor that turns values in them into fractions
// ("%", "pu", "p.u." 0.01; "fr", "v/v", "-" 1), compared in lower case. 0 when
// the name is not percent-like.
float percentUnitFactor(std::string_view unitName);

// The factor that turns a set of values into fractions, deciding from the values
// when the unit name is not percent-like. Values of magnitude 9.0e19 or more are
// skipped; with none left the factor is 1 and the unit stays. Of the rest, those
// in -4..60 are averaged: none there means percentages (0.01, unit unchanged);
// an average up to 0.8 means fractions (unit becomes "fr", factor 1); above it
// percentages (unit becomes "%", factor 0.01). newUnit is empty when the unit
// is to stay as it is.
struct PercentDecision {
  float factor = 1.0f;
  std::string newUnit;
};
PercentDecision percentFactor(std::string_view unitName, const float* values, int count);

}  // namespace subsurf
