// Answers, scores and section totals, navigation, the export of answers and the listing.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "host/nulls.h"
#include "questionnaire/questionnaire.h"
#include "questionnaire_test_support.h"
#include "subsurf/host.h"

using namespace subsurf;
using namespace subsurf::testing;

namespace {

// Sections: 1 holds Q1, Q2 and Q5; 2 holds Q3; Q4 is in section 3, beyond the two declared.
const char* const kScored =
    "*title,Scoring\n"
    "*sections,2\n"
    "0,Unsectioned\n"
    "1,First\n"
    "2,Second\n"
    "*questions\n"
    "1,Q1,First question\n"
    "0,,low,1\n"
    "0,,high,31999.9\n"
    "0,,huge,32000\n"
    "0,,negative huge,-32000\n"
    "1,Q2,Second question\n"
    "0,,a,2\n"
    "0,,b,4\n"
    "2,Q3,Third question\n"
    "0,,a,10\n"
    "0,,no score\n"
    "3,Q4,Beyond the sections\n"
    "0,,a,100\n"
    "1,Q5,Fifth question\n"
    "0,,a,0.5,Q2\n";

class Scoring : public ::testing::Test {
 protected:
  void SetUp() override {
    host::setQuiet(true);
    handle = loadText(dir, kScored, &status);
    ASSERT_EQ(status, 0);
  }
  void TearDown() override {
    QA_QSDEL(&handle, &status);
    host::setQuiet(false);
  }
  void answer(int iq, int chosen) {
    int st = -1;
    QA_SETANS(&handle, &iq, &chosen, &st);
    ASSERT_EQ(st, 0);
  }
  float total(int s) {
    char name[40];
    float t = -1;
    int st = -1;
    QA_GETSEC(&handle, &s, name, &t, &st);
    EXPECT_EQ(st, 0);
    return t;
  }
  float score(int iq) {
    float v = 0;
    QA_GETSCORE(&handle, &iq, &v);
    return v;
  }
  int check(int s) {
    int n = -1;
    QA_CHECK(&handle, &s, &n);
    return n;
  }
  int current() {
    int iq = -1;
    QA_GETIQ(&handle, &iq);
    return iq;
  }
  TempDir dir;
  int handle = 0, status = -1;
};

TEST_F(Scoring, ScoreOfAnAnswerIndex) {
  int iq = 1;
  for (auto [index, expected] : {std::pair{1, 1.0f}, std::pair{2, 31999.9f}, std::pair{4, -32000.0f}}) {
    QA_SETSCORE(&handle, &iq, &index);
    EXPECT_EQ(score(1), expected) << index;
  }
  // Below 1, or beyond the answers: the score is null.
  for (int index : {0, -1, 5, kIntNull}) {
    QA_SETSCORE(&handle, &iq, &index);
    EXPECT_TRUE(isNull(score(1))) << index;
  }
  // An answer without a score scores null.
  iq = 3;
  int index = 2;
  QA_SETSCORE(&handle, &iq, &index);
  EXPECT_TRUE(isNull(score(3)));
}

TEST_F(Scoring, UnansweredQuestionsAreCountedAndAddNothing) {
  answer(2, 2);
  EXPECT_EQ(check(0), 4);  // Q1, Q3, Q4, Q5 have no answer
  EXPECT_EQ(current(), 1);  // the first unanswered one becomes current
  EXPECT_EQ(total(1), 4.0f);
  EXPECT_EQ(total(2), 0.0f);
  // A chosen answer of 0 is unanswered too.
  answer(1, 0);
  answer(2, kIntNull);
  answer(3, 1);
  EXPECT_EQ(check(0), 4);
  EXPECT_EQ(current(), 1);
  EXPECT_EQ(total(1), 0.0f);
  EXPECT_EQ(total(2), 10.0f);
}

TEST_F(Scoring, MinusOneIsNeitherCountedNorTotalled) {
  answer(1, -1);
  answer(2, 1);
  answer(3, 1);
  answer(4, 1);
  answer(5, -1);
  EXPECT_EQ(check(0), 0);
  EXPECT_EQ(total(1), 2.0f);
  answer(2, -1);
  EXPECT_EQ(check(0), 0);
  EXPECT_EQ(total(1), 0.0f);
}

TEST_F(Scoring, TheBoundOf32000) {
  answer(2, 1);
  answer(5, 1);
  answer(1, 2);
  check(0);
  EXPECT_FLOAT_EQ(total(1), 31999.9f + 2.0f + 0.5f);
  answer(1, 3);
  check(0);
  EXPECT_EQ(total(1), 2.5f);  // exactly 32000 is left out
  EXPECT_EQ(score(1), 32000.0f);  // though it is scored
  answer(1, 4);
  check(0);
  EXPECT_EQ(total(1), 2.5f);  // and so is -32000
  answer(3, 2);
  check(0);
  EXPECT_EQ(total(2), 0.0f);  // a null score never enters a total
}

TEST_F(Scoring, SectionZeroAndBeyondAreScoredButNeverTotalled) {
  // A file cannot put a question in section 0 (field 1 of 0 adds an answer), so build one.
  qa::Questionnaire q;
  q.declareSections(1);
  for (int section : {0, 1, 2}) {
    qa::Question question;
    question.section = section;
    question.answers.push_back(qa::Answer{"a", "", "", 7.0f, 0});
    question.chosen = 1;
    q.questions.push_back(question);
  }
  EXPECT_EQ(q.check(0), 0);
  EXPECT_EQ(q.score(1), 7.0f);
  EXPECT_EQ(q.score(3), 7.0f);
  EXPECT_EQ(q.sectionScores[0], 0.0f);
  EXPECT_EQ(q.sectionScores[1], 7.0f);

  answer(4, 1);
  EXPECT_EQ(check(0), 4);
  EXPECT_EQ(score(4), 100.0f);
  EXPECT_EQ(total(0), 0.0f);
  EXPECT_EQ(total(1), 0.0f);
  EXPECT_EQ(total(2), 0.0f);
}

TEST_F(Scoring, CheckOfOneSectionAndTotalsRebuiltEachTime) {
  answer(1, 1);
  answer(2, 2);
  answer(3, 1);
  answer(5, 1);
  EXPECT_EQ(check(0), 1);  // Q4
  EXPECT_EQ(current(), 4);
  EXPECT_EQ(total(1), 5.5f);
  EXPECT_EQ(total(2), 10.0f);
  EXPECT_EQ(check(2), 0);
  EXPECT_EQ(total(1), 0.0f);  // only section 2 was totalled this time
  EXPECT_EQ(total(2), 10.0f);
  EXPECT_EQ(check(3), 1);  // the question of section 3 is unanswered
  EXPECT_EQ(total(2), 0.0f);
  EXPECT_EQ(check(9), 0);  // no question in section 9
}

TEST_F(Scoring, ResetClearsAnswersAndScores) {
  answer(1, 1);
  QA_SETSCORES(&handle);
  EXPECT_EQ(score(1), 1.0f);
  QA_RESET(&handle);
  QA_QUESTION q;
  int iq = 1;
  QA_GETQ(&handle, &iq, &q, &status);
  EXPECT_TRUE(isNull(q.IANS));
  EXPECT_TRUE(isNull(q.SCORE));
  EXPECT_EQ(check(0), 5);
}

TEST_F(Scoring, SetAnswersFromAnArray) {
  const int chosen[] = {2, 1, 1};
  const int n = 3;
  QA_SETANSWERS(&handle, chosen, &n);
  QA_SETSCORES(&handle);
  EXPECT_EQ(score(1), 31999.9f);
  EXPECT_EQ(score(3), 10.0f);
  EXPECT_TRUE(isNull(score(4)));
  int iq = 9, k = 1;
  QA_SETANS(&handle, &iq, &k, &status);
  EXPECT_EQ(status, 1);
}

TEST_F(Scoring, GetAnswersRescoresEveryQuestionButWritesOnlyItsCapacity) {
  answer(1, 1);
  answer(4, 1);
  answer(5, 1);
  QA_RESULT results[5];
  std::memset(results, 0x7f, sizeof results);
  DT_CSCA sections[3];
  std::memset(sections, 0x7f, sizeof sections);
  const QA_RESULT untouched = results[2];
  const int capacity = 2, sectionCapacity = 2;
  QA_GETANSWERS(&handle, results, sections, &capacity, &sectionCapacity);
  EXPECT_EQ(results[0].IANS, 1);
  EXPECT_EQ(results[0].SCORE, 1.0f);
  EXPECT_EQ(fixedText(results[0].LABEL, 20), "Q1");
  EXPECT_TRUE(isNull(results[1].IANS));
  EXPECT_TRUE(isNull(results[1].SCORE));
  EXPECT_EQ(fixedText(results[1].LABEL, 20), "Q2");
  EXPECT_EQ(std::memcmp(&results[2], &untouched, sizeof untouched), 0);
  // Questions beyond the capacity were scored all the same.
  EXPECT_EQ(score(4), 100.0f);
  EXPECT_EQ(score(5), 0.5f);
  EXPECT_EQ(fixedText(sections[0].V, 40), "Unsectioned");
  EXPECT_EQ(fixedText(sections[1].V, 40), "First");
  EXPECT_EQ(sections[1].SET, -1);
  EXPECT_EQ(sections[2].SET, 0x7f7f7f7f);  // beyond the second capacity

  // A capacity above the counts writes every question and every section (0..2).
  const int big = 5, bigSections = 3;
  QA_GETANSWERS(&handle, results, sections, &big, &bigSections);
  EXPECT_EQ(fixedText(results[4].LABEL, 20), "Q5");
  EXPECT_EQ(fixedText(sections[2].V, 40), "Second");
}

TEST_F(Scoring, NavigationLeavesTheCurrentQuestionWhenTheTargetIsMissing) {
  int n = 2;
  QA_SETIQ(&handle, &n);
  EXPECT_EQ(current(), 2);
  n = 6;
  QA_SETIQ(&handle, &n);
  EXPECT_EQ(current(), 2);
  int s = 1;
  n = 3;
  QA_SETISECQ(&handle, &s, &n);
  EXPECT_EQ(current(), 5);  // the third question of section 1
  s = 0, n = 4;
  QA_SETISECQ(&handle, &s, &n);
  EXPECT_EQ(current(), 4);  // section 0: the fourth of all
  s = 2, n = 2;
  QA_SETISECQ(&handle, &s, &n);
  EXPECT_EQ(current(), 4);
  s = 2;
  QA_GOTOSEC(&handle, &s);
  EXPECT_EQ(current(), 3);
  s = 7;
  QA_GOTOSEC(&handle, &s);
  EXPECT_EQ(current(), 3);
  int iq = -1;
  QA_GETQLAB(&handle, padded("Q5", 20).c_str(), &iq, &status);
  EXPECT_EQ(iq, 5);
  EXPECT_EQ(status, 0);
  QA_GETQLAB(&handle, padded("q5", 20).c_str(), &iq, &status);
  EXPECT_EQ(iq, 0);
  EXPECT_EQ(status, 1);
}

TEST_F(Scoring, ListingWrittenToAChannel) {
  const std::string path = dir.file("listing.txt");
  int channel = 0, st = -1;
  A_OPENASC(&channel, padded(path, 260).c_str(), &st);
  ASSERT_EQ(st, 0);
  QA_SHOW(&handle, &channel);
  KJF_CLOS(&channel, padded("RELEASE", 16).c_str(), &st);
  ASSERT_EQ(st, 0);
  EXPECT_EQ(TempDir::read(path),
            "Scoring\n"
            "\nFirst question\n  low 1\n  high 31999.9\n  huge 32000\n  negative huge -32000\n"
            "\nSecond question\n  a 2\n  b 4\n"
            "\nThird question\n  a 10\n  no score -9.9e+20\n"
            "\nBeyond the sections\n  a 100\n"
            "\nFifth question\n  a 0.5      ==> Q2\n");
}

}  // namespace
