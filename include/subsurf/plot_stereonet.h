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

/* Width of each read-out text of ZW_SETSMESS. */
#define ZW_SETSMESS_WIDTH 40

/* The read-out of net position (X, Y) (x east, y north, net units, rim at 90)
 * of projection P (2 equal angle, 3 equal area): five blank-padded texts of
 * ZW_SETSMESS_WIDTH characters, "Radius = 63.6", "Angle = 270.0",
 * "Dip = 30.0", "Az = 270.0" and "Corresp. Point Dip = 60.0" (one decimal
 * each; see plot/stereonet_readout.h). Status 0 on the net; 1 beyond the rim
 * (radius and angle written, the other three blank), for another projection
 * or a missing argument (all blank). */
void ZW_SETSMESS(const int* p, const float* x, const float* y, char* radius, char* angle, char* dip, char* azimuth,
                 char* corresp, int* status);

#ifdef __cplusplus
}
#endif

#endif
