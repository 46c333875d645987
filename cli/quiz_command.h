// `subsurf quiz FILE`: answer a questionnaire at the terminal.
//
// Walks the sections and questions, following the answers' go-to labels; at
// each question type the answer's number, "b" to go back, "s" to skip (unless
// the questionnaire requires answers) or "q" to stop. The section totals are
// shown at the end, and --out writes the answers (CSV, or JSON for a name
// ending in .json). Answers are read from standard input line by line, so a
// file or a pipe can answer for the user.
//
// Exit status 0 when the questionnaire was finished, 1 when it was stopped or
// the input ended first (the answers given so far are still written), 2 for a
// questionnaire file that cannot be read or an answers file that cannot be written.
#pragma once

#include <CLI/CLI.hpp>

namespace subsurf::cli {

void addQuizCommand(CLI::App& app, int& exitCode);

}  // namespace subsurf::cli
