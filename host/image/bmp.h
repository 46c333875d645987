// Windows bitmap (BMP) files: our own writer and reader.
//
// Row images are written as 24-bit BMP: a 14-byte file header, a 40-byte
// BITMAPINFOHEADER, then the rows from the bottom of the picture to the top,
// each as blue-green-red triples padded to a multiple of four bytes. Every
// program that shows pictures reads this form, and it is written straight from
// the rows in memory without any library in between.
//
// The reader takes the uncompressed forms that scanners and older camera
// software produce (1, 4, 8-bit palette; 16, 24 and 32-bit; rows bottom-up or
// top-down) so that such photographs can be split too, and reads back our own
// row images in the tests.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "host/image/raster.h"
#include "host/status.h"

namespace subsurf::image {

// Bytes in one stored row of a 24-bit BMP of the given width (padded to 4).
std::size_t bmpRowBytes(int width);

// Bytes before the first stored row of the BMP files we write (file header
// and BITMAPINFOHEADER, no palette).
inline constexpr std::size_t kBmpHeaderBytes = 54;

// The headers of a 24-bit bottom-up BMP of w x h pixels, for writers that
// place the rows themselves. Fails for an empty picture or one too large for
// the format (the reason names no file).
Status makeBmpHeader(int w, int h, std::uint8_t (&header)[kBmpHeaderBytes]);

// Writes the rows of source as a 24-bit bottom-up BMP to stream.
// Reasons on failure name no file.
Status writeBmp(RowSource& source, std::FILE* stream);

struct BmpInfo {
  int width = 0;
  int height = 0;        // always positive; see topDown
  bool topDown = false;  // rows stored top row first (negative height in the file)
  int bitsPerPixel = 0;
  int compression = 0;   // 0 plain, 3 bit fields; others are not read
  std::uint32_t pixelOffset = 0;  // where the rows start in the file
  std::size_t rowBytes = 0;       // stored bytes per row, padding included
};

// True when the file starts with the bitmap signature "BM".
bool looksLikeBmp(const std::string& path);

// Reads and checks the headers. Fails for files that are not BMP, that are
// cut short, or that use a form we do not read (run-length compression, ...).
Status readBmpInfo(const std::string& path, BmpInfo& info);

// Reads the pixels as RGB into dst (top row first, dstStride bytes per row,
// room for info.width x info.height pixels).
Status readBmpPixels(const std::string& path, const BmpInfo& info, std::uint8_t* dst,
                     std::size_t dstStride);

// Reads a whole BMP file into a raster.
Status readBmp(const std::string& path, Raster& out);

}  // namespace subsurf::image
