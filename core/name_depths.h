// Reading a tray's depth interval from a photograph's file name the way a
// person reads it.
//
// The fixed-width rule of CoreSession::parseDepths ("TRAY_1234_5-1236_0.jpg")
// is tried first; names from real drilling programmes that it cannot read are
// then read by a second reader that looks for two numbers joined by a hyphen:
//
//     K-DD-51_BOX(04) 9.0-12.00.JPG              9.00 to 12.00
//     S_DD_203_BOX(11) 29,3 - 32,6.jpg           29.30 to 32.60
//     K-DD-52_BOX (23) 66.0-69.0JPG.JPG          66.00 to 69.00
//     DDH001_Bx001-004_0000.0m-0016.0m_Dry.jpg   0.00 to 16.00
//     826_6001-1_(0.00-3.00)_W_17888902.jpg      0.00 to 3.00
//
// Each number has a whole part of 1 to 5 digits and an optional decimal part
// after ".", "," or "_" ("_" only when both numbers use it, as in
// 1234_5-1236_0), may be followed by "m", and the hyphen may have blanks
// around it. Numbers glued to letters (Bx001, RC671), or chained by several
// hyphens (6001-1-2, 2019-05-03), are hole, box or date numbers, not depths.
// An interval in parentheses wins over any other in the name. The top must be
// above the base. Nothing is ever guessed: a name that holds something that
// looks like an interval but cannot be read is refused, saying what was found
// and why.
#pragma once

#include <string>
#include <string_view>

#include "host/nulls.h"

namespace subsurf {

enum class NameDepthResult {
  Read,        // top and base hold the interval
  NoInterval,  // nothing in the name looks like an interval
  Refused,     // something interval-like was found but could not be trusted
};

struct NameDepths {
  NameDepthResult result = NameDepthResult::NoInterval;
  float top = kRealNull;
  float base = kRealNull;
  std::string found;   // the text of the name the interval was (or was not) read from
  std::string reason;  // why it was refused
  std::size_t start = std::string::npos;  // where `found` starts in the name without its folder
  bool read() const { return result == NameDepthResult::Read; }
};

// The depth interval of a photograph's file name (a folder in front is
// ignored).
NameDepths readNameDepths(std::string_view fileName);

// What a user is told about a name that gave no depths:
// "<name>: no depth interval in the name" or
// "<name>: found "118.7-]21.5" but <reason>; left without depths".
std::string nameDepthsProblem(std::string_view fileName, const NameDepths& reading);

// The name without its image suffixes, doubled or glued ones included:
// "BOX (23) 66.0-69.0JPG.JPG" gives "BOX (23) 66.0-69.0".
std::string withoutImageSuffixes(std::string_view fileName);

// The hole a photograph belongs to, as its name tells it: the part of the
// name before the box or tray number or the depth interval, without light
// words (Dry, Wet, WL, UV) and separators at its end. "K-DD-51_BOX(04)
// 9.0-12.00.JPG" gives "K-DD-51"; "" when nothing stands before them.
std::string holeFromName(std::string_view fileName);

}  // namespace subsurf
