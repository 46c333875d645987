#include "host/image/atomic_output.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <memory>

#include <fmt/format.h>

#include "host/image/image_writer.h"

namespace subsurf::image {
namespace {

// Whether the first bytes are those every file of the format starts with.
bool startsAsFormat(const unsigned char* b, std::size_t n, ImageFormat format) {
  switch (format) {
    case ImageFormat::Bmp: return n >= 2 && b[0] == 'B' && b[1] == 'M';
    case ImageFormat::Cgm: return n >= 2 && b[0] == 0x00 && (b[1] & 0xe0) == 0x20;  // BEGIN METAFILE
    case ImageFormat::Png: return n >= 4 && std::memcmp(b, "\x89PNG", 4) == 0;
    case ImageFormat::Jpeg: return n >= 3 && b[0] == 0xFF && b[1] == 0xD8 && b[2] == 0xFF;
    case ImageFormat::Tiff:
      return n >= 4 && (std::memcmp(b, "II*\0", 4) == 0 || std::memcmp(b, "MM\0*", 4) == 0 ||
                        std::memcmp(b, "II+\0", 4) == 0 || std::memcmp(b, "MM\0+", 4) == 0);
  }
  return false;
}

}  // namespace

std::string errnoText(int error) { return std::strerror(error); }

Status checkImageReplaceable(const std::string& path) {
  const std::optional<ImageFormat> format = formatForFileName(path);
  if (!format) return Status::ok();
  // Only a regular file is looked into (a pipe would block the read); what
  // else may be there is SafeFile's to judge.
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode) || st.st_size == 0) return Status::ok();
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!file) return Status::ok();  // nothing there, or nothing we could read to replace
  unsigned char head[8] = {};
  const std::size_t n = std::fread(head, 1, sizeof head, file.get());
  if (n == 0 || startsAsFormat(head, n, *format)) return Status::ok();
  return Status::error(fmt::format("a file that is not a {} image is already there; it is left as it is",
                                   formatSuffix(*format).substr(1)));
}

Status AtomicOutput::open() {
  if (Status s = checkImageReplaceable(target()); !s) return s;
  return SafeFile::open();
}

}  // namespace subsurf::image
