#include "input/events.h"

#include "session/obstacle.h"

namespace tarqo {

void post(Session& session, EventSource* source, const InputEvent& event) {
  InputEvents& events = session.platform.inputEvents;
  if (const auto created = events.create(source, event)) {
    events.post(*created);
  }
}

namespace {

// Who would have got it: keys go to the application in front, the pointer's events to what lies
// under it.
std::optional<WindowInfo> receiverInstead(Session& session, const FailureText& elsewhere) {
  const Pid target = session.target.requirePid();
  if (elsewhere.sentence == failures::kNotFrontmost.sentence) {
    return windowInFront(session.platform, target);
  }
  const auto pointer = session.platform.inputEvents.pointerLocation();
  return pointer ? foreignWindowAt(session.platform, target, *pointer) : std::nullopt;
}

}  // namespace

void postToTarget(Session& session, const CreatedEvent& event, const FailureText& elsewhere) {
  if (!session.platform.inputEvents.postTo(session.target.requirePid(), event)) {
    throw naming(Failure(elsewhere), receiverInstead(session, elsewhere));
  }
}

void release(Session& session, EventSource* source, const MouseEvent& up,
             const CreatedEvent& spare) {
  InputEvents& events = session.platform.inputEvents;
  const auto created = events.create(source, up);
  events.post(created ? *created : spare);
}

}  // namespace tarqo
