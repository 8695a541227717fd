// Windows, displays, session and events of a desktop, as Quartz knows them.
#pragma once

#include <vector>

#include "tests/platform/mac/standin/quartz.h"

namespace standin {

[[nodiscard]] Owned desktopWindows(CGWindowListOption option);
[[nodiscard]] Owned desktopSession();
/// The main one first.
[[nodiscard]] std::vector<Display> desktopDisplays();
[[nodiscard]] CGPoint desktopPointer();
void postOnDesktop(const EventFields& event);

}  // namespace standin
