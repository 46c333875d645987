#include "host/image/image_messages.h"

#include <fmt/format.h>

#include "host/messages.h"

namespace subsurf::image {

Status reportPhotoFailure(std::string_view what, std::string_view file, std::string_view reason) {
  std::string text = reason.empty() ? fmt::format("{}: {}", what, file)
                                    : fmt::format("{}: {} ({})", what, file, reason);
  host::showMessage(text);
  return Status::error(std::move(text));
}

Status reportWriteFailure(std::string_view file, bool bitmap, std::string_view reason) {
  std::string text = bitmap ? fmt::format("{} {}\n{}", file, kConvertingToBmp, kConversionFailed)
                            : fmt::format("{}\n{}", file, kConversionFailed);
  if (!reason.empty()) text += fmt::format(" ({})", reason);
  host::showMessage(text);
  return Status::error(std::move(text));
}

}  // namespace subsurf::image
