#include "core/row_rectangles.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>

#include "core/image_settings.h"
#include "host/csv_row.h"
#include "host/messages.h"

namespace subsurf {
namespace {

// Files of boxes are small; anything larger is not a list of boxes.
constexpr std::uintmax_t kLargestBoxFile = 16u << 20;

std::string trimmed(std::string_view s) {
  const auto first = s.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  const auto last = s.find_last_not_of(" \t\r\n");
  return std::string(s.substr(first, last - first + 1));
}

// A pixel value: a number that rounds to an int.
bool pixelValue(double v, int& out) {
  if (!std::isfinite(v) || std::fabs(v) > 1.0e9) return false;
  out = static_cast<int>(std::lround(v));
  return true;
}

bool pixelValue(std::string_view text, int& out) {
  const std::string t = trimmed(text);
  if (t.empty()) return false;
  double v = 0.0;
  const auto [end, ec] = std::from_chars(t.data(), t.data() + t.size(), v);
  return ec == std::errc() && end == t.data() + t.size() && pixelValue(v, out);
}

// Corners as [x1, y1, ..., x4, y4] or [[x1, y1], ..., [x4, y4]].
bool cornersFromJson(const nlohmann::json& e, PixelBox& box) {
  std::vector<double> values;
  for (const nlohmann::json& v : e) {
    if (v.is_array()) {
      if (v.size() != 2) return false;
      for (const nlohmann::json& w : v) {
        if (!w.is_number()) return false;
        values.push_back(w.get<double>());
      }
    } else if (v.is_number()) {
      values.push_back(v.get<double>());
    } else {
      return false;
    }
  }
  if (values.size() != 8) return false;
  FreeCorners c;
  for (std::size_t i = 0; i < 8; ++i)
    if (!cornerValue(values[i], (i % 2 == 0 ? c.x : c.y)[i / 2])) return false;
  box = boxOfCorners(c);
  return true;
}

bool boxFromJson(const nlohmann::json& e, PixelBox& box) {
  int v[4];
  if (e.is_array() && e.size() == 8) return cornersFromJson(e, box);
  if (e.is_object() && e.contains("corners")) return e["corners"].is_array() && cornersFromJson(e["corners"], box);
  if (e.is_array()) {
    if (e.size() != 4) return false;
    for (int i = 0; i < 4; ++i)
      if (!e[i].is_number() || !pixelValue(e[i].get<double>(), v[i])) return false;
  } else if (e.is_object()) {
    const char* names[4][2] = {{"x", "x"}, {"y", "y"}, {"width", "w"}, {"height", "h"}};
    for (int i = 0; i < 4; ++i) {
      auto it = e.find(names[i][0]);
      if (it == e.end()) it = e.find(names[i][1]);
      if (it == e.end() || !it->is_number() || !pixelValue(it->get<double>(), v[i])) return false;
    }
  } else {
    return false;
  }
  box = {v[0], v[1], v[2], v[3]};
  return true;
}

Status readJsonBoxes(const std::string& path, const std::string& text, std::vector<PixelBox>& out) {
  nlohmann::json doc = nlohmann::json::parse(text, nullptr, false);
  if (doc.is_discarded()) return Status::error(fmt::format("{}: not a JSON document", path));
  if (doc.is_object()) {
    if (doc.contains("rows")) doc = doc["rows"];
    else if (doc.contains("rectangles")) doc = doc["rectangles"];
  }
  if (!doc.is_array())
    return Status::error(fmt::format("{}: expected a list of boxes [x, y, w, h] or {{\"x\", \"y\", \"width\", \"height\"}}", path));
  std::size_t k = 0;
  for (const nlohmann::json& e : doc) {
    ++k;
    PixelBox box;
    if (!boxFromJson(e, box))
      return Status::error(fmt::format("{}: box {} is not [x, y, w, h] or {{\"x\", \"y\", \"width\", \"height\"}}: {}", path,
                                         k, e.dump()));
    out.push_back(box);
  }
  return Status::ok();
}

Status readCsvBoxes(const std::string& path, const std::string& text, std::vector<PixelBox>& out) {
  std::istringstream in(text);
  int lineNumber = 0;
  for (std::string line; std::getline(in, line);) {
    ++lineNumber;
    if (lineNumber == 1 && line.rfind("\xEF\xBB\xBF", 0) == 0) line.erase(0, 3);  // spreadsheets' byte-order mark
    const std::string t = trimmed(line);
    if (t.empty() || t[0] == '#') continue;
    const CsvRow row = CsvRow::parse(t);
    const std::string first = row.size() >= 1 ? trimmed(row.field(1)) : std::string();
    if (out.empty() && lineNumber == 1 && (first == "x" || first == "x1")) continue;  // names
    if (row.size() != 4 && row.size() != 8)
      return Status::error(fmt::format("{}, line {}: expected x,y,w,h, found {} field{}: {}", path, lineNumber,
                                         row.size(), row.size() == 1 ? "" : "s", t));
    int v[8];
    for (std::size_t i = 0; i < row.size(); ++i)
      if (!pixelValue(row.field(static_cast<int>(i) + 1), v[i]))
        return Status::error(fmt::format("{}, line {}: \"{}\" is not a number of pixels", path, lineNumber,
                                           row.field(static_cast<int>(i) + 1)));
    if (row.size() == 8)
      out.push_back(boxOfCorners(FreeCorners{{v[0], v[2], v[4], v[6]}, {v[1], v[3], v[5], v[7]}}));
    else
      out.push_back({v[0], v[1], v[2], v[3]});
  }
  return Status::ok();
}

bool endsWith(std::string_view s, std::string_view tail) {
  if (s.size() < tail.size()) return false;
  for (std::size_t i = 0; i < tail.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(s[s.size() - tail.size() + i])) != tail[i]) return false;
  return true;
}

void clearDepth(DT_RSCA& record) {
  record.V = kRealNull;
  record.SET = -1;  // the state of a setting never given
}

Status shown(Status s) {
  if (!s) host::showMessage(s.message());
  return s;
}

}  // namespace

std::string boxText(const PixelBox& b) {
  if (b.corners) return cornersText(*b.corners);
  return fmt::format("{},{},{},{}", b.x, b.y, b.width, b.height);
}

PixelBox boxOfCorners(const FreeCorners& c) {
  const auto [left, right] = std::minmax_element(c.x.begin(), c.x.end());
  const auto [top, bottom] = std::minmax_element(c.y.begin(), c.y.end());
  PixelBox box(*left, *top, *right - *left, *bottom - *top);
  box.corners = c;
  return box;
}

std::vector<std::string_view> commaFields(std::string_view text) {
  std::vector<std::string_view> parts;
  std::size_t start = 0;
  for (;;) {
    const std::size_t comma = text.find(',', start);
    parts.push_back(text.substr(start, comma == std::string_view::npos ? std::string_view::npos : comma - start));
    if (comma == std::string_view::npos) break;
    start = comma + 1;
  }
  return parts;
}

bool parseBox(std::string_view text, PixelBox& box, std::string& problem) {
  const std::vector<std::string_view> parts = commaFields(text);
  if (parts.size() != 4) {
    problem = fmt::format("\"{}\" is not x,y,w,h (four numbers of pixels)", text);
    return false;
  }
  int v[4];
  for (int i = 0; i < 4; ++i) {
    if (!pixelValue(parts[i], v[i])) {
      problem = fmt::format("\"{}\" is not x,y,w,h: \"{}\" is not a number of pixels", text, trimmed(parts[i]));
      return false;
    }
  }
  box = {v[0], v[1], v[2], v[3]};
  return true;
}

Status readBoxes(const std::string& path, std::vector<PixelBox>& boxes) {
  const bool json = endsWith(path, ".json");
  if (!json && !endsWith(path, ".csv"))
    return shown(Status::error(fmt::format("{}: boxes are read from a .json or a .csv file", path)));
  std::ifstream in(path, std::ios::binary);
  if (!in) return shown(Status::error(fmt::format("{}: cannot be opened", path)));
  std::string text;
  char chunk[65536];
  while (in.read(chunk, sizeof chunk) || in.gcount() > 0) {
    text.append(chunk, static_cast<std::size_t>(in.gcount()));
    if (text.size() > kLargestBoxFile)
      return shown(Status::error(fmt::format("{}: too large for a list of boxes", path)));
  }
  std::vector<PixelBox> read;
  Status s = json ? readJsonBoxes(path, text, read) : readCsvBoxes(path, text, read);
  if (s && read.empty()) s = Status::error(fmt::format("{}: holds no boxes", path));
  if (!s) return shown(s);
  boxes = std::move(read);
  return s;
}

std::string boxProblem(const PixelBox& b, int number, int width, int height) {
  if (b.corners) return cornersProblem(*b.corners, number, width, height);
  if (b.width < 1 || b.height < 1)
    return fmt::format("Rectangle {} ({}) has no {}", number, boxText(b), b.width < 1 ? "width" : "height");
  const long long right = static_cast<long long>(b.x) + b.width;
  const long long bottom = static_cast<long long>(b.y) + b.height;
  if (b.x < 0 || b.y < 0 || right > width || bottom > height)
    return fmt::format("Rectangle {} ({}) lies outside the photo ({} x {} pixels)", number, boxText(b), width, height);
  return {};
}

Status RowRectangles::set(CoreImage& image, const std::vector<PixelBox>& boxes, int width, int height) {
  relaid_ = false;
  if (width < 1 || height < 1) return shown(Status::error("The photo's size is not known"));
  if (boxes.empty()) return shown(Status::error("No rectangles given"));
  if (boxes.size() > static_cast<std::size_t>(kMaxRectangleId - 1))
    return shown(Status::error(
        fmt::format("A photo holds at most {} rectangles ({} given)", kMaxRectangleId - 1, boxes.size())));
  for (std::size_t k = 0; k < boxes.size(); ++k) {
    const std::string problem = boxProblem(boxes[k], static_cast<int>(k) + 1, width, height);
    if (!problem.empty()) return shown(Status::error(problem));
  }

  while (CoreRectangle* first = image.rectangles) session_.deleteRectangleById(image, first->id);
  for (const PixelBox& b : boxes) {
    CoreRectangle* r = session_.newRectangle(image);
    if (b.corners) {
      setFreeCorners(session_, *r, *b.corners);
      continue;
    }
    CoreSession::setVertexCount(*r, 4);
    const int xs[4] = {b.x, b.x + b.width, b.x + b.width, b.x};
    const int ys[4] = {b.y, b.y, b.y + b.height, b.y + b.height};
    for (int i = 0; i < 4; ++i) {
      r->polygon.px[i] = xs[i];
      r->polygon.py[i] = ys[i];
    }
    session_.updateWorld(*r);
  }
  // The split scales outlines from the size the photograph had when they were drawn.
  setInteger(image.intSetting(kIntPixelWidth), width);
  setInteger(image.intSetting(kIntPixelHeight), height);

  const int rows = static_cast<int>(boxes.size());
  if (rows > kTrayRows && image.intValue(kIntReverse) != 2) host::showMessage("Warning - more than 10 cores in tray!");
  const int before = image.intValue(kIntCoreNumber);
  setInteger(image.intSetting(kIntCoreNumber), rows);
  if (before != rows) relaid_ = layOutTrayRows(image) == 0;
  image.dirty = 1;
  return Status::ok();
}

int layOutTrayRows(CoreImage& image) {
  const float top = image.realValue(kRealTop), base = image.realValue(kRealBase);
  const int rows = image.intValue(kIntCoreNumber);
  if (isNull(top) || isNull(base) || isNull(rows) || rows < 1 || !(top < base)) return 1;
  const std::string unit = depthUnitOf(image.realSetting(kRealTop));
  const float span = base - top;
  const float coreLength = span / static_cast<float>(rows);
  setDepth(image.realSetting(kRealTrayLength), span, unit);
  setDepth(image.realSetting(kRealCoreLength), coreLength, unit);
  for (int row = 1; row <= kMaxStoredRows; ++row) {
    // Settings of rows the tray no longer has are cleared, so that no depth
    // is left standing for a row that is not there.
    // Settings past row 10 double as the depth shift on trays of ten rows or fewer.
    if (row > kTrayRows && rows <= kTrayRows) break;
    if (row > rows) {
      clearDepth(image.realSetting(rowTopSetting(row)));
      clearDepth(image.realSetting(rowBaseSetting(row)));
      continue;
    }
    const float rowTop = top + static_cast<float>(row - 1) * coreLength;
    const float rowBase = row == rows ? base : std::min(rowTop + coreLength, base);
    setDepth(image.realSetting(rowTopSetting(row)), rowTop, unit);
    setDepth(image.realSetting(rowBaseSetting(row)), rowBase, unit);
  }
  return 0;
}

}  // namespace subsurf
