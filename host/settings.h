// Application settings read by key (such as "datefmt").
//
// A setting is looked up first in the environment, as SUBSURF_<KEY> with the key
// in upper case and non-alphanumerics as underscores, then in the settings file
// "userlib:settings.cfg", whose records are "key,value". Keys ignore case.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace subsurf {

std::optional<std::string> setting(std::string_view key);
// The file consulted after the environment.
std::string settingsFile();

}  // namespace subsurf
