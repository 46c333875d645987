#include "cli_support.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <string>
#include <vector>

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

namespace {

std::size_t editDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t up = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = up;
    }
  }
  return row[b.size()];
}

// A word given where a subcommand is expected that names none: the nearest
// subcommand is suggested. Returns false (after saying so) for such a word.
bool subcommandsKnown(CLI::App& app, int argc, char** argv) {
  CLI::App* level = &app;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const auto subs = level->get_subcommands([](CLI::App*) { return true; });
    if (subs.empty() || word.empty() || word[0] == '-') return true;
    CLI::App* found = nullptr;
    for (CLI::App* sub : subs)
      if (sub->check_name(word)) found = sub;
    if (found) {
      level = found;
      continue;
    }
    const CLI::App* nearest = nullptr;
    std::size_t best = 0;
    for (CLI::App* sub : subs) {
      const std::size_t d = editDistance(word, sub->get_name());
      if (!nearest || d < best) nearest = sub, best = d;
    }
    std::string path = level == &app ? std::string() : level->get_name() + " ";
    std::fprintf(stderr, "%s: unknown command \"%s\"; did you mean \"%s%s\"? (%s --help lists them)\n", gProgram,
                 word.c_str(), path.c_str(), nearest->get_name().c_str(), gProgram);
    return false;
  }
  return true;
}

}  // namespace

int runApp(CLI::App& app, int argc, char** argv, const int& exitCode) {
  app.set_version_flag("--version", std::string(gProgram) + " " + SUBSURF_VERSION);
  if (!subcommandsKnown(app, argc, argv)) return kExitBadInput;
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
