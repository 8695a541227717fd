// Which of the target's windows is acted in.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;
using sim::Lines;
using sim::Topic;

class TargetWindow : public Scene {
 protected:
  void connect(const Json& more = Json::object()) {
    Json args = {{"bundleId", "com.example.Notes"}};
    args.update(more);
    (void)result("connect", args);
  }

  /// The left edge of the window that would be chosen now.
  Json chosen() { return result("geometry")["bounds"]["x"]; }

  sim::App& notes = desktop.app("com.example.Notes");
  sim::Window& first = notes.window({100, 80, 800, 600}, "First");
  sim::Window& second = notes.window({200, 80, 800, 600}, "Second");
  sim::Window& third = notes.window({300, 80, 800, 600}, "Third");
};

TEST_F(TargetWindow, IsTheFocusedOne) {
  connect();
  notes.focusWindow(&third);
  EXPECT_EQ(chosen(), 300);
}

TEST_F(TargetWindow, IsTheMainOneWhenNoneIsFocused) {
  connect();
  notes.node().without("AXFocusedWindow").with("AXMainWindow", Value{second.element()});
  EXPECT_EQ(chosen(), 200);
}

TEST_F(TargetWindow, IsTheFocusedOneBeforeTheMainOne) {
  connect();
  notes.node().with("AXFocusedWindow", Value{third.element()});
  notes.node().with("AXMainWindow", Value{second.element()});
  EXPECT_EQ(chosen(), 300);
}

TEST_F(TargetWindow, IsTheMainOneWhenTheFocusedOneHasNoFrame) {
  connect();
  third.withoutFrame();
  notes.node().with("AXFocusedWindow", Value{third.element()});
  notes.node().with("AXMainWindow", Value{second.element()});
  EXPECT_EQ(chosen(), 200);
}

TEST_F(TargetWindow, IsTheFirstWithAFrameWhenNoneIsPreferred) {
  connect();
  notes.node().without("AXFocusedWindow").without("AXMainWindow");
  first.withoutFrame();
  EXPECT_EQ(chosen(), 200);
}

TEST_F(TargetWindow, IsNoneWhenNoWindowHasAFrame) {
  connect();
  for (sim::Window* window : {&first, &second, &third}) {
    window->with("AXSize", Value{Size{0, 0}});
  }
  EXPECT_EQ(failure("geometry"), "no_window: The application has no accessible window.");
}

TEST_F(TargetWindow, IsNeverAnAttributeOfAnotherType) {
  connect();
  notes.node().with("AXFocusedWindow", Value{std::string("Third")});
  notes.node().with("AXMainWindow", Value{second.element()});
  EXPECT_EQ(chosen(), 200);
}

class BoundTargetWindow : public TargetWindow {
 protected:
  void SetUp() override {
    first.shows("https://b.example/");
    second.shows("https://a.example/1");
    third.shows("https://a.example/2");
    connect({{"site", "https://a.example"}});
  }
};

TEST_F(BoundTargetWindow, IsTheFirstOfTheSiteWhenAnotherSiteIsFocused) {
  notes.focusWindow(&first);
  EXPECT_EQ(chosen(), 200);
}

TEST_F(BoundTargetWindow, IsTheFocusedOneOfTheSite) {
  notes.focusWindow(&third);
  EXPECT_EQ(chosen(), 300);
}

TEST_F(BoundTargetWindow, IsTheMainOneOfTheSiteWhenAnotherSiteIsFocused) {
  notes.node().with("AXFocusedWindow", Value{first.element()});
  notes.node().with("AXMainWindow", Value{third.element()});
  EXPECT_EQ(chosen(), 300);
}

TEST_F(BoundTargetWindow, IsNoneWhenTheSiteWasLeft) {
  second.shows("https://b.example/");
  third.shows("https://b.example/");
  EXPECT_EQ(failure("geometry"), "no_window: The application has no accessible window.");
}

class ReopenedWindow : public Scene {
 protected:
  static constexpr double kActivation = 120;

  double connectTakes() {
    return millisecondsOf([&] { (void)result("connect", {{"bundleId", "com.example.Notes"}}); });
  }

  Lines opened() { return desktop.eventLog().lines(Topic::bundles); }

  sim::App& notes = desktop.app("com.example.Notes");
  sim::InstalledBundle& bundle = desktop.installed("com.example.Notes");
};

TEST_F(ReopenedWindow, IsAskedForWhenThereIsNone) {
  bundle.onReopen = [](sim::App& app) { app.window({100, 80, 800, 600}, "Notes"); };
  EXPECT_EQ(connectTakes(), 20 + kActivation);
  EXPECT_EQ(opened(), Lines{"open /Applications/Notes.app in front"});
  EXPECT_EQ(result("geometry")["bounds"]["x"], 100);
}

TEST_F(ReopenedWindow, IsAskedForWhenTheOnlyOneHasNoSize) {
  notes.window({100, 80, 0, 0}, "Empty");
  (void)connectTakes();
  EXPECT_EQ(opened(), Lines{"open /Applications/Notes.app in front"});
}

TEST_F(ReopenedWindow, IsNotAskedForWithoutLaunch) {
  (void)result("connect", {{"bundleId", "com.example.Notes"}, {"launch", false}});
  EXPECT_EQ(opened(), Lines{});
}

// The window of another application says nothing of this one's.
TEST_F(ReopenedWindow, WithoutLaunchIsNotReplacedByTheWindowOfTheApplicationBefore) {
  sim::App& other = desktop.app("com.example.Other");
  sim::Window& before = other.window({300, 200, 500, 400}, "Other");
  (void)result("connect", {{"bundleId", "com.example.Other"}});
  notes.window({100, 80, 800, 600}, "Notes").toFront();
  before.minimize();
  (void)result("connect", {{"bundleId", "com.example.Notes"}, {"launch", false}});
  EXPECT_EQ(result("geometry").at("visibility"), "visible");
}

TEST_F(ReopenedWindow, IsNotAskedForWhenOneIsThere) {
  notes.window({100, 80, 800, 600}, "Notes");
  (void)connectTakes();
  EXPECT_EQ(opened(), Lines{});
}

TEST_F(ReopenedWindow, MayTakeTwoSecondsAfterTheAnswer) {
  bundle.onReopen = [this](sim::App& app) {
    desktop.after(1960ms, [&app] { app.window({100, 80, 800, 600}, "Notes"); });
  };
  EXPECT_EQ(connectTakes(), 20 + 1950 + kActivation) << "counted from the slice of the answer";
  EXPECT_EQ(result("geometry")["bounds"]["x"], 100);
}

TEST_F(ReopenedWindow, IsLookedForEvery50Milliseconds) {
  bundle.onReopen = [this](sim::App& app) {
    desktop.after(71ms, [&app] { app.window({100, 80, 800, 600}, "Notes"); });
  };
  EXPECT_EQ(connectTakes(), 20 + 100 + kActivation);
}

TEST_F(ReopenedWindow, IsGivenUpTwoSecondsAfterTheAnswer) {
  EXPECT_EQ(connectTakes(), 20 + 2000 + kActivation);
  EXPECT_EQ(error("geometry")["code"], "no_window");
}

TEST_F(ReopenedWindow, IsGivenUpAfterSevenSecondsWithoutAnAnswer) {
  bundle.launch = sim::Reply::never();
  EXPECT_EQ(connectTakes(), 5000 + 2000 + kActivation);
}

TEST_F(ReopenedWindow, IsLookedForEvenWithoutAnAnswer) {
  bundle.launch = sim::Reply::never();
  desktop.after(5010ms, [&] { notes.window({100, 80, 800, 600}, "Notes"); });
  EXPECT_EQ(connectTakes(), 5050 + kActivation);
}

TEST_F(ReopenedWindow, CannotBeAskedForWithoutABundle) {
  sim::App& tool = desktop.bundles().startWithoutBundle("Tool");
  tool.facts.bundleId = "com.example.Tool";
  EXPECT_EQ(millisecondsOf([&] {
              (void)result("connect", {{"bundleId", "com.example.Tool"}});
            }),
            kActivation);
  EXPECT_EQ(opened(), Lines{});
}

TEST_F(ReopenedWindow, StaysForgottenWhenAConnectFoundNone) {
  sim::Window& window = notes.window({100, 80, 800, 600}, "Notes");
  (void)connectTakes();
  window.close();
  (void)connectTakes();
  EXPECT_EQ(failure("observe", {{"image", false}}),
            "no_window: The application has no accessible window. Open a window and retry.");
}

}  // namespace
}  // namespace tarqo
