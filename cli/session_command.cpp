#include "session_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "cli_support.h"
#include "detect_command.h"
#include "core/core_session.h"
#include "core/image_settings.h"
#include "core/session_files.h"
#include "core/split_naming.h"
#include "host/fixed_text.h"
#include "host/image/photo.h"
#include "host/messages.h"
#include "host/nulls.h"

namespace fs = std::filesystem;

namespace subsurf::cli {
namespace {

constexpr const char* kTopNotAboveBase = "Error - Top depth >= Base Depth!";
constexpr int kMostBands = kMaxRectangleId;

struct NewOptions {
  std::string session;
  std::vector<std::string> photos;
  std::string templateName;
  int rows = 0;
  bool depthsFromNames = false;
  std::optional<float> top, base;
  int cores = 0;
  bool uv = false;
  bool force = false;
  bool detectRows = false;
};

struct ShowOptions {
  std::string session;
  bool rows = false;
};

struct DepthsOptions {
  std::string session;
  int from = 0;
  float top = 0.0f, base = 0.0f;
  int cores = 0;
};

struct TemplateOptions {
  std::string name;
  std::string session;
  int image = 0;
  std::string description;
};

int fail(const std::string& text) {
  host::showMessage(text);
  return kExitBadInput;
}

std::string fileNameOf(const std::string& path) { return path.substr(split::fileNameStart(path)); }

// A depth as the tables show it: two decimals (centimetres, as in the names
// of the row images), "-" when unset.
std::string depthText(float v) { return isNull(v) ? "-" : fmt::format("{:.2f}", v); }

std::string countText(int v) { return isNull(v) ? "-" : fmt::format("{}", v); }

std::string absolutePath(const std::string& path) {
  std::error_code ec;
  const fs::path p = fs::absolute(fs::path(path), ec);
  return ec ? path : p.lexically_normal().string();
}

// The rows a tray is split into when the user does not say: the rectangles
// drawn, else the number the set-depths dialog offers.
int coresFor(const CoreImage& image, int given) {
  if (given >= 1) return given;
  const int existing = image.intValue(kIntCoreNumber);
  if (!isNull(existing) && existing >= 1) return existing;
  const int rectangles = CoreSession::rectangleCount(image);
  return rectangles >= 1 ? rectangles : kDefaultCoreCount;
}

// Gives the image at `place` a tray interval and lays its rows and the
// trays that follow out from it (the set-depths dialog's "OK"). The core
// length is cleared so that the starting tray itself is laid out too.
int carryFrom(CoreSession& session, int place, float top, float base, int cores) {
  CoreImage* image = session.imageAt(place);
  if (!image) return 1;
  const std::string unit = depthUnitOf(image->realSetting(kRealTop));
  setDepth(image->realSetting(kRealTop), top, unit);
  setDepth(image->realSetting(kRealBase), base, unit);
  setInteger(image->intSetting(kIntCoreNumber), coresFor(*image, cores));
  image->realSetting(kRealCoreLength).V = kRealNull;
  session.selectImageByPlace(place);
  return session.carryDepthsForward(nullptr);
}

std::string sessionFileName(const std::string& given) {
  fs::path p(given);
  if (p.extension().empty()) p += "." + std::string(kSessionFileType);
  return p.string();
}

bool readSessionFile(const std::string& path, CoreSession& session, SessionOptions& options) {
  return static_cast<bool>(readSession(session, options, path));
}

// ---------------------------------------------------------------------------
// slabber new

int runNew(const NewOptions& o) {
  const std::string path = sessionFileName(o.session);
  if (fs::exists(path) && !o.force)
    return fail(fmt::format("{} already exists; give --force to replace it", path));
  if (o.top && o.base && !(*o.top < *o.base)) return fail(kTopNotAboveBase);

  RectangleTemplate holder;
  if (!o.templateName.empty() && !readNamedTemplate(o.templateName, holder)) return kExitBadInput;

  CoreSession session;
  for (const std::string& photo : o.photos) {
    image::PixelSize size;
    if (!image::readPixelSize(photo, size)) return kExitBadInput;  // "Error loading: ..." shown
    CoreImage* image = session.newImage();
    image->setSourceFile(absolutePath(photo));
    setInteger(image->intSetting(kIntUV), o.uv ? 1 : 0);
    setInteger(image->intSetting(kIntUse), 1);
    if (!o.templateName.empty()) {
      session.applyTemplate(*image, holder, size.width, size.height);
    } else if (o.rows > 0) {
      session.makeBands(*image, o.rows, size.width, size.height);
    } else {
      // The split scales rectangles from the size the photograph was shown
      // at; rectangles drawn later are drawn on the whole photograph.
      setInteger(image->intSetting(kIntPixelWidth), size.width);
      setInteger(image->intSetting(kIntPixelHeight), size.height);
    }
    if (o.cores >= 1) setInteger(image->intSetting(kIntCoreNumber), o.cores);
    else if (CoreSession::rectangleCount(*image) >= 1)
      setInteger(image->intSetting(kIntCoreNumber), CoreSession::rectangleCount(*image));
  }

  std::vector<PhotoRows> detections;
  // Rows found in each photograph: each tray keeps its own count when the
  // depths are laid out, where a carried run would give them all the first's.
  std::vector<int> coresOf(static_cast<std::size_t>(session.imageCount()) + 1, o.cores);
  if (o.detectRows) {
    detections = detectRows(session, {}, o.cores, 0);
    for (int place = 1; place <= session.imageCount() && o.cores < 1; ++place)
      coresOf[place] = CoreSession::rectangleCount(*session.imageAt(place));
  }

  // Typed depths start the run at the first photograph; a depth interval in
  // a file name then wins for that tray and starts a new run from it, so
  // photographs whose names hold no interval follow the tray before them.
  if (o.top && o.base && carryFrom(session, 1, *o.top, *o.base, coresOf[1]) != 0) return kExitBadInput;
  if (o.depthsFromNames) {
    for (int place = 1; place <= session.imageCount(); ++place) {
      CoreImage* image = session.imageAt(place);
      const std::string name = fileNameOf(image->sourceFile());
      const ParsedDepths parsed = CoreSession::parseDepths(name);
      if (parsed.status != 0) {
        host::showMessage(fmt::format("{}: no depth interval in the file name", name));
        continue;
      }
      if (!(parsed.top < parsed.base)) return fail(fmt::format("{}: {}", name, kTopNotAboveBase));
      if (carryFrom(session, place, parsed.top, parsed.base, coresOf[place]) != 0) return kExitBadInput;
    }
  }

  // The table of clipping depths is half of what a split is for, so a new
  // session asks for it (written beside the row images unless named).
  SessionOptions options;
  options.doReport = 1;
  if (!saveSession(session, options, path)) return kExitBadInput;

  int withoutDepths = 0, rows = 0;
  for (CoreImage* image : session.images()) {
    if (isNull(image->realValue(kRealTop))) ++withoutDepths;
    rows += CoreSession::rectangleCount(*image);
  }
  std::printf("%s: %d image%s, %d row%s\n", path.c_str(), session.imageCount(), session.imageCount() == 1 ? "" : "s",
              rows, rows == 1 ? "" : "s");
  const int unsure = o.detectRows ? printDetections(detections) : 0;
  const bool depthsAsked = o.depthsFromNames || (o.top && o.base);
  if (depthsAsked && withoutDepths > 0) {
    host::showMessage(fmt::format("{} image{} without depths", withoutDepths, withoutDepths == 1 ? "" : "s"));
    return kExitPartial;
  }
  if (unsure > 0) return kExitPartial;
  return kExitOk;
}

// ---------------------------------------------------------------------------
// slabber show

int runShow(const ShowOptions& o) {
  CoreSession session;
  SessionOptions options;
  if (!readSessionFile(o.session, session, options)) return kExitBadInput;
  const std::vector<CoreImage*> list = session.images();
  const std::string unit = list.empty() ? std::string() : depthUnitOf(list.front()->realSetting(kRealTop));
  std::printf("%s: %zu image%s\n", o.session.c_str(), list.size(), list.size() == 1 ? "" : "s");
  if (list.empty()) return kExitOk;

  std::size_t width = 4;
  for (CoreImage* image : list) width = std::max(width, fileNameOf(image->sourceFile()).size());
  const std::string unitTag = unit.empty() ? std::string() : " (" + unit + ")";
  const std::string top = "top" + unitTag, base = "base" + unitTag, length = "core length" + unitTag;
  const int wTop = std::max<int>(10, static_cast<int>(top.size()));
  const int wBase = std::max<int>(10, static_cast<int>(base.size()));
  const int wLength = static_cast<int>(length.size());
  std::printf("%3s  %-*s  %-5s  %*s  %*s  %*s  %5s  %10s\n", "#", static_cast<int>(width), "file", "light", wTop,
              top.c_str(), wBase, base.c_str(), wLength, length.c_str(), "cores", "rectangles");
  int place = 0;
  for (CoreImage* image : list) {
    ++place;
    std::printf("%3d  %-*s  %-5s  %*s  %*s  %*s  %5s  %10d\n", place, static_cast<int>(width),
                fileNameOf(image->sourceFile()).c_str(), std::string(split::lightTag(image->intValue(kIntUV))).c_str(),
                wTop, depthText(image->realValue(kRealTop)).c_str(), wBase, depthText(image->realValue(kRealBase)).c_str(),
                wLength, depthText(image->realValue(kRealCoreLength)).c_str(),
                countText(image->intValue(kIntCoreNumber)).c_str(), CoreSession::rectangleCount(*image));
    if (!o.rows) continue;
    int row = 0;
    for (const RowDepths& d : session.rowDepths(*image)) {
      ++row;
      std::printf("     row %2d: %s - %s\n", row, depthText(d.top).c_str(), depthText(d.base).c_str());
    }
  }
  return kExitOk;
}

// ---------------------------------------------------------------------------
// slabber depths

int runDepths(const DepthsOptions& o) {
  CoreSession session;
  SessionOptions options;
  if (!readSessionFile(o.session, session, options)) return kExitBadInput;
  const int count = session.imageCount();
  if (o.from < 1 || o.from > count)
    return fail(fmt::format("Image {} is not in {} (it holds {} image{})", o.from, o.session, count,
                            count == 1 ? "" : "s"));
  if (!(o.top < o.base)) return fail(kTopNotAboveBase);
  if (carryFrom(session, o.from, o.top, o.base, o.cores) != 0) return kExitBadInput;
  if (!saveSession(session, options, o.session)) return kExitBadInput;
  std::printf("%s: depths carried forward from image %d\n", o.session.c_str(), o.from);
  return kExitOk;
}

// ---------------------------------------------------------------------------
// slabber templates

int runTemplatesList() {
  const std::vector<TemplateEntry> list = listTemplates(true);  // "No templates defined" when empty
  std::size_t width = 4;
  for (const TemplateEntry& e : list) width = std::max(width, e.name.size());
  for (const TemplateEntry& e : list)
    std::printf("%-*s  %s\n", static_cast<int>(width), e.name.c_str(), e.description.c_str());
  return kExitOk;
}

int runTemplatesShow(const TemplateOptions& o) {
  RectangleTemplate holder;
  if (!readNamedTemplate(o.name, holder)) return kExitBadInput;
  std::printf("template: %s\n", holder.name.c_str());
  std::printf("description: %s\n", holder.description.c_str());
  std::printf("length: %s\n", isNull(holder.length) ? "-" : fmt::format("{:g}", holder.length).c_str());
  if (holder.referenceWidth > 0 && holder.referenceHeight > 0)
    std::printf("drawn on: %d x %d pixels\n", holder.referenceWidth, holder.referenceHeight);
  std::printf("rectangles: %zu\n", holder.rectangles.size());
  int k = 0;
  for (const Polygon& poly : holder.rectangles) {
    std::string corners;
    for (int i = 0; i < poly.n; ++i) corners += fmt::format(" ({},{})", poly.px[i], poly.py[i]);
    std::printf("%3d:%s\n", ++k, corners.c_str());
  }
  return kExitOk;
}

int runTemplatesSave(const TemplateOptions& o) {
  const std::string problem = templateNameProblem(o.name);
  if (!problem.empty()) return fail(problem);
  CoreSession session;
  SessionOptions options;
  if (!readSessionFile(o.session, session, options)) return kExitBadInput;
  CoreImage* image = session.imageAt(o.image);
  if (!image)
    return fail(fmt::format("Image {} is not in {} (it holds {} image{})", o.image, o.session,
                            session.imageCount(), session.imageCount() == 1 ? "" : "s"));
  if (CoreSession::rectangleCount(*image) == 0)
    return fail(fmt::format("Image {} of {} has no rectangles to make a template of", o.image, o.session));
  RectangleTemplate holder;
  const int w = image->intValue(kIntPixelWidth), h = image->intValue(kIntPixelHeight);
  CoreSession::templateFromImage(*image, holder, isNull(w) ? 0 : w, isNull(h) ? 0 : h);
  holder.description = o.description.empty()
                           ? fmt::format("{} rows of {}", holder.rectangles.size(), fileNameOf(image->sourceFile()))
                           : o.description;
  if (!saveNamedTemplate(holder, o.name)) return kExitBadInput;
  std::printf("template %s: %zu rectangles, saved in %s\n", trimBlanks(o.name).c_str(), holder.rectangles.size(),
              namedTemplateFile(trimBlanks(o.name)).c_str());
  return kExitOk;
}

}  // namespace

void addSessionCommands(CLI::App& app, int& exitCode) {
  // --- new
  auto newOptions = std::make_shared<NewOptions>();
  CLI::App* make = app.add_subcommand("new", "Make a session file from tray photographs");
  make->add_option("session", newOptions->session, "Session file to write (.slbs added when no extension)")
      ->required();
  make->add_option("photos", newOptions->photos, "Photographs of the trays, in order")->required();
  auto* templ = make->add_option("--template", newOptions->templateName, "Lay this saved rectangle template on each photo");
  auto* rows = make->add_option("--rows", newOptions->rows, "Lay N equal horizontal bands across each photo")
                   ->check(CLI::Range(1, kMostBands));
  templ->excludes(rows);
  auto* detect = make->add_flag("--detect-rows", newOptions->detectRows,
                                "Find the core rows of each photo and lay one rectangle per row");
  detect->excludes(templ);
  detect->excludes(rows);
  make->add_flag("--depths-from-names", newOptions->depthsFromNames,
                 "Read each tray's depth interval from its file name (TRAY_1234_5-1236_0.jpg)");
  auto* top = make->add_option("--top", newOptions->top, "Top depth of the first tray");
  auto* base = make->add_option("--base", newOptions->base, "Base depth of the first tray");
  top->needs(base);
  base->needs(top);
  make->add_option("--cores", newOptions->cores, "Core rows per tray")->check(CLI::Range(1, kMostBands));
  make->add_flag("--uv", newOptions->uv, "The photographs were taken under ultraviolet light");
  make->add_flag("--force", newOptions->force, "Replace an existing session file");
  make->callback([newOptions, &exitCode] { exitCode = runNew(*newOptions); });

  // --- show
  auto showOptions = std::make_shared<ShowOptions>();
  CLI::App* show = app.add_subcommand("show", "Show a session's images and depths");
  show->add_option("session", showOptions->session, "Session file")->required();
  show->add_flag("--rows", showOptions->rows, "Also show every row's depths");
  show->callback([showOptions, &exitCode] { exitCode = runShow(*showOptions); });

  // --- depths
  auto depthsOptions = std::make_shared<DepthsOptions>();
  CLI::App* depths = app.add_subcommand("depths", "Carry tray depths forward from one image and save");
  depths->add_option("session", depthsOptions->session, "Session file")->required();
  depths->add_option("--from", depthsOptions->from, "Place of the starting image (from 1)")->required();
  depths->add_option("--top", depthsOptions->top, "Top depth of the starting tray")->required();
  depths->add_option("--base", depthsOptions->base, "Base depth of the starting tray")->required();
  depths->add_option("--cores", depthsOptions->cores, "Core rows per tray")->check(CLI::Range(1, kMostBands));
  depths->callback([depthsOptions, &exitCode] { exitCode = runDepths(*depthsOptions); });

  // --- templates
  CLI::App* templates = app.add_subcommand("templates", "The library of rectangle templates");
  templates->require_subcommand(1);
  CLI::App* list = templates->add_subcommand("list", "List the saved templates");
  list->callback([&exitCode] { exitCode = runTemplatesList(); });

  auto showTemplate = std::make_shared<TemplateOptions>();
  CLI::App* tshow = templates->add_subcommand("show", "Show a template's rectangles");
  tshow->add_option("name", showTemplate->name, "Template name")->required();
  tshow->callback([showTemplate, &exitCode] { exitCode = runTemplatesShow(*showTemplate); });

  auto saveTemplate = std::make_shared<TemplateOptions>();
  CLI::App* tsave = templates->add_subcommand("save", "Save an image's rectangles as a named template");
  tsave->add_option("name", saveTemplate->name, "Template name")->required();
  tsave->add_option("--from", saveTemplate->session, "Session file")->required();
  tsave->add_option("--image", saveTemplate->image, "Place of the image (from 1)")->required();
  tsave->add_option("--description", saveTemplate->description, "Description shown in the list");
  tsave->callback([saveTemplate, &exitCode] { exitCode = runTemplatesSave(*saveTemplate); });
}

}  // namespace subsurf::cli
