// What the interface tells of an application, from AppKit's object for it.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/workspace.h"

namespace tarqo::mac {

/// None when it has no process any more. Any thread, in an autorelease pool.
[[nodiscard]] std::optional<RunningApplication> describe(
    NSRunningApplication* _Nonnull application);

}  // namespace tarqo::mac
