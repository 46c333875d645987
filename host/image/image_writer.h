// Writing row images: BMP and CGM by our own writers, PNG, JPEG and TIFF
// through libvips.
//
// Every file is written under a temporary name beside the target and renamed
// over it only when complete (see atomic_output.h). Failures are shown to the
// user with the file's name and returned:
//   "<file> ... converting to BMP" / "Conversion failed. (<reason>)".
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/image/photo.h"
#include "host/image/raster.h"
#include "host/status.h"

namespace subsurf::image {

enum class ImageFormat { Bmp, Cgm, Png, Jpeg, Tiff };

// The format a file name's suffix asks for (case-insensitive: .bmp, .cgm,
// .png, .jpg, .jpeg, .tif, .tiff); none for any other name.
std::optional<ImageFormat> formatForFileName(std::string_view name);
// The usual suffix, with its dot: ".bmp", ".cgm", ".png", ".jpg", ".tif".
std::string_view formatSuffix(ImageFormat format);

struct WriteOptions {
  int jpegQuality = 90;  // 1..100
  bool jpegFullChroma = false;  // colour kept at full resolution (no 4:2:0 subsampling)
  std::string description;      // JPEG: written as the EXIF "ImageDescription" when not empty
};

// Writes rows to path in the given format.
Status writeImage(RowSource& rows, const std::string& path, ImageFormat format,
                  const WriteOptions& options = {});
Status writeImage(const RasterView& pixels, const std::string& path, ImageFormat format,
                  const WriteOptions& options = {});

// Cuts a row out of a decoded photograph and writes it, without holding the
// whole row in memory for BMP and CGM, and without a copy of the photograph.
// A failure of the cut itself is reported against the photograph ("Error
// rotating" / "Error converting"), a failure to write against the output.
Status cutToFile(const Photo& photo, const CutSpec& spec, const std::string& path, ImageFormat format,
                 const WriteOptions& options = {});

}  // namespace subsurf::image
