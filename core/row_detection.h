// Finding the core rows of a tray photograph by themselves.
//
// A tray is a set of equal compartments between straight dividing walls, each
// holding a row of core. The finder works on the photograph reduced to some
// 800 pixels (plenty for walls a few pixels wide, and fast):
//   1. Texture profile: for each line of the picture, how much the brightness
//      changes along the line (|d/dx|) over the middle half of the width.
//      Rock is grainy, bedded and broken; walls, floors and table are smooth
//      along the row. Lines through core stand out as bands.
//   2. Equal pitch: compartments are equally spaced, so the bands are fitted
//      with a lattice (first band, pitch); bands off the lattice (a tape, a
//      label) are left out, lattice places without a band are empty
//      compartments. Bands left over that make a lattice of their own with
//      the same pitch are a second tray.
//   3. Walls: between two neighbouring bands the two strongest straight edges
//      (signed brightness change across the line, averaged along it, so that
//      texture cancels and a straight edge adds up) are the wall's sides; the
//      compartment runs from wall to wall. The ends of the compartments are
//      the innermost strong straight edges across the rows near each side.
//   4. The same is done on the picture turned a quarter, for rows running
//      down the photograph, and the reading with the higher confidence wins.
//
// Confidence (0 to 1) multiplies how many lattice places hold a band, how
// well the bands sit on the lattice, how much rougher the bands are than the
// walls, and whether stray bands were left out; a count that differs from
// the number of rows expected divides it by three. Walls of a compartment
// halfway between two rows found, as clear as the rows' own walls, halve it:
// the lattice may have taken every other compartment at twice the pitch
// (bands less than 0.45 of a pitch deep are not taken as its rows, since
// core fills most of its compartment). Below kConfidenceThreshold the rows
// must be checked by a person.
#pragma once

#include <string>
#include <vector>

#include "host/image/raster.h"

namespace subsurf {

// A compartment found, in pixels of the full photograph: [left, right) x [top, bottom).
struct DetectedRow {
  double left = 0.0;
  double top = 0.0;
  double right = 0.0;
  double bottom = 0.0;
  bool empty = false;  // a lattice place with no core seen in it
};

struct RowDetection {
  bool rowsAcross = true;          // false: the rows run down the photograph
  std::vector<DetectedRow> rows;   // reading order: top first; left to right when rows run down
  double confidence = 0.0;
  int expectedRows = 0;            // 0 when not known
  std::string doubt;               // why the rows are unsure; empty when sure

  bool sure() const;
};

class RowDetector {
 public:
  // Photos whose confidence is below this are named for a person to check.
  // Chosen on the generated varied set (bench/README.md): no photo at or
  // above it had a row wrong. A lone row has no neighbours to check its
  // spacing against; its confidence is at most 0.8, so it is always checked.
  static constexpr double kConfidenceThreshold = 0.85;
  // The reduced size the finder works at (longer side, pixels).
  static constexpr int kWorkingSize = 800;

  // Finds the rows in `reduced`, the photograph reduced to at most
  // kWorkingSize pixels; fullWidth x fullHeight is the photograph's own size,
  // in which the rows are given. expectedRows 0: not known.
  RowDetection detect(const image::RasterView& reduced, int fullWidth, int fullHeight, int expectedRows) const;
};

// Intersection over union of two rows' rectangles (0 when either is empty).
double intersectionOverUnion(const DetectedRow& a, const DetectedRow& b);

}  // namespace subsurf
