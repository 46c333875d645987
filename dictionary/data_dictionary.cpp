#include "dictionary/data_dictionary.h"

#include <map>

#include <fmt/format.h>

#include "host/fixed_text.h"
#include "host/keyword_file.h"
#include "host/messages.h"
#include "host/paths.h"

namespace subsurf {

namespace {

bool isComment(const CsvRow& row) {
  const std::string first = trimBlanks(row.field(1));
  return first.empty() || first[0] == '#';
}

}  // namespace

Status DataDictionary::load(const std::string& path) {
  KeywordFileReader reader;
  if (Status s = reader.open(path); !s) return s;
  name_.clear();
  description_.clear();
  datasets_.clear();

  CsvRow row;
  bool headerSeen = false;
  while (reader.next(row)) {
    if (isComment(row)) continue;
    const std::string key = lowerCase(trimBlanks(row.field(1)));
    if (!headerSeen) {
      if (key != "dsdefs") return Status::error(reader.where("not a data dictionary (no \"dsdefs\" row)"));
      name_ = trimBlanks(row.field(2));
      description_ = trimBlanks(row.field(3));
      headerSeen = true;
      continue;
    }
    if (key == "dataset") {
      DictionaryDataset d;
      d.name = trimBlanks(row.field(2));
      d.description = trimBlanks(row.field(3));
      if (d.name.empty()) return Status::error(reader.where("dataset without a name"));
      datasets_.push_back(std::move(d));
    } else if (key == "part") {
      if (datasets_.empty()) return Status::error(reader.where("part before any dataset"));
      DictionaryPart p;
      p.name = trimBlanks(row.field(2));
      p.description = trimBlanks(row.field(3));
      if (p.name.empty()) return Status::error(reader.where("part without a name"));
      datasets_.back().parts.push_back(std::move(p));
    } else if (key == "column") {
      if (datasets_.empty() || datasets_.back().parts.empty())
        return Status::error(reader.where("column before any part"));
      DatasetColumn c;
      if (row.integer(2, c.number) != CsvRow::kOk || c.number < 1)
        return Status::error(reader.where("column number missing or below 1"));
      c.name = trimBlanks(row.field(3));
      const std::string kind = lowerCase(trimBlanks(row.field(4)));
      if (kind == "c") {
        c.text = true;
        if (row.integer(5, c.width) != CsvRow::kOk || c.width < 1)
          return Status::error(reader.where("text column without a width"));
      } else if (kind == "r") {
        c.series = trimBlanks(row.field(5));
      } else {
        return Status::error(reader.where("column kind must be R or C"));
      }
      c.description = trimBlanks(row.field(6));
      auto& columns = datasets_.back().parts.back().columns;
      for (const auto& other : columns)
        if (other.number == c.number)
          return Status::error(reader.where(fmt::format("column {} defined twice", c.number)));
      columns.push_back(std::move(c));
    } else {
      return Status::error(reader.where(fmt::format("unknown record \"{}\"", key)));
    }
  }
  if (!headerSeen) return Status::error(fmt::format("{}: empty data dictionary", path));
  if (datasets_.empty()) return Status::error(fmt::format("{}: no dataset defined", path));
  return Status::ok();
}

const DictionaryDataset* DataDictionary::dataset(std::string_view name) const {
  const std::string wanted = lowerCase(trimBlanks(name));
  for (const auto& d : datasets_)
    if (lowerCase(d.name) == wanted) return &d;
  return nullptr;
}

std::unique_ptr<Dataset> DataDictionary::makeDataset(std::string_view name) const {
  const DictionaryDataset* def = dataset(name);
  if (!def) return nullptr;
  auto out = std::make_unique<Dataset>(def->name);
  for (const auto& p : def->parts) {
    DatasetPart& part = out->part(p.name);
    for (const auto& c : p.columns) part.defineColumn(c);
  }
  return out;
}

namespace {

std::map<std::string, DataDictionary>& loaded() {
  static std::map<std::string, DataDictionary> dictionaries;
  return dictionaries;
}

}  // namespace

Status loadDataDictionary(const std::string& path) {
  DataDictionary d;
  if (Status s = d.load(path); !s) return s;
  std::string key = lowerCase(d.name());
  loaded()[key] = std::move(d);
  return Status::ok();
}

const DataDictionary* findDataDictionary(std::string_view name) {
  auto it = loaded().find(lowerCase(trimBlanks(name)));
  return it == loaded().end() ? nullptr : &it->second;
}

void forgetDataDictionaries() { loaded().clear(); }

}  // namespace subsurf

// ---------------------------------------------------------------------------
// C interface.

extern "C" {

void DD_DDLOAD(const char* file, int* status) {
  try {
    const std::string path = subsurf::resolvePath(subsurf::fixedText(file, 260));
    if (!subsurf::fileExists(path)) {
      *status = 1;
      return;
    }
    subsurf::Status s = subsurf::loadDataDictionary(path);
    // A dictionary that is there but cannot be read is a fault worth naming
    // (file and line); a missing one is reported by the tool that needed it.
    if (!s) subsurf::host::showMessage(s.message());
    *status = s ? 0 : 1;
  } catch (...) {
    *status = 1;
  }
}

}  // extern "C"
