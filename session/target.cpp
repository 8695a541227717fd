#include "session/target.h"

#include <algorithm>
#include <array>
#include <utility>

#include "ax/attribute_access.h"
#include "base/failure.h"
#include "base/waiting.h"
#include "session/obstacle.h"
#include "session/site.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr Duration kActivationLimit = 1500ms;
constexpr Duration kActivationSlice = 30ms;
constexpr Duration kSwitchFinishes = 120ms;
constexpr Duration kForegroundLimit = 1500ms;
constexpr Duration kForegroundSlice = 50ms;

constexpr std::array<std::string_view, 2> kPreferredWindows{"AXFocusedWindow", "AXMainWindow"};

// What kind of page a window shows. Its address stays private: the client learns the bound site or
// the kind, nothing of another page.
std::string pageClass(const std::string& address, const std::optional<std::string>& boundSite) {
  const std::optional<std::string> site = siteOf(address);
  if (!site) {
    return isLocalFile(address) ? "file" : "none";
  }
  if (site == boundSite) {
    return *site;
  }
  if (site->starts_with("http://") || site->starts_with("https://")) {
    return "another site";
  }
  return site->substr(0, site->find(':'));
}

}  // namespace

Element Target::requireApp() {
  // The desktop first: a locked screen is the reason to report even when a grant is missing too.
  const LoginSession login = platform_.windowServer.loginSession();
  if (login.locked == true || login.onConsole == false) {
    fail(failures::kSessionLocked);
  }
  grants_.requireAccessibility();
  if (!app_ || !running_ || platform_.workspace.isTerminated(running_->id)) {
    fail(failures::kAppClosedReconnect);
  }
  return *app_;
}

void Target::bind(RunningApplication running) {
  running_ = std::move(running);
  app_ = platform_.accessibility.application(running_->id.pid, kMessagingTimeout);
  // A window of another process would be taken for the place to act in.
  if (window_ && platform_.accessibility.pidOf(*window_) != running_->id.pid) {
    window_.reset();
  }
}

Pid Target::requirePid() const {
  if (!running_) {
    fail(failures::kAppClosed);
  }
  return running_->id.pid;
}

std::optional<Rect> Target::windowFrame() {
  return window_ ? frame(platform_.accessibility, *window_) : std::nullopt;
}

std::vector<Element> Target::windows() {
  return elementList(attribute(platform_.accessibility, *app_, "AXWindows"));
}

std::vector<Element> Target::siteWindows() {
  std::vector<Element> showing;
  if (!boundSite_) {
    return showing;
  }
  Accessibility& ax = platform_.accessibility;
  for (const Element& window : windows()) {
    if (frame(ax, window) && siteOf(text(attribute(ax, window, "AXDocument"))) == boundSite_) {
      showing.push_back(window);
    }
  }
  return showing;
}

Json Target::windowsSeen() {
  Accessibility& ax = platform_.accessibility;
  Json seen = Json::array();
  for (const Element& window : windows()) {
    const std::string address = text(attribute(ax, window, "AXDocument"));
    Json summary = {{"page", pageClass(address, boundSite_)}};
    if (isMinimized(window)) {
      summary["minimized"] = true;
    }
    if (!frame(ax, window)) {
      summary["framed"] = false;
    }
    seen.push_back(std::move(summary));
  }
  return seen;
}

std::optional<Element> Target::primaryWindow() {
  Accessibility& ax = platform_.accessibility;
  const auto isUsable = [&](const Element& window) { return frame(ax, window).has_value(); };

  if (boundSite_) {
    const std::vector<Element> showing = siteWindows();
    for (const std::string_view name : kPreferredWindows) {
      auto window = elementValue(attribute(ax, *app_, name));
      if (window && std::find(showing.begin(), showing.end(), *window) != showing.end()) {
        return window;
      }
    }
    return showing.empty() ? std::nullopt : std::optional(showing.front());
  }
  for (const std::string_view name : kPreferredWindows) {
    auto window = elementValue(attribute(ax, *app_, name));
    if (window && isUsable(*window)) {
      return window;
    }
  }
  const std::vector<Element> all = windows();
  const auto found = std::find_if(all.begin(), all.end(), isUsable);
  return found == all.end() ? std::nullopt : std::optional(*found);
}

bool Target::isMinimized(const Element& window) {
  return booleanValue(attribute(platform_.accessibility, window, "AXMinimized")).value_or(false);
}

bool Target::isHidden() {
  if (running_ && platform_.workspace.isHidden(running_->id)) {
    return true;
  }
  return app_ &&
         booleanValue(attribute(platform_.accessibility, *app_, "AXHidden")).value_or(false);
}

bool Target::isFrontmost() {
  return running_ && platform_.workspace.frontmostApplication() == running_->id.pid;
}

void Target::activate() {
  if (!running_ || !app_) {
    fail(failures::kAppClosed);
  }
  Clock& clock = platform_.clock;
  platform_.workspace.unhide(running_->id);
  (void)platform_.accessibility.set(*app_, "AXFrontmost", Value{true});
  platform_.workspace.activate(running_->id);
  if (window_) {
    (void)platform_.accessibility.perform(*window_, "AXRaise");
  }
  if (!runLoopUntil(clock, clock.now() + kActivationLimit, kActivationSlice,
                    [&] { return isFrontmost(); })) {
    throw naming(Failure(failures::kFocusFailed), windowInFront(platform_, running_->id.pid));
  }
  clock.runLoopFor(kSwitchFinishes);
}

void Target::requireFrontmost() {
  (void)requirePid();
  Clock& clock = platform_.clock;
  if (!runLoopUntil(clock, clock.now() + kForegroundLimit, kForegroundSlice,
                    [&] { return isFrontmost(); })) {
    throw naming(Failure(failures::kNotFrontmost), windowInFront(platform_, running_->id.pid));
  }
}

void Target::requireStillFrontmost() {
  (void)requirePid();
  if (!isFrontmost()) {
    throw naming(Failure(failures::kNotFrontmost), windowInFront(platform_, running_->id.pid));
  }
}

void Target::requireKeysReachWindow() {
  if (!window_) {
    return;
  }
  Accessibility& ax = platform_.accessibility;
  if (const std::optional<Element> other = ax.otherKeyWindow(*window_)) {
    const std::string title = text(attribute(ax, *other, "AXTitle"));
    fail(failures::kKeysGoToOtherWindow, {title.empty() ? "(no title)" : "\"" + title + "\""});
  }
}

void Target::requireKeysHarmless() {
  if (platform_.accessibility.isEndangeredByKeys(requirePid())) {
    fail(failures::kKeysHarmful);
  }
}

}  // namespace tarqo
