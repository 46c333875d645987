#include "plot_command.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "binned_input.h"
#include "cli_support.h"
#include "host/csv_row.h"
#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "host/number_text.h"
#include "plot/axis_scales.h"
#include "plot/binned_plot.h"
#include "plot/class_colouring.h"
#include "plot/crossplot.h"
#include "plot/fitted_line.h"
#include "plot/histogram_plot.h"
#include "plot/stereonet_plot.h"
#include "plot/plot_drawing.h"
#include "plot/plot_file.h"

namespace subsurf::cli {
namespace {

struct AxisOptions {
  std::string column, unit, scale = "linear", range;
  std::optional<float> min, max;
};

struct PlotOptions {
  std::string data;  // xy: the CSV file; draw: the plot file
  AxisOptions x, y;
  std::string range = "auto-rnd";
  std::string title;
  std::vector<std::string> outputs;
  std::string save;
  std::string size = "1600x1200";
  double dpi = 150;
  bool json = false;
  std::string fit, form = "line", fixed;  // xy: a regression line
  std::string colour, colourUnit, colourScale = "linear", colourMap, saveColourMap;  // xy: points coloured by class
  int classes = 0;
  BinnedInput binned;  // bins
  std::string dip, azimuth, net = "equal-area";  // stereonet
  bool poles = false, planes = false, rose = false, contours = false;
  int densityGrid = 100;
  double contourStep = 2, smoothing = 3;
  std::string colourClass, symbolClass;  // stereonet: class columns
  std::string column;  // histogram
  int bins = 0;
  double roseWidth = 10, roseStart = 0;
};

void fail(const std::string& text) { host::showMessage(text); }

// The page size in millimetres from "WIDTHxHEIGHT" pixels at dpi.
bool pageSize(const PlotOptions& o, double& widthMm, double& heightMm) {
  int w = 0, h = 0;
  char x = 0;
  if (std::sscanf(o.size.c_str(), "%d%c%d", &w, &x, &h) != 3 || (x != 'x' && x != 'X') || w < 16 || h < 16 ||
      w > 20000 || h > 20000) {
    fail(fmt::format("--size \"{}\" is not WIDTHxHEIGHT in pixels (16 to 20000 each), such as 1600x1200", o.size));
    return false;
  }
  widthMm = w / o.dpi * 25.4;
  heightMm = h / o.dpi * 25.4;
  return true;
}

// Every output named by a known extension, checked before any work is done.
bool outputKinds(const PlotOptions& o, std::vector<drawing::OutputKind>& kinds) {
  for (const std::string& out : o.outputs) {
    drawing::OutputKind k;
    if (!drawing::outputKindOf(out, k)) {
      fail(fmt::format("--out \"{}\": the name must end in .svg, .png or .pdf", out));
      return false;
    }
    kinds.push_back(k);
  }
  double w = 0, h = 0;
  if (!pageSize(o, w, h)) return false;
  if (kinds.empty() && o.save.empty() && !o.json) {
    fail("nothing to do: give --out FILE.svg|png|pdf, --save FILE.zpl or --json");
    return false;
  }
  return true;
}

bool axisRequest(const AxisOptions& a, const std::string& commonRange, const char* which, AxisRequest& r) {
  r.column = a.column;
  r.unit = a.unit;
  r.type = scaleTypeByName(a.scale);
  if (r.type == 0) {
    fail(fmt::format("--{}-scale \"{}\" is not one of linear, log, square, sqrt, recip, norm, stan, prob", which, a.scale));
    return false;
  }
  const std::string range = a.range.empty() ? commonRange : a.range;
  r.mode = rangeModeByName(range);
  if (r.mode == 0) {
    fail(fmt::format("--{}range \"{}\" is not one of manual, auto, auto-rnd, p99-p1, p95-p5, p90-p10",
                     a.range.empty() ? "" : std::string(which) + "-", range));
    return false;
  }
  if (a.min || a.max) r.mode = kManual;  // given limits make a manual window
  r.min = a.min.value_or(kRealNull);
  r.max = a.max.value_or(kRealNull);
  return true;
}

// A single-precision limit as the short decimal it was (0.3, not 0.30000001192092896); null as null.
nlohmann::json limitJson(float v) {
  if (isNull(v) || !std::isfinite(v)) return nullptr;
  return std::stod(shortestText(v));
}

nlohmann::json scaleJson(const ZW_SCALE& s) {
  return {{"type", scaleTypeName(s.TYPE)}, {"range", rangeModeName(s.MODE)}, {"min", limitJson(s.MIN)},
          {"max", limitJson(s.MAX)}, {"unit", fixedText(s.UNIT)}};
}

int drawAll(const PlotRecord& plot, const PlotOptions& o, const std::vector<drawing::OutputKind>& kinds, nlohmann::json& report) {
  double w = 0, h = 0;
  pageSize(o, w, h);  // checked before the work began
  for (std::size_t k = 0; k < kinds.size(); ++k) {
    DrawOptions d;
    d.kind = kinds[k];
    d.path = o.outputs[k];
    d.dpi = o.dpi;
    d.widthMm = w;
    d.heightMm = h;
    if (Status s = drawPlot(plot, d); !s) {
      fail(s.message());
      return kExitBadInput;
    }
    report["outputs"].push_back(o.outputs[k]);
  }
  return kExitOk;
}

// Fits the line that --fit, --form and --fixed ask for and adds it to the plot.
bool addFit(PlotRecord& plot, const PlotOptions& o, nlohmann::json& out) {
  const auto method = regressionMethodNamed(o.fit);
  if (!method) {
    fail(fmt::format("--fit \"{}\" is not one of forced, x-on-y, y-on-x, rmb, rma, means", o.fit));
    return false;
  }
  const auto form = regressionFormNamed(o.form);
  if (!form) {
    fail(fmt::format("--form \"{}\" is not one of line, power, poly2, poly3", o.form));
    return false;
  }
  std::optional<FixedPoint> fixed;
  if (!o.fixed.empty()) {
    const auto comma = o.fixed.find(',');
    FixedPoint p;
    if (comma == std::string::npos || !parseReal(o.fixed.substr(0, comma), p.x) ||
        !parseReal(o.fixed.substr(comma + 1), p.y)) {
      fail(fmt::format("--fixed \"{}\" is not X,Y", o.fixed));
      return false;
    }
    fixed = p;
  }
  FittedLine line;
  if (Status s = addFittedLine(plot, *method, *form, fixed, line); !s) {
    fail(s.message());
    return false;
  }
  out = {{"method", regressionMethodName(*method)}, {"form", o.form}, {"coefficients", line.fit.coefficients},
         {"points", line.fit.points}, {"r2", line.fit.r2}, {"cc", line.fit.cc}, {"sd", line.fit.sd},
         {"p10", line.fit.p10}, {"p90", line.fit.p90}, {"description", line.description}, {"report", line.report}};
  return true;
}

// Checks the colouring options before any work is done.
bool colourOptions(const PlotOptions& o) {
  if (o.colour.empty() && (o.classes > 0 || !o.colourMap.empty() || !o.saveColourMap.empty())) {
    fail("--classes, --colour-map and --save-colour-map colour the points by a column: give --colour COL too");
    return false;
  }
  if (o.classes > 0 && !o.colourMap.empty()) {
    fail("give --classes N or --colour-map FILE, not both (the map file has its own classes)");
    return false;
  }
  if (o.colourScale != "linear" && o.colourScale != "log") {
    fail(fmt::format("--colour-scale \"{}\" is not linear or log", o.colourScale));
    return false;
  }
  return true;
}

// Colours the points by class of the colour column (a map file's classes, or
// --classes over the column's range) and reports the classes.
bool addColours(PlotRecord& plot, const CrossplotData& data, const PlotOptions& o, nlohmann::json& out) {
  ColourMap map;
  if (!o.colourMap.empty()) {
    if (Status s = readColourMapFile(o.colourMap, map); !s) {
      fail(s.message());
      return false;
    }
  } else if (Status s = colourMapForValues(data.colour, o.classes > 0 ? o.classes : 5, o.colourScale == "log", map);
             !s) {
    fail(fmt::format("{}, column \"{}\": {}", o.data, data.colourColumn, s.message()));
    return false;
  }
  ClassCounts counts;
  if (Status s = colourPointsByClass(plot, data.colour, map, colourBarTitle(data.colourColumn, data.colourUnit), counts);
      !s) {
    fail(fmt::format("{}: {}", o.colourMap.empty() ? o.data : o.colourMap, s.message()));
    return false;
  }
  if (!o.saveColourMap.empty()) {
    if (Status s = writeColourMapFile(map, o.saveColourMap); !s) {
      fail(s.message());
      return false;
    }
  }
  out = {{"column", data.colourColumn}, {"unit", data.colourUnit}, {"classes", nlohmann::json::array()},
         {"below", counts.below}, {"above", counts.above}, {"no_value", counts.noValue}};
  for (int k = 1; k <= map.classes(); ++k) {
    const auto i = static_cast<std::size_t>(k - 1);
    nlohmann::json c = {{"class", k}, {"label", classLabel(map, k)}, {"colour", map.colours[i]},
                        {"points", counts.perClass[i]}};
    if (map.icat != 1) c["lower"] = limitJson(map.bounds[i]), c["upper"] = limitJson(map.bounds[i + 1]);
    out["classes"].push_back(c);
  }
  if (!o.json && counts.noValue > 0)
    fail(fmt::format("{}: {} of {} points have no value of \"{}\"; they are drawn grey", o.data, counts.noValue,
                     data.x.size(), data.colourColumn));
  if (!o.json && counts.below + counts.above > 0)
    fail(fmt::format("{}: {} points lie below and {} above the colour classes", o.data, counts.below, counts.above));
  return true;
}

int runXy(const PlotOptions& o) {
  std::vector<drawing::OutputKind> kinds;
  if (!outputKinds(o, kinds) || !colourOptions(o)) return kExitBadInput;
  AxisRequest x, y, colour;
  if (!axisRequest(o.x, o.range, "x", x) || !axisRequest(o.y, o.range, "y", y)) return kExitBadInput;
  colour.column = o.colour;
  colour.unit = o.colourUnit;
  CrossplotData data;
  if (Status s = readCrossplotData(o.data, x, y, o.colour.empty() ? nullptr : &colour, data); !s) {
    fail(s.message());
    return kExitBadInput;
  }
  PlotRecord plot = makeCrossplot(data, x, y, o.title, std::filesystem::path(o.data).stem().string());
  nlohmann::json report;
  report["file"] = o.data;
  report["rows"] = data.rows;
  report["plotted"] = data.x.size();
  report["left_out"] = {{"empty", data.emptyCells}, {"null", data.nullValues}, {"non_finite", data.nonFinite}};
  report["x"] = scaleJson(plot.sets[0].scales[0]);
  report["x"]["column"] = data.xColumn;
  report["y"] = scaleJson(plot.sets[0].scales[1]);
  report["y"]["column"] = data.yColumn;
  report["outputs"] = nlohmann::json::array();
  if (const long out = data.emptyCells + data.nullValues + data.nonFinite; out > 0 && !o.json)
    fail(fmt::format("{}: {} of {} rows left out ({} with an empty cell, {} null, {} not finite)", o.data, out,
                     data.rows, data.emptyCells, data.nullValues, data.nonFinite));
  if (!o.colour.empty()) {
    nlohmann::json colours;
    if (!addColours(plot, data, o, colours)) return kExitBadInput;
    report["colour"] = colours;
  }
  if (!o.fit.empty()) {
    nlohmann::json fit;
    if (!addFit(plot, o, fit)) return kExitBadInput;
    report["fit"] = fit;
    if (!o.json) std::printf("%s\n%s\n", fit["description"].get<std::string>().c_str(),
                             fit["report"].get<std::string>().c_str());
  }
  if (!o.save.empty()) {
    if (Status s = writePlotFile(plot, o.save); !s) {
      fail(s.message());
      return kExitBadInput;
    }
    report["saved"] = o.save;
  }
  if (const int rc = drawAll(plot, o, kinds, report); rc != kExitOk) return rc;
  if (o.json) std::printf("%s\n", report.dump(2).c_str());
  return kExitOk;
}

// What the net shows, for a reader of the terminal: counts, the mean with
// Fisher's statistics, the contour levels.
void printStereonetSummary(const StereonetRequest& request, const StereonetSummary& summary, long leftOut) {
  std::printf("Observations: %d (%ld left out)\n", summary.observations, leftOut);
  if (request.rose) {
    std::printf("Frequency: 0 to %d in classes of %s degrees from %s\n", summary.roseMaximum,
                formatReal(request.roseWidth, -6).c_str(), formatReal(request.roseStart, -6).c_str());
    return;
  }
  const FisherMean& m = summary.mean;
  if (m.n > 0) {
    std::printf("Mean %s: plunge %s, trend %s, R=%s", request.poles ? "pole" : "line",
                formatReal(m.mean.plunge, 1).c_str(), formatReal(m.mean.trend, 1).c_str(),
                formatReal(m.resultant, -6).c_str());
    if (!isNull(m.kappa)) std::printf(", k=%s, a95=%s", formatReal(m.kappa, -4).c_str(), formatReal(m.alpha95, -3).c_str());
    std::printf("\n");
  }
  if (request.contours) {
    std::string levels;
    for (double l : summary.contourLevels) levels += (levels.empty() ? "" : ", ") + formatReal(l, -6);
    std::printf("Kamb contours: %s sigma (maximum %s sigma)\n", levels.empty() ? "none" : levels.c_str(),
                formatReal(summary.densityMaximum, 1).c_str());
  }
}

int runStereonet(const PlotOptions& o) {
  std::vector<drawing::OutputKind> kinds;
  if (!outputKinds(o, kinds)) return kExitBadInput;
  StereonetRequest request;
  if (o.net == "equal-area") request.projection = kEqualArea;
  else if (o.net == "equal-angle") request.projection = kEqualAngle;
  else {
    fail(fmt::format("--net \"{}\" is not equal-area or equal-angle", o.net));
    return kExitBadInput;
  }
  request.poles = o.poles;
  request.planes = o.planes;
  request.rose = o.rose;
  request.contours = o.contours;
  request.densityGrid = o.densityGrid;
  request.contourStep = o.contourStep;
  request.smoothing = o.smoothing;
  request.roseWidth = o.roseWidth;
  request.roseStart = o.roseStart;
  request.title = o.title;
  request.setName = std::filesystem::path(o.data).stem().string();
  AxisRequest dip, azimuth;
  dip.column = o.dip;
  azimuth.column = o.azimuth;
  std::vector<std::string> classColumns;
  for (const std::string* c : {&o.colourClass, &o.symbolClass})
    if (!c->empty()) classColumns.push_back(*c);
  CrossplotData data;
  if (Status s = readCrossplotData(o.data, dip, azimuth, data, classColumns); !s) {
    fail(s.message());
    return kExitBadInput;
  }
  StereonetData observations{data.x, data.y, {}, {}};
  if (!o.colourClass.empty()) observations.colourClasses = data.texts.front();
  if (!o.symbolClass.empty()) observations.symbolClasses = data.texts.back();
  PlotRecord plot;
  StereonetSummary summary;
  if (Status s = makeStereonetPlot(observations, request, plot, summary); !s) {
    fail(fmt::format("{}: {}", o.data, s.message()));
    return kExitBadInput;
  }
  nlohmann::json report;
  report["file"] = o.data;
  report["rows"] = data.rows;
  report["observations"] = summary.observations;
  report["left_out"] = data.emptyCells + data.nullValues + data.nonFinite + summary.leftOut;
  if (request.contours && !request.rose)
    report["density"] = {{"maximum_sigma", summary.densityMaximum}, {"levels_sigma", summary.contourLevels},
                         {"grid", request.densityGrid}, {"smoothing", request.smoothing}};
  if (!o.json) printStereonetSummary(request, summary, report["left_out"].get<long>());
  if (request.rose) {
    report["rose_maximum"] = summary.roseMaximum;
  } else if (summary.mean.n > 0) {
    const FisherMean& m = summary.mean;
    report["mean"] = {{"plunge", m.mean.plunge}, {"trend", m.mean.trend}, {"resultant", m.resultant},
                      {"kappa", isNull(m.kappa) ? nlohmann::json(nullptr) : nlohmann::json(m.kappa)},
                      {"alpha95", isNull(m.alpha95) ? nlohmann::json(nullptr) : nlohmann::json(m.alpha95)}};
  }
  report["outputs"] = nlohmann::json::array();
  if (const int rc = drawAll(plot, o, kinds, report); rc != kExitOk) return rc;
  if (o.json) std::printf("%s\n", report.dump(2).c_str());
  return kExitOk;
}

int runHistogram(const PlotOptions& o) {
  std::vector<drawing::OutputKind> kinds;
  if (!outputKinds(o, kinds)) return kExitBadInput;
  AxisRequest column;
  column.column = o.column;
  column.unit = o.x.unit;
  CrossplotData data;
  if (Status s = readCrossplotData(o.data, column, column, data); !s) {
    fail(s.message());
    return kExitBadInput;
  }
  Histogram histogram;
  if (Status s = countHistogram(data.x, o.bins, histogram); !s) {
    fail(fmt::format("{}: {}", o.data, s.message()));
    return kExitBadInput;
  }
  const PlotRecord plot = makeHistogramPlot(histogram, data.xColumn, data.xUnit, o.title,
                                            std::filesystem::path(o.data).stem().string());
  nlohmann::json report;
  report["file"] = o.data;
  report["rows"] = data.rows;
  report["points"] = histogram.points;
  report["left_out"] = data.emptyCells + data.nullValues + data.nonFinite + histogram.leftOut;
  report["edges"] = histogram.edges;
  report["counts"] = histogram.counts;
  report["outputs"] = nlohmann::json::array();
  if (const int rc = drawAll(plot, o, kinds, report); rc != kExitOk) return rc;
  if (o.json) std::printf("%s\n", report.dump(2).c_str());
  return kExitOk;
}

int runBins(const PlotOptions& o) {
  std::vector<drawing::OutputKind> kinds;
  if (!outputKinds(o, kinds)) return kExitBadInput;
  BinnedPlotRequest request;
  request.valueScale = scaleTypeByName(o.y.scale);
  if (request.valueScale != 1 && request.valueScale != 2) {
    fail(fmt::format("--y-scale \"{}\" is not linear or log", o.y.scale));
    return kExitBadInput;
  }
  CrossplotData data;
  BinStatistics table;
  if (!readBinnedTable(o.binned, data, table)) return kExitBadInput;
  request.byColumn = data.xColumn;
  request.byUnit = data.xUnit;
  request.valueColumn = data.yColumn;
  request.valueUnit = data.yUnit;
  request.title = o.title;
  request.setName = std::filesystem::path(o.binned.data).stem().string();
  const PlotRecord plot = makeBinnedPlot(table, request);
  nlohmann::json report;
  report["file"] = o.binned.data;
  report["rows"] = data.rows;
  report["bins"] = table.rows.size();
  report["binned"] = data.x.size() - static_cast<std::size_t>(table.outside);
  report["outside"] = table.outside;
  report["left_out"] = data.emptyCells + data.nullValues + data.nonFinite;
  report["y"] = scaleJson(plot.sets[0].scales[1]);
  report["outputs"] = nlohmann::json::array();
  if (const std::string leftOut = binnedLeftOutText(o.binned, data, table); !leftOut.empty() && !o.json) fail(leftOut);
  if (const int rc = drawAll(plot, o, kinds, report); rc != kExitOk) return rc;
  if (o.json) std::printf("%s\n", report.dump(2).c_str());
  return kExitOk;
}

int runDraw(const PlotOptions& o) {
  std::vector<drawing::OutputKind> kinds;
  if (!outputKinds(o, kinds)) return kExitBadInput;
  PlotRecord plot;
  if (Status s = readPlotFile(o.data, plot); !s) {
    fail(s.message());
    return kExitBadInput;
  }
  nlohmann::json report;
  report["file"] = o.data;
  report["sets"] = nlohmann::json::array();
  for (const PlotSet& set : plot.sets)
    report["sets"].push_back({{"name", set.name}, {"points", set.pointCount()},
                              {"x", scaleJson(set.scales[0])}, {"y", scaleJson(set.scales[1])}});
  report["outputs"] = nlohmann::json::array();
  if (const int rc = drawAll(plot, o, kinds, report); rc != kExitOk) return rc;
  if (o.json) std::printf("%s\n", report.dump(2).c_str());
  return kExitOk;
}

void addOutputOptions(CLI::App* cmd, PlotOptions& o) {
  cmd->add_option("--out", o.outputs, "Draw to FILE.svg, FILE.png or FILE.pdf (may be repeated)");
  cmd->add_option("--size", o.size, "Picture size in pixels at --dpi (default 1600x1200)");
  cmd->add_option("--dpi", o.dpi, "Dots per inch: the PNG resolution, and the scale of --size (default 150)")
      ->check(CLI::Range(10.0, 2400.0));
  cmd->add_flag("--json", o.json, "Print the axis limits and point counts as JSON");
}

}  // namespace

void addPlotCommand(CLI::App& app, int& exitCode) {
  auto o = std::make_shared<PlotOptions>();
  CLI::App* plot = app.add_subcommand("plot", "Cross-plots from CSV files; plot files");
  plot->require_subcommand(1);

  CLI::App* xy = plot->add_subcommand("xy", "Cross-plot two columns of a CSV file (header: names, units in brackets)");
  xy->add_option("data", o->data, "The CSV file")->required();
  xy->add_option("--x", o->x.column, "Column for the x axis")->required();
  xy->add_option("--y", o->y.column, "Column for the y axis")->required();
  xy->add_option("--x-unit", o->x.unit, "Show x in this unit (converted from the column's)");
  xy->add_option("--y-unit", o->y.unit, "Show y in this unit");
  xy->add_option("--x-scale", o->x.scale, "linear, log, square, sqrt, recip, norm, stan or prob (default linear)");
  xy->add_option("--y-scale", o->y.scale, "As --x-scale");
  xy->add_option("--range", o->range, "How limits are found: manual, auto, auto-rnd (default), p99-p1, p95-p5, p90-p10");
  xy->add_option("--x-range", o->x.range, "As --range, for x only");
  xy->add_option("--y-range", o->y.range, "As --range, for y only");
  xy->add_option("--x-min", o->x.min, "Lower x limit (makes the x range manual)");
  xy->add_option("--x-max", o->x.max, "Upper x limit");
  xy->add_option("--y-min", o->y.min, "Lower y limit");
  xy->add_option("--y-max", o->y.max, "Upper y limit");
  xy->add_option("--title", o->title, "Title above the plot");
  xy->add_option("--save", o->save, "Also write the plot file FILE.zpl");
  xy->add_option("--fit", o->fit, "Fit a regression line: forced, x-on-y, y-on-x, rmb, rma or means (docs/regression.md)");
  xy->add_option("--form", o->form, "Form of the fitted line: line (default), power, poly2 or poly3");
  xy->add_option("--fixed", o->fixed, "X,Y: the point a forced line passes through");
  xy->add_option("--colour", o->colour, "Colour the points by the class of this column, with a colour bar");
  xy->add_option("--colour-unit", o->colourUnit, "Class the colour column in this unit");
  // The default colours are defined for up to nine classes; more come from a map file.
  xy->add_option("--classes", o->classes,
                 "Number of equal classes over the colour column's range, 1 to 9 (default 5; more: --colour-map)")
      ->check(CLI::Range(1, 9));
  xy->add_option("--colour-scale", o->colourScale, "linear (default) or log: equal classes of the value or its logarithm");
  xy->add_option("--colour-map", o->colourMap, "Take the classes, colours and names from this colour-map file");
  xy->add_option("--save-colour-map", o->saveColourMap, "Write the colour map used to this file");
  addOutputOptions(xy, *o);
  xy->callback([o, &exitCode] { exitCode = runXy(*o); });

  CLI::App* stereo = plot->add_subcommand("stereonet", "Stereonet or rose diagram of dip and azimuth columns");
  stereo->add_option("data", o->data, "The CSV file")->required();
  stereo->add_option("--dip", o->dip, "Column of dips, 0 to 90 degrees")->required();
  stereo->add_option("--azimuth", o->azimuth, "Column of dip azimuths, degrees from north")->required();
  stereo->add_option("--net", o->net, "equal-area (default) or equal-angle");
  stereo->add_flag("--poles", o->poles, "Plot the poles of the planes (default: the dip lines themselves)");
  stereo->add_flag("--planes", o->planes, "Draw each plane as a great circle (up to 2000)");
  stereo->add_flag("--rose", o->rose, "Draw a rose diagram of the azimuths instead");
  stereo->add_flag("--contours", o->contours,
                   "Contour the density of the poles or lines (Kamb counting, exponential smoothing; docs/plots.md)");
  stereo->add_option("--grid", o->densityGrid, "Counting grid for --contours, nodes a side (default 100)")
      ->check(CLI::Range(3, 1000));
  stereo->add_option("--contour-step", o->contourStep, "Contour interval in standard deviations (default 2)")
      ->check(CLI::Range(0.01, 1e9));
  stereo->add_option("--smoothing", o->smoothing,
                     "Kamb smoothing s for --contours (default 3; larger smooths more, for many poles)")
      ->check(CLI::Range(0.1, 1e6));
  stereo->add_option("--rose-width", o->roseWidth, "Rose class width in degrees, dividing 360 (default 10)");
  stereo->add_option("--rose-start", o->roseStart, "Azimuth where the first rose class starts (default 0)");
  stereo->add_option("--class", o->colourClass, "Column of classes shown by colour, keyed under \"Colours:\"");
  stereo->add_option("--symbol-class", o->symbolClass, "Column of classes shown by marker, keyed under \"Symbols:\"");
  stereo->add_option("--title", o->title, "Title above the net");
  addOutputOptions(stereo, *o);
  stereo->get_option("--size")->description("Picture size in pixels at --dpi (default 1200x1200)");
  stereo->callback([o, stereo, &exitCode] {
    if (stereo->count("--size") == 0) o->size = "1200x1200";  // a round net wants a square page
    exitCode = runStereonet(*o);
  });

  CLI::App* hist = plot->add_subcommand("histogram", "Histogram of a CSV column");
  hist->add_option("data", o->data, "The CSV file")->required();
  hist->add_option("--column", o->column, "The column to count")->required();
  hist->add_option("--unit", o->x.unit, "Show the values in this unit");
  hist->add_option("--bins", o->bins, "Number of equal classes (default: Sturges' rule, ceil(log2 n) + 1)")
      ->check(CLI::Range(1, 100000));
  hist->add_option("--title", o->title, "Title above the plot");
  addOutputOptions(hist, *o);
  hist->callback([o, &exitCode] { exitCode = runHistogram(*o); });

  CLI::App* bins = plot->add_subcommand(
      "bins", "Binned statistics drawn: per bin a P10-P90 box, P5-P95 whiskers, the P50 line and the mean");
  bins->add_option("data", o->binned.data, "The CSV file")->required();
  bins->add_option("--by", o->binned.by, "Column along which the bins are cut (x)")->required();
  bins->add_option("--value", o->binned.value, "Column whose values are summarised (y)")->required();
  bins->add_option("--by-unit", o->binned.byUnit, "Unit of the bin column (converted from the column's)");
  bins->add_option("--value-unit", o->binned.valueUnit, "Unit of the values");
  auto* binCount = bins->add_option("--bins", o->binned.bins, "Equal bins between the extremes (default 10)")
                       ->check(CLI::Range(1, 100000));
  bins->add_option("--edges", o->binned.edges, "Bin edges instead, ascending and comma-separated")->excludes(binCount);
  bins->add_option("--y-scale", o->y.scale, "linear (default) or log");
  bins->add_option("--title", o->title, "Title above the plot");
  addOutputOptions(bins, *o);
  bins->callback([o, &exitCode] { exitCode = runBins(*o); });

  CLI::App* draw = plot->add_subcommand("draw", "Draw a saved plot file");
  draw->add_option("plotfile", o->data, "The plot file (.zpl)")->required();
  addOutputOptions(draw, *o);
  draw->callback([o, &exitCode] { exitCode = runDraw(*o); });
}

}  // namespace subsurf::cli
