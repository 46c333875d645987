// The questionnaire routines as exported C functions: a registry of loaded
// questionnaires by handle over the engine of questionnaire.h. No exception
// leaves this file.
#include <map>
#include <memory>
#include <new>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "subsurf/host.h"
#include "subsurf/questionnaire.h"
#include "questionnaire/questionnaire.h"
#include "units/scalar_records.h"

namespace {

using namespace subsurf;
using qa::Questionnaire;

std::map<int, std::unique_ptr<Questionnaire>>& registry() {
  static std::map<int, std::unique_ptr<Questionnaire>> r;
  return r;
}

int addQuestionnaire(std::unique_ptr<Questionnaire> q) {
  auto& r = registry();
  const int handle = r.empty() ? 1 : r.rbegin()->first + 1;
  r[handle] = std::move(q);
  return handle;
}

Questionnaire* find(const int* handle) {
  if (!handle) return nullptr;
  auto it = registry().find(*handle);
  return it == registry().end() ? nullptr : it->second.get();
}

template <typename F>
void guarded(F&& f) noexcept {
  try {
    f();
  } catch (const std::bad_alloc&) {
    host::showMessage("Memory allocation failed: questionnaire");
  } catch (const std::exception& e) {
    host::showMessage(e.what());
  } catch (...) {
    host::showMessage("Questionnaire routine failed");
  }
}

// Runs f on the questionnaire of the handle; status 1 when there is none or f says no.
template <typename F>
void withQuestionnaire(const int* handle, int* status, F&& f) {
  int st = 1;
  guarded([&] {
    if (Questionnaire* q = find(handle)) st = f(*q) ? 0 : 1;
  });
  if (status) *status = st;
}

void copyOut(const qa::Question& from, QA_QUESTION& to) {
  setFixed(to.TEXT, from.text);
  to.ISEC = from.section;
  to.IANS = from.chosen;
  to.SCORE = from.score;
  setFixed(to.LABEL, from.label);
}

void copyOut(const qa::Answer& from, QA_ANSWER& to) {
  setFixed(to.TEXT, from.text);
  setFixed(to.GOTO, from.gotoLabel);
  setFixed(to.CODE, from.code);
  to.SCORE = from.score;
  to.IGOTO = from.gotoQuestion;
}

}  // namespace

extern "C" {

void QA_INIT(int* handle) {
  if (!handle) return;
  *handle = 0;
  guarded([&] { *handle = addQuestionnaire(std::make_unique<Questionnaire>()); });
}

void QA_QINIT(QA_QUESTION* question) {
  if (question) copyOut(qa::Question{}, *question);
}

void QA_AINIT(QA_ANSWER* answer) {
  if (answer) copyOut(qa::Answer{}, *answer);
}

void QA_LOAD(const char* file, int* handle, int* status) {
  int st = 1;
  if (handle) *handle = 0;
  guarded([&] {
    if (!file || !handle) return;
    char full[260];
    SET_FLNM(file, full);
    auto q = std::make_unique<Questionnaire>();
    const Status loaded = qa::loadQuestionnaire(fixedText(full, 260), *q);
    if (!loaded) {
      host::showMessage(loaded.message());
      return;
    }
    *handle = addQuestionnaire(std::move(q));
    st = 0;
  });
  if (status) *status = st;
}

void QA_QSDEL(int* handle, int* status) {
  int st = 1;
  guarded([&] {
    if (handle && registry().erase(*handle) == 1) {
      *handle = 0;
      st = 0;
    }
  });
  if (status) *status = st;
}

void QA_GETTITLE(const int* handle, char* title, int* event, int* answersRequired, int* status) {
  withQuestionnaire(handle, status, [&](Questionnaire& q) {
    if (title) setFixed(title, qa::kTitleWidth, q.title);
    if (event) *event = q.event;
    if (answersRequired) *answersRequired = q.answersRequired;
    return true;
  });
}

void QA_GETQ(const int* handle, const int* iq, QA_QUESTION* question, int* status) {
  withQuestionnaire(handle, status, [&](Questionnaire& q) {
    const qa::Question* found = iq && question ? q.question(*iq) : nullptr;
    if (found) copyOut(*found, *question);
    return found != nullptr;
  });
}

void QA_GETA(const int* handle, const int* iq, const int* ia, QA_ANSWER* answer, int* status) {
  withQuestionnaire(handle, status, [&](Questionnaire& q) {
    const qa::Question* found = iq && ia && answer ? q.question(*iq) : nullptr;
    if (!found || *ia < 1 || *ia > static_cast<int>(found->answers.size())) return false;
    copyOut(found->answers[static_cast<std::size_t>(*ia - 1)], *answer);
    return true;
  });
}

void QA_GETSEC(const int* handle, const int* s, char* name, float* total, int* status) {
  withQuestionnaire(handle, status, [&](Questionnaire& q) {
    if (!s || q.sections.empty() || *s < 0 || *s > q.sectionCount()) return false;
    if (name) setFixed(name, qa::kSectionNameWidth, q.sectionName(*s));
    if (total) *total = q.sectionScores[static_cast<std::size_t>(*s)];
    return true;
  });
}

void QA_NQUS(const int* handle, int* count) {
  if (!count) return;
  const Questionnaire* q = find(handle);
  *count = q ? q->questionCount() : 0;
}

void QA_NSECS(const int* handle, int* count) {
  if (!count) return;
  const Questionnaire* q = find(handle);
  *count = q ? q->sectionCount() : 0;
}

void QA_NANS(const int* handle, const int* iq, int* count) {
  if (!count) return;
  const Questionnaire* q = find(handle);
  *count = q && iq ? q->answerCount(*iq) : 0;
}

void QA_GETIQ(const int* handle, int* iq) {
  if (!iq) return;
  const Questionnaire* q = find(handle);
  *iq = q ? q->current() : 0;
}

void QA_SETIQ(const int* handle, const int* n) {
  if (Questionnaire* q = find(handle); q && n) q->setCurrent(*n);
}

void QA_SETISECQ(const int* handle, const int* s, const int* n) {
  if (Questionnaire* q = find(handle); q && s && n) q->setCurrentInSection(*s, *n);
}

void QA_GOTOSEC(const int* handle, const int* s) {
  if (Questionnaire* q = find(handle); q && s) q->gotoSection(*s);
}

void QA_GETQLAB(const int* handle, const char* label, int* iq, int* status) {
  if (iq) *iq = 0;
  withQuestionnaire(handle, status, [&](Questionnaire& q) {
    if (!label || !iq) return false;
    *iq = q.findLabel(std::string_view(label, qa::kLabelWidth));
    return *iq > 0;
  });
}

void QA_RESET(const int* handle) {
  if (Questionnaire* q = find(handle)) q->reset();
}

void QA_SETANS(const int* handle, const int* iq, const int* chosen, int* status) {
  withQuestionnaire(handle, status, [&](Questionnaire& q) { return iq && chosen && q.setAnswer(*iq, *chosen); });
}

void QA_SETANSWERS(const int* handle, const int* chosen, const int* n) {
  guarded([&] {
    Questionnaire* q = find(handle);
    if (!q || !chosen || !n || *n < 1) return;
    q->setAnswers(std::vector<int>(chosen, chosen + *n));
  });
}

void QA_SETSCORE(const int* handle, const int* iq, const int* index) {
  if (Questionnaire* q = find(handle); q && iq && index) q->setScore(*iq, *index);
}

void QA_SETSCORES(const int* handle) {
  if (Questionnaire* q = find(handle)) q->setScores();
}

void QA_GETSCORE(const int* handle, const int* iq, float* score) {
  if (!score) return;
  const Questionnaire* q = find(handle);
  *score = q && iq ? q->score(*iq) : kRealNull;
}

void QA_CHECK(const int* handle, const int* s, int* unanswered) {
  if (!unanswered) return;
  *unanswered = 0;
  if (Questionnaire* q = find(handle); q && s) *unanswered = q->check(*s);
}

void QA_GETANSWERS(const int* handle, QA_RESULT* results, DT_CSCA* sections, const int* capacity,
                   const int* sectionCapacity) {
  guarded([&] {
    Questionnaire* q = find(handle);
    if (!q) return;
    const int cap = results && capacity ? *capacity : 0;
    const std::vector<qa::Result> out = q->results(cap);
    for (std::size_t k = 0; k < out.size(); ++k) {
      results[k].IANS = out[k].chosen;
      results[k].SCORE = out[k].score;
      setFixed(results[k].LABEL, out[k].label);
    }
    if (!sections || !sectionCapacity) return;
    const int n = std::min(static_cast<int>(q->sections.size()), *sectionCapacity);
    for (int s = 0; s < n; ++s) DT_CSCACOPY(&q->sections[static_cast<std::size_t>(s)], &sections[s]);
  });
}

void QA_SHOW(const int* handle, const int* channel) {
  guarded([&] {
    const Questionnaire* q = find(handle);
    if (!q || !channel) return;
    for (const std::string& line : q->listing()) {
      const int length = static_cast<int>(line.size());
      A_WRITELINE(channel, line.data(), &length);
    }
  });
}

}  // extern "C"
