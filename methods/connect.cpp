// The "connect" method: binds the session to a target application, launched where it must be.

#include <memory>

#include "base/completion_box.h"
#include "base/failure.h"
#include "base/waiting.h"
#include "methods/methods.h"
#include "platform/unicode.h"
#include "session/site.h"

namespace tarqo::methods {
namespace {

using namespace std::chrono_literals;

constexpr Duration kLaunchLimit = 10s;
constexpr Duration kLaunchSlice = 20ms;
constexpr Duration kSiteWindowLimit = 8s;
constexpr Duration kSiteWindowSlice = 200ms;
constexpr Duration kReopenLimit = 5s;
constexpr Duration kReopenSlice = 20ms;
constexpr Duration kReopenedWindowLimit = 2s;
constexpr Duration kReopenedWindowSlice = 50ms;
constexpr std::size_t kMaxVersionLength = 80;

struct ConnectArguments {
  std::string bundleId;
  bool launch;  ///< Whether what is missing may be started, opened and brought forward.
  std::optional<std::string> site;
};

ConnectArguments connectArguments(const Json& args) {
  return {.bundleId = textMember(args, "bundleId").value_or(""),
          .launch = booleanMember(args, "launch").value_or(true),
          .site = textMember(args, "site")};
}

// A version text is shown to the client as it is, so it must look like one.
bool isVersionText(const std::string& text) {
  return !text.empty() && unicode::clusterCount(text, kMaxVersionLength + 1) <= kMaxVersionLength &&
         unicode::trimmed(text) == text && !unicode::hasControlOrFormat(text);
}

RunningApplication launch(const Platform& platform, const std::string& bundleId) {
  const auto path = platform.bundles.pathForIdentifier(bundleId);
  if (!path) {
    fail(failures::kAppNotFound, {bundleId});
  }
  Clock& clock = platform.clock;
  const auto box = std::make_shared<CompletionBox<OpenedApplication>>();
  platform.bundles.open(*path, false,
                        [box](OpenedApplication opened) { box->fill(std::move(opened)); });
  OpenedApplication opened;
  if (runLoopUntil(clock, clock.now() + kLaunchLimit, kLaunchSlice,
                   [&] { return box->filled(); })) {
    opened = box->take();
  }
  if (opened.error) {
    fail(failures::kLaunchFailed, {*opened.error});
  }
  if (!opened.application) {
    fail(failures::kAppNotRunning, {bundleId});
  }
  return *opened.application;
}

RunningApplication runningOrLaunched(const Platform& platform, const ConnectArguments& wanted) {
  const auto candidates = platform.workspace.runningApplications(wanted.bundleId);
  if (!candidates.empty()) {
    return candidates.front();
  }
  if (!wanted.launch) {
    fail(failures::kAppNotRunning, {wanted.bundleId});
  }
  return launch(platform, wanted.bundleId);
}

void bindSite(Session& session, const ConnectArguments& wanted) {
  Target& target = session.target;
  const auto site = wanted.site ? siteOf(*wanted.site) : std::nullopt;
  target.setBoundSite(site);
  if (!site) {
    return;
  }
  bool opened = false;
  if (wanted.launch && target.siteWindows().empty()) {
    session.platform.bundles.openSite(wanted.bundleId, *wanted.site);
    opened = true;
  }
  Clock& clock = session.platform.clock;
  const Instant deadline = clock.now() + kSiteWindowLimit;
  session.targetTime.extend(kSiteWindowLimit);
  if (!runLoopUntil(clock, deadline, kSiteWindowSlice,
                    [&] { return !target.siteWindows().empty(); })) {
    throw Failure(opened ? failures::kNoSiteWindowOpened : failures::kNoSiteWindow,
                  {wanted.bundleId, *site}, {{"seen", target.windowsSeen()}});
  }
}

std::optional<Element> reopenedWindow(Session& session, const std::string& bundleId) {
  const Platform& platform = session.platform;
  const auto path = platform.bundles.pathForIdentifier(bundleId);
  if (!path) {
    return std::nullopt;
  }
  Clock& clock = platform.clock;
  const auto box = std::make_shared<CompletionBox<bool>>();
  platform.bundles.open(*path, true, [box](const OpenedApplication&) { box->fill(true); });
  // A completion that never comes is no reason not to look for the window.
  (void)runLoopUntil(clock, clock.now() + kReopenLimit, kReopenSlice,
                     [&] { return box->filled(); });

  std::optional<Element> window;
  const Instant deadline = clock.now() + kReopenedWindowLimit;
  session.targetTime.extend(kReopenedWindowLimit);
  (void)runLoopUntil(clock, deadline, kReopenedWindowSlice, [&] {
    window = session.target.primaryWindow();
    return window.has_value();
  });
  return window;
}

void showWindow(Session& session, const std::string& bundleId) {
  Target& target = session.target;
  target.setWindow(target.primaryWindow());
  if (!target.window()) {
    target.setWindow(reopenedWindow(session, bundleId));
  }
  try {
    target.activate();
  } catch (const Failure&) {  // Being connected does not depend on being in front.
  }
}

Json connected(Bundles& bundles, const RunningApplication& running, const std::string& bundleId) {
  Json result = {{"bundleId", bundleId},
                 {"name", running.localizedName.value_or(bundleId)},
                 {"pid", running.id.pid}};
  const auto addVersion = [&](const char* key, std::string_view infoKey) {
    if (running.bundlePath) {
      const auto version = bundles.infoText(*running.bundlePath, infoKey);
      if (version && isVersionText(*version)) {
        result[key] = *version;
      }
    }
  };
  addVersion("appVersion", "CFBundleShortVersionString");
  addVersion("buildVersion", "CFBundleVersion");
  return result;
}

}  // namespace

Json connect(Session& session, const Json& args) {
  session.grants.requireAccessibility();
  const ConnectArguments wanted = connectArguments(args);
  if (wanted.bundleId.empty()) {
    fail(failures::kBundleIdRequired);
  }
  Target& target = session.target;
  target.bind(runningOrLaunched(session.platform, wanted));
  session.nodes.clear();
  // Even when binding fails below: an observer of another process says nothing of this one, and
  // would let presses pass for unanswered.
  session.listener.stop();
  bindSite(session, wanted);
  session.listener.listen(target.requirePid(), *target.app());
  if (wanted.launch) {
    showWindow(session, wanted.bundleId);
  }
  return connected(session.platform.bundles, *target.running(), wanted.bundleId);
}

}  // namespace tarqo::methods
