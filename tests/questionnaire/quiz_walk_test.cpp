// The wizard's walk (go-to labels, jumps, going back, skipping) and the answers
// files it writes.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "questionnaire/answers_file.h"
#include "questionnaire/questionnaire.h"
#include "questionnaire/quiz_walk.h"
#include "support/temp_dir.h"

using namespace subsurf;
using namespace subsurf::qa;
using subsurf::testing::TempDir;

namespace {

const char* const kBranching =
    "*title,Branching\n"
    "*sections,3\n"
    "1,Rock\n"
    "2,Pores\n"
    "3,Shows\n"
    "*questions\n"
    "1,LITH,Lithology\n"
    "0,,Sand,3\n"
    "0,,Shale,0,SHOW\n"
    "0,,Coal,0,>3\n"
    "0,,Salt,0,>end\n"
    "1,GRAIN,Grain size\n"
    "0,,Coarse,2\n"
    "0,,Fine,1\n"
    "2,PORO,Porosity\n"
    "0,,Good,2\n"
    "0,,Poor,0\n"
    "3,SHOW,Oil show\n"
    "0,,Yes,5\n"
    "0,,No,0\n";

class Walk : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::string path = dir.write("q.csv", kBranching);
    ASSERT_TRUE(loadQuestionnaire(path, q).isOk());
  }
  TempDir dir;
  Questionnaire q;
};

TEST_F(Walk, StraightThroughAnswersEveryQuestion) {
  QuizWalk walk(q);
  for (int k : {1, 2, 1, 1}) ASSERT_TRUE(walk.choose(k).isOk());
  EXPECT_TRUE(walk.finished());
  EXPECT_EQ(walk.finish(), 0);
  EXPECT_EQ(q.sectionScores[1], 4.0f);
  EXPECT_EQ(q.sectionScores[2], 2.0f);
  EXPECT_EQ(q.sectionScores[3], 5.0f);
}

TEST_F(Walk, AGotoJumpsAndTheJumpedQuestionsDoNotApply) {
  QuizWalk walk(q);
  ASSERT_TRUE(walk.choose(2).isOk());  // Shale: on to SHOW
  EXPECT_EQ(walk.current(), 4);
  ASSERT_TRUE(walk.choose(2).isOk());
  EXPECT_EQ(walk.finish(), 0);
  EXPECT_EQ(q.questions[1].chosen, kNotApplicable);
  EXPECT_EQ(q.questions[2].chosen, kNotApplicable);
  EXPECT_EQ(q.sectionScores[2], 0.0f);
}

TEST_F(Walk, AngleLabelsEndOrGoToASection) {
  {
    QuizWalk walk(q);
    ASSERT_TRUE(walk.choose(4).isOk());  // Salt: >end
    EXPECT_TRUE(walk.finished());
    EXPECT_EQ(walk.finish(), 0);  // everything off the way does not apply
    EXPECT_EQ(q.questions[3].chosen, kNotApplicable);
  }
  QuizWalk walk(q);
  ASSERT_TRUE(walk.choose(3).isOk());  // Coal: >3, the first question of section 3
  EXPECT_EQ(walk.current(), 4);
}

TEST_F(Walk, GoingBackUndoesTheJump) {
  QuizWalk walk(q);
  ASSERT_TRUE(walk.choose(2).isOk());
  EXPECT_EQ(walk.depth(), 1);
  ASSERT_TRUE(walk.back());
  EXPECT_EQ(walk.current(), 1);
  EXPECT_FALSE(walk.back());
  ASSERT_TRUE(walk.choose(1).isOk());
  EXPECT_EQ(walk.current(), 2);
  // The input ends here: nothing was jumped over, so the rest is unanswered.
  EXPECT_EQ(walk.finish(), 3);
  EXPECT_EQ(q.current(), 2);
}

TEST_F(Walk, BadChoicesAndRequiredAnswers) {
  QuizWalk walk(q);
  EXPECT_EQ(walk.choose(5).message(), "Answer 5 is not one of 1 to 4");
  EXPECT_EQ(walk.choose(0).message(), "Answer 0 is not one of 1 to 4");
  ASSERT_TRUE(walk.skip().isOk());
  EXPECT_EQ(walk.current(), 2);
  q.answersRequired = 1;
  EXPECT_EQ(walk.skip().message(), "An answer is required for every question");
  EXPECT_EQ(walk.current(), 2);
  for (int k : {1, 1, 1}) ASSERT_TRUE(walk.choose(k).isOk());
  EXPECT_EQ(walk.choose(1).message(), "The questionnaire is finished");
  EXPECT_EQ(walk.finish(), 1);  // the skipped first question
}

TEST_F(Walk, AnswersAsCsvAndJson) {
  QuizWalk walk(q);
  for (int k : {1, 2}) ASSERT_TRUE(walk.choose(k).isOk());
  ASSERT_TRUE(walk.skip().isOk());
  ASSERT_TRUE(walk.choose(1).isOk());
  walk.finish();
  EXPECT_EQ(answersCsv(q),
            "title,Branching\n"
            "event,\"\"\n"
            "answer,LITH,1,1,Sand,3\n"
            "answer,GRAIN,1,2,Fine,1\n"
            "answer,PORO,2,\"\",\"\",\"\"\n"
            "answer,SHOW,3,1,Yes,5\n"
            "section,1,Rock,4\n"
            "section,2,Pores,0\n"
            "section,3,Shows,5\n"
            "unanswered,1\n");
  const auto j = nlohmann::json::parse(answersJson(q));
  EXPECT_EQ(j["title"], "Branching");
  EXPECT_TRUE(j["event"].is_null());
  ASSERT_EQ(j["answers"].size(), 4u);
  EXPECT_EQ(j["answers"][1]["answer_text"], "Fine");
  EXPECT_EQ(j["answers"][1]["question"], "Grain size");
  EXPECT_TRUE(j["answers"][2]["answer"].is_null());
  EXPECT_TRUE(j["answers"][2]["score"].is_null());
  EXPECT_EQ(j["sections"][2]["total"], 5.0);
  EXPECT_EQ(j["unanswered"], 1);
}

TEST_F(Walk, AnswersFileReplacesTheOldOneWholeOrNotAtAll) {
  QuizWalk walk(q);
  ASSERT_TRUE(walk.choose(4).isOk());
  walk.finish();
  const std::string target = dir.write("answers.json", "old answers");
  ASSERT_TRUE(writeAnswers(q, target).isOk());
  EXPECT_EQ(nlohmann::json::parse(TempDir::read(target))["answers"][0]["answer"], 4);
  const std::string csv = dir.file("answers.CSV");
  ASSERT_TRUE(writeAnswers(q, csv).isOk());
  EXPECT_EQ(TempDir::read(csv).substr(0, 16), "title,Branching\n");
  // A folder that does not exist: an error naming it, and no file anywhere.
  const Status st = writeAnswers(q, dir.file("no/such/folder/a.csv"));
  EXPECT_FALSE(st.isOk());
  EXPECT_NE(st.message().find(dir.file("no/such/folder")), std::string::npos) << st.message();
  EXPECT_EQ(dir.list(), (std::vector<std::string>{"answers.CSV", "answers.json", "q.csv"}));
}

}  // namespace
