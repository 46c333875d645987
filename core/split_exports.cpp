#include "subsurf/split.h"

#include <optional>
#include <string>
#include <vector>

#include "core/core_session.h"
#include "core/split_process.h"
#include "host/fixed_text.h"
#include "host/messages.h"

namespace {

using subsurf::Status;
namespace split = subsurf::split;
using subsurf::fixedText;

// The table opened by COR_REPORTOPEN: lines gathered until it is closed.
struct OpenReport {
  std::string file;
  std::vector<std::string> lines;
};
std::optional<OpenReport>& openReport() {
  static std::optional<OpenReport> report;
  return report;
}

int flag(const int* v, int otherwise) { return v ? *v : otherwise; }

}  // namespace

extern "C" {

void COR_SETSPLITOPTIONS(const char* folder, const int* outputOption, const char* root, const int* useRoot,
                         const int* cgms, const int* precision, const int* shorten, const int* doReport,
                         const char* reportFile, const int* reportStyle, const char* reportUnit,
                         const float* reduction) {
  split::SplitOptions& o = split::toolSplitOptions();
  if (folder) o.naming.outputFolder = fixedText(folder, 260);
  o.naming.outputBesidePhoto = flag(outputOption, 1) == 2;
  if (root) o.naming.rootName = fixedText(root, 40);
  o.naming.useRootName = flag(useRoot, 0) == 1;
  o.naming.format = flag(cgms, 0) == 1 ? split::RowFormat::Cgm : split::RowFormat::Bmp;
  o.formatChosen = false;
  o.naming.precisionOption = flag(precision, split::kPrecisionCentimetre);
  o.shortenRows = flag(shorten, 1) == 1;
  o.writeReport = flag(doReport, 0) == 1;
  if (reportFile) o.reportFile = fixedText(reportFile, 260);
  o.reportStyle = flag(reportStyle, split::kReportStyleFull);
  if (reportUnit) o.reportUnit = fixedText(reportUnit, 16);
  o.displayReduction = reduction && *reduction > 0.0f ? *reduction : 1.0f;
}

void COR_REPORTOPEN(const char* file, int* status) {
  const std::string name = file ? fixedText(file, 260) : std::string();
  if (name.empty()) {
    openReport().reset();
    if (status) *status = 1;
    return;
  }
  openReport() = OpenReport{name, split::reportHeaderLines()};
  if (status) *status = 0;
}

void COR_REPORTCLOSE(int* status) {
  if (!openReport()) {
    if (status) *status = 1;
    return;
  }
  const OpenReport report = std::move(*openReport());
  openReport().reset();
  const Status s = split::writeReportFile(report.file, report.lines);
  if (status) *status = s ? 0 : 1;
}

void COR_PROCESSROW(::CoreImage** image, int* status) {
  if (status) *status = 1;
  if (!image || !*image) return;
  // The C interface hands out the session's own records as opaque pointers.
  auto* record = reinterpret_cast<subsurf::CoreImage*>(*image);
  subsurf::CoreSession& session = subsurf::coreSession();
  const split::SplitOptions& options = split::toolSplitOptions();
  const int place = session.placeOf(record);
  const split::PhotoOutcome outcome = split::splitPhoto(split::makePhotoJob(*record, place, options), options);
  for (const std::string& m : outcome.messages) subsurf::host::showMessage(m);
  if (openReport()) {
    auto& lines = openReport()->lines;
    lines.insert(lines.end(), outcome.reportLines.begin(), outcome.reportLines.end());
  }
  if (status) *status = outcome.status != 0 ? 1 : outcome.errorCount;
}

void COR_PROCESS(int* status) {
  const int rc = split::processSession(subsurf::coreSession(), split::toolSplitOptions());
  if (status) *status = rc;
}

}  // extern "C"
