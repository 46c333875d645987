// Laying a tray's rows out from its depth interval: the same rule whether the
// depths were typed, read from the photograph's name, imported or carried
// from the tray before.
#pragma once

#include <string>

namespace subsurf {

struct CoreImage;

struct TrayLayout {
  float span = 0.0f;        // base minus top
  float coreLength = 0.0f;  // span over the number of cores
  int rows = 0;             // rows laid out (the carry's limits applied)
};

// The layout of a tray from top to base in `cores` rows (cores >= 1).
TrayLayout trayLayoutFor(float top, float base, int cores);

// Gives the image the tray interval and lays its rows out: "Top Depth",
// "Base Depth", "Core Length", "Tray Length", the depth shift, "Core Number"
// and every row's top and base, all marked changed, in `unit`.
void layOutTray(CoreImage& image, const TrayLayout& layout, float top, float base, float shift,
                const std::string& unit);

}  // namespace subsurf
