// Objects of Objective-C classes on the stand-in's heap, pools and weak references.
#pragma once

#include <objc/objc.h>

#include <cstddef>

namespace standin {

/// Objects that wait in the calling thread's autorelease pools.
[[nodiscard]] std::size_t waitingInPools();

}  // namespace standin
