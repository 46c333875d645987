// The records of a plot: plot sets with their elements, data and scales, and
// the annotation, layout and legend blocks of a plot.
//
// Element records are the C records of subsurf/plot.h, so the exported
// routines hand them across unchanged. Texts are held without trailing blanks
// and cut to the widths of their fields when set.
#pragma once

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "plot/element_list.h"
#include "subsurf/plot.h"

// Field-for-field equality of the C records (they have no padding: every field
// is four bytes wide or a character array).
#define SUBSURF_PLOT_RECORD_EQUALITY(T) \
  inline bool operator==(const T& a, const T& b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }
SUBSURF_PLOT_RECORD_EQUALITY(ZW_SCALE)
SUBSURF_PLOT_RECORD_EQUALITY(ZW_SYMB)
SUBSURF_PLOT_RECORD_EQUALITY(ZW_TEXT)
SUBSURF_PLOT_RECORD_EQUALITY(ZW_LINE)
SUBSURF_PLOT_RECORD_EQUALITY(ZW_ZBM)
SUBSURF_PLOT_RECORD_EQUALITY(ZW_LEG)
#undef SUBSURF_PLOT_RECORD_EQUALITY

namespace subsurf {

inline constexpr int kAxisCount = 5;          // x, y, z, colour, d
inline constexpr int kDefinitionEntries = 50;  // a set's definition block
inline constexpr int kRangeValues = 6;
inline constexpr int kPlotOptions = 10;
inline constexpr int kAnnotationTexts = 6;     // top left, centre, right; base left, centre, right
inline constexpr std::size_t kSetNameWidth = 40;
inline constexpr std::size_t kAxisLabelWidth = 40;
inline constexpr std::size_t kPlotTextWidth = 80;
inline constexpr std::size_t kAnnotationLineWidth = 80;

// Axis number (1..5) to index, -1 when out of range.
inline int axisIndex(int axis) { return axis >= 1 && axis <= kAxisCount ? axis - 1 : -1; }

// The text cut to a field width, without trailing blanks.
std::string fieldText(const std::string& text, std::size_t width);

ZW_SCALE defaultScale();
ZW_SYMB defaultSymbol();
ZW_TEXT defaultText();
ZW_LINE defaultLine();
ZW_ZBM defaultBitmap();
ZW_LEG defaultLegendRow();

// A line with its points (the record's NPTS follows the point count).
struct LineElement : ZW_LINE {
  std::vector<float> x, y;
  LineElement() : ZW_LINE(defaultLine()) {}
  explicit LineElement(const ZW_LINE& rec) : ZW_LINE(rec) { NPTS = 0; }
  void setPoints(std::vector<float> xs, std::vector<float> ys) {
    x = std::move(xs);
    y = std::move(ys);
    NPTS = static_cast<int>(x.size());
  }
  bool operator==(const LineElement&) const = default;
};

// The fields that ZW_ZPSCOPYDEF carries from one set to another.
struct SetDefinitions {
  std::array<int, kDefinitionEntries> iop{};  // definition block: options of the set's plot kind
  std::array<float, kRangeValues> rop{};      // range values: manual window and zoom limits
  int show = 1;   // 1 shown, 0 hidden
  int black = 0;  // 1 drawn in black only
  int iord = 1;   // drawing order of the set among its plot's sets
  bool operator==(const SetDefinitions&) const = default;
};

struct PlotSet {
  std::string name;  // zps_name
  std::string ids;   // zps_ids: where the data came from
  SetDefinitions defs;
  int sym = 1;       // marker shape of the data points, 0 none
  int lin = 0;       // line style joining the data points, 0 none
  int shd = 0;       // shading style under the data, 0 none
  float axlabht = 3.5f;  // axis label height, mm
  float axnumht = 3.0f;  // axis number height, mm
  int nzm = 0;       // zoom depth
  int pol = 0;       // 1 when the data form a polygon
  int legend = 1;    // 1 when the set has a legend row
  std::array<int, 3> lirgb{0, 114, 178};
  std::array<int, 3> syrgb{0, 114, 178};
  std::array<int, 3> shrgb{230, 159, 0};
  int shsty = 0;     // shading pattern
  int aswap = 0;     // 1 when x and y are swapped
  std::array<int, kAxisCount> ax{1, 1, 0, 0, 0};  // axis placement: 0 hidden, 1 low side, 2 high side, 3 both
  std::array<ZW_SCALE, kAxisCount> scales{};
  std::array<std::string, kAxisCount> labels;
  std::vector<int> icodes;                         // a code per data point (symbol groups)
  std::array<std::vector<float>, kAxisCount> data; // values per axis
  ElementList<LineElement> lines;
  ElementList<ZW_SYMB> symbols;
  ElementList<ZW_TEXT> texts;

  PlotSet();
  int pointCount() const { return static_cast<int>(data[0].size()); }
  // Drops elements and data, keeping definitions, scales and labels.
  void clearContents();
  bool operator==(const PlotSet&) const = default;
};

struct Annotation {
  // Six growable arrays of text lines; "@user" and "@date" are replaced when drawn.
  std::array<std::vector<std::string>, kAnnotationTexts> texts;
  int topbg = 0, topbox = 0, basebg = 0, basebox = 0, plotbg = 0, plotbox = 1, obg = 0, obox = 0;
  float topmar = 10.0f, basemar = 10.0f;  // mm
  bool operator==(const Annotation&) const = default;
};
Annotation defaultAnnotation();

struct Layout {
  int mono = 0;
  float aspect = 0.0f;  // the data area's height over its width, the area centred in its room; 0 = free
  int rotate = 0;
  int paper = 4;        // ISO A-size number: 4 = A4
  int fit = 1;
  int hardc = 0;
  int cgm = 0;
  int strip = 0;
  int ptype = 1;        // 1 SVG, 2 PNG, 3 PDF
  int hcpages = 1;
  int npages = 1;
  int pageop = 0;
  int nex = 1, ney = 1; // plots across and down a page
  int batch = 0;
  int oasc = 0;
  float reqx = 0.0f, reqy = 0.0f;  // requested plot size, mm (0 = the page's)
  float ml = 20.0f, mr = 15.0f, mt = 15.0f, mb = 20.0f;  // margins, mm
  float pagex = 297.0f, pagey = 210.0f;                  // page, mm
  int px = 1600, py = 1200;                              // pixels for raster output
  float frx = 1.0f, fry = 1.0f;                          // fraction of the page used
  bool operator==(const Layout&) const = default;
};

struct Legend {
  ElementList<ZW_LEG> rows;
  float fx = 0.98f, fy = 0.98f;  // top-right corner of the box, fractions of the plot area
  bool operator==(const Legend&) const = default;
};

}  // namespace subsurf
