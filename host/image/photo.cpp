#include "host/image/photo.h"

#include <sys/stat.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <numbers>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <vips/vips8>

#include "host/image/bmp.h"
#include "host/image/image_messages.h"
#include "host/image/pixel_limit.h"
#include "host/image/vips_convert.h"
#include "host/image/vips_runtime.h"

namespace subsurf::image {

vips::VImage toRgb8(vips::VImage img) {
  using vips::VImage;
  if (img.has_alpha()) {
    const double white = img.format() == VIPS_FORMAT_USHORT ? 65535.0 : 255.0;
    img = img.flatten(VImage::option()->set("background", std::vector<double>{white}));
  }
  if (img.interpretation() != VIPS_INTERPRETATION_sRGB || img.format() != VIPS_FORMAT_UCHAR ||
      img.bands() != 3) {
    img = img.colourspace(VIPS_INTERPRETATION_sRGB);
    if (img.format() != VIPS_FORMAT_UCHAR) img = img.cast(VIPS_FORMAT_UCHAR);
    if (img.bands() == 1) img = img.bandjoin({img, img});
    if (img.bands() > 3) img = img.extract_band(0, VImage::option()->set("n", 3));
  }
  return img;
}

std::string vipsReason(const vips::VError& e) {
  std::string text = e.what();
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  for (char& c : text)
    if (c == '\n') c = ' ';
  vips_error_clear();
  return text;
}

using vips::VError;
using vips::VImage;

namespace {

// Why a path cannot be read at all, or empty when it is a readable file.
std::string unreadableReason(const std::string& path) {
  struct stat st {};
  if (path.empty()) return "no file name given";
  if (::stat(path.c_str(), &st) != 0) return errno == ENOENT ? "file not found" : std::strerror(errno);
  if (!S_ISREG(st.st_mode)) return "not a file";
  return {};
}

// Rows of a lazily computed libvips image, computed a strip at a time on the
// calling thread. The strip region is reused from call to call.
class VipsRowSource : public RowSource {
 public:
  explicit VipsRowSource(VImage image) : image_(std::move(image)), region_(image_.region()) {}
  int width() const override { return image_.width(); }
  int height() const override { return image_.height(); }
  Status readRows(int y0, int count, std::uint8_t* dst, std::size_t dstStride) override {
    if (y0 < 0 || count < 0 || y0 + count > height()) return Status::error("rows out of range");
    try {
      region_.prepare(0, y0, width(), count);
    } catch (const VError& e) {
      return Status::error(vipsReason(e));
    }
    const std::size_t n = 3 * static_cast<std::size_t>(width());
    for (int i = 0; i < count; ++i) {
      std::memcpy(dst + static_cast<std::size_t>(i) * dstStride, region_.addr(0, y0 + i), n);
    }
    return Status::ok();
  }

 private:
  VImage image_;
  vips::VRegion region_;
};

}  // namespace

namespace {

// Memory for decoded photographs. A split decodes photo after photo, each
// tens of megabytes; handing the same buffers round again spares the system
// from mapping, zeroing and faulting in fresh pages for every photo, which
// costs as much as a good part of the decoding. A few buffers are kept
// (enough for the photos being cut side by side); the rest go back.
class PixelMemory {
 public:
  struct Block {
    std::uint8_t* data = nullptr;
    std::size_t bytes = 0;
  };

  static PixelMemory& instance() {
    static PixelMemory* pool = new PixelMemory;  // lives as long as images may close
    return *pool;
  }

  Block* take(std::size_t bytes) {
    {
      std::lock_guard lock(mutex_);
      // The smallest kept block that is large enough, and not wastefully large.
      auto best = kept_.end();
      for (auto it = kept_.begin(); it != kept_.end(); ++it) {
        if ((*it)->bytes >= bytes && (*it)->bytes <= bytes + bytes / 2 &&
            (best == kept_.end() || (*it)->bytes < (*best)->bytes)) {
          best = it;
        }
      }
      if (best != kept_.end()) {
        Block* b = *best;
        kept_.erase(best);
        return b;
      }
    }
    auto* data = static_cast<std::uint8_t*>(std::malloc(bytes));
    if (data == nullptr) return nullptr;
    return new Block{data, bytes};
  }

  void give(Block* block) {
    std::lock_guard lock(mutex_);
    kept_.push_back(block);
    const std::size_t keep = std::max(2u, std::thread::hardware_concurrency());
    while (kept_.size() > keep) {
      std::free(kept_.front()->data);
      delete kept_.front();
      kept_.erase(kept_.begin());
    }
  }

  void drop() {
    std::lock_guard lock(mutex_);
    for (Block* b : kept_) {
      std::free(b->data);
      delete b;
    }
    kept_.clear();
  }

 private:
  std::mutex mutex_;
  std::vector<Block*> kept_;
};

// A libvips image over a block; the block goes back to the pool when the last
// reference to the image (the photo, or a cut still being written) is gone.
VImage wrapBlock(PixelMemory::Block* block, int width, int height, int orientation) {
  VImage image = VImage::new_from_memory(block->data, block->bytes, width, height, 3, VIPS_FORMAT_UCHAR);
  g_signal_connect(image.get_image(), "postclose",
                   G_CALLBACK(+[](VipsImage*, gpointer b) {
                     PixelMemory::instance().give(static_cast<PixelMemory::Block*>(b));
                   }),
                   block);
  image.set(VIPS_META_ORIENTATION, orientation);
  return image;
}

}  // namespace

void releaseKeptPhotoMemory() { PixelMemory::instance().drop(); }

struct Photo::Impl {
  std::string path;
  VImage decoded;  // in memory, as stored in the file
  VImage upright;  // decoded, turned the way the camera was held (lazy)
  const std::uint8_t* pixels = nullptr;  // decoded's memory
  int orientation = 1;
};

Photo::Photo() = default;
Photo::~Photo() = default;
Photo::Photo(Photo&&) noexcept = default;
Photo& Photo::operator=(Photo&&) noexcept = default;

const std::string& Photo::path() const {
  static const std::string none;
  return impl_ ? impl_->path : none;
}
int Photo::width() const { return impl_ ? impl_->upright.width() : 0; }
int Photo::height() const { return impl_ ? impl_->upright.height() : 0; }
int Photo::orientation() const { return impl_ ? impl_->orientation : 1; }
const VImage& Photo::uprightImage() const {
  static const VImage none;
  return impl_ ? impl_->upright : none;
}

std::string readImageDescription(const std::string& path) {
  if (!ensureVips() || vips_foreign_find_load(path.c_str()) == nullptr) {
    vips_error_clear();
    return "";
  }
  try {
    const VImage header = VImage::new_from_file(path.c_str());
    constexpr const char* kField = "exif-ifd0-ImageDescription";
    if (header.get_typeof(kField) == 0) return "";
    std::string text = header.get_string(kField);
    // libvips shows the value followed by " (<value>, ASCII, <n> components, <n> bytes)".
    if (const auto at = text.rfind(" ("); at != std::string::npos && text.ends_with(")")) text.erase(at);
    return text;
  } catch (const VError&) {
    vips_error_clear();
    return "";
  }
}

Status readPixelSize(const std::string& path, PixelSize& size) {
  size = {};
  if (Status s = ensureVips(); !s) return reportPhotoFailure(kErrorLoading, path, s.message());
  if (std::string why = unreadableReason(path); !why.empty()) return reportPhotoFailure(kErrorLoading, path, why);
  std::string bmpProblem;
  if (looksLikeBmp(path)) {
    BmpInfo info;
    if (Status s = readBmpInfo(path, info); s) {
      if (Status big = checkPixelCount(info.width, info.height); !big)
        return reportPhotoFailure(kErrorLoading, path, big.message());
      size = {info.width, info.height};
      return Status::ok();
    } else {
      bmpProblem = s.message();  // libvips's optional loaders may still know the form
    }
  }
  if (vips_foreign_find_load(path.c_str()) == nullptr) {
    vips_error_clear();
    return reportPhotoFailure(kErrorLoading, path,
                              bmpProblem.empty() ? "not a picture in a format that can be read" : bmpProblem);
  }
  try {
    // Opening reads the header only; the pixels are not decoded.
    const VImage header = VImage::new_from_file(path.c_str());
    size = {header.width(), header.height()};
    if (vips_image_get_orientation_swap(header.get_image())) std::swap(size.width, size.height);
  } catch (const VError& e) {
    return reportPhotoFailure(kErrorLoading, path, bmpProblem.empty() ? vipsReason(e) : bmpProblem);
  }
  if (Status big = checkPixelCount(size.width, size.height); !big) {
    size = {};
    return reportPhotoFailure(kErrorLoading, path, big.message());
  }
  return Status::ok();
}

Status readImageAttribute(const std::string& path, std::string_view name, int& value) {
  value = 0;
  if (name != "npixx" && name != "npixy") return Status::error(fmt::format("unknown image attribute \"{}\"", name));
  PixelSize size;
  if (Status s = readPixelSize(path, size); !s) return s;
  value = name == "npixx" ? size.width : size.height;
  return Status::ok();
}

Status Photo::load(const std::string& path, Photo& out) {
  out = Photo();
  if (Status s = ensureVips(); !s) return reportPhotoFailure(kErrorLoading, path, s.message());
  if (std::string why = unreadableReason(path); !why.empty()) return reportPhotoFailure(kErrorLoading, path, why);

  auto impl = std::make_unique<Impl>();
  impl->path = path;

  auto noMemory = [&](int w, int h) {
    return reportPhotoFailure(kErrorLoading, path, fmt::format("not enough memory for {} x {} pixels", w, h));
  };
  std::string bmpProblem;
  if (looksLikeBmp(path)) {
    BmpInfo info;
    Status s = readBmpInfo(path, info);
    if (s) s = checkPixelCount(info.width, info.height);
    if (s) {
      const std::size_t stride = 3 * static_cast<std::size_t>(info.width);
      PixelMemory::Block* block = PixelMemory::instance().take(stride * static_cast<std::size_t>(info.height));
      if (block == nullptr) return noMemory(info.width, info.height);
      s = readBmpPixels(path, info, block->data, stride);
      if (s) {
        impl->decoded = wrapBlock(block, info.width, info.height, 1);
      } else {
        PixelMemory::instance().give(block);
      }
    }
    if (!s) bmpProblem = s.message();
  }

  if (impl->decoded.is_null()) {
    if (vips_foreign_find_load(path.c_str()) == nullptr) {
      vips_error_clear();
      return reportPhotoFailure(kErrorLoading, path,
                                bmpProblem.empty() ? "not a picture in a format that can be read" : bmpProblem);
    }
    VImage file;
    try {
      // Sequential access lets the decoder stream top to bottom without
      // keeping a second copy; a truncated or damaged file (any warning of
      // the decoder) is an error rather than a picture with grey rows.
      file = VImage::new_from_file(path.c_str(), VImage::option()
                                                     ->set("access", VIPS_ACCESS_SEQUENTIAL)
                                                     ->set("fail_on", VIPS_FAIL_ON_WARNING));
      impl->orientation = vips_image_get_orientation(file.get_image());
    } catch (const VError& e) {
      return reportPhotoFailure(kErrorLoading, path, bmpProblem.empty() ? vipsReason(e) : bmpProblem);
    }
    // Only the header has been read: the size it claims is checked before
    // any memory is taken for the pixels.
    if (Status big = checkPixelCount(file.width(), file.height()); !big)
      return reportPhotoFailure(kErrorLoading, path, big.message());
    if (impl->orientation < 1 || impl->orientation > 8) impl->orientation = 1;
    VImage rgb;
    try {
      rgb = toRgb8(file);
    } catch (const VError& e) {
      return reportPhotoFailure(kErrorConverting, path, vipsReason(e));
    }
    const std::size_t bytes = 3 * static_cast<std::size_t>(rgb.width()) * static_cast<std::size_t>(rgb.height());
    PixelMemory::Block* block = PixelMemory::instance().take(bytes);
    if (block == nullptr) return noMemory(rgb.width(), rgb.height());
    // The decoder writes straight into the block, top to bottom; if it fails,
    // dropping the image hands the block back.
    VImage decoded = wrapBlock(block, rgb.width(), rgb.height(), impl->orientation);
    if (vips_image_write(rgb.get_image(), decoded.get_image()) != 0) {
      return reportPhotoFailure(kErrorLoading, path, takeVipsError());
    }
    impl->decoded = decoded;
  }
  impl->pixels = static_cast<const std::uint8_t*>(impl->decoded.data());

  impl->upright = impl->decoded;
  if (impl->orientation != 1) {
    try {
      impl->upright = impl->decoded.autorot();
    } catch (const VError& e) {
      return reportPhotoFailure(kErrorRotating, path, vipsReason(e));
    }
  }
  out.impl_ = std::move(impl);
  return Status::ok();
}

PixelBox Photo::clippedBox(const CutSpec& spec) const { return clipBox(spec.box, width(), height()); }

Status Photo::openCut(const CutSpec& spec, std::unique_ptr<RowSource>& rows) const {
  rows.reset();
  if (!impl_) return Status::error("no photograph loaded");
  const PixelBox box = clippedBox(spec);
  if (box.empty()) {
    return reportPhotoFailure(
        kErrorConverting, impl_->path,
        fmt::format("the rectangle at ({}, {}) of {} x {} pixels lies outside the {} x {} picture",
                    spec.box.left, spec.box.top, spec.box.width, spec.box.height, width(), height()));
  }
  const int turns = ((spec.quarterTurns % 4) + 4) % 4;
  // An angle that is a whole number of turns leaves the picture as it is.
  double angle = std::fmod(spec.angleDegrees, 360.0);
  if (std::fabs(angle) < 1e-9 || std::fabs(std::fabs(angle) - 360.0) < 1e-9) angle = 0.0;
  if (!std::isfinite(angle)) {
    return reportPhotoFailure(kErrorRotating, impl_->path, "the angle is not a number");
  }

  if (impl_->orientation == 1 && angle == 0.0 && turns == 0 && spec.flip == Flip::None) {
    // Plain crop of the decoded pixels: hand out a view, copy nothing.
    const std::uint8_t* base = impl_->pixels;
    const std::size_t stride = 3 * static_cast<std::size_t>(impl_->decoded.width());
    const RasterView view{base + box.top * stride + 3 * static_cast<std::size_t>(box.left), box.width,
                          box.height, stride};
    rows = std::make_unique<ViewRowSource>(view);
    return Status::ok();
  }

  try {
    VImage piece;
    if (angle == 0.0) {
      piece = impl_->upright.extract_area(box.left, box.top, box.width, box.height);
    } else {
      // Turn about the centre of the picture; libvips places pixel centres on
      // whole coordinates, so the centre of a w-wide picture is (w - 1) / 2.
      // The output area is the box itself, so only the row is computed.
      const double a = angle * std::numbers::pi / 180.0;
      const double c = std::cos(a), s = std::sin(a);
      const double cx = (width() - 1) / 2.0, cy = (height() - 1) / 2.0;
      piece = impl_->upright.affine({c, -s, s, c}, VImage::option()
                                                       ->set("idx", -cx)
                                                       ->set("idy", -cy)
                                                       ->set("odx", cx)
                                                       ->set("ody", cy)
                                                       ->set("oarea", std::vector<int>{box.left, box.top,
                                                                                       box.width, box.height}));
    }
    if (turns == 1) piece = piece.rot(VIPS_ANGLE_D90);
    if (turns == 2) piece = piece.rot(VIPS_ANGLE_D180);
    if (turns == 3) piece = piece.rot(VIPS_ANGLE_D270);
    if (spec.flip == Flip::Horizontal) piece = piece.flip(VIPS_DIRECTION_HORIZONTAL);
    if (spec.flip == Flip::Vertical) piece = piece.flip(VIPS_DIRECTION_VERTICAL);
    rows = std::make_unique<VipsRowSource>(piece);
  } catch (const VError& e) {
    return reportPhotoFailure(turns != 0 || angle != 0.0 ? kErrorRotating : kErrorConverting, impl_->path,
                              vipsReason(e));
  }
  return Status::ok();
}

Status Photo::cut(const CutSpec& spec, Raster& out) const {
  std::unique_ptr<RowSource> rows;
  if (Status s = openCut(spec, rows); !s) return s;
  if (Status s = readAllRows(*rows, out); !s) {
    const bool turned = spec.quarterTurns % 4 != 0 || spec.angleDegrees != 0.0;
    return reportPhotoFailure(turned ? kErrorRotating : kErrorConverting, impl_->path, s.message());
  }
  return Status::ok();
}

}  // namespace subsurf::image
