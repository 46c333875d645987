#include "core/row_layout.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "core/image_settings.h"
#include "host/fixed_text.h"

namespace subsurf {

namespace {

void setVerdict(CoreImage& image, const std::string& verdict, const std::string& doubtText) {
  DT_CSCA& note = image.texts[kRowVerdictText - 1];
  setFixed(note.V, verdict);
  note.SET = kScalarChanged;
  DT_CSCA& doubt = image.texts[kRowDoubtText - 1];
  setFixed(doubt.V, doubtText);
  doubt.SET = kScalarChanged;
}

}  // namespace

void layDetectedRows(CoreSession& session, CoreImage& image, const RowDetection& found, int photoWidth,
                     int photoHeight) {
  const bool sure = found.sure();
  setVerdict(image, fmt::format("{} {:.2f}", sure ? kRowsFound : kCheckTheRows, found.confidence),
             sure ? std::string() : found.doubt);
  if (found.rows.empty()) return;

  while (CoreRectangle* r = image.rectangles) session.deleteRectangleById(image, r->id);
  for (const DetectedRow& row : found.rows) {
    const int left = std::clamp(static_cast<int>(std::lround(row.left)), 0, photoWidth);
    const int right = std::clamp(static_cast<int>(std::lround(row.right)), 0, photoWidth);
    const int top = std::clamp(static_cast<int>(std::lround(row.top)), 0, photoHeight);
    const int bottom = std::clamp(static_cast<int>(std::lround(row.bottom)), 0, photoHeight);
    CoreRectangle* r = session.newRectangle(image);
    CoreSession::setVertexCount(*r, 4);
    // Round from the top-left corner clockwise, as rectangles are drawn.
    const int xs[4] = {left, right, right, left};
    const int ys[4] = {top, top, bottom, bottom};
    for (int i = 0; i < 4; ++i) {
      r->polygon.px[i] = xs[i];
      r->polygon.py[i] = ys[i];
    }
    session.updateWorld(*r);
  }
  setInteger(image.intSetting(kIntHorizontal), found.rowsAcross ? 1 : 0);
  setInteger(image.intSetting(kIntPixelWidth), photoWidth);
  setInteger(image.intSetting(kIntPixelHeight), photoHeight);
  const int cores = image.intValue(kIntCoreNumber);
  if (isNull(cores) || cores < 1) setInteger(image.intSetting(kIntCoreNumber), static_cast<int>(found.rows.size()));
}

std::string rowVerdict(const CoreImage& image) {
  const std::string verdict = trimBlanks(fixedText(image.texts[kRowVerdictText - 1].V));
  const std::string doubt = trimBlanks(fixedText(image.texts[kRowDoubtText - 1].V));
  return doubt.empty() || verdict.empty() ? verdict : verdict + ": " + doubt;
}

bool rowsNeedChecking(const CoreImage& image) {
  return trimBlanks(fixedText(image.texts[kRowVerdictText - 1].V)).starts_with(kCheckTheRows);
}

void markRowsChecked(CoreImage& image) {
  if (rowVerdict(image).empty()) return;  // rows a person drew from the start carry no note
  setVerdict(image, std::string(kRowsChecked), std::string());
}

}  // namespace subsurf
