// C entry points of axes and scaling (declared in include/subsurf/plot.h).
#include <algorithm>
#include <cmath>
#include <span>
#include <string>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "plot/axis_scales.h"
#include "plot/plot_tree.h"
#include "subsurf/plot.h"

namespace ss = subsurf;

namespace {

void set(int* out, int v) {
  if (out) *out = v;
}
int in(const int* p, int fallback = 0) { return p ? *p : fallback; }

float asFloat(double v) { return std::isfinite(v) ? static_cast<float>(v) : ss::kRealNull; }

ss::PlotSet* currentSet() { return ss::plotTree().currentSet(); }

// The current set's axis, or -1.
int axisOf(const int* axis) { return currentSet() ? ss::axisIndex(in(axis)) : -1; }

// "label (unit)" when the plot names units in labels and the axis has a unit.
std::string labelWithUnit(const ss::PlotSet& set, int a) {
  const std::string& label = set.labels[static_cast<std::size_t>(a)];
  const std::string unit = ss::fixedText(set.scales[static_cast<std::size_t>(a)].UNIT);
  const ss::PlotRecord* plot = ss::plotTree().current();
  if (unit.empty() || (plot && plot->fields.bllab == 0)) return label;
  return label.empty() ? "(" + unit + ")" : label + " (" + unit + ")";
}

template <typename F>
void guarded(F&& f) {
  try {
    f();
  } catch (...) {
  }
}

}  // namespace

extern "C" {

void ZW_AXLIMS(const int* n, const float* values, ZW_SCALE* scale) {
  if (!scale) return;
  guarded([&] {
    const std::size_t count = values && in(n) > 0 ? static_cast<std::size_t>(in(n)) : 0;
    ss::setAxisLimits(std::span<const float>(values, count), *scale);
  });
}

void ZW_RVAXLIMS(const DT_RVEC* vector, ZW_SCALE* scale) {
  if (!vector || !scale) return;
  guarded([&] { ss::setAxisLimits(*vector, *scale); });
}

void ZW_AXADJUST(ZW_SCALE* scale) {
  if (!scale) return;
  scale->TYPE = std::clamp(scale->TYPE, 1, 8);
  scale->MODE = std::clamp(scale->MODE, 1, 6);
  const ss::Limits fallback = ss::fallbackLimits(scale->TYPE);
  if (!std::isfinite(ss::scaleTransform(scale->TYPE, scale->MIN))) scale->MIN = fallback.min;
  if (!std::isfinite(ss::scaleTransform(scale->TYPE, scale->MAX))) scale->MAX = fallback.max;
  if (!(std::fabs(scale->MAX - scale->MIN) > 0.0f)) {
    // The same limits the data rules give a single value.
    const float v = scale->MIN;
    int one = 1;
    ZW_SCALE probe = *scale;
    probe.MODE = 2;
    ZW_AXLIMS(&one, &v, &probe);
    scale->MIN = probe.MIN;
    scale->MAX = probe.MAX;
  }
}

void ZW_125(int* n) {
  if (n) *n = ss::step125(*n);
}

void ZW_SETAXP(const int* axis, const int* placement, int* status) {
  const int a = axisOf(axis);
  const int p = in(placement, -1);
  if (a < 0 || p < 0 || p > 3) return set(status, 1);
  currentSet()->ax[static_cast<std::size_t>(a)] = p;
  set(status, 0);
}

void ZW_GETAXP(const int* axis, int* placement) {
  const int a = axisOf(axis);
  set(placement, a < 0 ? 0 : currentSet()->ax[static_cast<std::size_t>(a)]);
}

void ZW_SETAXSIZES(void) {
  ss::PlotRecord* plot = ss::plotTree().current();
  ss::PlotSet* s = currentSet();
  if (!plot || !s) return;
  // Numbers about 1.4 % of the shorter side of the drawing area (3 mm on A4
  // landscape), kept readable on small plots and modest on posters; labels a
  // fifth larger.
  const ss::Layout& l = plot->layout;
  const float width = std::max(10.0f, l.pagex - l.ml - l.mr), height = std::max(10.0f, l.pagey - l.mt - l.mb);
  s->axnumht = std::clamp(0.0175f * std::min(width, height), 2.0f, 5.0f);
  s->axlabht = 1.2f * s->axnumht;
}

void ZW_AXSETLAB(const int* axis, const char* label, int* status) {
  const int a = axisOf(axis);
  if (a < 0 || !label) return set(status, 1);
  currentSet()->labels[static_cast<std::size_t>(a)] = ss::fixedText(label, ss::kAxisLabelWidth);
  set(status, 0);
}

void ZW_AXSETLABM(const int* axis, const char* label, int* status) {
  ss::PlotRecord* plot = ss::plotTree().current();
  const int a = ss::axisIndex(in(axis));
  if (!plot || a < 0 || !label) return set(status, 1);
  for (ss::PlotSet& s : plot->sets) s.labels[static_cast<std::size_t>(a)] = ss::fixedText(label, ss::kAxisLabelWidth);
  set(status, 0);
}

void ZW_AXLABL(const int* axis, char* label) {
  if (!label) return;
  const int a = axisOf(axis);
  ss::setFixed(label, ss::kAxisLabelWidth, a < 0 ? std::string() : labelWithUnit(*currentSet(), a));
}

void ZW_NPOS(const ZW_SCALE* scale, const float* value, float* fraction) {
  if (!scale || !value || !fraction) return;
  *fraction = ss::isNull(*value) ? ss::kRealNull : asFloat(ss::axisFraction(*scale, *value));
}

void ZW_WPOS(const ZW_SCALE* scale, const float* fraction, float* value) {
  if (!scale || !fraction || !value) return;
  *value = asFloat(ss::axisValue(*scale, *fraction));
}

void ZW_VECNPOS(const ZW_SCALE* scale, const int* n, const float* values, float* fractions) {
  if (!scale || !values || !fractions) return;
  for (int k = 0; k < in(n); ++k) ZW_NPOS(scale, &values[k], &fractions[k]);
}

void ZW_AXNPOS(const int* axis, const float* value, float* fraction) {
  const int a = axisOf(axis);
  if (a < 0) {
    if (fraction) *fraction = ss::kRealNull;
    return;
  }
  ZW_NPOS(&currentSet()->scales[static_cast<std::size_t>(a)], value, fraction);
}

void ZW_SAMESCALE(void) {
  ss::PlotRecord* plot = ss::plotTree().current();
  if (!plot || plot->sets.empty()) return;
  for (int a = 0; a < 2; ++a) {
    float lo = plot->sets[0].scales[static_cast<std::size_t>(a)].MIN;
    float hi = plot->sets[0].scales[static_cast<std::size_t>(a)].MAX;
    for (const ss::PlotSet& s : plot->sets) {
      const ZW_SCALE& sc = s.scales[static_cast<std::size_t>(a)];
      if (!ss::isNull(sc.MIN)) lo = ss::isNull(lo) ? sc.MIN : std::min(lo, sc.MIN);
      if (!ss::isNull(sc.MAX)) hi = ss::isNull(hi) ? sc.MAX : std::max(hi, sc.MAX);
    }
    for (ss::PlotSet& s : plot->sets) {
      s.scales[static_cast<std::size_t>(a)].MIN = lo;
      s.scales[static_cast<std::size_t>(a)].MAX = hi;
    }
  }
  plot->fields.axsame = 1;
}

void ZW_CHECKLABUNIT(const int* axis, int* status) {
  set(status, 0);
  const int a = axisOf(axis);
  if (a < 0) return set(status, 1);
  std::string& label = currentSet()->labels[static_cast<std::size_t>(a)];
  const std::string unit = ss::fixedText(currentSet()->scales[static_cast<std::size_t>(a)].UNIT);
  // A trailing "(...)" is the label's unit; the scale's unit decides.
  std::string base = label;
  if (!base.empty() && base.back() == ')') {
    const std::size_t open = base.rfind('(');
    if (open != std::string::npos) base = ss::trimBlanks(base.substr(0, open));
  }
  const std::string wanted =
      unit.empty() ? base : ss::fieldText(base.empty() ? "(" + unit + ")" : base + " (" + unit + ")", ss::kAxisLabelWidth);
  if (wanted != label) {
    label = wanted;
    set(status, 1);
  }
}

void ZW_AXNAMES(char* text) {
  if (text) ss::setFixed(text, ss::kScaleNames.size(), ss::kScaleNames);
}

void ZW_AXMONTH(const int* month, char* text) {
  if (text) ss::setFixed(text, 3, ss::monthLabel(in(month)));
}

void ZW_AXPROBLAB(const int* index, char* text) {
  if (text) ss::setFixed(text, 2, ss::probabilityLabel(in(index)));
}

}  // extern "C"
