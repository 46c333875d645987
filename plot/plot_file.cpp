#include "plot/plot_file.h"

#include <array>
#include <functional>
#include <map>
#include <sstream>
#include <string_view>

#include <fmt/format.h>

#include "host/fixed_text.h"
#include "host/keyword_file.h"

namespace subsurf {
namespace {

// A text field with its width.
struct Text {
  std::string& value;
  std::size_t width;
};

// The records of each block, in file order. One list serves writing and
// reading: the visitor either puts a field out as a row or binds the key to a
// reader of that field.
template <typename V>
void visitPlotFields(V& v, PlotFields& f) {
  v.field("zp_title", Text{f.title, kPlotTextWidth});
  v.field("zp_source", Text{f.source, kPlotTextWidth});
  v.field("zp_pdesc", Text{f.pdesc, kPlotTextWidth});
  v.field("zp_ops", f.ops);
  v.field("zp_plot_bg", f.plotBg);
  v.field("zp_data_bg", f.dataBg);
  v.field("zp_grlc1", f.grlc1);
  v.field("zp_grlc2", f.grlc2);
  v.field("zp_sgsty", f.sgsty);
  v.field("zp_bllab", f.bllab);
  v.field("zp_axsame", f.axsame);
  v.field("zp_oneax", f.oneax);
  v.field("zp_zpssame", f.zpssame);
  v.field("zp_plops", f.plops);
}

template <typename V>
void visitAnnotation(V& v, Annotation& a) {
  static constexpr const char* kTextKeys[kAnnotationTexts] = {"an_topl",  "an_topc",  "an_topr",
                                                              "an_basel", "an_basec", "an_baser"};
  for (int k = 0; k < kAnnotationTexts; ++k) v.field(kTextKeys[k], a.texts[static_cast<std::size_t>(k)]);
  v.field("an_topbg", a.topbg);
  v.field("an_topbox", a.topbox);
  v.field("an_basebg", a.basebg);
  v.field("an_basebox", a.basebox);
  v.field("an_plotbg", a.plotbg);
  v.field("an_plotbox", a.plotbox);
  v.field("an_obg", a.obg);
  v.field("an_obox", a.obox);
  v.field("an_topmar", a.topmar);
  v.field("an_basemar", a.basemar);
}

template <typename V>
void visitLayout(V& v, Layout& l) {
  v.field("la_mono", l.mono);
  v.field("la_aspect", l.aspect);
  v.field("la_rotate", l.rotate);
  v.field("la_paper", l.paper);
  v.field("la_fit", l.fit);
  v.field("la_hardc", l.hardc);
  v.field("la_cgm", l.cgm);
  v.field("la_strip", l.strip);
  v.field("la_ptype", l.ptype);
  v.field("la_hcpages", l.hcpages);
  v.field("la_npages", l.npages);
  v.field("la_pageop", l.pageop);
  v.field("la_nex", l.nex);
  v.field("la_ney", l.ney);
  v.field("la_batch", l.batch);
  v.field("la_oasc", l.oasc);
  v.field("la_reqx", l.reqx);
  v.field("la_reqy", l.reqy);
  v.field("la_ml", l.ml);
  v.field("la_mr", l.mr);
  v.field("la_mt", l.mt);
  v.field("la_mb", l.mb);
  v.field("la_pagex", l.pagex);
  v.field("la_pagey", l.pagey);
  v.field("la_px", l.px);
  v.field("la_py", l.py);
  v.field("la_frx", l.frx);
  v.field("la_fry", l.fry);
}

constexpr const char* kScaleKeys[kAxisCount] = {"zps_xsc", "zps_ysc", "zps_zsc", "zps_csc", "zps_dsc"};
constexpr const char* kLabelKeys[kAxisCount] = {"zps_xlab", "zps_ylab", "zps_zlab", "zps_clab", "zps_dlab"};

template <typename V>
void visitSet(V& v, PlotSet& s) {
  v.field("zps_name", Text{s.name, kSetNameWidth});
  v.field("zps_ids", Text{s.ids, kSetNameWidth});
  v.field("zps_show", s.defs.show);
  v.field("zps_sym", s.sym);
  v.field("zps_lin", s.lin);
  v.field("zps_shd", s.shd);
  v.field("zps_axlabht", s.axlabht);
  v.field("zps_axnumht", s.axnumht);
  v.field("zps_nzm", s.nzm);
  v.field("zps_pol", s.pol);
  v.field("zps_legend", s.legend);
  v.field("zps_black", s.defs.black);
  v.field("zps_iord", s.defs.iord);
  v.field("zps_lirgb", s.lirgb);
  v.field("zps_syrgb", s.syrgb);
  v.field("zps_shrgb", s.shrgb);
  v.field("zps_shsty", s.shsty);
  v.field("zps_aswap", s.aswap);
  v.field("zps_iop", s.defs.iop);
  v.field("zps_rop", s.defs.rop);
  v.field("zps_ax", s.ax);
  for (int k = 0; k < kAxisCount; ++k) v.field(kScaleKeys[k], s.scales[static_cast<std::size_t>(k)]);
  v.field("line", s.lines);
  v.field("zps_icodes", s.icodes);
  for (int k = 0; k < kAxisCount; ++k)
    v.field(kLabelKeys[k], Text{s.labels[static_cast<std::size_t>(k)], kAxisLabelWidth});
  v.field("zps_xv", s.data);
}

// ---- Writing -------------------------------------------------------------

// A line's fields after its key: id, style, colour, width, symbol, closed,
// fixed, name, the point count and the x y pairs.
void appendLine(CsvRow& row, const LineElement& l) {
  row.addInt(l.ID).addInt(l.STYLE).addInt(l.COLOUR).addReal(l.WIDTH).addInt(l.SYMBOL).addInt(l.CLOSED);
  row.addInt(l.FIXED).addText(fixedText(l.NAME)).addInt(static_cast<int>(l.x.size()));
  for (std::size_t k = 0; k < l.x.size(); ++k) row.addReal(l.x[k]).addReal(l.y[k]);
}

class RowWriter {
 public:
  explicit RowWriter(std::ostringstream& out) : out_(out) {}

  void field(const char* key, int v) { put(start(key).addInt(v)); }
  void field(const char* key, float v) { put(start(key).addReal(v)); }
  void field(const char* key, const Text& t) { put(start(key).addText(fieldText(t.value, t.width))); }
  template <std::size_t N>
  void field(const char* key, const std::array<int, N>& a) {
    CsvRow row = start(key);
    row.addInt(static_cast<int>(N));
    for (int v : a) row.addInt(v);
    put(row);
  }
  template <std::size_t N>
  void field(const char* key, const std::array<float, N>& a) {
    CsvRow row = start(key);
    row.addInt(static_cast<int>(N));
    for (float v : a) row.addReal(v);
    put(row);
  }
  void field(const char* key, const std::vector<int>& a) {
    CsvRow row = start(key);
    row.addInt(static_cast<int>(a.size()));
    for (int v : a) row.addInt(v);
    put(row);
  }
  void field(const char* key, const std::vector<std::string>& lines) {
    CsvRow row = start(key);
    row.addInt(static_cast<int>(lines.size()));
    for (const auto& line : lines) row.addText(fieldText(line, kAnnotationLineWidth));
    put(row);
  }
  void field(const char* key, const ZW_SCALE& s) {
    put(start(key).addInt(s.TYPE).addInt(s.MODE).addReal(s.MIN).addReal(s.MAX).addText(fixedText(s.UNIT)));
  }
  void field(const char* key, const ElementList<LineElement>& lines) {
    for (const LineElement& l : lines) {
      CsvRow row = start(key);
      appendLine(row, l);
      put(row);
    }
  }
  void field(const char* key, const std::array<std::vector<float>, kAxisCount>& data) {
    for (int axis = 1; axis <= kAxisCount; ++axis) {
      const auto& column = data[static_cast<std::size_t>(axis - 1)];
      CsvRow row = start(key);
      row.addInt(axis).addInt(static_cast<int>(column.size()));
      for (float v : column) row.addReal(v);
      put(row);
    }
  }

 private:
  static CsvRow start(const char* key) {
    CsvRow row;
    row.addText(key);
    return row;
  }
  void put(const CsvRow& row) { out_ << row.str() << '\n'; }
  std::ostringstream& out_;
};

// ---- Reading -------------------------------------------------------------

// Reads one record into its field; an empty answer means done, else what is wrong.
using FieldReader = std::function<std::string(const CsvRow&)>;

std::string notNumber(int column, std::string_view kind) {
  return fmt::format("column {} is not {}", column, kind);
}

std::string readInt(const CsvRow& row, int column, int& out) {
  const int s = row.integer(column, out);
  if (s == CsvRow::kAbsent) return fmt::format("column {} is missing", column);
  if (s != CsvRow::kOk) return notNumber(column, "a whole number");
  return {};
}

std::string readReal(const CsvRow& row, int column, float& out) {
  const int s = row.real(column, out);
  if (s == CsvRow::kAbsent) return fmt::format("column {} is missing", column);
  if (s != CsvRow::kOk) return notNumber(column, "a number");
  return {};
}

// The count in column 2 of a list record, checked against the fields present
// (so a damaged count never makes us allocate for values that are not there).
std::string readCount(const CsvRow& row, int column, int perItem, int& n) {
  if (auto e = readInt(row, column, n); !e.empty()) return e;
  const int present = static_cast<int>(row.size()) - column;
  if (n < 0 || static_cast<long long>(n) * perItem != present)
    return fmt::format("the count {} in column {} does not match the {} values that follow", n, column, present);
  return {};
}

// The fields of a "line" record (see appendLine).
std::string readLine(const CsvRow& row, LineElement& l) {
  int n = 0;
  for (auto e : {readInt(row, 2, l.ID), readInt(row, 3, l.STYLE), readInt(row, 4, l.COLOUR),
                 readReal(row, 5, l.WIDTH), readInt(row, 6, l.SYMBOL), readInt(row, 7, l.CLOSED),
                 readInt(row, 8, l.FIXED), readCount(row, 10, 2, n)})
    if (!e.empty()) return e;
  setFixed(l.NAME, row.field(9));
  std::vector<float> x(static_cast<std::size_t>(n)), y(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) {
    if (auto e = readReal(row, 11 + 2 * k, x[static_cast<std::size_t>(k)]); !e.empty()) return e;
    if (auto e = readReal(row, 12 + 2 * k, y[static_cast<std::size_t>(k)]); !e.empty()) return e;
  }
  l.setPoints(std::move(x), std::move(y));
  return {};
}

class KeyBinder {
 public:
  explicit KeyBinder(std::map<std::string, FieldReader, std::less<>>& readers) : readers_(readers) {}

  void field(const char* key, int& v) {
    bind(key, [&v](const CsvRow& row) { return readInt(row, 2, v); });
  }
  void field(const char* key, float& v) {
    bind(key, [&v](const CsvRow& row) { return readReal(row, 2, v); });
  }
  void field(const char* key, Text t) {
    bind(key, [t](const CsvRow& row) {
      t.value = fieldText(row.field(2), t.width);
      return std::string();
    });
  }
  template <typename T, std::size_t N>
  void field(const char* key, std::array<T, N>& a) {
    bind(key, [&a](const CsvRow& row) {
      int n = 0;
      if (auto e = readCount(row, 2, 1, n); !e.empty()) return e;
      if (n != static_cast<int>(N)) return fmt::format("{} values where {} belong", n, N);
      for (int k = 0; k < n; ++k)
        if (auto e = readValue(row, k + 3, a[static_cast<std::size_t>(k)]); !e.empty()) return e;
      return std::string();
    });
  }
  void field(const char* key, std::vector<int>& a) {
    bind(key, [&a](const CsvRow& row) {
      int n = 0;
      if (auto e = readCount(row, 2, 1, n); !e.empty()) return e;
      a.assign(static_cast<std::size_t>(n), 0);
      for (int k = 0; k < n; ++k)
        if (auto e = readInt(row, k + 3, a[static_cast<std::size_t>(k)]); !e.empty()) return e;
      return std::string();
    });
  }
  void field(const char* key, std::vector<std::string>& lines) {
    bind(key, [&lines](const CsvRow& row) {
      int n = 0;
      if (auto e = readCount(row, 2, 1, n); !e.empty()) return e;
      lines.clear();
      for (int k = 0; k < n; ++k) lines.push_back(fieldText(row.field(k + 3), kAnnotationLineWidth));
      return std::string();
    });
  }
  void field(const char* key, ZW_SCALE& s) {
    bind(key, [&s](const CsvRow& row) {
      for (auto e : {readInt(row, 2, s.TYPE), readInt(row, 3, s.MODE), readReal(row, 4, s.MIN),
                     readReal(row, 5, s.MAX)})
        if (!e.empty()) return e;
      setFixed(s.UNIT, row.field(6));
      return std::string();
    });
  }
  void field(const char* key, ElementList<LineElement>& lines) {
    lines.clear();
    bind(key, [&lines](const CsvRow& row) {
      LineElement l;
      if (auto e = readLine(row, l); !e.empty()) return e;
      // Lines keep the ids they were saved with.
      const int id = l.ID;
      lines.add(std::move(l)).ID = id;
      return std::string();
    });
  }
  void field(const char* key, std::array<std::vector<float>, kAxisCount>& data) {
    bind(key, [&data](const CsvRow& row) {
      int axis = 0, n = 0;
      if (auto e = readInt(row, 2, axis); !e.empty()) return e;
      if (axisIndex(axis) < 0) return fmt::format("axis {} in column 2 is not 1 to {}", axis, kAxisCount);
      if (auto e = readCount(row, 3, 1, n); !e.empty()) return e;
      auto& column = data[static_cast<std::size_t>(axis - 1)];
      column.assign(static_cast<std::size_t>(n), 0.0f);
      for (int k = 0; k < n; ++k)
        if (auto e = readReal(row, k + 4, column[static_cast<std::size_t>(k)]); !e.empty()) return e;
      return std::string();
    });
  }

 private:
  static std::string readValue(const CsvRow& row, int column, int& v) { return readInt(row, column, v); }
  static std::string readValue(const CsvRow& row, int column, float& v) { return readReal(row, column, v); }
  void bind(const char* key, FieldReader reader) { readers_[key] = std::move(reader); }
  std::map<std::string, FieldReader, std::less<>>& readers_;
};

// Everything a plot file fills, read aside so that a damaged file changes nothing.
struct PlotContents {
  PlotFields fields;
  Annotation annotation;
  Layout layout;
  std::vector<PlotSet> sets;
};

class PlotFileParser {
 public:
  PlotFileParser(KeywordFileReader& file, PlotContents& out) : file_(file), out_(out) {
    KeyBinder plotKeys(plotReaders_);
    visitPlotFields(plotKeys, out_.fields);
    visitAnnotation(plotKeys, out_.annotation);
    visitLayout(plotKeys, out_.layout);
  }

  Status parse() {
    CsvRow row;
    if (!file_.next(row)) return Status::error(file_.where("the file is empty; a plot file begins with \"version\""));
    if (auto s = readVersion(row); !s) return s;
    int declaredSets = -1;
    while (file_.next(row)) {
      const std::string key = row.field(1);
      std::string problem;
      if (key == "zp_nds") {
        problem = readInt(row, 2, declaredSets);
        if (problem.empty() && declaredSets < 1) problem = fmt::format("{} plot sets; a plot has at least one", declaredSets);
        else if (problem.empty() && !out_.sets.empty()) problem = "\"zp_nds\" comes twice";
      } else if (key == "zps_name") {
        if (declaredSets < 0) problem = "a plot set begins before \"zp_nds\"";
        else if (static_cast<int>(out_.sets.size()) == declaredSets)
          problem = fmt::format("more plot sets than the {} that \"zp_nds\" gives", declaredSets);
        else
          problem = startSet(row);
      } else if (key.starts_with("zps_") || key == "line") {
        if (out_.sets.empty()) problem = fmt::format("\"{}\" comes before the first \"zps_name\"", key);
        else problem = dispatch(setReaders_, key, row);
      } else if (key.starts_with("zp_") || key.starts_with("an_") || key.starts_with("la_")) {
        if (declaredSets >= 0) problem = fmt::format("\"{}\" comes after the plot sets began", key);
        else problem = dispatch(plotReaders_, key, row);
      } else {
        problem = fmt::format("unknown record \"{}\"", key);
      }
      if (!problem.empty()) return Status::error(file_.where(problem));
    }
    if (declaredSets < 0) return Status::error(file_.where("the file ends before \"zp_nds\""));
    if (static_cast<int>(out_.sets.size()) != declaredSets)
      return Status::error(file_.where(fmt::format("the file ends after {} of the {} plot sets",
                                                   out_.sets.size(), declaredSets)));
    for (const PlotSet& set : out_.sets)
      for (const auto& column : set.data)
        if (!column.empty() && column.size() != set.data[0].size())
          return Status::error(fmt::format("{}: plot set \"{}\" has axes of different lengths", file_.path(), set.name));
    return Status::ok();
  }

 private:
  Status readVersion(const CsvRow& row) {
    int version = 0;
    if (row.field(1) != "version" || !readInt(row, 2, version).empty())
      return Status::error(file_.where("not a plot file: the first record is not \"version\""));
    if (version < 1 || version > kPlotFileVersion)
      return Status::error(file_.where(fmt::format("plot file version {} is not one this program reads", version)));
    return Status::ok();
  }

  std::string startSet(const CsvRow& row) {
    out_.sets.emplace_back();
    setReaders_.clear();
    KeyBinder setKeys(setReaders_);
    visitSet(setKeys, out_.sets.back());
    return dispatch(setReaders_, "zps_name", row);
  }

  static std::string dispatch(std::map<std::string, FieldReader, std::less<>>& readers, const std::string& key,
                              const CsvRow& row) {
    auto it = readers.find(key);
    if (it == readers.end()) return fmt::format("unknown record \"{}\"", key);
    if (auto e = it->second(row); !e.empty()) return fmt::format("\"{}\": {}", key, e);
    return {};
  }

  KeywordFileReader& file_;
  PlotContents& out_;
  std::map<std::string, FieldReader, std::less<>> plotReaders_, setReaders_;
};

}  // namespace

std::string lineRecordText(const LineElement& line) {
  CsvRow row;
  row.addText("line");
  appendLine(row, line);
  return row.str();
}

Status readLineRecordText(std::string_view text, LineElement& line) {
  const CsvRow row = CsvRow::parse(text);
  if (row.field(1) != "line") return Status::error(fmt::format("not a \"line\" record: \"{}\"", row.field(1)));
  LineElement read;
  if (auto e = readLine(row, read); !e.empty()) return Status::error("\"line\": " + e);
  line = std::move(read);
  return Status::ok();
}

std::string plotFileText(const PlotRecord& plot) {
  std::ostringstream out;
  RowWriter w(out);
  w.field("version", kPlotFileVersion);
  // The visitors take their records by reference for the reader's sake; the
  // writer only reads them.
  auto& p = const_cast<PlotRecord&>(plot);
  visitPlotFields(w, p.fields);
  visitAnnotation(w, p.annotation);
  visitLayout(w, p.layout);
  w.field("zp_nds", plot.setCount());
  for (PlotSet& set : p.sets) visitSet(w, set);
  return out.str();
}

Status writePlotFile(const PlotRecord& plot, const std::string& path) {
  return writeFileAtomically(path, plotFileText(plot));
}

Status readPlotFile(const std::string& path, PlotRecord& plot) {
  KeywordFileReader file;
  if (auto s = file.open(path); !s) return s;
  PlotContents contents;
  PlotFileParser parser(file, contents);
  if (auto s = parser.parse(); !s) return s;
  plot.fields = std::move(contents.fields);
  plot.annotation = std::move(contents.annotation);
  plot.layout = std::move(contents.layout);
  plot.sets = std::move(contents.sets);
  plot.currentSet = 1;
  return Status::ok();
}

}  // namespace subsurf
