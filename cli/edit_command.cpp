#include "edit_command.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

#include "cli_support.h"
#include "editor/editor_server.h"

extern char** environ;

namespace subsurf::cli {
namespace {

struct EditOptions {
  std::string session;
  int port = 0;
  bool open = false;
};

// Opens the address in the desktop's browser; the editor goes on without it.
void openInBrowser(const std::string& address) {
  pid_t pid = 0;
  const char* argv[] = {"xdg-open", address.c_str(), nullptr};
  if (posix_spawnp(&pid, "xdg-open", nullptr, nullptr, const_cast<char* const*>(argv), environ) != 0) {
    std::fprintf(stderr, "slabber: xdg-open could not be started; open the address above in a browser\n");
    return;
  }
  std::thread([pid] { waitpid(pid, nullptr, 0); }).detach();
}

int runEdit(const EditOptions& o) {
  // Interrupts are waited for on a thread of their own, which stops the
  // server; the main thread then finds out whether work is unsaved.
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGINT);
  sigaddset(&stopSignals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

  auto server = std::make_unique<editor::EditorServer>();
  // From here on the engine's messages go to the page.
  if (Status s = server->open(o.session); !s) {
    std::fprintf(stderr, "slabber: %s\n", s.message().c_str());
    return kExitBadInput;
  }
  if (Status s = server->bind(o.port); !s) {
    std::fprintf(stderr, "slabber: %s\n", s.message().c_str());
    return kExitBadInput;
  }
  std::printf("Slabber editor for %s:\n  %s\nStop it with Ctrl-C.\n", o.session.c_str(), server->address().c_str());
  std::fflush(stdout);
  if (o.open) openInBrowser(server->address());

  std::atomic<bool> interrupted{false};
  std::thread waiter([&server, &interrupted, stopSignals] {
    int signal = 0;
    sigwait(&stopSignals, &signal);
    interrupted = true;
    server->stop();
  });
  server->run();
  // The server may also stop on its own (a failed accept): wake the waiter.
  if (!interrupted) kill(getpid(), SIGTERM);
  waiter.join();
  if (server->unsaved()) {
    std::fprintf(stderr, "slabber: the editor stopped with unsaved changes to %s\n", o.session.c_str());
    return kExitPartial;
  }
  return kExitOk;
}

}  // namespace

void addEditCommand(CLI::App& app, int& exitCode) {
  auto o = std::make_shared<EditOptions>();
  CLI::App* edit = app.add_subcommand("edit", "Mark, adjust and check the rows of a session in the browser");
  edit->add_option("session", o->session, "Session file")->required();
  edit->add_option("--port", o->port, "Port on 127.0.0.1 (default: a free one)")->check(CLI::Range(0, 65535));
  edit->add_flag("--open", o->open, "Open the page in the desktop's browser (xdg-open)");
  edit->callback([o, &exitCode] { exitCode = runEdit(*o); });
}

}  // namespace subsurf::cli
