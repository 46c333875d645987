// C entry points of binned statistics (declared in include/subsurf/plot_statistics.h).
#include <span>
#include <vector>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "plot/bin_statistics.h"
#include "subsurf/plot_statistics.h"

namespace ss = subsurf;

extern "C" {

void ZW_BINHEADS(char* text) {
  if (!text) return;
  for (std::size_t k = 0; k < ss::kBinStatisticsHeadings.size(); ++k)
    ss::setFixed(text + 12 * k, 12, ss::kBinStatisticsHeadings[k]);
}

void ZW_BINSTATS(const int* n, const float* by, const float* values, const int* nbins, const float* edges,
                 float* table, int* leftout, int* status) {
  if (status) *status = 1;
  if (!n || !nbins || !edges || !table) return;
  try {
    const std::size_t count = *n > 0 && by && values ? static_cast<std::size_t>(*n) : 0;
    const std::vector<double> bounds(edges, edges + (*nbins > 0 ? *nbins + 1 : 0));
    ss::BinStatistics result;
    const ss::Status s = ss::binStatistics(std::span<const float>(by, count), std::span<const float>(values, count),
                                           bounds, result);
    if (!s) return ss::host::showMessage(s.message());
    float* cell = table;
    for (const ss::BinStatisticsRow& row : result.rows)
      for (double v : row.columns()) *cell++ = ss::isNull(v) ? ss::kRealNull : static_cast<float>(v);
    if (leftout) *leftout = result.leftOut;
    if (status) *status = 0;
  } catch (...) {
  }
}

}  // extern "C"
