// The helper's server on the real accessibility backend, with one recorded or made-up application
// for a desktop: the bus is scripted, the windows are given, everything else is simulated.
#pragma once

#include <atomic>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/atspi/linux_accessibility.h"
#include "platform/linux/linux_clock.h"
#include "platform/linux/linux_main_loop.h"
#include "platform/sim/sim_desktop.h"
#include "server/server.h"
#include "session/session.h"
#include "tests/platform/linux/atspi/scripted_bus.h"

namespace tarqo::lnx::atspi {

/// Windows that stay where they are.
class FixedWindows final : public x11::WindowLocator {
 public:
  explicit FixedWindows(std::vector<x11::LocatedWindow> windows = {})
      : windows_(std::move(windows)) {}

  std::vector<x11::LocatedWindow> windowsOf(Pid /*pid*/) override { return windows_; }
  std::optional<x11::LocatedWindow> windowAt(Point point) override {
    for (const x11::LocatedWindow& window : windows_) {
      if (window.bounds.contains(point)) {
        return window;
      }
    }
    return std::nullopt;
  }
  bool raise(WindowNumber /*window*/) override { return false; }
  bool awaitEventsHandled(WindowNumber /*window*/, Duration /*patience*/) override { return true; }
  bool setMinimized(WindowNumber /*window*/, bool /*minimized*/) override { return false; }

 private:
  std::vector<x11::LocatedWindow> windows_;
};

class RecordedDesktop {
 public:
  static constexpr const char* kBundleId = "com.example.Recorded";

  /// An application with these windows, in a process that is simulated.
  RecordedDesktop(std::vector<x11::LocatedWindow> windows, ScriptedBus::Answer answer)
      : bus_(pid(), std::move(answer)), windows_(owned(std::move(windows))) {
    thread_ = std::thread([this] {
      while (!over_) {
        loop_.turn(std::chrono::milliseconds(5));
      }
    });
  }
  RecordedDesktop(const RecordedDesktop&) = delete;
  RecordedDesktop& operator=(const RecordedDesktop&) = delete;
  ~RecordedDesktop() {
    over_ = true;
    loop_.post([] {});
    thread_.join();
  }

  /// The whole response to a request.
  Json call(const std::string& method, const Json& args) {
    const Served served = server_.serve(Json{{"id", 1}, {"method", method}, {"args", args}}.dump());
    return served.response ? Json::parse(*served.response) : Json();
  }

  /// Connects, and lists the nodes of an observation; null when either fails, `error` says why.
  Json observe(const Json& args = Json::object()) {
    Json response = call("connect", {{"bundleId", kBundleId}, {"launch", false}});
    if (response.contains("result")) {
      Json wanted = {{"image", false}, {"ocr", false}, {"states", true}};
      wanted.update(args);
      response = call("observe", wanted);
    }
    if (!response.contains("result")) {
      error = response.dump();
      return {};
    }
    return response["result"]["snapshot"];
  }

  [[nodiscard]] Pid pid() { return desktop_.app(kBundleId).pid(); }
  [[nodiscard]] ScriptedBus& bus() { return bus_; }
  [[nodiscard]] LinuxAccessibility& accessibility() { return accessibility_; }

  std::string error;

 private:
  [[nodiscard]] std::vector<x11::LocatedWindow> owned(std::vector<x11::LocatedWindow> windows) {
    for (x11::LocatedWindow& window : windows) {
      window.pid = pid();
    }
    return windows;
  }

  [[nodiscard]] Platform platform() {
    const Platform simulated = desktop_.platform();
    return {accessibility_,
            simulated.workspace,
            simulated.bundles,
            simulated.processes,
            simulated.permissions,
            simulated.windowServer,
            simulated.screenCapture,
            simulated.inputEvents,
            simulated.textRecognizer,
            simulated.images,
            clock_,
            simulated.random};
  }

  sim::Desktop desktop_;
  ScriptedBus bus_;
  FixedWindows windows_;
  LinuxClock clock_;
  LinuxMainLoop loop_{clock_};
  Notifications notifications_{loop_, clock_};
  LinuxAccessibility accessibility_{windows_, notifications_, clock_};
  Server server_{platform()};
  std::atomic<bool> over_ = false;
  std::thread thread_;
};

}  // namespace tarqo::lnx::atspi
