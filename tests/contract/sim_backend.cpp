// The simulated desktop under the contract.

#include "tests/contract/sim_backend.h"

#include "platform/sim/sim_desktop.h"

namespace tarqo::contract {
namespace {

constexpr const char* kBundleId = "com.example.Contract";
constexpr const char* kExit = "/usr/bin/exit-with";
constexpr const char* kRun = "/usr/bin/run";
constexpr const char* kWrite = "/usr/bin/write";

void buildWindow(sim::App& app, const std::string& title, const Rect& frame) {
  sim::Window& window = app.window(frame, title);
  sim::Node& status = window.label("Status: idle");
  sim::Node& save = window.button("Save");
  save.onPress([&status, count = 0]() mutable {
    status.value("Status: saved " + std::to_string(++count));
    status.announce("AXValueChanged");
  });
  window.button("Disabled").enabled(false);
  window.textField().title("Name");
  window.secureField();
  app.menu("File").menuItem("Close");
}

class SimTarget final : public ContractTarget {
 public:
  explicit SimTarget(sim::App& app) : app_(app) {
    app_.onKey([keys = keys_](const KeyEvent& event) {
      if (event.down) {
        keys->push_back(nameOf(event));
      }
    });
  }
  SimTarget(const SimTarget&) = delete;
  SimTarget& operator=(const SimTarget&) = delete;
  ~SimTarget() override { app_.kill(); }

  [[nodiscard]] Pid pid() const override { return app_.pid(); }
  void hang() override { app_.facts.hung = true; }
  void resume() override { app_.facts.hung = false; }
  void end() override { app_.kill(); }
  [[nodiscard]] std::optional<std::vector<std::string>> keys() override { return *keys_; }

 private:
  static std::string nameOf(const KeyEvent& event) {
    constexpr std::uint16_t kReturn = 36;
    std::string name = "key ";
    for (const auto& [mask, modifier] :
         {std::pair{kModifierControl, "Control+"}, std::pair{kModifierAlternate, "Alt+"},
          std::pair{kModifierShift, "Shift+"}}) {
      name += (event.modifiers & mask) != 0 ? modifier : "";
    }
    return name + (event.keyCode == kReturn ? "Return" : std::to_string(event.keyCode));
  }

  sim::App& app_;
  /// Shared with the application, which the desktop keeps.
  std::shared_ptr<std::vector<std::string>> keys_ = std::make_shared<std::vector<std::string>>();
};

class SimBackend final : public ContractBackend {
 public:
  SimBackend() {
    desktop_.installed(kBundleId).onLaunch = [](sim::App& app) {
      buildWindow(app, "Launched", {100, 100, 640, 480});
    };
    desktop_.processes().programs[kRun].exits = sim::Reply::never();
    desktop_.processes().programs[kWrite].effect = [this](const sim::Arguments& arguments) {
      desktop_.processes().files[arguments.at(1)] = arguments.at(0);
    };
    desktop_.capture().shareableWindowsExist = true;
    desktop_.accessibility().readsAhead = true;
  }

  [[nodiscard]] Backend& platformBackend() override { return desktop_; }
  [[nodiscard]] std::string targetBundleId() const override { return kBundleId; }

  [[nodiscard]] std::unique_ptr<ContractTarget> startTarget(const std::string& title,
                                                            const Rect& frame) override {
    sim::App& app = desktop_.anotherApp(kBundleId);
    app.facts.acknowledgesActions = true;
    buildWindow(app, title, frame);
    return std::make_unique<SimTarget>(app);
  }

  [[nodiscard]] Command exitingWith(int status) const override {
    desktop_.processes().programs[kExit].status = status;
    return {kExit, {}};
  }
  [[nodiscard]] Command running() const override { return {kRun, {}}; }
  [[nodiscard]] Command writing(const std::string& text, const std::string& path) const override {
    return {kWrite, {text, path}};
  }

 private:
  mutable sim::Desktop desktop_;
};

}  // namespace

std::unique_ptr<ContractBackend> makeSimBackend() { return std::make_unique<SimBackend>(); }

}  // namespace tarqo::contract
