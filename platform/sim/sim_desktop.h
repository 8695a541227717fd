// A whole desktop in memory: every service of the platform over one scene that a test builds in
// words, with a clock that moves only when somebody waits.
//
//   sim::Desktop desktop;
//   auto& notes = desktop.app("com.example.Notes");
//   auto& window = notes.window({100, 80, 800, 600}, "Notes");
//   auto& save = window.button("Save");
//   save.action("AXPress").announces("AXValueChanged", 200ms);
//   desktop.after(300ms, [&] { window.moveTo({140, 80}); });
//   ... drive desktop.platform() ...
//   EXPECT_EQ(desktop.posted(), (Lines{"move 180,92", "down(1) 180,92", "up(1) 180,92"}));
//
// Everything is granted, readable and prompt until the scene says otherwise: facts and faults are
// the public members of the services and of the applications. Nothing happens by real time, by
// chance, or on two threads at once; a background body is suspended while anybody else is at work.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/platform.h"
#include "platform/sim/sim_accessibility.h"
#include "platform/sim/sim_bundles.h"
#include "platform/sim/sim_capture.h"
#include "platform/sim/sim_images.h"
#include "platform/sim/sim_input.h"
#include "platform/sim/sim_permissions.h"
#include "platform/sim/sim_processes.h"
#include "platform/sim/sim_workspace.h"
#include "platform/sim/sim_world.h"

namespace tarqo::sim {

using Lines = std::vector<std::string>;

/// Numbers that look random and are the same in every run.
class SeededRandom final : public Random {
 public:
  [[nodiscard]] std::uint64_t next() override;

 private:
  std::uint64_t count_ = 0;
};

/// Parks the calling thread: notifications are delivered by whoever lets virtual time pass.
class ParkedLoop final : public MainLoop {
 public:
  [[noreturn]] void run() override;
};

class Desktop final : public Backend {
 public:
  Desktop() = default;
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;
  ~Desktop() override;

  [[nodiscard]] Platform platform() override;
  [[nodiscard]] MainLoop& mainLoop() override { return mainLoop_; }

  /// The running application of that identifier, started now (with its bundle installed in
  /// /Applications, named after the identifier's last part) if there is none. The first one is in
  /// front.
  App& app(const std::string& bundleId);
  /// One more process of the same bundle.
  App& anotherApp(const std::string& bundleId);
  /// An application that is installed and does not run.
  InstalledBundle& installed(const std::string& bundleId);
  /// Puts the helper below a running application: that one, a shell, the helper.
  App& hostedBy(const std::string& bundleId, const std::string& name);
  /// The system's capture tool: writes the PNG of the window named by "-l<number>" to its last
  /// argument. Also offers it as the first capture technique.
  Program& captureTool();

  void after(Duration delay, std::function<void()> deed) { clock().after(delay, std::move(deed)); }
  void every(Duration period, int times, const std::function<void()>& deed);
  /// Lets time pass.
  void run(Duration duration) { clock().advance(duration); }

  /// The input events posted so far, without and with their milliseconds; see `EventLog`.
  [[nodiscard]] Lines posted() const { return world_.eventLog.lines(Topic::input); }
  [[nodiscard]] Lines postedAt() const { return world_.eventLog.timedLines(Topic::input); }
  [[nodiscard]] EventLog& eventLog() { return world_.eventLog; }

  [[nodiscard]] VirtualClock& clock() { return world_.clock; }
  [[nodiscard]] WindowServerService& windowServer() { return world_.windows; }
  [[nodiscard]] AccessibilityService& accessibility() { return accessibility_; }
  [[nodiscard]] WorkspaceService& workspace() { return workspace_; }
  [[nodiscard]] BundlesService& bundles() { return bundles_; }
  [[nodiscard]] ProcessesService& processes() { return processes_; }
  [[nodiscard]] PermissionsService& permissions() { return permissions_; }
  [[nodiscard]] ScreenCaptureService& capture() { return capture_; }
  [[nodiscard]] InputEventsService& input() { return input_; }
  [[nodiscard]] TextRecognizerService& recognizer() { return recognizer_; }
  [[nodiscard]] ImagesService& images() { return images_; }
  [[nodiscard]] App* frontmost() const { return world_.frontmost; }

 private:
  World world_;
  AccessibilityService accessibility_{world_};
  WorkspaceService workspace_{world_};
  BundlesService bundles_{world_};
  ProcessesService processes_{world_};
  PermissionsService permissions_{world_.eventLog};
  ScreenCaptureService capture_{world_};
  InputEventsService input_{world_, accessibility_};
  TextRecognizerService recognizer_{world_.clock};
  ImagesService images_;
  SeededRandom random_;
  ParkedLoop mainLoop_;
};

}  // namespace tarqo::sim
