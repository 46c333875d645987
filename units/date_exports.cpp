// The date and time routines as exported C functions over units/date_time.
// Texts are 32-character blank-padded fields; no exception leaves this file.
#include <cmath>
#include <exception>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "host/settings.h"
#include "subsurf/dates.h"
#include "units/date_time.h"
#include "units/scalar_records.h"

namespace {

using namespace subsurf;

constexpr std::size_t kDateWidth = 32;
constexpr std::size_t kSettingWidth = 24;

template <typename F>
void guarded(F&& f) noexcept {
  try {
    f();
  } catch (const std::exception& e) {
    host::showMessage(e.what());
  } catch (...) {
    host::showMessage("Date routine failed");
  }
}

std::string field(const char* text) { return fixedText(text, kDateWidth); }

std::string maskOf(const DT_DSCA& rec) {
  const std::string mask = fixedText(rec.SHORT);
  return mask.empty() ? kDefaultDateMask : mask;
}

BrokenDate fromParts(const short* p) {
  return BrokenDate{p[0], p[1], p[2], p[3], p[4], p[5], p[6]};
}

// Rounding and adding share one shape: a unit code checked against the allowed
// range, then the engine's step function; a null value stays as it is.
template <typename Step, typename Apply>
void stepValue(double* value, const int* unit, const Step* step, int* status, int firstUnit, Apply apply) {
  int st = 1;
  guarded([&] {
    if (!value || !unit || !step || *unit < firstUnit || !validDateUnit(*unit) ||
        !(std::fabs(*value) <= kLargestDateValue))
      return;
    if (!apply(*value, static_cast<DateUnit>(*unit), *step)) return;
    st = 0;
  });
  if (status) *status = st;
}

constexpr int kAnyUnit = 1;
constexpr int kTimeUnits = static_cast<int>(DateUnit::Days);

bool roundDown(double& v, DateUnit u, int step) {
  if (step < 1) return false;
  v = roundDateDown(v, u, step);
  return true;
}
bool roundUp(double& v, DateUnit u, int step) {
  if (step < 1) return false;
  v = roundDateUp(v, u, step);
  return true;
}
bool addWhole(double& v, DateUnit u, int steps) {
  v = addDateSteps(v, u, static_cast<long>(steps));
  return true;
}
bool addFraction(double& v, DateUnit u, double steps) {
  v = addDateSteps(v, u, steps);
  return true;
}

}  // namespace

extern "C" {

void DT_DATEDFLT(DT_DSCA* rec) {
  if (!rec) return;
  guarded([&] {
    setDefaults(*rec);
    std::string mask = setting("datefmt").value_or("");
    mask = trimBlanks(mask.substr(0, std::min(mask.size(), kSettingWidth)));
    setFixed(rec->SHORT, mask.empty() ? kDefaultDateMask : mask);
  });
}

void DT_TIMEDFLT(DT_DSCA* rec) {
  if (!rec) return;
  setDefaults(*rec);
  setFixed(rec->SHORT, kDefaultTimeMask);
}

void DT_DATESETMASK(DT_DSCA* rec, const int* code) {
  if (!rec || !code) return;
  guarded([&] {
    const std::string mask = maskOfCode(*code);
    if (!mask.empty()) setFixed(rec->SHORT, mask);
  });
}

void X_DATEIF(const short* parts, double* value) {
  if (parts && value) *value = dateValue(fromParts(parts));
}

void X_DATEFI(const double* value, short* parts) {
  if (!value || !parts) return;
  const BrokenDate d = brokenDate(*value);
  const int all[] = {d.year, d.month, d.day, d.hour, d.minute, d.second, d.millisecond};
  for (int k = 0; k < 7; ++k) parts[k] = static_cast<short>(all[k]);
}

void X_DATEIC(const double* value, const char* mask, char* text) {
  if (!value || !mask || !text) return;
  guarded([&] { setFixed(text, kDateWidth, formatDate(*value, field(mask))); });
}

void X_DATECI(const char* text, const char* mask, double* value, int* nerr) {
  if (!text || !mask || !value) return;
  int errors = 1;
  *value = kDoubleNull;
  guarded([&] { *value = parseDate(field(text), field(mask), errors); });
  if (nerr) *nerr = errors;
}

void X_TIMEIC(const double* seconds, const char* mask, char* text) {
  if (!seconds || !mask || !text) return;
  guarded([&] { setFixed(text, kDateWidth, formatTime(*seconds, field(mask))); });
}

void X_TIMECI(const char* text, const char* mask, double* seconds, int* nerr) {
  if (!text || !mask || !seconds) return;
  int errors = 1;
  *seconds = kDoubleNull;
  guarded([&] { *seconds = parseTime(field(text), field(mask), errors); });
  if (nerr) *nerr = errors;
}

void X_TIMEIF(const short* parts, double* seconds) {
  if (!parts || !seconds) return;
  *seconds = (parts[0] * 60.0 + parts[1]) * 60.0 + parts[2] + parts[3] / 1000.0;
}

void X_TIMEFI(const double* seconds, short* parts) {
  if (!seconds || !parts) return;
  if (!(std::fabs(*seconds) <= kLargestDateValue)) {
    for (int k = 0; k < 4; ++k) parts[k] = 0;
    return;
  }
  const long long ms = std::llround(*seconds * 1000.0);
  parts[0] = static_cast<short>(ms / 3600000);
  parts[1] = static_cast<short>(ms / 60000 % 60);
  parts[2] = static_cast<short>(ms / 1000 % 60);
  parts[3] = static_cast<short>(ms % 1000);
}

void X_TIMEFR(const double* seconds, float* hours) {
  if (!seconds || !hours) return;
  *hours = isNull(*seconds) ? kRealNull : static_cast<float>(*seconds / 3600.0);
}

void X_DATEMASKCI(const char* mask, int* count) {
  if (!mask || !count) return;
  *count = 0;
  guarded([&] { *count = static_cast<int>(splitMask(field(mask)).size()); });
}

void X_DATEMASKITEM(const char* mask, const int* k, char* item, int* isfield, int* status) {
  int st = 1;
  if (mask && k && item) {
    guarded([&] {
      blankFixed(item, kDateWidth);
      const auto items = splitMask(field(mask));
      if (*k < 1 || *k > static_cast<int>(items.size())) return;
      const MaskItem& it = items[static_cast<std::size_t>(*k - 1)];
      setFixed(item, kDateWidth, it.text);
      if (isfield) *isfield = it.field ? 1 : 0;
      st = 0;
    });
  }
  if (status) *status = st;
}

void X_DATE(DT_DSCA* rec, const int* mode) {
  if (!rec || !mode) return;
  guarded([&] {
    const std::string mask = maskOf(*rec);
    if (*mode == 1) {
      int errors = 0;
      rec->V = parseDate(fixedText(rec->CHU), mask, errors);
    }
    setFixed(rec->CHU, formatDate(rec->V, mask));
  });
}

void X_DATEROUNDDOWN(double* value, const int* unit, const int* step, int* status) {
  stepValue(value, unit, step, status, kAnyUnit, roundDown);
}
void X_DATEROUNDUP(double* value, const int* unit, const int* step, int* status) {
  stepValue(value, unit, step, status, kAnyUnit, roundUp);
}
void X_DATEIADD(double* value, const int* unit, const int* steps, int* status) {
  stepValue(value, unit, steps, status, kAnyUnit, addWhole);
}
void X_DATERADD(double* value, const int* unit, const double* steps, int* status) {
  stepValue(value, unit, steps, status, kAnyUnit, addFraction);
}
void X_TIMEROUNDDOWN(double* seconds, const int* unit, const int* step, int* status) {
  stepValue(seconds, unit, step, status, kTimeUnits, roundDown);
}
void X_TIMEROUNDUP(double* seconds, const int* unit, const int* step, int* status) {
  stepValue(seconds, unit, step, status, kTimeUnits, roundUp);
}
void X_TIMEIADD(double* seconds, const int* unit, const int* steps, int* status) {
  stepValue(seconds, unit, steps, status, kTimeUnits, addWhole);
}
void X_TIMERADD(double* seconds, const int* unit, const double* steps, int* status) {
  stepValue(seconds, unit, steps, status, kTimeUnits, addFraction);
}

}  // extern "C"
