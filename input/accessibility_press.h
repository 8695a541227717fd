// Pressing an element by its own action, without the pointer.
#pragma once

#include "session/session.h"

namespace tarqo {

/// What became of a press through accessibility. Only what is `refused` or `unanswered` may be
/// followed by the pointer.
enum class Press {
  refused,     ///< Not offered, or the application did not take it.
  unanswered,  ///< Taken by a system that says no more, and nothing happened that could be heard.
  pending,     ///< Sent, and the application has not finished with it.
  answered
};

/// Performs "AXPress" on an element that offers it, listening to the target from now on. Waits up
/// to 350 ms for a sign where the system does not say what became of it. Worker thread.
[[nodiscard]] Press pressByAccessibility(Session& session, const Element& element);

/// Whether an element offers an action; one round trip.
[[nodiscard]] bool offersAction(Session& session, const Element& element, std::string_view action);

}  // namespace tarqo
