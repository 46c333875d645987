// Finding the rows of a 24-megapixel tray photograph (6000 x 4000, JPEG), on
// one core: the reduced decode and the finder together, against decoding the
// whole photograph once (what any use of the photograph costs at least), and
// the finder alone on the reduced picture.
//
// The photograph is a generated five-row tray written to the temporary folder.
// Run: bench/row_detection_bench (one thread; libvips works single-threaded).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "core/row_detection.h"
#include "host/drawing/sample_tray.h"
#include "host/image/image_writer.h"
#include "host/image/photo.h"
#include "host/image/reduced_photo.h"

namespace {

const std::string& photoPath() {
  static const std::string path = [] {
    const std::string p = (std::filesystem::temp_directory_path() / "subsurf_rows_24mp.jpg").string();
    if (!std::filesystem::exists(p)) {
      subsurf::drawing::SampleTraySpec spec;
      spec.width = 6000;
      spec.height = 4000;
      spec.rows = 5;
      const subsurf::drawing::SampleTray tray = subsurf::drawing::renderSampleTray(spec);
      subsurf::image::writeImage(tray.pixels.view(), p, subsurf::image::ImageFormat::Jpeg);
    }
    return p;
  }();
  return path;
}

void FindRows(benchmark::State& state) {
  const subsurf::RowDetector detector;
  std::size_t rows = 0;
  for (auto _ : state) {
    subsurf::image::Raster reduced;
    subsurf::image::PixelSize full;
    subsurf::image::loadReducedPhoto(photoPath(), subsurf::RowDetector::kWorkingSize, reduced, full);
    const subsurf::RowDetection found = detector.detect(reduced.view(), full.width, full.height, 0);
    rows = found.rows.size();
    benchmark::DoNotOptimize(found.confidence);
  }
  state.counters["rows"] = static_cast<double>(rows);
}
BENCHMARK(FindRows)->Unit(benchmark::kMillisecond)->MinTime(2.0)->UseRealTime();

void FinderAloneOnReducedPicture(benchmark::State& state) {
  subsurf::image::Raster reduced;
  subsurf::image::PixelSize full;
  subsurf::image::loadReducedPhoto(photoPath(), subsurf::RowDetector::kWorkingSize, reduced, full);
  const subsurf::RowDetector detector;
  for (auto _ : state) benchmark::DoNotOptimize(detector.detect(reduced.view(), full.width, full.height, 0).confidence);
}
BENCHMARK(FinderAloneOnReducedPicture)->Unit(benchmark::kMillisecond)->MinTime(1.0)->UseRealTime();

void DecodeWholePhotograph(benchmark::State& state) {
  for (auto _ : state) {
    subsurf::image::Photo photo;
    subsurf::image::Photo::load(photoPath(), photo);
    benchmark::DoNotOptimize(photo.width());
  }
}
BENCHMARK(DecodeWholePhotograph)->Unit(benchmark::kMillisecond)->MinTime(2.0)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  photoPath();  // drawn and written before any timing
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
