// The answers that one recorded object gives by itself, and how its line in a recording is read.
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "base/json.h"
#include "platform/geometry.h"

namespace tarqo::lnx::atspi {

/// What the paths of recorded objects begin with.
inline constexpr std::string_view kObjectPath = "/org/a11y/atspi/accessible/";

/// The states of an object as bits; throws when one has a name that nobody knows.
[[nodiscard]] std::uint64_t stateBits(const Json& object);
[[nodiscard]] Rect rectOf(const Json& numbers);
[[nodiscard]] int charactersIn(const std::string& text);

/// What a member of an object holds; null when it was not recorded.
[[nodiscard]] const Json* memberOf(const Json& object, const char* name);

/// The objects below another one: cells in place of children where those are too many.
[[nodiscard]] Json below(const Json& object);

/// A reference as a recording writes it: the object's number, null, or a path elsewhere.
void appendRef(sd_bus_message* to, const Json& ref);
void appendRefs(sd_bus_message* to, const Json& refs);
void appendStates(sd_bus_message* to, const Json& object);
void appendInterfaces(sd_bus_message* to, const Json& object);
/// A property of an object, as a variant.
void appendVariant(sd_bus_message* to, const std::string& name, const Json& value);

/// Answers a call to an object, as `ScriptedBus::Answer`.
using ObjectAnswer = int (*)(sd_bus_message* call, const Json& object);

/// The answer to a method of that name; null when it takes more than the object to answer.
[[nodiscard]] ObjectAnswer objectAnswer(std::string_view method);

}  // namespace tarqo::lnx::atspi
