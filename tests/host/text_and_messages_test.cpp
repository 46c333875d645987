#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>

#include <fmt/format.h>

#include "host/guarded_math.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "host/number_text.h"
#include "subsurf/host.h"
#include "support/temp_dir.h"

using namespace subsurf;

TEST(NullValues, RealAndDoubleNullsAgreeAndIntegerNullIsNotMinusOne) {
  EXPECT_EQ(Q_R_NULL(), -9.9e20f);
  EXPECT_EQ(Q_R8_NULL(), static_cast<double>(-9.9e20f));
  EXPECT_NE(Q_R8_NULL(), -9.9e20);  // rounded to single first, deliberately
  EXPECT_LT(IQ_I_NULL(), -1);
  float r = Q_R_NULL();
  EXPECT_EQ(Q_IS_RNULL(&r), 1);
  r = 0.0f;
  EXPECT_EQ(Q_IS_RNULL(&r), 0);
  EXPECT_TRUE(isNull(static_cast<double>(kRealNull)));
  EXPECT_TRUE(isBeyondConversion(kRealNull));
  EXPECT_FALSE(isBeyondConversion(9.0e20f));
  EXPECT_TRUE(isNoValue(9.0e19));
  EXPECT_FALSE(isNoValue(8.99e19));
}

TEST(NumberText, FormatCodes) {
  const std::tuple<double, int, const char*> cases[] = {
      {30.48, -6, "30.48"},         {100.0, -6, "100"},         {1234.5678, -6, "1234.57"}, {0.000123456789, -6, "0.000123457"},
      {15000000.0, -6, "1.5e+07"}, {1234.5, 2, "1234.50"},     {-0.0, -6, "0"},            {kRealNull, -6, ""}};
  for (const auto& [value, code, text] : cases) EXPECT_EQ(formatReal(value, code), text) << value << " code " << code;
}

// The fast general notation must write exactly what the general formatter
// writes, rounding ties, powers of ten and the switch to exponents included.
TEST(NumberText, GeneralFloatTextIsTheFormattersText) {
  auto fast = [](float v) {
    std::string s;
    appendGeneralFloat(s, v);
    return s;
  };
  const std::tuple<float, const char*> cases[] = {
      {8180.34f, "8180.34"},   {0.000303463f, "0.000303463"}, {1.5e7f, "1.5e+07"}, {-0.0f, "-0"},
      {999999.5f, "1e+06"},    {0.0001f, "0.0001"},           {9.99999e-5f, "9.99999e-05"},
      {123456.5f, "123456"},   {1234565.0f, "1.23456e+06"},   {-2.5e-38f, "-2.5e-38"},
      {1e-45f, "1.4013e-45"}, {3.4028235e38f, "3.40282e+38"}};
  for (const auto& [value, text] : cases) EXPECT_EQ(fast(value), text) << value;

  // Values spread over every exponent (random bit patterns), and the values
  // whose seventh digit is a 5 or close to it.
  std::uint32_t state = 12345u;
  int differing = 0;
  for (int i = 0; i < 400000; ++i) {
    state = state * 1664525u + 1013904223u;
    float v;
    std::memcpy(&v, &state, sizeof v);
    if (!std::isfinite(v)) continue;
    differing += fast(v) != fmt::format("{:g}", v);
    const float tie = static_cast<float>((static_cast<int>(state % 9000000u) + 1000000) * 10 + 5) * 1e-3f;
    differing += fast(tie) != fmt::format("{:g}", tie);
  }
  EXPECT_EQ(differing, 0);
}

// Only whole texts are numbers; surrounding blanks are allowed.
TEST(NumberText, ParsingWholeTextsOnly) {
  for (auto [text, ok, expected] : {std::tuple{" 12.5 ", true, 12.5}, std::tuple{"+1e3", true, 1000.0},
                                    std::tuple{"12.5m", false, 0.0}, std::tuple{"", false, 0.0}}) {
    double d = 0;
    EXPECT_EQ(parseReal(text, d), ok) << text;
    if (ok) {
      EXPECT_EQ(d, expected) << text;
    }
  }
  int i = 0;
  EXPECT_FALSE(parseInteger("1.5", i));
  EXPECT_TRUE(parseInteger("-42", i));
  EXPECT_EQ(i, -42);
}

TEST(NumberText, ExportedRoutinesUseBlankPaddedFields) {
  char text[20];
  float v = 2.5f;
  int code = -6;
  XRCFN(&v, &code, text);
  EXPECT_EQ(std::string(text, 20), "2.5" + std::string(17, ' '));
  int n = 0, st = -9, len = 6;
  XCI("  17  ", &len, &n, &st);
  EXPECT_EQ(st, 0);
  EXPECT_EQ(n, 17);
  XCI("  1x  ", &len, &n, &st);
  EXPECT_EQ(st, 1);
}

TEST(GuardedPower, UndefinedPowersReportAndReturnTheBase) {
  struct Case { double base, exponent, expected; int err; };
  for (const Case& c : {Case{4.0, 0.5, 2.0, 0}, Case{-8.0, 1.0 / 3.0, -8.0, 1}, Case{0.0, -1.0, 0.0, 1},
                        Case{-2.0, 2.0, 4.0, 0}, Case{1e300, 2.0, 1e300, 1}}) {
    int err = -1;
    EXPECT_DOUBLE_EQ(guardedPower(c.base, c.exponent, err), c.expected) << c.base << " ^ " << c.exponent;
    EXPECT_EQ(err, c.err) << c.base << " ^ " << c.exponent;
  }
  int lo = 1, hi = 10, v = 11;
  EXPECT_EQ(IA_ILIMIT(&v, &lo, &hi), 10);
}

class Messages : public ::testing::Test {
 protected:
  void SetUp() override { host::clearRecorded(); }
  void TearDown() override {
    host::resetHostCallbacks();
    host::setDefaultAnswer(false);
    host::clearRecorded();
  }
};

TEST_F(Messages, MessagesAndQuestionsAreRecordedInOrder) {
  host::showMessage("No images found");
  host::setDefaultAnswer(true);
  EXPECT_TRUE(host::askQuestion("#Cores not set, use 5?"));
  auto all = host::recorded();
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].text, "No images found");
  EXPECT_EQ(all[1].kind, host::RecordedText::Kind::Question);
  EXPECT_TRUE(all[1].answer);
  EXPECT_EQ(host::recordedMessages(), std::vector<std::string>{"No images found"});
  EXPECT_EQ(host::recordedQuestions(), std::vector<std::string>{"#Cores not set, use 5?"});
}

TEST_F(Messages, QueuedAnswersComeBeforeTheDefault) {
  host::queueAnswer(true);
  host::queueAnswer(false);
  EXPECT_TRUE(host::askQuestion("q1"));
  EXPECT_FALSE(host::askQuestion("q2"));
  EXPECT_FALSE(host::askQuestion("q3"));  // default: no
}

TEST_F(Messages, AnEmbeddingHostReceivesMessagesAndAnswersQuestions) {
  static std::vector<std::string> seen;
  seen.clear();
  host::HostCallbacks cb;
  cb.message = [](void*, const char* t) { seen.emplace_back(t); };
  cb.question = [](void*, const char*) { return 1; };
  host::setHostCallbacks(cb);
  int len = 20, kind = 1, answer = -1;
  AW_MESS("Select a starting image!   ", &len);  // padded field, cut at the given length
  AW_MESSAGE("Adjust box?         ", &len, &kind, &answer);
  EXPECT_EQ(seen, std::vector<std::string>{"Select a starting im"});
  EXPECT_EQ(answer, 1);
}

// A C caller's field: the text blank-padded to its width.
std::string padded(const std::string& s, std::size_t width) { return s + std::string(width - s.size(), ' '); }

TEST(KeywordChannels, WriteRowsThenReadThemBackByColumn) {
  subsurf::testing::TempDir dir;
  const std::string path = dir.file("chan.txt"), file = padded(path, 260), release = padded("RELEASE", 16);
  int ch = 0, st = -1;
  KJF_OPEN(&ch, file.c_str(), padded("WRITE", 16).c_str(), &st);
  ASSERT_EQ(st, 0);
  int first = 0, mid = 1, last = 2, w = 16, iv = 4;
  float rv = 1.25f;
  A_SETCSVC(&ch, "  Top Depth     ", &w, &first);
  A_SETCSVI(&ch, &iv, &mid);
  A_SETCSVR(&ch, &rv, &last);
  KJF_CLOS(&ch, release.c_str(), &st);
  ASSERT_EQ(st, 0);
  EXPECT_EQ(subsurf::testing::TempDir::read(path), "\"  Top Depth\",4,1.25\n");

  KJF_OPEN(&ch, file.c_str(), padded("READ", 16).c_str(), &st);
  ASSERT_EQ(st, 0);
  A_LOADCSV(&ch, &st);
  ASSERT_EQ(st, 0);
  char key[16];
  int col = 1, got = 0;
  A_GETCSVC(&ch, &col, key, &w, &st);
  EXPECT_EQ(std::string(key, 16), "  Top Depth     ");
  col = 2;
  A_GETCSVI(&ch, &col, &got, &st);
  EXPECT_EQ(got, 4);
  col = 3;
  double d = 0;
  A_GETCSVR8(&ch, &col, &d, &st);
  EXPECT_EQ(d, 1.25);
  col = 4;  // past the last column
  A_GETCSVI(&ch, &col, &got, &st);
  EXPECT_EQ(st, 1);
  A_LOADCSV(&ch, &st);  // past the last row
  EXPECT_EQ(st, -3);
  KJF_CLOS(&ch, release.c_str(), &st);
}
