// Saving never destroys what was there: killed and failed saves, symlinks,
// pipes and devices, permission bits, and the temporaries of killed runs.
#include <sys/stat.h>

#include <cerrno>
#include <future>

#include <fmt/format.h>

#include "core/session_files.h"
#include "host/atomic_file.h"
#include "host/image/image_writer.h"
#include "host/image/photo.h"
#include "host/safe_file.h"
#include "reliability/reliability_support.h"
#include "support/temp_dir.h"

namespace subsurf::reliability {
namespace {

using subsurf::testing::TempDir;

Status saveText(const std::string& path, const std::string& text) {
  AtomicFile f;
  if (Status s = f.open(path); !s) return s;
  f.write(text);
  return f.commit();
}

TEST(SafeSave, KilledHalfWayLeavesTheOldFileWholeAndTheNextSaveClearsTheDebris) {
  TempDir dir;
  const std::string target = dir.write("work.slbs", "the old session\n");
  for (bool flushed : {true, false}) {
    SCOPED_TRACE(flushed ? "work file" : "image");
    const pid_t child = ::fork();
    if (child == 0) {
      SafeFile f(target, flushed ? Durability::Flushed : Durability::Unflushed);
      if (!f.open()) ::_exit(3);
      std::fputs("half of the new", f.stream());
      std::fflush(f.stream());
      ::raise(SIGKILL);  // between writing and putting in place
      ::_exit(4);
    }
    const Ending e = waitFor(child);
    ASSERT_TRUE(e.signalled) << "status " << e.status;
    EXPECT_EQ(e.signal, SIGKILL);
    EXPECT_EQ(TempDir::read(target), "the old session\n");
    EXPECT_EQ(temporariesIn(dir.path()).size(), 1u);
    // The killed process's temporary file is removed by the next writer.
    EXPECT_EQ(removeStaleTemporaries(dir.path()), 1);
    EXPECT_EQ(dir.list(), std::vector<std::string>{"work.slbs"});
  }
  // A new process cleans the folder on its first save there.
  const pid_t child = ::fork();
  if (child == 0) {
    SafeFile f(target, Durability::Flushed);
    if (f.open()) std::fputs("x", f.stream());
    ::raise(SIGKILL);
  }
  waitFor(child);
  ASSERT_EQ(temporariesIn(dir.path()).size(), 1u);
  const pid_t saver = ::fork();
  if (saver == 0) ::_exit(saveText(target, "the new session\n") ? 0 : 1);
  EXPECT_EQ(waitFor(saver).status, 0);
  EXPECT_EQ(TempDir::read(target), "the new session\n");
  EXPECT_EQ(dir.list(), std::vector<std::string>{"work.slbs"});
}

TEST(SafeSave, TemporariesOfRunningProcessesAndOtherFilesAreKept) {
  TempDir dir;
  const std::string mine = fmt::format(".row.bmp.{}-0-00abcd.part", ::getpid());
  const std::string running = ".row.bmp.1-0-00abcd.part";  // process 1 always runs
  const std::string dead = fmt::format(".row.bmp.{}-7-123abc.part", deadProcessId());
  for (const std::string& name : {mine, running, dead, std::string(".hidden.part"), std::string("row.bmp")})
    dir.write(name, "x");
  EXPECT_EQ(removeStaleTemporaries(dir.path()), 1);
  std::vector<std::string> expected{".hidden.part", mine, running, "row.bmp"};
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(dir.list(), expected);
}

TEST(SafeSave, ASymlinkIsFollowedAndKept) {
  TempDir dir;
  fs::create_directories(dir.file("real"));
  const std::string real = dir.write("real/session.slbs", "old\n");
  const std::string link = dir.file("session.slbs");
  fs::create_symlink("real/session.slbs", link);
  ASSERT_TRUE(saveText(link, "new\n"));
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(TempDir::read(real), "new\n");
  EXPECT_EQ(dir.list(), (std::vector<std::string>{"real", "session.slbs"}));
  // A link to a file not yet made makes that file.
  const std::string dangling = dir.file("next.slbs");
  fs::create_symlink("real/next.slbs", dangling);
  ASSERT_TRUE(saveText(dangling, "first\n"));
  EXPECT_TRUE(fs::is_symlink(dangling));
  EXPECT_EQ(TempDir::read(dir.file("real/next.slbs")), "first\n");
  // A loop of links is an error, not a hang.
  fs::create_symlink("loop-b", dir.file("loop-a"));
  fs::create_symlink("loop-a", dir.file("loop-b"));
  Status s = saveText(dir.file("loop-a"), "x");
  EXPECT_EQ(s.message(), "Cannot write " + dir.file("loop-a") + ": Too many levels of symbolic links");
}

TEST(SafeSave, PermissionBitsOfTheOldFileAreKept) {
  TempDir dir;
  for (mode_t mode : {0600, 0640, 0444, 0755}) {
    const std::string path = dir.write("s.slbs", "old\n");
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    ASSERT_TRUE(saveText(path, "new\n"));
    struct stat st {};
    ASSERT_EQ(::stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, mode) << std::oct << mode;
    EXPECT_EQ(TempDir::read(path), "new\n");
    fs::remove(path);
  }
  // A row image too.
  const std::string image = dir.file("row.bmp");
  split::testing::makePhoto(dir.file("p.png"), 20, 10);
  image::Photo photo;
  ASSERT_TRUE(image::Photo::load(dir.file("p.png"), photo));
  ASSERT_TRUE(image::cutToFile(photo, {{0, 0, 5, 5}}, image, image::ImageFormat::Bmp));
  ASSERT_EQ(::chmod(image.c_str(), 0604), 0);
  ASSERT_TRUE(image::cutToFile(photo, {{0, 0, 6, 6}}, image, image::ImageFormat::Bmp));
  struct stat st {};
  ASSERT_EQ(::stat(image.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0604u);
}

TEST(SafeSave, APipeIsWrittenThroughAndNeverReplaced) {
  TempDir dir;
  const std::string fifo = dir.file("pipe");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  // Nobody reading: an error at once rather than a program that hangs.
  Status s = saveText(fifo, "lost\n");
  EXPECT_EQ(s.message(), "Cannot write " + fifo + ": no program is reading from that pipe");
  auto reader = std::async(std::launch::async, [&] { return TempDir::read(fifo); });
  // The reader may not have opened its end yet: try until it has.
  for (int i = 0; i < 2000 && !(s = saveText(fifo, "through the pipe\n")); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  ASSERT_TRUE(s) << s.message();
  EXPECT_EQ(reader.get(), "through the pipe\n");
  EXPECT_TRUE(fs::is_fifo(fifo));
  EXPECT_EQ(dir.list(), std::vector<std::string>{"pipe"});
}

TEST(SafeSave, TheUnitsScriptWrittenToADeviceLeavesTheDevice) {
  if (!fs::exists(subsurfProgram())) GTEST_SKIP() << "the subsurf program is not built";
  const CommandRun r = subsurf::testing::runCommand(subsurfProgram() + " units sql /dev/null");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "SQL script written to /dev/null\n");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  // And through a pipe to another program.
  const CommandRun piped = subsurf::testing::runCommand(subsurfProgram() + " units sql /dev/stdout | grep -c 'INSERT INTO'");
  EXPECT_EQ(piped.status, 0) << piped.err;
  EXPECT_GT(std::stoi(piped.out.empty() ? "0" : piped.out), 0);
}

TEST(SafeSave, AFailedRenameKeepsTheOldSessionAndLeavesNoTemporary) {
  TempDir dir;
  const std::string path = dir.write("s.slbs", "months of work\n");
  for (int error : {EIO, ENOSPC, EXDEV, EACCES}) {
    failNextRenamesForTesting(2, error);
    Status s = saveText(path, "new\n");
    failNextRenamesForTesting(0, 0);
    EXPECT_EQ(s.message(), "Cannot write " + path + ": cannot replace the file: " + std::strerror(error));
    EXPECT_EQ(TempDir::read(path), "months of work\n");
    EXPECT_EQ(dir.list(), std::vector<std::string>{"s.slbs"});
  }
}

}  // namespace
}  // namespace subsurf::reliability
