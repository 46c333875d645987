// Status: the outcome of an engine operation, with a message a user can act on.
//
// Engine code returns a Status instead of throwing; the exported routines turn
// it into the integer status words of the C interface.
#pragma once

#include <string>
#include <utility>

namespace subsurf {

class Status {
 public:
  Status() = default;  // success
  static Status ok() { return Status(); }
  static Status error(std::string message) { return Status(std::move(message)); }

  bool isOk() const { return !failed_; }
  explicit operator bool() const { return !failed_; }
  const std::string& message() const { return message_; }

 private:
  explicit Status(std::string message) : failed_(true), message_(std::move(message)) {}
  bool failed_ = false;
  std::string message_;
};

}  // namespace subsurf
