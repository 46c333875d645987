// Helpers shared by the image tests: scratch folders, synthetic pictures with
// a recognisable value at every pixel, and picture files made through libvips.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <vips/vips8>

#include "host/image/raster.h"
#include "host/image/vips_runtime.h"
#include "host/messages.h"

namespace subsurf::image::testing {

namespace fs = std::filesystem;

// A scratch folder per test, removed afterwards.
class ScratchDir {
 public:
  ScratchDir() {
    std::random_device rd;
    path_ = fs::temp_directory_path() / ("subsurf-image-" + std::to_string(rd()) + std::to_string(rd()));
    fs::create_directories(path_);
  }
  ~ScratchDir() {
    std::error_code ec;
    fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ec);
    fs::remove_all(path_, ec);
  }
  std::string file(const std::string& name) const { return (path_ / name).string(); }
  const fs::path& path() const { return path_; }
  // Names of everything in the folder, to check that nothing was left behind.
  std::vector<std::string> entries() const {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(path_)) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  fs::path path_;
};

// Every pixel different from its neighbours and from its mirror images, so
// that any wrong turn, flip or offset shows: red from x, green from y, blue
// from both.
inline Raster patternRaster(int width, int height) {
  Raster r(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      std::uint8_t* p = r.pixel(x, y);
      p[0] = static_cast<std::uint8_t>(x * 5 + 1);
      p[1] = static_cast<std::uint8_t>(y * 11 + 2);
      p[2] = static_cast<std::uint8_t>(x * 3 + y * 7);
    }
  return r;
}

inline vips::VImage toVips(const Raster& r) {
  EXPECT_TRUE(ensureVips());
  return vips::VImage::new_from_memory(const_cast<std::uint8_t*>(r.bytes().data()), r.bytes().size(), r.width(),
                                       r.height(), 3, VIPS_FORMAT_UCHAR)
      .copy_memory();
}

inline Raster fromVips(const vips::VImage& image) {
  Raster r(image.width(), image.height());
  std::size_t size = 0;
  void* data = image.write_to_memory(&size);
  EXPECT_EQ(size, r.bytes().size());
  std::memcpy(r.bytes().data(), data, std::min(size, r.bytes().size()));
  g_free(data);
  return r;
}

// Saves a raster in the format its suffix names, with an EXIF/TIFF
// orientation tag when orientation is not 1.
inline void saveWithVips(const Raster& r, const std::string& path, int orientation = 1) {
  vips::VImage image = toVips(r);
  if (orientation != 1) {
    image = image.copy();
    image.set(VIPS_META_ORIENTATION, orientation);
  }
  image.write_to_file(path.c_str());
}

inline std::vector<std::uint8_t> fileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void writeBytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// The raster turned by quarter turns clockwise, computed the plain way.
inline Raster turnedClockwise(const Raster& in, int turns) {
  Raster out = in;
  for (int t = 0; t < ((turns % 4) + 4) % 4; ++t) {
    Raster next(out.height(), out.width());
    for (int y = 0; y < out.height(); ++y)
      for (int x = 0; x < out.width(); ++x)
        std::memcpy(next.pixel(out.height() - 1 - y, x), out.pixel(x, y), 3);
    out = std::move(next);
  }
  return out;
}

inline Raster region(const Raster& in, const PixelBox& box) {
  Raster out(box.width, box.height);
  for (int y = 0; y < box.height; ++y)
    std::memcpy(out.row(y), in.pixel(box.left, box.top + y), 3 * static_cast<std::size_t>(box.width));
  return out;
}

inline bool samePixels(const Raster& a, const Raster& b) {
  return a.width() == b.width() && a.height() == b.height() && a.bytes() == b.bytes();
}

inline double meanAbsDifference(const Raster& a, const Raster& b) {
  if (a.bytes().size() != b.bytes().size() || a.bytes().empty()) return 1e9;
  double sum = 0;
  for (std::size_t i = 0; i < a.bytes().size(); ++i) sum += std::abs(int(a.bytes()[i]) - int(b.bytes()[i]));
  return sum / a.bytes().size();
}

// Silences and clears the recorded messages around each test.
class ImageTest : public ::testing::Test {
 protected:
  void SetUp() override {
    host::setQuiet(true);
    host::clearRecorded();
    ASSERT_TRUE(ensureVips());
  }
  void TearDown() override { host::clearRecorded(); }
  ScratchDir dir;
};

}  // namespace subsurf::image::testing
