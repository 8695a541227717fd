#include "observe/capture.h"

#include <algorithm>
#include <memory>

#include "base/failure.h"
#include "base/timed.h"
#include "observe/placement.h"
#include "observe/screens.h"
#include "session/obstacle.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr Duration kSettlingLimit = 1200ms;
constexpr Duration kSettlingSlice = 150ms;
constexpr Duration kAfterActivation = 250ms;
constexpr Duration kWindowImageLimit = 3s;
constexpr Duration kToolLimit = 5s;
constexpr Duration kToolSlice = 10ms;
constexpr Duration kToolEndLimit = 200ms;
constexpr Duration kDisplayLimit = 5s;
constexpr Duration kDisplaySlice = 10ms;

constexpr const char* kCaptureTool = "/usr/sbin/screencapture";

/// Removes the file that a capture tool may have written, whichever way out is taken.
class TemporaryFile {
 public:
  TemporaryFile(Processes& processes, std::string path)
      : processes_(processes), path_(std::move(path)) {}
  ~TemporaryFile() { processes_.removeFile(path_); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  Processes& processes_;
  std::string path_;
};

void waitForEnd(Clock& clock, Child& child, Duration limit) {
  const Instant deadline = clock.now() + limit;
  while (child.running() && clock.now() < deadline) {
    clock.sleep(kToolSlice);
  }
}

// A window that has just come to the front may still be on its way to its place. A covered one is
// brought forward, once.
WindowPlacement settledPlacement(Session& session, const Rect& bounds) {
  using Kind = WindowPlacement::Kind;
  Clock& clock = session.platform.clock;
  const Instant deadline = clock.now() + kSettlingLimit;
  bool broughtForward = false;
  WindowPlacement placement = windowPlacement(session.platform, session.target, bounds);
  while (placement.kind != Kind::exact) {
    if (placement.kind == Kind::covered && !broughtForward) {
      broughtForward = true;
      (void)session.target.requireApp();
      session.target.activate();
      clock.runLoopFor(kAfterActivation);
    } else if (session.target.isFrontmost() && clock.now() < deadline) {
      clock.runLoopFor(kSettlingSlice);
    } else {
      break;
    }
    placement = windowPlacement(session.platform, session.target, bounds);
  }
  return placement;
}

std::optional<Image> captureWindowImage(const Platform& platform, WindowNumber window) {
  Processes& processes = platform.processes;
  Clock& clock = platform.clock;
  const auto random = static_cast<std::uint32_t>(platform.random.next());
  const TemporaryFile file(
      processes, processes.temporaryFolder() + "/tarqo-ax-" + std::to_string(processes.ownPid()) +
                     "-" + std::to_string(window) + "-" + std::to_string(random) + ".png");
  const auto child = processes.start(
      kCaptureTool, {"-x", "-o", "-l" + std::to_string(window), "-t", "png", file.path()});
  if (!child) {
    return std::nullopt;
  }
  waitForEnd(clock, *child, kToolLimit);
  if (child->running()) {
    child->terminate();
    // Only then its file is removed: until it is gone, it may still write one.
    waitForEnd(clock, *child, kToolEndLimit);
    return std::nullopt;
  }
  if (child->exitStatus() != 0) {
    return std::nullopt;
  }
  const auto bytes = processes.readFile(file.path());
  return bytes ? platform.images.decodePng(*bytes) : std::nullopt;
}

std::optional<Image> captureDisplay(const Platform& platform, const Rect& bounds) {
  Clock& clock = platform.clock;
  const std::vector<Screen> screens = platform.windowServer.screens();
  const auto screen = std::find_if(screens.begin(), screens.end(), [&](const Screen& candidate) {
    return topLeftFrame(candidate, screens.front()).contains(bounds.center());
  });
  if (screen == screens.end()) {
    return std::nullopt;
  }
  const auto box = std::make_shared<CompletionBox<std::optional<Image>>>();
  const Instant deadline = clock.now() + kDisplayLimit;
  platform.screenCapture.displayRegion(
      *screen, bounds, [box](std::optional<Image> image) { box->fill(std::move(image)); });
  while (!box->filled() && clock.now() < deadline) {
    clock.sleep(kDisplaySlice);
  }
  return box->filled() ? box->take() : std::nullopt;
}

std::optional<Image> captureWith(const Platform& platform, CaptureTechnique technique,
                                 WindowNumber window, const Rect& bounds) {
  switch (technique) {
    case CaptureTechnique::windowImage:
      return timed(platform.clock, kWindowImageLimit,
                   [&capture = platform.screenCapture, window] {
                     return capture.windowImage(window, WindowImageResolution::best);
                   })
          .value_or(std::nullopt);
    case CaptureTechnique::commandLine:
      return captureWindowImage(platform, window);
    case CaptureTechnique::displayRegion:
      return captureDisplay(platform, bounds);
  }
  return std::nullopt;
}

}  // namespace

WindowImage captureWindow(Session& session, const Rect& bounds) {
  using Kind = WindowPlacement::Kind;
  (void)session.target.requirePid();
  if (!session.grants.screenCaptureWorks()) {
    throw session.grants.screenCaptureStale();
  }
  const WindowPlacement placement = settledPlacement(session, bounds);
  switch (placement.kind) {
    case Kind::covered:
      throw naming(Failure(failures::kWindowCovered), placement.cover);
    case Kind::missing:
      fail(failures::kWindowNotVisible);
    case Kind::exact:
      break;
  }
  for (const CaptureTechnique technique : session.platform.screenCapture.techniques()) {
    if (auto image = captureWith(session.platform, technique, placement.number, bounds)) {
      return {std::move(*image), bounds, session.timestampNow()};
    }
  }
  fail(failures::kWindowCaptureFailed);
}

}  // namespace tarqo
