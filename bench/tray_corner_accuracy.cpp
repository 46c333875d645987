// How well tray corners are found on a generated perspective set
// (make_sample_trays --perspective): for each photograph of
// <folder>/truth.json, the corners found are compared with the true corners
// of the tray's frame, in pixels of the photograph.
//
//   tray_corner_accuracy FOLDER [--verbose] [--rows]
//
// Prints the mean and largest corner error, how many photos were found sure,
// and the time to read and search a photo (decoding it reduced included).
// With --rows each photo found sure is also straightened by its corners and
// its rows are found on the straight tray, then matched with the true rows
// (intersection over union at least 0.8), as `slabber new --straighten
// --detect-rows` does.
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/row_detection.h"
#include "core/tray_corners.h"
#include "host/image/photo.h"
#include "host/image/reduced_photo.h"

namespace {

// The picture brought down by whole blocks so that its longer side is at
// most `longest` (area averaging, as a photo reduced while decoded).
subsurf::image::Raster reduced(const subsurf::image::Raster& in, int longest) {
  const int factor = std::max(1, (std::max(in.width(), in.height()) + longest - 1) / longest);
  subsurf::image::Raster out(in.width() / factor, in.height() / factor);
  for (int y = 0; y < out.height(); ++y)
    for (int x = 0; x < out.width(); ++x)
      for (int k = 0; k < 3; ++k) {
        int sum = 0;
        for (int dy = 0; dy < factor; ++dy)
          for (int dx = 0; dx < factor; ++dx) sum += in.pixel(x * factor + dx, y * factor + dy)[k];
        out.pixel(x, y)[k] = static_cast<std::uint8_t>(sum / (factor * factor));
      }
  return out;
}

// Rows found on the photo straightened by `corners`, matched with the true
// rows of the straight tray; returns how many have IoU >= 0.8.
int rowsFoundStraight(const std::string& path, const subsurf::TrayCorners& corners, const nlohmann::json& entry) {
  subsurf::image::Photo photo;
  if (!subsurf::image::Photo::load(path, photo)) return 0;
  subsurf::image::Raster whole, straight;
  if (!photo.cut({{0, 0, photo.width(), photo.height()}}, whole)) return 0;
  const std::uint8_t black[3] = {0, 0, 0};
  if (!subsurf::image::cutQuadrilateral(whole.view(), corners, straight, black)) return 0;
  const subsurf::image::Raster small = reduced(straight, subsurf::RowDetector::kWorkingSize);
  const subsurf::RowDetection found =
      subsurf::RowDetector().detect(small.view(), straight.width(), straight.height(), 0);
  // The true rows are given on the straight tray of the true corners; the
  // corners found make a copy of a slightly different size.
  const double sx = double(straight.width()) / entry["straight_size"][0].get<double>();
  const double sy = double(straight.height()) / entry["straight_size"][1].get<double>();
  int good = 0;
  for (std::size_t k = 0; k < entry["rows"].size() && k < found.rows.size(); ++k) {
    const auto& t = entry["rows"][k]["straight"];
    subsurf::DetectedRow want;
    want.left = t[0].get<double>() * sx;
    want.top = t[1].get<double>() * sy;
    want.right = want.left + t[2].get<double>() * sx;
    want.bottom = want.top + t[3].get<double>() * sy;
    good += subsurf::intersectionOverUnion(want, found.rows[k]) >= 0.8;
  }
  return found.rows.size() == entry["rows"].size() ? good : std::min<int>(good, 0);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: tray_corner_accuracy FOLDER [--verbose]\n");
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  bool verbose = false, rowsToo = false;
  for (int i = 2; i < argc; ++i) {
    if (std::strcmp(argv[i], "--verbose") == 0) verbose = true;
    if (std::strcmp(argv[i], "--rows") == 0) rowsToo = true;
  }
  int rows = 0, rowsRight = 0, photosAllRight = 0;
  std::ifstream in(folder / "truth.json");
  if (!in) {
    std::fprintf(stderr, "tray_corner_accuracy: cannot read %s\n", (folder / "truth.json").c_str());
    return 2;
  }
  const nlohmann::json truth = nlohmann::json::parse(in);
  const subsurf::TrayCornerFinder finder;
  int photos = 0, sure = 0, sureWithin = 0, sureOff = 0;
  double sumError = 0, worstSure = 0, seconds = 0, outward = 0;
  int outwardCount = 0;
  std::vector<double> errors;
  for (const auto& entry : truth) {
    const std::string file = entry["file"];
    subsurf::image::Raster reduced;
    subsurf::image::PixelSize full;
    const auto start = std::chrono::steady_clock::now();
    if (!subsurf::image::loadReducedPhoto((folder / file).string(), subsurf::TrayCornerFinder::kWorkingSize, reduced,
                                          full))
      return 1;
    const subsurf::TrayCornerDetection found = finder.find(reduced.view(), full.width, full.height);
    seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ++photos;
    subsurf::TrayCorners want;
    for (int i = 0; i < 4; ++i) want[i] = {entry["corners"][i][0].get<double>(), entry["corners"][i][1].get<double>()};
    subsurf::orderTrayCorners(want, full.width, full.height);
    double worst = 0, mean = 0;
    const double cx = (want[0].x + want[1].x + want[2].x + want[3].x) / 4;
    const double cy = (want[0].y + want[1].y + want[2].y + want[3].y) / 4;
    for (int i = 0; i < 4 && found.found; ++i) {
      const double dx = want[i].x - cx, dy = want[i].y - cy, len = std::hypot(dx, dy);
      outward += ((found.corners[i].x - want[i].x) * dx + (found.corners[i].y - want[i].y) * dy) / len;
      ++outwardCount;
    }
    for (int i = 0; i < 4; ++i) {
      const double e = std::hypot(found.corners[i].x - want[i].x, found.corners[i].y - want[i].y);
      worst = std::max(worst, e);
      mean += e / 4;
    }
    // The far corners scale with the photo: an error is "within" when under
    // 0.25% of the photo's longer side (5 pixels on a 2000-pixel photo).
    const bool within = found.found && worst <= 0.0025 * std::max(full.width, full.height);
    if (found.sure()) {
      ++sure;
      within ? ++sureWithin : ++sureOff;
      worstSure = std::max(worstSure, worst);
    }
    if (rowsToo && found.sure()) {
      const int count = static_cast<int>(entry["rows"].size());
      const int good = rowsFoundStraight((folder / file).string(), found.corners, entry);
      rows += count;
      rowsRight += good;
      photosAllRight += good == count;
    } else if (rowsToo) {
      rows += static_cast<int>(entry["rows"].size());
    }
    if (found.found) {
      sumError += mean;
      errors.push_back(mean);
    }
    if (verbose || (found.sure() && !within))
      std::printf("%-28s confidence %.2f  mean error %6.2f px  worst %6.2f px%s%s\n", file.c_str(), found.confidence,
                  mean, worst, found.sure() ? "" : "  (check)", found.doubt.empty() ? "" : ("  " + found.doubt).c_str());
    if (found.sure() && !within)
      for (int i = 0; i < 4; ++i)
        std::printf("    corner %d found %.1f,%.1f true %.1f,%.1f\n", i + 1, found.corners[i].x, found.corners[i].y,
                    want[i].x, want[i].y);
  }
  std::sort(errors.begin(), errors.end());
  std::printf("photos: %d, corners found sure: %d (within 0.25%% of the photo: %d, off: %d)\n", photos, sure,
              sureWithin, sureOff);
  if (!errors.empty())
    std::printf("mean corner error: %.2f px (median photo %.2f px, worst sure corner %.2f px)\n",
                sumError / errors.size(), errors[errors.size() / 2], worstSure);
  if (outwardCount > 0)
    std::printf("corners lie on average %.2f px outwards of the true ones\n", outward / outwardCount);
  if (rowsToo)
    std::printf("rows on the straight trays with IoU >= 0.8: %d of %d (%.1f%%); photos with every row: %d of %d\n",
                rowsRight, rows, 100.0 * rowsRight / std::max(1, rows), photosAllRight, photos);
  std::printf("time per photo (reduced decode and search): %.1f ms\n", 1000 * seconds / std::max(1, photos));
  return 0;
}
