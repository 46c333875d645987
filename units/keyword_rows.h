// Keyword rows of typed scalars: how each scalar kind is saved in a keyword
// file and read back.
//
// A tool's settings file is a sequence of comma-separated rows whose first field
// is a keyword (subsurf::CsvRow, written with KeywordFileWriter and read with
// KeywordFileReader). The file's own rows ("version", "real scalars", ...) are
// written by the tool that owns the file; each typed scalar contributes one row,
// keyed by its code name. Nested groups of settings show their depth by
// indentation: at level L (1..9) the key is preceded by L-1 blanks.
//
// Row layouts (columns from 1; field 2 is the type tag):
//
//   integer (tag 1)   1 key (KEY, 20)  2 tag  3 V  4 SET  5 second state
//   text (tag 2)      1 key (CODE, 32) 2 tag  3 V (40)  4 SET  5 second state
//                     6 label (20)  7 description (40)  8 default (40)
//   file name (tag 3) as text, with V and default of 260 characters
//   real (tag 4)      1 key (CODE, 16) 2 tag  3 V  4 unit name CU  5 ISER  6 IUN
//                     7 SET  8 second state  9 relative error  10 label (20)
//                     11 description (40)  12 format word
//   double (tag 5)    columns 1..12 as the real row with double values, then
//                     13 the second 32-character text (a date's mask)
//                     14 the extra integer
//
// Texts are written without trailing blanks and quoted by the CsvRow rules
// (always when they start with a blank, so indented keys survive); numbers are
// written in the shortest form that reads back to the same bits, nulls included.
//
// Reading:
//   * the row's tag must be the kind's tag, otherwise nothing is read and the
//     record is unchanged (status 1);
//   * real, double, text and file-name records are first set to their defaults,
//     then filled from the row; fields missing from the end of a row keep their
//     defaults, so a real row ending before column 9 has a null relative error;
//   * an integer row carries no limits or labels, so an integer record keeps its
//     own and takes only the key, the value and the two state words;
//   * the key's indentation is not part of the code;
//   * a unit is saved both by name and by position; on reading, the name wins
//     when it is a unit of the series (positions shift when the definitions file
//     gains units; names do not);
//   * the display text is rebuilt from the value, never taken from the file;
//   * a field that is present but not a number keeps its default (status -1).
//
// Formatted records (writers called with a level of 0 or above 9; a listing for
// people and programs that read line by line): one line holding the type tag,
// the key, and then the fields of the row from column 3 on, in row order,
// separated by single blanks. Texts are enclosed in single quotes (a quote
// inside is doubled) and trailing blanks dropped; numbers as in rows. Example:
//     4 'top' 1234.5 'ft' 1 1 1 0 -9.9e+20 'Top depth' 'Top of the core' -4
// readFormattedRecord() turns such a line back into the row form, so the same
// readers serve both.
//
// Structured text block (realBlock, integerBlock): the header line
// "IV, D%V, D%SET, D%VU%ISER, D%VU%IUN, D%VU%CU" and one line with the type tag,
// V, SET, ISER, IUN and CU separated by ", "; the integer block stops after SET
// in both lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/csv_row.h"
#include "subsurf/scalars.h"

namespace subsurf {

inline constexpr int kIntegerTag = DT_TAG_INTEGER;
inline constexpr int kTextTag = DT_TAG_TEXT;
inline constexpr int kFileNameTag = DT_TAG_FILENAME;
inline constexpr int kRealTag = DT_TAG_REAL;
inline constexpr int kDoubleTag = DT_TAG_DOUBLE;

// True for the levels written as comma-separated rows (1..9).
inline bool isRowLevel(int level) { return level >= 1 && level <= 9; }
// The key as written at a level: level-1 leading blanks for levels 1..9.
std::string indentedKey(std::string_view key, int level);

// ---- Writing rows ----------------------------------------------------------
// Rows for a keyword file at a level (the key indented for levels 2..9; other
// levels give no indentation). Write them with KeywordFileWriter::writeRow.
CsvRow integerRow(const DT_ISCA& rec, int level = 1);
CsvRow realRow(const DT_RSCA& rec, int level = 1);
CsvRow doubleRow(const DT_DSCA& rec, int level = 1);
CsvRow textRow(const DT_CSCA& rec, int level = 1);
CsvRow fileNameRow(const DT_FSCA& rec, int level = 1);

// Formatted records (see above), one line each.
std::string integerRecord(const DT_ISCA& rec);
std::string realRecord(const DT_RSCA& rec);
std::string doubleRecord(const DT_DSCA& rec);
std::string textRecord(const DT_CSCA& rec);
std::string fileNameRecord(const DT_FSCA& rec);

// What a writer called with this level puts out: the row's line for levels
// 1..9, the formatted record for any other level.
std::string scalarLine(const DT_ISCA& rec, int level);
std::string scalarLine(const DT_RSCA& rec, int level);
std::string scalarLine(const DT_DSCA& rec, int level);
std::string scalarLine(const DT_CSCA& rec, int level);
std::string scalarLine(const DT_FSCA& rec, int level);

// Structured text blocks: header line and value line.
std::vector<std::string> realBlock(const DT_RSCA& rec);
std::vector<std::string> integerBlock(const DT_ISCA& rec);

// ---- Reading rows ----------------------------------------------------------
// Outcome of reading a row into a record.
struct RowRead {
  static constexpr int kRead = 0;
  static constexpr int kWrongKind = 1;  // no tag, or another kind's: record unchanged
  static constexpr int kPartial = -1;   // read, but a field was not a number
  int status = kRead;
  std::string message;  // names the key and the column; empty when read
  bool ok() const { return status == kRead; }
};

RowRead readIntegerRow(const CsvRow& row, DT_ISCA& rec);
RowRead readRealRow(const CsvRow& row, DT_RSCA& rec);
RowRead readDoubleRow(const CsvRow& row, DT_DSCA& rec);
RowRead readTextRow(const CsvRow& row, DT_CSCA& rec);
RowRead readFileNameRow(const CsvRow& row, DT_FSCA& rec);

// A scalar row's type tag (0 when column 2 is not an integer), its key without
// the indentation, and its level (1 + the blanks before the key).
int rowTag(const CsvRow& row);
std::string rowKey(const CsvRow& row);
int rowLevel(const CsvRow& row);

// Turns a formatted record back into the row form (key, tag, fields...), so the
// row readers read it. False when the line is not a formatted record (no tag,
// no key, or an unclosed quote).
bool readFormattedRecord(std::string_view line, CsvRow& row);

}  // namespace subsurf
