// From one request line to one response line.
#pragma once

#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "base/json.h"
#include "host/grants.h"
#include "host/responsible_host.h"
#include "session/session.h"

namespace tarqo {

/// What became of a request. `response` has no line end; it is null when there is nothing to write.
struct Served {
  std::optional<std::string> response;
  bool close = false;        ///< The client asked for the end of the process.
  bool outOfMemory = false;  ///< Not even the error could be written down.
};

/// The "error" of a response: the code, message and detail of a `Failure`, "native_error" with its
/// own words for anything else.
[[nodiscard]] Json errorObject(const std::exception& error);

/// The response to a request whose id is not known.
[[nodiscard]] std::string errorLine(const FailureText& text);

/// Owns the one session and what it remembers of host and grants. Worker thread only; a request may
/// take as long as the waits of its method.
class Server {
 public:
  explicit Server(const Platform& platform);

  /// Serves a request line of any bytes, without its line end. Never throws.
  [[nodiscard]] Served serve(std::string_view line) noexcept;

 private:
  Served answer(std::string_view line, Json& id);
  Json result(const std::string& method, const Json& args);

  Platform platform_;
  HostFinder hosts_;
  Grants grants_;
  Session session_;
};

}  // namespace tarqo
