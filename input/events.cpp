#include "input/events.h"

namespace tarqo {

void post(Session& session, EventSource* source, const InputEvent& event) {
  InputEvents& events = session.platform.inputEvents;
  if (const auto created = events.create(source, event)) {
    events.post(*created);
  }
}

void postToTarget(Session& session, const CreatedEvent& event, const FailureText& elsewhere) {
  if (!session.platform.inputEvents.postTo(session.target.requirePid(), event)) {
    fail(elsewhere);
  }
}

void release(Session& session, EventSource* source, const MouseEvent& up,
             const CreatedEvent& spare) {
  InputEvents& events = session.platform.inputEvents;
  const auto created = events.create(source, up);
  events.post(created ? *created : spare);
}

}  // namespace tarqo
