// Cross-plots from CSV files: columns by name, units converted, bad cells
// named by file, line and column, unusable values left out and counted; and
// the `subsurf plot` command run as a user runs it.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "host/nulls.h"
#include "plot/axis_scales.h"
#include "plot/crossplot.h"
#include "plot/plot_file.h"
#include "support/run_program.h"
#include "support/temp_dir.h"

namespace ss = subsurf;

namespace {

const char* kPlugs =
    "\xEF\xBB\xBFsample, Depth [ft] ,phi[frac],k[mD]\r\n"
    "A,1000,0.12,5\r\n"
    "\r\n"
    "B,3280.84,0.25,\"1,200\"\n"  // a quoted cell: not a number
    "C,2000,,7\n";

ss::AxisRequest axis(const std::string& column, const std::string& unit = "") {
  ss::AxisRequest r;
  r.column = column;
  r.unit = unit;
  return r;
}

TEST(Crossplot, ColumnsAreFoundByNameAndConvertedIntoTheAxisUnit) {
  ss::testing::TempDir dir;
  const std::string csv = dir.write("plugs.csv",
                                    "sample,depth[ft],phi[frac],k[mD]\n"
                                    "A,1000,0.12,5\n"
                                    "B,3280.84,0.25,30\n"
                                    "C,2000,,7\n"
                                    "D,2100,0.2,-9.9e20\n"
                                    "E,nan,0.2,8\n"
                                    "F,inf,0.2,8\n"
                                    "G,2200,0.2,1e21\n"
                                    "H,,0.2,9\n");
  ss::CrossplotData d;
  const ss::Status s = ss::readCrossplotData(csv, axis("DEPTH", "m"), axis("k"), d);
  ASSERT_TRUE(s.isOk()) << s.message();
  EXPECT_EQ(d.rows, 8);
  ASSERT_EQ(d.x.size(), 3u);  // A, B and C; the others each lack a usable value
  EXPECT_NEAR(d.x[0], 304.8f, 1e-3);
  EXPECT_NEAR(d.x[1], 1000.0f, 1e-2);
  EXPECT_EQ(d.y[1], 30.0f);
  EXPECT_EQ(d.emptyCells, 1);
  EXPECT_EQ(d.nullValues, 2);
  EXPECT_EQ(d.nonFinite, 2);
  EXPECT_EQ(d.xUnit, "m");
  EXPECT_EQ(d.yUnit, "mD");
  EXPECT_EQ(d.xColumn, "depth");
}

TEST(Crossplot, BadInputIsNamedByFileLineAndColumn) {
  ss::testing::TempDir dir;
  const std::string csv = dir.write("plugs.csv", kPlugs);
  ss::CrossplotData d;
  EXPECT_EQ(ss::readCrossplotData(csv, axis("depth"), axis("k"), d).message(),
            csv + ", line 4, column 4 (\"k\"): \"1,200\" is not a number");
  EXPECT_EQ(ss::readCrossplotData(csv, axis("depth"), axis("perm"), d).message(),
            csv + ", line 1: no column \"perm\"; the columns are \"sample\", \"Depth\", \"phi\", \"k\"");
  EXPECT_EQ(ss::readCrossplotData(csv, axis("depth", "psi"), axis("phi"), d).message(),
            csv + ": column \"Depth\" in \"ft\" cannot be shown in \"psi\": no series holds both units");
  EXPECT_EQ(ss::readCrossplotData(csv, axis("sample", "m"), axis("phi"), d).message(),
            csv + ": column \"sample\" has no unit to convert into \"m\" (write it as \"sample[unit]\")");
  EXPECT_EQ(ss::readCrossplotData(dir.file("none.csv"), axis("a"), axis("b"), d).message(),
            "cannot open \"" + dir.file("none.csv") + "\"");
  const std::string empty = dir.write("empty.csv", "\n  \n");
  EXPECT_EQ(ss::readCrossplotData(empty, axis("a"), axis("b"), d).message(), empty + ": no header row of column names");
}

TEST(Crossplot, NamesOfTypesAndModes) {
  EXPECT_EQ(ss::scaleTypeByName("LOG"), ss::kLog);
  EXPECT_EQ(ss::scaleTypeByName("recip"), ss::kRecip);
  EXPECT_EQ(ss::scaleTypeByName("Recip."), ss::kRecip);
  EXPECT_EQ(ss::scaleTypeByName("logarithmic"), 0);
  EXPECT_EQ(ss::rangeModeByName("P99-p1"), ss::kP99P1);
  EXPECT_EQ(ss::rangeModeByName("auto-rnd"), ss::kAutoRound);
  EXPECT_EQ(ss::rangeModeByName("p50"), 0);
}

TEST(Crossplot, PlotTakesLimitsLabelsAndUnits) {
  ss::CrossplotData d;
  d.x = {0.05f, 0.27f};
  d.y = {0.3f, 4000};
  d.xColumn = "phi";
  d.yColumn = "k";
  d.xUnit = "frac";
  d.yUnit = "mD";
  ss::AxisRequest x = axis("phi"), y = axis("k");
  y.type = ss::kLog;
  x.mode = ss::kManual;
  x.min = 0;  // the maximum comes from the data
  const ss::PlotRecord p = ss::makeCrossplot(d, x, y, "Plugs", "plugs");
  const ss::PlotSet& s = p.sets[0];
  EXPECT_EQ(s.name, "plugs");
  EXPECT_EQ(s.labels[0], "phi");
  EXPECT_FLOAT_EQ(s.scales[0].MIN, 0);
  EXPECT_FLOAT_EQ(s.scales[0].MAX, 0.3f);
  EXPECT_FLOAT_EQ(s.scales[1].MIN, 0.1f);
  EXPECT_FLOAT_EQ(s.scales[1].MAX, 10000);
  EXPECT_EQ(std::string(s.scales[1].UNIT, 2), "mD");
  EXPECT_EQ(p.fields.title, "Plugs");
}

// ---- The command ------------------------------------------------------------

class PlotCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(program())) GTEST_SKIP() << "the subsurf program is not built";
    csv = tmp.write("plugs.csv",
                    "sample,depth[ft],phi[frac],k[mD]\n"
                    "A,1000,0.12,5\n"
                    "B,3280.84,0.25,300\n"
                    "C,2000,,7\n"
                    "D,2500,0.18,nan\n");
  }
  static std::string program() { return ss::testing::builtProgram("subsurf"); }
  ss::testing::CommandRun run(const std::string& args) {
    return ss::testing::withoutSuppressionReport(ss::testing::runCommand(program() + " plot " + args));
  }
  ss::testing::TempDir tmp;
  std::string csv;
};

TEST_F(PlotCommand, DrawsAllThreeFormatsSavesAndReports) {
  const auto r = run("xy " + csv + " --x phi --y k --y-scale log --title Plugs --out " + tmp.file("a.svg") +
                     " --out " + tmp.file("a.png") + " --out " + tmp.file("a.pdf") + " --save " + tmp.file("a.zpl") +
                     " --size 800x600 --dpi 100 --json");
  ASSERT_EQ(r.status, 0) << r.err;
  const auto j = nlohmann::json::parse(r.out);
  EXPECT_EQ(j["rows"], 4);
  EXPECT_EQ(j["plotted"], 2);
  EXPECT_EQ(j["left_out"]["empty"], 1);
  EXPECT_EQ(j["left_out"]["non_finite"], 1);
  EXPECT_EQ(j["x"]["min"], 0.1);
  EXPECT_EQ(j["x"]["max"], 0.25);
  EXPECT_EQ(j["y"]["min"], 1);
  EXPECT_EQ(j["y"]["max"], 1000);
  EXPECT_EQ(j["y"]["type"], "Log");
  EXPECT_EQ(j["y"]["unit"], "mD");
  for (const char* f : {"a.svg", "a.png", "a.pdf", "a.zpl"}) EXPECT_TRUE(std::filesystem::exists(tmp.file(f))) << f;
  ss::PlotRecord saved;
  ASSERT_TRUE(ss::readPlotFile(tmp.file("a.zpl"), saved).isOk());
  EXPECT_EQ(saved.sets[0].pointCount(), 2);

  const auto again = run("draw " + tmp.file("a.zpl") + " --out " + tmp.file("b.png") + " --json");
  ASSERT_EQ(again.status, 0) << again.err;
  const auto k = nlohmann::json::parse(again.out);
  EXPECT_EQ(k["sets"][0]["points"], 2);
  EXPECT_EQ(k["sets"][0]["y"]["max"], 1000);
  EXPECT_TRUE(std::filesystem::exists(tmp.file("b.png")));
}

TEST_F(PlotCommand, LeftOutRowsAreToldWithoutJson) {
  const auto r = run("xy " + csv + " --x depth --y phi --x-unit m --out " + tmp.file("c.svg"));
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "subsurf: " + csv + ": 1 of 4 rows left out (1 with an empty cell, 0 null, 0 not finite)\n");
}

TEST_F(PlotCommand, BadInputStopsWithoutWritingAnything) {
  const std::string bad = tmp.write("bad.csv", "a,b\n1,2\n3,x3\n");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"xy " + bad + " --x a --y b --out " + tmp.file("o.png"),
       "subsurf: " + bad + ", line 3, column 2 (\"b\"): \"x3\" is not a number\n"},
      {"xy " + csv + " --x phi --y perm --out " + tmp.file("o.png"),
       "subsurf: " + csv + ", line 1: no column \"perm\"; the columns are \"sample\", \"depth\", \"phi\", \"k\"\n"},
      {"xy " + csv + " --x phi --y k --out " + tmp.file("o.jpg"),
       "subsurf: --out \"" + tmp.file("o.jpg") + "\": the name must end in .svg, .png or .pdf\n"},
      {"xy " + csv + " --x phi --y k --y-scale logarithmic --out " + tmp.file("o.png"),
       "subsurf: --y-scale \"logarithmic\" is not one of linear, log, square, sqrt, recip, norm, stan, prob\n"},
      {"xy " + csv + " --x phi --y k --range p50 --out " + tmp.file("o.png"),
       "subsurf: --range \"p50\" is not one of manual, auto, auto-rnd, p99-p1, p95-p5, p90-p10\n"},
      {"xy " + csv + " --x phi --y k --size 80 --out " + tmp.file("o.png"),
       "subsurf: --size \"80\" is not WIDTHxHEIGHT in pixels (16 to 20000 each), such as 1600x1200\n"},
      {"xy " + csv + " --x phi --y k", "subsurf: nothing to do: give --out FILE.svg|png|pdf, --save FILE.zpl or --json\n"},
  };
  for (const auto& [args, message] : cases) {
    const auto r = run(args);
    EXPECT_EQ(r.status, 2) << args;
    EXPECT_EQ(r.err, message) << args;
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tmp.path()), {}), 2);  // the two CSV files only
}

TEST_F(PlotCommand, ADamagedPlotFileIsNamedWithItsLine) {
  const std::string zpl = tmp.write("d.zpl", "version,1\nzp_title,x\nzp_nds,one\n");
  const auto r = run("draw " + zpl + " --out " + tmp.file("d.png"));
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "subsurf: " + zpl + ", line 3: column 2 is not a whole number\n");
  EXPECT_FALSE(std::filesystem::exists(tmp.file("d.png")));
}

}  // namespace
