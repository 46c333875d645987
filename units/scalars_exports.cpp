// The typed-scalar routines as exported C functions: a thin layer over the
// engine (scalar_records, scalar_units, value_text, keyword_rows). Every
// argument arrives by pointer; a null pointer where a record or a value is
// needed makes the routine do nothing. No exception leaves this file.
#include <exception>
#include <new>
#include <string>

#include "host/csv_row.h"
#include "host/fixed_text.h"
#include "host/messages.h"
#include "subsurf/host.h"
#include "subsurf/scalars.h"
#include "subsurf/units.h"
#include "units/keyword_rows.h"
#include "units/scalar_records.h"
#include "units/scalar_units.h"
#include "units/value_text.h"

namespace {

using namespace subsurf;

constexpr std::size_t kUnitWidth = 16;
constexpr std::size_t kTextWidth = 40;
constexpr std::size_t kFileWidth = 260;
constexpr std::size_t kIntegerTextWidth = 20;
constexpr std::size_t kPartWidth = 32;
// Wide enough for any field of a scalar row (file names are 260 characters).
constexpr int kReadWidth = 1024;

template <typename F>
void guarded(F&& f) noexcept {
  try {
    f();
  } catch (const std::bad_alloc&) {
    host::showMessage("Memory allocation failed: typed scalar");
  } catch (const std::exception& e) {
    host::showMessage(e.what());
  } catch (...) {
    host::showMessage("Typed scalar routine failed");
  }
}

std::string unitArg(const char* unit) { return unit ? fixedText(unit, kUnitWidth) : std::string(); }

// A scalar row at level 1..9 goes out field by field through the host's row
// operations, so a caller may leave it open (close = 1) and append fields of its
// own; any other level writes the formatted record as one line.
void writeScalar(const int* channel, const int* level, const int* close, const CsvRow& row,
                 const std::string& record) {
  if (!channel || !level) return;
  if (!isRowLevel(*level)) {
    const int length = static_cast<int>(record.size());
    A_WRITELINE(channel, record.data(), &length);
    return;
  }
  const int last = (close && *close == 1) ? 1 : 2;
  const int n = static_cast<int>(row.size());
  for (int column = 1; column <= n; ++column) {
    const std::string text = row.field(column);
    const int width = static_cast<int>(text.size());
    const int position = column == 1 ? 0 : (column == n ? last : 1);
    A_SETCSVC(channel, text.data(), &width, &position);
  }
}

// The channel's current row, rebuilt from its fields (columns beyond the last
// present one are left off; absent ones in between become empty).
CsvRow channelRow(const int* channel, int columns) {
  std::vector<std::string> fields;
  int present = 0;
  std::string buffer(kReadWidth, ' ');
  for (int column = 1; column <= columns; ++column) {
    int status = 1;
    A_GETCSVC(channel, &column, buffer.data(), &kReadWidth, &status);
    if (status == 0) {
      fields.push_back(fixedText(buffer.data(), buffer.size()));
      present = column;
    } else {
      fields.emplace_back();
    }
  }
  CsvRow row;
  for (int k = 0; k < present; ++k) row.addText(fields[static_cast<std::size_t>(k)]);
  return row;
}

template <typename R, typename Read>
void readScalar(R* rec, const int* channel, int* status, int columns, Read read) {
  int st = RowRead::kWrongKind;
  if (rec && channel) {
    const CsvRow row = channelRow(channel, columns);
    st = read(row, *rec).status;
  }
  if (status) *status = st;
}

void writeLines(const int* channel, const std::vector<std::string>& lines) {
  if (!channel) return;
  for (const std::string& line : lines) {
    const int length = static_cast<int>(line.size());
    A_WRITELINE(channel, line.data(), &length);
  }
}

}  // namespace

extern "C" {

// ---- Defaults and copies ----------------------------------------------------

void DT_ISCADFLT(DT_ISCA* rec, const int* vmin, const int* vmax, const int* vdef) {
  if (!rec || !vmin || !vmax || !vdef) return;
  setDefaults(*rec, *vmin, *vmax, *vdef);
}

void DT_RSCADFLT(DT_RSCA* rec) {
  if (rec) setDefaults(*rec);
}

void DT_DSCADFLT(DT_DSCA* rec) {
  if (rec) setDefaults(*rec);
}

void DT_CSCADFLT(DT_CSCA* rec, const char* text) {
  if (!rec) return;
  guarded([&] { setDefaults(*rec, text ? fixedText(text, kTextWidth) : std::string()); });
}

void DT_FSCADFLT(DT_FSCA* rec, const char* text) {
  if (!rec) return;
  guarded([&] { setDefaults(*rec, text ? fixedText(text, kFileWidth) : std::string()); });
}

void DT_ISCACOPY(const DT_ISCA* from, DT_ISCA* to) {
  if (from && to) *to = *from;
}
void DT_RSCACOPY(const DT_RSCA* from, DT_RSCA* to) {
  if (from && to) *to = *from;
}
void DT_DSCACOPY(const DT_DSCA* from, DT_DSCA* to) {
  if (from && to) *to = *from;
}
void DT_CSCACOPY(const DT_CSCA* from, DT_CSCA* to) {
  if (from && to) *to = *from;
}
void DT_FSCACOPY(const DT_FSCA* from, DT_FSCA* to) {
  if (from && to) *to = *from;
}

void DT_RSCACOPYM(const DT_RSCA* from, DT_RSCA* to) {
  if (from && to) guarded([&] { copyMain(*from, *to); });
}

void DT_RSCACOPYV(const DT_RSCA* from, DT_RSCA* to) {
  if (from && to) guarded([&] { copyValue(*from, *to); });
}

void DT_RSCACOPYTODSCA(const DT_RSCA* from, DT_DSCA* to) {
  if (from && to) guarded([&] { copyToDouble(*from, *to); });
}

void DT_DSCACOPYTORSCA(const DT_DSCA* from, DT_RSCA* to) {
  if (from && to) guarded([&] { copyToReal(*from, *to); });
}

// ---- Units ------------------------------------------------------------------

void DT_RSCASETVU(DT_RSCA* rec, const int* iser, const char* unit) {
  if (rec && iser) guarded([&] { setSeriesUnit(*rec, *iser, unitArg(unit)); });
}

void DT_DSCASETVU(DT_DSCA* rec, const int* iser, const char* unit) {
  if (rec && iser) guarded([&] { setSeriesUnit(*rec, *iser, unitArg(unit)); });
}

void DT_SETIUN(DT_UNIT* unit) {
  if (unit) guarded([&] { setUnitPosition(*unit); });
}

void DT_SETCUN(DT_UNIT* unit) {
  if (unit) guarded([&] { setUnitName(*unit); });
}

void DT_RSCACONVU(DT_RSCA* rec, const char* unit) {
  if (rec) guarded([&] { convertToUnit(*rec, unitArg(unit)); });
}

void DT_DSCACONVU(DT_DSCA* rec, const char* unit) {
  if (rec) guarded([&] { convertToUnit(*rec, unitArg(unit)); });
}

void DT_RSCACONVUI(DT_RSCA* rec, const int* iun) {
  if (rec && iun) guarded([&] { convertToUnit(*rec, *iun); });
}

void DT_DSCACONVUI(DT_DSCA* rec, const int* iun) {
  if (rec && iun) guarded([&] { convertToUnit(*rec, *iun); });
}

void DT_RSCACONVUS(DT_RSCA* recs, const int* iser, const int* iun, const int* count) {
  if (recs && iser && iun && count) guarded([&] { convertSeries(recs, *count, *iser, *iun); });
}

void DT_DSCACONVUS(DT_DSCA* recs, const int* iser, const int* iun, const int* count) {
  if (recs && iser && iun && count) guarded([&] { convertSeries(recs, *count, *iser, *iun); });
}

// ---- Values in other units ----------------------------------------------------

void DT_GETSR(const DT_RSCA* rec, const char* unit, float* value) {
  if (rec && value) guarded([&] { *value = valueIn(*rec, unitArg(unit)); });
}

void DT_GETSD(const DT_DSCA* rec, const char* unit, double* value) {
  if (rec && value) guarded([&] { *value = valueIn(*rec, unitArg(unit)); });
}

void DT_GETSR1(const DT_RSCA* rec, const int* iun, float* value) {
  if (rec && iun && value) guarded([&] { *value = valueIn(*rec, *iun); });
}

void DT_GETSD1(const DT_DSCA* rec, const int* iun, double* value) {
  if (rec && iun && value) guarded([&] { *value = valueIn(*rec, *iun); });
}

void DT_RSCAGETC(const DT_RSCA* rec, const char* unit, float* value) { DT_GETSR(rec, unit, value); }
void DT_RSCAGETI(const DT_RSCA* rec, const int* iun, float* value) { DT_GETSR1(rec, iun, value); }

void DT_RSCAGETCE(const DT_RSCA* rec, const char* unit, float* value, float* relerr) {
  DT_GETSR(rec, unit, value);
  if (rec && relerr) *relerr = rec->RELERR;
}

void DT_DSCAGETC(const DT_DSCA* rec, const char* unit, double* value) { DT_GETSD(rec, unit, value); }
void DT_DSCAGETI(const DT_DSCA* rec, const int* iun, double* value) { DT_GETSD1(rec, iun, value); }

void DT_RSCASETC(DT_RSCA* rec, const char* unit, const float* value, const int* state) {
  if (rec && value) guarded([&] { setValueIn(*rec, unitArg(unit), *value, state); });
}

void DT_RSCASETI(DT_RSCA* rec, const int* iun, const float* value, const int* state) {
  if (rec && iun && value) guarded([&] { setValueIn(*rec, *iun, *value, state); });
}

void DT_RSCASETCE(DT_RSCA* rec, const char* unit, const float* value, const float* relerr, const int* state) {
  if (!rec || !value) return;
  guarded([&] {
    if (relerr) rec->RELERR = *relerr;
    setValueIn(*rec, unitArg(unit), *value, state);  // refreshes the text with the new error
  });
}

void DT_DSCASETC(DT_DSCA* rec, const char* unit, const double* value, const int* state) {
  if (rec && value) guarded([&] { setValueIn(*rec, unitArg(unit), *value, state); });
}

void DT_DSCASETI(DT_DSCA* rec, const int* iun, const double* value, const int* state) {
  if (rec && iun && value) guarded([&] { setValueIn(*rec, *iun, *value, state); });
}

int DT_RSCAEQUAL(const DT_RSCA* a, const DT_RSCA* b) {
  int equal = 0;
  if (a && b) guarded([&] { equal = equalValues(*a, *b) ? 1 : 0; });
  return equal;
}

void DT_RSCAMINMAX(DT_RSCA* a, const DT_RSCA* b, const int* mode) {
  if (a && b && mode) guarded([&] { combineMinMax(*a, *b, *mode); });
}

void DT_DSCAMINMAX(DT_DSCA* a, const DT_DSCA* b, const int* mode) {
  if (a && b && mode) guarded([&] { combineMinMax(*a, *b, *mode); });
}

// ---- Display text -------------------------------------------------------------

void DT_SETRCHU(DT_RSCA* rec) {
  if (rec) guarded([&] { setDisplayText(*rec); });
}

void DT_SETDCHU(DT_DSCA* rec) {
  if (rec) guarded([&] { setDisplayText(*rec); });
}

void DT_SETRCHUOUT(DT_RSCA* rec) {
  if (rec) guarded([&] { setOutputText(*rec); });
}

void DT_SETDCHUOUT(DT_DSCA* rec) {
  if (rec) guarded([&] { setOutputText(*rec); });
}

void DT_UNSETRCHU(DT_RSCA* rec, int* status) {
  int st = 1;
  if (rec) guarded([&] { st = readDisplayText(*rec) ? 0 : 1; });
  if (status) *status = st;
}

void DT_UNSETDCHU(DT_DSCA* rec, int* status) {
  int st = 1;
  if (rec) guarded([&] { st = readDisplayText(*rec) ? 0 : 1; });
  if (status) *status = st;
}

void DT_PARSERCHU(const char* text, const int* length, char* number, char* uncertainty, int* found) {
  if (!text || !length) return;
  guarded([&] {
    const ValueTextParts parts = splitValueText(fixedText(text, static_cast<std::size_t>(*length)));
    if (number) setFixed(number, kPartWidth, parts.number);
    if (uncertainty) setFixed(uncertainty, kPartWidth, parts.uncertainty);
    if (found) *found = parts.hasUncertainty ? 1 : 0;
  });
}

void DT_SETICHU(const DT_ISCA* rec, char* text) {
  if (rec && text) guarded([&] { setFixed(text, kIntegerTextWidth, integerText(*rec)); });
}

void DT_UNSETICHU(DT_ISCA* rec, const char* text, int* status) {
  int st = 1;
  if (rec && text) guarded([&] { st = readIntegerText(*rec, fixedText(text, kIntegerTextWidth)) ? 0 : 1; });
  if (status) *status = st;
}

void DT_SETPERCFAC(DT_RVEC* vector, float* factor) {
  if (!vector || !factor) return;
  guarded([&] {
    const PercentDecision d = percentFactor(fixedText(vector->VU.CU), vector->V, vector->N);
    *factor = d.factor;
    if (!d.newUnit.empty()) {
      setFixed(vector->VU.CU, d.newUnit);
      setUnitPosition(vector->VU);
    }
  });
}

// ---- Keyword rows -------------------------------------------------------------

void DT_ISCAWRITE(const DT_ISCA* rec, const int* channel, const int* level, const int* close) {
  if (rec && level) guarded([&] { writeScalar(channel, level, close, integerRow(*rec, *level), integerRecord(*rec)); });
}

void DT_RSCAWRITE(const DT_RSCA* rec, const int* channel, const int* level, const int* close) {
  if (rec && level) guarded([&] { writeScalar(channel, level, close, realRow(*rec, *level), realRecord(*rec)); });
}

void DT_DSCAWRITE(const DT_DSCA* rec, const int* channel, const int* level, const int* close) {
  if (rec && level) guarded([&] { writeScalar(channel, level, close, doubleRow(*rec, *level), doubleRecord(*rec)); });
}

void DT_CSCAWRITE(const DT_CSCA* rec, const int* channel, const int* level, const int* close) {
  if (rec && level) guarded([&] { writeScalar(channel, level, close, textRow(*rec, *level), textRecord(*rec)); });
}

void DT_FSCAWRITE(const DT_FSCA* rec, const int* channel, const int* level, const int* close) {
  if (rec && level)
    guarded([&] { writeScalar(channel, level, close, fileNameRow(*rec, *level), fileNameRecord(*rec)); });
}

void DT_WRITEI(const DT_ISCA* rec, const int* channel, const int* level, const int* close) {
  DT_ISCAWRITE(rec, channel, level, close);
}
void DT_WRITER(const DT_RSCA* rec, const int* channel, const int* level, const int* close) {
  DT_RSCAWRITE(rec, channel, level, close);
}
void DT_WRITED(const DT_DSCA* rec, const int* channel, const int* level, const int* close) {
  DT_DSCAWRITE(rec, channel, level, close);
}
void DT_WRITEC(const DT_CSCA* rec, const int* channel, const int* level, const int* close) {
  DT_CSCAWRITE(rec, channel, level, close);
}
void DT_WRITEF(const DT_FSCA* rec, const int* channel, const int* level, const int* close) {
  DT_FSCAWRITE(rec, channel, level, close);
}

void DT_ISCAREAD(DT_ISCA* rec, const int* channel, int* status) {
  guarded([&] { readScalar(rec, channel, status, 5, readIntegerRow); });
}
void DT_RSCAREAD(DT_RSCA* rec, const int* channel, int* status) {
  guarded([&] { readScalar(rec, channel, status, 12, readRealRow); });
}
void DT_DSCAREAD(DT_DSCA* rec, const int* channel, int* status) {
  guarded([&] { readScalar(rec, channel, status, 14, readDoubleRow); });
}
void DT_CSCAREAD(DT_CSCA* rec, const int* channel, int* status) {
  guarded([&] { readScalar(rec, channel, status, 8, readTextRow); });
}
void DT_FSCAREAD(DT_FSCA* rec, const int* channel, int* status) {
  guarded([&] { readScalar(rec, channel, status, 8, readFileNameRow); });
}

void DT_READI(DT_ISCA* rec, const int* channel, int* status) { DT_ISCAREAD(rec, channel, status); }
void DT_READR(DT_RSCA* rec, const int* channel, int* status) { DT_RSCAREAD(rec, channel, status); }
void DT_READD(DT_DSCA* rec, const int* channel, int* status) { DT_DSCAREAD(rec, channel, status); }
void DT_READC(DT_CSCA* rec, const int* channel, int* status) { DT_CSCAREAD(rec, channel, status); }
void DT_READF(DT_FSCA* rec, const int* channel, int* status) { DT_FSCAREAD(rec, channel, status); }

void DT_WRITERXML(const DT_RSCA* rec, const int* channel) {
  if (rec) guarded([&] { writeLines(channel, realBlock(*rec)); });
}

void DT_WRITEIXML(const DT_ISCA* rec, const int* channel) {
  if (rec) guarded([&] { writeLines(channel, integerBlock(*rec)); });
}

}  // extern "C"
