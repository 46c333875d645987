#include <gtest/gtest.h>

#include <cstdlib>
#include <cerrno>
#include <filesystem>
#include <utility>

#include "host/atomic_file.h"
#include "host/keyword_file.h"
#include "host/paths.h"
#include "host/settings.h"
#include "support/temp_dir.h"

using namespace subsurf;
using subsurf::testing::TempDir;

// Committed, the new contents replace the old; abandoned half way (no commit),
// the old file stays. Either way no temporary is left.
TEST(AtomicFile, ReplacesTargetOnlyOnCommit) {
  for (bool commit : {true, false}) {
    SCOPED_TRACE(commit ? "committed" : "abandoned");
    TempDir dir;
    const std::string target = dir.write("session.slbs", "old contents\n");
    {
      AtomicFile f;
      ASSERT_TRUE(f.open(target));
      f.writeLine("new contents");
      EXPECT_EQ(TempDir::read(target), "old contents\n");  // untouched while writing
      if (commit) {
        ASSERT_TRUE(f.commit());
      }
    }
    EXPECT_EQ(TempDir::read(target), commit ? "new contents\n" : "old contents\n");
    EXPECT_EQ(dir.list(), std::vector<std::string>{"session.slbs"});
  }
}

TEST(AtomicFile, UnwritableFolderIsReportedWithTheFileName) {
  AtomicFile f;
  Status st = f.open("/nonexistent-folder/sub/file.txt");
  ASSERT_FALSE(st);
  EXPECT_NE(st.message().find("/nonexistent-folder/sub/file.txt"), std::string::npos);
}

TEST(AtomicFile, FailedRenameRemovesTheTemporaryAndKeepsTheOldFile) {
  TempDir dir;
  const std::string target = dir.write("kept.txt", "old\n");
  AtomicFile f;
  ASSERT_TRUE(f.open(target));
  f.writeLine("new");
  failNextRenamesForTesting(1, EXDEV);
  Status st = f.commit();
  ASSERT_FALSE(st);
  EXPECT_EQ(st.message(), "Cannot write " + target + ": cannot replace the file: Invalid cross-device link");
  EXPECT_EQ(dir.list(), std::vector<std::string>{"kept.txt"});
  EXPECT_EQ(TempDir::read(target), "old\n");
}

TEST(AtomicFile, AFolderIsNeverReplacedByAFile) {
  TempDir dir;
  const std::string target = dir.file("occupied");
  std::filesystem::create_directories(target + "/inside");
  AtomicFile f;
  Status st = f.open(target);
  ASSERT_FALSE(st);
  EXPECT_EQ(st.message(), "Cannot write " + target + ": it is a folder");
  EXPECT_EQ(dir.list(), std::vector<std::string>{"occupied"});
  EXPECT_TRUE(std::filesystem::is_directory(target + "/inside"));
}

TEST(KeywordFileReader, SkipsBlankLinesAndCountsLines) {
  TempDir dir;
  const std::string path = dir.write("k.txt", "version,2.11a\n\n   \nimages,2\r\n");
  KeywordFileReader r;
  ASSERT_TRUE(r.open(path));
  CsvRow row;
  ASSERT_TRUE(r.next(row));
  EXPECT_EQ(r.lineNumber(), 1);
  ASSERT_TRUE(r.next(row));
  EXPECT_EQ(r.lineNumber(), 4);
  EXPECT_EQ(row.field(1), "images");
  EXPECT_EQ(r.where("bad count"), path + ", line 4: bad count");
  EXPECT_FALSE(r.next(row));
}

TEST(KeywordFileReader, MissingFileNamesTheFile) {
  KeywordFileReader r;
  Status st = r.open("/no/such/file.slbs");
  ASSERT_FALSE(st);
  EXPECT_EQ(st.message().rfind("Cannot open /no/such/file.slbs", 0), 0u);
}

TEST(KeywordFileWriter, RowsRoundTripThroughAFile) {
  TempDir dir;
  const std::string path = dir.file("rows.txt");
  KeywordFileWriter w;
  ASSERT_TRUE(w.open(path));
  CsvRow a;
  a.addText("  Top").addInt(4).addReal(1234.5f).addText("m, metres");
  w.writeRow(a);
  ASSERT_TRUE(w.commit());
  KeywordFileReader r;
  ASSERT_TRUE(r.open(path));
  CsvRow b;
  ASSERT_TRUE(r.next(b));
  EXPECT_EQ(b.str(), a.str());
  EXPECT_EQ(b.field(1), "  Top");
  EXPECT_EQ(b.field(4), "m, metres");
}

class LogicalPaths : public ::testing::Test {
 protected:
  void SetUp() override {
    for (auto [name, value] : kFolders) setenv(name, value, 1);
  }
  void TearDown() override {
    for (auto [name, value] : kFolders) unsetenv(name);
  }
  static constexpr std::pair<const char*, const char*> kFolders[] = {
      {"SUBSURF_USERLIB", "/u/lib"}, {"SUBSURF_DEFLIB", "/d/lib"}, {"SUBSURF_TEMPDIR", "/scratch"}};
};

// Known prefixes resolve from the environment in any letter case; other names are kept.
TEST_F(LogicalPaths, PrefixesResolveFromTheEnvironment) {
  const std::pair<const char*, const char*> cases[] = {
      {"userlib:rtmplts.rctml", "/u/lib/rtmplts.rctml"},   {"DEFLIB:x_units.def", "/d/lib/x_units.def"},
      {"tempdir:sql/create_units", "/scratch/sql/create_units"}, {"helppath:index.html", "/d/lib/help/index.html"},
      {"/abs/file.jpg", "/abs/file.jpg"},                   {"C:/photos/tray.jpg", "C:/photos/tray.jpg"},
      {"other:thing", "other:thing"}};
  for (const auto& [name, expected] : cases) EXPECT_EQ(resolvePath(name), expected) << name;
}

TEST_F(LogicalPaths, FileNameFromLocationNameAndType) {
  EXPECT_EQ(makeFileName("deflib:", "coredsdefs", "dsdefs"), "/d/lib/coredsdefs.dsdefs");
  EXPECT_EQ(makeFileName("tempdir:sql", "create_units", ""), "/scratch/sql/create_units");
  EXPECT_EQ(makeFileName("userlib:", "user", ""), "/u/lib/user");
}

TEST(LogicalPathDefaults, DeflibFindsTheBundledDataFolder) {
  unsetenv("SUBSURF_DEFLIB");
  EXPECT_TRUE(std::filesystem::is_directory(logicalFolder("deflib:")));
}

TEST(Settings, EnvironmentFirstThenSettingsFile) {
  TempDir dir;
  setenv("SUBSURF_USERLIB", dir.path().c_str(), 1);
  dir.write("settings.cfg", "datefmt,dd/mm/yyyy\n\"output folder\",/data/out\n");
  EXPECT_EQ(setting("DateFmt").value_or("?"), "dd/mm/yyyy");
  EXPECT_EQ(setting("output folder").value_or("?"), "/data/out");
  setenv("SUBSURF_DATEFMT", "yyyy-mm-dd", 1);
  EXPECT_EQ(setting("datefmt").value_or("?"), "yyyy-mm-dd");
  unsetenv("SUBSURF_DATEFMT");
  EXPECT_FALSE(setting("missing").has_value());
  unsetenv("SUBSURF_USERLIB");
}
