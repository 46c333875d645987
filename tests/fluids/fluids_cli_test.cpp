// The `subsurf fluids` command, run as a user runs it.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "fluids/fluid_test_support.h"
#include "support/run_program.h"
#include "support/temp_dir.h"

namespace subsurf::fluids {
namespace {

using testing::kChainRel;
using testing::nearRel;

using Outcome = subsurf::testing::CommandRun;

std::string program() { return subsurf::testing::builtProgram("subsurf"); }

class FluidsCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(program())) GTEST_SKIP() << "the subsurf program is not built";
  }
  Outcome run(const std::string& args) { return subsurf::testing::runCommand(program() + " fluids " + args); }
  subsurf::testing::TempDir tmp;
};

// The entry's record from the JSON forms.
nlohmann::json entry(const nlohmann::json& doc, const std::string& name) {
  for (const auto& form : doc["forms"]) {
    for (const auto& e : form["entries"]) {
      if (e["name"] == name) return e;
    }
  }
  return nullptr;
}

const char* kCase =
    "--set dres=8000:ft --set oden=35 --set sgden=0.75 --set solgor=600 --set gden=0.7";

TEST_F(FluidsCommand, FillsTheThreeForms) {
  const Outcome r = run(kCase);
  ASSERT_EQ(r.status, 0) << r.err;
  for (const char* title : {"Reservoir conditions", "Oil properties", "Gas properties"}) {
    EXPECT_NE(r.out.find(title), std::string::npos) << title;
  }
  // One line per entry: name, description, value, unit, given or calculated.
  EXPECT_NE(r.out.find("  tres      Reservoir temperature"), std::string::npos);
  std::istringstream lines(r.out);
  std::string line;
  int given = 0, calculated = 0;
  while (std::getline(lines, line)) {
    given += line.ends_with(" given");
    calculated += line.ends_with(" calculated");
  }
  EXPECT_EQ(given, 5);
  EXPECT_EQ(calculated, 15);  // all 23 entries but the 5 inputs and the 3 impurities
}

TEST_F(FluidsCommand, JsonHoldsTheChainCalculatedFromMetricInput) {
  // 8000 ft, 35 API = 141.5/166.5 sg, 600 scf/stb = 106.86456 m3/m3; shown in oilfield units.
  const Outcome r = run("--set dres=2438.4:m --set oden=0.84984985:sg --set sgden=0.75 "
                        "--set solgor=106.86456:m3/m3 --set gden=0.7 --json");
  ASSERT_EQ(r.status, 0) << r.err;
  const auto doc = nlohmann::json::parse(r.out);
  EXPECT_EQ(doc["units"], "oilfield");
  ASSERT_EQ(doc["forms"].size(), 3u);
  EXPECT_EQ(doc["forms"][0]["title"], "Reservoir conditions");
  for (const testing::ChainValue& c : testing::kUndersaturated) {
    EXPECT_TRUE(nearRel(static_cast<float>(entry(doc, c.name)["value"].get<double>()), c.value,
                        kChainRel))
        << c.name;
  }
  EXPECT_EQ(entry(doc, "tres")["state"], "calculated");
  EXPECT_EQ(entry(doc, "oden")["state"], "given");
  EXPECT_EQ(entry(doc, "tres")["unit"], "degf");
}

TEST_F(FluidsCommand, MetricDisplayUnits) {
  const Outcome r = run(std::string(kCase) + " --units metric --json");
  ASSERT_EQ(r.status, 0) << r.err;
  const auto doc = nlohmann::json::parse(r.out);
  EXPECT_EQ(entry(doc, "dres")["unit"], "m");
  EXPECT_EQ(entry(doc, "pres")["unit"], "bar");
  EXPECT_TRUE(nearRel(static_cast<float>(entry(doc, "dres")["value"].get<double>()), 2438.4, 1e-6));
  EXPECT_TRUE(nearRel(static_cast<float>(entry(doc, "tres")["value"].get<double>()),
                      (171.0 - 32.0) / 1.8, kChainRel));
  EXPECT_TRUE(nearRel(static_cast<float>(entry(doc, "pres")["value"].get<double>()),
                      3520.0 * 6894.757293168362 / 1e5, kChainRel));
}

TEST_F(FluidsCommand, BadInputOrRefusedCalculationExitsNamingIt) {
  struct Case { const char* args; int status; const char* message; };
  for (const Case& c : {
           Case{"--set foo=1", 2, "Unknown entry \"foo\""},
           Case{"--set tres=100:psia", 2, "\"psia\" is not a unit of temperature (entry \"tres\")"},
           Case{"--set dres=12x:ft", 2, "Cannot read \"12x\" as a number for entry \"dres\""},
           Case{"--calc nothing", 2, "Unknown entry \"nothing\""},
           Case{"--calc oden", 1, "No calculation for this entry"},
           Case{"--calc pres", 1, "Need a depth!"}}) {
    const Outcome r = run(c.args);
    EXPECT_EQ(r.status, c.status) << c.args;
    EXPECT_NE(r.err.find(c.message), std::string::npos) << c.args << ": " << r.err;
  }
}

TEST_F(FluidsCommand, CalculatesOneEntryAlone) {
  const Outcome r = run("--set dres=5000 --calc tres --json");
  ASSERT_EQ(r.status, 0) << r.err;
  const auto doc = nlohmann::json::parse(r.out);
  EXPECT_EQ(entry(doc, "tres")["value"], 135.0);
  EXPECT_TRUE(entry(doc, "pres")["value"].is_null());
}

TEST_F(FluidsCommand, BatchGivesEveryEntryPerCaseAndReportsBadCells) {
  const std::string in = tmp.write("cases.csv",
                                   "dres[m],oden,sgden,solgor[m3/m3],gden\n"
                                   "2438.4,35,0.75,106.86456,0.7\n"
                                   "3000,abc,0.7,100,0.7\n"
                                   "1524,35,0.75,,0.7\n");
  const std::string out = tmp.file("out.csv");
  const Outcome r = run("--batch " + in + " --out " + out);
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("row 3, column 2 (oden): cannot read \"abc\" as a number"),
            std::string::npos)
      << r.err;
  std::istringstream lines(subsurf::testing::TempDir::read(out));
  std::string header, first, bad, third;
  std::getline(lines, header);
  std::getline(lines, first);
  std::getline(lines, bad);
  std::getline(lines, third);
  EXPECT_TRUE(header.starts_with("dres[ft],tres[degf],pres[psia],tsc[degf],psc[psia],oden[api]"));
  EXPECT_TRUE(header.ends_with(",ghi[-],zfact[-]"));
  EXPECT_EQ(bad, std::string(22, ','));
  // zfact is the last column.
  const double z = std::stod(first.substr(first.rfind(',') + 1));
  EXPECT_TRUE(nearRel(static_cast<float>(z), 0.8621235022251834, kChainRel));
  // 5000 ft: 135 degF; no gas-oil ratio, so no bubble point.
  EXPECT_TRUE(third.starts_with("5000,135,2200,60,14.7,35,0.75,,,")) << third;
}

// Cases are calculated a chunk at a time; a case in a later chunk must start
// from the defaults again, not from what the case before it in the same
// place of the previous chunk was given.
TEST_F(FluidsCommand, BatchCasesPastTheFirstChunkStartAfresh) {
  constexpr int kRows = 40000, kPeriod = 97, kStaleRow = 32768 + 5;
  std::string csv = "dres,oden,sgden,solgor,gden\n";
  for (int r = 0; r < kRows; ++r) {
    const int k = r % kPeriod;
    const std::string gor = r == kStaleRow ? "" : std::to_string(200 + 10 * k);
    csv += fmt::format("{},{},0.75,{},0.7\n", 3000 + 50 * k, 20 + k % 30, gor);
  }
  csv += "9000,x,0.75,500,0.7\n";
  const std::string in = tmp.write("many.csv", csv), out = tmp.file("many-out.csv");
  const Outcome r = run("--batch " + in + " --out " + out);
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find(fmt::format("row {}, column 2 (oden): cannot read \"x\"", kRows + 2)),
            std::string::npos)
      << r.err;

  std::vector<std::string> rows;
  std::istringstream lines(subsurf::testing::TempDir::read(out));
  for (std::string line; std::getline(lines, line);) rows.push_back(line);
  ASSERT_EQ(rows.size(), static_cast<std::size_t>(kRows + 2));
  // Rows a whole number of periods apart have the same cases.
  for (int row : {5, 32767, 32768, 32769, kRows - 1}) {
    if (row == kStaleRow) continue;
    EXPECT_EQ(rows[row + 1], rows[row % kPeriod + 1]) << "case " << row;
  }
  // No gas-oil ratio: no bubble point, though the case in the same place of
  // the first chunk had one.
  const std::string stale = rows[kStaleRow + 1];
  const std::size_t solgorField = 7, pbubbleField = 8;
  std::vector<std::string> fields;
  std::istringstream cells(stale);
  for (std::string cell; std::getline(cells, cell, ',');) fields.push_back(cell);
  EXPECT_EQ(fields.at(solgorField), "");
  EXPECT_EQ(fields.at(pbubbleField), "");
  EXPECT_NE(rows[kStaleRow % kPeriod + 1], stale);
  EXPECT_EQ(rows.back(), std::string(22, ','));
}

// Spreadsheets saving "CSV UTF-8" start the file with a byte-order mark.
TEST_F(FluidsCommand, BatchHeaderMayFollowAByteOrderMark) {
  const std::string in = tmp.write("excel.csv", "\xEF\xBB\xBF" "dres[m],oden\r\n1524,35\r\n");
  const Outcome r = run("--batch " + in);
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("\n5000,135,2200,"), std::string::npos) << r.out;
}

// The results file appears only once complete, and a folder that cannot be
// written to is named.
TEST_F(FluidsCommand, BatchResultsFileIsWrittenWhole) {
  const std::string in = tmp.write("cases.csv", "dres,oden\n8000,35\n");
  const std::string out = tmp.write("out.csv", "dres[m],tres[degc]\n1,2\n");  // older results
  const Outcome ok = run("--batch " + in + " --out " + out);
  ASSERT_EQ(ok.status, 0) << ok.err;
  EXPECT_TRUE(subsurf::testing::TempDir::read(out).starts_with("dres[ft],tres[degf]"));
  EXPECT_EQ(tmp.list(), (std::vector<std::string>{"cases.csv", "out.csv"}));

  const std::string nowhere = tmp.file("no-such-folder/out.csv");
  const Outcome bad = run("--batch " + in + " --out " + nowhere);
  EXPECT_EQ(bad.status, 2);
  EXPECT_NE(bad.err.find("cannot write \"" + nowhere + "\""), std::string::npos) << bad.err;
}

// Numbers are whole decimal texts that single precision can hold.
TEST_F(FluidsCommand, GivenNumbersMustBeDecimalAndFitSinglePrecision) {
  for (const char* text : {"1e39", "0x10", "nan", "inf", "12,5"}) {
    const Outcome r = run(fmt::format("--set \"dres={}\"", text));
    EXPECT_EQ(r.status, 2) << text;
    EXPECT_NE(r.err.find(fmt::format("Cannot read \"{}\" as a number for entry \"dres\"", text)),
              std::string::npos)
        << r.err;
  }
  const Outcome r = run("--set dres=+5000 --calc tres --json");
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(entry(nlohmann::json::parse(r.out), "tres")["value"], 135.0);
}

TEST_F(FluidsCommand, BatchHeaderErrorsStopTheRun) {
  const std::string in = tmp.write("bad.csv", "dres[m],tres[bar],foo\n1000,1,1\n");
  const Outcome r = run("--batch " + in);
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("column 2: \"bar\" is not a unit of temperature (entry \"tres\")"),
            std::string::npos)
      << r.err;
  EXPECT_NE(r.err.find("column 3: Unknown entry \"foo\""), std::string::npos) << r.err;
  EXPECT_TRUE(r.out.empty());
}

}  // namespace
}  // namespace subsurf::fluids
