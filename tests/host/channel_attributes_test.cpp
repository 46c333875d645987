// Keyed channel attributes of host datasets, through the C routines.
#include <gtest/gtest.h>

#include <string>

#include "host/dataset.h"
#include "host/fixed_text.h"
#include "subsurf/host_dataset.h"

using namespace subsurf;

namespace {

std::string key(const std::string& k) {
  std::string out = k;
  out.resize(16, ' ');
  return out;
}

class ChannelAttributeStore : public ::testing::Test {
 protected:
  void SetUp() override { DS_NEW(key("logs").c_str(), &handle); }
  void TearDown() override { DS_RELEASE(&handle, &status); }
  int handle = 0, status = -1;
};

TEST_F(ChannelAttributeStore, CoreKeysAreDeclaredInEveryDataset) {
  const int channel = 2, position = 1, type = 4;
  DS_SETKEYI(&handle, &channel, &position, key("CH_TYPE").c_str(), &type, &status);
  EXPECT_EQ(status, 0);
  int read = 0;
  DS_GETKEYI(&handle, &channel, &position, key("ch_type").c_str(), &read, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(read, 4);
  const int width = 7;
  DS_SETKEYC(&handle, &channel, &position, key("ch_unit").c_str(), "m/s    ", &width, &status);
  char text[16];
  const int textWidth = 16;
  DS_GETKEYC(&handle, &channel, &position, key("ch_unit").c_str(), text, &textWidth, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(std::string(text, 16), "m/s" + std::string(13, ' '));
}

TEST_F(ChannelAttributeStore, StatusWordsOfTheStore) {
  const int channel = 1, position = 1, value = 3;
  int read = 77;
  // Declared but never written: status 1, the value left as it was.
  DS_GETKEYI(&handle, &channel, &position, key("ch_size").c_str(), &read, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(read, 77);
  // Not declared.
  DS_SETKEYI(&handle, &channel, &position, key("ch_tool").c_str(), &value, &status);
  EXPECT_EQ(status, 2);
  DS_GETKEYI(&handle, &channel, &position, key("ch_tool").c_str(), &read, &status);
  EXPECT_EQ(status, 2);
  // Another kind.
  const float real = 1.5f;
  DS_SETKEYR(&handle, &channel, &position, key("ch_type").c_str(), &real, &status);
  EXPECT_EQ(status, 3);
  // Bad places: channel below 0, position below 1.
  const int minus = -1, zero = 0;
  DS_SETKEYI(&handle, &minus, &position, key("ch_type").c_str(), &value, &status);
  EXPECT_EQ(status, 4);
  DS_SETKEYI(&handle, &channel, &zero, key("ch_type").c_str(), &value, &status);
  EXPECT_EQ(status, 4);
  DS_SETKEYI(&handle, &channel, &position, key("ch_type").c_str(), nullptr, &status);
  EXPECT_EQ(status, 4);
  // No such dataset.
  const int missing = 9999;
  DS_SETKEYI(&missing, &channel, &position, key("ch_type").c_str(), &value, &status);
  EXPECT_EQ(status, 5);
}

TEST_F(ChannelAttributeStore, DeclaredTextsAreCutToTheirWidthAndKindsCanChange) {
  const int channel = 0, position = 3, kind = 3, width = 5;
  DS_DEFKEY(&handle, key("bl_title").c_str(), &kind, &width, &status);
  ASSERT_EQ(status, 0);
  const int given = 12;
  DS_SETKEYC(&handle, &channel, &position, key("bl_title").c_str(), "Gamma ray   ", &given, &status);
  EXPECT_EQ(status, 0);
  std::string out;
  EXPECT_EQ(datasetByHandle(handle)->attributes().getText(0, 3, "BL_TITLE", out), 0);
  EXPECT_EQ(out, "Gamma");
  // Declared again as an integer: the text value goes.
  const int integer = 1;
  DS_DEFKEY(&handle, key("bl_title").c_str(), &integer, &width, &status);
  int v = 0;
  DS_GETKEYI(&handle, &channel, &position, key("bl_title").c_str(), &v, &status);
  EXPECT_EQ(status, 1);
  const int badKind = 4;
  DS_DEFKEY(&handle, key("x").c_str(), &badKind, &width, &status);
  EXPECT_EQ(status, 3);
}

TEST_F(ChannelAttributeStore, ValuesAreHeldPerChannelAndPosition) {
  ChannelAttributes& a = datasetByHandle(handle)->attributes();
  EXPECT_EQ(a.setInteger(1, 1, "ch_id", 10), 0);
  EXPECT_EQ(a.setInteger(2, 1, "ch_id", 20), 0);
  EXPECT_EQ(a.setInteger(1, 2, "ch_id", 30), 0);
  int v = 0;
  a.getInteger(2, 1, "ch_id", v);
  EXPECT_EQ(v, 20);
  a.getInteger(1, 2, "ch_id", v);
  EXPECT_EQ(v, 30);
  EXPECT_EQ(a.getInteger(2, 2, "ch_id", v), 1);
}

}  // namespace
