// The C entry points that shape the current line: reference lines across the
// set's window, boxes, smooth curves, lines made from data and from vectors,
// and plot files written or read without a screen.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "host/paths.h"
#include "plot/plot_elements.h"
#include "plot/plot_file.h"
#include "plot/plot_tree.h"
#include "subsurf/plot.h"

namespace ss = subsurf;

namespace {

constexpr std::size_t kMessageWidth = 200;

void set(int* out, int v) {
  if (out) *out = v;
}
float in(const float* p) { return p ? *p : 0.0f; }
bool known(float v) { return std::isfinite(v) && !ss::isNull(v); }

ss::LineElement* currentLine() {
  ss::PlotSet* s = ss::plotTree().currentSet();
  return s ? s->lines.current() : nullptr;
}

// Gives the current line its points; false (status 1) without a current line.
// Nothing thrown (an allocation failure) reaches the caller.
bool definePoints(std::vector<float> x, std::vector<float> y, int* status, bool closed = false) {
  set(status, 1);
  try {
    ss::LineElement* l = currentLine();
    if (!l) return false;
    l->setPoints(std::move(x), std::move(y));
    l->CLOSED = closed ? 1 : 0;
    set(status, 0);
    return true;
  } catch (...) {
    return false;
  }
}

// The current set's window, when the limits asked for are all known.
bool window(ss::AxisWindow& w, bool needX, bool needY) {
  const ss::PlotSet* s = ss::plotTree().currentSet();
  if (!s) return false;
  w = ss::axisWindowOf(*s);
  return (!needX || (known(w.xmin) && known(w.xmax))) && (!needY || (known(w.ymin) && known(w.ymax)));
}

// One coordinate of the Catmull-Rom span from p1 to p2 at t in [0, 1].
float catmullRom(float p0, float p1, float p2, float p3, float t) {
  const float t2 = t * t, t3 = t2 * t;
  return 0.5f * (2.0f * p1 + (p2 - p0) * t + (2.0f * p0 - 5.0f * p1 + 4.0f * p2 - p3) * t2 +
                 (3.0f * p1 - p0 - 3.0f * p2 + p3) * t3);
}

void putMessage(char* message, const std::string& text) {
  if (message) ss::setFixed(message, kMessageWidth, text);
}

}  // namespace

extern "C" {

void ZW_LINEDEF2(const float* y, int* status) {
  ss::AxisWindow w{};
  if (!window(w, true, false)) return set(status, 1);
  definePoints({w.xmin, w.xmax}, {in(y), in(y)}, status);
}

void ZW_LINEDEF3(const float* x, int* status) {
  ss::AxisWindow w{};
  if (!window(w, false, true)) return set(status, 1);
  definePoints({in(x), in(x)}, {w.ymin, w.ymax}, status);
}

void ZW_LINEDEF4(const float* a, const float* b, int* status) {
  ss::AxisWindow w{};
  if (!window(w, true, false)) return set(status, 1);
  definePoints({w.xmin, w.xmax}, {in(a) + in(b) * w.xmin, in(a) + in(b) * w.xmax}, status);
}

void ZW_LINEDEF5(const float* x1, const float* y1, const float* x2, const float* y2, int* status) {
  ss::AxisWindow w{};
  const float ax = in(x1), ay = in(y1), bx = in(x2), by = in(y2);
  if (!window(w, true, true) || (ax == bx && ay == by)) return set(status, 1);
  std::vector<float> x, y;
  if (ax == bx) {
    x = {ax, ax};
    y = {w.ymin, w.ymax};
  } else {
    // Extended to the x edges, then cut where it leaves the y range.
    const double slope = (static_cast<double>(by) - ay) / (static_cast<double>(bx) - ax);
    x = {w.xmin, w.xmax};
    y = {static_cast<float>(ay + slope * (w.xmin - ax)), static_cast<float>(ay + slope * (w.xmax - ax))};
  }
  if (!definePoints(std::move(x), std::move(y), status)) return;
  ss::clipLine(*currentLine(), w);
  if (currentLine()->NPTS < 2) set(status, 1);  // the line misses the window
}

void ZW_LINEDEFCURVED(const int* n, const float* x, const float* y, const int* steps, int* status) {
  const int count = n ? *n : 0;
  const int per = steps ? *steps : 0;
  if (count < 2 || !x || !y || per < 1 || per > 100) return set(status, 1);
  // Every point steers its neighbours' spans: a curve cannot pass an unknown one.
  for (int k = 0; k < count; ++k)
    if (!known(x[k]) || !known(y[k])) return set(status, 1);
  std::vector<float> cx, cy;
  try {
    cx.reserve(static_cast<std::size_t>((count - 1) * per + 1));
    cy.reserve(cx.capacity());
    for (int k = 0; k + 1 < count; ++k) {
      // The ends repeat their own point as the missing neighbour.
      const int k0 = std::max(k - 1, 0), k3 = std::min(k + 2, count - 1);
      for (int j = 0; j < per; ++j) {
        const float t = static_cast<float>(j) / static_cast<float>(per);
        cx.push_back(j == 0 ? x[k] : catmullRom(x[k0], x[k], x[k + 1], x[k3], t));
        cy.push_back(j == 0 ? y[k] : catmullRom(y[k0], y[k], y[k + 1], y[k3], t));
      }
    }
  } catch (...) {
    return set(status, 1);
  }
  cx.push_back(x[count - 1]);
  cy.push_back(y[count - 1]);
  definePoints(std::move(cx), std::move(cy), status);
}

void ZW_BOXDEF1(const float* xc, const float* yc, const float* hw, const float* hh, int* status) {
  const float x1 = in(xc) - std::fabs(in(hw)), x2 = in(xc) + std::fabs(in(hw));
  const float y1 = in(yc) - std::fabs(in(hh)), y2 = in(yc) + std::fabs(in(hh));
  ZW_BOXDEF(&x1, &y1, &x2, &y2, status);
}

void ZW_BOXDEF2(int* status) {
  ss::AxisWindow w{};
  if (!window(w, true, true)) return set(status, 1);
  ZW_BOXDEF(&w.xmin, &w.ymin, &w.xmax, &w.ymax, status);
}

void ZW_LINEMAKE(int* status) {
  set(status, 1);
  ss::PlotSet* s = ss::plotTree().currentSet();
  if (!s || s->pointCount() == 0) return;
  std::vector<float> x = s->data[0], y = s->data[1];
  y.resize(x.size(), ss::kRealNull);
  // A point with an unknown coordinate breaks the line there.
  for (std::size_t k = 0; k < x.size(); ++k)
    if (!known(x[k]) || !known(y[k])) x[k] = y[k] = ss::kRealNull;
  ZW_LINEADD(status);
  if (status && *status) return;
  definePoints(std::move(x), std::move(y), status);
}

void ZW_LINEMAKE1(const int* n, const float* x, const float* y, int* status) {
  const int count = n ? *n : 0;
  if (count < 0 || (count > 0 && (!x || !y))) return set(status, 1);
  ZW_LINEADD(status);
  if (status && *status) return;
  ZW_LINEDEFPTS(n, x, y, status);
}

void ZW_LINECOPYTOGVEC(DT_RVEC* x, DT_RVEC* y, int* status) {
  set(status, 1);
  const ss::LineElement* l = currentLine();
  if (!l || !x || !y || (x->N > 0 && !x->V) || (y->N > 0 && !y->V)) return;
  const int fit = std::min({l->NPTS, std::max(x->N, 0), std::max(y->N, 0)});
  std::copy_n(l->x.begin(), fit, x->V);
  std::copy_n(l->y.begin(), fit, y->V);
  x->N = y->N = fit;
  set(status, fit == l->NPTS ? 0 : 1);
}

void ZW_LINECOPYFROMGVEC(const DT_RVEC* x, const DT_RVEC* y, int* status) {
  if (!x || !y || x->N != y->N || x->N < 0 || (x->N > 0 && (!x->V || !y->V))) return set(status, 1);
  ZW_LINEDEFPTS(&x->N, x->V, y->V, status);
}

void ZW_LINEWRITE(char* text, const int* capacity, int* length, int* status) {
  set(status, 1);
  set(length, 0);
  try {
    const ss::LineElement* l = currentLine();
    const int room = capacity ? *capacity : 0;
    if (!l || !text || room <= 0) return;
    const std::string record = ss::lineRecordText(*l);
    if (record.size() > static_cast<std::size_t>(room)) return;
    ss::setFixed(text, static_cast<std::size_t>(room), record);
    set(length, static_cast<int>(record.size()));
    set(status, 0);
  } catch (...) {
  }
}

void ZW_LINEREAD(const char* text, const int* length, int* status) {
  set(status, 1);
  try {
    ss::PlotSet* s = ss::plotTree().currentSet();
    const int n = length ? *length : 0;
    if (!s || !text || n <= 0) return;
    ss::LineElement read;
    if (auto r = ss::readLineRecordText(std::string_view(text, static_cast<std::size_t>(n)), read); !r)
      return ss::host::showMessage(r.message());
    s->lines.add(std::move(read));
    set(status, 0);
  } catch (...) {
  }
}

// As ZW_ZPWRITE and ZW_ZPREAD, with the fault put in message (200
// characters, blank when none) rather than shown.
void ZW_ZPWRITEDO(ZW_ZP** plot, const char* file, char* message, int* status) {
  const ss::Status s = ss::exchangePlotFile(ss::PlotFileDirection::Write, plot ? *plot : nullptr, file);
  putMessage(message, s ? std::string() : s.message());
  set(status, s ? 0 : 1);
}

void ZW_ZPREADDO(ZW_ZP** plot, const char* file, char* message, int* status) {
  const ss::Status s = ss::exchangePlotFile(ss::PlotFileDirection::Read, plot ? *plot : nullptr, file);
  putMessage(message, s ? std::string() : s.message());
  set(status, s ? 0 : 1);
}

}  // extern "C"
