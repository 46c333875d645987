#include "units/unit_name_index.h"

#include "host/fixed_text.h"

namespace subsurf {

void UnitNameIndex::clear() {
  series_.clear();
  seriesOfLowerName_.clear();
}

void UnitNameIndex::add(int iser, int iun, std::string_view name, std::string_view otherName) {
  if (iser < 0) return;
  if (series_.size() <= static_cast<std::size_t>(iser)) series_.resize(static_cast<std::size_t>(iser) + 1);
  auto& tables = series_[static_cast<std::size_t>(iser)];
  const std::string lowerName = lowerCase(name);
  tables[static_cast<int>(Table::Name)].emplace(name, iun);
  tables[static_cast<int>(Table::LowerName)].emplace(lowerName, iun);
  if (!otherName.empty()) {
    tables[static_cast<int>(Table::OtherName)].emplace(otherName, iun);
    tables[static_cast<int>(Table::LowerOtherName)].emplace(lowerCase(otherName), iun);
  }
  auto [it, added] = seriesOfLowerName_.emplace(lowerName, iser);
  if (!added && iser < it->second) it->second = iser;
}

int UnitNameIndex::find(Table table, int iser, std::string_view text) const {
  if (iser < 0 || static_cast<std::size_t>(iser) >= series_.size()) return 0;
  const Map& map = series_[static_cast<std::size_t>(iser)][static_cast<int>(table)];
  const auto it = map.find(text);
  return it == map.end() ? 0 : it->second;
}

int UnitNameIndex::firstSeriesWithName(std::string_view lowerName) const {
  const auto it = seriesOfLowerName_.find(lowerName);
  return it == seriesOfLowerName_.end() ? -1 : it->second;
}

LowerText::LowerText(std::string_view text) {
  if (text.size() > buffer_.size()) {
    fits_ = false;
    return;
  }
  for (char c : text) buffer_[size_++] = (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace subsurf
