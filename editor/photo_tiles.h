// Pictures of a tray photograph for the editor page, made with libvips.
//
// A 24-megapixel photograph is far more than a screen shows, so the page gets
//   * the whole photo reduced (its longer side at most a given size), which
//     libvips makes while decoding (JPEG shrink-on-load), in well under a
//     second; and
//   * square tiles of kTileSize pixels at reduction levels 0 (full
//     resolution), 1 (half), 2 (quarter) ..., cut from the decoded photo that
//     is kept for the photo last asked for, so panning at full resolution
//     costs one crop per tile.
// Everything is upright (the camera's orientation tag applied) and encoded as
// JPEG.
#pragma once

#include <mutex>
#include <string>

#include "host/status.h"

namespace subsurf::editor {

inline constexpr int kTileSize = 512;
inline constexpr int kMostReducedSide = 4096;
inline constexpr int kMostTileLevel = 8;

class PhotoTiles {
 public:
  PhotoTiles();
  ~PhotoTiles();
  PhotoTiles(const PhotoTiles&) = delete;
  PhotoTiles& operator=(const PhotoTiles&) = delete;

  // The whole photo with its longer side at most `longest` pixels (never enlarged).
  Status reduced(const std::string& path, int longest, std::string& jpeg);
  // Tile (column, row) of reduction level `level`: the photo's pixels
  // [column * 512 * 2^level, ...) shrunk by 2^level. Tiles at the right and
  // bottom edges are smaller; a tile beyond the photo is an error.
  Status tile(const std::string& path, int level, int column, int row, std::string& jpeg);

 private:
  struct Decoded;
  std::mutex mutex_;
  Decoded* decoded_ = nullptr;  // the photo last tiled
};

}  // namespace subsurf::editor
