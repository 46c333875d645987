#include "questionnaire/quiz_walk.h"

#include <fmt/format.h>

#include "host/fixed_text.h"
#include "host/number_text.h"

namespace subsurf::qa {

QuizWalk::QuizWalk(Questionnaire& q) : q_(q) {
  q_.reset();
  current_ = q_.questionCount() > 0 ? 1 : 0;
}

void QuizWalk::moveTo(int from, int to) {
  Step step{from, {}};
  for (int skipped = from + 1; to > from && skipped < to; ++skipped) step.jumped.push_back(skipped);
  path_.push_back(std::move(step));
  current_ = to > q_.questionCount() ? 0 : to;
}

Status QuizWalk::choose(int k) {
  Question* question = q_.question(current_);
  if (!question) return Status::error("The questionnaire is finished");
  const int n = static_cast<int>(question->answers.size());
  if (k < 1 || k > n) return Status::error(fmt::format("Answer {} is not one of 1 to {}", k, n));
  question->chosen = k;
  q_.setScore(current_, k);
  const Answer& answer = question->answers[static_cast<std::size_t>(k - 1)];
  int next = current_ + 1;
  if (answer.gotoQuestion > 0) {
    next = answer.gotoQuestion;
  } else if (lowerCase(answer.gotoLabel) == ">end") {
    next = q_.questionCount() + 1;
  } else if (answer.gotoLabel.size() > 1 && answer.gotoLabel[0] == '>') {
    int section = 0;
    if (parseInteger(answer.gotoLabel.substr(1), section)) {
      for (int iq = 1; iq <= q_.questionCount(); ++iq) {
        if (q_.question(iq)->section == section) {
          next = iq;
          break;
        }
      }
    }
  }
  moveTo(current_, next);
  return Status::ok();
}

Status QuizWalk::skip() {
  Question* question = q_.question(current_);
  if (!question) return Status::error("The questionnaire is finished");
  if (q_.answersRequired == 1) return Status::error("An answer is required for every question");
  question->chosen = kIntNull;
  question->score = kRealNull;
  moveTo(current_, current_ + 1);
  return Status::ok();
}

bool QuizWalk::back() {
  if (path_.empty()) return false;
  current_ = path_.back().question;
  path_.pop_back();
  return true;
}

int QuizWalk::finish() {
  std::set<int> onTheWay;
  for (const Step& step : path_) onTheWay.insert(step.question);
  if (current_ != 0) onTheWay.insert(current_);
  for (int iq = 1; iq <= q_.questionCount(); ++iq) {
    if (onTheWay.count(iq)) continue;
    bool jumped = finished();
    for (const Step& step : path_)
      for (int j : step.jumped) jumped = jumped || j == iq;
    if (jumped) q_.question(iq)->chosen = kNotApplicable;
  }
  return q_.check(0);
}

}  // namespace subsurf::qa
