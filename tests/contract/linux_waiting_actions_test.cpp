// Actions of GTK 3 whose handlers open a dialog and wait in a loop of their own until it is
// answered, and keys meanwhile.

#include "tests/contract/contract_fixture.h"
#include "tests/contract/spawned_target.h"

namespace tarqo::contract {
namespace {

class WaitingActions : public TargetContract {
 protected:
  void SetUp() override {}  // Each test starts its own target.

  /// `runtime` is the folder in which the application listens for connections of its own.
  void start(const std::string& runtime) {
    const std::string folder = environmentVariable("TARQO_APPS", "run this in script/desktop");
    target = std::make_unique<SpawnedTarget>(std::vector<std::string>{
        "/usr/bin/env", "XDG_RUNTIME_DIR=" + runtime, folder + "/gtk3_app", "--tab", "Windows"});
    ASSERT_TRUE(waitUntil([&] { return find("Ask").has_value(); })) << "the button never shows";
    bringToFront(*target);
  }

  std::optional<Element> find(std::string_view title) const {
    for (const Element& window : elements(application(), "AXWindows")) {
      for (const Element& element : tree(window)) {
        if (text(element, "AXRole") == "AXButton" && text(element, "AXTitle") == title) {
          return element;
        }
      }
    }
    return std::nullopt;
  }

  std::optional<Rect> dialog() const {
    for (const WindowInfo& each : platform.windowServer.windows(WindowList::onScreenAboveDesktop)) {
      if (each.ownerPid == target->pid() && each.title == "Ask") {
        return each.bounds;
      }
    }
    return std::nullopt;
  }

  /// By the pointer, at the button in the dialog's lower right corner.
  void answerDialog() const {
    const std::optional<Rect> bounds = dialog();
    ASSERT_TRUE(bounds);
    const Point ok{bounds->x + bounds->width - 30, bounds->y + bounds->height - 20};
    for (const MouseEventType type :
         {MouseEventType::moved, MouseEventType::leftDown, MouseEventType::leftUp}) {
      const auto event = platform.inputEvents.create(nullptr, MouseEvent{type, ok, 1});
      ASSERT_NE(event, nullptr);
      platform.inputEvents.post(*event);
    }
    EXPECT_TRUE(waitUntil([&] { return !dialog(); })) << "the dialog stays";
  }

  [[nodiscard]] bool isEndangered() const { return ax.isEndangeredByKeys(target->pid()); }
};

TEST_F(WaitingActions, AreSafeOnAConnectionOfTheirOwn) {
  start(environmentVariable("XDG_RUNTIME_DIR", "run this in script/desktop"));

  EXPECT_EQ(ax.perform(*find("Ask"), "AXPress"), Performed::acknowledged);

  EXPECT_TRUE(waitUntil([&] { return dialog().has_value(); }));
  EXPECT_FALSE(isEndangered());
  EXPECT_TRUE(find("OK")) << "the dialog can be read";
  answerDialog();
}

TEST_F(WaitingActions, EndangerAnApplicationThatOffersNone) {
  start("/dev/null");
  EXPECT_FALSE(isEndangered());

  EXPECT_EQ(ax.perform(*find("Ask"), "AXPress"), Performed::pending);

  EXPECT_TRUE(waitUntil([&] { return dialog().has_value(); }));
  EXPECT_TRUE(isEndangered());
  answerDialog();
  EXPECT_TRUE(waitUntil([&] { return !isEndangered(); }));
  EXPECT_TRUE(waitUntil([&] { return find("Ask").has_value(); }));
}

TEST_F(WaitingActions, EndangerNobodyOnceTheyReturned) {
  start("/dev/null");

  EXPECT_EQ(ax.perform(*find("Rename window"), "AXPress"), Performed::acknowledged);

  EXPECT_FALSE(isEndangered());
}

}  // namespace
}  // namespace tarqo::contract
