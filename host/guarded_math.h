// Arithmetic guarded against domain errors, used where user data may hold anything.
#pragma once

namespace subsurf {

// x raised to the power p. err is set to 1, and x returned unchanged, when the
// power is undefined or not finite: a negative x with a non-integer p, zero
// with a negative p, or a result that overflows. err is 0 otherwise.
double guardedPower(double x, double p, int& err);

// value clamped to [low, high].
int clampInt(int value, int low, int high);

}  // namespace subsurf
