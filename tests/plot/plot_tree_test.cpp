// The plot tree through its C interface: building, walking, finding by window,
// removing and deleting plots, and the plot sets of a plot.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "host/messages.h"
#include "plot/plot_tree.h"
#include "subsurf/plot.h"

namespace {

class PlotTreeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ZW_ZPINIT();
    ZW_ZPROOT(&root);
    subsurf::host::clearRecorded();
  }

  ZW_ZP* addKid(ZW_ZP* parent, int* seqOut = nullptr) {
    ZW_ZP* kid = nullptr;
    int seq = 0;
    ZW_ZPADDKID(&parent, &kid, &seq);
    if (seqOut) *seqOut = seq;
    return kid;
  }

  ZW_ZPINFO info(ZW_ZP* plot) {
    ZW_ZPINFO i{};
    ZW_ZPGETINFO(&plot, &i);
    return i;
  }

  ZW_ZP* root = nullptr;
};

TEST_F(PlotTreeTest, InitialisedRootHasItsIdentityAndOneSet) {
  ASSERT_NE(root, nullptr);
  const ZW_ZPINFO i = info(root);
  EXPECT_EQ(i.OWNWIN, 1);
  EXPECT_EQ(i.LEVEL, 1);
  EXPECT_EQ(i.INHERIT, 0);
  EXPECT_EQ(i.WINDOW, 0);
  EXPECT_EQ(i.INDEX1, -1);
  EXPECT_EQ(i.INDEX2, -1);
  EXPECT_EQ(i.CURSET, 1);
  int n = 0;
  ZW_ZPNDS(&root, &n);
  EXPECT_EQ(n, 1);
  ZW_ZPNKID(&root, &n);
  EXPECT_EQ(n, 0);
}

TEST_F(PlotTreeTest, ChildrenTakeLevelInheritanceAndOwnWindowFlag) {
  int window = 7;
  ZW_ZPSETWINDOW(&root, &window, nullptr);
  ZW_ZP* a = addKid(root);
  ZW_ZP* a1 = addKid(a);
  EXPECT_EQ(info(a).LEVEL, 2);
  EXPECT_EQ(info(a1).LEVEL, 3);
  EXPECT_EQ(info(a).OWNWIN, -1);
  EXPECT_EQ(info(a).INHERIT, info(root).INHERIT);
  ZW_ZP* current = nullptr;
  ZW_ZPCURRENT(&current);
  EXPECT_EQ(current, a1);
  int nsets = 0;
  ZW_ZPNDS(&a1, &nsets);
  EXPECT_EQ(nsets, 1);
}

TEST_F(PlotTreeTest, SequenceFollowsTheLastSiblingNotTheCount) {
  int s1 = 0, s2 = 0, s3 = 0, s4 = 0;
  addKid(root, &s1);
  ZW_ZP* second = addKid(root, &s2);
  addKid(root, &s3);
  EXPECT_EQ(s1, 1);
  EXPECT_EQ(s2, 2);
  EXPECT_EQ(s3, 3);
  ZW_ZPDEL(&second);
  EXPECT_EQ(second, nullptr);
  addKid(root, &s4);
  EXPECT_EQ(s4, 4);  // two children left before it, but the last one was number 3
  int n = 0;
  ZW_ZPNKID(&root, &n);
  EXPECT_EQ(n, 3);
}

TEST_F(PlotTreeTest, AddPutsTheChildUnderTheRoot) {
  ZW_ZP* a = addKid(root);
  addKid(a);  // the current plot is now a grandchild
  ZW_ZP* b = nullptr;
  int seq = 0;
  ZW_ZPADD(&b, &seq);
  EXPECT_EQ(seq, 2);
  EXPECT_EQ(info(b).LEVEL, 2);
}

TEST_F(PlotTreeTest, DepthFirstWalkGivesTheStepCodes) {
  ZW_ZP* a = addKid(root);
  ZW_ZP* a1 = addKid(a);
  ZW_ZP* a2 = addKid(a);
  ZW_ZP* b = addKid(root);
  std::vector<ZW_ZP*> seen;
  std::vector<int> codes;
  ZW_ZP* p = nullptr;
  int code = 0;
  do {
    ZW_ZPNEXT(&p, &code);
    seen.push_back(p);
    codes.push_back(code);
  } while (std::abs(code) <= 1);
  EXPECT_EQ(seen, (std::vector<ZW_ZP*>{root, a, a1, a2, b, nullptr}));
  EXPECT_EQ(codes, (std::vector<int>{0, 1, 1, 0, -1, -3}));
}

TEST_F(PlotTreeTest, NextUpClimbsPastAncestorsWithoutSiblings) {
  ZW_ZP* a = addKid(root);
  ZW_ZP* a1 = addKid(a);
  ZW_ZP* a1x = addKid(a1);
  ZW_ZP* b = addKid(root);
  ZW_ZP* p = a1x;
  ZW_ZPNEXTUP(&p);
  EXPECT_EQ(p, b);
  p = b;
  ZW_ZPNEXTUP(&p);
  EXPECT_EQ(p, nullptr);
}

TEST_F(PlotTreeTest, SetByWindowStepsBeforeTesting) {
  ZW_ZP* a = addKid(root);
  ZW_ZP* b = addKid(root);
  int w = 5;
  ZW_ZPSETWINDOW(&a, &w, nullptr);
  ZW_ZPSETWINDOW(&b, &w, nullptr);
  ZW_ZP* p = nullptr;
  int status = -1;
  ZW_ZPSETBYWINDOW(&p, &w, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(p, a);
  ZW_ZPSETBYWINDOW(&p, &w, &status);  // starting at a, a itself is not tested
  EXPECT_EQ(status, 0);
  EXPECT_EQ(p, b);
  ZW_ZP* current = nullptr;
  ZW_ZPCURRENT(&current);
  EXPECT_EQ(current, b);
  ZW_ZPSETBYWINDOW(&p, &w, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(p, nullptr);
  // Window 0 from nothing finds the root first.
  int none = 0;
  ZW_ZPSETBYWINDOW(&p, &none, &status);
  EXPECT_EQ(p, root);
}

TEST_F(PlotTreeTest, KidsBySequence) {
  ZW_ZP* a = addKid(root);
  ZW_ZP* b = addKid(root);
  ZW_ZP* c = addKid(root);
  ZW_ZPDEL(&b);
  ZW_ZP* kid = nullptr;
  int status = -1, seq = 3;
  ZW_ZPSETBYLEVSEQ(&root, &seq, &kid, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(kid, c);
  seq = 2;  // deleted
  ZW_ZPSETBYLEVSEQ(&root, &seq, &kid, &status);
  EXPECT_EQ(status, 1);
  seq = 4;  // beyond the last
  ZW_ZPSETBYLEVSEQ(&root, &seq, &kid, &status);
  EXPECT_EQ(status, 1);
  seq = 1;
  ZW_ZPSETBYLEVSEQ(&a, &seq, &kid, &status);  // a has no children
  EXPECT_EQ(status, 1);
  int place = 2;
  ZW_ZPGETIKID(&root, &place, &kid, &status);
  EXPECT_EQ(kid, c);
  place = 3;
  ZW_ZPGETIKID(&root, &place, &kid, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(kid, nullptr);
  seq = 1;
  ZW_ZPSETKIDBYSEQ(&root, &seq, &kid, &status);
  ZW_ZP* current = nullptr;
  ZW_ZPCURRENT(&current);
  EXPECT_EQ(current, a);
}

TEST_F(PlotTreeTest, InfantileOnlyWhenSharingTheParentsWindow) {
  int yes = -1;
  ZW_INFANTILE(&root, &yes);
  EXPECT_EQ(yes, 0);
  int w = 3, other = 4;
  ZW_ZPSETWINDOW(&root, &w, nullptr);
  ZW_ZP* inside = addKid(root);
  ZW_ZPSETWINDOW(&inside, &w, nullptr);
  ZW_INFANTILE(&inside, &yes);
  EXPECT_EQ(yes, 1);
  ZW_ZP* own = addKid(root);
  ZW_ZPSETWINDOW(&own, &other, nullptr);
  ZW_INFANTILE(&own, &yes);
  EXPECT_EQ(yes, 0);
}

TEST_F(PlotTreeTest, CheckWindowClearsOthersOnlyForAPlotThatClaimsIt) {
  ZW_ZP* a = addKid(root);
  ZW_ZP* b = addKid(root);
  ZW_ZP* b1 = addKid(b);
  int w = 9, claim = 0;
  for (ZW_ZP* p : {a, b, b1}) ZW_ZPSETWINDOW(&p, &w, nullptr);
  ZW_ZPCHECKWIN(&a);  // own-window flag -1: claims nothing
  EXPECT_EQ(info(b).WINDOW, 9);
  ZW_ZPSETWINDOW(&a, &w, &claim);
  ZW_ZPCHECKWIN(&a);
  EXPECT_EQ(info(a).WINDOW, 9);
  EXPECT_EQ(info(b).WINDOW, 0);
  EXPECT_EQ(info(b1).WINDOW, 0);
}

TEST_F(PlotTreeTest, RemoveMakesTheSuccessorThenThePredecessorCurrent) {
  ZW_ZP* a = addKid(root);
  ZW_ZP* b = addKid(root);
  ZW_ZP* c = addKid(root);
  int status = -1;
  ZW_ZPREMOVE(&b, &status);
  EXPECT_EQ(status, 0);
  ZW_ZP* current = nullptr;
  ZW_ZPCURRENT(&current);
  EXPECT_EQ(current, c);  // took b's place
  ZW_ZPREMOVE(&c, &status);
  ZW_ZPCURRENT(&current);
  EXPECT_EQ(current, a);  // none took c's place: its predecessor
  ZW_ZPREMOVE(&a, &status);
  ZW_ZPCURRENT(&current);
  EXPECT_EQ(current, nullptr);
  int n = -1;
  ZW_SYMBADD(&status);  // no current plot, so no current set
  EXPECT_EQ(status, 1);
  ZW_ZPNKID(&root, &n);
  EXPECT_EQ(n, 0);
  ZW_ZPREMOVE(&root, &status);
  EXPECT_EQ(status, 1);
  ZW_ZPDEL(&b);  // a removed plot is freed by deleting it
  EXPECT_EQ(b, nullptr);
}

TEST_F(PlotTreeTest, DeleteKidsFreesEveryGeneration) {
  ZW_ZP* a = addKid(root);
  addKid(a);
  addKid(addKid(a));
  addKid(root);
  ZW_ZPDELKIDS(&root);
  int n = -1;
  ZW_ZPNKID(&root, &n);
  EXPECT_EQ(n, 0);
  ZW_ZP* p = nullptr;
  int code = 0;
  ZW_ZPNEXT(&p, &code);
  ZW_ZPNEXT(&p, &code);
  EXPECT_EQ(code, -3);
  ZW_ZP* current = nullptr;
  ZW_ZPCURRENT(&current);
  EXPECT_EQ(current, root);
  int seq = 0;
  addKid(root, &seq);
  EXPECT_EQ(seq, 1);
}

TEST_F(PlotTreeTest, DeletingTheRootResetsIt) {
  addKid(root);
  int status = 0;
  ZW_ZP* r = root;
  ZW_ZPMAKECURRENT(&r);
  ZW_ZPSADD(&status);
  ZW_ZPDEL(&r);
  int n = -1;
  ZW_ZPNKID(&root, &n);
  EXPECT_EQ(n, 0);
  ZW_ZPNDS(&root, &n);
  EXPECT_EQ(n, 1);
}

TEST_F(PlotTreeTest, SetSelectionClampsToTheLastSet) {
  int status = -1, n = 0;
  ZW_ZPSADD(&status);
  EXPECT_EQ(status, 0);
  ZW_ZPSADD(&status);
  ZW_ZPNDS(&root, &n);
  EXPECT_EQ(n, 3);
  EXPECT_EQ(info(root).CURSET, 3);  // the added set is current
  int want = 2;
  ZW_ZPSSET(&root, &want, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(info(root).CURSET, 2);
  for (int beyond : {4, 0, -1}) {
    ZW_ZPSSET(&root, &beyond, &status);
    EXPECT_EQ(status, 1) << beyond;
    EXPECT_EQ(info(root).CURSET, 3) << beyond;
  }
}

TEST_F(PlotTreeTest, FailedSetAllocationIsReported) {
  ZW_ZP* r = root;
  ZW_ZPMAKECURRENT(&r);
  subsurf::plotTree().failNextSetAllocation();
  int status = 0, n = 0;
  ZW_ZPSADD(&status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(subsurf::host::recordedMessages(), std::vector<std::string>{"Memory error allocating ZPS..."});
  ZW_ZPNDS(&root, &n);
  EXPECT_EQ(n, 1);
}

TEST_F(PlotTreeTest, SetNamesCopiesDeletionAndPromotion) {
  int status = 0, n = 0;
  char name[40];
  auto named = [&](const char* text) {
    char field[40];
    std::string s(text);
    s.resize(40, ' ');
    std::copy(s.begin(), s.end(), field);
    ZW_ZPSSETNAME(field);
  };
  auto currentName = [&] {
    ZW_ZPSGETNAME(name);
    std::string s(name, 40);
    return s.substr(0, s.find_last_not_of(' ') + 1);
  };
  named("wells");
  ZW_ZPSADD(&status);
  named("cores");
  ZW_ZPSCOPY(&status);
  EXPECT_EQ(currentName(), "cores");
  ZW_ZPNDS(&root, &n);
  EXPECT_EQ(n, 3);
  ZW_ZPSDEL(&status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(info(root).CURSET, 2);
  ZW_ZPSPROMOTE();
  EXPECT_EQ(info(root).CURSET, 1);
  EXPECT_EQ(currentName(), "cores");
  int second = 2;
  ZW_ZPSSET(&root, &second, &status);
  EXPECT_EQ(currentName(), "wells");
  ZW_ZPSDEL(&status);
  ZW_ZPSDEL(&status);  // the last set stays
  EXPECT_EQ(status, 1);
  ZW_ZPNDS(&root, &n);
  EXPECT_EQ(n, 1);
}

TEST_F(PlotTreeTest, PointCountsAndGathersCoverEverySet) {
  const float x1[] = {1, 2, 3}, y1[] = {4, 5, 6}, x2[] = {7, 8};
  int status = 0, ax = ZW_AXIS_X, ay = ZW_AXIS_Y, three = 3, two = 2;
  ZW_ZPSSETDATA(&ax, &three, x1, &status);
  ZW_ZPSSETDATA(&ay, &three, y1, &status);
  ZW_ZPSADD(&status);
  ZW_ZPSSETDATA(&ax, &two, x2, &status);
  int n = 0;
  ZW_ZPNPTS(&root, &n);
  EXPECT_EQ(n, 5);
  int counts[4] = {}, capacity = 4, nsets = 0;
  ZW_ZPCOUNTSPTS(&root, counts, &capacity, &nsets);
  EXPECT_EQ(nsets, 2);
  EXPECT_EQ(counts[0], 3);
  EXPECT_EQ(counts[1], 2);
  float all[5] = {};
  int cap = 5;
  ZW_ZPGETALLXV(&root, all, &cap, &n);
  EXPECT_EQ(n, 5);
  EXPECT_EQ(std::vector<float>(all, all + 5), (std::vector<float>{1, 2, 3, 7, 8}));
  cap = 2;  // a short buffer is filled as far as it goes and the total still told
  float few[3] = {0, 0, -1};
  ZW_ZPGETALLRVEC(&root, &ay, few, &cap, &n);
  EXPECT_EQ(n, 3);
  EXPECT_EQ(few[1], 5.0f);
  EXPECT_EQ(few[2], -1.0f);
  int bad = 6;
  ZW_ZPSSETDATA(&bad, &two, x2, &status);
  EXPECT_EQ(status, 1);
}

}  // namespace
