#include "plot/crossplot.h"

#include <cmath>
#include <fstream>

#include <fmt/format.h>

#include "host/csv_row.h"
#include "host/fixed_text.h"
#include "host/nulls.h"
#include "host/number_text.h"
#include "plot/axis_scales.h"
#include "plot/single_set_plot.h"
#include "units/units_registry.h"

namespace subsurf {
namespace {

struct HeaderCell {
  std::string name, unit;
};

HeaderCell headerCell(const std::string& cell) {
  const std::string t = trimBlanks(cell);
  const std::size_t open = t.find('[');
  if (open == std::string::npos || t.back() != ']') return {t, ""};
  return {trimBlanks(t.substr(0, open)), trimBlanks(t.substr(open + 1, t.size() - open - 2))};
}

// How a column's values become axis values.
struct Conversion {
  int series = -1, from = 0, to = 0;
  bool needed() const { return series >= 0 && from != to; }
};

Status conversionFor(const std::string& path, const HeaderCell& column, const std::string& axisUnit, Conversion& c) {
  if (axisUnit.empty() || lowerCase(axisUnit) == lowerCase(column.unit)) return Status::ok();
  if (column.unit.empty())
    return Status::error(fmt::format("{}: column \"{}\" has no unit to convert into \"{}\" (write it as \"{}[unit]\")",
                                     path, column.name, axisUnit, column.name));
  const UnitsRegistry& units = unitsRegistry();
  c.series = units.guessSeries(column.unit, axisUnit);
  if (c.series >= 0) {
    c.from = units.findUnit(c.series, column.unit);
    c.to = units.findUnit(c.series, axisUnit);
  }
  if (c.series < 0 || c.from < 1 || c.to < 1)
    return Status::error(fmt::format("{}: column \"{}\" in \"{}\" cannot be shown in \"{}\": no series holds both units",
                                     path, column.name, column.unit, axisUnit));
  return Status::ok();
}

int findColumn(const std::vector<HeaderCell>& header, const std::string& name) {
  for (std::size_t k = 0; k < header.size(); ++k)
    if (lowerCase(header[k].name) == lowerCase(trimBlanks(name))) return static_cast<int>(k);
  return -1;
}

std::string columnList(const std::vector<HeaderCell>& header) {
  std::string names;
  for (const auto& h : header) names += (names.empty() ? "\"" : ", \"") + h.name + "\"";
  return names;
}

}  // namespace

int scaleTypeByName(const std::string& name) {
  const std::string n = lowerCase(trimBlanks(name));
  for (int t = 1; t <= 8; ++t) {
    const std::string known = lowerCase(scaleTypeName(t));
    if (n == known || (known.back() == '.' && n == known.substr(0, known.size() - 1))) return t;
  }
  return 0;
}

int rangeModeByName(const std::string& name) {
  const std::string n = lowerCase(trimBlanks(name));
  for (int m = 1; m <= 6; ++m)
    if (n == lowerCase(rangeModeName(m))) return m;
  return 0;
}

Status readCrossplotData(const std::string& path, const AxisRequest& x, const AxisRequest& y, CrossplotData& out,
                         const std::vector<std::string>& textColumns) {
  return readCrossplotData(path, x, y, nullptr, out, textColumns);
}

Status readCrossplotData(const std::string& path, const AxisRequest& x, const AxisRequest& y,
                         const AxisRequest* colour, CrossplotData& out, const std::vector<std::string>& textColumns) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return Status::error(fmt::format("cannot open \"{}\"", path));
  std::string line;
  long lineNumber = 0;
  std::vector<HeaderCell> header;
  while (header.empty() && std::getline(in, line)) {
    ++lineNumber;
    if (lineNumber == 1 && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);  // a spreadsheet's byte-order mark
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (trimmedBlanks(line).empty()) continue;
    const CsvRow row = CsvRow::parse(line);
    for (int c = 1; c <= static_cast<int>(row.size()); ++c) header.push_back(headerCell(row.field(c)));
  }
  if (header.empty()) return Status::error(fmt::format("{}: no header row of column names", path));
  // Columns 0 and 1 make the point; column 2, when asked for, colours it.
  std::vector<const AxisRequest*> requests = {&x, &y};
  if (colour) requests.push_back(colour);
  std::vector<int> index;
  std::vector<Conversion> conversion(requests.size());
  for (std::size_t a = 0; a < requests.size(); ++a) {
    index.push_back(findColumn(header, requests[a]->column));
    if (index[a] < 0)
      return Status::error(fmt::format("{}, line {}: no column \"{}\"; the columns are {}", path, lineNumber,
                                       requests[a]->column, columnList(header)));
    const HeaderCell& cell = header[static_cast<std::size_t>(index[a])];
    if (Status s = conversionFor(path, cell, requests[a]->unit, conversion[a]); !s) return s;
  }
  std::vector<int> textIndex;
  for (const std::string& name : textColumns) {
    textIndex.push_back(findColumn(header, name));
    if (textIndex.back() < 0)
      return Status::error(fmt::format("{}, line {}: no column \"{}\"; the columns are {}", path, lineNumber, name,
                                       columnList(header)));
  }
  out = CrossplotData();
  const auto columnName = [&](std::size_t a) { return header[static_cast<std::size_t>(index[a])].name; };
  const auto axisUnit = [&](std::size_t a) {
    return requests[a]->unit.empty() ? header[static_cast<std::size_t>(index[a])].unit : requests[a]->unit;
  };
  out.xColumn = columnName(0);
  out.yColumn = columnName(1);
  out.xUnit = axisUnit(0);
  out.yUnit = axisUnit(1);
  if (colour) {
    out.colourColumn = columnName(2);
    out.colourUnit = axisUnit(2);
  }
  out.texts.resize(textIndex.size());

  const UnitsRegistry& units = unitsRegistry();
  while (std::getline(in, line)) {
    ++lineNumber;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (trimmedBlanks(line).empty()) continue;
    ++out.rows;
    const CsvRow row = CsvRow::parse(line);
    double v[3] = {0, 0, 0};
    bool empty[3] = {}, null[3] = {}, nonFinite[3] = {};
    for (std::size_t a = 0; a < requests.size(); ++a) {
      const int column = index[a] + 1;
      const std::string cell = trimBlanks(row.field(column));
      if (cell.empty()) {
        empty[a] = true;
        continue;
      }
      if (!parseReal(cell, v[a]))
        return Status::error(fmt::format("{}, line {}, column {} (\"{}\"): \"{}\" is not a number", path, lineNumber,
                                         column, header[static_cast<std::size_t>(column - 1)].name, cell));
      if (!std::isfinite(v[a])) nonFinite[a] = true;
      else if (isNoValue(v[a]) || isNull(static_cast<float>(v[a]))) null[a] = true;
    }
    if (empty[0] || empty[1]) ++out.emptyCells;
    else if (null[0] || null[1]) ++out.nullValues;
    else if (nonFinite[0] || nonFinite[1]) ++out.nonFinite;
    if (empty[0] || empty[1] || null[0] || null[1] || nonFinite[0] || nonFinite[1]) continue;
    int err = 0;
    const auto converted = [&](std::size_t a) {
      const Conversion& c = conversion[a];
      return static_cast<float>(c.needed() ? units.convert(v[a], c.series, c.from, c.to, err) : v[a]);
    };
    out.x.push_back(converted(0));
    out.y.push_back(converted(1));
    for (std::size_t k = 0; k < textIndex.size(); ++k) out.texts[k].push_back(trimBlanks(row.field(textIndex[k] + 1)));
    if (!colour) continue;
    if (empty[2] || null[2] || nonFinite[2]) {
      out.colour.push_back(kRealNull);
      ++out.colourNulls;
    } else {
      out.colour.push_back(converted(2));
    }
  }
  return Status::ok();
}

PlotRecord makeCrossplot(const CrossplotData& data, const AxisRequest& x, const AxisRequest& y,
                         const std::string& title, const std::string& setName) {
  PlotRecord plot = singleSetPlot(title, setName);
  PlotSet& set = plot.sets.back();
  set.ids = fieldText(data.xColumn + "/" + data.yColumn, kSetNameWidth);
  set.data[0] = data.x;
  set.data[1] = data.y;
  set.labels[0] = fieldText(data.xColumn, kAxisLabelWidth);
  set.labels[1] = fieldText(data.yColumn, kAxisLabelWidth);
  // Markers shrink and turn translucent as points crowd, so density shows.
  const std::size_t n = data.x.size();
  set.defs.iop[0] = n <= 2000 ? 15 : n <= 50000 ? 8 : 5;
  set.defs.iop[1] = n <= 2000 ? 0 : n <= 50000 ? 60 : 30;
  const AxisRequest* requests[2] = {&x, &y};
  const std::string units[2] = {data.xUnit, data.yUnit};
  for (int a = 0; a < 2; ++a) {
    ZW_SCALE& s = set.scales[static_cast<std::size_t>(a)];
    s.TYPE = requests[a]->type;
    s.MODE = requests[a]->mode;
    s.MIN = requests[a]->min;
    s.MAX = requests[a]->max;
    setFixed(s.UNIT, units[a]);
    setAxisLimits(set.data[static_cast<std::size_t>(a)], s);
  }
  return plot;
}

}  // namespace subsurf
