// The macOS backend put together.

#import <CoreGraphics/CoreGraphics.h>

#include "platform/mac/mac_accessibility.h"
#include "platform/mac/mac_bundles.h"
#include "platform/mac/mac_clock.h"
#include "platform/mac/mac_images.h"
#include "platform/mac/mac_input_events.h"
#include "platform/mac/mac_main_loop.h"
#include "platform/mac/mac_objc.h"
#include "platform/mac/mac_permissions.h"
#include "platform/mac/mac_processes.h"
#include "platform/mac/mac_random.h"
#include "platform/mac/mac_screen_capture.h"
#include "platform/mac/mac_text_recognizer.h"
#include "platform/mac/mac_window_server.h"
#include "platform/mac/mac_workspace.h"
#include "platform/platform.h"

namespace tarqo {
namespace mac {
namespace {

class MacPlatform final : public Backend {
 public:
  Platform platform() override {
    return {accessibility_, workspace_,   bundles_,    processes_, permissions_, windowServer_,
            capture_,       inputEvents_, recognizer_, images_,    clock_,       random_};
  }
  MainLoop& mainLoop() override { return mainLoop_; }

 private:
  MacMainLoop mainLoop_;
  MacClock clock_;
  MacAccessibility accessibility_;
  MacWorkspace workspace_;
  MacBundles bundles_;
  MacProcesses processes_;
  MacPermissions permissions_;
  MacWindowServer windowServer_;
  MacScreenCapture capture_;
  MacInputEvents inputEvents_{
      [this] { return workspace_.frontmostApplication(); },
      [this] { return windowServer_.windows(WindowList::onScreenAboveDesktop); }};
  MacTextRecognizer recognizer_;
  MacImages images_;
  MacRandom random_;
};

/// What a program that is no NSApplication has to do itself before the frameworks serve it.
void prepareFrameworks() {
  // ScreenCaptureKit aborts in a process that has not yet spoken to the window server.
  static_cast<void>(CGMainDisplayID());
  // Foundation takes its locks only once a thread of its own has begun; the worker is none.
  [[[NSThread alloc] initWithBlock:^{
  }] start];
}

}  // namespace
}  // namespace mac

std::unique_ptr<Backend> makePlatform(const char* /*argv0*/) {
  mac::guarded([] { mac::prepareFrameworks(); });
  return std::make_unique<mac::MacPlatform>();
}

}  // namespace tarqo
