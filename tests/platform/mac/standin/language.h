// Text in the user's language, by ICU.
#pragma once

#include <string>

namespace standin {

[[nodiscard]] std::u16string lowered(const std::u16string& text);

/// Below, at or above 0, without regard to case.
[[nodiscard]] int compare(const std::u16string& a, const std::u16string& b);

}  // namespace standin
