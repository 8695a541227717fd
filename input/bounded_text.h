// The text that a client may have typed.
#pragma once

#include <string>

#include "base/json.h"

namespace tarqo {

/// The argument "text": 1 to 2000 UTF-16 code units without control or format characters, which
/// would be keys of their own. Throws "invalid_argument".
[[nodiscard]] std::string boundedText(const Json& args);

}  // namespace tarqo
