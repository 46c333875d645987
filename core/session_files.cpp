// Session, template and user-settings files of the core-tray splitter. The
// layouts are described in session_files.h and,
// with examples, in docs/file-formats.md.
#include "core/session_files.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>

#include "core/free_corners.h"
#include "core/image_settings.h"
#include "core/session_copy.h"
#include "core/split_process.h"
#include "host/fixed_text.h"
#include "host/keyword_file.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "host/paths.h"
#include "subsurf/core.h"
#include "units/keyword_rows.h"

namespace fs = std::filesystem;

namespace subsurf {

namespace {

// Keywords of the records.
constexpr std::string_view kVersion = "version";
constexpr std::string_view kImages = "images";
constexpr std::string_view kOverride = "override";
constexpr std::string_view kRootName = "rootname";
constexpr std::string_view kCgms = "cgms";
constexpr std::string_view kDoReport = "do_report";
constexpr std::string_view kReportRoot = "report_root";
constexpr std::string_view kReportIp = "report_ip";
constexpr std::string_view kImageNum = "image num";
constexpr std::string_view kImageFile = "image file";
constexpr std::string_view kIntegerScalars = "integer scalars";
constexpr std::string_view kRealScalars = "real scalars";
constexpr std::string_view kPolies = "polies";
constexpr std::string_view kPolyNum = "poly num";
constexpr std::string_view kVerts = "verts";
constexpr std::string_view kDescription = "description";
constexpr std::string_view kLength = "length";
constexpr std::string_view kSessionsPath = "sessions_path";
constexpr std::string_view kOutputPath = "output_path";
constexpr std::string_view kOutputOp = "output_op";
constexpr std::string_view kTemplate = "template";

// Keys of the image's further block (the rows between its integer and its
// real scalars). The file-name and text scalars are keyed by their own codes.
constexpr std::string_view kViewKey = "view";
constexpr std::string_view kAngleKey = "angle";
constexpr std::string_view kReductionKey = "reduction";  // keys of real rows are at most 16 characters
constexpr std::string_view kViewShownKey = "view_shown";
constexpr std::string_view kCoreLengthCopyKey = "core_length_copy";
constexpr std::string_view kTrayLengthCopyKey = "tray_length_copy";

// Versions that brought optional records.
const FileVersion kReportVersion{2.1, ""};     // "do_report", "report_root"
const FileVersion kReportOptionVersion{2.11, ""};  // "report_ip"

// Bounds that no real file comes near; beyond them the file is taken as
// corrupt rather than allocating without limit.
constexpr int kMaxImages = 100000;
constexpr int kMaxScalarRows = 1000;
constexpr int kMaxVertices = 10000;

// A row of a view record: key, view number, then these fields.
constexpr int kViewFields = 10;

// ---------------------------------------------------------------------------
// Reading records with line numbers.

// A text from the file as quoted in a message: a file that is not a keyword
// file at all (a photograph opened by mistake) must not fill the message box.
std::string shown(std::string_view text) {
  constexpr std::size_t kMost = 40;
  return text.size() <= kMost ? std::string(text) : std::string(text.substr(0, kMost)) + "...";
}

class RecordReader {
 public:
  explicit RecordReader(KeywordFileReader& in) : in_(in) {}

  Status fail(std::string_view what) const { return Status::error(in_.where(what)); }

  // The next record, whatever its keyword; `expected` names what should come.
  Status next(CsvRow& row, std::string_view expected) {
    if (!in_.next(row)) return fail(fmt::format("the file ends where \"{}\" was expected", expected));
    return Status::ok();
  }

  // The next record, which must have this keyword.
  Status expect(std::string_view keyword, CsvRow& row) {
    Status s = next(row, keyword);
    if (!s) return s;
    const std::string found = rowKey(row);
    if (found != keyword) return fail(fmt::format("\"{}\" expected, found \"{}\"", keyword, shown(found)));
    return Status::ok();
  }

  // A whole number in column 2 (or `column`) of a record.
  Status integer(const CsvRow& row, int& out, int column = 2) const {
    const int rc = row.integer(column, out);
    if (rc == CsvRow::kOk) return Status::ok();
    if (rc == CsvRow::kAbsent && row.field(column).empty())
      return fail(fmt::format("\"{}\" has no value in field {}", rowKey(row), column));
    return fail(fmt::format("\"{}\" needs a whole number in field {}, found \"{}\"", rowKey(row), column,
                            row.field(column)));
  }

  // A count in column 2 between 0 and `most`.
  Status count(const CsvRow& row, int most, int& out) const {
    Status s = integer(row, out);
    if (!s) return s;
    if (out < 0 || out > most)
      return fail(fmt::format("\"{}\" gives {}, which is not between 0 and {}", rowKey(row), out, most));
    return Status::ok();
  }

  Status keywordInteger(std::string_view keyword, int& out) {
    CsvRow row;
    Status s = expect(keyword, row);
    return s ? integer(row, out) : s;
  }

  Status keywordText(std::string_view keyword, std::string& out) {
    CsvRow row;
    Status s = expect(keyword, row);
    if (s) out = row.field(2);
    return s;
  }

  bool atEnd() {
    CsvRow row;
    if (!in_.next(row)) return true;
    extra_ = rowKey(row);
    return false;
  }
  Status notEnded(std::string_view after) const {
    return fail(fmt::format("\"{}\" found after {}; the file should end there", extra_, after));
  }

 private:
  KeywordFileReader& in_;
  std::string extra_;
};

// The keywords of the file's own records, which are never scalar keys.
bool isFileKeyword(std::string_view key) {
  for (std::string_view k : {kVersion, kImages, kOverride, kRootName, kCgms, kDoReport, kReportRoot, kReportIp,
                             kImageNum, kImageFile, kIntegerScalars, kPolies, kPolyNum, kVerts})
    if (key == k) return true;
  return false;
}

// Shows a failure and hands it back.
Status told(Status s) {
  if (!s) host::showMessage(s.message());
  return s;
}

Status toldError(std::string message) { return told(Status::error(std::move(message))); }

// The reason in a host file error, with our own words in front.
Status openFailure(std::string_view what, const Status& s) {
  return toldError(fmt::format("Could not open {}: {}", what, s.message()));
}

// ---------------------------------------------------------------------------
// Defaults to compare against, so that the optional rows hold only what
// differs from a new image.

const CoreImage& defaultImage() {
  static const CoreImage image = [] {
    CoreImage img;
    CoreSession scratch;
    scratch.initImage(img);
    return img;
  }();
  return image;
}

template <std::size_t N>
bool sameText(const char (&a)[N], const char (&b)[N]) {
  return std::memcmp(a, b, N) == 0;
}

bool sameAsDefault(const DT_FSCA& a, const DT_FSCA& d) {
  return sameText(a.V, d.V) && a.SET == d.SET && a.SET2 == d.SET2 && sameText(a.CODE, d.CODE) &&
         sameText(a.LABEL, d.LABEL) && sameText(a.DESC, d.DESC) && sameText(a.VDEF, d.VDEF);
}

bool sameAsDefault(const DT_CSCA& a, const DT_CSCA& d) {
  return sameText(a.V, d.V) && a.SET == d.SET && a.SET2 == d.SET2 && sameText(a.CODE, d.CODE) &&
         sameText(a.LABEL, d.LABEL) && sameText(a.DESC, d.DESC) && sameText(a.VDEF, d.VDEF);
}

bool sameBits(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0; }

bool isDefaultView(const ViewRecord& v) {
  const ViewRecord d{};
  return v.x1 == d.x1 && v.x2 == d.x2 && v.y1 == d.y1 && v.y2 == d.y2 && v.windowWidth == d.windowWidth &&
         v.windowHeight == d.windowHeight && v.inUse == d.inUse && v.zoomStep == d.zoomStep &&
         sameBits(v.xScale, d.xScale) && sameBits(v.yScale, d.yScale);
}

// A real scalar read from a row takes over what the row carries; the short
// text and the limits are not in the row and stay as the image's defaults
// set them up.
void takeRealRow(const DT_RSCA& read, DT_RSCA& to, bool keepCode) {
  char code[sizeof to.CODE];
  std::memcpy(code, to.CODE, sizeof code);
  DT_RSCACOPYM(&read, &to);
  to.FMT = read.FMT;
  std::memcpy(to.LABEL, read.LABEL, sizeof to.LABEL);
  std::memcpy(to.DESC, read.DESC, sizeof to.DESC);
  if (keepCode) std::memcpy(to.CODE, code, sizeof code);
}

// A plain real or integer of the image written as a scalar row.
CsvRow plainRealRow(std::string_view key, float value) {
  DT_RSCA rec;
  DT_RSCADFLT(&rec);
  setFixed(rec.CODE, key);
  rec.V = value;
  return realRow(rec);
}

CsvRow plainIntegerRow(std::string_view key, int value) {
  DT_ISCA rec;
  const int inull = kIntNull;
  DT_ISCADFLT(&rec, &inull, &inull, &inull);
  setFixed(rec.KEY, key);
  rec.V = value;
  return integerRow(rec);
}

CsvRow renamedRealRow(const DT_RSCA& rec, std::string_view key) {
  DT_RSCA copy = rec;
  setFixed(copy.CODE, key);
  return realRow(copy);
}

// ---------------------------------------------------------------------------
// Rectangles: "poly num", "integer scalars", "verts" (session and template files).

// A free-cornered outline (core/free_corners.h) is saved so that a reader
// that does not know free corners still reads a sound rectangle: "verts"
// holds the upright box round the corners, and the corners themselves follow
// the display settings as eight more integer rows of the rectangle's
// "integer scalars" block, which such a reader checks and passes over.
std::string cornerKey(int corner, char axis) { return fmt::format("corner{}_{}", corner, axis); }

void writeRectangle(KeywordFileWriter& out, int number, const Polygon& written) {
  const bool free = written.freeCorners && isConvexQuadrilateral(written) && written.wx.size() >= 4 &&
                    written.wy.size() >= 4 && written.wxSet.size() >= 4 && written.wySet.size() >= 4;
  const int cornerRows = free ? 8 : 0;
  out.writeRow(CsvRow().addText(kPolyNum).addInt(number));
  out.writeRow(CsvRow().addText(kIntegerScalars).addInt(static_cast<int>(written.props.size()) + cornerRows));
  for (const DT_ISCA& p : written.props) out.writeRow(integerRow(p));
  Polygon boxed;
  if (free) {
    const FreeCorners corners = cornersOf(written);
    for (int i = 0; i < 4; ++i) {
      out.writeRow(plainIntegerRow(cornerKey(i + 1, 'x'), corners.x[static_cast<std::size_t>(i)]));
      out.writeRow(plainIntegerRow(cornerKey(i + 1, 'y'), corners.y[static_cast<std::size_t>(i)]));
    }
    const auto [left, right] = std::minmax_element(corners.x.begin(), corners.x.end());
    const auto [top, bottom] = std::minmax_element(corners.y.begin(), corners.y.end());
    boxed.n = 4;
    boxed.px = {*left, *right, *right, *left};
    boxed.py = {*top, *top, *bottom, *bottom};
    // The box's world coordinates are those of the corners that reach its
    // sides (world coordinates are pixels times the view's scale).
    const auto at = [](auto it, const auto& from) { return static_cast<std::size_t>(it - from.begin()); };
    const std::size_t l = at(left, corners.x), r = at(right, corners.x), t = at(top, corners.y), b = at(bottom, corners.y);
    boxed.wx = {written.wx[l], written.wx[r], written.wx[r], written.wx[l]};
    boxed.wxSet = {written.wxSet[l], written.wxSet[r], written.wxSet[r], written.wxSet[l]};
    boxed.wy = {written.wy[t], written.wy[t], written.wy[b], written.wy[b]};
    boxed.wySet = {written.wySet[t], written.wySet[t], written.wySet[b], written.wySet[b]};
  }
  const Polygon& poly = free ? boxed : written;
  // "verts": the count, then per vertex pixel x, pixel y, world x, world y;
  // a world coordinate that was never set is left empty.
  CsvRow verts;
  verts.addText(kVerts).addInt(poly.n);
  for (int i = 0; i < poly.n; ++i) {
    const auto k = static_cast<std::size_t>(i);
    verts.addInt(k < poly.px.size() ? poly.px[k] : 0).addInt(k < poly.py.size() ? poly.py[k] : 0);
    const bool xSet = k < poly.wxSet.size() && poly.wxSet[k] != 0 && k < poly.wx.size();
    const bool ySet = k < poly.wySet.size() && poly.wySet[k] != 0 && k < poly.wy.size();
    if (xSet) verts.addReal(poly.wx[k]); else verts.addText("");
    if (ySet) verts.addReal(poly.wy[k]); else verts.addText("");
  }
  out.writeRow(verts);
}

// Integer scalar rows after an "integer scalars" record: `count` rows, the
// first ones filling `records` in order; rows beyond them are checked and
// passed over.
template <typename It>
Status readIntegerRows(RecordReader& in, int count, It first, It last) {
  for (int k = 0; k < count; ++k) {
    CsvRow row;
    Status s = in.next(row, "an integer scalar");
    if (!s) return s;
    DT_ISCA scratch;
    DT_ISCA& target = first != last ? *first : scratch;
    if (first == last) {
      const int inull = kIntNull;
      DT_ISCADFLT(&scratch, &inull, &inull, &inull);
    }
    const RowRead r = readIntegerRow(row, target);
    if (r.status == RowRead::kWrongKind)
      return in.fail(fmt::format("integer scalar {} of {} expected, found \"{}\"", k + 1, count, rowKey(row)));
    if (!r.ok()) return in.fail(r.message);
    if (first != last) ++first;
  }
  return Status::ok();
}

Status readIntegerBlock(RecordReader& in, int defaultCount, DT_ISCA* records, int size) {
  CsvRow row;
  Status s = in.expect(kIntegerScalars, row);
  if (!s) return s;
  int count = defaultCount;
  if (!row.field(2).empty()) {
    s = in.count(row, kMaxScalarRows, count);
    if (!s) return s;
  }
  return readIntegerRows(in, count, records, records + size);
}

Status readVerts(RecordReader& in, Polygon& poly) {
  CsvRow row;
  Status s = in.expect(kVerts, row);
  if (!s) return s;
  int n = 0;
  s = in.count(row, kMaxVertices, n);
  if (!s) return s;
  const std::size_t expected = 2 + 4 * static_cast<std::size_t>(n);
  if (row.size() != expected)
    return in.fail(fmt::format("\"verts\" gives {} vertices, which take {} fields, but the record has {}", n,
                               expected, row.size()));
  CoreRectangle holder;
  CoreSession::setVertexCount(holder, n);
  Polygon& p = holder.polygon;
  for (int i = 0; i < n; ++i) {
    const int col = 3 + 4 * i;
    const auto k = static_cast<std::size_t>(i);
    s = in.integer(row, p.px[k], col);
    if (s) s = in.integer(row, p.py[k], col + 1);
    if (!s) return s;
    for (int axis = 0; axis < 2; ++axis) {
      const int c = col + 2 + axis;
      float& w = axis == 0 ? p.wx[k] : p.wy[k];
      int& set = axis == 0 ? p.wxSet[k] : p.wySet[k];
      if (row.field(c).empty()) continue;  // never set: stays null
      if (row.real(c, w) != CsvRow::kOk)
        return in.fail(fmt::format("\"verts\" needs a number in field {}, found \"{}\"", c, row.field(c)));
      set = 1;
    }
  }
  poly.n = p.n;
  poly.px = std::move(p.px);
  poly.py = std::move(p.py);
  poly.wx = std::move(p.wx);
  poly.wy = std::move(p.wy);
  poly.wxSet = std::move(p.wxSet);
  poly.wySet = std::move(p.wySet);
  return Status::ok();
}

// The rectangle's "integer scalars" block: the display settings in order,
// then rows passed over, among which the free corners are picked out by key.
Status readRectangleIntegers(RecordReader& in, Polygon& poly, FreeCorners& corners, int& cornersFound) {
  CsvRow row;
  Status s = in.expect(kIntegerScalars, row);
  if (!s) return s;
  const int known = static_cast<int>(poly.props.size());
  int count = known;
  if (!row.field(2).empty()) {
    s = in.count(row, kMaxScalarRows, count);
    if (!s) return s;
  }
  cornersFound = 0;
  std::array<bool, 8> seen{};
  for (int k = 0; k < count; ++k) {
    CsvRow next;
    s = in.next(next, "an integer scalar");
    if (!s) return s;
    DT_ISCA scratch;
    const int inull = kIntNull;
    DT_ISCADFLT(&scratch, &inull, &inull, &inull);
    DT_ISCA& target = k < known ? poly.props[static_cast<std::size_t>(k)] : scratch;
    const RowRead r = readIntegerRow(next, target);
    if (r.status == RowRead::kWrongKind)
      return in.fail(fmt::format("integer scalar {} of {} expected, found \"{}\"", k + 1, count, rowKey(next)));
    if (!r.ok()) return in.fail(r.message);
    if (k < known) continue;
    const std::string key = rowKey(next);
    for (int c = 0; c < 8; ++c) {
      if (key != cornerKey(c / 2 + 1, c % 2 == 0 ? 'x' : 'y')) continue;
      (c % 2 == 0 ? corners.x : corners.y)[static_cast<std::size_t>(c / 2)] = scratch.V;
      if (!seen[static_cast<std::size_t>(c)]) ++cornersFound;
      seen[static_cast<std::size_t>(c)] = true;
    }
  }
  return Status::ok();
}

// One rectangle's records; `number` is its place, which "poly num" must give.
Status readRectangle(RecordReader& in, int number, Polygon& poly) {
  int given = 0;
  Status s = in.keywordInteger(kPolyNum, given);
  if (!s) return s;
  if (given != number) return in.fail(fmt::format("rectangle {} expected, \"poly num\" gives {}", number, given));
  FreeCorners corners;
  int cornersFound = 0;
  s = readRectangleIntegers(in, poly, corners, cornersFound);
  if (s) s = readVerts(in, poly);
  if (!s || cornersFound == 0) return s;
  if (poly.n != 4)
    return in.fail(fmt::format("rectangle {} has free corners but {} vertices", number, poly.n));
  if (cornersFound != 8)
    return in.fail(fmt::format("rectangle {} has {} of the 8 rows of its free corners", number, cornersFound));
  CoreRectangle holder;
  CoreSession::setVertexCount(holder, 4);
  for (std::size_t i = 0; i < 4; ++i) {
    holder.polygon.px[i] = corners.x[i];
    holder.polygon.py[i] = corners.y[i];
  }
  if (!isConvexQuadrilateral(holder.polygon))
    return in.fail(
        fmt::format("rectangle {}: the free corners {} do not form a convex outline", number, cornersText(corners)));
  // The corners' world coordinates follow from the box's: pixels times the
  // view's scale, read off the box's sides.
  Polygon& q = holder.polygon;
  const auto world = [](int pixel, int lo, int hi, float wlo, float whi) {
    if (hi == lo) return wlo;
    return wlo + static_cast<float>(pixel - lo) * (whi - wlo) / static_cast<float>(hi - lo);
  };
  for (std::size_t i = 0; i < 4; ++i) {
    if (poly.wxSet[0] && poly.wxSet[1]) {
      q.wx[i] = world(q.px[i], poly.px[0], poly.px[1], poly.wx[0], poly.wx[1]);
      q.wxSet[i] = 1;
    }
    if (poly.wySet[1] && poly.wySet[2]) {
      q.wy[i] = world(q.py[i], poly.py[1], poly.py[2], poly.wy[1], poly.wy[2]);
      q.wySet[i] = 1;
    }
  }
  poly.n = 4;
  poly.px = std::move(holder.polygon.px);
  poly.py = std::move(holder.polygon.py);
  poly.wx = std::move(holder.polygon.wx);
  poly.wy = std::move(holder.polygon.wy);
  poly.wxSet = std::move(holder.polygon.wxSet);
  poly.wySet = std::move(holder.polygon.wySet);
  poly.freeCorners = true;
  return s;
}

// ---------------------------------------------------------------------------
// Session file: writing.

void writeImage(KeywordFileWriter& out, CoreImage& image, int place, const std::string& sessionFile) {
  out.writeRow(CsvRow().addText(kImageNum).addInt(place));
  out.writeRow(CsvRow().addText(kImageFile).addText(storedPhotoPath(image.sourceFile(), sessionFile)));

  out.writeRow(CsvRow().addText(kIntegerScalars).addInt(kImageIntCount));
  for (const DT_ISCA& rec : image.ints) out.writeRow(integerRow(rec));

  // The further block: the rest of the image's state that a reopened session
  // needs - its turn and display reduction (the split uses both), the view
  // last shown, the depth table's copies of the lengths, the file-name and
  // text scalars that hold anything, and the views that have been defined.
  out.writeRow(plainRealRow(kAngleKey, image.angle));
  out.writeRow(plainRealRow(kReductionKey, image.displayReduction));
  out.writeRow(plainIntegerRow(kViewShownKey, image.viewShown));
  out.writeRow(renamedRealRow(image.coreLengthCopy, kCoreLengthCopyKey));
  out.writeRow(renamedRealRow(image.trayLengthCopy, kTrayLengthCopyKey));
  const CoreImage& defaults = defaultImage();
  // The first file-name scalar is the photograph, kept in "image file".
  for (int k = 1; k < kImageFileCount; ++k)
    if (!sameAsDefault(image.files[k], defaults.files[k])) out.writeRow(fileNameRow(image.files[k]));
  for (int k = 0; k < kImageTextCount; ++k)
    if (!sameAsDefault(image.texts[k], defaults.texts[k])) out.writeRow(textRow(image.texts[k]));
  for (int v = 0; v < kViewCount; ++v) {
    const ViewRecord& view = image.views[v];
    if (isDefaultView(view)) continue;
    out.writeRow(CsvRow()
                     .addText(kViewKey)
                     .addInt(v + 1)
                     .addInt(view.x1)
                     .addInt(view.x2)
                     .addInt(view.y1)
                     .addInt(view.y2)
                     .addInt(view.windowWidth)
                     .addInt(view.windowHeight)
                     .addInt(view.inUse)
                     .addInt(view.zoomStep)
                     .addReal(view.xScale)
                     .addReal(view.yScale));
  }

  out.writeRow(CsvRow().addText(kRealScalars).addInt(kImageRealCount));
  for (const DT_RSCA& rec : image.reals) out.writeRow(realRow(rec));

  const std::vector<CoreRectangle*> list = CoreSession::rectangles(image);
  out.writeRow(CsvRow().addText(kPolies).addInt(static_cast<int>(list.size())));
  int number = 0;
  for (const CoreRectangle* r : list) writeRectangle(out, ++number, r->polygon);
}

// ---------------------------------------------------------------------------
// Session file: reading.

class SessionParser {
 public:
  SessionParser(KeywordFileReader& file, std::string sessionFile)
      : in_(file), sessionFile_(std::move(sessionFile)) {}

  Status parse(CoreSession& into, SessionOptions& options, int& imageCount) {
    Status s = readHead(options, imageCount);
    for (int place = 1; s && place <= imageCount; ++place) s = readImage(into, place);
    if (s && !in_.atEnd()) s = in_.notEnded(imageCount == 0 ? "an empty session" : "the last image");
    return s;
  }

 private:
  Status readHead(SessionOptions& o, int& imageCount) {
    std::string versionText;
    Status s = in_.keywordText(kVersion, versionText);
    if (!s) return s;
    FileVersion version;
    if (!parseFileVersion(trimBlanks(versionText), version))
      return in_.fail(fmt::format("\"{}\" is not a session file version", trimBlanks(versionText)));

    CsvRow row;
    s = in_.expect(kImages, row);
    if (s) s = in_.count(row, kMaxImages, imageCount);
    if (s) s = in_.keywordInteger(kOverride, o.override);
    if (s) s = in_.keywordText(kRootName, o.rootName);
    if (s) s = in_.keywordInteger(kCgms, o.cgms);
    if (s && compareVersions(version, kReportVersion) >= 0) {
      s = in_.keywordInteger(kDoReport, o.doReport);
      if (s) s = in_.keywordText(kReportRoot, o.reportRoot);
    }
    if (s && compareVersions(version, kReportOptionVersion) >= 0) s = in_.keywordInteger(kReportIp, o.reportOption);
    return s;
  }

  Status readImage(CoreSession& into, int place) {
    int given = 0;
    Status s = in_.keywordInteger(kImageNum, given);
    if (!s) return s;
    if (given != place) return in_.fail(fmt::format("image {} expected, \"image num\" gives {}", place, given));

    CoreImage* image = into.newImage();
    std::string stored;
    s = in_.keywordText(kImageFile, stored);
    if (!s) return s;
    image->setSourceFile(resolvedPhotoPath(trimBlanks(stored), sessionFile_));

    s = readIntegerBlock(in_, kImageIntCount, image->ints.data(), kImageIntCount);
    if (s) s = readFurtherBlock(*image);
    if (s) s = readRealRows(*image);
    if (!s) return s;

    CsvRow row;
    int polies = 0;
    s = in_.expect(kPolies, row);
    if (s) s = in_.count(row, kMaxRectangleId, polies);
    for (int k = 1; s && k <= polies; ++k) {
      CoreRectangle* r = into.newRectangle(*image);
      s = readRectangle(in_, k, r->polygon);
    }
    return s;
  }

  // Rows up to "real scalars", by key. Rows whose key this version does not
  // know are passed over, so a file from a later version still opens.
  Status readFurtherBlock(CoreImage& image) {
    const CoreImage& defaults = defaultImage();
    while (true) {
      CsvRow row;
      Status s = in_.next(row, kRealScalars);
      if (!s) return s;
      const std::string key = rowKey(row);
      if (key == kRealScalars) {
        pendingRealCount_ = row;
        return Status::ok();
      }
      if (isFileKeyword(key))
        return in_.fail(fmt::format("\"{}\" found where \"{}\" was expected", key, kRealScalars));
      if (key == kViewKey) {
        s = readView(row, image);
        if (!s) return s;
        continue;
      }
      const int tag = rowTag(row);
      RowRead r;
      if (tag == kRealTag && (key == kAngleKey || key == kReductionKey || key == kCoreLengthCopyKey ||
                              key == kTrayLengthCopyKey)) {
        DT_RSCA read;
        r = readRealRow(row, read);
        if (key == kAngleKey) image.angle = read.V;
        else if (key == kReductionKey) image.displayReduction = read.V;
        else takeRealRow(read, key == kCoreLengthCopyKey ? image.coreLengthCopy : image.trayLengthCopy, true);
      } else if (tag == kIntegerTag && key == kViewShownKey) {
        DT_ISCA read;
        const int inull = kIntNull;
        DT_ISCADFLT(&read, &inull, &inull, &inull);
        r = readIntegerRow(row, read);
        image.viewShown = read.V;
      } else if (tag == kFileNameTag) {
        for (int k = 1; k < kImageFileCount; ++k)
          if (fixedText(defaults.files[k].CODE) == key) r = readFileNameRow(row, image.files[k]);
      } else if (tag == kTextTag) {
        for (int k = 0; k < kImageTextCount; ++k)
          if (fixedText(defaults.texts[k].CODE) == key) r = readTextRow(row, image.texts[k]);
      } else if (tag < kIntegerTag || tag > kDoubleTag) {
        return in_.fail(fmt::format("\"{}\" is neither a scalar nor a view of the image, nor \"real scalars\"", key));
      }
      if (!r.ok()) return in_.fail(r.message);
    }
  }

  Status readView(const CsvRow& row, CoreImage& image) {
    int number = 0;
    Status s = in_.integer(row, number);
    if (!s) return s;
    if (number < 1 || number > kViewCount)
      return in_.fail(fmt::format("view {} is not between 1 and {}", number, kViewCount));
    if (row.size() != static_cast<std::size_t>(2 + kViewFields))
      return in_.fail(fmt::format("a view takes {} fields, the record has {}", 2 + kViewFields, row.size()));
    ViewRecord v;
    int* ints[] = {&v.x1, &v.x2, &v.y1, &v.y2, &v.windowWidth, &v.windowHeight, &v.inUse, &v.zoomStep};
    int col = 3;
    for (int* field : ints) {
      s = in_.integer(row, *field, col++);
      if (!s) return s;
    }
    for (float* field : {&v.xScale, &v.yScale}) {
      if (row.real(col, *field) != CsvRow::kOk)
        return in_.fail(fmt::format("\"view\" needs a number in field {}, found \"{}\"", col, row.field(col)));
      ++col;
    }
    image.views[number - 1] = v;
    return Status::ok();
  }

  Status readRealRows(CoreImage& image) {
    int count = kImageRealCount;
    if (!pendingRealCount_.field(2).empty()) {
      Status s = in_.count(pendingRealCount_, kMaxScalarRows, count);
      if (!s) return s;
    }
    for (int k = 1; k <= count; ++k) {
      CsvRow row;
      Status s = in_.next(row, "a real scalar");
      if (!s) return s;
      DT_RSCA read;
      const RowRead r = readRealRow(row, read);
      if (r.status == RowRead::kWrongKind)
        return in_.fail(fmt::format("real scalar {} of {} expected, found \"{}\"", k, count, rowKey(row)));
      if (!r.ok()) return in_.fail(r.message);
      if (k <= kImageRealCount) takeRealRow(read, image.realSetting(k), false);
    }
    return Status::ok();
  }

  RecordReader in_;
  std::string sessionFile_;
  CsvRow pendingRealCount_;
};

// Moves the images read into `staging` over to `target`, replacing its own.
// The target keeps its identity (windows and the image table refer to it);
// its images get ids from 1 in file order as new images always do.
void adoptImages(CoreSession& staging, CoreSession& target) {
  copyImages(staging, target);
  CoreImage* first = target.imageAt(1);
  target.setCurrent(first, first ? first->rectangles : nullptr);
  if (Dataset* table = target.imageTableOf()) target.refreshImageTable(table);
}

// ---------------------------------------------------------------------------
// Template file.

Status readTemplateRecords(KeywordFileReader& file, RectangleTemplate& out, bool descriptionOnly) {
  RecordReader in(file);
  std::string versionText;
  Status s = in.keywordText(kVersion, versionText);
  if (!s) return s;
  FileVersion version;
  if (!parseFileVersion(trimBlanks(versionText), version))
    return in.fail(fmt::format("\"{}\" is not a template file version", trimBlanks(versionText)));
  s = in.keywordText(kDescription, out.description);
  if (!s || descriptionOnly) return s;
  out.description = out.description.substr(0, kTemplateDescriptionWidth);

  CsvRow row;
  int count = 0;
  s = in.expect(kPolies, row);
  if (s) s = in.count(row, kMaxRectangleId, count);
  // The size of the photograph the rectangles were drawn on, when known.
  if (s && row.size() >= 4) {
    s = in.integer(row, out.referenceWidth, 3);
    if (s) s = in.integer(row, out.referenceHeight, 4);
    if (s && (out.referenceWidth < 0 || out.referenceHeight < 0))
      s = in.fail("the photograph size in \"polies\" must not be negative");
  }
  if (!s) return s;

  s = in.expect(kLength, row);
  if (!s) return s;
  if (row.field(2).empty()) {
    out.length = kRealNull;
  } else if (row.real(2, out.length) != CsvRow::kOk) {
    return in.fail(fmt::format("\"length\" needs a number, found \"{}\"", row.field(2)));
  }

  out.rectangles.clear();
  for (int k = 1; k <= count; ++k) {
    Polygon poly;
    setUpPolygonProperties(poly);
    s = readRectangle(in, k, poly);
    if (!s) return s;
    out.rectangles.push_back(std::move(poly));
  }
  if (!in.atEnd()) return in.notEnded("the last rectangle");
  return Status::ok();
}

std::string padded(std::string_view text, std::size_t width) {
  std::string s(text.substr(0, std::min(text.size(), width)));
  s.resize(width, ' ');
  return s;
}

Status commitOrTell(KeywordFileWriter& out, std::string_view what) {
  Status s = out.commit();
  if (!s) return toldError(fmt::format("Could not save {}: {}", what, s.message()));
  return s;
}

}  // namespace

// ---------------------------------------------------------------------------
// Versions.

bool parseFileVersion(std::string_view text, FileVersion& out) {
  std::size_t n = 0;
  bool digits = false, point = false;
  while (n < text.size()) {
    const char c = text[n];
    if (c >= '0' && c <= '9') {
      digits = true;
    } else if (c == '.' && !point) {
      point = true;
    } else {
      break;
    }
    ++n;
  }
  if (!digits) return false;
  const std::string number(text.substr(0, n));
  out.number = std::strtod(number.c_str(), nullptr);
  out.revision = trimBlanks(text.substr(n));
  return true;
}

int compareVersions(const FileVersion& a, const FileVersion& b) {
  if (a.number != b.number) return a.number < b.number ? -1 : 1;
  if (a.revision != b.revision) return a.revision < b.revision ? -1 : 1;
  return 0;
}

// ---------------------------------------------------------------------------
// Session options and the split.

SessionOptions sessionOptionsFrom(const split::SplitOptions& options) {
  SessionOptions o;
  o.override = options.naming.useRootName ? 1 : 0;
  o.rootName = options.naming.rootName;
  o.cgms = options.naming.format == split::RowFormat::Cgm ? 1 : 0;
  o.doReport = options.writeReport ? 1 : 0;
  o.reportRoot = options.reportFile;
  o.reportOption = options.reportStyle;
  return o;
}

void applySessionOptions(const SessionOptions& session, split::SplitOptions& options) {
  options.naming.useRootName = session.override == 1;
  options.naming.rootName = session.rootName;
  options.naming.format = session.cgms == 1 ? split::RowFormat::Cgm : split::RowFormat::Bmp;
  options.formatChosen = false;
  options.writeReport = session.doReport == 1;
  options.reportFile = session.reportRoot;
  options.reportStyle = session.reportOption;
}

// ---------------------------------------------------------------------------
// Photo paths.

bool isAbsolutePath(std::string_view path) {
  if (path.empty()) return false;
  if (path[0] == '/' || path[0] == '\\') return true;
  const bool letter = (path[0] >= 'A' && path[0] <= 'Z') || (path[0] >= 'a' && path[0] <= 'z');
  return path.size() >= 3 && letter && path[1] == ':' && (path[2] == '\\' || path[2] == '/');
}

namespace {
fs::path absoluteFolderOf(std::string_view file) {
  std::error_code ec;
  fs::path p = fs::absolute(fs::path(std::string(file)), ec);
  if (ec) p = fs::path(std::string(file));
  return p.lexically_normal().parent_path();
}

bool isWindowsPath(std::string_view path) {
  return path.find('\\') != std::string_view::npos || (path.size() >= 2 && path[1] == ':');
}
}  // namespace

std::string storedPhotoPath(std::string_view photo, std::string_view sessionFile) {
  if (photo.empty() || isWindowsPath(photo)) return std::string(photo);
  std::error_code ec;
  fs::path p = fs::absolute(fs::path(std::string(photo)), ec);
  if (ec) return std::string(photo);
  p = p.lexically_normal();
  const fs::path relative = p.lexically_relative(absoluteFolderOf(sessionFile));
  if (relative.empty() || *relative.begin() == "..") return p.string();
  return relative.generic_string();
}

std::string resolvedPhotoPath(std::string_view stored, std::string_view sessionFile) {
  if (stored.empty() || isAbsolutePath(stored)) return std::string(stored);
  return (absoluteFolderOf(sessionFile) / fs::path(std::string(stored))).lexically_normal().string();
}

// ---------------------------------------------------------------------------
// Sessions.

Status saveSession(CoreSession& session, const SessionOptions& o, const std::string& path) {
  if (trimBlanks(path).empty()) return toldError(std::string(kNoSessionFileGiven));
  KeywordFileWriter out;
  Status s = out.open(path);
  if (!s) return toldError(fmt::format("Could not save the session: {}", s.message()));

  out.writeRow(CsvRow().addText(kVersion).addText(padded(kSessionVersion, kVersionFieldWidth)));
  const std::vector<CoreImage*> list = session.images();
  out.writeRow(CsvRow().addText(kImages).addInt(static_cast<int>(list.size())));
  out.writeRow(CsvRow().addText(kOverride).addInt(o.override));
  out.writeRow(CsvRow().addText(kRootName).addText(o.rootName));
  out.writeRow(CsvRow().addText(kCgms).addInt(o.cgms));
  out.writeRow(CsvRow().addText(kDoReport).addInt(o.doReport));
  out.writeRow(CsvRow().addText(kReportRoot).addText(o.reportRoot));
  out.writeRow(CsvRow().addText(kReportIp).addInt(o.reportOption));
  int place = 0;
  for (CoreImage* image : list) writeImage(out, *image, ++place, path);
  return commitOrTell(out, fmt::format("the session {}", path));
}

Status readSession(CoreSession& session, SessionOptions& options, const std::string& path) {
  if (trimBlanks(path).empty()) return toldError(std::string(kNoSessionFileGiven));
  KeywordFileReader file;
  Status s = file.open(path);
  if (!s) return openFailure("the session", s);

  CoreSession staging;
  SessionOptions read;
  int count = 0;
  SessionParser parser(file, path);
  s = parser.parse(staging, read, count);
  if (!s) return told(s);

  adoptImages(staging, session);
  options = read;
  if (count == 0) host::showMessage(kSessionHasNoImages);
  return Status::ok();
}

// ---------------------------------------------------------------------------
// Templates.

std::string templateInUseFile() { return makeFileName(kTemplateLocation, kTemplateLibraryName, kTemplateFileType); }

std::string templateLibraryFolder() { return makeFileName(kTemplateLocation, kTemplateLibraryName, ""); }

std::string namedTemplateFile(std::string_view name) {
  return (fs::path(templateLibraryFolder()) / (std::string(name) + "." + std::string(kTemplateFileType))).string();
}

std::string templateNameProblem(std::string_view name) {
  const std::string n = trimBlanks(name);
  if (n.empty()) return std::string(kTemplateNeedsName);
  if (n.size() > kTemplateNameWidth)
    return fmt::format("A template name may be at most {} characters long", kTemplateNameWidth);
  if (n == "." || n == ".." || n.find_first_of("/\\") != std::string::npos)
    return fmt::format("\"{}\" cannot be a template name: it must be a plain file name", n);
  return {};
}

Status saveTemplateFile(const RectangleTemplate& holder, const std::string& path) {
  if (!ensureParentFolder(path)) return toldError(fmt::format("Could not make the folder of {}", path));
  KeywordFileWriter out;
  Status s = out.open(path);
  if (!s) return toldError(fmt::format("Could not save the template: {}", s.message()));
  out.writeRow(CsvRow().addText(kVersion).addText(padded(kSessionVersion, kVersionFieldWidth)));
  out.writeRow(CsvRow().addText(kDescription).addText(holder.description.substr(0, kTemplateDescriptionWidth)));
  CsvRow polies;
  polies.addText(kPolies).addInt(static_cast<int>(holder.rectangles.size()));
  if (holder.referenceWidth > 0 && holder.referenceHeight > 0)
    polies.addInt(holder.referenceWidth).addInt(holder.referenceHeight);
  out.writeRow(polies);
  out.writeRow(CsvRow().addText(kLength).addReal(holder.length));
  int number = 0;
  for (const Polygon& poly : holder.rectangles) writeRectangle(out, ++number, poly);
  return commitOrTell(out, fmt::format("the template {}", path));
}

Status readTemplateFile(const std::string& path, RectangleTemplate& holder) {
  KeywordFileReader file;
  if (!file.open(path)) return toldError(std::string(kCouldNotOpenTemplate));
  RectangleTemplate read;
  read.name = holder.name;
  Status s = readTemplateRecords(file, read, false);
  if (!s) return told(s);
  holder = std::move(read);
  return s;
}

Status readTemplateDescription(const std::string& path, std::string& description) {
  KeywordFileReader file;
  if (!file.open(path)) return toldError(std::string(kCouldNotOpenTemplate));
  RectangleTemplate read;
  Status s = readTemplateRecords(file, read, true);
  if (!s) return told(s);
  description = trimBlanks(read.description).substr(0, kTemplateDescriptionWidth);
  return s;
}

Status saveNamedTemplate(const RectangleTemplate& holder, std::string_view name) {
  const std::string problem = templateNameProblem(name);
  if (!problem.empty()) return toldError(problem);
  RectangleTemplate named = holder;
  named.name = trimBlanks(name);
  Status s = saveTemplateFile(named, namedTemplateFile(named.name));
  if (s) s = saveTemplateFile(named, templateInUseFile());
  return s;
}

Status readNamedTemplate(std::string_view name, RectangleTemplate& holder) {
  const std::string problem = templateNameProblem(name);
  if (!problem.empty()) return toldError(problem);
  RectangleTemplate read;
  Status s = readTemplateFile(namedTemplateFile(trimBlanks(name)), read);
  if (!s) return s;
  read.name = trimBlanks(name);
  holder = std::move(read);
  return s;
}

std::vector<TemplateEntry> listTemplates(bool tellWhenEmpty) {
  std::vector<TemplateEntry> out;
  std::error_code ec;
  const fs::path folder(templateLibraryFolder());
  for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
    const fs::path& p = it->path();
    if (p.extension() != "." + std::string(kTemplateFileType) || !it->is_regular_file(ec)) continue;
    TemplateEntry e;
    e.name = p.stem().string();
    e.file = p.string();
    // A damaged file still shows in the list (blank description); reading
    // it names what is wrong.
    KeywordFileReader file;
    RectangleTemplate read;
    if (file.open(e.file) && readTemplateRecords(file, read, true)) e.description = trimBlanks(read.description);
    out.push_back(std::move(e));
  }
  std::sort(out.begin(), out.end(), [](const TemplateEntry& a, const TemplateEntry& b) { return a.name < b.name; });
  if (out.empty() && tellWhenEmpty) host::showMessage(kNoTemplatesDefined);
  return out;
}

int readTemplateIntoSession(CoreSession& session, const std::string& path) {
  return readTemplateFile(path, session.rectangleTemplate()) ? 0 : 1;
}

// ---------------------------------------------------------------------------
// User settings.

std::string userSettingsFile() { return makeFileName(kTemplateLocation, kUserSettingsName, ""); }

Status writeUserSettings(const UserSettings& settings, const std::string& path) {
  if (!ensureParentFolder(path)) return toldError(fmt::format("Could not make the folder of {}", path));
  KeywordFileWriter out;
  Status s = out.open(path);
  if (!s) return toldError(fmt::format("Could not save the user settings: {}", s.message()));
  out.writeRow(CsvRow().addText(kSessionsPath).addText(settings.sessionsPath));
  out.writeRow(CsvRow().addText(kOutputPath).addText(settings.outputPath));
  out.writeRow(CsvRow().addText(kOutputOp).addInt(settings.outputOption));
  out.writeRow(CsvRow().addText(kTemplate).addText(settings.templateName));
  return commitOrTell(out, fmt::format("the user settings {}", path));
}

Status readUserSettings(const std::string& path, UserSettings& settings) {
  KeywordFileReader file;
  Status s = file.open(path);
  if (!s) return openFailure("the user settings", s);
  RecordReader in(file);
  UserSettings read;
  s = in.keywordText(kSessionsPath, read.sessionsPath);
  if (s) s = in.keywordText(kOutputPath, read.outputPath);
  if (s) s = in.keywordInteger(kOutputOp, read.outputOption);
  if (s) s = in.keywordText(kTemplate, read.templateName);
  if (s && !in.atEnd()) s = in.notEnded("\"template\"");
  if (!s) return told(s);
  settings = std::move(read);
  return s;
}

void applyUserSettings(const UserSettings& settings, split::SplitOptions& options) {
  options.naming.outputFolder = settings.outputPath;
  options.naming.outputBesidePhoto = settings.outputOption == 2;
}

UserSettings& toolUserSettings() {
  static UserSettings settings;
  return settings;
}

}  // namespace subsurf
