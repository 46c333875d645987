/* Typed scalar records: a value with its unit, state, default, limits and labels.
 *
 * These are plain fixed-layout records shared with C callers. Text fields are
 * blank-padded and not NUL-terminated. Unset values hold the null values of
 * the host (see subsurf/host.h). Five kinds: integer (ISCA), single real (RSCA),
 * double real (DSCA), 40-character text (CSCA) and 260-character file name (FSCA).
 */
#ifndef SUBSURF_SCALARS_H
#define SUBSURF_SCALARS_H

#ifdef __cplusplus
extern "C" {
#endif

/* Unit of a real value: position in its series (from 1; below 1 = no unit),
 * the series number (-1 = no series) and the unit's name. */
typedef struct DT_UNIT {
  int IUN;
  int ISER;
  char CU[16];
} DT_UNIT;

/* Single-precision real scalar. */
typedef struct DT_RSCA {
  float V;
  char CHU[20];   /* display text: the value (and uncertainty) as shown */
  DT_UNIT VU;
  int SET;        /* state word, -1 by default */
  int SET2;       /* second state word, 0 by default */
  int FMT;        /* format word, -4 by default */
  char LABEL[20];
  char SHORT[16];
  char CODE[16];  /* code name: the key of the record's row in settings files */
  float VMIN, VMAX, VDEF;
  char DESC[40];
  float RELERR;   /* relative error as a fraction (entered in percent) */
} DT_RSCA;

/* Double-precision real scalar. */
typedef struct DT_DSCA {
  double V;
  char CHU[32];
  DT_UNIT VU;
  int SET;
  int SET2;
  int FMT;
  int IEXTRA;
  char CODE[32];  /* code name: the key of the record's row */
  char SHORT[32];
  double VMIN, VMAX, VDEF;
  char LABEL[20];
  char DESC[40];
  double RELERR;
} DT_DSCA;

/* Integer scalar. */
typedef struct DT_ISCA {
  int V;
  int SET;
  int SET2;
  char CODE[16];  /* first 16-character text */
  char SHORT[16];
  int VMIN, VMAX, VDEF;
  char KEY[20];   /* first 20-character text: the key of the record's row */
  char LABEL[20];
  char DESC[40];
} DT_ISCA;

/* Text scalar. */
typedef struct DT_CSCA {
  char V[40];
  int SET;
  int SET2;
  char CODE[32];  /* the key of the record's row */
  char LABEL[20];
  char DESC[40];
  char VDEF[40];
} DT_CSCA;

/* File-name scalar. */
typedef struct DT_FSCA {
  char V[260];
  int SET;
  int SET2;
  char CODE[32];  /* the key of the record's row */
  char LABEL[20];
  char DESC[40];
  char VDEF[260];
} DT_FSCA;

/* Conventional values of the state words.
 *   SET   -1  the record still holds its default (never set);
 *          0  cleared: the value was removed;
 *          1  entered by the user: calculations keep it;
 *          2  calculated by the program: the next calculation may overwrite it
 *             (any value above 1 counts as calculated).
 *   SET2   0  free; 1 fixed: an entry screen asks before the value is changed. */
enum {
  DT_STATE_DEFAULT = -1,
  DT_STATE_CLEARED = 0,
  DT_STATE_ENTERED = 1,
  DT_STATE_CALCULATED = 2
};
enum { DT_FREE = 0, DT_FIXED = 1 };

/* Type tags: the second field of a scalar's keyword row. */
enum {
  DT_TAG_INTEGER = 1,
  DT_TAG_TEXT = 2,
  DT_TAG_FILENAME = 3,
  DT_TAG_REAL = 4,
  DT_TAG_DOUBLE = 5
};

/* ---------------------------------------------------------------------------
 * Routines. Every argument is passed by pointer; texts are blank-padded fields
 * of the width given in the comment (unit names 16). A null pointer for an
 * "optional state" means the argument is absent: SET is then left alone.
 * Values of magnitude above 9.0e20 (the nulls) are never converted.
 * ------------------------------------------------------------------------- */

/* Defaults: values and limits null, unit (1, -1, blank), SET -1, second state
 * 0, format -4, texts blank. The integer form takes its limits and default; the
 * text forms take the default text (cut or padded to 40 / 260 characters). */
void DT_ISCADFLT(DT_ISCA* rec, const int* vmin, const int* vmax, const int* vdef);
void DT_RSCADFLT(DT_RSCA* rec);
void DT_DSCADFLT(DT_DSCA* rec);
void DT_CSCADFLT(DT_CSCA* rec, const char* text /* 40 */);
void DT_FSCADFLT(DT_FSCA* rec, const char* text /* 260 */);

/* Copies. COPY: every field. COPYM: value, display text, unit, SET, second
 * state, code and relative error (labels, limits and format stay). COPYV: value,
 * display text, unit and relative error only. COPYTODSCA / DSCACOPYTORSCA: every
 * field between the single and double kinds (a double beyond single range
 * becomes the null). */
void DT_ISCACOPY(const DT_ISCA* from, DT_ISCA* to);
void DT_RSCACOPY(const DT_RSCA* from, DT_RSCA* to);
void DT_DSCACOPY(const DT_DSCA* from, DT_DSCA* to);
void DT_CSCACOPY(const DT_CSCA* from, DT_CSCA* to);
void DT_FSCACOPY(const DT_FSCA* from, DT_FSCA* to);
void DT_RSCACOPYM(const DT_RSCA* from, DT_RSCA* to);
void DT_RSCACOPYV(const DT_RSCA* from, DT_RSCA* to);
void DT_RSCACOPYTODSCA(const DT_RSCA* from, DT_DSCA* to);
void DT_DSCACOPYTORSCA(const DT_DSCA* from, DT_RSCA* to);

/* Units. SETVU: series and unit name, then IUN by DT_SETIUN (the value is not
 * converted). DT_SETIUN: IUN := position of CU in series ISER (case-insensitive;
 * below 1 when not a unit of the series). DT_SETCUN: CU := name of unit IUN. */
void DT_RSCASETVU(DT_RSCA* rec, const int* iser, const char* unit);
void DT_DSCASETVU(DT_DSCA* rec, const int* iser, const char* unit);
void DT_SETIUN(DT_UNIT* unit);
void DT_SETCUN(DT_UNIT* unit);

/* Change of unit: the value and the limits are converted and the unit replaced;
 * nothing happens when the name (position) is not a unit of the series. CONVUS
 * converts the records of an array whose ISER equals *iser. */
void DT_RSCACONVU(DT_RSCA* rec, const char* unit);
void DT_DSCACONVU(DT_DSCA* rec, const char* unit);
void DT_RSCACONVUI(DT_RSCA* rec, const int* iun);
void DT_DSCACONVUI(DT_DSCA* rec, const int* iun);
void DT_RSCACONVUS(DT_RSCA* recs, const int* iser, const int* iun, const int* count);
void DT_DSCACONVUS(DT_DSCA* recs, const int* iser, const int* iun, const int* count);

/* The value expressed in another unit (by name, or by position for the forms
 * ending in 1 or I); the record is unchanged. A unit that is not one of the
 * series' gives the value unconverted. GETCE also gives the relative error. */
void DT_GETSR(const DT_RSCA* rec, const char* unit, float* value);
void DT_GETSD(const DT_DSCA* rec, const char* unit, double* value);
void DT_GETSR1(const DT_RSCA* rec, const int* iun, float* value);
void DT_GETSD1(const DT_DSCA* rec, const int* iun, double* value);
void DT_RSCAGETC(const DT_RSCA* rec, const char* unit, float* value);
void DT_RSCAGETI(const DT_RSCA* rec, const int* iun, float* value);
void DT_RSCAGETCE(const DT_RSCA* rec, const char* unit, float* value, float* relerr);
void DT_DSCAGETC(const DT_DSCA* rec, const char* unit, double* value);
void DT_DSCAGETI(const DT_DSCA* rec, const int* iun, double* value);

/* Store a value given in another unit: a record without a unit (IUN < 1) adopts
 * the given one, otherwise the value is converted into the record's unit. A
 * blank name means the record's own unit. SET takes *state when state is not
 * null. The display text is refreshed. SETCE also stores the relative error. */
void DT_RSCASETC(DT_RSCA* rec, const char* unit, const float* value, const int* state);
void DT_RSCASETI(DT_RSCA* rec, const int* iun, const float* value, const int* state);
void DT_RSCASETCE(DT_RSCA* rec, const char* unit, const float* value, const float* relerr, const int* state);
void DT_DSCASETC(DT_DSCA* rec, const char* unit, const double* value, const int* state);
void DT_DSCASETI(DT_DSCA* rec, const int* iun, const double* value, const int* state);

/* 1 when b, expressed in a's unit, equals a: exactly when a is 0, else within a
 * relative 1.0e-7. */
int DT_RSCAEQUAL(const DT_RSCA* a, const DT_RSCA* b);
/* a := maximum (mode > 0) or minimum (mode <= 0) of a and b, b in a's unit. The
 * minimum ignores values of magnitude 9.0e19 or more; the maximum does not test. */
void DT_RSCAMINMAX(DT_RSCA* a, const DT_RSCA* b, const int* mode);
void DT_DSCAMINMAX(DT_DSCA* a, const DT_DSCA* b, const int* mode);

/* Display text. SETRCHU writes the value, and when the relative error is set the
 * uncertainty in percent ("12.5 +/- 3%"); a null value gives a blank text. The
 * OUT forms are for texts that are only shown: a null value shows as "()".
 * UNSETRCHU reads the text back: "number [unit] [+/- | +- | e= error [%]]";
 * status 0 read, 1 not understood ("Invalid number!" or "Invalid unit!" shown,
 * the record unchanged but its text rebuilt). status may be null. */
void DT_SETRCHU(DT_RSCA* rec);
void DT_SETDCHU(DT_DSCA* rec);
void DT_SETRCHUOUT(DT_RSCA* rec);
void DT_SETDCHUOUT(DT_DSCA* rec);
void DT_UNSETRCHU(DT_RSCA* rec, int* status);
void DT_UNSETDCHU(DT_DSCA* rec, int* status);
/* Splits a text (length characters) into its number part and its uncertainty
 * part (32 characters each; the uncertainty without its marker and without "%"
 * and what follows); *found is 1 when an uncertainty marker was present. */
void DT_PARSERCHU(const char* text, const int* length, char* number, char* uncertainty, int* found);
/* Integer value as text (20 characters; blank for the null) and back. */
void DT_SETICHU(const DT_ISCA* rec, char* text);
void DT_UNSETICHU(DT_ISCA* rec, const char* text, int* status);
/* The factor that turns a real vector's values into fractions (the vector
 * record DT_RVEC of subsurf/units.h). Percent-like unit names decide it: "%",
 * "pu", "p.u." 0.01; "fr", "v/v", "-" 1. Otherwise the values do: nulls are
 * skipped (none left: 1, unit unchanged); of the values in -4..60 an average up
 * to 0.8 makes the unit "fr" and the factor 1, above it "%" and 0.01; with no
 * value in that range the factor is 0.01 and the unit stays. */
struct DT_RVEC;
void DT_SETPERCFAC(struct DT_RVEC* vector, float* factor);

/* Keyword rows. Writers: level 1..9 writes one comma-separated row on the
 * channel (from KJF_OPEN), the key indented by level-1 blanks; *close is the
 * host's position code for the last field: 2 (or a null pointer) writes the row
 * out, 1 leaves it open so the caller can append fields of its own. Any other
 * level writes one formatted record line, beginning with the type tag (close is
 * ignored). Readers read the channel's current row (loaded with A_LOADCSV):
 * status 0 read, 1 no row or not a row of this kind (record unchanged), -1 read
 * but a field was not a number and kept its default. The layouts are described
 * in units/keyword_rows.h and docs/file-formats.md. */
void DT_ISCAWRITE(const DT_ISCA* rec, const int* channel, const int* level, const int* close);
void DT_RSCAWRITE(const DT_RSCA* rec, const int* channel, const int* level, const int* close);
void DT_DSCAWRITE(const DT_DSCA* rec, const int* channel, const int* level, const int* close);
void DT_CSCAWRITE(const DT_CSCA* rec, const int* channel, const int* level, const int* close);
void DT_FSCAWRITE(const DT_FSCA* rec, const int* channel, const int* level, const int* close);
void DT_WRITEI(const DT_ISCA* rec, const int* channel, const int* level, const int* close);
void DT_WRITER(const DT_RSCA* rec, const int* channel, const int* level, const int* close);
void DT_WRITED(const DT_DSCA* rec, const int* channel, const int* level, const int* close);
void DT_WRITEC(const DT_CSCA* rec, const int* channel, const int* level, const int* close);
void DT_WRITEF(const DT_FSCA* rec, const int* channel, const int* level, const int* close);
void DT_ISCAREAD(DT_ISCA* rec, const int* channel, int* status);
void DT_RSCAREAD(DT_RSCA* rec, const int* channel, int* status);
void DT_DSCAREAD(DT_DSCA* rec, const int* channel, int* status);
void DT_CSCAREAD(DT_CSCA* rec, const int* channel, int* status);
void DT_FSCAREAD(DT_FSCA* rec, const int* channel, int* status);
void DT_READI(DT_ISCA* rec, const int* channel, int* status);
void DT_READR(DT_RSCA* rec, const int* channel, int* status);
void DT_READD(DT_DSCA* rec, const int* channel, int* status);
void DT_READC(DT_CSCA* rec, const int* channel, int* status);
void DT_READF(DT_FSCA* rec, const int* channel, int* status);
/* Structured text block: the header line "IV, D%V, D%SET, D%VU%ISER, D%VU%IUN,
 * D%VU%CU" and one line of values (the integer form stops after SET). */
void DT_WRITERXML(const DT_RSCA* rec, const int* channel);
void DT_WRITEIXML(const DT_ISCA* rec, const int* channel);

#ifdef __cplusplus
}
#endif

#endif
