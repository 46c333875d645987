#include "units/unit_name_index.h"

#include "host/fixed_text.h"

namespace subsurf {

void UnitNameIndex::clear() {
  for (auto& table : tables_) table.clear();
  seriesOfLowerName_.clear();
}

// The series number's four bytes, then the text: no text can make two keys meet.
std::string UnitNameIndex::key(int iser, std::string_view text) {
  std::string k(sizeof iser, '\0');
  for (std::size_t b = 0; b < sizeof iser; ++b) k[b] = static_cast<char>((static_cast<unsigned>(iser) >> (8 * b)) & 0xff);
  k.append(text);
  return k;
}

void UnitNameIndex::add(int iser, int iun, std::string_view name, std::string_view otherName) {
  const std::string lowerName = lowerCase(name);
  tables_[static_cast<int>(Table::Name)].emplace(key(iser, name), iun);
  tables_[static_cast<int>(Table::LowerName)].emplace(key(iser, lowerName), iun);
  if (!otherName.empty()) {
    tables_[static_cast<int>(Table::OtherName)].emplace(key(iser, otherName), iun);
    tables_[static_cast<int>(Table::LowerOtherName)].emplace(key(iser, lowerCase(otherName)), iun);
  }
  auto [it, added] = seriesOfLowerName_.emplace(lowerName, iser);
  if (!added && iser < it->second) it->second = iser;
}

int UnitNameIndex::find(Table table, int iser, std::string_view text) const {
  const auto& map = tables_[static_cast<int>(table)];
  const auto it = map.find(key(iser, text));
  return it == map.end() ? 0 : it->second;
}

int UnitNameIndex::firstSeriesWithName(std::string_view name) const {
  const auto it = seriesOfLowerName_.find(std::string(name));
  return it == seriesOfLowerName_.end() ? -1 : it->second;
}

}  // namespace subsurf
