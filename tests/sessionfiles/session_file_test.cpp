// Session files: save and read back field for field (no images, one, many;
// with and without rectangles), the records and their order, files of the
// older versions, and how photograph paths are kept.
#include <gtest/gtest.h>

#include <filesystem>

#include <fmt/format.h>

#include "core/split_process.h"
#include "session_test_support.h"
#include "subsurf/core.h"
#include "units/units_registry.h"

namespace subsurf {
namespace {

using namespace testing;
namespace fs = std::filesystem;

class SessionFileTest : public ::testing::Test {
 protected:
  void SetUp() override { host::clearRecorded(); }

  // A session of `images` images, `rectangles` rectangles each, whose
  // photographs lie in the scratch folder.
  void fill(CoreSession& session, int images, int rectangles) {
    for (int k = 1; k <= images; ++k)
      fillImage(session, *session.newImage(), k, dir.file(fmt::format("TRAY_{}.jpg", k)), rectangles);
  }

  // Saves, reads into a session that already holds other work, and checks
  // that the work was replaced by exactly what was saved.
  void roundTrip(int images, int rectangles) {
    CoreSession saved;
    fill(saved, images, rectangles);
    const std::string path = dir.file("s.slbs");
    ASSERT_TRUE(saveSession(saved, unusualOptions(), path));

    CoreSession read;
    fill(read, 2, 1);
    read.images()[0]->setSourceFile("/elsewhere/old.jpg");
    SessionOptions options;
    ASSERT_TRUE(readSession(read, options, path)) << lastMessage();
    expectSameSession(saved, read);
    expectSameOptions(options, unusualOptions());
    // Ids are given afresh in file order, the first image becomes current.
    int id = 0;
    for (CoreImage* image : read.images()) EXPECT_EQ(image->id, ++id);
    EXPECT_EQ(read.currentImage(), images > 0 ? read.imageAt(1) : nullptr);
  }

  TempDir dir;
};

TEST_F(SessionFileTest, RoundTripOfEmptySessionEmptiesTheSessionAndSaysSo) {
  roundTrip(0, 0);
  EXPECT_EQ(lastMessage(), "This session contains no core images!");
}

TEST_F(SessionFileTest, RoundTripOfOneImageWithoutRectangles) {
  roundTrip(1, 0);
  EXPECT_TRUE(host::recordedMessages().empty());
}

TEST_F(SessionFileTest, RoundTripOfOneImageWithRectangles) { roundTrip(1, 5); }

TEST_F(SessionFileTest, RoundTripOfManyImagesWithRectangles) { roundTrip(12, 7); }

TEST_F(SessionFileTest, RoundTripOfRectangleLimit) {
  // Rectangle ids run 1..100, so a tray can hold at most 100 rectangles.
  roundTrip(2, kMaxRectangleId);
}

TEST_F(SessionFileTest, HeadRecordsAreWrittenInOrderWithTheVersionAndQuotedTexts) {
  CoreSession session;
  const std::string path = dir.file("empty.slbs");
  ASSERT_TRUE(saveSession(session, unusualOptions(), path));
  EXPECT_EQ(TempDir::read(path),
            "version,2.11a\n"
            "images,0\n"
            "override,1\n"
            "rootname,\"WELL-7, run \"\"B\"\"\"\n"
            "cgms,1\n"
            "do_report,1\n"
            "report_root,clip table\n"
            "report_ip,2\n");
}

TEST_F(SessionFileTest, ImageAndRectangleRecordsFollowInOrder) {
  CoreSession session;
  fill(session, 2, 2);
  const std::string path = dir.file("order.slbs");
  ASSERT_TRUE(saveSession(session, SessionOptions{}, path));

  // The keywords of the file's own records, in order (scalar rows left out).
  std::vector<std::string> keys;
  for (const std::string& line : fileLines(path)) {
    const std::string key = line.substr(0, line.find(','));
    if (key == "version" || key == "images" || key == "image num" || key == "image file" ||
        key == "integer scalars" || key == "real scalars" || key == "polies" || key == "poly num" || key == "verts")
      keys.push_back(key == "image num" || key == "poly num" || key == "polies" || key == "integer scalars" ||
                             key == "real scalars"
                         ? line
                         : key);
  }
  const std::vector<std::string> image = {"integer scalars,10", "real scalars,30", "polies,2",
                                          "poly num,1",         "integer scalars,6", "verts",
                                          "poly num,2",         "integer scalars,6", "verts"};
  std::vector<std::string> expected = {"version", "images", "image num,1", "image file"};
  expected.insert(expected.end(), image.begin(), image.end());
  expected.insert(expected.end(), {"image num,2", "image file"});
  expected.insert(expected.end(), image.begin(), image.end());
  EXPECT_EQ(keys, expected);
}

TEST_F(SessionFileTest, ImageWithoutRectanglesHasPoliesZeroAndNoRectangleRecords) {
  CoreSession session;
  fill(session, 1, 0);
  const std::string path = dir.file("bare.slbs");
  ASSERT_TRUE(saveSession(session, SessionOptions{}, path));
  const auto lines = fileLines(path);
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back(), "polies,0");
  for (const std::string& line : lines) {
    EXPECT_NE(line.rfind("poly num", 0), 0u) << line;
    EXPECT_NE(line.rfind("verts", 0), 0u) << line;
  }
}

TEST_F(SessionFileTest, VertsHoldPixelAndWorldCoordinatesWithUnsetWorldLeftEmpty) {
  CoreSession session;
  CoreImage* image = session.newImage();
  image->setSourceFile(dir.file("a.jpg"));
  CoreRectangle* r = session.newRectangle(*image);
  CoreSession::setVertexCount(*r, 2);
  r->polygon.px = {10, 20};
  r->polygon.py = {30, 40};
  CoreSession::setWorldVertex(*r, 5.5f, -2.25f, 1);  // vertex 2's world coordinates stay unset
  const std::string path = dir.file("v.slbs");
  ASSERT_TRUE(saveSession(session, SessionOptions{}, path));
  const auto lines = fileLines(path);
  // Empty fields are quoted, as every empty text of a row is.
  EXPECT_EQ(lines.back(), "verts,2,10,30,5.5,-2.25,20,40,\"\",\"\"");
}

TEST_F(SessionFileTest, PhotographsInTheSessionFolderAreKeptRelativeAndFollowAMovedFolder) {
  CoreSession session;
  const std::string inside = dir.file("trays/T 1, top.jpg");
  const std::string outside = "/var/photos/T2.jpg";
  session.newImage()->setSourceFile(inside);
  session.newImage()->setSourceFile(outside);
  session.newImage()->setSourceFile("C:\\cores\\T3.jpg");
  const std::string path = dir.file("s.slbs");
  ASSERT_TRUE(saveSession(session, SessionOptions{}, path));

  std::vector<std::string> stored;
  for (const std::string& line : fileLines(path))
    if (line.rfind("image file,", 0) == 0) stored.push_back(line);
  EXPECT_EQ(stored, (std::vector<std::string>{"image file,\"trays/T 1, top.jpg\"", "image file,/var/photos/T2.jpg",
                                              "image file,C:\\cores\\T3.jpg"}));

  // The folder moved (or shared): the photographs are found beside the session.
  fs::create_directories(dir.file("moved"));
  fs::copy_file(path, dir.file("moved/s.slbs"));
  CoreSession read;
  SessionOptions options;
  ASSERT_TRUE(readSession(read, options, dir.file("moved/s.slbs")));
  EXPECT_EQ(read.imageAt(1)->sourceFile(), dir.file("moved/trays/T 1, top.jpg"));
  EXPECT_EQ(read.imageAt(2)->sourceFile(), outside);
  EXPECT_EQ(read.imageAt(3)->sourceFile(), "C:\\cores\\T3.jpg");
}

TEST_F(SessionFileTest, PhotoPathRules) {
  EXPECT_EQ(storedPhotoPath("/a/b/photos/x.jpg", "/a/b/s.slbs"), "photos/x.jpg");
  EXPECT_EQ(storedPhotoPath("/a/b/x.jpg", "/a/b/s.slbs"), "x.jpg");
  EXPECT_EQ(storedPhotoPath("/a/c/x.jpg", "/a/b/s.slbs"), "/a/c/x.jpg");  // no "../" paths
  EXPECT_EQ(storedPhotoPath("/a/b/../c/x.jpg", "/a/b/s.slbs"), "/a/c/x.jpg");
  EXPECT_EQ(storedPhotoPath("", "/a/b/s.slbs"), "");
  EXPECT_EQ(storedPhotoPath("D:/cores/x.jpg", "/a/b/s.slbs"), "D:/cores/x.jpg");

  EXPECT_EQ(resolvedPhotoPath("photos/x.jpg", "/a/b/s.slbs"), "/a/b/photos/x.jpg");
  EXPECT_EQ(resolvedPhotoPath("../x.jpg", "/a/b/s.slbs"), "/a/x.jpg");
  EXPECT_EQ(resolvedPhotoPath("/c/x.jpg", "/a/b/s.slbs"), "/c/x.jpg");
  EXPECT_EQ(resolvedPhotoPath("\\\\server\\x.jpg", "/a/b/s.slbs"), "\\\\server\\x.jpg");
  EXPECT_EQ(resolvedPhotoPath("C:\\x.jpg", "/a/b/s.slbs"), "C:\\x.jpg");
  EXPECT_EQ(resolvedPhotoPath("", "/a/b/s.slbs"), "");

  EXPECT_TRUE(isAbsolutePath("c:/x"));
  EXPECT_FALSE(isAbsolutePath("c:x"));
  EXPECT_FALSE(isAbsolutePath("x/y"));
}

TEST_F(SessionFileTest, SavingTwiceGivesTheSameFile) {
  // A session read and saved again is written byte for byte as before, so
  // saving never drifts values (reals, nulls, texts) from one run to the next.
  CoreSession session;
  fill(session, 3, 4);
  const std::string first = dir.file("a.slbs"), second = dir.file("b.slbs");
  ASSERT_TRUE(saveSession(session, unusualOptions(), first));
  CoreSession read;
  SessionOptions options;
  ASSERT_TRUE(readSession(read, options, first));
  ASSERT_TRUE(saveSession(read, options, second));
  EXPECT_EQ(TempDir::read(first), TempDir::read(second));
}

TEST_F(SessionFileTest, VersionsCompareAsDecimalNumbersThenRevision) {
  FileVersion v21, v211, v211a, v22, v3;
  ASSERT_TRUE(parseFileVersion("2.1", v21));
  ASSERT_TRUE(parseFileVersion("2.11", v211));
  ASSERT_TRUE(parseFileVersion("2.11a", v211a));
  ASSERT_TRUE(parseFileVersion("2.2", v22));
  ASSERT_TRUE(parseFileVersion("3", v3));
  EXPECT_EQ(v211a.revision, "a");
  EXPECT_LT(compareVersions(v21, v211), 0);
  EXPECT_LT(compareVersions(v211, v211a), 0);
  EXPECT_LT(compareVersions(v211a, v22), 0);
  EXPECT_LT(compareVersions(v22, v3), 0);
  EXPECT_EQ(compareVersions(v211a, v211a), 0);
  EXPECT_GT(compareVersions(v211, v21), 0);
  FileVersion bad;
  EXPECT_FALSE(parseFileVersion("", bad));
  EXPECT_FALSE(parseFileVersion("version", bad));
  EXPECT_FALSE(parseFileVersion(".", bad));
}

// ---------------------------------------------------------------------------
// Files of earlier versions, written as those versions wrote them.

struct OldFile {
  const char* name;
  const char* version;
  bool report;        // "do_report" and "report_root"
  bool reportOption;  // "report_ip"
};

void PrintTo(const OldFile& f, std::ostream* os) { *os << '"' << f.version << '"'; }

class OldFileTest : public SessionFileTest {
 protected:
  static std::string head(const char* version, bool report, bool reportOption) {
    std::string s = fmt::format("version,{}\nimages,1\noverride,1\nrootname,HOLE-3\ncgms,1\n", version);
    if (report) s += "do_report,1\nreport_root,table.csv\n";
    if (reportOption) s += "report_ip,2\n";
    return s;
  }
  static std::string image() {
    const int depth = unitsRegistry().findSeries("depth");
    return fmt::format(
        "image num,1\n"
        "image file,trays/TRAY_1234_5-1236_0.jpg\n"
        "integer scalars,2\n"
        "uv,1,1,1,0\n"
        "viewed,1,1,1,0\n"
        "real scalars,2\n"
        "top_depth,4,1234.5,m,{0},1,1,0,,Top Depth,Top depth of the tray,-4\n"
        "base_depth,4,1236,m,{0},1,1,0\n"
        "polies,1\n"
        "poly num,1\n"
        "integer scalars,1\n"
        "status,1,0,-1,0\n"
        "verts,4,0,0,,,100,0,,,100,50,,,0,50,,\n",
        depth);
  }
};

class OldVersionTest : public OldFileTest, public ::testing::WithParamInterface<OldFile> {};

TEST_P(OldVersionTest, ReadsWithTheOptionalRecordsOfItsVersion) {
  const OldFile f = GetParam();
  const std::string path = dir.write("old.slbs", head(f.version, f.report, f.reportOption) + image());
  CoreSession session;
  SessionOptions options;
  ASSERT_TRUE(readSession(session, options, path)) << lastMessage();

  const SessionOptions defaults;
  EXPECT_EQ(options.override, 1);
  EXPECT_EQ(options.rootName, "HOLE-3");
  EXPECT_EQ(options.cgms, 1);
  EXPECT_EQ(options.doReport, f.report ? 1 : defaults.doReport);
  EXPECT_EQ(options.reportRoot, f.report ? "table.csv" : defaults.reportRoot);
  EXPECT_EQ(options.reportOption, f.reportOption ? 2 : defaults.reportOption);

  ASSERT_EQ(session.imageCount(), 1);
  CoreImage& image = *session.imageAt(1);
  EXPECT_EQ(image.sourceFile(), dir.file("trays/TRAY_1234_5-1236_0.jpg"));
  EXPECT_EQ(image.intValue(kIntUV), 1);
  EXPECT_EQ(image.intValue(kIntViewed), 1);
  EXPECT_TRUE(isNull(image.intValue(kIntCoreNumber)));  // not in the file: stays unset
  EXPECT_EQ(image.realValue(kRealTop), 1234.5f);
  EXPECT_EQ(image.realValue(kRealBase), 1236.0f);
  EXPECT_EQ(depthUnitOf(image.realSetting(kRealTop)), "m");
  EXPECT_TRUE(isNull(image.realSetting(kRealTop).RELERR));
  EXPECT_TRUE(isNull(image.realSetting(kRealBase).RELERR));  // row ends before the relative error
  EXPECT_EQ(fixedText(image.realSetting(kRealBase).SHORT), "Base");  // kept from the image's own set-up
  EXPECT_TRUE(isNull(image.realValue(kRealCoreLength)));
  ASSERT_EQ(CoreSession::rectangleCount(image), 1);
  const Polygon& p = image.rectangles->polygon;
  EXPECT_EQ(p.px, (std::vector<int>{0, 100, 100, 0}));
  EXPECT_EQ(p.py, (std::vector<int>{0, 0, 50, 50}));
  EXPECT_EQ(p.wxSet, (std::vector<int>{0, 0, 0, 0}));
  EXPECT_EQ(p.props[kPolyStatus].V, 0);
  EXPECT_EQ(p.props[kPolyColour].V, 2);  // not in the file: the default colour
}

INSTANTIATE_TEST_SUITE_P(Versions, OldVersionTest,
                         ::testing::Values(OldFile{"v19", "1.9", false, false}, OldFile{"v20", "2.0", false, false},
                                           OldFile{"v21", "2.1", true, false}, OldFile{"v211", "2.11", true, true},
                                           OldFile{"v211a", "2.11a", true, true},
                                           OldFile{"v211aPadded", "2.11a   ", true, true}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OldFileTest, ReportRecordsNotOfTheVersionAreErrors) {
  const struct { const char* version; bool report, reportOption; const char* what; } cases[] = {
      {"2.1", true, true, "line 8: \"image num\" expected, found \"report_ip\""},
      {"2.11", true, false, "line 8: \"report_ip\" expected, found \"image num\""},
      {"2.0", true, false, "line 6: \"image num\" expected, found \"do_report\""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.version);
    const std::string path = dir.write("old.slbs", head(c.version, c.report, c.reportOption) + image());
    CoreSession session;
    SessionOptions options;
    EXPECT_FALSE(readSession(session, options, path));
    EXPECT_EQ(lastMessage(), path + ", " + c.what);
  }
}

// ---------------------------------------------------------------------------
// The exported routines work on the tool's session and its split options.

TEST_F(SessionFileTest, ExportedRoutinesCarryTheSplitOptionsThroughTheFile) {
  CoreSession& tool = coreSession();
  tool.close();
  fill(tool, 2, 3);
  split::SplitOptions& o = split::toolSplitOptions();
  const split::SplitOptions before = o;
  o.naming.useRootName = true;
  o.naming.rootName = "ROOT";
  o.naming.format = split::RowFormat::Cgm;
  o.writeReport = true;
  o.reportFile = "depths.csv";
  o.reportStyle = 2;

  std::string name(260, ' ');
  setFixed(name.data(), name.size(), dir.file("tool.slbs"));
  int status = -1;
  COR_SAVESESSION(name.c_str(), &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(toolUserSettings().sessionsPath, dir.path());

  o = split::SplitOptions{};
  tool.close();
  COR_READSESSION(name.c_str(), &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(tool.imageCount(), 2);
  EXPECT_TRUE(o.naming.useRootName);
  EXPECT_EQ(o.naming.rootName, "ROOT");
  EXPECT_EQ(o.naming.format, split::RowFormat::Cgm);
  EXPECT_TRUE(o.writeReport);
  EXPECT_EQ(o.reportFile, "depths.csv");
  EXPECT_EQ(o.reportStyle, 2);

  // A blank name is refused before anything is touched.
  const std::string blank(260, ' ');
  COR_READSESSION(blank.c_str(), &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(lastMessage(), "No session file given!");
  EXPECT_EQ(tool.imageCount(), 2);

  o = before;
  tool.close();
}

TEST_F(SessionFileTest, TheLibraryRefusesASessionWhoseRootNameIsAPath) {
  CoreSession& tool = coreSession();
  tool.close();
  fill(tool, 1, 2);
  split::SplitOptions& o = split::toolSplitOptions();
  const split::SplitOptions before = o;
  SessionOptions hostile;
  hostile.override = 1;
  hostile.rootName = "../../escape";
  const std::string path = dir.file("hostile.slbs");
  ASSERT_TRUE(saveSession(tool, hostile, path));

  o.naming.rootName = "HOST";
  std::string name(260, ' ');
  setFixed(name.data(), name.size(), path);
  int status = -1;
  COR_READSESSION(name.c_str(), &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(lastMessage(), path +
                               ": \"rootname\" \"../../escape\" is refused: it must be a file name, without \"/\", "
                               "\"\\\" or \"..\", so that nothing is written outside the output folder");
  EXPECT_EQ(o.naming.rootName, "HOST");  // the host's own options stay

  o = before;
  tool.close();
}

TEST_F(SessionFileTest, PngChoiceIsSavedAsBitmaps) {
  split::SplitOptions o;
  o.naming.format = split::RowFormat::Png;
  EXPECT_EQ(sessionOptionsFrom(o).cgms, 0);
  SessionOptions s;
  s.cgms = 1;
  applySessionOptions(s, o);
  EXPECT_EQ(o.naming.format, split::RowFormat::Cgm);
  s.cgms = 2;  // only 1 means metafiles
  applySessionOptions(s, o);
  EXPECT_EQ(o.naming.format, split::RowFormat::Bmp);
}

}  // namespace
}  // namespace subsurf
