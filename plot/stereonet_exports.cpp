// C entry points of stereonets (declared in include/subsurf/plot_stereonet.h).
#include <span>
#include <string>
#include <vector>

#include "host/messages.h"
#include "host/nulls.h"
#include "host/fixed_text.h"
#include "plot/plot_tree.h"
#include "plot/stereonet_plot.h"
#include "plot/stereonet_projection.h"
#include "plot/stereonet_readout.h"
#include "subsurf/plot_stereonet.h"

namespace ss = subsurf;

namespace {

constexpr std::size_t kNameWidth = 40;

std::span<const float> values(const int* n, const float* v) {
  return n && v && *n > 0 ? std::span<const float>(v, static_cast<std::size_t>(*n)) : std::span<const float>();
}

std::vector<std::string> names(const int* n, const char* fields) {
  std::vector<std::string> out;
  for (int k = 0; fields && n && k < *n; ++k) out.push_back(ss::fixedText(fields + kNameWidth * k, kNameWidth));
  return out;
}

// Runs build on the current plot: status 0 when it succeeds, else 1 with its
// message shown; nothing thrown gets out.
template <typename Build>
void buildInCurrentPlot(int* status, Build&& build) {
  if (status) *status = 1;
  try {
    ss::PlotRecord* plot = ss::plotTree().current();
    if (!plot) return;
    if (ss::Status s = build(*plot); !s) return ss::host::showMessage(s.message());
    if (status) *status = 0;
  } catch (...) {
    try {
      ss::host::showMessage("Out of memory in the plot tree");
    } catch (...) {
    }
  }
}

// A net or rose made by the engine takes the place of the plot's sets.
ss::Status placeNet(ss::PlotRecord& plot, std::span<const float> dips, std::span<const float> azimuths,
                    const ss::StereonetRequest& request) {
  ss::PlotRecord net;
  ss::StereonetSummary summary;
  if (ss::Status s = ss::makeStereonetPlot(dips, azimuths, request, net, summary); !s) return s;
  ss::placeStereonet(plot, std::move(net));
  return ss::Status::ok();
}

}  // namespace

extern "C" {

void ZW_DRAWSTEREO(const int* p, const int* n, const float* dips, const float* azimuths, const int* poles,
                   const int* planes, int* status) {
  buildInCurrentPlot(status, [&](ss::PlotRecord& plot) {
    ss::StereonetRequest r;
    r.projection = p ? *p : 0;
    r.poles = poles && *poles == 1;
    r.planes = planes && *planes == 1;
    return placeNet(plot, values(n, dips), values(n, azimuths), r);
  });
}

void ZW_DRAWSTEREOXY(const int* p, const int* n, const float* dips, const float* azimuths, const int* poles,
                     const int* colour, const int* shape, const char* name, int* status) {
  buildInCurrentPlot(status, [&](ss::PlotRecord& plot) {
    int plotted = 0;
    const std::string setName = name ? ss::fixedText(name, kNameWidth) : std::string();
    ss::Status s = ss::addStereonetSet(plot, values(n, dips), values(n, azimuths), p ? *p : 0, poles && *poles == 1,
                                       setName, colour ? *colour : 0, shape && *shape >= 1 ? *shape : 1, plotted);
    if (s) plot.currentSet = plot.setCount();
    return s;
  });
}

void ZW_DRAWSTEREOROSE(const int* n, const float* azimuths, const float* width, const float* start, int* status) {
  buildInCurrentPlot(status, [&](ss::PlotRecord& plot) {
    ss::StereonetRequest r;
    r.rose = true;
    r.roseWidth = width ? *width : 10.0;
    r.roseStart = start ? *start : 0.0;
    const std::span<const float> az = values(n, azimuths);
    const std::vector<float> level(az.size(), 0.0f);  // a rose needs azimuths only
    return placeNet(plot, level, az, r);
  });
}

void ZW_DRAWSTEREOLABEL(const int* ncolours, const char* colours, const int* nsymbols, const char* symbols,
                        int* status) {
  buildInCurrentPlot(status, [&](ss::PlotRecord& plot) {
    if (plot.sets.empty()) return ss::Status::error("The plot has no net to key");
    ss::addStereonetKey(plot.sets.front(), names(ncolours, colours), names(nsymbols, symbols));
    return ss::Status::ok();
  });
}

float R_STEREOFRAC(const int* p, const int* a, const int* n, const float* c, const float* w, const int* i) {
  if (!p || !a || !n || !c || !w || !i) return ss::kRealNull;
  const double r = ss::stereoRadius(*p, *a, *n, *c, *w, *i);
  return ss::isNull(r) ? ss::kRealNull : static_cast<float>(r);
}

void ZW_SETSMESS(const int* p, const float* x, const float* y, char* radius, char* angle, char* dip, char* azimuth,
                 char* corresp, int* status) {
  if (status) *status = 1;
  char* fields[] = {radius, angle, dip, azimuth, corresp};
  for (char* f : fields)
    if (f) ss::blankFixed(f, ZW_SETSMESS_WIDTH);
  if (!p || !x || !y) return;
  try {
    ss::NetReadout readout;
    if (!ss::readNetPosition(*x, *y, *p, readout)) return;
    for (std::size_t k = 0; k < 5; ++k)
      if (fields[k]) ss::setFixed(fields[k], ZW_SETSMESS_WIDTH, readout.texts[k]);
    if (status && readout.onNet) *status = 0;
  } catch (...) {
  }
}

}  // extern "C"
