// C entry points of stereonets (declared in include/subsurf/plot_stereonet.h).
#include "host/nulls.h"
#include "plot/stereonet_projection.h"
#include "subsurf/plot_stereonet.h"

extern "C" {

float R_STEREOFRAC(const int* p, const int* a, const int* n, const float* c, const float* w, const int* i) {
  if (!p || !a || !n || !c || !w || !i) return subsurf::kRealNull;
  const double r = subsurf::stereoRadius(*p, *a, *n, *c, *w, *i);
  return subsurf::isNull(r) ? subsurf::kRealNull : static_cast<float>(r);
}

}  // extern "C"
