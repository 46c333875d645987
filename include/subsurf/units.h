/* Units registry: dimensions, units and unit series, and conversions between
 * the units of a series.
 *
 * A unit is named by the pair (iser, iun): the series number (from 0 to the
 * value of X_NSER) and the unit's position within the series (from 1; below 1
 * means no unit). Unit systems: 1 = oilfield, 2 = metric, 3 = SI.
 *
 * Every argument is passed by pointer. Text arguments are blank-padded fields
 * of fixed width and need not be NUL-terminated: unit names 16 characters,
 * series names 20, dimension names 32, ellipsoid names 40. A text result that
 * cannot be produced is returned as blanks. Unit names are compared ignoring
 * letter case.
 *
 * Conversion error words (err): 0 done; 1 bad series or unit, or a step that
 * could not be done (the value is then returned as it came, or with that step
 * left out); -1 a reciprocal of zero. Values of magnitude above 9.0e20 (the
 * null marks) are never converted and give err 0.
 *
 * The registry is read from "deflib:x_units.def" by X_INIT, which the host
 * (or a program) calls once at start; until then every query answers as for
 * no series.
 */
#ifndef SUBSURF_UNITS_H
#define SUBSURF_UNITS_H

#include "subsurf/scalars.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A real vector with its unit: N values at V. */
typedef struct DT_RVEC {
  int N;
  float* V;
  DT_UNIT VU;
} DT_RVEC;

/* Loading -------------------------------------------------------------- */

/* (Re)reads the definitions file and fills the reference-ellipsoid table. A file
 * that cannot be read is reported to the user and leaves the registry empty. */
void X_INIT(void);

/* Series and unit queries ----------------------------------------------- */

/* Number of the last series (series run from 0 to this number); -1 when empty. */
void X_NSER(int* count);
/* Units of the series, hidden ones included; 0 for a bad iser. */
void X_NSERUNITS(const int* iser, int* n);
/* Units of the series offered in pick lists; 0 for a bad iser. */
void X_GETNULIST(const int* iser, int* n);
/* Series name (20); blanks for a bad iser. */
void X_GETCSER(const int* iser, char* name);
/* Series number by name (20); -1 when no series has that name. */
void X_GETISER(const char* name, int* iser);
/* A series (the lowest numbered) that holds a unit of that name (16); -1 when none. */
void X_GUESSISER(const char* unit, int* iser);
/* Position of the named unit (16) in the series; 0 when it is not there. */
void X_GETIUN(const int* iser, const char* unit, int* iun);
/* Row of the unit in the units table; 0 when iser or iun is out of range. */
void X_GETIUNUM(const int* iser, const int* iun, int* id);
/* The unit's name and its alternative name (16 each). */
void X_GETCUN(const int* iser, const int* iun, char* name);
void X_GETCUNO(const int* iser, const int* iun, char* name);
/* system 1, 2, 3: the position of the series' default unit in that system
 * (0 when the default is not a unit of the series); system 4: the series'
 * dimension number; -32768 for a bad iser; 0 for another system. */
void X_GETSDEF(const int* iser, const int* system, int* value);
/* Name (16) of the iun-th unit of the series; blanks when there is none. */
void X_GETUDEF(const int* iser, const int* iun, char* name);
/* Listed unit names of a series into names (capacity fields of 16 characters,
 * one after another); count is the number of listed units, of which at most
 * capacity are stored. X_GETULISTDS gives the same list for dataset channels. */
void X_GETULISTA(const int* iser, char* names, const int* capacity, int* count);
void X_GETULISTDS(const int* iser, char* names, const int* capacity, int* count);

/* Conversions by position ------------------------------------------------ */

/* Direct coefficients from one unit to another: y = a*x + b, then y = 1/y when
 * s is -1 (a reciprocal pair such as a velocity and a slowness). err 0 when the
 * pair has such a form, -1 when it must go through the SI unit, 1 for a bad
 * iser or iun. */
void X_SICF(const int* iser, const int* from, const int* to, float* a, float* b, float* s, int* err);
/* The value converted; X_SICONVE converts one element in place; X_SICONVV
 * converts n values in place (err: that of the last value that failed). */
float X_SICONV(const float* value, const int* iser, const int* from, const int* to, int* err);
double X_SICONVD(const double* value, const int* iser, const int* from, const int* to, int* err);
void X_SICONVE(float* value, const int* iser, const int* from, const int* to, int* err);
void X_SICONVV(double* values, const int* n, const int* iser, const int* from, const int* to, int* err);

/* Conversions by unit name (16). When either name is blank the value is
 * returned unchanged; a name that is not a unit of the series also leaves it
 * unchanged. X_SCCONVV converts n values in place. */
float X_SCCONV(const float* value, const int* iser, const char* from, const char* to);
double X_SCCONVD(const double* value, const int* iser, const char* from, const char* to);
void X_SCCONVV(double* values, const int* n, const int* iser, const char* from, const char* to);

/* Converts a vector record (values and unit) to another unit of its series,
 * given by name (16) or position. Nothing happens when the new unit is not a
 * unit of the series. A vector without a unit yet (IUN below 1) takes the new
 * unit without converting its values. */
void X_RVECCONVU(DT_RVEC* vector, const char* unit);
void X_RVECCONVUI(DT_RVEC* vector, const int* iun);

/* Writes the SQL script that creates and fills an equivalent database to
 * "create_units.sql" in the logical folder "tempdir:sql". */
void X_SQLSCRIPT(void);

/* Reference ellipsoids ---------------------------------------------------- */

/* Number of reference ellipsoids (27). */
void X_NELLIPSOIDS(int* n);
/* Ellipsoid by place (1 = "Airy 1849" .. 27 = "WGS 1984"): name (40),
 * semi-major axis in metres and inverse flattening. status 0 done, 1 bad index
 * (name blank, a and invf 0). */
void X_GETELLIPSOID(const int* index, char* name, double* a, double* invf, int* status);

/* Entry points for other modules and the host ------------------------------ */

/* Value converted between two units named (16) in series iser. */
float A_XUN(const float* value, const int* iser, const char* from, const char* to, int* err);
/* Value converted from position from (a unit record's IUN) to the named unit. */
float A_XUNI(const float* value, const int* iser, const int* from, const char* to, int* err);
/* n values converted in place between two named units. */
void A_XUNS(float* values, const int* n, const int* iser, const char* from, const char* to, int* err);
/* Direct coefficients (as X_SICF) between two named units. */
void A_XUNCF(const int* iser, const char* from, const char* to, float* a, float* b, float* s, int* err);
/* Value converted between two named units, the series found from the names:
 * the first series that holds both units. err 1 when there is none. */
float A_XUNSC(const float* value, const char* from, const char* to, int* err);
/* Value converted between two named units of the series named (20) series. */
float A_XUNCSC(const float* value, const char* series, const char* from, const char* to, int* err);

/* Unit name (16) and series name (20) of (iser, iun); blanks where there is none. */
void A_XUNGET(const int* iser, const int* iun, char* unit, char* series);
/* Series name (20). */
void A_XUNGETNAME(const int* iser, char* series);
/* Unit name (16). */
void A_XUNGETUNAME(const int* iser, const int* iun, char* unit);
/* Series number by name (20); -1 when none. IA_XUNGETSER returns it. */
void A_XUNGETSER(const char* series, int* iser);
int IA_XUNGETSER(const char* series);
/* Position of the series' default unit in a unit system (1 oilfield, 2 metric,
 * 3 SI); 0 when there is none, -32768 for a bad iser. */
int IA_XUNGETSERDEF(const int* iser, const int* system);
/* Number of units of the series; 0 for a bad iser. */
int IA_XUNGETSERUN(const int* iser);

/* Fixed-series conversions in place: depth (A_DEPC single, A_DEPC8 double) and
 * length (A_LENCC) between named units (16), length between positions
 * (A_LENC), and time between named units (A_TIMC, double: times are long). */
void A_DEPC(float* value, const char* from, const char* to, int* err);
void A_DEPC8(double* value, const char* from, const char* to, int* err);
void A_LENC(float* value, const int* from, const int* to, int* err);
void A_LENCC(float* value, const char* from, const char* to, int* err);
void A_TIMC(double* value, const char* from, const char* to, int* err);

#ifdef __cplusplus
}
#endif

#endif
