// The windows plots draw into.
//
// A plot record names its window by a number (0: none). The host supplies
// what a number draws into: an image surface it binds with bind() (a screen
// window's back buffer, say), or, for a number nobody bound, an in-memory
// image made on first use at the size of the plot's layout page and
// kDefaultWindowDpi. The routines that draw single elements, the legend or
// a test against the legend lay the plot out on that image exactly as a
// whole drawing of the plot would, so their pieces land where drawPlot puts
// them.
#pragma once

#include <cairo.h>

#include <map>

namespace subsurf {

struct PlotRecord;

constexpr double kDefaultWindowDpi = 96.0;

struct PlotWindow {
  cairo_surface_t* image = nullptr;  // a reference this registry holds
  double dpi = kDefaultWindowDpi;
};

class PlotWindows {
 public:
  PlotWindows() = default;
  ~PlotWindows();
  PlotWindows(const PlotWindows&) = delete;
  PlotWindows& operator=(const PlotWindows&) = delete;

  // Window id draws into image (an ARGB32 or RGB24 image surface; the
  // registry takes its own reference) at dpi dots per inch. False for id 0,
  // a surface that is not a working image, or a dpi outside 10..2400.
  bool bind(int id, cairo_surface_t* image, double dpi);
  // Forgets window id (the host keeps its own reference).
  void release(int id);
  void releaseAll();

  // The window of id, or null when it was never bound or made.
  const PlotWindow* find(int id) const;
  // The window of the plot's id, made (white, the size of its layout page)
  // when nobody bound one; null when the plot has no window (id 0) or the
  // image cannot be made.
  const PlotWindow* forPlot(const PlotRecord& plot);

 private:
  std::map<int, PlotWindow> windows_;
};

// The windows of the process-wide plot tree.
PlotWindows& plotWindows();

}  // namespace subsurf
