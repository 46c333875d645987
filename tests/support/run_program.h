// Running the built programs as a user runs them, for the command-line tests.
#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <string>

#include "support/temp_dir.h"

namespace subsurf::testing {

struct CommandRun {
  int status = -1;  // exit status; -1 when the program did not exit normally
  std::string out, err;
};

// A program of the build tree's cli folder (SUBSURF_CLI_DIR when set).
inline std::string builtProgram(const std::string& name) {
  const char* dir = std::getenv("SUBSURF_CLI_DIR");
  return std::string(dir && *dir ? dir : SUBSURF_CLI_DIR) + "/" + name;
}

// A word quoted for the shell, whatever characters it holds.
inline std::string shellQuoted(const std::string& s) {
  std::string q(1, '\'');
  for (char c : s) {
    if (c == '\'') q.append("'\\''");
    else q.push_back(c);
  }
  q.push_back('\'');
  return q;
}

// Runs a shell command line with no standard input, capturing both outputs.
inline CommandRun runCommand(const std::string& commandLine) {
  TempDir scratch;
  const std::string out = scratch.file("stdout"), err = scratch.file("stderr");
  const int raw = std::system(("( " + commandLine + " ) >" + out + " 2>" + err + " </dev/null").c_str());
  CommandRun r;
  r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  r.out = TempDir::read(out);
  r.err = TempDir::read(err);
  return r;
}

// A leak-checking build reports the suppressions it used after the program's
// own words; tests of what a program says drop that report.
inline CommandRun withoutSuppressionReport(CommandRun r) {
  if (const auto at = r.err.find("-----------------------------------------------------\nSuppressions used:");
      at != std::string::npos)
    r.err.erase(at);
  return r;
}

}  // namespace subsurf::testing
