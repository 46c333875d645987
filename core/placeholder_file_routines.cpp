// PLACEHOLDERS, to be deleted when the session-file routines are written:
// the template library reader called by COR_INIT and the user-settings reader
// called by SLABCUT_INIT. Until then both report "not read" (status 1), so the
// session starts with the default template and no user settings.
#include "subsurf/core.h"

extern "C" {

void COR_READRECTANGLES(const char* /*file*/, int* status) { *status = 1; }

void COR_USERRE(int* status) { *status = 1; }

}  // extern "C"
