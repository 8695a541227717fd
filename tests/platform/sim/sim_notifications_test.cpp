#include <gtest/gtest.h>

#include "platform/sim/sim_desktop.h"

namespace tarqo::sim {
namespace {

using namespace std::chrono_literals;

class SimNotifications : public testing::Test {
 protected:
  std::unique_ptr<Observer> listen() {
    return desktop.accessibility().observe(notes.pid(), [this](std::string_view name) {
      heard.push_back(std::to_string(desktop.clock().elapsed() / 1ms) + " " + std::string(name));
    });
  }

  Desktop desktop;
  App& notes = desktop.app("com.example.Notes");
  Window& window = notes.window({100, 80, 800, 600});
  Node& save = window.button("Save");
  Lines heard;
};

TEST_F(SimNotifications, AreDeliveredAtTheirInstantWhoeverWaits) {
  const auto observer = listen();
  EXPECT_TRUE(observer->add(notes.node().element(), "AXValueChanged"));
  save.announce("AXValueChanged", 50ms);
  save.announce("AXValueChanged", 150ms);

  desktop.clock().runLoopFor(100ms);
  desktop.clock().sleep(100ms);

  EXPECT_EQ(heard, (Lines{"50 AXValueChanged", "150 AXValueChanged"}));
}

TEST_F(SimNotifications, AreHeardOnlyUnderASubscribedName) {
  const auto observer = listen();
  EXPECT_TRUE(observer->add(notes.node().element(), "AXValueChanged"));
  save.announce("AXTitleChanged");

  desktop.run(1s);

  EXPECT_EQ(heard, Lines{});
}

TEST_F(SimNotifications, OfOneElementAreNotThoseOfAnother) {
  const auto observer = listen();
  Node& other = window.button("Other");
  EXPECT_TRUE(observer->add(save.element(), "AXValueChanged"));

  other.announce("AXValueChanged", 10ms);
  save.announce("AXValueChanged", 20ms);
  desktop.run(1s);

  EXPECT_EQ(heard, Lines{"20 AXValueChanged"});
}

TEST_F(SimNotifications, AreHeardOnceHoweverOftenSubscribed) {
  const auto observer = listen();
  EXPECT_TRUE(observer->add(notes.node().element(), "AXValueChanged"));
  EXPECT_TRUE(observer->add(notes.node().element(), "AXValueChanged"));
  EXPECT_TRUE(observer->add(save.element(), "AXValueChanged"));
  save.announce("AXValueChanged");

  desktop.run(1s);

  EXPECT_EQ(heard.size(), 1U);
}

TEST_F(SimNotifications, EndWithTheObserver) {
  auto observer = listen();
  EXPECT_TRUE(observer->add(notes.node().element(), "AXValueChanged"));
  save.announce("AXValueChanged", 50ms);
  save.announce("AXValueChanged", 150ms);

  desktop.run(100ms);
  observer.reset();
  desktop.run(100ms);

  EXPECT_EQ(heard, Lines{"50 AXValueChanged"});
}

TEST_F(SimNotifications, AllowTheCallbackToEndItsOwnObserver) {
  std::unique_ptr<Observer> observer;
  int calls = 0;
  observer = desktop.accessibility().observe(notes.pid(), [&](std::string_view) {
    ++calls;
    observer.reset();
  });
  EXPECT_TRUE(observer->add(notes.node().element(), "AXValueChanged"));
  save.announce("AXValueChanged");
  save.announce("AXValueChanged");

  desktop.run(1s);

  EXPECT_EQ(calls, 1);
}

TEST_F(SimNotifications, OfAnotherProcessAreNotHeard) {
  App& other = desktop.app("com.example.Other");
  Node& button = other.window({0, 0, 200, 200}).button("Other");
  const auto observer = listen();
  EXPECT_FALSE(observer->add(button.element(), "AXValueChanged"));
  EXPECT_TRUE(observer->add(notes.node().element(), "AXValueChanged"));

  button.announce("AXValueChanged");
  desktop.run(1s);

  EXPECT_EQ(heard, Lines{});
}

TEST_F(SimNotifications, CannotBeHadFromEverybody) {
  notes.facts.refusesObservers = true;
  EXPECT_EQ(listen(), nullptr);
  EXPECT_EQ(desktop.accessibility().observe(7, [](std::string_view) {}), nullptr);
  notes.facts.refusesObservers = false;
  notes.kill();
  EXPECT_EQ(listen(), nullptr);
}

TEST_F(SimNotifications, MayBeUnsupported) {
  const auto observer = listen();
  notes.facts.unsupportedNotifications = {"AXMenuOpened"};

  EXPECT_FALSE(observer->add(notes.node().element(), "AXMenuOpened"));
  EXPECT_TRUE(observer->add(notes.node().element(), "AXMenuClosed"));
  save.remove();
  EXPECT_FALSE(observer->add(save.element(), "AXMenuClosed"));
}

TEST_F(SimNotifications, FollowAnAction) {
  const auto observer = listen();
  EXPECT_TRUE(observer->add(notes.node().element(), "AXValueChanged"));
  EXPECT_TRUE(observer->add(notes.node().element(), "AXLayoutChanged"));
  save.action("AXPress").announces("AXLayoutChanged", 300ms).announces("AXValueChanged");

  EXPECT_EQ(desktop.accessibility().perform(save.element(), "AXPress"), Performed::taken);
  EXPECT_EQ(heard, Lines{}) << "never on the caller's back";
  desktop.run(1s);

  EXPECT_EQ(heard, (Lines{"1 AXValueChanged", "300 AXLayoutChanged"}));
}

TEST_F(SimNotifications, TellOfTheFocusAndOfComingToTheFront) {
  App& other = desktop.app("com.example.Other");
  other.bringToFront();
  const auto observer = listen();
  EXPECT_TRUE(observer->add(notes.node().element(), "AXFocusedUIElementChanged"));
  EXPECT_TRUE(observer->add(notes.node().element(), "AXApplicationActivated"));

  notes.bringToFront();
  notes.bringToFront();
  desktop.run(10ms);
  window.textField().focus();
  desktop.run(10ms);

  EXPECT_EQ(heard, (Lines{"1 AXApplicationActivated", "11 AXFocusedUIElementChanged"}));
}

TEST_F(SimNotifications, OfAnElementThatIsGoneAreStillHeard) {
  const auto observer = listen();
  EXPECT_TRUE(observer->add(window.element(), "AXUIElementDestroyed"));

  window.close();
  desktop.run(10ms);

  EXPECT_EQ(heard, Lines{"1 AXUIElementDestroyed"});
}

}  // namespace
}  // namespace tarqo::sim
