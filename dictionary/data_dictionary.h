// Data dictionaries: definitions of the datasets a tool works with.
//
// A tool's dictionary names its datasets, their parts and the numbered columns
// of each part (heading, real or text, unit series or width, description), so
// that the host can lay out the grids showing them and the tool can make the
// datasets empty and ready. Dictionaries are text files of type "dsdefs" kept
// in "deflib:" and read once at a tool's start; a tool that cannot read its
// dictionary cannot start.
//
// File format: keyword rows (comma-separated, first field the keyword; lines
// starting with "#" are comments):
//
//   dsdefs,<dictionary name>,<description>          first row
//   dataset,<name>,<description>                    starts a dataset
//   part,<name>,<description>                       starts a part of it
//   column,<number>,<heading>,R,<unit series>,<description>   a real column
//   column,<number>,<heading>,C,<width>,<description>         a text column
//
// Column numbers run from 1 within a part and need not be contiguous.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/dataset.h"
#include "host/status.h"

namespace subsurf {

struct DictionaryPart {
  std::string name;
  std::string description;
  std::vector<DatasetColumn> columns;
};

struct DictionaryDataset {
  std::string name;
  std::string description;
  std::vector<DictionaryPart> parts;
};

class DataDictionary {
 public:
  // Reads a dictionary file. Failures name the file (and line) in the status.
  Status load(const std::string& path);

  const std::string& name() const { return name_; }
  const std::string& description() const { return description_; }
  const std::vector<DictionaryDataset>& datasets() const { return datasets_; }
  // Dataset definition by name (any letter case); nullptr when absent.
  const DictionaryDataset* dataset(std::string_view name) const;
  // A new empty dataset with the parts and column definitions of `name`;
  // nullptr when the dictionary does not define it.
  std::unique_ptr<Dataset> makeDataset(std::string_view name) const;

 private:
  std::string name_;
  std::string description_;
  std::vector<DictionaryDataset> datasets_;
};

// The dictionaries loaded in this process, by name (any letter case); a
// dictionary loaded again replaces the earlier one of its name.
Status loadDataDictionary(const std::string& path);
const DataDictionary* findDataDictionary(std::string_view name);
void forgetDataDictionaries();

}  // namespace subsurf

extern "C" {
// Loads a data dictionary file (260 characters, logical prefixes allowed) into
// the process's dictionaries. status 0 loaded, 1 missing or unreadable (a file
// that exists but is not a valid dictionary is also reported as a message).
void DD_DDLOAD(const char* file, int* status);
}
