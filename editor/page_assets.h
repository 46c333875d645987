// The editor page's files, built into the program so that the page works
// offline and nothing is fetched from anywhere else. The files live in
// editor/page/ and are embedded when the program is built.
#pragma once

#include <string_view>

namespace subsurf::editor {

struct PageAsset {
  std::string_view name;  // "editor.html"
  std::string_view type;  // "text/html; charset=utf-8"
  std::string_view content;
};

// nullptr when there is no such file.
const PageAsset* findPageAsset(std::string_view name);

}  // namespace subsurf::editor
