// Starting the system's own tools.
#pragma once

#include <string>
#include <vector>

#include "platform/accessibility.h"

namespace tarqo::mac {

/// Starts a program with its standard streams on the null device and no other file open, so that
/// neither it nor what it starts can eat a request or slip a line between responses. `program` is
/// an absolute path. 0 when it cannot start. The caller collects the child. Any thread.
[[nodiscard]] Pid spawn(const std::string& program, const std::vector<std::string>& arguments);

/// Collects a child whenever it ends, on a thread of its own.
void collectLater(Pid child);

}  // namespace tarqo::mac
