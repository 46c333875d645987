/* Stereonets: the radial position of a value on the net (radius 90 units).
 * See plot/stereonet_projection.h for the projections. */
#ifndef SUBSURF_PLOT_STEREONET_H
#define SUBSURF_PLOT_STEREONET_H

#ifdef __cplusplus
extern "C" {
#endif

/* Projection type P (2 equal angle, 3 equal area, 4 scaled square, other
 * plain ratio), outer angle or ring count A, divisor N, length C, step W
 * (degrees per index step), index I; returns the radial position. */
float R_STEREOFRAC(const int* p, const int* a, const int* n, const float* c, const float* w, const int* i);

#ifdef __cplusplus
}
#endif

#endif
