// Messages and yes/no questions to the user.
//
// The library never talks to a terminal or a window directly: it goes through a
// callback table that the embedding application may replace. The default
// callbacks print to standard error and answer questions with a configurable
// default. Every message and question is also recorded (the latest ones, up to a
// bound), so tests can assert the exact texts that a user would have seen.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace subsurf::host {

struct HostCallbacks {
  // Shows a message; context is passed back untouched.
  void (*message)(void* context, const char* text) = nullptr;
  // Asks a yes/no question; returns 1 for yes, anything else for no.
  int (*question)(void* context, const char* text) = nullptr;
  void* context = nullptr;
};

// Replaces the callbacks; a null member keeps the default behaviour for it.
void setHostCallbacks(const HostCallbacks& callbacks);
void resetHostCallbacks();

void showMessage(std::string_view text);
// Asks the user; true means yes.
bool askQuestion(std::string_view text);

// Default behaviour when no host question callback is set.
void setDefaultAnswer(bool yes);
// Queues answers to be used, in order, before the default (for scripted runs and tests).
void queueAnswer(bool yes);
// Silences printing of messages to standard error (they are still recorded).
void setQuiet(bool quiet);

struct RecordedText {
  enum class Kind { Message, Question } kind;
  std::string text;
  bool answer = false;  // for questions: what was answered
};

std::vector<RecordedText> recorded();
std::vector<std::string> recordedMessages();
std::vector<std::string> recordedQuestions();
void clearRecorded();

}  // namespace subsurf::host
