// Cutting several row images out of a JPEG photograph in one streaming pass.
//
// The general way (Photo) decodes a whole photograph into memory and then
// cuts each row from it: for a 24-megapixel tray that is 72 MB written and
// read again, more than a third as much time again as the decoding itself.
// Most trays, though, are photographed upright as JPEG and their rows are
// plain rectangles. For those this cutter decodes the photograph top to
// bottom a strip of scanlines at a time and hands every decoded scanline to
// each row image whose box covers it, so all rows come out of one decoding
// pass and no whole photograph is ever held. Bands no row needs (the tray's
// frame, the gaps between rows) are only entropy-decoded, and only the
// columns the rows span are turned into pixels.
//
// The pixels are the very ones the general way gives: the same libjpeg
// decoder with its default settings (accurate integer inverse DCT, smooth
// chroma upsampling), as libvips uses them.
//
// Row images are written as BMP, bottom row first as that format stores them:
// each file is sized up front and every strip lands at its own offset.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/image/raster.h"
#include "host/status.h"

namespace subsurf::image {

struct JpegRowCut {
  PixelBox box;      // lies wholly on the photograph and is not empty
  std::string path;  // the BMP file to write (through a temporary name)
};

class JpegRowCutter {
 public:
  JpegRowCutter();
  ~JpegRowCutter();
  JpegRowCutter(const JpegRowCutter&) = delete;
  JpegRowCutter& operator=(const JpegRowCutter&) = delete;

  // Reads the photograph's headers. False, with nothing shown, when it is not
  // a JPEG this cutter can take: not JPEG at all, damaged, not three colour
  // components, or stored turned (EXIF orientation other than upright). The
  // caller then goes the general way, which also gives the user's messages.
  bool open(const std::string& path);
  int width() const;
  int height() const;

  // Decodes the opened photograph once and writes every cut as a BMP. False
  // when the decoder failed or warned about the data (a damaged or truncated
  // file): then no file is left behind and the caller goes the general way,
  // which decides and words what the user is told. Otherwise results[i] says
  // whether cuts[i] was written, with the reason (naming no file) when not;
  // each file is complete under its name or absent.
  bool cutToBmp(const std::vector<JpegRowCut>& cuts, std::vector<Status>& results);

 private:
  struct Decoder;
  std::unique_ptr<Decoder> decoder_;
};

}  // namespace subsurf::image
