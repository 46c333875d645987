// The colour palette behind the colour indices of plots.
//
// Index 0 is white (backgrounds) and 1 black (axes, text). Indices 2 to 8 are
// the Okabe-Ito colours (orange, sky blue, bluish green, yellow, blue,
// vermillion, reddish purple): strongly distinct and told apart by people
// with the common red-green deficiencies (deuteranopia, protanopia) and with
// tritanopia. 9 is a mid grey. 10 to 18 are Paul Tol's "muted" scheme (indigo,
// cyan, teal, green, olive, sand, rose, wine, purple), also safe for colour
// blindness, for plots of more sets. From 19 on the palette repeats the
// colours 2..18 in a darker and then a lighter shade, then darker and lighter
// again, up to 127: past twenty colours no reader can keep sets apart by hue
// alone, so many-set plots should also differ by marker shape. Indices
// outside 0..127 wrap around into 2..127.
#pragma once

#include <array>
#include <cstdint>

namespace subsurf::drawing {

struct Rgb {
  double r, g, b;  // 0..1
};

inline constexpr int kPaletteSize = 128;

Rgb paletteColour(int index);
// As "#rrggbb".
std::array<char, 8> paletteHex(int index);
// A colour from 0..255 components.
inline Rgb rgb255(int r, int g, int b) { return {r / 255.0, g / 255.0, b / 255.0}; }

}  // namespace subsurf::drawing
