/* Plotting: the plot tree, plot sets and their elements, and plot files.
 *
 * Every graph is one plot record (ZW_ZP) in a single process-wide tree whose
 * root exists from ZW_ZPINIT on. A plot owns one or more plot sets; a set owns
 * its lines, symbols and text items, its data and its five scale records; the
 * plot itself owns bitmaps, an annotation block, a layout block and a legend.
 *
 * Every argument is passed by pointer. Plots are handed out as opaque pointers
 * (ZW_ZP*); routines that take a plot take a ZW_ZP** whose target may be null
 * where a routine says "no plot". Text fields are blank-padded and need not be
 * NUL-terminated. Status words: 0 done, 1 not found or not done.
 *
 * The element routines (ZW_SYMB..., ZW_TEXT..., ZW_LINE...) act on the current
 * plot set of the current plot; the bitmap and legend routines on the current
 * plot. Elements are addressed by place, counted from 1; a new element gets the
 * id one above the largest id of its list.
 */
#ifndef SUBSURF_PLOT_H
#define SUBSURF_PLOT_H

#include "subsurf/units.h"

#ifdef __cplusplus
namespace subsurf {
struct PlotRecord;
}
typedef subsurf::PlotRecord ZW_ZP;
extern "C" {
#else
typedef struct ZW_ZP ZW_ZP;
#endif

/* Axes of a plot set, as used by the scale and data routines. */
enum { ZW_AXIS_X = 1, ZW_AXIS_Y = 2, ZW_AXIS_Z = 3, ZW_AXIS_C = 4, ZW_AXIS_D = 5 };

/* Scale record: how values map onto an axis and how its limits are found.
 * TYPE 1 "Linear", 2 "Log", 3 "Square", 4 "Sqrt", 5 "Recip.", 6 "Norm",
 * 7 "Stan", 8 "Prob"; MODE 1 "Manual", 2 "Auto", 3 "Auto-rnd", 4 "P99-P1",
 * 5 "P95-P5", 6 "P90-P10". UNIT blank = the data's own unit. */
typedef struct ZW_SCALE {
  int TYPE;
  int MODE;
  float MIN;
  float MAX;
  char UNIT[16];
} ZW_SCALE;

/* A symbol: a marker at a data position. */
typedef struct ZW_SYMB {
  int ID;
  float X, Y;
  int STYLE;   /* marker shape, 1 circle .. see docs/plots.md */
  int COLOUR;  /* palette index */
  float SIZE;  /* millimetres */
  int FILL;    /* 1 filled, 0 outline */
  int FIXED;   /* 1 once fixed inside the axes (ZW_SYMBFIX) */
  char LABEL[40];
} ZW_SYMB;

/* A text item at a data position. */
typedef struct ZW_TEXT {
  int ID;
  float X, Y;
  float HEIGHT;  /* millimetres */
  float ANGLE;   /* degrees, anticlockwise */
  int COLOUR;
  int ALIGN;     /* 1 left, 2 centre, 3 right */
  int FIXED;
  char TEXT[80];
} ZW_TEXT;

/* A polyline (its points are kept by the library: ZW_LINEDEF, ZW_LINEGETPTS). */
typedef struct ZW_LINE {
  int ID;
  int STYLE;   /* 0 none, 1 solid, 2 dashed, 3 dotted, 4 dash-dot */
  int COLOUR;
  float WIDTH; /* millimetres */
  int SYMBOL;  /* marker drawn at each point, 0 none */
  int CLOSED;  /* 1 for a closed outline (boxes) */
  int FIXED;
  int NPTS;    /* read only: the number of points */
  char NAME[40];
} ZW_LINE;

/* A bitmap placed in the plot (data coordinates of two corners). */
typedef struct ZW_ZBM {
  int ID;
  int SEQ;  /* drawing order key, ZW_ZBMSEQSET selects by it */
  float X1, Y1, X2, Y2;
  char FILE[260];
} ZW_ZBM;

/* A legend row. KIND 1 text, 2 line, 3 shading, 4 symbol, 5 point, 6 plot set. */
typedef struct ZW_LEG {
  int ID;
  int KIND;
  int COLOUR;
  int STYLE;
  float SIZE;
  char TEXT[40];
} ZW_LEG;

/* ---- The tree --------------------------------------------------------- */

/* (Re)initialises the module: one root with one plot set; the root becomes the
 * current plot. Any earlier tree is freed. */
void ZW_ZPINIT(void);
/* The root, the current plot, and making a plot current (its current set too). */
void ZW_ZPROOT(ZW_ZP** root);
void ZW_ZPCURRENT(ZW_ZP** plot);
void ZW_ZPMAKECURRENT(ZW_ZP** plot);
/* Adds a child to the root, or to parent; child receives the new plot and seq
 * its sequence (the last sibling's + 1). The new plot becomes current. */
void ZW_ZPADD(ZW_ZP** child, int* seq);
void ZW_ZPADDKID(ZW_ZP** parent, ZW_ZP** child, int* seq);
/* One step of the depth-first walk from *plot (null = from before the root);
 * *plot receives the next plot (null at the end), code 0, 1, -1 or -3. */
void ZW_ZPNEXT(ZW_ZP** plot, int* code);
/* The nearest ancestor's next sibling, or null. */
void ZW_ZPNEXTUP(ZW_ZP** plot);
/* Makes current the first plot after *plot (after the root when null) whose
 * window id is window; *plot receives it. status 0 found, 1 not. */
void ZW_ZPSETBYWINDOW(ZW_ZP** plot, const int* window, int* status);
/* The child of *plot with sequence seq (made current child). status 1 when none. */
void ZW_ZPSETBYLEVSEQ(ZW_ZP** plot, const int* seq, ZW_ZP** kid, int* status);
void ZW_ZPNKID(ZW_ZP** plot, int* n);
/* The child at place n (1..count), not made current; null and status 1 when none. */
void ZW_ZPGETIKID(ZW_ZP** plot, const int* n, ZW_ZP** kid, int* status);
/* As ZW_ZPSETBYLEVSEQ, and the child becomes the current plot. */
void ZW_ZPSETKIDBYSEQ(ZW_ZP** plot, const int* seq, ZW_ZP** kid, int* status);
/* 1 when the plot has a parent and shows the parent's window, else 0. */
void ZW_INFANTILE(ZW_ZP** plot, int* infantile);
void ZW_ZPCHECKWIN(ZW_ZP** plot);
/* Unlinks the plot (with its children) from the tree; it stays allocated until
 * ZW_ZPDEL or ZW_ZPDELMEM. The root cannot be removed (status 1). */
void ZW_ZPREMOVE(ZW_ZP** plot, int* status);
/* Deletes a plot and its children (the root is reset instead); *plot := null. */
void ZW_ZPDEL(ZW_ZP** plot);
void ZW_ZPDELKIDS(ZW_ZP** plot);
void ZW_ZPDELBITS(ZW_ZP** plot);
/* Frees every plot but the root, and removed plots. */
void ZW_ZPDELMEM(void);
void ZW_ZPRESET(ZW_ZP** plot);
void ZW_ZPREINIT(ZW_ZP** plot);
/* Identity fields of a plot and the window id. */
typedef struct ZW_ZPINFO {
  int SEQ, WINDOW, INHERIT, LEVEL, CURSET, OWNWIN, INDEX1, INDEX2;
} ZW_ZPINFO;
void ZW_ZPGETINFO(ZW_ZP** plot, ZW_ZPINFO* info);
void ZW_ZPSETWINDOW(ZW_ZP** plot, const int* window, const int* ownwin);
/* Plot title, source and description texts (80 characters each). */
void ZW_ZPSETTITLE(ZW_ZP** plot, const char* title);
void ZW_ZPGETTITLE(ZW_ZP** plot, char* title);

/* ---- Points over all sets -------------------------------------------- */
void ZW_ZPNPTS(ZW_ZP** plot, int* n);
/* Points per set into counts (capacity entries); nsets := number of sets. */
void ZW_ZPCOUNTSPTS(ZW_ZP** plot, int* counts, const int* capacity, int* nsets);
/* Every set's x values, in set order (capacity values at most); n := total. */
void ZW_ZPGETALLXV(ZW_ZP** plot, float* values, const int* capacity, int* n);
/* The same for one axis (ZW_AXIS_...). */
void ZW_ZPGETALLRVEC(ZW_ZP** plot, const int* axis, float* values, const int* capacity, int* n);

/* ---- Plot sets -------------------------------------------------------- */
/* Appends a set to the current plot and makes it current. status 1 and
 * "Memory error allocating ZPS..." when it cannot be allocated. */
void ZW_ZPSADD(int* status);
/* Makes set n of *plot current (the last set when n is beyond it, or < 1). */
void ZW_ZPSSET(ZW_ZP** plot, const int* n, int* status);
void ZW_ZPNDS(ZW_ZP** plot, int* n);
/* Deletes the current set of the current plot (a plot keeps at least one). */
void ZW_ZPSDEL(int* status);
/* Empties the current set: its elements and data (its definitions stay). */
void ZW_ZPDELZPS(void);
/* Appends a copy of the current set (elements, data and definitions). */
void ZW_ZPSCOPY(int* status);
/* Copies the definitions of set from into set to of the current plot. */
void ZW_ZPSCOPYDEF(const int* from, const int* to, int* status);
/* Copies the definitions of set n into every other set of the current plot. */
void ZW_ZPSCOPYDEFS(const int* n, int* status);
/* Moves the current set to the first place. */
void ZW_ZPSPROMOTE(void);
/* The current set's name (40) and data. */
void ZW_ZPSSETNAME(const char* name);
void ZW_ZPSGETNAME(char* name);
/* Replaces the values of one axis of the current set (n values). */
void ZW_ZPSSETDATA(const int* axis, const int* n, const float* values, int* status);
void ZW_ZPSGETSCALE(const int* axis, ZW_SCALE* scale, int* status);
void ZW_ZPSSETSCALE(const int* axis, const ZW_SCALE* scale, int* status);

/* ---- Element families (symbols shown; text and lines alike) ----------- */
/* Count; add (appended, defaulted, current); select place n (status 1 and the
 * current one kept when n is not a place); default a record; copy the current
 * element to the end of set toSet of the current plot (0 = the same set);
 * delete the current one (the one before it becomes current) or all; define
 * (the current element takes the record's fields, keeping its id); get the
 * current element; nearest element to (x, y) in data units, place and distance;
 * move the current element by (dx, dy) unless fixed; fix it inside the x and y
 * limits of its set and mark it fixed. */
void ZW_SYMBNSYM(int* n);
void ZW_SYMBADD(int* status);
void ZW_SYMBSET(const int* n, int* status);
void ZW_SYMBDFLT(ZW_SYMB* rec);
void ZW_SYMBCOPY(const int* toSet, int* status);
void ZW_SYMBDEL(int* status);
void ZW_SYMBDELALL(void);
void ZW_SYMBDEF(const ZW_SYMB* rec, int* status);
void ZW_SYMBGET(ZW_SYMB* rec, int* status);
void ZW_SYMBNEAREST(const float* x, const float* y, int* place, float* distance);
void ZW_SYMBMOVE(const float* dx, const float* dy, int* status);
void ZW_SYMBFIX(int* status);

void ZW_TEXTNTXT(int* n);
void ZW_TEXTADD(int* status);
void ZW_TEXTSET(const int* n, int* status);
void ZW_TEXTDFLT(ZW_TEXT* rec);
void ZW_TEXTCOPY(const int* toSet, int* status);
void ZW_TEXTDEL(int* status);
void ZW_TEXTDELALL(void);
void ZW_TEXTDEF(const ZW_TEXT* rec, int* status);
void ZW_TEXTGET(ZW_TEXT* rec, int* status);
void ZW_TEXTNEAREST(const float* x, const float* y, int* place, float* distance);
void ZW_TEXTMOVE(const float* dx, const float* dy, int* status);
void ZW_TEXTFIX(int* status);

void ZW_LINENLIN(int* n);
void ZW_LINEADD(int* status);
void ZW_LINESET(const int* n, int* status);
void ZW_LINEDFLT(ZW_LINE* rec);
void ZW_LINECOPY(const int* toSet, int* status);
void ZW_LINEDEL(int* status);
void ZW_LINEDELALL(void);
/* Deletes the lines of every set of *plot; of the current set. */
void ZW_LINEDELZP(ZW_ZP** plot);
void ZW_LINEDELZPS(void);
/* Attributes of the current line from rec (NPTS is ignored). */
void ZW_LINEDEF(const ZW_LINE* rec, int* status);
/* Points of the current line: n points; a segment; a box (closed, 5 points). */
void ZW_LINEDEFPTS(const int* n, const float* x, const float* y, int* status);
void ZW_LINEDEF1(const float* x1, const float* y1, const float* x2, const float* y2, int* status);
void ZW_BOXDEF(const float* x1, const float* y1, const float* x2, const float* y2, int* status);
void ZW_LINEGET(ZW_LINE* rec, int* status);
/* Up to capacity points of the current line; n := its point count. */
void ZW_LINEGETPTS(float* x, float* y, const int* capacity, int* n);
/* Nearest line: the smallest distance from (x, y) to any of its segments. */
void ZW_LINENEAREST(const float* x, const float* y, int* place, float* distance);
void ZW_LINEMOVE(const float* dx, const float* dy, int* status);
void ZW_LINEFIX(int* status);
/* The current line's points transformed: x := a x + b, y := c y + d
 * (ZW_LINETRX changes x alone). */
void ZW_LINETR(const float* a, const float* b, const float* c, const float* d, int* status);
void ZW_LINETRX(const float* a, const float* b, int* status);
/* The current line cut to the x and y limits of its set: parts outside go,
 * crossing segments end on the edge, separated pieces are kept apart by a
 * null point. */
void ZW_LINECLIP(int* status);

/* More ways to give the current line its points (status 1 when there is no
 * current line, or the set's window lacks a limit the shape needs):
 * LINEDEF2 a level line at y across the set's x window; LINEDEF3 an upright
 * line at x across its y window; LINEDEF4 the line y = a + b x across the x
 * window; LINEDEF5 the line through two distinct points, extended both ways and
 * cut to the window; LINEDEFCURVED a smooth curve through n points (a
 * Catmull-Rom spline, steps points per span, 1..100; no point may be null);
 * BOXDEF1 a closed box of half-width hw and half-height hh about (xc, yc);
 * BOXDEF2 a closed box on the set's window. */
void ZW_LINEDEF2(const float* y, int* status);
void ZW_LINEDEF3(const float* x, int* status);
void ZW_LINEDEF4(const float* a, const float* b, int* status);
void ZW_LINEDEF5(const float* x1, const float* y1, const float* x2, const float* y2, int* status);
void ZW_LINEDEFCURVED(const int* n, const float* x, const float* y, const int* steps, int* status);
void ZW_BOXDEF1(const float* xc, const float* yc, const float* hw, const float* hh, int* status);
void ZW_BOXDEF2(int* status);
/* Lines made from data: LINEMAKE adds a line joining the current set's data
 * points in order (null values break it); LINEMAKE1 adds one with n points. */
void ZW_LINEMAKE(int* status);
void ZW_LINEMAKE1(const int* n, const float* x, const float* y, int* status);
/* The current line's points to and from vectors. To: each vector's N is its
 * capacity on entry and its count on return; status 1 when the line has more
 * points than fit (the first ones are copied). From: both vectors must hold the
 * same number of values. Units are not touched. */
void ZW_LINECOPYTOGVEC(DT_RVEC* x, DT_RVEC* y, int* status);
void ZW_LINECOPYFROMGVEC(const DT_RVEC* x, const DT_RVEC* y, int* status);
/* The current line as the "line" record of a plot file (docs/file-formats.md),
 * blank-padded into text of capacity characters, length := its length; status 1
 * without a current line or when it does not fit. ZW_LINEREAD adds a line to
 * the current set from such a record of length characters (it gets a new id);
 * a record that is not one is reported in a message, nothing added. */
void ZW_LINEWRITE(char* text, const int* capacity, int* length, int* status);
void ZW_LINEREAD(const char* text, const int* length, int* status);

/* ---- Bitmaps of the current plot -------------------------------------- */
void ZW_ZBMNBM(int* n);
void ZW_ZBMADD(int* status);
void ZW_ZBMSET(const int* n, int* status);
/* Selects the bitmap whose SEQ is seq. */
void ZW_ZBMSEQSET(const int* seq, int* status);
void ZW_ZBMDFLT(ZW_ZBM* rec);
void ZW_ZBMDEL(int* status);
/* Deletes every bitmap of *plot. */
void ZW_ZBMDELZP(ZW_ZP** plot);
void ZW_ZBMDEF(const ZW_ZBM* rec, int* status);
void ZW_ZBMGET(ZW_ZBM* rec, int* status);

/* ---- Legend of the current plot --------------------------------------- */
/* Rows with their text (40): plain text; text with a kind given; a row for
 * the current set (its name, line and symbol colours); a line, a shading, a
 * symbol and a point row. */
void ZW_LEGADD(const char* text, int* status);
void ZW_LEGADDF(const char* text, const int* kind, const int* colour, const int* style, int* status);
void ZW_LEGADDZPS(int* status);
void ZW_LEGADDLINE(const char* text, const int* colour, const int* style, const float* width, int* status);
void ZW_LEGADDSHAD(const char* text, const int* colour, const int* pattern, int* status);
void ZW_LEGADDSYMB(const char* text, const int* colour, const int* symbol, const float* size, int* status);
void ZW_LEGADDPT(const char* text, const int* colour, const int* symbol, int* status);
/* Row n; every row (capacity at most, n := row count); 1 when there are rows. */
void ZW_LEGGET(const int* n, ZW_LEG* row, int* status);
void ZW_LEGGETALL(ZW_LEG* rows, const int* capacity, int* n);
void ZW_LEGIS(int* is);
/* Empties the legend and puts it back in its default place. */
void ZW_LEGDFLT(void);
void ZW_LEGDEL(void);
/* Legend position as fractions of the plot area (0..1 each, clamped). */
void ZW_LEGPOSITION(const float* fx, const float* fy);

/* ---- Defaults of the blocks ------------------------------------------- */
/* The current set's fields back to their defaults (its elements and data stay). */
void ZW_ZPSDFLT(void);
/* The plot's own settings (title, colours, grid, options) back to defaults. */
void ZW_ZPDFLT(ZW_ZP** plot);
/* The annotation block of *plot back to its defaults ("@user" top left,
 * "@date" top right); ZW_ANNINIT is the same. */
void ZW_ANNDFLT(ZW_ZP** plot);
void ZW_ANNINIT(ZW_ZP** plot);
/* The layout block of *plot back to its defaults (A4 landscape, margins). */
void ZW_LAYDFLT(ZW_ZP** plot);

/* ---- Drawing ---------------------------------------------------------- */
/* Draws *plot (null = the current plot) to file (260 characters; the kind
 * from its extension .svg, .png or .pdf) on the layout's page, PNG at dpi dots
 * per inch. status 1 with a message naming the file when it cannot. */
void ZW_ZPDRAW(ZW_ZP** plot, const char* file, const float* dpi, int* status);

/* Pieces of the current plot drawn into its window (the plot's window id; a
 * window the host has not bound is an in-memory white image the size of the
 * layout page at 96 dots per inch), each where a whole drawing of the plot
 * in that window puts it, over what the window already shows. ..DRAW draws
 * the current element of the current set, ..SDRAW every element of it.
 * status 1 when there is no current plot, set or element, or the plot has no
 * window (id 0). */
void ZW_SYMBDRAW(int* status);
void ZW_SYMBSDRAW(int* status);
void ZW_TEXTDRAW(int* status);
void ZW_TEXTSDRAW(int* status);
void ZW_LINEDRAW(int* status);
void ZW_LINESDRAW(int* status);
/* The current plot's legend (its rows, or the names of its shown sets when
 * it has none and two or more are named); status 1 when there is none. */
void ZW_LEGDRAW(int* status);
/* One axis (ZW_AXIS_X or ZW_AXIS_Y) of the current set with its ticks,
 * numbers and label, placed as ZW_SETAXP says, the page laid out as if this
 * set carried the plot's axes; status 1 for any other axis. */
void ZW_AXDRAW(const int* axis, int* status);
/* 1 when the point (x, y), in pixels of the current plot's window from its
 * top-left corner, lies over the legend box (edges included); 0 otherwise,
 * also when there is no plot, window or legend. */
int IZW_LEGOVER(const float* x, const float* y);

/* ---- Plot files ------------------------------------------------------- */
/* Writes *plot (null = the current plot) to file (260 characters, logical
 * prefixes allowed); the file is replaced only when complete. */
void ZW_ZPWRITE(ZW_ZP** plot, const char* file, int* status);
/* Reads a plot file into *plot (null = the current plot), replacing its
 * contents but not its place in the tree. A damaged file is reported with its
 * line and leaves the plot as it was. */
void ZW_ZPREAD(ZW_ZP** plot, const char* file, int* status);
/* As ZW_ZPWRITE and ZW_ZPREAD for callers without a screen: a fault is put
 * into message (200, blank-padded; blank when done) instead of a message box. */
void ZW_ZPWRITEDO(ZW_ZP** plot, const char* file, char* message, int* status);
void ZW_ZPREADDO(ZW_ZP** plot, const char* file, char* message, int* status);

/* ---- Axes and scaling -------------------------------------------------- */
/* Sets the scale's limits from n values by its range mode (type and mode are
 * clamped first; see docs/plots.md for every rule). */
void ZW_AXLIMS(const int* n, const float* values, ZW_SCALE* scale);
/* The same for a vector with a unit, converted first into the scale's UNIT
 * when both are known and differ; an empty vector gives 0..1 (log: 0.1..10). */
void ZW_RVAXLIMS(const DT_RVEC* vector, ZW_SCALE* scale);
/* Tidies a scale after an edit: type and mode clamped, limits that a log axis
 * cannot show replaced by its fallback, equal limits widened to their decade. */
void ZW_AXADJUST(ZW_SCALE* scale);
/* n replaced by a 1-2-5 step. */
void ZW_125(int* n);
/* Placement of an axis (ZW_AXIS_...) of the current set: 0 hidden, 1 low
 * side, 2 high side, 3 both. */
void ZW_SETAXP(const int* axis, const int* placement, int* status);
void ZW_GETAXP(const int* axis, int* placement);
/* Label and number heights of the current set from the plot's page size. */
void ZW_SETAXSIZES(void);
/* Axis labels of the current set (40): set; the label with its unit appended
 * as "label (unit)" when the plot shows units; ZW_AXSETLABM sets every set's. */
void ZW_AXSETLAB(const int* axis, const char* label, int* status);
void ZW_AXSETLABM(const int* axis, const char* label, int* status);
void ZW_AXLABL(const int* axis, char* label);
/* Value to axis fraction (0 at MIN, 1 at MAX) and back; a value the scale
 * cannot show gives the real null. ZW_AXNPOS uses the current set's scale. */
void ZW_NPOS(const ZW_SCALE* scale, const float* value, float* fraction);
void ZW_WPOS(const ZW_SCALE* scale, const float* fraction, float* value);
void ZW_VECNPOS(const ZW_SCALE* scale, const int* n, const float* values, float* fractions);
void ZW_AXNPOS(const int* axis, const float* value, float* fraction);
/* Gives every set of the current plot the x and y limits that hold all of
 * them, and marks the plot as sharing one scale. */
void ZW_SAMESCALE(void);
/* Makes the "(unit)" at the end of the current set's axis label name the
 * scale's unit; status 1 when it had to be changed. */
void ZW_CHECKLABUNIT(const int* axis, int* status);
/* The texts of the dialogs: range modes then scale types, 8 characters each
 * (112); month abbreviations (3); probability-axis labels (2, index 0..12). */
void ZW_AXNAMES(char* text);
void ZW_AXMONTH(const int* month, char* text);
void ZW_AXPROBLAB(const int* index, char* text);

#ifdef __cplusplus
}
#endif

#endif
