// The desktop, as the core sees it: a group of small services that state facts and perform deeds.
//
// Units everywhere: screen points with the origin at the top left of the main display and y growing
// downward (`Screen::frame` alone differs); text in UTF-8; time in std::chrono. No call throws.
#pragma once

#include <memory>

#include "platform/accessibility.h"
#include "platform/bundles.h"
#include "platform/clock.h"
#include "platform/images.h"
#include "platform/input_events.h"
#include "platform/main_loop.h"
#include "platform/permissions.h"
#include "platform/processes.h"
#include "platform/random.h"
#include "platform/screen_capture.h"
#include "platform/text_recognizer.h"
#include "platform/window_server.h"
#include "platform/workspace.h"

namespace tarqo {

/// References to the services of one backend, which outlive it.
struct Platform {
  Accessibility& accessibility;
  Workspace& workspace;
  Bundles& bundles;
  Processes& processes;
  Permissions& permissions;
  WindowServer& windowServer;
  ScreenCapture& screenCapture;
  InputEvents& inputEvents;
  TextRecognizer& textRecognizer;
  Images& images;
  Clock& clock;
  Random& random;
};

/// A backend: its services and the loop that its deliveries need.
class Backend {
 public:
  virtual ~Backend() = default;

  [[nodiscard]] virtual Platform platform() = 0;
  [[nodiscard]] virtual MainLoop& mainLoop() = 0;
};

/// The backend of the system that this program was built for. `argv0` is the first command-line
/// argument. Opens no connection yet: what is missing shows when it is used.
[[nodiscard]] std::unique_ptr<Backend> makePlatform(const char* argv0);

}  // namespace tarqo
