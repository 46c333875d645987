// Keyed attributes of a dataset's channels: small named values ("ch_name",
// "ch_unit", ...) that describe each channel of each block of a dataset, beside
// the data its parts hold.
//
// A key must be declared (integer, real or text of a width) before values are
// stored under it; every dataset starts with the core keys of a channel
// declared: "ch_type", "ch_size", "ch_id", "ch_jcol" (integers), "ch_name" (40)
// and "ch_unit" (16). Keys ignore letter case. Values are held per (channel,
// position): the channel from 1 (0 for attributes of the whole block, such as
// "bl_ncol") and the block position from 1.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <variant>

namespace subsurf {

enum class AttributeKind { Integer = 1, Real = 2, Text = 3 };

// Status words of the attribute operations.
enum AttributeStatus {
  kAttributeOk = 0,
  kAttributeUnset = 1,       // reading: no value stored for this channel and key
  kAttributeUndeclared = 2,  // no such key declared
  kAttributeWrongKind = 3,   // the key holds another kind of value
  kAttributeBadPlace = 4,    // channel below 0 or position below 1
  kAttributeNoDataset = 5    // no dataset of that handle (C routines)
};

class ChannelAttributes {
 public:
  ChannelAttributes();
  // Declares a key (width: characters of a text, at least 1); a key declared
  // again takes the new kind and width, dropping values of another kind.
  void declare(std::string_view key, AttributeKind kind, int width = 0);
  bool isDeclared(std::string_view key) const;

  int setInteger(int channel, int position, std::string_view key, int value);
  int setReal(int channel, int position, std::string_view key, float value);
  // Text longer than the key's width is cut to it; trailing blanks are dropped.
  int setText(int channel, int position, std::string_view key, std::string_view text);
  int getInteger(int channel, int position, std::string_view key, int& value) const;
  int getReal(int channel, int position, std::string_view key, float& value) const;
  int getText(int channel, int position, std::string_view key, std::string& text) const;

 private:
  struct Declaration {
    AttributeKind kind;
    int width;
  };
  using Value = std::variant<int, float, std::string>;
  using Place = std::tuple<int, int, std::string>;  // channel, position, key in lower case

  int check(int channel, int position, const std::string& key, AttributeKind kind) const;
  int set(int channel, int position, std::string_view key, AttributeKind kind, Value value);
  const Value* find(int channel, int position, std::string_view key, AttributeKind kind, int& status) const;

  std::map<std::string, Declaration> declared_;
  std::map<Place, Value> values_;
};

}  // namespace subsurf
