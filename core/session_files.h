// The files that keep the core-tray splitter's work between runs:
//
//   session files  "*.slbs"        a whole core session: the output options,
//                                  the images with their settings, views and
//                                  rectangles;
//   templates      "rtmplts.rctml" the rectangle template in use, read at
//                  under "userlib:" start-up, and the library of named
//                                  templates, one file each, in the folder
//                                  "userlib:rtmplts/" ("<name>.rctml");
//   user settings  "user"          the user's folders and choices.
//   under "userlib:"
//
// All are keyword files: one comma-separated record per line, the keyword
// first; typed scalars are saved as their keyword rows (units/keyword_rows.h).
// docs/file-formats.md ("Session, template and user files") shows the
// records of each file with an example.
//
// Users reopen sessions for months, so:
//   * writing goes to a temporary file that replaces the old one only when it
//     is complete: a failed save never damages the file on disk;
//   * reading is done into a fresh session, which replaces the user's session
//     only when the whole file has been read: a truncated or corrupt file
//     leaves the session as it was, and the message names the file and line;
//   * photographs in the session file's folder (or below it) are saved with
//     paths relative to that folder, so a folder holding a session and its
//     photographs can be moved or shared; a relative path in a session file
//     is always read relative to the session file's folder.
//
// Every failure is shown to the user (host::showMessage) and also returned.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/core_session.h"
#include "host/status.h"

namespace subsurf {

namespace split {
struct SplitOptions;
}

// ---------------------------------------------------------------------------
// Texts the user sees.

inline constexpr std::string_view kNoSessionFileGiven = "No session file given!";
inline constexpr std::string_view kSessionHasNoImages = "This session contains no core images!";
inline constexpr std::string_view kCouldNotOpenTemplate = "Could not open template file!";
inline constexpr std::string_view kTemplateNeedsName = "Rectangle template must be given a name!";
inline constexpr std::string_view kNoTemplatesDefined = "No templates defined";

// ---------------------------------------------------------------------------
// Versions.
//
// The session file's version decides which optional records it holds: the
// report records "do_report" and "report_root" came with "2.1", "report_ip"
// with "2.11". Versions are compared as decimal numbers ("2.1" < "2.11" <
// "2.2"), a letter after the number marking a later revision of the same
// layout ("2.11" < "2.11a").

inline constexpr std::string_view kSessionVersion = "2.11a";
inline constexpr int kVersionFieldWidth = 8;  // the version text's field: "2.11a" blank padded

struct FileVersion {
  double number = 0.0;   // 2.11 for "2.11a"
  std::string revision;  // "a" for "2.11a"
};
// False when the text does not start with a number.
bool parseFileVersion(std::string_view text, FileVersion& out);
// -1, 0 or 1 as a is earlier than, the same as or later than b.
int compareVersions(const FileVersion& a, const FileVersion& b);

// ---------------------------------------------------------------------------
// Session files.

inline constexpr std::string_view kSessionFileType = "slbs";
inline constexpr std::string_view kSessionFileDescription = "slabcut session file";
inline constexpr std::string_view kSessionFileFilter = "*.slbs";

// The session-wide output options saved at the head of a session file.
//   override     1: the root name replaces the photograph's name in the names
//                of the row images (the split's "use root name");
//   rootName     that root name;
//   cgms         1: row images are written as metafiles, else as bitmaps;
//   doReport     1: the table of clipping depths is written;
//   reportRoot   the table's file (blank: the split's default name);
//   reportOption the table's style (1: the six columns "Top Depth, Top Shift,
//                Bottom Depth, Bottom Shift, Comments, Graphics File Name").
// Files older than "2.1" keep the defaults of the three report options, files
// of "2.1" the default of reportOption.
struct SessionOptions {
  int override = 0;
  std::string rootName;
  int cgms = 0;
  int doReport = 0;
  std::string reportRoot;
  int reportOption = 1;
};

// The options as the tool's split options hold them, and back. Formats other
// than bitmaps and metafiles (PNG, JPEG, TIFF) are saved as bitmaps.
SessionOptions sessionOptionsFrom(const split::SplitOptions& options);
void applySessionOptions(const SessionOptions& session, split::SplitOptions& options);

// Writes the session to `path` (complete or not at all).
Status saveSession(CoreSession& session, const SessionOptions& options, const std::string& path);

// Reads the session file at `path`. When the whole file reads, the session's
// images are replaced by the file's (new ids from 1, the first image
// current, the image table refreshed) and `options` takes the file's
// options; a file without images empties the session and shows "This session
// contains no core images!". On any failure nothing changes.
Status readSession(CoreSession& session, SessionOptions& options, const std::string& path);

// How a photograph's path is kept in a session file at `sessionFile`: the
// path relative to the session file's folder when the photograph lies in it
// or below it, otherwise the absolute path. Windows paths ("C:\..." or
// "\\server\...") are kept as they are.
std::string storedPhotoPath(std::string_view photo, std::string_view sessionFile);
// The photograph's path on this machine for a path kept in a session file at
// `sessionFile`: relative paths are taken from the session file's folder.
std::string resolvedPhotoPath(std::string_view stored, std::string_view sessionFile);
// True for "/...", "\...", and drive paths "C:\..." / "C:/...".
bool isAbsolutePath(std::string_view path);

// ---------------------------------------------------------------------------
// Rectangle templates.

inline constexpr std::string_view kTemplateLocation = "userlib:";
inline constexpr std::string_view kTemplateLibraryName = "rtmplts";
inline constexpr std::string_view kTemplateFileType = "rctml";
inline constexpr std::size_t kTemplateNameWidth = 40;
inline constexpr std::size_t kTemplateDescriptionWidth = 40;

// "userlib:rtmplts.rctml", the template in use, read at start-up.
std::string templateInUseFile();
// "userlib:rtmplts" (a folder), where the named templates are kept.
std::string templateLibraryFolder();
// The file of a named template: "<library folder>/<name>.rctml".
std::string namedTemplateFile(std::string_view name);
// A usable template name: not blank, at most 40 characters, and a plain file
// name (no "/" or "\", not "." or ".."). Empty when usable, else why not.
std::string templateNameProblem(std::string_view name);

// Writes one template file (complete or not at all). The name is not part
// of the file: a template's name is its file's name.
Status saveTemplateFile(const RectangleTemplate& holder, const std::string& path);
// Reads one template file; `holder` changes only when the whole file reads
// (its name is left alone). "Could not open template file!" when the file
// cannot be opened.
Status readTemplateFile(const std::string& path, RectangleTemplate& holder);
// Reads only the "description" record (blank when the file has none).
Status readTemplateDescription(const std::string& path, std::string& description);

// Saves `holder` as the named template `name` and as the template in use.
// "Rectangle template must be given a name!" when the name is blank.
Status saveNamedTemplate(const RectangleTemplate& holder, std::string_view name);
// Reads the named template into holder (named after it).
Status readNamedTemplate(std::string_view name, RectangleTemplate& holder);

struct TemplateEntry {
  std::string name;
  std::string description;
  std::string file;
};
// The named templates, sorted by name, with their descriptions; a file
// whose description cannot be read is listed with a blank one. An empty
// library shows "No templates defined" when `tellWhenEmpty`.
std::vector<TemplateEntry> listTemplates(bool tellWhenEmpty = true);

// The session's template reader (CoreSession::TemplateReader, as COR_INIT
// calls it): reads the template in use into the session's template; 0 when read.
int readTemplateIntoSession(CoreSession& session, const std::string& path);

// ---------------------------------------------------------------------------
// User settings.

inline constexpr std::string_view kUserSettingsName = "user";

struct UserSettings {
  std::string sessionsPath;  // folder of session files
  std::string outputPath;    // folder of the row images
  int outputOption = 1;      // 2: row images beside each photograph, else in outputPath
  std::string templateName;  // the rectangle template last used
};

// "userlib:user".
std::string userSettingsFile();
Status writeUserSettings(const UserSettings& settings, const std::string& path);
// `settings` changes only when the whole file reads.
Status readUserSettings(const std::string& path, UserSettings& settings);
// The output folder and option as the split options hold them.
void applyUserSettings(const UserSettings& settings, split::SplitOptions& options);

// The tool's user settings and session options behind the exported routines.
UserSettings& toolUserSettings();

}  // namespace subsurf
