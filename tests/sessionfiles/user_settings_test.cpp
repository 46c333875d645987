// The user-settings file: its four records, reading it back, refusing a
// damaged one, and how the exported routines hand the output folder and
// option to the split.
#include <gtest/gtest.h>

#include "core/split_process.h"
#include "session_test_support.h"
#include "subsurf/core.h"

namespace subsurf {
namespace {

using namespace testing;

class UserSettingsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    host::clearRecorded();
    savedSettings = toolUserSettings();
    savedOptions = split::toolSplitOptions();
  }
  void TearDown() override {
    toolUserSettings() = savedSettings;
    split::toolSplitOptions() = savedOptions;
  }

  static UserSettings unusual() {
    UserSettings u;
    u.sessionsPath = "/home/geo/sessions, 2024";
    u.outputPath = " /out/rows";
    u.outputOption = 2;
    u.templateName = "five rows";
    return u;
  }

  ScratchUserLib userlib;
  UserSettings savedSettings;
  split::SplitOptions savedOptions;
};

TEST_F(UserSettingsTest, FileHoldsFourRecordsInOrder) {
  EXPECT_EQ(userSettingsFile(), userlib.dir.file("user"));
  ASSERT_TRUE(writeUserSettings(unusual(), userSettingsFile()));
  EXPECT_EQ(TempDir::read(userSettingsFile()),
            "sessions_path,\"/home/geo/sessions, 2024\"\n"
            "output_path,\" /out/rows\"\n"
            "output_op,2\n"
            "template,five rows\n");
}

TEST_F(UserSettingsTest, RoundTrip) {
  for (const UserSettings& u : {unusual(), UserSettings{}}) {
    ASSERT_TRUE(writeUserSettings(u, userSettingsFile()));
    UserSettings read;
    read.outputOption = 77;
    ASSERT_TRUE(readUserSettings(userSettingsFile(), read)) << lastMessage();
    EXPECT_EQ(read.sessionsPath, u.sessionsPath);
    EXPECT_EQ(read.outputPath, u.outputPath);
    EXPECT_EQ(read.outputOption, u.outputOption);
    EXPECT_EQ(read.templateName, u.templateName);
  }
}

TEST_F(UserSettingsTest, DamagedFilesAreRefusedAndChangeNothing) {
  struct Case {
    std::string content;
    std::string message;  // after "<file>, line "
  };
  const std::vector<Case> cases = {
      {"", "1: the file ends where \"sessions_path\" was expected"},
      {"sessions_path,/s\noutput_path,/o\n", "3: the file ends where \"output_op\" was expected"},
      {"sessions_path,/s\noutput_path,/o\noutput_op,2\n", "4: the file ends where \"template\" was expected"},
      {"sessions_path,/s\noutput_path,/o\noutput_op,beside\ntemplate,t\n",
       "3: \"output_op\" needs a whole number in field 2, found \"beside\""},
      {"output_path,/o\nsessions_path,/s\noutput_op,2\ntemplate,t\n",
       "1: \"sessions_path\" expected, found \"output_path\""},
      {"sessions_path,/s\noutput_path,/o\noutput_op,2\ntemplate,t\ntemplate,u\n",
       "5: \"template\" found after \"template\"; the file should end there"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.content);
    const std::string path = userlib.dir.write("user", c.content);
    UserSettings settings = unusual();
    EXPECT_FALSE(readUserSettings(path, settings));
    EXPECT_EQ(lastMessage(), path + ", line " + c.message);
    EXPECT_EQ(settings.templateName, "five rows");
    EXPECT_EQ(settings.outputOption, 2);
  }
}

TEST_F(UserSettingsTest, ExportedRoutinesHandTheOutputChoiceToTheSplit) {
  // No settings saved yet: nothing read, nothing said.
  int status = -1;
  COR_USERRE(&status);
  EXPECT_EQ(status, 1);
  EXPECT_TRUE(host::recordedMessages().empty());

  split::SplitOptions& o = split::toolSplitOptions();
  o.naming.outputFolder = "/rows";
  o.naming.outputBesidePhoto = true;
  toolUserSettings().templateName = "five";
  COR_USERWR(&status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(fileLines(userSettingsFile())[1], "output_path,/rows");
  EXPECT_EQ(fileLines(userSettingsFile())[2], "output_op,2");

  o = split::SplitOptions{};
  toolUserSettings() = UserSettings{};
  COR_USERRE(&status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(o.naming.outputFolder, "/rows");
  EXPECT_TRUE(o.naming.outputBesidePhoto);
  EXPECT_EQ(toolUserSettings().templateName, "five");

  // Back to the chosen folder: option 1.
  o.naming.outputBesidePhoto = false;
  COR_USERWR(&status);
  EXPECT_EQ(fileLines(userSettingsFile())[2], "output_op,1");

  char sessions[260], output[260], templ[40];
  int option = 0;
  const std::string folder = "/my/sessions";
  std::string field(260, ' ');
  setFixed(field.data(), field.size(), folder);
  COR_USERSET(field.c_str(), nullptr, nullptr, nullptr);
  COR_USERGET(sessions, output, &option, templ);
  EXPECT_EQ(fixedText(sessions), folder);
  EXPECT_EQ(fixedText(output), "/rows");
  EXPECT_EQ(option, 1);
  EXPECT_EQ(fixedText(templ), "five");

  // A damaged file is refused with its line and changes nothing.
  userlib.dir.write("user", "sessions_path,/x\n");
  COR_USERRE(&status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(lastMessage(), userSettingsFile() + ", line 2: the file ends where \"output_path\" was expected");
  EXPECT_EQ(toolUserSettings().sessionsPath, folder);
}

}  // namespace
}  // namespace subsurf
