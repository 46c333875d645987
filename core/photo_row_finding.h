// Finding the rows of a session's photographs and laying them on its images:
// the work behind `slabber detect`, `slabber new --detect-rows` and the
// editor's "Detect rows", so that all three find and report the same rows.
#pragma once

#include <string>
#include <vector>

#include "core/row_detection.h"

namespace subsurf {

class CoreSession;

// What the finder made of one photograph.
struct PhotoRows {
  int place = 0;
  std::string file;  // the photograph's file name
  bool read = false; // false: the photograph could not be read (the reason was shown)
  RowDetection found;
};

// Finds the rows of the images at `places` (every image when empty) on up to
// `jobs` threads (0: one per processor) and lays them on the images with
// layDetectedRows. cores >= 1 is the number of rows expected in every tray;
// otherwise each image's "Core Number" when set. Places must be in the session.
std::vector<PhotoRows> detectRows(CoreSession& session, const std::vector<int>& places, int cores, int jobs);

// "tray.jpg: 4 rows across, confidence 0.93", or "tray.jpg: not read".
std::string detectionSummary(const PhotoRows& result);

// "check the rows of tray.jpg (confidence 0.31: found 4 rows, expected 5)"
// when the finder was unsure or could not read the photograph; "" when sure.
std::string checkRowsNote(const PhotoRows& result);

}  // namespace subsurf
