// The slabber session commands, run as a user runs them: the built program
// on photographs made in a scratch folder, checking what it prints, its exit
// status and the session files it leaves.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "host/image/image_writer.h"
#include "host/image/raster.h"
#include "session_test_support.h"
#include "support/run_program.h"

namespace subsurf {
namespace {

using namespace testing;
namespace fs = std::filesystem;

using Outcome = subsurf::testing::CommandRun;

using subsurf::testing::shellQuoted;

class SlabberCliTest : public ::testing::Test {
 protected:
  void SetUp() override {
    program = subsurf::testing::builtProgram("slabber");
    ASSERT_TRUE(fs::exists(program)) << program << " has not been built";
  }

  // Runs slabber with the arguments, in the scratch folder, with a scratch
  // user library.
  Outcome slabber(const std::vector<std::string>& args) {
    std::string command = "cd " + shellQuoted(dir.path()) + " && SUBSURF_USERLIB=" + shellQuoted(dir.file("userlib")) + " " +
                          shellQuoted(program.string());
    for (const std::string& a : args) command += " " + shellQuoted(a);
    return subsurf::testing::runCommand(command);
  }

  // A grey JPEG of the given size.
  std::string photo(const std::string& name, int width = 400, int height = 300) {
    image::Raster r(width, height);
    std::fill(r.bytes().begin(), r.bytes().end(), std::uint8_t{128});
    const std::string path = dir.file(name);
    EXPECT_TRUE(image::writeImage(r.view(), path, image::ImageFormat::Jpeg));
    return path;
  }

  // Three 1.5 m trays, one after another down the hole.
  void threeTrays() {
    for (const std::string& t : trays) photo(t);
  }
  const std::vector<std::string> trays = {"TRAY_1234_5-1236_0.jpg", "TRAY_1236_0-1237_5.jpg",
                                          "TRAY_1237_5-1239_0.jpg"};

  std::vector<std::string> newArgs(const std::vector<std::string>& extra) {
    std::vector<std::string> a = {"new", "s.slbs"};
    a.insert(a.end(), trays.begin(), trays.end());
    a.insert(a.end(), extra.begin(), extra.end());
    return a;
  }

  // The line of `show` for image `place`.
  static std::string imageLine(const std::string& out, int place) {
    std::istringstream in(out);
    const std::string start = fmt::format("{:3d}  ", place);
    for (std::string line; std::getline(in, line);)
      if (line.rfind(start, 0) == 0) return line;
    return {};
  }

  static std::vector<std::string> words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> w;
    for (std::string s; in >> s;) w.push_back(s);
    return w;
  }

  TempDir dir;
  fs::path program;
};

TEST_F(SlabberCliTest, NewSessionShowsTheDepthsParsedFromTheFileNames) {
  threeTrays();
  const Outcome made = slabber(newArgs({"--rows", "5", "--depths-from-names"}));
  ASSERT_EQ(made.status, 0) << made.err;
  EXPECT_EQ(made.out,
            "s.slbs: 3 images, 15 rows\n"
            "depths: 3 read from names, 0 typed or imported, 0 carried, 0 without depths\n");

  const Outcome shown = slabber({"show", "s.slbs"});
  ASSERT_EQ(shown.status, 0) << shown.err;
  EXPECT_EQ(shown.out.substr(0, shown.out.find('\n')), "s.slbs: 3 images");
  // file, light, top, base, core length (1.5 m over 5 rows), cores, rectangles
  EXPECT_EQ(words(imageLine(shown.out, 1)),
            (std::vector<std::string>{"1", trays[0], "WL", "1234.50", "1236.00", "0.30", "5", "5"}));
  EXPECT_EQ(words(imageLine(shown.out, 2)),
            (std::vector<std::string>{"2", trays[1], "WL", "1236.00", "1237.50", "0.30", "5", "5"}));
  EXPECT_EQ(words(imageLine(shown.out, 3)),
            (std::vector<std::string>{"3", trays[2], "WL", "1237.50", "1239.00", "0.30", "5", "5"}));

  const Outcome rows = slabber({"show", "s.slbs", "--rows"});
  ASSERT_EQ(rows.status, 0);
  EXPECT_NE(rows.out.find("row  1: 1234.50 - 1234.80\n"), std::string::npos) << rows.out;
  EXPECT_NE(rows.out.find("row  5: 1235.70 - 1236.00\n"), std::string::npos) << rows.out;
  EXPECT_NE(rows.out.find("row  5: 1238.70 - 1239.00\n"), std::string::npos) << rows.out;
}

TEST_F(SlabberCliTest, NewSessionSurvivesARoundTripFieldForField) {
  threeTrays();
  ASSERT_EQ(slabber(newArgs({"--rows", "5", "--depths-from-names", "--uv"})).status, 0);
  CoreSession session;
  SessionOptions options;
  ASSERT_TRUE(readSession(session, options, dir.file("s.slbs"))) << lastMessage();
  ASSERT_EQ(session.imageCount(), 3);
  CoreImage& first = *session.imageAt(1);
  EXPECT_EQ(first.sourceFile(), dir.file(trays[0]));
  EXPECT_EQ(first.intValue(kIntUV), 1);
  EXPECT_EQ(first.intValue(kIntPixelWidth), 400);  // the size the split scales from
  EXPECT_EQ(first.intValue(kIntPixelHeight), 300);
  ASSERT_EQ(CoreSession::rectangleCount(first), 5);
  EXPECT_EQ(session.rectangleAt(first, 5)->polygon.py, (std::vector<int>{240, 240, 300, 300}));
  // Photographs beside the session are kept by their names alone.
  EXPECT_NE(TempDir::read(dir.file("s.slbs")).find("image file,TRAY_1234_5-1236_0.jpg\n"), std::string::npos);

  // Saved again, the file is the same byte for byte (so it reads back the same).
  ASSERT_TRUE(saveSession(session, options, dir.file("again.slbs")));
  EXPECT_EQ(TempDir::read(dir.file("s.slbs")), TempDir::read(dir.file("again.slbs")));
}

TEST_F(SlabberCliTest, NamesWithoutAnIntervalGetNoDepthsUnlessCarried) {
  photo("TRAY_1234_5-1236_0.jpg");
  photo("tray_two.jpg");
  photo("x_118.7-]21.5.jpg");
  const std::vector<std::string> args = {"new", "s", "TRAY_1234_5-1236_0.jpg", "tray_two.jpg", "x_118.7-]21.5.jpg",
                                         "--rows", "3", "--depths-from-names"};
  Outcome made = slabber(args);
  EXPECT_EQ(made.status, 1) << made.err;
  EXPECT_EQ(made.err,
            "slabber: tray_two.jpg: no depth interval in the name\n"
            "slabber: x_118.7-]21.5.jpg: found \"118.7-]21.5\" but \"]\" stands between the hyphen and the base; left "
            "without depths\n"
            "slabber: without depths: tray_two.jpg, x_118.7-]21.5.jpg\n");
  EXPECT_EQ(made.out,
            "s.slbs: 3 images, 9 rows\n"
            "depths: 1 read from names, 0 typed or imported, 0 carried, 2 without depths\n");
  ASSERT_TRUE(fs::exists(dir.file("s.slbs")));  // ".slbs" added; written all the same
  Outcome shown = slabber({"show", "s.slbs"});
  EXPECT_EQ(words(imageLine(shown.out, 2)),
            (std::vector<std::string>{"2", "tray_two.jpg", "WL", "-", "-", "-", "3", "3"}));

  // Asked for, the trays after it continue from it, and each is named.
  std::vector<std::string> carried = args;
  carried.push_back("--carry");
  carried.push_back("--force");
  made = slabber(carried);
  EXPECT_EQ(made.status, 0) << made.err;
  EXPECT_EQ(made.out,
            "s.slbs: 3 images, 9 rows\n"
            "  carried: tray_two.jpg 1236.00-1237.50 (from TRAY_1234_5-1236_0.jpg)\n"
            "  carried: x_118.7-]21.5.jpg 1237.50-1239.00 (from TRAY_1234_5-1236_0.jpg)\n"
            "depths: 1 read from names, 0 typed or imported, 2 carried, 0 without depths\n");
  shown = slabber({"show", "s.slbs"});
  EXPECT_EQ(words(imageLine(shown.out, 2)),
            (std::vector<std::string>{"2", "tray_two.jpg", "WL", "1236.00", "1237.50", "0.50", "3", "3"}));
}

TEST_F(SlabberCliTest, PhotographsLeftWithoutDepthsGiveExitStatusOne) {
  photo("first.jpg");
  photo("TRAY_1234_5-1236_0.jpg");
  const Outcome made = slabber({"new", "s.slbs", "first.jpg", "TRAY_1234_5-1236_0.jpg", "--depths-from-names"});
  EXPECT_EQ(made.status, 1);
  EXPECT_NE(made.err.find("slabber: without depths: first.jpg\n"), std::string::npos) << made.err;
  const Outcome shown = slabber({"show", "s.slbs"});
  EXPECT_EQ(words(imageLine(shown.out, 1)),
            (std::vector<std::string>{"1", "first.jpg", "WL", "-", "-", "-", "-", "0"}));
  // Without rectangles the rows offered for an unset number are five.
  EXPECT_EQ(words(imageLine(shown.out, 2))[6], "5");
}

TEST_F(SlabberCliTest, TypedDepthsAreCarriedOverTheTrays) {
  threeTrays();
  Outcome made = slabber(newArgs({"--rows", "4", "--top", "100", "--base", "102", "--cores", "4"}));
  EXPECT_EQ(made.status, 1) << made.err;  // typed depths are the first tray's alone
  EXPECT_EQ(made.err, "slabber: without depths: " + trays[1] + ", " + trays[2] + "\n");
  made = slabber(newArgs({"--rows", "4", "--top", "100", "--base", "102", "--cores", "4", "--carry", "--force"}));
  ASSERT_EQ(made.status, 0) << made.err;
  EXPECT_NE(made.out.find("depths: 0 read from names, 1 typed or imported, 2 carried, 0 without depths\n"),
            std::string::npos)
      << made.out;
  const Outcome shown = slabber({"show", "s.slbs"});
  EXPECT_EQ(words(imageLine(shown.out, 1))[3], "100.00");
  EXPECT_EQ(words(imageLine(shown.out, 3))[3], "104.00");
  EXPECT_EQ(words(imageLine(shown.out, 3))[4], "106.00");
  EXPECT_EQ(words(imageLine(shown.out, 3))[5], "0.50");
}

TEST_F(SlabberCliTest, ImpossibleDepthsAndBadArgumentsExitWithTwoAndWriteNothing) {
  threeTrays();
  Outcome r = slabber(newArgs({"--top", "102", "--base", "102"}));
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: Error - Top depth >= Base Depth!\n");
  EXPECT_FALSE(fs::exists(dir.file("s.slbs")));

  photo("TRAY_1236_0-1234_5.jpg");
  r = slabber({"new", "upside.slbs", "TRAY_1236_0-1234_5.jpg", "--depths-from-names"});
  EXPECT_EQ(r.status, 1);  // the name is refused; the photograph is kept without depths
  EXPECT_EQ(r.err,
            "slabber: TRAY_1236_0-1234_5.jpg: found \"1236_0-1234_5\" but the top is not above the base; left without "
            "depths\nslabber: without depths: TRAY_1236_0-1234_5.jpg\n");

  r = slabber({"new", "s.slbs", "missing.jpg"});
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("Error loading"), std::string::npos) << r.err;
  EXPECT_FALSE(fs::exists(dir.file("s.slbs")));

  EXPECT_EQ(slabber(newArgs({"--rows", "5", "--template", "five"})).status, 2);
  EXPECT_EQ(slabber(newArgs({"--rows", "0"})).status, 2);
  EXPECT_EQ(slabber(newArgs({"--top", "100"})).status, 2);  // --top needs --base
  EXPECT_EQ(slabber({"new", "s.slbs"}).status, 2);          // no photographs
  EXPECT_EQ(slabber({"show"}).status, 2);
  EXPECT_EQ(slabber({"show", "none.slbs"}).status, 2);
  EXPECT_FALSE(fs::exists(dir.file("s.slbs")));
}

TEST_F(SlabberCliTest, ExistingSessionIsReplacedOnlyWhenForced) {
  threeTrays();
  const Outcome made = slabber(newArgs({"--rows", "2"}));
  ASSERT_EQ(made.status, 0);  // no depths asked for: counted, not a failure
  EXPECT_EQ(made.out,
            "s.slbs: 3 images, 6 rows\n"
            "depths: 0 read from names, 0 typed or imported, 0 carried, 3 without depths\n");
  const std::string before = TempDir::read(dir.file("s.slbs"));
  const Outcome refused = slabber(newArgs({"--rows", "3"}));
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.err, "slabber: s.slbs already exists; give --force to replace it\n");
  EXPECT_EQ(TempDir::read(dir.file("s.slbs")), before);
  EXPECT_EQ(slabber(newArgs({"--rows", "3", "--force"})).status, 0);
  EXPECT_NE(TempDir::read(dir.file("s.slbs")), before);
}

TEST_F(SlabberCliTest, ForceReplacesOnlyASessionNeverAPhotograph) {
  // "slabber new *.jpg --force" takes the first photograph for the session's name.
  threeTrays();
  const std::string photoBefore = TempDir::read(dir.file(trays[0]));
  std::vector<std::string> args = {"new"};
  args.insert(args.end(), trays.begin(), trays.end());
  args.push_back("--force");
  const Outcome refused = slabber(args);
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.err, "slabber: " + trays[0] +
                             " is not a session file; it is left as it is (name another session file)\n");
  EXPECT_EQ(TempDir::read(dir.file(trays[0])), photoBefore);

  // A session saved by another program with a byte-order mark is still a session.
  dir.write("marked.slbs", "\xEF\xBB\xBFversion,2.11a\nimages,0\n");
  EXPECT_EQ(slabber({"new", "marked.slbs", trays[1], "--force"}).status, 0);
  EXPECT_EQ(TempDir::read(dir.file("marked.slbs")).rfind("version,", 0), 0u);
}

TEST_F(SlabberCliTest, DepthsCommandRefusesWithoutTouchingTheFileElseCarriesAndSaves) {
  threeTrays();
  ASSERT_EQ(slabber(newArgs({"--rows", "5", "--depths-from-names"})).status, 0);
  const std::string before = TempDir::read(dir.file("s.slbs"));
  Outcome r = slabber({"depths", "s.slbs", "--from", "4", "--top", "1", "--base", "2"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: Image 4 is not in s.slbs (it holds 3 images)\n");
  r = slabber({"depths", "s.slbs", "--from", "0", "--top", "1", "--base", "2"});
  EXPECT_EQ(r.status, 2);
  r = slabber({"depths", "s.slbs", "--from", "1", "--top", "5", "--base", "2"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: Error - Top depth >= Base Depth!\n");
  r = slabber({"depths", "s.slbs", "--from", "1", "--top", "deep", "--base", "2"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(TempDir::read(dir.file("s.slbs")), before);

  r = slabber({"depths", "s.slbs", "--from", "2", "--top", "2000", "--base", "2001.5"});
  ASSERT_EQ(r.status, 0) << r.err;
  const Outcome shown = slabber({"show", "s.slbs", "--rows"});
  EXPECT_EQ(words(imageLine(shown.out, 1))[3], "1234.50");  // before the run: untouched
  EXPECT_EQ(words(imageLine(shown.out, 2))[3], "2000.00");
  EXPECT_EQ(words(imageLine(shown.out, 2))[4], "2001.50");
  EXPECT_EQ(words(imageLine(shown.out, 3))[3], "2001.50");
  EXPECT_EQ(words(imageLine(shown.out, 3))[4], "2003.00");
  EXPECT_NE(shown.out.find("row  1: 2000.00 - 2000.30\n"), std::string::npos) << shown.out;
}

TEST_F(SlabberCliTest, DamagedSessionIsReportedWithItsLine) {
  threeTrays();
  ASSERT_EQ(slabber(newArgs({"--rows", "5"})).status, 0);
  auto lines = fileLines(dir.file("s.slbs"));
  lines.resize(20);
  dir.write("cut.slbs", joinLines(lines, lines.size()));
  const Outcome r = slabber({"show", "cut.slbs"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err.rfind("slabber: cut.slbs, line 21: the file ends where", 0), 0u) << r.err;
  const Outcome d = slabber({"depths", "cut.slbs", "--from", "1", "--top", "1", "--base", "2"});
  EXPECT_EQ(d.status, 2);
  EXPECT_EQ(joinLines(fileLines(dir.file("cut.slbs")), 100), joinLines(lines, lines.size()));
}

TEST_F(SlabberCliTest, TemplateLibrary) {
  Outcome r = slabber({"templates", "list"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "slabber: No templates defined\n");

  threeTrays();
  ASSERT_EQ(slabber(newArgs({"--rows", "5"})).status, 0);
  r = slabber({"templates", "save", "", "--from", "s.slbs", "--image", "1"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: Rectangle template must be given a name!\n");
  r = slabber({"templates", "save", "five", "--from", "s.slbs", "--image", "9"});
  EXPECT_EQ(r.status, 2);

  r = slabber({"templates", "save", "five", "--from", "s.slbs", "--image", "1", "--description", "Five bands"});
  ASSERT_EQ(r.status, 0) << r.err;
  r = slabber({"templates", "list"});
  EXPECT_EQ(r.out, "five  Five bands\n");

  r = slabber({"templates", "show", "five"});
  ASSERT_EQ(r.status, 0);
  EXPECT_NE(r.out.find("description: Five bands\n"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("drawn on: 400 x 300 pixels\n"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("rectangles: 5\n"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("  1: (0,0) (400,0) (400,60) (0,60)\n"), std::string::npos) << r.out;

  r = slabber({"templates", "show", "six"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: Could not open template file!\n");

  // Laid on a photograph twice the size, the template is scaled to it.
  photo("TRAY_1239_0-1240_5.jpg", 800, 600);
  r = slabber({"new", "big.slbs", "TRAY_1239_0-1240_5.jpg", "--template", "five", "--depths-from-names"});
  ASSERT_EQ(r.status, 0) << r.err;
  CoreSession session;
  SessionOptions options;
  ASSERT_TRUE(readSession(session, options, dir.file("big.slbs")));
  CoreImage& image = *session.imageAt(1);
  ASSERT_EQ(CoreSession::rectangleCount(image), 5);
  EXPECT_EQ(image.rectangles->polygon.px, (std::vector<int>{0, 800, 800, 0}));
  EXPECT_EQ(image.rectangles->polygon.py, (std::vector<int>{0, 0, 120, 120}));
  EXPECT_EQ(image.intValue(kIntCoreNumber), 5);
  EXPECT_EQ(image.realValue(kRealTop), 1239.0f);

  EXPECT_EQ(slabber({"new", "x.slbs", "TRAY_1239_0-1240_5.jpg", "--template", "six"}).status, 2);
  EXPECT_FALSE(fs::exists(dir.file("x.slbs")));
}

TEST_F(SlabberCliTest, PhotographsAreOrderedNaturallyUnlessKeptInOrder) {
  const std::vector<std::string> boxes = {"K-DD-51_BOX(12) 33.0-36.0.JPG", "K-DD-51_BOX(2) 3.0-6.0.JPG",
                                          "k-dd-51_box(10) 27.0-30.0.JPG", "K-DD-51_BOX(1) 0.0-3.0.JPG"};
  for (const std::string& b : boxes) photo(b);
  std::vector<std::string> args = {"new", "s.slbs"};
  args.insert(args.end(), boxes.begin(), boxes.end());
  args.push_back("--depths-from-names");
  ASSERT_EQ(slabber(args).status, 0);
  Outcome shown = slabber({"show", "s.slbs"});
  EXPECT_EQ(words(imageLine(shown.out, 1))[1], "K-DD-51_BOX(1)");
  EXPECT_EQ(words(imageLine(shown.out, 2))[1], "K-DD-51_BOX(2)");
  EXPECT_EQ(words(imageLine(shown.out, 3))[1], "k-dd-51_box(10)");
  EXPECT_EQ(words(imageLine(shown.out, 4))[1], "K-DD-51_BOX(12)");

  args.push_back("--keep-order");
  args.push_back("--force");
  ASSERT_EQ(slabber(args).status, 0);
  shown = slabber({"show", "s.slbs"});
  EXPECT_EQ(words(imageLine(shown.out, 1))[1], "K-DD-51_BOX(12)");
  EXPECT_EQ(words(imageLine(shown.out, 4))[1], "K-DD-51_BOX(1)");
}

TEST_F(SlabberCliTest, DepthTableIsImportedReportingWhatDoesNotMatch) {
  threeTrays();
  ASSERT_EQ(slabber(newArgs({"--rows", "4"})).status, 0);
  dir.write("depths.csv",
            "photo,top,base,cores,core length\n"
            "TRAY_1234_5-1236_0,10,12,4\n"
            "\"tray_1236_0-1237_5.JPG\",12,14,,0.5\n"
            "nine.jpg,1,2\n");
  Outcome r = slabber({"depths", "s.slbs", "--table", "depths.csv"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out,
            "s.slbs: depths of 2 photos imported from depths.csv\n"
            "depths: 0 read from names, 2 typed or imported, 0 carried, 1 without depths\n");
  EXPECT_EQ(r.err,
            "slabber: depths.csv, line 4: \"nine.jpg\" matches no photo of the session\n"
            "slabber: depths.csv does not list: " + trays[2] + "\n"
            "slabber: without depths: " + trays[2] + "\n");
  Outcome shown = slabber({"show", "s.slbs", "--rows"});
  EXPECT_EQ(words(imageLine(shown.out, 1)),
            (std::vector<std::string>{"1", trays[0], "WL", "10.00", "12.00", "0.50", "4", "4"}));
  EXPECT_EQ(words(imageLine(shown.out, 2)),
            (std::vector<std::string>{"2", trays[1], "WL", "12.00", "14.00", "0.50", "4", "4"}));
  EXPECT_NE(shown.out.find("row  4: 13.50 - 14.00\n"), std::string::npos) << shown.out;

  // A place names a photo too; with every photo listed the exit status is 0.
  dir.write("all.csv", "1,10,12\n2,12,14\n3,14,16\n");
  r = slabber({"depths", "s.slbs", "--table", "all.csv"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
}

TEST_F(SlabberCliTest, BadDepthTablesChangeNothing) {
  threeTrays();
  ASSERT_EQ(slabber(newArgs({"--rows", "4", "--depths-from-names"})).status, 0);
  const std::string before = TempDir::read(dir.file("s.slbs"));
  const std::pair<std::string, std::string> cases[] = {
      {"1,10,deep\n", "slabber: t.csv, line 1: base \"deep\" is not a number\n"},
      {"photo,top,base\n2,12,11\n", "slabber: t.csv, line 2: Error - Top depth >= Base Depth!\n"},
      {"1,10,12,0\n", "slabber: t.csv, line 1: cores \"0\" is not a whole number from 1 to 13\n"},
      {"1,10,12,,0\n", "slabber: t.csv, line 1: core length \"0\" is not a length above 0.001\n"},
      {"1,10,12\n" + trays[0] + ",20,22\n",
       "slabber: t.csv, lines 1 and 2: both give depths for " + trays[0] + "\n"},
      {",10,12\n", "slabber: t.csv, line 1: no photo in the first column\n"},
  };
  for (const auto& [text, message] : cases) {
    dir.write("t.csv", text);
    const Outcome r = slabber({"depths", "s.slbs", "--table", "t.csv"});
    EXPECT_EQ(r.status, 2) << text;
    EXPECT_EQ(r.err, message);
    EXPECT_EQ(TempDir::read(dir.file("s.slbs")), before) << text;
  }
  EXPECT_EQ(slabber({"depths", "s.slbs", "--table", "none.csv"}).status, 2);
  const Outcome both = slabber({"depths", "s.slbs", "--carry", "--table", "t.csv"});
  EXPECT_EQ(both.status, 2);
  EXPECT_EQ(both.err, "slabber: give one of: --from K --top T --base B, --carry, --table FILE.csv\n");
}

TEST_F(SlabberCliTest, DepthsCarryFillsOnlyThePhotosWithout) {
  photo("A 10.0-12.0.jpg");
  photo("B.jpg");
  photo("C 20.0-22.0.jpg");
  photo("D.jpg");
  Outcome r = slabber({"new", "s.slbs", "A 10.0-12.0.jpg", "B.jpg", "C 20.0-22.0.jpg", "D.jpg", "--rows", "2",
                       "--depths-from-names"});
  ASSERT_EQ(r.status, 1);
  r = slabber({"depths", "s.slbs", "--carry"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out,
            "s.slbs: depths carried into 2 photos without depths\n"
            "  carried: B.jpg 12.00-14.00 (from A 10.0-12.0.jpg)\n"
            "  carried: D.jpg 22.00-24.00 (from C 20.0-22.0.jpg)\n"
            "depths: 2 read from names, 0 typed or imported, 2 carried, 0 without depths\n");
  const Outcome shown = slabber({"show", "s.slbs"});
  EXPECT_EQ(words(imageLine(shown.out, 3))[4], "20.00");  // read from its name: kept
}

TEST_F(SlabberCliTest, ShowJsonGivesEveryImageAndRow) {
  photo("A 10.0-12.0.jpg");
  photo("B.jpg");
  ASSERT_EQ(slabber({"new", "s.slbs", "A 10.0-12.0.jpg", "B.jpg", "--rows", "2", "--depths-from-names"}).status, 1);
  const Outcome r = slabber({"show", "s.slbs", "--json"});
  ASSERT_EQ(r.status, 0) << r.err;
  const nlohmann::json j = nlohmann::json::parse(r.out);
  EXPECT_EQ(j["session"], "s.slbs");
  ASSERT_EQ(j["images"].size(), 2u);
  const nlohmann::json& a = j["images"][0];
  EXPECT_EQ(a["file"], "A 10.0-12.0.jpg");
  EXPECT_EQ(a["light"], "WL");
  EXPECT_EQ(a["unit"], "m");
  EXPECT_EQ(a["top"], 10.0);
  EXPECT_EQ(a["base"], 12.0);
  EXPECT_EQ(a["core_length"], 1.0);
  EXPECT_EQ(a["cores"], 2);
  EXPECT_EQ(a["depths_from"], "name");
  const nlohmann::json& row2 = a["rows"][1];
  EXPECT_EQ(row2["row"], 2);
  EXPECT_EQ(row2["top"], 11.0);
  EXPECT_EQ(row2["base"], 12.0);
  EXPECT_EQ(row2["outline"], "rectangle");
  ASSERT_EQ(row2["corners"].size(), 4u);
  // The second of two bands: its top-left corner is at the middle of the photo's left edge.
  EXPECT_EQ(row2["corners"][0][0], 0);
  EXPECT_EQ(row2["corners"][2][1].get<int>(), 2 * row2["corners"][0][1].get<int>());
  const nlohmann::json& b = j["images"][1];
  EXPECT_TRUE(b["top"].is_null());
  EXPECT_EQ(b["depths_from"], "none");
  EXPECT_TRUE(b["rows"][0]["top"].is_null());
}

TEST_F(SlabberCliTest, VersionAndMistypedCommands) {
  Outcome r = slabber({"--version"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out.rfind("slabber ", 0), 0u) << r.out;
  EXPECT_NE(r.out.find('.'), std::string::npos) << r.out;

  r = slabber({"splt", "s.slbs"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: unknown command \"splt\"; did you mean \"split\"? (slabber --help lists them)\n");
  r = slabber({"templates", "lsit"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err,
            "slabber: unknown command \"lsit\"; did you mean \"templates list\"? (slabber --help lists them)\n");
  r = slabber({"shwo"});
  EXPECT_EQ(r.err, "slabber: unknown command \"shwo\"; did you mean \"show\"? (slabber --help lists them)\n");

  const Outcome other = subsurf::testing::runCommand(shellQuoted(subsurf::testing::builtProgram("subsurf")) +
                                                     " --version");
  EXPECT_EQ(other.status, 0);
  EXPECT_EQ(other.out.rfind("subsurf ", 0), 0u) << other.out;
}

}  // namespace
}  // namespace subsurf
