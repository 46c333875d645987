// ElementList: the list behind every element family of a plot (lines, symbols,
// text items, bitmaps, legend rows).
//
// Elements keep the order in which they were added and are addressed by place,
// counted from 1, as users count them. One element is current: the one the
// family's define, move and fix operations act on. Each element has an id one
// above the largest id in the list when it was added, so ids stay unique even
// after deletions. The element type carries its id in a field named ID.
#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace subsurf {

template <typename Element>
class ElementList {
 public:
  int count() const { return static_cast<int>(items_.size()); }
  bool empty() const { return items_.empty(); }

  // Appends a defaulted element (given) with a fresh id and makes it current.
  Element& add(Element fresh) {
    int largest = 0;
    for (const Element& e : items_) largest = std::max(largest, e.ID);
    fresh.ID = largest + 1;
    items_.push_back(std::move(fresh));
    current_ = count();
    return items_.back();
  }

  // Appends a copy as it is (its id renewed) and makes it current.
  Element& addCopy(const Element& e) { return add(e); }

  // Makes place n current; false (current unchanged) when n is not a place.
  bool select(int n) {
    if (n < 1 || n > count()) return false;
    current_ = n;
    return true;
  }

  // Makes the element with this id current.
  bool selectById(int id) {
    for (int k = 0; k < count(); ++k)
      if (items_[static_cast<std::size_t>(k)].ID == id) return select(k + 1);
    return false;
  }

  // Place of the current element, 0 when none.
  int currentPlace() const { return current_; }
  Element* current() { return current_ ? &items_[static_cast<std::size_t>(current_ - 1)] : nullptr; }
  const Element* current() const { return current_ ? &items_[static_cast<std::size_t>(current_ - 1)] : nullptr; }
  Element& at(int place) { return items_.at(static_cast<std::size_t>(place - 1)); }
  const Element& at(int place) const { return items_.at(static_cast<std::size_t>(place - 1)); }

  // Deletes the current element; the one before it becomes current (the new
  // first one when it was first). False when there is none.
  bool removeCurrent() {
    if (!current_) return false;
    items_.erase(items_.begin() + (current_ - 1));
    current_ = items_.empty() ? 0 : std::max(1, current_ - 1);
    return true;
  }

  void clear() {
    items_.clear();
    current_ = 0;
  }

  // Place (from 1) of the element that minimises distance(element), and that
  // distance; place 0 when the list is empty.
  template <typename Distance>
  std::pair<int, double> nearest(Distance distance) const {
    int best = 0;
    double bestDistance = 0;
    for (int k = 0; k < count(); ++k) {
      const double d = distance(items_[static_cast<std::size_t>(k)]);
      if (best == 0 || d < bestDistance) {
        best = k + 1;
        bestDistance = d;
      }
    }
    return {best, bestDistance};
  }

  auto begin() { return items_.begin(); }
  auto end() { return items_.end(); }
  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

  bool operator==(const ElementList&) const = default;

 private:
  std::vector<Element> items_;
  int current_ = 0;
};

}  // namespace subsurf
