// The texts a user sees when a photograph cannot be read or a row image cannot
// be made, and how the file at fault is named in them.
//
// The system's own texts are kept exactly as users and existing scripts know
// them; the file name and the underlying reason are added so that, in a batch
// of hundreds of photos, the user knows which one to look at:
//
//   Error loading: /trays/T12.jpg (VipsJpeg: Premature end of JPEG file)
//   Error rotating: /trays/T12.jpg (...)
//   Error converting: /trays/T12.jpg (...)
//   /out/T12_WL_01234_50-01235_50.bmp ... converting to BMP
//   Conversion failed. (cannot create the file: Permission denied)
#pragma once

#include <string>
#include <string_view>

#include "host/status.h"

namespace subsurf::image {

inline constexpr std::string_view kErrorLoading = "Error loading";
inline constexpr std::string_view kErrorRotating = "Error rotating";
inline constexpr std::string_view kErrorConverting = "Error converting";
inline constexpr std::string_view kConversionFailed = "Conversion failed.";
inline constexpr std::string_view kConvertingToBmp = "... converting to BMP";

// "<what>: <file> (<reason>)", shown to the user and returned as the error.
// what is one of kErrorLoading, kErrorRotating, kErrorConverting.
Status reportPhotoFailure(std::string_view what, std::string_view file, std::string_view reason);

// A row image (or preview) that could not be written: "<file>" with
// " ... converting to BMP" for bitmaps, then "Conversion failed. (<reason>)"
// on a second line. Shown to the user and returned as the error.
Status reportWriteFailure(std::string_view file, bool bitmap, std::string_view reason);

// The integer status word of the exported routines: 0 done, 1 not done.
inline int statusWord(const Status& status) { return status ? 0 : 1; }

}  // namespace subsurf::image
