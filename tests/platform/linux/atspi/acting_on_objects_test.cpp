// What is done to objects, and what an application may make of it.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "tests/platform/linux/atspi/made_up_application.h"
#include "tests/platform/linux/atspi/recorded_desktop.h"

namespace tarqo::lnx::atspi {
namespace {

using namespace std::chrono_literals;

class ActingOnObjects : public testing::Test {
 protected:
  ActingOnObjects() : recorded_(app_.application()), desktop(recorded_.windows(), answer()) {}

  Ref ref(const std::string& id) const {
    return {ScriptedBus::kApplicationName, std::string(kObjectPath) + id};
  }
  Element object(const std::string& id) {
    return makeElement(
        {.pid = desktop.pid(), .timeout = 200ms, .ref = ref(id), .window = ref("1")});
  }
  LinuxAccessibility& ax() { return desktop.accessibility(); }

  /// What is done on a call of that method.
  void on(const std::string& member, Conduct conduct) {
    desktop.bus().behave([member, conduct](const std::string& called, const auto&) {
      return called == member ? conduct : Conduct::answer;
    });
  }

  std::string nameAt(Point point) {
    const std::optional<Element> found = ax().elementAt(point);
    return found ? handleOf(*found)->ref.path : "nothing";
  }

 private:
  static MadeUpApplication madeUp() {
    MadeUpApplication app("gtk 3.24");
    app.object("2")["states"] = "enabled focusable sensitive showing visible";
    return app;
  }

  ScriptedBus::Answer answer() {
    return [this](sd_bus_message* call) {
      const std::string member = sd_bus_message_get_member(call);
      if (member == "DoAction" || member == "GrabFocus") {
        return sd_bus_reply_method_return(call, "b", agrees ? 1 : 0) + 1;
      }
      if (member == "SetTextContents") {
        const char* text = nullptr;
        sd_bus_message_read(call, "s", &text);
        const std::lock_guard lock(lock_);
        content_ = heeds ? text : content_;
        return sd_bus_reply_method_return(call, "b", agrees ? 1 : 0) + 1;
      }
      if (member == "GetText") {
        const std::lock_guard lock(lock_);
        return sd_bus_reply_method_return(call, "s", content_.c_str()) + 1;
      }
      if (member == "Set") {
        return sd_bus_reply_method_return(call, nullptr) + 1;
      }
      return recorded_.answer(call);
    };
  }

  MadeUpApplication app_ = madeUp();
  RecordedApplication recorded_;
  std::mutex lock_;
  std::string content_ = "Ada";

 protected:
  std::atomic<bool> agrees = true;
  std::atomic<bool> heeds = true;  // Whether a text that is accepted is shown.
  RecordedDesktop desktop;
};

TEST_F(ActingOnObjects, APressThatIsAnsweredIsAcknowledged) {
  EXPECT_EQ(ax().perform(object("2"), "AXPress"), Performed::acknowledged);
  EXPECT_EQ(desktop.bus().calls()["DoAction"], 1);
}

TEST_F(ActingOnObjects, APressThatIsDeclinedIsRefused) {
  agrees = false;
  EXPECT_EQ(ax().perform(object("2"), "AXPress"), Performed::refused);
}

TEST_F(ActingOnObjects, AnActionThatIsNotOfferedIsNotSent) {
  EXPECT_EQ(ax().perform(object("5"), "AXPress"), Performed::refused);
  EXPECT_EQ(ax().perform(object("2"), "AXIncrement"), Performed::refused);
  EXPECT_EQ(desktop.bus().calls()["DoAction"], 0);
}

TEST_F(ActingOnObjects, APressWithoutAnAnswerIsPending) {
  on("DoAction", Conduct::ignore);
  const Instant begun = std::chrono::steady_clock::now();
  EXPECT_EQ(ax().perform(object("2"), "AXPress"), Performed::pending);
  EXPECT_LT(std::chrono::steady_clock::now() - begun, 2s);
}

TEST_F(ActingOnObjects, APressAtWhichTheApplicationIsGoneIsPending) {
  on("DoAction", Conduct::breakOff);
  EXPECT_EQ(ax().perform(object("2"), "AXPress"), Performed::pending);
}

TEST_F(ActingOnObjects, ATextThatIsTakenIsSet) {
  EXPECT_TRUE(ax().isSettable(object("3"), "AXValue"));
  EXPECT_TRUE(ax().set(object("3"), "AXValue", Value{std::string("Grace")}));
  const auto value = ax().attribute(object("3"), "AXValue");
  ASSERT_TRUE(value.has_value());
  EXPECT_EQ(*value->as<std::string>(), "Grace");
}

TEST_F(ActingOnObjects, ATextThatIsDeclinedIsNotSet) {
  agrees = false;
  heeds = false;
  EXPECT_FALSE(ax().set(object("3"), "AXValue", Value{std::string("Grace")}));
}

TEST_F(ActingOnObjects, ATextThatIsAcceptedAndNeverShownIsNotSet) {
  heeds = false;
  EXPECT_FALSE(ax().set(object("3"), "AXValue", Value{std::string("Grace")}));
  EXPECT_EQ(desktop.bus().calls()["SetTextContents"], 1);
}

TEST_F(ActingOnObjects, ANumberIsSetAsAProperty) {
  EXPECT_TRUE(ax().set(object("7"), "AXValue", Value{4.5}));
  EXPECT_TRUE(ax().set(object("7"), "AXValue", Value{std::string("4.5")}));
}

TEST_F(ActingOnObjects, TheFocusIsGivenWhereTheApplicationAgrees) {
  EXPECT_TRUE(ax().isSettable(object("2"), "AXFocused"));
  EXPECT_TRUE(ax().set(object("2"), "AXFocused", Value{true}));
  agrees = false;
  EXPECT_FALSE(ax().set(object("2"), "AXFocused", Value{true}));
  EXPECT_FALSE(ax().set(object("2"), "AXFocused", Value{false}));
}

TEST_F(ActingOnObjects, WhatIsAskedOfObjectsThatAreGoneIsRefused) {
  const Element gone = object("nobody");
  EXPECT_TRUE(ax().actionNames(gone).empty());
  EXPECT_EQ(ax().perform(gone, "AXPress"), Performed::refused);
  EXPECT_FALSE(ax().set(gone, "AXValue", Value{std::string("x")}));
  EXPECT_FALSE(ax().isSettable(gone, "AXValue"));
  EXPECT_FALSE(ax().takesTextByKeys(gone));
  EXPECT_TRUE(ax().attributes(gone, std::vector<std::string_view>{"AXRole"}).empty());
}

TEST_F(ActingOnObjects, TheDeepestObjectAtAPointIsFound) {
  const auto frame = ax().attribute(object("42"), "AXPosition");
  ASSERT_TRUE(frame.has_value());
  const Point at = *frame->as<Point>();
  EXPECT_EQ(nameAt({at.x + 5, at.y + 5}), ref("1").path);  // The list does not reach there.
  const Point button = *ax().attribute(object("2"), "AXPosition")->as<Point>();
  EXPECT_EQ(nameAt({button.x + 5, button.y + 5}), ref("2").path);
  EXPECT_EQ(nameAt({690, 490}), ref("1").path);
  EXPECT_EQ(nameAt({5, 5}), "nothing");
}

TEST_F(ActingOnObjects, APointInAnApplicationThatDoesNotAnswerIsNoObjects) {
  EXPECT_EQ(nameAt({690, 490}), ref("1").path);
  on("GetAccessibleAtPoint", Conduct::ignore);
  const Instant begun = std::chrono::steady_clock::now();
  EXPECT_EQ(nameAt({690, 490}), "nothing");
  EXPECT_LT(std::chrono::steady_clock::now() - begun, 2s);
}

/// Collects notifications, and waits for one.
class Heard {
 public:
  void add(std::string_view name) {
    const std::lock_guard lock(lock_);
    names_.insert(std::string(name));
  }
  bool within(Duration patience, const std::string& name) {
    const Instant end = std::chrono::steady_clock::now() + patience;
    do {
      {
        const std::lock_guard lock(lock_);
        if (names_.contains(name)) {
          return true;
        }
      }
      std::this_thread::sleep_for(2ms);
    } while (std::chrono::steady_clock::now() < end);
    return false;
  }

 private:
  std::mutex lock_;
  std::set<std::string> names_;
};

class EventsOfObjects : public ActingOnObjects {
 protected:
  void SetUp() override {
    observer = ax().observe(desktop.pid(), [this](std::string_view name) { heard.add(name); });
    ASSERT_NE(observer, nullptr);
    application = ax().application(desktop.pid(), 200ms);
    for (const char* name :
         {"AXFocusedUIElementChanged", "AXValueChanged", "AXMenuOpened", "AXMenuClosed"}) {
      EXPECT_TRUE(observer->add(*application, name)) << name;
    }
  }
  void send(const std::string& id, const std::string& state, bool gained) {
    desktop.bus().emit(ref(id).path, "org.a11y.atspi.Event.Object", "StateChanged", state,
                       gained ? 1 : 0);
  }

  Heard heard;
  std::optional<Element> application;
  std::unique_ptr<Observer> observer;
};

TEST_F(EventsOfObjects, AreNotificationsOfTheirApplication) {
  send("2", "checked", true);
  EXPECT_TRUE(heard.within(5s, "AXValueChanged"));
  EXPECT_FALSE(heard.within(0s, "AXFocusedUIElementChanged"));
}

TEST_F(EventsOfObjects, TellWhichObjectHasTheFocus) {
  send("3", "focused", true);
  ASSERT_TRUE(heard.within(5s, "AXFocusedUIElementChanged"));
  const auto focused = ax().attribute(*application, "AXFocusedUIElement");
  ASSERT_TRUE(focused.has_value());
  EXPECT_EQ(handleOf(*focused->as<Element>())->ref, ref("3"));
}

TEST_F(EventsOfObjects, TellWhichMenusAreOpen) {
  send("61", "showing", true);
  EXPECT_TRUE(heard.within(5s, "AXMenuOpened"));
  send("61", "showing", false);
  EXPECT_TRUE(heard.within(5s, "AXMenuClosed"));
}

TEST_F(EventsOfObjects, GoOnAfterTheBusWasLost) {
  desktop.bus().hangUp();
  const Instant end = std::chrono::steady_clock::now() + 5s;
  do {
    send("2", "checked", true);
  } while (!heard.within(50ms, "AXValueChanged") && std::chrono::steady_clock::now() < end);
  EXPECT_TRUE(heard.within(0s, "AXValueChanged"));
}

TEST_F(EventsOfObjects, OfNoInterestAreNotPassedOn) {
  desktop.bus().emit(ref("2").path, "org.a11y.atspi.Event.Mouse", "Abs", "", 1);
  send("2", "nonsense", true);
  send("2", "checked", true);
  EXPECT_TRUE(heard.within(5s, "AXValueChanged"));
  EXPECT_FALSE(heard.within(0s, "AXMenuOpened"));
}

}  // namespace
}  // namespace tarqo::lnx::atspi
