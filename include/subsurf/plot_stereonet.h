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

/* ---- A net in the current plot ------------------------------------------
 * These build into the current plot of the plot tree (include/subsurf/plot.h);
 * the host then draws it with ZW_ZPDRAW or into its window. The net lies in a
 * -100..100 window with the rim at 90: give the plot a square page. Dips are
 * 0..90 degrees, azimuths degrees from north; out-of-range or null pairs are
 * left out. Status 0 done; 1 not done, the reason shown through the host's
 * message routine ("No valid data points!" when nothing is left). */

/* The net of projection P (2 equal angle, 3 equal area) with the N
 * observations as poles (*POLES = 1) or as dip lines (0), their great circles
 * when *PLANES = 1, labels and mean, in place of the current plot's sets. */
void ZW_DRAWSTEREO(const int* p, const int* n, const float* dips, const float* azimuths, const int* poles,
                   const int* planes, int* status);
/* N more observations as a plot set of their own on the current plot's net:
 * NAME (40 characters), palette COLOUR (0 the default) and marker SHAPE 1..8;
 * the new set becomes current. */
void ZW_DRAWSTEREOXY(const int* p, const int* n, const float* dips, const float* azimuths, const int* poles,
                     const int* colour, const int* shape, const char* name, int* status);
/* A rose diagram of N azimuths in classes of WIDTH degrees (dividing 360)
 * from azimuth START, in place of the current plot's sets. */
void ZW_DRAWSTEREOROSE(const int* n, const float* azimuths, const float* width, const float* start, int* status);
/* The key of the current plot's net: NCOLOURS class names (40 characters
 * each, shown with palette colours 2, 3, ...) under "Colours:" and NSYMBOLS
 * names (marker shapes 1, 2, ...) under "Symbols:". */
void ZW_DRAWSTEREOLABEL(const int* ncolours, const char* colours, const int* nsymbols, const char* symbols,
                        int* status);

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
