// The colour bar beside a plot coloured by a third column: one box per class
// of the colour map, class 1 at the bottom, each in its class colour, with
// the class bounds written at the box edges and the class names (when the
// map has them) beside the boxes.
#pragma once

#include <string>
#include <vector>

#include "plot/colour_map.h"

namespace subsurf {

struct ColourBar {
  ColourMap map;
  std::string title;  // what the colours show: the column, with its unit
  long noValue = 0;   // points that have no value to colour them by
};

// The texts of a bar, bottom to top.
struct ColourBarTexts {
  std::string title;
  // The n + 1 class bounds of a continuous map; none for a categorical map,
  // whose classes are single values.
  std::vector<std::string> bounds;
  // One per class: its name; a categorical class without a name shows its value.
  std::vector<std::string> names;
  std::string footer;  // "No value: N" when points had none; else empty
};

ColourBarTexts colourBarTexts(const ColourBar& bar);

// The title of a bar for a column and its unit: "Vsh (frac)", or "Vsh".
std::string colourBarTitle(const std::string& column, const std::string& unit);

}  // namespace subsurf
