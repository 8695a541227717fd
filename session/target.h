// The one application that the helper acts on, the window it acts in, and bringing them to the
// front.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/json.h"
#include "host/grants.h"
#include "platform/platform.h"

namespace tarqo {

/// What a call on the target's accessibility may take.
inline constexpr Duration kMessagingTimeout = std::chrono::milliseconds(300);

/// Worker thread only. What reads accessibility takes one round trip a call, at most
/// `kMessagingTimeout` long each.
class Target {
 public:
  Target(const Platform& platform, Grants& grants) : platform_(platform), grants_(grants) {}

  /// The gate that every operation on the target passes first: the desktop unlocked, the grant in
  /// force, the application alive. Throws "session_locked", "ax_not_trusted", "app_closed".
  Element requireApp();

  /// Makes `running` the target. A window of another process is forgotten.
  void bind(RunningApplication running);

  /// The application last bound, which may have ended since, and its element; null before the
  /// first.
  [[nodiscard]] const std::optional<RunningApplication>& running() const { return running_; }
  [[nodiscard]] const std::optional<Element>& app() const { return app_; }
  /// Throws "app_closed" when nothing was ever bound.
  [[nodiscard]] Pid requirePid() const;

  /// The window that was last connected to or observed; null when there is none. It may be gone.
  [[nodiscard]] const std::optional<Element>& window() const { return window_; }
  void setWindow(std::optional<Element> window) { window_ = std::move(window); }
  /// Null without a window, or when it has no place any more.
  [[nodiscard]] std::optional<Rect> windowFrame();

  /// The site that windows must show; null when any window will do.
  [[nodiscard]] const std::optional<std::string>& boundSite() const { return boundSite_; }
  void setBoundSite(std::optional<std::string> site) { boundSite_ = std::move(site); }

  // The windows; only once an application is bound, which `requireApp` proves.

  /// The windows that show the bound site; empty without one.
  std::vector<Element> siteWindows();
  /// The window to observe: the focused one, else the main one, else the first with a frame; only
  /// windows of the bound site, where there is one. Null when there is none.
  std::optional<Element> primaryWindow();
  /// What the windows show, for a client that misses its site: [{"page", "minimized", "framed"}].
  Json windowsSeen();

  [[nodiscard]] bool isMinimized(const Element& window);
  [[nodiscard]] bool isHidden();

  [[nodiscard]] bool isFrontmost();
  /// Waits up to 1.5 s, then 0.12 s more. Throws "app_closed", "focus_failed".
  void activate();
  /// Waits up to 1.5 s for the target to be in front; never brings it there. Throws "app_closed",
  /// "target_covered".
  void requireFrontmost();
  /// The same without waiting. Called between the keys of one text, since the target may quit or
  /// lose its place.
  void requireStillFrontmost();
  /// Throws "target_covered" when another window of the application gets the keys that are meant
  /// for the target window.
  void requireKeysReachWindow();
  /// Throws "target_busy" while a key would hang the target for good.
  void requireKeysHarmless();

 private:
  std::vector<Element> windows();

  const Platform& platform_;
  Grants& grants_;
  std::optional<RunningApplication> running_;
  std::optional<Element> app_;
  std::optional<Element> window_;
  std::optional<std::string> boundSite_;
};

}  // namespace tarqo
