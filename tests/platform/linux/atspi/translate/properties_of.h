// What objects report, in few words.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "platform/linux/atspi/translate/properties.h"

namespace tarqo::lnx::atspi {

inline States statesOf(std::initializer_list<State> list) {
  std::uint64_t bits = 0;
  for (const State state : list) {
    bits |= std::uint64_t{1} << static_cast<unsigned>(state);
  }
  return States(bits);
}

inline Properties propertiesOf(Role role, std::initializer_list<State> states = {}) {
  Properties properties;
  properties.alive = true;
  properties.role = static_cast<std::uint32_t>(role);
  properties.states = statesOf(states);
  return properties;
}

}  // namespace tarqo::lnx::atspi
