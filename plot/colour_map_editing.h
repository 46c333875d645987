// Editing a colour map: what follows a change of one attribute (the
// editor's triggers, ZW_CMTRIGS) and the editor itself (ZW_CMEDIT), which
// works through the host's yes/no questions so that any host, and the
// tests, can drive it; every question is recorded with its answer.
#pragma once

#include <string_view>

#include "host/status.h"
#include "plot/colour_map.h"

namespace subsurf {

// After attribute name changed: "cm_nr" gives the classes the default
// colours and divides the range again; "cm_min", "cm_max" and "cm_ifsc"
// divide the range again; the others need nothing. Unknown names fail with
// "Unknown colour-map attribute NAME"; a range that cannot be divided with
// the message of setClassRanges.
Status colourMapTrigger(ColourMap& map, std::string_view name);

// Asks, in order (each only where it can change something):
//   "Colour map: N classes from MIN to MAX. Change it?" (no: nothing changes);
//   "Set the class range to the data, DMIN to DMAX?";
//   "Divide the classes on a logarithmic scale?" (or, when they are,
//   "Divide the classes by equal widths instead of logarithms?"), only when MIN > 0;
//   "Give the N classes their default colours?", for 1 to 9 classes;
// then divides the range into the classes. changed tells whether the map
// was edited.
Status editColourMap(ColourMap& map, bool& changed);

}  // namespace subsurf
