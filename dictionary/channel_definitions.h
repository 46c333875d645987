// Dataset channel definitions: the record that describes a channel of a host
// dataset, kept in the dataset as keyed attributes of that channel, and the
// grid in which a user sees and edits the definitions of a block's channels.
#pragma once

#include <array>
#include <string>

#include "host/channel_attributes.h"
#include "host/dataset.h"
#include "subsurf/channel_definitions.h"

namespace subsurf {

void setDefaults(DS_CHANDEF& def);
void setDefaults(DS_AXDEF& axis);

// Declares the keys beyond the core ones that every dataset has (see
// subsurf/channel_definitions.h).
void declareChannelAttributes(ChannelAttributes& attributes);
// Status words of the attribute store; a missing attribute is not a failure.
int readChannelDefinition(const ChannelAttributes& attributes, int channel, int position, DS_CHANDEF& def);
int writeChannelDefinition(ChannelAttributes& attributes, int channel, int position, const DS_CHANDEF& def);

// The grid: part "Chans", one record per channel, columns in this order.
inline constexpr const char* kChannelGridPart = "Chans";
inline constexpr const char* kBlockGridPart = "Attributes";
inline constexpr std::array<const char*, 11> kChannelGridHeads = {"Use",  "Name", "Type", "Size", "ISER", "ID",
                                                                  "Unit", "Spec", "Tool", "Desc", "Merge"};
// Defines the grid's parts and columns in an empty dataset.
void defineChannelGrid(Dataset& grid);
// Fills the grid with the definitions of channels 1..nchan of block `position`.
int fillChannelGrid(const Dataset& source, int nchan, int position, Dataset& grid);
// Writes every record of the grid back as the definition of its channel.
int applyChannelGrid(const Dataset& grid, Dataset& target, int position);

}  // namespace subsurf
