/* Host datasets: small in-memory tables with named parts of numbered columns
 * and records (both from 1), addressed by an integer handle.
 *
 * Every argument is passed by pointer. Names are blank-padded fields: dataset
 * and part names 16 characters, texts of the width given. Status words: 0 done,
 * 1 no such dataset, part, record or column (getters) or a record or column
 * below 1 (setters). A cell never written reads as the real null (status 0).
 */
#ifndef SUBSURF_HOST_DATASET_H
#define SUBSURF_HOST_DATASET_H

#ifdef __cplusplus
extern "C" {
#endif

/* Makes an empty dataset; handle 0 on failure. */
void DS_NEW(const char* name, int* handle);
void DS_RELEASE(const int* handle, int* status);

void DS_SETR(const int* handle, const char* part, const int* record, const int* column,
             const float* value, int* status);
void DS_GETR(const int* handle, const char* part, const int* record, const int* column,
             float* value, int* status);
void DS_SETC(const int* handle, const char* part, const int* record, const int* column,
             const char* text, const int* width, int* status);
void DS_GETC(const int* handle, const char* part, const int* record, const int* column,
             char* text, const int* width, int* status);

void DS_GETNREC(const int* handle, const char* part, int* count, int* status);
void DS_SETNREC(const int* handle, const char* part, const int* count, int* status);

#ifdef __cplusplus
}
#endif

#endif
