#include "core/split_manifest.h"

#include <fmt/format.h>

#include <filesystem>
#include <map>

#include "core/name_depths.h"
#include "core/output_guard.h"
#include "core/split_naming.h"
#include "host/atomic_file.h"
#include "host/csv_row.h"
#include "host/fixed_text.h"
#include "host/image/photo.h"
#include "host/messages.h"
#include "host/paths.h"

namespace subsurf::split {
namespace {

namespace fs = std::filesystem;

// The path as seen from the manifest's folder ("rows/a.bmp", "../photos/a.jpg").
std::string relativeTo(const std::string& path, const fs::path& folder) {
  std::error_code ec;
  const fs::path absolute = fs::absolute(fs::path(path), ec).lexically_normal();
  if (ec) return path;
  const fs::path relative = absolute.lexically_relative(folder);
  return relative.empty() ? absolute.string() : relative.string();
}

// The row image's size as written: read from its header, or as the split
// made it when the file cannot be probed (metafiles).
void rowSize(const RowOutcome& row, RowFormat format, int& width, int& height) {
  width = row.width > 0 ? row.width : row.quarterTurns % 2 == 0 ? row.cut.width : row.cut.height;
  height = row.height > 0 ? row.height : row.quarterTurns % 2 == 0 ? row.cut.height : row.cut.width;
  if (format == RowFormat::Cgm) return;
  image::PixelSize size;
  if (image::readPixelSize(row.outputName, size)) {
    width = size.width;
    height = size.height;
  }
}

}  // namespace

std::string csvField(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos && (text.empty() || (text.front() != ' ' && text.back() != ' ')))
    return std::string(text);
  std::string out;
  appendQuotedCsvField(out, text);
  return out;
}

std::vector<std::string> manifestLines(const std::vector<PhotoJob>& jobs, const std::vector<PhotoOutcome>& outcomes,
                                       const SplitOptions& options, const ManifestOptions& manifest) {
  std::error_code ec;
  const fs::path folder = fs::absolute(fs::path(manifest.path), ec).lexically_normal().parent_path();
  const int decimals = options.naming.precisionOption == kPrecisionMillimetre ? 3 : 2;
  std::vector<std::string> lines{std::string(kManifestHeader)};
  std::map<int, const PhotoJob*> jobAt;
  for (const PhotoJob& job : jobs) jobAt[job.place] = &job;
  for (const PhotoOutcome& outcome : outcomes) {
    const auto found = jobAt.find(outcome.place);
    if (found == jobAt.end()) continue;
    const PhotoJob& job = *found->second;
    const std::string hole = manifest.hole.empty() ? holeFromName(job.namingPath) : manifest.hole;
    const std::string unit = manifest.unitOf ? manifest.unitOf(job.place) : std::string();
    for (const RowOutcome& row : outcome.rows) {
      if (row.result != RowResult::Written) continue;
      const RowJob* rowJob = nullptr;
      for (const RowJob& r : job.rows)
        if (r.number == row.number) rowJob = &r;
      if (!rowJob) continue;
      int width = 0, height = 0;
      rowSize(row, job.format, width, height);
      lines.push_back(fmt::format("{},{},{},{},{},{},{},{},{},{}", csvField(hole),
                                  csvField(relativeTo(job.namingPath, folder)), row.number,
                                  trimBlanks(fixedField(rowJob->top, 0, decimals)),
                                  trimBlanks(fixedField(rowJob->base, 0, decimals)), csvField(unit),
                                  lightTag(job.uvSetting), csvField(relativeTo(row.outputName, folder)), width,
                                  height));
    }
  }
  return lines;
}

Status writeManifest(const ManifestOptions& manifest, const std::vector<std::string>& lines) {
  if (!ensureParentFolder(manifest.path)) {
    const std::string text = fmt::format("{}: the folder for the manifest cannot be made", manifest.path);
    host::showMessage(text);
    return Status::error(text);
  }
  if (Status guard = checkManifestReplaceable(manifest.path); !guard) {
    host::showMessage(guard.message());
    return guard;
  }
  AtomicFile file;
  if (Status s = file.open(manifest.path); !s) {
    host::showMessage(s.message());
    return s;
  }
  for (const std::string& line : lines) {
    file.write(line);
    file.write("\r\n");
  }
  Status s = file.commit();
  if (!s) host::showMessage(s.message());
  return s;
}

}  // namespace subsurf::split
