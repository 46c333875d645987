// Our CGM writer, checked element by element against the binary encoding and
// read back cell for cell.
#include "host/image/cgm.h"

#include <gtest/gtest.h>

#include "host/image/image_writer.h"
#include "image_test_support.h"

namespace subsurf::image {
namespace {

using namespace testing;

class CgmTest : public ImageTest {
 protected:
  std::vector<CgmElement> elementsOf(const std::string& path) {
    std::vector<CgmElement> elements;
    Status s = parseCgmElements(fileBytes(path), elements);
    EXPECT_TRUE(s) << s.message();
    return elements;
  }
};

int int16At(const std::vector<std::uint8_t>& p, std::size_t at) {
  return static_cast<std::int16_t>((p[at] << 8) | p[at + 1]);
}

TEST_F(CgmTest, ElementsComeInTheOrderViewersExpect) {
  const Raster r = patternRaster(4, 3);
  const std::string path = dir.file("row.cgm");
  ASSERT_TRUE(writeImage(r.view(), path, ImageFormat::Cgm));
  const auto elements = elementsOf(path);
  const std::vector<std::pair<int, int>> expected = {
      {0, 1},  // BEGIN METAFILE
      {1, 1},  // METAFILE VERSION
      {1, 2},  // METAFILE DESCRIPTION
      {1, 11}, // METAFILE ELEMENT LIST
      {1, 7},  // COLOUR PRECISION
      {1, 10}, // COLOUR VALUE EXTENT
      {0, 3},  // BEGIN PICTURE
      {2, 2},  // COLOUR SELECTION MODE
      {2, 6},  // VDC EXTENT
      {0, 4},  // BEGIN PICTURE BODY
      {4, 9},  // CELL ARRAY
      {0, 5},  // END PICTURE
      {0, 2},  // END METAFILE
  };
  ASSERT_EQ(elements.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(elements[i].elementClass, expected[i].first);
    EXPECT_EQ(elements[i].id, expected[i].second);
  }
  EXPECT_EQ(int16At(elements[1].parameters, 0), 1);  // version 1
  // Element list: one entry, the drawing-plus-control set (-1, 1).
  ASSERT_EQ(elements[3].parameters.size(), 6u);
  EXPECT_EQ(int16At(elements[3].parameters, 0), 1);
  EXPECT_EQ(int16At(elements[3].parameters, 2), -1);
  EXPECT_EQ(int16At(elements[3].parameters, 4), 1);
  EXPECT_EQ(int16At(elements[4].parameters, 0), 8);
  EXPECT_EQ(elements[5].parameters, (std::vector<std::uint8_t>{0, 0, 0, 255, 255, 255}));
  EXPECT_EQ(int16At(elements[7].parameters, 0), 1);  // direct colour
  ASSERT_EQ(elements[8].parameters.size(), 8u);
  EXPECT_EQ(int16At(elements[8].parameters, 4), 4);
  EXPECT_EQ(int16At(elements[8].parameters, 6), 3);
  for (std::size_t i : {0u, 9u, 11u, 12u}) EXPECT_TRUE(i == 0 || elements[i].parameters.empty());
}

TEST_F(CgmTest, CellArrayStartsAtTheTopLeftAndRoundTrips) {
  const Raster r = patternRaster(5, 4);  // odd width: each 15-octet row gets a pad octet
  const std::string path = dir.file("row.cgm");
  ASSERT_TRUE(writeImage(r.view(), path, ImageFormat::Cgm));
  Raster back;
  CgmPicture pic;
  Status s = readCgmCellArray(path, back, &pic);
  ASSERT_TRUE(s) << s.message();
  EXPECT_TRUE(samePixels(r, back));
  // VDC y grows upwards: the first row (P to R) is the top edge, Q the bottom-right.
  EXPECT_EQ(pic.vdcExtent[2], 5);
  EXPECT_EQ(pic.vdcExtent[3], 4);
  EXPECT_EQ(pic.p[0], 0);
  EXPECT_EQ(pic.p[1], 4);
  EXPECT_EQ(pic.r[0], 5);
  EXPECT_EQ(pic.r[1], 4);
  EXPECT_EQ(pic.q[0], 5);
  EXPECT_EQ(pic.q[1], 0);
  EXPECT_EQ(pic.version, 1);
  EXPECT_EQ(pic.description, "subsurf core row image");

  // The stored cell rows are padded to whole 16-bit words.
  const auto elements = elementsOf(path);
  const CgmElement& cells = elements[10];
  const std::size_t header = 6 * 2 + 3 * 2 + 2;
  EXPECT_EQ(cells.parameters.size(), header + 4 * 16);
  EXPECT_EQ(cells.parameters[header + 15], 0);
}

TEST_F(CgmTest, LargeCellArraysArePartitioned) {
  const Raster r = patternRaster(1001, 40);  // 3003 octets a row, padded to 3004
  const std::string path = dir.file("big.cgm");
  ASSERT_TRUE(writeImage(r.view(), path, ImageFormat::Cgm));

  // Walk the raw partition headers of the cell array.
  const auto bytes = fileBytes(path);
  std::size_t at = 0;
  std::vector<std::size_t> partitionLengths;
  bool found = false;
  while (at < bytes.size() && !found) {
    const unsigned command = (bytes[at] << 8) | bytes[at + 1];
    at += 2;
    const unsigned cls = command >> 12, id = (command >> 5) & 0x7f, length = command & 0x1f;
    if (length != 31) {
      at += length + length % 2;
      continue;
    }
    bool more = true;
    while (more) {
      const unsigned p = (bytes[at] << 8) | bytes[at + 1];
      at += 2;
      more = p & 0x8000;
      const std::size_t n = p & 0x7fff;
      if (cls == 4 && id == 9) partitionLengths.push_back(n);
      at += n + n % 2;
    }
    found = cls == 4 && id == 9;
  }
  ASSERT_TRUE(found);
  const std::size_t total = 20 + 40 * 3004;
  const std::size_t full = total / 32766;
  ASSERT_EQ(partitionLengths.size(), full + 1);
  for (std::size_t i = 0; i + 1 < partitionLengths.size(); ++i) EXPECT_EQ(partitionLengths[i], 32766u);
  EXPECT_EQ(partitionLengths.back(), total - full * 32766);

  Raster back;
  ASSERT_TRUE(readCgmCellArray(path, back));
  EXPECT_TRUE(samePixels(r, back));
}

TEST_F(CgmTest, RowsWiderThanSixteenBitIntegersSwitchTo32BitIntegers) {
  const Raster r = patternRaster(33000, 2);
  const std::string path = dir.file("wide.cgm");
  ASSERT_TRUE(writeImage(r.view(), path, ImageFormat::Cgm));
  const auto elements = elementsOf(path);
  ASSERT_GE(elements.size(), 4u);
  EXPECT_EQ(elements[3].elementClass, 1);  // INTEGER PRECISION before the element list
  EXPECT_EQ(elements[3].id, 4);
  EXPECT_EQ(int16At(elements[3].parameters, 0), 32);
  Raster back;
  CgmPicture pic;
  ASSERT_TRUE(readCgmCellArray(path, back, &pic));
  EXPECT_TRUE(samePixels(r, back));
  // The VDC extent keeps within 16-bit VDC integers and keeps the row's shape.
  EXPECT_EQ(pic.vdcExtent[2], 32767);
  EXPECT_EQ(pic.vdcExtent[3], 2);
}

TEST_F(CgmTest, DamagedMetafilesAreRefused) {
  const Raster r = patternRaster(300, 200);
  const std::string good = dir.file("good.cgm");
  ASSERT_TRUE(writeImage(r.view(), good, ImageFormat::Cgm));
  auto bytes = fileBytes(good);
  Raster back;

  auto cut = bytes;
  cut.resize(bytes.size() / 2);
  writeBytes(dir.file("cut.cgm"), cut);
  Status s = readCgmCellArray(dir.file("cut.cgm"), back);
  ASSERT_FALSE(s);
  EXPECT_NE(s.message().find("runs past the end of the file"), std::string::npos) << s.message();

  auto noEnd = bytes;
  noEnd.resize(bytes.size() - 2);  // drop END METAFILE
  writeBytes(dir.file("noend.cgm"), noEnd);
  EXPECT_EQ(readCgmCellArray(dir.file("noend.cgm"), back).message(), "the metafile has no END METAFILE");

  writeBytes(dir.file("bmp.cgm"), {'B', 'M', 0, 0});
  EXPECT_EQ(readCgmCellArray(dir.file("bmp.cgm"), back).message(), "not a binary CGM file");
  EXPECT_EQ(readCgmCellArray(dir.file("none.cgm"), back).message(), "cannot open the file");
}

}  // namespace
}  // namespace subsurf::image
