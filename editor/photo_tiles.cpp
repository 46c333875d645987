#include "editor/photo_tiles.h"

#include <fmt/format.h>

#include <vips/vips8>

#include "host/image/vips_convert.h"
#include "host/image/vips_runtime.h"

namespace subsurf::editor {

struct PhotoTiles::Decoded {
  std::string path;
  vips::VImage image;
};

namespace {

constexpr int kJpegQuality = 85;

std::string encoded(vips::VImage image) {
  VipsBlob* blob = image.jpegsave_buffer(vips::VImage::option()->set("Q", kJpegQuality)->set("strip", true));
  std::size_t size = 0;
  const void* data = vips_blob_get(blob, &size);
  std::string out(static_cast<const char*>(data), size);
  vips_area_unref(VIPS_AREA(blob));
  return out;
}

Status failed(const std::string& path, const vips::VError& e) {
  return Status::error(fmt::format("Error loading: {} ({})", path, image::vipsReason(e)));
}

}  // namespace

PhotoTiles::PhotoTiles() = default;
PhotoTiles::~PhotoTiles() { delete decoded_; }

Status PhotoTiles::reduced(const std::string& path, int longest, std::string& jpeg) {
  if (Status s = image::ensureVips(); !s) return s;
  if (longest < 16 || longest > kMostReducedSide)
    return Status::error(fmt::format("a reduced photo is 16 to {} pixels across", kMostReducedSide));
  try {
    vips::VImage small = vips::VImage::thumbnail(path.c_str(), longest,
                                                 vips::VImage::option()->set("height", longest)->set("size", VIPS_SIZE_DOWN));
    jpeg = encoded(image::toRgb8(small));
    return Status::ok();
  } catch (const vips::VError& e) {
    return failed(path, e);
  }
}

Status PhotoTiles::tile(const std::string& path, int level, int column, int row, std::string& jpeg) {
  if (Status s = image::ensureVips(); !s) return s;
  if (level < 0 || level > kMostTileLevel || column < 0 || row < 0)
    return Status::error(fmt::format("no tile {}/{}/{}", level, column, row));
  std::lock_guard lock(mutex_);
  try {
    if (!decoded_ || decoded_->path != path) {
      vips::VImage whole = vips::VImage::new_from_file(path.c_str(), vips::VImage::option()->set("access", VIPS_ACCESS_RANDOM));
      whole = image::toRgb8(whole.autorot()).copy_memory();
      delete decoded_;
      decoded_ = new Decoded{path, whole};
    }
    const vips::VImage& whole = decoded_->image;
    const long long scale = 1LL << level;
    const long long span = kTileSize * scale;
    const long long x = column * span, y = row * span;
    if (x >= whole.width() || y >= whole.height())
      return Status::error(fmt::format("no tile {}/{}/{}: the photo is {} x {} pixels", level, column, row, whole.width(),
                                       whole.height()));
    const int w = static_cast<int>(std::min<long long>(span, whole.width() - x));
    const int h = static_cast<int>(std::min<long long>(span, whole.height() - y));
    vips::VImage part = whole.extract_area(static_cast<int>(x), static_cast<int>(y), w, h);
    if (scale > 1) {
      const int outW = std::max(1, static_cast<int>(w / scale)), outH = std::max(1, static_cast<int>(h / scale));
      part = part.resize(static_cast<double>(outW) / w, vips::VImage::option()->set("vscale", static_cast<double>(outH) / h));
    }
    jpeg = encoded(part);
    return Status::ok();
  } catch (const vips::VError& e) {
    return failed(path, e);
  }
}

}  // namespace subsurf::editor
