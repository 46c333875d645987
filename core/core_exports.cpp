// The C interface of the core session: thin wrappers over the process-wide
// CoreSession that take every argument by pointer, hand images and rectangles
// out as opaque pointers and keep exceptions inside the library.
#include "subsurf/core.h"

#include <algorithm>
#include <string>

#include "core/core_session.h"
#include "core/photo_view.h"
#include "dictionary/data_dictionary.h"
#include "host/dataset.h"
#include "host/fixed_text.h"
#include "host/messages.h"

namespace ss = subsurf;

namespace {

ss::CoreImage* image(CoreImage** handle) { return handle ? *handle : nullptr; }
ss::CoreRectangle* rect(CoreRectangle** handle) { return handle ? *handle : nullptr; }
CoreImage* handleOf(ss::CoreImage* p) { return p; }
CoreRectangle* handleOf(ss::CoreRectangle* p) { return p; }

ss::CoreSession& session() { return ss::coreSession(); }

// The image table named by a handle; 0 means the session's own.
ss::Dataset* tableOf(const int* handle) {
  if (!handle || *handle == 0) return session().imageTableOf();
  return ss::datasetByHandle(*handle);
}

// Runs f, turning anything thrown (allocation failure) into status 1 and a
// message, so that nothing crosses into the host.
template <typename F>
void guarded(int* status, F&& f) {
  try {
    f();
  } catch (...) {
    ss::host::showMessage("Out of memory in the core session");
    if (status) *status = 1;
  }
}

void installFileReaders() {
  ss::CoreSession& s = session();
  if (s.hasTemplateReader()) return;
  s.setTemplateReader([](ss::CoreSession&, const std::string& path) {
    std::string name(260, ' ');
    ss::setFixed(name.data(), name.size(), path);
    int status = 1;
    COR_READRECTANGLES(name.c_str(), &status);
    return status;
  });
}

ss::RectangleTemplate& spareTemplate() {
  static ss::RectangleTemplate spare;
  return spare;
}

}  // namespace

extern "C" {

// ---------------------------------------------------------------------------
// Start and end.

void SLABCUT_INIT(int* status) {
  *status = 1;
  guarded(status, [&] {
    // A host that has not said how templates are read gets the file routines.
    installFileReaders();
    if (ss::startSlabber(session()) != 0) return;
    int userStatus = 0;
    COR_USERRE(&userStatus);
    *status = 0;
  });
}

void COR_INIT(int* status) {
  *status = 1;
  guarded(status, [&] {
    installFileReaders();
    *status = session().init() ? 0 : 1;
  });
}

void COR_CLOSE(int* status) {
  *status = 0;
  guarded(status, [&] { session().close(); });
}

// ---------------------------------------------------------------------------
// Images.

void COR_IMNEW(CoreImage** out) {
  *out = nullptr;
  guarded(nullptr, [&] { *out = handleOf(session().newImage()); });
}

void COR_IMINIT(CoreImage** handle) {
  if (ss::CoreImage* p = image(handle)) guarded(nullptr, [&] { session().initImage(*p); });
}

void COR_IMDFLT(CoreImage** handle) {
  if (ss::CoreImage* p = image(handle)) guarded(nullptr, [&] { session().defaultImageSettings(*p); });
}

void COR_IMSEQSET(const int* place, int* status) { *status = session().selectImageByPlace(*place); }

void COR_IMIDSET(const int* id, int* status) { *status = session().selectImageById(*id); }

void COR_IMSEQDEL(const int* place, int* status) { *status = session().deleteImageByPlace(*place); }

void COR_IMIDDEL(const int* id, int* status) { *status = session().deleteImageById(*id); }

void COR_IMNUM(int* count) { *count = session().imageCount(); }

void COR_IMGETCINDEX(int* index, int* status) { *status = session().currentImageIndex(*index); }

void COR_IMORDER(const int* ids, const int* count, int* status) {
  *status = 0;
  guarded(status, [&] { *status = session().orderImages(ids, *count); });
}

void COR_IMSETRCHU(CoreImage** handle) {
  if (ss::CoreImage* p = image(handle)) session().refreshDisplayTexts(*p);
}

void COR_IMCURRENT(CoreImage** out, int* id) {
  ss::CoreImage* p = session().currentImage();
  *out = handleOf(p);
  *id = p ? p->id : -1;
}

int I_COR_IMID(CoreImage** handle) {
  ss::CoreImage* p = image(handle);
  return p ? p->id : -1;
}

// ---------------------------------------------------------------------------
// Rectangles.

void COR_PONEW(CoreImage** handle, CoreRectangle** out, int* id) {
  *out = nullptr;
  *id = -1;
  ss::CoreImage* p = image(handle);
  if (!p) return;
  guarded(nullptr, [&] {
    ss::CoreRectangle* r = session().newRectangle(*p);
    *out = handleOf(r);
    *id = r->id;
  });
}

void COR_POINIT(CoreRectangle** handle) {
  if (ss::CoreRectangle* r = rect(handle)) session().initRectangle(*r);
}

void COR_PODFLT(CoreRectangle** handle) {
  if (ss::CoreRectangle* r = rect(handle)) ss::CoreSession::defaultRectangle(*r);
}

void COR_POSEQSET(CoreImage** handle, const int* place, int* status) {
  ss::CoreImage* p = image(handle);
  *status = p ? session().selectRectangleByPlace(*p, *place) : 1;
}

void COR_POIDSET(CoreImage** handle, const int* id, int* status) {
  ss::CoreImage* p = image(handle);
  *status = p ? session().selectRectangleById(*p, *id) : 1;
}

void COR_POSEQDEL(const int* place, int* status) { *status = session().deleteWorkingRectangle(*place); }

void COR_POIDDEL(CoreImage** handle, const int* id, int* status) {
  ss::CoreImage* p = image(handle);
  *status = p ? session().deleteRectangleById(*p, *id) : 1;
}

void COR_PONUM(CoreImage** handle, int* count) {
  ss::CoreImage* p = image(handle);
  *count = p ? ss::CoreSession::rectangleCount(*p) : 0;
}

void COR_PONUMSEL(int* count) { *count = session().selectedWorkingCount(); }

void COR_POCOPY(CoreRectangle** from, CoreRectangle** to) {
  ss::CoreRectangle* a = rect(from);
  ss::CoreRectangle* b = rect(to);
  if (a && b) guarded(nullptr, [&] { ss::CoreSession::copyRectangle(*a, *b); });
}

void COR_POSETNV(CoreRectangle** handle, const int* n) {
  if (ss::CoreRectangle* r = rect(handle)) guarded(nullptr, [&] { ss::CoreSession::setVertexCount(*r, *n); });
}

void COR_POSETXV(CoreRectangle** handle, const float* wx, const float* wy, const int* vertex) {
  if (ss::CoreRectangle* r = rect(handle)) ss::CoreSession::setWorldVertex(*r, *wx, *wy, *vertex);
}

void COR_POADDVERT(CoreRectangle** handle, const int* px, const int* py, const int* after) {
  if (ss::CoreRectangle* r = rect(handle)) guarded(nullptr, [&] { session().addVertex(*r, *px, *py, *after); });
}

void COR_POSHAREDCOORDS(const int* vertex, int* first, int* second) { ss::sharedCoords(*vertex, *first, *second); }

void COR_POMOVECORNER(CoreRectangle** handle, const int* vertex, const int* px, const int* py, int* status) {
  ss::CoreRectangle* r = rect(handle);
  *status = r ? session().moveCorner(*r, *vertex, *px, *py) : 1;
}

void COR_POCURRENT(CoreRectangle** out, int* id) {
  ss::CoreRectangle* r = session().currentRectangle();
  *out = handleOf(r);
  *id = r ? r->id : -1;
}

// ---------------------------------------------------------------------------
// Selection, tasks, views.

void COR_RECALLCSET(const int* direction) { session().recallSelection(*direction); }

void COR_SETCORETASK(const int* flags, const int* count) { session().setTaskFlags(flags, *count); }

void COR_DFLTVIEW(CoreImage** handle, const int* view) {
  ss::CoreImage* p = image(handle);
  if (p && *view >= 1 && *view <= ss::kViewCount) ss::CoreSession::defaultView(p->views[*view - 1]);
}

void COR_SETVIEWNUM(const int* view) { session().setViewNumber(*view); }

void COR_GETVIEWNUM(int* view) { *view = session().viewNumber(); }

void COR_SETVIEW(CoreImage** handle, const int* view, const int* x1, const int* x2, const int* y1, const int* y2,
                 const float* xscale, const float* yscale, int* status) {
  ss::CoreImage* p = image(handle);
  if (!p || *view < 1 || *view > ss::kViewCount) {
    *status = 1;
    return;
  }
  ss::ViewRecord& v = p->views[*view - 1];
  v.x1 = *x1;
  v.x2 = *x2;
  v.y1 = *y1;
  v.y2 = *y2;
  v.xScale = *xscale;
  v.yScale = *yscale;
  v.inUse = 1;
  *status = 0;
}

void MAP_SETWINSIZE(const int* width, const int* height) { session().setWindowSize(*width, *height); }

void COR_RHDFLT(void) { ss::CoreSession::defaultTemplate(session().rectangleTemplate()); }

void COR_RHCOPY(const int* direction) {
  guarded(nullptr, [&] {
    if (*direction == 0)
      ss::CoreSession::copyTemplate(session().rectangleTemplate(), spareTemplate());
    else
      ss::CoreSession::copyTemplate(spareTemplate(), session().rectangleTemplate());
  });
}

// ---------------------------------------------------------------------------
// Depths.

void COR_PARSEDEPTHS(const char* name, const int* table, const int* record, int* status, const int* length) {
  const std::size_t n = static_cast<std::size_t>(std::clamp(*length, 0, 260));
  const std::string text(name, n);
  *status = 1;
  guarded(status, [&] { *status = ss::CoreSession::parseDepthsInto(text, tableOf(table), *record); });
}

void COR_SETDEPTHS(const int* /*window*/, const int* /*event*/, const int* table) {
  guarded(nullptr, [&] { session().carryDepthsForward(tableOf(table)); });
}

void COR_EDITDEPTH(const int* place, const int* column, const float* value, const int* table, int* status) {
  *status = 1;
  guarded(status, [&] { *status = session().editTrayDepth(*place, *column, *value, tableOf(table)); });
}

void COR_IMAGETABLE(int* table) { *table = ss::imageTableHandle(); }

// ---------------------------------------------------------------------------
// Photo-view coordinates.

float R_MAP_VRATX(void) { return ss::viewRatioX(session()); }

float R_MAP_VRATY(void) { return ss::viewRatioY(session()); }

void MAP_WTOVRCOORDS(const float* wx, const float* wy, float* vx, float* vy) {
  ss::worldToWindow(session(), *wx, *wy, *vx, *vy);
}

void MAP_WTOVCOORDS(const float* wx, const float* wy, float* vx, float* vy) {
  ss::worldToWindow(session(), *wx, *wy, *vx, *vy);
}

void MAP_VTOWRCOORDS(const float* vx, const float* vy, float* wx, float* wy) {
  ss::windowToWorld(session(), *vx, *vy, *wx, *wy);
}

int I_MAP_POINTINWIN(const float* wx, const float* wy) { return ss::pointInWindow(session(), *wx, *wy); }

int I_MAP_IPOINTINWIN(const int* px, const int* py) { return ss::pixelInWindow(session(), *px, *py); }

int I_MAP_ISLEFT(const float* ax, const float* ay, const float* bx, const float* by, const float* px,
                 const float* py) {
  return ss::sideOfLine(*ax, *ay, *bx, *by, *px, *py);
}

void MAP_WTOVLINE(float* ax, float* ay, float* bx, float* by, int* visible) {
  *visible = ss::clipToWindow(session(), *ax, *ay, *bx, *by) ? 1 : 0;
}

void COR_POTOVIEW(CoreRectangle** handle, float* vx, float* vy, const int* capacity, int* count) {
  *count = 0;
  ss::CoreRectangle* r = rect(handle);
  if (!r) return;
  guarded(nullptr, [&] {
    const std::vector<ss::WindowPoint> points = ss::outlineToWindow(session(), *r);
    const int n = static_cast<int>(points.size());
    for (int i = 0; i < std::min(n, *capacity); ++i) {
      vx[i] = points[i].x;
      vy[i] = points[i].y;
    }
    *count = n;
  });
}

void COR_POPTWITHIN(CoreRectangle** handle, const float* wx, const float* wy, int* within) {
  ss::CoreRectangle* r = rect(handle);
  *within = (r && ss::pointWithin(session(), *r, *wx, *wy)) ? 1 : 0;
}

}  // extern "C"
