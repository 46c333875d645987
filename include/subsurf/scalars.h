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

#ifdef __cplusplus
}
#endif

#endif
