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

/* Keyed attributes of a dataset's channels (keys 16 characters, any letter
 * case). A key is declared with a kind (1 integer, 2 real, 3 text of width
 * characters); "ch_type", "ch_size", "ch_id", "ch_jcol", "ch_name" (40) and
 * "ch_unit" (16) are declared in every dataset. Values are held per channel
 * (from 1; 0 = the block itself) and block position (from 1). Status: 0 done,
 * 1 no value stored (reading; the value is left as it was), 2 key not declared,
 * 3 key of another kind, 4 channel below 0 or position below 1, 5 no such dataset. */
void DS_DEFKEY(const int* handle, const char* key, const int* kind, const int* width, int* status);
void DS_SETKEYI(const int* handle, const int* channel, const int* position, const char* key, const int* value,
                int* status);
void DS_SETKEYR(const int* handle, const int* channel, const int* position, const char* key, const float* value,
                int* status);
void DS_SETKEYC(const int* handle, const int* channel, const int* position, const char* key, const char* text,
                const int* width, int* status);
void DS_GETKEYI(const int* handle, const int* channel, const int* position, const char* key, int* value,
                int* status);
void DS_GETKEYR(const int* handle, const int* channel, const int* position, const char* key, float* value,
                int* status);
void DS_GETKEYC(const int* handle, const int* channel, const int* position, const char* key, char* text,
                const int* width, int* status);

#ifdef __cplusplus
}
#endif

#endif
