// Laying the rows found in a photograph (core/row_detection.h) on its core
// image: one rectangle per compartment in reading order, the image's
// "Horizontal" setting from the way the rows run, and a note of how sure the
// finder was, kept with the image so that previews and later runs can name
// the photographs a person should check.
#pragma once

#include <string>
#include <string_view>

#include "core/core_session.h"
#include "core/row_detection.h"

namespace subsurf {

// The image's text settings that keep the finder's verdict, "rows found 0.93"
// or "check the rows 0.31" (with the confidence), and its doubt, such as
// "found 4 rows, expected 5" (blank when sure).
inline constexpr int kRowVerdictText = 10;
inline constexpr int kRowDoubtText = 9;
inline constexpr std::string_view kRowsFound = "rows found";
inline constexpr std::string_view kCheckTheRows = "check the rows";
inline constexpr std::string_view kRowsChecked = "rows checked by hand";

// Replaces the image's rectangles with the rows found (when any were found;
// otherwise the rectangles are kept) in a photograph of photoWidth x
// photoHeight pixels, sets "Horizontal" (1 across, 0 down), the displayed
// size, "Core Number" when it is unset, and the verdict.
void layDetectedRows(CoreSession& session, CoreImage& image, const RowDetection& found, int photoWidth,
                     int photoHeight);

// The verdict kept with the image, with its doubt after ": " when there is one
// ("" when its rows were not found by the finder).
std::string rowVerdict(const CoreImage& image);
// True when the finder was unsure of the image's rows and no person has
// placed or accepted them since.
bool rowsNeedChecking(const CoreImage& image);
// Notes that a person has placed or accepted the image's rows: the finder's
// doubt no longer holds them back from the split.
void markRowsChecked(CoreImage& image);

}  // namespace subsurf
