#include "host/atomic_file.h"

#include <fmt/format.h>

namespace subsurf {

AtomicFile::~AtomicFile() { discard(); }

Status AtomicFile::open(const std::string& target) {
  discard();
  target_ = target;
  writeFailed_ = false;
  file_ = std::make_unique<SafeFile>(target, Durability::Flushed, SpecialTargets::WriteThrough);
  if (Status s = file_->open(); !s) {
    file_.reset();
    return Status::error(fmt::format("Cannot write {}: {}", target, s.message()));
  }
  return Status::ok();
}

void AtomicFile::write(std::string_view text) {
  if (!isOpen()) return;
  if (std::fwrite(text.data(), 1, text.size(), file_->stream()) != text.size()) writeFailed_ = true;
}

void AtomicFile::writeLine(std::string_view text) {
  write(text);
  write("\n");
}

Status AtomicFile::commit() {
  if (!isOpen()) return Status::error(fmt::format("Cannot write {}: file not open", target_));
  Status s = writeFailed_ ? Status::error("the file could not be written completely") : file_->commit();
  file_.reset();  // discards the temporary file when anything failed
  if (!s) return Status::error(fmt::format("Cannot write {}: {}", target_, s.message()));
  return Status::ok();
}

void AtomicFile::discard() { file_.reset(); }

Status writeFileAtomically(const std::string& target, std::string_view text) {
  AtomicFile file;
  if (Status s = file.open(target); !s) return s;
  file.write(text);
  return file.commit();
}

}  // namespace subsurf
