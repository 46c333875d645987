#include "plot/plot_records.h"

#include "host/fixed_text.h"
#include "host/nulls.h"

namespace subsurf {

std::string fieldText(const std::string& text, std::size_t width) {
  std::string cut = text.substr(0, std::min(width, text.size()));
  while (!cut.empty() && cut.back() == ' ') cut.pop_back();
  return cut;
}

ZW_SCALE defaultScale() {
  ZW_SCALE s{};
  s.TYPE = 1;  // "Linear"
  s.MODE = 3;  // "Auto-rnd"
  s.MIN = kRealNull;
  s.MAX = kRealNull;
  blankFixed(s.UNIT, sizeof s.UNIT);
  return s;
}

ZW_SYMB defaultSymbol() {
  ZW_SYMB s{};
  s.X = kRealNull;
  s.Y = kRealNull;
  s.STYLE = 1;
  s.COLOUR = 1;
  s.SIZE = 2.0f;
  s.FILL = 1;
  blankFixed(s.LABEL, sizeof s.LABEL);
  return s;
}

ZW_TEXT defaultText() {
  ZW_TEXT t{};
  t.X = kRealNull;
  t.Y = kRealNull;
  t.HEIGHT = 3.0f;
  t.COLOUR = 1;
  t.ALIGN = 1;
  blankFixed(t.TEXT, sizeof t.TEXT);
  return t;
}

ZW_LINE defaultLine() {
  ZW_LINE l{};
  l.STYLE = 1;
  l.COLOUR = 1;
  l.WIDTH = 0.35f;
  blankFixed(l.NAME, sizeof l.NAME);
  return l;
}

ZW_ZBM defaultBitmap() {
  ZW_ZBM b{};
  b.X1 = b.Y1 = b.X2 = b.Y2 = kRealNull;
  blankFixed(b.FILE, sizeof b.FILE);
  return b;
}

ZW_LEG defaultLegendRow() {
  ZW_LEG r{};
  r.KIND = 1;
  r.COLOUR = 1;
  r.STYLE = 1;
  r.SIZE = 2.0f;
  blankFixed(r.TEXT, sizeof r.TEXT);
  return r;
}

PlotSet::PlotSet() {
  scales.fill(defaultScale());
}

void PlotSet::clearContents() {
  lines.clear();
  symbols.clear();
  texts.clear();
  icodes.clear();
  for (auto& column : data) column.clear();
}

Annotation defaultAnnotation() {
  Annotation a;
  a.texts[0] = {"@user"};  // top left
  a.texts[2] = {"@date"};  // top right
  return a;
}

}  // namespace subsurf
