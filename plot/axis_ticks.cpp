#include "plot/axis_ticks.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include <fmt/format.h>

#include "host/fixed_text.h"
#include "plot/axis_scales.h"

namespace subsurf {
namespace {

constexpr double kSecondsPerDay = 86400.0;

std::chrono::sys_days dateEpoch() {
  using namespace std::chrono;
  return sys_days{year{1846} / July / 30};
}

// Labels at their places keep the gap between neighbours.
bool labelsFit(const std::vector<Tick>& ticks, double length, const LabelExtent& extent, double gap) {
  double lastEnd = -1e300;
  std::vector<const Tick*> labelled;
  for (const Tick& t : ticks)
    if (!t.label.empty()) labelled.push_back(&t);
  std::sort(labelled.begin(), labelled.end(), [](const Tick* a, const Tick* b) { return a->fraction < b->fraction; });
  for (const Tick* t : labelled) {
    const double half = extent(t->label) / 2;
    const double at = t->fraction * length;
    if (at - half < lastEnd + gap) return false;
    lastEnd = at + half;
  }
  return true;
}

void addTick(std::vector<Tick>& ticks, const ZW_SCALE& s, double v, std::string label) {
  const double f = axisFraction(s, v);
  // The tolerance lets a tick sit on a limit held in single precision (a date
  // in seconds is only good to some minutes there).
  if (!std::isfinite(f) || f < -1e-5 || f > 1 + 1e-5) return;
  ticks.push_back({v, std::clamp(f, 0.0, 1.0), std::move(label)});
}

std::vector<Tick> steppedTicks(const ZW_SCALE& s, double step, bool withMinors) {
  std::vector<Tick> ticks;
  const double lo = std::min(s.MIN, s.MAX), hi = std::max(s.MIN, s.MAX);
  // Limits are held in single precision: 0.05 is a hair above 2 steps of 0.025.
  const double first = std::ceil(lo / step - 1e-6), last = std::floor(hi / step + 1e-6);
  if (last - first > 1000) return ticks;
  for (double k = first; k <= last; ++k) addTick(ticks, s, k * step, tickLabel(k * step, step));
  if (withMinors) {
    const double mantissa = step / std::pow(10.0, std::floor(std::log10(step) + 1e-9));
    const double minor = step / (std::fabs(mantissa - 2.0) < 1e-6 ? 4.0 : 5.0);
    const double mf = std::ceil(lo / minor - 1e-9), ml = std::floor(hi / minor + 1e-9);
    if (ml - mf <= 2000)
      for (double k = mf; k <= ml; ++k) {
        const double v = k * minor;
        if (std::fabs(v / step - std::round(v / step)) > 1e-6) addTick(ticks, s, v, "");
      }
  }
  return ticks;
}

std::vector<Tick> linearTicks(const ZW_SCALE& s, double length, const LabelExtent& extent, double gap) {
  const double range = std::fabs(static_cast<double>(s.MAX) - s.MIN);
  if (!(range > 0) || !std::isfinite(range)) return {};
  for (int parts = 12; parts >= 1; --parts) {
    const double rough = range / parts;
    const double magnitude = std::pow(10.0, std::floor(std::log10(rough)));
    double step = 10 * magnitude;
    for (double nice : {1.0, 2.0, 2.5, 5.0})
      if (nice * magnitude >= rough * (1 - 1e-9)) {
        step = nice * magnitude;
        break;
      }
    std::vector<Tick> ticks = steppedTicks(s, step, s.TYPE == 1 || s.TYPE == 7 || s.TYPE == 8);
    int labelled = 0;
    for (const Tick& t : ticks) labelled += t.label.empty() ? 0 : 1;
    if (labelled >= 2 && labelsFit(ticks, length, extent, gap)) return ticks;
  }
  // Not even two labels fit: the ends, if they fit, else the lower end alone.
  std::vector<Tick> ends;
  addTick(ends, s, s.MIN, tickLabel(s.MIN, range));
  addTick(ends, s, s.MAX, tickLabel(s.MAX, range));
  if (!labelsFit(ends, length, extent, gap)) ends.resize(1);
  return ends;
}

// The nice step (1, 2, 2.5 or 5 times a power of ten) nearest above rough.
double niceAbove(double rough) {
  const double magnitude = std::pow(10.0, std::floor(std::log10(rough)));
  for (double nice : {1.0, 2.0, 2.5, 5.0})
    if (nice * magnitude >= rough * (1 - 1e-9)) return nice * magnitude;
  return 10 * magnitude;
}

// Square, Sqrt and Recip.: ticks evenly along the axis, each value rounded to
// a nice number for the spacing around it, so they neither crowd one end nor
// leave the other bare.
std::vector<Tick> transformedTicks(const ZW_SCALE& s, double length, const LabelExtent& extent, double gap) {
  for (int parts = 10; parts >= 1; --parts) {
    std::vector<Tick> ticks;
    double last = NAN;
    for (int i = 0; i <= parts; ++i) {
      const double f = static_cast<double>(i) / parts;
      const double v = axisValue(s, f);
      const double spread = std::fabs(axisValue(s, std::min(1.0, f + 0.5 / parts)) - axisValue(s, std::max(0.0, f - 0.5 / parts)));
      if (!std::isfinite(v) || !(spread > 0)) continue;
      const double step = niceAbove(spread / 2);
      const double rounded = std::round(v / step) * step + 0.0;
      if (rounded == last) continue;
      last = rounded;
      std::string label = tickLabel(rounded, step);
      // Steps differ along the axis; "2.0" beside "1.3" reads as "2".
      if (label.find('.') != std::string::npos) {
        label.erase(label.find_last_not_of('0') + 1);
        if (label.back() == '.') label.pop_back();
      }
      addTick(ticks, s, rounded, label);
    }
    if (ticks.size() >= 2 && labelsFit(ticks, length, extent, gap)) return ticks;
  }
  return linearTicks(s, length, extent, gap);
}

std::string powerLabel(int k) {
  if (k >= -4 && k <= 6) return tickLabel(std::pow(10.0, k), std::pow(10.0, std::min(k, 0)));
  return fmt::format("1e{}", k);
}

std::vector<Tick> logTicks(const ZW_SCALE& s, double length, const LabelExtent& extent, double gap) {
  const double lo = std::min(s.MIN, s.MAX), hi = std::max(s.MIN, s.MAX);
  if (!(lo > 0)) return {};
  const int k0 = static_cast<int>(std::floor(std::log10(lo) + 1e-9)), k1 = static_cast<int>(std::ceil(std::log10(hi) - 1e-9));
  const int decades = k1 - k0;
  for (int every : {1, 2, 3, 5, 10, 20, 50}) {
    std::vector<Tick> ticks;
    for (int k = k0; k <= k1; ++k) {
      const double p = std::pow(10.0, k);
      addTick(ticks, s, p, (k % every) == 0 ? powerLabel(k) : "");
      if (decades <= 12)
        for (int m = 2; m <= 9; ++m) {
          const bool labelled = decades < 2 && every == 1 && (m == 2 || m == 5);
          addTick(ticks, s, m * p, labelled ? tickLabel(m * p, p) : "");
        }
    }
    if (labelsFit(ticks, length, extent, gap)) return ticks;
  }
  return {};
}

std::vector<Tick> probabilityTicks(const ZW_SCALE& s, double length, const LabelExtent& extent, double gap) {
  // The middle and the ends first, so crowding drops the inner labels.
  static constexpr double kByPriority[] = {50, 1, 99, 10, 90, 0.1, 99.9, 5, 95, 30, 70, 20, 80, 40, 60};
  std::vector<Tick> ticks;
  for (double p : kByPriority) {
    std::vector<Tick> trial = ticks;
    addTick(trial, s, p, tickLabel(p, p < 1 || p > 99 ? 0.1 : 1.0));
    if (trial.size() > ticks.size() && labelsFit(trial, length, extent, gap)) ticks = std::move(trial);
    else addTick(ticks, s, p, "");
  }
  std::sort(ticks.begin(), ticks.end(), [](const Tick& a, const Tick& b) { return a.fraction < b.fraction; });
  return ticks;
}

std::vector<Tick> dateTicks(const ZW_SCALE& s, double length, const LabelExtent& extent, double gap) {
  using namespace std::chrono;
  const double lo = std::min(s.MIN, s.MAX), hi = std::max(s.MIN, s.MAX);
  const sys_days d0 = dateEpoch() + days(static_cast<long long>(std::floor(lo / kSecondsPerDay)));
  const sys_days d1 = dateEpoch() + days(static_cast<long long>(std::ceil(hi / kSecondsPerDay)));
  const year_month_day a{d0}, b{d1};
  const int m0 = static_cast<int>(a.year()) * 12 + static_cast<int>(static_cast<unsigned>(a.month())) - 1;
  const int m1 = static_cast<int>(b.year()) * 12 + static_cast<int>(static_cast<unsigned>(b.month()));
  if (m1 - m0 > 12 * 2000) return {};
  for (int every : {1, 2, 3, 6, 12, 24, 60, 120, 240, 600, 1200}) {
    std::vector<Tick> ticks;
    bool first = true;
    for (int m = m0; m <= m1; ++m) {
      const int y = m / 12, month = m % 12 + 1;
      const bool major = every < 12 ? (month - 1) % every == 0 : month == 1 && y % (every / 12) == 0;
      if (!major) {
        // Unlabelled ticks at the months between (at the years between for long spans).
        if (every < 12 || (month == 1 && every <= 120)) addTick(ticks, s, dateSeconds(y, month, 1), "");
        continue;
      }
      std::string label = every >= 12 ? std::to_string(y) : monthLabel(month);
      const double v = dateSeconds(y, month, 1);
      if (every < 12 && (month == 1 || first) && v >= lo) label = fmt::format("{} {}", label, y);
      const std::size_t before = ticks.size();
      addTick(ticks, s, v, label);
      if (ticks.size() > before) first = false;
    }
    const auto labelled = std::count_if(ticks.begin(), ticks.end(), [](const Tick& t) { return !t.label.empty(); });
    if (labelled >= 2 && labelsFit(ticks, length, extent, gap)) return ticks;
  }
  return {};
}

}  // namespace

bool isDateScale(const ZW_SCALE& scale) { return lowerCase(fixedText(scale.UNIT)) == "date"; }

double dateSeconds(int year, int month, int day) {
  using namespace std::chrono;
  const sys_days d{std::chrono::year{year} / std::chrono::month{static_cast<unsigned>(month)} /
                   std::chrono::day{static_cast<unsigned>(day)}};
  return static_cast<double>((d - dateEpoch()).count()) * kSecondsPerDay;
}

std::string tickLabel(double value, double step) {
  step = std::fabs(step);
  const double magnitude = std::max(std::fabs(value), step);
  std::string s;
  if (magnitude >= 1e7 || (step > 0 && step < 1e-5)) {
    s = fmt::format("{:.3g}", value);
  } else {
    int decimals = 0;
    while (decimals < 8 && step > 0) {
      const double scaled = step * std::pow(10.0, decimals);
      if (std::fabs(scaled - std::round(scaled)) < 1e-6 * std::max(1.0, scaled)) break;
      ++decimals;
    }
    s = fmt::format("{:.{}f}", value, decimals);
  }
  if (s.find_first_not_of("-0.") == std::string::npos && s.front() == '-') s.erase(0, 1);
  return s;
}

std::vector<Tick> axisTicks(const ZW_SCALE& scale, double axisLength, const LabelExtent& extent, double gap) {
  if (!std::isfinite(axisFraction(scale, scale.MIN)) || !std::isfinite(axisFraction(scale, scale.MAX))) return {};
  if (isDateScale(scale)) return dateTicks(scale, axisLength, extent, gap);
  switch (scale.TYPE) {
    case kLog:
    case kNorm: {
      // Within less than a decade (or between two probability labels) the
      // axis is labelled like a transformed one.
      auto ticks = scale.TYPE == kLog ? logTicks(scale, axisLength, extent, gap) : probabilityTicks(scale, axisLength, extent, gap);
      if (std::count_if(ticks.begin(), ticks.end(), [](const Tick& t) { return !t.label.empty(); }) >= 2) return ticks;
      return transformedTicks(scale, axisLength, extent, gap);
    }
    case kSquare:
    case kSqrt:
    case kRecip: return transformedTicks(scale, axisLength, extent, gap);
    default: return linearTicks(scale, axisLength, extent, gap);
  }
}

}  // namespace subsurf
