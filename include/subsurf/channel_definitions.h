/* Dataset channel definitions: the record describing one channel (column) of a
 * host dataset - storage type and size, identifiers, series, merge code, two
 * real parameters and its texts - read from and written to the channel's keyed
 * attributes (see DS_SETKEYI and its kin in subsurf/host_dataset.h).
 *
 * Every argument is passed by pointer; texts are blank-padded fixed fields.
 * Unset numbers hold the host's null values. Status words are those of the
 * host's keyed attributes: 0 done; 2 a key not declared (DS_SETDSCHAN on a
 * dataset without DS_DEFDSCHAN); 3 a key of another kind; 4 a channel below 1
 * or position below 1; 5 no such dataset. Reading never fails on a missing
 * attribute: the field keeps its default.
 */
#ifndef SUBSURF_CHANNEL_DEFINITIONS_H
#define SUBSURF_CHANNEL_DEFINITIONS_H

#ifdef __cplusplus
extern "C" {
#endif

typedef struct DS_CHANDEF {
  int ITYPE;        /* storage type            "ch_type" */
  int ISIZE;        /* size                    "ch_size" */
  int ISER;         /* unit series             "ch_iser" */
  int ID;           /* channel identifier      "ch_id"   */
  int IMER;         /* merge code              "ch_imer" */
  int IUSE;         /* use flag, 1 by default; written as "ch_use", shown in the grid */
  int IX1, IX2;     /* two further integers for the caller's own use; not stored */
  int JCOL;         /* column number           "ch_jcol" */
  float R1, R2;     /* real parameters         "ch_r1", "ch_r2" */
  char UNIT[16];    /* "ch_unit"  */
  char SPEC[20];    /* "ch_spec"  */
  char TOOL[20];    /* "ch_tool"  */
  char GROUP[20];   /* "ch_group" */
  char NAME[40];    /* "ch_name"  */
  char SOUR[64];    /* "ch_sour"  */
  char DESC[260];   /* "ch_desc"  */
} DS_CHANDEF;

/* Axis defaults of a channel's plot: an integer (null), two integers (1 and 2),
 * four reals (null) and a 40-character title (blank). */
typedef struct DS_AXDEF {
  int IAX;
  int I1;
  int I2;
  float R[4];
  char TITLE[40];
} DS_AXDEF;

/* Every field to its default: use flag 1, other numbers null, texts blank. */
void DS_DFLTDSCHAN(DS_CHANDEF* def);
/* Defaults, then every keyed attribute the channel has, in the order
 * ch_type, ch_size, ch_id, ch_jcol, ch_imer, ch_iser, ch_r1, ch_r2, ch_name,
 * ch_unit, ch_tool, ch_group, ch_spec, ch_desc, ch_sour. */
void DS_GETDSCHAN(const int* handle, const int* channel, const int* position, DS_CHANDEF* def, int* status);
/* Writes the attributes back: seven integers (those read, then ch_use), the
 * two reals and the seven texts; stops at the first the store refuses. */
void DS_SETDSCHAN(const int* handle, const int* channel, const int* position, const DS_CHANDEF* def,
                  int* status);
/* Declares the channel attributes beyond the core ones: ch_tool, ch_group,
 * ch_spec (20), ch_desc (260), ch_sour (64), ch_imer, ch_iser, ch_use, the
 * reals ch_r1, ch_r2, and the block's column count bl_ncol (channel 0). */
void DS_DEFDSCHAN(const int* handle, int* status);
void DS_AXDFLT(DS_AXDEF* axis);

/* The channel-definition grid: a dataset with a part "Attributes" (one record:
 * the block's column count) and a part "Chans" (one record per channel) whose
 * columns are headed "Use", "Name", "Type", "Size", "ISER", "ID", "Unit",
 * "Spec", "Tool", "Desc" and "Merge". DS_DSCHANDEF makes the grid for channels
 * 1..nchan of a block and fills it; DS_GETDSCHANDEF refills an existing grid;
 * DS_SETDSCHANDEF writes an edited grid back to the channels. */
void DS_DSCHANDEF(const int* handle, const int* nchan, const int* position, int* grid, int* status);
void DS_GETDSCHANDEF(const int* handle, const int* nchan, const int* position, const int* grid, int* status);
void DS_SETDSCHANDEF(const int* grid, const int* handle, const int* position, int* status);

#ifdef __cplusplus
}
#endif

#endif
