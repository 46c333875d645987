// CsvRow: one comma-separated record of a keyword file.
//
// Quoting rule (chosen so that every text round-trips):
//   * Fields are separated by commas; a line is one record.
//   * Text fields are written with their trailing blanks trimmed (records hold
//     blank-padded fixed-width fields, so trailing blanks carry no meaning).
//   * A text field is written inside double quotes when it is empty, contains a
//     comma or a double quote, or starts with a blank or tab (the keys of nested
//     rows are indented by blanks, which must survive). Inside quotes a double
//     quote is written twice.
//   * On reading, an unquoted field is taken without its surrounding blanks; a
//     quoted field (blanks before the opening quote allowed) is taken exactly.
//   * Numbers are never quoted. Reals are written in the shortest form that reads
//     back to the same bits, so values (including nulls) survive a save and load.
//   * Line breaks inside a text are written as blanks: a record is one line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace subsurf {

class CsvRow {
 public:
  // Field access status values.
  static constexpr int kOk = 0;
  static constexpr int kAbsent = 1;      // no such column, or the field is empty
  static constexpr int kUnreadable = 2;  // the field is not a number of the kind asked

  static CsvRow parse(std::string_view line);

  std::size_t size() const { return fields_.size(); }
  bool empty() const { return fields_.empty(); }
  void clear() { fields_.clear(); }

  // Columns are counted from 1, as users count them in a spreadsheet.
  int text(int column, std::string& out) const;
  int integer(int column, int& out) const;
  int real(int column, float& out) const;
  int real8(int column, double& out) const;
  // The field's text, or "" when the column is absent.
  std::string field(int column) const;

  CsvRow& addText(std::string_view text);
  CsvRow& addInt(int value);
  CsvRow& addReal(float value);
  CsvRow& addReal8(double value);

  // The record as one line of text, without a line break.
  std::string str() const;

 private:
  struct Field {
    std::string text;
    bool quoteWhenWritten = false;
  };
  std::vector<Field> fields_;
};

// Appends text to out as one quoted CSV field: in double quotes, a quote
// inside doubled. Callers decide when a field needs it.
void appendQuotedCsvField(std::string& out, std::string_view text);

// Number text used in rows: the shortest text that reads back to the same value.
std::string shortestText(float value);
std::string shortestText(double value);

}  // namespace subsurf
