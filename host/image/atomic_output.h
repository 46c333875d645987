// Writing an image file so that it appears complete or not at all.
//
// A row image or preview goes through SafeFile (see host/safe_file.h): it is
// written under a hidden temporary name in the target's own folder and put in
// place only when every byte has been written and the file closed; a failed
// or abandoned write leaves nothing behind, and an older file of that name
// stays whole until then. Images can be cut again from their photographs, so
// they are not pushed to disk one by one, and as their writers seek, only a
// regular file (or a new one) may be the target.
#pragma once

#include <string>

#include "host/safe_file.h"

namespace subsurf::image {

class AtomicOutput : public SafeFile {
 public:
  explicit AtomicOutput(std::string target)
      : SafeFile(std::move(target), Durability::Unflushed, SpecialTargets::Refuse) {}
};

// Reason text for an errno value, e.g. "Permission denied".
std::string errnoText(int error);

}  // namespace subsurf::image
