#include "host/drawing/palette.h"

#include <algorithm>
#include <cstdio>

namespace subsurf::drawing {
namespace {

constexpr std::uint32_t kBase[] = {
    0xFFFFFF, 0x000000,                                               // white, black
    0xE69F00, 0x56B4E9, 0x009E73, 0xF0E442, 0x0072B2, 0xD55E00, 0xCC79A7,  // Okabe-Ito
    0x999999,                                                         // grey
    0x332288, 0x88CCEE, 0x44AA99, 0x117733, 0x999933, 0xDDCC77, 0xCC6677, 0x882255, 0xAA4499,  // Tol muted
};
constexpr int kBaseCount = static_cast<int>(sizeof kBase / sizeof kBase[0]);
constexpr int kHueCount = kBaseCount - 2;  // the colours that repeat in shades: 2..18

Rgb fromHex(std::uint32_t v) { return rgb255(static_cast<int>(v >> 16), static_cast<int>((v >> 8) & 0xFF), static_cast<int>(v & 0xFF)); }

// Mixes the colour towards black (amount < 0) or white (amount > 0).
Rgb shade(Rgb c, double amount) {
  const double target = amount < 0 ? 0.0 : 1.0, t = amount < 0 ? -amount : amount;
  return {c.r + (target - c.r) * t, c.g + (target - c.g) * t, c.b + (target - c.b) * t};
}

}  // namespace

Rgb paletteColour(int index) {
  if (index < 0 || index >= kPaletteSize) index = 2 + ((index - 2) % (kPaletteSize - 2) + (kPaletteSize - 2)) % (kPaletteSize - 2);
  if (index < kBaseCount) return fromHex(kBase[index]);
  // Rounds of shades: darker by 35 %, lighter by 40 %, darker by 60 %, lighter by 65 %, ...
  static constexpr double kShades[] = {-0.35, 0.40, -0.60, 0.65, -0.2, 0.2, -0.5};
  const int round = (index - kBaseCount) / kHueCount;
  const int hue = 2 + (index - kBaseCount) % kHueCount;
  return shade(fromHex(kBase[hue]), kShades[std::min(round, 6)]);
}

std::array<char, 8> paletteHex(int index) {
  const Rgb c = paletteColour(index);
  std::array<char, 8> out{};
  auto byte = [](double v) { return static_cast<int>(std::clamp(v, 0.0, 1.0) * 255.0 + 0.5); };
  std::snprintf(out.data(), out.size(), "#%02x%02x%02x", byte(c.r), byte(c.g), byte(c.b));
  return out;
}

}  // namespace subsurf::drawing
