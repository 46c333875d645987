#include "dictionary/channel_definitions.h"

#include <cmath>
#include <cstddef>
#include <cstring>

#include "host/fixed_text.h"
#include "host/nulls.h"

namespace subsurf {
namespace {

// One keyed attribute of the record: where it lives and how wide it is.
struct KeyedField {
  const char* key;
  AttributeKind kind;
  std::size_t offset;
  std::size_t width;  // characters of a text field
};

constexpr AttributeKind kInt = AttributeKind::Integer;
constexpr AttributeKind kReal = AttributeKind::Real;
constexpr AttributeKind kText = AttributeKind::Text;

// The order in which the attributes are read.
constexpr KeyedField kReadOrder[] = {
    {"ch_type", kInt, offsetof(DS_CHANDEF, ITYPE), 0},   {"ch_size", kInt, offsetof(DS_CHANDEF, ISIZE), 0},
    {"ch_id", kInt, offsetof(DS_CHANDEF, ID), 0},        {"ch_jcol", kInt, offsetof(DS_CHANDEF, JCOL), 0},
    {"ch_imer", kInt, offsetof(DS_CHANDEF, IMER), 0},    {"ch_iser", kInt, offsetof(DS_CHANDEF, ISER), 0},
    {"ch_r1", kReal, offsetof(DS_CHANDEF, R1), 0},       {"ch_r2", kReal, offsetof(DS_CHANDEF, R2), 0},
    {"ch_name", kText, offsetof(DS_CHANDEF, NAME), 40},  {"ch_unit", kText, offsetof(DS_CHANDEF, UNIT), 16},
    {"ch_tool", kText, offsetof(DS_CHANDEF, TOOL), 20},  {"ch_group", kText, offsetof(DS_CHANDEF, GROUP), 20},
    {"ch_spec", kText, offsetof(DS_CHANDEF, SPEC), 20},  {"ch_desc", kText, offsetof(DS_CHANDEF, DESC), 260},
    {"ch_sour", kText, offsetof(DS_CHANDEF, SOUR), 64},
};
// Writing adds the use flag after the six integers read.
constexpr KeyedField kUseFlag = {"ch_use", kInt, offsetof(DS_CHANDEF, IUSE), 0};
constexpr int kIntegersRead = 6;

template <typename T>
T& member(DS_CHANDEF& def, const KeyedField& f) {
  return *reinterpret_cast<T*>(reinterpret_cast<char*>(&def) + f.offset);
}
template <typename T>
const T& member(const DS_CHANDEF& def, const KeyedField& f) {
  return *reinterpret_cast<const T*>(reinterpret_cast<const char*>(&def) + f.offset);
}
char* textMember(DS_CHANDEF& def, const KeyedField& f) { return reinterpret_cast<char*>(&def) + f.offset; }
const char* textMember(const DS_CHANDEF& def, const KeyedField& f) {
  return reinterpret_cast<const char*>(&def) + f.offset;
}

// A missing attribute keeps its default; anything else the store says is passed back.
bool isFailure(int status) { return status != kAttributeOk && status != kAttributeUnset && status != kAttributeUndeclared; }

int readField(const ChannelAttributes& a, int channel, int position, const KeyedField& f, DS_CHANDEF& def) {
  switch (f.kind) {
    case kInt: return a.getInteger(channel, position, f.key, member<int>(def, f));
    case kReal: return a.getReal(channel, position, f.key, member<float>(def, f));
    default: {
      std::string text;
      const int st = a.getText(channel, position, f.key, text);
      if (st == kAttributeOk) setFixed(textMember(def, f), f.width, text);
      return st;
    }
  }
}

int writeField(ChannelAttributes& a, int channel, int position, const KeyedField& f, const DS_CHANDEF& def) {
  switch (f.kind) {
    case kInt: return a.setInteger(channel, position, f.key, member<int>(def, f));
    case kReal: return a.setReal(channel, position, f.key, member<float>(def, f));
    default: return a.setText(channel, position, f.key, fixedText(textMember(def, f), f.width));
  }
}

float gridReal(int v) { return isNull(v) ? kRealNull : static_cast<float>(v); }
int gridInteger(float v) { return isNull(v) ? kIntNull : static_cast<int>(std::lround(v)); }

// Grid columns (from 1) and the record fields they show.
enum GridColumn { kUse = 1, kName, kType, kSize, kIser, kId, kUnit, kSpec, kTool, kDesc, kMerge };

struct GridText {
  int column;
  std::size_t offset;
  int width;
};
constexpr GridText kGridTexts[] = {{kName, offsetof(DS_CHANDEF, NAME), 40},
                                   {kUnit, offsetof(DS_CHANDEF, UNIT), 16},
                                   {kSpec, offsetof(DS_CHANDEF, SPEC), 20},
                                   {kTool, offsetof(DS_CHANDEF, TOOL), 20},
                                   {kDesc, offsetof(DS_CHANDEF, DESC), 260}};
struct GridNumber {
  int column;
  std::size_t offset;
};
constexpr GridNumber kGridNumbers[] = {{kUse, offsetof(DS_CHANDEF, IUSE)},  {kType, offsetof(DS_CHANDEF, ITYPE)},
                                       {kSize, offsetof(DS_CHANDEF, ISIZE)}, {kIser, offsetof(DS_CHANDEF, ISER)},
                                       {kId, offsetof(DS_CHANDEF, ID)},      {kMerge, offsetof(DS_CHANDEF, IMER)}};

int& numberAt(DS_CHANDEF& def, std::size_t offset) {
  return *reinterpret_cast<int*>(reinterpret_cast<char*>(&def) + offset);
}
char* textAt(DS_CHANDEF& def, std::size_t offset) { return reinterpret_cast<char*>(&def) + offset; }

}  // namespace

void setDefaults(DS_CHANDEF& def) {
  def.ITYPE = def.ISIZE = def.ISER = def.ID = def.IMER = kIntNull;
  def.IUSE = 1;
  def.IX1 = def.IX2 = kIntNull;
  def.JCOL = kIntNull;
  def.R1 = def.R2 = kRealNull;
  blankFixed(def.UNIT, sizeof def.UNIT);
  blankFixed(def.SPEC, sizeof def.SPEC);
  blankFixed(def.TOOL, sizeof def.TOOL);
  blankFixed(def.GROUP, sizeof def.GROUP);
  blankFixed(def.NAME, sizeof def.NAME);
  blankFixed(def.SOUR, sizeof def.SOUR);
  blankFixed(def.DESC, sizeof def.DESC);
}

void setDefaults(DS_AXDEF& axis) {
  axis.IAX = kIntNull;
  axis.I1 = 1;
  axis.I2 = 2;
  for (float& r : axis.R) r = kRealNull;
  blankFixed(axis.TITLE, sizeof axis.TITLE);
}

void declareChannelAttributes(ChannelAttributes& a) {
  a.declare("ch_tool", kText, 20);
  a.declare("ch_group", kText, 20);
  a.declare("ch_spec", kText, 20);
  a.declare("ch_desc", kText, 260);
  a.declare("ch_sour", kText, 64);
  for (const char* key : {"ch_imer", "ch_iser", "ch_use", "bl_ncol"}) a.declare(key, kInt);
  a.declare("ch_r1", kReal);
  a.declare("ch_r2", kReal);
}

int readChannelDefinition(const ChannelAttributes& a, int channel, int position, DS_CHANDEF& def) {
  setDefaults(def);
  if (channel < 1 || position < 1) return kAttributeBadPlace;
  for (const KeyedField& f : kReadOrder) {
    const int st = readField(a, channel, position, f, def);
    if (isFailure(st)) return st;
  }
  return kAttributeOk;
}

int writeChannelDefinition(ChannelAttributes& a, int channel, int position, const DS_CHANDEF& def) {
  if (channel < 1 || position < 1) return kAttributeBadPlace;
  int written = 0;
  for (const KeyedField& f : kReadOrder) {
    if (const int st = writeField(a, channel, position, f, def); st != kAttributeOk) return st;
    if (++written == kIntegersRead) {
      if (const int st = writeField(a, channel, position, kUseFlag, def); st != kAttributeOk) return st;
    }
  }
  return kAttributeOk;
}

void defineChannelGrid(Dataset& grid) {
  DatasetPart& block = grid.part(kBlockGridPart);
  block.defineColumn(DatasetColumn{1, "Columns", false, 0, "", "Number of channel columns in the block"});
  DatasetPart& chans = grid.part(kChannelGridPart);
  for (int column = 1; column <= static_cast<int>(kChannelGridHeads.size()); ++column) {
    DatasetColumn c{column, kChannelGridHeads[static_cast<std::size_t>(column - 1)], false, 0, "", ""};
    for (const GridText& t : kGridTexts) {
      if (t.column == column) {
        c.text = true;
        c.width = t.width;
      }
    }
    chans.defineColumn(c);
  }
}

int fillChannelGrid(const Dataset& source, int nchan, int position, Dataset& grid) {
  const ChannelAttributes& a = source.attributes();
  DatasetPart& chans = grid.part(kChannelGridPart);
  chans.setRecordCount(std::max(0, nchan));
  for (int channel = 1; channel <= nchan; ++channel) {
    DS_CHANDEF def;
    if (const int st = readChannelDefinition(a, channel, position, def); st != kAttributeOk) return st;
    a.getInteger(channel, position, "ch_use", def.IUSE);  // kept at 1 when never written
    for (const GridNumber& n : kGridNumbers) chans.setReal(channel, n.column, gridReal(numberAt(def, n.offset)));
    for (const GridText& t : kGridTexts)
      chans.setText(channel, t.column, fixedText(textAt(def, t.offset), static_cast<std::size_t>(t.width)));
  }
  int ncol = kIntNull;
  a.getInteger(0, position, "bl_ncol", ncol);
  grid.part(kBlockGridPart).setRecordCount(1);
  grid.part(kBlockGridPart).setReal(1, 1, gridReal(ncol));
  return kAttributeOk;
}

int applyChannelGrid(const Dataset& grid, Dataset& target, int position) {
  ChannelAttributes& a = target.attributes();
  const DatasetPart* chans = grid.findPart(kChannelGridPart);
  if (!chans) return kAttributeOk;
  for (int channel = 1; channel <= chans->recordCount(); ++channel) {
    DS_CHANDEF def;
    if (const int st = readChannelDefinition(a, channel, position, def); st != kAttributeOk) return st;
    for (const GridNumber& n : kGridNumbers) {
      float v = kRealNull;
      chans->getReal(channel, n.column, v);
      numberAt(def, n.offset) = gridInteger(v);
    }
    for (const GridText& t : kGridTexts) {
      std::string text;
      chans->getText(channel, t.column, text);
      setFixed(textAt(def, t.offset), static_cast<std::size_t>(t.width), text);
    }
    if (const int st = writeChannelDefinition(a, channel, position, def); st != kAttributeOk) return st;
  }
  if (const DatasetPart* block = grid.findPart(kBlockGridPart)) {
    float ncol = kRealNull;
    if (block->getReal(1, 1, ncol) == 0 && !isNull(ncol)) {
      if (const int st = a.setInteger(0, position, "bl_ncol", gridInteger(ncol)); st != kAttributeOk) return st;
    }
  }
  return kAttributeOk;
}

}  // namespace subsurf
