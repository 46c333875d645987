// The Slabber core session: the document the core-tray splitter edits.
//
// A session is an ordered list of core images (photographs of core trays, or of
// long core laid out in one picture). Each image carries its scalar settings
// (light kind, number of core rows, tray and row depths ...), ten zoom/pan views
// of the photo window and a list of core rectangles, one four-cornered outline
// per core row. The session also keeps which image and which rectangle are
// current (what dialogs and drawing act on), a three-deep stack of saved
// selections, the view number shown, the task-list flags, a working rectangle
// list, the default rectangle and the rectangle template in use.
//
// Lists keep the linked-list behaviour the session file and the windows rely
// on: records are numbered by id (new id = largest id + 1, so deleting the
// newest record lets its id be given again), addressed by place (counted from 0
// at the list root for images, from 1 for rectangles) and linked in creation
// order. Lookups return status 0 when found and 1 when not; nothing here throws
// on a missing id or place.
//
// CoreSession is an ordinary class so tests and programs can hold their own;
// the exported C routines (subsurf/core.h) work on the one process-wide session
// returned by coreSession().
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/nulls.h"
#include "host/status.h"
#include "subsurf/scalars.h"

namespace subsurf {

class Dataset;

// ---------------------------------------------------------------------------
// Sizes and numbering of the image settings.

inline constexpr int kViewCount = 10;
inline constexpr int kImageFileCount = 10;
inline constexpr int kImageTextCount = 10;
inline constexpr int kImageIntCount = 10;
inline constexpr int kImageRealCount = 30;
inline constexpr int kTaskFlagCount = 5;
inline constexpr int kSelectionDepth = 3;
inline constexpr int kMaxRectangleId = 100;  // a first rectangle with a larger id marks a broken list
inline constexpr int kTrayRows = 10;         // rows a tray has depth settings for (5..24)
inline constexpr int kDefaultCoreCount = 5;  // offered when "Core Number" is unset

// Integer settings, numbered from 1 as the grid and the session file show them.
enum ImageIntSetting : int {
  kIntUV = 1,          // "UV": 1 = photographed under ultraviolet light, else white light
  kIntViewed = 2,      // "Viewed": 1 once the photo has been shown
  kIntUse = 3,         // "Use": 0 leaves the image out of processing
  kIntCoreNumber = 4,  // "Core Number": number of core rows in the tray
  kIntReverse = 5,     // "Reverse": 1 = depth runs the other way; 2 = long core laid out
                       //   in one picture (more than ten rows expected, no warning)
  kIntOverride = 6,    // "Override": 1 = the image's own output options win over the session's
  kIntCgm = 7,         // "CGM": 1 = write metafiles for this image
  kIntHorizontal = 8,  // "Horizontal": 1 = rows run across the photo, 0 = down it
  kIntPixelWidth = 9,  // "Pixel Width": photo width in pixels as displayed when drawn
  kIntPixelHeight = 10 // "Pixel Height": the same for the height
};

// Real settings, numbered from 1. All are depths (series "depth", "m" unless
// the user chose another depth unit).
enum ImageRealSetting : int {
  kRealTop = 1,          // "Top Depth" ("Top"): top of the tray's first row
  kRealBase = 2,         // "Base Depth" ("Base"): base of its last row
  kRealCoreLength = 3,   // "Core Length": length of one core row
  kRealTrayLength = 4,   // "Tray Length": base minus top
  kRealFirstRow = 5,     // row r: top in 3 + 2r, base in 4 + 2r (rows 1..10 in 5..24)
  kRealDepthShift = 25,  // "Depth Shift": carried unchanged from tray to tray
  // 25 to 30 also take rows 11 to 13 of a tray laid out with more than ten rows
  // (the session file has always kept them there): 25/26 row 11, 27/28 row 12,
  // 29/30 row 13. Rows beyond 13 have no setting and are not stored.
};

// Setting numbers of row r's top and base (r from 1).
constexpr int rowTopSetting(int row) { return 3 + 2 * row; }
constexpr int rowBaseSetting(int row) { return 4 + 2 * row; }
// Highest row whose depths have a setting of their own.
inline constexpr int kMaxStoredRows = (kImageRealCount - 4) / 2;  // 13

// The SET word given to a scalar that a routine has changed.
inline constexpr int kScalarChanged = 1;

// ---------------------------------------------------------------------------
// Records.

// One zoom/pan state of the photo window (ten per image; number 1..10).
struct ViewRecord {
  int x1 = -1, x2 = -1;  // first and last image pixel column shown
  int y1 = -1, y2 = -1;  // first and last image pixel row shown
  int windowWidth = -1;  // photo window size when the view was set
  int windowHeight = -1;
  int inUse = 0;         // 1 once the view has been defined
  int zoomStep = -1;     // zoom steps from the whole photo
  float xScale = kRealNull;  // world units per image pixel in x
  float yScale = kRealNull;  // and in y
};

// A vertex outline: parallel vectors of n pixel and world coordinates.
// Pixel coordinates are image pixels from the top-left corner; world
// coordinates are pixel coordinates times the view's scales. A core rectangle
// has four vertices in order round the outline (1 and 3 opposite).
struct Polygon {
  int n = 0;
  std::vector<int> px, py;
  std::vector<float> wx, wy;
  std::vector<int> wxSet, wySet;  // 1 when the world coordinate has been set
  // Display properties, from the shared polygon defaults: "Status",
  // "Components", "Type", "Area Sign (+ve/-ve)", "Colour", "Thickness". They
  // are the rectangle's integer settings in session and template files.
  std::array<DT_ISCA, 6> props{};
  // The outline is four free corners (core/free_corners.h) rather than a
  // rectangle whose corners share coordinates: corners move one at a time and
  // the split straightens the quadrilateral.
  bool freeCorners = false;
};

enum PolygonProperty : int {
  kPolyStatus = 0, kPolyComponents, kPolyType, kPolyAreaSign, kPolyColour, kPolyThickness
};

// One core row's outline.
struct CoreRectangle {
  int status = 0;  // selection state: positive = selected
  int id = 0;      // 1..100 within its list; a list root has 0
  Polygon polygon;
  CoreRectangle* next = nullptr;
  CoreRectangle* prev = nullptr;
};

// One photograph of a tray.
struct CoreImage {
  int id = 0;  // the list root has 0
  CoreImage* prev = nullptr;
  CoreImage* next = nullptr;
  std::array<DT_FSCA, kImageFileCount> files{};  // 1: the source photograph
  std::array<DT_CSCA, kImageTextCount> texts{};  // free text
  std::array<ViewRecord, kViewCount> views{};
  CoreRectangle* rectangles = nullptr;  // first rectangle, owned
  std::array<DT_ISCA, kImageIntCount> ints{};
  std::array<DT_RSCA, kImageRealCount> reals{};
  DT_RSCA coreLengthCopy{};  // "Core Length" and "Tray Length" as the depth
  DT_RSCA trayLengthCopy{};  //   table last saw them
  std::vector<int> rowFlags{0};     // per-row bookkeeping of the depth table
  std::vector<int> rowOrder{0};
  float angle = kRealNull;          // rotation of the photograph in degrees ("Angle")
  float displayReduction = kRealNull;  // photo window's reduction when drawn
  int tableRecord = -1;  // image-table record last written, -1 = not set
  int viewShown = -1;    // view last shown ("View"), -1 = not set
  int dirty = 1;         // 1 = needs drawing/saving

  // Settings by number (from 1), as the grid and the files count them.
  DT_ISCA& intSetting(int k) { return ints[k - 1]; }
  const DT_ISCA& intSetting(int k) const { return ints[k - 1]; }
  DT_RSCA& realSetting(int k) { return reals[k - 1]; }
  const DT_RSCA& realSetting(int k) const { return reals[k - 1]; }
  int intValue(int k) const { return ints[k - 1].V; }
  float realValue(int k) const { return reals[k - 1].V; }
  // The source photograph's path and name (trailing blanks dropped).
  std::string sourceFile() const;
  void setSourceFile(std::string_view path);
};

// A named set of rectangles that can be laid on a new photograph.
struct RectangleTemplate {
  std::string name;         // up to 40 characters
  std::string description;  // up to 40 characters
  float length = kRealNull; // tray length the template was made for (depth unit)
  // Size in pixels of the photo the rectangles were drawn on; 0 = unknown,
  // in which case the rectangles are applied unscaled.
  int referenceWidth = 0;
  int referenceHeight = 0;
  std::vector<Polygon> rectangles;
};

// Top and base of one row (one rectangle), null when unset.
struct RowDepths {
  float top = kRealNull;
  float base = kRealNull;
};

// Result of reading a depth interval from a file name.
struct ParsedDepths {
  int status = 1;  // 0 read, 1 no interval, other: read failures (see parseDepths)
  float top = kRealNull;
  float base = kRealNull;
};

// Status word of one field that could not be read in a depth file name; the
// status of a parse is the sum over the fields, so it never equals 1.
inline constexpr int kDepthReadFailure = 2;

// Columns of the image table (the dataset behind the image grid), part "data".
inline constexpr std::string_view kImageTablePart = "data";
enum ImageTableColumn : int {
  kColSource = 1,       // "Source": the image's id
  kColPath = 2,         // "Path": folder of the photograph (text)
  kColFilename = 3,     // "Filename": file name of the photograph (text)
  kColTop = 4,          // "Top"
  kColBase = 5,         // "Base"
  kColCoreLength = 6,   // "Core Length"
  kColTrayLength = 7,   // "Tray Length"
  kColUV = 8,           // "UV"
  kColAngle = 9,        // "Angle"
  kColUse = 10,         // "Use"
  kColView = 11,        // "View"
  kColCoreNumber = 12,  // "Core Number"
  kColDepthShift = 28,  // real setting 25
  kColLength = 30,      // base minus top as read from the file name
};
inline constexpr int kImageTableColumns = 30;

// ---------------------------------------------------------------------------
// The session.

class CoreSession {
 public:
  // Reads the rectangle template library into the session's template; returns
  // 0 when read. Set by whoever provides the file routines.
  using TemplateReader = std::function<int(CoreSession&, const std::string& path)>;
  // Called with a window name when the windows showing the session should be
  // redrawn ("cor_split", "cor_split_1").
  using RefreshHook = std::function<void(std::string_view window)>;

  CoreSession();
  ~CoreSession();
  CoreSession(const CoreSession&) = delete;
  CoreSession& operator=(const CoreSession&) = delete;

  // --- Start and end -------------------------------------------------------
  // COR_INIT: view 1, task flags cleared, template defaulted and read from
  // "userlib:rtmplts.rctml" when that file exists, then empty image and
  // working lists and the default rectangle. A session already set up is
  // closed first.
  Status init();
  // COR_CLOSE: deletes the images from the last to the first.
  void close();
  bool initialised() const { return root_ != nullptr; }
  void setTemplateReader(TemplateReader reader) { templateReader_ = std::move(reader); }
  bool hasTemplateReader() const { return static_cast<bool>(templateReader_); }
  void setRefreshHook(RefreshHook hook) { refreshHook_ = std::move(hook); }

  // --- Images ---------------------------------------------------------------
  CoreImage* root() { return root_; }
  // COR_IMNEW: a defaulted image appended at the end, id = largest id + 1.
  // Sets up the session first if init() has not been called.
  CoreImage* newImage();
  // The same for a loaded photograph: the source file is set before the
  // image-table record is written.
  CoreImage* newImage(std::string_view sourceFile);
  // COR_IMINIT / COR_IMDFLT.
  void initImage(CoreImage& image);
  void defaultImageSettings(CoreImage& image) const;
  static void defaultView(ViewRecord& view);  // COR_DFLTVIEW

  int selectImageByPlace(int place);  // COR_IMSEQSET: 0 = root
  int selectImageById(int id);        // COR_IMIDSET
  int deleteImageByPlace(int place);  // COR_IMSEQDEL, with its rectangles
  int deleteImageById(int id);        // COR_IMIDDEL
  int imageCount() const;             // COR_IMNUM
  int currentImageIndex(int& index) const;  // COR_IMGETCINDEX: status
  int orderImages(const int* ids, int count);  // COR_IMORDER
  void refreshDisplayTexts(CoreImage& image) const;  // COR_IMSETRCHU

  // Lookups that leave the selection alone (nullptr when absent).
  CoreImage* imageAt(int place);      // place from 1
  CoreImage* findImage(int id);
  int placeOf(const CoreImage* image) const;  // from 1; 0 root; -1 absent
  std::vector<CoreImage*> images();

  CoreImage* currentImage() const { return currentImage_; }
  CoreRectangle* currentRectangle() const { return currentRectangle_; }
  void setCurrent(CoreImage* image, CoreRectangle* rectangle = nullptr) {
    currentImage_ = image;
    currentRectangle_ = rectangle;
  }

  // --- Rectangles -----------------------------------------------------------
  // COR_PONEW: appended to the image's list, id = max(1, largest) + 1 (1 for
  // an empty list). The new rectangle is not made current.
  CoreRectangle* newRectangle(CoreImage& image);
  void initRectangle(CoreRectangle& rectangle) const;  // COR_POINIT
  static void defaultRectangle(CoreRectangle& rectangle);  // COR_PODFLT
  int selectRectangleByPlace(CoreImage& image, int place);  // COR_POSEQSET
  int selectRectangleById(CoreImage& image, int id);        // COR_POIDSET
  int deleteRectangleById(CoreImage& image, int id);        // COR_POIDDEL
  static int rectangleCount(const CoreImage& image);        // COR_PONUM
  CoreRectangle* rectangleAt(CoreImage& image, int place);  // from 1, no selection change
  static std::vector<CoreRectangle*> rectangles(CoreImage& image);

  // The working list: a root rectangle (id 0) followed by rectangles.
  CoreRectangle* workingRoot() { return workingRoot_; }
  CoreRectangle* newWorkingRectangle();
  int deleteWorkingRectangle(int place);  // COR_POSEQDEL: place from 0 at the root
  int selectedWorkingCount() const;       // COR_PONUMSEL
  const CoreRectangle& defaultRectangleRecord() const { return defaultRectangle_; }

  // COR_POCOPY: polygon and settings (not id, links or status).
  static void copyRectangle(const CoreRectangle& from, CoreRectangle& to);
  // COR_POSETNV / COR_POSETXV / COR_POADDVERT (vertex index from 1).
  static void setVertexCount(CoreRectangle& rectangle, int n);
  static void setWorldVertex(CoreRectangle& rectangle, float wx, float wy, int vertex);
  void addVertex(CoreRectangle& rectangle, int px, int py, int after) const;
  // Sets a vertex's pixel position (world coordinates follow).
  void setPixelVertex(CoreRectangle& rectangle, int vertex, int px, int py) const;
  // Recomputes every world coordinate from the pixels and the current view.
  void updateWorld(CoreRectangle& rectangle) const;
  // Drags corner `vertex` of a four-cornered rectangle to (px, py): its two
  // neighbours take over the coordinate they share with it. A free-cornered
  // rectangle moves that corner alone, and refuses a move that would leave
  // its outline not convex. Returns 1 (and changes nothing) when the
  // rectangle has not four vertices, the index is outside 1..4, or a free
  // corner's move is refused.
  int moveCorner(CoreRectangle& rectangle, int vertex, int px, int py) const;

  // --- Selection stack, view, tasks -----------------------------------------
  void recallSelection(int direction);  // COR_RECALLCSET: 0 saves, else restores
  void saveSelection() { recallSelection(0); }
  void restoreSelection() { recallSelection(1); }
  int selectionDepth() const { return stackDepth_; }
  CoreImage* savedImage(int slot) const { return stackImage_[slot - 1]; }          // 1..3
  CoreRectangle* savedRectangle(int slot) const { return stackRectangle_[slot - 1]; }

  int viewNumber() const { return viewNumber_; }
  void setViewNumber(int v) { viewNumber_ = v; }
  // The current image's current view record; nullptr when there is no current
  // image or the view number is outside 1..10.
  const ViewRecord* currentView() const;
  ViewRecord* currentView();
  // x and y scales of the current view; 1 when unset or there is no view.
  float viewXScale() const;
  float viewYScale() const;

  void setTaskFlags(const int* flags, int count);  // COR_SETCORETASK
  const std::array<int, kTaskFlagCount>& taskFlags() const { return taskFlags_; }

  // Photo window size in pixels (module state of the geometry routines).
  void setWindowSize(int width, int height) { windowWidth_ = width; windowHeight_ = height; }
  int windowWidth() const { return windowWidth_; }
  int windowHeight() const { return windowHeight_; }

  // --- Template --------------------------------------------------------------
  RectangleTemplate& rectangleTemplate() { return template_; }
  static void defaultTemplate(RectangleTemplate& holder);  // COR_RHDFLT
  static void copyTemplate(const RectangleTemplate& from, RectangleTemplate& to);  // COR_RHCOPY
  // Replaces the image's rectangles with the template's, scaled from the
  // template's reference size to width x height pixels.
  void applyTemplate(CoreImage& image, const RectangleTemplate& holder, int width, int height);
  // Makes the template from the image's rectangles (drawn on width x height pixels).
  static void templateFromImage(const CoreImage& image, RectangleTemplate& holder, int width, int height);

  // --- Rows and depths ---------------------------------------------------------
  // Replaces the image's rectangles with `count` equal horizontal bands across
  // a photo of width x height pixels (top band first). count < 1 or a size
  // below 1 removes nothing and adds nothing (returns 1).
  int makeBands(CoreImage& image, int count, int width, int height);
  // Depths of the rows, one per rectangle in list order (row k: rectangle k).
  std::vector<RowDepths> rowDepths(const CoreImage& image) const;
  static RowDepths rowDepth(const CoreImage& image, int row);  // row from 1
  // Copies the tray and row depths, core number, lengths and depth shift.
  static void copyDepths(const CoreImage& from, CoreImage& to);

  // COR_PARSEDEPTHS without the table: the tray interval in a file name.
  static ParsedDepths parseDepths(std::string_view name);
  // With the table: on success writes top, base and base minus top into the
  // record (columns 4, 5, 30). Returns the status.
  static int parseDepthsInto(std::string_view name, Dataset* table, int record);

  // The row-count rule of image-table editing, after an image's top or base
  // changed (the image at `record` of the table). Returns 0 when "Core
  // Number" was set, 1 otherwise.
  int applyRowCount(CoreImage& image, Dataset* table, int record);
  // Sets "Top Depth" (column kColTop) or "Base Depth" (kColBase) as the image
  // grid does, then applies the row-count rule.
  int editTrayDepth(int place, int column, float value, Dataset* table);

  // The set-depths dialog after its "Top Depth" or "Base Depth" field
  // changed: "Tray Length" = base - top and "Core Length" = tray length /
  // "Core Number", both marked changed. Returns 1 (nothing changed) while top
  // or base is unset; the core length needs a core number of 1 or more.
  static int deriveTrayLengths(CoreImage& image);
  // "OK" of the set-depths dialog: carries the current image's depths forward
  // over the trays of the same light kind that follow it. Returns 0 when the
  // run was made.
  int carryDepthsForward(Dataset* table);
  // Redraw requested by the last depth run (cleared by the caller).
  bool redrawRequested() const { return redraw_; }
  void clearRedraw() { redraw_ = false; }

  // --- Image table ---------------------------------------------------------------
  // Writes the image's descriptive columns (source, path, file name, tray
  // length, UV, angle, use, view, core number) into record `record`; the depth
  // columns are written only by the depth routines and writeImageDepths.
  static void writeImageToTable(const CoreImage& image, Dataset* table, int record);
  static void writeImageDepths(const CoreImage& image, Dataset* table, int record);
  // Rewrites the whole table from the images (record k = image at place k).
  void refreshImageTable(Dataset* table);
  // The table kept in step with the image list: images created, deleted and
  // reordered through the session add, remove and move its records (nullptr:
  // none). Not owned.
  void setImageTable(Dataset* table) { table_ = table; }
  Dataset* imageTableOf() const { return table_; }

 private:
  void ensureInitialised();
  void releaseImages();
  void forgetImage(CoreImage* image);
  void forgetRectangle(CoreRectangle* rectangle);
  void unlinkImage(CoreImage* image);
  void unlinkRectangle(CoreRectangle*& head, CoreRectangle* rectangle);
  static void freeRectangles(CoreImage& image);
  void refresh(std::string_view window);

  CoreImage* root_ = nullptr;
  CoreImage* currentImage_ = nullptr;
  CoreRectangle* currentRectangle_ = nullptr;
  CoreRectangle* workingRoot_ = nullptr;
  CoreRectangle defaultRectangle_;
  RectangleTemplate template_;
  std::array<CoreImage*, kSelectionDepth> stackImage_{};
  std::array<CoreRectangle*, kSelectionDepth> stackRectangle_{};
  int stackDepth_ = 0;
  int viewNumber_ = 1;
  std::array<int, kTaskFlagCount> taskFlags_{};
  int windowWidth_ = 0;
  int windowHeight_ = 0;
  bool redraw_ = false;
  Dataset* table_ = nullptr;
  TemplateReader templateReader_;
  RefreshHook refreshHook_;
};

// The one session behind the exported routines.
CoreSession& coreSession();

// The session's start-up as SLABCUT_INIT runs it, without the user settings:
// loads the data dictionary "deflib:coredsdefs.dsdefs" (showing "Cannot
// proceeed - no data dictionary!" and returning 1 when that fails), makes the
// image table "cor_images" from it (replacing an earlier one) and hands it to
// the session, then sets the session up (init()). Returns 0 when started.
int startSlabber(CoreSession& session);

// The image table made by the last startSlabber (nullptr before), and its
// dataset handle for the C interface (0 before).
Dataset* imageTable();
int imageTableHandle();

}  // namespace subsurf
