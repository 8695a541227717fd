// The macOS desktop under the contract, with our AppKit application as target: script/mac-contract
// puts it into the user's application folder, which TARQO_APPS names.
//
// The main thread runs the main loop, as in the helper; the tests run on a thread like its worker.

#include <gtest/gtest.h>
#include <signal.h>

#include <cstdio>

#include "platform/platform.h"
#include "tests/contract/beside_main_loop.h"
#include "tests/contract/spawned_target.h"

namespace tarqo::contract {
namespace {

constexpr const char* kShell = "/bin/sh";

Backend& sharedBackend() {
  static const std::unique_ptr<Backend> kBackend = makePlatform("contract_tests_mac");
  return *kBackend;
}

class MacBackend final : public ContractBackend {
 public:
  MacBackend() { apps_ = environmentVariable("TARQO_APPS", "run script/mac-contract"); }
  MacBackend(const MacBackend&) = delete;
  MacBackend& operator=(const MacBackend&) = delete;
  ~MacBackend() override {
    for (const RunningApplication& left :
         platformBackend().platform().workspace.runningApplications(targetBundleId())) {
      kill(left.id.pid, SIGKILL);
    }
  }

  [[nodiscard]] Backend& platformBackend() override { return sharedBackend(); }
  [[nodiscard]] std::string targetBundleId() const override { return "com.tarqo.test.mac"; }

  [[nodiscard]] std::unique_ptr<ContractTarget> startTarget(const std::string& title,
                                                            const Rect& frame) override {
    return std::make_unique<SpawnedTarget>(
        std::vector<std::string>{apps_ + "/TarqoContract.app/Contents/MacOS/TarqoContract",
                                 "--title", title, "--geometry", geometryArgument(frame)});
  }

  [[nodiscard]] Command exitingWith(int status) const override {
    return {kShell, {"-c", "exit " + std::to_string(status)}};
  }
  [[nodiscard]] Command running() const override { return {"/bin/sleep", {"60"}}; }
  [[nodiscard]] Command writing(const std::string& text, const std::string& path) const override {
    return {kShell, {"-c", R"(printf %s "$0" > "$1")", text, path}};
  }

 private:
  std::string apps_;
};

/// What is missing before any test could pass; empty when nothing is.
std::string missingGrant() {
  Permissions& permissions = sharedBackend().platform().permissions;
  if (!permissions.accessibilityTrusted()) {
    permissions.promptForAccessibility();
    return "Accessibility is not granted to the application that runs this (docs/macos.md).";
  }
  if (!permissions.captureAccess() && !permissions.requestCaptureAccess()) {
    return "Screen Recording is not granted to the application that runs this (docs/macos.md).";
  }
  return "";
}

int runTests() {
  const std::string missing = missingGrant();
  if (!missing.empty()) {
    std::fprintf(stderr, "%s\n", missing.c_str());
    return 1;
  }
  return RUN_ALL_TESTS();
}

}  // namespace

std::unique_ptr<ContractBackend> makeContractBackend() { return std::make_unique<MacBackend>(); }

void runOnThisMac() { runBesideMainLoop(sharedBackend().mainLoop(), runTests); }

}  // namespace tarqo::contract

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  tarqo::contract::runOnThisMac();
}
