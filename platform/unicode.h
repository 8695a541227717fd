// Text as people count it. Chosen at link time, one implementation a system.
//
// Texts are UTF-8; a malformed byte counts as U+FFFD. Any thread; waits for nothing.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace tarqo::unicode {

/// Valid UTF-8: each malformed sequence replaced by U+FFFD. Cheap when there is none.
[[nodiscard]] std::string repaired(std::string_view text);

/// Without the white space and newlines (Unicode White_Space) at both ends.
[[nodiscard]] std::string trimmed(std::string_view text);

/// The first `count` grapheme clusters, or the whole text when it has no more.
[[nodiscard]] std::string prefix(std::string_view text, std::size_t count);

/// Calls `visit` with each grapheme cluster in order.
void forEachCluster(std::string_view text, const std::function<void(std::string_view)>& visit);

/// The number of grapheme clusters, counted no further than `limit`.
[[nodiscard]] std::size_t clusterCount(std::string_view text, std::size_t limit);

/// The number of UTF-16 code units.
[[nodiscard]] std::size_t utf16Length(std::string_view text);

/// In lower case, by the rules of no particular language.
[[nodiscard]] std::string lowered(std::string_view text);

/// Below, at or above zero as `a` sorts before, with or after `b` in a list shown to the user:
/// case-insensitive, by the user's language.
[[nodiscard]] int compareForDisplay(std::string_view a, std::string_view b);

/// Whether any character is a control or a format character (general categories Cc and Cf).
[[nodiscard]] bool hasControlOrFormat(std::string_view text);

}  // namespace tarqo::unicode
