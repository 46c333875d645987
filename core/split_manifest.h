// The manifest of a split: one line per row image written, in a form that
// spreadsheets, Python's csv module and core-logging packages load as it is
// (RFC 4180: a header line, fields quoted when they hold a comma, a quote or
// a line break, quotes doubled, lines ending in CR LF):
//
//     hole,photo,row,top,base,unit,light,file,width,height
//     K-DD-51,../photos/K-DD-51_BOX(04) 9.0-12.00.JPG,1,9.00,10.00,m,WL,K-DD-51_BOX(04) 9_WL_00009_00-00010_00.bmp,3000,420
//
// Paths are relative to the manifest's folder, so the folder can be moved
// with its rows. The table of clipping depths is written as before beside it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/split_process.h"
#include "host/status.h"

namespace subsurf::split {

inline constexpr std::string_view kManifestHeader = "hole,photo,row,top,base,unit,light,file,width,height";

struct ManifestOptions {
  std::string path;  // the manifest file
  std::string hole;  // for every row; blank: from each photograph's name
  // The depth unit of the photograph at a place (from 1).
  std::function<std::string(int place)> unitOf;
};

// A field as RFC 4180 writes it.
std::string csvField(std::string_view text);

// The manifest's lines (without line ends), header first, for the rows
// written, in run order. Row sizes are read from the written files.
std::vector<std::string> manifestLines(const std::vector<PhotoJob>& jobs, const std::vector<PhotoOutcome>& outcomes,
                                       const SplitOptions& options, const ManifestOptions& manifest);

// Writes the lines to manifest.path, complete or not at all.
Status writeManifest(const ManifestOptions& manifest, const std::vector<std::string>& lines);

}  // namespace subsurf::split
