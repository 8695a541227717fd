// The one time format of results.
#pragma once

#include <chrono>
#include <string>

namespace tarqo {

/// ISO 8601 internet date-time in UTC with milliseconds: 2026-11-14T23:30:16.123Z.
[[nodiscard]] std::string timestamp(
    std::chrono::time_point<std::chrono::system_clock, std::chrono::microseconds> time);

}  // namespace tarqo
