// Shared pieces of the questionnaire tests: writing a questionnaire file and
// loading it through the exported routines.
#pragma once

#include <string>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "subsurf/questionnaire.h"
#include "support/temp_dir.h"

namespace subsurf::testing {

inline std::string padded(const std::string& text, std::size_t width) {
  std::string out = text;
  out.resize(width, ' ');
  return out;
}

// Loads text written to a file of the scratch folder; the handle (0 on failure).
inline int loadText(const TempDir& dir, const std::string& text, int* statusOut = nullptr,
                    const std::string& name = "q.csv") {
  const std::string path = dir.write(name, text);
  int handle = -1, status = -1;
  QA_LOAD(padded(path, 260).c_str(), &handle, &status);
  if (statusOut) *statusOut = status;
  return handle;
}

inline std::string shippedQuestionnaire() {
  return std::string(SUBSURF_SOURCE_DATA_DIR) + "/questionnaires/core-reservoir-quality.csv";
}

}  // namespace subsurf::testing
