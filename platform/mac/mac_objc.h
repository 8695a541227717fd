// What every call into Objective-C shares: texts, a border for exceptions and temporaries, and
// questions to the main thread.
#pragma once

#import <Foundation/Foundation.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "platform/mac/mac_cf_text.h"

namespace tarqo::mac {

/// Nil when the text is not valid UTF-8. May hold NUL characters.
[[nodiscard]] inline NSString* _Nullable nsString(std::string_view utf8) {
  const CfRef<CFStringRef> made = makeString(utf8);
  return (__bridge NSString*)made.get();
}

/// None for nil.
[[nodiscard]] inline std::optional<std::string> textOf(NSString* _Nullable text) {
  return text != nil ? std::optional(textOf((__bridge CFStringRef)text)) : std::nullopt;
}

/// What `body` gives, or an empty result when it throws: neither C++ nor Objective-C exceptions get
/// past this (on 64-bit systems both are caught by `...`). Frees at once what `body` leaves to the
/// autorelease pool: the worker never returns to a loop that would.
template <typename Body>
auto guarded(const Body& body) -> decltype(body()) {
  @autoreleasepool {
    try {
      return body();
    } catch (...) {
      return decltype(body())();
    }
  }
}

/// A main thread that takes longer than this is not going to answer.
inline constexpr std::chrono::nanoseconds kMainThreadPatience = std::chrono::seconds(1);

/// What `body` gives on the main thread; none when that has not come round to it in time. `body`
/// must own what it uses, for it may run after the caller has stopped waiting. Any thread but the
/// main one, which never waits for the worker, so that the two cannot wait for each other.
template <typename Body>
auto askMainThread(Body body) -> std::optional<decltype(body())> {
  using Answer = decltype(body());
  const auto answer = std::make_shared<std::optional<Answer>>();
  // Made with 0, because releasing a semaphore below the value it was made with crashes.
  const dispatch_semaphore_t answered = dispatch_semaphore_create(0);
  dispatch_async(dispatch_get_main_queue(), ^{
    *answer = guarded(body);
    dispatch_semaphore_signal(answered);
  });
  const auto limit = dispatch_time(DISPATCH_TIME_NOW, kMainThreadPatience.count());
  return dispatch_semaphore_wait(answered, limit) == 0 ? std::move(*answer) : std::nullopt;
}

}  // namespace tarqo::mac
