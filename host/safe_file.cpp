#include "host/safe_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>
#include <random>
#include <set>

#include <fmt/format.h>

namespace subsurf {
namespace {

constexpr std::string_view kTempSuffix = ".part";
constexpr int kMaxLinkHops = 40;
constexpr std::time_t kStaleAge = 24 * 60 * 60;

std::atomic<int> gFailRenames{0};
std::atomic<int> gFailRenameError{EIO};

std::string reason(int error) { return std::strerror(error); }

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return path.substr(0, slash);
}

// Several threads (one per photo) may write into the same folder at once; the
// process id (which also tells a later run whether the writer still lives), a
// counter and a random tag keep their temporary names apart.
std::string temporaryName(const std::string& target) {
  static std::atomic<unsigned> counter{0};
  thread_local std::mt19937 random{std::random_device{}()};
  const std::size_t slash = target.find_last_of('/');
  const std::string folder = slash == std::string::npos ? std::string() : target.substr(0, slash + 1);
  std::string name = slash == std::string::npos ? target : target.substr(slash + 1);
  // A temporary name must fit where the target's name fits.
  if (name.size() > 200) name.resize(200);
  return fmt::format("{}.{}.{}-{}-{:06x}{}", folder, name, static_cast<long>(::getpid()), counter.fetch_add(1),
                     random() & 0xffffff, kTempSuffix);
}

// The process id a temporary name carries, or 0.
long writerOf(std::string_view fileName) {
  if (!isTemporaryName(fileName)) return 0;
  fileName.remove_suffix(kTempSuffix.size());
  const std::size_t dot = fileName.find_last_of('.');
  const std::string_view tag = fileName.substr(dot + 1);
  long pid = 0;
  const auto [end, ec] = std::from_chars(tag.data(), tag.data() + tag.size(), pid);
  if (ec != std::errc() || end == tag.data() || *end != '-') return 0;
  return pid;
}

int renameInPlace(const char* from, const char* to, unsigned flags) {
  if (gFailRenames.load() > 0 && gFailRenames.fetch_sub(1) > 0) {
    errno = gFailRenameError.load();
    return -1;
  }
  return ::renameat2(AT_FDCWD, from, AT_FDCWD, to, flags);
}

void syncFolder(const std::string& folder) {
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);  // some file systems cannot sync a folder; the rename itself stands
  ::close(fd);
}

// Stale temporaries are looked for once per folder and process.
void cleanFolderOnce(const std::string& folder) {
  static std::mutex mutex;
  static std::set<std::string> cleaned;
  {
    std::lock_guard lock(mutex);
    if (!cleaned.insert(folder).second) return;
  }
  removeStaleTemporaries(folder);
}

}  // namespace

bool isTemporaryName(std::string_view fileName) {
  return fileName.size() > 1 + kTempSuffix.size() && fileName.front() == '.' && fileName.ends_with(kTempSuffix);
}

int removeStaleTemporaries(const std::string& folder) {
  DIR* dir = ::opendir(folder.c_str());
  if (dir == nullptr) return 0;
  const long self = static_cast<long>(::getpid());
  const std::time_t now = std::time(nullptr);
  int removed = 0;
  while (const dirent* entry = ::readdir(dir)) {
    const std::string_view name = entry->d_name;
    const long pid = writerOf(name);
    if (pid <= 0 || pid == self) continue;
    const std::string path = folder + "/" + std::string(name);
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) continue;
    const bool writerGone = ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH;
    // A process id is reused in time; a day-old temporary is no one's.
    if (writerGone || now - st.st_mtime > kStaleAge) {
      if (::unlink(path.c_str()) == 0) ++removed;
    }
  }
  ::closedir(dir);
  return removed;
}

void failNextRenamesForTesting(int count, int error) {
  gFailRenameError = error;
  gFailRenames = count;
}

Status resolveWriteTarget(const std::string& target, SpecialTargets special, WriteTarget& out) {
  out = WriteTarget{};
  if (target.empty()) return Status::error("no file name given");
  // What the name finally refers to, every link followed (including the
  // kernel's own, such as /dev/stdout, whose text is no path).
  struct stat st {};
  if (::stat(target.c_str(), &st) == 0) {
    out.mode = st.st_mode & 07777;
    out.owner = st.st_uid;
    out.group = st.st_gid;
    if (S_ISFIFO(st.st_mode) || S_ISCHR(st.st_mode)) {
      if (special == SpecialTargets::Refuse) return Status::error("not a regular file; it is left as it is");
      out.path = target;
      out.kind = WriteTarget::Kind::Special;
      return Status::ok();
    }
    if (S_ISDIR(st.st_mode)) return Status::error("it is a folder");
    if (!S_ISREG(st.st_mode)) return Status::error("not a regular file; it is left as it is");
  } else if (errno != ENOENT) {
    return Status::error(reason(errno));
  }

  // A regular file, or none yet: the new file is put in place of the last
  // link's target, in that file's own folder, so the links stay.
  std::string path = target;
  for (int hop = 0;; ++hop) {
    struct stat link {};
    if (::lstat(path.c_str(), &link) != 0) {
      if (errno != ENOENT) return Status::error(reason(errno));
      out.path = path;
      out.kind = WriteTarget::Kind::Missing;
      return Status::ok();
    }
    if (!S_ISLNK(link.st_mode)) break;
    if (hop >= kMaxLinkHops) return Status::error(reason(ELOOP));
    std::string text(static_cast<std::size_t>(link.st_size > 0 ? link.st_size : 4095) + 1, '\0');
    const ssize_t n = ::readlink(path.c_str(), text.data(), text.size());
    if (n < 0) return Status::error(reason(errno));
    text.resize(static_cast<std::size_t>(n));
    path = text.starts_with('/') || path.find('/') == std::string::npos ? text : folderOf(path) + "/" + text;
  }
  out.path = path;
  out.kind = WriteTarget::Kind::Regular;
  return Status::ok();
}

SafeFile::SafeFile(std::string target, Durability durability, SpecialTargets special)
    : target_(std::move(target)), durability_(durability), special_(special) {}

SafeFile::~SafeFile() { discard(); }

Status SafeFile::open() {
  discard();
  if (Status s = resolveWriteTarget(target_, special_, resolved_); !s) return s;

  if (resolved_.kind == WriteTarget::Kind::Special) {
    // Not blocking on a FIFO nobody reads: that is an error, not a hang.
    const int fd = ::open(resolved_.path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
      if (errno == ENXIO) return Status::error("no program is reading from that pipe");
      return Status::error("cannot write the file: " + reason(errno));
    }
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    stream_ = ::fdopen(fd, "wb");
    if (stream_ == nullptr) {
      const int error = errno;
      ::close(fd);
      return Status::error("cannot write the file: " + reason(error));
    }
    tempPath_ = resolved_.path;
    return Status::ok();
  }

  cleanFolderOnce(folderOf(resolved_.path));
  for (int attempt = 0; attempt < 16; ++attempt) {
    tempPath_ = temporaryName(resolved_.path);
    // 0666 before the umask, as for any file the user creates.
    const int fd = ::open(tempPath_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) {
      if (errno == EEXIST) continue;
      return Status::error("cannot create the file: " + reason(errno));
    }
    pending_ = true;
    if (resolved_.kind == WriteTarget::Kind::Regular) {
      // The new file keeps what the old one was allowed to be: a private
      // session stays private. The owner can be kept only by root.
      if (resolved_.owner != ::geteuid() || resolved_.group != ::getegid()) {
        [[maybe_unused]] const int ignored = ::fchown(fd, resolved_.owner, resolved_.group);
      }
      ::fchmod(fd, resolved_.mode);
    }
    stream_ = ::fdopen(fd, "wb");
    if (stream_ == nullptr) {
      const int error = errno;
      ::close(fd);
      discard();
      return Status::error("cannot create the file: " + reason(error));
    }
    return Status::ok();
  }
  return Status::error("cannot create a temporary file beside it");
}

Status SafeFile::closeStream() {
  if (stream_ == nullptr) return Status::ok();
  const bool failed = std::ferror(stream_) != 0;
  int error = 0;
  if (std::fflush(stream_) != 0) error = errno;
  if (error == 0 && durability_ == Durability::Flushed && ::fsync(::fileno(stream_)) != 0) {
    // A pipe or a terminal has nothing to sync.
    if (!(writesThrough() && (errno == EINVAL || errno == EROFS))) error = errno;
  }
  if (std::fclose(stream_) != 0 && error == 0) error = errno;
  stream_ = nullptr;
  if (failed) return Status::error("the file could not be written completely");
  if (error != 0) return Status::error("cannot write the file: " + reason(error));
  return Status::ok();
}

Status SafeFile::commit() {
  if (!pending_ && !writesThrough()) return Status::error("nothing was written");
  if (Status s = closeStream(); !s) {
    discard();
    return s;
  }
  if (writesThrough()) return Status::ok();
  return putInPlace();
}

Status SafeFile::putInPlace() {
  const char* from = tempPath_.c_str();
  const char* to = resolved_.path.c_str();
  bool placed = false;
  if (durability_ == Durability::Unflushed && resolved_.kind == WriteTarget::Kind::Regular) {
    // On ext4 a rename over an existing file makes the kernel write the new
    // file's data out at once (its guard against empty files after a crash),
    // which more than doubles a re-run that replaces every row image.
    // Exchanging the two names is as atomic and not so guarded; the old
    // content is left under the temporary name and removed after.
    if (renameInPlace(from, to, RENAME_EXCHANGE) == 0) {
      ::unlink(from);
      placed = true;
    } else if (errno != EINVAL && errno != ENOSYS && errno != ENOENT && errno != EOPNOTSUPP) {
      const int error = errno;
      discard();
      return Status::error("cannot replace the file: " + reason(error));
    }
  }
  if (!placed && renameInPlace(from, to, 0) != 0) {
    const int error = errno;
    discard();
    return Status::error("cannot replace the file: " + reason(error));
  }
  pending_ = false;
  if (durability_ == Durability::Flushed) syncFolder(folderOf(resolved_.path));
  return Status::ok();
}

void SafeFile::discard() {
  if (stream_ != nullptr) {
    std::fclose(stream_);
    stream_ = nullptr;
  }
  if (pending_) {
    ::unlink(tempPath_.c_str());
    pending_ = false;
  }
}

}  // namespace subsurf
