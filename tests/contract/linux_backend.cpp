// The Linux desktop under the contract, with our GTK 3 application as target. Needs a desktop:
// script/desktop; TARQO_APPS names the folder of the built test applications, whose share/ stands
// in XDG_DATA_DIRS.

#include <signal.h>

#include <thread>

#include "platform/platform.h"
#include "tests/contract/spawned_target.h"

namespace tarqo::contract {
namespace {

class LinuxBackend final : public ContractBackend {
 public:
  LinuxBackend() { apps_ = environmentVariable("TARQO_APPS", "run this through script/desktop"); }
  LinuxBackend(const LinuxBackend&) = delete;
  LinuxBackend& operator=(const LinuxBackend&) = delete;
  ~LinuxBackend() override {
    for (const RunningApplication& left :
         host().platform().workspace.runningApplications(targetBundleId())) {
      kill(left.id.pid, SIGKILL);
    }
  }

  [[nodiscard]] PlatformHost& host() override { return sharedHost(); }
  [[nodiscard]] std::string targetBundleId() const override { return "com.tarqo.test.gtk3"; }

  [[nodiscard]] std::unique_ptr<ContractTarget> startTarget(const std::string& title,
                                                            const Rect& frame) override {
    return std::make_unique<SpawnedTarget>(std::vector<std::string>{
        apps_ + "/gtk3_app", "--title", title, "--geometry", geometryArgument(frame)});
  }

  [[nodiscard]] Command exitingWith(int status) const override {
    return {"/bin/sh", {"-c", "exit " + std::to_string(status)}};
  }
  [[nodiscard]] Command running() const override { return {"/bin/sleep", {"60"}}; }
  [[nodiscard]] Command writing(const std::string& text, const std::string& path) const override {
    return {"/bin/sh", {"-c", R"(printf %s "$0" > "$1")", text, path}};
  }

 private:
  /// One for all tests, as in the helper: its main loop never ends.
  static PlatformHost& sharedHost() {
    static const std::unique_ptr<PlatformHost> kHost = [] {
      auto host = makePlatform("contract_tests_linux");
      std::thread([&loop = host->mainLoop()] { loop.run(); }).detach();
      return host;
    }();
    return *kHost;
  }

  std::string apps_;
};

}  // namespace

std::unique_ptr<ContractBackend> makeContractBackend() { return std::make_unique<LinuxBackend>(); }

}  // namespace tarqo::contract
