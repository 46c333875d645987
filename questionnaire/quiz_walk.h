// QuizWalk: one user's way through a questionnaire, as the wizard takes it.
//
// The walk starts at the first question. Choosing an answer records it and moves
// to the question its go-to label names, or, for the labels that begin with ">",
// ">end" ends the questionnaire and ">N" goes to the first question of section N;
// otherwise it moves to the next question in the file. Questions that a go-to
// jumps over do not apply to this user: when the walk ends they are marked -1, so
// that they are neither counted as unanswered nor totalled. Going back returns to
// the question answered before and undoes its jump.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "host/status.h"
#include "questionnaire/questionnaire.h"

namespace subsurf::qa {

class QuizWalk {
 public:
  // Clears every answer of q and starts at its first question.
  explicit QuizWalk(Questionnaire& q);

  bool finished() const { return current_ == 0; }
  // Position of the question being asked (0 once finished).
  int current() const { return current_; }
  // Questions asked before this one (the way back).
  int depth() const { return static_cast<int>(path_.size()); }

  // Records answer k (from 1) of the current question and moves on.
  Status choose(int k);
  // Leaves the current question unanswered and moves to the next in the file;
  // refused when the questionnaire requires answers.
  Status skip();
  // Back to the question asked before; false when this is the first.
  bool back();
  // Marks the questions jumped over as not applying (and, when the walk reached
  // its end, every question off its way), totals the sections and returns the
  // number of questions left unanswered.
  int finish();

 private:
  struct Step {
    int question;
    std::vector<int> jumped;  // questions the move from it passed over
  };
  void moveTo(int from, int to);

  Questionnaire& q_;
  std::vector<Step> path_;
  int current_ = 0;
};

}  // namespace subsurf::qa
