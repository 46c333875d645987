#include "host/image/jpeg_row_cutter.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <jpeglib.h>

#include "host/image/atomic_output.h"
#include "host/image/pixel_limit.h"
#include "host/image/bmp.h"

namespace subsurf::image {
namespace {

// The EXIF orientation in an APP1 marker's data: 1 to 8, 1 when the marker
// is EXIF without the tag, 0 when the data cannot be read with certainty.
int exifOrientation(const std::uint8_t* data, std::size_t size) {
  static const std::uint8_t kExif[6] = {'E', 'x', 'i', 'f', 0, 0};
  if (size < 14 || std::memcmp(data, kExif, 6) != 0) return -1;  // some other APP1 (XMP)
  const std::uint8_t* tiff = data + 6;
  const std::size_t n = size - 6;
  const bool little = tiff[0] == 'I' && tiff[1] == 'I';
  if (!little && !(tiff[0] == 'M' && tiff[1] == 'M')) return 0;
  auto get16 = [&](std::size_t at) -> unsigned {
    return little ? tiff[at] | (tiff[at + 1] << 8) : (tiff[at] << 8) | tiff[at + 1];
  };
  auto get32 = [&](std::size_t at) -> std::size_t { return little ? get16(at) | (std::size_t{get16(at + 2)} << 16)
                                                                  : (std::size_t{get16(at)} << 16) | get16(at + 2); };
  const std::size_t ifd = get32(4);
  if (ifd + 2 > n) return 0;
  const unsigned entries = get16(ifd);
  for (unsigned i = 0; i < entries; ++i) {
    const std::size_t e = ifd + 2 + 12 * std::size_t{i};
    if (e + 12 > n) return 0;
    if (get16(e) == 0x0112) {  // Orientation, a SHORT
      if (get16(e + 2) != 3 || get32(e + 4) != 1) return 0;
      const unsigned v = get16(e + 8);
      return v >= 1 && v <= 8 ? static_cast<int>(v) : 0;
    }
  }
  return 1;
}

}  // namespace

// libjpeg reports errors by calling back, expecting not to be returned to: a
// failure, and any warning about the data, jumps back to the setjmp in the
// method that called the decoder. State that must survive the jump lives in
// this object (reached through a pointer that does not change), never in
// local variables.
struct JpegRowCutter::Decoder {
  jpeg_decompress_struct info{};
  struct Errors {
    jpeg_error_mgr mgr;
    std::jmp_buf jump;
  } errors{};
  std::FILE* file = nullptr;
  bool created = false;

  // Per pass: the open outputs and the strip of decoded scanlines.
  std::vector<std::unique_ptr<AtomicOutput>> outputs;
  std::vector<std::uint8_t> strip;
  std::vector<std::uint8_t> block;
  std::vector<JSAMPROW> rowPointers;  // into strip, one a scanline

  ~Decoder() {
    if (created) jpeg_destroy_decompress(&info);
    if (file != nullptr) std::fclose(file);
  }

  static void fail(j_common_ptr cinfo) {
    std::longjmp(reinterpret_cast<Errors*>(cinfo->err)->jump, 1);
  }
  static void message(j_common_ptr cinfo, int level) {
    // Warnings (level -1) are about the data itself; the general way decides
    // what to make of them. Trace messages (level >= 0) are of no interest.
    if (level < 0) fail(cinfo);
  }
};

JpegRowCutter::JpegRowCutter() = default;
JpegRowCutter::~JpegRowCutter() = default;

int JpegRowCutter::width() const { return decoder_ ? static_cast<int>(decoder_->info.image_width) : 0; }
int JpegRowCutter::height() const { return decoder_ ? static_cast<int>(decoder_->info.image_height) : 0; }

bool JpegRowCutter::open(const std::string& path) {
  decoder_.reset();
  auto d = std::make_unique<Decoder>();
  d->file = std::fopen(path.c_str(), "rb");
  if (d->file == nullptr) return false;
  unsigned char magic[3] = {};
  if (std::fread(magic, 1, 3, d->file) != 3 || magic[0] != 0xFF || magic[1] != 0xD8 || magic[2] != 0xFF) return false;
  std::rewind(d->file);

  Decoder* dp = d.get();
  dp->info.err = jpeg_std_error(&dp->errors.mgr);
  dp->errors.mgr.error_exit = &Decoder::fail;
  dp->errors.mgr.emit_message = &Decoder::message;
  if (setjmp(dp->errors.jump) != 0) return false;  // d's destructor tidies up
  jpeg_create_decompress(&dp->info);
  dp->created = true;
  jpeg_stdio_src(&dp->info, dp->file);
  jpeg_save_markers(&dp->info, JPEG_APP0 + 1, 0xFFFF);
  if (jpeg_read_header(&dp->info, TRUE) != JPEG_HEADER_OK) return false;
  // Too large a picture is refused by the general way, which says so.
  if (!checkPixelCount(dp->info.image_width, dp->info.image_height)) return false;
  if (dp->info.num_components != 3 ||
      (dp->info.jpeg_color_space != JCS_YCbCr && dp->info.jpeg_color_space != JCS_RGB)) {
    return false;
  }
  for (jpeg_saved_marker_ptr m = dp->info.marker_list; m != nullptr; m = m->next) {
    if (m->marker != JPEG_APP0 + 1) continue;
    const int orientation = exifOrientation(m->data, m->data_length);
    if (orientation == -1) continue;
    if (orientation != 1) return false;
    break;  // the first EXIF block is the one that counts
  }
  decoder_ = std::move(d);
  return true;
}

bool JpegRowCutter::cutToBmp(const std::vector<JpegRowCut>& cuts, std::vector<Status>& results) {
  results.assign(cuts.size(), Status::ok());
  if (!decoder_) return false;
  Decoder* d = decoder_.get();
  jpeg_decompress_struct& info = d->info;
  const int width = this->width();
  const int height = this->height();
  for (const JpegRowCut& cut : cuts) {
    if (cut.box.empty() || cut.box.left < 0 || cut.box.top < 0 || cut.box.right() > width ||
        cut.box.bottom() > height) {
      return false;
    }
  }

  // Every file is created, headed and sized before decoding starts, so that
  // each strip of rows can be written straight to its place. A file that
  // cannot be made fails on its own; the others go on.
  d->outputs.clear();
  for (std::size_t i = 0; i < cuts.size(); ++i) {
    auto out = std::make_unique<AtomicOutput>(cuts[i].path);
    const PixelBox& box = cuts[i].box;
    std::uint8_t header[kBmpHeaderBytes];
    Status s = makeBmpHeader(box.width, box.height, header);
    if (s) s = out->open();
    if (s) {
      const int fd = ::fileno(out->stream());
      const off_t size = static_cast<off_t>(kBmpHeaderBytes + bmpRowBytes(box.width) * box.height);
      if (::pwrite(fd, header, sizeof header, 0) != static_cast<ssize_t>(sizeof header) ||
          ::ftruncate(fd, size) != 0) {
        s = Status::error("cannot write the file: " + errnoText(errno));
      }
    }
    if (!s) {
      out->discard();
      out.reset();
      results[i] = s;
    }
    d->outputs.push_back(std::move(out));
  }

  if (setjmp(d->errors.jump) != 0) {
    jpeg_abort_decompress(&info);
    for (auto& out : d->outputs)
      if (out) out->discard();
    d->outputs.clear();
    return false;
  }

  // Blue-green-red, the order BMP stores, straight from the decoder's colour
  // conversion. Everything else stays at libjpeg's defaults.
  info.out_color_space = JCS_EXT_BGR;
  jpeg_start_decompress(&info);

  // Only the columns the rows span are made into pixels. libjpeg starts the
  // span on a block boundary; a block's width more on either side keeps the
  // pixels used clear of the span's edges, where smooth chroma upsampling
  // would see no neighbour and give other values than a full decode.
  const int margin = info.max_h_samp_factor * DCTSIZE;
  int left = width, right = 0;
  for (const JpegRowCut& cut : cuts) {
    left = std::min(left, cut.box.left);
    right = std::max(right, cut.box.right());
  }
  JDIMENSION x0 = static_cast<JDIMENSION>(std::max(0, left - margin));
  JDIMENSION spanWidth = static_cast<JDIMENSION>(std::min(width, right + margin)) - x0;
  if (spanWidth < info.output_width) jpeg_crop_scanline(&info, &x0, &spanWidth);
  const std::size_t stripStride = 3 * static_cast<std::size_t>(info.output_width);

  // Strips of about a megabyte: few enough writes, small beside anything else.
  const int stripRows = static_cast<int>(std::clamp<std::size_t>((1u << 20) / stripStride, 8, 256));
  d->strip.resize(stripStride * stripRows);
  d->rowPointers.resize(stripRows);
  for (int i = 0; i < stripRows; ++i) d->rowPointers[i] = d->strip.data() + stripStride * i;

  while (static_cast<int>(info.output_scanline) < height) {
    const int y = static_cast<int>(info.output_scanline);
    // The next scanline some row needs. The last scanline is always decoded:
    // skipping it would end the pass without reading the rest of the data,
    // and a file cut short there would go unnoticed.
    int next = height - 1;
    for (const JpegRowCut& cut : cuts) {
      if (cut.box.bottom() > y) next = std::min(next, std::max(y, cut.box.top));
    }
    if (next > y) {
      // Skipping still reads the compressed data, so damage there is noticed
      // as it would be by a full decode.
      jpeg_skip_scanlines(&info, static_cast<JDIMENSION>(next - y));
      continue;
    }
    int count = std::min(stripRows, height - y);
    for (const JpegRowCut& cut : cuts) {  // stop where a row's need ends or begins
      if (cut.box.top > y) count = std::min(count, cut.box.top - y);
      if (cut.box.bottom() > y) count = std::min(count, cut.box.bottom() - y);
    }
    for (int done = 0; done < count;) {
      done += static_cast<int>(
          jpeg_read_scanlines(&info, d->rowPointers.data() + done, static_cast<JDIMENSION>(count - done)));
    }

    for (std::size_t i = 0; i < cuts.size(); ++i) {
      const PixelBox& box = cuts[i].box;
      if (!d->outputs[i] || box.top > y || box.bottom() <= y) continue;
      // Rows y .. y + count - 1 of this box, stored bottom row first: they
      // form one run in the file, the last of them at its start.
      const std::size_t rowBytes = bmpRowBytes(box.width);
      const std::size_t spanBytes = 3 * static_cast<std::size_t>(box.width);
      const std::size_t from = 3 * static_cast<std::size_t>(box.left - static_cast<int>(x0));
      d->block.assign(rowBytes * count, 0);  // padding bytes stay zero
      for (int r = 0; r < count; ++r) {
        std::memcpy(d->block.data() + rowBytes * (count - 1 - r), d->strip.data() + stripStride * r + from,
                    spanBytes);
      }
      const std::size_t at = kBmpHeaderBytes + rowBytes * static_cast<std::size_t>(box.bottom() - (y + count));
      const int fd = ::fileno(d->outputs[i]->stream());
      std::size_t written = 0;
      while (written < d->block.size()) {
        const ssize_t n = ::pwrite(fd, d->block.data() + written, d->block.size() - written,
                                   static_cast<off_t>(at + written));
        if (n <= 0) {
          if (n < 0 && errno == EINTR) continue;
          results[i] = Status::error("cannot write the file: " + errnoText(n < 0 ? errno : ENOSPC));
          d->outputs[i]->discard();
          d->outputs[i].reset();
          break;
        }
        written += static_cast<std::size_t>(n);
      }
    }
  }
  // Reads on to the end of the data, so that a file cut short below the last
  // row fails here just as it fails a full decode.
  jpeg_finish_decompress(&info);

  for (std::size_t i = 0; i < cuts.size(); ++i) {
    if (!d->outputs[i]) continue;
    if (Status s = d->outputs[i]->commit(); !s) results[i] = s;
  }
  d->outputs.clear();
  return true;
}

}  // namespace subsurf::image
