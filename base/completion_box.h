// Where a completion leaves its value for a caller that polls.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <utility>

namespace tarqo {

/// Shared between the caller and the completion, so that it outlives a caller that stopped waiting.
/// The first value stays; `fill` may be called on any thread.
template <typename T>
class CompletionBox {
 public:
  void fill(T value) {
    if (!claimed_.exchange(true, std::memory_order_relaxed)) {
      value_ = std::move(value);
      filled_.store(true, std::memory_order_release);
    }
  }

  [[nodiscard]] bool filled() const { return filled_.load(std::memory_order_acquire); }

  /// The value; only once `filled`.
  [[nodiscard]] T take() { return std::move(*value_); }

 private:
  std::optional<T> value_;
  std::atomic<bool> claimed_{false};
  std::atomic<bool> filled_{false};
};

}  // namespace tarqo
