// The names every row of a run will be written under, worked out before
// anything is written, so that no row image overwrites another.
//
// Two photographs whose names agree up to their first "." (RC671_0332.25-...
// _Dry.JPG and ..._Wet.JPG) give their rows the same stub, and so the same
// names; two rectangles of one photograph with the same depths do too. Such a
// run is stopped before it starts, naming both photographs and the file, or,
// when the user asks for unique names, each such row gets a short
// distinguishing part before its suffix: what is left of its photograph's
// name after the part the photographs share ("_Dry", "_Wet"), else "_2",
// "_3", ... in run order.
#pragma once

#include <string>
#include <vector>

#include "core/split_process.h"

namespace subsurf::split {

struct OutputPlan {
  std::vector<std::string> collisions;  // one message per name that two rows would share
  std::vector<std::string> renamed;     // one message per row given a distinguishing part
  bool ok() const { return collisions.empty(); }
};

// Works out the names of every row with depths. With `unique`, rows that
// would share a name get their planned names set in the jobs (and the plan
// says so in `renamed`); without, the plan lists the collisions and the jobs
// are left as they were. Names are compared without regard to case, as the
// file systems the rows are copied to do.
OutputPlan planOutputs(std::vector<PhotoJob>& jobs, const SplitOptions& options, bool unique);

}  // namespace subsurf::split
