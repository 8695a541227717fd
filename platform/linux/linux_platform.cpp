// The Linux backend put together: AT-SPI and X11, processes, desktop entries, libpng.

#include "platform/linux/apps/applications.h"
#include "platform/linux/apps/linux_bundles.h"
#include "platform/linux/apps/linux_processes.h"
#include "platform/linux/apps/linux_workspace.h"
#include "platform/linux/atspi/linux_accessibility.h"
#include "platform/linux/atspi/read/notifications.h"
#include "platform/linux/capture/linux_screen_capture.h"
#include "platform/linux/input/linux_input_events.h"
#include "platform/linux/linux_clock.h"
#include "platform/linux/linux_main_loop.h"
#include "platform/linux/linux_permissions.h"
#include "platform/linux/linux_random.h"
#include "platform/linux/linux_window_server.h"
#include "platform/linux/x11/pictured_popups.h"
#include "platform/linux/x11/window_locator.h"
#include "platform/platform.h"
#include "platform/png/png_images.h"
#include "platform/tesseract/tesseract_text_recognizer.h"

namespace tarqo {
namespace lnx {
namespace {

class LinuxPlatform final : public Backend {
 public:
  Platform platform() override {
    return {accessibility_, workspace_,   bundles_,    processes_, permissions_, windowServer_,
            capture_,       inputEvents_, recognizer_, images_,    clock_,       random_};
  }
  MainLoop& mainLoop() override { return mainLoop_; }

 private:
  LinuxClock clock_;
  x11::Display display_{clock_};
  apps::Applications applications_{display_, clock_};
  x11::DisplayWindowLocator locator_{display_};
  LinuxMainLoop mainLoop_{clock_};
  atspi::Notifications notifications_{mainLoop_, clock_};
  input::LinuxInputEvents inputEvents_{display_, clock_};
  x11::PicturedPopups popups_;
  atspi::LinuxAccessibility accessibility_{locator_, notifications_, clock_, &inputEvents_,
                                           &popups_};
  apps::LinuxWorkspace workspace_{applications_};
  apps::LinuxBundles bundles_{applications_, clock_};
  apps::LinuxProcesses processes_;
  capture::LinuxScreenCapture capture_{clock_, &popups_};
  LinuxPermissions permissions_{capture_, clock_};
  LinuxWindowServer windowServer_{applications_};
  ocr::TesseractTextRecognizer recognizer_{clock_};
  png::PngImages images_;
  LinuxRandom random_;
};

}  // namespace
}  // namespace lnx

std::unique_ptr<Backend> makePlatform(const char* /*argv0*/) {
  return std::make_unique<lnx::LinuxPlatform>();
}

}  // namespace tarqo
