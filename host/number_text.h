// Number text: how values are shown to users and read back from what they type.
#pragma once

#include <string>
#include <string_view>

namespace subsurf {

// Format codes (the format word of real scalars uses the same codes):
//   code >= 0     fixed notation with that many decimals ("12.50" for 2);
//   code -1..-15  general notation with |code| significant digits and no trailing
//                 zeros ("0.1", "1234.5", "1.5e+07"); -6 is the compact form used
//                 for most displays, -4 the default of a real setting.
// Nulls are shown as an empty text.
std::string formatReal(double value, int code);
// General notation with about 6 significant digits and no trailing zeros.
inline std::string formatCompact(double value) { return formatReal(value, -6); }

// Appends a single-precision value in general notation with six significant
// digits and no trailing zeros, exactly as printf's "%g" (and fmt's "{:g}")
// writes it: "8180.34", "0.000303463", "1.5e+07", "-0". Nulls are not special
// here. Meant for tables of millions of values: the usual case takes a few
// arithmetic steps, and only a value lying within a hair of a rounding tie
// goes through the general formatter.
void appendGeneralFloat(std::string& out, float value);

// Read a whole text (surrounding blanks allowed) as a number; false when it is not one.
bool parseInteger(std::string_view text, int& out);
bool parseReal(std::string_view text, double& out);
bool parseReal(std::string_view text, float& out);

}  // namespace subsurf
