// Labels, keys and units of a core image's settings and of a rectangle's
// display properties, and the small setters the depth routines use.
#pragma once

#include <string_view>

#include "core/core_session.h"

namespace subsurf {

// Unit series and unit that image depths start in.
inline constexpr std::string_view kDepthSeries = "depth";
inline constexpr std::string_view kDefaultDepthUnit = "m";

// COR_IMDFLT: integer settings (null values) and real settings (null values,
// depth series and unit) with their labels and keys, the file-name and text
// settings' keys, and the two copies.
void setUpImageSettings(CoreImage& image);
// The display properties of a polygon with their labels and defaults.
void setUpPolygonProperties(Polygon& polygon);

// Stores a depth given in `unit` (blank: the record's own unit) and marks it
// changed; the record converts it into its own unit.
void setDepth(DT_RSCA& record, float value, std::string_view unit);
// The unit name of a record ("" when none).
std::string depthUnitOf(const DT_RSCA& record);
void setInteger(DT_ISCA& record, int value);

inline bool isSet(const DT_RSCA& record) { return !isNull(record.V); }

}  // namespace subsurf
