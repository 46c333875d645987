// UnitNameIndex: hash tables from the names of units to their positions in
// each series, so that every lookup by name takes constant time however large
// the registry grows.
//
// Four tables are kept, each keyed by series and text: unit names as written and
// in lower case, other (alternative) names as written and in lower case. Each
// key holds the first position of the series that has it.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

namespace subsurf {

class UnitNameIndex {
 public:
  enum class Table { Name, LowerName, OtherName, LowerOtherName };

  void clear();
  // Records a unit of a series; a key already held keeps its earlier position.
  void add(int iser, int iun, std::string_view name, std::string_view otherName);
  // The position recorded under the text in one table; 0 when none.
  int find(Table table, int iser, std::string_view text) const;
  // The first series (lowest number) that has a unit of this name, ignoring case; -1 when none.
  int firstSeriesWithName(std::string_view name) const;

 private:
  static std::string key(int iser, std::string_view text);
  std::unordered_map<std::string, int> tables_[4];
  std::unordered_map<std::string, int> seriesOfLowerName_;
};

}  // namespace subsurf
