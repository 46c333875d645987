// C entry points of colour maps (declared in include/subsurf/plot_colour_map.h).
#include <new>
#include <string>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/paths.h"
#include "plot/class_colouring.h"
#include "plot/colour_map.h"
#include "plot/colour_map_editing.h"
#include "plot/plot_drawing.h"
#include "plot/window_drawing.h"
#include "subsurf/plot_colour_map.h"

namespace ss = subsurf;

namespace {

constexpr std::size_t kNameWidth = 16, kValueWidth = 20, kFileWidth = 260;

void setStatus(int* status, int value) {
  if (status) *status = value;
}

// Runs f on an existing map; a failed Status is shown and gives status 1.
template <typename F>
void withMap(ZW_CM** map, int* status, F&& f) {
  setStatus(status, 1);
  if (!map || !*map) return;
  try {
    const ss::Status s = f(**map);
    if (!s) return ss::host::showMessage(s.message());
    setStatus(status, 0);
  } catch (const std::bad_alloc&) {
    ss::host::showMessage("Out of memory in the colour map");
  } catch (...) {
  }
}

// Runs draw(map, canvas, plot, set) on the current plot's window when the
// map passes its check (else its fault is shown); status as drawInCurrentWindow.
template <typename Draw>
void drawWithMap(ZW_CM** map, int* status, Draw&& draw) {
  setStatus(status, 1);
  if (!map || !*map) return;
  ss::drawInCurrentWindow(status, true, [&](ss::drawing::Canvas& canvas, ss::PlotRecord& plot,
                                            const ss::PlotSet* set) {
    if (const ss::Status s = ss::checkColourMap(**map); !s) {
      ss::host::showMessage(s.message());
      return false;
    }
    return draw(**map, canvas, plot, *set);
  });
}

// The colour axis as the bar names it: its label and unit.
std::string colourAxisTitle(const ss::PlotSet& set) {
  return ss::colourBarTitle(set.labels[3], ss::fixedText(set.scales[3].UNIT));
}

}  // namespace

extern "C" {

void ZW_CMINIT(ZW_CM** map) {
  if (!map) return;
  try {
    *map = new ss::ColourMap(ss::defaultColourMap());
  } catch (...) {
    *map = nullptr;
    ss::host::showMessage("Out of memory in the colour map");
  }
}

void ZW_CMDFLT(ZW_CM** map) {
  withMap(map, nullptr, [](ss::ColourMap& m) {
    m = ss::defaultColourMap();
    return ss::Status::ok();
  });
}

void ZW_CMDEL(ZW_CM** map) {
  if (!map) return;
  delete *map;
  *map = nullptr;
}

void ZW_CMALLOC(ZW_CM** map, const int* n, int* status) {
  withMap(map, status, [&](ss::ColourMap& m) { return ss::allocateClasses(m, n ? *n : 0); });
}

void ZW_CMSETCOLS(ZW_CM** map) {
  withMap(map, nullptr, [](ss::ColourMap& m) {
    ss::setDefaultColours(m);
    return ss::Status::ok();
  });
}

void ZW_CMRANGES(ZW_CM** map, int* status) { withMap(map, status, ss::setClassRanges); }

void ZW_CMSET(ZW_CM** map, const float* value, int* klass, int* colour) {
  if (!map || !*map || !value) return;
  if (klass) *klass = ss::classOf(**map, *value);
  if (colour) *colour = ss::colourOf(**map, *value);
}

int IZW_CMGET(ZW_CM** map, const float* value) {
  return map && *map && value ? ss::colourOf(**map, *value) : 0;
}

void ZW_CMCOPY(ZW_CM** from, ZW_CM** to, int* status) {
  setStatus(status, 1);
  if (!from || !*from || !to) return;
  try {
    if (*to) **to = **from;
    else *to = new ss::ColourMap(**from);
    setStatus(status, 0);
  } catch (...) {
    ss::host::showMessage("Out of memory in the colour map");
  }
}

void ZW_CMCHECK(ZW_CM** map, int* status) { withMap(map, status, ss::checkColourMap); }

void ZW_CMGETCOLS(ZW_CM** map, int* colours, const int* capacity, int* n) {
  if (!map || !*map) return;
  const int count = (*map)->classes();
  if (n) *n = count;
  if (!colours || !capacity) return;
  for (int k = 0; k < count && k < *capacity; ++k) colours[k] = (*map)->colours[static_cast<std::size_t>(k)];
}

void ZW_CMGETATTS(ZW_CM** map, const char* name, char* value, int* status) {
  if (!name || !value) return setStatus(status, 1);
  withMap(map, status, [&](ss::ColourMap& m) {
    std::string text;
    ss::Status s = ss::colourMapAttribute(m, ss::fixedText(name, kNameWidth), text);
    ss::setFixed(value, kValueWidth, text);
    return s;
  });
}

void ZW_CMSETATTS(ZW_CM** map, const char* name, const char* value, int* status) {
  if (!name || !value) return setStatus(status, 1);
  withMap(map, status, [&](ss::ColourMap& m) {
    return ss::setColourMapAttribute(m, ss::fixedText(name, kNameWidth), ss::fixedText(value, kValueWidth));
  });
}

void ZW_CMWRITE(ZW_CM** map, const char* file, int* status) {
  if (!file) return setStatus(status, 1);
  withMap(map, status, [&](ss::ColourMap& m) {
    ss::Status s = ss::writeColourMapFile(m, ss::resolvePath(ss::fixedText(file, kFileWidth)));
    if (s) m.ich = 0;
    return s;
  });
}

void ZW_CMREAD(ZW_CM** map, const char* file, int* status) {
  if (!file) return setStatus(status, 1);
  withMap(map, status, [&](ss::ColourMap& m) {
    return ss::readColourMapFile(ss::resolvePath(ss::fixedText(file, kFileWidth)), m);
  });
}

void ZW_CMTRIGS(ZW_CM** map, const char* name, int* status) {
  if (!name) return setStatus(status, 1);
  withMap(map, status, [&](ss::ColourMap& m) { return ss::colourMapTrigger(m, ss::fixedText(name, kNameWidth)); });
}

void ZW_CMEDIT(ZW_CM** map, int* status) {
  setStatus(status, 1);
  bool changed = false;
  int done = 1;
  withMap(map, &done, [&](ss::ColourMap& m) { return ss::editColourMap(m, changed); });
  setStatus(status, done == 0 && changed ? 0 : 1);
}

void ZW_CMDRAW(ZW_CM** map, int* status) {
  drawWithMap(map, status, [](const ss::ColourMap& m, ss::drawing::Canvas& canvas, ss::PlotRecord& plot,
                              const ss::PlotSet& set) {
    ss::ColourBar bar;
    bar.map = m;
    bar.title = colourAxisTitle(set);
    plot.colourBar = std::move(bar);
    ss::PlotPieces pieces(plot, canvas);
    return pieces.colourBar();
  });
}

void ZW_CMHIST(ZW_CM** map, int* status) {
  drawWithMap(map, status, [](const ss::ColourMap& m, ss::drawing::Canvas& canvas, ss::PlotRecord& plot,
                              const ss::PlotSet& set) {
    ss::ClassCounts counts;
    ss::PlotRecord drawn = ss::makeClassHistogram(m, set.data[3], colourAxisTitle(set), counts);
    drawn.layout = plot.layout;
    ss::drawPlotOn(drawn, canvas);
    return true;
  });
}

}  // extern "C"
