// Binding the session to a target application.

#include <algorithm>

#include "base/completion_box.h"
#include "base/failure.h"
#include "base/waiting.h"
#include "platform/unicode.h"
#include "session/session.h"
#include "session/site.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr Duration kLaunchLimit = 10s;
constexpr Duration kLaunchSlice = 20ms;
constexpr Duration kSiteWindowLimit = 8s;
constexpr Duration kSiteWindowSlice = 200ms;
constexpr std::size_t kMaxVersionLength = 80;

// A version text is shown to the client as it is, so it must look like one.
bool isVersionText(const std::string& text) {
  return !text.empty() && unicode::clusterCount(text, kMaxVersionLength + 1) <= kMaxVersionLength &&
         unicode::trimmed(text) == text && !unicode::hasControlOrFormat(text);
}

}  // namespace

Json Session::connect(const Json& args) {
  grants_.requireAccessibility();
  const std::string bundleId = textMember(args, "bundleId").value_or("");
  if (bundleId.empty()) {
    fail(failures::kBundleIdRequired);
  }
  const bool mayLaunch = booleanMember(args, "launch").value_or(true);

  const auto candidates = platform_.workspace.runningApplications(bundleId);
  if (candidates.empty() && !mayLaunch) {
    fail("app_not_running", "Application is not running: " + bundleId);
  }
  running_ = candidates.empty() ? launch(bundleId) : candidates.front();
  app_ = platform_.accessibility.application(running_->id.pid, kMessagingTimeout);
  nodes_.clear();
  // What belongs to another process says nothing of this one: its observer would let presses pass
  // for unanswered, its window be taken for the place to act in. Even when binding fails below.
  observer_.reset();
  if (window_ && platform_.accessibility.pidOf(*window_) != running_->id.pid) {
    window_.reset();
  }

  bindSite(bundleId, args, mayLaunch);
  listen(running_->id.pid);
  if (mayLaunch) {
    window_ = primaryWindow(*app_);
    if (!window_) {
      window_ = reopenWindow(bundleId, *app_);
    }
    try {
      activate(*app_);
    } catch (const Failure&) {  // Being connected does not depend on being in front.
    }
  }
  return connectResult(bundleId);
}

RunningApplication Session::launch(const std::string& bundleId) {
  const auto path = platform_.bundles.pathForIdentifier(bundleId);
  if (!path) {
    fail("app_not_found", "No installed application for " + bundleId);
  }
  Clock& clock = platform_.clock;
  const auto box = std::make_shared<CompletionBox<OpenedApplication>>();
  platform_.bundles.open(*path, false,
                         [box](OpenedApplication opened) { box->fill(std::move(opened)); });
  OpenedApplication opened;
  if (turnUntil(clock, clock.now() + kLaunchLimit, kLaunchSlice, [&] { return box->filled(); })) {
    opened = box->take();
  }
  if (opened.error) {
    fail("launch_failed", *opened.error);
  }
  if (!opened.application) {
    fail("app_not_running", "Application is not running: " + bundleId);
  }
  return *opened.application;
}

void Session::bindSite(const std::string& bundleId, const Json& args, bool mayLaunch) {
  const auto site = textMember(args, "site");
  boundSite_ = site ? siteOf(*site) : std::nullopt;
  if (!boundSite_) {
    return;
  }
  bool opened = false;
  if (mayLaunch && siteWindows(*app_).empty()) {
    platform_.bundles.openSite(bundleId, *site);
    opened = true;
  }
  Clock& clock = platform_.clock;
  if (!turnUntil(clock, clock.now() + kSiteWindowLimit, kSiteWindowSlice,
                 [&] { return !siteWindows(*app_).empty(); })) {
    throw Failure("no_window",
                  "No window of " + bundleId + " shows " + *boundSite_ +
                      (opened ? ", and one could not be opened." : "."),
                  {{"seen", windowsSeen(*app_)}});
  }
}

Json Session::connectResult(const std::string& bundleId) {
  Json result = {{"bundleId", bundleId},
                 {"name", running_->localizedName.value_or(bundleId)},
                 {"pid", running_->id.pid}};
  const auto addVersion = [&](const char* key, std::string_view infoKey) {
    if (running_->bundlePath) {
      const auto version = platform_.bundles.infoText(*running_->bundlePath, infoKey);
      if (version && isVersionText(*version)) {
        result[key] = *version;
      }
    }
  };
  addVersion("appVersion", "CFBundleShortVersionString");
  addVersion("buildVersion", "CFBundleVersion");
  return result;
}

}  // namespace tarqo
