#include "core/row_detection.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <fmt/format.h>

namespace subsurf {
namespace {

// Brightness, one float per pixel, rows top to bottom.
struct Gray {
  int w = 0, h = 0;
  std::vector<float> v;
  float at(int x, int y) const { return v[static_cast<std::size_t>(y) * w + x]; }
};

Gray grayOf(const image::RasterView& r) {
  Gray g;
  g.w = r.width;
  g.h = r.height;
  g.v.resize(static_cast<std::size_t>(g.w) * g.h);
  for (int y = 0; y < g.h; ++y) {
    const std::uint8_t* p = r.row(y);
    for (int x = 0; x < g.w; ++x, p += 3) g.v[static_cast<std::size_t>(y) * g.w + x] = 0.25f * (p[0] + 2 * p[1] + p[2]);
  }
  return g;
}

Gray transposed(const Gray& g) {
  Gray t;
  t.w = g.h;
  t.h = g.w;
  t.v.resize(g.v.size());
  for (int y = 0; y < g.h; ++y)
    for (int x = 0; x < g.w; ++x) t.v[static_cast<std::size_t>(x) * t.w + y] = g.at(x, y);
  return t;
}

std::vector<double> smoothed(const std::vector<double>& p, int radius) {
  if (radius < 1 || p.empty()) return p;
  std::vector<double> sum(p.size() + 1, 0.0), out(p.size());
  for (std::size_t i = 0; i < p.size(); ++i) sum[i + 1] = sum[i] + p[i];
  const int n = static_cast<int>(p.size());
  for (int i = 0; i < n; ++i) {
    const int a = std::max(0, i - radius), b = std::min(n, i + radius + 1);
    out[i] = (sum[b] - sum[a]) / (b - a);
  }
  return out;
}

double percentile(std::vector<double> v, double q) {
  if (v.empty()) return 0.0;
  const std::size_t k = std::min(v.size() - 1, static_cast<std::size_t>(q * (v.size() - 1)));
  std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(k), v.end());
  return v[k];
}

// The profiles of a picture along lines of slope s (the picture may be turned
// a little), over the columns [x0, x1): texture (mean |d/dx|) and straight
// edges (|mean d/dy|), indexed by the line's height at the centre column.
struct Profiles {
  std::vector<double> texture, edges;
  std::vector<double> brightening;  // mean d/dy: positive where the picture brightens downwards
};

Profiles profilesAlong(const Gray& g, double slope, int x0, int x1) {
  Profiles p;
  p.texture.assign(g.h, 0.0);
  p.edges.assign(g.h, 0.0);
  p.brightening.assign(g.h, 0.0);
  std::vector<double> signedEdges(g.h, 0.0);
  std::vector<int> count(g.h, 0);
  std::vector<double> brightness(g.h, 0.0);
  const double xc = g.w / 2.0;
  for (int x = std::max(1, x0); x < std::min(g.w - 1, x1); ++x) {
    const int shift = static_cast<int>(std::lround(slope * (x - xc)));
    for (int y = 0; y < g.h; ++y) {
      const int yy = y + shift;
      if (yy < 1 || yy >= g.h - 1) continue;
      p.texture[y] += std::fabs(g.at(x + 1, yy) - g.at(x - 1, yy));
      brightness[y] += g.at(x, yy);
      signedEdges[y] += g.at(x, yy + 1) - g.at(x, yy - 1);
      ++count[y];
    }
  }
  for (int y = 0; y < g.h; ++y) {
    if (count[y] == 0) continue;
    // Relative to the line's brightness, so that rows in the shade of uneven
    // light, or dim under ultraviolet light, count as much as bright ones.
    p.texture[y] /= brightness[y] / count[y] + 16.0;
    p.brightening[y] = signedEdges[y] / count[y];
    p.edges[y] = std::fabs(p.brightening[y]);
  }
  return p;
}

// The slope of the tray's lines: the one along which straight edges add up best.
double lineSlope(const Gray& g) {
  double best = 0.0, bestSharpness = -1.0;
  for (int k = -6; k <= 6; ++k) {
    const double slope = 0.005 * k;
    const Profiles p = profilesAlong(g, slope, g.w / 4, 3 * g.w / 4);
    double sharpness = 0.0;
    for (double e : p.edges) sharpness += e * e;
    if (sharpness > bestSharpness * 1.0001) {
      bestSharpness = sharpness;
      best = slope;
    }
  }
  return best;
}

// A run of lines rougher than the rest: a band of core.
struct Band {
  double top = 0, bottom = 0;  // [top, bottom) in lines
  double mass = 0;             // its roughness above the smooth lines', summed over its lines
  double centre() const { return 0.5 * (top + bottom); }
  double height() const { return bottom - top; }
};

std::vector<Band> roughBands(const std::vector<double>& texture, double smooth, double threshold, int shortest) {
  std::vector<Band> bands;
  const int n = static_cast<int>(texture.size());
  for (int y = 0; y < n;) {
    if (texture[y] <= threshold) {
      ++y;
      continue;
    }
    int end = y;
    while (end < n && texture[end] > threshold) ++end;
    if (end - y >= shortest) {
      Band b{double(y), double(end), 0.0};
      for (int k = y; k < end; ++k) b.mass += texture[k] - smooth;
      bands.push_back(b);
    }
    y = end;
  }
  return bands;
}

// Equally spaced compartments: place k lies at anchor + k * pitch.
struct Lattice {
  double anchor = 0, pitch = 0;
  std::vector<int> bandOfPlace;  // for places first..last: the band there, -1 when none
  int first = 0;
  double rmsDeviation = 0;  // of the bands from their places, in pitches
  double score = -1e9;
  int matched() const {
    return static_cast<int>(std::count_if(bandOfPlace.begin(), bandOfPlace.end(), [](int b) { return b >= 0; }));
  }
  double centre(int k) const { return anchor + (first + k) * pitch; }
};

// Which bands fall on the lattice (anchor, pitch), and how well.
Lattice placeBands(const std::vector<Band>& bands, const std::vector<bool>& usable, double anchor, double pitch) {
  Lattice l;
  l.anchor = anchor;
  l.pitch = pitch;
  std::vector<std::pair<int, int>> hits;  // (place, band)
  std::vector<double> devs;
  for (std::size_t m = 0; m < bands.size(); ++m) {
    if (!usable[m]) continue;
    const double t = (bands[m].centre() - anchor) / pitch;
    const double k = std::round(t);
    const double dev = std::fabs(t - k);
    // Core fills most of its compartment: a band less than half a pitch deep
    // is not the core of a compartment that deep (two rows with an empty
    // compartment between them would otherwise make a lattice of twice the
    // pitch, each row reaching over the empty compartment).
    if (dev > 0.2 || bands[m].height() > 0.98 * pitch || bands[m].height() < 0.45 * pitch) continue;
    const int place = static_cast<int>(k);
    auto same = std::find_if(hits.begin(), hits.end(), [&](const auto& h) { return h.first == place; });
    if (same != hits.end()) {
      const double old = std::fabs((bands[same->second].centre() - anchor) / pitch - place);
      if (old <= dev) continue;
      same->second = static_cast<int>(m);
      continue;
    }
    hits.push_back({place, static_cast<int>(m)});
  }
  if (hits.empty()) return l;
  int lo = hits.front().first, hi = lo;
  for (const auto& h : hits) lo = std::min(lo, h.first), hi = std::max(hi, h.first);
  l.first = lo;
  l.bandOfPlace.assign(static_cast<std::size_t>(hi - lo + 1), -1);
  double sumSq = 0;
  for (const auto& h : hits) {
    l.bandOfPlace[h.first - lo] = h.second;
    const double d = (bands[h.second].centre() - anchor) / pitch - h.first;
    sumSq += d * d;
  }
  l.rmsDeviation = std::sqrt(sumSq / hits.size());
  const int holes = static_cast<int>(l.bandOfPlace.size()) - static_cast<int>(hits.size());
  // The lattice that explains most of the rough bands wins; places without a
  // band and bands off their places count against it.
  double explained = 0, total = 0;
  for (std::size_t m = 0; m < bands.size(); ++m) total += usable[m] ? bands[m].mass : 0.0;
  for (const auto& h : hits) explained += bands[h.second].mass;
  const double places = static_cast<double>(l.bandOfPlace.size());
  l.score = (total > 0 ? explained / total : 0.0) * (1.0 - 0.3 * holes / places) - 0.5 * l.rmsDeviation;
  return l;
}

// The best lattice through the usable bands, with a pitch between minPitch and maxPitch.
Lattice fitLattice(const std::vector<Band>& bands, const std::vector<bool>& usable, double minPitch, double maxPitch) {
  Lattice best;
  // A tray of one row: a band alone, its compartment a little deeper than the core.
  for (std::size_t i = 0; i < bands.size(); ++i) {
    if (!usable[i] || bands[i].height() / 0.8 < minPitch) continue;
    Lattice l = placeBands(bands, usable, bands[i].centre(), bands[i].height() / 0.8);
    if (l.score > best.score) best = std::move(l);
  }
  for (std::size_t i = 0; i < bands.size(); ++i) {
    if (!usable[i]) continue;
    for (std::size_t j = i + 1; j < bands.size(); ++j) {
      if (!usable[j]) continue;
      for (int k = 1; k <= 10; ++k) {
        const double pitch = (bands[j].centre() - bands[i].centre()) / k;
        if (pitch < minPitch || pitch > maxPitch) continue;
        Lattice l = placeBands(bands, usable, bands[i].centre(), pitch);
        if (l.score > best.score) best = std::move(l);
      }
    }
  }
  if (best.bandOfPlace.size() < 2) return best;
  // A band much thinner than the others is a tape or a label that happens to
  // fall on the lattice; a lattice does not end in an empty place.
  std::vector<double> heights;
  for (int b : best.bandOfPlace)
    if (b >= 0) heights.push_back(bands[b].height());
  const double typical = percentile(heights, 0.5);
  for (int& b : best.bandOfPlace)
    if (b >= 0 && bands[b].height() < 0.65 * typical) b = -1;
  while (!best.bandOfPlace.empty() && best.bandOfPlace.front() < 0) {
    best.bandOfPlace.erase(best.bandOfPlace.begin());
    ++best.first;
  }
  while (!best.bandOfPlace.empty() && best.bandOfPlace.back() < 0) best.bandOfPlace.pop_back();
  if (best.bandOfPlace.size() < 2) return best;
  // Least squares through the bands found, so that one band does not set the lattice.
  double n = 0, sk = 0, sc = 0, skk = 0, skc = 0;
  for (std::size_t k = 0; k < best.bandOfPlace.size(); ++k) {
    const int b = best.bandOfPlace[k];
    if (b < 0) continue;
    const double kk = best.first + static_cast<double>(k), c = bands[b].centre();
    n += 1, sk += kk, sc += c, skk += kk * kk, skc += kk * c;
  }
  const double det = n * skk - sk * sk;
  if (n >= 2 && det > 0) {
    best.pitch = (n * skc - sk * sc) / det;
    best.anchor = (sc - best.pitch * sk) / n;
  }
  return best;
}

// Where sign * p is largest in [a, b); -1 when it is nowhere positive.
int strongestSigned(const std::vector<double>& p, int a, int b, double sign) {
  int best = -1;
  a = std::max(a, 0);
  b = std::min(b, static_cast<int>(p.size()));
  for (int y = a; y < b; ++y)
    if (sign * p[y] > 0 && (best < 0 || sign * p[y] > sign * p[best])) best = y;
  return best;
}

// A wall between two compartments, lit from above, is brighter than the
// shaded floors on either side: going across it the picture brightens, then
// darkens. The pair of such edges in [a, b) that changes most; false when
// there is none.
bool findWall(const std::vector<double>& brightening, int a, int b, int& upper, int& lower) {
  a = std::max(a, 0);
  b = std::min(b, static_cast<int>(brightening.size()));
  double best = 0;
  for (int i = a; i < b; ++i) {
    if (brightening[i] <= 0) continue;
    for (int j = i + 2; j < b; ++j) {
      if (brightening[j] >= 0) continue;
      const double strength = brightening[i] - brightening[j];
      if (strength > best) best = strength, upper = i, lower = j;
    }
  }
  return best > 0;
}

struct Reading {
  std::vector<DetectedRow> rows;  // in the picture read (turned for rows down)
  double confidence = 0.0;
  std::string doubt;
  bool compartmentBetween = false;  // walls of a compartment halfway between two rows found
};

// One tray (a lattice) as compartments: top and bottom of each place's channel.
void addCompartments(const Lattice& l, const std::vector<Band>& bands, const std::vector<double>& brightening,
                     std::vector<DetectedRow>& rows) {
  const int places = static_cast<int>(l.bandOfPlace.size());
  std::vector<double> tops(places, -1), bottoms(places, -1);
  // Walls between neighbouring bands: the two strongest straight edges in the gap.
  for (int k = 0; k + 1 < places; ++k) {
    const int a = l.bandOfPlace[k], b = l.bandOfPlace[k + 1];
    if (a < 0 || b < 0) continue;
    int upper = 0, lower = 0;
    if (!findWall(brightening, static_cast<int>(bands[a].bottom), static_cast<int>(bands[b].top) + 1, upper, lower))
      continue;
    bottoms[k] = upper;
    tops[k + 1] = lower;
  }
  // How far a channel reaches beyond its band of core, from the walls found.
  std::vector<double> above, below;
  for (int k = 0; k < places; ++k) {
    const int b = l.bandOfPlace[k];
    if (b < 0) continue;
    if (tops[k] >= 0) above.push_back(bands[b].top - tops[k]);
    if (bottoms[k] >= 0) below.push_back(bottoms[k] - bands[b].bottom);
  }
  const double reachAbove = above.empty() ? 0.1 * l.pitch : percentile(above, 0.5);
  const double reachBelow = below.empty() ? 0.1 * l.pitch : percentile(below, 0.5);
  std::vector<double> heights;
  for (int k = 0; k < places; ++k) {
    const int b = l.bandOfPlace[k];
    if (b < 0) continue;
    // Outer walls: the picture darkens going into the compartment.
    const double r = 0.06 * l.pitch;
    if (tops[k] < 0) {
      const double at = bands[b].top - reachAbove;
      const int y = strongestSigned(brightening, static_cast<int>(at - r), static_cast<int>(at + r) + 1, -1.0);
      tops[k] = y >= 0 ? y : at;
    }
    if (bottoms[k] < 0) {
      const double at = bands[b].bottom + reachBelow;
      const int y = strongestSigned(brightening, static_cast<int>(at - r), static_cast<int>(at + r) + 1, 1.0);
      bottoms[k] = y >= 0 ? y : at;
    }
    heights.push_back(bottoms[k] - tops[k]);
  }
  const double height = heights.empty() ? 0.8 * l.pitch : percentile(heights, 0.5);
  for (int k = 0; k < places; ++k) {
    DetectedRow row;
    if (l.bandOfPlace[k] < 0) {
      row.empty = true;
      row.top = l.centre(k) - height / 2;
      row.bottom = l.centre(k) + height / 2;
    } else {
      row.top = tops[k];
      row.bottom = bottoms[k] + 1;
    }
    rows.push_back(row);
  }
}

// Reads a picture whose rows run across it.
Reading readAcross(const Gray& g, int expected) {
  Reading r;
  if (g.w < 16 || g.h < 16) {
    r.doubt = "the photograph is too small";
    return r;
  }
  const double slope = lineSlope(g);
  const Profiles p = profilesAlong(g, slope, g.w / 4, 3 * g.w / 4);
  const std::vector<double> texture = smoothed(p.texture, std::max(1, g.h / 200));
  const std::vector<double> edges = smoothed(p.edges, g.h >= 400 ? 1 : 0);
  const double lo = percentile(texture, 0.1), hi = percentile(texture, 0.9);
  if (hi < 1.3 * lo) {
    r.doubt = "no rows of core stand out";
    return r;
  }
  const double threshold = lo + 0.3 * (hi - lo);
  const std::vector<Band> bands = roughBands(texture, lo, threshold, std::max(3, g.h / 70));
  if (bands.empty()) {
    r.doubt = "no rows of core stand out";
    return r;
  }

  std::vector<bool> usable(bands.size(), true);
  std::vector<Lattice> trays;
  Lattice first = fitLattice(bands, usable, 0.045 * g.h, 0.6 * g.h);
  if (first.bandOfPlace.empty()) {
    r.doubt = "no rows of core stand out";
    return r;
  }
  // How clearly a compartment's walls show at a lattice place: the picture
  // darkens going into it at the top and brightens going out at the bottom.
  std::vector<double> matchedHeights;
  for (int b : first.bandOfPlace)
    if (b >= 0) matchedHeights.push_back(bands[b].height());
  const double half = 0.5 * percentile(matchedHeights, 0.5) / 0.8;
  auto walls = [&](double centre, double pitch) {
    if (centre - half < 0 || centre + half > g.h) return -1.0;
    const double r = 0.1 * pitch;
    const int top = strongestSigned(p.brightening, static_cast<int>(centre - half - r), static_cast<int>(centre - half + r) + 1, -1.0);
    const int bottom = strongestSigned(p.brightening, static_cast<int>(centre + half - r), static_cast<int>(centre + half + r) + 1, 1.0);
    return (top >= 0 ? -p.brightening[top] : 0.0) + (bottom >= 0 ? p.brightening[bottom] : 0.0);
  };
  std::vector<double> evidence;
  for (int k = 0; k < static_cast<int>(first.bandOfPlace.size()); ++k)
    if (first.bandOfPlace[k] >= 0) evidence.push_back(walls(first.centre(k), first.pitch));
  const double typicalWalls = percentile(evidence, 0.5);

  // An empty place without walls is no compartment: the lattice has run on
  // over the header of a second tray, and is cut there.
  auto trimmed = [](Lattice l) {
    while (!l.bandOfPlace.empty() && l.bandOfPlace.front() < 0) l.bandOfPlace.erase(l.bandOfPlace.begin()), ++l.first;
    while (!l.bandOfPlace.empty() && l.bandOfPlace.back() < 0) l.bandOfPlace.pop_back();
    return l;
  };
  {
    Lattice piece = first;
    piece.bandOfPlace.clear();
    for (int k = 0; k < static_cast<int>(first.bandOfPlace.size()); ++k) {
      const bool compartment = first.bandOfPlace[k] >= 0 || walls(first.centre(k), first.pitch) >= 0.35 * typicalWalls;
      if (!compartment) {
        if (piece.matched() > 0) trays.push_back(trimmed(piece));
        piece.bandOfPlace.clear();
        piece.first = first.first + k + 1;
        continue;
      }
      piece.bandOfPlace.push_back(first.bandOfPlace[k]);
    }
    if (piece.matched() > 0) trays.push_back(trimmed(piece));
  }
  // Bands off the trays: a second tray beside the first, or strays (a tape, a label).
  auto onLattice = [&](const Lattice& l, const Band& b) {
    const double lo2 = l.centre(0) - 0.5 * l.pitch, hi2 = l.centre(static_cast<int>(l.bandOfPlace.size()) - 1) + 0.5 * l.pitch;
    return b.centre() >= lo2 && b.centre() <= hi2;
  };
  for (std::size_t m = 0; m < bands.size(); ++m)
    usable[m] = std::none_of(trays.begin(), trays.end(), [&](const Lattice& l) { return onLattice(l, bands[m]); });
  if (trays.size() == 1 && std::count(usable.begin(), usable.end(), true) >= 2) {
    const Lattice second = fitLattice(bands, usable, 0.8 * first.pitch, 1.25 * first.pitch);
    if (second.matched() >= 2) {
      trays.push_back(second);
      for (std::size_t m = 0; m < bands.size(); ++m)
        if (usable[m] && onLattice(second, bands[m])) usable[m] = false;
    }
  }
  // Empty compartments at the ends of a tray show only by their walls; when a
  // count is expected, places are added at the ends whose walls show best
  // until it is reached.
  auto extendOnce = [&](double least) {
    double best = least;
    Lattice* where = nullptr;
    bool before = false;
    for (Lattice& l : trays) {
      const double a = walls(l.centre(-1), l.pitch), b = walls(l.centre(static_cast<int>(l.bandOfPlace.size())), l.pitch);
      auto clear = [&](double c) {
        return std::none_of(trays.begin(), trays.end(), [&](const Lattice& o) {
          return &o != &l && c > o.centre(0) - 0.5 * o.pitch && c < o.centre(static_cast<int>(o.bandOfPlace.size()) - 1) + 0.5 * o.pitch;
        });
      };
      if (a > best && clear(l.centre(-1))) best = a, where = &l, before = true;
      if (b > best && clear(l.centre(static_cast<int>(l.bandOfPlace.size())))) best = b, where = &l, before = false;
    }
    if (!where) return false;
    if (before) where->bandOfPlace.insert(where->bandOfPlace.begin(), -1), --where->first;
    else where->bandOfPlace.push_back(-1);
    return true;
  };
  auto placeCount = [&] {
    int n = 0;
    for (const Lattice& l : trays) n += static_cast<int>(l.bandOfPlace.size());
    return n;
  };
  for (int added = 0; added < 3 && extendOnce(0.75 * typicalWalls); ++added) {
  }
  while (expected > 0 && placeCount() < expected && extendOnce(0.3 * typicalWalls)) {
  }
  int strays = 0;
  for (std::size_t m = 0; m < bands.size(); ++m)
    if (usable[m] && bands[m].height() >= 0.3 * first.pitch) ++strays;
  std::sort(trays.begin(), trays.end(), [](const Lattice& a, const Lattice& b) { return a.centre(0) < b.centre(0); });
  // Halfway between two neighbouring places lies a dividing wall, where the
  // lines a compartment's depth above and below run through core. Walls of
  // a compartment's depth there mean one lies between: the lattice has
  // taken every other compartment (an empty one between two rows of core)
  // at twice the pitch, and its compartments reach over the one between.
  double between = 0;
  for (const Lattice& l : trays)
    for (int k = 0; k + 1 < static_cast<int>(l.bandOfPlace.size()); ++k)
      between = std::max(between, walls(l.centre(k) + 0.5 * l.pitch, 0.5 * l.pitch));
  const bool compartmentBetween = typicalWalls > 0 && between >= typicalWalls;

  int places = 0, matched = 0;
  double deviation = 0;
  double roughInside = 0, roughOutside = 0;
  int inside = 0, outside = 0;
  for (const Lattice& l : trays) {
    const std::size_t before = r.rows.size();
    addCompartments(l, bands, p.brightening, r.rows);
    places += static_cast<int>(l.bandOfPlace.size());
    matched += l.matched();
    deviation = std::max(deviation, l.rmsDeviation);
    for (int k = 0; k < static_cast<int>(l.bandOfPlace.size()); ++k) {
      const int b = l.bandOfPlace[k];
      if (b < 0) continue;
      for (int y = static_cast<int>(bands[b].top); y < static_cast<int>(bands[b].bottom); ++y) roughInside += texture[y], ++inside;
    }
    for (std::size_t k = before; k + 1 < r.rows.size(); ++k)
      for (int y = static_cast<int>(r.rows[k].bottom); y < static_cast<int>(r.rows[k + 1].top) && y < g.h; ++y)
        if (y >= 0) roughOutside += texture[y], ++outside;
  }

  // The ends of the compartments: the walls found run exactly as long as the
  // compartments, so along x the walls' edges (darker going into a
  // compartment) hold from one end to the other and stop there; the table,
  // a chart or a board beside the tray show no such edges on those lines.
  std::vector<double> wall(g.w, 0.0);
  for (const DetectedRow& row : r.rows) {
    for (int x = 0; x < g.w; ++x) {
      const double shift = slope * (x - g.w / 2.0);
      const int yt = static_cast<int>(std::lround(row.top + shift));
      const int yb = static_cast<int>(std::lround(row.bottom - 1 + shift));
      // Only edges darker going in count: a label lying across a wall (a
      // depth tag at the start of a row) is brighter inside, and would
      // otherwise cancel the row's other wall and cut the row short there.
      if (yt >= 2 && yt < g.h - 2) wall[x] += std::max(0.0f, g.at(x, yt - 2) - g.at(x, yt + 2));
      if (yb >= 2 && yb < g.h - 2) wall[x] += std::max(0.0f, g.at(x, yb + 2) - g.at(x, yb - 2));
    }
  }
  wall = smoothed(wall, std::max(1, g.w / 100));
  std::vector<double> middle(wall.begin() + g.w / 3, wall.begin() + 2 * g.w / 3);
  const double held = 0.3 * percentile(middle, 0.5);
  double left = 0, right = g.w;
  if (held > 0) {
    const int allowedGap = std::max(2, g.w / 50);
    auto walk = [&](int step) {
      int x = g.w / 2, last = x, gap = 0;
      while (x + step >= 0 && x + step < g.w && gap <= allowedGap) {
        x += step;
        if (wall[x] > held) last = x, gap = 0;
        else ++gap;
      }
      return last;
    };
    left = walk(-1);
    right = walk(1) + 1;
  }
  for (DetectedRow& row : r.rows) {
    // The rows' lines were measured at the centre column; a turned row's
    // rectangle takes in its whole slant.
    const double mid = 0.5 * (left + right), shift = slope * (mid - g.w / 2.0);
    const double lean = std::fabs(slope) * (right - left) / 2;
    row.left = left;
    row.right = right;
    row.top = row.top + shift - lean;
    row.bottom = row.bottom + shift + lean;
  }

  // Confidence.
  const double fill = places > 0 ? static_cast<double>(matched) / places : 0.0;
  const double regularity = places > 1 ? std::clamp(1.0 - 3.0 * deviation, 0.0, 1.0) : 0.8;
  const double meanIn = inside > 0 ? roughInside / inside : 0.0;
  const double meanOut = outside > 0 ? roughOutside / outside : lo;
  const double contrast = meanIn > 0 ? std::clamp(1.5 * (meanIn - meanOut) / meanIn, 0.0, 1.0) : 0.0;
  const double strayFactor = std::pow(0.85, strays);
  const double length = (right - left) / g.w < 0.3 ? 0.5 : 1.0;
  r.confidence = fill * regularity * contrast * strayFactor * length;
  r.compartmentBetween = compartmentBetween;
  if (fill < 0.75) r.doubt = fmt::format("{} of {} compartments show no core", places - matched, places);
  else if (regularity < 0.7) r.doubt = "the rows are not evenly spaced";
  else if (contrast < 0.6) r.doubt = "the rows stand out only faintly";
  else if (strays > 0) r.doubt = fmt::format("{} band{} of texture outside the rows", strays, strays == 1 ? "" : "s");
  else if (length < 1.0) r.doubt = "the rows are short";
  return r;
}

}  // namespace

bool RowDetection::sure() const { return !rows.empty() && confidence >= RowDetector::kConfidenceThreshold; }

double intersectionOverUnion(const DetectedRow& a, const DetectedRow& b) {
  const double w = std::min(a.right, b.right) - std::max(a.left, b.left);
  const double h = std::min(a.bottom, b.bottom) - std::max(a.top, b.top);
  if (w <= 0 || h <= 0) return 0.0;
  const double inter = w * h;
  const double areaA = (a.right - a.left) * (a.bottom - a.top), areaB = (b.right - b.left) * (b.bottom - b.top);
  const double uni = areaA + areaB - inter;
  return uni > 0 ? inter / uni : 0.0;
}

RowDetection RowDetector::detect(const image::RasterView& reduced, int fullWidth, int fullHeight,
                                 int expectedRows) const {
  RowDetection result;
  result.expectedRows = expectedRows > 0 ? expectedRows : 0;
  if (reduced.empty() || fullWidth < 1 || fullHeight < 1) {
    result.doubt = "the photograph is empty";
    return result;
  }
  const Gray gray = grayOf(reduced);
  const Reading across = readAcross(gray, result.expectedRows);
  const Reading down = readAcross(transposed(gray), result.expectedRows);
  auto agrees = [&](const Reading& r) { return result.expectedRows == 0 || static_cast<int>(r.rows.size()) == result.expectedRows; };
  // The more confident reading wins, rows across when equal; but a sure
  // reading that agrees with the count expected beats one that does not.
  bool useDown = down.confidence > across.confidence;
  if (agrees(across) != agrees(down)) {
    const Reading& agreeing = agrees(down) ? down : across;
    if (agreeing.confidence >= kConfidenceThreshold) useDown = agrees(down);
  }
  const Reading& r = useDown ? down : across;
  result.rowsAcross = !useDown;
  result.confidence = r.confidence;
  result.doubt = r.doubt;
  const double sx = static_cast<double>(fullWidth) / reduced.width;
  const double sy = static_cast<double>(fullHeight) / reduced.height;
  for (const DetectedRow& row : r.rows) {
    DetectedRow out = row;
    if (useDown) {
      out.left = row.top, out.right = row.bottom, out.top = row.left, out.bottom = row.right;
    }
    out.left = std::clamp(out.left * sx, 0.0, double(fullWidth));
    out.right = std::clamp(out.right * sx, 0.0, double(fullWidth));
    out.top = std::clamp(out.top * sy, 0.0, double(fullHeight));
    out.bottom = std::clamp(out.bottom * sy, 0.0, double(fullHeight));
    result.rows.push_back(out);
  }
  // Checked once the reading is chosen: it says the reading may be wrong, not
  // that the other way round is right.
  if (r.compartmentBetween) {
    result.confidence *= 0.5;
    result.doubt = "a compartment may lie between two rows";
  }
  if (result.expectedRows > 0 && static_cast<int>(result.rows.size()) != result.expectedRows) {
    result.confidence /= 3.0;
    result.doubt = fmt::format("found {} row{}, expected {}", result.rows.size(), result.rows.size() == 1 ? "" : "s",
                               result.expectedRows);
  }
  if (result.rows.empty()) result.confidence = 0.0;
  if (result.sure()) result.doubt.clear();
  else if (result.doubt.empty()) result.doubt = "the rows are unclear";
  return result;
}

}  // namespace subsurf
