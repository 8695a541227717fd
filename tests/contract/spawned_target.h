// A target that is a program of ours.
#pragma once

#include <string>
#include <vector>

#include "tests/contract/contract_backend.h"

namespace tarqo::contract {

/// A child with its standard output on a pipe, on which it says "ready". Throws when it does not.
class SpawnedTarget : public ContractTarget {
 public:
  explicit SpawnedTarget(std::vector<std::string> command);
  SpawnedTarget(const SpawnedTarget&) = delete;
  SpawnedTarget& operator=(const SpawnedTarget&) = delete;
  ~SpawnedTarget() override;

  [[nodiscard]] Pid pid() const override { return pid_; }
  void hang() override;
  void resume() override;
  void end() override;

 protected:
  /// The lines that it has written since it was ready.
  [[nodiscard]] const std::vector<std::string>& lines();

 private:
  void awaitReady() const;

  Pid pid_ = 0;
  int output_ = -1;
  bool ended_ = false;
  std::string unread_;
  std::vector<std::string> lines_;
};

/// The value of a variable of the environment; throws with `advice` when there is none.
[[nodiscard]] std::string environmentVariable(const char* name, const std::string& advice);

/// "WIDTHxHEIGHT+X+Y", as our applications take it.
[[nodiscard]] std::string geometryArgument(const Rect& frame);

}  // namespace tarqo::contract
