#include "questionnaire/answers_file.h"

#include <nlohmann/json.hpp>

#include "host/atomic_file.h"
#include "host/csv_row.h"
#include "host/fixed_text.h"

namespace subsurf::qa {
namespace {

std::string chosenText(const Question& q) {
  if (q.chosen < 1 || q.chosen > static_cast<int>(q.answers.size())) return {};
  return q.answers[static_cast<std::size_t>(q.chosen - 1)].text;
}

nlohmann::ordered_json orNull(int v) { return isNull(v) ? nlohmann::ordered_json() : nlohmann::ordered_json(v); }
nlohmann::ordered_json orNull(float v) {
  return isNull(v) ? nlohmann::ordered_json() : nlohmann::ordered_json(static_cast<double>(v));
}

}  // namespace

std::string answersCsv(Questionnaire& q) {
  const int unanswered = q.check(0);
  std::string out = CsvRow().addText("title").addText(q.title).str() + "\n";
  out += CsvRow().addText("event").addText(isNull(q.event) ? "" : std::to_string(q.event)).str() + "\n";
  for (const Question& question : q.questions) {
    CsvRow row;
    row.addText("answer").addText(question.label).addInt(question.section);
    if (isNull(question.chosen)) row.addText(""); else row.addInt(question.chosen);
    row.addText(chosenText(question));
    if (isNull(question.score)) row.addText(""); else row.addReal(question.score);
    out += row.str() + "\n";
  }
  for (int s = 1; s <= q.sectionCount(); ++s) {
    out += CsvRow().addText("section").addInt(s).addText(q.sectionName(s))
               .addReal(q.sectionScores[static_cast<std::size_t>(s)]).str() + "\n";
  }
  out += CsvRow().addText("unanswered").addInt(unanswered).str() + "\n";
  return out;
}

std::string answersJson(Questionnaire& q) {
  const int unanswered = q.check(0);
  nlohmann::ordered_json answers = nlohmann::ordered_json::array();
  for (const Question& question : q.questions) {
    answers.push_back({{"label", question.label},
                       {"section", question.section},
                       {"question", question.text},
                       {"answer", orNull(question.chosen)},
                       {"answer_text", chosenText(question)},
                       {"score", orNull(question.score)}});
  }
  nlohmann::ordered_json sections = nlohmann::ordered_json::array();
  for (int s = 1; s <= q.sectionCount(); ++s) {
    sections.push_back({{"number", s},
                        {"name", q.sectionName(s)},
                        {"total", static_cast<double>(q.sectionScores[static_cast<std::size_t>(s)])}});
  }
  nlohmann::ordered_json doc{{"title", q.title},     {"event", orNull(q.event)},
                             {"answers", answers},   {"sections", sections},
                             {"unanswered", unanswered}};
  return doc.dump(2) + "\n";
}

Status writeAnswers(Questionnaire& q, const std::string& path) {
  const bool json = lowerCase(path).ends_with(".json");
  const std::string text = json ? answersJson(q) : answersCsv(q);
  AtomicFile file;
  if (Status st = file.open(path); !st) return st;
  file.write(text);
  return file.commit();
}

}  // namespace subsurf::qa
