// The answers of a questionnaire as a file: comma-separated keyword rows, or
// JSON when the file name ends in ".json" (both described in
// docs/questionnaires.md). Written whole to a temporary file and renamed over
// the target, so an earlier answers file survives a failed write.
#pragma once

#include <string>

#include "host/status.h"
#include "questionnaire/questionnaire.h"

namespace subsurf::qa {

// Totals the sections (check over all) and writes the answers.
Status writeAnswers(Questionnaire& q, const std::string& path);
std::string answersCsv(Questionnaire& q);
std::string answersJson(Questionnaire& q);

}  // namespace subsurf::qa
