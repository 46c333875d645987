// `subsurf fluids --batch`: calculate-all over every case of a CSV file.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "fluids/fluid_entries.h"

namespace subsurf::cli {

// A number typed for an entry, on the command line or in a cell: the whole
// text (blanks around it allowed) must be a decimal number that single
// precision can hold.
std::optional<float> readEntryNumber(std::string_view text);

// The message for a unit that is not one of the entry's series.
std::string notAUnitMessage(fluids::Entry e, const std::string& unit);

// Reads the cases of `inPath` (a header of entry names, with units such as
// "dres[m]"; one case per row), calculates every case and writes every entry
// of every case to `outPath`, or to standard output when it is empty. The
// output file is replaced only once it is complete. Returns the exit status:
// bad cells are reported by row and column and leave that case's results
// empty (partial), a bad header or an unreadable file stops the run.
int runFluidsBatch(const std::string& inPath, const std::string& outPath,
                   const fluids::FluidTable& prototype);

}  // namespace subsurf::cli
