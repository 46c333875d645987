// make_sample_trays: draws sample photographs of boxed core trays.
//
// Each tray is written as a JPEG named after its depth interval
// (TRAY_1234_5-1239_5.jpg), the trays following one another down the hole.
// The pixel rectangles of the core rows drawn are printed as CSV and written
// as JSON, so that a splitting session can be laid over the photographs and
// the results checked. The same options always give the same pictures.
//
//   make_sample_trays --out data/samples --count 3
//   make_sample_trays --out /tmp/bench --width 6000 --height 4000 --count 1
//   make_sample_trays --out /tmp/varied --count 60 --varied
//   make_sample_trays --out /tmp/angled --count 20 --perspective
//
// With --varied every tray differs (material, rows, orientation, chart and
// board, camera angle, light, ultraviolet); the true compartments of the rows
// go to <out>/truth.json instead, for measuring how well rows are found.
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>

#include <fmt/format.h>

#include "host/atomic_file.h"
#include "host/drawing/perspective_tray.h"
#include "host/drawing/sample_tray.h"
#include "host/drawing/varied_tray.h"
#include "host/image/image_writer.h"

namespace {

int run(int argc, char** argv) {
  CLI::App app{"Draws sample core-tray photographs with the rectangles of their core rows."};
  std::string outDir = ".";
  int width = 2400, height = 1600, count = 3, rows = 5, quality = 85;
  double top = 1234.5, rowLength = 1.0;
  std::uint64_t seed = 1;
  std::string well = "SUBSURF-1";
  std::string layoutPath;
  bool varied = false, perspective = false;
  app.add_option("-o,--out", outDir, "Folder for the photographs")->capture_default_str();
  app.add_option("--width", width, "Photograph width in pixels")->capture_default_str()->check(CLI::Range(64, 30000));
  app.add_option("--height", height, "Photograph height in pixels")->capture_default_str()->check(CLI::Range(64, 30000));
  app.add_option("-n,--count", count, "Number of trays")->capture_default_str()->check(CLI::Range(1, 10000));
  app.add_option("--rows", rows, "Core rows per tray")->capture_default_str()->check(CLI::Range(1, 20));
  app.add_option("--top", top, "Top depth of the first tray (m)")->capture_default_str()->check(CLI::Range(0.0, 99999.0));
  app.add_option("--row-length", rowLength, "Metres of core per row")->capture_default_str()->check(CLI::Range(0.1, 10.0));
  app.add_option("--seed", seed, "Seed of the drawing")->capture_default_str();
  app.add_option("--well", well, "Well name on the label cards")->capture_default_str();
  app.add_option("--quality", quality, "JPEG quality")->capture_default_str()->check(CLI::Range(1, 100));
  app.add_option("--layout", layoutPath, "JSON file for the row rectangles (default: <out>/trays.json)");
  app.add_flag("--varied", varied, "Draw a varied set and write the true compartments to <out>/truth.json");
  app.add_flag("--perspective", perspective,
               "Draw trays photographed at an angle, and square on under <out>/flat, with the truth in "
               "<out>/truth.json")
      ->excludes("--varied");
  CLI11_PARSE(app, argc, argv);

  std::error_code ec;
  std::filesystem::create_directories(outDir, ec);
  if (ec) {
    std::cerr << "make_sample_trays: cannot create " << outDir << ": " << ec.message() << "\n";
    return 2;
  }
  if (perspective) std::filesystem::create_directories(std::filesystem::path(outDir) / "flat", ec);
  if (ec) {
    std::cerr << "make_sample_trays: cannot create " << outDir << "/flat: " << ec.message() << "\n";
    return 2;
  }
  if (layoutPath.empty())
    layoutPath =
        (std::filesystem::path(outDir) / (varied || perspective ? "truth.json" : "trays.json")).string();

  nlohmann::json layout = nlohmann::json::array();
  if (!varied && !perspective) std::cout << "file,row,top,base,left,top_px,width,height\n";
  double trayTop = top;
  for (int i = 0; varied && i < count; ++i) {
    const auto spec = subsurf::drawing::variedTraySpec(seed * 1000 + static_cast<std::uint64_t>(i), width, height,
                                                       trayTop, well);
    const subsurf::drawing::VariedTray tray = subsurf::drawing::renderVariedTray(spec);
    const std::string name = subsurf::drawing::sampleTrayFileName(tray.top, tray.base);
    subsurf::image::WriteOptions options;
    options.jpegQuality = quality;
    if (!subsurf::image::writeImage(tray.pixels.view(), (std::filesystem::path(outDir) / name).string(),
                                    subsurf::image::ImageFormat::Jpeg, options)) {
      return 1;
    }
    nlohmann::json entry = {{"file", name},          {"width", tray.pixels.width()},
                            {"height", tray.pixels.height()}, {"top", tray.top},
                            {"base", tray.base},      {"rows_down", spec.rowsDown},
                            {"description", subsurf::drawing::describeSpec(spec)},
                            {"rows", nlohmann::json::array()}};
    for (const auto& row : tray.rows) {
      nlohmann::json corners = nlohmann::json::array();
      for (const auto& p : row.corners) corners.push_back({std::round(p.x * 10) / 10, std::round(p.y * 10) / 10});
      entry["rows"].push_back({{"row", row.index},
                               {"top", row.top},
                               {"base", row.base},
                               {"corners", corners},
                               {"left", row.box.left},
                               {"top_px", row.box.top},
                               {"width", row.box.width},
                               {"height", row.box.height}});
    }
    std::cout << name << ": " << entry["description"].get<std::string>() << "\n";
    layout.push_back(entry);
    trayTop = tray.base;
  }
  for (int i = 0; perspective && i < count; ++i) {
    const auto spec = subsurf::drawing::perspectiveTraySpec(seed * 1000 + static_cast<std::uint64_t>(i), width,
                                                            height, trayTop, well);
    const subsurf::drawing::PerspectiveTray tray = subsurf::drawing::renderPerspectiveTray(spec);
    const std::string name = subsurf::drawing::sampleTrayFileName(tray.flat.top, tray.flat.base);
    subsurf::image::WriteOptions options;
    options.jpegQuality = quality;
    const std::filesystem::path out(outDir);
    if (!subsurf::image::writeImage(tray.photo.view(), (out / name).string(), subsurf::image::ImageFormat::Jpeg,
                                    options) ||
        !subsurf::image::writeImage(tray.flat.pixels.view(), (out / "flat" / name).string(),
                                    subsurf::image::ImageFormat::Jpeg, options)) {
      return 1;
    }
    // Straightened, the frame becomes an upright rectangle as wide as its
    // longer long side and as high as its longer short side: the flat tray
    // scaled, so its rows scale with it.
    const auto& c = tray.corners;
    auto length = [](subsurf::image::PlanePoint a, subsurf::image::PlanePoint b) {
      return std::hypot(b.x - a.x, b.y - a.y);
    };
    const long straightWidth = std::lround(std::max(length(c[0], c[1]), length(c[3], c[2])));
    const long straightHeight = std::lround(std::max(length(c[1], c[2]), length(c[0], c[3])));
    const subsurf::image::PixelBox& frame = tray.flat.trayBox;
    const double sx = double(straightWidth) / frame.width, sy = double(straightHeight) / frame.height;
    nlohmann::json corners = nlohmann::json::array();
    for (const auto& p : c) corners.push_back({std::round(p.x * 100) / 100, std::round(p.y * 100) / 100});
    nlohmann::json entry = {{"file", name},
                            {"flat", "flat/" + name},
                            {"width", tray.photo.width()},
                            {"height", tray.photo.height()},
                            {"top", tray.flat.top},
                            {"base", tray.flat.base},
                            {"description", subsurf::drawing::describeSpec(spec)},
                            {"corners", corners},
                            {"flat_tray", {frame.left, frame.top, frame.width, frame.height}},
                            {"straight_size", {straightWidth, straightHeight}},
                            {"rows", nlohmann::json::array()}};
    for (const auto& row : tray.flat.rows) {
      const subsurf::image::PixelBox& b = row.compartment;
      entry["rows"].push_back({{"row", row.index},
                               {"top", row.top},
                               {"base", row.base},
                               {"flat", {b.left, b.top, b.width, b.height}},
                               {"straight",
                                {std::round((b.left - frame.left) * sx * 10) / 10,
                                 std::round((b.top - frame.top) * sy * 10) / 10, std::round(b.width * sx * 10) / 10,
                                 std::round(b.height * sy * 10) / 10}}});
    }
    std::cout << name << ": " << entry["description"].get<std::string>() << "\n";
    layout.push_back(entry);
    trayTop = tray.flat.base;
  }
  for (int i = 0; !varied && !perspective && i < count; ++i) {
    subsurf::drawing::SampleTraySpec spec;
    spec.width = width;
    spec.height = height;
    spec.rows = rows;
    spec.topDepth = trayTop;
    spec.rowLength = rowLength;
    spec.well = well;
    spec.trayNumber = i + 1;
    spec.seed = seed * 1000 + static_cast<std::uint64_t>(i);
    const subsurf::drawing::SampleTray tray = subsurf::drawing::renderSampleTray(spec);
    const std::string name = subsurf::drawing::sampleTrayFileName(tray.top, tray.base);
    const std::string path = (std::filesystem::path(outDir) / name).string();
    subsurf::image::WriteOptions options;
    options.jpegQuality = quality;
    if (!subsurf::image::writeImage(tray.pixels.view(), path, subsurf::image::ImageFormat::Jpeg, options)) {
      return 1;  // the message has been shown
    }
    nlohmann::json entry = {{"file", name}, {"width", tray.pixels.width()}, {"height", tray.pixels.height()},
                            {"top", tray.top}, {"base", tray.base}, {"rows", nlohmann::json::array()}};
    for (const auto& row : tray.rows) {
      entry["rows"].push_back({{"row", row.index},
                               {"top", row.top},
                               {"base", row.base},
                               {"left", row.box.left},
                               {"top_px", row.box.top},
                               {"width", row.box.width},
                               {"height", row.box.height}});
      std::cout << fmt::format("{},{},{:.2f},{:.2f},{},{},{},{}\n", name, row.index, row.top, row.base, row.box.left,
                               row.box.top, row.box.width, row.box.height);
    }
    layout.push_back(entry);
    trayTop = tray.base;  // the next tray starts where this one ends
  }
  subsurf::AtomicFile out;
  subsurf::Status written = out.open(layoutPath);
  if (written) {
    out.writeLine(layout.dump(2));
    written = out.commit();
  }
  if (!written) {
    std::cerr << "make_sample_trays: " << written.message() << "\n";
    return 1;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& e) {
    std::cerr << "make_sample_trays: " << e.what() << "\n";
    return 2;
  }
}
