#include "core/photo_row_finding.h"

#include <algorithm>
#include <atomic>
#include <thread>

#include <fmt/format.h>

#include "core/core_session.h"
#include "core/row_layout.h"
#include "core/split_naming.h"
#include "core/split_process.h"
#include "host/image/reduced_photo.h"
#include "host/nulls.h"

namespace subsurf {
namespace {

struct Work {
  CoreImage* image = nullptr;
  std::string photo;
  int expected = 0;
  image::Raster reduced;
  image::PixelSize full;
};

}  // namespace

std::vector<PhotoRows> detectRows(CoreSession& session, const std::vector<int>& places, int cores, int jobs) {
  std::vector<int> chosen = places;
  if (chosen.empty())
    for (int p = 1; p <= session.imageCount(); ++p) chosen.push_back(p);
  std::vector<Work> work(chosen.size());
  std::vector<PhotoRows> results(chosen.size());
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    CoreImage* image = session.imageAt(chosen[i]);
    work[i].image = image;
    work[i].photo = split::locatePhoto(image->sourceFile());
    const int number = image->intValue(kIntCoreNumber);
    work[i].expected = cores >= 1 ? cores : (!isNull(number) && number >= 1 ? number : 0);
    results[i].place = chosen[i];
    results[i].file = work[i].photo.substr(split::fileNameStart(work[i].photo));
  }
  // Each photograph is decoded and read on its own; the rows are laid on the
  // session afterwards, on this thread.
  const RowDetector detector;
  std::atomic<std::size_t> next{0};
  auto loop = [&] {
    for (std::size_t i = next++; i < work.size(); i = next++) {
      Work& w = work[i];
      results[i].read = static_cast<bool>(
          image::loadReducedPhoto(w.photo, RowDetector::kWorkingSize, w.reduced, w.full));
      if (results[i].read)
        results[i].found = detector.detect(w.reduced.view(), w.full.width, w.full.height, w.expected);
      w.reduced = image::Raster();
    }
  };
  const unsigned hardware = std::max(1u, std::thread::hardware_concurrency());
  const std::size_t threads = std::min<std::size_t>(work.size(), jobs > 0 ? jobs : hardware);
  std::vector<std::thread> pool;
  for (std::size_t t = 1; t < threads; ++t) pool.emplace_back(loop);
  loop();
  for (std::thread& t : pool) t.join();

  for (std::size_t i = 0; i < work.size(); ++i)
    if (results[i].read) layDetectedRows(session, *work[i].image, results[i].found, work[i].full.width, work[i].full.height);
  return results;
}

std::string detectionSummary(const PhotoRows& r) {
  if (!r.read) return r.file + ": not read";
  const std::size_t rows = r.found.rows.size();
  return fmt::format("{}: {} row{} {}, confidence {:.2f}", r.file, rows, rows == 1 ? "" : "s",
                     r.found.rowsAcross ? "across" : "down", r.found.confidence);
}

std::string checkRowsNote(const PhotoRows& r) {
  if (r.read && r.found.sure()) return std::string();
  const std::string why = !r.read ? "it could not be read" : fmt::format("confidence {:.2f}: {}", r.found.confidence, r.found.doubt);
  return fmt::format("check the rows of {} ({})", r.file, why);
}

}  // namespace subsurf
