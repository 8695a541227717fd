// Of Grand Central Dispatch what the backend uses: the main queue and semaphores.
#pragma once

#include <stdint.h>

#ifdef __OBJC__
#include <objc/NSObject.h>

@interface OS_dispatch_queue : NSObject
@end
@interface OS_dispatch_semaphore : NSObject
@end
typedef OS_dispatch_queue* dispatch_queue_t;
typedef OS_dispatch_semaphore* dispatch_semaphore_t;
typedef void (^dispatch_block_t)(void);
typedef uint64_t dispatch_time_t;
#define DISPATCH_TIME_NOW 0ull

extern "C" {

/// Lent.
dispatch_queue_t dispatch_get_main_queue(void);
void dispatch_async(dispatch_queue_t queue, dispatch_block_t block);
dispatch_semaphore_t dispatch_semaphore_create(intptr_t value) __attribute__((ns_returns_retained));
intptr_t dispatch_semaphore_signal(dispatch_semaphore_t semaphore);
/// Not 0 when the time is up.
intptr_t dispatch_semaphore_wait(dispatch_semaphore_t semaphore, dispatch_time_t limit);
dispatch_time_t dispatch_time(dispatch_time_t when, int64_t nanoseconds);

}  // extern "C"
#endif
