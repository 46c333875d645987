#include "editor/split_job.h"

#include <fmt/format.h>

namespace subsurf::editor {

SplitJob::~SplitJob() { wait(); }

bool SplitJob::running() const {
  std::lock_guard lock(mutex_);
  return running_;
}

void SplitJob::wait() {
  if (thread_.joinable()) thread_.join();
}

bool SplitJob::start(std::vector<split::PhotoJob> jobs, split::SplitOptions options) {
  {
    std::lock_guard lock(mutex_);
    if (running_) return false;
  }
  wait();  // the previous split's thread has ended; collect it
  std::lock_guard lock(mutex_);
  running_ = started_ = true;
  photos_ = static_cast<int>(jobs.size());
  photosDone_ = rowsDone_ = rows_ = 0;
  for (const split::PhotoJob& j : jobs) rows_ += static_cast<int>(j.rows.size());
  current_.clear();
  summary_.clear();
  messages_.clear();
  folder_ = options.naming.outputBesidePhoto ? "beside each photo" : options.naming.outputFolder;
  report_ = options.writeReport ? options.reportFile : std::string();
  thread_ = std::thread(&SplitJob::run, this, std::move(jobs), std::move(options));
  return true;
}

void SplitJob::run(std::vector<split::PhotoJob> jobs, split::SplitOptions options) {
  options.progress = [this](int, int, std::string_view text) {
    std::lock_guard lock(mutex_);
    ++rowsDone_;
    current_ = std::string(text);
  };
  std::vector<split::PhotoOutcome> outcomes;
  for (const split::PhotoJob& job : jobs) {
    split::PhotoOutcome outcome;
    try {
      outcome = split::splitPhoto(job, options);
    } catch (const std::exception& e) {
      outcome.place = job.place;
      outcome.sourceFile = job.sourceFile;
      outcome.status = 1;
      outcome.messages.push_back(fmt::format("{}: {}", job.sourceFile, e.what()));
    }
    std::lock_guard lock(mutex_);
    ++photosDone_;
    messages_.insert(messages_.end(), outcome.messages.begin(), outcome.messages.end());
    outcomes.push_back(std::move(outcome));
  }
  std::string reportProblem;
  if (options.writeReport && !options.reportFile.empty()) {
    const Status s = split::writeReportFile(options.reportFile, split::reportLines(outcomes));
    if (!s) reportProblem = s.message();
  }
  const split::RunTotals t = split::totalsOf(outcomes);
  std::lock_guard lock(mutex_);
  summary_ = fmt::format("{} of {} rows written from {} photo{}", t.rowsWritten, t.rows, t.photos, t.photos == 1 ? "" : "s");
  if (t.rowsFailed > 0) summary_ += fmt::format("; {} row{} not written", t.rowsFailed, t.rowsFailed == 1 ? "" : "s");
  if (t.photosFailed > 0)
    summary_ += fmt::format("; {} photo{} could not be read", t.photosFailed, t.photosFailed == 1 ? "" : "s");
  if (!reportProblem.empty()) messages_.push_back(reportProblem);
  rowsDone_ = rows_;
  current_.clear();
  running_ = false;
}

nlohmann::json SplitJob::progress() const {
  std::lock_guard lock(mutex_);
  nlohmann::json p = {{"running", running_}, {"started", started_},   {"photos", photos_},
                      {"photosDone", photosDone_}, {"rows", rows_}, {"rowsDone", std::min(rowsDone_, rows_)},
                      {"current", current_}, {"messages", messages_}, {"folder", folder_}, {"report", report_}};
  if (!running_ && started_) p["summary"] = summary_;
  return p;
}

}  // namespace subsurf::editor
