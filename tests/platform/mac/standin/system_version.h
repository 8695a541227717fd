// Which macOS the stand-in is. Included before all else into files that ask, where the compiler
// takes every version for given, since only Apple's targets have one.
#pragma once

#include <objc/objc.h>

namespace standin {

/// `selector` when the system is of that version ("macOS 14.0, *") or later, else null.
[[nodiscard]] SEL ifAvailable(SEL selector, const char* version);

/// 26 until it is set.
void setSystemVersion(int major);

}  // namespace standin

// After the "@" of "@available(...)".
#define available(...) selector(init) == standin::ifAvailable(@selector(init), #__VA_ARGS__)
