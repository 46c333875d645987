// The plot tree: every graph is a plot record in one tree whose root lives as
// long as the module.
//
// A plot has children (plots drawn in or beside it), one or more plot sets, of
// which one is current, and its own bitmaps, annotation, layout and legend.
// The tree (PlotTree) keeps the root, the current plot and, through it, the
// current plot set that the element operations act on.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "plot/colour_bar.h"
#include "plot/plot_records.h"

namespace subsurf {

// The plot-wide settings saved in the "zp_" records of a plot file.
struct PlotFields {
  std::string title, source, pdesc;  // 80 characters each
  std::array<int, kPlotOptions> ops{};
  int plotBg = 0;   // palette index of the page background (0 white)
  int dataBg = 0;   // of the data area
  int grlc1 = 1;    // major grid colour, 0 = no grid
  int grlc2 = 0;    // minor grid colour, 0 = none
  int sgsty = 3;    // grid line style
  int bllab = 1;    // 1 when axis labels name their units
  int axsame = 0;   // 1 when all sets share one scale
  int oneax = 0;    // 1 when only the first set's axes are drawn
  int zpssame = 0;  // 1 when every set takes the first set's definitions
  std::array<int, kPlotOptions> plops{};
  bool operator==(const PlotFields&) const = default;
};

struct PlotRecord {
  // Links and identity.
  PlotRecord* parent = nullptr;
  std::vector<std::unique_ptr<PlotRecord>> children;
  PlotRecord* currentChild = nullptr;
  int sequence = 1;
  int windowId = 0;
  int inherited = 0;
  int level = 1;
  int currentSet = 1;  // place of the current set, from 1
  int ownWindow = 1;
  int index1 = -1, index2 = -1;

  // What the plot owns.
  PlotFields fields;
  std::vector<PlotSet> sets;
  ElementList<ZW_ZBM> bitmaps;
  Annotation annotation = defaultAnnotation();
  Layout layout;
  Legend legend;
  // Drawn beside the data area when the points are coloured by class.
  std::optional<ColourBar> colourBar;

  PlotSet* currentPlotSet() {
    return currentSet >= 1 && currentSet <= static_cast<int>(sets.size())
               ? &sets[static_cast<std::size_t>(currentSet - 1)]
               : nullptr;
  }
  int setCount() const { return static_cast<int>(sets.size()); }
  PlotRecord* nextSibling() const;
  int childPlace(const PlotRecord* child) const;  // from 1; 0 when not a child
};

// Step codes of the depth-first walk.
inline constexpr int kWalkSame = 0;    // to a sibling (or the root)
inline constexpr int kWalkDown = 1;    // to a first child
inline constexpr int kWalkUp = -1;     // up to an ancestor's sibling
inline constexpr int kWalkEnd = -3;    // no further plot

class PlotTree {
 public:
  PlotTree() { init(); }

  // A fresh root with one plot set, made current; every other plot is freed.
  void init();
  PlotRecord* root() { return root_.get(); }
  PlotRecord* current() { return current_; }
  // The current plot's current set; null when there is no current plot.
  PlotSet* currentSet() { return current_ ? current_->currentPlotSet() : nullptr; }
  void makeCurrent(PlotRecord* plot);

  PlotRecord* addKid(PlotRecord* parent);
  // One step of the depth-first walk; plot is replaced by the next one.
  int next(PlotRecord*& plot);
  static PlotRecord* nextUp(PlotRecord* plot);
  // The first plot after from (after nothing: the root first) showing window.
  PlotRecord* findByWindow(PlotRecord* from, int window);
  static PlotRecord* kidBySequence(PlotRecord* plot, int seq);
  static bool infantile(const PlotRecord* plot);
  void checkWindow(PlotRecord* plot);
  // Unlinks plot from the tree; it is kept until deleted. False for the root.
  bool remove(PlotRecord* plot);
  void del(PlotRecord* plot);
  void deleteKids(PlotRecord* plot);
  static void deleteBits(PlotRecord* plot);
  void releaseMemory();
  static void reset(PlotRecord* plot);
  static void reinit(PlotRecord* plot);
  bool contains(const PlotRecord* plot) const;

  // Plot sets of the current plot (addSet also of a given plot).
  bool addSet(PlotRecord* plot);
  // Makes set n of plot current (the last one when n is not a place); false then.
  bool selectSet(PlotRecord* plot, int n);
  bool deleteCurrentSet();
  bool copyCurrentSet();
  bool copyDefinitions(int from, int to);
  bool copyDefinitionsToAll(int from);
  void promoteCurrentSet();

  // Fault injection for tests: the next plot-set allocation fails.
  void failNextSetAllocation() { failNextSet_ = true; }

 private:
  static void freeKids(PlotRecord* plot);

  std::unique_ptr<PlotRecord> root_;
  PlotRecord* current_ = nullptr;
  std::vector<std::unique_ptr<PlotRecord>> removed_;
  bool failNextSet_ = false;
};

// The process-wide tree behind the exported routines.
PlotTree& plotTree();

// Counts and gathers over all sets of a plot.
int plotPointCount(const PlotRecord& plot);
std::vector<float> gatherAxisValues(const PlotRecord& plot, int axisIndex);

}  // namespace subsurf
