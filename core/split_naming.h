// Names of the row images that splitting writes.
//
// Every row image cut from a tray photograph is named after the photograph and
// the row's depth interval, so that a folder of row images sorts by depth and
// can be loaded straight into a core-description package:
//
//     <folder><stub>_<tag>_<depth text><suffix>
//     /out/TRAY_1234_5-1239_5_WL_01234_50-01235_50.bmp
//
// stub   the photograph's file name without its suffix (or the session's root
//        name when the user asked for one);
// tag    "UV" for a photograph taken under ultraviolet light, "WL" (white
//        light) otherwise; left out when the stub already says which it is;
// depth  top and base of the row in fixed-width fields, zero-filled, with "_"
//        for the decimal point so the only "." in the name is the suffix's.
#pragma once

#include <string>
#include <string_view>

#include "host/image/image_writer.h"

namespace subsurf::split {

// Depth-text precisions: two decimals in eight characters (the default) or,
// under option 2, three decimals in nine characters.
inline constexpr int kPrecisionCentimetre = 1;
inline constexpr int kPrecisionMillimetre = 2;

// The output formats a row image can be written in: bitmaps and metafiles,
// the tool's own two, and PNG, JPEG and TIFF for other software.
using RowFormat = image::ImageFormat;

// A real in a fixed field of `width` characters with `decimals` decimals,
// right-justified with leading blanks, rounded half away from zero. A value too
// wide for the field is written in full (the field grows) rather than as a row
// of asterisks, which could not stand in a file name.
std::string fixedField(double value, int width, int decimals);

// "01234_50-01236_00" for 1234.5 to 1236 (three decimals, "01234_500-01236_000",
// under kPrecisionMillimetre).
std::string depthText(float top, float base, int precisionOption);

// Where the file name starts in a path: after the last "/" or "\". Sessions
// written on Windows hold "\" separators and are processed here too.
std::size_t fileNameStart(std::string_view path);

// The photograph's file name up to the first "." in it: "C:\trays\T1.a.jpg"
// gives "T1". A dot in a folder name does not count.
std::string fileStub(std::string_view sourcePath);

// The folder part of a path including its final separator ("" when none).
std::string folderOf(std::string_view sourcePath);

// "UV" when the photograph's "UV" setting is 1, "WL" for any other value.
std::string_view lightTag(int uvSetting);

// The suffix of each format (".bmp", ".cgm", ".png", ".jpg", ".tif") is
// image::formatSuffix.

// Parses "bmp", "cgm", "png", "jpg"/"jpeg", "tif"/"tiff" (any case); false otherwise.
bool parseRowFormat(std::string_view text, RowFormat& out);

// folder joined with a name: a separator is put between them unless the folder
// is empty or already ends in one.
std::string joinFolder(std::string_view folder, std::string_view name);

// The settings that decide a row image's name, gathered from the session.
struct NamingOptions {
  bool outputBesidePhoto = false;  // output option 2: the photograph's own folder
  std::string outputFolder;        // otherwise here
  bool useRootName = false;        // replace the photograph's name by rootName
  std::string rootName;
  int precisionOption = kPrecisionCentimetre;
  RowFormat format = RowFormat::Bmp;
};

// The stub for a photograph: the root name when it is asked for and not blank,
// else the photograph's file name without suffix.
std::string outputStub(std::string_view sourcePath, const NamingOptions& options);

// The folder a photograph's rows are written to.
std::string outputFolderFor(std::string_view sourcePath, const NamingOptions& options);

// The full name of row image: folder + stub + "_" + tag + "_" + depth text +
// suffix, without the tag and its "_" when the stub already holds the tag.
std::string rowImageName(std::string_view sourcePath, int uvSetting, float top, float base,
                         const NamingOptions& options);

}  // namespace subsurf::split
