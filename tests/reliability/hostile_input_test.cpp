// Input from a file is untrusted: a session's names never take the output
// outside its folder, a run replaces only its own kind of file, text from a
// session is data in the report, and damaged or oversized photographs are
// errors named by file, never grey rows or an exhausted machine.
#include <climits>
#include <cstring>

#include "host/image/pixel_limit.h"
#include "reliability/reliability_support.h"

namespace subsurf::reliability {
namespace {

std::string refusal(const std::string& sessionFile, const std::string& keyword, const std::string& name) {
  return "slabber: " + sessionFile + ": \"" + keyword + "\" \"" + name +
         "\" is refused: it must be a file name, without \"/\", \"\\\" or \"..\", so that nothing is written "
         "outside the output folder\n";
}

class HostileSession : public SessionOnDisk {};

TEST_F(HostileSession, ARootNameThatIsAPathIsRefusedAndNothingIsWritten) {
  const auto before = filesIn(dir.path().string());
  for (const std::string name : {"../../x", "/tmp/abs", "sub/dir", "a\\b", ".."}) {
    SCOPED_TRACE(name);
    sessionOptions.override = 1;
    sessionOptions.rootName = name;
    save();
    const CommandRun r = run("split " + sessionFile + " --out " + out);
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, refusal(sessionFile, "rootname", name));
    EXPECT_TRUE(filesIn(out).empty());
    EXPECT_EQ(filesIn(dir.path().string()), before);
  }
  // Not used (override 0), it is not in the way.
  sessionOptions.override = 0;
  save();
  EXPECT_EQ(run("split " + sessionFile + " --out " + out).status, 0);
}

TEST_F(HostileSession, TheEditorRefusesToOpenASessionWhoseRootNameIsAPath) {
  // The editor splits with the session's names; no command line can name other places.
  sessionOptions.override = 1;
  sessionOptions.rootName = "../../x";
  save();
  const CommandRun r = run("edit " + sessionFile + " --port 0");
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, refusal(sessionFile, "rootname", "../../x"));
}

TEST_F(HostileSession, AReportRootThatIsAPathIsRefusedUnlessTheCommandLineNamesTheReport) {
  sessionOptions.doReport = 1;
  sessionOptions.reportRoot = "../../escape.csv";
  save();
  CommandRun r = run("split " + sessionFile + " --out " + out);
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, refusal(sessionFile, "report_root", "../../escape.csv"));
  EXPECT_TRUE(filesIn(out).empty());
  // The user asks for that place on the command line: it is theirs to choose.
  const std::string chosen = dir.file("chosen.csv");
  r = run("split " + sessionFile + " --out " + out + " --report " + chosen);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(readLines(chosen).at(0), " Table of clipping depths,");
}

TEST_F(HostileSession, TheReportReplacesOnlyAReport) {
  const std::string notes = dir.file("notes.csv");
  writeAll(notes, "well,notes\nkeep,me\n");
  CommandRun r = run("split " + sessionFile + " --out " + out + " --report " + notes);
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("slabber: " + notes +
                       " is not a table of clipping depths; it is left as it is (name another report file)\n"),
            std::string::npos)
      << r.err;
  EXPECT_EQ(readAll(notes), "well,notes\nkeep,me\n");
  EXPECT_EQ(filesIn(out).size(), 16u);  // the rows are written all the same, and their manifest
  // A previous report is replaced.
  const std::string table = dir.file("table.csv");
  ASSERT_EQ(run("split " + sessionFile + " --out " + out + " --report " + table).status, 0);
  const std::string first = readAll(table);
  r = run("split " + sessionFile + " --out " + out + " --report " + table);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(readAll(table), first);
}

TEST_F(HostileSession, TheManifestReplacesOnlyAManifest) {
  const std::string list = dir.file("holes.csv");
  writeAll(list, "hole,azimuth\nK-DD-51,270\n");
  CommandRun r = run("split " + sessionFile + " --out " + out + " --manifest " + list);
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("slabber: " + list + " is not a split manifest; it is left as it is (name another manifest "
                       "file)\n"),
            std::string::npos)
      << r.err;
  EXPECT_EQ(readAll(list), "hole,azimuth\nK-DD-51,270\n");
  EXPECT_EQ(filesIn(out).size(), 15u);  // the rows are written all the same
  // A previous manifest is replaced by the same lines.
  const std::string manifest = dir.file("m.csv");
  ASSERT_EQ(run("split " + sessionFile + " --out " + out + " --manifest " + manifest).status, 0);
  const std::string first = readAll(manifest);
  r = run("split " + sessionFile + " --out " + out + " --manifest " + manifest);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(readAll(manifest), first);
  EXPECT_EQ(readLines(manifest).size(), 16u);  // header and fifteen rows
}

TEST_F(HostileSession, ARowImageReplacesOnlyAnImageAndItsReportLineIsStillWritten) {
  const std::string taken = outFile("T1_WL_01001_00-01002_00.bmp");
  writeAll(taken, "not a picture\n");
  const std::string table = dir.file("t.csv");
  const CommandRun r = run("split " + sessionFile + " --out " + out + " --report " + table + " --jobs 1");
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("slabber: " + taken +
                       " ... converting to BMP\nConversion failed. (a file that is not a bmp image is already "
                       "there; it is left as it is)\n"),
            std::string::npos)
      << r.err;
  EXPECT_NE(r.out.find("  rows:          14 written of 15\n"), std::string::npos) << r.out;
  EXPECT_EQ(readAll(taken), "not a picture\n");
  // The table has the line of the row that could not be written.
  const auto lines = readLines(table);
  ASSERT_EQ(lines.size(), 2u + 3u * 6u);
  EXPECT_EQ(lines[4], "  1001.000, 0,   1002.000, 0, , " + taken);
}

TEST_F(HostileSession, PathsFromTheSessionAreWrittenAsDataInTheReport) {
  const std::string odd = dir.file("T1, \"bad\" $(touch pwned).png");
  fs::copy_file(photos[0], odd);
  session.images().front()->setSourceFile(odd);
  save();
  const std::string table = dir.file("t.csv");
  const CommandRun r = run("split " + sessionFile + " --out " + out + " --report " + table + " --jobs 1");
  EXPECT_EQ(r.status, 0) << r.err;
  const auto lines = readLines(table);
  ASSERT_GE(lines.size(), 4u);
  const std::string quotedPhoto = "\"" + dir.file("T1, \"\"bad\"\" $(touch pwned).png") + "\"";
  EXPECT_EQ(lines[2], "Source Image, " + quotedPhoto);
  EXPECT_EQ(lines[3], "  1000.000, 0,   1001.000, 0, , \"" + out + "/T1, \"\"bad\"\" $(touch pwned)_WL_01000_00-01001_00.bmp\"");
  EXPECT_FALSE(fs::exists("pwned"));
  EXPECT_FALSE(fs::exists(dir.file("pwned")));
}

// ---------------------------------------------------------------------------
// Damaged and oversized photographs.

// A JPEG's bytes with 600 bytes of its coded data replaced by noise (no
// marker bytes), as a bad sector or a broken transfer leaves it.
std::string withNoiseInTheMiddle(std::string jpeg) {
  const std::size_t scan = jpeg.find("\xFF\xDA");
  const std::size_t at = (scan + jpeg.size()) / 2;
  for (std::size_t i = 0; i < 600 && at + i + 2 < jpeg.size(); ++i)
    jpeg[at + i] = static_cast<char>((i * 37 + 11) % 255);  // never 0xFF
  return jpeg;
}

// The JPEG's frame header changed to claim width x height.
std::string claimingSize(std::string jpeg, int width, int height) {
  const std::size_t sof = jpeg.find("\xFF\xC0");
  EXPECT_NE(sof, std::string::npos);
  jpeg[sof + 5] = static_cast<char>(height >> 8);
  jpeg[sof + 6] = static_cast<char>(height & 0xFF);
  jpeg[sof + 7] = static_cast<char>(width >> 8);
  jpeg[sof + 8] = static_cast<char>(width & 0xFF);
  return jpeg;
}

std::uint32_t crc32(const std::string& bytes) {
  std::uint32_t c = 0xFFFFFFFFu;
  for (unsigned char b : bytes) {
    c ^= b;
    for (int k = 0; k < 8; ++k) c = (c >> 1) ^ (0xEDB88320u & (0u - (c & 1u)));
  }
  return ~c;
}

// The PNG's header chunk changed to claim width x height (its check sum made good).
std::string pngClaimingSize(std::string png, std::uint32_t width, std::uint32_t height) {
  auto put = [&](std::size_t at, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) png[at + i] = static_cast<char>(v >> (24 - 8 * i));
  };
  put(16, width);
  put(20, height);
  put(29, crc32(png.substr(12, 17)));
  return png;
}

class DamagedPhoto : public SessionOnDisk {
 protected:
  // Tray 1 becomes the given JPEG bytes; trays 2 and 3 stay good.
  void useJpeg(const std::string& bytes) {
    jpeg = dir.file("T1.jpg");
    writeAll(jpeg, bytes);
    session.images().front()->setSourceFile(jpeg);
    save();
  }
  std::string goodJpeg() {
    split::testing::makePhoto(dir.file("good.jpg"), 300, 200);
    return readAll(dir.file("good.jpg"));
  }
  void expectOnlyTray1Failed(const CommandRun& r, const std::string& reason) {
    EXPECT_EQ(r.status, 1) << r.err;
    EXPECT_NE(r.err.find("slabber: Error loading: " + jpeg + " (" + reason), std::string::npos) << r.err;
    EXPECT_NE(r.out.find("  rows:          10 written of 15\n"), std::string::npos) << r.out;
    for (const std::string& name : filesIn(out)) EXPECT_FALSE(name.starts_with("T1_")) << name;
  }
  std::string jpeg;
};

TEST_F(DamagedPhoto, NoiseInTheCodedDataIsAnErrorOnBothDecodingPaths) {
  useJpeg(withNoiseInTheMiddle(goodJpeg()));
  // BMP rows go through the one-pass cutter first; PNG rows only through libvips.
  for (const std::string format : {"bmp", "png"}) {
    SCOPED_TRACE(format);
    fs::remove_all(out);
    expectOnlyTray1Failed(run("split " + sessionFile + " --out " + out + " --format " + format + " --jobs 1"),
                          "VipsJpeg: Corrupt JPEG data");
  }
}

TEST_F(DamagedPhoto, AHeaderClaimingMoreRowsThanTheDataHoldsIsAnError) {
  useJpeg(claimingSize(goodJpeg(), 300, 260));
  expectOnlyTray1Failed(run("split " + sessionFile + " --out " + out + " --jobs 1"), "VipsJpeg: Corrupt JPEG data: premature end of data segment)");
}

TEST_F(DamagedPhoto, AClaimedSizeBeyondTheLimitIsRefusedBeforeDecoding) {
  useJpeg(claimingSize(goodJpeg(), 30000, 30000));
  const auto started = std::chrono::steady_clock::now();
  const CommandRun r = run("split " + sessionFile + " --out " + out + " --jobs 1");
  expectOnlyTray1Failed(r, "30000 x 30000 pixels is more than the limit of 250 megapixels)");
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(20));
  // The limit can be set: a lower one refuses even these small trays.
  const CommandRun low = run("split " + sessionFile + " --out " + out + " --max-megapixels 0.05");
  EXPECT_EQ(low.status, 1);
  EXPECT_NE(low.err.find("slabber: Error loading: " + photos[1] +
                         " (300 x 200 pixels is more than the limit of 0.05 megapixels)"),
            std::string::npos)
      << low.err;
}

TEST_F(DamagedPhoto, APreviewOfAPngClaimingAHugeSizeIsRefused) {
  const std::string png = pngClaimingSize(readAll(photos[1]), 100000, 100000);
  writeAll(photos[1], png);
  const auto started = std::chrono::steady_clock::now();
  const CommandRun r = run("preview " + sessionFile + " --out " + out);
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("slabber: Error loading: " + photos[1] +
                       " (100000 x 100000 pixels is more than the limit of 250 megapixels)"),
            std::string::npos)
      << r.err;
  EXPECT_NE(r.out.find("Previews written: 2 of 3\n"), std::string::npos) << r.out;
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(20));
}

TEST(PixelLimit, CheckedAgainstTheClaimedSize) {
  EXPECT_TRUE(image::checkPixelCount(20000, 12500));  // exactly 250 megapixels
  EXPECT_EQ(image::checkPixelCount(20000, 12501).message(),
            "20000 x 12501 pixels is more than the limit of 250 megapixels");
  EXPECT_EQ(image::checkPixelCount(0, 10).message(), "the picture claims 0 x 10 pixels");
  EXPECT_EQ(image::checkPixelCount(INT_MAX, INT_MAX).message(),
            "2147483647 x 2147483647 pixels is more than the limit of 250 megapixels");
  image::setMaxMegapixels(1.0);
  EXPECT_EQ(image::checkPixelCount(1001, 1000).message(), "1001 x 1000 pixels is more than the limit of 1 megapixels");
  image::setMaxMegapixels(0.0);  // back to the default
  EXPECT_EQ(image::maxMegapixels(), image::kDefaultMegapixels);
}

}  // namespace
}  // namespace subsurf::reliability
