// Calculations over the fluid table: everything at once (calculate-all) or one
// entry at a time (the entry's "Click to calculate this entry" button).
#pragma once

#include "fluids/fluid_entries.h"
#include "host/status.h"

namespace subsurf::fluids {

inline constexpr const char* kNoCalculationMessage = "No calculation for this entry";
inline constexpr const char* kNeedDepthMessage = "Need a depth!";

// Pseudo-reduced temperature and pressure from the table's gas gravity,
// impurity fractions, reservoir pressure and temperature. Both are null with
// status 1 when any of these is missing or the gravity is not positive.
// Negative fractions are cleared in the table (their state kept).
void tablePseudoReduced(FluidTable& table, float& tpr, float& ppr, int& status);

// Fills every entry that is missing or was calculated before, in the fixed
// order in which each result feeds the next; typed entries are kept.
void calculateAll(FluidTable& table);

// Calculates one entry alone from the table's current values and stores it
// as calculated, whatever its state. Entries that are inputs only answer
// "No calculation for this entry"; reservoir temperature and pressure answer
// "Need a depth!" without a usable depth. Answers are shown to the user and
// returned.
Status calculateEntry(FluidTable& table, Entry entry);

}  // namespace subsurf::fluids
