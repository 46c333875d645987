// Typed scalar records: defaults, copies and small helpers for building them.
//
// The records themselves are the C structures of subsurf/scalars.h (DT_ISCA,
// DT_RSCA, DT_DSCA, DT_CSCA, DT_FSCA); they are owned by whoever declares them,
// usually a tool's module state, and nothing here allocates. Operations that
// involve units (conversion, comparison, min/max) are in scalar_units.h, the
// display text in value_text.h and the file rows in keyword_rows.h.
//
// Every record kind has a row key: the code text of a real, double, text or
// file-name scalar, and the first 20-character text (KEY) of an integer scalar.
#pragma once

#include <string>
#include <string_view>

#include "subsurf/scalars.h"

namespace subsurf {

// ---- Defaults -------------------------------------------------------------
// Real and double: value, limits and relative error null; unit (1, -1, blank);
// SET -1; second state 0; format -4; every text blank.
void setDefaults(DT_RSCA& rec);
void setDefaults(DT_DSCA& rec);
// Integer: value and default := vdef, limits stored, SET -1, second state 0, texts blank.
void setDefaults(DT_ISCA& rec, int vmin, int vmax, int vdef);
// Text and file name: value and default := text (cut or blank-padded), SET -1,
// second state 0, other texts blank.
void setDefaults(DT_CSCA& rec, std::string_view text);
void setDefaults(DT_FSCA& rec, std::string_view text);

// ---- Copies ---------------------------------------------------------------
// Main copy: value, display text, unit, SET, second state, code and relative
// error; labels, limits and format of the target stay.
void copyMain(const DT_RSCA& from, DT_RSCA& to);
// Value copy: value, display text, unit and relative error only.
void copyValue(const DT_RSCA& from, DT_RSCA& to);
// Every field between the kinds. Doubles beyond the single range become the
// real null rather than an infinity; the double's extra integer is left alone.
void copyToDouble(const DT_RSCA& from, DT_DSCA& to);
void copyToReal(const DT_DSCA& from, DT_RSCA& to);

// ---- Texts ----------------------------------------------------------------
// The row key, without trailing blanks.
std::string key(const DT_ISCA& rec);
std::string key(const DT_RSCA& rec);
std::string key(const DT_DSCA& rec);
std::string key(const DT_CSCA& rec);
std::string key(const DT_FSCA& rec);
// The code text (for an integer scalar, its 16-character code field).
inline std::string code(const DT_RSCA& rec) { return key(rec); }
inline std::string code(const DT_DSCA& rec) { return key(rec); }
std::string code(const DT_ISCA& rec);

std::string unitName(const DT_UNIT& unit);
std::string label(const DT_RSCA& rec);
std::string label(const DT_DSCA& rec);
std::string label(const DT_ISCA& rec);
std::string description(const DT_RSCA& rec);
std::string displayText(const DT_RSCA& rec);
std::string displayText(const DT_DSCA& rec);
std::string textValue(const DT_CSCA& rec);
std::string textValue(const DT_FSCA& rec);

// Names a record: its key (code), label, description and short text. Empty
// arguments leave blanks.
void labelReal(DT_RSCA& rec, std::string_view code, std::string_view label,
               std::string_view description = {}, std::string_view shortText = {});
void labelDouble(DT_DSCA& rec, std::string_view code, std::string_view label,
                 std::string_view description = {}, std::string_view shortText = {});
void labelInteger(DT_ISCA& rec, std::string_view key, std::string_view label,
                  std::string_view description = {}, std::string_view code = {});
void labelText(DT_CSCA& rec, std::string_view code, std::string_view label, std::string_view description = {});
void labelFileName(DT_FSCA& rec, std::string_view code, std::string_view label,
                   std::string_view description = {});

// Stores a text value; SET takes *state when state is not null.
void setTextValue(DT_CSCA& rec, std::string_view text, const int* state = nullptr);
void setTextValue(DT_FSCA& rec, std::string_view text, const int* state = nullptr);

// Ready-made records: defaults, the key, and for reals the series and unit (by
// name, looked up in the registry) with the value stored as given and the
// display text built.
DT_RSCA makeReal(std::string_view code, int iser, std::string_view unit, float value);
DT_DSCA makeDouble(std::string_view code, int iser, std::string_view unit, double value);
DT_ISCA makeInteger(std::string_view key, int value, int vmin, int vmax);
DT_CSCA makeText(std::string_view code, std::string_view value);
DT_FSCA makeFileName(std::string_view code, std::string_view value);

}  // namespace subsurf
