// Datasets: the host's small in-memory tables behind grids.
//
// A dataset has a name and named parts; a part is a table of records (from 1)
// and numbered columns (from 1). A column is real or text, as its definition
// says (columns without a definition are real). Cells never written read as
// the real null or as blanks. Parts grow as records are written; records can
// be inserted, removed and reordered so that a table stays in step with the
// list it shows (the Slabber image table: record k = the image at place k).
//
// Datasets are addressed from C by an integer handle (from 1); the registry of
// handles is process-wide.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/channel_attributes.h"
#include "host/status.h"

namespace subsurf {

struct DatasetColumn {
  int number = 0;        // from 1
  std::string name;      // grid heading
  bool text = false;     // text column (else real)
  int width = 0;         // characters of a text column
  std::string series;    // unit series of a real column ("" for none)
  std::string description;
};

class DatasetPart {
 public:
  explicit DatasetPart(std::string name = {}) : name_(std::move(name)) {}
  const std::string& name() const { return name_; }

  void defineColumn(const DatasetColumn& column);
  // The column's definition, or nullptr when it has none.
  const DatasetColumn* column(int number) const;
  const DatasetColumn* column(std::string_view name) const;  // heading, any case
  const std::vector<DatasetColumn>& columns() const { return columns_; }
  int columnCount() const;  // highest column defined or written

  int recordCount() const { return static_cast<int>(records_.size()); }
  // Grows or shrinks to n records (new records empty).
  void setRecordCount(int n);
  // Inserts an empty record before `record` (1..count+1); false when out of range.
  bool insertRecord(int record);
  bool removeRecord(int record);
  // Moves record `from` to place `to` (both 1..count).
  bool moveRecord(int from, int to);

  // Status 0 done; 1 record or column below 1 (setters), absent (getters).
  int setReal(int record, int column, float value);
  int getReal(int record, int column, float& value) const;
  int setText(int record, int column, std::string_view text);
  int getText(int record, int column, std::string& text) const;

 private:
  struct Cell {
    float real;
    std::string text;
    bool written = false;
  };
  Cell* cell(int record, int column, bool create);
  const Cell* cell(int record, int column) const;

  std::string name_;
  std::vector<DatasetColumn> columns_;
  std::vector<std::vector<Cell>> records_;
};

class Dataset {
 public:
  explicit Dataset(std::string name = {}) : name_(std::move(name)) {}
  const std::string& name() const { return name_; }
  // The part of that name (any letter case), made when missing.
  DatasetPart& part(std::string_view name);
  // nullptr when missing.
  const DatasetPart* findPart(std::string_view name) const;
  DatasetPart* findPart(std::string_view name);
  std::vector<std::string> partNames() const;
  // The keyed attributes of the dataset's channels.
  ChannelAttributes& attributes() { return attributes_; }
  const ChannelAttributes& attributes() const { return attributes_; }

 private:
  std::string name_;
  std::vector<std::unique_ptr<DatasetPart>> parts_;
  ChannelAttributes attributes_;
};

// Process-wide handles (from 1) for the C interface.
int registerDataset(std::unique_ptr<Dataset> dataset);
Dataset* datasetByHandle(int handle);
int handleOfDataset(const Dataset* dataset);  // 0 when not registered
bool releaseDataset(int handle);

}  // namespace subsurf
