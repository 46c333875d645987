#include "host/drawing/varied_tray.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <fmt/format.h>

#include "host/drawing/seeded_choice.h"

namespace subsurf::drawing {
namespace {

// Seeds of this set start the engine here (kept, so the set stays the same).
SeededChoice chooserFor(std::uint64_t seed) { return SeededChoice(seed * 0x9E3779B97F4A7C15ull + 12345); }

image::PlanePoint turnQuarterAnticlockwise(image::PlanePoint p, double width) { return {p.y, width - p.x}; }

}  // namespace

VariedTraySpec variedTraySpec(std::uint64_t seed, int width, int height, double topDepth, const std::string& well) {
  SeededChoice c = chooserFor(seed);
  VariedTraySpec s;
  s.tray.width = width;
  s.tray.height = height;
  s.tray.topDepth = topDepth;
  s.tray.well = well;
  s.tray.seed = seed * 7 + 3;
  s.tray.look.seed = seed;
  const double material = c.uniform(0, 1);
  s.tray.look.material = material < 0.45   ? TrayMaterial::Wood
                         : material < 0.8  ? TrayMaterial::Plastic
                                           : TrayMaterial::Cardboard;
  static constexpr double kPlastics[][3] = {{38, 38, 42}, {118, 120, 126}, {38, 68, 140}, {196, 166, 40}};
  const int plastic = c.between(0, 3);
  for (int k = 0; k < 3; ++k) s.tray.look.colour[k] = kPlastics[plastic][k];
  s.rowsDown = c.chance(0.25);
  s.trays = c.chance(0.15) ? 2 : 1;
  s.tray.rows = s.trays == 2 ? c.between(2, 5) : c.between(1, 10);
  s.tray.look.emptyRowChance = c.chance(0.4) ? 0.12 : 0.0;
  s.tray.look.sideObjects = s.trays == 1 && c.chance(0.35);
  s.rotationDegrees = c.uniform(-1.0, 1.0);
  s.keystone = c.chance(0.4) ? c.uniform(0.0, 0.04) : 0.0;
  s.ultraviolet = c.chance(0.15);
  s.lightFalloff = c.uniform(0.0, 0.45);
  return s;
}

std::string describeSpec(const VariedTraySpec& s) {
  static constexpr const char* kMaterials[] = {"wood", "plastic", "cardboard"};
  std::string text = fmt::format("{}, {} row{} {}", kMaterials[static_cast<int>(s.tray.look.material)], s.tray.rows,
                                 s.tray.rows == 1 ? "" : "s", s.rowsDown ? "down" : "across");
  if (s.trays == 2) text += ", two trays";
  if (s.tray.look.emptyRowChance > 0) text += ", empty compartments";
  if (s.tray.look.sideObjects) text += ", chart and board";
  if (s.ultraviolet) text += ", uv";
  if (s.keystone > 0) text += fmt::format(", tilted {:.1f}%", 100 * s.keystone);
  text += fmt::format(", turned {:.2f} deg, light falls {:.0f}%", s.rotationDegrees, 100 * s.lightFalloff);
  return text;
}

VariedTray renderVariedTray(const VariedTraySpec& spec) {
  VariedTray result;
  const int width = std::max(64, spec.tray.width), height = std::max(64, spec.tray.height);
  // Drawn with rows across on a canvas turned to suit, turned at the end.
  const int cw = spec.rowsDown ? height : width, ch = spec.rowsDown ? width : height;
  image::Raster canvas(cw, ch);
  const int trays = std::clamp(spec.trays, 1, 2);
  double depth = spec.tray.topDepth;
  std::vector<TrueRow> rows;
  for (int t = 0; t < trays; ++t) {
    SampleTraySpec one = spec.tray;
    one.width = cw;
    const int top = ch * t / trays, bottom = ch * (t + 1) / trays;
    one.height = bottom - top;
    one.topDepth = depth;
    one.trayNumber = spec.tray.trayNumber + t;
    one.seed = spec.tray.seed + 1000 * t;
    const SampleTray tray = renderSampleTray(one);
    for (int y = 0; y < tray.pixels.height() && top + y < ch; ++y)
      std::copy_n(tray.pixels.row(y), 3 * static_cast<std::size_t>(cw), canvas.row(top + y));
    for (const SampleRow& r : tray.rows) {
      TrueRow row;
      row.top = r.top;
      row.base = r.base;
      const image::PixelBox& b = r.compartment;
      row.corners = {image::PlanePoint{double(b.left), double(top + b.top)},
                     {double(b.right()), double(top + b.top)},
                     {double(b.right()), double(top + b.bottom())},
                     {double(b.left), double(top + b.bottom())}};
      rows.push_back(row);
    }
    if (t == 0) result.top = tray.top;
    result.base = tray.base;
    depth = tray.base;
  }

  // Light falling off across the table, and ultraviolet colours: the rock
  // glows green-yellow and blue-white, wood and plastic sink into violet dark.
  for (int y = 0; y < ch; ++y) {
    std::uint8_t* p = canvas.row(y);
    for (int x = 0; x < cw; ++x, p += 3) {
      const double light = 1.0 - spec.lightFalloff * (0.6 * x / cw + 0.4 * y / ch);
      double r = p[0] * light, g = p[1] * light, b = p[2] * light;
      if (spec.ultraviolet) {
        const double lum = 0.3 * r + 0.59 * g + 0.11 * b;
        const double glow = std::clamp((lum - 60.0) / 140.0, 0.0, 1.0);
        r = 0.25 * lum * glow + 0.12 * lum;
        g = 0.95 * lum * glow + 0.08 * lum;
        b = 0.45 * lum * glow + 0.35 * lum + 12;
      }
      p[0] = static_cast<std::uint8_t>(std::clamp(r, 0.0, 255.0));
      p[1] = static_cast<std::uint8_t>(std::clamp(g, 0.0, 255.0));
      p[2] = static_cast<std::uint8_t>(std::clamp(b, 0.0, 255.0));
    }
  }

  // The camera tilted (the far side narrower) and turned about the centre.
  const double k = std::clamp(spec.keystone, 0.0, 0.3) * cw / 2;
  const double a = spec.rotationDegrees * std::numbers::pi / 180.0;
  const std::array<image::PlanePoint, 4> flat{image::PlanePoint{0, 0}, {double(cw), 0}, {double(cw), double(ch)},
                                              {0, double(ch)}};
  std::array<image::PlanePoint, 4> seen{image::PlanePoint{k, 0}, {cw - k, 0}, {double(cw), double(ch)},
                                        {0, double(ch)}};
  for (auto& p : seen) {
    const double dx = p.x - cw / 2.0, dy = p.y - ch / 2.0;
    p = {cw / 2.0 + dx * std::cos(a) - dy * std::sin(a), ch / 2.0 + dx * std::sin(a) + dy * std::cos(a)};
  }
  image::Homography forward, backward;
  image::Homography::fromQuads(flat, seen, forward);
  forward.inverse(backward);
  image::Raster warped(cw, ch);
  const std::uint8_t table[3] = {spec.ultraviolet ? std::uint8_t{14} : std::uint8_t{66},
                                 spec.ultraviolet ? std::uint8_t{10} : std::uint8_t{68},
                                 spec.ultraviolet ? std::uint8_t{30} : std::uint8_t{72}};
  image::warpPicture(canvas.view(), backward, warped, table);
  for (TrueRow& row : rows)
    for (auto& p : row.corners) p = forward.apply(p);

  if (spec.rowsDown) {
    result.pixels = image::Raster(ch, cw);
    for (int y = 0; y < cw; ++y)
      for (int x = 0; x < ch; ++x) std::copy_n(warped.pixel(cw - 1 - y, x), 3, result.pixels.pixel(x, y));
    for (TrueRow& row : rows)
      for (auto& p : row.corners) p = turnQuarterAnticlockwise(p, cw);
  } else {
    result.pixels = std::move(warped);
  }
  int index = 0;
  for (TrueRow& row : rows) {
    row.index = ++index;
    double x0 = row.corners[0].x, x1 = x0, y0 = row.corners[0].y, y1 = y0;
    for (const auto& p : row.corners) {
      x0 = std::min(x0, p.x), x1 = std::max(x1, p.x), y0 = std::min(y0, p.y), y1 = std::max(y1, p.y);
    }
    const int left = static_cast<int>(std::lround(x0)), top = static_cast<int>(std::lround(y0));
    row.box = {left, top, static_cast<int>(std::lround(x1)) - left, static_cast<int>(std::lround(y1)) - top};
  }
  result.rows = std::move(rows);
  return result;
}

}  // namespace subsurf::drawing
