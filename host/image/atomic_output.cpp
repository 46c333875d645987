#include "host/image/atomic_output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <random>

#include <fmt/format.h>

namespace subsurf::image {
namespace {

// Several threads (one per photo) may write into the same folder at once;
// the process id, a counter and a random tag keep their temporary names apart.
std::string temporaryName(const std::string& target) {
  static std::atomic<unsigned> counter{0};
  thread_local std::mt19937 random{std::random_device{}()};
  const std::size_t slash = target.find_last_of('/');
  const std::string folder = slash == std::string::npos ? std::string() : target.substr(0, slash + 1);
  const std::string name = slash == std::string::npos ? target : target.substr(slash + 1);
  return fmt::format("{}.{}.{}-{}-{:06x}.part", folder, name, static_cast<long>(::getpid()),
                     counter.fetch_add(1), random() & 0xffffff);
}

}  // namespace

std::string errnoText(int error) { return std::strerror(error); }

AtomicOutput::AtomicOutput(std::string target) : target_(std::move(target)) {}

AtomicOutput::~AtomicOutput() { discard(); }

Status AtomicOutput::open() {
  discard();
  if (target_.empty()) return Status::error("no file name given");
  for (int attempt = 0; attempt < 16; ++attempt) {
    tempPath_ = temporaryName(target_);
    // 0666 before the umask, as for any file the user creates.
    const int fd = ::open(tempPath_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) {
      if (errno == EEXIST) continue;
      return Status::error("cannot create the file: " + errnoText(errno));
    }
    pending_ = true;
    stream_ = ::fdopen(fd, "wb");
    if (stream_ == nullptr) {
      const int error = errno;
      ::close(fd);
      discard();
      return Status::error("cannot create the file: " + errnoText(error));
    }
    return Status::ok();
  }
  return Status::error("cannot create a temporary file beside it");
}

Status AtomicOutput::closeStream() {
  if (stream_ == nullptr) return Status::ok();
  const bool failed = std::ferror(stream_) != 0;
  const int flushed = std::fflush(stream_);
  const int error = errno;
  const int closed = std::fclose(stream_);
  const int closeError = errno;
  stream_ = nullptr;
  if (failed) return Status::error("the file could not be written completely");
  if (flushed != 0) return Status::error("cannot write the file: " + errnoText(error));
  if (closed != 0) return Status::error("cannot write the file: " + errnoText(closeError));
  return Status::ok();
}

Status AtomicOutput::commit() {
  if (!pending_) return Status::error("nothing was written");
  if (Status s = closeStream(); !s) {
    discard();
    return s;
  }
  // An existing file of that name is removed first rather than renamed over:
  // on ext4, renaming over a file makes the kernel push the new file's data
  // to disk at once (its guard against empty files after a crash), which
  // more than doubles the time of a re-run that replaces every row image.
  // The name is briefly absent, never attached to a partial file.
  struct stat st {};
  if (::lstat(target_.c_str(), &st) == 0 && S_ISREG(st.st_mode)) ::unlink(target_.c_str());
  if (std::rename(tempPath_.c_str(), target_.c_str()) != 0) {
    const int error = errno;
    discard();
    return Status::error("cannot replace the file: " + errnoText(error));
  }
  pending_ = false;
  return Status::ok();
}

void AtomicOutput::discard() {
  if (stream_ != nullptr) {
    std::fclose(stream_);
    stream_ = nullptr;
  }
  if (pending_) {
    ::unlink(tempPath_.c_str());
    pending_ = false;
  }
}

}  // namespace subsurf::image
