// The dataset channel-definition routines as exported C functions over
// dictionary/channel_definitions. No exception leaves this file.
#include <memory>

#include "dictionary/channel_definitions.h"
#include "host/messages.h"
#include "subsurf/channel_definitions.h"

namespace {

using namespace subsurf;

// Runs f with the dataset of the handle; status 5 when there is none.
template <typename F>
void withDataset(const int* handle, int* status, F&& f) {
  int st = kAttributeNoDataset;
  try {
    if (Dataset* d = handle ? datasetByHandle(*handle) : nullptr) st = f(*d);
  } catch (const std::exception& e) {
    host::showMessage(e.what());
  } catch (...) {
    host::showMessage("Channel definition routine failed");
  }
  if (status) *status = st;
}

}  // namespace

extern "C" {

void DS_DFLTDSCHAN(DS_CHANDEF* def) {
  if (def) setDefaults(*def);
}

void DS_AXDFLT(DS_AXDEF* axis) {
  if (axis) setDefaults(*axis);
}

void DS_GETDSCHAN(const int* handle, const int* channel, const int* position, DS_CHANDEF* def, int* status) {
  if (!def) return;
  setDefaults(*def);
  withDataset(handle, status, [&](Dataset& d) {
    if (!channel || !position) return static_cast<int>(kAttributeBadPlace);
    return readChannelDefinition(d.attributes(), *channel, *position, *def);
  });
}

void DS_SETDSCHAN(const int* handle, const int* channel, const int* position, const DS_CHANDEF* def,
                  int* status) {
  withDataset(handle, status, [&](Dataset& d) {
    if (!channel || !position || !def) return static_cast<int>(kAttributeBadPlace);
    return writeChannelDefinition(d.attributes(), *channel, *position, *def);
  });
}

void DS_DEFDSCHAN(const int* handle, int* status) {
  withDataset(handle, status, [&](Dataset& d) {
    declareChannelAttributes(d.attributes());
    return static_cast<int>(kAttributeOk);
  });
}

void DS_DSCHANDEF(const int* handle, const int* nchan, const int* position, int* grid, int* status) {
  if (grid) *grid = 0;
  withDataset(handle, status, [&](Dataset& d) {
    if (!nchan || !position || !grid) return static_cast<int>(kAttributeBadPlace);
    auto made = std::make_unique<Dataset>("chandef");
    defineChannelGrid(*made);
    const int st = fillChannelGrid(d, *nchan, *position, *made);
    if (st == kAttributeOk) *grid = registerDataset(std::move(made));
    return st;
  });
}

void DS_GETDSCHANDEF(const int* handle, const int* nchan, const int* position, const int* grid, int* status) {
  withDataset(handle, status, [&](Dataset& d) {
    Dataset* g = grid ? datasetByHandle(*grid) : nullptr;
    if (!g) return static_cast<int>(kAttributeNoDataset);
    if (!nchan || !position) return static_cast<int>(kAttributeBadPlace);
    defineChannelGrid(*g);
    return fillChannelGrid(d, *nchan, *position, *g);
  });
}

void DS_SETDSCHANDEF(const int* grid, const int* handle, const int* position, int* status) {
  withDataset(handle, status, [&](Dataset& d) {
    const Dataset* g = grid ? datasetByHandle(*grid) : nullptr;
    if (!g) return static_cast<int>(kAttributeNoDataset);
    if (!position) return static_cast<int>(kAttributeBadPlace);
    return applyChannelGrid(*g, d, *position);
  });
}

}  // extern "C"
