// Where each tray's depths come from, and filling in the trays that have none
// without touching the ones that have.
//
// A depth a geologist did not give is never put on a tray silently: trays
// whose names hold no interval stay without depths until the user carries
// depths forward, types them or imports a table, and every command counts
// the trays by where their depths came from.
#pragma once

#include <string>
#include <vector>

namespace subsurf {

class CoreSession;
struct CoreImage;

// True when the tray's top and base are both set.
bool hasTrayDepths(const CoreImage& image);

// The rows a tray is laid out in when the user does not say: `given` when 1
// or more, else the image's "Core Number", else its rectangles, else 5.
int coresForTray(const CoreImage& image, int given);

// Gives the image the interval top..base (top above base) and lays its rows
// out in coresForTray(image, cores) rows, in the image's depth unit.
void setTrayDepths(CoreImage& image, float top, float base, int cores);

// A tray that received carried depths: its place and the place of the tray
// they were carried from (both from 1).
struct CarriedTray {
  int place = 0;
  int from = 0;
};

// Carries depths into every image without tray depths from the nearest image
// before it of the same light that has them, trays taken as contiguous and of
// that tray's span (the n-th tray after it starts n spans below its top).
// Images with depths are left exactly as they are; images before the first
// one with depths stay without. Returns the images filled, in session order.
std::vector<CarriedTray> carryIntoMissing(CoreSession& session);

// The images that have tray depths but had none before (hadDepths[k] for
// the image at place k + 1), each with the nearest image before it of the
// same light that had them.
std::vector<CarriedTray> traysGivenDepths(CoreSession& session, const std::vector<bool>& hadDepths);

// Gives the rows without depths of images that have tray depths their place
// in the tray's own layout; rows with depths keep them. Returns how many
// images were changed.
int layOutRowsFromTrayDepths(CoreSession& session);

// Where a tray's depths came from, as far as the session tells: a name that
// reads the same interval, else typed or imported; carried only when the
// command itself carried them.
enum class DepthOrigin { FromName, TypedOrImported, Carried, None };
DepthOrigin depthOriginOf(const CoreImage& image);

struct DepthCounts {
  int fromNames = 0;
  int typedOrImported = 0;
  int carried = 0;
  int without = 0;
  void add(DepthOrigin origin);
  // "depths: 3 read from names, 0 typed or imported, 1 carried, 2 without depths"
  std::string text() const;
};

// The counts of a session; the places in `carried` (from 1) count as carried.
DepthCounts countDepths(CoreSession& session, const std::vector<CarriedTray>& carried = {});

}  // namespace subsurf
