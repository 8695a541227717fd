// The Linux desktop under the contract, with our GTK 3 application as target. Needs a desktop:
// script/desktop; TARQO_APPS names the folder of the built test applications, whose share/ stands
// in XDG_DATA_DIRS.

#include <X11/keysym.h>
#include <signal.h>

#include <thread>

#include "platform/linux/input/keyboard_map.h"
#include "platform/platform.h"
#include "tests/contract/spawned_target.h"
#include "tests/contract/x_witness.h"

namespace tarqo::contract {
namespace {

class LinuxTarget final : public SpawnedTarget {
 public:
  using SpawnedTarget::SpawnedTarget;

  [[nodiscard]] std::optional<std::vector<std::string>> keys() override {
    std::vector<std::string> keys = lines();
    std::erase_if(keys, [](const std::string& line) { return !line.starts_with("key "); });
    // The modifier keys are pressed too.
    std::erase_if(keys, [](const std::string& line) { return line.ends_with("_L"); });
    return keys;
  }
};

class LinuxBackend final : public ContractBackend {
 public:
  LinuxBackend() { apps_ = environmentVariable("TARQO_APPS", "run this through script/desktop"); }
  LinuxBackend(const LinuxBackend&) = delete;
  LinuxBackend& operator=(const LinuxBackend&) = delete;
  ~LinuxBackend() override {
    for (const RunningApplication& left :
         platformBackend().platform().workspace.runningApplications(targetBundleId())) {
      kill(left.id.pid, SIGKILL);
    }
  }

  [[nodiscard]] Backend& platformBackend() override { return sharedBackend(); }
  [[nodiscard]] std::string targetBundleId() const override { return "com.tarqo.test.gtk3"; }

  [[nodiscard]] std::unique_ptr<ContractTarget> startTarget(const std::string& title,
                                                            const Rect& frame) override {
    return std::make_unique<LinuxTarget>(std::vector<std::string>{
        apps_ + "/gtk3_app", "--title", title, "--geometry", geometryArgument(frame)});
  }

  bool holdShift(bool isDown) override {
    lnx::x11::Display display(platformBackend().platform().clock);
    const auto keymap = lnx::input::readKeymap(*display.server());
    const auto key = keymap ? keymap->find(XK_Shift_L, 0, 0) : std::nullopt;
    if (key && isDown) {
      user_.press(*key);
    } else if (key) {
      user_.release(*key);
    }
    return key.has_value();
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
  static Backend& sharedBackend() {
    static const std::unique_ptr<Backend> kBackend = [] {
      auto host = makePlatform("contract_tests_linux");
      std::thread([&loop = host->mainLoop()] { loop.run(); }).detach();
      return host;
    }();
    return *kBackend;
  }

  std::string apps_;
  XUser user_;
};

}  // namespace

std::unique_ptr<ContractBackend> makeContractBackend() { return std::make_unique<LinuxBackend>(); }

}  // namespace tarqo::contract
