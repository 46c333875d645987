// How well tray corners are found on a generated perspective set
// (make_sample_trays --perspective): for each photograph of
// <folder>/truth.json, the corners found are compared with the true corners
// of the tray's frame, in pixels of the photograph.
//
//   tray_corner_accuracy FOLDER [--verbose]
//
// Prints the mean and largest corner error, how many photos were found sure,
// and the time to read and search a photo (decoding it reduced included).
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/tray_corners.h"
#include "host/image/reduced_photo.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: tray_corner_accuracy FOLDER [--verbose]\n");
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  const bool verbose = argc > 2 && std::strcmp(argv[2], "--verbose") == 0;
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
  std::printf("time per photo (reduced decode and search): %.1f ms\n", 1000 * seconds / std::max(1, photos));
  return 0;
}
