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

#ifdef __cplusplus
}
#endif

#endif
