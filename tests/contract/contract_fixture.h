// What the tests of the contract share.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/contract/contract_backend.h"

namespace tarqo::contract {

/// What arrives on whatever thread; shared, so that it outlives a test that stopped waiting.
template <typename T>
class Arrivals {
 public:
  void add(T value) {
    const std::lock_guard lock(mutex_);
    values_.push_back(std::move(value));
  }

  [[nodiscard]] std::vector<T> all() const {
    const std::lock_guard lock(mutex_);
    return values_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<T> values_;
};

/// A backend without a target.
class Contract : public testing::Test {
 protected:
  /// Turns the loop until the condition holds; false when it does not within the limit.
  bool waitUntil(const std::function<bool()>& holds,
                 Duration limit = std::chrono::seconds(5)) const;

  /// The attribute when it is of that type.
  template <typename T>
  [[nodiscard]] std::optional<T> read(const Element& element, std::string_view name) const {
    const std::optional<Value> value = ax.attribute(element, name);
    const T* typed = value ? value->as<T>() : nullptr;
    return typed == nullptr ? std::nullopt : std::optional(*typed);
  }

  [[nodiscard]] std::string text(const Element& element, std::string_view name) const {
    return read<std::string>(element, name).value_or("");
  }

  /// The elements of an attribute that is a list of elements.
  [[nodiscard]] std::vector<Element> elements(const Element& element, std::string_view name) const;

  [[nodiscard]] std::optional<Rect> frame(const Element& element) const;

  std::unique_ptr<ContractBackend> backend = makeContractBackend();
  Platform platform = backend->platformBackend().platform();
  Accessibility& ax = platform.accessibility;
  Clock& clock = platform.clock;
};

/// A backend with the target running, shown and in front.
class TargetContract : public Contract {
 protected:
  static constexpr Duration kMessagingTimeout = std::chrono::milliseconds(300);

  void SetUp() override;

  [[nodiscard]] Element application() const {
    return ax.application(target->pid(), kMessagingTimeout);
  }

  [[nodiscard]] Element window() const { return *window_; }

  /// All elements beneath and including one, parents first.
  [[nodiscard]] std::vector<Element> tree(const Element& root) const;

  /// The element of that role whose title, description or value is `name`; the test ends as a
  /// failure when there is none.
  [[nodiscard]] Element control(std::string_view role, std::string_view name) const;

  /// What the static text "Status: ..." says; empty when there is none.
  [[nodiscard]] std::string status() const;

  /// The running application of a target.
  [[nodiscard]] std::optional<RunningApplication> running(const ContractTarget& which) const;

  void bringToFront(const ContractTarget& which) const;

  /// The window of a target in the window server's list.
  [[nodiscard]] std::optional<WindowInfo> serverWindow(const ContractTarget& which) const;

  std::unique_ptr<ContractTarget> target;

 private:
  std::optional<Element> window_;
};

}  // namespace tarqo::contract
