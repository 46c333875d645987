#include "host/image/cgm.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>

#include <fmt/format.h>

#include "host/image/atomic_output.h"

namespace subsurf::image {
namespace {

// Element classes and ids used here.
enum : int {
  kDelimiter = 0,
  kDescriptor = 1,
  kPictureDescriptor = 2,
  kControl = 3,
  kPrimitive = 4,
};
constexpr int kBeginMetafile = 1, kEndMetafile = 2, kBeginPicture = 3, kBeginPictureBody = 4,
              kEndPicture = 5;
constexpr int kMetafileVersion = 1, kMetafileDescription = 2, kIntegerPrecision = 4,
              kColourPrecision = 7, kColourValueExtent = 10, kMetafileElementList = 11;
constexpr int kColourSelectionMode = 2, kVdcExtent = 6;
constexpr int kVdcIntegerPrecision = 1;
constexpr int kCellArray = 9;

// Largest parameter partition we write; even, so that no pad octet is needed
// between partitions.
constexpr std::size_t kPartitionBytes = 32766;
constexpr int kShortFormMax = 30;
constexpr int kLargestVdc = 32767;  // 16-bit VDC integers

// Collects the parameters of one element and writes them in as many
// partitions as they need.
class ElementWriter {
 public:
  ElementWriter(std::FILE* stream, int elementClass, int id) : stream_(stream) {
    command_ = static_cast<std::uint16_t>((elementClass << 12) | (id << 5));
  }

  void octet(std::uint8_t v) { buffer_.push_back(v); spill(); }
  void int16(int v) {
    const auto u = static_cast<std::uint16_t>(static_cast<std::int16_t>(v));
    buffer_.push_back(static_cast<std::uint8_t>(u >> 8));
    buffer_.push_back(static_cast<std::uint8_t>(u));
    spill();
  }
  void int32(std::int32_t v) {
    const auto u = static_cast<std::uint32_t>(v);
    for (int shift = 24; shift >= 0; shift -= 8) buffer_.push_back(static_cast<std::uint8_t>(u >> shift));
    spill();
  }
  void integer(int v, int precision) { precision == 32 ? int32(v) : int16(v); }
  // A string parameter; we only write short ones (up to 254 characters).
  void string(std::string_view s) {
    const std::size_t n = std::min<std::size_t>(s.size(), 254);
    buffer_.push_back(static_cast<std::uint8_t>(n));
    buffer_.insert(buffer_.end(), s.begin(), s.begin() + static_cast<std::ptrdiff_t>(n));
    spill();
  }
  void bytes(const std::uint8_t* p, std::size_t n) {
    buffer_.insert(buffer_.end(), p, p + n);
    spill();
  }

  // Writes what is left as the final partition (or as a short-form element).
  bool finish() {
    if (!longForm_ && buffer_.size() <= kShortFormMax) {
      writeWord(static_cast<std::uint16_t>(command_ | buffer_.size()));
    } else {
      startLongForm();
      writeWord(static_cast<std::uint16_t>(buffer_.size()));
    }
    writeBytes(buffer_.data(), buffer_.size());
    if (buffer_.size() % 2 != 0) {
      const std::uint8_t pad = 0;
      writeBytes(&pad, 1);
    }
    buffer_.clear();
    return ok_;
  }

 private:
  // Sends full partitions while more data than one partition is waiting; the
  // last partition is held back until finish() knows it is the last.
  void spill() {
    if (buffer_.size() <= kPartitionBytes) return;
    std::size_t sent = 0;
    while (buffer_.size() - sent > kPartitionBytes) {
      startLongForm();
      writeWord(static_cast<std::uint16_t>(0x8000 | kPartitionBytes));
      writeBytes(buffer_.data() + sent, kPartitionBytes);
      sent += kPartitionBytes;
    }
    buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(sent));
  }
  void startLongForm() {
    if (longForm_) return;
    longForm_ = true;
    writeWord(static_cast<std::uint16_t>(command_ | 31));
  }
  void writeWord(std::uint16_t w) {
    const std::uint8_t b[2] = {static_cast<std::uint8_t>(w >> 8), static_cast<std::uint8_t>(w)};
    writeBytes(b, 2);
  }
  void writeBytes(const std::uint8_t* p, std::size_t n) {
    if (ok_ && n != 0 && std::fwrite(p, 1, n, stream_) != n) ok_ = false;
  }

  std::FILE* stream_;
  std::uint16_t command_ = 0;
  std::vector<std::uint8_t> buffer_;
  bool longForm_ = false;
  bool ok_ = true;
};

Status writeFailed() { return Status::error("cannot write the file: " + errnoText(errno)); }

// Reads big-endian values from an element's parameters.
class ParameterReader {
 public:
  explicit ParameterReader(const std::vector<std::uint8_t>& p) : p_(p) {}
  bool has(std::size_t n) const { return at_ + n <= p_.size(); }
  int integer(int precision) {
    const std::size_t n = precision == 32 ? 4 : precision == 24 ? 3 : precision == 8 ? 1 : 2;
    if (!has(n)) {
      failed_ = true;
      return 0;
    }
    std::uint32_t v = 0;
    for (std::size_t i = 0; i < n; ++i) v = (v << 8) | p_[at_ + i];
    at_ += n;
    const unsigned bits = static_cast<unsigned>(8 * n);
    if (bits < 32 && (v & (1u << (bits - 1)))) v |= ~((1u << bits) - 1);  // sign-extend
    return static_cast<std::int32_t>(v);
  }
  std::string string() {
    if (!has(1)) {
      failed_ = true;
      return {};
    }
    const std::size_t n = p_[at_++];
    if (n == 255 || !has(n)) {  // long strings do not occur in our files
      failed_ = true;
      return {};
    }
    std::string s(reinterpret_cast<const char*>(p_.data() + at_), n);
    at_ += n;
    return s;
  }
  const std::uint8_t* here() const { return p_.data() + at_; }
  std::size_t left() const { return p_.size() - at_; }
  bool failed() const { return failed_; }

 private:
  const std::vector<std::uint8_t>& p_;
  std::size_t at_ = 0;
  bool failed_ = false;
};

}  // namespace

Status writeCgm(RowSource& source, std::FILE* stream, const CgmWriteOptions& options) {
  const int w = source.width();
  const int h = source.height();
  if (w <= 0 || h <= 0) return Status::error("the picture is empty");

  // Pixel counts above 32767 need 32-bit integers; the picture's extent in
  // VDC stays within 16-bit VDC integers by scaling, keeping the row's shape.
  const int intPrecision = std::max(w, h) > kLargestVdc ? 32 : 16;
  int vdcW = w, vdcH = h;
  if (std::max(w, h) > kLargestVdc) {
    const double s = static_cast<double>(kLargestVdc) / std::max(w, h);
    vdcW = std::max(1, static_cast<int>(std::lround(w * s)));
    vdcH = std::max(1, static_cast<int>(std::lround(h * s)));
  }

  auto simple = [&](int cls, int id, auto&& fill) {
    ElementWriter e(stream, cls, id);
    fill(e);
    return e.finish();
  };
  auto none = [](ElementWriter&) {};
  bool ok = simple(kDelimiter, kBeginMetafile, [&](ElementWriter& e) { e.string(options.pictureName); }) &&
            simple(kDescriptor, kMetafileVersion, [](ElementWriter& e) { e.int16(1); }) &&
            simple(kDescriptor, kMetafileDescription, [&](ElementWriter& e) { e.string(options.description); });
  if (ok && intPrecision == 32) {
    ok = simple(kDescriptor, kIntegerPrecision, [](ElementWriter& e) { e.int16(32); });
  }
  ok = ok &&
       simple(kDescriptor, kMetafileElementList,
              [&](ElementWriter& e) {
                e.integer(1, intPrecision);
                e.int16(-1);  // the drawing-plus-control set
                e.int16(1);
              }) &&
       simple(kDescriptor, kColourPrecision, [&](ElementWriter& e) { e.integer(8, intPrecision); }) &&
       simple(kDescriptor, kColourValueExtent,
              [](ElementWriter& e) {
                for (int v : {0, 0, 0, 255, 255, 255}) e.octet(static_cast<std::uint8_t>(v));
              }) &&
       simple(kDelimiter, kBeginPicture, [&](ElementWriter& e) { e.string(options.pictureName); }) &&
       simple(kPictureDescriptor, kColourSelectionMode, [](ElementWriter& e) { e.int16(1); }) &&
       simple(kPictureDescriptor, kVdcExtent,
              [&](ElementWriter& e) {
                e.int16(0);
                e.int16(0);
                e.int16(vdcW);
                e.int16(vdcH);
              }) &&
       simple(kDelimiter, kBeginPictureBody, none);
  if (!ok) return writeFailed();

  // The first row of cells starts at the top-left corner P and runs to R at
  // the top-right; Q is the bottom-right corner. VDC y grows upwards.
  ElementWriter cells(stream, kPrimitive, kCellArray);
  for (int v : {0, vdcH, vdcW, 0, vdcW, vdcH}) cells.int16(v);
  cells.integer(w, intPrecision);
  cells.integer(h, intPrecision);
  cells.integer(8, intPrecision);  // local colour precision: 8 bits a component
  cells.int16(1);                  // packed list
  const std::size_t rgbBytes = 3 * static_cast<std::size_t>(w);
  const std::size_t rowBytes = rgbBytes + (rgbBytes % 2);  // each row starts on a word boundary
  const int stripRows = static_cast<int>(std::clamp<std::size_t>((1u << 20) / rowBytes, 1, h));
  std::vector<std::uint8_t> strip(rowBytes * stripRows, 0);
  for (int y0 = 0; y0 < h; y0 += stripRows) {
    const int n = std::min(stripRows, h - y0);
    if (Status s = source.readRows(y0, n, strip.data(), rowBytes); !s) return s;
    cells.bytes(strip.data(), rowBytes * static_cast<std::size_t>(n));
  }
  ok = cells.finish() && simple(kDelimiter, kEndPicture, none) && simple(kDelimiter, kEndMetafile, none);
  return ok ? Status::ok() : writeFailed();
}

Status parseCgmElements(const std::vector<std::uint8_t>& bytes, std::vector<CgmElement>& out) {
  out.clear();
  std::size_t at = 0;
  auto word = [&](std::uint16_t& w) {
    if (at + 2 > bytes.size()) return false;
    w = static_cast<std::uint16_t>((bytes[at] << 8) | bytes[at + 1]);
    at += 2;
    return true;
  };
  while (at < bytes.size()) {
    const std::size_t start = at;
    std::uint16_t command = 0;
    if (!word(command)) return Status::error(fmt::format("command header cut short at octet {}", start));
    CgmElement e;
    e.elementClass = command >> 12;
    e.id = (command >> 5) & 0x7f;
    const unsigned length = command & 0x1f;
    e.partitions = 0;
    bool more = true;
    while (more) {
      std::size_t n = length;
      more = false;
      if (length == 31) {
        e.longForm = true;
        std::uint16_t p = 0;
        if (!word(p)) return Status::error(fmt::format("partition header cut short at octet {}", at));
        more = (p & 0x8000) != 0;
        n = p & 0x7fff;
      }
      if (at + n > bytes.size()) {
        return Status::error(fmt::format("element {}/{} at octet {} runs past the end of the file",
                                         e.elementClass, e.id, start));
      }
      e.parameters.insert(e.parameters.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                          bytes.begin() + static_cast<std::ptrdiff_t>(at + n));
      at += n + (n % 2);
      ++e.partitions;
    }
    out.push_back(std::move(e));
  }
  return Status::ok();
}

Status readCgmCellArray(const std::string& path, Raster& out, CgmPicture* picture) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return Status::error("cannot open the file");
  const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  // A binary metafile opens with BEGIN METAFILE (class 0, element 1).
  if (bytes.size() < 2 || (((bytes[0] << 8) | bytes[1]) & 0xffe0) != ((kDelimiter << 12) | (kBeginMetafile << 5))) {
    return Status::error("not a binary CGM file");
  }
  std::vector<CgmElement> elements;
  if (Status s = parseCgmElements(bytes, elements); !s) return s;

  CgmPicture pic;
  int intPrecision = 16, colourPrecision = 8, vdcPrecision = 16, colourMode = 0;
  bool ended = false;
  for (const CgmElement& e : elements) {
    ParameterReader p(e.parameters);
    if (e.elementClass == kDelimiter && e.id == kEndMetafile) ended = true;
    if (e.elementClass == kDelimiter && e.id == kBeginPicture) pic.pictureName = p.string();
    if (e.elementClass == kDescriptor) {
      if (e.id == kMetafileVersion) pic.version = p.integer(intPrecision);
      if (e.id == kMetafileDescription) pic.description = p.string();
      if (e.id == kIntegerPrecision) intPrecision = p.integer(intPrecision);
      if (e.id == kColourPrecision) colourPrecision = p.integer(intPrecision);
    }
    if (e.elementClass == kControl && e.id == kVdcIntegerPrecision) vdcPrecision = p.integer(intPrecision);
    if (e.elementClass == kPictureDescriptor && e.id == kColourSelectionMode) colourMode = p.integer(16);
    if (e.elementClass == kPictureDescriptor && e.id == kVdcExtent) {
      for (int& v : pic.vdcExtent) v = p.integer(vdcPrecision);
    }
    if (p.failed()) return Status::error(fmt::format("element {}/{} is cut short", e.elementClass, e.id));
  }
  if (!ended) return Status::error("the metafile has no END METAFILE");

  for (const CgmElement& e : elements) {
    if (e.elementClass != kPrimitive || e.id != kCellArray) continue;
    if (colourMode != 1) return Status::error("the cell array is not in direct colour");
    ParameterReader p(e.parameters);
    for (int* corner : {pic.p, pic.q, pic.r}) {
      corner[0] = p.integer(vdcPrecision);
      corner[1] = p.integer(vdcPrecision);
    }
    const int nx = p.integer(intPrecision);
    const int ny = p.integer(intPrecision);
    int precision = p.integer(intPrecision);
    const int mode = p.integer(16);
    if (p.failed()) return Status::error("the cell array is cut short");
    if (precision == 0) precision = colourPrecision;
    if (precision != 8) return Status::error(fmt::format("unsupported colour precision {}", precision));
    if (mode != 1) return Status::error("only packed cell arrays are read");
    if (nx <= 0 || ny <= 0) return Status::error("the cell array is empty");
    const std::size_t rgbBytes = 3 * static_cast<std::size_t>(nx);
    const std::size_t rowBytes = rgbBytes + (rgbBytes % 2);
    // The last row's pad octet may be left out by some writers.
    if (p.left() < rowBytes * (static_cast<std::size_t>(ny) - 1) + rgbBytes) {
      return Status::error("the cell array holds fewer cells than it declares");
    }
    Raster r(nx, ny);
    for (int y = 0; y < ny; ++y) std::memcpy(r.row(y), p.here() + y * rowBytes, rgbBytes);
    out = std::move(r);
    if (picture) *picture = pic;
    return Status::ok();
  }
  return Status::error("the metafile holds no cell array");
}

}  // namespace subsurf::image
