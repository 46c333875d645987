# Writes OUT, a C++ file holding the files of the folder DIR as PageAssets.
file(GLOB FILES ${DIR}/*)
list(SORT FILES)
set(body "")
set(table "")
set(n 0)
foreach(file ${FILES})
  get_filename_component(name ${file} NAME)
  get_filename_component(ext ${file} EXT)
  set(type "application/octet-stream")
  if(ext STREQUAL ".html")
    set(type "text/html; charset=utf-8")
  elseif(ext STREQUAL ".css")
    set(type "text/css; charset=utf-8")
  elseif(ext STREQUAL ".js")
    set(type "text/javascript; charset=utf-8")
  elseif(ext STREQUAL ".svg")
    set(type "image/svg+xml")
  endif()
  file(READ ${file} hex HEX)
  string(LENGTH "${hex}" length)
  math(EXPR size "${length} / 2")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${hex}")
  string(APPEND body "const char kFile${n}[] = {${bytes} 0};\n")
  string(APPEND table "    {\"${name}\", \"${type}\", std::string_view(kFile${n}, ${size})},\n")
  math(EXPR n "${n} + 1")
endforeach()
file(WRITE ${OUT}.tmp "// Made by editor/embed_page.cmake from editor/page/; do not edit.
#include \"editor/page_assets.h\"

namespace subsurf::editor {
namespace {
${body}
const PageAsset kAssets[] = {
${table}};
}  // namespace

const PageAsset* findPageAsset(std::string_view name) {
  for (const PageAsset& a : kAssets)
    if (a.name == name) return &a;
  return nullptr;
}

}  // namespace subsurf::editor
")
file(RENAME ${OUT}.tmp ${OUT})
