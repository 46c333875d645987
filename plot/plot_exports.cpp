// The C entry points of the plot tree (declared in include/subsurf/plot.h):
// thin wrappers over the process-wide PlotTree. Plots go out as opaque
// pointers; nothing thrown inside reaches the caller.
#include "subsurf/plot.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>
#include <string>
#include <vector>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "host/paths.h"
#include "plot/plot_drawing.h"
#include "plot/plot_elements.h"
#include "plot/plot_file.h"
#include "plot/plot_tree.h"

namespace ss = subsurf;

namespace {

ss::PlotTree& tree() { return ss::plotTree(); }

// The plot a handle names; a null handle or target means the current plot.
ss::PlotRecord* plotOr(ZW_ZP** handle, ss::PlotRecord* fallback) {
  return handle && *handle ? *handle : fallback;
}
ss::PlotRecord* plotOrCurrent(ZW_ZP** handle) { return plotOr(handle, tree().current()); }

void set(int* out, int v) {
  if (out) *out = v;
}
void set(float* out, float v) {
  if (out) *out = v;
}
int in(const int* p, int fallback = 0) { return p ? *p : fallback; }
float in(const float* p, float fallback = 0.0f) { return p ? *p : fallback; }

// Runs f; anything thrown (an allocation failure) becomes status 1 and a message.
template <typename F>
void guarded(int* status, F&& f) {
  try {
    f();
  } catch (...) {
    try {
      ss::host::showMessage("Out of memory in the plot tree");
    } catch (...) {
    }
    set(status, 1);
  }
}

// ---- One template for the element families of a plot set ------------------

template <auto Member>
struct SetFamily {
  static auto* list() {
    ss::PlotSet* s = tree().currentSet();
    return s ? &(s->*Member) : nullptr;
  }
  static auto* listOfSet(int n) {
    ss::PlotRecord* p = tree().current();
    using List = std::remove_pointer_t<decltype(list())>;
    if (!p) return static_cast<List*>(nullptr);
    if (n == 0) return list();
    return n >= 1 && n <= p->setCount() ? &(p->sets[static_cast<std::size_t>(n - 1)].*Member)
                                        : static_cast<List*>(nullptr);
  }
};
using Symbols = SetFamily<&ss::PlotSet::symbols>;
using Texts = SetFamily<&ss::PlotSet::texts>;
using Lines = SetFamily<&ss::PlotSet::lines>;

template <typename Family>
void familyCount(int* n) {
  guarded(n, [&] {
    auto* l = Family::list();
    set(n, l ? l->count() : 0);
  });
}

template <typename Family, typename Fresh>
void familyAdd(int* status, Fresh fresh) {
  set(status, 1);
  guarded(status, [&] {
    if (auto* l = Family::list()) {
      l->add(fresh());
      set(status, 0);
    }
  });
}

template <typename Family>
void familySelect(const int* n, int* status) {
  set(status, 1);
  guarded(status, [&] {
    auto* l = Family::list();
    set(status, l && l->select(in(n)) ? 0 : 1);
  });
}

template <typename Family>
void familyCopy(const int* toSet, int* status) {
  set(status, 1);
  guarded(status, [&] {
    auto* from = Family::list();
    auto* to = Family::listOfSet(in(toSet));
    if (!from || !to || !from->current()) return;
    auto copy = *from->current();
    to->addCopy(copy);
    set(status, 0);
  });
}

template <typename Family>
void familyDelete(int* status) {
  set(status, 1);
  guarded(status, [&] {
    auto* l = Family::list();
    set(status, l && l->removeCurrent() ? 0 : 1);
  });
}

template <typename Family>
void familyDeleteAll() {
  guarded(nullptr, [&] {
    if (auto* l = Family::list()) l->clear();
  });
}

template <typename Family, typename Record>
void familyDefine(const Record* rec, int* status) {
  set(status, 1);
  guarded(status, [&] {
    auto* l = Family::list();
    if (!rec || !l || !l->current()) return;
    ss::defineElement(*l->current(), *rec);
    set(status, 0);
  });
}

template <typename Family, typename Record>
void familyGet(Record* rec, int* status) {
  set(status, 1);
  guarded(status, [&] {
    auto* l = Family::list();
    if (!rec || !l || !l->current()) return;
    *rec = *l->current();
    set(status, 0);
  });
}

template <typename Family>
void familyNearest(const float* x, const float* y, int* place, float* distance) {
  set(place, 0);
  set(distance, ss::kRealNull);
  guarded(place, [&] {
    auto* l = Family::list();
    if (!l || !x || !y) return;
    const auto [best, d] = l->nearest([&](const auto& e) { return ss::distanceTo(e, *x, *y); });
    if (best == 0 || !std::isfinite(d)) return;
    set(place, best);
    set(distance, static_cast<float>(d));
  });
}

template <typename Family>
void familyMove(const float* dx, const float* dy, int* status) {
  set(status, 1);
  guarded(status, [&] {
    auto* l = Family::list();
    if (!l || !l->current() || l->current()->FIXED == 1) return;
    ss::moveElement(*l->current(), in(dx), in(dy));
    set(status, 0);
  });
}

template <typename Family>
void familyFix(int* status) {
  set(status, 1);
  guarded(status, [&] {
    auto* l = Family::list();
    ss::PlotSet* s = tree().currentSet();
    if (!l || !s || !l->current()) return;
    ss::fixElement(*l->current(), ss::axisWindowOf(*s));
    set(status, 0);
  });
}

// ---- Plot-level lists ----------------------------------------------------

ss::ElementList<ZW_ZBM>* bitmaps() {
  ss::PlotRecord* p = tree().current();
  return p ? &p->bitmaps : nullptr;
}
ss::Legend* legend() {
  ss::PlotRecord* p = tree().current();
  return p ? &p->legend : nullptr;
}

void addLegendRow(const char* text, int kind, int colour, int style, float size, int* status) {
  set(status, 1);
  guarded(status, [&] {
    ss::Legend* l = legend();
    if (!l) return;
    ZW_LEG row = ss::defaultLegendRow();
    row.KIND = kind;
    row.COLOUR = colour;
    row.STYLE = style;
    row.SIZE = size;
    if (text) std::memcpy(row.TEXT, text, sizeof row.TEXT);
    l->rows.add(row);
    set(status, 0);
  });
}

// The plot-file routines: a fault is shown as a message.
void showPlotFileFault(ss::PlotFileDirection direction, ZW_ZP** plot, const char* file, int* status) {
  const ss::Status s = ss::exchangePlotFile(direction, plot ? *plot : nullptr, file);
  if (!s) guarded(nullptr, [&] { ss::host::showMessage(s.message()); });
  set(status, s ? 0 : 1);
}

}  // namespace

extern "C" {

// ---------------------------------------------------------------------------
// The tree.

void ZW_ZPINIT(void) { guarded(nullptr, [] { tree().init(); }); }
void ZW_ZPROOT(ZW_ZP** root) {
  if (root) *root = tree().root();
}
void ZW_ZPCURRENT(ZW_ZP** plot) {
  if (plot) *plot = tree().current();
}
void ZW_ZPMAKECURRENT(ZW_ZP** plot) {
  if (plot && *plot && tree().contains(*plot)) tree().makeCurrent(*plot);
}

void ZW_ZPADD(ZW_ZP** child, int* seq) {
  ZW_ZP* root = tree().root();
  ZW_ZPADDKID(&root, child, seq);
}

void ZW_ZPADDKID(ZW_ZP** parent, ZW_ZP** child, int* seq) {
  set(seq, 0);
  guarded(seq, [&] {
    ss::PlotRecord* kid = tree().addKid(plotOr(parent, tree().root()));
    tree().makeCurrent(kid);
    if (child) *child = kid;
    set(seq, kid->sequence);
  });
}

void ZW_ZPNEXT(ZW_ZP** plot, int* code) {
  if (!plot) return;
  set(code, tree().next(*plot));
}

void ZW_ZPNEXTUP(ZW_ZP** plot) {
  if (plot) *plot = ss::PlotTree::nextUp(*plot);
}

void ZW_ZPSETBYWINDOW(ZW_ZP** plot, const int* window, int* status) {
  ss::PlotRecord* found = tree().findByWindow(plot ? *plot : nullptr, in(window));
  if (found) tree().makeCurrent(found);
  if (plot) *plot = found;
  set(status, found ? 0 : 1);
}

void ZW_ZPSETBYLEVSEQ(ZW_ZP** plot, const int* seq, ZW_ZP** kid, int* status) {
  ss::PlotRecord* p = plotOrCurrent(plot);
  ss::PlotRecord* k = ss::PlotTree::kidBySequence(p, in(seq));
  if (k) p->currentChild = k;
  if (kid) *kid = k;
  set(status, k ? 0 : 1);
}

void ZW_ZPNKID(ZW_ZP** plot, int* n) {
  ss::PlotRecord* p = plotOrCurrent(plot);
  set(n, p ? static_cast<int>(p->children.size()) : 0);
}

void ZW_ZPGETIKID(ZW_ZP** plot, const int* n, ZW_ZP** kid, int* status) {
  ss::PlotRecord* p = plotOrCurrent(plot);
  const int place = in(n);
  ss::PlotRecord* k = p && place >= 1 && place <= static_cast<int>(p->children.size())
                          ? p->children[static_cast<std::size_t>(place - 1)].get()
                          : nullptr;
  if (kid) *kid = k;
  set(status, k ? 0 : 1);
}

void ZW_ZPSETKIDBYSEQ(ZW_ZP** plot, const int* seq, ZW_ZP** kid, int* status) {
  ZW_ZP* found = nullptr;
  ZW_ZPSETBYLEVSEQ(plot, seq, &found, status);
  if (found) tree().makeCurrent(found);
  if (kid) *kid = found;
}

void ZW_INFANTILE(ZW_ZP** plot, int* infantile) {
  set(infantile, ss::PlotTree::infantile(plot ? *plot : nullptr) ? 1 : 0);
}

void ZW_ZPCHECKWIN(ZW_ZP** plot) { tree().checkWindow(plot ? *plot : nullptr); }

void ZW_ZPREMOVE(ZW_ZP** plot, int* status) {
  set(status, 1);
  guarded(status, [&] { set(status, plot && tree().remove(*plot) ? 0 : 1); });
}

void ZW_ZPDEL(ZW_ZP** plot) {
  guarded(nullptr, [&] {
    if (!plot || !*plot) return;
    tree().del(*plot);
    *plot = nullptr;
  });
}

void ZW_ZPDELKIDS(ZW_ZP** plot) { guarded(nullptr, [&] { tree().deleteKids(plotOrCurrent(plot)); }); }
void ZW_ZPDELBITS(ZW_ZP** plot) { guarded(nullptr, [&] { ss::PlotTree::deleteBits(plotOrCurrent(plot)); }); }
void ZW_ZPDELMEM(void) { guarded(nullptr, [] { tree().releaseMemory(); }); }
void ZW_ZPRESET(ZW_ZP** plot) { guarded(nullptr, [&] { ss::PlotTree::reset(plotOrCurrent(plot)); }); }
void ZW_ZPREINIT(ZW_ZP** plot) { guarded(nullptr, [&] { ss::PlotTree::reinit(plotOrCurrent(plot)); }); }

void ZW_ZPGETINFO(ZW_ZP** plot, ZW_ZPINFO* info) {
  ss::PlotRecord* p = plotOrCurrent(plot);
  if (!p || !info) return;
  *info = ZW_ZPINFO{p->sequence, p->windowId, p->inherited, p->level,
                    p->currentSet, p->ownWindow, p->index1, p->index2};
}

void ZW_ZPSETWINDOW(ZW_ZP** plot, const int* window, const int* ownwin) {
  ss::PlotRecord* p = plotOrCurrent(plot);
  if (!p) return;
  if (window) p->windowId = *window;
  if (ownwin) p->ownWindow = *ownwin;
}

void ZW_ZPSETTITLE(ZW_ZP** plot, const char* title) {
  guarded(nullptr, [&] {
    if (ss::PlotRecord* p = plotOrCurrent(plot); p && title)
      p->fields.title = ss::fixedText(title, ss::kPlotTextWidth);
  });
}

void ZW_ZPGETTITLE(ZW_ZP** plot, char* title) {
  if (!title) return;
  ss::PlotRecord* p = plotOrCurrent(plot);
  ss::setFixed(title, ss::kPlotTextWidth, p ? p->fields.title : std::string());
}

// ---------------------------------------------------------------------------
// Points over all sets.

void ZW_ZPNPTS(ZW_ZP** plot, int* n) {
  ss::PlotRecord* p = plotOrCurrent(plot);
  set(n, p ? ss::plotPointCount(*p) : 0);
}

void ZW_ZPCOUNTSPTS(ZW_ZP** plot, int* counts, const int* capacity, int* nsets) {
  ss::PlotRecord* p = plotOrCurrent(plot);
  set(nsets, p ? p->setCount() : 0);
  if (!p || !counts) return;
  for (int k = 0; k < p->setCount() && k < in(capacity); ++k)
    counts[k] = p->sets[static_cast<std::size_t>(k)].pointCount();
}

void ZW_ZPGETALLRVEC(ZW_ZP** plot, const int* axis, float* values, const int* capacity, int* n) {
  set(n, 0);
  guarded(n, [&] {
    ss::PlotRecord* p = plotOrCurrent(plot);
    if (!p) return;
    const std::vector<float> all = ss::gatherAxisValues(*p, ss::axisIndex(in(axis)));
    for (int k = 0; values && k < static_cast<int>(all.size()) && k < in(capacity); ++k)
      values[k] = all[static_cast<std::size_t>(k)];
    set(n, static_cast<int>(all.size()));
  });
}

void ZW_ZPGETALLXV(ZW_ZP** plot, float* values, const int* capacity, int* n) {
  const int x = ZW_AXIS_X;
  ZW_ZPGETALLRVEC(plot, &x, values, capacity, n);
}

// ---------------------------------------------------------------------------
// Plot sets.

void ZW_ZPSADD(int* status) {
  set(status, 1);
  guarded(status, [&] { set(status, tree().addSet(nullptr) ? 0 : 1); });
}

void ZW_ZPSSET(ZW_ZP** plot, const int* n, int* status) {
  set(status, tree().selectSet(plotOrCurrent(plot), in(n)) ? 0 : 1);
}

void ZW_ZPNDS(ZW_ZP** plot, int* n) {
  ss::PlotRecord* p = plotOrCurrent(plot);
  set(n, p ? p->setCount() : 0);
}

void ZW_ZPSDEL(int* status) { set(status, tree().deleteCurrentSet() ? 0 : 1); }

void ZW_ZPDELZPS(void) {
  if (ss::PlotSet* s = tree().currentSet()) s->clearContents();
}

void ZW_ZPSCOPY(int* status) {
  set(status, 1);
  guarded(status, [&] { set(status, tree().copyCurrentSet() ? 0 : 1); });
}

void ZW_ZPSCOPYDEF(const int* from, const int* to, int* status) {
  set(status, tree().copyDefinitions(in(from), in(to)) ? 0 : 1);
}

void ZW_ZPSCOPYDEFS(const int* n, int* status) { set(status, tree().copyDefinitionsToAll(in(n)) ? 0 : 1); }

void ZW_ZPSPROMOTE(void) { tree().promoteCurrentSet(); }

void ZW_ZPSSETNAME(const char* name) {
  guarded(nullptr, [&] {
    if (ss::PlotSet* s = tree().currentSet(); s && name) s->name = ss::fixedText(name, ss::kSetNameWidth);
  });
}

void ZW_ZPSGETNAME(char* name) {
  if (!name) return;
  ss::PlotSet* s = tree().currentSet();
  ss::setFixed(name, ss::kSetNameWidth, s ? s->name : std::string());
}

void ZW_ZPSSETDATA(const int* axis, const int* n, const float* values, int* status) {
  set(status, 1);
  guarded(status, [&] {
    ss::PlotSet* s = tree().currentSet();
    const int a = ss::axisIndex(in(axis));
    const int count = in(n);
    if (!s || a < 0 || count < 0 || (count > 0 && !values)) return;
    s->data[static_cast<std::size_t>(a)].assign(values, values + count);
    set(status, 0);
  });
}

void ZW_ZPSGETSCALE(const int* axis, ZW_SCALE* scale, int* status) {
  ss::PlotSet* s = tree().currentSet();
  const int a = ss::axisIndex(in(axis));
  if (!s || a < 0 || !scale) return set(status, 1);
  *scale = s->scales[static_cast<std::size_t>(a)];
  set(status, 0);
}

void ZW_ZPSSETSCALE(const int* axis, const ZW_SCALE* scale, int* status) {
  ss::PlotSet* s = tree().currentSet();
  const int a = ss::axisIndex(in(axis));
  if (!s || a < 0 || !scale) return set(status, 1);
  s->scales[static_cast<std::size_t>(a)] = *scale;
  set(status, 0);
}

// ---------------------------------------------------------------------------
// Symbols, text items and lines of the current set.

void ZW_SYMBNSYM(int* n) { familyCount<Symbols>(n); }
void ZW_SYMBADD(int* status) { familyAdd<Symbols>(status, ss::defaultSymbol); }
void ZW_SYMBSET(const int* n, int* status) { familySelect<Symbols>(n, status); }
void ZW_SYMBDFLT(ZW_SYMB* rec) {
  if (rec) *rec = ss::defaultSymbol();
}
void ZW_SYMBCOPY(const int* toSet, int* status) { familyCopy<Symbols>(toSet, status); }
void ZW_SYMBDEL(int* status) { familyDelete<Symbols>(status); }
void ZW_SYMBDELALL(void) { familyDeleteAll<Symbols>(); }
void ZW_SYMBDEF(const ZW_SYMB* rec, int* status) { familyDefine<Symbols>(rec, status); }
void ZW_SYMBGET(ZW_SYMB* rec, int* status) { familyGet<Symbols>(rec, status); }
void ZW_SYMBNEAREST(const float* x, const float* y, int* place, float* distance) {
  familyNearest<Symbols>(x, y, place, distance);
}
void ZW_SYMBMOVE(const float* dx, const float* dy, int* status) { familyMove<Symbols>(dx, dy, status); }
void ZW_SYMBFIX(int* status) { familyFix<Symbols>(status); }

void ZW_TEXTNTXT(int* n) { familyCount<Texts>(n); }
void ZW_TEXTADD(int* status) { familyAdd<Texts>(status, ss::defaultText); }
void ZW_TEXTSET(const int* n, int* status) { familySelect<Texts>(n, status); }
void ZW_TEXTDFLT(ZW_TEXT* rec) {
  if (rec) *rec = ss::defaultText();
}
void ZW_TEXTCOPY(const int* toSet, int* status) { familyCopy<Texts>(toSet, status); }
void ZW_TEXTDEL(int* status) { familyDelete<Texts>(status); }
void ZW_TEXTDELALL(void) { familyDeleteAll<Texts>(); }
void ZW_TEXTDEF(const ZW_TEXT* rec, int* status) { familyDefine<Texts>(rec, status); }
void ZW_TEXTGET(ZW_TEXT* rec, int* status) { familyGet<Texts>(rec, status); }
void ZW_TEXTNEAREST(const float* x, const float* y, int* place, float* distance) {
  familyNearest<Texts>(x, y, place, distance);
}
void ZW_TEXTMOVE(const float* dx, const float* dy, int* status) { familyMove<Texts>(dx, dy, status); }
void ZW_TEXTFIX(int* status) { familyFix<Texts>(status); }

void ZW_LINENLIN(int* n) { familyCount<Lines>(n); }
void ZW_LINEADD(int* status) {
  familyAdd<Lines>(status, [] { return ss::LineElement(); });
}
void ZW_LINESET(const int* n, int* status) { familySelect<Lines>(n, status); }
void ZW_LINEDFLT(ZW_LINE* rec) {
  if (rec) *rec = ss::defaultLine();
}
void ZW_LINECOPY(const int* toSet, int* status) { familyCopy<Lines>(toSet, status); }
void ZW_LINEDEL(int* status) { familyDelete<Lines>(status); }
void ZW_LINEDELALL(void) { familyDeleteAll<Lines>(); }
void ZW_LINEDELZP(ZW_ZP** plot) {
  if (ss::PlotRecord* p = plotOrCurrent(plot))
    for (ss::PlotSet& s : p->sets) s.lines.clear();
}
void ZW_LINEDELZPS(void) { familyDeleteAll<Lines>(); }
void ZW_LINEDEF(const ZW_LINE* rec, int* status) { familyDefine<Lines>(rec, status); }

void ZW_LINEDEFPTS(const int* n, const float* x, const float* y, int* status) {
  set(status, 1);
  guarded(status, [&] {
    auto* l = Lines::list();
    const int count = in(n);
    if (!l || !l->current() || count < 0 || (count > 0 && (!x || !y))) return;
    l->current()->setPoints(std::vector<float>(x, x + count), std::vector<float>(y, y + count));
    set(status, 0);
  });
}

void ZW_LINEDEF1(const float* x1, const float* y1, const float* x2, const float* y2, int* status) {
  const float x[2] = {in(x1), in(x2)}, y[2] = {in(y1), in(y2)};
  const int n = 2;
  ZW_LINEDEFPTS(&n, x, y, status);
}

void ZW_BOXDEF(const float* x1, const float* y1, const float* x2, const float* y2, int* status) {
  const float x[5] = {in(x1), in(x2), in(x2), in(x1), in(x1)};
  const float y[5] = {in(y1), in(y1), in(y2), in(y2), in(y1)};
  const int n = 5;
  ZW_LINEDEFPTS(&n, x, y, status);
  if (status && *status == 0) Lines::list()->current()->CLOSED = 1;
}

void ZW_LINEGET(ZW_LINE* rec, int* status) { familyGet<Lines>(rec, status); }

void ZW_LINEGETPTS(float* x, float* y, const int* capacity, int* n) {
  set(n, 0);
  auto* l = Lines::list();
  if (!l || !l->current()) return;
  const ss::LineElement& e = *l->current();
  for (int k = 0; k < e.NPTS && k < in(capacity); ++k) {
    if (x) x[k] = e.x[static_cast<std::size_t>(k)];
    if (y) y[k] = e.y[static_cast<std::size_t>(k)];
  }
  set(n, e.NPTS);
}

void ZW_LINENEAREST(const float* x, const float* y, int* place, float* distance) {
  familyNearest<Lines>(x, y, place, distance);
}
void ZW_LINEMOVE(const float* dx, const float* dy, int* status) { familyMove<Lines>(dx, dy, status); }
void ZW_LINEFIX(int* status) { familyFix<Lines>(status); }

void ZW_LINETR(const float* a, const float* b, const float* c, const float* d, int* status) {
  set(status, 1);
  auto* l = Lines::list();
  if (!l || !l->current()) return;
  ss::transformLine(*l->current(), in(a, 1.0f), in(b), in(c, 1.0f), in(d));
  set(status, 0);
}

void ZW_LINETRX(const float* a, const float* b, int* status) {
  const float one = 1.0f, zero = 0.0f;
  ZW_LINETR(a, b, &one, &zero, status);
}

void ZW_LINECLIP(int* status) {
  set(status, 1);
  guarded(status, [&] {
    auto* l = Lines::list();
    ss::PlotSet* s = tree().currentSet();
    if (!l || !s || !l->current()) return;
    ss::clipLine(*l->current(), ss::axisWindowOf(*s));
    set(status, 0);
  });
}

// ---------------------------------------------------------------------------
// Bitmaps of the current plot.

void ZW_ZBMNBM(int* n) {
  auto* l = bitmaps();
  set(n, l ? l->count() : 0);
}
void ZW_ZBMADD(int* status) {
  set(status, 1);
  guarded(status, [&] {
    if (auto* l = bitmaps()) {
      l->add(ss::defaultBitmap());
      set(status, 0);
    }
  });
}
void ZW_ZBMSET(const int* n, int* status) {
  auto* l = bitmaps();
  set(status, l && l->select(in(n)) ? 0 : 1);
}
void ZW_ZBMSEQSET(const int* seq, int* status) {
  set(status, 1);
  auto* l = bitmaps();
  if (!l) return;
  for (int k = 1; k <= l->count(); ++k)
    if (l->at(k).SEQ == in(seq)) {
      l->select(k);
      return set(status, 0);
    }
}
void ZW_ZBMDFLT(ZW_ZBM* rec) {
  if (rec) *rec = ss::defaultBitmap();
}
void ZW_ZBMDEL(int* status) {
  auto* l = bitmaps();
  set(status, l && l->removeCurrent() ? 0 : 1);
}
void ZW_ZBMDELZP(ZW_ZP** plot) {
  if (ss::PlotRecord* p = plotOrCurrent(plot)) p->bitmaps.clear();
}
void ZW_ZBMDEF(const ZW_ZBM* rec, int* status) {
  auto* l = bitmaps();
  if (!rec || !l || !l->current()) return set(status, 1);
  const int id = l->current()->ID;
  *l->current() = *rec;
  l->current()->ID = id;
  set(status, 0);
}
void ZW_ZBMGET(ZW_ZBM* rec, int* status) {
  auto* l = bitmaps();
  if (!rec || !l || !l->current()) return set(status, 1);
  *rec = *l->current();
  set(status, 0);
}

// ---------------------------------------------------------------------------
// Legend of the current plot.

void ZW_LEGADD(const char* text, int* status) { addLegendRow(text, 1, 1, 0, 0.0f, status); }
void ZW_LEGADDF(const char* text, const int* kind, const int* colour, const int* style, int* status) {
  const int k = in(kind, 1);
  if (k < 1 || k > 6) return set(status, 1);
  addLegendRow(text, k, in(colour, 1), in(style, 1), 2.0f, status);
}
void ZW_LEGADDZPS(int* status) {
  ss::PlotSet* s = tree().currentSet();
  if (!s) return set(status, 1);
  char text[40];
  ss::setFixed(text, s->name);
  // The set's row shows its marker when it has one, else its line.
  addLegendRow(text, 6, tree().current()->currentSet, s->sym > 0 ? s->sym : s->lin, 2.0f, status);
}
void ZW_LEGADDLINE(const char* text, const int* colour, const int* style, const float* width, int* status) {
  addLegendRow(text, 2, in(colour, 1), in(style, 1), in(width, 0.35f), status);
}
void ZW_LEGADDSHAD(const char* text, const int* colour, const int* pattern, int* status) {
  addLegendRow(text, 3, in(colour, 1), in(pattern, 1), 0.0f, status);
}
void ZW_LEGADDSYMB(const char* text, const int* colour, const int* symbol, const float* size, int* status) {
  addLegendRow(text, 4, in(colour, 1), in(symbol, 1), in(size, 2.0f), status);
}
void ZW_LEGADDPT(const char* text, const int* colour, const int* symbol, int* status) {
  addLegendRow(text, 5, in(colour, 1), in(symbol, 1), 2.0f, status);
}
void ZW_LEGGET(const int* n, ZW_LEG* row, int* status) {
  ss::Legend* l = legend();
  const int place = in(n);
  if (!l || !row || place < 1 || place > l->rows.count()) return set(status, 1);
  *row = l->rows.at(place);
  set(status, 0);
}
void ZW_LEGGETALL(ZW_LEG* rows, const int* capacity, int* n) {
  ss::Legend* l = legend();
  set(n, l ? l->rows.count() : 0);
  if (!l || !rows) return;
  for (int k = 1; k <= l->rows.count() && k <= in(capacity); ++k) rows[k - 1] = l->rows.at(k);
}
void ZW_LEGIS(int* is) {
  ss::Legend* l = legend();
  set(is, l && !l->rows.empty() ? 1 : 0);
}
void ZW_LEGDFLT(void) {
  if (ss::Legend* l = legend()) *l = ss::Legend();
}
void ZW_LEGDEL(void) {
  if (ss::Legend* l = legend()) l->rows.clear();
}
void ZW_LEGPOSITION(const float* fx, const float* fy) {
  ss::Legend* l = legend();
  if (!l) return;
  if (fx) l->fx = std::clamp(*fx, 0.0f, 1.0f);
  if (fy) l->fy = std::clamp(*fy, 0.0f, 1.0f);
}

// ---------------------------------------------------------------------------
// Defaults of the blocks.

void ZW_ZPSDFLT(void) {
  guarded(nullptr, [] {
    ss::PlotSet* s = tree().currentSet();
    if (!s) return;
    ss::PlotSet fresh;
    std::swap(fresh.lines, s->lines);
    std::swap(fresh.symbols, s->symbols);
    std::swap(fresh.texts, s->texts);
    std::swap(fresh.data, s->data);
    std::swap(fresh.icodes, s->icodes);
    *s = std::move(fresh);
  });
}

void ZW_ZPDFLT(ZW_ZP** plot) {
  if (ss::PlotRecord* p = plotOrCurrent(plot)) p->fields = ss::PlotFields();
}

void ZW_ANNDFLT(ZW_ZP** plot) {
  guarded(nullptr, [&] {
    if (ss::PlotRecord* p = plotOrCurrent(plot)) p->annotation = ss::defaultAnnotation();
  });
}

void ZW_ANNINIT(ZW_ZP** plot) { ZW_ANNDFLT(plot); }

void ZW_LAYDFLT(ZW_ZP** plot) {
  if (ss::PlotRecord* p = plotOrCurrent(plot)) p->layout = ss::Layout();
}

// ---------------------------------------------------------------------------
// Drawing.

void ZW_ZPDRAW(ZW_ZP** plot, const char* file, const float* dpi, int* status) {
  set(status, 1);
  guarded(status, [&] {
    ss::PlotRecord* p = plotOrCurrent(plot);
    if (!p) return;
    ss::DrawOptions o;
    o.path = ss::fileFieldPath(file);
    if (!ss::drawing::outputKindOf(o.path, o.kind))
      return ss::host::showMessage(o.path + ": the name must end in .svg, .png or .pdf");
    if (dpi && *dpi > 0) o.dpi = *dpi;
    if (auto s = ss::drawPlot(*p, o); !s) return ss::host::showMessage(s.message());
    set(status, 0);
  });
}

// ---------------------------------------------------------------------------
// Plot files.

void ZW_ZPWRITE(ZW_ZP** plot, const char* file, int* status) {
  showPlotFileFault(ss::PlotFileDirection::Write, plot, file, status);
}

void ZW_ZPREAD(ZW_ZP** plot, const char* file, int* status) {
  showPlotFileFault(ss::PlotFileDirection::Read, plot, file, status);
}

}  // extern "C"
