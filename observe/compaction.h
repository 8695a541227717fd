// Leaving out of an observation what tells a client nothing and can be used for nothing.
#pragma once

#include <cstddef>

#include "observe/node_list.h"

namespace tarqo {

/// Takes the nodes without a name, a value and a use off the list, and gives their number. What lay
/// under one hangs on the nearest node above that stays. The ids of the others do not change.
std::size_t leaveOutBareNodes(NodeList& list);

}  // namespace tarqo
