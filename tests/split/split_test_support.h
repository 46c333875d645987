// Helpers of the split tests: small tray photographs with a recognisable value
// at every pixel, sessions holding them, and reading row images back.
#pragma once

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/core_session.h"
#include "core/image_settings.h"
#include "core/split_process.h"
#include "host/image/bmp.h"
#include "host/image/cgm.h"
#include "host/messages.h"
#include "image/image_test_support.h"

namespace subsurf::split::testing {

using image::PixelBox;
using image::Raster;
using image::testing::patternRaster;
using image::testing::region;
using image::testing::samePixels;
using image::testing::turnedClockwise;
namespace fs = std::filesystem;

// Sets a row's depths (row from 1).
inline void setRowDepths(CoreImage& image, int row, float top, float base) {
  setDepth(image.realSetting(rowTopSetting(row)), top, "");
  setDepth(image.realSetting(rowBaseSetting(row)), base, "");
}

// Replaces the image's rectangles by the given boxes (pixel-corner
// coordinates), outlined clockwise from the top-left corner.
inline void setBoxes(CoreSession& session, CoreImage& image, const std::vector<RowBox>& boxes) {
  for (CoreRectangle* r : CoreSession::rectangles(image)) session.deleteRectangleById(image, r->id);
  for (const RowBox& b : boxes) {
    CoreRectangle* r = session.newRectangle(image);
    CoreSession::setVertexCount(*r, 4);
    const int xs[4] = {b.left, b.right, b.right, b.left};
    const int ys[4] = {b.top, b.top, b.bottom, b.bottom};
    for (int i = 0; i < 4; ++i) {
      r->polygon.px[i] = xs[i];
      r->polygon.py[i] = ys[i];
    }
  }
}

// A tray photograph of width x height in the pattern, saved as path (its
// suffix picks the format; PNG keeps every pixel exact).
inline Raster makePhoto(const std::string& path, int width, int height) {
  Raster r = patternRaster(width, height);
  image::testing::saveWithVips(r, path);
  return r;
}

// A session image for a photograph laid out as `rows` equal horizontal bands
// with rows of coreLength from top0 down.
inline CoreImage& addTray(CoreSession& session, const std::string& photo, int width, int height, int rows,
                          float top0, float coreLength, int uv = 0) {
  CoreImage& image = *session.newImage();
  image.setSourceFile(photo);
  setInteger(image.intSetting(kIntUV), uv);
  session.makeBands(image, rows, width, height);
  setDepth(image.realSetting(kRealTop), top0, "");
  setDepth(image.realSetting(kRealBase), top0 + coreLength * static_cast<float>(rows), "");
  setDepth(image.realSetting(kRealCoreLength), coreLength, "");
  setInteger(image.intSetting(kIntCoreNumber), rows);
  for (int k = 1; k <= rows; ++k)
    setRowDepths(image, k, top0 + coreLength * static_cast<float>(k - 1), top0 + coreLength * static_cast<float>(k));
  return image;
}

// Reads a row image back (BMP or CGM by suffix).
inline Raster readRow(const std::string& path) {
  Raster r;
  Status s = path.ends_with(".cgm") ? image::readCgmCellArray(path, r) : image::readBmp(path, r);
  EXPECT_TRUE(s) << path << ": " << s.message();
  return r;
}

inline std::vector<std::string> readLines(const std::string& path) {
  std::vector<std::string> lines;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// Names of the files in a folder, sorted; temporary files would show here.
inline std::vector<std::string> filesIn(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& e : fs::directory_iterator(folder, ec)) names.push_back(e.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

// A fresh session, a scratch folder with an output folder "out" in it, and
// messages recorded but not printed. The user library points into the
// scratch folder so no template of the person running the tests is read.
class SplitTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ::setenv("SUBSURF_USERLIB", dir.file("userlib").c_str(), 1);
    host::setQuiet(true);
    host::clearRecorded();
    host::setDefaultAnswer(false);
    ASSERT_TRUE(session.init());
    out = dir.file("out");
    fs::create_directories(out);
    options.naming.outputFolder = out;
  }
  void TearDown() override {
    session.close();
    host::clearRecorded();
  }
  std::string outFile(const std::string& name) const { return out + "/" + name; }

  image::testing::ScratchDir dir;
  CoreSession session;
  SplitOptions options;
  std::string out;
};

// While it lives, files may grow to at most `bytes`, as on a disk that fills
// up: a write past the limit fails (EFBIG) instead of stopping the process.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    previousHandler_ = std::signal(SIGXFSZ, SIG_IGN);
    active_ = getrlimit(RLIMIT_FSIZE, &saved_) == 0;
    rlimit small = saved_;
    small.rlim_cur = bytes;
    active_ = active_ && setrlimit(RLIMIT_FSIZE, &small) == 0;
  }
  ~FileSizeLimit() {
    if (active_) setrlimit(RLIMIT_FSIZE, &saved_);
    std::signal(SIGXFSZ, previousHandler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  bool active() const { return active_; }

 private:
  rlimit saved_{};
  bool active_ = false;
  void (*previousHandler_)(int) = nullptr;
};

}  // namespace subsurf::split::testing
