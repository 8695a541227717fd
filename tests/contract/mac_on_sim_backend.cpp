// The macOS backend under the contract, on the stand-in for macOS, which shows the simulated
// desktop.

#include <gtest/gtest.h>

#include <utility>

#include "tests/contract/beside_main_loop.h"
#include "tests/contract/sim_backend.h"
#include "tests/platform/mac/standin/desktop.h"
#include "tests/platform/mac/standin/heap.h"
#include "tests/platform/mac/standin/mac_on_desktop.h"
#include "tests/platform/mac/standin/system_version.h"

namespace tarqo::contract {
namespace {

constexpr const char* kShell = "/bin/sh";

Backend& sharedBackend() {
  static const std::unique_ptr<Backend> kBackend = makeMacPlatform("contract_tests_mac_on_sim");
  return *kBackend;
}

/// A target of the simulated desktop, which the main loop turns meanwhile.
class LockedTarget final : public ContractTarget {
 public:
  explicit LockedTarget(std::unique_ptr<ContractTarget> target) : target_(std::move(target)) {}
  LockedTarget(const LockedTarget&) = delete;
  LockedTarget& operator=(const LockedTarget&) = delete;
  ~LockedTarget() override {
    const standin::DesktopLock lock;
    target_.reset();
  }

  [[nodiscard]] Pid pid() const override { return target_->pid(); }
  void hang() override {
    const standin::DesktopLock lock;
    target_->hang();
  }
  void resume() override {
    const standin::DesktopLock lock;
    target_->resume();
  }
  void end() override {
    const standin::DesktopLock lock;
    target_->end();
  }
  [[nodiscard]] std::optional<std::vector<std::string>> keys() override {
    const standin::DesktopLock lock;
    return target_->keys();
  }

 private:
  std::unique_ptr<ContractTarget> target_;
};

class MacOnSimBackend final : public ContractBackend {
 public:
  MacOnSimBackend() { standin::enterDesktop(desktop_->platformBackend().platform(), true); }
  MacOnSimBackend(const MacOnSimBackend&) = delete;
  MacOnSimBackend& operator=(const MacOnSimBackend&) = delete;
  ~MacOnSimBackend() override { standin::leaveDesktop(); }

  [[nodiscard]] Backend& platformBackend() override { return sharedBackend(); }
  [[nodiscard]] std::string targetBundleId() const override { return desktop_->targetBundleId(); }

  [[nodiscard]] std::unique_ptr<ContractTarget> startTarget(const std::string& title,
                                                            const Rect& frame) override {
    const standin::DesktopLock lock;
    return std::make_unique<LockedTarget>(desktop_->startTarget(title, frame));
  }

  // The backend's children are real ones.
  [[nodiscard]] Command exitingWith(int status) const override {
    return {kShell, {"-c", "exit " + std::to_string(status)}};
  }
  [[nodiscard]] Command running() const override { return {"/bin/sleep", {"60"}}; }
  [[nodiscard]] Command writing(const std::string& text, const std::string& path) const override {
    return {kShell, {"-c", R"(printf %s "$0" > "$1")", text, path}};
  }

 private:
  std::unique_ptr<ContractBackend> desktop_ = makeSimBackend();
};

}  // namespace

std::unique_ptr<ContractBackend> makeContractBackend() {
  return std::make_unique<MacOnSimBackend>();
}

void runOnTheStandin() {
  standin::complain = [](const std::string& what) { ADD_FAILURE() << what; };
  standin::Heap::instance().freeWhatEnds();
  runBesideMainLoop(sharedBackend().mainLoop(), [] { return RUN_ALL_TESTS(); });
}

}  // namespace tarqo::contract

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (argc == 3 && std::string_view(argv[1]) == "--macos") {
    standin::setSystemVersion(std::stoi(argv[2]));
  }
  tarqo::contract::runOnTheStandin();
}
