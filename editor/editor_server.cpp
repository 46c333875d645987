#include "editor/editor_server.h"

#include <fmt/format.h>
#include <httplib.h>

#include <random>

#include "editor/page_assets.h"

namespace subsurf::editor {
namespace {

using nlohmann::json;

constexpr const char* kLoopback = "127.0.0.1";
constexpr const char* kJson = "application/json";
// Where editor.html wants the token written.
constexpr std::string_view kTokenMark = "__TOKEN__";

void sendError(httplib::Response& res, int status, const std::string& text) {
  res.status = status;
  res.set_content(json{{"error", text}}.dump(), kJson);
}

// Equal texts compared in a time that does not depend on where they differ.
bool sameSecret(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  unsigned char diff = 0;
  for (std::size_t i = 0; i < a.size(); ++i) diff |= static_cast<unsigned char>(a[i] ^ b[i]);
  return diff == 0;
}

int placeParameter(const httplib::Request& req, std::size_t k) {
  const std::string& text = req.matches[k];
  if (text.size() > 6) throw BadRequest(fmt::format("no place {}", text));
  return std::stoi(text);
}

}  // namespace

std::string randomToken() {
  std::random_device source;  // the system's random source (getrandom)
  std::string token;
  for (int i = 0; i < 4; ++i) token += fmt::format("{:08x}", static_cast<unsigned>(source()));
  return token;
}

EditorServer::EditorServer() : server_(std::make_unique<httplib::Server>()), token_(randomToken()) { routes(); }

EditorServer::~EditorServer() { stop(); }

Status EditorServer::open(const std::string& sessionPath) {
  std::lock_guard lock(mutex_);
  return state_.open(sessionPath);
}

Status EditorServer::bind(int port) {
  if (port < 0 || port > 65535) return Status::error(fmt::format("--port {}: not a port number", port));
  if (port == 0) {
    port_ = server_->bind_to_any_port(kLoopback);
    if (port_ <= 0) return Status::error("Cannot listen on 127.0.0.1: no free port");
  } else {
    if (!server_->bind_to_port(kLoopback, port))
      return Status::error(fmt::format("Cannot listen on 127.0.0.1:{} (in use?)", port));
    port_ = port;
  }
  return Status::ok();
}

std::string EditorServer::address() const { return fmt::format("http://{}:{}/?token={}", kLoopback, port_, token_); }

void EditorServer::run() { server_->listen_after_bind(); }

void EditorServer::stop() {
  if (server_) server_->stop();
}

bool EditorServer::unsaved() {
  std::lock_guard lock(mutex_);
  return state_.unsaved();
}

bool EditorServer::allowed(const std::string& host, const std::string& token, std::string& why) const {
  // The names this server is reached by; a Host header naming anything else
  // came from a page on another name (DNS rebinding) and is refused.
  const std::string port = std::to_string(port_);
  if (host != std::string(kLoopback) + ":" + port && host != "localhost:" + port && host != "[::1]:" + port) {
    why = fmt::format("Host \"{}\" is not this editor (127.0.0.1:{})", host, port_);
    return false;
  }
  if (!sameSecret(token, token_)) {
    why = token.empty() ? "the editor's token is missing" : "the editor's token is wrong";
    return false;
  }
  return true;
}

void EditorServer::routes() {
  httplib::Server& s = *server_;
  s.set_pre_routing_handler([this](const httplib::Request& req, httplib::Response& res) {
    res.set_header("Cache-Control", "no-store");
    res.set_header("X-Content-Type-Options", "nosniff");
    res.set_header("Referrer-Policy", "no-referrer");
    res.set_header("X-Frame-Options", "DENY");
    std::string token = req.get_header_value(std::string(kTokenHeader).c_str());
    if (token.empty()) token = req.get_param_value("token");
    std::string why;
    if (!allowed(req.get_header_value("Host"), token, why)) {
      sendError(res, 403, why);
      return httplib::Server::HandlerResponse::Handled;
    }
    return httplib::Server::HandlerResponse::Unhandled;
  });
  s.set_exception_handler([](const httplib::Request&, httplib::Response& res, std::exception_ptr ep) {
    try {
      std::rethrow_exception(ep);
    } catch (const BadRequest& e) {
      sendError(res, 400, e.what());
    } catch (const std::exception& e) {
      sendError(res, 500, e.what());
    } catch (...) {
      sendError(res, 500, "unknown failure");
    }
  });

  auto page = [this](const std::string& name) {
    return [this, name](const httplib::Request&, httplib::Response& res) {
      const PageAsset* asset = findPageAsset(name);
      if (!asset) return sendError(res, 404, name + " is not built in");
      std::string content(asset->content);
      if (name == "editor.html") {
        // The page's own files are asked for with the token too.
        for (std::size_t at; (at = content.find(kTokenMark)) != std::string::npos;)
          content.replace(at, kTokenMark.size(), token_);
        res.set_header("Content-Security-Policy",
                       "default-src 'self'; img-src 'self' blob: data:; connect-src 'self'; style-src 'self'; "
                       "script-src 'self'; frame-ancestors 'none'");
      }
      res.set_content(content, std::string(asset->type).c_str());
    };
  };
  s.Get("/", page("editor.html"));
  s.Get("/editor.html", page("editor.html"));
  s.Get("/editor.css", page("editor.css"));
  s.Get("/editor.js", page("editor.js"));

  s.Get("/api/state", [this](const httplib::Request&, httplib::Response& res) {
    std::lock_guard lock(mutex_);
    res.set_content(state_.state().dump(), kJson);
  });
  s.Post(R"(/api/([a-z-]+))", [this](const httplib::Request& req, httplib::Response& res) {
    json body = json::object();
    if (!req.body.empty()) {
      body = json::parse(req.body, nullptr, false);
      if (body.is_discarded() || !body.is_object()) return sendError(res, 400, "the body is not a JSON object");
    }
    std::lock_guard lock(mutex_);
    res.set_content(state_.act(req.matches[1], body).body.dump(), kJson);
  });
  s.Get(R"(/api/photo/(\d+))", [this](const httplib::Request& req, httplib::Response& res) {
    std::string path;
    {
      std::lock_guard lock(mutex_);
      path = state_.photoPath(placeParameter(req, 1));
    }
    int size = kDefaultReducedSide;
    if (req.has_param("size")) {
      const std::string text = req.get_param_value("size");
      if (text.empty() || text.size() > 5 || text.find_first_not_of("0123456789") != std::string::npos)
        return sendError(res, 400, "size must be a number of pixels");
      size = std::stoi(text);
    }
    std::string jpeg;
    const Status st = tiles_.reduced(path, size, jpeg);
    if (!st) return sendError(res, st.message().rfind("Error loading", 0) == 0 ? 404 : 400, st.message());
    res.set_content(jpeg, "image/jpeg");
  });
  s.Get(R"(/api/tile/(\d+)/(\d+)/(\d+)/(\d+))", [this](const httplib::Request& req, httplib::Response& res) {
    std::string path;
    {
      std::lock_guard lock(mutex_);
      path = state_.photoPath(placeParameter(req, 1));
    }
    std::string jpeg;
    const Status st = tiles_.tile(path, placeParameter(req, 2), placeParameter(req, 3), placeParameter(req, 4), jpeg);
    if (!st) return sendError(res, 404, st.message());
    res.set_content(jpeg, "image/jpeg");
  });
}

}  // namespace subsurf::editor
