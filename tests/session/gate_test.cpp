// What every operation on the target passes first.

#include <array>

#include "tests/support/scene.h"

namespace tarqo {
namespace {

constexpr const char* kLocked =
    "session_locked: Unlock the macOS desktop before observing or controlling the target "
    "application.";
constexpr std::array kMethods = {"settle", "geometry", "observe", "click",
                                 "hover",  "showMenu", "input"};
constexpr const char* kClosed = "app_closed: The application closed; reconnect before continuing.";

class Gate : public Scene {
 protected:
  /// What each gated method fails with.
  void expectEveryMethodFails(const std::string& expected) {
    for (const char* method : kMethods) {
      EXPECT_EQ(failure(method), expected) << method;
    }
  }

  void connect() {
    notes.window({100, 80, 800, 600}, "Notes");
    (void)result("connect", {{"bundleId", "com.example.Notes"}});
  }

  LoginSession& login() { return desktop.windowServer().session; }

  sim::App& notes = desktop.app("com.example.Notes");
};

TEST_F(Gate, RefusesBeforeAnyConnect) { expectEveryMethodFails(kClosed); }

TEST_F(Gate, RefusesALockedDesktopBeforeAMissingTarget) {
  login().locked = true;
  expectEveryMethodFails(kLocked);
}

TEST_F(Gate, RefusesALockedDesktopBeforeAMissingGrant) {
  login().locked = true;
  desktop.permissions().trusted = false;
  expectEveryMethodFails(kLocked);
  EXPECT_EQ(desktop.eventLog().count("prompt"), 0);
}

TEST_F(Gate, RefusesAMissingGrantBeforeAMissingTarget) {
  desktop.permissions().trusted = false;
  for (const char* method : kMethods) {
    EXPECT_EQ(error(method)["code"], "ax_not_trusted") << method;
  }
  EXPECT_EQ(desktop.eventLog().count("prompt"), 1);
}

TEST_F(Gate, RefusesASessionThatIsNotOnTheConsole) {
  connect();
  login().onConsole = false;
  expectEveryMethodFails(kLocked);
}

TEST_F(Gate, RefusesWithoutDetail) {
  login().locked = true;
  EXPECT_EQ(error("settle").size(), 2);
  login().locked = false;
  EXPECT_EQ(error("settle").size(), 2);
}

TEST_F(Gate, PassesASessionThatTellsNothing) {
  connect();
  login() = {};
  EXPECT_TRUE(result("geometry").contains("bounds"));
}

TEST_F(Gate, PassesAnUnlockedSessionOnTheConsole) {
  connect();
  EXPECT_TRUE(result("geometry").contains("bounds"));
}

TEST_F(Gate, RefusesOnceTheTargetHasQuitUntilTheNextConnect) {
  connect();
  notes.kill();
  expectEveryMethodFails(kClosed);
  desktop.app("com.example.Notes").window({100, 80, 800, 600}, "Notes");
  expectEveryMethodFails(kClosed);
  (void)result("connect", {{"bundleId", "com.example.Notes"}});
  EXPECT_TRUE(result("geometry").contains("bounds"));
}

TEST_F(Gate, RefusesATargetThatHasQuitButIsStillListed) {
  connect();
  notes.kill(true);
  expectEveryMethodFails(kClosed);
}

TEST_F(Gate, PassesTheSameTargetAfterTheDesktopIsUnlocked) {
  connect();
  login().locked = true;
  expectEveryMethodFails(kLocked);
  login().locked = false;
  EXPECT_TRUE(result("geometry").contains("bounds"));
}

}  // namespace
}  // namespace tarqo
