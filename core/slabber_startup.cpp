// Start-up of the core-tray splitter: its data dictionary, its image table and
// an empty session.
#include "core/core_session.h"
#include "dictionary/data_dictionary.h"
#include "host/dataset.h"
#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/paths.h"

namespace subsurf {

namespace {

constexpr std::string_view kDictionaryName = "coredsdefs";
constexpr std::string_view kImageTableName = "cor_images";
int tableHandle = 0;

}  // namespace

int startSlabber(CoreSession& session) {
  // The tool's grids and its image table are described by its dictionary;
  // without it there is nothing to show the images in.
  const std::string file = makeFileName("deflib:", kDictionaryName, "dsdefs");
  const std::string padded = [&] {
    std::string s(260, ' ');
    setFixed(s.data(), s.size(), file);
    return s;
  }();
  int status = 1;
  DD_DDLOAD(padded.c_str(), &status);
  const DataDictionary* dictionary = status == 0 ? findDataDictionary(kDictionaryName) : nullptr;
  std::unique_ptr<Dataset> table = dictionary ? dictionary->makeDataset(kImageTableName) : nullptr;
  if (!table) {
    host::showMessage("Cannot proceeed - no data dictionary!");
    return 1;
  }

  if (tableHandle != 0) {
    if (session.imageTableOf() == datasetByHandle(tableHandle)) session.setImageTable(nullptr);
    if (coreSession().imageTableOf() == datasetByHandle(tableHandle)) coreSession().setImageTable(nullptr);
    releaseDataset(tableHandle);
  }
  tableHandle = registerDataset(std::move(table));
  session.setImageTable(datasetByHandle(tableHandle));
  return session.init() ? 0 : 1;
}

Dataset* imageTable() { return datasetByHandle(tableHandle); }

int imageTableHandle() { return tableHandle; }

}  // namespace subsurf
