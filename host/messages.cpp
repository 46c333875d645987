#include "host/messages.h"

#include <cstdio>
#include <deque>
#include <mutex>

namespace subsurf::host {
namespace {

// A command-line program may process photos on several threads, each of which
// can report a problem, so the shared record is guarded.
struct MessageState {
  std::mutex mutex;
  HostCallbacks callbacks;
  bool defaultAnswer = false;
  bool quiet = false;
  std::deque<bool> queuedAnswers;
  std::deque<RecordedText> record;
};

constexpr std::size_t kRecordLimit = 10000;

MessageState& state() {
  static MessageState s;
  return s;
}

void remember(MessageState& s, RecordedText entry) {
  s.record.push_back(std::move(entry));
  if (s.record.size() > kRecordLimit) s.record.pop_front();
}

}  // namespace

void setHostCallbacks(const HostCallbacks& callbacks) {
  std::lock_guard lock(state().mutex);
  state().callbacks = callbacks;
}

void resetHostCallbacks() { setHostCallbacks(HostCallbacks{}); }

void showMessage(std::string_view text) {
  MessageState& s = state();
  std::string owned(text);
  HostCallbacks cb;
  bool quiet;
  {
    std::lock_guard lock(s.mutex);
    remember(s, {RecordedText::Kind::Message, owned, false});
    cb = s.callbacks;
    quiet = s.quiet;
  }
  if (cb.message) {
    cb.message(cb.context, owned.c_str());
  } else if (!quiet) {
    std::fprintf(stderr, "%s\n", owned.c_str());
  }
}

bool askQuestion(std::string_view text) {
  MessageState& s = state();
  std::string owned(text);
  HostCallbacks cb;
  bool answer;
  bool quiet;
  {
    std::lock_guard lock(s.mutex);
    cb = s.callbacks;
    quiet = s.quiet;
    if (!s.queuedAnswers.empty()) {
      answer = s.queuedAnswers.front();
      s.queuedAnswers.pop_front();
      cb.question = nullptr;  // a scripted answer wins over the host's dialog
    } else {
      answer = s.defaultAnswer;
    }
  }
  if (cb.question) {
    answer = cb.question(cb.context, owned.c_str()) == 1;
  } else if (!quiet) {
    std::fprintf(stderr, "%s [%s]\n", owned.c_str(), answer ? "yes" : "no");
  }
  std::lock_guard lock(s.mutex);
  remember(s, {RecordedText::Kind::Question, owned, answer});
  return answer;
}

void setDefaultAnswer(bool yes) {
  std::lock_guard lock(state().mutex);
  state().defaultAnswer = yes;
}

void queueAnswer(bool yes) {
  std::lock_guard lock(state().mutex);
  state().queuedAnswers.push_back(yes);
}

void setQuiet(bool quiet) {
  std::lock_guard lock(state().mutex);
  state().quiet = quiet;
}

std::vector<RecordedText> recorded() {
  std::lock_guard lock(state().mutex);
  return {state().record.begin(), state().record.end()};
}

std::vector<std::string> recordedMessages() {
  std::vector<std::string> out;
  for (const auto& r : recorded())
    if (r.kind == RecordedText::Kind::Message) out.push_back(r.text);
  return out;
}

std::vector<std::string> recordedQuestions() {
  std::vector<std::string> out;
  for (const auto& r : recorded())
    if (r.kind == RecordedText::Kind::Question) out.push_back(r.text);
  return out;
}

void clearRecorded() {
  std::lock_guard lock(state().mutex);
  state().record.clear();
  state().queuedAnswers.clear();
}

}  // namespace subsurf::host
