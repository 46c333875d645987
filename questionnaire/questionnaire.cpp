#include "questionnaire/questionnaire.h"

#include <cmath>

#include "host/csv_row.h"
#include "host/fixed_text.h"
#include "units/scalar_records.h"

namespace subsurf::qa {

void Questionnaire::declareSections(int n) {
  sections.assign(static_cast<std::size_t>(n) + 1, DT_CSCA{});
  for (DT_CSCA& s : sections) setDefaults(s, "");
  sectionScores.assign(static_cast<std::size_t>(n) + 1, 0.0f);
}

std::string Questionnaire::sectionName(int s) const {
  if (s < 0 || s > sectionCount() || sections.empty()) return {};
  return textValue(sections[static_cast<std::size_t>(s)]);
}

Question* Questionnaire::question(int iq) {
  if (iq < 1 || iq > questionCount()) return nullptr;
  return &questions[static_cast<std::size_t>(iq - 1)];
}

const Question* Questionnaire::question(int iq) const {
  return const_cast<Questionnaire*>(this)->question(iq);
}

int Questionnaire::answerCount(int iq) const {
  const Question* q = question(iq);
  return q ? static_cast<int>(q->answers.size()) : 0;
}

void Questionnaire::setCurrent(int iq) {
  if (question(iq)) current_ = iq;
}

void Questionnaire::setCurrentInSection(int s, int n) {
  int seen = 0;
  for (int iq = 1; iq <= questionCount(); ++iq) {
    if (s != 0 && questions[static_cast<std::size_t>(iq - 1)].section != s) continue;
    if (++seen == n) {
      current_ = iq;
      return;
    }
  }
}

void Questionnaire::gotoSection(int s) {
  for (int iq = 1; iq <= questionCount(); ++iq) {
    if (questions[static_cast<std::size_t>(iq - 1)].section == s) {
      current_ = iq;
      return;
    }
  }
}

int Questionnaire::findLabel(std::string_view label) const {
  const std::string wanted = fixedText(label.data(), std::min(label.size(), kLabelWidth));
  for (int iq = 1; iq <= questionCount(); ++iq)
    if (questions[static_cast<std::size_t>(iq - 1)].label == wanted) return iq;
  return 0;
}

void Questionnaire::resolveGotoLabels() {
  for (int iq = 1; iq <= questionCount(); ++iq) {
    current_ = iq;
    for (Answer& a : questions[static_cast<std::size_t>(iq - 1)].answers) {
      a.gotoQuestion = 0;
      if (a.gotoLabel.empty() || a.gotoLabel[0] == '>') continue;
      a.gotoQuestion = findLabel(a.gotoLabel);
    }
  }
}

void Questionnaire::reset() {
  for (Question& q : questions) {
    q.chosen = kIntNull;
    q.score = kRealNull;
  }
}

bool Questionnaire::setAnswer(int iq, int chosen) {
  Question* q = question(iq);
  if (!q) return false;
  q->chosen = chosen;
  return true;
}

void Questionnaire::setAnswers(const std::vector<int>& chosen) {
  for (std::size_t k = 0; k < chosen.size() && k < questions.size(); ++k) questions[k].chosen = chosen[k];
}

void Questionnaire::setScore(int iq, int index) {
  Question* q = question(iq);
  if (!q) return;
  q->score = kRealNull;
  if (index < 1 || index > static_cast<int>(q->answers.size())) return;
  q->score = q->answers[static_cast<std::size_t>(index - 1)].score;
}

void Questionnaire::setScores() {
  for (int iq = 1; iq <= questionCount(); ++iq) setScore(iq, questions[static_cast<std::size_t>(iq - 1)].chosen);
}

float Questionnaire::score(int iq) const {
  const Question* q = question(iq);
  return q ? q->score : kRealNull;
}

int Questionnaire::check(int s) {
  for (float& total : sectionScores) total = 0.0f;
  int unanswered = 0;
  for (int iq = 1; iq <= questionCount(); ++iq) {
    Question& q = questions[static_cast<std::size_t>(iq - 1)];
    if (s != 0 && q.section != s) continue;
    if (q.chosen == kNotApplicable) continue;
    if (q.chosen < 1) {
      if (unanswered++ == 0) current_ = iq;
      continue;
    }
    setScore(iq, q.chosen);
    if (q.section > 0 && q.section <= sectionCount() && std::fabs(q.score) < kLargestTotalledScore)
      sectionScores[static_cast<std::size_t>(q.section)] += q.score;
  }
  return unanswered;
}

std::vector<Result> Questionnaire::results(int capacity) {
  std::vector<Result> out;
  for (int iq = 1; iq <= questionCount(); ++iq) {
    Question& q = questions[static_cast<std::size_t>(iq - 1)];
    setScore(iq, q.chosen);
    if (iq <= capacity) out.push_back(Result{q.chosen, q.score, q.label});
  }
  return out;
}

std::vector<std::string> Questionnaire::listing() const {
  std::vector<std::string> lines{title};
  for (const Question& q : questions) {
    lines.emplace_back();
    lines.push_back(q.text);
    for (const Answer& a : q.answers) {
      std::string line = "  " + a.text + " " + shortestText(a.score);
      if (const Question* to = question(a.gotoQuestion)) {
        std::string label = to->label;
        label.resize(kLabelWidth, ' ');
        line += "      ==> " + label;
      }
      while (!line.empty() && line.back() == ' ') line.pop_back();
      lines.push_back(line);
    }
  }
  return lines;
}

}  // namespace subsurf::qa
