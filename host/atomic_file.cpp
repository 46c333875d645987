#include "host/atomic_file.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <unistd.h>

#include <fmt/format.h>

namespace subsurf {

std::string temporaryNameFor(const std::string& target) {
  static std::atomic<unsigned> counter{0};
  namespace fs = std::filesystem;
  fs::path p(target);
  std::string name = fmt::format(".{}.{}-{}.part", p.filename().string(), ::getpid(), counter++);
  return (p.parent_path() / name).string();
}

Status replaceFile(const std::string& temp, const std::string& target) {
  if (std::rename(temp.c_str(), target.c_str()) != 0) {
    const std::string reason = std::strerror(errno);
    std::remove(temp.c_str());
    return Status::error(fmt::format("Cannot replace {}: {}", target, reason));
  }
  return Status::ok();
}

AtomicFile::~AtomicFile() { discard(); }

Status AtomicFile::open(const std::string& target) {
  discard();
  target_ = target;
  temp_ = temporaryNameFor(target);
  writeFailed_ = false;
  file_ = std::fopen(temp_.c_str(), "wb");
  if (!file_) return Status::error(fmt::format("Cannot write {}: {}", target, std::strerror(errno)));
  return Status::ok();
}

void AtomicFile::write(std::string_view text) {
  if (!file_) return;
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) writeFailed_ = true;
}

void AtomicFile::writeLine(std::string_view text) {
  write(text);
  write("\n");
}

Status AtomicFile::commit() {
  if (!file_) return Status::error(fmt::format("Cannot write {}: file not open", target_));
  bool ok = !writeFailed_ && std::fflush(file_) == 0 && ::fsync(::fileno(file_)) == 0;
  const int savedErrno = errno;
  ok = (std::fclose(file_) == 0) && ok;
  file_ = nullptr;
  if (!ok) {
    std::remove(temp_.c_str());
    return Status::error(fmt::format("Cannot write {}: {}", target_,
                                     std::strerror(savedErrno ? savedErrno : EIO)));
  }
  return replaceFile(temp_, target_);
}

void AtomicFile::discard() {
  if (file_) {
    std::fclose(file_);
    file_ = nullptr;
    std::remove(temp_.c_str());
  }
}

Status writeFileAtomically(const std::string& target, std::string_view text) {
  AtomicFile file;
  if (Status s = file.open(target); !s) return s;
  file.write(text);
  return file.commit();
}

}  // namespace subsurf
