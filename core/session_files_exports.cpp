// The session, template and user-settings file routines as exported C
// routines: a thin layer over session_files.h on the process-wide session.
#include <filesystem>
#include <string>

#include "core/core_session.h"
#include "core/output_guard.h"
#include "core/session_files.h"
#include "core/split_process.h"
#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/paths.h"
#include "subsurf/core.h"

namespace fs = std::filesystem;

namespace {

using subsurf::fixedText;
using subsurf::setFixed;

constexpr std::size_t kFileWidth = 260;
constexpr std::size_t kNameWidth = 40;

void setStatus(int* status, bool done) {
  if (status) *status = done ? 0 : 1;
}

std::string fileArgument(const char* file) { return file ? fixedText(file, kFileWidth) : std::string(); }

void rememberSessionFolder(const std::string& file) {
  const std::string folder = fs::path(file).parent_path().string();
  if (!folder.empty()) subsurf::toolUserSettings().sessionsPath = folder;
}

}  // namespace

extern "C" {

void COR_SAVESESSION(const char* file, int* status) {
  const std::string path = fileArgument(file);
  const subsurf::SessionOptions options = subsurf::sessionOptionsFrom(subsurf::split::toolSplitOptions());
  const bool done = static_cast<bool>(subsurf::saveSession(subsurf::coreSession(), options, path));
  if (done) rememberSessionFolder(path);
  setStatus(status, done);
}

void COR_READSESSION(const char* file, int* status) {
  const std::string path = fileArgument(file);
  subsurf::SessionOptions options;
  bool done = static_cast<bool>(subsurf::readSession(subsurf::coreSession(), options, path));
  if (done) {
    // A name from the file that would take the output out of its folder is
    // refused; the rows are read, but the host's own split options stay.
    if (const subsurf::Status names = subsurf::split::checkSessionOutputNames(options, path, false); !names) {
      subsurf::host::showMessage(names.message());
      done = false;
    } else {
      subsurf::applySessionOptions(options, subsurf::split::toolSplitOptions());
    }
    rememberSessionFolder(path);
  }
  setStatus(status, done);
}

void COR_SAVERECTANGLES(const char* name, int* status) {
  subsurf::RectangleTemplate& holder = subsurf::coreSession().rectangleTemplate();
  std::string given = name ? fixedText(name, kNameWidth) : std::string();
  if (given.empty()) given = subsurf::trimBlanks(holder.name);
  const bool done = static_cast<bool>(subsurf::saveNamedTemplate(holder, given));
  if (done) {
    holder.name = subsurf::trimBlanks(given);
    subsurf::toolUserSettings().templateName = holder.name;
  }
  setStatus(status, done);
}

void COR_READRECTANGLES(const char* file, int* status) {
  std::string path = fileArgument(file);
  if (path.empty()) path = subsurf::templateInUseFile();
  setStatus(status, subsurf::readTemplateIntoSession(subsurf::coreSession(), path) == 0);
}

void COR_TEMPLATEDESC(const char* file, char* description, int* status) {
  std::string text;
  const bool done = static_cast<bool>(subsurf::readTemplateDescription(fileArgument(file), text));
  if (description) setFixed(description, subsurf::kTemplateDescriptionWidth, done ? text : std::string());
  setStatus(status, done);
}

void COR_TEMPLATENUM(int* count) {
  const int n = static_cast<int>(subsurf::listTemplates(true).size());
  if (count) *count = n;
}

void COR_TEMPLATEGET(const int* place, char* name, char* description, int* status) {
  const std::vector<subsurf::TemplateEntry> list = subsurf::listTemplates(false);
  const int k = place ? *place : 0;
  const bool found = k >= 1 && k <= static_cast<int>(list.size());
  if (name) setFixed(name, kNameWidth, found ? list[k - 1].name : std::string());
  if (description)
    setFixed(description, subsurf::kTemplateDescriptionWidth, found ? list[k - 1].description : std::string());
  setStatus(status, found);
}

void COR_TEMPLATEUSE(const char* name, int* status) {
  const std::string given = name ? fixedText(name, kNameWidth) : std::string();
  const bool done =
      static_cast<bool>(subsurf::readNamedTemplate(given, subsurf::coreSession().rectangleTemplate()));
  if (done) subsurf::toolUserSettings().templateName = subsurf::trimBlanks(given);
  setStatus(status, done);
}

void COR_USERWR(int* status) {
  subsurf::UserSettings& settings = subsurf::toolUserSettings();
  // The output folder and option are chosen in the outputs dialog, which
  // keeps them in the split options.
  const subsurf::split::SplitOptions& options = subsurf::split::toolSplitOptions();
  settings.outputPath = options.naming.outputFolder;
  if (options.naming.outputBesidePhoto) settings.outputOption = 2;
  else if (settings.outputOption == 2) settings.outputOption = 1;
  setStatus(status, static_cast<bool>(subsurf::writeUserSettings(settings, subsurf::userSettingsFile())));
}

void COR_USERRE(int* status) {
  const std::string path = subsurf::userSettingsFile();
  // A user who has never saved settings has no file: nothing to read, and
  // nothing to tell.
  if (!subsurf::fileExists(path)) {
    setStatus(status, false);
    return;
  }
  subsurf::UserSettings& settings = subsurf::toolUserSettings();
  const bool done = static_cast<bool>(subsurf::readUserSettings(path, settings));
  if (done) subsurf::applyUserSettings(settings, subsurf::split::toolSplitOptions());
  setStatus(status, done);
}

void COR_USERSET(const char* sessionsPath, const char* outputPath, const int* outputOption, const char* templateName) {
  subsurf::UserSettings& settings = subsurf::toolUserSettings();
  if (sessionsPath) settings.sessionsPath = fixedText(sessionsPath, kFileWidth);
  if (outputPath) settings.outputPath = fixedText(outputPath, kFileWidth);
  if (outputOption) settings.outputOption = *outputOption;
  if (templateName) settings.templateName = fixedText(templateName, kNameWidth);
  subsurf::applyUserSettings(settings, subsurf::split::toolSplitOptions());
}

void COR_USERGET(char* sessionsPath, char* outputPath, int* outputOption, char* templateName) {
  const subsurf::UserSettings& settings = subsurf::toolUserSettings();
  if (sessionsPath) setFixed(sessionsPath, kFileWidth, settings.sessionsPath);
  if (outputPath) setFixed(outputPath, kFileWidth, settings.outputPath);
  if (outputOption) *outputOption = settings.outputOption;
  if (templateName) setFixed(templateName, kNameWidth, settings.templateName);
}

}  // extern "C"
