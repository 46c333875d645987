// Helpers of the reliability tests: a session of small tray photographs run
// through the built programs, child processes killed part-way, and files
// damaged on purpose.
#pragma once

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "core/session_files.h"
#include "split/split_test_support.h"
#include "support/run_program.h"

namespace subsurf::reliability {

using split::testing::filesIn;
using split::testing::readLines;
using subsurf::testing::CommandRun;
namespace fs = std::filesystem;

inline std::string slabber() { return subsurf::testing::builtProgram("slabber"); }
inline std::string subsurfProgram() { return subsurf::testing::builtProgram("subsurf"); }

inline std::string readAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}
inline void writeAll(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// How a child process ended.
struct Ending {
  bool signalled = false;
  int signal = 0;
  int status = -1;
};
inline Ending waitFor(pid_t pid) {
  int raw = 0;
  ::waitpid(pid, &raw, 0);
  Ending e;
  e.signalled = WIFSIGNALED(raw);
  e.signal = e.signalled ? WTERMSIG(raw) : 0;
  e.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  return e;
}

// Starts a program with its output thrown away, kills it after `delay`
// (unless it finished first) and says how it ended.
inline Ending runAndKill(const std::vector<std::string>& argv, std::chrono::microseconds delay) {
  const pid_t pid = ::fork();
  if (pid == 0) {
    std::vector<char*> args;
    for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    const int null = ::open("/dev/null", O_RDWR);
    ::dup2(null, 0);
    ::dup2(null, 1);
    ::dup2(null, 2);
    ::execv(args[0], args.data());
    ::_exit(127);
  }
  const auto deadline = std::chrono::steady_clock::now() + delay;
  int raw = 0;
  while (std::chrono::steady_clock::now() < deadline) {
    if (::waitpid(pid, &raw, WNOHANG) == pid) {  // finished first
      Ending e;
      e.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
      return e;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  ::kill(pid, SIGKILL);
  return waitFor(pid);
}

// A process id no process has: a child that has already been reaped.
inline pid_t deadProcessId() {
  const pid_t pid = ::fork();
  if (pid == 0) ::_exit(0);
  waitFor(pid);
  return pid;
}

// Temporary files (".NAME.PID-N-TAG.part") in a folder.
inline std::vector<std::string> temporariesIn(const std::string& folder) {
  std::vector<std::string> found;
  for (const std::string& name : filesIn(folder))
    if (name.front() == '.' && name.ends_with(".part")) found.push_back(name);
  return found;
}

// Three trays T1..T3 of 300 x 200 pixels and five rows of 1 m each from
// 1000 m, saved as a session; messages recorded, not printed.
class SessionOnDisk : public split::testing::SplitTest {
 protected:
  void SetUp() override {
    if (!fs::exists(slabber())) GTEST_SKIP() << slabber() << " is not built";
    SplitTest::SetUp();
    for (int i = 1; i <= 3; ++i) {
      photos.push_back(dir.file("T" + std::to_string(i) + ".png"));
      split::testing::makePhoto(photos.back(), 300, 200);
      split::testing::addTray(session, photos.back(), 300, 200, 5, 1000.0f + 5.0f * static_cast<float>(i - 1), 1.0f);
    }
    sessionFile = dir.file("s.slbs");
    save();
  }
  void save() { ASSERT_TRUE(saveSession(session, sessionOptions, sessionFile)); }
  CommandRun run(const std::string& args) { return subsurf::testing::runCommand(slabber() + " " + args); }

  std::vector<std::string> photos;
  SessionOptions sessionOptions;
  std::string sessionFile;
};

}  // namespace subsurf::reliability
