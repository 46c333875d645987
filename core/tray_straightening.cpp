#include "core/tray_straightening.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <vector>

#include <fmt/format.h>

#include "core/image_settings.h"
#include "core/quadrilateral_check.h"
#include "core/row_layout.h"
#include "core/row_rectangles.h"
#include "core/split_naming.h"
#include "core/split_process.h"
#include "host/fixed_text.h"
#include "host/image/image_writer.h"
#include "host/image/photo.h"
#include "host/messages.h"

namespace subsurf {
namespace {

using image::PlanePoint;

std::string number(double v) { return fmt::format("{:g}", std::round(v * 10) / 10); }
std::string pointText(PlanePoint p) { return number(p.x) + "," + number(p.y); }

bool parseNumber(std::string_view text, double& out) {
  const std::string trimmed = trimBlanks(text);
  if (trimmed.empty()) return false;
  const char* end = trimmed.data() + trimmed.size();
  const auto [ptr, ec] = std::from_chars(trimmed.data(), end, out);
  return ec == std::errc() && ptr == end && std::isfinite(out);
}

DT_CSCA& cornerText(CoreImage& image, int half) { return image.texts[kTrayCornersText - 1 + half]; }
const DT_CSCA& cornerText(const CoreImage& image, int half) { return image.texts[kTrayCornersText - 1 + half]; }

void setText(DT_CSCA& record, std::string_view text) {
  setFixed(record.V, text);
  record.SET = kScalarChanged;
}

// Where the copy came from, kept with the image (see the header).
void rememberOrigin(CoreImage& image, std::string_view original, const TrayCorners& c) {
  DT_FSCA& file = image.files[kTrayOriginalFile - 1];
  setFixed(file.V, original.substr(split::fileNameStart(original)));
  file.SET = kScalarChanged;
  setText(cornerText(image, 0), fmt::format("{},{}", pointText(c[0]), pointText(c[1])));
  setText(cornerText(image, 1), fmt::format("{},{}", pointText(c[2]), pointText(c[3])));
}

}  // namespace

Status parseTrayCorners(std::string_view text, TrayCorners& out) {
  std::vector<std::string_view> fields = commaFields(text);
  if (trimBlanks(text).empty()) fields.clear();
  if (fields.size() != 8)
    return Status::error(fmt::format("--corners needs 8 numbers (x1,y1,...,x4,y4), found {}", fields.size()));
  double v[8];
  for (int i = 0; i < 8; ++i)
    if (!parseNumber(fields[i], v[i]))
      return Status::error(fmt::format("--corners: \"{}\" is not a number", trimBlanks(fields[i])));
  for (int i = 0; i < 4; ++i) out[i] = {v[2 * i], v[2 * i + 1]};
  return Status::ok();
}

Status orderTrayCorners(TrayCorners& c, int width, int height) {
  // Corners are read by eye in fractions of a pixel: three within a hair of
  // one line make no tray.
  const QuadrilateralVerdict v = checkQuadrilateral(c, width, height, false, 1e-6);
  const auto& k = v.corners;
  switch (v.fault) {
    case QuadrilateralFault::None:
      break;
    case QuadrilateralFault::Outside:
      return Status::error(fmt::format("--corners: corner {} ({}) is outside the photo ({} x {} pixels)", k[0],
                                       pointText(c[k[0] - 1]), width, height));
    case QuadrilateralFault::SamePoint:  // not asked for: two corners at one point lie on one line with a third
    case QuadrilateralFault::OnOneLine:
      return Status::error(fmt::format("--corners: corners {}, {} and {} lie on one line", k[0], k[1], k[2]));
    case QuadrilateralFault::SidesCross:
      return Status::error("--corners: the sides of the tray cross; give the corners in order round the tray");
    case QuadrilateralFault::NotConvex:
      return Status::error(
          fmt::format("--corners: the outline is not convex at corner {} ({})", k[0], pointText(c[k[0] - 1])));
  }
  if (!v.clockwise) std::swap(c[1], c[3]);
  const auto first = std::min_element(c.begin(), c.end(), [](PlanePoint a, PlanePoint b) { return a.x + a.y < b.x + b.y; });
  std::rotate(c.begin(), first, c.end());
  return Status::ok();
}

std::string cornersText(const TrayCorners& c) {
  return fmt::format("{} {} {} {}", pointText(c[0]), pointText(c[1]), pointText(c[2]), pointText(c[3]));
}

std::string straightenedCopyPath(std::string_view original) {
  const std::size_t nameStart = split::fileNameStart(original);
  const std::size_t dot = original.rfind('.');
  if (dot == std::string_view::npos || dot < nameStart) return std::string(original) + "-straight";
  return fmt::format("{}-straight{}", original.substr(0, dot), original.substr(dot));
}

std::string straightenedCopyDescription(std::string_view original) {
  return fmt::format("subsurf straightened copy of {}", original.substr(split::fileNameStart(original)));
}

TrayOrigin trayOrigin(const CoreImage& image) {
  TrayOrigin origin;
  const std::string name = trimBlanks(fixedText(image.files[kTrayOriginalFile - 1].V));
  if (name.empty()) return origin;
  const std::string copy = image.sourceFile();
  origin.original = copy.substr(0, split::fileNameStart(copy)) + name;
  TrayCorners corners;
  const std::string text =
      trimBlanks(fixedText(cornerText(image, 0).V)) + "," + trimBlanks(fixedText(cornerText(image, 1).V));
  origin.straightened = static_cast<bool>(parseTrayCorners(text, corners));
  if (origin.straightened) origin.corners = corners;
  return origin;
}

Status straightenImage(CoreSession& session, CoreImage& image, TrayCorners corners, Straightened& out) {
  auto fail = [](std::string text) {
    host::showMessage(text);
    return Status::error(std::move(text));
  };
  const TrayOrigin origin = trayOrigin(image);
  const std::string current = split::locatePhoto(image.sourceFile());
  out.original = origin.straightened ? origin.original : current;
  out.copy = straightenedCopyPath(out.original);
  const auto format = image::formatForFileName(out.copy);
  if (!format || *format == image::ImageFormat::Cgm)
    return fail(fmt::format("{}: only JPEG, PNG, TIFF and BMP photos can be straightened", out.original));
  std::error_code ec;
  if (origin.straightened && !std::filesystem::exists(out.original, ec))
    return fail(fmt::format("{}: the original of {} is missing", out.original, current));
  // Only an earlier copy of this photo may be replaced: this image's own, or
  // a JPEG copy that says whose copy it is.
  const std::string description = straightenedCopyDescription(out.original);
  if (std::filesystem::exists(out.copy, ec) && !(origin.straightened && out.copy == current) &&
      image::readImageDescription(out.copy) != description)
    return fail(fmt::format("{} already exists and is not this image's straightened copy; move it away first",
                            out.copy));

  image::Photo photo;
  Status s = image::Photo::load(out.original, photo);  // a failure has been shown
  if (!s) return s;
  s = orderTrayCorners(corners, photo.width(), photo.height());
  if (!s) return fail(s.message());
  image::Raster whole;
  s = photo.cut(image::CutSpec{image::PixelBox{0, 0, photo.width(), photo.height()}}, whole);
  if (!s) return s;
  photo = image::Photo();  // its memory is not needed any more
  image::Raster straight;
  static constexpr std::uint8_t kBlack[3] = {0, 0, 0};
  if (!image::cutQuadrilateral(whole.view(), corners, straight, kBlack))
    return fail("--corners: the corners do not make a tray");  // excluded by the checks above
  whole = image::Raster();
  image::WriteOptions options;
  options.jpegQuality = 95;
  options.jpegFullChroma = true;  // thin dark fractures keep their colour edges
  options.description = description;
  s = image::writeImage(straight.view(), out.copy, *format, options);
  if (!s) return s;

  out.width = straight.width();
  out.height = straight.height();
  out.rectanglesRemoved = CoreSession::rectangleCount(image);
  while (CoreRectangle* r = image.rectangles) session.deleteRectangleById(image, r->id);
  const std::size_t folderEnd = split::fileNameStart(image.sourceFile());
  image.setSourceFile(image.sourceFile().substr(0, folderEnd) + out.copy.substr(split::fileNameStart(out.copy)));
  rememberOrigin(image, out.original, corners);
  image.angle = kRealNull;
  setInteger(image.intSetting(kIntPixelWidth), out.width);
  setInteger(image.intSetting(kIntPixelHeight), out.height);
  // A verdict of the row finder was about the picture as it was.
  setText(image.texts[kRowVerdictText - 1], "");
  setText(image.texts[kRowDoubtText - 1], "");
  return Status::ok();
}

}  // namespace subsurf
