#include "plot/plot_windows.h"

#include <cmath>

#include "plot/plot_tree.h"

namespace subsurf {

PlotWindows::~PlotWindows() { releaseAll(); }

bool PlotWindows::bind(int id, cairo_surface_t* image, double dpi) {
  if (id == 0 || !image || cairo_surface_status(image) != CAIRO_STATUS_SUCCESS ||
      cairo_surface_get_type(image) != CAIRO_SURFACE_TYPE_IMAGE || !(dpi >= 10.0 && dpi <= 2400.0))
    return false;
  cairo_surface_reference(image);
  release(id);
  windows_[id] = PlotWindow{image, dpi};
  return true;
}

void PlotWindows::release(int id) {
  auto it = windows_.find(id);
  if (it == windows_.end()) return;
  cairo_surface_destroy(it->second.image);
  windows_.erase(it);
}

void PlotWindows::releaseAll() {
  for (auto& [id, w] : windows_) cairo_surface_destroy(w.image);
  windows_.clear();
}

const PlotWindow* PlotWindows::find(int id) const {
  auto it = windows_.find(id);
  return it == windows_.end() ? nullptr : &it->second;
}

const PlotWindow* PlotWindows::forPlot(const PlotRecord& plot) {
  if (plot.windowId == 0) return nullptr;
  if (const PlotWindow* w = find(plot.windowId)) return w;
  const double scale = kDefaultWindowDpi / 25.4;
  const double px = std::round(plot.layout.pagex * scale), py = std::round(plot.layout.pagey * scale);
  // A damaged layout must not ask for an image of gigabytes.
  if (!(px >= 16 && py >= 16 && px <= 8000 && py <= 8000)) return nullptr;
  cairo_surface_t* image = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(px), static_cast<int>(py));
  if (cairo_surface_status(image) == CAIRO_STATUS_SUCCESS) {
    cairo_t* cr = cairo_create(image);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_destroy(cr);
  }
  const bool made = bind(plot.windowId, image, kDefaultWindowDpi);
  cairo_surface_destroy(image);
  return made ? find(plot.windowId) : nullptr;
}

PlotWindows& plotWindows() {
  static PlotWindows windows;
  return windows;
}

}  // namespace subsurf
