// Damaged session files: truncated or corrupt files are refused with a
// message naming the file and the line, and the session being worked on is
// left exactly as it was; failed saves leave the file on disk alone.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include <fmt/format.h>

#include "host/safe_file.h"
#include "session_test_support.h"

namespace subsurf {
namespace {

using namespace testing;
namespace fs = std::filesystem;

class SessionDamageTest : public ::testing::Test {
 protected:
  void SetUp() override {
    host::clearRecorded();
    CoreSession saved;
    for (int k = 1; k <= 2; ++k)
      fillImage(saved, *saved.newImage(), k, dir.file(fmt::format("TRAY_{}.jpg", k)), 2);
    good = dir.file("good.slbs");
    ASSERT_TRUE(saveSession(saved, unusualOptions(), good));
    lines = fileLines(good);
    // The session being worked on: one image of its own.
    work.newImage()->setSourceFile("/work/current.jpg");
    setDepth(work.imageAt(1)->realSetting(kRealTop), 55.0f, "");
    workOptions.rootName = "mine";
  }

  // Reads `path` into the working session, expecting a refusal whose message
  // is "<path>, line <line>: <what>" with `what` starting as given.
  void expectRefused(const std::string& path, int line, const std::string& what) {
    host::clearRecorded();
    SessionOptions options = workOptions;
    const Status s = readSession(work, options, path);
    ASSERT_FALSE(s);
    const std::string prefix = fmt::format("{}, line {}: ", path, line);
    EXPECT_EQ(lastMessage(), s.message());
    EXPECT_EQ(s.message().substr(0, prefix.size()), prefix) << s.message();
    EXPECT_EQ(s.message().substr(prefix.size(), what.size()), what) << s.message();
    expectWorkUnchanged(options);
  }

  void expectWorkUnchanged(const SessionOptions& options) {
    ASSERT_EQ(work.imageCount(), 1);
    EXPECT_EQ(work.imageAt(1)->sourceFile(), "/work/current.jpg");
    EXPECT_EQ(work.imageAt(1)->realValue(kRealTop), 55.0f);
    EXPECT_EQ(options.rootName, "mine");
  }

  // The good file with line `number` (from 1) replaced.
  std::string withLine(int number, const std::string& text) {
    std::vector<std::string> copy = lines;
    copy[static_cast<std::size_t>(number - 1)] = text;
    return dir.write("bad.slbs", joinLines(copy, copy.size()));
  }

  // Line number (from 1) of the first line starting with `start`, from line `from` on.
  int lineOf(const std::string& start, int from = 1) const {
    for (std::size_t k = static_cast<std::size_t>(from - 1); k < lines.size(); ++k)
      if (lines[k].rfind(start, 0) == 0) return static_cast<int>(k) + 1;
    ADD_FAILURE() << "no line starting with " << start;
    return 1;
  }

  TempDir dir;
  std::string good;
  std::vector<std::string> lines;
  CoreSession work;
  SessionOptions workOptions;
};

TEST_F(SessionDamageTest, FileCutAfterAnyLineIsRefusedAtItsEnd) {
  ASSERT_GT(lines.size(), 100u);
  for (std::size_t keep = 0; keep < lines.size(); ++keep) {
    SCOPED_TRACE(keep);
    const std::string path = dir.write("cut.slbs", joinLines(lines, keep));
    expectRefused(path, static_cast<int>(keep) + 1, "the file ends where");
  }
}

TEST_F(SessionDamageTest, FileCutInsideARecordIsRefusedAtThatRecord) {
  const int verts = lineOf("verts");
  std::vector<std::string> copy(lines.begin(), lines.begin() + verts);
  copy.back() = copy.back().substr(0, copy.back().size() / 2);
  const std::string path = dir.write("cut.slbs", joinLines(copy, copy.size()));
  expectRefused(path, verts, "\"verts\" gives 4 vertices, which take 18 fields");
}

TEST_F(SessionDamageTest, CorruptRecordsAreNamedWithTheirLine) {
  const int imageNum2 = lineOf("image num,2");
  const int reals = lineOf("real scalars");
  const int polies = lineOf("polies");
  const int view = lineOf("view,");
  const int verts = lineOf("verts");
  struct Case {
    int line;
    std::string text;
    std::string what;
  };
  const std::vector<Case> cases = {
      {1, "\xff\xd8\xff\xe0 JFIF", "\"version\" expected, found \"\xff\xd8\xff\xe0 JFIF\""},
      {1, "version,next", "\"next\" is not a session file version"},
      {2, "images,two", "\"images\" needs a whole number in field 2, found \"two\""},
      {2, "images,-1", "\"images\" gives -1, which is not between 0 and 100000"},
      {2, "images", "\"images\" has no value in field 2"},
      {3, "overide,1", "\"override\" expected, found \"overide\""},
      {imageNum2, "image num,3", "image 2 expected, \"image num\" gives 3"},
      {reals + 1, "top_depth,1,1234,m", "real scalar 1 of 30 expected, found \"top_depth\""},
      {reals + 2, "base_depth,4,deep,m", "Row \"base_depth\": column 3 is not a number"},
      {polies, "polies,101", "\"polies\" gives 101, which is not between 0 and 100"},
      {polies + 1, "poly num,2", "rectangle 1 expected, \"poly num\" gives 2"},
      {view, "view,11,0,1,0,1,1,1,1,0,1,1", "view 11 is not between 1 and 10"},
      {view, "view,1,0,1,0", "a view takes 12 fields, the record has 5"},
      {view, "view,1,0,1,0,1,1,1,1,0,wide,1", "\"view\" needs a number in field 11, found \"wide\""},
      {view, "image file,x.jpg", "\"image file\" found where \"real scalars\" was expected"},
      {view, "mystery,9", "\"mystery\" is neither a scalar nor a view of the image"},
      {verts, "verts,4,0,0,,,1,1", "\"verts\" gives 4 vertices, which take 18 fields, but the record has 8"},
      {verts, "verts,1,0,x,,", "\"verts\" needs a whole number in field 4, found \"x\""},
      {verts, "verts,1,0,0,1.5,left", "\"verts\" needs a number in field 6, found \"left\""},
      {verts, "verts,-4", "\"verts\" gives -4, which is not between 0 and 10000"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    expectRefused(withLine(c.line, c.text), c.line, c.what);
  }
}

TEST_F(SessionDamageTest, RecordsAfterTheLastImageAreRefused) {
  const std::string path = dir.write("extra.slbs", joinLines(lines, lines.size()) + "image num,3\n");
  expectRefused(path, static_cast<int>(lines.size()) + 1, "\"image num\" found after the last image");
}

TEST_F(SessionDamageTest, UnknownScalarsInTheImageBlockArePassedOver) {
  // A later version may keep more of the image there; such files still open.
  std::vector<std::string> copy = lines;
  const int reals = lineOf("real scalars");
  copy.insert(copy.begin() + (reals - 1), "brightness,4,1.25,,-1,1,1,0");
  const std::string path = dir.write("later.slbs", joinLines(copy, copy.size()));
  SessionOptions options;
  ASSERT_TRUE(readSession(work, options, path)) << lastMessage();
  EXPECT_EQ(work.imageCount(), 2);
}

TEST_F(SessionDamageTest, BlankLinesAreIgnoredAndCountedInLineNumbers) {
  std::vector<std::string> copy = lines;
  copy.insert(copy.begin() + 2, "");
  copy[3] = "override,yes";  // was line 3, now line 4
  const std::string path = dir.write("blank.slbs", joinLines(copy, copy.size()));
  expectRefused(path, 4, "\"override\" needs a whole number in field 2, found \"yes\"");
}

TEST_F(SessionDamageTest, MissingFileAndBlankNameAreRefused) {
  SessionOptions options = workOptions;
  const std::string missing = dir.file("none.slbs");
  EXPECT_FALSE(readSession(work, options, missing));
  EXPECT_EQ(lastMessage().rfind("Could not open the session: ", 0), 0u) << lastMessage();
  EXPECT_NE(lastMessage().find(missing), std::string::npos);
  expectWorkUnchanged(options);

  EXPECT_FALSE(readSession(work, options, "   "));
  EXPECT_EQ(lastMessage(), "No session file given!");
  expectWorkUnchanged(options);

  EXPECT_FALSE(saveSession(work, options, ""));
  EXPECT_EQ(lastMessage(), "No session file given!");
}

TEST_F(SessionDamageTest, FailedSaveLeavesTheOldFileAndNoTemporaryFile) {
  // Saving into a folder that does not exist fails at once.
  EXPECT_FALSE(saveSession(work, workOptions, dir.file("no/such/folder/s.slbs")));
  EXPECT_EQ(lastMessage().rfind("Could not save the session: ", 0), 0u) << lastMessage();

  // A folder of that name is never replaced by the session.
  fs::create_directories(dir.file("taken.slbs"));
  const auto before = dir.list();
  EXPECT_FALSE(saveSession(work, workOptions, dir.file("taken.slbs")));
  EXPECT_EQ(lastMessage(), "Could not save the session: Cannot write " + dir.file("taken.slbs") + ": it is a folder")
      << lastMessage();
  EXPECT_TRUE(fs::is_directory(dir.file("taken.slbs")));
  EXPECT_EQ(dir.list(), before);

  // A save whose final step fails leaves the old file as it was and no
  // temporary file beside it.
  const std::string kept = TempDir::read(good);
  failNextRenamesForTesting(1, ENOSPC);
  EXPECT_FALSE(saveSession(work, workOptions, good));
  EXPECT_EQ(lastMessage(), "Could not save the session " + good + ": Cannot write " + good +
                               ": cannot replace the file: No space left on device");
  EXPECT_EQ(TempDir::read(good), kept);
  EXPECT_EQ(dir.list(), before);

  // A good save over the old file replaces it whole.
  const std::string old = TempDir::read(good);
  ASSERT_TRUE(saveSession(work, workOptions, good));
  EXPECT_NE(TempDir::read(good), old);
  EXPECT_EQ(fileLines(good)[1], "images,1");
}

}  // namespace
}  // namespace subsurf
