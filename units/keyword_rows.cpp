#include "units/keyword_rows.h"

#include <fmt/format.h>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "host/number_text.h"
#include "units/scalar_records.h"
#include "units/scalar_units.h"
#include "units/units_registry.h"
#include "units/value_text.h"

namespace subsurf {
namespace {

// Collects the fields of a formatted record: the tag goes first, then the key,
// then the remaining fields in row order.
class RecordLine {
 public:
  RecordLine& addText(std::string_view text) {
    std::string t(text);
    while (!t.empty() && t.back() == ' ') t.pop_back();
    std::string quoted = "'";
    for (char c : t) {
      if (c == '\n' || c == '\r') c = ' ';
      if (c == '\'') quoted.push_back('\'');
      quoted.push_back(c);
    }
    quoted.push_back('\'');
    fields_.push_back(std::move(quoted));
    return *this;
  }
  RecordLine& addInt(int value) {
    fields_.push_back(fmt::format("{}", value));
    return *this;
  }
  RecordLine& addReal(float value) {
    fields_.push_back(shortestText(value));
    return *this;
  }
  RecordLine& addReal8(double value) {
    fields_.push_back(shortestText(value));
    return *this;
  }

  std::string str() const {
    if (fields_.size() < 2) return {};
    std::string out = fields_[1] + " " + fields_[0];
    for (std::size_t k = 2; k < fields_.size(); ++k) out += " " + fields_[k];
    return out;
  }

 private:
  std::vector<std::string> fields_;
};

// The field lists, once for both the row and the formatted record.
template <typename Sink>
void putInteger(const DT_ISCA& rec, const std::string& key, Sink& out) {
  out.addText(key).addInt(kIntegerTag).addInt(rec.V).addInt(rec.SET).addInt(rec.SET2);
}

template <typename Sink>
void putReal(const DT_RSCA& rec, const std::string& key, Sink& out) {
  out.addText(key).addInt(kRealTag).addReal(rec.V).addText(fixedText(rec.VU.CU));
  out.addInt(rec.VU.ISER).addInt(rec.VU.IUN).addInt(rec.SET).addInt(rec.SET2).addReal(rec.RELERR);
  out.addText(fixedText(rec.LABEL)).addText(fixedText(rec.DESC)).addInt(rec.FMT);
}

template <typename Sink>
void putDouble(const DT_DSCA& rec, const std::string& key, Sink& out) {
  out.addText(key).addInt(kDoubleTag).addReal8(rec.V).addText(fixedText(rec.VU.CU));
  out.addInt(rec.VU.ISER).addInt(rec.VU.IUN).addInt(rec.SET).addInt(rec.SET2).addReal8(rec.RELERR);
  out.addText(fixedText(rec.LABEL)).addText(fixedText(rec.DESC)).addInt(rec.FMT);
  out.addText(fixedText(rec.SHORT)).addInt(rec.IEXTRA);
}

template <typename Sink, typename T>
void putTextKind(const T& rec, int tag, const std::string& key, Sink& out) {
  out.addText(key).addInt(tag).addText(fixedText(rec.V)).addInt(rec.SET).addInt(rec.SET2);
  out.addText(fixedText(rec.LABEL)).addText(fixedText(rec.DESC)).addText(fixedText(rec.VDEF));
}

template <typename Put>
CsvRow makeRow(const std::string& key, int level, Put put) {
  CsvRow row;
  put(indentedKey(key, level), row);
  return row;
}

template <typename Put>
std::string makeRecord(const std::string& key, Put put) {
  RecordLine line;
  put(key, line);
  return line.str();
}

// Reads fields by column, remembering the first that is present but not a number.
class FieldReader {
 public:
  explicit FieldReader(const CsvRow& row) : row_(row) {}

  template <std::size_t N>
  void text(int column, char (&field)[N]) {
    std::string t;
    if (row_.text(column, t) == CsvRow::kOk) setFixed(field, t);
  }
  void integer(int column, int& value) { note(column, row_.integer(column, value)); }
  void real(int column, float& value) { note(column, row_.real(column, value)); }
  void real8(int column, double& value) { note(column, row_.real8(column, value)); }

  RowRead result(const std::string& key) const {
    RowRead r;
    if (badColumn_ > 0) {
      r.status = RowRead::kPartial;
      r.message = fmt::format("Row \"{}\": column {} is not a number", key, badColumn_);
    }
    return r;
  }

 private:
  void note(int column, int status) {
    if (status == CsvRow::kUnreadable && badColumn_ == 0) badColumn_ = column;
  }
  const CsvRow& row_;
  int badColumn_ = 0;
};

RowRead wrongKind(const CsvRow& row, const char* kind) {
  RowRead r;
  r.status = RowRead::kWrongKind;
  r.message = fmt::format("Row \"{}\" is not {} scalar row", rowKey(row), kind);
  return r;
}

// The unit is taken as the row holds it: the position from column 6 and the
// name from column 4, each as written, with no lookup of one by the other.
template <typename R>
void readRealFields(FieldReader& in, R& rec) {
  in.text(4, rec.VU.CU);
  in.integer(5, rec.VU.ISER);
  in.integer(6, rec.VU.IUN);
  in.integer(7, rec.SET);
  in.integer(8, rec.SET2);
  in.text(10, rec.LABEL);
  in.text(11, rec.DESC);
  in.integer(12, rec.FMT);
}

template <typename T>
RowRead readTextKind(const CsvRow& row, T& rec, int tag, const char* kind) {
  if (rowTag(row) != tag) return wrongKind(row, kind);
  setDefaults(rec, "");
  setFixed(rec.CODE, rowKey(row));
  FieldReader in(row);
  in.text(3, rec.V);
  in.integer(4, rec.SET);
  in.integer(5, rec.SET2);
  in.text(6, rec.LABEL);
  in.text(7, rec.DESC);
  in.text(8, rec.VDEF);
  return in.result(rowKey(row));
}

}  // namespace

std::string indentedKey(std::string_view key, int level) {
  const std::string k = trimBlanks(key);
  if (!isRowLevel(level)) return k;
  return std::string(static_cast<std::size_t>(level - 1), ' ') + k;
}

CsvRow integerRow(const DT_ISCA& rec, int level) {
  return makeRow(key(rec), level, [&](const std::string& k, CsvRow& r) { putInteger(rec, k, r); });
}
CsvRow realRow(const DT_RSCA& rec, int level) {
  return makeRow(key(rec), level, [&](const std::string& k, CsvRow& r) { putReal(rec, k, r); });
}
CsvRow doubleRow(const DT_DSCA& rec, int level) {
  return makeRow(key(rec), level, [&](const std::string& k, CsvRow& r) { putDouble(rec, k, r); });
}
CsvRow textRow(const DT_CSCA& rec, int level) {
  return makeRow(key(rec), level, [&](const std::string& k, CsvRow& r) { putTextKind(rec, kTextTag, k, r); });
}
CsvRow fileNameRow(const DT_FSCA& rec, int level) {
  return makeRow(key(rec), level, [&](const std::string& k, CsvRow& r) { putTextKind(rec, kFileNameTag, k, r); });
}

std::string integerRecord(const DT_ISCA& rec) {
  return makeRecord(key(rec), [&](const std::string& k, RecordLine& l) { putInteger(rec, k, l); });
}
std::string realRecord(const DT_RSCA& rec) {
  return makeRecord(key(rec), [&](const std::string& k, RecordLine& l) { putReal(rec, k, l); });
}
std::string doubleRecord(const DT_DSCA& rec) {
  return makeRecord(key(rec), [&](const std::string& k, RecordLine& l) { putDouble(rec, k, l); });
}
std::string textRecord(const DT_CSCA& rec) {
  return makeRecord(key(rec), [&](const std::string& k, RecordLine& l) { putTextKind(rec, kTextTag, k, l); });
}
std::string fileNameRecord(const DT_FSCA& rec) {
  return makeRecord(key(rec), [&](const std::string& k, RecordLine& l) { putTextKind(rec, kFileNameTag, k, l); });
}

std::string scalarLine(const DT_ISCA& rec, int level) {
  return isRowLevel(level) ? integerRow(rec, level).str() : integerRecord(rec);
}
std::string scalarLine(const DT_RSCA& rec, int level) {
  return isRowLevel(level) ? realRow(rec, level).str() : realRecord(rec);
}
std::string scalarLine(const DT_DSCA& rec, int level) {
  return isRowLevel(level) ? doubleRow(rec, level).str() : doubleRecord(rec);
}
std::string scalarLine(const DT_CSCA& rec, int level) {
  return isRowLevel(level) ? textRow(rec, level).str() : textRecord(rec);
}
std::string scalarLine(const DT_FSCA& rec, int level) {
  return isRowLevel(level) ? fileNameRow(rec, level).str() : fileNameRecord(rec);
}

std::vector<std::string> realBlock(const DT_RSCA& rec) {
  return {"IV, D%V, D%SET, D%VU%ISER, D%VU%IUN, D%VU%CU",
          fmt::format("{}, {}, {}, {}, {}, {}", kRealTag, shortestText(rec.V), rec.SET, rec.VU.ISER, rec.VU.IUN,
                      fixedText(rec.VU.CU))};
}

std::vector<std::string> integerBlock(const DT_ISCA& rec) {
  return {"IV, D%V, D%SET", fmt::format("{}, {}, {}", kIntegerTag, rec.V, rec.SET)};
}

RowRead readIntegerRow(const CsvRow& row, DT_ISCA& rec) {
  if (rowTag(row) != kIntegerTag) return wrongKind(row, "an integer");
  setFixed(rec.KEY, rowKey(row));
  FieldReader in(row);
  in.integer(3, rec.V);
  in.integer(4, rec.SET);
  in.integer(5, rec.SET2);
  return in.result(rowKey(row));
}

RowRead readRealRow(const CsvRow& row, DT_RSCA& rec) {
  if (rowTag(row) != kRealTag) return wrongKind(row, "a real");
  setDefaults(rec);
  setFixed(rec.CODE, rowKey(row));
  FieldReader in(row);
  in.real(3, rec.V);
  readRealFields(in, rec);
  in.real(9, rec.RELERR);  // a row ending earlier leaves the null of the defaults
  setDisplayText(rec);
  return in.result(rowKey(row));
}

RowRead readDoubleRow(const CsvRow& row, DT_DSCA& rec) {
  if (rowTag(row) != kDoubleTag) return wrongKind(row, "a double");
  setDefaults(rec);
  setFixed(rec.CODE, rowKey(row));
  FieldReader in(row);
  in.real8(3, rec.V);
  readRealFields(in, rec);
  in.real8(9, rec.RELERR);
  in.text(13, rec.SHORT);
  in.integer(14, rec.IEXTRA);
  setDisplayText(rec);
  return in.result(rowKey(row));
}

RowRead readTextRow(const CsvRow& row, DT_CSCA& rec) { return readTextKind(row, rec, kTextTag, "a text"); }

RowRead readFileNameRow(const CsvRow& row, DT_FSCA& rec) {
  return readTextKind(row, rec, kFileNameTag, "a file-name");
}

int rowTag(const CsvRow& row) {
  int tag = 0;
  return row.integer(2, tag) == CsvRow::kOk ? tag : 0;
}

std::string rowKey(const CsvRow& row) { return trimBlanks(row.field(1)); }

int rowLevel(const CsvRow& row) {
  const std::string k = row.field(1);
  std::size_t blanks = 0;
  while (blanks < k.size() && k[blanks] == ' ') ++blanks;
  return static_cast<int>(blanks) + 1;
}

bool readFormattedRecord(std::string_view line, CsvRow& row) {
  std::vector<std::string> tokens;
  std::vector<bool> quoted;
  std::size_t i = 0;
  const std::size_t n = line.size();
  while (true) {
    while (i < n && (line[i] == ' ' || line[i] == '\t' || line[i] == '\r' || line[i] == '\n')) ++i;
    if (i >= n) break;
    std::string token;
    if (line[i] == '\'') {
      ++i;
      bool closed = false;
      while (i < n) {
        if (line[i] == '\'') {
          if (i + 1 < n && line[i + 1] == '\'') {
            token.push_back('\'');
            i += 2;
            continue;
          }
          ++i;
          closed = true;
          break;
        }
        token.push_back(line[i++]);
      }
      if (!closed) return false;
      quoted.push_back(true);
    } else {
      while (i < n && line[i] != ' ' && line[i] != '\t') token.push_back(line[i++]);
      quoted.push_back(false);
    }
    tokens.push_back(std::move(token));
  }
  int tag = 0;
  if (tokens.size() < 2 || quoted[0] || !quoted[1]) return false;
  if (!parseInteger(tokens[0], tag)) return false;
  CsvRow out;
  out.addText(tokens[1]).addInt(tag);
  for (std::size_t k = 2; k < tokens.size(); ++k) out.addText(tokens[k]);
  row = std::move(out);
  return true;
}

}  // namespace subsurf
