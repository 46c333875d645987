// Row image names and the depth text in them, worked out by hand from the
// naming rules (fixed fields, "_" for the point, "0" for blanks, tag, suffix).
#include <gtest/gtest.h>

#include "core/split_naming.h"
#include "host/nulls.h"

namespace subsurf::split {
namespace {

TEST(DepthText, FieldsPrecisionRoundingAndWidth) {
  struct Case {
    float top, base;
    int option;
    const char* expected;
  };
  const Case cases[] = {
      {1234.5f, 1236.0f, kPrecisionCentimetre, "01234_50-01236_00"},
      {1234.5f, 1236.0f, kPrecisionMillimetre, "01234_500-01236_000"},
      {1234.5f, 1236.0f, 0, "01234_50-01236_00"},          // any option but 2: two decimals
      {1234.5f, 1236.0f, kIntNull, "01234_50-01236_00"},
      {0.5f, 1.25f, kPrecisionCentimetre, "00000_50-00001_25"},
      {12345.67f, 12346.5f, kPrecisionCentimetre, "12345_67-12346_50"},
      // Exact halves in single precision go up; 1234.005 and 0.995 are
      // stored a little above the half.
      {1234.125f, 1234.375f, kPrecisionCentimetre, "01234_13-01234_38"},
      {1234.0625f, 1.0f, kPrecisionMillimetre, "01234_063-00001_000"},
      {1234.005f, 0.995f, kPrecisionCentimetre, "01234_01-00001_00"},
      {-12.5f, 3.0f, kPrecisionCentimetre, "00-12_50-00003_00"},    // the sign stays inside the zero fill
      {99999.99f, 1.0f, kPrecisionCentimetre, "99999_99-00001_00"},
      {123456.0f, 123457.0f, kPrecisionCentimetre, "123456_00-123457_00"},  // too wide: written in full
  };
  for (const Case& c : cases) EXPECT_EQ(depthText(c.top, c.base, c.option), c.expected) << c.top << " " << c.option;
  EXPECT_EQ(fixedField(-0.001, 8, 2), "    0.00");  // no "-0.00"
}

TEST(FileStub, FolderAndSuffixDropped) {
  const std::pair<const char*, const char*> cases[] = {
      {"/data/trays/T1.jpg", "T1"},
      {"TRAY_1234_5-1239_5.jpg", "TRAY_1234_5-1239_5"},
      {"C:\\trays\\T1.jpg", "T1"},           // sessions written on Windows
      {"C:/core\\box 3/T2.JPG", "T2"},
      {"/data/well.7/T1", "T1"},             // a dot in a folder does not count
      {"C:\\well.7\\run.2\\TRAY_4", "TRAY_4"},
      {"/data/T1.uv.jpg", "T1"},             // two dots: cut at the first
      {"/data/T1.jpg        ", "T1"},        // a blank-padded field
      {"/data/", ""},
  };
  for (const auto& [path, stub] : cases) EXPECT_EQ(fileStub(path), stub) << path;
  EXPECT_EQ(folderOf("/data/trays/T1.jpg"), "/data/trays/");
  EXPECT_EQ(folderOf("C:\\trays\\T1.jpg"), "C:\\trays\\");
  EXPECT_EQ(folderOf("T1.jpg"), "");
}

TEST(NamingPieces, TagFormatsAndFolders) {
  EXPECT_EQ(lightTag(1), "UV");
  for (int v : {0, 2, -1, kIntNull}) EXPECT_EQ(lightTag(v), "WL") << v;
  RowFormat f = RowFormat::Bmp;
  EXPECT_TRUE(parseRowFormat("CGM", f));
  EXPECT_EQ(f, RowFormat::Cgm);
  EXPECT_TRUE(parseRowFormat(" jpeg ", f));
  EXPECT_EQ(f, RowFormat::Jpeg);
  EXPECT_FALSE(parseRowFormat("gif", f));
  EXPECT_FALSE(parseRowFormat("", f));
  EXPECT_FALSE(parseRowFormat("x.png", f));
  EXPECT_EQ(f, RowFormat::Jpeg);  // unchanged by a refused text
  EXPECT_EQ(joinFolder("/out", "a.bmp"), "/out/a.bmp");
  EXPECT_EQ(joinFolder("/out/", "a.bmp"), "/out/a.bmp");
  EXPECT_EQ(joinFolder("C:\\out\\", "a.bmp"), "C:\\out\\a.bmp");
  EXPECT_EQ(joinFolder("", "a.bmp"), "a.bmp");
}

TEST(RowImageName, TagLeftOutWhenTheStubHoldsIt) {
  NamingOptions o;
  o.outputFolder = "/out";
  EXPECT_EQ(rowImageName("/p/TRAY_1234_5-1239_5.jpg", 0, 1234.5f, 1235.5f, o),
            "/out/TRAY_1234_5-1239_5_WL_01234_50-01235_50.bmp");
  EXPECT_EQ(rowImageName("/p/T1.jpg", 1, 1234.5f, 1235.5f, o), "/out/T1_UV_01234_50-01235_50.bmp");
  EXPECT_EQ(rowImageName("/p/T12_UV.jpg", 1, 1234.5f, 1235.5f, o), "/out/T12_UV_01234_50-01235_50.bmp");
  EXPECT_EQ(rowImageName("/p/WL_T12.jpg", 0, 1234.5f, 1235.5f, o), "/out/WL_T12_01234_50-01235_50.bmp");
  // Only the photograph's own tag is looked for, in its own case.
  EXPECT_EQ(rowImageName("/p/T12_UV.jpg", 0, 1234.5f, 1235.5f, o), "/out/T12_UV_WL_01234_50-01235_50.bmp");
  EXPECT_EQ(rowImageName("/p/t12_uv.jpg", 1, 1234.5f, 1235.5f, o), "/out/t12_uv_UV_01234_50-01235_50.bmp");
}

TEST(RowImageName, FolderRootSuffixAndPrecision) {
  NamingOptions o;
  o.outputFolder = "/out/";
  o.format = RowFormat::Cgm;
  o.precisionOption = kPrecisionMillimetre;
  EXPECT_EQ(rowImageName("D:\\core\\well.7\\T1.jpg", 0, 1.0f, 2.0f, o), "/out/T1_WL_00001_000-00002_000.cgm");
  o.precisionOption = kPrecisionCentimetre;
  o.format = RowFormat::Tiff;
  o.rootName = "WELL7";
  EXPECT_EQ(rowImageName("/p/T1.jpg", 0, 1.0f, 2.0f, o), "/out/T1_WL_00001_00-00002_00.tif");  // root not asked for
  o.useRootName = true;
  EXPECT_EQ(rowImageName("/p/T1.jpg", 0, 1.0f, 2.0f, o), "/out/WELL7_WL_00001_00-00002_00.tif");
  o.rootName = "   ";
  EXPECT_EQ(rowImageName("/p/T1.jpg", 0, 1.0f, 2.0f, o), "/out/T1_WL_00001_00-00002_00.tif");  // blank root
  o.outputBesidePhoto = true;
  o.format = RowFormat::Bmp;
  EXPECT_EQ(rowImageName("/photos/a/T1.jpg", 0, 1.0f, 2.0f, o), "/photos/a/T1_WL_00001_00-00002_00.bmp");
  EXPECT_EQ(rowImageName("T1.jpg", 0, 1.0f, 2.0f, o), "T1_WL_00001_00-00002_00.bmp");
}

}  // namespace
}  // namespace subsurf::split
