// slabber edit's web server: the editor page and its JSON API over one
// session, for one user on this machine.
//
// What keeps other people and other web pages out:
//   * it listens on the loopback address only (127.0.0.1);
//   * every request must carry the random token made at start-up (in the
//     address the user opens: "?token=...", or the header "X-Slabber-Token"),
//     so other local programs and pages cannot drive it;
//   * the Host header must name the loopback address and the port, so a web
//     page on another name that resolves to 127.0.0.1 (DNS rebinding) is
//     refused even if it learned the token;
//   * it reads only the session file and the session's photographs (addressed
//     by their place in the session, never by a path from the request) and
//     writes only the session file and what a split it starts writes.
//
// Requests:
//   GET  /                       the page (editor.html, editor.css, editor.js beside it)
//   GET  /api/state              the whole state (EditorState::state)
//   POST /api/<action>           an edit (EditorState::act), JSON body
//   GET  /api/photo/<place>?size=N   the photo reduced to N pixels (default 1600)
//   GET  /api/tile/<place>/<level>/<column>/<row>   a tile (PhotoTiles)
// Refusals: 403 with {"error"} for a missing or wrong token or Host, 400 with
// {"error"} for a bad request, 404 for anything else.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "editor/editor_state.h"
#include "editor/photo_tiles.h"
#include "host/status.h"

namespace httplib {
class Server;
}

namespace subsurf::editor {

inline constexpr std::string_view kTokenHeader = "X-Slabber-Token";
inline constexpr int kDefaultReducedSide = 1600;

class EditorServer {
 public:
  EditorServer();
  ~EditorServer();
  EditorServer(const EditorServer&) = delete;
  EditorServer& operator=(const EditorServer&) = delete;

  // Reads the session to edit.
  Status open(const std::string& sessionPath);
  // Listens on 127.0.0.1:port (0: a free port the system chooses).
  Status bind(int port);
  int port() const { return port_; }
  const std::string& token() const { return token_; }
  // "http://127.0.0.1:<port>/?token=<token>"
  std::string address() const;

  // Serves until stop() (from another thread or a signal handler's thread).
  void run();
  void stop();

  EditorState& state() { return state_; }
  bool unsaved();

 private:
  void routes();
  bool allowed(const std::string& host, const std::string& token, std::string& why) const;

  std::unique_ptr<httplib::Server> server_;
  EditorState state_;
  PhotoTiles tiles_;
  std::mutex mutex_;  // one request at a time on the state
  std::string token_;
  int port_ = 0;
};

// 32 random hexadecimal digits from the system's random source.
std::string randomToken();

}  // namespace subsurf::editor
