// Start-up of the splitter (its data dictionary and image table) and the host
// dataset that holds the image table.
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "core/core_session.h"
#include "dictionary/data_dictionary.h"
#include "host/dataset.h"
#include "host/messages.h"
#include "subsurf/core.h"
#include "subsurf/host_dataset.h"
#include "support/temp_dir.h"
#include "units/units_registry.h"

namespace subsurf {
namespace {

// Sets an environment variable for one test and puts it back afterwards.
class EnvOverride {
 public:
  EnvOverride(const char* name, const std::string& value) : name_(name) {
    if (const char* v = std::getenv(name)) old_ = v;
    ::setenv(name, value.c_str(), 1);
  }
  ~EnvOverride() {
    if (old_)
      ::setenv(name_, old_->c_str(), 1);
    else
      ::unsetenv(name_);
  }

 private:
  const char* name_;
  std::optional<std::string> old_;
};

class StartupTest : public ::testing::Test {
 protected:
  void SetUp() override {
    unitsRegistry();  // loaded from the real definitions before "deflib:" moves
    host::clearRecorded();
  }
  void TearDown() override { host::clearRecorded(); }
};

TEST_F(StartupTest, MissingDictionaryStopsTheToolWithItsMessage) {
  testing::TempDir empty;
  EnvOverride deflib("SUBSURF_DEFLIB", empty.path());
  int status = 0;
  SLABCUT_INIT(&status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(host::recordedMessages(), std::vector<std::string>{"Cannot proceeed - no data dictionary!"});
}

TEST_F(StartupTest, UnreadableDictionaryIsNamedThenStopsTheTool) {
  testing::TempDir folder;
  folder.write("coredsdefs.dsdefs", "dsdefs,coredsdefs,test\ndataset,cor_images\ncolumn,1,Source,R\n");
  EnvOverride deflib("SUBSURF_DEFLIB", folder.path());
  CoreSession s;
  EXPECT_EQ(startSlabber(s), 1);
  const std::vector<std::string> messages = host::recordedMessages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_NE(messages[0].find("coredsdefs.dsdefs, line 3: column before any part"), std::string::npos)
      << messages[0];
  EXPECT_EQ(messages[1], "Cannot proceeed - no data dictionary!");
}

TEST_F(StartupTest, TheShippedDictionaryDescribesTheImageTable) {
  testing::TempDir userlib;  // no template library there
  EnvOverride userlibVar("SUBSURF_USERLIB", userlib.path());
  int status = -1;
  SLABCUT_INIT(&status);
  ASSERT_EQ(status, 0);
  EXPECT_TRUE(host::recordedMessages().empty());
  int handle = 0;
  COR_IMAGETABLE(&handle);
  ASSERT_NE(handle, 0);
  const DatasetPart* part = datasetByHandle(handle)->findPart("data");
  ASSERT_NE(part, nullptr);
  const char* headings[] = {"Source", "Path", "Filename", "Top", "Base", "Core Length",
                            "Tray Length", "UV", "Angle", "Use", "View"};
  for (const char* h : headings) EXPECT_NE(part->column(h), nullptr) << h;
  EXPECT_EQ(part->column(4)->name, "Top");
  EXPECT_EQ(part->column(4)->series, "depth");
  EXPECT_EQ(part->column(28)->name, "Depth Shift");
  EXPECT_EQ(part->column(30)->name, "Length");
  EXPECT_TRUE(part->column(2)->text);
  COR_CLOSE(&status);
}

TEST_F(StartupTest, TheImageTableFollowsTheImages) {
  CoreSession s;
  ASSERT_EQ(startSlabber(s), 0);
  Dataset* table = s.imageTableOf();
  ASSERT_NE(table, nullptr);
  for (int i = 0; i < 4; ++i) s.newImage("/trays/T" + std::to_string(i + 1) + ".jpg");
  const DatasetPart& part = *table->findPart("data");
  auto sources = [&] {
    std::vector<float> out;
    for (int k = 1; k <= part.recordCount(); ++k) {
      float v = 0;
      part.getReal(k, kColSource, v);
      out.push_back(v);
    }
    return out;
  };
  EXPECT_EQ(sources(), (std::vector<float>{1, 2, 3, 4}));
  std::string name;
  part.getText(3, kColFilename, name);
  EXPECT_EQ(name, "T3.jpg");
  part.getText(3, kColPath, name);
  EXPECT_EQ(name, "/trays/");

  const int order[] = {3, 1};
  s.orderImages(order, 2);
  EXPECT_EQ(sources(), (std::vector<float>{3, 1, 2, 4}));
  s.deleteImageByPlace(2);
  EXPECT_EQ(sources(), (std::vector<float>{3, 2, 4}));
  s.close();
  EXPECT_EQ(part.recordCount(), 0);
}

// ---------------------------------------------------------------------------
// The host dataset.

TEST(HostDataset, CellsThroughTheCInterface) {
  int h = 0;
  DS_NEW("test            ", &h);
  ASSERT_NE(h, 0);
  const char part[] = "data            ";
  const int record = 2, column = 5, zero = 0;
  const float value = 1234.5f;
  int status = -1;
  DS_SETR(&h, part, &record, &column, &value, &status);
  EXPECT_EQ(status, 0);
  float got = 0;
  DS_GETR(&h, part, &record, &column, &got, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(got, 1234.5f);

  const int first = 1;
  DS_GETR(&h, part, &first, &column, &got, &status);  // a record never written
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(isNull(got));
  const int third = 3;
  DS_GETR(&h, part, &third, &column, &got, &status);  // beyond the records
  EXPECT_EQ(status, 1);
  DS_SETR(&h, part, &zero, &column, &value, &status);
  EXPECT_EQ(status, 1);
  DS_GETR(&h, "other           ", &record, &column, &got, &status);
  EXPECT_EQ(status, 1);

  const char text[8] = {'a', 'b', 'c', ' ', ' ', ' ', ' ', ' '};
  const int width = 8, shortWidth = 2;
  DS_SETC(&h, part, &record, &first, text, &width, &status);
  char out[4];
  DS_GETC(&h, part, &record, &first, out, &shortWidth, &status);
  EXPECT_EQ(std::string(out, 2), "ab");

  int count = 0;
  DS_GETNREC(&h, part, &count, &status);
  EXPECT_EQ(count, 2);
  DS_RELEASE(&h, &status);
  EXPECT_EQ(status, 0);
  DS_GETR(&h, part, &record, &column, &got, &status);
  EXPECT_EQ(status, 1);
}

TEST(HostDataset, RecordsMoveWithTheirCells) {
  DatasetPart part("data");
  for (int k = 1; k <= 3; ++k) part.setReal(k, 1, static_cast<float>(k));
  EXPECT_TRUE(part.moveRecord(3, 1));
  EXPECT_TRUE(part.insertRecord(2));
  EXPECT_TRUE(part.removeRecord(4));
  EXPECT_FALSE(part.removeRecord(4));
  float v[3];
  for (int k = 1; k <= 3; ++k) part.getReal(k, 1, v[k - 1]);
  EXPECT_EQ(v[0], 3.0f);
  EXPECT_TRUE(isNull(v[1]));
  EXPECT_EQ(v[2], 1.0f);
}

}  // namespace
}  // namespace subsurf
