// Writing an image file so that it appears complete or not at all.
//
// A row image or preview goes through SafeFile (see host/safe_file.h): it is
// written under a hidden temporary name in the target's own folder and put in
// place only when every byte has been written and the file closed; a failed
// or abandoned write leaves nothing behind, and an older file of that name
// stays whole until then. Images can be cut again from their photographs, so
// they are not pushed to disk one by one, and as their writers seek, only a
// regular file (or a new one) may be the target.
//
// An image replaces only an image: a file already at the target whose first
// bytes are not those of the format its suffix names (a spreadsheet saved as
// "row.bmp", a photograph's only copy under a row's name) is left alone and
// open() fails.
#pragma once

#include <string>

#include "host/safe_file.h"

namespace subsurf::image {

class AtomicOutput : public SafeFile {
 public:
  explicit AtomicOutput(std::string target)
      : SafeFile(std::move(target), Durability::Unflushed, SpecialTargets::Refuse) {}

  // Checks what is at the target, then creates the temporary file. The
  // reason on failure names no file.
  Status open();
};

// Fails when path holds a non-empty file that is not an image of the format
// its suffix names. A missing file, or a name without an image suffix, passes.
Status checkImageReplaceable(const std::string& path);

// Reason text for an errno value, e.g. "Permission denied".
std::string errnoText(int error);

}  // namespace subsurf::image
