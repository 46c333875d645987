#include "plot/colour_map.h"

#include <array>
#include <cmath>

#include <fmt/format.h>

#include "host/atomic_file.h"
#include "host/csv_row.h"
#include "host/keyword_file.h"
#include "host/number_text.h"

namespace subsurf {

namespace {

// Default colour indices by class count, class 1 first. The rows for seven and
// nine classes are not the pattern of the others continued; they are kept as
// users know them.
const std::array<std::vector<int>, 9> kDefaultColours = {{
    {4},
    {4, 2},
    {4, 38, 2},
    {4, 6, 38, 2},
    {48, 57, 38, 78, 2},
    {48, 57, 38, 78, 88, 2},
    {48, 57, 38, 79, 88, 67, 4},
    {19, 48, 57, 38, 78, 88, 67, 27},
    {19, 48, 98, 57, 36, 78, 88, 68, 27},
}};

constexpr const char* kRecordOrder[] = {"vers", "lims", "scale", "ranges", "cols", "names", "pins"};

std::string realText(float v) { return isNull(v) ? "-9.9E+20" : formatReal(v, -6); }

Status badValue(std::string_view name, std::string_view value) {
  return Status::error(fmt::format("\"{}\" is not a value for colour-map attribute {}", value, name));
}

}  // namespace

ColourMap defaultColourMap() {
  ColourMap map;
  allocateClasses(map, 5);
  return map;
}

void setDefaultColours(ColourMap& map) {
  const int n = map.classes();
  if (n < 1 || n > 9) return;
  map.colours = kDefaultColours[static_cast<std::size_t>(n - 1)];
}

Status allocateClasses(ColourMap& map, int n) {
  if (n < 1 || n > kMaxColourClasses)
    return Status::error(fmt::format("A colour map has 1 to {} classes, not {}", kMaxColourClasses, n));
  const int old = map.classes();
  map.colours.resize(static_cast<std::size_t>(n), 0);
  map.names.resize(static_cast<std::size_t>(n));
  if (n != old) {
    setDefaultColours(map);
    // A range that cannot be divided (empty, or not positive on a log scale)
    // still leaves n + 1 bounds, all at the minimum, until the user fixes it.
    if (!setClassRanges(map)) map.bounds.assign(static_cast<std::size_t>(n) + 1, map.min);
  }
  map.ich = 1;
  return Status::ok();
}

Status setClassRanges(ColourMap& map) {
  const int n = map.classes();
  if (n < 1) return Status::error("The colour map has no classes");
  if (!(map.max > map.min))
    return Status::error(fmt::format("The colour-map range {} to {} is empty", realText(map.min), realText(map.max)));
  const bool logarithmic = map.ifsc == 2;
  if (logarithmic && !(map.min > 0.0f)) return Status::error("Invalid value for log scale");
  std::vector<float> bounds(static_cast<std::size_t>(n) + 1);
  const double lo = logarithmic ? std::log10(map.min) : map.min;
  const double hi = logarithmic ? std::log10(map.max) : map.max;
  for (int k = 0; k <= n; ++k) {
    const double t = k == n ? hi : lo + (hi - lo) * k / n;
    bounds[static_cast<std::size_t>(k)] = static_cast<float>(logarithmic ? std::pow(10.0, t) : t);
  }
  bounds.front() = map.min;
  bounds.back() = map.max;
  map.bounds = std::move(bounds);
  map.ich = 1;
  return Status::ok();
}

int classOf(const ColourMap& map, float value) {
  if (isNull(value) || !std::isfinite(value)) return -1;
  const int n = map.classes();
  if (map.icat == 1) {
    const long k = std::lround(value);
    return k < 1 ? 0 : (k > n ? n + 1 : static_cast<int>(k));
  }
  if (map.bounds.size() != static_cast<std::size_t>(n) + 1 || n == 0) return -1;
  if (value < map.bounds.front()) return 0;
  if (value > map.bounds.back()) return n + 1;
  for (int k = 1; k < n; ++k)
    if (value < map.bounds[static_cast<std::size_t>(k)]) return k;
  return n;
}

int colourOf(const ColourMap& map, float value) {
  const int k = classOf(map, value);
  if (k < 0) return 0;
  if (k == 0) return map.c0;
  if (k > map.classes()) return map.c1;
  return map.colours[static_cast<std::size_t>(k - 1)];
}

Status checkColourMap(const ColourMap& map) {
  const std::size_t n = map.colours.size();
  if (n == 0) return Status::error("The colour map has no classes");
  if (map.bounds.size() != n + 1)
    return Status::error(fmt::format("The colour map has {} classes but {} class bounds", n, map.bounds.size()));
  if (map.names.size() != n)
    return Status::error(fmt::format("The colour map has {} classes but {} class names", n, map.names.size()));
  for (std::size_t k = 1; k < map.bounds.size(); ++k)
    if (!(map.bounds[k] >= map.bounds[k - 1]))
      return Status::error(fmt::format("Colour-map class {} runs from {} down to {}", k, realText(map.bounds[k - 1]),
                                       realText(map.bounds[k])));
  return Status::ok();
}

Status colourMapAttribute(const ColourMap& map, std::string_view name, std::string& value) {
  if (name == "cm_min") value = realText(map.min);
  else if (name == "cm_max") value = realText(map.max);
  else if (name == "cm_dmin") value = realText(map.dmin);
  else if (name == "cm_dmax") value = realText(map.dmax);
  else if (name == "cm_ich") value = std::to_string(map.ich);
  else if (name == "cm_icat") value = std::to_string(map.icat);
  else if (name == "cm_ifsc") value = std::to_string(map.ifsc);
  else if (name == "cm_imap") value = std::to_string(map.imap);
  else if (name == "cm_c0") value = std::to_string(map.c0);
  else if (name == "cm_c1") value = std::to_string(map.c1);
  else if (name == "cm_nr") value = std::to_string(map.classes());
  else return Status::error(fmt::format("Unknown colour-map attribute {}", name));
  return Status::ok();
}

Status setColourMapAttribute(ColourMap& map, std::string_view name, std::string_view value) {
  float* real = name == "cm_min" ? &map.min : name == "cm_max" ? &map.max : name == "cm_dmin" ? &map.dmin
              : name == "cm_dmax" ? &map.dmax : nullptr;
  if (real) {
    float v = 0;
    if (!parseReal(value, v)) return badValue(name, value);
    *real = isNoValue(v) ? kRealNull : v;
    map.ich = 1;
    return Status::ok();
  }
  int* integer = name == "cm_ich" ? &map.ich : name == "cm_icat" ? &map.icat : name == "cm_ifsc" ? &map.ifsc
               : name == "cm_imap" ? &map.imap : name == "cm_c0" ? &map.c0 : name == "cm_c1" ? &map.c1 : nullptr;
  int v = 0;
  if (integer || name == "cm_nr") {
    if (!parseInteger(value, v)) return badValue(name, value);
  } else {
    return Status::error(fmt::format("Unknown colour-map attribute {}", name));
  }
  if (name == "cm_nr") return allocateClasses(map, v);
  *integer = v;
  if (integer != &map.ich) map.ich = 1;
  return Status::ok();
}

std::string colourMapFileText(const ColourMap& map) {
  std::vector<CsvRow> rows(7);
  rows[0].addText("vers").addInt(kColourMapFileVersion);
  rows[1].addText("lims").addReal(map.min).addReal(map.max).addReal(map.dmin).addReal(map.dmax);
  rows[2].addText("scale").addInt(map.ifsc).addInt(map.icat).addInt(map.imap).addInt(map.c0).addInt(map.c1);
  rows[3].addText("ranges").addInt(static_cast<int>(map.bounds.size()) - 1);
  for (float b : map.bounds) rows[3].addReal(b);
  rows[4].addText("cols").addInt(map.classes());
  for (int c : map.colours) rows[4].addInt(c);
  rows[5].addText("names").addInt(static_cast<int>(map.names.size()));
  for (const std::string& s : map.names) rows[5].addText(s);
  rows[6].addText("pins").addInt(static_cast<int>(map.pins.size()));
  for (float p : map.pins) rows[6].addReal(p);
  std::string text;
  for (const CsvRow& row : rows) {
    text += row.str();
    text += '\n';
  }
  return text;
}

Status writeColourMapFile(const ColourMap& map, const std::string& path) {
  if (Status s = checkColourMap(map); !s) return Status::error(fmt::format("{}: {}", path, s.message()));
  return writeFileAtomically(path, colourMapFileText(map));
}

namespace {

// One record: its keyword, a count in field 2 bounded by the map's limits,
// then that many values.
class ColourMapFileParser {
 public:
  explicit ColourMapFileParser(KeywordFileReader& file) : file_(file) {}

  Status parse(ColourMap& map) {
    CsvRow row;
    int version = 0;
    if (!next(0, row) || row.integer(2, version) != CsvRow::kOk)
      return Status::error(file_.where("not a colour-map file: it does not begin with \"vers\""));
    if (version < 1 || version > kColourMapFileVersion)
      return Status::error(file_.where(fmt::format("colour-map file version {} is not one this program reads", version)));
    if (!expect(1, row)) return error_;
    if (!reals(row, 2, {&map.min, &map.max, &map.dmin, &map.dmax})) return error_;
    if (!expect(2, row)) return error_;
    if (!integers(row, 2, {&map.ifsc, &map.icat, &map.imap, &map.c0, &map.c1})) return error_;
    int n = 0;
    if (!expect(3, row) || !count(row, 1, kMaxColourClasses, n)) return error_;
    map.bounds.assign(static_cast<std::size_t>(n) + 1, 0.0f);
    for (int k = 0; k <= n; ++k)
      if (!reals(row, 3 + k, {&map.bounds[static_cast<std::size_t>(k)]})) return error_;
    if (!expect(4, row) || !sameCount(row, n)) return error_;
    map.colours.assign(static_cast<std::size_t>(n), 0);
    for (int k = 0; k < n; ++k)
      if (!integers(row, 3 + k, {&map.colours[static_cast<std::size_t>(k)]})) return error_;
    if (!expect(5, row) || !sameCount(row, n)) return error_;
    map.names.assign(static_cast<std::size_t>(n), "");
    for (int k = 0; k < n; ++k) map.names[static_cast<std::size_t>(k)] = row.field(3 + k);
    int pins = 0;
    if (!expect(6, row) || !count(row, 0, kMaxColourClasses, pins)) return error_;
    map.pins.assign(static_cast<std::size_t>(pins), 0.0f);
    for (int k = 0; k < pins; ++k)
      if (!reals(row, 3 + k, {&map.pins[static_cast<std::size_t>(k)]})) return error_;
    if (file_.next(row))
      return Status::error(file_.where(fmt::format("unexpected record \"{}\" after \"pins\"", row.field(1))));
    if (Status s = checkColourMap(map); !s) return Status::error(fmt::format("{}: {}", file_.path(), s.message()));
    map.ich = 0;
    return Status::ok();
  }

 private:
  bool next(int place, CsvRow& row) { return file_.next(row) && row.field(1) == kRecordOrder[place]; }

  bool expect(int place, CsvRow& row) {
    if (file_.next(row) && row.field(1) == kRecordOrder[place]) return true;
    return fail(fmt::format("expected the record \"{}\" here", kRecordOrder[place]));
  }

  bool fail(const std::string& what) {
    error_ = Status::error(file_.where(what));
    return false;
  }

  bool count(const CsvRow& row, int low, int high, int& n) {
    if (row.integer(2, n) != CsvRow::kOk || n < low || n > high)
      return fail(fmt::format("\"{}\": the count \"{}\" is not a whole number from {} to {}", row.field(1),
                              row.field(2), low, high));
    return true;
  }

  bool sameCount(const CsvRow& row, int n) {
    int m = 0;
    if (row.integer(2, m) != CsvRow::kOk || m != n)
      return fail(fmt::format("\"{}\": the count \"{}\" is not the {} classes of \"ranges\"", row.field(1),
                              row.field(2), n));
    return true;
  }

  bool reals(const CsvRow& row, int first, std::initializer_list<float*> out) {
    int column = first;
    for (float* v : out) {
      if (row.real(column, *v) != CsvRow::kOk)
        return fail(fmt::format("\"{}\": field {} (\"{}\") is not a number", row.field(1), column, row.field(column)));
      ++column;
    }
    return true;
  }

  bool integers(const CsvRow& row, int first, std::initializer_list<int*> out) {
    int column = first;
    for (int* v : out) {
      if (row.integer(column, *v) != CsvRow::kOk)
        return fail(fmt::format("\"{}\": field {} (\"{}\") is not a whole number", row.field(1), column,
                                row.field(column)));
      ++column;
    }
    return true;
  }

  KeywordFileReader& file_;
  Status error_;
};

}  // namespace

Status readColourMapFile(const std::string& path, ColourMap& map) {
  KeywordFileReader file;
  if (Status s = file.open(path); !s) return s;
  ColourMap read;
  ColourMapFileParser parser(file);
  if (Status s = parser.parse(read); !s) return s;
  map = std::move(read);
  return Status::ok();
}

}  // namespace subsurf
