/* Colour maps: classes of a colour axis with their palette colours (see
 * plot/colour_map.h for the class rules, the attributes and the file).
 *
 * Maps are handed out as opaque pointers (ZW_CM*): ZW_CMINIT makes one with
 * its defaults and ZW_CMDEL frees it and sets the pointer null. Text fields
 * are blank-padded: attribute names 16 characters, attribute values 20, file
 * names 260. Status words: 0 done, 1 not done (the reason shown through the
 * host's message routine).
 */
#ifndef SUBSURF_PLOT_COLOUR_MAP_H
#define SUBSURF_PLOT_COLOUR_MAP_H

#ifdef __cplusplus
namespace subsurf {
struct ColourMap;
}
typedef subsurf::ColourMap ZW_CM;
extern "C" {
#else
typedef struct ZW_CM ZW_CM;
#endif

void ZW_CMINIT(ZW_CM** map);
/* Back to the defaults: five classes over 0..1 with the default colours. */
void ZW_CMDFLT(ZW_CM** map);
void ZW_CMDEL(ZW_CM** map);
/* Sizes the map for n classes (1..256). */
void ZW_CMALLOC(ZW_CM** map, const int* n, int* status);
/* The default colours for the class count 1..9; other counts change nothing. */
void ZW_CMSETCOLS(ZW_CM** map);
/* Divides cm_min..cm_max into the classes (equal widths, or of the logarithm). */
void ZW_CMRANGES(ZW_CM** map, int* status);
/* The class (1..n; 0 below, n + 1 above, -1 null) and colour of a value. */
void ZW_CMSET(ZW_CM** map, const float* value, int* klass, int* colour);
int IZW_CMGET(ZW_CM** map, const float* value);
/* Copies FROM over TO (made when *to is null). */
void ZW_CMCOPY(ZW_CM** from, ZW_CM** to, int* status);
void ZW_CMCHECK(ZW_CM** map, int* status);
/* The colours of the classes, class 1 first: up to *capacity, *n the count. */
void ZW_CMGETCOLS(ZW_CM** map, int* colours, const int* capacity, int* n);
void ZW_CMGETATTS(ZW_CM** map, const char* name, char* value, int* status);
void ZW_CMSETATTS(ZW_CM** map, const char* name, const char* value, int* status);
void ZW_CMWRITE(ZW_CM** map, const char* file, int* status);
void ZW_CMREAD(ZW_CM** map, const char* file, int* status);

/* The editor's trigger after attribute NAME (16 characters) changed: "cm_nr"
 * gives the classes the default colours and divides the range again; "cm_min",
 * "cm_max" and "cm_ifsc" divide the range again; other known names need
 * nothing; an unknown name gives status 1. */
void ZW_CMTRIGS(ZW_CM** map, const char* name, int* status);
/* Edits the map through the host's yes/no questions (see docs/colour-maps.md).
 * Status 0 when the map was changed, 1 when the user declined or it failed. */
void ZW_CMEDIT(ZW_CM** map, int* status);
/* Gives the current plot the colour bar of MAP (titled by the current set's
 * colour-axis label and unit) and draws the bar beside the data area in the
 * plot's window. The bar takes its room from the data area: draw the whole
 * plot again to lay the points out beside it. Status 1 without a current plot,
 * set or window, or with a map that fails ZW_CMCHECK. */
void ZW_CMDRAW(ZW_CM** map, int* status);
/* Draws a histogram of the current set's colour-axis values by the classes of
 * MAP, each bar in its class colour, into the current plot's window. */
void ZW_CMHIST(ZW_CM** map, int* status);

#ifdef __cplusplus
}
#endif

#endif
