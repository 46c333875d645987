/* Splitting routines of the core-tray splitter (C interface).
 *
 * They work on the process-wide core session and the tool's output options.
 * Every argument is passed by pointer; status words are 0 for done and 1 for
 * not done. Texts are blank-padded fields of the width given (file and folder
 * names 260 characters, the root name and the unit 40 and 16).
 */
#ifndef SUBSURF_SPLIT_H
#define SUBSURF_SPLIT_H

#include "subsurf/core.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The tool's output options, as the outputs dialog and the session set them.
 * outputOption 2 writes rows beside each photograph, any other value into
 * folder. useRoot 1 names rows after root instead of the photograph. cgms 1
 * writes metafiles, else bitmaps. precision 2 gives depths three decimals in
 * names. shorten 1 cuts rows holding less than a core length to the core
 * present. doReport 1 writes the table of clipping depths, in style
 * reportStyle (1 all six columns), with depths in reportUnit (blank: as
 * stored). reduction is the photo window's display reduction factor. */
void COR_SETSPLITOPTIONS(const char* folder /* 260 */, const int* outputOption, const char* root /* 40 */,
                         const int* useRoot, const int* cgms, const int* precision, const int* shorten,
                         const int* doReport, const char* reportFile /* 260 */, const int* reportStyle,
                         const char* reportUnit /* 16 */, const float* reduction);

/* Opens the table of clipping depths (its two header lines are written);
 * lines of the images processed follow until COR_REPORTCLOSE, which writes
 * the file whole (status 1 when it cannot be written). Opening again discards
 * an unclosed table. */
void COR_REPORTOPEN(const char* file /* 260 */, int* status);
void COR_REPORTCLOSE(int* status);

/* Cuts every rectangle of one image into a row image; when a table is open
 * its lines are added. status 0 every row written, 1 the photograph could
 * not be read, otherwise the image's error count (100 for each row without
 * depths, 1 for each row that could not be cut or written). */
void COR_PROCESSROW(CoreImage** image, int* status);

/* The whole run over the session with the tool's options ("Processing
 * images..."): status 0 when every row was written, else 1. */
void COR_PROCESS(int* status);

#ifdef __cplusplus
}
#endif

#endif
