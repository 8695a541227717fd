// The name of a snapshot.
#pragma once

#include <string>

#include "platform/random.h"

namespace tarqo {

/// A random UUID (version 4) in its canonical form, in lower case.
[[nodiscard]] std::string makeSnapshotId(Random& random);

}  // namespace tarqo
