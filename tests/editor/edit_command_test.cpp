// slabber edit run as a user runs it: it prints the address to open, serves
// the session there, and on Ctrl-C stops, saying when changes were not saved.
#include <gtest/gtest.h>
#include <httplib.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <filesystem>
#include <regex>
#include <thread>

#include <nlohmann/json.hpp>

#include "support/run_program.h"

extern char** environ;

namespace subsurf {
namespace {

namespace fs = std::filesystem;
using subsurf::testing::TempDir;

class EditCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    program = subsurf::testing::builtProgram("slabber");
    ASSERT_TRUE(fs::exists(program)) << program << " has not been built";
    for (const char* name : {"sample.slbs", "TRAY_1234_5-1239_5.jpg", "TRAY_1239_5-1244_5.jpg", "TRAY_1244_5-1249_5.jpg"})
      fs::copy_file(fs::path(SUBSURF_SOURCE_DATA_DIR) / "samples" / name, dir.file(name));
  }

  // Starts `slabber edit` on the sample; returns the address it printed.
  std::string start() {
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, 1, dir.file("out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_addopen(&files, 2, dir.file("err").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const std::string session = dir.file("sample.slbs");
    const char* argv[] = {program.c_str(), "edit", session.c_str(), nullptr};
    EXPECT_EQ(posix_spawn(&pid, program.c_str(), &files, nullptr, const_cast<char* const*>(argv), environ), 0);
    posix_spawn_file_actions_destroy(&files);
    const std::regex address(R"(http://127\.0\.0\.1:(\d+)/\?token=([0-9a-f]{32}))");
    for (int i = 0; i < 400; ++i) {
      std::smatch m;
      const std::string out = TempDir::read(dir.file("out"));
      if (std::regex_search(out, m, address)) {
        port = std::stoi(m[1]);
        token = m[2];
        return m[0];
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ADD_FAILURE() << "no address printed: " << TempDir::read(dir.file("err"));
    return {};
  }

  int interrupt() {
    kill(pid, SIGINT);
    int status = 0;
    waitpid(pid, &status, 0);
    pid = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  void TearDown() override {
    if (pid > 0) interrupt();
  }

  TempDir dir;
  std::string program;
  pid_t pid = 0;
  int port = 0;
  std::string token;
};

TEST_F(EditCommand, ServesTheSessionUntilInterrupted) {
  const std::string address = start();
  ASSERT_FALSE(address.empty());
  EXPECT_EQ(TempDir::read(dir.file("out")),
            "Slabber editor for " + dir.file("sample.slbs") + ":\n  " + address + "\nStop it with Ctrl-C.\n");
  httplib::Client client("127.0.0.1", port);
  auto res = client.Get(("/api/state?token=" + token).c_str());
  ASSERT_TRUE(res);
  EXPECT_EQ(nlohmann::json::parse(res->body)["images"].size(), 3u);
  EXPECT_EQ(interrupt(), 0);
  EXPECT_EQ(TempDir::read(dir.file("err")), "");
}

TEST_F(EditCommand, UnsavedChangesAreSaidOnStopping) {
  ASSERT_FALSE(start().empty());
  const std::string before = TempDir::read(dir.file("sample.slbs"));
  httplib::Client client("127.0.0.1", port);
  auto res = client.Post(("/api/delete?token=" + token).c_str(), R"({"image": 1, "rectangle": 1})", "application/json");
  ASSERT_TRUE(res);
  EXPECT_EQ(res->status, 200);
  EXPECT_EQ(interrupt(), 1);
  EXPECT_EQ(TempDir::read(dir.file("err")), "slabber: the editor stopped with unsaved changes to " + dir.file("sample.slbs") + "\n");
  EXPECT_EQ(TempDir::read(dir.file("sample.slbs")), before);
}

TEST_F(EditCommand, RefusesWhatItCannotOpen) {
  auto run = subsurf::testing::runCommand(subsurf::testing::shellQuoted(program) + " edit " +
                                          subsurf::testing::shellQuoted(dir.file("none.slbs")));
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "slabber: Could not open the session: Cannot open " + dir.file("none.slbs") + ": No such file or directory\n");
}

}  // namespace
}  // namespace subsurf
