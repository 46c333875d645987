// Logical path prefixes: where a tool's files live, named independently of the machine.
//
//   "deflib:"   definitions shipped with subsurf (x_units.def, coredsdefs.dsdefs, ...)
//               $SUBSURF_DEFLIB, else the source tree's data/ folder when it exists
//               (programs run from a build directory), else the installed data folder.
//   "userlib:"  the user's own files (templates, settings)
//               $SUBSURF_USERLIB, else $XDG_DATA_HOME/subsurf, else ~/.local/share/subsurf.
//   "temp:"     scratch files: $SUBSURF_TEMP, else $TMPDIR, else /tmp.
//   "tempdir:"  a scratch folder of our own: $SUBSURF_TEMPDIR, else <temp>/subsurf.
//   "helppath:" help pages: $SUBSURF_HELPPATH, else <deflib>/help.
// Prefixes are recognised in any letter case. A name without a prefix is returned as given.
#pragma once

#include <string>
#include <string_view>

namespace subsurf {

// The folder behind a prefix such as "userlib:" ("" for an unknown prefix).
std::string logicalFolder(std::string_view prefix);

// "tempdir:sql/create_units.sql" -> "<tempdir>/sql/create_units.sql".
std::string resolvePath(std::string_view logicalName);

// A file name from a location (a folder, or a prefix with an optional sub-folder
// such as "tempdir:sql"), a name and a type (the extension, without the dot;
// empty for none).
std::string makeFileName(std::string_view location, std::string_view name, std::string_view type);

// Creates the folder holding a file (and its parents) when missing; false on failure.
bool ensureParentFolder(const std::string& file);

bool fileExists(const std::string& path);

}  // namespace subsurf
