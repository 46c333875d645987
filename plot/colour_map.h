// Colour maps: values of a plot set's colour axis turned into classes, each
// with a colour index of the palette, optional names and pinned values.
//
// A map of n classes holds n colour indices, n + 1 ascending class bounds and
// n names. A value v belongs to class k (1..n) when
// bound[k-1] <= v < bound[k]; the top bound belongs to the last class. Values
// below the first bound take the colour cm_c0, values above the last cm_c1
// (0: not drawn). Categorical maps (cm_icat = 1) take class k for the values
// that round to k.
//
// Attributes exchanged by name as text (ZW_CMGETATTS, ZW_CMSETATTS):
//   "cm_min", "cm_max"    the value range the classes divide;
//   "cm_dmin", "cm_dmax"  the range of the data last coloured (null until set);
//   "cm_ich"              1 when the map changed since it was last saved;
//   "cm_icat"             1 categorical, 0 continuous;
//   "cm_ifsc"             how ZW_CMRANGES divides the range: 1 equal widths,
//                         2 equal widths of the logarithm;
//   "cm_imap"             which default colour table the map started from
//                         (0 the class-count table of ZW_CMSETCOLS);
//   "cm_c0", "cm_c1"      colours below and above the classes;
//   "cm_nr"               the number of classes (setting it re-sizes the map).
// Reals are given in the compact form; a null real reads "-9.9E+20".
//
// File (a keyword record file), records in this order:
//   vers,1
//   lims,MIN,MAX,DMIN,DMAX
//   scale,IFSC,ICAT,IMAP,C0,C1
//   ranges,N,BOUND0..BOUNDN
//   cols,N,COLOUR1..COLOURN
//   names,N,NAME1..NAMEN
//   pins,M,PIN1..PINM
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/nulls.h"
#include "host/status.h"

namespace subsurf {

inline constexpr int kMaxColourClasses = 256;
inline constexpr int kColourMapFileVersion = 1;

struct ColourMap {
  float min = 0.0f, max = 1.0f;
  float dmin = kRealNull, dmax = kRealNull;
  int ich = 0;
  int icat = 0;
  int ifsc = 1;
  int imap = 0;
  int c0 = 0, c1 = 0;
  std::vector<int> colours;       // one per class, class 1 first
  std::vector<float> bounds;      // classes + 1, ascending
  std::vector<std::string> names; // one per class
  std::vector<float> pins;

  int classes() const { return static_cast<int>(colours.size()); }
};

// A map of five classes over 0..1 with the default colours.
ColourMap defaultColourMap();

// Sizes the map for n classes (1..kMaxColourClasses), keeping what fits and
// giving new classes the default colours and equal ranges.
Status allocateClasses(ColourMap& map, int n);

// The default colours for the current class count (1..9); other counts
// leave the colours as they are.
void setDefaultColours(ColourMap& map);

// Divides min..max into the classes by equal widths (of the logarithm when
// ifsc is 2, which needs 0 < min).
Status setClassRanges(ColourMap& map);

// The class of a value (1..n), 0 below the classes, n + 1 above, -1 for null.
int classOf(const ColourMap& map, float value);
// The colour index of a value (cm_c0 or cm_c1 outside the classes, 0 for null).
int colourOf(const ColourMap& map, float value);

// Problems that make a map unusable, named: no classes, sizes that disagree,
// bounds not ascending.
Status checkColourMap(const ColourMap& map);

// Attributes by name (see above). Unknown names fail with
// "Unknown colour-map attribute NAME".
Status colourMapAttribute(const ColourMap& map, std::string_view name, std::string& value);
Status setColourMapAttribute(ColourMap& map, std::string_view name, std::string_view value);

std::string colourMapFileText(const ColourMap& map);
Status writeColourMapFile(const ColourMap& map, const std::string& path);
Status readColourMapFile(const std::string& path, ColourMap& map);

}  // namespace subsurf
