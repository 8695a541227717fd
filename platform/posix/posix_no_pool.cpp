// Of systems whose libraries leave nothing to a thread's autorelease pool.
#include "platform/process_entry.h"

void tarqo::runAndRelease(const std::function<void()>& body) { body(); }
