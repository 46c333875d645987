// Importing tray depths in one go from a comma-separated table, one line per
// photograph:
//
//     photo,top,base,cores,core length
//     K-DD-51_BOX(04).JPG,9.0,12.0,3
//     2,12.0,15.0
//
// The first column names the photograph by its file name (with or without
// its suffix, any case) or by its place in the session (from 1); top and base
// are in the session's depth unit; cores and core length may be left out (the
// core length gives the cores by the row-count rule). A first line whose top
// is not a number is a header.
#pragma once

#include <string>
#include <vector>

#include "host/status.h"

namespace subsurf {

class CoreSession;

struct DepthTableRow {
  int line = 0;       // from 1
  std::string photo;  // as written
  float top = 0.0f;
  float base = 0.0f;
  int cores = 0;      // 0 when not given
};

// Reads and checks the table: numbers that do not read, a top not above its
// base, a core count outside 1..13 fail with a message naming the file, the
// line and the value. Nothing is applied.
Status readDepthTable(const std::string& path, std::vector<DepthTableRow>& rows);

struct DepthTableOutcome {
  std::vector<int> placesSet;            // photos given depths, in table order
  std::vector<std::string> unmatched;    // "FILE, line N: "x.jpg" matches no photo of the session"
  std::vector<int> missed;               // places of photos the table does not list
};

// Matches the rows to the session's photos and gives each its depths. Two
// rows for one photo fail (naming both lines) before anything is changed.
Status applyDepthTable(CoreSession& session, const std::vector<DepthTableRow>& rows, const std::string& path,
                       DepthTableOutcome& outcome);

}  // namespace subsurf
