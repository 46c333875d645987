// make_plot_gallery: draws the example plots of docs/plots.md (one PNG per
// example, plus SVG and PDF of the first) from synthetic, reproducible data.
//   make_plot_gallery OUTPUT_FOLDER [--dpi N]
#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "host/fixed_text.h"
#include "host/reproducible_noise.h"
#include "plot/axis_scales.h"
#include "plot/axis_ticks.h"
#include "plot/binned_plot.h"
#include "plot/class_colouring.h"
#include "plot/crossplot.h"
#include "plot/fitted_line.h"
#include "plot/histogram_plot.h"
#include "plot/plot_drawing.h"
#include "plot/stereonet_plot.h"

namespace ss = subsurf;

namespace {

using Noise = ss::ReproducibleNoise;

ss::PlotRecord basePlot(const std::string& title, double widthMm, double heightMm) {
  ss::PlotRecord p;
  p.fields.title = title;
  p.layout.pagex = static_cast<float>(widthMm);
  p.layout.pagey = static_cast<float>(heightMm);
  p.layout.ml = p.layout.mr = 6;
  p.layout.mt = p.layout.mb = 6;
  p.annotation.texts = {};
  return p;
}

ss::PlotSet dataSet(const std::string& name, int colour, int marker) {
  ss::PlotSet s;
  s.name = name;
  const ss::drawing::Rgb c = ss::drawing::paletteColour(colour);
  s.syrgb = s.lirgb = s.shrgb = {static_cast<int>(c.r * 255 + 0.5), static_cast<int>(c.g * 255 + 0.5),
                                 static_cast<int>(c.b * 255 + 0.5)};
  s.sym = marker;
  s.axnumht = 2.6f;
  s.axlabht = 3.0f;
  return s;
}

void scaleAll(ss::PlotRecord& p, int axis, int type, int mode, const char* unit, const char* label) {
  // One limit for every set: the limits of all their values together.
  std::vector<float> all;
  for (const auto& s : p.sets) all.insert(all.end(), s.data[static_cast<std::size_t>(axis)].begin(), s.data[static_cast<std::size_t>(axis)].end());
  ZW_SCALE sc = ss::defaultScale();
  sc.TYPE = type;
  sc.MODE = mode;
  ss::setFixed(sc.UNIT, unit);
  ss::setAxisLimits(all, sc);
  for (auto& s : p.sets) {
    s.scales[static_cast<std::size_t>(axis)] = sc;
    s.labels[static_cast<std::size_t>(axis)] = label;
  }
}

int draw(const ss::PlotRecord& p, const std::string& path, double dpi, ss::drawing::OutputKind kind = ss::drawing::OutputKind::Png) {
  ss::DrawOptions o;
  o.kind = kind;
  o.path = path;
  o.dpi = dpi;
  o.user = "A. Geologist";
  o.date = "2026-11-23";
  const ss::Status s = ss::drawPlot(p, o);
  if (!s) std::cerr << s.message() << "\n";
  else std::cout << path << "\n";
  return s ? 0 : 1;
}

ss::PlotRecord porosityPermeability() {
  ss::PlotRecord p = basePlot("Core plugs: porosity and permeability", 160, 110);
  p.annotation.texts[0] = {"@user"};
  p.annotation.texts[2] = {"@date"};
  Noise n(7);
  const char* names[] = {"Brent", "Statfjord", "Cook"};
  for (int f = 0; f < 3; ++f) {
    ss::PlotSet s = dataSet(names[f], 2 + f, 1 + f);
    for (int k = 0; k < 250; ++k) {
      const double phi = 0.04 + 0.25 * n.uniform() * (0.6 + 0.2 * f);
      s.data[0].push_back(static_cast<float>(phi));
      s.data[1].push_back(static_cast<float>(std::pow(10.0, -1.5 + 14 * phi + 0.45 * n.normal() + 0.3 * f)));
    }
    s.defs.iop[0] = 14;
    p.sets.push_back(s);
  }
  scaleAll(p, 0, ss::kLinear, ss::kAutoRound, "frac", "Porosity");
  scaleAll(p, 1, ss::kLog, ss::kAutoRound, "mD", "Permeability");
  // A trend line and a note on the first set.
  ss::LineElement trend;
  trend.COLOUR = 1;
  trend.WIDTH = 0.4f;
  trend.STYLE = 2;
  trend.setPoints({0.02f, 0.3f}, {static_cast<float>(std::pow(10.0, -1.5 + 14 * 0.02)), static_cast<float>(std::pow(10.0, -1.5 + 14 * 0.3))});
  p.sets[0].lines.add(trend);
  p.legend.fx = 0.3f;
  p.legend.fy = 0.98f;
  return p;
}

ss::PlotRecord depthProfile() {
  ss::PlotRecord p = basePlot("Gamma ray against depth", 110, 80);
  ss::PlotSet s = dataSet("GR", 6, 0);
  s.lin = 1;
  s.sym = 0;
  Noise n(3);
  for (int k = 0; k <= 400; ++k) {
    const double depth = 2500 + k * 0.5;
    s.data[0].push_back(static_cast<float>(depth));
    s.data[1].push_back(static_cast<float>(60 + 40 * std::sin(k / 25.0) + 8 * n.normal()));
  }
  ZW_TEXT note = ss::defaultText();
  note.X = 2560;
  note.Y = 112;
  note.HEIGHT = 2.6f;
  ss::setFixed(note.TEXT, "Shale break");
  s.texts.add(note);
  p.sets.push_back(s);
  scaleAll(p, 0, ss::kLinear, ss::kAuto, "m", "Measured depth");
  scaleAll(p, 1, ss::kLinear, ss::kAutoRound, "gAPI", "Gamma ray");
  return p;
}

ss::PlotRecord cumulativeProbability() {
  ss::PlotRecord p = basePlot("Net pay: cumulative probability (Norm axis)", 110, 80);
  ss::PlotSet s = dataSet("Net pay", 7, 1);
  Noise n(11);
  std::vector<float> values;
  for (int k = 0; k < 60; ++k) values.push_back(static_cast<float>(std::exp(2.5 + 0.5 * n.normal())));
  std::sort(values.begin(), values.end());
  for (std::size_t k = 0; k < values.size(); ++k) {
    s.data[0].push_back(static_cast<float>(100.0 * (k + 0.5) / values.size()));
    s.data[1].push_back(values[k]);
  }
  s.lin = 1;
  s.defs.iop[0] = 12;
  p.sets.push_back(s);
  scaleAll(p, 0, ss::kNorm, ss::kManual, "%", "Cumulative probability");
  for (auto& set : p.sets) set.scales[0].MIN = 1, set.scales[0].MAX = 99;
  scaleAll(p, 1, ss::kLog, ss::kAutoRound, "m", "Net pay");
  return p;
}

ss::PlotRecord monthly() {
  ss::PlotRecord p = basePlot("Monthly oil rate (date axis)", 110, 80);
  ss::PlotSet s = dataSet("Oil", 4, 2);
  s.lin = 1;
  s.defs.iop[0] = 10;
  for (int m = 0; m < 20; ++m) {
    const int year = 2024 + (m + 2) / 12, month = (m + 2) % 12 + 1;
    s.data[0].push_back(static_cast<float>(ss::dateSeconds(year, month, 15)));
    s.data[1].push_back(static_cast<float>(1200 * std::exp(-m / 14.0)));
  }
  p.sets.push_back(s);
  scaleAll(p, 0, ss::kLinear, ss::kAuto, "date", "");
  scaleAll(p, 1, ss::kLinear, ss::kAutoRound, "bbl/d", "Oil rate");
  return p;
}

// One small plot per remaining scale type on the x axis.
ss::PlotRecord typeDemo(int type) {
  ss::PlotRecord p = basePlot("\"" + ss::scaleTypeName(type) + "\" x axis", 90, 62);
  ss::PlotSet s = dataSet("values", 3, 1);
  s.lin = 1;
  s.defs.iop[0] = 8;
  for (int k = 1; k <= 40; ++k) {
    double x = 0;
    switch (type) {
      case ss::kSquare: x = k * 2.5; break;
      case ss::kSqrt: x = k * k * 0.0625; break;
      case ss::kRecip: x = 1 + k * 0.25; break;
      case ss::kStan: x = (k - 20.5) / 11.8; break;
      default: x = -3 + 6.0 * (k - 1) / 39.0; break;  // Prob: standard deviations
    }
    s.data[0].push_back(static_cast<float>(x));
    s.data[1].push_back(static_cast<float>(k));
  }
  p.sets.push_back(s);
  scaleAll(p, 0, type, type == ss::kProb ? ss::kManual : ss::kAuto, "", "x");
  if (type == ss::kProb)
    for (auto& set : p.sets) set.scales[0].MIN = -3, set.scales[0].MAX = 3;
  scaleAll(p, 1, ss::kLinear, ss::kAutoRound, "", "n");
  return p;
}

// Plugs of a shaly sand: porosity falls and permeability falls further as
// the shale volume rises.
struct Plugs {
  std::vector<float> phi, k, vsh;
};

Plugs shalySand() {
  Plugs p;
  Noise n(11);
  for (int i = 0; i < 400; ++i) {
    const double vsh = 0.6 * n.uniform();
    const double phi = (0.06 + 0.24 * n.uniform()) * (1 - 0.55 * vsh);
    p.vsh.push_back(static_cast<float>(vsh));
    p.phi.push_back(static_cast<float>(phi));
    p.k.push_back(static_cast<float>(9000 * std::pow(phi, 4.2) * std::pow(10.0, 0.25 * n.normal() - 1.6 * vsh)));
  }
  return p;
}

// The frame of the gallery on a plot the engine made.
void framed(ss::PlotRecord& p, double widthMm, double heightMm) {
  const ss::PlotRecord frame = basePlot(p.fields.title, widthMm, heightMm);
  p.layout = frame.layout;
  for (auto& set : p.sets) set.axnumht = 2.6f, set.axlabht = 3.0f;
}

ss::PlotRecord porosityHistogram() {
  const Plugs plugs = shalySand();
  ss::Histogram h;
  ss::countHistogram(plugs.phi, 0, h);
  ss::PlotRecord p = ss::makeHistogramPlot(h, "Porosity", "frac", "Porosity of 400 plugs (Sturges' classes)", "plugs");
  framed(p, 110, 80);
  return p;
}

ss::PlotRecord permeabilityByPorosity() {
  const Plugs plugs = shalySand();
  ss::BinStatistics table;
  ss::binStatistics(plugs.phi, plugs.k, ss::equalBinEdges(0, 0.3, 6), table);
  ss::BinnedPlotRequest r;
  r.byColumn = "Porosity";
  r.byUnit = "frac";
  r.valueColumn = "Permeability";
  r.valueUnit = "mD";
  r.valueScale = ss::kLog;
  r.title = "Permeability binned by porosity";
  ss::PlotRecord p = ss::makeBinnedPlot(table, r);
  framed(p, 130, 95);
  return p;
}

ss::PlotRecord colouredByShale() {
  const Plugs plugs = shalySand();
  ss::CrossplotData data;
  data.x = plugs.phi;
  data.y = plugs.k;
  data.xColumn = "Porosity";
  data.yColumn = "Permeability";
  data.xUnit = "frac";
  data.yUnit = "mD";
  std::vector<float> vsh = plugs.vsh;
  for (std::size_t i = 5; i < vsh.size(); i += 37) vsh[i] = ss::kRealNull;  // logs with gaps
  ss::AxisRequest x, y;
  y.type = ss::kLog;
  ss::PlotRecord p = ss::makeCrossplot(data, x, y, "Porosity and permeability by shale volume", "plugs");
  ss::ColourMap map;
  ss::colourMapForValues(vsh, 6, false, map);
  ss::ClassCounts counts;
  ss::colourPointsByClass(p, vsh, map, "Vshale (frac)", counts);
  ss::FittedLine fit;
  ss::addFittedLine(p, ss::RegressionMethod::YOnX, ss::RegressionForm::Power, std::nullopt, fit);
  framed(p, 150, 100);
  return p;
}

// Fracture planes of three sets, as a geologist logs them from core: dip and
// dip azimuth with a set name and whether the fracture is open.
struct Fractures {
  std::vector<float> dips, azimuths;
  std::vector<std::string> sets, kinds;
};

Fractures fractures(int n) {
  Noise r(17);
  struct Set {
    const char* name;
    double share, dip, azimuth, spread;
  };
  const Set sets[] = {{"J1", 0.4, 72, 115, 7}, {"J2", 0.3, 58, 225, 9}, {"Bedding", 0.3, 12, 290, 5}};
  Fractures f;
  for (int k = 0; k < n; ++k) {
    const double u = r.uniform();
    const Set& s = u < 0.4 ? sets[0] : u < 0.7 ? sets[1] : sets[2];
    f.dips.push_back(static_cast<float>(std::clamp(s.dip + s.spread * r.normal(), 0.0, 90.0)));
    f.azimuths.push_back(static_cast<float>(std::fmod(s.azimuth + s.spread * r.normal() + 360.0, 360.0)));
    f.sets.push_back(s.name);
    f.kinds.push_back(r.uniform() < 0.7 ? "open" : "sealed");
  }
  return f;
}

ss::PlotRecord stereonet(const Fractures& f, const ss::StereonetRequest& request, bool classes) {
  ss::PlotRecord p;
  ss::StereonetSummary summary;
  ss::StereonetData data{f.dips, f.azimuths, {}, {}};
  if (classes) {
    data.colourClasses = f.sets;
    data.symbolClasses = f.kinds;
  }
  if (ss::Status s = ss::makeStereonetPlot(data, request, p, summary); !s) std::cerr << s.message() << "\n";
  // Labels are sized in millimetres and placed in net units: a net wants a
  // page near the command's own (1200 pixels at 150 dpi, 203 mm).
  p.layout.pagex = p.layout.pagey = 190;
  return p;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Draws the example plots of docs/plots.md"};
  std::string folder;
  double dpi = 110;
  app.add_option("folder", folder, "Where the pictures go")->required();
  app.add_option("--dpi", dpi, "Dots per inch of the PNG pictures");
  CLI11_PARSE(app, argc, argv);
  std::filesystem::create_directories(folder);
  int failed = 0;
  const ss::PlotRecord first = porosityPermeability();
  failed += draw(first, folder + "/porosity-permeability.png", dpi);
  failed += draw(first, folder + "/porosity-permeability.svg", dpi, ss::drawing::OutputKind::Svg);
  failed += draw(first, folder + "/porosity-permeability.pdf", dpi, ss::drawing::OutputKind::Pdf);
  failed += draw(depthProfile(), folder + "/depth-profile.png", dpi);
  failed += draw(cumulativeProbability(), folder + "/norm-axis.png", dpi);
  failed += draw(monthly(), folder + "/date-axis.png", dpi);
  for (int type : {ss::kSquare, ss::kSqrt, ss::kRecip, ss::kStan, ss::kProb})
    failed += draw(typeDemo(type), folder + "/type-" + ss::lowerCase(ss::scaleTypeName(type).substr(0, 5)) + ".png", dpi);
  failed += draw(porosityHistogram(), folder + "/histogram.png", dpi);
  failed += draw(permeabilityByPorosity(), folder + "/binned-statistics.png", dpi);
  failed += draw(colouredByShale(), folder + "/coloured-by-class.png", dpi);

  // Stereonets and a rose diagram, on large pages drawn at a lower dpi.
  const double netDpi = dpi * 0.7;
  const Fractures logged = fractures(400);
  ss::StereonetRequest contoured;
  contoured.poles = true;
  contoured.contours = true;
  contoured.title = "Fracture poles with Kamb contours";
  contoured.setName = "well A";
  failed += draw(stereonet(logged, contoured, true), folder + "/stereonet-contours.png", netDpi);
  const Fractures few = fractures(24);
  ss::StereonetRequest planes;
  planes.poles = true;
  planes.planes = true;
  planes.projection = ss::kEqualAngle;
  planes.title = "Planes and their poles, equal angle";
  planes.setName = "outcrop 3";
  failed += draw(stereonet(few, planes, false), folder + "/stereonet-planes.png", netDpi);
  ss::StereonetRequest lines;
  lines.poles = false;
  lines.title = "Dip lines, equal area";
  lines.setName = "well A";
  failed += draw(stereonet(logged, lines, false), folder + "/stereonet-scatter.png", netDpi);
  ss::StereonetRequest rose;
  rose.rose = true;
  rose.roseWidth = 15;
  rose.title = "Dip azimuths, 15 degree classes";
  failed += draw(stereonet(logged, rose, false), folder + "/rose.png", netDpi);
  return failed == 0 ? 0 : 1;
}
