#include "cli_support.h"

#include <cstdio>
#include <exception>
#include <new>

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
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "%s: out of memory\n", gProgram);
    return kExitBadInput;
  } catch (const std::exception& e) {
    // Whatever a command did not foresee (a file system error, a name too
    // long) ends the program with its reason, never with an abort.
    std::fprintf(stderr, "%s: %s\n", gProgram, e.what());
    return kExitBadInput;
  } catch (...) {
    std::fprintf(stderr, "%s: unexpected failure\n", gProgram);
    return kExitBadInput;
  }
  return exitCode;
}

}  // namespace subsurf::cli
