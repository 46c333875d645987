// Loading questionnaire files: keywords, modes, skipped records, go-to labels,
// the second code, and files that must be refused with the file and line named.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "host/nulls.h"
#include "questionnaire/questionnaire.h"
#include "questionnaire_test_support.h"

using namespace subsurf;
using namespace subsurf::testing;

namespace {

const char* const kSample =
    "*title,Core reservoir check\n"
    "*event,7\n"
    "*answers_required,1\n"
    "some note outside any mode,is ignored\n"
    "*sections,2\n"
    "0,General\n"
    "1,Lithology\n"
    "2,Pores\n"
    "*questions,3\n"
    "1,LITH,Dominant lithology\n"
    "0,,Sandstone,3\n"
    "0,,Shale,0,PORO\n"
    "0,,,5\n"                         // no text: skipped
    "0,,Coal,0,>end,ignored field 6\n"
    "2,,\n"                           // no text: skipped, no question made
    "2,PORO,Visible porosity\n"
    "0,,Good,2.5,NOWHERE\n"
    "0,,Poor,0.5,LITH,sixth\n"
    "3,BEYOND,A question beyond the sections\n"
    "0,,Yes,1\n";

class QuestionnaireFile : public ::testing::Test {
 protected:
  void SetUp() override {
    host::clearRecorded();
    host::setQuiet(true);
  }
  void TearDown() override {
    if (handle > 0) QA_QSDEL(&handle, &status);
    host::setQuiet(false);
  }
  QA_ANSWER answer(int iq, int ia) {
    QA_ANSWER a;
    int st = -1;
    QA_GETA(&handle, &iq, &ia, &a, &st);
    EXPECT_EQ(st, 0);
    return a;
  }
  TempDir dir;
  int handle = 0, status = -1;
};

TEST_F(QuestionnaireFile, KeywordsSectionsQuestionsAndAnswers) {
  handle = loadText(dir, kSample, &status);
  ASSERT_EQ(status, 0);
  ASSERT_GT(handle, 0);
  char title[40];
  int event = 0, required = 0;
  QA_GETTITLE(&handle, title, &event, &required, &status);
  EXPECT_EQ(fixedText(title, 40), "Core reservoir check");
  EXPECT_EQ(event, 7);
  EXPECT_EQ(required, 1);

  int n = 0;
  QA_NSECS(&handle, &n);
  EXPECT_EQ(n, 2);
  QA_NQUS(&handle, &n);
  EXPECT_EQ(n, 3);
  for (auto [iq, expected] : {std::pair{1, 3}, std::pair{2, 2}, std::pair{3, 1}, std::pair{4, 0}}) {
    QA_NANS(&handle, &iq, &n);
    EXPECT_EQ(n, expected) << iq;
  }
  char name[40];
  float total = 1;
  for (auto [s, expected] : {std::pair{0, "General"}, std::pair{1, "Lithology"}, std::pair{2, "Pores"}}) {
    QA_GETSEC(&handle, &s, name, &total, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(fixedText(name, 40), expected);
    EXPECT_EQ(total, 0.0f);
  }
  int s = 3;
  QA_GETSEC(&handle, &s, name, &total, &status);
  EXPECT_EQ(status, 1);

  QA_QUESTION q;
  int iq = 2;
  QA_GETQ(&handle, &iq, &q, &status);
  EXPECT_EQ(fixedText(q.TEXT, 200), "Visible porosity");
  EXPECT_EQ(fixedText(q.LABEL, 20), "PORO");
  EXPECT_EQ(q.ISEC, 2);
  EXPECT_TRUE(isNull(q.IANS));
  EXPECT_TRUE(isNull(q.SCORE));

  EXPECT_EQ(fixedText(answer(1, 1).TEXT, 200), "Sandstone");
  EXPECT_EQ(answer(1, 1).SCORE, 3.0f);
  EXPECT_EQ(answer(2, 1).SCORE, 2.5f);
}

TEST_F(QuestionnaireFile, GotoLabelsResolvedAfterClosingAndAngleLabelsLeftAlone) {
  handle = loadText(dir, kSample, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(answer(1, 1).IGOTO, 0);             // no label
  EXPECT_EQ(fixedText(answer(1, 2).GOTO, 20), "PORO");
  EXPECT_EQ(answer(1, 2).IGOTO, 2);             // a label defined later in the file
  EXPECT_EQ(fixedText(answer(1, 3).GOTO, 20), ">end");
  EXPECT_EQ(answer(1, 3).IGOTO, 0);             // ">" labels are never resolved
  EXPECT_EQ(answer(2, 1).IGOTO, 0);             // names no question
  EXPECT_EQ(answer(2, 2).IGOTO, 1);             // back to the first question
  // The resolving pass leaves the current question on the last one.
  int iq = 0;
  QA_GETIQ(&handle, &iq);
  EXPECT_EQ(iq, 3);
}

TEST_F(QuestionnaireFile, SecondCodeRepeatsFieldFiveOnlyWhenThereIsASixth) {
  handle = loadText(dir, kSample, &status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(fixedText(answer(1, 2).CODE, 20), "");          // five fields
  EXPECT_EQ(fixedText(answer(1, 3).CODE, 20), ">end");      // six: field 5 again
  EXPECT_EQ(fixedText(answer(2, 2).CODE, 20), "LITH");
  EXPECT_EQ(fixedText(answer(2, 1).CODE, 20), "");
}

TEST_F(QuestionnaireFile, FieldsAreCutToTheirWidths) {
  const std::string longLabel(30, 'L'), longText(250, 't'), longTitle(60, 'T');
  handle = loadText(dir, "*title," + longTitle + "\n*questions\n1," + longLabel + "," + longText + "\n0,,a,1," +
                             longLabel + "\n", &status);
  ASSERT_EQ(status, 0);
  char title[40];
  QA_GETTITLE(&handle, title, nullptr, nullptr, &status);
  EXPECT_EQ(std::string(title, 40), longTitle.substr(0, 40));
  QA_QUESTION q;
  int iq = 1;
  QA_GETQ(&handle, &iq, &q, &status);
  EXPECT_EQ(std::string(q.TEXT, 200), longText.substr(0, 200));
  EXPECT_EQ(std::string(q.LABEL, 20), longLabel.substr(0, 20));
  EXPECT_EQ(answer(1, 1).IGOTO, 1);  // the cut label still finds the cut question label
  int sections = -1;
  QA_NSECS(&handle, &sections);
  EXPECT_EQ(sections, 0);  // no "*sections": none declared
}

struct BadFile {
  const char* text;
  const char* message;  // after "FILE, "
};

TEST_F(QuestionnaireFile, BadFilesAreRefusedNamingFileAndLine) {
  const BadFile cases[] = {
      {"*questions\n1,Q1,Text\nx,,Answer,1\n", "line 3: the section number \"x\" is not a whole number"},
      {"*questions\n1,Q1,Text\n0,,Answer,high\n", "line 3: the score \"high\" is not a number"},
      {"*questions\n0,,Answer,1\n", "line 2: an answer comes before any question"},
      {"*title,T\n*colour,red\n", "line 2: unknown keyword \"*colour\""},
      {"*sections,two\n", "line 1: the number of sections \"two\" is not a whole number"},
      {"*sections,-1\n", "line 1: the number of sections must be from 0 to 10000, not -1"},
      {"*sections,20000\n", "line 1: the number of sections must be from 0 to 10000, not 20000"},
      {"*sections,2\n3,Too far\n", "line 2: section 3 is beyond the 2 sections declared"},
      {"*sections,2\nfirst,Name\n", "line 2: the section number \"first\" is not a whole number"},
      {"*event,soon\n", "line 1: the event number \"soon\" is not a whole number"},
      {"*answers_required,yes\n", "line 1: the answers-required flag \"yes\" is not a whole number"},
      {"*questions,many\n", "line 1: the question count \"many\" is not a whole number"},
      {"*questions\n1,Q1,Text\n0,,A,1\n\n1,Q2,No answers\n", "line 5: question \"Q2\" has no answers"},
  };
  for (const BadFile& c : cases) {
    host::clearRecorded();
    int st = -1;
    const int h = loadText(dir, c.text, &st);
    EXPECT_EQ(st, 1) << c.text;
    EXPECT_EQ(h, 0) << c.text;
    const auto messages = host::recordedMessages();
    ASSERT_EQ(messages.size(), 1u) << c.text;
    EXPECT_EQ(messages[0], dir.file("q.csv") + ", " + c.message);
  }
  int st = -1;
  int h = -1;
  QA_LOAD(padded(dir.file("missing.csv"), 260).c_str(), &h, &st);
  EXPECT_EQ(st, 1);
  EXPECT_EQ(h, 0);
  EXPECT_EQ(host::recordedMessages().back(), "Cannot open " + dir.file("missing.csv") + ": No such file or directory");
}

TEST_F(QuestionnaireFile, CommentsAndBlankLinesAreSkippedInEveryMode) {
  handle = loadText(dir, "# a note\n*sections,1\n# section list\n1,Only\n\n*questions\n# first\n1,Q1,Text\n0,,A,1\n",
                    &status);
  ASSERT_EQ(status, 0);
  int n = 0;
  QA_NQUS(&handle, &n);
  EXPECT_EQ(n, 1);
}

TEST_F(QuestionnaireFile, TheShippedChecklistLoads) {
  qa::Questionnaire q;
  ASSERT_TRUE(qa::loadQuestionnaire(shippedQuestionnaire(), q).isOk());
  EXPECT_EQ(q.title, "Core reservoir-quality checklist");
  EXPECT_EQ(q.sectionCount(), 4);
  EXPECT_EQ(q.questionCount(), 12);
  for (const qa::Question& question : q.questions) {
    EXPECT_GE(question.section, 1);
    EXPECT_LE(question.section, 4);
    for (const qa::Answer& a : question.answers) {
      // Every go-to label either names a question or is one of the ">" jumps.
      if (!a.gotoLabel.empty() && a.gotoLabel[0] != '>') {
        EXPECT_GT(a.gotoQuestion, 0) << a.gotoLabel;
      }
    }
  }
}

TEST_F(QuestionnaireFile, LoadedThroughALogicalPrefix) {
  ::setenv("SUBSURF_DEFLIB", SUBSURF_SOURCE_DATA_DIR, 1);
  QA_LOAD(padded("deflib:questionnaires/core-reservoir-quality.csv", 260).c_str(), &handle, &status);
  ::unsetenv("SUBSURF_DEFLIB");
  EXPECT_EQ(status, 0);
  int n = 0;
  QA_NQUS(&handle, &n);
  EXPECT_EQ(n, 12);
}

TEST_F(QuestionnaireFile, DeletedQuestionnaireIsGone) {
  handle = loadText(dir, kSample, &status);
  int kept = handle;
  QA_QSDEL(&handle, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(handle, 0);
  int n = -1;
  QA_NQUS(&kept, &n);
  EXPECT_EQ(n, 0);
  QA_QSDEL(&kept, &status);
  EXPECT_EQ(status, 1);
  char title[40];
  QA_GETTITLE(&kept, title, nullptr, nullptr, &status);
  EXPECT_EQ(status, 1);
}

TEST_F(QuestionnaireFile, InitialisedRecordsAreBlankAndNull) {
  QA_QUESTION q;
  std::memset(&q, 'x', sizeof q);
  QA_QINIT(&q);
  EXPECT_EQ(std::string(q.TEXT, 200), std::string(200, ' '));
  EXPECT_EQ(std::string(q.LABEL, 20), std::string(20, ' '));
  EXPECT_TRUE(isNull(q.ISEC));
  EXPECT_TRUE(isNull(q.IANS));
  EXPECT_TRUE(isNull(q.SCORE));
  QA_ANSWER a;
  std::memset(&a, 'x', sizeof a);
  QA_AINIT(&a);
  EXPECT_EQ(std::string(a.GOTO, 20), std::string(20, ' '));
  EXPECT_EQ(std::string(a.CODE, 20), std::string(20, ' '));
  EXPECT_TRUE(isNull(a.SCORE));
  EXPECT_EQ(a.IGOTO, 0);
  int empty = 0;
  QA_INIT(&empty);
  ASSERT_GT(empty, 0);
  int n = -1;
  QA_NQUS(&empty, &n);
  EXPECT_EQ(n, 0);
  QA_QSDEL(&empty, &status);
  EXPECT_EQ(status, 0);
}

}  // namespace
