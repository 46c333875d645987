#include "host/drawing/perspective_tray.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <fmt/format.h>

#include "host/drawing/seeded_choice.h"

namespace subsurf::drawing {
namespace {

// Grey rubber matting beyond the edge of the flat photograph.
constexpr std::uint8_t kTable[3] = {76, 78, 82};

}  // namespace

PerspectiveTraySpec perspectiveTraySpec(std::uint64_t seed, int width, int height, double topDepth,
                                        const std::string& well) {
  SeededChoice c(seed * 0xD1B54A32D192ED03ull + 777);
  PerspectiveTraySpec s;
  s.tray.width = width;
  s.tray.height = height;
  s.tray.topDepth = topDepth;
  s.tray.well = well;
  s.tray.seed = seed * 11 + 5;
  s.tray.rows = c.between(3, 8);
  s.tray.look.seed = seed;
  const int material = c.between(0, 2);
  s.tray.look.material = material == 0 ? TrayMaterial::Wood : material == 1 ? TrayMaterial::Plastic : TrayMaterial::Cardboard;
  static constexpr double kPlastics[][3] = {{118, 120, 126}, {38, 68, 140}, {196, 166, 40}};
  const int plastic = c.between(0, 2);
  for (int k = 0; k < 3; ++k) s.tray.look.colour[k] = kPlastics[plastic][k];
  s.farSide = static_cast<FarSide>(c.between(0, 3));
  s.keystone = c.uniform(0.05, 0.20);
  s.scale = c.uniform(0.80, 0.88);
  s.rotationDegrees = c.uniform(-6.0, 6.0);
  s.shiftX = c.uniform(-0.02, 0.02);
  s.shiftY = c.uniform(-0.02, 0.02);
  return s;
}

std::string describeSpec(const PerspectiveTraySpec& s) {
  static constexpr const char* kMaterials[] = {"wood", "plastic", "cardboard"};
  static constexpr const char* kSides[] = {"top", "right", "bottom", "left"};
  return fmt::format("{}, {} row{}, far side {}, keystone {:.1f}%, turned {:.2f} deg",
                     kMaterials[static_cast<int>(s.tray.look.material)], s.tray.rows, s.tray.rows == 1 ? "" : "s",
                     kSides[static_cast<int>(s.farSide)], 100 * s.keystone, s.rotationDegrees);
}

PerspectiveTray renderPerspectiveTray(const PerspectiveTraySpec& spec) {
  PerspectiveTray result;
  result.flat = renderSampleTray(spec.tray);
  const image::PixelBox& box = result.flat.trayBox;
  const int width = result.flat.pixels.width(), height = result.flat.pixels.height();
  const std::array<image::PlanePoint, 4> frame{
      image::PlanePoint{double(box.left), double(box.top)}, {double(box.right()), double(box.top)},
      {double(box.right()), double(box.bottom())}, {double(box.left), double(box.bottom())}};

  // The frame about its centre, scaled, with the far side drawn in.
  const double hw = spec.scale * box.width / 2, hh = spec.scale * box.height / 2;
  std::array<image::PlanePoint, 4> seen{image::PlanePoint{-hw, -hh}, {hw, -hh}, {hw, hh}, {-hw, hh}};
  const double inX = spec.keystone * hw, inY = spec.keystone * hh;
  switch (spec.farSide) {
    case FarSide::Top: seen[0].x += inX, seen[1].x -= inX; break;
    case FarSide::Bottom: seen[3].x += inX, seen[2].x -= inX; break;
    case FarSide::Left: seen[0].y += inY, seen[3].y -= inY; break;
    case FarSide::Right: seen[1].y += inY, seen[2].y -= inY; break;
  }
  const double a = spec.rotationDegrees * std::numbers::pi / 180.0;
  const double cx = box.left + box.width / 2.0 + spec.shiftX * width;
  const double cy = box.top + box.height / 2.0 + spec.shiftY * height;
  for (auto& p : seen) p = {cx + p.x * std::cos(a) - p.y * std::sin(a), cy + p.x * std::sin(a) + p.y * std::cos(a)};

  image::Homography::fromQuads(frame, seen, result.flatToPhoto);
  image::Homography photoToFlat;
  result.flatToPhoto.inverse(photoToFlat);
  result.photo = image::Raster(width, height);
  image::warpPicture(result.flat.pixels.view(), photoToFlat, result.photo, kTable);
  // Beyond the tray and its shadow the table goes on: the flat photograph's
  // own edges must not show.
  const double unit = std::min(width / 2400.0, height / 1600.0), margin = 40 * unit;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const image::PlanePoint f = photoToFlat.apply({x + 0.5, y + 0.5});
      if (f.x < box.left - margin || f.x > box.right() + margin || f.y < box.top - margin ||
          f.y > box.bottom() + margin)
        tableColourAt(spec.tray, f.x - 0.5, f.y - 0.5, result.photo.pixel(x, y));
    }
  result.corners = seen;
  return result;
}

}  // namespace subsurf::drawing
