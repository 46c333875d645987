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

/* Opaque to C; in C++ they are the engine's records (core/core_session.h). */
#ifdef __cplusplus
namespace subsurf {
struct CoreImage;
struct CoreRectangle;
}
typedef subsurf::CoreImage CoreImage;
typedef subsurf::CoreRectangle CoreRectangle;
extern "C" {
#else
typedef struct CoreImage CoreImage;
typedef struct CoreRectangle CoreRectangle;
#endif

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

/* Session, template and user-settings files. Status 0 when done, 1 when not;
 * every failure is shown, and a file that cannot be read whole changes
 * nothing.
 *
 * COR_SAVESESSION writes the session and the tool's output options to a
 * session file ("*.slbs"); COR_READSESSION replaces the session's images and
 * the output options with the file's ("No session file given!" for a blank
 * name, "This session contains no core images!" for a file without images).
 * Both remember the file's folder as the user's sessions folder.
 *
 * Rectangle templates: the template in use is "userlib:rtmplts.rctml" (read by
 * COR_INIT through COR_READRECTANGLES; a blank file name reads that one);
 * named templates are kept one per file in the folder "userlib:rtmplts".
 * COR_SAVERECTANGLES saves the template in use under a name (blank: its own
 * name; "Rectangle template must be given a name!" when it has none), as the
 * named template and as the template in use. COR_TEMPLATEDESC reads only a
 * template file's description ("Could not open template file!").
 * COR_TEMPLATENUM counts the named templates ("No templates defined" when
 * there are none), COR_TEMPLATEGET gives the k-th (from 1, sorted by name),
 * COR_TEMPLATEUSE reads a named template into the template in use.
 *
 * User settings "userlib:user": COR_USERWR writes them (the output folder
 * and option as the split options hold them), COR_USERRE reads them at start
 * (status 1 and no message when the user has none yet) and hands the output
 * folder and option to the split. COR_USERSET / COR_USERGET set and get them
 * (null arguments are left alone); output option 2 puts row images beside
 * each photograph. */
void COR_SAVESESSION(const char* file /* 260 */, int* status);
void COR_READSESSION(const char* file /* 260 */, int* status);
void COR_SAVERECTANGLES(const char* name /* 40 */, int* status);
void COR_READRECTANGLES(const char* file /* 260 */, int* status);
void COR_TEMPLATEDESC(const char* file /* 260 */, char* description /* 40 */, int* status);
void COR_TEMPLATENUM(int* count);
void COR_TEMPLATEGET(const int* place, char* name /* 40 */, char* description /* 40 */, int* status);
void COR_TEMPLATEUSE(const char* name /* 40 */, int* status);
void COR_USERWR(int* status);
void COR_USERRE(int* status);
void COR_USERSET(const char* sessionsPath /* 260 */, const char* outputPath /* 260 */, const int* outputOption,
                 const char* templateName /* 40 */);
void COR_USERGET(char* sessionsPath /* 260 */, char* outputPath /* 260 */, int* outputOption,
                 char* templateName /* 40 */);

#ifdef __cplusplus
}
#endif

#endif
