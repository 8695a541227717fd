// What the methods of the protocol share while they work on one target application.
//
// One instance for the life of the process; worker thread only. Each part owns its data and says
// what may be done with it. What acts on a session stands in the folder of its subject: observe/,
// input/, and methods/, where a method of the protocol is a function over it.
#pragma once

#include <string>

#include "ax/timed_accessibility.h"
#include "host/grants.h"
#include "host/own_application.h"
#include "platform/platform.h"
#include "session/listener.h"
#include "session/node_store.h"
#include "session/target.h"

namespace tarqo {

/// What a request may take, beyond its own waits, however slowly the target answers.
inline constexpr Duration kTargetTime = std::chrono::seconds(2);

/// The platform with another accessibility service in place of its own.
[[nodiscard]] inline Platform withAccessibility(const Platform& platform,
                                                Accessibility& accessibility) {
  return {accessibility,          platform.workspace,   platform.bundles,
          platform.processes,     platform.permissions, platform.windowServer,
          platform.screenCapture, platform.inputEvents, platform.textRecognizer,
          platform.images,        platform.clock,       platform.random};
}

struct Session {
  Session(const Platform& onPlatform, Grants& withGrants)
      : targetTime(onPlatform.clock, kTargetTime, kMessagingTimeout),
        accessibility(onPlatform.accessibility, targetTime),
        platform(withAccessibility(onPlatform, accessibility)),
        grants(withGrants),
        target(platform, withGrants),
        nodes(onPlatform.clock),
        listener(platform),
        ownApplication(onPlatform) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Listens to the target, from now on if nobody did, and to its window of the moment. Subscribes
  /// once more to what it refused before. Only with a target; waits no longer than one call to a
  /// target that does not answer.
  void ensureListening();

  /// The calendar's time as results spell it.
  [[nodiscard]] std::string timestampNow() const;

  TargetTime targetTime;  ///< Of the request that is being served.
  TimedAccessibility accessibility;
  const Platform platform;  ///< With the accessibility service that minds the time.
  Grants& grants;
  Target target;
  NodeStore nodes;
  Listener listener;
  OwnApplication ownApplication;
  Instant actedAt = kDistantPast;  ///< When the last action began, whatever became of it.
};

}  // namespace tarqo
