// The number by which a system knows a process.
#pragma once

#include <cstdint>

namespace tarqo {

/// A process id. Values below 1 name no process.
using Pid = std::int32_t;

}  // namespace tarqo
