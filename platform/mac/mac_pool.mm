#include "platform/process_entry.h"

void tarqo::runAndRelease(const std::function<void()>& body) {
  @autoreleasepool {
    body();
  }
}
