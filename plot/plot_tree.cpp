#include "plot/plot_tree.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "host/messages.h"

namespace subsurf {

PlotRecord* PlotRecord::nextSibling() const {
  if (!parent) return nullptr;
  const int place = parent->childPlace(this);
  return place >= 1 && place < static_cast<int>(parent->children.size())
             ? parent->children[static_cast<std::size_t>(place)].get()
             : nullptr;
}

int PlotRecord::childPlace(const PlotRecord* child) const {
  for (std::size_t k = 0; k < children.size(); ++k)
    if (children[k].get() == child) return static_cast<int>(k) + 1;
  return 0;
}

PlotTree& plotTree() {
  static PlotTree tree;
  return tree;
}

void PlotTree::init() {
  removed_.clear();
  root_ = std::make_unique<PlotRecord>();
  root_->sets.emplace_back();
  current_ = root_.get();
}

void PlotTree::makeCurrent(PlotRecord* plot) { current_ = plot; }

PlotRecord* PlotTree::addKid(PlotRecord* parent) {
  if (!parent) parent = root_.get();
  auto kid = std::make_unique<PlotRecord>();
  kid->sets.emplace_back();
  kid->ownWindow = -1;
  kid->parent = parent;
  kid->inherited = parent->inherited;
  kid->level = parent->level + 1;
  // The number follows the last sibling, not the count: it stays unique after deletions.
  kid->sequence = parent->children.empty() ? 1 : parent->children.back()->sequence + 1;
  PlotRecord* added = kid.get();
  parent->children.push_back(std::move(kid));
  parent->currentChild = added;
  return added;
}

int PlotTree::next(PlotRecord*& plot) {
  if (!plot) {
    plot = root_.get();
    return kWalkSame;
  }
  if (!plot->children.empty()) {
    plot = plot->children.front().get();
    return kWalkDown;
  }
  if (PlotRecord* sibling = plot->nextSibling()) {
    plot = sibling;
    return kWalkSame;
  }
  if (plot->parent) {
    plot = nextUp(plot);
    return plot ? kWalkUp : kWalkEnd;
  }
  plot = nullptr;
  return kWalkEnd;
}

PlotRecord* PlotTree::nextUp(PlotRecord* plot) {
  for (PlotRecord* p = plot ? plot->parent : nullptr; p; p = p->parent)
    if (PlotRecord* sibling = p->nextSibling()) return sibling;
  return nullptr;
}

PlotRecord* PlotTree::findByWindow(PlotRecord* from, int window) {
  PlotRecord* p = from;
  while (true) {
    const int code = next(p);
    if (std::abs(code) > 1 || !p) return nullptr;
    if (p->windowId == window) return p;
  }
}

PlotRecord* PlotTree::kidBySequence(PlotRecord* plot, int seq) {
  if (!plot) return nullptr;
  for (auto& kid : plot->children)
    if (kid->sequence == seq) return kid.get();
  return nullptr;
}

bool PlotTree::infantile(const PlotRecord* plot) {
  return plot && plot->parent && plot->parent->windowId == plot->windowId;
}

void PlotTree::checkWindow(PlotRecord* plot) {
  if (!plot || plot->ownWindow < 0) return;
  PlotRecord* p = nullptr;
  while (std::abs(next(p)) <= 1 && p)
    if (p != plot && p->windowId == plot->windowId) p->windowId = 0;
}

bool PlotTree::contains(const PlotRecord* plot) const {
  for (const PlotRecord* p = plot; p; p = p->parent)
    if (p == root_.get()) return true;
  return false;
}

bool PlotTree::remove(PlotRecord* plot) {
  if (!plot || !plot->parent || !contains(plot)) return false;
  PlotRecord* parent = plot->parent;
  const int place = parent->childPlace(plot);
  auto owned = std::move(parent->children[static_cast<std::size_t>(place - 1)]);
  parent->children.erase(parent->children.begin() + (place - 1));
  owned->parent = nullptr;
  PlotRecord* successor = nullptr;
  if (place <= static_cast<int>(parent->children.size()))
    successor = parent->children[static_cast<std::size_t>(place - 1)].get();  // took its place
  else if (place > 1)
    successor = parent->children[static_cast<std::size_t>(place - 2)].get();  // its predecessor
  if (parent->currentChild == plot) parent->currentChild = successor;
  // With no plot left in its place the current plot, and so its set, is none.
  current_ = successor;
  removed_.push_back(std::move(owned));
  return true;
}

void PlotTree::del(PlotRecord* plot) {
  if (!plot) return;
  if (plot == root_.get()) {
    deleteKids(plot);
    reset(plot);
    current_ = plot;
    return;
  }
  if (contains(plot)) remove(plot);
  auto it = std::find_if(removed_.begin(), removed_.end(), [&](const auto& p) { return p.get() == plot; });
  if (it != removed_.end()) removed_.erase(it);
}

void PlotTree::deleteKids(PlotRecord* plot) {
  if (!plot) return;
  // Decided before anything is freed: the walk up from the current plot must
  // not meet a freed record.
  bool currentInside = false;
  for (const PlotRecord* p = current_; p && !currentInside; p = p->parent) currentInside = p->parent == plot;
  freeKids(plot);
  if (currentInside) current_ = plot;
}

void PlotTree::freeKids(PlotRecord* plot) {
  for (int place = static_cast<int>(plot->children.size()); place >= 1; --place) {
    PlotRecord* kid = plot->children[static_cast<std::size_t>(place - 1)].get();
    if (!kid->children.empty()) freeKids(kid);
    deleteBits(kid);
    plot->children.erase(plot->children.begin() + (place - 1));
  }
  plot->currentChild = nullptr;
}

void PlotTree::deleteBits(PlotRecord* plot) {
  if (!plot) return;
  plot->bitmaps.clear();
  plot->sets.clear();
  plot->currentSet = 1;
  plot->annotation = defaultAnnotation();
  plot->layout = Layout();
  plot->legend = Legend();
}

void PlotTree::releaseMemory() {
  removed_.clear();
  deleteKids(root_.get());
  current_ = root_.get();
}

void PlotTree::reset(PlotRecord* plot) {
  if (!plot) return;
  deleteBits(plot);
  plot->fields = PlotFields();
  plot->sets.emplace_back();
  plot->currentSet = 1;
}

void PlotTree::reinit(PlotRecord* plot) {
  if (!plot) return;
  for (PlotSet& set : plot->sets) set.clearContents();
  plot->bitmaps.clear();
  plot->legend.rows.clear();
  plot->legend.fx = Legend().fx;
  plot->legend.fy = Legend().fy;
}

bool PlotTree::addSet(PlotRecord* plot) {
  if (!plot) plot = current_;
  if (!plot) return false;
  try {
    if (failNextSet_) {
      failNextSet_ = false;
      throw std::bad_alloc();
    }
    plot->sets.emplace_back();
  } catch (const std::bad_alloc&) {
    host::showMessage("Memory error allocating ZPS...");
    return false;
  }
  plot->currentSet = plot->setCount();
  current_ = plot;
  return true;
}

bool PlotTree::selectSet(PlotRecord* plot, int n) {
  if (!plot) plot = current_;
  if (!plot || plot->sets.empty()) return false;
  current_ = plot;
  if (n >= 1 && n <= plot->setCount()) {
    plot->currentSet = n;
    return true;
  }
  plot->currentSet = plot->setCount();  // the walk ran off the end: the last set stays current
  return false;
}

bool PlotTree::deleteCurrentSet() {
  PlotRecord* plot = current_;
  if (!plot || plot->setCount() <= 1 || !plot->currentPlotSet()) return false;
  plot->sets.erase(plot->sets.begin() + (plot->currentSet - 1));
  plot->currentSet = std::max(1, plot->currentSet - 1);
  return true;
}

bool PlotTree::copyCurrentSet() {
  PlotSet* set = currentSet();
  if (!set) return false;
  PlotSet copy = *set;
  current_->sets.push_back(std::move(copy));
  current_->currentSet = current_->setCount();
  return true;
}

bool PlotTree::copyDefinitions(int from, int to) {
  PlotRecord* plot = current_;
  if (!plot || from < 1 || to < 1 || from > plot->setCount() || to > plot->setCount()) return false;
  plot->sets[static_cast<std::size_t>(to - 1)].defs = plot->sets[static_cast<std::size_t>(from - 1)].defs;
  return true;
}

bool PlotTree::copyDefinitionsToAll(int from) {
  PlotRecord* plot = current_;
  if (!plot || from < 1 || from > plot->setCount()) return false;
  for (int to = 1; to <= plot->setCount(); ++to)
    if (to != from) copyDefinitions(from, to);
  return true;
}

void PlotTree::promoteCurrentSet() {
  PlotRecord* plot = current_;
  if (!plot || !plot->currentPlotSet() || plot->currentSet == 1) return;
  auto it = plot->sets.begin() + (plot->currentSet - 1);
  std::rotate(plot->sets.begin(), it, it + 1);
  plot->currentSet = 1;
}

int plotPointCount(const PlotRecord& plot) {
  int n = 0;
  for (const PlotSet& set : plot.sets) n += set.pointCount();
  return n;
}

std::vector<float> gatherAxisValues(const PlotRecord& plot, int axisIndex) {
  std::vector<float> all;
  if (axisIndex < 0 || axisIndex >= kAxisCount) return all;
  for (const PlotSet& set : plot.sets)
    all.insert(all.end(), set.data[static_cast<std::size_t>(axisIndex)].begin(),
               set.data[static_cast<std::size_t>(axisIndex)].end());
  return all;
}

}  // namespace subsurf
