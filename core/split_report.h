// The table of clipping depths: a comma-separated text file listing, for every
// row image written, the depth interval it shows.
//
// The table is what a core-description or log-display package loads to hang
// the row images at their depths. It begins with a title and a column line,
// then for each photograph a "Source Image, " line followed by one line per
// row. Style 1 fills the six columns of the column line (zero depth shifts and
// an empty comment, which the user may edit afterwards); any other style gives
// just top, base and file name.
//
//      Table of clipping depths,
//     Top Depth, Top Shift, Bottom Depth, Bottom Shift, Comments, Graphics File Name
//     Source Image, /trays/T1.jpg
//       1234.500, 0,   1235.500, 0, , /out/T1_WL_01234_50-01235_50.bmp
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace subsurf::split {

inline constexpr std::string_view kReportTitle = " Table of clipping depths,";
inline constexpr std::string_view kReportColumns =
    "Top Depth, Top Shift, Bottom Depth, Bottom Shift, Comments, Graphics File Name";
inline constexpr std::string_view kReportSourcePrefix = "Source Image, ";

// Report style 1 writes all six columns; other styles top, base and name.
inline constexpr int kReportStyleFull = 1;

// The two lines every table begins with.
std::vector<std::string> reportHeaderLines();

// "Source Image, " followed by the photograph's file name.
std::string reportSourceLine(std::string_view sourcePath);

// A depth as the table shows it: ten characters, three decimals.
std::string reportDepth(float depth);

// One row's line in the given style.
std::string reportRowLine(float top, float base, std::string_view outputName, int style);

}  // namespace subsurf::split
