#include "session_command.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "cli_support.h"
#include "detect_command.h"
#include "straighten_command.h"
#include "core/core_session.h"
#include "core/depth_sources.h"
#include "core/depth_table.h"
#include "core/free_corners.h"
#include "core/image_settings.h"
#include "core/name_depths.h"
#include "core/output_guard.h"
#include "core/session_files.h"
#include "core/tray_straightening.h"
#include "core/split_naming.h"
#include "host/fixed_text.h"
#include "host/image/photo.h"
#include "host/messages.h"
#include "host/natural_order.h"
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
  bool carry = false;
  bool keepOrder = false;
  bool detectRows = false;
  bool straighten = false;
};

struct ShowOptions {
  std::string session;
  bool rows = false;
  bool json = false;
};

struct DepthsOptions {
  std::string session;
  int from = 0;
  std::optional<float> top, base;
  int cores = 0;
  std::string table;
  bool carry = false;
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

// Gives the image at `place` a tray interval and lays its rows and the
// trays that follow out from it (the set-depths dialog's "OK"). The core
// length is cleared so that the starting tray itself is laid out too.
int carryFrom(CoreSession& session, int place, float top, float base, int cores) {
  CoreImage* image = session.imageAt(place);
  if (!image) return 1;
  const std::string unit = depthUnitOf(image->realSetting(kRealTop));
  setDepth(image->realSetting(kRealTop), top, unit);
  setDepth(image->realSetting(kRealBase), base, unit);
  setInteger(image->intSetting(kIntCoreNumber), coresForTray(*image, cores));
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

std::string photoName(CoreSession& session, int place) { return fileNameOf(session.imageAt(place)->sourceFile()); }

// "  carried: B.jpg 1236.00-1237.50 (from A.jpg)", one line per tray.
void printCarried(CoreSession& session, const std::vector<CarriedTray>& carried) {
  for (const CarriedTray& c : carried) {
    const CoreImage& image = *session.imageAt(c.place);
    std::printf("  carried: %s %s-%s (from %s)\n", photoName(session, c.place).c_str(),
                depthText(image.realValue(kRealTop)).c_str(), depthText(image.realValue(kRealBase)).c_str(),
                photoName(session, c.from).c_str());
  }
}

// The closing count of a depth command; 1 (after naming them) when some
// photographs are left without depths.
int reportDepths(CoreSession& session, const std::vector<CarriedTray>& carried) {
  const DepthCounts counts = countDepths(session, carried);
  std::printf("%s\n", counts.text().c_str());
  if (counts.without == 0) return kExitOk;
  std::string names;
  for (int place = 1; place <= session.imageCount(); ++place)
    if (!hasTrayDepths(*session.imageAt(place))) names += (names.empty() ? "" : ", ") + photoName(session, place);
  host::showMessage(fmt::format("without depths: {}", names));
  return kExitPartial;
}

// ---------------------------------------------------------------------------
// slabber new

int runNew(const NewOptions& o) {
  const std::string path = sessionFileName(o.session);
  if (fs::exists(path) && !o.force)
    return fail(fmt::format("{} already exists; give --force to replace it", path));
  if (Status s = split::checkSessionReplaceable(path); !s) return fail(s.message());
  if (o.top && o.base && !(*o.top < *o.base)) return fail(kTopNotAboveBase);

  RectangleTemplate holder;
  if (!o.templateName.empty() && !readNamedTemplate(o.templateName, holder)) return kExitBadInput;

  // Photographs are taken in the order people read their names (BOX(2)
  // before BOX(12)), whatever order the shell listed them in.
  std::vector<std::string> photos = o.photos;
  if (!o.keepOrder) {
    std::stable_sort(photos.begin(), photos.end(), [](const std::string& a, const std::string& b) {
      return naturalLess(fileNameOf(a), fileNameOf(b));
    });
  }

  // A straightened copy beside its original (from an earlier `straighten`)
  // is not a tray of its own: the original is taken.
  {
    std::vector<std::string> kept;
    for (const std::string& photo : photos) {
      const auto original = std::find_if(photos.begin(), photos.end(), [&](const std::string& other) {
        return straightenedCopyPath(other) == photo;
      });
      if (original == photos.end()) kept.push_back(photo);
      else std::printf("skipped %s: the straightened copy of %s\n", photo.c_str(), original->c_str());
    }
    photos = std::move(kept);
  }

  CoreSession session;
  std::vector<std::string> traysToCheck;
  if (o.straighten) std::printf("Trays straightened:\n");
  for (const std::string& photo : photos) {
    image::PixelSize size;
    if (!image::readPixelSize(photo, size)) return kExitBadInput;  // "Error loading: ..." shown
    CoreImage* image = session.newImage();
    image->setSourceFile(absolutePath(photo));
    setInteger(image->intSetting(kIntUV), o.uv ? 1 : 0);
    setInteger(image->intSetting(kIntUse), 1);
    if (o.straighten) {
      // Rows and templates are laid on the straight tray.
      const std::string check = straightenByCornersFound(session, *image, session.imageCount());
      if (!check.empty()) traysToCheck.push_back(check);
      else if (!image::readPixelSize(image->sourceFile(), size)) return kExitBadInput;
    }
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

  // Rows found in each photograph; each tray then lays its depths out over
  // the rows found in it (its "Core Number"), unless --cores says otherwise.
  std::vector<PhotoRows> detections;
  if (o.detectRows) detections = detectRows(session, {}, o.cores, 0);

  // Typed depths are the first tray's; an interval read from a name is that
  // tray's own. No tray is given depths it was not given unless --carry asks.
  if (o.top && o.base) setTrayDepths(*session.imageAt(1), *o.top, *o.base, o.cores);
  if (o.depthsFromNames) {
    for (int place = 1; place <= session.imageCount(); ++place) {
      CoreImage& image = *session.imageAt(place);
      const std::string name = fileNameOf(image.sourceFile());
      const NameDepths reading = readNameDepths(name);
      if (reading.read()) setTrayDepths(image, reading.top, reading.base, o.cores);
      else host::showMessage(nameDepthsProblem(name, reading));
    }
  }
  std::vector<CarriedTray> carried;
  if (o.carry) carried = carryIntoMissing(session);

  // The table of clipping depths is half of what a split is for, so a new
  // session asks for it (written beside the row images unless named).
  SessionOptions options;
  options.doReport = 1;
  if (!saveSession(session, options, path)) return kExitBadInput;

  int rows = 0;
  for (CoreImage* image : session.images()) rows += CoreSession::rectangleCount(*image);
  std::printf("%s: %d image%s, %d row%s\n", path.c_str(), session.imageCount(), session.imageCount() == 1 ? "" : "s",
              rows, rows == 1 ? "" : "s");
  printCarried(session, carried);
  const int unsure = o.detectRows ? printDetections(detections) : 0;
  // Photos left without depths make the exit status 1 only when depths were
  // asked for; a session made for depths typed later is counted all the same.
  const bool depthsAsked = o.depthsFromNames || (o.top && o.base) || o.carry;
  int status = kExitOk;
  if (depthsAsked) {
    status = reportDepths(session, carried);
  } else {
    std::printf("%s\n", countDepths(session, carried).text().c_str());
  }
  for (const std::string& line : traysToCheck) std::printf("%s\n", line.c_str());
  if ((unsure > 0 || !traysToCheck.empty()) && status == kExitOk) status = kExitPartial;
  return status;
}

// ---------------------------------------------------------------------------
// slabber show

// A depth as JSON: the shortest decimal that reads back as the same float.
nlohmann::ordered_json depthJson(float v) {
  if (isNull(v)) return nullptr;
  return std::strtod(fmt::format("{}", v).c_str(), nullptr);
}

const char* originName(DepthOrigin origin) {
  switch (origin) {
    case DepthOrigin::FromName: return "name";
    case DepthOrigin::TypedOrImported: return "typed or imported";
    case DepthOrigin::Carried: return "carried";
    case DepthOrigin::None: break;
  }
  return "none";
}

// The session as JSON, for scripts: every image with its depths and rows.
int showJson(CoreSession& session, const ShowOptions& o) {
  nlohmann::ordered_json images = nlohmann::ordered_json::array();
  int place = 0;
  for (CoreImage* image : session.images()) {
    nlohmann::ordered_json rows = nlohmann::ordered_json::array();
    int row = 0;
    for (const RowDepths& d : session.rowDepths(*image)) {
      ++row;
      nlohmann::ordered_json entry = {{"row", row}, {"top", depthJson(d.top)}, {"base", depthJson(d.base)}};
      if (const CoreRectangle* r = session.rectangleAt(*image, row)) {
        entry["outline"] = r->polygon.freeCorners ? "free corners" : "rectangle";
        nlohmann::ordered_json corners = nlohmann::ordered_json::array();
        for (std::size_t i = 0; i < static_cast<std::size_t>(r->polygon.n) && i < r->polygon.px.size(); ++i)
          corners.push_back({r->polygon.px[i], r->polygon.py[i]});
        entry["corners"] = corners;
      }
      rows.push_back(entry);
    }
    const int cores = image->intValue(kIntCoreNumber);
    images.push_back({{"place", ++place},
                      {"file", fileNameOf(image->sourceFile())},
                      {"path", image->sourceFile()},
                      {"light", std::string(split::lightTag(image->intValue(kIntUV)))},
                      {"unit", depthUnitOf(image->realSetting(kRealTop))},
                      {"top", depthJson(image->realValue(kRealTop))},
                      {"base", depthJson(image->realValue(kRealBase))},
                      {"core_length", depthJson(image->realValue(kRealCoreLength))},
                      {"cores", isNull(cores) ? nlohmann::ordered_json() : nlohmann::ordered_json(cores)},
                      {"depths_from", originName(depthOriginOf(*image))},
                      {"rows", rows}});
  }
  const nlohmann::ordered_json out = {{"session", o.session}, {"images", images}};
  std::printf("%s\n", out.dump(2).c_str());
  return kExitOk;
}

int runShow(const ShowOptions& o) {
  CoreSession session;
  SessionOptions options;
  if (!readSessionFile(o.session, session, options)) return kExitBadInput;
  if (o.json) return showJson(session, o);
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
    if (const TrayOrigin origin = trayOrigin(*image); origin.straightened)
      std::printf("     straightened from %s, tray corners %s\n", fileNameOf(origin.original).c_str(),
                  cornersText(origin.corners).c_str());
    if (!o.rows) continue;
    int row = 0;
    for (const RowDepths& d : session.rowDepths(*image)) {
      ++row;
      const CoreRectangle* r = session.rectangleAt(*image, row);
      const std::string outline =
          r && r->polygon.freeCorners ? "  free corners " + cornersText(cornersOf(r->polygon)) : std::string();
      std::printf("     row %2d: %s - %s%s\n", row, depthText(d.top).c_str(), depthText(d.base).c_str(), outline.c_str());
    }
  }
  return kExitOk;
}

// ---------------------------------------------------------------------------
// slabber depths

// --table: every listed photograph gets the table's interval.
int importTable(CoreSession& session, const SessionOptions& options, const DepthsOptions& o) {
  std::vector<DepthTableRow> rows;
  if (Status read = readDepthTable(o.table, rows); !read) return fail(read.message());
  DepthTableOutcome outcome;
  if (Status applied = applyDepthTable(session, rows, o.table, outcome); !applied) return fail(applied.message());
  if (!saveSession(session, options, o.session)) return kExitBadInput;
  std::printf("%s: depths of %zu photo%s imported from %s\n", o.session.c_str(), outcome.placesSet.size(),
              outcome.placesSet.size() == 1 ? "" : "s", o.table.c_str());
  for (const std::string& m : outcome.unmatched) host::showMessage(m);
  if (!outcome.missed.empty()) {
    std::string names;
    for (int place : outcome.missed) names += (names.empty() ? "" : ", ") + photoName(session, place);
    host::showMessage(fmt::format("{} does not list: {}", o.table, names));
  }
  const int depths = reportDepths(session, {});
  return outcome.unmatched.empty() ? depths : kExitPartial;
}

int runDepths(const DepthsOptions& o) {
  const int modes = (o.from != 0 || o.top || o.base ? 1 : 0) + (o.table.empty() ? 0 : 1) + (o.carry ? 1 : 0);
  if (modes != 1) return fail("give one of: --from K --top T --base B, --carry, --table FILE.csv");
  CoreSession session;
  SessionOptions options;
  if (!readSessionFile(o.session, session, options)) return kExitBadInput;
  if (!o.table.empty()) return importTable(session, options, o);

  std::vector<CarriedTray> carried;
  if (o.carry) {
    carried = carryIntoMissing(session);
    if (!saveSession(session, options, o.session)) return kExitBadInput;
    std::printf("%s: depths carried into %zu photo%s without depths\n", o.session.c_str(), carried.size(),
                carried.size() == 1 ? "" : "s");
    printCarried(session, carried);
    return reportDepths(session, carried);
  }

  if (!o.top || !o.base) return fail("--from needs --top and --base");
  const int count = session.imageCount();
  if (o.from < 1 || o.from > count)
    return fail(fmt::format("Image {} is not in {} (it holds {} image{})", o.from, o.session, count,
                            count == 1 ? "" : "s"));
  if (!(*o.top < *o.base)) return fail(kTopNotAboveBase);
  if (carryFrom(session, o.from, *o.top, *o.base, o.cores) != 0) return kExitBadInput;
  if (!saveSession(session, options, o.session)) return kExitBadInput;
  std::printf("%s: depths carried forward from image %d\n", o.session.c_str(), o.from);
  // Every tray of the starting one's light after it was given carried depths.
  const int light = session.imageAt(o.from)->intValue(kIntUV);
  for (int place = o.from + 1; place <= count; ++place)
    if (session.imageAt(place)->intValue(kIntUV) == light) carried.push_back({place, o.from});
  printCarried(session, carried);
  return reportDepths(session, carried);
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
  make->add_option("photos", newOptions->photos, "Photographs of the trays")->required();
  auto* templ = make->add_option("--template", newOptions->templateName, "Lay this saved rectangle template on each photo");
  auto* rows = make->add_option("--rows", newOptions->rows, "Lay N equal horizontal bands across each photo")
                   ->check(CLI::Range(1, kMostBands));
  templ->excludes(rows);
  auto* detect = make->add_flag("--detect-rows", newOptions->detectRows,
                                "Find the core rows of each photo and lay one rectangle per row");
  detect->excludes(templ);
  detect->excludes(rows);
  make->add_flag("--depths-from-names", newOptions->depthsFromNames,
                 "Read each tray's depth interval from its file name (TRAY_1234_5-1236_0.jpg,\n"
                 "K-DD-51_BOX(04) 9.0-12.00.JPG; see docs/depths-from-names.md). Names that cannot\n"
                 "be read are listed and left without depths (exit status 1)");
  make->add_flag("--carry", newOptions->carry,
                 "Give photographs without depths those of the tray before, carried forward\n"
                 "(each one is listed)");
  make->add_flag("--keep-order", newOptions->keepOrder,
                 "Keep the photographs in the order given; by default they are ordered\n"
                 "naturally by name (BOX(2) before BOX(12))");
  auto* top = make->add_option("--top", newOptions->top, "Top depth of the first tray (--carry lays out the rest)");
  auto* base = make->add_option("--base", newOptions->base, "Base depth of the first tray");
  top->needs(base);
  base->needs(top);
  make->add_option("--cores", newOptions->cores, "Core rows per tray")->check(CLI::Range(1, kMostBands));
  make->add_flag("--uv", newOptions->uv, "The photographs were taken under ultraviolet light");
  make->add_flag("--straighten", newOptions->straighten,
                 "Straighten each tray photographed at an angle first, by the corners found (see `slabber\n"
                 "straighten`); rows are then laid on the straight copy. Unsure photos are named and kept");
  make->add_flag("--force", newOptions->force, "Replace an existing session file");
  make->callback([newOptions, &exitCode] { exitCode = runNew(*newOptions); });

  // --- show
  auto showOptions = std::make_shared<ShowOptions>();
  CLI::App* show = app.add_subcommand("show", "Show a session's images and depths");
  show->add_option("session", showOptions->session, "Session file")->required();
  show->add_flag("--rows", showOptions->rows, "Also show every row's depths");
  show->add_flag("--json", showOptions->json, "Write the session's images, depths and rows as JSON");
  show->callback([showOptions, &exitCode] { exitCode = runShow(*showOptions); });

  // --- depths
  auto depthsOptions = std::make_shared<DepthsOptions>();
  CLI::App* depths = app.add_subcommand(
      "depths", "Give trays depths and save: carried forward from one image, carried into the photos\n"
                "without depths, or imported from a table");
  depths->add_option("session", depthsOptions->session, "Session file")->required();
  auto* from = depths->add_option("--from", depthsOptions->from, "Place of the starting image (from 1)");
  auto* dtop = depths->add_option("--top", depthsOptions->top, "Top depth of the starting tray");
  auto* dbase = depths->add_option("--base", depthsOptions->base, "Base depth of the starting tray");
  from->needs(dtop)->needs(dbase);
  dtop->needs(from);
  dbase->needs(from);
  depths->add_option("--cores", depthsOptions->cores, "Core rows per tray")->check(CLI::Range(1, kMostBands));
  depths->add_flag("--carry", depthsOptions->carry,
                   "Carry depths into the photos without any, from the tray before each");
  depths->add_option("--table", depthsOptions->table,
                     "Import depths from a CSV table: photo file name or place, top, base,\n"
                     "and optionally cores and core length");
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
