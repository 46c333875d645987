/* Regression lines and the equation texts of plotted lines.
 *
 * Axis types are the scale types of include/subsurf/plot.h: on an axis of type
 * 2 ("Log") the equation is written in the base-10 logarithm of its variable.
 * Descriptions are 120-character blank-padded fields; every number in them is
 * written as XRCFN writes it with format code -6. Status words: 0 done, 1 not
 * done (the reason shown through the host's message routine).
 */
#ifndef SUBSURF_PLOT_REGRESSION_H
#define SUBSURF_PLOT_REGRESSION_H

#ifdef __cplusplus
extern "C" {
#endif

/* The straight line through (x1, y1) and (x2, y2): "y = m*x+c", or "x = x1"
 * when it is vertical. */
void ZW_LINEDESC(const int* xtype, const int* ytype, const float* x1, const float* y1, const float* x2,
                 const float* y2, char* desc, int* status);
/* The power line y = a * x^b ("y = a*x^(b)"); a is written by its magnitude. */
void ZW_LINEDESC2(const int* xtype, const int* ytype, const float* a, const float* b, char* desc);
/* Polynomials of order 2 and 3; coef[k] multiplies x^k (3 and 4 values). */
void ZW_LINEDESC3(const int* xtype, const int* ytype, const float* coef, char* desc);
void ZW_LINEDESC4(const int* xtype, const int* ytype, const float* coef, char* desc);
/* The line through two points written as x in terms of y ("x = m*y+c"), or
 * "y = y1" when it is horizontal. */
void ZW_LINEREVDESC(const int* xtype, const int* ytype, const float* x1, const float* y1, const float* x2,
                    const float* y2, char* desc, int* status);

/* The regression methods in dialog order, 8 characters each (48):
 * "forced", "x-on-y", "y-on-x", "rmb", "rma", "means". */
void ZW_REGMETHODS(char* text);

/* Fits n points (x, y) in plotted coordinates by METHOD (8 characters, one of
 * the names above) and FORM (8 characters: "line", "power", "poly2",
 * "poly3"). The "forced" method passes through (fixedx, fixedy) and needs
 * *usefixed = 1. Out: coef[0..3] (coef[k] multiplies x^k; for "power" coef[0]
 * = a and coef[1] = b of y = a*x^b; unused ones 0), stats[0..4] = R2, CC, SD,
 * p10, p90, and report, the 120-character "Regression:" line. */
void ZW_REGFIT(const int* n, const double* x, const double* y, const char* method, const char* form,
               const int* usefixed, const double* fixedx, const double* fixedy, double* coef, double* stats,
               char* report, int* status);

#ifdef __cplusplus
}
#endif

#endif
