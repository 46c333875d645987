// The core session's lists: images, rectangles, the working list, the
// selection stack, views, task flags and the rectangle template.
#include "core/core_session.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "core/image_settings.h"
#include "host/dataset.h"
#include "host/fixed_text.h"
#include "host/paths.h"

namespace subsurf {

// ---------------------------------------------------------------------------
// CoreImage helpers.

std::string CoreImage::sourceFile() const { return fixedText(files[0].V); }

void CoreImage::setSourceFile(std::string_view path) {
  setFixed(files[0].V, path);
  files[0].SET = kScalarChanged;
}

// ---------------------------------------------------------------------------
// Construction and lifetime.

CoreSession::CoreSession() { defaultRectangle(defaultRectangle_); }

CoreSession::~CoreSession() { releaseImages(); }

void CoreSession::freeRectangles(CoreImage& image) {
  CoreRectangle* r = image.rectangles;
  while (r) {
    CoreRectangle* next = r->next;
    delete r;
    r = next;
  }
  image.rectangles = nullptr;
}

// Drops every record, roots included.
void CoreSession::releaseImages() {
  if (root_) {
    CoreImage* img = root_;
    while (img) {
      CoreImage* next = img->next;
      freeRectangles(*img);
      delete img;
      img = next;
    }
  }
  if (workingRoot_) {
    CoreRectangle* r = workingRoot_;
    while (r) {
      CoreRectangle* next = r->next;
      delete r;
      r = next;
    }
  }
  root_ = nullptr;
  workingRoot_ = nullptr;
  currentImage_ = nullptr;
  currentRectangle_ = nullptr;
  stackImage_.fill(nullptr);
  stackRectangle_.fill(nullptr);
  stackDepth_ = 0;
}

void CoreSession::ensureInitialised() {
  if (!root_) {
    root_ = new CoreImage;
    initImage(*root_);
    root_->id = 0;
  }
  if (!workingRoot_) {
    workingRoot_ = new CoreRectangle;
    initRectangle(*workingRoot_);
  }
}

Status CoreSession::init() {
  releaseImages();
  viewNumber_ = 1;
  taskFlags_.fill(0);
  redraw_ = false;

  // The user's rectangle templates, when the library exists; a library that
  // cannot be read leaves the defaults rather than half a template.
  defaultTemplate(template_);
  const std::string library = makeFileName("userlib:", "rtmplts", "rctml");
  if (fileExists(library) && templateReader_) {
    if (templateReader_(*this, library) != 0) defaultTemplate(template_);
  }

  ensureInitialised();
  defaultRectangle(defaultRectangle_);
  if (table_) table_->part(kImageTablePart).setRecordCount(0);
  return Status::ok();
}

void CoreSession::close() {
  if (!root_) return;
  for (int place = imageCount(); place >= 1; --place) deleteImageByPlace(place);
}

void CoreSession::refresh(std::string_view window) {
  if (refreshHook_) refreshHook_(window);
}

// ---------------------------------------------------------------------------
// Images.

void CoreSession::defaultView(ViewRecord& view) { view = ViewRecord{}; }

void CoreSession::initImage(CoreImage& image) {
  // The record keeps its place in the list (id and links) so that a linked
  // image can be reset; a new record has none yet.
  for (CoreRectangle* r = image.rectangles; r; r = r->next) forgetRectangle(r);
  freeRectangles(image);
  for (auto& v : image.views) defaultView(v);
  for (auto& f : image.files) DT_FSCADFLT(&f, std::string(260, ' ').c_str());
  const std::string blanks40(40, ' ');
  for (auto& t : image.texts) DT_CSCADFLT(&t, blanks40.c_str());
  image.rowFlags.assign(1, 0);
  image.rowOrder.assign(1, 0);
  image.angle = kRealNull;
  image.displayReduction = kRealNull;
  image.tableRecord = -1;
  image.viewShown = -1;
  image.dirty = 1;
  defaultImageSettings(image);
}

void CoreSession::defaultImageSettings(CoreImage& image) const {
  setUpImageSettings(image);
}

void CoreSession::refreshDisplayTexts(CoreImage& image) const {
  for (auto& r : image.reals) DT_SETRCHU(&r);
}

CoreImage* CoreSession::newImage() { return newImage(std::string_view()); }

CoreImage* CoreSession::newImage(std::string_view sourceFile) {
  ensureInitialised();
  auto* image = new CoreImage;
  initImage(*image);
  if (!sourceFile.empty()) image->setSourceFile(sourceFile);
  int largest = 0;
  CoreImage* tail = root_;
  for (CoreImage* p = root_; p; p = p->next) {
    largest = std::max(largest, p->id);
    tail = p;
  }
  image->id = largest + 1;
  image->prev = tail;
  image->next = nullptr;
  tail->next = image;
  if (table_) {
    const int place = imageCount();
    table_->part(kImageTablePart).insertRecord(place);
    writeImageToTable(*image, table_, place);
    writeImageDepths(*image, table_, place);
  }
  return image;
}

int CoreSession::selectImageByPlace(int place) {
  if (!root_ || place < 0) return 1;
  CoreImage* p = root_;
  for (int i = 0; i < place && p; ++i) p = p->next;
  if (!p) return 1;
  currentImage_ = p;
  return 0;
}

int CoreSession::selectImageById(int id) {
  if (!root_) return 1;
  for (CoreImage* p = root_; p; p = p->next) {
    if (p->id == id) {
      currentImage_ = p;
      return 0;
    }
  }
  return 1;
}

CoreImage* CoreSession::imageAt(int place) {
  if (!root_ || place < 1) return nullptr;
  CoreImage* p = root_;
  for (int i = 0; i < place && p; ++i) p = p->next;
  return p;
}

CoreImage* CoreSession::findImage(int id) {
  if (!root_ || id < 1) return nullptr;
  for (CoreImage* p = root_->next; p; p = p->next)
    if (p->id == id) return p;
  return nullptr;
}

int CoreSession::placeOf(const CoreImage* image) const {
  int place = 0;
  for (const CoreImage* p = root_; p; p = p->next, ++place)
    if (p == image) return place;
  return -1;
}

std::vector<CoreImage*> CoreSession::images() {
  std::vector<CoreImage*> out;
  if (root_)
    for (CoreImage* p = root_->next; p; p = p->next) out.push_back(p);
  return out;
}

int CoreSession::imageCount() const {
  int n = 0;
  if (root_)
    for (const CoreImage* p = root_->next; p; p = p->next) ++n;
  return n;
}

int CoreSession::currentImageIndex(int& index) const {
  const int place = currentImage_ ? placeOf(currentImage_) : -1;
  index = place;
  return place < 0 ? 1 : 0;
}

void CoreSession::unlinkImage(CoreImage* image) {
  if (image->prev) image->prev->next = image->next;
  if (image->next) image->next->prev = image->prev;
  image->prev = nullptr;
  image->next = nullptr;
}

// Clears every reference the session holds to an image about to be freed (and
// to its rectangles), so that a saved selection can never bring it back.
void CoreSession::forgetImage(CoreImage* image) {
  for (CoreRectangle* r = image->rectangles; r; r = r->next) forgetRectangle(r);
  for (auto& slot : stackImage_)
    if (slot == image) slot = nullptr;
  if (currentImage_ == image) currentImage_ = nullptr;
}

void CoreSession::forgetRectangle(CoreRectangle* rectangle) {
  for (auto& slot : stackRectangle_)
    if (slot == rectangle) slot = nullptr;
  if (currentRectangle_ == rectangle) currentRectangle_ = nullptr;
}

int CoreSession::deleteImageById(int id) {
  CoreImage* image = findImage(id);
  if (!image) return 1;
  // The next image becomes current, else the one before (the root does not
  // count: with the last image gone there is no current image).
  CoreImage* successor = image->next;
  CoreImage* predecessor = image->prev == root_ ? nullptr : image->prev;
  if (table_) table_->part(kImageTablePart).removeRecord(placeOf(image));
  unlinkImage(image);
  forgetImage(image);
  currentImage_ = successor ? successor : predecessor;
  freeRectangles(*image);
  delete image;
  return 0;
}

int CoreSession::deleteImageByPlace(int place) {
  CoreImage* image = imageAt(place);
  if (!image) return 1;
  // The rectangles go first, each found by place and deleted by id as the
  // rectangle editor does; places past the end land on the last rectangle.
  const int count = rectangleCount(*image);
  for (int i = 1; i <= count; ++i) {
    selectRectangleByPlace(*image, i);
    CoreRectangle* r = currentRectangle_;
    bool ownRectangle = false;
    for (CoreRectangle* p = image->rectangles; p; p = p->next) ownRectangle = ownRectangle || p == r;
    if (ownRectangle) deleteRectangleById(*image, r->id);
  }
  deleteImageById(image->id);
  currentRectangle_ = (currentImage_ && currentImage_ != root_) ? currentImage_->rectangles : nullptr;
  return 0;
}

int CoreSession::orderImages(const int* ids, int count) {
  if (count < 2 || !ids || !root_) return 0;
  int status = 0;
  const std::vector<CoreImage*> before = images();
  saveSelection();
  CoreImage* placed = root_;
  for (int i = 0; i < count; ++i) {
    if (ids[i] < 1 || selectImageById(ids[i]) != 0) {
      status = 1;
      continue;
    }
    CoreImage* image = currentImage_;
    if (image != placed) {
      if (placed->next != image) {
        unlinkImage(image);
        image->prev = placed;
        image->next = placed->next;
        if (placed->next) placed->next->prev = image;
        placed->next = image;
      }
      placed = image;
    }
  }
  restoreSelection();
  if (table_) {
    // Move the table's records the way the images moved.
    std::vector<CoreImage*> order = before;
    DatasetPart& part = table_->part(kImageTablePart);
    const std::vector<CoreImage*> after = images();
    for (std::size_t q = 0; q < after.size(); ++q) {
      const auto it = std::find(order.begin() + static_cast<long>(q), order.end(), after[q]);
      const auto from = static_cast<std::size_t>(it - order.begin());
      if (from == q) continue;
      part.moveRecord(static_cast<int>(from) + 1, static_cast<int>(q) + 1);
      std::rotate(order.begin() + static_cast<long>(q), order.begin() + static_cast<long>(from),
                  order.begin() + static_cast<long>(from) + 1);
    }
  }
  return status;
}

// ---------------------------------------------------------------------------
// Rectangles.

void CoreSession::defaultRectangle(CoreRectangle& rectangle) {
  rectangle.status = 0;
  Polygon& poly = rectangle.polygon;
  poly.n = 0;
  poly.px.clear();
  poly.py.clear();
  poly.wx.clear();
  poly.wy.clear();
  poly.wxSet.clear();
  poly.wySet.clear();
  setUpPolygonProperties(poly);
}

void CoreSession::initRectangle(CoreRectangle& rectangle) const {
  rectangle.id = 0;
  rectangle.next = nullptr;
  rectangle.prev = nullptr;
  defaultRectangle(rectangle);
}

CoreRectangle* CoreSession::newRectangle(CoreImage& image) {
  auto* rectangle = new CoreRectangle;
  initRectangle(*rectangle);
  if (!image.rectangles) {
    rectangle->id = 1;
    image.rectangles = rectangle;
    return rectangle;
  }
  int largest = 1;
  CoreRectangle* tail = image.rectangles;
  for (CoreRectangle* p = image.rectangles; p; p = p->next) {
    largest = std::max(largest, p->id);
    tail = p;
  }
  rectangle->id = largest + 1;
  rectangle->prev = tail;
  tail->next = rectangle;
  return rectangle;
}

CoreRectangle* CoreSession::newWorkingRectangle() {
  ensureInitialised();
  auto* rectangle = new CoreRectangle;
  initRectangle(*rectangle);
  int largest = 0;
  CoreRectangle* tail = workingRoot_;
  for (CoreRectangle* p = workingRoot_->next; p; p = p->next) {
    largest = std::max(largest, p->id);
    tail = p;
  }
  rectangle->id = tail == workingRoot_ ? 1 : std::max(1, largest) + 1;
  rectangle->prev = tail;
  tail->next = rectangle;
  return rectangle;
}

int CoreSession::selectRectangleByPlace(CoreImage& image, int place) {
  CoreRectangle* p = image.rectangles;
  if (!p || p->id < 1 || p->id > kMaxRectangleId) return 1;
  for (int i = 1;; ++i) {
    currentRectangle_ = p;
    if (i == place) return 0;
    if (!p->next) return 1;
    p = p->next;
  }
}

int CoreSession::selectRectangleById(CoreImage& image, int id) {
  for (CoreRectangle* p = image.rectangles; p; p = p->next) {
    if (p->id == id) {
      currentRectangle_ = p;
      return 0;
    }
  }
  return 1;
}

CoreRectangle* CoreSession::rectangleAt(CoreImage& image, int place) {
  int i = 1;
  for (CoreRectangle* p = image.rectangles; p; p = p->next, ++i)
    if (i == place) return p;
  return nullptr;
}

std::vector<CoreRectangle*> CoreSession::rectangles(CoreImage& image) {
  std::vector<CoreRectangle*> out;
  for (CoreRectangle* p = image.rectangles; p; p = p->next) out.push_back(p);
  return out;
}

int CoreSession::rectangleCount(const CoreImage& image) {
  int n = 0;
  for (const CoreRectangle* p = image.rectangles; p; p = p->next) ++n;
  return n;
}

void CoreSession::unlinkRectangle(CoreRectangle*& head, CoreRectangle* rectangle) {
  if (head == rectangle) head = rectangle->next;
  if (rectangle->prev) rectangle->prev->next = rectangle->next;
  if (rectangle->next) rectangle->next->prev = rectangle->prev;
  rectangle->prev = nullptr;
  rectangle->next = nullptr;
}

int CoreSession::deleteRectangleById(CoreImage& image, int id) {
  CoreRectangle* r = image.rectangles;
  while (r && r->id != id) r = r->next;
  if (!r) return 1;
  CoreRectangle* successor = r->next;
  CoreRectangle* predecessor = r->prev;
  unlinkRectangle(image.rectangles, r);
  forgetRectangle(r);
  currentRectangle_ = successor ? successor : predecessor;
  delete r;
  return 0;
}

int CoreSession::deleteWorkingRectangle(int place) {
  // Place 0 is the list's root, which holds the list and is never deleted.
  if (!workingRoot_ || place < 1) return 1;
  CoreRectangle* r = workingRoot_;
  for (int i = 0; i < place && r; ++i) r = r->next;
  if (!r) return 1;
  CoreRectangle* successor = r->next;
  CoreRectangle* predecessor = r->prev == workingRoot_ ? nullptr : r->prev;
  CoreRectangle* head = workingRoot_;
  unlinkRectangle(head, r);
  forgetRectangle(r);
  currentRectangle_ = successor ? successor : predecessor;
  delete r;
  return 0;
}

int CoreSession::selectedWorkingCount() const {
  // The walk stops at the record that has no successor before looking at it,
  // so the final record is never counted; the rectangle editor has always
  // counted this way and the selection tools are built on it.
  int n = 0;
  for (const CoreRectangle* p = workingRoot_; p && p->next; p = p->next)
    if (p->status > 0) ++n;
  return n;
}

void CoreSession::copyRectangle(const CoreRectangle& from, CoreRectangle& to) {
  if (&from == &to) return;
  to.polygon = from.polygon;
}

void CoreSession::setVertexCount(CoreRectangle& rectangle, int n) {
  n = std::max(0, n);
  Polygon& p = rectangle.polygon;
  const auto size = static_cast<std::size_t>(n);
  p.n = n;
  p.px.resize(size, 0);
  p.py.resize(size, 0);
  p.wx.resize(size, kRealNull);
  p.wy.resize(size, kRealNull);
  p.wxSet.resize(size, 0);
  p.wySet.resize(size, 0);
}

void CoreSession::setWorldVertex(CoreRectangle& rectangle, float wx, float wy, int vertex) {
  Polygon& p = rectangle.polygon;
  if (vertex < 1 || vertex > p.n) return;
  p.wx[vertex - 1] = wx;
  p.wy[vertex - 1] = wy;
  p.wxSet[vertex - 1] = 1;
  p.wySet[vertex - 1] = 1;
}

void CoreSession::updateWorld(CoreRectangle& rectangle) const {
  Polygon& p = rectangle.polygon;
  const float sx = viewXScale(), sy = viewYScale();
  for (int i = 0; i < p.n; ++i) {
    p.wx[i] = static_cast<float>(p.px[i]) * sx;
    p.wy[i] = static_cast<float>(p.py[i]) * sy;
    p.wxSet[i] = 1;
    p.wySet[i] = 1;
  }
}

void CoreSession::addVertex(CoreRectangle& rectangle, int px, int py, int after) const {
  Polygon& p = rectangle.polygon;
  if (p.n < 2 || after < 1 || after > p.n) return;
  const std::vector<int> oldX = p.px, oldY = p.py;
  const int n = p.n + 1;
  setVertexCount(rectangle, n);
  for (int i = 0, k = 0; i < n; ++i) {
    if (i == after) {
      p.px[i] = px;
      p.py[i] = py;
    } else {
      p.px[i] = oldX[k];
      p.py[i] = oldY[k];
      ++k;
    }
  }
  updateWorld(rectangle);
}

void CoreSession::setPixelVertex(CoreRectangle& rectangle, int vertex, int px, int py) const {
  Polygon& p = rectangle.polygon;
  if (vertex < 1 || vertex > p.n) return;
  p.px[vertex - 1] = px;
  p.py[vertex - 1] = py;
  p.wx[vertex - 1] = static_cast<float>(px) * viewXScale();
  p.wy[vertex - 1] = static_cast<float>(py) * viewYScale();
  p.wxSet[vertex - 1] = 1;
  p.wySet[vertex - 1] = 1;
}

// ---------------------------------------------------------------------------
// Selection stack.

void CoreSession::recallSelection(int direction) {
  if (direction == 0) {
    // Push: each slot moves one deeper only when it holds something, so an
    // empty slot never overwrites a set one; the deepest entry falls off.
    if (stackImage_[1]) stackImage_[2] = stackImage_[1];
    if (stackImage_[0]) stackImage_[1] = stackImage_[0];
    if (currentImage_) stackImage_[0] = currentImage_;
    if (stackRectangle_[1]) stackRectangle_[2] = stackRectangle_[1];
    if (stackRectangle_[0]) stackRectangle_[1] = stackRectangle_[0];
    if (currentRectangle_) stackRectangle_[0] = currentRectangle_;
    ++stackDepth_;
    return;
  }
  // Pop. Rectangle slots are cleared as they move up; the deepest image slot
  // keeps its value.
  currentImage_ = stackImage_[0];
  stackImage_[0] = stackImage_[1];
  stackImage_[1] = stackImage_[2];
  currentRectangle_ = stackRectangle_[0];
  stackRectangle_[0] = stackRectangle_[1];
  stackRectangle_[1] = stackRectangle_[2];
  stackRectangle_[2] = nullptr;
  --stackDepth_;
}

// ---------------------------------------------------------------------------
// Views and tasks.

const ViewRecord* CoreSession::currentView() const {
  if (!currentImage_ || viewNumber_ < 1 || viewNumber_ > kViewCount) return nullptr;
  return &currentImage_->views[viewNumber_ - 1];
}

ViewRecord* CoreSession::currentView() {
  return const_cast<ViewRecord*>(static_cast<const CoreSession*>(this)->currentView());
}

namespace {
// A scale that was never set (or is zero) leaves pixels and world coordinates equal.
float usableScale(float s) { return (isNull(s) || s == 0.0f) ? 1.0f : s; }
}  // namespace

float CoreSession::viewXScale() const {
  const ViewRecord* v = currentView();
  return v ? usableScale(v->xScale) : 1.0f;
}

float CoreSession::viewYScale() const {
  const ViewRecord* v = currentView();
  return v ? usableScale(v->yScale) : 1.0f;
}

void CoreSession::setTaskFlags(const int* flags, int count) {
  if (count < 1 || !flags) return;
  taskFlags_.fill(0);
  for (int i = 0; i < std::min(count, kTaskFlagCount); ++i) taskFlags_[i] = flags[i];
}

// ---------------------------------------------------------------------------
// Templates, bands and rows.

void CoreSession::defaultTemplate(RectangleTemplate& holder) { holder = RectangleTemplate{}; }

void CoreSession::copyTemplate(const RectangleTemplate& from, RectangleTemplate& to) {
  if (&from != &to) to = from;
}

namespace {
int scaled(int v, double factor) { return static_cast<int>(std::lround(v * factor)); }
}  // namespace

void CoreSession::applyTemplate(CoreImage& image, const RectangleTemplate& holder, int width, int height) {
  for (CoreRectangle* r = image.rectangles; r; r = r->next) forgetRectangle(r);
  freeRectangles(image);
  const double fx = (holder.referenceWidth > 0 && width > 0) ? double(width) / holder.referenceWidth : 1.0;
  const double fy = (holder.referenceHeight > 0 && height > 0) ? double(height) / holder.referenceHeight : 1.0;
  for (const Polygon& poly : holder.rectangles) {
    CoreRectangle* r = newRectangle(image);
    r->polygon = poly;
    setVertexCount(*r, poly.n);
    for (int i = 0; i < poly.n; ++i) {
      r->polygon.px[i] = scaled(poly.px[i], fx);
      r->polygon.py[i] = scaled(poly.py[i], fy);
    }
    updateWorld(*r);
  }
  if (width > 0 && height > 0) {
    image.intSetting(kIntPixelWidth).V = width;
    image.intSetting(kIntPixelWidth).SET = kScalarChanged;
    image.intSetting(kIntPixelHeight).V = height;
    image.intSetting(kIntPixelHeight).SET = kScalarChanged;
  }
}

void CoreSession::templateFromImage(const CoreImage& image, RectangleTemplate& holder, int width, int height) {
  holder.rectangles.clear();
  for (const CoreRectangle* r = image.rectangles; r; r = r->next) holder.rectangles.push_back(r->polygon);
  holder.referenceWidth = std::max(0, width);
  holder.referenceHeight = std::max(0, height);
  holder.length = image.realValue(kRealTrayLength);
}

int CoreSession::makeBands(CoreImage& image, int count, int width, int height) {
  if (count < 1 || width < 1 || height < 1) return 1;
  for (CoreRectangle* r = image.rectangles; r; r = r->next) forgetRectangle(r);
  freeRectangles(image);
  // Outlines run round from the top-left corner (1) clockwise on pixel
  // corners, so band k covers rows k*H/n up to (k+1)*H/n and the bands tile
  // the photo without gaps.
  for (int k = 0; k < count; ++k) {
    const int top = static_cast<int>(static_cast<long long>(k) * height / count);
    const int bottom = static_cast<int>(static_cast<long long>(k + 1) * height / count);
    CoreRectangle* r = newRectangle(image);
    setVertexCount(*r, 4);
    const int xs[4] = {0, width, width, 0};
    const int ys[4] = {top, top, bottom, bottom};
    for (int i = 0; i < 4; ++i) {
      r->polygon.px[i] = xs[i];
      r->polygon.py[i] = ys[i];
    }
    updateWorld(*r);
  }
  image.intSetting(kIntPixelWidth).V = width;
  image.intSetting(kIntPixelWidth).SET = kScalarChanged;
  image.intSetting(kIntPixelHeight).V = height;
  image.intSetting(kIntPixelHeight).SET = kScalarChanged;
  return 0;
}

RowDepths CoreSession::rowDepth(const CoreImage& image, int row) {
  if (row < 1 || row > kMaxStoredRows) return {};
  return {image.realValue(rowTopSetting(row)), image.realValue(rowBaseSetting(row))};
}

std::vector<RowDepths> CoreSession::rowDepths(const CoreImage& image) const {
  std::vector<RowDepths> out;
  int row = 1;
  for (const CoreRectangle* r = image.rectangles; r; r = r->next, ++row) out.push_back(rowDepth(image, row));
  return out;
}

void CoreSession::copyDepths(const CoreImage& from, CoreImage& to) {
  if (&from == &to) return;
  for (int k = 1; k <= kImageRealCount; ++k) DT_RSCACOPY(&from.realSetting(k), &to.realSetting(k));
  DT_ISCACOPY(&from.intSetting(kIntCoreNumber), &to.intSetting(kIntCoreNumber));
  DT_RSCACOPY(&from.coreLengthCopy, &to.coreLengthCopy);
  DT_RSCACOPY(&from.trayLengthCopy, &to.trayLengthCopy);
}

// ---------------------------------------------------------------------------
// The process-wide session.

CoreSession& coreSession() {
  static CoreSession session;
  return session;
}

}  // namespace subsurf
