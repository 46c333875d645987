// Actions (POST /api/<action>, JSON body; places count from 1):
//   select     {image, rectangle?}            current image and rectangle
//   table      {image, column, value}         an image-table cell: "Top", "Base"
//                                             (row-count rule), "Core Length",
//                                             "UV", "Use", "Angle"
//   add        {image, x, y, w, h}            a new rectangle (made current)
//   move       {image, rectangle, dx, dy}     moved whole, kept on the photo
//   corner     {image, rectangle, vertex, x, y}  corner dragged; neighbours follow
//   edge       {image, rectangle, edge, x, y}    edge k (corners k and k+1) dragged
//   corners    {image, rectangle, corners: [[x,y] x 4]}  four free corners (a
//                                             row seen at an angle); a free
//                                             corner's drag moves it alone
//   square     {image, rectangle}             back to the upright box round it
//   delete     {image, rectangle}
//   reorder    {image, order: [places]}       rows in a new order
//   copy       {image, count?}                rows onto the next photos (all when 0)
//   rows       {image, boxes: [[x,y,w,h]...]} all rows at once
//   depths     {image, top, base, cores}      the set-depths dialog's "OK"
//   detect     {image}                        the rows found in the photo, as
//                                             `slabber detect --image N` finds
//                                             them; the finder's verdict is
//                                             shown and kept (not "checked")
//   template-apply {image, name}; template-save {image, name, description?}
//   view       {image, view, x1, x2, y1, y2, windowWidth, windowHeight}
//   undo, redo, save, split
#include "editor/editor_state.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>

#include "core/free_corners.h"
#include "core/image_settings.h"
#include "core/output_guard.h"
#include "core/photo_row_finding.h"
#include "core/row_layout.h"
#include "core/row_rectangles.h"
#include "core/session_copy.h"
#include "core/split_naming.h"
#include "host/fixed_text.h"
#include "host/image/photo.h"
#include "host/messages.h"
#include "host/nulls.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace subsurf::editor {
namespace {

// What the engine showed and asked during one action.
struct Conversation {
  std::mutex mutex;
  std::vector<std::string> messages;
  std::vector<bool> answers;     // given by the page, used in order
  std::string unansweredQuestion;
};

Conversation& conversation() {
  static Conversation c;
  return c;
}

void recordMessage(void*, const char* text) {
  Conversation& c = conversation();
  std::lock_guard lock(c.mutex);
  c.messages.emplace_back(text);
}

int answerQuestion(void*, const char* text) {
  Conversation& c = conversation();
  std::lock_guard lock(c.mutex);
  if (!c.answers.empty()) {
    const bool yes = c.answers.front();
    c.answers.erase(c.answers.begin());
    return yes ? 1 : 0;
  }
  if (c.unansweredQuestion.empty()) c.unansweredQuestion = text;
  return 0;
}

// Fields of a request body.
const json& field(const json& body, const char* key) {
  if (!body.is_object() || !body.contains(key)) throw BadRequest(fmt::format("\"{}\" is missing", key));
  return body[key];
}

int integerField(const json& body, const char* key) {
  const json& v = field(body, key);
  if (!v.is_number_integer() && !(v.is_number() && std::floor(v.get<double>()) == v.get<double>()))
    throw BadRequest(fmt::format("\"{}\" must be a whole number", key));
  const double d = v.get<double>();
  if (std::fabs(d) > 1.0e9) throw BadRequest(fmt::format("\"{}\" is out of range", key));
  return static_cast<int>(d);
}

int integerField(const json& body, const char* key, int fallback) {
  return body.is_object() && body.contains(key) && !body[key].is_null() ? integerField(body, key) : fallback;
}

float realField(const json& body, const char* key) {
  const json& v = field(body, key);
  if (!v.is_number() || !std::isfinite(v.get<double>()) || std::fabs(v.get<double>()) > 1.0e9)
    throw BadRequest(fmt::format("\"{}\" must be a number", key));
  return v.get<float>();
}

std::string textField(const json& body, const char* key) {
  const json& v = field(body, key);
  if (!v.is_string()) throw BadRequest(fmt::format("\"{}\" must be text", key));
  return v.get<std::string>();
}

json realJson(float v) { return isNull(v) ? json(nullptr) : json(v); }
json intJson(int v) { return isNull(v) ? json(nullptr) : json(v); }

std::string folderOf(const std::string& path) {
  const std::size_t start = split::fileNameStart(path);
  return start == 0 ? std::string() : path.substr(0, start - 1);
}

int clampTo(int v, int low, int high) { return std::max(low, std::min(v, high)); }

void relayIfCountChanged(CoreImage& image, int before) {
  const int rows = CoreSession::rectangleCount(image);
  if (rows == before || rows < 1) return;
  setInteger(image.intSetting(kIntCoreNumber), rows);
  layOutTrayRows(image);
}

}  // namespace

// The session as it was before an edit.
struct EditorState::Snapshot {
  CoreSession session;
  int image = 0, rectangle = 0;  // places of the current ones (0: none)
  bool unsaved = false;
};

EditorState::EditorState() {
  host::HostCallbacks cb;
  cb.message = recordMessage;
  cb.question = answerQuestion;
  host::setHostCallbacks(cb);
}

EditorState::~EditorState() {
  split_.wait();
  host::resetHostCallbacks();
}

Status EditorState::open(const std::string& sessionPath) {
  {
    std::lock_guard lock(conversation().mutex);
    conversation().messages.clear();
  }
  path_ = sessionPath;
  const Status s = readSession(session_, options_, path_);
  if (!s) return s;
  // The editor splits with the session's own names, and no command line can name other places.
  if (Status names = split::checkSessionOutputNames(options_, path_, false); !names) return names;
  for (CoreImage* image : session_.images()) {
    image::PixelSize size;
    if (image::readPixelSize(image->sourceFile(), size)) photoSizes_[image->sourceFile()] = {size.width, size.height};
  }
  return s;
}

EditorState::Frame EditorState::frameOf(CoreImage& image) {
  const int w = image.intValue(kIntPixelWidth), h = image.intValue(kIntPixelHeight);
  if (!isNull(w) && !isNull(h) && w > 0 && h > 0) return {w, h};
  auto it = photoSizes_.find(image.sourceFile());
  return it == photoSizes_.end() ? Frame{} : it->second;
}

EditorState::Frame EditorState::frameOf(int place) {
  CoreImage* image = session_.imageAt(place);
  if (!image) throw BadRequest(fmt::format("there is no image {}", place));
  return frameOf(*image);
}

std::string EditorState::photoPath(int place) {
  CoreImage* image = session_.imageAt(place);
  if (!image) throw BadRequest(fmt::format("there is no image {}", place));
  return image->sourceFile();
}

CoreImage& EditorState::imageAt(const json& body, const char* key) {
  const int place = integerField(body, key);
  CoreImage* image = session_.imageAt(place);
  if (!image) throw BadRequest(fmt::format("there is no image {}", place));
  return *image;
}

CoreRectangle& EditorState::rectangleAt(CoreImage& image, const json& body) {
  const int place = integerField(body, "rectangle");
  CoreRectangle* r = place >= 1 ? session_.rectangleAt(image, place) : nullptr;
  if (!r) throw BadRequest(fmt::format("image {} has no rectangle {}", session_.placeOf(&image), place));
  return *r;
}

// ---------------------------------------------------------------------------
// State.

json EditorState::imageJson(CoreImage& image, int place) {
  const std::string source = image.sourceFile();
  const Frame frame = frameOf(image);
  const auto photo = photoSizes_.find(source);
  json rows = json::array();
  int k = 0;
  for (CoreRectangle* r : CoreSession::rectangles(image)) {
    ++k;
    json corners = json::array();
    for (int i = 0; i < r->polygon.n; ++i) corners.push_back({r->polygon.px[i], r->polygon.py[i]});
    const RowDepths d = CoreSession::rowDepth(image, k);
    rows.push_back({{"place", k},
                    {"id", r->id},
                    {"corners", corners},
                    {"free", r->polygon.freeCorners},
                    {"top", realJson(d.top)},
                    {"base", realJson(d.base)}});
  }
  json views = json::array();
  for (int v = 0; v < kViewCount; ++v) {
    const ViewRecord& r = image.views[v];
    if (r.inUse != 1) continue;
    views.push_back({{"view", v + 1}, {"x1", r.x1}, {"x2", r.x2}, {"y1", r.y1}, {"y2", r.y2}});
  }
  return {{"place", place},
          {"Source", image.id},
          {"Path", folderOf(source)},
          {"Filename", source.substr(split::fileNameStart(source))},
          {"UV", intJson(image.intValue(kIntUV))},
          {"Top", realJson(image.realValue(kRealTop))},
          {"Base", realJson(image.realValue(kRealBase))},
          {"Core Length", realJson(image.realValue(kRealCoreLength))},
          {"Tray Length", realJson(image.realValue(kRealTrayLength))},
          {"Angle", realJson(image.angle)},
          {"Use", intJson(image.intValue(kIntUse))},
          {"View", image.viewShown},
          {"Core Number", intJson(image.intValue(kIntCoreNumber))},
          {"unit", depthUnitOf(image.realSetting(kRealTop))},
          {"frame", {frame.width, frame.height}},
          {"photo", photo == photoSizes_.end() ? json(nullptr) : json({photo->second.width, photo->second.height})},
          {"views", views},
          {"rows", rows},
          {"verdict", rowVerdict(image)},
          {"checkRows", rowsNeedChecking(image)}};
}

json EditorState::state() {
  json images = json::array();
  int place = 0;
  for (CoreImage* image : session_.images()) images.push_back(imageJson(*image, ++place));
  int currentImage = 0, currentRectangle = 0;
  if (CoreImage* image = session_.currentImage()) {
    currentImage = std::max(0, session_.placeOf(image));
    int k = 0;
    for (CoreRectangle* r : CoreSession::rectangles(*image)) {
      ++k;
      if (r == session_.currentRectangle()) currentRectangle = k;
    }
  }
  json templates = json::array();
  for (const TemplateEntry& t : listTemplates(false)) templates.push_back({{"name", t.name}, {"description", t.description}});
  return {{"file", path_},
          {"unsaved", unsaved_},
          {"canUndo", !undo_.empty()},
          {"canRedo", !redo_.empty()},
          {"current", {{"image", currentImage}, {"rectangle", currentRectangle}}},
          {"images", images},
          {"templates", templates},
          {"split", split_.progress()}};
}

// ---------------------------------------------------------------------------
// Undo.

std::unique_ptr<EditorState::Snapshot> EditorState::snapshot() {
  auto s = std::make_unique<Snapshot>();
  copyImages(session_, s->session);
  if (CoreImage* image = session_.currentImage()) {
    s->image = std::max(0, session_.placeOf(image));
    int k = 0;
    for (CoreRectangle* r : CoreSession::rectangles(*image)) {
      ++k;
      if (r == session_.currentRectangle()) s->rectangle = k;
    }
  }
  s->unsaved = unsaved_;
  return s;
}

void EditorState::restore(Snapshot& s) {
  copyImages(s.session, session_);
  CoreImage* image = s.image > 0 ? session_.imageAt(s.image) : nullptr;
  session_.setCurrent(image, image && s.rectangle > 0 ? session_.rectangleAt(*image, s.rectangle) : nullptr);
}

// ---------------------------------------------------------------------------
// Actions.

ActionResult EditorState::act(const std::string& action, const json& body) {
  Conversation& talk = conversation();
  {
    std::lock_guard lock(talk.mutex);
    talk.messages.clear();
    talk.unansweredQuestion.clear();
    talk.answers.clear();
    if (body.is_object() && body.contains("answers")) {
      if (!body["answers"].is_array()) throw BadRequest("\"answers\" must be a list of true and false");
      for (const json& a : body["answers"]) {
        if (!a.is_boolean()) throw BadRequest("\"answers\" must be a list of true and false");
        talk.answers.push_back(a.get<bool>());
      }
    }
  }
  std::string question;
  bool changed = false;
  if (action == "undo" || action == "redo") {
    auto& from = action == "undo" ? undo_ : redo_;
    auto& to = action == "undo" ? redo_ : undo_;
    if (!from.empty()) {
      std::unique_ptr<Snapshot> now = snapshot();
      restore(*from.back());
      // Undoing every edit since the last save leaves nothing unsaved.
      unsaved_ = from.back()->unsaved;
      now->unsaved = true;
      from.pop_back();
      to.push_back(std::move(now));
    }
  } else if (action == "save") {
    save();
  } else if (action == "split") {
    startSplit(body);
    std::lock_guard lock(talk.mutex);
    question = talk.unansweredQuestion;
  } else if (action == "view") {
    if (setView(body)) unsaved_ = true;  // saved with the session, but not an edit to undo
  } else {
    std::unique_ptr<Snapshot> before = snapshot();
    try {
      changed = runEdit(action, body);
    } catch (const BadRequest&) {
      restore(*before);  // a refused request leaves nothing half done
      throw;
    }
    {
      std::lock_guard lock(talk.mutex);
      question = talk.unansweredQuestion;
    }
    if (!question.empty()) {
      // The engine went on as if answered no; the page asks and sends the action again.
      restore(*before);
    } else if (changed) {
      before->unsaved = unsaved_;
      undo_.push_back(std::move(before));
      if (undo_.size() > kUndoDepth) undo_.pop_front();
      redo_.clear();
      unsaved_ = true;
    }
  }
  ActionResult result;
  std::lock_guard lock(talk.mutex);
  result.body = {{"state", state()}, {"messages", talk.messages}, {"changed", changed && question.empty()}};
  if (!question.empty()) result.body["question"] = question;
  return result;
}

bool EditorState::runEdit(const std::string& action, const json& body) {
  // A person who moves or draws an image's rows has looked at them: the
  // finder's doubt no longer holds them back from the split.
  static const std::set<std::string> kRowEdits = {"add",    "move",   "corner", "edge",   "corners",
                                                  "square", "delete", "reorder", "rows", "template-apply"};
  if (kRowEdits.contains(action)) {
    const bool changed = runRowEdit(action, body);
    if (changed) markRowsChecked(imageAt(body));
    return changed;
  }
  if (action == "select") return select(body);
  if (action == "table") return editTable(body);
  if (action == "copy") return copyRows(body);
  if (action == "depths") return setDepths(body);
  if (action == "detect") return detectRowsOf(body);
  if (action == "template-save") return saveTemplate(body);
  throw BadRequest(fmt::format("no action \"{}\"", action));
}

bool EditorState::runRowEdit(const std::string& action, const json& body) {
  if (action == "add") return addRectangle(body);
  if (action == "move") return moveRectangle(body);
  if (action == "corner") return dragCorner(body);
  if (action == "edge") return dragEdge(body);
  if (action == "corners") return setFreeCornersOf(body);
  if (action == "square") return squareRow(body);
  if (action == "delete") return deleteRectangle(body);
  if (action == "reorder") return reorderRectangles(body);
  if (action == "rows") return setRows(body);
  if (action == "template-apply") return applyTemplate(body);
  throw BadRequest(fmt::format("no action \"{}\"", action));
}

bool EditorState::select(const json& body) {
  CoreImage& image = imageAt(body);
  const int rectangle = integerField(body, "rectangle", 0);
  if (rectangle != 0) rectangleAt(image, body);
  session_.selectImageById(image.id);
  session_.setCurrent(&image, rectangle > 0 ? session_.rectangleAt(image, rectangle) : nullptr);
  return false;  // where the user looks is not an edit
}

bool EditorState::editTable(const json& body) {
  CoreImage& image = imageAt(body);
  const int place = session_.placeOf(&image);
  const std::string column = textField(body, "column");
  if (column == "Top" || column == "Base") {
    session_.editTrayDepth(place, column == "Top" ? kColTop : kColBase, realField(body, "value"), nullptr);
    return true;
  }
  if (column == "Core Length") {
    const float v = realField(body, "value");
    if (!(v > 0.0f)) {
      host::showMessage("Core Length must be above 0");
      return false;
    }
    setDepth(image.realSetting(kRealCoreLength), v, "");
    session_.applyRowCount(image, nullptr, place);
    return true;
  }
  if (column == "UV" || column == "Use") {
    const int v = integerField(body, "value");
    if (v != 0 && v != 1) throw BadRequest(fmt::format("\"{}\" is 0 or 1", column));
    setInteger(image.intSetting(column == "UV" ? kIntUV : kIntUse), v);
    return true;
  }
  if (column == "Angle") {
    image.angle = realField(body, "value");
    return true;
  }
  throw BadRequest(fmt::format("the column \"{}\" cannot be edited", column));
}

bool EditorState::addRectangle(const json& body) {
  CoreImage& image = imageAt(body);
  const Frame frame = frameOf(image);
  const PixelBox box{integerField(body, "x"), integerField(body, "y"), integerField(body, "w"), integerField(body, "h")};
  const int number = CoreSession::rectangleCount(image) + 1;
  std::string problem = boxProblem(box, number, frame.width, frame.height);
  if (problem.empty() && number >= kMaxRectangleId)
    problem = fmt::format("A photo holds at most {} rectangles", kMaxRectangleId - 1);
  if (!problem.empty()) {
    host::showMessage(problem);
    return false;
  }
  CoreRectangle* r = session_.newRectangle(image);
  CoreSession::setVertexCount(*r, 4);
  const int xs[4] = {box.x, box.x + box.width, box.x + box.width, box.x};
  const int ys[4] = {box.y, box.y, box.y + box.height, box.y + box.height};
  for (int i = 0; i < 4; ++i) session_.setPixelVertex(*r, i + 1, xs[i], ys[i]);
  setInteger(image.intSetting(kIntPixelWidth), frame.width);
  setInteger(image.intSetting(kIntPixelHeight), frame.height);
  session_.setCurrent(&image, r);
  return true;
}

bool EditorState::moveRectangle(const json& body) {
  CoreImage& image = imageAt(body);
  CoreRectangle& r = rectangleAt(image, body);
  const Frame frame = frameOf(image);
  int dx = integerField(body, "dx"), dy = integerField(body, "dy");
  const auto [minX, maxX] = std::minmax_element(r.polygon.px.begin(), r.polygon.px.end());
  const auto [minY, maxY] = std::minmax_element(r.polygon.py.begin(), r.polygon.py.end());
  if (r.polygon.n == 0) return false;
  // The whole outline stays on the photo.
  dx = clampTo(dx, -*minX, frame.width - *maxX);
  dy = clampTo(dy, -*minY, frame.height - *maxY);
  if (dx == 0 && dy == 0) return false;
  for (int i = 0; i < r.polygon.n; ++i) session_.setPixelVertex(r, i + 1, r.polygon.px[i] + dx, r.polygon.py[i] + dy);
  session_.setCurrent(&image, &r);
  return true;
}

bool EditorState::dragCorner(const json& body) {
  CoreImage& image = imageAt(body);
  CoreRectangle& r = rectangleAt(image, body);
  const Frame frame = frameOf(image);
  const int vertex = integerField(body, "vertex");
  const int x = clampTo(integerField(body, "x"), 0, frame.width);
  const int y = clampTo(integerField(body, "y"), 0, frame.height);
  if (r.polygon.freeCorners && r.polygon.n == 4 && vertex >= 1 && vertex <= 4) {
    if (session_.moveCorner(r, vertex, x, y) != 0) {
      // Shown, not an error of the page: the user let go in the wrong place.
      host::showMessage(fmt::format("Row {}: corner {} cannot go to ({},{}): the outline would not be convex",
                                    integerField(body, "rectangle"), vertex, x, y));
      return false;
    }
  } else if (session_.moveCorner(r, vertex, x, y) != 0) {
    throw BadRequest(fmt::format("rectangle {} has no corner {}", integerField(body, "rectangle"), vertex));
  }
  session_.setCurrent(&image, &r);
  return true;
}

bool EditorState::dragEdge(const json& body) {
  CoreImage& image = imageAt(body);
  CoreRectangle& r = rectangleAt(image, body);
  const Frame frame = frameOf(image);
  const int edge = integerField(body, "edge");
  if (r.polygon.n != 4 || edge < 1 || edge > 4)
    throw BadRequest(fmt::format("rectangle {} has no edge {}", integerField(body, "rectangle"), edge));
  if (r.polygon.freeCorners)
    throw BadRequest(fmt::format("rectangle {} has free corners: send its corners", integerField(body, "rectangle")));
  const int a = edge - 1, b = edge % 4;
  // An edge whose ends share their y runs across: dragging it moves that y;
  // otherwise it runs up and down and dragging moves its x. Moving one end as a
  // corner carries the other end along (the shared coordinate).
  const bool across = r.polygon.py[a] == r.polygon.py[b];
  const int x = across ? r.polygon.px[a] : clampTo(integerField(body, "x"), 0, frame.width);
  const int y = across ? clampTo(integerField(body, "y"), 0, frame.height) : r.polygon.py[a];
  session_.moveCorner(r, a + 1, x, y);
  session_.setCurrent(&image, &r);
  return true;
}

bool EditorState::setFreeCornersOf(const json& body) {
  CoreImage& image = imageAt(body);
  CoreRectangle& r = rectangleAt(image, body);
  const Frame frame = frameOf(image);
  const json& list = field(body, "corners");
  if (!list.is_array() || list.size() != 4) throw BadRequest("\"corners\" must be four [x, y] points");
  FreeCorners corners;
  for (std::size_t i = 0; i < 4; ++i) {
    if (!list[i].is_array() || list[i].size() != 2) throw BadRequest("\"corners\" must be four [x, y] points");
    corners.x[i] = integerField(json{{"x", list[i][0]}}, "x");
    corners.y[i] = integerField(json{{"y", list[i][1]}}, "y");
  }
  const std::string problem = cornersProblem(corners, integerField(body, "rectangle"), frame.width, frame.height);
  if (!problem.empty()) {
    host::showMessage(problem);
    return false;
  }
  setFreeCorners(session_, r, corners);
  session_.setCurrent(&image, &r);
  return true;
}

bool EditorState::squareRow(const json& body) {
  CoreImage& image = imageAt(body);
  CoreRectangle& r = rectangleAt(image, body);
  if (!r.polygon.freeCorners) return false;
  squareRectangle(session_, r);
  session_.setCurrent(&image, &r);
  return true;
}

bool EditorState::deleteRectangle(const json& body) {
  CoreImage& image = imageAt(body);
  CoreRectangle& r = rectangleAt(image, body);
  session_.deleteRectangleById(image, r.id);
  return true;
}

bool EditorState::reorderRectangles(const json& body) {
  CoreImage& image = imageAt(body);
  const json& order = field(body, "order");
  const int count = CoreSession::rectangleCount(image);
  if (!order.is_array() || static_cast<int>(order.size()) != count)
    throw BadRequest(fmt::format("\"order\" must list the {} rectangles of the image", count));
  std::vector<int> places;
  std::vector<bool> seen(count + 1, false);
  for (const json& p : order) {
    if (!p.is_number_integer() || p.get<int>() < 1 || p.get<int>() > count || seen[p.get<int>()])
      throw BadRequest(fmt::format("\"order\" must list each of the places 1 to {} once", count));
    seen[p.get<int>()] = true;
    places.push_back(p.get<int>());
  }
  std::vector<Polygon> outlines;
  for (int place : places) outlines.push_back(session_.rectangleAt(image, place)->polygon);
  bool same = true;
  for (int k = 0; k < count; ++k) same = same && places[k] == k + 1;
  if (same) return false;
  while (CoreRectangle* first = image.rectangles) session_.deleteRectangleById(image, first->id);
  for (const Polygon& p : outlines) session_.newRectangle(image)->polygon = p;
  session_.setCurrent(&image, nullptr);
  return true;
}

bool EditorState::copyRows(const json& body) {
  CoreImage& image = imageAt(body);
  const int from = session_.placeOf(&image);
  const int count = integerField(body, "count", 0);
  if (count < 0) throw BadRequest("\"count\" must be 0 (all following photos) or more");
  if (CoreSession::rectangleCount(image) == 0) {
    host::showMessage(fmt::format("Image {} has no rectangles to copy", from));
    return false;
  }
  const Frame frame = frameOf(image);
  RectangleTemplate holder;
  CoreSession::templateFromImage(image, holder, frame.width, frame.height);
  const int last = count == 0 ? session_.imageCount() : std::min(session_.imageCount(), from + count);
  bool changed = false;
  for (int place = from + 1; place <= last; ++place) {
    CoreImage* target = session_.imageAt(place);
    const int before = CoreSession::rectangleCount(*target);
    // The rows keep their place on the tray: scaled from this photo's frame to the next one's.
    auto photo = photoSizes_.find(target->sourceFile());
    const Frame to = photo != photoSizes_.end() ? photo->second : frameOf(*target);
    session_.applyTemplate(*target, holder, to.width, to.height);
    relayIfCountChanged(*target, before);
    changed = true;
  }
  if (!changed) host::showMessage(fmt::format("Image {} is the last photo: there is no next photo to copy to", from));
  return changed;
}

bool EditorState::setRows(const json& body) {
  CoreImage& image = imageAt(body);
  const json& list = field(body, "boxes");
  if (!list.is_array()) throw BadRequest("\"boxes\" must be a list of [x, y, w, h]");
  std::vector<PixelBox> boxes;
  for (const json& b : list) {
    if (!b.is_array() || b.size() != 4) throw BadRequest("\"boxes\" must be a list of [x, y, w, h]");
    const json fields = {{"x", b[0]}, {"y", b[1]}, {"w", b[2]}, {"h", b[3]}};
    boxes.push_back({integerField(fields, "x"), integerField(fields, "y"), integerField(fields, "w"), integerField(fields, "h")});
  }
  const Frame frame = frameOf(image);
  RowRectangles rows(session_);
  return static_cast<bool>(rows.set(image, boxes, frame.width, frame.height));
}

bool EditorState::setDepths(const json& body) {
  // Image 0 is "no starting image chosen", which the dialog answers itself.
  const int place = integerField(body, "image");
  CoreImage* image = place == 0 ? nullptr : &imageAt(body);
  if (!image) {
    CoreImage* shown = session_.currentImage();
    CoreRectangle* selected = session_.currentRectangle();
    session_.setCurrent(nullptr, nullptr);
    session_.carryDepthsForward(nullptr);  // "Select a starting image!"
    session_.setCurrent(shown, selected);  // the photo on show stays on show
    return false;
  }
  const float top = realField(body, "top"), base = realField(body, "base");
  const int cores = integerField(body, "cores", 0);
  if (!(top < base)) {
    host::showMessage("Error - Top depth >= Base Depth!");
    return false;
  }
  // A run that is not made (the core number question answered no) leaves the
  // starting image as it was too.
  const auto realsBefore = image->reals;
  const auto intsBefore = image->ints;
  const std::string unit = depthUnitOf(image->realSetting(kRealTop));
  setDepth(image->realSetting(kRealTop), top, unit);
  setDepth(image->realSetting(kRealBase), base, unit);
  if (cores >= 1) setInteger(image->intSetting(kIntCoreNumber), cores);
  else setInteger(image->intSetting(kIntCoreNumber), kIntNull);
  CoreSession::deriveTrayLengths(*image);
  // The starting tray is laid out with the rest: a tray whose core length is
  // unset is the first of its run.
  image->realSetting(kRealCoreLength).V = kRealNull;
  session_.selectImageByPlace(place);
  if (session_.carryDepthsForward(nullptr) == 0) return true;
  image->reals = realsBefore;
  image->ints = intsBefore;
  return false;
}

bool EditorState::detectRowsOf(const json& body) {
  CoreImage& image = imageAt(body);
  const int place = session_.placeOf(&image);
  // One photo, on this thread: the finder reads a reduced copy, so the page
  // waits well under a second.
  const PhotoRows found = detectRows(session_, {place}, 0, 1).front();
  host::showMessage(detectionSummary(found));
  if (const std::string note = checkRowsNote(found); !note.empty()) host::showMessage(note);
  if (!found.read) return false;
  session_.setCurrent(&image, nullptr);
  return true;
}

bool EditorState::applyTemplate(const json& body) {
  CoreImage& image = imageAt(body);
  RectangleTemplate holder;
  if (!readNamedTemplate(textField(body, "name"), holder)) return false;
  const int before = CoreSession::rectangleCount(image);
  auto photo = photoSizes_.find(image.sourceFile());
  const Frame to = photo != photoSizes_.end() ? photo->second : frameOf(image);
  session_.applyTemplate(image, holder, to.width, to.height);
  relayIfCountChanged(image, before);
  session_.setCurrent(&image, nullptr);
  return true;
}

bool EditorState::saveTemplate(const json& body) {
  CoreImage& image = imageAt(body);
  const std::string name = textField(body, "name");
  if (trimBlanks(name).empty()) {
    RectangleTemplate none;
    saveNamedTemplate(none, name);  // "Rectangle template must be given a name!"
    return false;
  }
  const std::string problem = templateNameProblem(name);
  if (!problem.empty()) {
    host::showMessage(problem);
    return false;
  }
  if (CoreSession::rectangleCount(image) == 0) {
    host::showMessage(fmt::format("Image {} has no rectangles to make a template of", session_.placeOf(&image)));
    return false;
  }
  RectangleTemplate holder;
  const Frame frame = frameOf(image);
  CoreSession::templateFromImage(image, holder, frame.width, frame.height);
  const std::string source = image.sourceFile();
  holder.description = body.contains("description") && body["description"].is_string() &&
                               !body["description"].get<std::string>().empty()
                           ? body["description"].get<std::string>()
                           : fmt::format("{} rows of {}", holder.rectangles.size(), source.substr(split::fileNameStart(source)));
  if (saveNamedTemplate(holder, name)) host::showMessage(fmt::format("Template {} saved", trimBlanks(name)));
  return false;  // the session itself is unchanged
}

bool EditorState::setView(const json& body) {
  CoreImage& image = imageAt(body);
  const int v = integerField(body, "view");
  if (v < 1 || v > kViewCount) throw BadRequest(fmt::format("\"view\" is 1 to {}", kViewCount));
  ViewRecord next = image.views[v - 1];
  next.x1 = integerField(body, "x1");
  next.x2 = integerField(body, "x2");
  next.y1 = integerField(body, "y1");
  next.y2 = integerField(body, "y2");
  if (!(next.x1 < next.x2) || !(next.y1 < next.y2)) throw BadRequest("a view shows x1 < x2 and y1 < y2");
  next.windowWidth = integerField(body, "windowWidth", -1);
  next.windowHeight = integerField(body, "windowHeight", -1);
  next.inUse = 1;
  image.views[v - 1] = next;
  image.viewShown = v;
  return true;
}

bool EditorState::save() {
  if (!saveSession(session_, options_, path_)) return false;
  unsaved_ = false;
  // What is on disk now is the reference the undo stack measures against.
  for (auto& s : undo_) s->unsaved = true;
  for (auto& s : redo_) s->unsaved = true;
  host::showMessage(fmt::format("Saved {}", path_));
  return true;
}

bool EditorState::startSplit(const json&) {
  if (split_.running()) {
    host::showMessage("A split is already running");
    return false;
  }
  split::SplitOptions options;
  UserSettings user;
  const std::string userFile = userSettingsFile();
  std::error_code ec;
  if (fs::exists(userFile, ec)) readUserSettings(userFile, user);
  applyUserSettings(user, options);
  applySessionOptions(options_, options);
  const std::string sessionFolder = fs::absolute(fs::path(path_)).parent_path().string();
  if (!options.naming.outputBesidePhoto && trimBlanks(options.naming.outputFolder).empty()) {
    // No folder chosen anywhere: the rows go next to the session, in a folder named after it.
    options.naming.outputFolder = (fs::path(sessionFolder) / (fs::path(path_).stem().string() + "_rows")).string();
  }
  if (!options.naming.outputBesidePhoto) {
    options.naming.outputFolder = fs::absolute(fs::path(trimBlanks(options.naming.outputFolder))).lexically_normal().string();
    fs::create_directories(options.naming.outputFolder, ec);
    if (ec) {
      host::showMessage(fmt::format("Cannot make the output folder {} ({})", options.naming.outputFolder, ec.message()));
      return false;
    }
  }
  if (options.writeReport) options.reportFile = split::reportFileFor(options, sessionFolder);
  // The split cuts what the page shows, on a copy: the session being edited
  // is not touched by it.
  CoreSession copy;
  copyImages(session_, copy);
  std::vector<split::PhotoJob> jobs;
  if (!split::prepareRun(copy, options, jobs)) return false;
  {
    // Asked whether missing depths should be derived: the page asks the user first.
    std::lock_guard lock(conversation().mutex);
    if (!conversation().unansweredQuestion.empty()) return false;
  }
  split_.start(std::move(jobs), std::move(options));
  return false;
}

}  // namespace subsurf::editor
