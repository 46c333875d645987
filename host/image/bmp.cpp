#include "host/image/bmp.h"

#include <sys/stat.h>

#if defined(__x86_64__) && defined(__GNUC__)
#include <tmmintrin.h>
#endif

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include <fmt/format.h>

#include "host/image/atomic_output.h"

namespace subsurf::image {
namespace {

constexpr std::size_t kFileHeaderBytes = 14;
constexpr std::size_t kInfoHeaderBytes = 40;
// Strips of rows are moved in pieces of about this size: large enough for
// efficient writes, small enough not to matter beside a decoded photograph.
constexpr std::size_t kStripBytes = 1u << 20;

void put16(std::uint8_t* p, std::uint16_t v) {
  p[0] = static_cast<std::uint8_t>(v);
  p[1] = static_cast<std::uint8_t>(v >> 8);
}
void put32(std::uint8_t* p, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<std::uint8_t>(v >> (8 * i));
}
std::uint16_t get16(const std::uint8_t* p) { return static_cast<std::uint16_t>(p[0] | (p[1] << 8)); }
std::uint32_t get32(const std::uint8_t* p) {
  return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
         (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

// Red-green-blue to blue-green-red, the order bitmaps store. This runs over
// every byte of every row image, so on x86 it uses byte shuffles, five pixels
// at a time, when the processor has them.
void swapRedBlueScalar(const std::uint8_t* in, std::uint8_t* out, int count) {
  for (int x = 0; x < count; ++x, in += 3, out += 3) {
    out[0] = in[2];
    out[1] = in[1];
    out[2] = in[0];
  }
}

#if defined(__x86_64__) && defined(__GNUC__)
__attribute__((target("ssse3"))) void swapRedBlueShuffle(const std::uint8_t* in, std::uint8_t* out, int count) {
  const __m128i order = _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15);
  int x = 0;
  // Each step reads and writes 16 bytes but moves 5 pixels (15 bytes); stop
  // while a whole 16 bytes still lie inside the row.
  for (; x + 6 <= count; x += 5) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 3 * x));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 3 * x), _mm_shuffle_epi8(v, order));
  }
  swapRedBlueScalar(in + 3 * x, out + 3 * x, count - x);
}

void swapRedBlue(const std::uint8_t* in, std::uint8_t* out, int count) {
  static const bool shuffles = __builtin_cpu_supports("ssse3");
  if (shuffles) {
    swapRedBlueShuffle(in, out, count);
  } else {
    swapRedBlueScalar(in, out, count);
  }
}
#else
void swapRedBlue(const std::uint8_t* in, std::uint8_t* out, int count) { swapRedBlueScalar(in, out, count); }
#endif

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

// One colour channel described by a bit mask, as in 16 and 32-bit bitmaps.
struct Channel {
  std::uint32_t mask = 0;
  int shift = 0;
  std::uint32_t max = 0;

  explicit Channel(std::uint32_t m = 0) : mask(m) {
    if (mask == 0) return;
    while (((mask >> shift) & 1u) == 0) ++shift;
    max = mask >> shift;
  }
  std::uint8_t value(std::uint32_t pixel) const {
    if (max == 0) return 0;
    const std::uint32_t v = (pixel & mask) >> shift;
    return static_cast<std::uint8_t>((v * 255u + max / 2) / max);
  }
};

struct Decoder {
  BmpInfo info;
  std::vector<std::array<std::uint8_t, 3>> palette;  // RGB
  Channel red, green, blue;
};

Status parseHeaders(std::FILE* f, std::uint64_t fileSize, Decoder& d) {
  std::uint8_t head[kFileHeaderBytes + 4] = {};
  const std::size_t got = std::fread(head, 1, sizeof head, f);
  if (got < 2 || head[0] != 'B' || head[1] != 'M') return Status::error("not a BMP file");
  if (got != sizeof head || fileSize < sizeof head) return Status::error("the file is truncated");
  BmpInfo& info = d.info;
  info.pixelOffset = get32(head + 10);
  const std::uint32_t dibSize = get32(head + 14);
  if (dibSize != 12 && (dibSize < 40 || dibSize > 124)) {
    return Status::error(fmt::format("unsupported BMP header of {} bytes", dibSize));
  }
  std::vector<std::uint8_t> dib(dibSize);
  put32(dib.data(), dibSize);
  if (std::fread(dib.data() + 4, 1, dibSize - 4, f) != dibSize - 4) {
    return Status::error("the file is truncated");
  }

  long long width = 0, height = 0;
  int bits = 0;
  std::uint32_t compression = 0, coloursUsed = 0;
  std::size_t paletteEntryBytes = 4;
  std::uint64_t paletteOffset = kFileHeaderBytes + dibSize;
  if (dibSize == 12) {  // the old OS/2 form
    width = get16(dib.data() + 4);
    height = get16(dib.data() + 6);
    bits = get16(dib.data() + 10);
    paletteEntryBytes = 3;
  } else {
    width = static_cast<std::int32_t>(get32(dib.data() + 4));
    height = static_cast<std::int32_t>(get32(dib.data() + 8));
    bits = get16(dib.data() + 14);
    compression = get32(dib.data() + 16);
    coloursUsed = get32(dib.data() + 32);
  }
  info.bitsPerPixel = bits;
  info.compression = static_cast<int>(compression);
  info.topDown = height < 0;
  if (height < 0) height = -height;
  if (width <= 0 || height <= 0 || width > 1000000 || height > 1000000) {
    return Status::error(fmt::format("impossible BMP size {} x {}", width, height));
  }
  info.width = static_cast<int>(width);
  info.height = static_cast<int>(height);

  const bool paletted = bits == 1 || bits == 4 || bits == 8;
  if (!paletted && bits != 16 && bits != 24 && bits != 32) {
    return Status::error(fmt::format("unsupported BMP depth of {} bits", bits));
  }
  if (compression == 3 || compression == 6) {  // bit fields
    if (bits != 16 && bits != 32) return Status::error("bit fields in a BMP that is not 16 or 32-bit");
    std::uint8_t masks[12];
    if (dibSize >= 52) {
      std::memcpy(masks, dib.data() + 40, 12);
    } else {
      if (std::fread(masks, 1, 12, f) != 12) return Status::error("the file is truncated");
      paletteOffset += compression == 6 ? 16 : 12;
    }
    d.red = Channel(get32(masks));
    d.green = Channel(get32(masks + 4));
    d.blue = Channel(get32(masks + 8));
  } else if (compression == 0) {
    if (bits == 16) {
      d.red = Channel(0x7C00), d.green = Channel(0x03E0), d.blue = Channel(0x001F);
    } else if (bits == 32) {
      d.red = Channel(0x00FF0000), d.green = Channel(0x0000FF00), d.blue = Channel(0x000000FF);
    }
  } else {
    return Status::error(fmt::format("unsupported BMP compression {}", compression));
  }

  if (paletted) {
    std::size_t count = coloursUsed != 0 ? coloursUsed : (1u << bits);
    count = std::min<std::size_t>(count, 256);
    if (paletteOffset + count * paletteEntryBytes > info.pixelOffset) {
      count = info.pixelOffset > paletteOffset ? (info.pixelOffset - paletteOffset) / paletteEntryBytes : 0;
    }
    if (count == 0) return Status::error("a palette BMP without a palette");
    std::vector<std::uint8_t> raw(count * paletteEntryBytes);
    if (std::fseek(f, static_cast<long>(paletteOffset), SEEK_SET) != 0 ||
        std::fread(raw.data(), 1, raw.size(), f) != raw.size()) {
      return Status::error("the file is truncated");
    }
    d.palette.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint8_t* e = raw.data() + i * paletteEntryBytes;
      d.palette[i] = {e[2], e[1], e[0]};
    }
  }

  info.rowBytes = (static_cast<std::size_t>(info.width) * bits + 31) / 32 * 4;
  const std::uint64_t needed =
      static_cast<std::uint64_t>(info.pixelOffset) + static_cast<std::uint64_t>(info.rowBytes) * info.height;
  if (info.pixelOffset < kFileHeaderBytes + dibSize || needed > fileSize) {
    return Status::error("the file is truncated");
  }
  return Status::ok();
}

void decodeRow(const Decoder& d, const std::uint8_t* in, std::uint8_t* out) {
  const BmpInfo& info = d.info;
  const int w = info.width;
  switch (info.bitsPerPixel) {
    case 24:
      swapRedBlue(in, out, w);
      return;
    case 32:
    case 16: {
      const int step = info.bitsPerPixel / 8;
      for (int x = 0; x < w; ++x, in += step, out += 3) {
        const std::uint32_t v = step == 4 ? get32(in) : get16(in);
        out[0] = d.red.value(v);
        out[1] = d.green.value(v);
        out[2] = d.blue.value(v);
      }
      return;
    }
    default: {  // 1, 4 or 8 bits per pixel, indices into the palette
      const int bits = info.bitsPerPixel;
      const int perByte = 8 / bits;
      const unsigned mask = (1u << bits) - 1;
      for (int x = 0; x < w; ++x, out += 3) {
        const int shift = 8 - bits * (x % perByte + 1);
        std::size_t index = (in[x / perByte] >> shift) & mask;
        if (index >= d.palette.size()) index = 0;  // damaged files: show the first colour
        std::memcpy(out, d.palette[index].data(), 3);
      }
    }
  }
}

Status openAndParse(const std::string& path, FilePtr& file, Decoder& d) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) return Status::error("file not found");
  if (!S_ISREG(st.st_mode)) return Status::error("not a file");
  file.reset(std::fopen(path.c_str(), "rb"));
  if (!file) return Status::error("cannot open the file: " + errnoText(errno));
  return parseHeaders(file.get(), static_cast<std::uint64_t>(st.st_size), d);
}

}  // namespace

std::size_t bmpRowBytes(int width) { return (3 * static_cast<std::size_t>(width) + 3) / 4 * 4; }

Status makeBmpHeader(int w, int h, std::uint8_t (&header)[kBmpHeaderBytes]) {
  if (w <= 0 || h <= 0) return Status::error("the picture is empty");
  const std::size_t rowBytes = bmpRowBytes(w);
  const std::uint64_t imageBytes = static_cast<std::uint64_t>(rowBytes) * static_cast<std::uint64_t>(h);
  const std::uint64_t fileBytes = kFileHeaderBytes + kInfoHeaderBytes + imageBytes;
  if (fileBytes > std::numeric_limits<std::uint32_t>::max()) {
    return Status::error(fmt::format("a picture of {} x {} pixels is too large for a BMP file", w, h));
  }
  static_assert(kBmpHeaderBytes == kFileHeaderBytes + kInfoHeaderBytes);
  std::memset(header, 0, kBmpHeaderBytes);
  header[0] = 'B';
  header[1] = 'M';
  put32(header + 2, static_cast<std::uint32_t>(fileBytes));
  put32(header + 10, kFileHeaderBytes + kInfoHeaderBytes);
  std::uint8_t* info = header + kFileHeaderBytes;
  put32(info + 0, kInfoHeaderBytes);
  put32(info + 4, static_cast<std::uint32_t>(w));
  put32(info + 8, static_cast<std::uint32_t>(h));  // positive: bottom row first
  put16(info + 12, 1);                              // planes
  put16(info + 14, 24);                             // bits per pixel
  put32(info + 16, 0);                              // no compression
  put32(info + 20, static_cast<std::uint32_t>(imageBytes));
  put32(info + 24, 2835);  // 72 dots per inch, in dots per metre
  put32(info + 28, 2835);
  return Status::ok();
}

Status writeBmp(RowSource& source, std::FILE* stream) {
  const int w = source.width();
  const int h = source.height();
  std::uint8_t header[kBmpHeaderBytes];
  if (Status s = makeBmpHeader(w, h, header); !s) return s;
  const std::size_t rowBytes = bmpRowBytes(w);
  if (std::fwrite(header, 1, sizeof header, stream) != sizeof header) {
    return Status::error("cannot write the file: " + errnoText(errno));
  }

  const std::size_t rgbBytes = 3 * static_cast<std::size_t>(w);
  const int stripRows = static_cast<int>(std::clamp<std::size_t>(kStripBytes / rowBytes, 1, h));
  // Pixels already in memory are read in place; others come a strip at a time.
  const bool direct = source.directRow(0) != nullptr;
  std::vector<std::uint8_t> rgb(direct ? 0 : rgbBytes * stripRows);
  std::vector<std::uint8_t> out(rowBytes * stripRows, 0);  // padding bytes stay zero
  // Strips from the bottom of the picture up, each written bottom row first.
  for (int end = h; end > 0;) {
    const int n = std::min(stripRows, end);
    const int y0 = end - n;
    if (!direct) {
      if (Status s = source.readRows(y0, n, rgb.data(), rgbBytes); !s) return s;
    }
    for (int i = 0; i < n; ++i) {
      const int y = end - 1 - i;
      const std::uint8_t* in = direct ? source.directRow(y) : rgb.data() + static_cast<std::size_t>(y - y0) * rgbBytes;
      swapRedBlue(in, out.data() + static_cast<std::size_t>(i) * rowBytes, w);
    }
    const std::size_t bytes = rowBytes * static_cast<std::size_t>(n);
    if (std::fwrite(out.data(), 1, bytes, stream) != bytes) {
      return Status::error("cannot write the file: " + errnoText(errno));
    }
    end = y0;
  }
  return Status::ok();
}

bool looksLikeBmp(const std::string& path) {
  FilePtr f(std::fopen(path.c_str(), "rb"));
  if (!f) return false;
  char sig[2] = {};
  return std::fread(sig, 1, 2, f.get()) == 2 && sig[0] == 'B' && sig[1] == 'M';
}

Status readBmpInfo(const std::string& path, BmpInfo& info) {
  FilePtr file;
  Decoder d;
  if (Status s = openAndParse(path, file, d); !s) return s;
  info = d.info;
  return Status::ok();
}

Status readBmpPixels(const std::string& path, const BmpInfo& expected, std::uint8_t* dst,
                     std::size_t dstStride) {
  FilePtr file;
  Decoder d;
  if (Status s = openAndParse(path, file, d); !s) return s;
  const BmpInfo& info = d.info;
  if (info.width != expected.width || info.height != expected.height) {
    return Status::error("the file changed while it was read");
  }
  if (std::fseek(file.get(), static_cast<long>(info.pixelOffset), SEEK_SET) != 0) {
    return Status::error("the file is truncated");
  }
  std::vector<std::uint8_t> row(info.rowBytes);
  for (int i = 0; i < info.height; ++i) {
    if (std::fread(row.data(), 1, row.size(), file.get()) != row.size()) {
      return Status::error("the file is truncated");
    }
    const int y = info.topDown ? i : info.height - 1 - i;
    decodeRow(d, row.data(), dst + static_cast<std::size_t>(y) * dstStride);
  }
  return Status::ok();
}

Status readBmp(const std::string& path, Raster& out) {
  BmpInfo info;
  if (Status s = readBmpInfo(path, info); !s) return s;
  Raster r(info.width, info.height);
  if (Status s = readBmpPixels(path, info, r.row(0), r.stride()); !s) return s;
  out = std::move(r);
  return Status::ok();
}

}  // namespace subsurf::image
