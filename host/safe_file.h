// SafeFile: the one way every program replaces a file.
//
// The new content goes to a hidden temporary file in the target's own folder
// and is renamed over the target only when every byte is written, so the old
// file stays whole until the new one is. Around that:
//   - a symlink is followed: the file it points to is replaced, the link kept;
//   - the old file's permission bits (and, where allowed, owner) are kept;
//   - a FIFO or character device (a pipe, /dev/null, a terminal) is written
//     directly when the caller allows it, otherwise refused, and anything
//     else that is not a regular file (a folder, a socket, a disk) is
//     refused: never replaced by a plain file;
//   - files that hold a user's work (Durability::Flushed) are pushed to disk
//     before the rename and the folder after it, so a power cut leaves either
//     the old file or the new one. Files that can be made again from their
//     sources (row images, previews) skip that cost;
//   - temporary files left by runs that were killed are removed the first
//     time this process writes into their folder.
#pragma once

#include <sys/types.h>

#include <cstdio>
#include <string>
#include <string_view>

#include "host/status.h"

namespace subsurf {

enum class Durability {
  Flushed,    // fsync of the file before the rename, of the folder after it
  Unflushed,  // left to the system's own write-back
};

enum class SpecialTargets {
  WriteThrough,  // a FIFO or character device target is written directly
  Refuse,        // only regular files (formats written by seeking)
};

// Where a write to `target` really goes.
struct WriteTarget {
  enum class Kind { Missing, Regular, Special };
  std::string path;  // symlinks followed
  Kind kind = Kind::Missing;
  mode_t mode = 0;
  uid_t owner = 0;
  gid_t group = 0;
};

// Follows symlinks from target and classifies what is there. Fails, with a
// reason that names no file, for a folder, socket or block device, a link
// loop, or a special file when `special` is Refuse.
Status resolveWriteTarget(const std::string& target, SpecialTargets special, WriteTarget& out);

class SafeFile {
 public:
  SafeFile(std::string target, Durability durability, SpecialTargets special = SpecialTargets::WriteThrough);
  ~SafeFile();  // throws the temporary file away unless committed
  SafeFile(const SafeFile&) = delete;
  SafeFile& operator=(const SafeFile&) = delete;

  // Creates the temporary file (or opens a special target). The reason on
  // failure names no file.
  Status open();
  std::FILE* stream() const { return stream_; }
  // The file being written, for writers that open it by name themselves
  // (closeStream() first): the temporary file, or a special target itself.
  const std::string& tempPath() const { return tempPath_; }
  const std::string& target() const { return target_; }
  bool writesThrough() const { return resolved_.kind == WriteTarget::Kind::Special; }

  // Flushes (and for Flushed files syncs) and closes the stream, reporting
  // late write errors (a full disk often shows only here).
  Status closeStream();
  // Closes the stream if still open and puts the new file in place.
  Status commit();
  // Removes the temporary file now; the target stays as it was.
  void discard();

 private:
  Status putInPlace();

  std::string target_;
  Durability durability_;
  SpecialTargets special_;
  WriteTarget resolved_;
  std::string tempPath_;
  std::FILE* stream_ = nullptr;
  bool pending_ = false;  // a temporary file exists and is ours to remove
};

// True for the names SafeFile gives its temporary files.
bool isTemporaryName(std::string_view fileName);

// Removes from `folder` the temporary files of processes that no longer run
// (or older than a day). Returns how many were removed.
int removeStaleTemporaries(const std::string& folder);

// Fault injection for tests: the next `count` renames that put a file in
// place fail with `error` (an errno value).
void failNextRenamesForTesting(int count, int error);

}  // namespace subsurf
