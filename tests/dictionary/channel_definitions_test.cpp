// Dataset channel definitions: defaults, reading and writing the keyed
// attributes of a channel, the axis defaults, and the definition grid.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "dictionary/channel_definitions.h"
#include "host/dataset.h"
#include "host/fixed_text.h"
#include "host/nulls.h"
#include "subsurf/channel_definitions.h"
#include "subsurf/host_dataset.h"

using namespace subsurf;

namespace {

std::string blanks(std::size_t n) { return std::string(n, ' '); }

void expectDefaults(const DS_CHANDEF& def, bool exceptName = false) {
  EXPECT_EQ(def.IUSE, 1);
  for (int v : {def.ITYPE, def.ISIZE, def.ISER, def.ID, def.IMER, def.IX1, def.IX2, def.JCOL}) EXPECT_TRUE(isNull(v));
  EXPECT_TRUE(isNull(def.R1));
  EXPECT_TRUE(isNull(def.R2));
  EXPECT_EQ(std::string(def.UNIT, 16), blanks(16));
  EXPECT_EQ(std::string(def.SPEC, 20), blanks(20));
  EXPECT_EQ(std::string(def.TOOL, 20), blanks(20));
  EXPECT_EQ(std::string(def.GROUP, 20), blanks(20));
  if (!exceptName) {
    EXPECT_EQ(std::string(def.NAME, 40), blanks(40));
  }
  EXPECT_EQ(std::string(def.SOUR, 64), blanks(64));
  EXPECT_EQ(std::string(def.DESC, 260), blanks(260));
}

DS_CHANDEF filled() {
  DS_CHANDEF def;
  DS_DFLTDSCHAN(&def);
  def.ITYPE = 2;
  def.ISIZE = 4;
  def.ISER = 11;
  def.ID = 301;
  def.IMER = 1;
  def.IUSE = 0;
  def.IX1 = 5;
  def.IX2 = 6;
  def.JCOL = 3;
  def.R1 = 0.5f;
  def.R2 = -9.25f;
  setFixed(def.UNIT, "gAPI");
  setFixed(def.SPEC, "GR spectral");
  setFixed(def.TOOL, "HNGS");
  setFixed(def.GROUP, "Lithology");
  setFixed(def.NAME, "Gamma ray");
  setFixed(def.SOUR, "Run 2, logged 12 Mar 2019");
  setFixed(def.DESC, "Total gamma ray, environmentally corrected");
  return def;
}

class ChannelDefinitions : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = "logs";
    name.resize(16, ' ');
    DS_NEW(name.c_str(), &handle);
    ASSERT_GT(handle, 0);
  }
  void TearDown() override { DS_RELEASE(&handle, &status); }
  ChannelAttributes& attributes() { return datasetByHandle(handle)->attributes(); }
  int handle = 0, status = -1;
  const int channel = 2, position = 1;
};

TEST_F(ChannelDefinitions, FreshDefaultsHaveUseOneAndEverythingElseNull) {
  DS_CHANDEF def;
  std::memset(&def, 0x55, sizeof def);
  DS_DFLTDSCHAN(&def);
  expectDefaults(def);
}

TEST_F(ChannelDefinitions, AxisDefaults) {
  DS_AXDEF axis;
  std::memset(&axis, 0x55, sizeof axis);
  DS_AXDFLT(&axis);
  EXPECT_TRUE(isNull(axis.IAX));
  EXPECT_EQ(axis.I1, 1);
  EXPECT_EQ(axis.I2, 2);
  for (float r : axis.R) EXPECT_TRUE(isNull(r));
  EXPECT_EQ(std::string(axis.TITLE, 40), blanks(40));
}

TEST_F(ChannelDefinitions, AChannelWithOnlyANameReadsAsThatNameAndDefaults) {
  ASSERT_EQ(attributes().setText(channel, position, "ch_name", "Bulk density"), 0);
  DS_CHANDEF def = filled();  // whatever was there before is replaced by the defaults
  DS_GETDSCHAN(&handle, &channel, &position, &def, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(fixedText(def.NAME), "Bulk density");
  expectDefaults(def, true);
  // A channel with nothing at all reads as the defaults.
  const int other = 5;
  DS_GETDSCHAN(&handle, &other, &position, &def, &status);
  EXPECT_EQ(status, 0);
  expectDefaults(def);
}

TEST_F(ChannelDefinitions, WrittenAndReadBack) {
  DS_DEFDSCHAN(&handle, &status);
  ASSERT_EQ(status, 0);
  const DS_CHANDEF def = filled();
  DS_SETDSCHAN(&handle, &channel, &position, &def, &status);
  ASSERT_EQ(status, 0);
  DS_CHANDEF back;
  DS_GETDSCHAN(&handle, &channel, &position, &back, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(back.ITYPE, 2);
  EXPECT_EQ(back.ISIZE, 4);
  EXPECT_EQ(back.ISER, 11);
  EXPECT_EQ(back.ID, 301);
  EXPECT_EQ(back.IMER, 1);
  EXPECT_EQ(back.JCOL, 3);
  EXPECT_EQ(back.R1, 0.5f);
  EXPECT_EQ(back.R2, -9.25f);
  for (auto [a, b, n] : {std::tuple{back.UNIT, def.UNIT, 16}, std::tuple{back.SPEC, def.SPEC, 20},
                         std::tuple{back.TOOL, def.TOOL, 20}, std::tuple{back.GROUP, def.GROUP, 20},
                         std::tuple{back.NAME, def.NAME, 40}, std::tuple{back.SOUR, def.SOUR, 64},
                         std::tuple{back.DESC, def.DESC, 260}})
    EXPECT_EQ(std::string(a, n), std::string(b, n));
  // The use flag is written but not read back; the two further integers are not stored.
  EXPECT_EQ(back.IUSE, 1);
  EXPECT_TRUE(isNull(back.IX1));
  EXPECT_TRUE(isNull(back.IX2));
  int use = -5;
  EXPECT_EQ(attributes().getInteger(channel, position, "ch_use", use), 0);
  EXPECT_EQ(use, 0);
  // Each attribute lives under its own key.
  std::string text;
  attributes().getText(channel, position, "ch_sour", text);
  EXPECT_EQ(text, "Run 2, logged 12 Mar 2019");
  int iser = 0;
  attributes().getInteger(channel, position, "ch_iser", iser);
  EXPECT_EQ(iser, 11);
}

TEST_F(ChannelDefinitions, WritingWithoutTheDeclarationsPassesTheStoresStatusBack) {
  const DS_CHANDEF def = filled();
  DS_SETDSCHAN(&handle, &channel, &position, &def, &status);
  EXPECT_EQ(status, 2);  // "ch_imer" is not declared yet
  // The core attributes before it were written.
  int type = 0;
  EXPECT_EQ(attributes().getInteger(channel, position, "ch_type", type), 0);
  EXPECT_EQ(type, 2);
}

TEST_F(ChannelDefinitions, StoreErrorsWhenReading) {
  DS_CHANDEF def = filled();
  const int missing = 999;
  DS_GETDSCHAN(&missing, &channel, &position, &def, &status);
  EXPECT_EQ(status, 5);
  expectDefaults(def);
  const int zero = 0;
  DS_GETDSCHAN(&handle, &zero, &position, &def, &status);
  EXPECT_EQ(status, 4);
  DS_SETDSCHAN(&handle, &channel, &zero, &def, &status);
  EXPECT_EQ(status, 4);
  // A key declared with another kind than the record's field.
  attributes().declare("ch_r1", AttributeKind::Text, 10);
  DS_GETDSCHAN(&handle, &channel, &position, &def, &status);
  EXPECT_EQ(status, 3);
}

TEST_F(ChannelDefinitions, TheGridShowsAndEditsTheDefinitions) {
  DS_DEFDSCHAN(&handle, &status);
  const DS_CHANDEF def = filled();
  DS_SETDSCHAN(&handle, &channel, &position, &def, &status);
  ASSERT_EQ(status, 0);
  attributes().setInteger(0, position, "bl_ncol", 3);
  const int nchan = 3;
  int grid = 0;
  DS_DSCHANDEF(&handle, &nchan, &position, &grid, &status);
  ASSERT_EQ(status, 0);
  ASSERT_GT(grid, 0);
  Dataset& g = *datasetByHandle(grid);
  const DatasetPart* chans = g.findPart("Chans");
  ASSERT_NE(chans, nullptr);
  ASSERT_NE(g.findPart("Attributes"), nullptr);
  ASSERT_EQ(chans->columns().size(), 11u);
  const char* heads[] = {"Use", "Name", "Type", "Size", "ISER", "ID", "Unit", "Spec", "Tool", "Desc", "Merge"};
  for (int c = 1; c <= 11; ++c) EXPECT_EQ(chans->column(c)->name, heads[c - 1]);
  EXPECT_TRUE(chans->column(2)->text);
  EXPECT_EQ(chans->column(10)->width, 260);
  EXPECT_FALSE(chans->column(11)->text);
  EXPECT_EQ(chans->recordCount(), 3);

  float v = 0;
  std::string text;
  chans->getReal(2, 1, v);
  EXPECT_EQ(v, 0.0f);  // Use
  chans->getText(2, 2, text);
  EXPECT_EQ(text, "Gamma ray");
  chans->getReal(2, 6, v);
  EXPECT_EQ(v, 301.0f);
  chans->getReal(1, 1, v);
  EXPECT_EQ(v, 1.0f);  // a channel never defined: use flag 1
  chans->getReal(1, 3, v);
  EXPECT_TRUE(isNull(v));
  g.findPart("Attributes")->getReal(1, 1, v);
  EXPECT_EQ(v, 3.0f);

  // The user edits the grid; the edits go back to the channels.
  DatasetPart& edit = g.part("Chans");
  edit.setText(1, 2, "Neutron porosity");
  edit.setText(1, 7, "v/v");
  edit.setReal(1, 5, 14.0f);
  edit.setReal(2, 11, 4.0f);
  g.part("Attributes").setReal(1, 1, 4.0f);
  DS_SETDSCHANDEF(&grid, &handle, &position, &status);
  ASSERT_EQ(status, 0);
  DS_CHANDEF back;
  const int first = 1;
  DS_GETDSCHAN(&handle, &first, &position, &back, &status);
  EXPECT_EQ(fixedText(back.NAME), "Neutron porosity");
  EXPECT_EQ(fixedText(back.UNIT), "v/v");
  EXPECT_EQ(back.ISER, 14);
  EXPECT_TRUE(isNull(back.ITYPE));
  DS_GETDSCHAN(&handle, &channel, &position, &back, &status);
  EXPECT_EQ(back.IMER, 4);
  EXPECT_EQ(back.R1, 0.5f);  // not in the grid: kept
  EXPECT_EQ(fixedText(back.GROUP), "Lithology");
  int ncol = 0;
  attributes().getInteger(0, position, "bl_ncol", ncol);
  EXPECT_EQ(ncol, 4);

  // Refilling an existing grid shows the edited values.
  DS_GETDSCHANDEF(&handle, &nchan, &position, &grid, &status);
  EXPECT_EQ(status, 0);
  chans->getText(1, 2, text);
  EXPECT_EQ(text, "Neutron porosity");
  const int missing = 999;
  DS_GETDSCHANDEF(&handle, &nchan, &position, &missing, &status);
  EXPECT_EQ(status, 5);
  DS_RELEASE(&grid, &status);
}

}  // namespace
