// A split started from the editor: the photographs are cut on a thread of
// their own while the page keeps asking how far it got.
#pragma once

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "core/split_process.h"

namespace subsurf::editor {

class SplitJob {
 public:
  SplitJob() = default;
  ~SplitJob();  // waits for a running split
  SplitJob(const SplitJob&) = delete;
  SplitJob& operator=(const SplitJob&) = delete;

  bool running() const;
  // Starts cutting the jobs (prepared on the session's thread); false when a
  // split is still running.
  bool start(std::vector<split::PhotoJob> jobs, split::SplitOptions options);
  // Waits for the split to end (tests and shutdown).
  void wait();

  // {"running", "photos", "photosDone", "rows", "rowsDone", "current",
  //  "summary" (when done), "messages", "folder", "report"}
  nlohmann::json progress() const;

 private:
  void run(std::vector<split::PhotoJob> jobs, split::SplitOptions options);

  mutable std::mutex mutex_;
  std::thread thread_;
  bool running_ = false;
  bool started_ = false;
  int photos_ = 0, photosDone_ = 0, rows_ = 0, rowsDone_ = 0;
  std::string current_, summary_, folder_, report_;
  std::vector<std::string> messages_;
};

}  // namespace subsurf::editor
