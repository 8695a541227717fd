#include "base/memory_reserve.h"

#include <atomic>
#include <cstdlib>
#include <exception>
#include <new>

namespace tarqo {
namespace {

/// Twice what the library asks for to end the 100,000 values of the largest request. Never touched,
/// so it takes up no memory, only room for it.
constexpr std::size_t kReserveBytes = 8U << 20U;

std::atomic<void*> reserve{nullptr};

// Whether a failure is on its way up, or has just been caught by what puts things in order before
// it passes the failure on, as containers do.
bool isFailureUnderWay() {
  return std::uncaught_exceptions() > 0 || std::current_exception() != nullptr;
}

// Called when an allocation has failed; when it returns, the allocation is tried again.
void releaseReserve() {
  void* kept = isFailureUnderWay() ? reserve.exchange(nullptr) : nullptr;
  if (kept == nullptr) {
    throw std::bad_alloc();
  }
  std::free(kept);
}

}  // namespace

void keepMemoryReserve() noexcept {
  if (reserve.load() != nullptr) {
    return;
  }
  void* fresh = std::malloc(kReserveBytes);
  void* none = nullptr;
  if (!reserve.compare_exchange_strong(none, fresh)) {
    std::free(fresh);
  }
  std::set_new_handler(releaseReserve);
}

}  // namespace tarqo
