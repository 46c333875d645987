// `subsurf quiz`, answered from a pipe as a script would.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "questionnaire_test_support.h"
#include "support/run_program.h"

namespace {

using subsurf::testing::CommandRun;
using subsurf::testing::TempDir;

std::string program() { return subsurf::testing::builtProgram("subsurf"); }

// Runs the quiz with the given lines as its standard input.
CommandRun quiz(const std::string& answers, const std::string& args) {
  return subsurf::testing::runCommand("printf '" + answers + "' | " + program() + " quiz " + args);
}

class QuizCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(program())) GTEST_SKIP() << program() << " is not built";
  }
  TempDir dir;
};

TEST_F(QuizCommand, TheShippedChecklistAnsweredToTheEnd) {
  const std::string out = dir.file("answers.csv");
  // Sandstone, medium, well sorted, clay <5%; good porosity, intergranular, >100 mD;
  // no fractures (jumps to cementation), weak; even staining, bright fluorescence.
  const CommandRun r =
      quiz("1\\n2\\n1\\n1\\n1\\n1\\n1\\n1\\n1\\n1\\n1\\n", subsurf::testing::shippedQuestionnaire() + " --out " + out);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "");
  EXPECT_NE(r.out.find("[10/12] Cementation"), std::string::npos);
  EXPECT_EQ(r.out.find("[9/12]"), std::string::npos);  // fracture fill was jumped over
  EXPECT_NE(r.out.find("Section scores:\n"
                       "   1 Lithology and texture                    9\n"
                       "   2 Pore system                              8\n"
                       "   3 Fractures and diagenesis                 2\n"
                       "   4 Fluids and shows                         5\n"
                       "Answers written to " + out + "\n"),
            std::string::npos)
      << r.out;
  const std::string csv = TempDir::read(out);
  EXPECT_NE(csv.find("answer,FILL,3,-1,\"\",\"\"\n"), std::string::npos) << csv;
  EXPECT_NE(csv.find("section,3,Fractures and diagenesis,2\n"), std::string::npos);
  EXPECT_NE(csv.find("unanswered,0\n"), std::string::npos);
}

TEST_F(QuizCommand, BackSkipAndBadAnswersThenJson) {
  const std::string file = dir.write("q.csv",
                                     "*title,Two questions\n*sections,1\n1,Only\n*questions\n"
                                     "1,A,First?\n0,,yes,1\n0,,no,0\n1,B,Second?\n0,,yes,2\n0,,no,0\n");
  const std::string out = dir.file("a.json");
  const CommandRun r = quiz("2\\nb\\n1\\nmaybe\\n7\\ns\\n", file + " --out " + out);
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.err,
            "subsurf: Type the number of an answer, b, s or q (not \"maybe\")\n"
            "subsurf: Answer 7 is not one of 1 to 2\n");
  const auto j = nlohmann::json::parse(TempDir::read(out));
  EXPECT_EQ(j["answers"][0]["answer"], 1);
  EXPECT_TRUE(j["answers"][1]["answer"].is_null());
  EXPECT_EQ(j["sections"][0]["total"], 1.0);
  EXPECT_EQ(j["unanswered"], 1);
  EXPECT_NE(r.out.find("Unanswered questions: 1\n"), std::string::npos);
}

TEST_F(QuizCommand, InputEndingEarlyKeepsTheAnswersGivenAndExitsOne) {
  const std::string out = dir.file("partial.csv");
  const CommandRun r = quiz("1\\n2\\n", subsurf::testing::shippedQuestionnaire() + " --out " + out);
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "subsurf: The answers ended at question 3 of 12\n");
  const std::string csv = TempDir::read(out);
  EXPECT_NE(csv.find("answer,GRAIN,1,2,Medium sand or packstone,2\n"), std::string::npos) << csv;
  EXPECT_NE(csv.find("unanswered,10\n"), std::string::npos) << csv;
  EXPECT_EQ(quiz("q\\n", subsurf::testing::shippedQuestionnaire()).status, 1);
}

TEST_F(QuizCommand, ABadFileIsNamedWithItsLine) {
  const std::string file = dir.write("bad.csv", "*questions\n1,A,Text\n0,,yes,lots\n");
  const CommandRun r = quiz("1\\n", file);
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "subsurf: " + file + ", line 3: the score \"lots\" is not a number\n");
  EXPECT_EQ(r.out, "");
}

TEST_F(QuizCommand, ShowListsTheQuestionnaire) {
  const CommandRun r = quiz("", subsurf::testing::shippedQuestionnaire() + " --show");
  EXPECT_EQ(r.status, 0);
  const std::string head = "Core reservoir-quality checklist\n\nDominant lithology of the interval\n  Sandstone 3\n";
  EXPECT_EQ(r.out.substr(0, head.size()), head);
  EXPECT_NE(r.out.find("  Mudstone or shale 0      ==> FRAC\n"), std::string::npos);
}

}  // namespace
