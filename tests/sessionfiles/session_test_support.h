// Shared pieces of the session-file tests: field-for-field comparison of
// images and rectangles, sessions filled with unusual values, and a scratch
// user library.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "core/core_session.h"
#include "core/image_settings.h"
#include "core/session_files.h"
#include "host/fixed_text.h"
#include "host/messages.h"
#include "support/temp_dir.h"

namespace subsurf::testing {

// Floats compared by their bits, so that nulls and -0.0 count as values.
inline bool sameBits(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0; }

template <std::size_t N>
std::string text(const char (&field)[N]) {
  return std::string(field, N);
}

inline void expectSame(const DT_ISCA& a, const DT_ISCA& b, const std::string& what) {
  SCOPED_TRACE(what);
  EXPECT_EQ(a.V, b.V);
  EXPECT_EQ(a.SET, b.SET);
  EXPECT_EQ(a.SET2, b.SET2);
  EXPECT_EQ(text(a.CODE), text(b.CODE));
  EXPECT_EQ(text(a.SHORT), text(b.SHORT));
  EXPECT_EQ(a.VMIN, b.VMIN);
  EXPECT_EQ(a.VMAX, b.VMAX);
  EXPECT_EQ(a.VDEF, b.VDEF);
  EXPECT_EQ(text(a.KEY), text(b.KEY));
  EXPECT_EQ(text(a.LABEL), text(b.LABEL));
  EXPECT_EQ(text(a.DESC), text(b.DESC));
}

inline void expectSame(const DT_RSCA& a, const DT_RSCA& b, const std::string& what) {
  SCOPED_TRACE(what);
  EXPECT_TRUE(sameBits(a.V, b.V)) << a.V << " vs " << b.V;
  EXPECT_EQ(text(a.CHU), text(b.CHU));
  EXPECT_EQ(a.VU.IUN, b.VU.IUN);
  EXPECT_EQ(a.VU.ISER, b.VU.ISER);
  EXPECT_EQ(text(a.VU.CU), text(b.VU.CU));
  EXPECT_EQ(a.SET, b.SET);
  EXPECT_EQ(a.SET2, b.SET2);
  EXPECT_EQ(a.FMT, b.FMT);
  EXPECT_EQ(text(a.LABEL), text(b.LABEL));
  EXPECT_EQ(text(a.SHORT), text(b.SHORT));
  EXPECT_EQ(text(a.CODE), text(b.CODE));
  EXPECT_TRUE(sameBits(a.VMIN, b.VMIN));
  EXPECT_TRUE(sameBits(a.VMAX, b.VMAX));
  EXPECT_TRUE(sameBits(a.VDEF, b.VDEF));
  EXPECT_EQ(text(a.DESC), text(b.DESC));
  EXPECT_TRUE(sameBits(a.RELERR, b.RELERR)) << a.RELERR << " vs " << b.RELERR;
}

template <typename T>
void expectSameText(const T& a, const T& b, const std::string& what) {
  SCOPED_TRACE(what);
  EXPECT_EQ(text(a.V), text(b.V));
  EXPECT_EQ(a.SET, b.SET);
  EXPECT_EQ(a.SET2, b.SET2);
  EXPECT_EQ(text(a.CODE), text(b.CODE));
  EXPECT_EQ(text(a.LABEL), text(b.LABEL));
  EXPECT_EQ(text(a.DESC), text(b.DESC));
  EXPECT_EQ(text(a.VDEF), text(b.VDEF));
}

inline void expectSame(const Polygon& a, const Polygon& b, const std::string& what) {
  SCOPED_TRACE(what);
  ASSERT_EQ(a.n, b.n);
  EXPECT_EQ(a.px, b.px);
  EXPECT_EQ(a.py, b.py);
  EXPECT_EQ(a.wxSet, b.wxSet);
  EXPECT_EQ(a.wySet, b.wySet);
  for (int i = 0; i < a.n; ++i) {
    // An unset world coordinate holds no value worth keeping.
    if (a.wxSet[i]) {
      EXPECT_TRUE(sameBits(a.wx[i], b.wx[i])) << "wx " << i;
    }
    if (a.wySet[i]) {
      EXPECT_TRUE(sameBits(a.wy[i], b.wy[i])) << "wy " << i;
    }
  }
  EXPECT_EQ(a.freeCorners, b.freeCorners);
  for (std::size_t k = 0; k < a.props.size(); ++k) expectSame(a.props[k], b.props[k], "property " + std::to_string(k));
}

inline void expectSameView(const ViewRecord& a, const ViewRecord& b, int v) {
  SCOPED_TRACE("view " + std::to_string(v));
  EXPECT_EQ(a.x1, b.x1);
  EXPECT_EQ(a.x2, b.x2);
  EXPECT_EQ(a.y1, b.y1);
  EXPECT_EQ(a.y2, b.y2);
  EXPECT_EQ(a.windowWidth, b.windowWidth);
  EXPECT_EQ(a.windowHeight, b.windowHeight);
  EXPECT_EQ(a.inUse, b.inUse);
  EXPECT_EQ(a.zoomStep, b.zoomStep);
  EXPECT_TRUE(sameBits(a.xScale, b.xScale));
  EXPECT_TRUE(sameBits(a.yScale, b.yScale));
}

// Every field a session file keeps (ids and links are the list's own).
inline void expectSameImage(CoreImage& a, CoreImage& b, const std::string& what) {
  SCOPED_TRACE(what);
  EXPECT_EQ(a.sourceFile(), b.sourceFile());
  for (int k = 1; k < kImageFileCount; ++k) expectSameText(a.files[k], b.files[k], "file " + std::to_string(k + 1));
  for (int k = 0; k < kImageTextCount; ++k) expectSameText(a.texts[k], b.texts[k], "text " + std::to_string(k + 1));
  for (int v = 0; v < kViewCount; ++v) expectSameView(a.views[v], b.views[v], v + 1);
  for (int k = 1; k <= kImageIntCount; ++k) expectSame(a.intSetting(k), b.intSetting(k), "int " + std::to_string(k));
  for (int k = 1; k <= kImageRealCount; ++k)
    expectSame(a.realSetting(k), b.realSetting(k), "real " + std::to_string(k));
  expectSame(a.coreLengthCopy, b.coreLengthCopy, "core length copy");
  expectSame(a.trayLengthCopy, b.trayLengthCopy, "tray length copy");
  EXPECT_TRUE(sameBits(a.angle, b.angle));
  EXPECT_TRUE(sameBits(a.displayReduction, b.displayReduction));
  EXPECT_EQ(a.viewShown, b.viewShown);
  const auto ra = CoreSession::rectangles(a), rb = CoreSession::rectangles(b);
  ASSERT_EQ(ra.size(), rb.size());
  for (std::size_t k = 0; k < ra.size(); ++k) expectSame(ra[k]->polygon, rb[k]->polygon, "rectangle " + std::to_string(k + 1));
}

inline void expectSameSession(CoreSession& a, CoreSession& b) {
  const auto ia = a.images(), ib = b.images();
  ASSERT_EQ(ia.size(), ib.size());
  for (std::size_t k = 0; k < ia.size(); ++k) expectSameImage(*ia[k], *ib[k], "image " + std::to_string(k + 1));
}

inline void expectSameOptions(const SessionOptions& a, const SessionOptions& b) {
  EXPECT_EQ(a.override, b.override);
  EXPECT_EQ(a.rootName, b.rootName);
  EXPECT_EQ(a.cgms, b.cgms);
  EXPECT_EQ(a.doReport, b.doReport);
  EXPECT_EQ(a.reportRoot, b.reportRoot);
  EXPECT_EQ(a.reportOption, b.reportOption);
}

// Options none of which is at its default, with texts that need quoting.
inline SessionOptions unusualOptions() {
  SessionOptions o;
  o.override = 1;
  o.rootName = "WELL-7, run \"B\"";
  o.cgms = 1;
  o.doReport = 1;
  o.reportRoot = "clip table";
  o.reportOption = 2;
  return o;
}

// Fills an image with values that test every part of the file: depths in
// feet with a relative error, settings in every state, texts with commas and
// quotes, defined views, a turned photograph, and rectangles with five
// corners and world coordinates partly unset.
inline void fillImage(CoreSession& session, CoreImage& image, int k, const std::string& photo, int rectangles) {
  image.setSourceFile(photo);
  setInteger(image.intSetting(kIntUV), k % 2);
  setInteger(image.intSetting(kIntUse), 1);
  setInteger(image.intSetting(kIntReverse), 2);
  image.intSetting(kIntCgm).SET2 = 1;
  const float top = 1000.25f + 1.5f * static_cast<float>(k);
  setDepth(image.realSetting(kRealTop), top, "");
  setDepth(image.realSetting(kRealBase), top + 1.5f, "");
  setDepth(image.realSetting(kRealCoreLength), 0.3f, "");
  image.realSetting(kRealTrayLength).RELERR = 0.05f;
  image.realSetting(rowTopSetting(1)).V = -0.0f;
  image.realSetting(rowBaseSetting(1)).V = 1.0e-30f;
  image.realSetting(kRealDepthShift).SET2 = 1;
  DT_RSCACOPY(&image.realSetting(kRealCoreLength), &image.coreLengthCopy);
  image.trayLengthCopy.V = 7.125f;
  setFixed(image.files[3].V, "/data/logs/box " + std::to_string(k) + ".las");
  image.files[3].SET = 1;
  setFixed(image.texts[0].V, "Box 3, \"wet\" core");
  image.texts[0].SET = 2;
  setFixed(image.texts[9].LABEL, "Remark");
  image.views[0] = ViewRecord{0, 1600, 0, 1200, 800, 600, 1, 0, 0.5f, 0.25f};
  image.views[6].x1 = 17;
  image.angle = -1.75f;
  image.displayReduction = 2.0f;
  image.viewShown = 1;
  if (rectangles > 0) session.makeBands(image, rectangles, 1600, 1200);
  if (rectangles > 1) {
    CoreRectangle* r = session.rectangleAt(image, 2);
    session.addVertex(*r, 800, 300, 2);  // five corners
    r->polygon.wxSet[4] = 0;             // one world coordinate never set
    r->polygon.wx[4] = kRealNull;
    r->polygon.props[kPolyColour].V = 5;
    r->polygon.props[kPolyThickness].SET = 1;
  }
  // Display texts follow the values, as after any edit in the image grid.
  session.refreshDisplayTexts(image);
  DT_SETRCHU(&image.coreLengthCopy);
  DT_SETRCHU(&image.trayLengthCopy);
}

// A scratch "userlib:" for the test's lifetime.
class ScratchUserLib {
 public:
  ScratchUserLib() {
    if (const char* old = std::getenv("SUBSURF_USERLIB")) saved_ = old;
    ::setenv("SUBSURF_USERLIB", dir.path().c_str(), 1);
  }
  ~ScratchUserLib() {
    if (saved_) ::setenv("SUBSURF_USERLIB", saved_->c_str(), 1);
    else ::unsetenv("SUBSURF_USERLIB");
  }
  TempDir dir;

 private:
  std::optional<std::string> saved_;
};

inline std::vector<std::string> fileLines(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

inline std::string joinLines(const std::vector<std::string>& lines, std::size_t count) {
  std::string out;
  for (std::size_t k = 0; k < count && k < lines.size(); ++k) out += lines[k] + "\n";
  return out;
}

inline std::string lastMessage() {
  const auto m = host::recordedMessages();
  return m.empty() ? std::string() : m.back();
}

}  // namespace subsurf::testing
