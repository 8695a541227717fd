// What the methods of the protocol share while they work on one target application.
//
// One instance for the life of the process; worker thread only. Each part owns its data and says
// what may be done with it. What acts on a session stands in the folder of its subject: observe/,
// input/, and methods/, where a method of the protocol is a function over it.
#pragma once

#include <string>

#include "host/grants.h"
#include "host/own_application.h"
#include "platform/platform.h"
#include "session/listener.h"
#include "session/node_store.h"
#include "session/target.h"

namespace tarqo {

struct Session {
  Session(const Platform& onPlatform, Grants& withGrants)
      : platform(onPlatform),
        grants(withGrants),
        target(onPlatform, withGrants),
        nodes(onPlatform.clock),
        listener(onPlatform),
        ownApplication(onPlatform) {}

  /// Listens to the target, from now on if nobody did, and to its window of the moment. Only with a
  /// target.
  void ensureListening();

  /// The calendar's time as results spell it.
  [[nodiscard]] std::string timestampNow() const;

  const Platform& platform;
  Grants& grants;
  Target target;
  NodeStore nodes;
  Listener listener;
  OwnApplication ownApplication;
  Instant actedAt = kDistantPast;  ///< When the last action began, whatever became of it.
};

}  // namespace tarqo
