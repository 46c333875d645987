#include "core/depth_sources.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "core/core_session.h"
#include "core/image_settings.h"
#include "core/name_depths.h"
#include "core/tray_layout.h"
#include "host/nulls.h"

namespace subsurf {
namespace {

// Depths that agree to half a centimetre are the same (names hold two decimals).
constexpr float kSameDepth = 0.005f;

bool rowHasDepths(const CoreImage& image, int row) {
  const RowDepths d = CoreSession::rowDepth(image, row);
  return !isNull(d.top) && !isNull(d.base);
}

float shiftOf(const CoreImage& image) { return image.realValue(kRealDepthShift); }

}  // namespace

bool hasTrayDepths(const CoreImage& image) {
  return !isNull(image.realValue(kRealTop)) && !isNull(image.realValue(kRealBase));
}

int coresForTray(const CoreImage& image, int given) {
  if (given >= 1) return given;
  const int existing = image.intValue(kIntCoreNumber);
  if (!isNull(existing) && existing >= 1) return existing;
  const int rectangles = CoreSession::rectangleCount(image);
  return rectangles >= 1 ? rectangles : kDefaultCoreCount;
}

void setTrayDepths(CoreImage& image, float top, float base, int cores) {
  const std::string unit = depthUnitOf(image.realSetting(kRealTop));
  layOutTray(image, trayLayoutFor(top, base, coresForTray(image, cores)), top, base, shiftOf(image), unit);
}

std::vector<CarriedTray> carryIntoMissing(CoreSession& session) {
  struct Anchor {
    CoreImage* image = nullptr;
    int place = 0;
    int steps = 0;  // trays of its light since it
  };
  std::map<int, Anchor> anchors;  // by "UV" setting
  std::vector<CarriedTray> filled;
  int place = 0;
  for (CoreImage* image : session.images()) {
    ++place;
    Anchor& anchor = anchors[image->intValue(kIntUV)];
    if (hasTrayDepths(*image)) {
      anchor = Anchor{image, place, 0};
      continue;
    }
    if (!anchor.image) continue;
    ++anchor.steps;
    const CoreImage& from = *anchor.image;
    const float top0 = from.realValue(kRealTop), base0 = from.realValue(kRealBase);
    const TrayLayout layout = trayLayoutFor(top0, base0, coresForTray(from, 0));
    const float top = top0 + static_cast<float>(anchor.steps) * layout.span;
    const float base = base0 + static_cast<float>(anchor.steps) * layout.span;
    layOutTray(*image, layout, top, base, shiftOf(from), depthUnitOf(from.realSetting(kRealTop)));
    filled.push_back({place, anchor.place});
  }
  return filled;
}

std::vector<CarriedTray> traysGivenDepths(CoreSession& session, const std::vector<bool>& hadDepths) {
  std::vector<CarriedTray> given;
  const std::vector<CoreImage*> list = session.images();
  for (std::size_t k = 0; k < list.size() && k < hadDepths.size(); ++k) {
    if (hadDepths[k] || !hasTrayDepths(*list[k])) continue;
    int from = 0;
    for (std::size_t j = k; j-- > 0;) {
      if (hadDepths[j] && list[j]->intValue(kIntUV) == list[k]->intValue(kIntUV)) {
        from = static_cast<int>(j) + 1;
        break;
      }
    }
    given.push_back({static_cast<int>(k) + 1, from});
  }
  return given;
}

int layOutRowsFromTrayDepths(CoreSession& session) {
  int laid = 0;
  for (CoreImage* image : session.images()) {
    if (!hasTrayDepths(*image)) continue;
    const float top = image->realValue(kRealTop), base = image->realValue(kRealBase);
    if (!(top < base)) continue;
    const TrayLayout layout = trayLayoutFor(top, base, coresForTray(*image, 0));
    const std::string unit = depthUnitOf(image->realSetting(kRealTop));
    const int rows = std::min({CoreSession::rectangleCount(*image), layout.rows, kMaxStoredRows});
    bool changed = false;
    for (int row = 1; row <= rows; ++row) {
      if (rowHasDepths(*image, row)) continue;  // typed or laid out before: kept
      const float rowTop = top + static_cast<float>(row - 1) * layout.coreLength;
      setDepth(image->realSetting(rowTopSetting(row)), rowTop, unit);
      setDepth(image->realSetting(rowBaseSetting(row)), std::min(rowTop + layout.coreLength, base), unit);
      changed = true;
    }
    laid += changed ? 1 : 0;
  }
  return laid;
}

DepthOrigin depthOriginOf(const CoreImage& image) {
  if (!hasTrayDepths(image)) return DepthOrigin::None;
  const NameDepths name = readNameDepths(image.sourceFile());
  if (name.read() && std::fabs(name.top - image.realValue(kRealTop)) < kSameDepth &&
      std::fabs(name.base - image.realValue(kRealBase)) < kSameDepth)
    return DepthOrigin::FromName;
  return DepthOrigin::TypedOrImported;
}

void DepthCounts::add(DepthOrigin origin) {
  switch (origin) {
    case DepthOrigin::FromName: ++fromNames; break;
    case DepthOrigin::TypedOrImported: ++typedOrImported; break;
    case DepthOrigin::Carried: ++carried; break;
    case DepthOrigin::None: ++without; break;
  }
}

std::string DepthCounts::text() const {
  return fmt::format("depths: {} read from names, {} typed or imported, {} carried, {} without depths", fromNames,
                     typedOrImported, carried, without);
}

DepthCounts countDepths(CoreSession& session, const std::vector<CarriedTray>& carried) {
  DepthCounts counts;
  int place = 0;
  for (CoreImage* image : session.images()) {
    ++place;
    const bool wasCarried =
        std::any_of(carried.begin(), carried.end(), [place](const CarriedTray& c) { return c.place == place; });
    counts.add(wasCarried && hasTrayDepths(*image) ? DepthOrigin::Carried : depthOriginOf(*image));
  }
  return counts;
}

}  // namespace subsurf
