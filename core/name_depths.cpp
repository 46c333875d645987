#include "core/name_depths.h"

#include <fmt/format.h>

#include <array>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <vector>

#include "core/core_session.h"
#include "core/split_naming.h"

namespace subsurf {
namespace {

constexpr int kMostWholeDigits = 5;
constexpr int kMostDecimals = 3;
constexpr int kMostUnderscoreDecimals = 2;  // "_" stands for the point only in the short form
// Two readings of one name closer than this are the same interval.
constexpr float kSameDepth = 0.005f;

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }
bool isMark(char c) { return c == '.' || c == ',' || c == '_'; }
char lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

bool endsWithNoCase(std::string_view text, std::string_view tail) {
  if (tail.size() > text.size()) return false;
  for (std::size_t i = 0; i < tail.size(); ++i)
    if (lower(text[text.size() - tail.size() + i]) != tail[i]) return false;
  return true;
}

constexpr std::array<std::string_view, 9> kImageSuffixes = {"jpeg", "jpg", "tiff", "tif", "png",
                                                            "bmp",  "cgm", "gif",  "heic"};

std::size_t digitsFrom(std::string_view s, std::size_t i) {
  std::size_t n = 0;
  while (i + n < s.size() && isDigit(s[i + n])) ++n;
  return n;
}

std::size_t skipBlanks(std::string_view s, std::size_t i) {
  while (i < s.size() && s[i] == ' ') ++i;
  return i;
}

// One number of an interval as written in a name.
struct NumberText {
  std::size_t begin = 0, end = 0;  // end: after the number and its "m"
  std::size_t wholeDigits = 0;
  char mark = 0;                   // decimal mark, 0 when none
  double value = 0.0;
};

// Reads a number at i: 1 to 5 whole digits, then a decimal part when one
// follows that is short enough and not itself followed by a digit. The caller
// checks what stands around it.
std::optional<NumberText> readNumber(std::string_view s, std::size_t i, bool allowUnderscore) {
  NumberText n;
  n.begin = i;
  n.wholeDigits = digitsFrom(s, i);
  if (n.wholeDigits == 0 || n.wholeDigits > kMostWholeDigits) return std::nullopt;
  std::string text(s.substr(i, n.wholeDigits));
  std::size_t at = i + n.wholeDigits;
  if (at + 1 < s.size() && isMark(s[at]) && (s[at] != '_' || allowUnderscore)) {
    const std::size_t decimals = digitsFrom(s, at + 1);
    const std::size_t most = s[at] == '_' ? kMostUnderscoreDecimals : kMostDecimals;
    if (decimals >= 1 && decimals <= most) {
      n.mark = s[at];
      text += '.';
      text.append(s.substr(at + 1, decimals));
      at += 1 + decimals;
    }
  }
  if (at < s.size() && (s[at] == 'm' || s[at] == 'M')) ++at;
  n.end = at;
  n.value = std::strtod(text.c_str(), nullptr);
  return n;
}

// May a number start at i? Not inside a word or another number ("Bx001",
// "12.5"), nor after a hyphen that joins it to what stands before ("6001-1-2",
// "DDH-01-05": parts of hole and box names). After "_"
// and a digit, only when the digits cannot be the "_" decimals of the number
// before ("1234_5" is one number, "RC671_815.48" is not).
bool mayStartAt(std::string_view s, std::size_t i) {  // NOLINT(misc-no-recursion)
  if (i == 0) return true;
  const char before = s[i - 1];
  if (isDigit(before) || isLetter(before) || before == '.' || before == ',') return false;
  if (before == '-') return i < 2;
  if (before == '_' && i >= 2 && isDigit(s[i - 2])) {
    if (digitsFrom(s, i) > kMostUnderscoreDecimals) return true;
    std::size_t first = i - 2;  // the digits before the "_"; glued to a word they are no depth
    while (first > 0 && isDigit(s[first - 1])) --first;
    return !mayStartAt(s, first);
  }
  return true;
}

// May an interval end at i? At the end, or before a separator; not before a
// letter, another digit, a decimal mark and digit, or a hyphen and digit.
bool mayEndAt(std::string_view s, std::size_t i) {
  if (i >= s.size()) return true;
  const char after = s[i];
  if (isDigit(after) || isLetter(after)) return false;
  if ((after == '.' || after == ',' || after == '-') && i + 1 < s.size() && isDigit(s[i + 1])) return false;
  return true;
}

struct Candidate {
  NumberText top, base;
  bool inParentheses = false;
  std::string text;
};

bool sameInterval(const Candidate& a, const Candidate& b) {
  return std::fabs(static_cast<float>(a.top.value) - static_cast<float>(b.top.value)) < kSameDepth &&
         std::fabs(static_cast<float>(a.base.value) - static_cast<float>(b.base.value)) < kSameDepth;
}

// top [blanks] "-" [blanks] base at i, with both decimal marks "_" or neither
// (unless mixedMarks, which finds the ambiguous ones).
std::optional<Candidate> intervalAt(std::string_view s, std::size_t i, bool mixedMarks = false) {
  for (const bool underscore : {true, false}) {
    const auto top = readNumber(s, i, underscore);
    if (!top) return std::nullopt;
    std::size_t at = skipBlanks(s, top->end);
    if (at >= s.size() || s[at] != '-') continue;
    at = skipBlanks(s, at + 1);
    if (at >= s.size() || !isDigit(s[at])) continue;
    const auto base = readNumber(s, at, underscore);
    if (!base || !mayEndAt(s, base->end)) continue;
    if (((top->mark == '_') != (base->mark == '_')) != mixedMarks) continue;
    Candidate c{*top, *base, false, std::string(s.substr(i, base->end - i))};
    const std::size_t open = i;
    std::size_t before = open;
    while (before > 0 && s[before - 1] == ' ') --before;
    const std::size_t after = skipBlanks(s, base->end);
    c.inParentheses = before > 0 && s[before - 1] == '(' && after < s.size() && s[after] == ')';
    return c;
  }
  return std::nullopt;
}

std::vector<Candidate> candidatesIn(std::string_view s) {
  std::vector<Candidate> out;
  for (std::size_t i = 0; i < s.size();) {
    if (isDigit(s[i]) && mayStartAt(s, i)) {
      if (auto c = intervalAt(s, i)) {
        i = c->base.end;
        out.push_back(std::move(*c));
        continue;
      }
    }
    ++i;
  }
  return out;
}

// The run of digits and decimal marks at i ("126.129.00").
std::size_t numberRunEnd(std::string_view s, std::size_t i) {
  while (i < s.size() && (isDigit(s[i]) || ((s[i] == '.' || s[i] == ',') && i + 1 < s.size() && isDigit(s[i + 1]))))
    ++i;
  return i;
}

int marksIn(std::string_view run) {
  int marks = 0;
  for (char c : run) marks += c == '.' || c == ',';
  return marks;
}

// Why a number run cannot be one depth ("" when it can).
std::string numberProblem(std::string_view run, std::string_view which) {
  const std::size_t whole = digitsFrom(run, 0);
  if (marksIn(run) > 1) return fmt::format("the {} \"{}\" has two decimal marks", which, run);
  if (whole > kMostWholeDigits) return fmt::format("the {} \"{}\" has more than five digits before the decimal mark", which, run);
  if (run.size() > whole + 1 + kMostDecimals) return fmt::format("the {} \"{}\" has more than three decimals", which, run);
  return {};
}

// Looks for something that reads like an interval but is not one, once no
// interval was found: a hyphen between numbers with something else in the
// way, numbers too long, or a number with two decimal marks. Empty reading
// (NoInterval) when there is nothing of the kind.
NameDepths refusalIn(std::string_view s) {
  NameDepths r;
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (!isDigit(s[i]) || (i > 0 && isDigit(s[i - 1]))) continue;
    if (i >= 2 && s[i - 1] == '-' && isLetter(s[i - 2])) {
      if (auto joined = intervalAt(s, i)) {
        r.result = NameDepthResult::Refused;
        r.found = joined->text;
        r.start = i;
        r.reason = fmt::format("it is joined by a hyphen to \"{}\" before it, as in a hole or box name",
                               s.substr(0, i - 1).substr(s.substr(0, i - 1).find_last_of(" _(") + 1));
        return r;
      }
      continue;
    }
    if (!mayStartAt(s, i)) continue;
    if (auto mixed = intervalAt(s, i, true)) {
      r.result = NameDepthResult::Refused;
      r.found = mixed->text;
      r.start = i;
      r.reason = "only one of its numbers has \"_\" for a decimal mark, so it reads two ways";
      return r;
    }
    const std::size_t topEnd = numberRunEnd(s, i);
    const std::string_view top = s.substr(i, topEnd - i);
    std::size_t at = topEnd;
    if (at < s.size() && (s[at] == 'm' || s[at] == 'M')) ++at;
    at = skipBlanks(s, at);
    if (at < s.size() && s[at] == '-') {
      std::size_t baseStart = skipBlanks(s, at + 1);
      std::size_t junkEnd = baseStart;
      while (junkEnd < s.size() && junkEnd - baseStart < 2 && !isDigit(s[junkEnd]) && !isLetter(s[junkEnd]) &&
             s[junkEnd] != '_' && s[junkEnd] != ' ')
        ++junkEnd;
      if (junkEnd < s.size() && isDigit(s[junkEnd])) {
        const std::size_t baseEnd = numberRunEnd(s, junkEnd);
        const std::string_view base = s.substr(junkEnd, baseEnd - junkEnd);
        r.found = std::string(s.substr(i, baseEnd - i));
        r.start = i;
        if (junkEnd > baseStart) {
          r.reason = fmt::format("\"{}\" stands between the hyphen and the base", s.substr(baseStart, junkEnd - baseStart));
        } else if (std::string p = numberProblem(top, "top"); !p.empty()) {
          r.reason = p;
        } else if (std::string q = numberProblem(base, "base"); !q.empty()) {
          r.reason = q;
        } else {
          continue;  // readable numbers in a context that is not an interval (a chain, a word)
        }
        r.result = NameDepthResult::Refused;
        return r;
      }
    }
    if (marksIn(top) > 1 && mayEndAt(s, topEnd)) {
      r.result = NameDepthResult::Refused;
      r.found = std::string(top);
      r.start = i;
      r.reason = "a number with two decimal marks (is the hyphen between top and base missing?)";
      return r;
    }
    i = topEnd;
  }
  return r;
}

NameDepths fromCandidate(const Candidate& c) {
  NameDepths r;
  r.found = c.text;
  r.start = c.top.begin;
  r.top = static_cast<float>(c.top.value);
  r.base = static_cast<float>(c.base.value);
  if (r.top < r.base) {
    r.result = NameDepthResult::Read;
  } else {
    r.result = NameDepthResult::Refused;
    r.reason = "the top is not above the base";
    r.top = r.base = kRealNull;
  }
  return r;
}

// The reader of real-world names (see the header).
NameDepths readRealWorldName(std::string_view stem) {
  std::vector<Candidate> all = candidatesIn(stem);
  if (all.empty()) return refusalIn(stem);

  std::vector<Candidate> plausible;
  for (const Candidate& c : all)
    if (static_cast<float>(c.top.value) < static_cast<float>(c.base.value)) plausible.push_back(c);
  if (plausible.empty()) return fromCandidate(all.back());  // refused: top not above base

  std::vector<Candidate> chosen;
  for (const Candidate& c : plausible)
    if (c.inParentheses) chosen.push_back(c);
  if (chosen.empty()) chosen = plausible;
  for (const Candidate& c : chosen) {
    if (!sameInterval(c, chosen.front())) {
      NameDepths r;
      r.result = NameDepthResult::Refused;
      r.found = chosen.front().text;
      r.start = chosen.front().top.begin;
      r.reason = fmt::format("the name also holds the interval \"{}\"", c.text);
      return r;
    }
  }
  return fromCandidate(chosen.front());
}

}  // namespace

std::string withoutImageSuffixes(std::string_view fileName) {
  std::string_view s = fileName.substr(split::fileNameStart(fileName));
  for (bool again = true; again;) {
    again = false;
    for (std::string_view suffix : kImageSuffixes) {
      if (!endsWithNoCase(s, suffix) || s.size() == suffix.size()) continue;
      const char before = s[s.size() - suffix.size() - 1];
      // ".JPG", or "JPG" glued to the last digit of the interval ("69.0JPG").
      if (before == '.' || isDigit(before)) {
        s.remove_suffix(suffix.size() + (before == '.' ? 1 : 0));
        again = true;
        break;
      }
    }
  }
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return std::string(s);
}

NameDepths readNameDepths(std::string_view fileName) {
  const std::string_view name = fileName.substr(split::fileNameStart(fileName));
  const std::string stem = withoutImageSuffixes(name);
  const NameDepths person = readRealWorldName(stem);

  // The fixed-width rule first, as sessions have always read names; it is
  // taken only when a person would read the same interval, or nothing.
  const ParsedDepths fixed = CoreSession::parseDepths(name);
  if (fixed.status == 0 && fixed.top < fixed.base) {
    if (person.result == NameDepthResult::NoInterval ||
        (person.read() && std::fabs(person.top - fixed.top) < kSameDepth &&
         std::fabs(person.base - fixed.base) < kSameDepth)) {
      NameDepths r = person;
      r.result = NameDepthResult::Read;
      r.top = fixed.top;
      r.base = fixed.base;
      if (r.found.empty()) r.found = std::string(name);
      return r;
    }
    if (person.read()) {
      NameDepths r = person;
      r.result = NameDepthResult::Refused;
      r.reason = fmt::format("the fixed-width reading gives {}-{} instead", split::fixedField(fixed.top, 0, 2),
                             split::fixedField(fixed.base, 0, 2));
      r.top = r.base = kRealNull;
      return r;
    }
  }
  return person;
}

std::string nameDepthsProblem(std::string_view fileName, const NameDepths& reading) {
  const std::string_view name = fileName.substr(split::fileNameStart(fileName));
  if (reading.result == NameDepthResult::Refused)
    return fmt::format("{}: found \"{}\" but {}; left without depths", name, reading.found, reading.reason);
  return fmt::format("{}: no depth interval in the name", name);
}

std::string holeFromName(std::string_view fileName) {
  const std::string stem = withoutImageSuffixes(fileName);
  std::size_t cut = stem.size();
  const NameDepths reading = readNameDepths(fileName);
  if (reading.start != std::string::npos && reading.start < stem.size()) cut = reading.start;
  // A box or tray word followed by its number ("BOX(04)", "Bx001", "Tray22").
  for (std::string_view word : {"box", "bx", "tray"}) {
    for (std::size_t i = 0; i + word.size() <= cut; ++i) {
      if (i > 0 && isLetter(stem[i - 1])) continue;
      bool match = true;
      for (std::size_t k = 0; k < word.size() && match; ++k) match = lower(stem[i + k]) == word[k];
      if (!match) continue;
      std::size_t j = i + word.size();
      while (j < stem.size() && (stem[j] == ' ' || stem[j] == '(' || stem[j] == '_' || stem[j] == '-')) ++j;
      if (j < stem.size() && isDigit(stem[j])) {
        cut = i;
        break;
      }
    }
  }
  std::string hole = stem.substr(0, cut);
  auto trimSeparators = [&hole] {
    while (!hole.empty() && (hole.back() == ' ' || hole.back() == '_' || hole.back() == '-' || hole.back() == '(' ||
                             hole.back() == '.' || hole.back() == ','))
      hole.pop_back();
  };
  trimSeparators();
  for (bool again = true; again;) {
    again = false;
    for (std::string_view light : {"dry", "wet", "wl", "uv"}) {
      if (hole.size() > light.size() && endsWithNoCase(hole, light) && !std::isalnum(static_cast<unsigned char>(
                                                                             hole[hole.size() - light.size() - 1]))) {
        hole.resize(hole.size() - light.size());
        trimSeparators();
        again = true;
      }
    }
  }
  return hole;
}

}  // namespace subsurf
