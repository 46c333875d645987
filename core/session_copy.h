// Copying a session's images into another session: what a file read hands
// over, and what the editor keeps to undo an edit.
#pragma once

#include "core/core_session.h"

namespace subsurf {

// Replaces `to`'s images with copies of `from`'s: every setting, view and
// outline, in order. The copies get new ids from 1, as new images always do,
// and their rectangles ids from 1 in list order. `to`'s current image and
// rectangle are left to the caller.
void copyImages(CoreSession& from, CoreSession& to);

}  // namespace subsurf
