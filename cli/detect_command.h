// slabber detect: finds the core rows of a session's photographs and lays one
// rectangle per row on each, in reading order (top row first; left to right
// when the rows run down the photograph).
//
//   slabber detect SESSION [--image N] [--cores N] [--jobs N]
//
// Photographs the finder is unsure of are listed as "check the rows of
// <photo>" and the exit status is then 1; the session is saved either way
// (whole or not at all). `slabber new ... --detect-rows` does the same for a
// new session.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "core/row_detection.h"

namespace subsurf {
class CoreSession;
}

namespace subsurf::cli {

void addDetectCommand(CLI::App& app, int& exitCode);

// What the finder made of one photograph.
struct PhotoRows {
  int place = 0;
  std::string file;  // the photograph's file name
  bool read = false; // false: the photograph could not be read (the reason was shown)
  RowDetection found;
};

// Finds the rows of the images at `places` (every image when empty) on up to
// `jobs` threads and lays them on the images. cores >= 1 is the number of
// rows expected in every tray; otherwise each image's "Core Number" when set.
std::vector<PhotoRows> detectRows(CoreSession& session, const std::vector<int>& places, int cores, int jobs);

// Prints one line per photograph and "check the rows of ..." for each unsure
// one; returns how many photographs need checking (or could not be read).
int printDetections(const std::vector<PhotoRows>& results);

}  // namespace subsurf::cli
