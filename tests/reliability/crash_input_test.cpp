// No crash, whatever the input: each of these once ended in an abort, a
// sanitizer report or an exhausted machine; now each gets a message and an
// exit status. And the smaller faults: byte-order marks, overflowing
// correlations, a column given twice.
#include <climits>
#include <sstream>

#include "host/fixed_text.h"
#include "host/number_text.h"
#include "host/keyword_file.h"
#include "reliability/reliability_support.h"

namespace subsurf::reliability {
namespace {

using subsurf::testing::runCommand;

class CrashInput : public SessionOnDisk {};

TEST_F(CrashInput, VerticesAtTheIntegerLimitsGiveARowNotAnOverflow) {
  CoreImage& first = *session.images().front();
  split::testing::setBoxes(session, first, {{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, {0, 0, 300, 40}});
  save();
  const CommandRun r = run("split " + sessionFile + " --out " + out + " --jobs 1");
  ASSERT_NE(r.status, -1) << "the program did not exit normally";
  EXPECT_EQ(r.status, 0) << r.err;
  // Held at the coordinate limit and clipped, the box is the whole photograph.
  const image::Raster row = split::testing::readRow(outFile("T1_WL_01000_00-01001_00.bmp"));
  EXPECT_EQ(row.width(), 300);
  EXPECT_EQ(row.height(), 200);
}

TEST_F(CrashInput, FileSystemErrorsEndWithTheProgramNameAndStatusTwo) {
  const std::string longName = dir.file(std::string(300, 'a') + ".slbs");
  CommandRun r = run("new " + longName + " " + photos[0]);
  EXPECT_EQ(r.status, 2);
  EXPECT_TRUE(r.err.starts_with("slabber: ")) << r.err;
  EXPECT_NE(r.err.find("File name too long"), std::string::npos) << r.err;

  // A relative output folder when the working folder has been deleted.
  const std::string gone = dir.file("gone");
  fs::create_directories(gone);
  r = runCommand("cd " + gone + " && rmdir " + gone + " && " + slabber() + " split " + sessionFile + " --out rel");
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: filesystem error: cannot make absolute path: No such file or directory [rel]\n");
}

TEST_F(CrashInput, AnEndlessFileIsReadNoFurtherThanTheLineLimit) {
  const CommandRun r = run("show /dev/zero");
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "slabber: Could not open the session: /dev/zero, line 1: longer than 1048576 bytes, not read\n");
}

TEST(TextLimits, LinesAndFilesBeyondTheLimitsAreRefusedNamingTheFile) {
  subsurf::testing::TempDir dir;
  std::vector<std::string> lines;
  const std::string longLine = dir.write("long.txt", "a\nb\n" + std::string(kMaxTextLineBytes + 1, 'x') + "\n");
  EXPECT_EQ(subsurf::readLines(longLine, lines).message(),
            longLine + ", line 3: longer than 1048576 bytes, not read");
  EXPECT_TRUE(lines.empty());
  const std::string atLimit = dir.write("limit.txt", std::string(kMaxTextLineBytes, 'x') + "\r\nend");
  ASSERT_TRUE(subsurf::readLines(atLimit, lines));
  EXPECT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].size(), kMaxTextLineBytes);
  EXPECT_EQ(lines[1], "end");
  std::string big;
  for (std::size_t i = 0; i * 1000 <= kMaxTextFileBytes; ++i) big += std::string(999, 'y') + "\n";
  const std::string huge = dir.write("huge.txt", big);
  EXPECT_EQ(subsurf::readLines(huge, lines).message(), huge + ": larger than 67108864 bytes, not read");
}

TEST(TextLimits, LinesReadOneAtATimeStopAtTheLimit) {
  const std::string limit(kMaxTextLineBytes, 'x');
  std::istringstream in("a\r\n\n" + limit + "\r\n" + limit + "\nlast");
  std::string line;
  bool tooLong = true;
  std::vector<std::string> lines;
  while (readBoundedLine(in, line, tooLong)) lines.push_back(line);
  EXPECT_FALSE(tooLong);
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0], "a");
  EXPECT_EQ(lines[1], "");
  EXPECT_EQ(lines[2], limit);
  EXPECT_EQ(lines[3], limit);
  EXPECT_EQ(lines[4], "last");
  for (const std::string& text : {limit + "y\nnext", limit + "yz", limit + "\ry\n"}) {
    std::istringstream over("ok\n" + text);
    ASSERT_TRUE(readBoundedLine(over, line, tooLong));
    EXPECT_FALSE(readBoundedLine(over, line, tooLong));
    EXPECT_TRUE(tooLong) << text.size();
  }
}

TEST(TextLimits, TheSmallestIntegerAsAFormatWordIsFifteenDigits) {
  EXPECT_EQ(formatReal(1.0 / 3.0, INT_MIN), formatReal(1.0 / 3.0, -15));
  EXPECT_EQ(formatReal(1.0 / 3.0, INT_MIN), "0.333333333333333");
}

// ---------------------------------------------------------------------------
// A byte-order mark before the first record.

constexpr std::string_view kMark = "\xEF\xBB\xBF";

TEST_F(CrashInput, AByteOrderMarkIsAcceptedInSessionTemplateAndSettingsFiles) {
  writeAll(sessionFile, std::string(kMark) + readAll(sessionFile));
  CoreSession again;
  ASSERT_TRUE(again.init());
  SessionOptions o;
  ASSERT_TRUE(readSession(again, o, sessionFile));
  EXPECT_EQ(again.images().size(), 3u);
  again.close();
  EXPECT_EQ(run("show " + sessionFile).status, 0);

  RectangleTemplate holder;
  CoreSession::templateFromImage(*session.images().front(), holder, 300, 200);
  holder.description = "five rows";
  const std::string templ = dir.file("t.rctml");
  ASSERT_TRUE(saveTemplateFile(holder, templ));
  writeAll(templ, std::string(kMark) + readAll(templ));
  RectangleTemplate back;
  ASSERT_TRUE(readTemplateFile(templ, back));
  EXPECT_EQ(back.rectangles.size(), 5u);
  EXPECT_EQ(trimBlanks(back.description), "five rows");

  UserSettings user;
  user.outputPath = "/data/rows";
  const std::string settings = dir.file("user");
  ASSERT_TRUE(writeUserSettings(user, settings));
  writeAll(settings, std::string(kMark) + readAll(settings));
  UserSettings read;
  ASSERT_TRUE(readUserSettings(settings, read));
  EXPECT_EQ(trimBlanks(read.outputPath), "/data/rows");
}

// ---------------------------------------------------------------------------
// The fluids command.

class FluidsInput : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!fs::exists(subsurfProgram())) GTEST_SKIP() << "the subsurf program is not built";
  }
  CommandRun fluids(const std::string& args, const std::string& env = "") {
    return runCommand(env + subsurfProgram() + " fluids " + args);
  }
  subsurf::testing::TempDir dir;
};

// Inputs that drive the live-oil viscosity past the range of a float.
constexpr const char* kOverflowing = "--set tres=0 --set dres=1e30 --set oden=35 --set sgden=0.7 --set solgor=500 --set gden=0.7";

TEST_F(FluidsInput, OverflowingCorrelationsAreNullInTheFormsTheJsonAndTheBatch) {
  CommandRun r = fluids(kOverflowing);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out.find("inf"), std::string::npos) << r.out;
  EXPECT_EQ(r.out.find("nan"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("  ovisc     Live-oil viscosity                                  cp        calculated\n"),
            std::string::npos)
      << r.out;
  r = fluids(std::string(kOverflowing) + " --json");
  EXPECT_EQ(r.status, 0) << r.err;
  const auto at = r.out.find("\"name\": \"ovisc\"");
  ASSERT_NE(at, std::string::npos);
  EXPECT_EQ(r.out.substr(r.out.find("\"value\"", at), 13), "\"value\": null");

  const std::string in = dir.write("cases.csv", "tres,dres,oden,sgden,solgor,gden\n0,1e30,35,0.7,500,0.7\n");
  r = fluids("--batch " + in);
  EXPECT_EQ(r.status, 0) << r.err;
  const auto rows = split::testing::readLines(dir.write("out.csv", r.out));
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[1].find("inf"), std::string::npos) << rows[1];
  // ovisc is the 13th column: empty.
  std::vector<std::string> cells;
  std::stringstream line(rows[1]);
  for (std::string cell; std::getline(line, cell, ',');) cells.push_back(cell);
  ASSERT_GE(cells.size(), 13u);
  EXPECT_EQ(cells[12], "");
  EXPECT_EQ(cells[0], "1e+30");
}

TEST_F(FluidsInput, AnEndlessBatchIsReadNoFurtherThanTheLineLimit) {
  const CommandRun r = fluids("--batch /dev/zero --out " + dir.file("out.csv"));
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "subsurf fluids: /dev/zero row 1: longer than 1048576 bytes, not read\n");
  EXPECT_FALSE(fs::exists(dir.file("out.csv")));
}

TEST_F(FluidsInput, ResultsReplaceOnlyEarlierResults) {
  const std::string in = dir.write("cases.csv", "dres[m],oden\n1524,35\n");
  const std::string notes = dir.write("notes.csv", "my,notes\n");
  CommandRun r = fluids("--batch " + in + " --out " + notes);
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "subsurf fluids: cannot write \"" + notes +
                       "\": it is not a results file of this command; it is left as it is\n");
  EXPECT_EQ(readAll(notes), "my,notes\n");
  const std::string results = dir.file("results.csv");
  ASSERT_EQ(fluids("--batch " + in + " --out " + results).status, 0);
  const std::string first = readAll(results);
  r = fluids("--batch " + in + " --out " + results);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(readAll(results), first);
}

TEST_F(FluidsInput, AColumnGivenTwiceIsRefusedNamingBoth) {
  const std::string in = dir.write("twice.csv", "tres, dres[m],oden,dres[ft]\n1,2,3,4\n");
  const CommandRun r = fluids("--batch " + in + " --out " + dir.file("out.csv"));
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "subsurf fluids: " + in + " columns 2 (\"dres[m]\") and 4 (\"dres[ft]\") both give \"dres\"\n");
  EXPECT_FALSE(fs::exists(dir.file("out.csv")));
}

TEST_F(FluidsInput, AUnitNameThatIsNotUtf8IsWrittenReplacedInTheJson) {
  // A copy of the shipped definitions with "psia" spelt with a stray byte.
  const std::string deflib = dir.file("deflib");
  fs::create_directories(deflib);
  for (const auto& e : fs::directory_iterator(SUBSURF_SOURCE_DATA_DIR))
    if (e.is_regular_file()) fs::copy_file(e.path(), deflib + "/" + e.path().filename().string());
  std::string defs = readAll(deflib + "/x_units.def");
  for (std::size_t at = defs.find("psia"); at != std::string::npos; at = defs.find("psia", at)) defs[at + 2] = '\xFF';
  writeAll(deflib + "/x_units.def", defs);
  const CommandRun r = fluids("--json", "SUBSURF_DEFLIB=" + deflib + " ");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("\"unit\": \"ps\xEF\xBF\xBD" "a\""), std::string::npos) << r.out.substr(0, 600);
}

}  // namespace
}  // namespace subsurf::reliability
