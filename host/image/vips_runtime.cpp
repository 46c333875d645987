#include "host/image/vips_runtime.h"

#include <vips/vips8>

#include <cstdlib>
#include <mutex>
#include <string>

#include "host/fixed_text.h"

namespace subsurf::image {
namespace {

Status startVips() {
  // libvips finds its format modules under $VIPSHOME/lib; pointing VIPSHOME at
  // a folder without modules keeps them out. A VIPSHOME set by the user wins.
  const char* wantModules = std::getenv("SUBSURF_VIPS_MODULES");
  const bool loadModules = wantModules != nullptr && std::string(wantModules) == "1";
  if (!loadModules && std::getenv("VIPSHOME") == nullptr) {
    ::setenv("VIPSHOME", "/nonexistent-subsurf-vips-home", 0);
  }
  if (VIPS_INIT("subsurf") != 0) {
    return Status::error("the libvips image library could not be started: " + takeVipsError());
  }
  vips_cache_set_max(0);
  vips_cache_set_max_mem(0);
  vips_cache_set_max_files(0);
  vips_leak_set(FALSE);
  // One worker per photograph: decoding a JPEG is serial anyway, and the
  // programs run several photographs side by side, so more workers would
  // only add threads and buffers. VIPS_CONCURRENCY still overrides this.
  if (std::getenv("VIPS_CONCURRENCY") == nullptr) vips_concurrency_set(1);
  // libvips also prints warnings of its own (such as "error in tile ...")
  // for faults that reach us as errors anyway; a library inside someone
  // else's program should not write to its terminal.
  if (std::getenv("SUBSURF_VIPS_WARNINGS") == nullptr) {
    g_log_set_handler("VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE),
                      [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
  }
  return Status::ok();
}

}  // namespace

Status ensureVips() {
  static std::once_flag once;
  static Status result;
  std::call_once(once, [] { result = startVips(); });
  return result;
}

std::string takeVipsError() {
  std::string text = trimBlanks(vips_error_buffer());
  vips_error_clear();
  // libvips ends each of its lines with a newline; a message box wants one line.
  for (char& c : text)
    if (c == '\n') c = ' ';
  return text;
}

}  // namespace subsurf::image
