/* Binned statistics of a plot's values (see plot/bin_statistics.h for the
 * bin edges, percentile rule and deviations). Status words: 0 done, 1 not
 * done (the reason shown through the host's message routine). */
#ifndef SUBSURF_PLOT_STATISTICS_H
#define SUBSURF_PLOT_STATISTICS_H

#ifdef __cplusplus
extern "C" {
#endif

/* The 21 column headings in order, 12 characters each (252): "Bin", "MinV",
 * "MaxV", "MidV", "NP", "P100", "P95", "P90", "P50", "P10", "P5", "P0",
 * "Mean", "ADev", "SDev", "Median Dev", "Pear Mean", "Swan Mean",
 * "Geo Mean", "Arith Mean", "Harm Mean". */
void ZW_BINHEADS(char* text);

/* Cuts the n values VALUES into NBINS bins of BY by the NBINS + 1 ascending
 * EDGES and fills TABLE (NBINS rows of 21 columns, row after row); statistics
 * of an empty bin are null. LEFTOUT (may be null) receives the count of points
 * with a null bin value or value. */
void ZW_BINSTATS(const int* n, const float* by, const float* values, const int* nbins, const float* edges,
                 float* table, int* leftout, int* status);

/* Draws the current plot set's x values as a histogram into the current
 * plot's window (replacing what it showed): *NCLASS equal classes from the
 * smallest to the largest value (0 or less: Sturges' rule), "No. of points:"
 * and the class count written top right. Out: *NCLASS the classes drawn,
 * *NPOINTS the values counted (NPOINTS may be null). Status 1 without a
 * current plot, set or window, or with "No valid data points!". */
void ZW_DRAWHIST(int* nclass, int* npoints, int* status);

/* Draws the current set's y values binned along its x values into the current
 * plot's window: per filled bin a P10-P90 box, P5-P95 whiskers, the P50 line
 * and a diamond at the mean. The bins are the *NBINS + 1 ascending EDGES, or
 * with EDGES null *NBINS (0 or less: 10) equal bins between the extremes of
 * x. Status 1 without a current plot, set or window, or with bad edges. */
void ZW_DRAWBIN(const int* nbins, const float* edges, int* status);

#ifdef __cplusplus
}
#endif

#endif
