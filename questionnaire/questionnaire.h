// Questionnaires: scored multiple-choice forms in numbered sections.
//
// A questionnaire holds its questions in file order; each question belongs to a
// section, has a label and a list of answers, and records the answer chosen (an
// index from 1; the integer null when unanswered, -1 when the question does not
// apply) and that answer's score. Answers carry a score and optionally the label
// of the question to go to next. Section totals are rebuilt by check().
//
// Positions of questions and answers are counted from 1, as the C routines and
// the user count them; a navigation call whose target does not exist leaves the
// current question unchanged.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/nulls.h"
#include "host/status.h"
#include "subsurf/scalars.h"

namespace subsurf::qa {

inline constexpr std::size_t kTitleWidth = 40;
inline constexpr std::size_t kTextWidth = 200;
inline constexpr std::size_t kLabelWidth = 20;
inline constexpr std::size_t kSectionNameWidth = 40;
// Scores of this magnitude or more (the real null among them) never enter a total.
inline constexpr float kLargestTotalledScore = 32000.0f;
// A chosen answer of -1: the question does not apply and is neither counted nor totalled.
inline constexpr int kNotApplicable = -1;

struct Answer {
  std::string text;       // up to 200 characters
  std::string gotoLabel;  // up to 20 characters; blank = go on to the next question
  std::string code;       // second code, up to 20 characters
  float score = kRealNull;
  int gotoQuestion = 0;   // position of the question gotoLabel names; 0 = none
};

struct Question {
  std::string text;   // up to 200 characters
  std::string label;  // up to 20 characters
  int section = kIntNull;
  int chosen = kIntNull;
  float score = kRealNull;
  std::vector<Answer> answers;
  int line = 0;  // line of the file it came from (0 when built in memory)
};

// One question's result as exported.
struct Result {
  int chosen = kIntNull;
  float score = kRealNull;
  std::string label;
};

class Questionnaire {
 public:
  std::string title;
  int event = kIntNull;
  int answersRequired = kIntNull;
  int declaredQuestions = kIntNull;  // field 2 of "*questions"; informational
  // Section totals and descriptors, indexed by section number 0..sectionCount().
  std::vector<float> sectionScores;
  std::vector<DT_CSCA> sections;
  std::vector<Question> questions;

  // Makes sections 0..n with blank descriptors and zero totals.
  void declareSections(int n);
  int sectionCount() const { return sections.empty() ? 0 : static_cast<int>(sections.size()) - 1; }
  std::string sectionName(int s) const;
  int questionCount() const { return static_cast<int>(questions.size()); }
  int answerCount(int iq) const;
  Question* question(int iq);
  const Question* question(int iq) const;

  // ---- Navigation: the current question (0 = none) ----
  int current() const { return current_; }
  void setCurrent(int iq);
  // The n-th question of section s (s = 0: of any section).
  void setCurrentInSection(int s, int n);
  void gotoSection(int s);
  // Position of the first question with this label (blanks and case as written, trailing
  // blanks ignored); 0 when none.
  int findLabel(std::string_view label) const;
  // Resolves every answer's go-to label (blank ones and those beginning with ">"
  // are left alone), walking the questions with the current question, which is
  // left on the last one.
  void resolveGotoLabels();

  // ---- Answers and scores ----
  void reset();
  bool setAnswer(int iq, int chosen);
  void setAnswers(const std::vector<int>& chosen);
  // The question's score from the index-th answer: null when index < 1 or beyond the answers.
  void setScore(int iq, int index);
  void setScores();
  float score(int iq) const;
  // Rebuilds the section totals over section s (0 = all) and returns the number of
  // unanswered questions; the first of them becomes the current question.
  int check(int s);
  // Rescores every question; results for the first `capacity` questions.
  std::vector<Result> results(int capacity);

  // The questionnaire as text lines: the title, then per question a blank line,
  // its text and a line per answer.
  std::vector<std::string> listing() const;

 private:
  int current_ = 0;
};

// Reads a questionnaire file. A file that cannot be opened or a record that
// cannot be read fails with a message naming the file and line; `out` is then
// left empty.
Status loadQuestionnaire(const std::string& path, Questionnaire& out);

}  // namespace subsurf::qa
