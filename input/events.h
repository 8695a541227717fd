// Posting events: what only moves goes anywhere, what acts goes to the target or nowhere.
//
// Worker thread; waits for nothing.
#pragma once

#include "base/failure.h"
#include "session/session.h"

namespace tarqo {

/// Posts an event that changes nothing by itself, such as a move. Left out when it cannot be made.
void post(Session& session, EventSource* source, const InputEvent& event);

/// Posts what acts, right after the proof of what it acts on. Fails with `elsewhere`, and posts
/// nothing, when another process would get the event.
void postToTarget(Session& session, const CreatedEvent& event, const FailureText& elsewhere);

/// Posts the up of a button, `spare` when a fresh one cannot be made: an event may carry the time
/// of its making, and applications read the speed of a drag from those times.
void release(Session& session, EventSource* source, const MouseEvent& up,
             const CreatedEvent& spare);

}  // namespace tarqo
