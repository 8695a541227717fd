// What every action on a node begins and ends with.
#pragma once

#include <string>
#include <utility>

#include "base/json.h"
#include "session/session.h"

namespace tarqo::methods {

/// Notes when the action began, spends the observation whatever becomes of it, and passes the gate;
/// throws what the gate throws.
class Action {
 public:
  explicit Action(Session& session) : session_(session), clear_(session.nodes) {
    session.actedAt = session.platform.clock.now();
    (void)session.target.requireApp();
  }

  /// The result of the action, with the node it was asked for and the time.
  [[nodiscard]] Json done(Json result, const std::string& nodeId) const {
    result["nodeId"] = nodeId;
    result["at"] = session_.timestampNow();
    return result;
  }

 private:
  Session& session_;
  ClearNodesOnExit clear_;
};

}  // namespace tarqo::methods
