#include "host/grants.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "base/timed.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr Duration kShareableWindowsLimit = 4s;
constexpr Duration kCompletionSlice = 10ms;
constexpr Duration kProbeImageLimit = 2s;
constexpr std::size_t kProbedWindows = 3;
constexpr double kSmallestProbedSide = 16;

// The grants as responses name them.
constexpr std::string_view kAccessibilityPermission = "accessibility";
constexpr std::string_view kScreenPermission = "screen";

bool isLargeEnough(const Rect& frame) {
  return frame.extentX() >= kSmallestProbedSide && frame.extentY() >= kSmallestProbedSide;
}

struct ProbedWindow {
  WindowNumber number = 0;
  double area = 0;
  bool ordinary = false;
};

// Ordinary windows first, large ones first: those are sure to have pixels.
std::vector<ProbedWindow> windowsToProbe(const Platform& platform) {
  const Pid own = platform.processes.ownPid();
  std::vector<ProbedWindow> probed;
  for (const WindowInfo& window : platform.windowServer.windows(WindowList::onScreen)) {
    if (window.ownerPid && *window.ownerPid != own && window.number && window.bounds &&
        isLargeEnough(*window.bounds)) {
      probed.push_back({*window.number, window.bounds->area(), window.layer.value_or(0) == 0});
    }
  }
  std::stable_sort(probed.begin(), probed.end(), [](const ProbedWindow& a, const ProbedWindow& b) {
    return a.ordinary != b.ordinary ? a.ordinary : a.area > b.area;
  });
  probed.resize(std::min(probed.size(), kProbedWindows));
  return probed;
}

}  // namespace

Failure Grants::permissionFailure(const FailureText& text,
                                  std::initializer_list<std::string_view> fillings,
                                  std::string_view permission) {
  return Failure(text, fillings, {{"permission", permission}, {"host", hosts_.host().json()}});
}

void Grants::requireAccessibility() {
  Permissions& permissions = platform_.permissions;
  if (permissions.accessibilityTrusted()) {
    return;
  }
  if (!accessibilityPrompted_) {
    accessibilityPrompted_ = true;
    permissions.promptForAccessibility();
    if (permissions.accessibilityTrusted()) {
      return;
    }
  }
  if (const auto obstacle = permissions.accessibilityObstacle()) {
    throw permissionFailure(failures::kAccessibilityObstacle, {*obstacle},
                            kAccessibilityPermission);
  }
  const std::string host = hosts_.host().name;
  throw permissionFailure(failures::kAccessibilityNotGranted, {host, host},
                          kAccessibilityPermission);
}

void Grants::requireScreenCapture() {
  Permissions& permissions = platform_.permissions;
  if (permissions.captureAccess()) {
    return;
  }
  if (!screenCapturePrompted_) {
    screenCapturePrompted_ = true;
    if (permissions.requestCaptureAccess()) {
      return;
    }
  }
  if (const auto obstacle = permissions.captureObstacle()) {
    throw permissionFailure(failures::kCaptureObstacle, {*obstacle}, kScreenPermission);
  }
  const std::string host = hosts_.host().name;
  throw permissionFailure(failures::kCaptureNotGranted, {host, host}, kScreenPermission);
}

Failure Grants::screenCaptureStale() {
  const std::string host = hosts_.host().name;
  return permissionFailure(failures::kCaptureStale, {host, host}, kScreenPermission);
}

bool Grants::screenCaptureWorks() {
  if (!screenCaptureProbe_) {
    if (platform_.screenCapture.listsShareableWindows()) {
      screenCaptureProbe_ = probeShareableWindows();
    } else {
      screenCaptureProbe_ = probeWindowImages();
    }
  }
  // Nothing to look at proves nothing, so that is not remembered.
  return screenCaptureProbe_ ? *screenCaptureProbe_ : platform_.permissions.captureAccess();
}

// A grant without effect hides the titles of other applications' windows.
bool Grants::probeShareableWindows() {
  using Listing = std::optional<std::vector<ShareableWindow>>;
  const auto box = std::make_shared<CompletionBox<Listing>>();
  Clock& clock = platform_.clock;
  const Instant deadline = clock.now() + kShareableWindowsLimit;
  platform_.screenCapture.shareableWindows(
      [box](Listing listing) { box->fill(std::move(listing)); });
  while (!box->filled() && clock.now() < deadline) {
    clock.sleep(std::min<Duration>(kCompletionSlice, deadline - clock.now()));
  }
  if (!box->filled()) {
    return false;
  }
  const Listing listing = box->take();
  if (!listing) {
    return false;
  }
  bool any = false;
  for (const ShareableWindow& window : *listing) {
    if (window.ownerPid != platform_.processes.ownPid() && isLargeEnough(window.frame)) {
      if (!window.title.empty()) {
        return true;
      }
      any = true;
    }
  }
  return !any && platform_.permissions.captureAccess();
}

// A grant without effect gives no pixels of other applications' windows.
std::optional<bool> Grants::probeWindowImages() {
  const std::vector<ProbedWindow> probed = windowsToProbe(platform_);
  if (probed.empty()) {
    return std::nullopt;
  }
  ScreenCapture& capture = platform_.screenCapture;
  return std::any_of(probed.begin(), probed.end(), [&](const ProbedWindow& window) {
    const auto image = timed(platform_.clock, kProbeImageLimit, [&capture, number = window.number] {
      return capture.windowImage(number, WindowImageResolution::nominal);
    });
    return image && *image;
  });
}

}  // namespace tarqo
