#include "plot/colour_map_editing.h"

#include <fmt/format.h>

#include "host/messages.h"
#include "host/number_text.h"

namespace subsurf {

Status colourMapTrigger(ColourMap& map, std::string_view name) {
  if (name == "cm_nr") {
    setDefaultColours(map);
    return setClassRanges(map);
  }
  if (name == "cm_min" || name == "cm_max" || name == "cm_ifsc") return setClassRanges(map);
  std::string value;
  return colourMapAttribute(map, name, value);  // known names need nothing; unknown ones fail by name
}

Status editColourMap(ColourMap& map, bool& changed) {
  changed = false;
  const int n = map.classes();
  if (!host::askQuestion(fmt::format("Colour map: {} classes from {} to {}. Change it?", n, formatCompact(map.min),
                                     formatCompact(map.max))))
    return Status::ok();
  ColourMap edited = map;
  const bool dataKnown = !isNull(map.dmin) && !isNull(map.dmax) && map.dmax > map.dmin;
  if (dataKnown && (map.dmin != map.min || map.dmax != map.max) &&
      host::askQuestion(fmt::format("Set the class range to the data, {} to {}?", formatCompact(map.dmin),
                                    formatCompact(map.dmax)))) {
    edited.min = map.dmin;
    edited.max = map.dmax;
  }
  if (edited.min > 0) {
    const bool logarithmic = edited.ifsc == 2;
    if (host::askQuestion(logarithmic ? "Divide the classes by equal widths instead of logarithms?"
                                      : "Divide the classes on a logarithmic scale?"))
      edited.ifsc = logarithmic ? 1 : 2;
  }
  if (n >= 1 && n <= 9 && host::askQuestion(fmt::format("Give the {} classes their default colours?", n)))
    setDefaultColours(edited);
  if (Status s = setClassRanges(edited); !s) return s;
  map = std::move(edited);
  map.ich = 1;
  changed = true;
  return Status::ok();
}

}  // namespace subsurf
