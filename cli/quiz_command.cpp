#include "quiz_command.h"

#include <fmt/format.h>
#include <unistd.h>

#include <iostream>
#include <memory>
#include <string>

#include "cli_support.h"
#include "host/csv_row.h"
#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/number_text.h"
#include "host/paths.h"
#include "questionnaire/answers_file.h"
#include "questionnaire/questionnaire.h"
#include "questionnaire/quiz_walk.h"

namespace subsurf::cli {
namespace {

struct QuizOptions {
  std::string file;
  std::string out;
  bool show = false;
};

void warnUnresolvedLabels(const qa::Questionnaire& q) {
  for (const qa::Question& question : q.questions) {
    for (const qa::Answer& a : question.answers) {
      if (!a.gotoLabel.empty() && a.gotoLabel[0] != '>' && a.gotoQuestion == 0)
        host::showMessage(fmt::format("Question \"{}\": no question is labelled \"{}\"; that answer goes on to the next question",
                                      question.label, a.gotoLabel));
    }
  }
}

void askQuestion(const qa::Questionnaire& q, int iq, int& shownSection) {
  const qa::Question& question = *q.question(iq);
  if (question.section != shownSection) {
    shownSection = question.section;
    const std::string name = q.sectionName(question.section);
    std::cout << "\n== Section " << question.section << (name.empty() ? "" : ": " + name) << " ==\n";
  }
  std::cout << "\n[" << iq << "/" << q.questionCount() << "] " << question.text << "\n";
  for (std::size_t k = 0; k < question.answers.size(); ++k)
    std::cout << "  " << k + 1 << ") " << question.answers[k].text << "\n";
  std::cout << "Answer 1-" << question.answers.size() << " (b back, s skip, q quit): " << std::flush;
}

// Asks until the walk ends; false when the user stopped or the input ran out.
bool walk(qa::QuizWalk& walk, const qa::Questionnaire& q) {
  const bool echo = !::isatty(STDIN_FILENO);
  int shownSection = kIntNull;
  std::string line;
  while (!walk.finished()) {
    askQuestion(q, walk.current(), shownSection);
    if (!std::getline(std::cin, line)) {
      std::cout << "\n";
      host::showMessage(fmt::format("The answers ended at question {} of {}", walk.current(), q.questionCount()));
      return false;
    }
    const std::string typed = lowerCase(trimBlanks(line));
    if (echo) std::cout << typed << "\n";
    int k = 0;
    if (typed == "q") return false;
    if (typed == "b") {
      if (!walk.back()) host::showMessage("This is the first question");
      shownSection = kIntNull;
    } else if (typed == "s") {
      if (Status st = walk.skip(); !st) host::showMessage(st.message());
    } else if (parseInteger(typed, k)) {
      if (Status st = walk.choose(k); !st) host::showMessage(st.message());
    } else {
      host::showMessage(fmt::format("Type the number of an answer, b, s or q (not \"{}\")", trimBlanks(line)));
    }
  }
  return true;
}

void printTotals(const qa::Questionnaire& q, int unanswered) {
  std::cout << "\nSection scores:\n";
  for (int s = 1; s <= q.sectionCount(); ++s) {
    std::cout << fmt::format("  {:>2} {:<40} {}\n", s, q.sectionName(s),
                             shortestText(q.sectionScores[static_cast<std::size_t>(s)]));
  }
  if (unanswered > 0) std::cout << "Unanswered questions: " << unanswered << "\n";
}

int runQuiz(const QuizOptions& opt) {
  qa::Questionnaire q;
  if (Status st = qa::loadQuestionnaire(resolvePath(opt.file), q); !st) {
    host::showMessage(st.message());
    return kExitBadInput;
  }
  if (opt.show) {
    for (const std::string& line : q.listing()) std::cout << line << "\n";
    return kExitOk;
  }
  if (q.questionCount() == 0) {
    host::showMessage(fmt::format("{} holds no questions", opt.file));
    return kExitBadInput;
  }
  warnUnresolvedLabels(q);
  std::cout << q.title << "\n";
  qa::QuizWalk quiz(q);
  const bool completed = walk(quiz, q);
  const int unanswered = quiz.finish();
  printTotals(q, unanswered);
  if (!opt.out.empty()) {
    if (Status st = qa::writeAnswers(q, opt.out); !st) {
      host::showMessage(st.message());
      return kExitBadInput;
    }
    std::cout << "Answers written to " << opt.out << "\n";
  }
  return completed ? kExitOk : kExitPartial;
}

}  // namespace

void addQuizCommand(CLI::App& app, int& exitCode) {
  auto opt = std::make_shared<QuizOptions>();
  CLI::App* cmd = app.add_subcommand("quiz", "Answer a questionnaire: sections, questions, scores");
  cmd->add_option("file", opt->file, "Questionnaire file (e.g. data/questionnaires/core-description.csv)")
      ->required();
  cmd->add_option("--out", opt->out, "Write the answers here (CSV; JSON when the name ends in .json)");
  cmd->add_flag("--show", opt->show, "List the questions, answers, scores and go-to labels, and stop");
  cmd->callback([opt, &exitCode]() { exitCode = runQuiz(*opt); });
}

}  // namespace subsurf::cli
