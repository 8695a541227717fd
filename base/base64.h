// Bytes as text.
#pragma once

#include <string>
#include <string_view>

namespace tarqo {

/// Standard base64 with padding, without line breaks.
[[nodiscard]] std::string base64(std::string_view bytes);

}  // namespace tarqo
