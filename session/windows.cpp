// Choosing the target's window and bringing it to the front.

#include <algorithm>

#include "base/completion_box.h"
#include "base/failure.h"
#include "base/waiting.h"
#include "session/session.h"
#include "session/site.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr Duration kReopenLimit = 5s;
constexpr Duration kReopenSlice = 20ms;
constexpr Duration kReopenedWindowLimit = 2s;
constexpr Duration kReopenedWindowSlice = 50ms;
constexpr Duration kActivationLimit = 1500ms;
constexpr Duration kActivationSlice = 30ms;
constexpr Duration kSwitchFinishes = 120ms;

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

std::vector<Element> Session::windowsOf(const Element& app) {
  return elementList(attribute(platform_.accessibility, app, "AXWindows"));
}

std::vector<Element> Session::siteWindows(const Element& app) {
  std::vector<Element> showing;
  if (!boundSite_) {
    return showing;
  }
  Accessibility& ax = platform_.accessibility;
  for (const Element& window : windowsOf(app)) {
    if (frame(ax, window) && siteOf(text(attribute(ax, window, "AXDocument"))) == boundSite_) {
      showing.push_back(window);
    }
  }
  return showing;
}

Json Session::windowsSeen(const Element& app) {
  Accessibility& ax = platform_.accessibility;
  Json seen = Json::array();
  for (const Element& window : windowsOf(app)) {
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

std::optional<Element> Session::primaryWindow(const Element& app) {
  Accessibility& ax = platform_.accessibility;
  const auto isUsable = [&](const Element& window) { return frame(ax, window).has_value(); };

  if (boundSite_) {
    const std::vector<Element> showing = siteWindows(app);
    for (const std::string_view name : kPreferredWindows) {
      auto window = elementValue(attribute(ax, app, name));
      if (window && std::find(showing.begin(), showing.end(), *window) != showing.end()) {
        return window;
      }
    }
    return showing.empty() ? std::nullopt : std::optional(showing.front());
  }
  for (const std::string_view name : kPreferredWindows) {
    auto window = elementValue(attribute(ax, app, name));
    if (window && isUsable(*window)) {
      return window;
    }
  }
  const std::vector<Element> windows = windowsOf(app);
  const auto found = std::find_if(windows.begin(), windows.end(), isUsable);
  return found == windows.end() ? std::nullopt : std::optional(*found);
}

std::optional<Element> Session::reopenWindow(const std::string& bundleId, const Element& app) {
  const auto path = platform_.bundles.pathForIdentifier(bundleId);
  if (!path) {
    return std::nullopt;
  }
  Clock& clock = platform_.clock;
  const auto box = std::make_shared<CompletionBox<bool>>();
  platform_.bundles.open(*path, true, [box](const OpenedApplication&) { box->fill(true); });
  // A completion that never comes is no reason not to look for the window.
  (void)turnUntil(clock, clock.now() + kReopenLimit, kReopenSlice, [&] { return box->filled(); });

  std::optional<Element> window;
  (void)turnUntil(clock, clock.now() + kReopenedWindowLimit, kReopenedWindowSlice, [&] {
    window = primaryWindow(app);
    return window.has_value();
  });
  return window;
}

bool Session::isFrontmost() {
  return running_ && platform_.workspace.frontmostApplication() == running_->id.pid;
}

void Session::activate(const Element& app) {
  if (!running_) {
    fail(failures::kAppClosed);
  }
  Clock& clock = platform_.clock;
  platform_.workspace.unhide(running_->id);
  (void)platform_.accessibility.set(app, "AXFrontmost", Value{true});
  platform_.workspace.activate(running_->id);
  if (window_) {
    (void)platform_.accessibility.perform(*window_, "AXRaise");
  }
  if (!turnUntil(clock, clock.now() + kActivationLimit, kActivationSlice,
                 [&] { return isFrontmost(); })) {
    fail(failures::kFocusFailed);
  }
  clock.turn(kSwitchFinishes);
}

}  // namespace tarqo
