/* Host services of the subsurf library: null values, messages and questions,
 * comma-separated rows on file channels, keyword files, logical path prefixes,
 * settings by key and number text.
 *
 * Every argument is passed by pointer. Text arguments are blank-padded fields of
 * the width given with them (or of the stated fixed width); they need not be
 * NUL-terminated. Status words: 0 done, positive failed, negative partial or
 * skipped as each routine says.
 */
#ifndef SUBSURF_HOST_H
#define SUBSURF_HOST_H

#ifdef __cplusplus
extern "C" {
#endif

/* Null values: an unset real is -9.9e20 in single precision; the double null is
 * that single value widened; the integer null is negative and not -1. */
float Q_R_NULL(void);
double Q_R8_NULL(void);
int IQ_I_NULL(void);
/* 1 when the value is the real null, else 0. */
int Q_IS_RNULL(const float* value);

/* Messages. AW_MESS shows text (length characters). AW_MESSAGE shows it with a
 * kind: 0 information, 1 a yes/no question whose answer (1 = yes) is returned in
 * *answer. */
void AW_MESS(const char* text, const int* length);
void AW_MESSAGE(const char* text, const int* length, const int* kind, int* answer);
/* Reports a failed allocation (status non-zero) naming what was being allocated
 * (what: 40 characters); returns the status unchanged in *status. */
void AW_CHECK_ALLOC(const int* status, const char* what);

/* Keyword files on channels. mode (16 characters): "READ" (shared, read only),
 * "WRITE" (replaces the file when closed with "RELEASE"). file: 260 characters,
 * logical prefixes allowed. status 0 done, 1 cannot open. */
void KJF_OPEN(int* channel, const char* file, const char* mode, int* status);
/* mode "RELEASE" keeps what was written (renames it over the target); "DELETE"
 * throws a written file away. Reading channels are simply closed. status 0 done. */
void KJF_CLOS(const int* channel, const char* mode, int* status);
/* Opens a plain text file for writing (closed with KJF_CLOS). */
void A_OPENASC(int* channel, const char* file, int* status);
/* Appends one line (length characters, trailing blanks trimmed) to a writing channel. */
void A_WRITELINE(const int* channel, const char* text, const int* length);

/* Rows. A_LOADCSV reads the channel's next record into its current row:
 * status 0 read, -1 a blank line skipped, -3 end of file, 1 not a reading channel. */
void A_LOADCSV(const int* channel, int* status);
/* Fields of the current row by column (from 1). Text is blank-padded to width.
 * status 0 read, 1 absent or empty, 2 not a number. */
void A_GETCSVC(const int* channel, const int* column, char* text, const int* width, int* status);
void A_GETCSVI(const int* channel, const int* column, int* value, int* status);
void A_GETCSVR(const int* channel, const int* column, float* value, int* status);
void A_GETCSVR8(const int* channel, const int* column, double* value, int* status);
/* Building a row on a writing channel. position: 0 starts a new row with this
 * field, 1 appends it, 2 appends it and writes the row out. */
void A_SETCSVC(const int* channel, const char* text, const int* width, const int* position);
void A_SETCSVI(const int* channel, const int* value, const int* position);
void A_SETCSVR(const int* channel, const float* value, const int* position);
void A_SETCSVR8(const int* channel, const double* value, const int* position);

/* File names. A_SETFLNM: full name (260) from a location (260, a folder or a
 * prefix such as "userlib:" or "tempdir:sql"), a name (260) and a type (16,
 * the extension). SET_FLNM resolves a name (260) that may start with a prefix. */
void A_SETFLNM(const char* location, const char* name, const char* type, char* fullname);
void SET_FLNM(const char* name, char* fullname);

/* Settings by key (32 characters); value 260 characters; status 0 found, 1 not. */
void A_GETAENV(const char* key, char* value, int* status);

/* Number text. XRCFN: a real as text (20 characters) under a format code
 * (>= 0 decimals; negative: that many significant digits, -6 compact).
 * XIC: an integer as text (20). XCI, XCR: text (length characters) to a number,
 * status 0 read, 1 not a number. */
void XRCFN(const float* value, const int* code, char* text);
void XIC(const int* value, char* text);
void XCI(const char* text, const int* length, int* value, int* status);
void XCR(const char* text, const int* length, float* value, int* status);

/* Guarded power x**p: err 1 (x returned) when undefined or overflowing. */
double A_DDEXP(const double* x, const double* p, int* err);
/* value clamped to low..high. */
int IA_ILIMIT(const int* value, const int* low, const int* high);
/* Statistics of n values (those above bound, finite and of magnitude below
 * 9.0e19): count, minimum, maximum, and npct percentiles (pcts in 0..100, linear
 * interpolation between ranks) into pctvalues. Extremes and percentiles are 0
 * when count is 0. */
void A_VECSTATS1(const int* n, const float* values, const float* bound, const int* npct, const float* pcts,
                 int* count, float* vmin, float* vmax, float* pctvalues);
/* Round axis limits around vmin..vmax (log: 1 for a log axis): low, high, step.
 * See host/vector_stats.h for the rule. */
void A_AXLIM(const float* vmin, const float* vmax, const int* log, float* low, float* high, float* step);

#ifdef __cplusplus
}
#endif

#endif
