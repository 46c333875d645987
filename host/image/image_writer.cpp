#include "host/image/image_writer.h"

#include <algorithm>
#include <memory>

#include <fmt/format.h>
#include <vips/vips8>

#include "host/fixed_text.h"
#include "host/image/atomic_output.h"
#include "host/image/bmp.h"
#include "host/image/cgm.h"
#include "host/image/image_messages.h"
#include "host/image/vips_convert.h"
#include "host/image/vips_runtime.h"

namespace subsurf::image {
namespace {

// Remembers whether the rows themselves failed (a fault of the photograph or
// of the cut) as opposed to the file being written.
class WatchedRows : public RowSource {
 public:
  explicit WatchedRows(RowSource& inner) : inner_(inner) {}
  int width() const override { return inner_.width(); }
  int height() const override { return inner_.height(); }
  Status readRows(int y0, int count, std::uint8_t* dst, std::size_t dstStride) override {
    Status s = inner_.readRows(y0, count, dst, dstStride);
    if (!s) failed_ = true;
    return s;
  }
  const std::uint8_t* directRow(int y) const override { return inner_.directRow(y); }
  bool failed() const { return failed_; }

 private:
  RowSource& inner_;
  bool failed_ = false;
};

// Writes with our own writers; the reason on failure names no file.
Status writeOwnFormat(RowSource& rows, AtomicOutput& out, ImageFormat format) {
  if (Status s = out.open(); !s) return s;
  Status s = format == ImageFormat::Bmp ? writeBmp(rows, out.stream()) : writeCgm(rows, out.stream());
  if (!s) return s;
  return out.commit();
}

Status writeThroughVips(const RasterView& pixels, AtomicOutput& out, ImageFormat format,
                        const WriteOptions& options) {
  if (Status s = ensureVips(); !s) return s;
  if (pixels.empty()) return Status::error("the picture is empty");
  if (Status s = out.open(); !s) return s;
  if (Status s = out.closeStream(); !s) return s;  // libvips opens the file itself
  // libvips wants packed rows; a view into a wider picture is copied first.
  Raster packedCopy;
  RasterView view = pixels;
  if (pixels.stride != 3 * static_cast<std::size_t>(pixels.width)) {
    ViewRowSource rows(pixels);
    if (Status s = readAllRows(rows, packedCopy); !s) return s;
    view = packedCopy.view();
  }
  try {
    // Wraps the pixels without copying them.
    const vips::VImage packed = vips::VImage::new_from_memory(
        const_cast<std::uint8_t*>(view.data), view.stride * static_cast<std::size_t>(view.height), view.width,
        view.height, 3, VIPS_FORMAT_UCHAR);
    const char* temp = out.tempPath().c_str();
    switch (format) {
      case ImageFormat::Png:
        packed.pngsave(temp);
        break;
      case ImageFormat::Jpeg: {
        vips::VImage tagged = packed.copy();  // a new header; the pixels are not copied
        if (!options.description.empty())
          tagged.set("exif-ifd0-ImageDescription", options.description.c_str());
        tagged.jpegsave(temp, vips::VImage::option()
                                  ->set("Q", std::clamp(options.jpegQuality, 1, 100))
                                  ->set("subsample_mode", options.jpegFullChroma ? VIPS_FOREIGN_SUBSAMPLE_OFF
                                                                                 : VIPS_FOREIGN_SUBSAMPLE_AUTO));
        break;
      }
      case ImageFormat::Tiff:
        packed.tiffsave(temp);
        break;
      default:
        return Status::error("not a libvips format");
    }
  } catch (const vips::VError& e) {
    return Status::error(vipsReason(e));
  }
  return out.commit();
}

}  // namespace

std::optional<ImageFormat> formatForFileName(std::string_view name) {
  const std::size_t dot = name.find_last_of('.');
  const std::size_t slash = name.find_last_of("/\\");
  if (dot == std::string_view::npos || (slash != std::string_view::npos && dot < slash)) return std::nullopt;
  const std::string suffix = lowerCase(name.substr(dot + 1));
  if (suffix == "bmp") return ImageFormat::Bmp;
  if (suffix == "cgm") return ImageFormat::Cgm;
  if (suffix == "png") return ImageFormat::Png;
  if (suffix == "jpg" || suffix == "jpeg") return ImageFormat::Jpeg;
  if (suffix == "tif" || suffix == "tiff") return ImageFormat::Tiff;
  return std::nullopt;
}

std::string_view formatSuffix(ImageFormat format) {
  switch (format) {
    case ImageFormat::Bmp: return ".bmp";
    case ImageFormat::Cgm: return ".cgm";
    case ImageFormat::Png: return ".png";
    case ImageFormat::Jpeg: return ".jpg";
    case ImageFormat::Tiff: return ".tif";
  }
  return "";
}

Status writeImage(RowSource& rows, const std::string& path, ImageFormat format, const WriteOptions& options) {
  AtomicOutput out(path);
  Status s;
  if (format == ImageFormat::Bmp || format == ImageFormat::Cgm) {
    s = writeOwnFormat(rows, out, format);
  } else {
    Raster all;
    s = readAllRows(rows, all);
    if (s) s = writeThroughVips(all.view(), out, format, options);
  }
  if (!s) {
    out.discard();
    return reportWriteFailure(path, format == ImageFormat::Bmp, s.message());
  }
  return Status::ok();
}

Status writeImage(const RasterView& pixels, const std::string& path, ImageFormat format,
                  const WriteOptions& options) {
  if (format == ImageFormat::Bmp || format == ImageFormat::Cgm) {
    ViewRowSource rows(pixels);
    return writeImage(rows, path, format, options);
  }
  AtomicOutput out(path);
  if (Status s = writeThroughVips(pixels, out, format, options); !s) {
    out.discard();
    return reportWriteFailure(path, false, s.message());
  }
  return Status::ok();
}

Status cutToFile(const Photo& photo, const CutSpec& spec, const std::string& path, ImageFormat format,
                 const WriteOptions& options) {
  const bool turned = spec.quarterTurns % 4 != 0 || spec.angleDegrees != 0.0;
  if (format != ImageFormat::Bmp && format != ImageFormat::Cgm) {
    // libvips encoders take the row from memory.
    Raster row;
    if (Status s = photo.cut(spec, row); !s) return s;
    return writeImage(row.view(), path, format, options);
  }
  std::unique_ptr<RowSource> rows;
  if (Status s = photo.openCut(spec, rows); !s) return s;
  WatchedRows watched(*rows);
  AtomicOutput out(path);
  if (Status s = writeOwnFormat(watched, out, format); !s) {
    out.discard();
    if (watched.failed()) {
      return reportPhotoFailure(turned ? kErrorRotating : kErrorConverting, photo.path(), s.message());
    }
    return reportWriteFailure(path, format == ImageFormat::Bmp, s.message());
  }
  return Status::ok();
}

}  // namespace subsurf::image
