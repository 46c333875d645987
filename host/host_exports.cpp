// The host services as exported C routines: a thin layer over the engine classes.
#include "subsurf/host.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include <fmt/format.h>

#include "host/csv_row.h"
#include "host/fixed_text.h"
#include "host/guarded_math.h"
#include "host/keyword_file.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "host/number_text.h"
#include "host/paths.h"
#include "host/settings.h"

namespace {

using namespace subsurf;

constexpr std::size_t kFileWidth = 260;
constexpr std::size_t kModeWidth = 16;

// One open keyword file: either a reader with its current row, or a writer with
// the row being assembled.
struct Channel {
  bool writing = false;
  KeywordFileReader reader;
  KeywordFileWriter writer;
  CsvRow row;
};

struct ChannelTable {
  std::mutex mutex;
  std::map<int, std::unique_ptr<Channel>> open;
  int nextId = 10;
};

ChannelTable& channels() {
  static ChannelTable t;
  return t;
}

Channel* channelFor(const int* id) {
  if (!id) return nullptr;
  std::lock_guard lock(channels().mutex);
  auto it = channels().open.find(*id);
  return it == channels().open.end() ? nullptr : it->second.get();
}

int openChannel(std::unique_ptr<Channel> ch) {
  std::lock_guard lock(channels().mutex);
  const int id = channels().nextId++;
  channels().open[id] = std::move(ch);
  return id;
}

void setRowField(const int* channel, const int* position, const auto& add) {
  Channel* ch = channelFor(channel);
  if (!ch || !ch->writing) return;
  const int pos = position ? *position : 1;
  if (pos == 0) ch->row.clear();
  add(ch->row);
  if (pos == 2) {
    ch->writer.writeRow(ch->row);
    ch->row.clear();
  }
}

template <typename T, typename Get>
void getField(const int* channel, const int* column, T* value, int* status, Get get) {
  Channel* ch = channelFor(channel);
  if (!ch || ch->writing || !column || !value) {
    if (status) *status = CsvRow::kAbsent;
    return;
  }
  const int st = get(ch->row, *column, *value);
  if (status) *status = st;
}

}  // namespace

extern "C" {

float Q_R_NULL(void) { return kRealNull; }
double Q_R8_NULL(void) { return kDoubleNull; }
int IQ_I_NULL(void) { return kIntNull; }
int Q_IS_RNULL(const float* value) { return value && isNull(*value) ? 1 : 0; }

void AW_MESS(const char* text, const int* length) {
  if (!text || !length) return;
  host::showMessage(fixedText(text, static_cast<std::size_t>(*length)));
}

void AW_MESSAGE(const char* text, const int* length, const int* kind, int* answer) {
  if (!text || !length) return;
  const std::string t = fixedText(text, static_cast<std::size_t>(*length));
  if (kind && *kind == 1) {
    const bool yes = host::askQuestion(t);
    if (answer) *answer = yes ? 1 : 0;
  } else {
    host::showMessage(t);
    if (answer) *answer = 0;
  }
}

void AW_CHECK_ALLOC(const int* status, const char* what) {
  if (status && *status != 0)
    host::showMessage(fmt::format("Memory allocation failed: {}", what ? fixedText(what, 40) : ""));
}

void KJF_OPEN(int* channel, const char* file, const char* mode, int* status) {
  if (status) *status = 1;
  if (!channel || !file || !mode) return;
  const std::string path = resolvePath(fixedText(file, kFileWidth));
  const std::string m = lowerCase(fixedText(mode, kModeWidth));
  auto ch = std::make_unique<Channel>();
  Status st;
  if (m == "write" || m == "new" || m == "replace") {
    ch->writing = true;
    st = ch->writer.open(path);
  } else {
    st = ch->reader.open(path);
  }
  if (!st) return;
  *channel = openChannel(std::move(ch));
  if (status) *status = 0;
}

void KJF_CLOS(const int* channel, const char* mode, int* status) {
  if (status) *status = 1;
  if (!channel) return;
  std::unique_ptr<Channel> ch;
  {
    std::lock_guard lock(channels().mutex);
    auto it = channels().open.find(*channel);
    if (it == channels().open.end()) return;
    ch = std::move(it->second);
    channels().open.erase(it);
  }
  if (!ch->writing) {
    if (status) *status = 0;
    return;
  }
  const std::string m = mode ? lowerCase(fixedText(mode, kModeWidth)) : "release";
  if (m == "delete") {
    ch->writer.discard();
    if (status) *status = 0;
    return;
  }
  const Status st = ch->writer.commit();
  if (!st) host::showMessage(st.message());
  if (status) *status = st ? 0 : 1;
}

void A_OPENASC(int* channel, const char* file, int* status) {
  static const char kWrite[16] = {'W', 'R', 'I', 'T', 'E', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};
  KJF_OPEN(channel, file, kWrite, status);
}

void A_WRITELINE(const int* channel, const char* text, const int* length) {
  Channel* ch = channelFor(channel);
  if (!ch || !ch->writing || !text || !length) return;
  ch->writer.writeLine(fixedText(text, static_cast<std::size_t>(*length)));
}

void A_LOADCSV(const int* channel, int* status) {
  Channel* ch = channelFor(channel);
  if (!ch || ch->writing) {
    if (status) *status = 1;
    return;
  }
  const int st = ch->reader.next(ch->row) ? 0 : -3;
  if (status) *status = st;
}

void A_GETCSVC(const int* channel, const int* column, char* text, const int* width, int* status) {
  if (!text || !width) return;
  std::string out;
  getField(channel, column, &out, status, [](const CsvRow& r, int c, std::string& v) { return r.text(c, v); });
  setFixed(text, static_cast<std::size_t>(*width), out);
}

void A_GETCSVI(const int* channel, const int* column, int* value, int* status) {
  getField(channel, column, value, status, [](const CsvRow& r, int c, int& v) { return r.integer(c, v); });
}

void A_GETCSVR(const int* channel, const int* column, float* value, int* status) {
  getField(channel, column, value, status, [](const CsvRow& r, int c, float& v) { return r.real(c, v); });
}

void A_GETCSVR8(const int* channel, const int* column, double* value, int* status) {
  getField(channel, column, value, status, [](const CsvRow& r, int c, double& v) { return r.real8(c, v); });
}

void A_SETCSVC(const int* channel, const char* text, const int* width, const int* position) {
  if (!text || !width) return;
  const std::string t = fixedText(text, static_cast<std::size_t>(*width));
  setRowField(channel, position, [&](CsvRow& r) { r.addText(t); });
}

void A_SETCSVI(const int* channel, const int* value, const int* position) {
  if (!value) return;
  setRowField(channel, position, [&](CsvRow& r) { r.addInt(*value); });
}

void A_SETCSVR(const int* channel, const float* value, const int* position) {
  if (!value) return;
  setRowField(channel, position, [&](CsvRow& r) { r.addReal(*value); });
}

void A_SETCSVR8(const int* channel, const double* value, const int* position) {
  if (!value) return;
  setRowField(channel, position, [&](CsvRow& r) { r.addReal8(*value); });
}

void A_SETFLNM(const char* location, const char* name, const char* type, char* fullname) {
  if (!location || !name || !type || !fullname) return;
  setFixed(fullname, kFileWidth,
           makeFileName(fixedText(location, kFileWidth), fixedText(name, kFileWidth), fixedText(type, 16)));
}

void SET_FLNM(const char* name, char* fullname) {
  if (!name || !fullname) return;
  setFixed(fullname, kFileWidth, resolvePath(fixedText(name, kFileWidth)));
}

void A_GETAENV(const char* key, char* value, int* status) {
  if (!key || !value) return;
  const auto v = setting(fixedText(key, 32));
  setFixed(value, kFileWidth, v.value_or(""));
  if (status) *status = v ? 0 : 1;
}

void XRCFN(const float* value, const int* code, char* text) {
  if (!value || !code || !text) return;
  setFixed(text, 20, formatReal(*value, *code));
}

void XIC(const int* value, char* text) {
  if (!value || !text) return;
  setFixed(text, 20, fmt::format("{}", *value));
}

void XCI(const char* text, const int* length, int* value, int* status) {
  if (!text || !length || !value) return;
  const bool ok = parseInteger(fixedText(text, static_cast<std::size_t>(*length)), *value);
  if (status) *status = ok ? 0 : 1;
}

void XCR(const char* text, const int* length, float* value, int* status) {
  if (!text || !length || !value) return;
  const bool ok = parseReal(fixedText(text, static_cast<std::size_t>(*length)), *value);
  if (status) *status = ok ? 0 : 1;
}

double A_DDEXP(const double* x, const double* p, int* err) {
  int e = 0;
  const double y = (x && p) ? guardedPower(*x, *p, e) : 0.0;
  if (err) *err = e;
  return y;
}

int IA_ILIMIT(const int* value, const int* low, const int* high) {
  if (!value || !low || !high) return 0;
  return clampInt(*value, *low, *high);
}

}  // extern "C"
