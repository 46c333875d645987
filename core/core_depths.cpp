// Depths of trays and core rows: reading a tray's interval from the photo's
// file name, the row count that follows from a tray's depths, carrying depths
// forward over a run of trays, and the image table that shows them.
//
// All depth arithmetic is done in 32-bit reals, in the depth unit of the image
// the values come from, exactly as the image grid shows them: depths worked out
// here must come out the same as the ones users have in their existing
// sessions and clipping-depth tables.
#include <cmath>
#include <string>

#include "core/core_session.h"
#include "core/tray_layout.h"
#include "core/image_settings.h"
#include "host/dataset.h"
#include "host/messages.h"

namespace subsurf {

namespace {

constexpr float kRowCountTolerance = 0.01f;  // taken off the span before counting rows
constexpr float kSmallestCoreLength = 0.001f;

// Characters of a name by position from 1; '\0' outside the name.
class NameText {
 public:
  explicit NameText(std::string_view name) : name_(name) {}
  char at(int position) const {
    return (position >= 1 && position <= static_cast<int>(name_.size())) ? name_[position - 1] : '\0';
  }
  // Reads positions first..last as a fixed-width integer field: blanks count
  // for nothing (an all-blank field is 0), any other non-digit - or a
  // position outside the name - makes the read fail.
  bool readInteger(int first, int last, int& value) const {
    if (first < 1 || last > static_cast<int>(name_.size()) || first > last) return false;
    long long v = 0;
    for (int i = first; i <= last; ++i) {
      const char c = name_[i - 1];
      if (c == ' ') continue;
      if (c < '0' || c > '9') return false;
      v = v * 10 + (c - '0');
    }
    value = static_cast<int>(v);
    return true;
  }

 private:
  std::string_view name_;
};

bool isDecimalMark(char c) { return c == '_' || c == '.'; }

// A five-digit integer field, or the four digits that end where it ends when
// the five cannot be read (a four-digit depth preceded by a letter or "_").
bool readFiveOrFour(const NameText& t, int first5, int last, int& value) {
  return t.readInteger(first5, last, value) || t.readInteger(first5 + 1, last, value);
}

// trunc(q) + 1, with spans that are not numbers or absurdly large kept in
// range instead of overflowing the integer.
int truncatedRows(float q) {
  if (std::isnan(q)) return 0;
  if (q > 1.0e6f) return 1000001;
  if (q < -1.0e6f) return -999999;
  return static_cast<int>(std::trunc(q)) + 1;
}

std::string folderOfPath(const std::string& path) {
  const auto cut = path.find_last_of("/\\");
  return cut == std::string::npos ? std::string() : path.substr(0, cut + 1);
}

std::string fileOfPath(const std::string& path) {
  const auto cut = path.find_last_of("/\\");
  return cut == std::string::npos ? path : path.substr(cut + 1);
}

DatasetPart* dataPart(Dataset* table) { return table ? &table->part(kImageTablePart) : nullptr; }

float intAsReal(int v) { return isNull(v) ? kRealNull : static_cast<float>(v); }

}  // namespace

// ---------------------------------------------------------------------------
// The file-name grammar.
//
// Core photographers name each tray photograph after its depth interval, as
// "TRAY_1234_5-1236_0.jpg": two numbers joined by the last hyphen of the name,
// each an integer part of four or five digits with an optional decimal part
// of one or two digits after "_" or "." ("_" standing for the point where a
// point would clash with the file-type suffix). The fields are found by fixed
// offsets from the hyphen, so nothing else in the name (folders, prefixes,
// other numbers) gets in the way.

ParsedDepths CoreSession::parseDepths(std::string_view name) {
  ParsedDepths out;
  const auto hyphen = name.rfind('-');
  if (hyphen == std::string_view::npos || hyphen == 0) return out;  // status 1: no interval
  const int p = static_cast<int>(hyphen) + 1;
  const NameText t(name);
  int failures = 0;

  // Top: decided by the characters just before the hyphen.
  float top = 0.0f;
  int whole = 0, decimals = 0;
  if (isDecimalMark(t.at(p - 2))) {  // nnnnn_d-
    if (!readFiveOrFour(t, p - 7, p - 3, whole)) failures += kDepthReadFailure, whole = 0;
    if (!t.readInteger(p - 1, p - 1, decimals)) failures += kDepthReadFailure, decimals = 0;
    top = static_cast<float>(whole) + static_cast<float>(decimals) / 10.0f;
  } else if (isDecimalMark(t.at(p - 3))) {  // nnnnn_dd-
    if (!readFiveOrFour(t, p - 8, p - 4, whole)) failures += kDepthReadFailure, whole = 0;
    if (!t.readInteger(p - 2, p - 1, decimals)) failures += kDepthReadFailure, decimals = 0;
    const float divisor = t.at(p - 1) == '.' ? 10.0f : 100.0f;
    top = static_cast<float>(whole) + static_cast<float>(decimals) / divisor;
  } else {  // nnnnn-
    if (!readFiveOrFour(t, p - 5, p - 1, whole)) failures += kDepthReadFailure, whole = 0;
    top = static_cast<float>(whole);
  }

  // Base: decided by the characters just after the hyphen. A decimal field
  // that will not read as two digits (the suffix's "." right after one digit)
  // is taken as the one digit.
  float base = 0.0f;
  whole = 0;
  decimals = 0;
  float divisor = 10.0f;
  if (isDecimalMark(t.at(p + 6))) {  // -nnnnn_dd
    if (!t.readInteger(p + 1, p + 5, whole)) failures += kDepthReadFailure, whole = 0;
    if (t.readInteger(p + 7, p + 8, decimals)) {
      divisor = t.at(p + 8) == '.' ? 10.0f : 100.0f;
    } else if (!t.readInteger(p + 7, p + 7, decimals)) {
      failures += kDepthReadFailure;
      decimals = 0;
    }
    base = static_cast<float>(whole) + static_cast<float>(decimals) / divisor;
  } else if (isDecimalMark(t.at(p + 5))) {  // -nnnn_dd
    if (!t.readInteger(p + 1, p + 4, whole)) failures += kDepthReadFailure, whole = 0;
    if (t.readInteger(p + 6, p + 7, decimals)) {
      divisor = t.at(p + 7) == '.' ? 10.0f : 100.0f;
    } else if (!t.readInteger(p + 6, p + 6, decimals)) {
      failures += kDepthReadFailure;
      decimals = 0;
    }
    base = static_cast<float>(whole) + static_cast<float>(decimals) / divisor;
  } else {  // -nnnnn
    if (!t.readInteger(p + 1, p + 5, whole) && !t.readInteger(p + 1, p + 4, whole))
      failures += kDepthReadFailure, whole = 0;
    base = static_cast<float>(whole);
  }

  out.status = failures;
  if (failures == 0) {
    out.top = top;
    out.base = base;
  }
  return out;
}

int CoreSession::parseDepthsInto(std::string_view name, Dataset* table, int record) {
  const ParsedDepths parsed = parseDepths(name);
  if (parsed.status == 0) {
    if (DatasetPart* part = dataPart(table)) {
      part->setReal(record, kColTop, parsed.top);
      part->setReal(record, kColBase, parsed.base);
      part->setReal(record, kColLength, parsed.base - parsed.top);
    }
  }
  return parsed.status;
}

// ---------------------------------------------------------------------------
// The image table.

void CoreSession::writeImageToTable(const CoreImage& image, Dataset* table, int record) {
  DatasetPart* part = dataPart(table);
  if (!part || record < 1) return;
  const std::string source = image.sourceFile();
  part->setReal(record, kColSource, static_cast<float>(image.id));
  part->setText(record, kColPath, folderOfPath(source));
  part->setText(record, kColFilename, fileOfPath(source));
  part->setReal(record, kColTrayLength, image.realValue(kRealTrayLength));
  part->setReal(record, kColUV, intAsReal(image.intValue(kIntUV)));
  part->setReal(record, kColAngle, image.angle);
  part->setReal(record, kColUse, intAsReal(image.intValue(kIntUse)));
  part->setReal(record, kColView, image.viewShown < 0 ? kRealNull : static_cast<float>(image.viewShown));
  part->setReal(record, kColCoreNumber, intAsReal(image.intValue(kIntCoreNumber)));
}

void CoreSession::writeImageDepths(const CoreImage& image, Dataset* table, int record) {
  DatasetPart* part = dataPart(table);
  if (!part || record < 1) return;
  const float top = image.realValue(kRealTop), base = image.realValue(kRealBase);
  part->setReal(record, kColTop, top);
  part->setReal(record, kColBase, base);
  part->setReal(record, kColCoreLength, image.realValue(kRealCoreLength));
  part->setReal(record, kColDepthShift, image.realValue(kRealDepthShift));
  part->setReal(record, kColLength, (isNull(top) || isNull(base)) ? kRealNull : base - top);
}

void CoreSession::refreshImageTable(Dataset* table) {
  DatasetPart* part = dataPart(table);
  if (!part) return;
  const std::vector<CoreImage*> list = images();
  part->setRecordCount(0);
  part->setRecordCount(static_cast<int>(list.size()));
  for (std::size_t k = 0; k < list.size(); ++k) {
    writeImageToTable(*list[k], table, static_cast<int>(k) + 1);
    writeImageDepths(*list[k], table, static_cast<int>(k) + 1);
  }
}

// ---------------------------------------------------------------------------
// Row count of a tray whose top or base was typed into the image grid.

int CoreSession::applyRowCount(CoreImage& image, Dataset* table, int record) {
  const float top = image.realValue(kRealTop), base = image.realValue(kRealBase);
  if (isNull(top) || isNull(base)) return 1;
  const std::string unit = depthUnitOf(image.realSetting(kRealTop));
  setDepth(image.realSetting(kRealTrayLength), base - top, unit);

  const float coreLength = image.realValue(kRealCoreLength);
  if (isNull(coreLength) || !(coreLength > kSmallestCoreLength)) return 1;
  const int rows = truncatedRows((base - top - kRowCountTolerance) / coreLength);
  // Long core laid out in one picture (Reverse = 2) may have any number of rows.
  if (rows > kTrayRows && image.intValue(kIntReverse) != 2) {
    host::showMessage("Warning - more than 10 cores in tray!");
    writeImageToTable(image, table, record);
    refresh("cor_split");
    return 1;
  }
  if (rows <= 0) {
    host::showMessage("Error - Top depth >= Base Depth!");
    return 1;
  }
  setInteger(image.intSetting(kIntCoreNumber), rows);
  return 0;
}

int CoreSession::editTrayDepth(int place, int column, float value, Dataset* table) {
  CoreImage* image = imageAt(place);
  if (!image || (column != kColTop && column != kColBase)) return 1;
  DT_RSCA& setting = image->realSetting(column == kColTop ? kRealTop : kRealBase);
  setDepth(setting, value, "");
  if (DatasetPart* part = dataPart(table)) part->setReal(place, column, setting.V);
  return applyRowCount(*image, table, place);
}

int CoreSession::deriveTrayLengths(CoreImage& image) {
  const float top = image.realValue(kRealTop), base = image.realValue(kRealBase);
  if (isNull(top) || isNull(base)) return 1;
  const std::string unit = depthUnitOf(image.realSetting(kRealTop));
  const float trayLength = base - top;
  setDepth(image.realSetting(kRealTrayLength), trayLength, unit);
  const int cores = image.intValue(kIntCoreNumber);
  if (cores >= 1) setDepth(image.realSetting(kRealCoreLength), trayLength / static_cast<float>(cores), unit);
  return 0;
}

// ---------------------------------------------------------------------------
// Carrying depths forward.
//
// A run of trays is cored and boxed contiguously: each tray holds the same
// span of core and starts where the previous one ended. Given the depths of
// the first tray, every following photograph of the same light kind gets the
// next interval; ultraviolet and white-light photographs of the same trays
// are numbered separately. A depth written in a photo's file name still wins
// in the image table, since the photographer read it off the tray.

TrayLayout trayLayoutFor(float top, float base, int cores) {
  TrayLayout layout;
  layout.span = base - top;
  layout.coreLength = layout.span / static_cast<float>(cores);
  int rows = truncatedRows((layout.span - kRowCountTolerance) / layout.coreLength);
  if (rows > kTrayRows) rows = kTrayRows + 1;
  if (rows < 2) rows = 1;
  if (rows > kTrayRows) rows = cores;
  layout.rows = rows;
  return layout;
}

void layOutTray(CoreImage& image, const TrayLayout& layout, float top, float base, float shift,
                const std::string& unit) {
  setDepth(image.realSetting(kRealTop), top, unit);
  setDepth(image.realSetting(kRealBase), base, unit);
  setDepth(image.realSetting(kRealCoreLength), layout.coreLength, unit);
  setDepth(image.realSetting(kRealTrayLength), layout.span, unit);
  setDepth(image.realSetting(kRealDepthShift), shift, unit);
  setInteger(image.intSetting(kIntCoreNumber), layout.rows);
  DT_RSCACOPY(&image.realSetting(kRealCoreLength), &image.coreLengthCopy);
  DT_RSCACOPY(&image.realSetting(kRealTrayLength), &image.trayLengthCopy);
  // Rows 11 and up land in the settings after row 10 (over the depth shift),
  // where sessions have always kept them; rows with no setting left are not
  // stored.
  for (int i = 0; i < layout.rows; ++i) {
    const float rowTop = top + static_cast<float>(i) * layout.coreLength;
    float rowBase = rowTop + layout.coreLength;
    if (rowBase > base) rowBase = base;
    const int row = i + 1;
    if (row > kMaxStoredRows) break;
    setDepth(image.realSetting(rowTopSetting(row)), rowTop, unit);
    setDepth(image.realSetting(rowBaseSetting(row)), rowBase, unit);
  }
}

int CoreSession::carryDepthsForward(Dataset* table) {
  CoreImage* start = currentImage_;
  if (!start || start->id < 1) {
    host::showMessage("Select a starting image!");
    return 1;
  }
  saveSelection();
  int k = 0;
  if (currentImageIndex(k) != 0) {
    host::showMessage("Current image could not be found");
    restoreSelection();
    return 1;
  }
  const int count = imageCount();

  const std::string unit = depthUnitOf(start->realSetting(kRealTop));
  const float top0 = start->realValue(kRealTop);
  const float base0 = start->realValue(kRealBase);
  float coreLength = start->realValue(kRealCoreLength);
  const float shift = start->realValue(kRealDepthShift);
  int cores = start->intValue(kIntCoreNumber);
  const int uv = start->intValue(kIntUV);

  int first = k + 1;
  if (cores < 1) {
    if (!host::askQuestion("#Cores not set, use 5?")) {
      restoreSelection();
      return 1;
    }
    cores = kDefaultCoreCount;
    setInteger(start->intSetting(kIntCoreNumber), cores);
    writeImageToTable(*start, table, k);
    first = k;
  }
  // A starting tray without a core length has not been laid out yet: it is
  // laid out with the rest.
  if (!(coreLength > 0.0f)) first = k;

  if (isNull(top0) || isNull(base0)) {
    restoreSelection();
    return 1;
  }
  const TrayLayout layout = trayLayoutFor(top0, base0, cores);
  const float span = layout.span;
  coreLength = layout.coreLength;

  int advance = 0;
  for (int q = first; q <= count; ++q) {
    selectImageByPlace(q);
    CoreImage* image = currentImage_;
    if (!image || image->intValue(kIntUV) != uv) continue;
    if (q > k) ++advance;
    const float top = top0 + static_cast<float>(advance) * span;
    const float base = base0 + static_cast<float>(advance) * span;

    layOutTray(*image, layout, top, base, shift, unit);

    if (DatasetPart* part = dataPart(table)) {
      part->setReal(q, kColTop, top);
      part->setReal(q, kColBase, base);
      part->setReal(q, kColCoreLength, coreLength);
      part->setReal(q, kColDepthShift, shift);
    }
    parseDepthsInto(image->sourceFile(), table, q);
    writeImageToTable(*image, table, q);
  }

  restoreSelection();
  if (count == 0) {
    host::showMessage("Set depths in current row!");
    return 1;
  }
  redraw_ = true;
  refresh("cor_split");
  refresh("cor_split_1");
  return 0;
}

}  // namespace subsurf
