#include "host/drawing/sample_tray.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <cstring>
#include <memory>

#include <fmt/format.h>

namespace subsurf::drawing {
namespace {

// ---------------------------------------------------------------------------
// Randomness that is the same on every platform: the standard library's
// distributions are allowed to differ between implementations, so a sample
// photograph would not be reproducible with them.

struct Random {
  std::uint64_t state;
  explicit Random(std::uint64_t seed) : state(seed * 0x9E3779B97F4A7C15ull + 0x632BE59BD9B4E019ull) {}
  std::uint64_t next() {  // splitmix64
    std::uint64_t z = (state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
  double uniform(double a = 0.0, double b = 1.0) { return a + (b - a) * ((next() >> 11) * 0x1.0p-53); }
  int between(int a, int b) { return a + static_cast<int>(next() % static_cast<std::uint64_t>(b - a + 1)); }
  bool chance(double p) { return uniform() < p; }
};

inline std::uint32_t hash2(int x, int y, std::uint32_t seed) {
  std::uint32_t h = static_cast<std::uint32_t>(x) * 0x8DA6B343u ^ static_cast<std::uint32_t>(y) * 0xD8163841u ^
                    seed * 0xCB1AB31Fu;
  h ^= h >> 15;
  h *= 0x2C1B3C6Du;
  h ^= h >> 12;
  h *= 0x297A2D39u;
  h ^= h >> 15;
  return h;
}

inline double lattice(int x, int y, std::uint32_t seed) { return (hash2(x, y, seed) >> 8) * (1.0 / 16777216.0); }

// Smooth value noise in [0, 1).
double noise(double x, double y, std::uint32_t seed) {
  const double fx = std::floor(x), fy = std::floor(y);
  const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
  double tx = x - fx, ty = y - fy;
  tx = tx * tx * (3 - 2 * tx);
  ty = ty * ty * (3 - 2 * ty);
  const double a = lattice(ix, iy, seed), b = lattice(ix + 1, iy, seed);
  const double c = lattice(ix, iy + 1, seed), d = lattice(ix + 1, iy + 1, seed);
  return (a + (b - a) * tx) + ((c + (d - c) * tx) - (a + (b - a) * tx)) * ty;
}

// Fractal noise: octaves of value noise, each twice as fine and half as strong.
double fbm(double x, double y, std::uint32_t seed, int octaves) {
  double sum = 0, amplitude = 0.5, norm = 0;
  for (int i = 0; i < octaves; ++i) {
    sum += amplitude * noise(x, y, seed + 101u * i);
    norm += amplitude;
    x *= 2.03;
    y *= 2.03;
    amplitude *= 0.5;
  }
  return sum / norm;
}

struct Rgb {
  double r, g, b;
};

inline Rgb mix(const Rgb& a, const Rgb& b, double t) {
  return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}
inline Rgb scale(const Rgb& c, double k) { return {c.r * k, c.g * k, c.b * k}; }
inline std::uint32_t pack(const Rgb& c) {
  auto clamp8 = [](double v) { return static_cast<std::uint32_t>(std::clamp(v, 0.0, 255.0)); };
  return (clamp8(c.r) << 16) | (clamp8(c.g) << 8) | clamp8(c.b);
}
inline double smoothstep(double a, double b, double x) {
  const double t = std::clamp((x - a) / (b - a), 0.0, 1.0);
  return t * t * (3 - 2 * t);
}

// ---------------------------------------------------------------------------
// The rocks.

struct Lithology {
  const char* name;
  Rgb colour;
  double grain;     // strength of fine grain
  double laminae;   // strength of bedding laminae
  double mottling;  // strength of coarse colour patches
};

// Ordered by grain size within each family, so that a bed's neighbours are
// usually its neighbours here: sands grade into silts and shales, limestones
// into dolomites.
constexpr Lithology kLithologies[] = {
    {"sandstone", {196, 174, 136}, 0.20, 0.08, 0.08},
    {"fine sandstone", {178, 162, 130}, 0.14, 0.12, 0.07},
    {"siltstone", {140, 132, 118}, 0.08, 0.16, 0.06},
    {"shale", {96, 94, 90}, 0.04, 0.20, 0.04},
    {"limestone", {194, 192, 182}, 0.07, 0.05, 0.14},
    {"dolomite", {176, 158, 134}, 0.10, 0.05, 0.12},
    {"coal", {40, 38, 36}, 0.05, 0.10, 0.02},
};
constexpr int kSiliciclastics = 4;  // the first four
constexpr int kCarbonates = 2;      // the next two
constexpr int kCoal = 6;

// A stretch of one rock type along a row, with its bedding.
struct Segment {
  double start = 0;  // pixels along the row from the channel's left end
  const Lithology* rock = nullptr;
  Rgb tint{1, 1, 1};
  double dipShift = 0;  // how far a bedding plane leans across the core, in core radii
  double period = 6;    // lamina spacing in pixels
  std::uint32_t seed = 0;
};

// A piece of core between two breaks.
struct Piece {
  double x0 = 0, x1 = 0;  // pixels along the row
  double offsetY = 0;     // the piece sits a little off the channel's centre line
  double roughLeft = 0, roughRight = 0;  // how broken the ends are
  std::uint32_t seed = 0;
};

struct Rubble {
  double x0 = 0, x1 = 0;
};

struct RowPlan {
  double top = 0, base = 0;
  int channelTop = 0, channelBottom = 0;
  double centreY = 0;
  std::vector<Segment> segments;
  std::vector<Piece> pieces;
  std::vector<Rubble> rubble;
  std::vector<double> fractures;  // positions along the row
};

struct Layout {
  int width = 0, height = 0;
  double u = 1;  // one "unit": a pixel of the 2400-wide reference picture
  int trayLeft = 0, trayTop = 0, trayRight = 0, trayBottom = 0;
  int frame = 0;
  int headerTop = 0, headerBottom = 0;
  int channelLeft = 0, channelRight = 0;
  double coreDiameter = 0;
  std::vector<RowPlan> rows;
  TrayLook look;
};

void planRow(Layout& L, RowPlan& row, Random& rnd, std::uint32_t seed) {
  const double length = L.channelRight - L.channelLeft;
  const double metre = length;  // each channel holds one row length of core

  // Lithology: beds from a few centimetres to most of a metre thick, each
  // usually close in grain size to the one before.
  const bool carbonate = rnd.chance(0.3);
  int rock = carbonate ? kSiliciclastics + rnd.between(0, kCarbonates - 1) : rnd.between(0, kSiliciclastics - 1);
  for (double x = 0; x < length;) {
    Segment s;
    s.start = x;
    const bool coal = rnd.chance(0.03);
    s.rock = &kLithologies[coal ? kCoal : rock];
    const double shade = rnd.uniform(0.93, 1.07);
    s.tint = {shade * rnd.uniform(0.98, 1.02), shade, shade * rnd.uniform(0.98, 1.02)};
    // Most beds lie flat, crossing the core square; some dip.
    s.dipShift = rnd.chance(0.75) ? rnd.uniform(-0.15, 0.15) : rnd.uniform(-0.7, 0.7);
    s.period = rnd.uniform(4.0, 16.0) * L.u;
    s.seed = seed + static_cast<std::uint32_t>(row.segments.size()) * 7919u;
    row.segments.push_back(s);
    x += (coal ? rnd.uniform(0.01, 0.08) : rnd.uniform(0.06, 0.7)) * metre;  // coal seams are thin
    if (carbonate) {
      rock = kSiliciclastics + rnd.between(0, kCarbonates - 1);
    } else {
      rock = std::clamp(rock + rnd.between(-1, 1), 0, kSiliciclastics - 1);
    }
  }

  // Missing core at the end of some rows.
  double usable = length;
  if (rnd.chance(0.4)) usable -= rnd.uniform(0.03, 0.15) * metre;

  // Pieces with breaks between them; a rubble zone in some rows.
  double x = rnd.uniform(1.0, 4.0) * L.u;
  Rubble zone{-1, -1};
  if (rnd.chance(0.45)) {
    zone.x0 = rnd.uniform(0.15, 0.75) * usable;
    zone.x1 = zone.x0 + rnd.uniform(0.04, 0.12) * metre;
    row.rubble.push_back(zone);
  }
  while (x < usable - 4 * L.u) {
    if (zone.x0 >= 0 && x >= zone.x0 - 2 && x < zone.x1) {
      x = zone.x1 + rnd.uniform(2, 6) * L.u;
      continue;
    }
    Piece p;
    p.x0 = x;
    double len = rnd.uniform(0.04, 0.32) * metre;
    if (rnd.chance(0.15)) len = rnd.uniform(0.01, 0.04) * metre;  // short chips
    p.x1 = std::min(x + len, usable);
    if (zone.x0 >= 0 && p.x0 < zone.x0 && p.x1 > zone.x0) p.x1 = zone.x0 - rnd.uniform(2, 5) * L.u;
    if (p.x1 - p.x0 < 3 * L.u) {
      x = p.x1 + 3 * L.u;
      continue;
    }
    p.offsetY = rnd.uniform(-0.025, 0.025) * L.coreDiameter;
    p.roughLeft = rnd.chance(0.7) ? rnd.uniform(0.05, 0.3) : 0.02;
    p.roughRight = rnd.chance(0.7) ? rnd.uniform(0.05, 0.3) : 0.02;
    p.seed = seed + 31u * static_cast<std::uint32_t>(row.pieces.size()) + 17u;
    row.pieces.push_back(p);
    double gap = rnd.uniform(1.0, 7.0) * L.u;
    if (rnd.chance(0.08)) gap = rnd.uniform(15.0, 45.0) * L.u;  // a lost piece
    x = p.x1 + gap;
  }
  // Healed or open fractures across some pieces.
  for (const Piece& p : row.pieces) {
    if (p.x1 - p.x0 > 60 * L.u && rnd.chance(0.5)) row.fractures.push_back(rnd.uniform(p.x0 + 15 * L.u, p.x1 - 15 * L.u));
  }
}

Layout planTray(const SampleTraySpec& spec, Random& rnd) {
  Layout L;
  L.width = spec.width;
  L.height = spec.height;
  L.u = std::min(spec.width / 2400.0, spec.height / 1600.0);
  // The tray does not sit perfectly centred under the camera.
  const double shiftX = rnd.uniform(-0.01, 0.01) * spec.width;
  const double shiftY = rnd.uniform(-0.01, 0.01) * spec.height;
  L.trayLeft = static_cast<int>(0.04 * spec.width + shiftX);
  L.trayRight = static_cast<int>((spec.look.sideObjects ? 0.76 : 0.96) * spec.width + shiftX);
  L.look = spec.look;
  L.trayTop = static_cast<int>(0.045 * spec.height + shiftY);
  L.trayBottom = static_cast<int>(0.955 * spec.height + shiftY);
  L.frame = std::max(2, static_cast<int>(0.016 * spec.width));
  const int inner = L.trayBottom - L.trayTop - 2 * L.frame;
  L.headerTop = L.trayTop + L.frame;
  L.headerBottom = L.headerTop + static_cast<int>(0.15 * inner);
  L.channelLeft = L.trayLeft + L.frame;
  L.channelRight = L.trayRight - L.frame;

  const int n = std::max(1, spec.rows);
  const double wall = std::max(2.0, 0.018 * spec.height);
  const double area = (L.trayBottom - L.frame) - L.headerBottom;
  const double channel = (area - (n - 1) * wall) / n;
  L.coreDiameter = 0.8 * channel;
  for (int r = 0; r < n; ++r) {
    RowPlan row;
    row.top = spec.topDepth + r * spec.rowLength;
    row.base = row.top + spec.rowLength;
    row.channelTop = static_cast<int>(std::lround(L.headerBottom + r * (channel + wall)));
    row.channelBottom = static_cast<int>(std::lround(L.headerBottom + r * (channel + wall) + channel));
    row.centreY = (row.channelTop + row.channelBottom) / 2.0 + 0.02 * channel;
    planRow(L, row, rnd, static_cast<std::uint32_t>(spec.seed * 1000003u + r * 7127u));
    L.rows.push_back(std::move(row));
  }
  if (spec.look.emptyRowChance > 0) {
    // Drawn from a generator of its own, so the rows' contents stay those of
    // the same tray with every compartment filled.
    Random choice(spec.look.seed * 31 + spec.seed);
    for (RowPlan& row : L.rows) {
      if (!choice.chance(spec.look.emptyRowChance)) continue;
      row.pieces.clear();
      row.rubble.clear();
      row.fractures.clear();
    }
  }
  return L;
}

// ---------------------------------------------------------------------------
// Pixels.

Rgb woodColour(double x, double y, double u, std::uint32_t seed) {
  // Boards run along x: long streaks of grain with knots of darker colour.
  const double streak = fbm(x / (260 * u), y / (5 * u), seed, 3);
  const double rings = 0.5 + 0.5 * std::sin(streak * 28.0);
  const Rgb light{182, 136, 88}, dark{128, 86, 50};
  Rgb c = mix(light, dark, 0.55 * rings + 0.25 * fbm(x / (40 * u), y / (40 * u), seed + 5, 2));
  return c;
}

// The tray's own surface: frame, walls and channel floors.
Rgb trayColour(const Layout& L, double x, double y, double u, std::uint32_t seed) {
  switch (L.look.material) {
    case TrayMaterial::Wood:
      break;
    case TrayMaterial::Plastic: {
      const Rgb c{L.look.colour[0], L.look.colour[1], L.look.colour[2]};
      return scale(c, 0.95 + 0.1 * fbm(x / (80 * u), y / (80 * u), seed, 2));
    }
    case TrayMaterial::Cardboard: {
      const Rgb c{196, 170, 128};
      const double fibre = lattice(static_cast<int>(x / (1.5 * u)), static_cast<int>(y / (1.5 * u)), seed + 3);
      return scale(c, 0.9 + 0.12 * fbm(x / (50 * u), y / (50 * u), seed, 2) + 0.05 * fibre);
    }
  }
  return woodColour(x, y, u, seed);
}

Rgb backgroundColour(double x, double y, double u, std::uint32_t seed) {
  // Grey rubber matting on the core-shed table.
  const double n = fbm(x / (30 * u), y / (30 * u), seed, 2);
  const double speck = lattice(static_cast<int>(x / (2 * u)), static_cast<int>(y / (2 * u)), seed + 9);
  return scale(Rgb{78, 80, 84}, 0.85 + 0.2 * n + 0.06 * speck);
}

const Segment& segmentAt(const RowPlan& row, double x) {
  std::size_t i = 0;
  while (i + 1 < row.segments.size() && row.segments[i + 1].start <= x) ++i;
  return row.segments[i];
}

Rgb rockColour(const RowPlan& row, const Layout& L, double along, double t, double x, double y) {
  // Bedding planes cross the core at an angle, so on its side they show as
  // lines leaning by dipShift radii from one edge to the other; contacts
  // between beds lean the same way.
  const Segment& seg = segmentAt(row, along - segmentAt(row, along).dipShift * t * L.coreDiameter * 0.5);
  const double bend = seg.dipShift * t * L.coreDiameter * 0.5;
  const double xb = along - bend + 3 * L.u * (fbm(x / (60 * L.u), y / (60 * L.u), seg.seed + 3, 2) - 0.5);
  // Laminae of uneven thickness: the phase wanders, and only the troughs of
  // the wave show, as thin dark partings.
  const double phase = xb / seg.period + 1.5 * fbm(xb / (7 * seg.period), 0.25, seg.seed + 13, 2);
  const double wave = 0.5 + 0.5 * std::sin(2 * std::numbers::pi * phase);
  const double lam = 0.35 - std::pow(wave, 5.0);
  const double lamStrength = seg.rock->laminae * (0.3 + 0.7 * fbm(xb / (60 * L.u), 0.5, seg.seed + 11, 2));
  const double mott = fbm(x / (25 * L.u), y / (25 * L.u), seg.seed + 21, 3) - 0.5;
  const double grain = lattice(static_cast<int>(x), static_cast<int>(y), seg.seed + 31) - 0.5;
  const double k = 1.0 + lamStrength * lam + seg.rock->mottling * 2 * mott + seg.rock->grain * grain;
  const Rgb base = seg.rock->colour;
  return {base.r * seg.tint.r * k, base.g * seg.tint.g * k, base.b * seg.tint.b * k};
}

// Where a piece's broken end lies at height t across the core (in pixels along the row).
double pieceEnd(const Piece& p, bool right, double t, double diameter) {
  const double rough = right ? p.roughRight : p.roughLeft;
  const double jag = fbm(t * 3.0 + (right ? 7.1 : 0.0), 0.37, p.seed + (right ? 101u : 55u), 3) - 0.5;
  // Ends are rounded a little by the saw and by handling.
  const double round = 0.04 * diameter * (1 - std::sqrt(std::max(0.0, 1 - t * t)));
  const double offset = rough * diameter * jag + round;
  return right ? p.x1 - offset : p.x0 + offset;
}

void paintPixels(std::uint32_t* data, int stride, const Layout& L, std::uint32_t seed) {
  const double u = L.u;
  const double radius = L.coreDiameter / 2;
  for (int y = 0; y < L.height; ++y) {
    std::uint32_t* out = data + static_cast<std::size_t>(y) * stride;
    const RowPlan* row = nullptr;
    for (const RowPlan& r : L.rows)
      if (y >= r.channelTop && y < r.channelBottom) row = &r;
    for (int x = 0; x < L.width; ++x) {
      const bool inTray = x >= L.trayLeft && x < L.trayRight && y >= L.trayTop && y < L.trayBottom;
      if (!inTray) {
        // The tray's shadow falls to the bottom-right.
        Rgb c = backgroundColour(x, y, u, seed);
        const double dx = std::max(0.0, std::max(L.trayLeft + 10 * u - x, x - (L.trayRight + 10 * u)));
        const double dy = std::max(0.0, std::max(L.trayTop + 10 * u - y, y - (L.trayBottom + 10 * u)));
        const double d = std::sqrt(dx * dx + dy * dy);
        c = scale(c, 1.0 - 0.45 * (1 - smoothstep(0, 22 * u, d)));
        out[x] = pack(c);
        continue;
      }
      const bool inChannel = row != nullptr && x >= L.channelLeft && x < L.channelRight;
      if (!inChannel) {
        // Frame, header board and dividing walls: the tray's top surface.
        Rgb c = trayColour(L, x, y, u, seed + 77);
        if (y >= L.headerTop && y < L.headerBottom && x >= L.channelLeft && x < L.channelRight) {
          c = scale(c, 0.95);
        }
        out[x] = pack(c);
        continue;
      }
      // Channel floor, darker and shaded by the wall above it.
      const double floorShade = 0.55 + 0.3 * smoothstep(0, 0.4 * (row->channelBottom - row->channelTop),
                                                           y - row->channelTop);
      Rgb c = scale(trayColour(L, x, y * 0.5, u, seed + 91), floorShade);
      const double along = x - L.channelLeft;
      // The core's own shadow on the floor below and beside it.
      for (const Piece& p : row->pieces) {
        if (along < p.x0 - 6 * u || along > p.x1 + 10 * u) continue;
        const double below = y - (row->centreY + p.offsetY + 0.85 * radius);
        const double beside = std::max(p.x0 - along, along - p.x1);
        if (below > -radius && below < 0.35 * radius) {
          c = scale(c, 0.55 + 0.45 * std::max(smoothstep(0, 0.35 * radius, below), smoothstep(0, 9 * u, beside)));
        }
        break;
      }
      for (const Piece& p : row->pieces) {
        if (along < p.x0 - 0.5 * radius || along > p.x1 + 0.5 * radius) continue;
        const double t = (y - (row->centreY + p.offsetY)) / radius;
        if (std::fabs(t) >= 1.0) continue;
        if (along < pieceEnd(p, false, t, L.coreDiameter) || along > pieceEnd(p, true, t, L.coreDiameter)) continue;
        // A cylinder lit from above: bright along its crest, dark at its sides.
        const double n = std::sqrt(1 - t * t);
        const double shade = 0.42 + 0.58 * std::pow(n, 0.7) - 0.1 * t +
                             0.07 * std::exp(-((t + 0.3) / 0.18) * ((t + 0.3) / 0.18));
        c = scale(rockColour(*row, L, along, t, x, y), shade);
        break;
      }
      out[x] = pack(c);
    }
  }
}

// Lighting of the whole picture and a little sensor noise, as a camera gives.
// The lamps' light at (x, y): falling off from the centre of the picture,
// a little brighter to the right.
double lampLight(double x, double y, int width, int height) {
  const double cx = width / 2.0, cy = height / 2.0;
  const double d2 = ((x - cx) * (x - cx) + (y - cy) * (y - cy)) / (cx * cx + cy * cy);
  return std::max(0.3, 1.0 - 0.22 * d2) * (1.0 + 0.05 * (x / width - 0.5));
}

void finishPixels(std::uint32_t* data, int stride, const Layout& L, std::uint32_t seed) {
  for (int y = 0; y < L.height; ++y) {
    std::uint32_t* row = data + static_cast<std::size_t>(y) * stride;
    for (int x = 0; x < L.width; ++x) {
      const double light = lampLight(x, y, L.width, L.height);
      const std::uint32_t h = hash2(x, y, seed + 4242u);
      const double n0 = ((h & 0xff) - 127.5) / 127.5 * 3.0;
      const double n1 = (((h >> 8) & 0xff) - 127.5) / 127.5 * 3.0;
      const double n2 = (((h >> 16) & 0xff) - 127.5) / 127.5 * 3.0;
      const std::uint32_t v = row[x];
      // Slightly warm lamps.
      const Rgb c{((v >> 16) & 0xff) * light * 1.02 + n0, ((v >> 8) & 0xff) * light + n1,
                  (v & 0xff) * light * 0.96 + n2};
      row[x] = pack(c);
    }
  }
}

// ---------------------------------------------------------------------------
// Things drawn with cairo: rubble, fractures, walls' edges, tape, labels.

void drawRubble(cairo_t* cr, const Layout& L, const RowPlan& row, Random& rnd) {
  const double radius = L.coreDiameter / 2;
  for (const Rubble& z : row.rubble) {
    const Segment& seg = segmentAt(row, (z.x0 + z.x1) / 2);
    const int count = static_cast<int>((z.x1 - z.x0) / (6 * L.u)) + 8;
    for (int i = 0; i < count; ++i) {
      const double r = rnd.uniform(0.08, 0.3) * radius;
      const double x = L.channelLeft + rnd.uniform(z.x0 + r, z.x1 - r);
      const double y = row.centreY + rnd.uniform(-0.7, 0.7) * radius;
      const double k = rnd.uniform(0.75, 1.1);
      const Rgb c = scale(seg.rock->colour, k / 255.0);
      // An irregular lump: a polygon with jittered corners.
      cairo_new_path(cr);
      const int corners = rnd.between(5, 8);
      const double turn = rnd.uniform(0, 2 * std::numbers::pi);
      for (int k2 = 0; k2 < corners; ++k2) {
        const double a = turn + 2 * std::numbers::pi * k2 / corners;
        const double rr = r * rnd.uniform(0.65, 1.15);
        cairo_line_to(cr, x + rr * std::cos(a), y + rr * 0.8 * std::sin(a));
      }
      cairo_close_path(cr);
      cairo_pattern_t* shading = cairo_pattern_create_radial(x - 0.3 * r, y - 0.3 * r, 0.1 * r, x, y, 1.2 * r);
      cairo_pattern_add_color_stop_rgb(shading, 0, std::min(1.0, c.r * 1.2), std::min(1.0, c.g * 1.2),
                                       std::min(1.0, c.b * 1.2));
      cairo_pattern_add_color_stop_rgb(shading, 1, c.r * 0.55, c.g * 0.55, c.b * 0.55);
      cairo_set_source(cr, shading);
      cairo_fill(cr);
      cairo_pattern_destroy(shading);
    }
  }
}

void drawFractures(cairo_t* cr, const Layout& L, const RowPlan& row, Random& rnd) {
  const double radius = L.coreDiameter / 2;
  for (double f : row.fractures) {
    const Piece* piece = nullptr;
    for (const Piece& p : row.pieces)
      if (f > p.x0 && f < p.x1) piece = &p;
    if (piece == nullptr) continue;
    const double lean = rnd.uniform(-0.6, 0.6) * radius;
    const double cy = row.centreY + piece->offsetY;
    cairo_new_path(cr);
    const int steps = 14;
    for (int i = 0; i <= steps; ++i) {
      const double t = -0.97 + 1.94 * i / steps;
      const double x = L.channelLeft + f + lean * t + rnd.uniform(-1.5, 1.5) * L.u;
      cairo_line_to(cr, x, cy + t * radius);
    }
    cairo_set_source_rgba(cr, 0.12, 0.1, 0.08, 0.75);
    cairo_set_line_width(cr, rnd.uniform(0.8, 2.0) * L.u);
    cairo_stroke(cr);
  }
}

void drawWallEdges(cairo_t* cr, const Layout& L) {
  // A thin dark line where each channel meets the wall: the walls stand up.
  cairo_set_source_rgba(cr, 0.1, 0.06, 0.03, 0.55);
  cairo_set_line_width(cr, 1.6 * L.u);
  for (const RowPlan& r : L.rows) {
    cairo_rectangle(cr, L.channelLeft, r.channelTop, L.channelRight - L.channelLeft, r.channelBottom - r.channelTop);
    cairo_stroke(cr);
  }
  cairo_set_source_rgba(cr, 0.1, 0.06, 0.03, 0.7);
  cairo_rectangle(cr, L.trayLeft + 0.5, L.trayTop + 0.5, L.trayRight - L.trayLeft - 1, L.trayBottom - L.trayTop - 1);
  cairo_stroke(cr);
}

void drawTape(cairo_t* cr, const Layout& L, double rowLength) {
  // A measuring tape along the header board, as long as a channel, so the
  // centimetres line up with the core below.
  const double h = 0.32 * (L.headerBottom - L.headerTop);
  const double y0 = L.headerBottom - h - 0.12 * (L.headerBottom - L.headerTop);
  const double x0 = L.channelLeft, len = L.channelRight - L.channelLeft;
  cairo_set_source_rgb(cr, 0.93, 0.84, 0.22);
  cairo_rectangle(cr, x0, y0, len, h);
  cairo_fill(cr);
  cairo_set_source_rgb(cr, 0.1, 0.1, 0.1);
  const int centimetres = static_cast<int>(std::lround(rowLength * 100));
  cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
  cairo_set_font_size(cr, 0.42 * h);
  for (int cm = 0; cm <= centimetres; ++cm) {
    const double x = x0 + len * cm / centimetres;
    const double tick = cm % 10 == 0 ? 0.5 * h : (cm % 5 == 0 ? 0.35 * h : 0.2 * h);
    cairo_set_line_width(cr, std::max(1.0, (cm % 10 == 0 ? 1.6 : 0.9) * L.u));
    cairo_move_to(cr, x, y0);
    cairo_line_to(cr, x, y0 + tick);
    cairo_stroke(cr);
    if (cm % 10 == 0 && cm > 0 && cm < centimetres) {
      const std::string text = std::to_string(cm);
      cairo_text_extents_t e;
      cairo_text_extents(cr, text.c_str(), &e);
      cairo_move_to(cr, x - e.x_advance / 2, y0 + 0.93 * h);
      cairo_show_text(cr, text.c_str());
    }
  }
}

void drawLabelCard(cairo_t* cr, const Layout& L, const SampleTraySpec& spec, double top, double base,
                   Random& rnd) {
  const double hb = L.headerBottom - L.headerTop;
  const double w = 0.3 * (L.channelRight - L.channelLeft);
  const double h = 0.5 * hb;
  const double x = L.channelLeft + 0.02 * w;
  const double y = L.headerTop + 0.05 * hb;
  cairo_save(cr);
  cairo_translate(cr, x + w / 2, y + h / 2);
  cairo_rotate(cr, rnd.uniform(-1.2, 1.2) * std::numbers::pi / 180.0);
  cairo_set_source_rgba(cr, 0, 0, 0, 0.35);  // shadow
  cairo_rectangle(cr, -w / 2 + 4 * L.u, -h / 2 + 4 * L.u, w, h);
  cairo_fill(cr);
  cairo_set_source_rgb(cr, 0.96, 0.95, 0.9);
  cairo_rectangle(cr, -w / 2, -h / 2, w, h);
  cairo_fill(cr);
  cairo_set_source_rgb(cr, 0.08, 0.08, 0.2);
  cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
  cairo_set_font_size(cr, 0.3 * h);
  cairo_move_to(cr, -w / 2 + 0.04 * w, -h / 2 + 0.37 * h);
  cairo_show_text(cr, spec.well.c_str());
  cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(cr, 0.22 * h);
  const std::string line = fmt::format("BOX {}   {:.2f} - {:.2f} m", spec.trayNumber, top, base);
  cairo_move_to(cr, -w / 2 + 0.04 * w, -h / 2 + 0.8 * h);
  cairo_show_text(cr, line.c_str());
  cairo_restore(cr);

  // "TOP" with an arrow to the right of the card: core is laid from here.
  cairo_set_source_rgb(cr, 0.95, 0.95, 0.95);
  cairo_set_font_size(cr, 0.22 * hb);
  cairo_move_to(cr, x + w + 0.03 * w, y + 0.45 * h);
  cairo_show_text(cr, "TOP \u2192");
}

void drawDepthTags(cairo_t* cr, const Layout& L) {
  // A small white tag at the start of each row with its top depth, written
  // on the wall above the row.
  cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
  for (std::size_t i = 0; i < L.rows.size(); ++i) {
    const RowPlan& r = L.rows[i];
    const double wallTop = i == 0 ? L.headerBottom - 0.12 * (L.headerBottom - L.headerTop) : L.rows[i - 1].channelBottom;
    const double wallH = r.channelTop - wallTop;
    if (wallH < 6) continue;
    const std::string text = fmt::format("{:.2f}", r.top);
    const double size = std::min(wallH * 0.8, 22 * L.u);
    cairo_set_font_size(cr, size);
    cairo_text_extents_t e;
    cairo_text_extents(cr, text.c_str(), &e);
    const double x = L.trayLeft + 0.2 * L.frame;
    const double y = r.channelTop + 2 * L.u;
    cairo_set_source_rgb(cr, 0.97, 0.97, 0.95);
    cairo_rectangle(cr, x, y, e.x_advance + 6 * L.u, size * 1.25);
    cairo_fill(cr);
    cairo_set_source_rgb(cr, 0.05, 0.05, 0.05);
    cairo_move_to(cr, x + 3 * L.u, y + size);
    cairo_show_text(cr, text.c_str());
  }
}

// A colour chart, a ruler and a whiteboard with the hole's name, laid on the
// table to the right of the tray, as photographers of core sheds do.
void drawSideObjects(cairo_t* cr, const Layout& L, const SampleTraySpec& spec, Random& rnd) {
  const double left = L.trayRight + 0.03 * L.width;
  const double width = L.width - left - 0.02 * L.width;
  if (width < 8) return;
  // The chart: four columns of six patches.
  const double patch = width / 4.4;
  const double chartTop = L.trayTop + rnd.uniform(0.0, 0.1) * L.height;
  cairo_set_source_rgb(cr, 0.08, 0.08, 0.08);
  cairo_rectangle(cr, left, chartTop, width, patch * 6.4);
  cairo_fill(cr);
  for (int i = 0; i < 24; ++i) {
    const double g = (i % 6) / 5.0;
    const double hue = i / 24.0;
    cairo_set_source_rgb(cr, i >= 18 ? g : 0.5 + 0.45 * std::sin(6.28 * hue),
                         i >= 18 ? g : 0.5 + 0.45 * std::sin(6.28 * hue + 2.1),
                         i >= 18 ? g : 0.5 + 0.45 * std::sin(6.28 * hue + 4.2));
    cairo_rectangle(cr, left + 0.2 * patch + (i / 6) * patch * 1.0, chartTop + 0.2 * patch + (i % 6) * patch,
                    0.85 * patch, 0.85 * patch);
    cairo_fill(cr);
  }
  // A ruler along the table, with centimetre ticks.
  const double rulerTop = chartTop + patch * 7;
  const double rulerHeight = std::min(0.35 * L.height, L.trayBottom - rulerTop);
  if (rulerHeight > 20) {
    cairo_set_source_rgb(cr, 0.92, 0.92, 0.88);
    cairo_rectangle(cr, left, rulerTop, 0.18 * width, rulerHeight);
    cairo_fill(cr);
    cairo_set_source_rgb(cr, 0.1, 0.1, 0.1);
    cairo_set_line_width(cr, std::max(1.0, L.u));
    for (double y = rulerTop; y < rulerTop + rulerHeight; y += 8 * L.u) {
      cairo_move_to(cr, left, y);
      cairo_line_to(cr, left + 0.08 * width, y);
      cairo_stroke(cr);
    }
  }
  // The board with the hole's name.
  const double boardLeft = left + 0.28 * width;
  if (rulerHeight > 20) {
    cairo_set_source_rgb(cr, 0.97, 0.97, 0.97);
    cairo_rectangle(cr, boardLeft, rulerTop, 0.72 * width, 0.5 * rulerHeight);
    cairo_fill(cr);
    cairo_set_source_rgb(cr, 0.1, 0.1, 0.5);
    cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
    cairo_set_font_size(cr, 0.12 * width);
    cairo_move_to(cr, boardLeft + 0.05 * width, rulerTop + 0.2 * rulerHeight);
    cairo_show_text(cr, spec.well.c_str());
    cairo_move_to(cr, boardLeft + 0.05 * width, rulerTop + 0.4 * rulerHeight);
    cairo_show_text(cr, fmt::format("BOX {}", spec.trayNumber).c_str());
  }
}

}  // namespace

void tableColourAt(const SampleTraySpec& spec, double x, double y, std::uint8_t rgb[3]) {
  // The unit and seed as renderSampleTray takes them.
  const double u = std::min(std::max(64, spec.width) / 2400.0, std::max(64, spec.height) / 1600.0);
  const Rgb table = backgroundColour(x, y, u, static_cast<std::uint32_t>(spec.seed * 2654435761u));
  const double light = lampLight(x, y, std::max(64, spec.width), std::max(64, spec.height));
  const std::uint32_t c = pack(Rgb{table.r * light * 1.02, table.g * light, table.b * light * 0.96});
  rgb[0] = static_cast<std::uint8_t>(c >> 16);
  rgb[1] = static_cast<std::uint8_t>(c >> 8);
  rgb[2] = static_cast<std::uint8_t>(c);
}

std::string sampleTrayFileName(double top, double base) {
  auto part = [](double depth) {
    const long long tenths = std::llround(depth * 10.0);
    return fmt::format("{:04d}_{:d}", tenths / 10, tenths % 10);
  };
  return "TRAY_" + part(top) + "-" + part(base) + ".jpg";
}

SampleTray renderSampleTray(const SampleTraySpec& spec) {
  SampleTray tray;
  const int w = std::max(64, spec.width);
  const int h = std::max(64, spec.height);
  SampleTraySpec s = spec;
  s.width = w;
  s.height = h;
  Random rnd(spec.seed);
  const Layout L = planTray(s, rnd);
  const auto seed = static_cast<std::uint32_t>(spec.seed * 2654435761u);

  std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h), &cairo_surface_destroy);
  auto* data = reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(surface.get()));
  const int stride = cairo_image_surface_get_stride(surface.get()) / 4;
  paintPixels(data, stride, L, seed);
  cairo_surface_mark_dirty(surface.get());

  {
    std::unique_ptr<cairo_t, decltype(&cairo_destroy)> cr(cairo_create(surface.get()), &cairo_destroy);
    for (const RowPlan& row : L.rows) {
      drawRubble(cr.get(), L, row, rnd);
      drawFractures(cr.get(), L, row, rnd);
    }
    drawWallEdges(cr.get(), L);
    tray.top = spec.topDepth;
    tray.base = spec.topDepth + spec.rowLength * static_cast<double>(L.rows.size());
    drawTape(cr.get(), L, spec.rowLength);
    drawLabelCard(cr.get(), L, spec, tray.top, tray.base, rnd);
    drawDepthTags(cr.get(), L);
    if (spec.look.sideObjects) {
      Random side(spec.look.seed * 17 + 5);
      drawSideObjects(cr.get(), L, s, side);
    }
  }
  cairo_surface_flush(surface.get());
  finishPixels(data, stride, L, seed);

  tray.pixels = image::Raster(w, h);
  for (int y = 0; y < h; ++y) {
    const std::uint32_t* in = data + static_cast<std::size_t>(y) * stride;
    std::uint8_t* out = tray.pixels.row(y);
    for (int x = 0; x < w; ++x, out += 3) {
      out[0] = static_cast<std::uint8_t>(in[x] >> 16);
      out[1] = static_cast<std::uint8_t>(in[x] >> 8);
      out[2] = static_cast<std::uint8_t>(in[x]);
    }
  }
  for (std::size_t i = 0; i < L.rows.size(); ++i) {
    const RowPlan& r = L.rows[i];
    SampleRow row;
    row.index = static_cast<int>(i) + 1;
    row.top = r.top;
    row.base = r.base;
    const int coreTop = static_cast<int>(std::lround(r.centreY - L.coreDiameter / 2));
    const int coreBottom = static_cast<int>(std::lround(r.centreY + L.coreDiameter / 2));
    row.box = {L.channelLeft, coreTop, L.channelRight - L.channelLeft, coreBottom - coreTop};
    row.compartment = {L.channelLeft, r.channelTop, L.channelRight - L.channelLeft, r.channelBottom - r.channelTop};
    tray.rows.push_back(row);
  }
  tray.trayBox = {L.trayLeft, L.trayTop, L.trayRight - L.trayLeft, L.trayBottom - L.trayTop};
  return tray;
}

}  // namespace subsurf::drawing
