#include "cli_support.h"

#include <cstdio>

#include "host/messages.h"

namespace subsurf::cli {
namespace {
const char* gProgram = "subsurf";
void printMessage(void*, const char* text) { std::fprintf(stderr, "%s: %s\n", gProgram, text); }
}  // namespace

void installTerminalHost(const char* programName) {
  gProgram = programName;
  host::HostCallbacks cb;
  cb.message = printMessage;
  host::setHostCallbacks(cb);
}

int runApp(CLI::App& app, int argc, char** argv, const int& exitCode) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    const int rc = app.exit(e);
    return rc == 0 ? kExitOk : kExitBadInput;
  }
  return exitCode;
}

}  // namespace subsurf::cli
