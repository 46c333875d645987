// AtomicFile: write a file under a temporary name in the target's folder and
// rename it over the target only once it is complete.
//
// A session a geologist has worked on for months must never be damaged by a
// failed save (a full disk, a crash, a bad value met half way): until commit()
// succeeds the previous file is untouched, and an abandoned write leaves no
// temporary file behind.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "host/status.h"

namespace subsurf {

// A temporary name in the same folder as target (so the final rename is atomic).
std::string temporaryNameFor(const std::string& target);

// Renames temp over target; on failure removes temp and names both files.
Status replaceFile(const std::string& temp, const std::string& target);

// Writes the whole text to target through an AtomicFile.
Status writeFileAtomically(const std::string& target, std::string_view text);

class AtomicFile {
 public:
  AtomicFile() = default;
  ~AtomicFile();  // discards an uncommitted file
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  Status open(const std::string& target);
  bool isOpen() const { return file_ != nullptr; }
  void write(std::string_view text);
  void writeLine(std::string_view text);
  // Flushes, syncs and renames over the target. Any earlier write error fails it.
  Status commit();
  // Throws the temporary file away, leaving the target as it was.
  void discard();
  const std::string& target() const { return target_; }

 private:
  std::FILE* file_ = nullptr;
  std::string target_;
  std::string temp_;
  bool writeFailed_ = false;
};

}  // namespace subsurf
