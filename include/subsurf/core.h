/* Slabber, the core-tray splitter: the core session, depths and geometry.
 *
 * The routines work on one process-wide core session. Images and rectangles
 * are handed out as opaque pointers, valid until the record is deleted or the
 * session closed. Every argument is passed by pointer; status words are 0 for
 * done and 1 for not found / not done (other values as each routine says).
 * Text arguments are blank-padded fields of the width given with them (names
 * of files 260 characters). Messages and questions go through the host
 * (AW_MESS, AW_MESSAGE). Nothing here throws.
 */
#ifndef SUBSURF_CORE_H
#define SUBSURF_CORE_H

#ifdef __cplusplus
extern "C" {
#endif

typedef struct CoreImage CoreImage;
typedef struct CoreRectangle CoreRectangle;

/* Start and end. SLABCUT_INIT loads the data dictionary "coredsdefs" from
 * "deflib:" (status 1 and "Cannot proceeed - no data dictionary!" when it
 * cannot), then calls COR_INIT and COR_USERRE. COR_CLOSE deletes every image. */
void SLABCUT_INIT(int* status);
void COR_INIT(int* status);
void COR_CLOSE(int* status);

/* Images. Places count from 0 at the list root (1 = first image). */
void COR_IMNEW(CoreImage** image);
void COR_IMINIT(CoreImage** image);
void COR_IMDFLT(CoreImage** image);
void COR_IMSEQSET(const int* place, int* status);
void COR_IMIDSET(const int* id, int* status);
void COR_IMSEQDEL(const int* place, int* status);
void COR_IMIDDEL(const int* id, int* status);
void COR_IMNUM(int* count);
void COR_IMGETCINDEX(int* index, int* status);
void COR_IMORDER(const int* ids, const int* count, int* status);
void COR_IMSETRCHU(CoreImage** image);
/* The current image (null when none; the root when place 0 was selected)
 * and its id (-1 when none). */
void COR_IMCURRENT(CoreImage** image, int* id);
int I_COR_IMID(CoreImage** image);

/* Rectangles. Places count from 1 within an image. */
void COR_PONEW(CoreImage** image, CoreRectangle** rectangle, int* id);
void COR_POINIT(CoreRectangle** rectangle);
void COR_PODFLT(CoreRectangle** rectangle);
void COR_POSEQSET(CoreImage** image, const int* place, int* status);
void COR_POIDSET(CoreImage** image, const int* id, int* status);
/* Deletes from the working list; place 0 is its root, which is kept (status 1). */
void COR_POSEQDEL(const int* place, int* status);
void COR_POIDDEL(CoreImage** image, const int* id, int* status);
void COR_PONUM(CoreImage** image, int* count);
void COR_PONUMSEL(int* count);
void COR_POCOPY(CoreRectangle** from, CoreRectangle** to);
void COR_POSETNV(CoreRectangle** rectangle, const int* n);
void COR_POSETXV(CoreRectangle** rectangle, const float* wx, const float* wy, const int* vertex);
void COR_POADDVERT(CoreRectangle** rectangle, const int* px, const int* py, const int* after);
void COR_POSHAREDCOORDS(const int* vertex, int* first, int* second);
/* Drags a corner (pixel coordinates); status 1 when not a four-cornered rectangle. */
void COR_POMOVECORNER(CoreRectangle** rectangle, const int* vertex, const int* px, const int* py,
                      int* status);
/* The current rectangle (null when none) and its id (-1 when none). */
void COR_POCURRENT(CoreRectangle** rectangle, int* id);

/* Selection stack (0 saves, anything else restores), task flags, views. */
void COR_RECALLCSET(const int* direction);
void COR_SETCORETASK(const int* flags, const int* count);
void COR_DFLTVIEW(CoreImage** image, const int* view);
void COR_SETVIEWNUM(const int* view);
void COR_GETVIEWNUM(int* view);
/* Sets view `view` (1..10) of the image: visible pixel range and scales. */
void COR_SETVIEW(CoreImage** image, const int* view, const int* x1, const int* x2, const int* y1,
                 const int* y2, const float* xscale, const float* yscale, int* status);
void MAP_SETWINSIZE(const int* width, const int* height);

/* The rectangle template in use: defaults and a copy of it kept aside
 * (direction 0 stores the current template, else brings the stored one back). */
void COR_RHDFLT(void);
void COR_RHCOPY(const int* direction);

/* Depths. COR_PARSEDEPTHS reads the tray interval from a file name (length
 * characters) into image-table record `record` of dataset `table` (columns 4
 * top, 5 base, 30 base minus top): status 0 read, 1 no interval in the name,
 * other values the read failures. COR_SETDEPTHS carries the current image's
 * depths forward over the following trays of the same light kind (the "OK"
 * of the set-depths dialog); window and event are ignored. */
void COR_PARSEDEPTHS(const char* name, const int* table, const int* record, int* status,
                     const int* length);
void COR_SETDEPTHS(const int* window, const int* event, const int* table);
/* Top or base of the image at `place` typed into the image grid (column 4 or
 * 5), with the row-count rule; status 0 when "Core Number" was set. */
void COR_EDITDEPTH(const int* place, const int* column, const float* value, const int* table,
                   int* status);
/* Handle of the image table made by SLABCUT_INIT (0 when none). */
void COR_IMAGETABLE(int* table);

/* Photo-view coordinates. World coordinates are pixel coordinates times the
 * current view's scales; window coordinates are photo-window pixels. */
float R_MAP_VRATX(void);
float R_MAP_VRATY(void);
void MAP_WTOVRCOORDS(const float* wx, const float* wy, float* vx, float* vy);
void MAP_WTOVCOORDS(const float* wx, const float* wy, float* vx, float* vy);
void MAP_VTOWRCOORDS(const float* vx, const float* vy, float* wx, float* wy);
int I_MAP_POINTINWIN(const float* wx, const float* wy);
int I_MAP_IPOINTINWIN(const int* px, const int* py);
int I_MAP_ISLEFT(const float* ax, const float* ay, const float* bx, const float* by, const float* px,
                 const float* py);
/* Clips the segment (world coordinates, in place) to the visible part;
 * visible 1 when some of it is visible, else 0 (ends unchanged). */
void MAP_WTOVLINE(float* ax, float* ay, float* bx, float* by, int* visible);
/* The outline in window coordinates: up to capacity points into vx, vy;
 * count = points produced (more than capacity means the list was cut). */
void COR_POTOVIEW(CoreRectangle** rectangle, float* vx, float* vy, const int* capacity, int* count);
/* within = 1 when the world point lies inside the outline or on its edge. */
void COR_POPTWITHIN(CoreRectangle** rectangle, const float* wx, const float* wy, int* within);

/* File routines of the session (session files, templates, user settings). */
void COR_READRECTANGLES(const char* file, int* status);
void COR_USERRE(int* status);

#ifdef __cplusplus
}
#endif

#endif
