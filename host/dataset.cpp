#include "host/dataset.h"

#include <algorithm>
#include <mutex>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "subsurf/host_dataset.h"

namespace subsurf {

void DatasetPart::defineColumn(const DatasetColumn& column) {
  for (auto& c : columns_) {
    if (c.number == column.number) {
      c = column;
      return;
    }
  }
  columns_.push_back(column);
  std::sort(columns_.begin(), columns_.end(),
            [](const DatasetColumn& a, const DatasetColumn& b) { return a.number < b.number; });
}

const DatasetColumn* DatasetPart::column(int number) const {
  for (const auto& c : columns_)
    if (c.number == number) return &c;
  return nullptr;
}

const DatasetColumn* DatasetPart::column(std::string_view name) const {
  const std::string wanted = lowerCase(trimBlanks(name));
  for (const auto& c : columns_)
    if (lowerCase(c.name) == wanted) return &c;
  return nullptr;
}

int DatasetPart::columnCount() const {
  int n = columns_.empty() ? 0 : columns_.back().number;
  for (const auto& r : records_) n = std::max(n, static_cast<int>(r.size()));
  return n;
}

void DatasetPart::setRecordCount(int n) { records_.resize(static_cast<std::size_t>(std::max(0, n))); }

bool DatasetPart::insertRecord(int record) {
  if (record < 1 || record > recordCount() + 1) return false;
  records_.insert(records_.begin() + (record - 1), std::vector<Cell>{});
  return true;
}

bool DatasetPart::removeRecord(int record) {
  if (record < 1 || record > recordCount()) return false;
  records_.erase(records_.begin() + (record - 1));
  return true;
}

bool DatasetPart::moveRecord(int from, int to) {
  if (from < 1 || from > recordCount() || to < 1 || to > recordCount()) return false;
  std::vector<Cell> moved = std::move(records_[from - 1]);
  records_.erase(records_.begin() + (from - 1));
  records_.insert(records_.begin() + (to - 1), std::move(moved));
  return true;
}

DatasetPart::Cell* DatasetPart::cell(int record, int column, bool create) {
  if (record < 1 || column < 1) return nullptr;
  if (record > recordCount()) {
    if (!create) return nullptr;
    setRecordCount(record);
  }
  auto& row = records_[record - 1];
  if (column > static_cast<int>(row.size())) {
    if (!create) return nullptr;
    row.resize(static_cast<std::size_t>(column), Cell{kRealNull, {}, false});
  }
  return &row[column - 1];
}

const DatasetPart::Cell* DatasetPart::cell(int record, int column) const {
  if (record < 1 || column < 1 || record > recordCount()) return nullptr;
  const auto& row = records_[record - 1];
  if (column > static_cast<int>(row.size())) return nullptr;
  return &row[column - 1];
}

int DatasetPart::setReal(int record, int column, float value) {
  Cell* c = cell(record, column, true);
  if (!c) return 1;
  c->real = value;
  c->written = true;
  return 0;
}

int DatasetPart::getReal(int record, int column, float& value) const {
  value = kRealNull;
  if (record < 1 || record > recordCount() || column < 1) return 1;
  const Cell* c = cell(record, column);
  if (c && c->written) value = c->real;
  return 0;
}

int DatasetPart::setText(int record, int column, std::string_view text) {
  Cell* c = cell(record, column, true);
  if (!c) return 1;
  const DatasetColumn* def = this->column(column);
  std::string t(text);
  if (def && def->width > 0 && t.size() > static_cast<std::size_t>(def->width)) t.resize(def->width);
  c->text = std::move(t);
  c->written = true;
  return 0;
}

int DatasetPart::getText(int record, int column, std::string& text) const {
  text.clear();
  if (record < 1 || record > recordCount() || column < 1) return 1;
  const Cell* c = cell(record, column);
  if (c && c->written) text = c->text;
  return 0;
}

DatasetPart& Dataset::part(std::string_view name) {
  if (DatasetPart* p = findPart(name)) return *p;
  parts_.push_back(std::make_unique<DatasetPart>(trimBlanks(name)));
  return *parts_.back();
}

const DatasetPart* Dataset::findPart(std::string_view name) const {
  const std::string wanted = lowerCase(trimBlanks(name));
  for (const auto& p : parts_)
    if (lowerCase(p->name()) == wanted) return p.get();
  return nullptr;
}

DatasetPart* Dataset::findPart(std::string_view name) {
  return const_cast<DatasetPart*>(static_cast<const Dataset*>(this)->findPart(name));
}

std::vector<std::string> Dataset::partNames() const {
  std::vector<std::string> names;
  for (const auto& p : parts_) names.push_back(p->name());
  return names;
}

namespace {

// The library runs on the host's one thread, but a command-line program may
// make datasets from worker threads, so the handle table is guarded.
struct DatasetRegistry {
  std::mutex mutex;
  std::map<int, std::unique_ptr<Dataset>> byHandle;
  int nextHandle = 1;
};

DatasetRegistry& registry() {
  static DatasetRegistry r;
  return r;
}

}  // namespace

int registerDataset(std::unique_ptr<Dataset> dataset) {
  if (!dataset) return 0;
  std::lock_guard lock(registry().mutex);
  const int handle = registry().nextHandle++;
  registry().byHandle[handle] = std::move(dataset);
  return handle;
}

Dataset* datasetByHandle(int handle) {
  std::lock_guard lock(registry().mutex);
  auto it = registry().byHandle.find(handle);
  return it == registry().byHandle.end() ? nullptr : it->second.get();
}

int handleOfDataset(const Dataset* dataset) {
  if (!dataset) return 0;
  std::lock_guard lock(registry().mutex);
  for (const auto& [handle, d] : registry().byHandle)
    if (d.get() == dataset) return handle;
  return 0;
}

bool releaseDataset(int handle) {
  std::lock_guard lock(registry().mutex);
  return registry().byHandle.erase(handle) > 0;
}

}  // namespace subsurf

// ---------------------------------------------------------------------------
// C interface.

using namespace subsurf;

namespace {

constexpr std::size_t kNameWidth = 16;

DatasetPart* partOf(const int* handle, const char* part, bool create) {
  Dataset* d = datasetByHandle(*handle);
  if (!d) return nullptr;
  const std::string name = fixedText(part, kNameWidth);
  return create ? &d->part(name) : d->findPart(name);
}

}  // namespace

extern "C" {

void DS_NEW(const char* name, int* handle) {
  try {
    *handle = registerDataset(std::make_unique<Dataset>(fixedText(name, kNameWidth)));
  } catch (...) {
    *handle = 0;
  }
}

void DS_RELEASE(const int* handle, int* status) { *status = releaseDataset(*handle) ? 0 : 1; }

void DS_SETR(const int* handle, const char* part, const int* record, const int* column,
             const float* value, int* status) {
  try {
    DatasetPart* p = partOf(handle, part, true);
    *status = p ? p->setReal(*record, *column, *value) : 1;
  } catch (...) {
    *status = 1;
  }
}

void DS_GETR(const int* handle, const char* part, const int* record, const int* column,
             float* value, int* status) {
  *value = kRealNull;
  const DatasetPart* p = partOf(handle, part, false);
  *status = p ? p->getReal(*record, *column, *value) : 1;
}

void DS_SETC(const int* handle, const char* part, const int* record, const int* column,
             const char* text, const int* width, int* status) {
  try {
    DatasetPart* p = partOf(handle, part, true);
    *status = p ? p->setText(*record, *column, fixedText(text, static_cast<std::size_t>(std::max(0, *width))))
                : 1;
  } catch (...) {
    *status = 1;
  }
}

void DS_GETC(const int* handle, const char* part, const int* record, const int* column,
             char* text, const int* width, int* status) {
  const std::size_t w = static_cast<std::size_t>(std::max(0, *width));
  blankFixed(text, w);
  const DatasetPart* p = partOf(handle, part, false);
  std::string value;
  *status = p ? p->getText(*record, *column, value) : 1;
  if (*status == 0) setFixed(text, w, value);
}

void DS_GETNREC(const int* handle, const char* part, int* count, int* status) {
  const DatasetPart* p = partOf(handle, part, false);
  *count = p ? p->recordCount() : 0;
  *status = p ? 0 : 1;
}

void DS_SETNREC(const int* handle, const char* part, const int* count, int* status) {
  try {
    DatasetPart* p = partOf(handle, part, true);
    if (p) p->setRecordCount(*count);
    *status = p ? 0 : 1;
  } catch (...) {
    *status = 1;
  }
}

}  // extern "C"
