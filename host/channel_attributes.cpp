#include "host/channel_attributes.h"

#include <algorithm>

#include "host/dataset.h"
#include "host/fixed_text.h"
#include "host/nulls.h"
#include "subsurf/host_dataset.h"

namespace subsurf {

ChannelAttributes::ChannelAttributes() {
  for (const char* key : {"ch_type", "ch_size", "ch_id", "ch_jcol"}) declare(key, AttributeKind::Integer);
  declare("ch_name", AttributeKind::Text, 40);
  declare("ch_unit", AttributeKind::Text, 16);
}

void ChannelAttributes::declare(std::string_view key, AttributeKind kind, int width) {
  const std::string k = lowerCase(trimBlanks(key));
  declared_[k] = Declaration{kind, kind == AttributeKind::Text ? std::max(1, width) : 0};
  std::erase_if(values_, [&](const auto& entry) {
    return std::get<2>(entry.first) == k && entry.second.index() != static_cast<std::size_t>(kind) - 1;
  });
}

bool ChannelAttributes::isDeclared(std::string_view key) const {
  return declared_.count(lowerCase(trimBlanks(key))) == 1;
}

int ChannelAttributes::check(int channel, int position, const std::string& key, AttributeKind kind) const {
  if (channel < 0 || position < 1) return kAttributeBadPlace;
  const auto it = declared_.find(key);
  if (it == declared_.end()) return kAttributeUndeclared;
  return it->second.kind == kind ? kAttributeOk : kAttributeWrongKind;
}

int ChannelAttributes::set(int channel, int position, std::string_view key, AttributeKind kind, Value value) {
  const std::string k = lowerCase(trimBlanks(key));
  const int st = check(channel, position, k, kind);
  if (st != kAttributeOk) return st;
  if (auto* text = std::get_if<std::string>(&value)) {
    const std::size_t width = static_cast<std::size_t>(declared_.at(k).width);
    *text = fixedText(text->data(), std::min(width, text->size()));
  }
  values_[Place{channel, position, k}] = std::move(value);
  return kAttributeOk;
}

const ChannelAttributes::Value* ChannelAttributes::find(int channel, int position, std::string_view key,
                                                        AttributeKind kind, int& status) const {
  const std::string k = lowerCase(trimBlanks(key));
  status = check(channel, position, k, kind);
  if (status != kAttributeOk) return nullptr;
  const auto it = values_.find(Place{channel, position, k});
  if (it == values_.end()) status = kAttributeUnset;
  return it == values_.end() ? nullptr : &it->second;
}

int ChannelAttributes::setInteger(int channel, int position, std::string_view key, int value) {
  return set(channel, position, key, AttributeKind::Integer, value);
}
int ChannelAttributes::setReal(int channel, int position, std::string_view key, float value) {
  return set(channel, position, key, AttributeKind::Real, value);
}
int ChannelAttributes::setText(int channel, int position, std::string_view key, std::string_view text) {
  return set(channel, position, key, AttributeKind::Text, std::string(text));
}

int ChannelAttributes::getInteger(int channel, int position, std::string_view key, int& value) const {
  int st = 0;
  if (const Value* v = find(channel, position, key, AttributeKind::Integer, st)) value = std::get<int>(*v);
  return st;
}
int ChannelAttributes::getReal(int channel, int position, std::string_view key, float& value) const {
  int st = 0;
  if (const Value* v = find(channel, position, key, AttributeKind::Real, st)) value = std::get<float>(*v);
  return st;
}
int ChannelAttributes::getText(int channel, int position, std::string_view key, std::string& text) const {
  int st = 0;
  if (const Value* v = find(channel, position, key, AttributeKind::Text, st)) text = std::get<std::string>(*v);
  return st;
}

}  // namespace subsurf

// ---- C routines ---------------------------------------------------------------

namespace {

using namespace subsurf;

constexpr std::size_t kKeyWidth = 16;

// Runs f on the attributes of the dataset of the handle; status 5 when there is none.
template <typename F>
void withAttributes(const int* handle, int* status, F&& f) {
  int st = kAttributeNoDataset;
  try {
    if (Dataset* d = handle ? datasetByHandle(*handle) : nullptr) st = f(d->attributes());
  } catch (...) {
    st = kAttributeNoDataset;
  }
  if (status) *status = st;
}

std::string keyOf(const char* key) { return fixedText(key, kKeyWidth); }

// True when every pointer argument is given; otherwise status 4 is reported.
template <typename... P>
bool given(int* status, const P*... p) {
  if ((... && p)) return true;
  if (status) *status = kAttributeBadPlace;
  return false;
}

}  // namespace

extern "C" {

void DS_DEFKEY(const int* handle, const char* key, const int* kind, const int* width, int* status) {
  withAttributes(handle, status, [&](ChannelAttributes& a) {
    if (!key || !kind || *kind < 1 || *kind > 3) return static_cast<int>(kAttributeWrongKind);
    a.declare(keyOf(key), static_cast<AttributeKind>(*kind), width ? *width : 0);
    return static_cast<int>(kAttributeOk);
  });
}

void DS_SETKEYI(const int* handle, const int* channel, const int* position, const char* key, const int* value,
                int* status) {
  if (!given(status, channel, position, key, value)) return;
  withAttributes(handle, status,
                 [&](ChannelAttributes& a) { return a.setInteger(*channel, *position, keyOf(key), *value); });
}

void DS_SETKEYR(const int* handle, const int* channel, const int* position, const char* key, const float* value,
                int* status) {
  if (!given(status, channel, position, key, value)) return;
  withAttributes(handle, status,
                 [&](ChannelAttributes& a) { return a.setReal(*channel, *position, keyOf(key), *value); });
}

void DS_SETKEYC(const int* handle, const int* channel, const int* position, const char* key, const char* text,
                const int* width, int* status) {
  if (!given(status, channel, position, key, text, width)) return;
  withAttributes(handle, status, [&](ChannelAttributes& a) {
    return a.setText(*channel, *position, keyOf(key), fixedText(text, static_cast<std::size_t>(std::max(0, *width))));
  });
}

void DS_GETKEYI(const int* handle, const int* channel, const int* position, const char* key, int* value,
                int* status) {
  if (!given(status, channel, position, key, value)) return;
  withAttributes(handle, status,
                 [&](ChannelAttributes& a) { return a.getInteger(*channel, *position, keyOf(key), *value); });
}

void DS_GETKEYR(const int* handle, const int* channel, const int* position, const char* key, float* value,
                int* status) {
  if (!given(status, channel, position, key, value)) return;
  withAttributes(handle, status,
                 [&](ChannelAttributes& a) { return a.getReal(*channel, *position, keyOf(key), *value); });
}

void DS_GETKEYC(const int* handle, const int* channel, const int* position, const char* key, char* text,
                const int* width, int* status) {
  if (!given(status, channel, position, key, text, width)) return;
  withAttributes(handle, status, [&](ChannelAttributes& a) {
    std::string value;
    const int st = a.getText(*channel, *position, keyOf(key), value);
    if (st == kAttributeOk) setFixed(text, static_cast<std::size_t>(std::max(0, *width)), value);
    return st;
  });
}

}  // extern "C"
