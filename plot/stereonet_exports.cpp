// C entry points of stereonets (declared in include/subsurf/plot_stereonet.h).
#include "host/nulls.h"
#include "host/fixed_text.h"
#include "plot/stereonet_projection.h"
#include "plot/stereonet_readout.h"
#include "subsurf/plot_stereonet.h"

extern "C" {

float R_STEREOFRAC(const int* p, const int* a, const int* n, const float* c, const float* w, const int* i) {
  if (!p || !a || !n || !c || !w || !i) return subsurf::kRealNull;
  const double r = subsurf::stereoRadius(*p, *a, *n, *c, *w, *i);
  return subsurf::isNull(r) ? subsurf::kRealNull : static_cast<float>(r);
}

void ZW_SETSMESS(const int* p, const float* x, const float* y, char* radius, char* angle, char* dip, char* azimuth,
                 char* corresp, int* status) {
  if (status) *status = 1;
  char* fields[] = {radius, angle, dip, azimuth, corresp};
  for (char* f : fields)
    if (f) subsurf::blankFixed(f, ZW_SETSMESS_WIDTH);
  if (!p || !x || !y) return;
  try {
    subsurf::NetReadout readout;
    if (!subsurf::readNetPosition(*x, *y, *p, readout)) return;
    for (std::size_t k = 0; k < 5; ++k)
      if (fields[k]) subsurf::setFixed(fields[k], ZW_SETSMESS_WIDTH, readout.texts[k]);
    if (status && readout.onNet) *status = 0;
  } catch (...) {
  }
}

}  // extern "C"
