// A simulated desktop with the helper's server on it: requests go in as JSON, responses come out as
// JSON.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/sim/sim_desktop.h"
#include "server/server.h"

namespace tarqo {

class Scene : public testing::Test {
 protected:
  /// The whole response to a request line, parsed; null when nothing was written.
  Json serveLine(const std::string& line);

  /// The whole response to a request.
  Json call(const std::string& method, const Json& args = Json::object());

  /// The "result" of a request; the test fails when it is an error.
  Json result(const std::string& method, const Json& args = Json::object());

  /// The "error" of a request; the test fails when it has a result.
  Json error(const std::string& method, const Json& args = Json::object());

  /// The code and the message of a request's error, as "code: message".
  std::string failure(const std::string& method, const Json& args = Json::object());

  /// Milliseconds of virtual time that `deed` took.
  template <typename Deed>
  double millisecondsOf(Deed deed) {
    const Instant start = desktop.clock().now();
    deed();
    return std::chrono::duration<double, std::milli>(desktop.clock().now() - start).count();
  }

  /// The node of an observation that has this name; null when there is none.
  static Json nodeNamed(const Json& observation, const std::string& name);

  sim::Desktop desktop;
  Platform platform = desktop.platform();
  Server server{platform};
};

/// A desktop on which "com.example.Notes" shows one window with a button "Save", a text field, and
/// a label, in front, connected.
class ConnectedScene : public Scene {
 protected:
  void SetUp() override;

  Json observe(const Json& args = {{"image", false}}) { return result("observe", args); }
  std::string idOf(const std::string& name, const Json& args = {{"image", false}});

  sim::App& notes = desktop.app("com.example.Notes");
  sim::Window& window = notes.window({100, 80, 800, 600}, "Notes");
  sim::Node& save = window.button("Save").at({200, 200, 80, 24});
  sim::Node& field = window.textField("hello").at({200, 240, 200, 24});
  sim::Node& label = window.label("Ready").at({200, 280, 200, 20});
};

}  // namespace tarqo
