// Typed scalars and their units: changing a record's unit, reading and storing
// its value in another unit, comparing and combining two records.
//
// A record's unit is its DT_UNIT: the series number ISER, the position IUN of
// the unit in the series, and the unit's name CU. Positions are what conversion
// works with; the name is what the user sees and what survives a change of the
// definitions file. Values of magnitude above 9.0e20 are null marks and pass
// through every conversion untouched.
#pragma once

#include <string_view>

#include "subsurf/scalars.h"

namespace subsurf {

// IUN := position of CU in series ISER (case-insensitive; below 1 when CU is
// not a unit of the series).
void setUnitPosition(DT_UNIT& unit);
// CU := name of unit IUN of series ISER (blank when there is no such unit).
void setUnitName(DT_UNIT& unit);
// Series and unit name, then the position from the name. The value is not converted.
void setSeriesUnit(DT_RSCA& rec, int iser, std::string_view unit);
void setSeriesUnit(DT_DSCA& rec, int iser, std::string_view unit);
// Position of a unit name in the record's series (below 1 when none).
int unitPositionIn(const DT_UNIT& unit, std::string_view name);

// Change of unit: value and limits converted, then IUN and CU replaced, and the
// display text refreshed. False (record unchanged) when the unit is not one of
// the series'.
bool convertToUnit(DT_RSCA& rec, std::string_view unit);
bool convertToUnit(DT_DSCA& rec, std::string_view unit);
bool convertToUnit(DT_RSCA& rec, int iun);
bool convertToUnit(DT_DSCA& rec, int iun);
// Converts every record of the array whose series is iser; others are left alone.
void convertSeries(DT_RSCA* recs, int count, int iser, int iun);
void convertSeries(DT_DSCA* recs, int count, int iser, int iun);

// The value in another unit; the record is unchanged. A unit that is not one of
// the series' (or a record without a unit) gives the value unconverted; an
// empty name means the record's own unit.
float valueIn(const DT_RSCA& rec, std::string_view unit);
double valueIn(const DT_DSCA& rec, std::string_view unit);
float valueIn(const DT_RSCA& rec, int iun);
double valueIn(const DT_DSCA& rec, int iun);

// Stores a value given in another unit. A record without a unit (IUN < 1)
// adopts the given unit and stores the value as given; otherwise the value is
// converted into the record's unit. An empty name stores the value in the
// record's own unit. SET takes *state when state is not null. The display text
// is refreshed. Returns false when the unit is not one of the series' (the value
// is then stored as given, as the conversion leaves it unchanged).
bool setValueIn(DT_RSCA& rec, std::string_view unit, float value, const int* state = nullptr);
bool setValueIn(DT_DSCA& rec, std::string_view unit, double value, const int* state = nullptr);
bool setValueIn(DT_RSCA& rec, int iun, float value, const int* state = nullptr);
bool setValueIn(DT_DSCA& rec, int iun, double value, const int* state = nullptr);

// True when b, expressed in a's unit, equals a: exactly when a is 0, otherwise
// within a relative 1.0e-7 (single precision cannot tell closer values apart).
bool equalValues(const DT_RSCA& a, const DT_RSCA& b);

// a := the larger (mode > 0) or smaller (mode <= 0) of a and b, b expressed in
// a's unit. The minimum skips values of magnitude 9.0e19 or more (no value); the
// maximum needs no such test since the null is a large negative number. The
// display text of a is refreshed.
void combineMinMax(DT_RSCA& a, const DT_RSCA& b, int mode);
void combineMinMax(DT_DSCA& a, const DT_DSCA& b, int mode);

}  // namespace subsurf
