#include "core/output_plan.h"

#include <fmt/format.h>

#include <cctype>
#include <map>
#include <set>

#include "core/name_depths.h"
#include "core/split_naming.h"
#include "host/nulls.h"

namespace subsurf::split {
namespace {

struct PlannedRow {
  PhotoJob* job = nullptr;
  RowJob* row = nullptr;
  std::string name;
};

std::string foldedCase(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

std::string photoFileName(const PhotoJob& job) { return job.sourceFile.substr(fileNameStart(job.sourceFile)); }

// "T1.jpg Core 3", or "T1.jpg (image 2) Core 3" when the group holds the
// same photograph twice.
std::string rowLabel(const PlannedRow& r, bool withPlace = false) {
  if (withPlace) return fmt::format("{} (image {}) Core {}", photoFileName(*r.job), r.job->place, r.row->number);
  return fmt::format("{} Core {}", photoFileName(*r.job), r.row->number);
}

bool photoTwice(const std::vector<PlannedRow*>& group) {
  std::set<std::string> names;
  std::set<int> places;
  for (const PlannedRow* r : group) {
    names.insert(photoFileName(*r->job));
    places.insert(r->job->place);
  }
  return names.size() < places.size();
}

// The name with `part` put in front of its suffix.
std::string withPart(const std::string& name, const std::string& part) {
  const std::size_t start = fileNameStart(name);
  const std::size_t dot = name.rfind('.');
  const std::size_t cut = dot == std::string::npos || dot < start ? name.size() : dot;
  return name.substr(0, cut) + part + name.substr(cut);
}

// What tells the photographs of a group apart: each one's name (without
// suffix) after the part all of them share, with characters that do not
// belong in a file name made "_". Empty strings when that does not tell them
// apart (one photograph, or photographs of the same name in other folders).
std::vector<std::string> distinguishingParts(const std::vector<PlannedRow*>& group) {
  std::vector<std::string> stems;
  for (const PlannedRow* r : group) stems.push_back(withoutImageSuffixes(photoFileName(*r->job)));
  std::size_t common = stems.front().size();
  for (const std::string& s : stems) {
    std::size_t k = 0;
    while (k < common && k < s.size() && s[k] == stems.front()[k]) ++k;
    common = k;
  }
  std::vector<std::string> parts;
  std::set<std::string> seen;
  for (const std::string& s : stems) {
    std::string part;
    for (char c : s.substr(common)) part += std::isalnum(static_cast<unsigned char>(c)) || c == '-' ? c : '_';
    while (!part.empty() && part.front() == '_') part.erase(part.begin());
    while (!part.empty() && part.back() == '_') part.pop_back();
    if (part.empty() || !seen.insert(foldedCase(part)).second) return std::vector<std::string>(group.size());
    parts.push_back("_" + part);
  }
  return parts;
}

}  // namespace

OutputPlan planOutputs(std::vector<PhotoJob>& jobs, const SplitOptions& options, bool unique) {
  OutputPlan plan;
  std::vector<PlannedRow> rows;
  for (PhotoJob& job : jobs)
    for (RowJob& row : job.rows)
      if (!isNoValue(row.top) && !isNoValue(row.base) && row.top < row.base)
        rows.push_back({&job, &row, plannedRowName(job, row, options)});

  std::map<std::string, std::vector<PlannedRow*>> byName;  // folded name -> rows in run order
  for (PlannedRow& r : rows) byName[foldedCase(r.name)].push_back(&r);

  std::set<std::string> taken;
  for (const auto& [folded, group] : byName) taken.insert(folded);

  for (auto& [folded, group] : byName) {
    if (group.size() < 2) continue;
    if (!unique) {
      const bool places = photoTwice(group);
      std::string others;
      for (std::size_t k = 1; k < group.size(); ++k) others += (k > 1 ? ", " : "") + rowLabel(*group[k], places);
      plan.collisions.push_back(fmt::format("{} and {} would both be written to {}", rowLabel(*group[0], places),
                                            others, group[0]->name));
      continue;
    }
    const std::vector<std::string> parts = distinguishingParts(group);
    int counter = 1;
    for (std::size_t k = 0; k < group.size(); ++k) {
      PlannedRow& r = *group[k];
      if (parts[k].empty() && k == 0) continue;  // the first keeps its name
      std::string name = parts[k].empty() ? std::string() : withPart(r.name, parts[k]);
      while (name.empty() || taken.count(foldedCase(name))) name = withPart(r.name, fmt::format("_{}", ++counter));
      taken.insert(foldedCase(name));
      plan.renamed.push_back(fmt::format("{}: {} is shared with another row; written as {}", rowLabel(r, photoTwice(group)), r.name,
                                         name.substr(fileNameStart(name))));
      r.row->outputName = name;
    }
  }
  return plan;
}

}  // namespace subsurf::split
