/* Dates and times.
 *
 * A date value is a double: seconds since 1846-07-30 00:00 (day number 0), on
 * the proleptic Gregorian calendar; a time of day is seconds from midnight. An
 * unset or unreadable date holds the double null (Q_R8_NULL). A date record is
 * a double scalar (DT_DSCA) whose display text CHU holds the date as text and
 * whose second 32-character text SHORT holds the mask, such as
 * "dd mon yyyy hr:min" (the mask items are listed in docs/dates.md).
 *
 * Every argument is passed by pointer. Texts are blank-padded 32-character
 * fields (dates, times and masks). A broken-down date is seven shorts: year,
 * month (1..12), day, hour, minute, second, millisecond; a broken-down time is
 * four: hour, minute, second, millisecond.
 *
 * Units of rounding and adding: 1 years, 2 months, 3 days, 4 hours,
 * 5 minutes, 6 seconds, 7 weeks. status 0 done, 1 unknown unit, a step below 1
 * (rounding) or a null value (left as it is).
 */
#ifndef SUBSURF_DATES_H
#define SUBSURF_DATES_H

#include "subsurf/scalars.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Double-scalar defaults, then the mask: the "datefmt" setting (24 characters),
 * or "dd.mon.yy hr:min" when that is empty. */
void DT_DATEDFLT(DT_DSCA* rec);
/* Double-scalar defaults with the mask "hr:min". */
void DT_TIMEDFLT(DT_DSCA* rec);
/* Mask by code: 1 "yyyy", 2 "mon yyyy", 3 "dd mon yyyy", 4 "dd mon yyyy hr:min",
 * 5 "dd mon yyyy hr:min:sec", 6 "dd mon yyyy hr:min:ss.sss", 11 "hr:min",
 * 12 "hr:min:ss", 13 "hr:min:ss.sss"; any other code leaves the mask alone. */
void DT_DATESETMASK(DT_DSCA* rec, const int* code);

void X_DATEIF(const short* parts, double* value);
void X_DATEFI(const double* value, short* parts);
/* Value to text under a mask (blank for the null value). */
void X_DATEIC(const double* value, const char* mask, char* text);
/* Text to value under a mask; nerr > 0 when the text was not understood (the
 * value is then the double null). */
void X_DATECI(const char* text, const char* mask, double* value, int* nerr);
void X_TIMEIC(const double* seconds, const char* mask, char* text);
void X_TIMECI(const char* text, const char* mask, double* seconds, int* nerr);
void X_TIMEIF(const short* parts, double* seconds);
void X_TIMEFI(const double* seconds, short* parts);
/* A time of day as hours (a real). */
void X_TIMEFR(const double* seconds, float* hours);

/* The number of items of a mask (fields and the literal texts between them). */
void X_DATEMASKCI(const char* mask, int* count);
/* Item k (from 1) of a mask: its text (32) and 1 when it is a field, 0 when it
 * is literal text; status 1 when there is no item k. */
void X_DATEMASKITEM(const char* mask, const int* k, char* item, int* isfield, int* status);

/* mode 1: read the record's text into its value (the null value when it
 * cannot be read) and write the text again; any other mode: write the value
 * into the text. */
void X_DATE(DT_DSCA* rec, const int* mode);

void X_DATEROUNDDOWN(double* value, const int* unit, const int* step, int* status);
void X_DATEROUNDUP(double* value, const int* unit, const int* step, int* status);
void X_DATEIADD(double* value, const int* unit, const int* steps, int* status);
void X_DATERADD(double* value, const int* unit, const double* steps, int* status);
/* The same for times of day: units 3 (days) to 7 only. */
void X_TIMEROUNDDOWN(double* seconds, const int* unit, const int* step, int* status);
void X_TIMEROUNDUP(double* seconds, const int* unit, const int* step, int* status);
void X_TIMEIADD(double* seconds, const int* unit, const int* steps, int* status);
void X_TIMERADD(double* seconds, const int* unit, const double* steps, int* status);

#ifdef __cplusplus
}
#endif

#endif
