// One object being asked for facts, round by round: first what it is, then what is worth asking of
// such an object, then what the answers left open.
#pragma once

#include <functional>
#include <memory>

#include "platform/linux/atspi/read/properties.h"

namespace tarqo::lnx {

/// What is under way for one object.
struct Question {
  AtspiBatch& batch;
  AtspiRef ref;
  Toolkit toolkit = Toolkit::other;
  FactSet wanted{};
  bool onlyShownChildren = false;
  std::shared_ptr<AtspiFacts> facts{};
  std::function<void()> done{};
  int open = 0;  ///< Unanswered calls of this round.
  int round = 0;
};

/// Counts an answer in, and begins the next round after the last answer of one.
void answered(const std::shared_ptr<Question>& question);

/// Asks for the names of the actions, where they stand for something.
void askActions(const std::shared_ptr<Question>& question);

/// Asks again for the names that the list of actions did not give plainly.
void askActionNames(const std::shared_ptr<Question>& question);

/// Asks for whatever the value of the object's role is made of.
void askValue(const std::shared_ptr<Question>& question);

/// Asks for the address of a page.
void askAddress(const std::shared_ptr<Question>& question);

}  // namespace tarqo::lnx
