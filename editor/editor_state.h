// The editor's document: one session file opened for editing in the browser.
//
// Everything the page does is an action on this state, and every action goes
// through the core session's own routines (corner dragging, the row-count
// rule, carrying depths forward, templates, saving), so the page obeys the
// same rules as every other way of editing a session; the page holds no model
// of its own, only the JSON this state hands out after each action.
//
// Actions are named and take a JSON body. Each answers with the whole state,
// the messages the engine showed while doing it, whether it was an edit
// (something to undo), and, when the engine asked a
// yes/no question the body held no answer for, the question: the action is
// then undone, and the page asks the user and sends the action again with
// "answers": [true] or [false].
//
// Coordinates: rectangles are held in the pixels of the picture they were
// drawn on, whose size the image keeps ("Pixel Width" x "Pixel Height"); a
// photo that has none yet takes its own upright size. The page draws the
// photo stretched over that frame.
#pragma once

#include <deque>
#include <stdexcept>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "core/core_session.h"
#include "core/session_files.h"
#include "editor/split_job.h"
#include "host/status.h"

namespace subsurf::editor {

// A request the page should never send (unknown action, missing or mistyped
// field, a place outside the session): answered with HTTP 400 and the text.
class BadRequest : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct ActionResult {
  nlohmann::json body;  // {"state", "messages", "changed", "question"?}
};

// Undo keeps this many edits.
inline constexpr std::size_t kUndoDepth = 100;

class EditorState {
 public:
  EditorState();
  ~EditorState();

  // Reads the session file (and the user's settings for the split's output
  // folder). The failure is the reader's message.
  Status open(const std::string& sessionPath);
  const std::string& sessionPath() const { return path_; }

  // The whole state as the page shows it.
  nlohmann::json state();

  // Runs one action (see the .cpp for the list); throws BadRequest.
  ActionResult act(const std::string& action, const nlohmann::json& body);

  // The source photograph of the image at `place` (from 1), and the frame its
  // rectangles are drawn in; throws BadRequest for a place not in the session.
  std::string photoPath(int place);
  struct Frame {
    int width = 0, height = 0;
  };
  Frame frameOf(int place);

  bool unsaved() const { return unsaved_; }

 private:
  struct Snapshot;
  std::unique_ptr<Snapshot> snapshot();
  void restore(Snapshot& s);
  CoreImage& imageAt(const nlohmann::json& body, const char* key = "image");
  CoreRectangle& rectangleAt(CoreImage& image, const nlohmann::json& body);
  Frame frameOf(CoreImage& image);
  bool runEdit(const std::string& action, const nlohmann::json& body);
  bool runRowEdit(const std::string& action, const nlohmann::json& body);
  nlohmann::json imageJson(CoreImage& image, int place);

  // The edits; each returns true when it changed the session.
  bool select(const nlohmann::json& body);
  bool editTable(const nlohmann::json& body);
  bool addRectangle(const nlohmann::json& body);
  bool moveRectangle(const nlohmann::json& body);
  bool dragCorner(const nlohmann::json& body);
  bool setFreeCornersOf(const nlohmann::json& body);
  bool squareRow(const nlohmann::json& body);
  bool dragEdge(const nlohmann::json& body);
  bool deleteRectangle(const nlohmann::json& body);
  bool reorderRectangles(const nlohmann::json& body);
  bool copyRows(const nlohmann::json& body);
  bool setRows(const nlohmann::json& body);
  bool setDepths(const nlohmann::json& body);
  bool detectRowsOf(const nlohmann::json& body);
  bool applyTemplate(const nlohmann::json& body);
  bool saveTemplate(const nlohmann::json& body);
  bool setView(const nlohmann::json& body);
  bool save();
  bool startSplit(const nlohmann::json& body);

  CoreSession session_;
  SessionOptions options_;
  std::string path_;
  std::map<std::string, Frame> photoSizes_;  // upright sizes, by photo path
  std::deque<std::unique_ptr<Snapshot>> undo_, redo_;
  bool unsaved_ = false;
  SplitJob split_;
};

}  // namespace subsurf::editor
