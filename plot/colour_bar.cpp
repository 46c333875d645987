#include "plot/colour_bar.h"

#include "host/fixed_text.h"
#include "host/number_text.h"

namespace subsurf {

ColourBarTexts colourBarTexts(const ColourBar& bar) {
  ColourBarTexts t;
  t.title = bar.title;
  const ColourMap& map = bar.map;
  const int n = map.classes();
  if (map.icat != 1)
    for (const float bound : map.bounds) t.bounds.push_back(formatCompact(bound));
  for (int k = 1; k <= n; ++k) {
    std::string name = k <= static_cast<int>(map.names.size()) ? trimBlanks(map.names[static_cast<std::size_t>(k - 1)]) : "";
    if (name.empty() && map.icat == 1) name = std::to_string(k);
    t.names.push_back(std::move(name));
  }
  if (bar.noValue > 0) t.footer = "No value: " + std::to_string(bar.noValue);
  return t;
}

std::string colourBarTitle(const std::string& column, const std::string& unit) {
  return unit.empty() ? column : column + " (" + unit + ")";
}

}  // namespace subsurf
