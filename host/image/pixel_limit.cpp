#include "host/image/pixel_limit.h"

#include <atomic>
#include <cstdlib>

#include <fmt/format.h>

namespace subsurf::image {
namespace {

double fromEnvironment() {
  const char* text = std::getenv("SUBSURF_MAX_MEGAPIXELS");
  if (text == nullptr || *text == '\0') return kDefaultMegapixels;
  char* end = nullptr;
  const double v = std::strtod(text, &end);
  return end != text && *end == '\0' && v > 0.0 ? v : kDefaultMegapixels;
}

std::atomic<double>& limit() {
  static std::atomic<double> megapixels{fromEnvironment()};
  return megapixels;
}

}  // namespace

double maxMegapixels() { return limit().load(); }

void setMaxMegapixels(double megapixels) { limit() = megapixels > 0.0 ? megapixels : kDefaultMegapixels; }

Status checkPixelCount(long long width, long long height) {
  if (width < 1 || height < 1) return Status::error(fmt::format("the picture claims {} x {} pixels", width, height));
  const double megapixels = static_cast<double>(width) * static_cast<double>(height) / 1e6;
  if (megapixels > maxMegapixels()) {
    return Status::error(fmt::format("{} x {} pixels is more than the limit of {:g} megapixels", width, height,
                                     maxMegapixels()));
  }
  return Status::ok();
}

}  // namespace subsurf::image
