// Row image names and the depth text in them, worked out by hand from the
// naming rules (fixed fields, "_" for the point, "0" for blanks, tag, suffix).
#include <gtest/gtest.h>

#include "core/split_naming.h"
#include "host/nulls.h"

namespace subsurf::split {
namespace {

TEST(DepthText, TwoDecimalsInEightCharacters) {
  EXPECT_EQ(depthText(1234.5f, 1236.0f, kPrecisionCentimetre), "01234_50-01236_00");
  EXPECT_EQ(depthText(0.5f, 1.25f, kPrecisionCentimetre), "00000_50-00001_25");
  EXPECT_EQ(depthText(12345.67f, 12346.5f, kPrecisionCentimetre), "12345_67-12346_50");
}

TEST(DepthText, ThreeDecimalsInNineCharactersUnderOptionTwo) {
  EXPECT_EQ(depthText(1234.5f, 1236.0f, kPrecisionMillimetre), "01234_500-01236_000");
  EXPECT_EQ(depthText(1234.25f, 1235.125f, kPrecisionMillimetre), "01234_250-01235_125");
}

TEST(DepthText, AnyOtherOptionGivesTwoDecimals) {
  for (int option : {0, 1, 3, -1, kIntNull})
    EXPECT_EQ(depthText(1234.5f, 1236.0f, option), "01234_50-01236_00") << option;
}

TEST(DepthText, RoundsHalfAwayFromZeroOnTheStoredValue) {
  // 1234.125 and 1234.0625 are exact in single precision: true halves.
  EXPECT_EQ(depthText(1234.125f, 1234.375f, kPrecisionCentimetre), "01234_13-01234_38");
  EXPECT_EQ(depthText(1234.0625f, 1.0f, kPrecisionMillimetre), "01234_063-00001_000");
  // 1234.005 is stored a little above the half, 0.995 too.
  EXPECT_EQ(depthText(1234.005f, 0.995f, kPrecisionCentimetre), "01234_01-00001_00");
}

TEST(DepthText, NegativeDepthKeepsItsSignInsideTheZeroFill) {
  EXPECT_EQ(depthText(-12.5f, 3.0f, kPrecisionCentimetre), "00-12_50-00003_00");
}

TEST(DepthText, DepthTooWideForTheFieldIsWrittenInFull) {
  EXPECT_EQ(depthText(123456.0f, 123457.0f, kPrecisionCentimetre), "123456_00-123457_00");
  EXPECT_EQ(depthText(99999.99f, 1.0f, kPrecisionCentimetre), "99999_99-00001_00");
}

TEST(FixedField, RightJustifiedWithBlanks) {
  EXPECT_EQ(fixedField(1234.5, 8, 2), " 1234.50");
  EXPECT_EQ(fixedField(0.0, 10, 3), "     0.000");
  EXPECT_EQ(fixedField(-0.001, 8, 2), "    0.00");
  EXPECT_EQ(fixedField(7.0, 3, 0), "  7");
}

TEST(FileStub, DropsFolderAndSuffix) {
  EXPECT_EQ(fileStub("/data/trays/T1.jpg"), "T1");
  EXPECT_EQ(fileStub("T1.jpg"), "T1");
  EXPECT_EQ(fileStub("TRAY_1234_5-1239_5.jpg"), "TRAY_1234_5-1239_5");
}

TEST(FileStub, AcceptsWindowsAndMixedSeparators) {
  EXPECT_EQ(fileStub("C:\\trays\\T1.jpg"), "T1");
  EXPECT_EQ(fileStub("C:/core\\box 3/T2.JPG"), "T2");
  EXPECT_EQ(fileStub("\\\\server\\share\\T3.tif"), "T3");
}

TEST(FileStub, DotInFolderButNotInNameKeepsWholeName) {
  EXPECT_EQ(fileStub("/data/well.7/T1"), "T1");
  EXPECT_EQ(fileStub("C:\\well.7\\run.2\\TRAY_4"), "TRAY_4");
}

TEST(FileStub, TwoDotsCutAtTheFirst) {
  EXPECT_EQ(fileStub("/data/T1.uv.jpg"), "T1");
  EXPECT_EQ(fileStub("/data/well.7/T1.a.b"), "T1");
}

TEST(FileStub, BlankPaddedFieldAndEmptyName) {
  EXPECT_EQ(fileStub("/data/T1.jpg        "), "T1");
  EXPECT_EQ(fileStub("/data/T1     "), "T1");
  EXPECT_EQ(fileStub("/data/"), "");
  EXPECT_EQ(fileStub(""), "");
}

TEST(FolderOf, KeepsTheFinalSeparator) {
  EXPECT_EQ(folderOf("/data/trays/T1.jpg"), "/data/trays/");
  EXPECT_EQ(folderOf("C:\\trays\\T1.jpg"), "C:\\trays\\");
  EXPECT_EQ(folderOf("T1.jpg"), "");
}

TEST(LightTag, OnlyOneMeansUltraviolet) {
  EXPECT_EQ(lightTag(1), "UV");
  for (int v : {0, 2, -1, kIntNull}) EXPECT_EQ(lightTag(v), "WL") << v;
}

TEST(RowFormat, SuffixesAndParsing) {
  EXPECT_EQ(formatSuffix(RowFormat::Bmp), ".bmp");
  EXPECT_EQ(formatSuffix(RowFormat::Cgm), ".cgm");
  EXPECT_EQ(formatSuffix(RowFormat::Png), ".png");
  EXPECT_EQ(formatSuffix(RowFormat::Jpeg), ".jpg");
  EXPECT_EQ(formatSuffix(RowFormat::Tiff), ".tif");
  RowFormat f = RowFormat::Bmp;
  EXPECT_TRUE(parseRowFormat("CGM", f));
  EXPECT_EQ(f, RowFormat::Cgm);
  EXPECT_TRUE(parseRowFormat("jpeg", f));
  EXPECT_EQ(f, RowFormat::Jpeg);
  EXPECT_TRUE(parseRowFormat("tiff", f));
  EXPECT_EQ(f, RowFormat::Tiff);
  EXPECT_TRUE(parseRowFormat(" png ", f));
  EXPECT_EQ(f, RowFormat::Png);
  EXPECT_FALSE(parseRowFormat("gif", f));
  EXPECT_FALSE(parseRowFormat("", f));
  EXPECT_EQ(f, RowFormat::Png);  // unchanged by a refused text
}

TEST(JoinFolder, OneSeparatorBetween) {
  EXPECT_EQ(joinFolder("/out", "a.bmp"), "/out/a.bmp");
  EXPECT_EQ(joinFolder("/out/", "a.bmp"), "/out/a.bmp");
  EXPECT_EQ(joinFolder("C:\\out\\", "a.bmp"), "C:\\out\\a.bmp");
  EXPECT_EQ(joinFolder("", "a.bmp"), "a.bmp");
}

class RowImageName : public ::testing::Test {
 protected:
  NamingOptions options;
  void SetUp() override { options.outputFolder = "/out"; }
};

TEST_F(RowImageName, WhiteLightBitmapInTheOutputFolder) {
  EXPECT_EQ(rowImageName("/photos/TRAY_1234_5-1239_5.jpg", 0, 1234.5f, 1235.5f, options),
            "/out/TRAY_1234_5-1239_5_WL_01234_50-01235_50.bmp");
}

TEST_F(RowImageName, UltravioletTag) {
  EXPECT_EQ(rowImageName("/photos/T1.jpg", 1, 1234.5f, 1235.5f, options), "/out/T1_UV_01234_50-01235_50.bmp");
}

TEST_F(RowImageName, StubHoldingTheTagIsNotTaggedTwice) {
  EXPECT_EQ(rowImageName("/photos/T12_UV.jpg", 1, 1234.5f, 1235.5f, options), "/out/T12_UV_01234_50-01235_50.bmp");
  EXPECT_EQ(rowImageName("/photos/WL_T12.jpg", 0, 1234.5f, 1235.5f, options), "/out/WL_T12_01234_50-01235_50.bmp");
  // Only the photograph's own tag is looked for: a white-light photograph
  // named "UV" still gets "WL".
  EXPECT_EQ(rowImageName("/photos/T12_UV.jpg", 0, 1234.5f, 1235.5f, options),
            "/out/T12_UV_WL_01234_50-01235_50.bmp");
  // The match is exact in case.
  EXPECT_EQ(rowImageName("/photos/t12_uv.jpg", 1, 1234.5f, 1235.5f, options),
            "/out/t12_uv_UV_01234_50-01235_50.bmp");
}

TEST_F(RowImageName, MetafileAndExtraFormats) {
  options.format = RowFormat::Cgm;
  EXPECT_EQ(rowImageName("/p/T1.jpg", 0, 10.0f, 11.0f, options), "/out/T1_WL_00010_00-00011_00.cgm");
  options.format = RowFormat::Png;
  EXPECT_EQ(rowImageName("/p/T1.jpg", 0, 10.0f, 11.0f, options), "/out/T1_WL_00010_00-00011_00.png");
  options.format = RowFormat::Jpeg;
  EXPECT_EQ(rowImageName("/p/T1.jpg", 0, 10.0f, 11.0f, options), "/out/T1_WL_00010_00-00011_00.jpg");
  options.format = RowFormat::Tiff;
  EXPECT_EQ(rowImageName("/p/T1.jpg", 0, 10.0f, 11.0f, options), "/out/T1_WL_00010_00-00011_00.tif");
}

TEST_F(RowImageName, ThreeDecimals) {
  options.precisionOption = kPrecisionMillimetre;
  EXPECT_EQ(rowImageName("/p/T1.jpg", 0, 1234.5f, 1235.5f, options), "/out/T1_WL_01234_500-01235_500.bmp");
}

TEST_F(RowImageName, BesideThePhotograph) {
  options.outputBesidePhoto = true;
  EXPECT_EQ(rowImageName("/photos/a/T1.jpg", 0, 1.0f, 2.0f, options), "/photos/a/T1_WL_00001_00-00002_00.bmp");
  EXPECT_EQ(rowImageName("T1.jpg", 0, 1.0f, 2.0f, options), "T1_WL_00001_00-00002_00.bmp");
}

TEST_F(RowImageName, RootNameReplacesTheStubOnlyWhenAskedAndNotBlank) {
  options.rootName = "WELL7";
  EXPECT_EQ(rowImageName("/p/T1.jpg", 0, 1.0f, 2.0f, options), "/out/T1_WL_00001_00-00002_00.bmp");
  options.useRootName = true;
  EXPECT_EQ(rowImageName("/p/T1.jpg", 0, 1.0f, 2.0f, options), "/out/WELL7_WL_00001_00-00002_00.bmp");
  options.rootName = "WELL7_UV   ";
  EXPECT_EQ(rowImageName("/p/T1.jpg", 1, 1.0f, 2.0f, options), "/out/WELL7_UV_00001_00-00002_00.bmp");
  options.rootName = "    ";
  EXPECT_EQ(rowImageName("/p/T1.jpg", 0, 1.0f, 2.0f, options), "/out/T1_WL_00001_00-00002_00.bmp");
}

TEST_F(RowImageName, OutputFolderWithTrailingSeparatorOrNone) {
  options.outputFolder = "/out/";
  EXPECT_EQ(rowImageName("/p/T1.jpg", 0, 1.0f, 2.0f, options), "/out/T1_WL_00001_00-00002_00.bmp");
  options.outputFolder = "";
  EXPECT_EQ(rowImageName("/p/T1.jpg", 0, 1.0f, 2.0f, options), "T1_WL_00001_00-00002_00.bmp");
}

TEST_F(RowImageName, WindowsSessionPathGivesTheSameName) {
  EXPECT_EQ(rowImageName("D:\\core\\well.7\\T1.jpg", 0, 1.0f, 2.0f, options), "/out/T1_WL_00001_00-00002_00.bmp");
}

}  // namespace
}  // namespace subsurf::split
