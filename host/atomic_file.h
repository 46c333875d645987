// AtomicFile: a text file that holds a user's work (a session, a template, the
// settings, a report, a results table, a script), written whole or not at all.
//
// A session a geologist has worked on for months must never be damaged by a
// failed save (a full disk, a crash, a bad value met half way): it goes
// through SafeFile (see host/safe_file.h), flushed to disk before and after
// the rename, so until commit() succeeds the previous file is untouched, and
// an abandoned write leaves no temporary file behind. A pipe or device named
// as the target (/dev/stdout, /dev/null) is written directly.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/safe_file.h"
#include "host/status.h"

namespace subsurf {

// Writes the whole text to target through an AtomicFile.
Status writeFileAtomically(const std::string& target, std::string_view text);

class AtomicFile {
 public:
  AtomicFile() = default;
  ~AtomicFile();  // discards an uncommitted file
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  Status open(const std::string& target);
  bool isOpen() const { return file_ != nullptr && file_->stream() != nullptr; }
  void write(std::string_view text);
  void writeLine(std::string_view text);
  // Flushes, syncs and puts the file in place. Any earlier write error fails it.
  Status commit();
  // Throws the temporary file away, leaving the target as it was.
  void discard();
  const std::string& target() const { return target_; }

 private:
  std::unique_ptr<SafeFile> file_;
  std::string target_;
  bool writeFailed_ = false;
};

}  // namespace subsurf
