// Writing a file so that it appears complete or not at all.
//
// A row image is first written under a hidden temporary name in the target's
// own folder (so the final rename never crosses file systems) and renamed over
// the target only when every byte has been written and the file closed. If
// anything fails, or the writer is abandoned, the temporary file is removed:
// a crashed or failed split never leaves a half-written picture under a name
// that looks like a finished row. An older file of the target's name is
// removed just before the rename (see commit()).
#pragma once

#include <cstdio>
#include <string>

#include "host/status.h"

namespace subsurf::image {

class AtomicOutput {
 public:
  explicit AtomicOutput(std::string target);
  ~AtomicOutput();  // removes the temporary file unless committed
  AtomicOutput(const AtomicOutput&) = delete;
  AtomicOutput& operator=(const AtomicOutput&) = delete;

  // Creates the temporary file. The reason on failure names no file.
  Status open();
  // The temporary file opened for writing (after open()); owned by this object.
  std::FILE* stream() const { return stream_; }
  // The temporary file's name, for writers that open the file themselves
  // (closeStream() first).
  const std::string& tempPath() const { return tempPath_; }
  const std::string& target() const { return target_; }

  // Flushes and closes the stream, reporting late write errors (a full disk
  // often shows only here).
  Status closeStream();
  // Closes the stream if still open and renames the temporary file over the target.
  Status commit();
  // Removes the temporary file now.
  void discard();

 private:
  std::string target_;
  std::string tempPath_;
  std::FILE* stream_ = nullptr;
  bool pending_ = false;  // a temporary file exists and is ours to remove
};

// Reason text for the current errno, e.g. "Permission denied".
std::string errnoText(int error);

}  // namespace subsurf::image
