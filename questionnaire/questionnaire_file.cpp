// Reading questionnaire files (the format is described in docs/questionnaires.md).
#include <fmt/format.h>

#include "host/fixed_text.h"
#include "host/keyword_file.h"
#include "questionnaire/questionnaire.h"
#include "units/scalar_records.h"

namespace subsurf::qa {
namespace {

// Bounds that keep an untrusted file from asking for unbounded memory.
constexpr int kMaxSections = 10000;

enum class Mode { None, Sections, Questions };

std::string cut(const std::string& text, std::size_t width) {
  return fixedText(text.data(), std::min(text.size(), width));
}

class Loader {
 public:
  Loader(KeywordFileReader& file, Questionnaire& q) : file_(file), q_(q) {}

  Status read() {
    CsvRow row;
    while (file_.next(row)) {
      const std::string first = cut(trimBlanks(row.field(1)), kLabelWidth);
      if (!first.empty() && first[0] == '#') continue;  // a comment
      const Status st = !first.empty() && first[0] == '*' ? keyword(lowerCase(first), row) : record(row);
      if (!st) return st;
    }
    for (const Question& question : q_.questions) {
      if (question.answers.empty())
        return Status::error(fmt::format("{}, line {}: question \"{}\" has no answers", file_.path(),
                                         question.line, question.label));
    }
    return Status::ok();
  }

 private:
  Status fail(std::string_view what) const { return Status::error(file_.where(what)); }

  Status integerField(const CsvRow& row, int column, int& out, std::string_view what) const {
    const int st = row.integer(column, out);
    if (st == CsvRow::kOk) return Status::ok();
    return fail(fmt::format("{} \"{}\" is not a whole number", what, row.field(column)));
  }

  Status keyword(const std::string& key, const CsvRow& row) {
    if (key == "*title") {
      q_.title = cut(row.field(2), kTitleWidth);
    } else if (key == "*event") {
      return integerField(row, 2, q_.event, "the event number");
    } else if (key == "*answers_required") {
      return integerField(row, 2, q_.answersRequired, "the answers-required flag");
    } else if (key == "*sections") {
      int n = 0;
      if (Status st = integerField(row, 2, n, "the number of sections"); !st) return st;
      if (n < 0 || n > kMaxSections)
        return fail(fmt::format("the number of sections must be from 0 to {}, not {}", kMaxSections, n));
      q_.declareSections(n);
      mode_ = Mode::Sections;
    } else if (key == "*questions") {
      mode_ = Mode::Questions;
      if (!row.field(2).empty()) return integerField(row, 2, q_.declaredQuestions, "the question count");
    } else {
      return fail(fmt::format("unknown keyword \"{}\"", row.field(1)));
    }
    return Status::ok();
  }

  Status record(const CsvRow& row) {
    if (mode_ == Mode::Sections) return section(row);
    if (mode_ == Mode::Questions) return questionOrAnswer(row);
    return Status::ok();  // outside a mode, other records are ignored
  }

  Status section(const CsvRow& row) {
    int s = 0;
    if (Status st = integerField(row, 1, s, "the section number"); !st) return st;
    if (s < 0 || s > q_.sectionCount())
      return fail(fmt::format("section {} is beyond the {} sections declared", s, q_.sectionCount()));
    setDefaults(q_.sections[static_cast<std::size_t>(s)], cut(row.field(2), kSectionNameWidth));
    return Status::ok();
  }

  Status questionOrAnswer(const CsvRow& row) {
    const std::string text = cut(row.field(3), kTextWidth);
    if (text.empty()) return Status::ok();  // no text: the record is skipped
    int n = 0;
    if (Status st = integerField(row, 1, n, "the section number"); !st) return st;
    if (n > 0) {
      Question question;
      question.section = n;
      question.label = cut(trimBlanks(row.field(2)), kLabelWidth);
      question.text = text;
      question.line = file_.lineNumber();
      q_.questions.push_back(std::move(question));
      return Status::ok();
    }
    if (q_.questions.empty()) return fail("an answer comes before any question");
    Answer answer;
    answer.text = text;
    if (!row.field(4).empty() && row.real(4, answer.score) != CsvRow::kOk)
      return fail(fmt::format("the score \"{}\" is not a number", row.field(4)));
    if (row.size() > 4) answer.gotoLabel = cut(trimBlanks(row.field(5)), kLabelWidth);
    // The second code repeats field 5; field 6 is not read.
    if (row.size() > 5) answer.code = cut(trimBlanks(row.field(5)), kLabelWidth);
    q_.questions.back().answers.push_back(std::move(answer));
    return Status::ok();
  }

  KeywordFileReader& file_;
  Questionnaire& q_;
  Mode mode_ = Mode::None;
};

}  // namespace

Status loadQuestionnaire(const std::string& path, Questionnaire& out) {
  out = Questionnaire{};
  KeywordFileReader file;
  if (Status st = file.open(path); !st) return st;
  Questionnaire q;
  if (Status st = Loader(file, q).read(); !st) return st;
  q.resolveGotoLabels();
  out = std::move(q);
  return Status::ok();
}

}  // namespace subsurf::qa
