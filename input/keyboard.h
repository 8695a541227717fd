// Typing text and pressing keys. They go to whatever has the focus, and only while the target is in
// front.
//
// Worker thread; waits 30 ms a character, 80 ms a key. Throws "target_covered" when the target is
// not in front, "target_busy" when a key would hang it, "input_failed" when no event can be made.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "session/session.h"

namespace tarqo {

/// `text`, which must have 1 to 2000 UTF-16 code units without control or format characters, which
/// would be keys of their own. Throws "invalid_argument".
[[nodiscard]] std::string boundedText(const std::optional<std::string>& text);

/// Types `text` cluster by cluster. What has gone out before a failure is its detail "sent".
void typeUnicode(Session& session, const std::string& text);

/// A key by its name in `KEY_CODES`, with modifiers by theirs. Throws "invalid_argument" for a name
/// that is unknown.
void pressNamedKey(Session& session, const std::string& key,
                   const std::vector<std::string>& modifiers);

/// A key by its code.
void postKey(Session& session, std::uint16_t code, Modifiers modifiers);

}  // namespace tarqo
