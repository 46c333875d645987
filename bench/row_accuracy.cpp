// How well rows are found on a generated varied set (make_sample_trays
// --varied): for each photograph of <folder>/truth.json, the rows found are
// matched in reading order with the true compartments and their intersection
// over union is measured.
//
//   row_accuracy FOLDER [--expected] [--verbose]
//
// Prints the share of true rows found with IoU >= 0.8, the share of photos
// with every row so found, and how the confidence separates the photos read
// right from the others.
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/row_detection.h"
#include "host/image/reduced_photo.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: row_accuracy FOLDER [--expected] [--verbose]\n");
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  bool expected = false, verbose = false;
  for (int i = 2; i < argc; ++i) {
    if (std::strcmp(argv[i], "--expected") == 0) expected = true;
    if (std::strcmp(argv[i], "--verbose") == 0) verbose = true;
  }
  std::ifstream in(folder / "truth.json");
  if (!in) {
    std::fprintf(stderr, "row_accuracy: cannot read %s\n", (folder / "truth.json").c_str());
    return 2;
  }
  const nlohmann::json truth = nlohmann::json::parse(in);
  subsurf::RowDetector detector;
  int rows = 0, rowsFound = 0, photos = 0, photosRight = 0;
  int sureRight = 0, sureWrong = 0, unsureRight = 0, unsureWrong = 0;
  double seconds = 0;
  for (const auto& entry : truth) {
    const std::string file = entry["file"];
    subsurf::image::Raster reduced;
    subsurf::image::PixelSize full;
    const auto start = std::chrono::steady_clock::now();
    if (!subsurf::image::loadReducedPhoto((folder / file).string(), subsurf::RowDetector::kWorkingSize, reduced, full))
      return 1;
    const int count = static_cast<int>(entry["rows"].size());
    const subsurf::RowDetection found = detector.detect(reduced.view(), full.width, full.height, expected ? count : 0);
    seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    int good = 0;
    std::string ious;
    for (int k = 0; k < count; ++k) {
      const auto& t = entry["rows"][k];
      subsurf::DetectedRow want;
      want.left = t["left"].get<double>();
      want.top = t["top_px"].get<double>();
      want.right = want.left + t["width"].get<double>();
      want.bottom = want.top + t["height"].get<double>();
      double best = 0;
      if (k < static_cast<int>(found.rows.size())) best = subsurf::intersectionOverUnion(want, found.rows[k]);
      if (best >= 0.8) ++good;
      ious += " " + std::to_string(static_cast<int>(best * 100));
    }
    const bool right = good == count && static_cast<int>(found.rows.size()) == count;
    rows += count;
    rowsFound += good;
    ++photos;
    photosRight += right;
    if (found.sure()) right ? ++sureRight : ++sureWrong;
    else right ? ++unsureRight : ++unsureWrong;
    if (verbose || (!right && found.sure()))
      std::printf("%s %s: %zu of %d rows, %s, confidence %.2f%s%s; IoU%%%s\n", right ? "  " : "XX", file.c_str(),
                  found.rows.size(), count, found.rowsAcross ? "across" : "down", found.confidence,
                  found.doubt.empty() ? "" : ", ", found.doubt.c_str(), ious.c_str());
  }
  std::printf("photos %d, rows %d%s\n", photos, rows, expected ? " (row count given)" : "");
  std::printf("rows found with IoU >= 0.8: %d (%.1f%%)\n", rowsFound, 100.0 * rowsFound / std::max(1, rows));
  std::printf("photos with every row found: %d (%.1f%%)\n", photosRight, 100.0 * photosRight / std::max(1, photos));
  std::printf("sure and right %d, sure and wrong %d, unsure and right %d, unsure and wrong %d\n", sureRight, sureWrong,
              unsureRight, unsureWrong);
  std::printf("mean time per photo (decode and find): %.3f s\n", seconds / std::max(1, photos));
  return 0;
}
