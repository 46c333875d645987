// Ordering names as people order them: runs of digits compare by their value,
// so "BOX(2)" comes before "BOX(12)" and "tray 9" before "tray 10".
#pragma once

#include <string_view>

namespace subsurf {

// True when a comes before b. Letters compare without regard to case; names
// that differ only in case or in leading zeros are ordered by their plain text
// so that the order is total.
bool naturalLess(std::string_view a, std::string_view b);

}  // namespace subsurf
