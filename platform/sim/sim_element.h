// What the simulated accessibility service hands out for an element.
#pragma once

#include <memory>
#include <utility>

#include "platform/accessibility.h"
#include "platform/sim/sim_node.h"

namespace tarqo::sim {

/// Outlives its node: an element whose node is gone only fails to answer.
class NodeHandle final : public ElementObject {
 public:
  /// No `identity` stands for the application element of a process that is no application.
  NodeHandle(Pid pid, std::shared_ptr<const Identity> identity)
      : pid_(pid), identity_(std::move(identity)) {}

  [[nodiscard]] bool same(const ElementObject& other) const override {
    const auto* handle = dynamic_cast<const NodeHandle*>(&other);
    return handle != nullptr && handle->pid_ == pid_ && handle->identity_ == identity_;
  }

  [[nodiscard]] Pid pid() const { return pid_; }
  /// Null when the element is gone.
  [[nodiscard]] Node* node() const { return identity_ == nullptr ? nullptr : identity_->node; }
  [[nodiscard]] const std::shared_ptr<const Identity>& identity() const { return identity_; }

 private:
  Pid pid_;
  std::shared_ptr<const Identity> identity_;
};

}  // namespace tarqo::sim
