// Plot files: the record order, a field-for-field round trip, and damaged
// files reported with their line and leaving the plot as it was.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "plot/plot_file.h"
#include "support/temp_dir.h"

namespace ss = subsurf;

namespace {

// A plot in which every saved field differs from its default.
void fillEveryField(ss::PlotRecord& plot) {
  ss::PlotFields& f = plot.fields;
  f.title = "Porosity against permeability";
  f.source = "Well 16/21a-4, \"core\" plugs";
  f.pdesc = "  leading blanks kept";
  for (int k = 0; k < ss::kPlotOptions; ++k) f.ops[static_cast<std::size_t>(k)] = k * 3 - 7;
  f.plotBg = 2, f.dataBg = 3, f.grlc1 = 4, f.grlc2 = 5, f.sgsty = 6, f.bllab = 0;
  f.axsame = 1, f.oneax = 1, f.zpssame = 1;
  for (int k = 0; k < ss::kPlotOptions; ++k) f.plops[static_cast<std::size_t>(k)] = 100 + k;

  ss::Annotation& a = plot.annotation;
  a.texts[0] = {"@user", "second line"};
  a.texts[1] = {};
  a.texts[3] = {"Base, left", ""};
  a.texts[5] = {"@date"};
  a.topbg = 1, a.topbox = 2, a.basebg = 3, a.basebox = 4, a.plotbg = 5, a.plotbox = 0, a.obg = 7, a.obox = 8;
  a.topmar = 12.5f, a.basemar = 0.1f;

  ss::Layout& l = plot.layout;
  l.mono = 1, l.aspect = 1.5f, l.rotate = 1, l.paper = 3, l.fit = 0, l.hardc = 1, l.cgm = 1, l.strip = 1;
  l.ptype = 3, l.hcpages = 2, l.npages = 4, l.pageop = 1, l.nex = 2, l.ney = 3, l.batch = 1, l.oasc = 1;
  l.reqx = 150, l.reqy = 100, l.ml = 1, l.mr = 2, l.mt = 3, l.mb = 4, l.pagex = 420, l.pagey = 297;
  l.px = 800, l.py = 600, l.frx = 0.5f, l.fry = 0.25f;

  plot.sets.clear();
  for (int n = 0; n < 2; ++n) {
    ss::PlotSet s;
    s.name = n == 0 ? "Brent" : "Statfjord, upper";
    s.ids = "PHIE/KLH";
    s.defs.show = 0, s.defs.black = 1, s.defs.iord = 2 + n;
    for (int k = 0; k < ss::kDefinitionEntries; ++k) s.defs.iop[static_cast<std::size_t>(k)] = k + n;
    for (int k = 0; k < ss::kRangeValues; ++k) s.defs.rop[static_cast<std::size_t>(k)] = 0.1f * static_cast<float>(k + 1);
    s.sym = 4, s.lin = 2, s.shd = 1, s.axlabht = 4.25f, s.axnumht = 2.75f, s.nzm = 3, s.pol = 1, s.legend = 0;
    s.lirgb = {1, 2, 3}, s.syrgb = {4, 5, 6}, s.shrgb = {7, 8, 9};
    s.shsty = 5, s.aswap = 1;
    s.ax = {2, 3, 1, 0, 1};
    for (int k = 0; k < ss::kAxisCount; ++k) {
      ZW_SCALE& sc = s.scales[static_cast<std::size_t>(k)];
      sc.TYPE = k + 2;
      sc.MODE = 6 - k;
      sc.MIN = -1.0e-7f * static_cast<float>(k + 1);
      sc.MAX = 3.4e38f;
      ss::setFixed(sc.UNIT, k == 0 ? "mD" : "");
      s.labels[static_cast<std::size_t>(k)] = "Axis " + std::to_string(k);
    }
    s.scales[4].MIN = ss::kRealNull;
    ss::LineElement line;
    line.STYLE = 3, line.COLOUR = 11, line.WIDTH = 0.7f, line.SYMBOL = 2, line.CLOSED = 1, line.FIXED = 1;
    ss::setFixed(line.NAME, "Trend, 2nd order");
    line.setPoints({0.1f, 0.2f, 0.3f}, {1.0f, ss::kRealNull, 1e-30f});
    s.lines.add(line);
    s.lines.add(ss::LineElement());  // a line without points
    s.lines.select(1);
    s.icodes = {1, 2, 2, 1};
    s.data[0] = {0.25f, 0.125f, 0.3f, 1.0f / 3.0f};
    s.data[1] = {10.0f, 250.0f, ss::kRealNull, 7e-3f};
    s.data[3] = {1, 2, 3, 4};
    plot.sets.push_back(s);
  }
}

std::vector<std::string> keysOf(const std::string& text) {
  std::vector<std::string> keys;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) keys.push_back(line.substr(0, line.find(',')));
  return keys;
}

std::string readAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST(PlotFile, RecordsComeInTheirFixedOrder) {
  ss::PlotRecord plot;
  fillEveryField(plot);
  plot.sets.resize(1);
  std::vector<std::string> expected = {"version"};
  for (const char* k : {"zp_title", "zp_source", "zp_pdesc", "zp_ops", "zp_plot_bg", "zp_data_bg", "zp_grlc1",
                        "zp_grlc2", "zp_sgsty", "zp_bllab", "zp_axsame", "zp_oneax", "zp_zpssame", "zp_plops",
                        "an_topl", "an_topc", "an_topr", "an_basel", "an_basec", "an_baser", "an_topbg",
                        "an_topbox", "an_basebg", "an_basebox", "an_plotbg", "an_plotbox", "an_obg", "an_obox",
                        "an_topmar", "an_basemar", "la_mono", "la_aspect", "la_rotate", "la_paper", "la_fit",
                        "la_hardc", "la_cgm", "la_strip", "la_ptype", "la_hcpages", "la_npages", "la_pageop",
                        "la_nex", "la_ney", "la_batch", "la_oasc", "la_reqx", "la_reqy", "la_ml", "la_mr", "la_mt",
                        "la_mb", "la_pagex", "la_pagey", "la_px", "la_py", "la_frx", "la_fry", "zp_nds", "zps_name",
                        "zps_ids", "zps_show", "zps_sym", "zps_lin", "zps_shd", "zps_axlabht", "zps_axnumht",
                        "zps_nzm", "zps_pol", "zps_legend", "zps_black", "zps_iord", "zps_lirgb", "zps_syrgb",
                        "zps_shrgb", "zps_shsty", "zps_aswap", "zps_iop", "zps_rop", "zps_ax", "zps_xsc", "zps_ysc",
                        "zps_zsc", "zps_csc", "zps_dsc", "line", "line", "zps_icodes", "zps_xlab", "zps_ylab",
                        "zps_zlab", "zps_clab", "zps_dlab", "zps_xv", "zps_xv", "zps_xv", "zps_xv", "zps_xv"})
    expected.push_back(k);
  EXPECT_EQ(keysOf(ss::plotFileText(plot)), expected);
}

TEST(PlotFile, RecordValueForms) {
  ss::PlotRecord plot;
  fillEveryField(plot);
  const std::string text = ss::plotFileText(plot);
  for (const char* line : {"version,1\n", "zp_source,\"Well 16/21a-4, \"\"core\"\" plugs\"\n",
                           "zp_pdesc,\"  leading blanks kept\"\n", "an_topl,2,@user,second line\n", "an_topc,0\n",
                           "an_basel,2,\"Base, left\",\"\"\n", "la_aspect,1.5\n", "zp_nds,2\n",
                           "zps_lirgb,3,1,2,3\n", "zps_xsc,2,6,-1e-07,3.4e+38,mD\n",
                           "zps_dsc,6,2,-9.9e+20,3.4e+38,\"\"\n",
                           "line,1,3,11,0.7,2,1,1,\"Trend, 2nd order\",3,0.1,1,0.2,-9.9e+20,0.3,1e-30\n",
                           "line,2,1,1,0.35,0,0,0,\"\",0\n", "zps_icodes,4,1,2,2,1\n", "zps_xv,3,0\n",
                           "zps_xv,4,4,1,2,3,4\n"})
    EXPECT_NE(text.find(line), std::string::npos) << line;
}

TEST(PlotFile, WrittenAndReadBackFieldForField) {
  ss::testing::TempDir dir;
  ss::PlotRecord plot;
  fillEveryField(plot);
  const std::string path = dir.file("crossplot.zpl");
  ASSERT_TRUE(ss::writePlotFile(plot, path).isOk());
  ss::PlotRecord back;
  const ss::Status read = ss::readPlotFile(path, back);
  ASSERT_TRUE(read.isOk()) << read.message();
  EXPECT_EQ(back.fields, plot.fields);
  EXPECT_EQ(back.annotation, plot.annotation);
  EXPECT_EQ(back.layout, plot.layout);
  ASSERT_EQ(back.setCount(), 2);
  for (int k = 0; k < 2; ++k) {
    const ss::PlotSet& a = plot.sets[static_cast<std::size_t>(k)];
    const ss::PlotSet& b = back.sets[static_cast<std::size_t>(k)];
    EXPECT_EQ(b.name, a.name);
    EXPECT_EQ(b.defs, a.defs);
    EXPECT_EQ(b.scales, a.scales);
    EXPECT_EQ(b.labels, a.labels);
    EXPECT_EQ(b.data, a.data);
    EXPECT_EQ(b.icodes, a.icodes);
    ASSERT_EQ(b.lines.count(), 2);
    EXPECT_EQ(b.lines.at(1), a.lines.at(1));
    EXPECT_EQ(b.lines.at(2), a.lines.at(2));
    // Lines are written from the list, not from its current element.
    ss::PlotSet expected = a;
    expected.lines.select(2);
    EXPECT_EQ(b, expected);
  }
  // Written again, the file is the same text.
  const std::string again = dir.file("again.zpl");
  ASSERT_TRUE(ss::writePlotFile(back, again).isOk());
  EXPECT_EQ(readAll(again), readAll(path));
}

TEST(PlotFile, ReadingKeepsLinksBitmapsAndLegend) {
  ss::testing::TempDir dir;
  ss::PlotRecord source;
  fillEveryField(source);
  const std::string path = dir.file("p.zpl");
  ASSERT_TRUE(ss::writePlotFile(source, path).isOk());
  ss::PlotTree tree;
  ss::PlotRecord* kid = tree.addKid(tree.root());
  kid->windowId = 12;
  kid->bitmaps.add(ss::defaultBitmap());
  kid->legend.rows.add(ss::defaultLegendRow());
  kid->currentSet = 1;
  ASSERT_TRUE(ss::readPlotFile(path, *kid).isOk());
  EXPECT_EQ(kid->windowId, 12);
  EXPECT_EQ(kid->level, 2);
  EXPECT_EQ(kid->bitmaps.count(), 1);
  EXPECT_EQ(kid->legend.rows.count(), 1);
  EXPECT_EQ(kid->setCount(), 2);
  EXPECT_EQ(kid->currentSet, 1);
}

// Damaged files: each names the file and line, and leaves the plot as it was.
struct Damage {
  std::string name;
  std::string from, to;  // replace the first "from" in a good file by "to"
  std::string message;   // after "FILE, line N: "
  int line;
};

class DamagedPlotFile : public ::testing::TestWithParam<Damage> {};

TEST_P(DamagedPlotFile, IsReportedWithItsLineAndChangesNothing) {
  const Damage& d = GetParam();
  ss::testing::TempDir dir;
  ss::PlotRecord good;
  fillEveryField(good);
  good.sets.resize(1);
  std::string text = ss::plotFileText(good);
  const std::size_t at = text.find(d.from);
  ASSERT_NE(at, std::string::npos) << d.from;
  text.replace(at, d.from.size(), d.to);
  const std::string path = dir.write("damaged.zpl", text);

  ss::PlotRecord plot;
  plot.fields.title = "unchanged";
  const ss::Status s = ss::readPlotFile(path, plot);
  ASSERT_FALSE(s.isOk());
  EXPECT_EQ(s.message(), path + ", line " + std::to_string(d.line) + ": " + d.message);
  EXPECT_EQ(plot.fields.title, "unchanged");
  EXPECT_EQ(plot.setCount(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, DamagedPlotFile,
    ::testing::Values(
        Damage{"NoVersion", "version,1", "title,1", "not a plot file: the first record is not \"version\"", 1},
        Damage{"FutureVersion", "version,1", "version,2", "plot file version 2 is not one this program reads", 1},
        Damage{"UnknownRecord", "zp_grlc2,", "zp_grlc9,", "unknown record \"zp_grlc9\"", 9},
        Damage{"NotAWholeNumber", "zp_plot_bg,2", "zp_plot_bg,two",
               "\"zp_plot_bg\": column 2 is not a whole number", 6},
        Damage{"MissingValue", "zp_plot_bg,2", "zp_plot_bg", "\"zp_plot_bg\": column 2 is missing", 6},
        Damage{"CountTooLarge", "zp_ops,10,", "zp_ops,1000000000,",
               "\"zp_ops\": the count 1000000000 in column 2 does not match the 10 values that follow", 5},
        Damage{"ArrayTooShort", "zps_ax,5,2,3,1,0,1", "zps_ax,4,2,3,1,0", "\"zps_ax\": 4 values where 5 belong", 81},
        Damage{"NoSets", "zp_nds,1", "zp_nds,0", "0 plot sets; a plot has at least one", 60},
        Damage{"TooFewSets", "zp_nds,1", "zp_nds,2", "the file ends after 1 of the 2 plot sets", 100},
        Damage{"SetBeforeCount", "zp_nds,1\n", "", "a plot set begins before \"zp_nds\"", 60},
        Damage{"BadAxis", "zps_xv,1,", "zps_xv,6,", "\"zps_xv\": axis 6 in column 2 is not 1 to 5", 95},
        Damage{"BadLinePoints", "Trend, 2nd order\",3,", "Trend, 2nd order\",4,",
               "\"line\": the count 4 in column 10 does not match the 6 values that follow", 87},
        Damage{"PlotRecordAmongSets", "zps_shsty,", "zp_sgsty,", "\"zp_sgsty\" comes after the plot sets began", 77}),
    [](const ::testing::TestParamInfo<Damage>& info) { return info.param.name; });

TEST(PlotFile, UnequalAxesAreRefusedNamingTheSet) {
  ss::testing::TempDir dir;
  ss::PlotRecord good;
  fillEveryField(good);
  good.sets.resize(1);
  good.sets[0].data[1].pop_back();
  const std::string path = dir.file("unequal.zpl");
  ASSERT_TRUE(ss::writePlotFile(good, path).isOk());
  ss::PlotRecord plot;
  EXPECT_EQ(ss::readPlotFile(path, plot).message(), path + ": plot set \"Brent\" has axes of different lengths");
}

TEST(PlotFile, AFailedWriteLeavesTheOldFileWhole) {
  ss::testing::TempDir dir;
  ss::PlotRecord plot;
  fillEveryField(plot);
  const std::string path = dir.write("kept.zpl", "old contents\n");
  const std::string missingFolder = dir.file("no/such/folder/p.zpl");
  EXPECT_FALSE(ss::writePlotFile(plot, missingFolder).isOk());
  EXPECT_EQ(readAll(path), "old contents\n");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
}

TEST(PlotFile, ExportedWriteAndReadThroughTheCurrentPlot) {
  ss::testing::TempDir dir;
  ZW_ZPINIT();
  ss::host::clearRecorded();
  fillEveryField(*ss::plotTree().current());
  std::string name = dir.file("exported.zpl");
  name.resize(260, ' ');
  int status = -1;
  ZW_ZP* none = nullptr;
  ZW_ZPWRITE(&none, name.c_str(), &status);
  ASSERT_EQ(status, 0);
  ZW_ZP* kid = nullptr;
  int seq = 0;
  ZW_ZPADD(&kid, &seq);
  ZW_ZPREAD(&kid, name.c_str(), &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(kid->fields, ss::plotTree().root()->fields);
  dir.write("bad.zpl", "version,1\nzp_nds,x\n");
  std::string bad = dir.file("bad.zpl");
  bad.resize(260, ' ');
  ZW_ZPREAD(&kid, bad.c_str(), &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(ss::host::recordedMessages(),
            std::vector<std::string>{dir.file("bad.zpl") + ", line 2: column 2 is not a whole number"});
}

}  // namespace
