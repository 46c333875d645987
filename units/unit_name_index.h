// UnitNameIndex: hash tables from the names of units to their positions in
// each series, so that every lookup by name takes constant time however large
// the registry grows.
//
// Each series has four tables: unit names as written and in lower case, other
// (alternative) names as written and in lower case. A text holds the first
// position of the series that has it. Lookups take the text as a view and
// allocate nothing.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace subsurf {

class UnitNameIndex {
 public:
  enum class Table { Name, LowerName, OtherName, LowerOtherName };

  void clear();
  // Records a unit of a series; a text already held keeps its earlier position.
  void add(int iser, int iun, std::string_view name, std::string_view otherName);
  // The position recorded under the text in one table; 0 when none.
  int find(Table table, int iser, std::string_view text) const;
  // The first series (lowest number) with a unit of this lower-case name; -1 when none.
  int firstSeriesWithName(std::string_view lowerName) const;

 private:
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view s) const { return std::hash<std::string_view>{}(s); }
  };
  using Map = std::unordered_map<std::string, int, TextHash, std::equal_to<>>;

  std::vector<std::array<Map, 4>> series_;
  Map seriesOfLowerName_;
};

// A text in lower case, held without allocating (names are 16 characters).
class LowerText {
 public:
  explicit LowerText(std::string_view text);
  bool fits() const { return fits_; }  // false for a text too long to be a unit name
  std::string_view view() const { return {buffer_.data(), size_}; }

 private:
  std::array<char, 64> buffer_{};
  std::size_t size_ = 0;
  bool fits_ = true;
};

}  // namespace subsurf
