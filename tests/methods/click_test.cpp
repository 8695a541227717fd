// The click method: its arguments, its results, and that one observation allows one action.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;

constexpr const char* kNodeIdRequired =
    "invalid_argument: A node ID from a current snapshot is required";
constexpr const char* kExpired =
    "stale_snapshot: This node reference expired. Take a new snapshot before clicking.";
constexpr const char* kNoFrame = "not_visible: The element no longer has a visible frame";

class Click : public ConnectedScene {
 protected:
  Click() { save.action("AXPress").announces("AXValueChanged"); }

  std::string clickFailure(const Json& args) { return failure("click", args); }

  // The result without its time and its node.
  Json click(const std::string& id, const Json& args = Json::object()) {
    Json request = args;
    request["nodeId"] = id;
    Json answer = result("click", request);
    EXPECT_EQ(answer.at("nodeId"), id);
    EXPECT_TRUE(answer.at("at").is_string());
    answer.erase("nodeId");
    answer.erase("at");
    return answer;
  }

  // Clicks the button a few times in a row.
  Json clickWithCount(const Json& count) { return click(idOf("Save"), {{"count", count}}); }
};

TEST_F(Click, AnswersWithMethodNodeAndTime) {
  const std::string id = idOf("Save");
  EXPECT_EQ(
      result("click", {{"nodeId", id}}),
      Json({{"method", "accessibility"}, {"nodeId", id}, {"at", "2025-01-01T00:00:00.260Z"}}));
}

// The node id.

TEST_F(Click, NeedsANodeId) {
  EXPECT_EQ(clickFailure(Json::object()), kNodeIdRequired);
  EXPECT_EQ(clickFailure({{"nodeId", ""}}), kNodeIdRequired);
  EXPECT_EQ(clickFailure({{"nodeId", 7}}), kNodeIdRequired);
  EXPECT_EQ(clickFailure({{"nodeId", nullptr}}), kNodeIdRequired);
}

TEST_F(Click, PassesTheGateBeforeItsArgumentsAreRead) {
  desktop.windowServer().session.locked = true;
  EXPECT_EQ(error("click").at("code"), "session_locked");
  desktop.windowServer().session.locked = false;
  desktop.permissions().trusted = false;
  EXPECT_EQ(error("click").at("code"), "ax_not_trusted");
  desktop.permissions().trusted = true;
  notes.kill();
  EXPECT_EQ(clickFailure(Json::object()),
            "app_closed: The application closed; reconnect before continuing.");
}

TEST_F(Click, OfAnUnknownNodeIsStale) {
  (void)observe();
  EXPECT_EQ(clickFailure({{"nodeId", "unknown:0"}}), kExpired);
}

TEST_F(Click, OfANodeExactlySixtySecondsOldIsStale) {
  const std::string id = idOf("Save");
  desktop.run(60s);
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kExpired);
  EXPECT_EQ(save.activations(), 0);
}

TEST_F(Click, OfANodeJustUnderSixtySecondsOldSucceeds) {
  const std::string id = idOf("Save");
  desktop.run(60s - 1ns);
  EXPECT_EQ(click(id).at("method"), "accessibility");
}

TEST_F(Click, OfANodeDoesNotAgeByTheCalendar) {
  const std::string id = idOf("Save");
  desktop.clock().setWall(desktop.clock().wall() + 24h);
  EXPECT_EQ(click(id).at("method"), "accessibility");
}

TEST_F(Click, OfANodeFromBeforeConnectingAgainIsStale) {
  const std::string id = idOf("Save");
  (void)result("connect", {{"bundleId", "com.example.Notes"}});
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kExpired);
}

// One observation, one action.

TEST_F(Click, ThatSucceedsSpendsEveryNode) {
  const std::string id = idOf("Save");
  const std::string other = id.substr(0, id.find(':')) + ":3";
  (void)click(id);
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kExpired);
  EXPECT_EQ(clickFailure({{"nodeId", other}}), kExpired);
  EXPECT_EQ(save.activations(), 1);
}

TEST_F(Click, ThatFailsSpendsEveryNode) {
  const std::vector<std::pair<std::string, std::function<void(bool)>>> obstacles{
      {"session_locked", [&](bool raised) { desktop.windowServer().session.locked = raised; }},
      {"ax_not_trusted", [&](bool raised) { desktop.permissions().trusted = !raised; }},
      {"stale_snapshot", [&](bool raised) { save.identifier(raised ? "other" : ""); }},
      {"not_clickable", [&](bool raised) { save.enabled(!raised); }},
      {"focus_failed",
       [&](bool raised) {
         desktop.app("com.example.Other").bringToFront();
         notes.facts.comesToFront = raised ? std::nullopt : std::optional(Duration::zero());
       }},
      {"not_visible",
       [&](bool raised) {
         save.at({200, 200, raised ? 0.0 : 80.0, 24});
       }},
      {"hit_test_failed",
       [&](bool raised) {
         desktop.accessibility().hitTestFails = raised;
         save.action("AXPress").refused(raised);
       }},
  };
  for (const auto& [code, obstacle] : obstacles) {
    const std::string id = idOf("Save");
    obstacle(true);
    EXPECT_EQ(error("click", {{"nodeId", id}}).at("code"), code);
    obstacle(false);
    EXPECT_EQ(clickFailure({{"nodeId", id}}), kExpired) << "after " << code;
  }
  EXPECT_EQ(save.activations(), 0);
}

TEST_F(Click, WithoutANodeIdSpendsEveryNodeToo) {
  const std::string id = idOf("Save");
  EXPECT_EQ(clickFailure(Json::object()), kNodeIdRequired);
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kExpired);
}

TEST_F(Click, CountsAsAnActionEvenWhenItFails) {
  notes.announce("AXTitleChanged");
  desktop.run(500ms);
  EXPECT_EQ(clickFailure(Json::object()), kNodeIdRequired);
  EXPECT_EQ(result("settle").at("heard"), Json::array());
}

// What is clicked must be what was seen.

class Identity : public Click {
 protected:
  static constexpr const char* kChanged =
      "stale_snapshot: The captured element changed. Take a new snapshot before acting.";
  static constexpr const char* kNotClickable =
      "not_clickable: The element is disabled, protected, or not clickable";
};

TEST_F(Identity, AnotherRoleNameOrIdentifierIsAnotherElement) {
  save.identifier("save");
  std::string id = idOf("Save");
  save.with("AXRole", Value{"AXCheckBox"});
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kChanged);
  save.with("AXRole", Value{"AXButton"});
  id = idOf("Save");
  save.title("Save All");
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kChanged);
  save.title("Save");
  id = idOf("Save");
  save.identifier("save-all");
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kChanged);
  EXPECT_EQ(save.activations(), 0);
}

TEST_F(Identity, AnElementThatIsGoneIsAnotherElement) {
  const std::string id = idOf("Save");
  save.remove();
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kChanged);
}

TEST_F(Identity, AnElementOfAHungApplicationIsAnotherElement) {
  const std::string id = idOf("Save");
  notes.facts.hung = true;
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kChanged);
}

TEST_F(Identity, AnotherPlaceIsNoOtherElement) {
  const std::string id = idOf("Save");
  save.withoutAction("AXPress").at({500, 500, 80, 24});
  EXPECT_EQ(click(id).at("method"), "pointer");
  EXPECT_EQ(desktop.posted().back(), "up(1) 540,512");
}

TEST_F(Identity, ADisabledElementIsRefused) {
  const std::string id = idOf("Save");
  save.enabled(false);
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kNotClickable);
}

TEST_F(Identity, AnElementThatBecameAPasswordFieldIsRefused) {
  const std::string id = idOf("Save");
  save.with("AXSubrole", Value{"AXSecureTextField"});
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kNotClickable);
}

TEST_F(Identity, WhatWasNotClickableIsRefused) {
  window.group("box");
  EXPECT_EQ(clickFailure({{"nodeId", idOf("box")}}), kNotClickable);
}

TEST_F(Identity, WhatWasDisabledWhenSeenIsRefusedEvenIfItIsEnabledNow) {
  save.enabled(false);
  const std::string id = idOf("Save");
  save.enabled(true);
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kNotClickable);
}

TEST_F(Identity, AChangeIsToldBeforeADisabledElement) {
  const std::string id = idOf("Save");
  save.title("Save All").enabled(false);
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kChanged);
}

TEST_F(Identity, IsProvenBeforeTheApplicationIsBroughtForward) {
  const std::string id = idOf("Save");
  desktop.eventLog().clear();
  save.enabled(false);
  notes.facts.comesToFront.reset();
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kNotClickable);
  EXPECT_EQ(desktop.eventLog().count("activate"), 0U);
}

TEST_F(Identity, IsProvenAgainAfterTheApplicationCameForward) {
  const std::string id = idOf("Save");
  desktop.after(60ms, [&] { save.title("Delete"); });
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kChanged);
  EXPECT_EQ(save.activations(), 0);
}

TEST_F(Identity, AnApplicationThatEndsWhileItComesForwardIsNotClicked) {
  const std::string id = idOf("Save");
  desktop.after(60ms, [&] { notes.kill(); });
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kChanged);
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(Identity, AnApplicationThatDoesNotComeForwardIsNotClicked) {
  const std::string id = idOf("Save");
  desktop.app("com.example.Other").bringToFront();
  notes.facts.comesToFront.reset();
  EXPECT_EQ(millisecondsOf([&] {
              EXPECT_EQ(clickFailure({{"nodeId", id}}),
                        "focus_failed: Could not bring the target application to the front");
            }),
            1500);
  EXPECT_EQ(save.activations(), 0);
}

// The frame.

TEST_F(Click, NeedsAFrameOfOnePointEachWay) {
  std::string id = idOf("Save");
  save.at({200, 200, 0.5, 24});
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kNoFrame);
  id = idOf("Save");
  save.at({200, 200, 80, 0.9});
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kNoFrame);
  id = idOf("Save");
  save.withoutFrame();
  EXPECT_EQ(clickFailure({{"nodeId", id}}), kNoFrame);
  EXPECT_EQ(save.activations(), 0);
  id = idOf("Save");
  save.at({200, 200, 1, 1});
  EXPECT_EQ(click(id).at("method"), "accessibility");
}

// The count.

TEST_F(Click, OnceMayPressThroughAccessibility) {
  for (const Json& count : {Json(1), Json(0), Json(-1), Json(1.0)}) {
    EXPECT_EQ(clickWithCount(count), Json({{"method", "accessibility"}})) << count;
  }
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(Click, ACountThatIsNoIntegerIsOne) {
  for (const Json& count : {Json("2"), Json(1.5), Json(true), Json(nullptr), Json({2})}) {
    EXPECT_EQ(clickWithCount(count), Json({{"method", "accessibility"}})) << count;
  }
}

TEST_F(Click, TwiceIsTheWorkOfThePointer) {
  EXPECT_EQ(clickWithCount(2), Json({{"method", "pointer-double"}}));
  EXPECT_EQ(save.presses(), 0);
  EXPECT_EQ(save.clicks(), 2);
}

TEST_F(Click, MoreThanTwiceIsTwice) {
  EXPECT_EQ(clickWithCount(7), Json({{"method", "pointer-double"}}));
  EXPECT_EQ(save.presses(), 0);
  EXPECT_EQ(save.clicks(), 2);
  EXPECT_EQ(clickWithCount(INT64_MAX), Json({{"method", "pointer-double"}}));
  EXPECT_EQ(save.clicks(), 4);
}

TEST_F(Click, OnceByThePointerIsOneClickWhateverTheCountBelowTwo) {
  save.withoutAction("AXPress");
  for (const int count : {1, 0, -1}) {
    EXPECT_EQ(clickWithCount(count), Json({{"method", "pointer"}}));
  }
  EXPECT_EQ(save.clicks(), 3);
}

// Menu items.

class MenuItem : public Click {
 protected:
  sim::Node& open = notes.menu("File").menuItem("Open");
};

TEST_F(MenuItem, IsPressedThroughAccessibilityWithoutAFrame) {
  EXPECT_EQ(click(idOf("Open")), Json({{"method", "accessibility"}, {"via", "menubar"}}));
  EXPECT_EQ(open.presses(), 1);
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(MenuItem, IsPressedOnceWhateverTheCount) {
  EXPECT_EQ(click(idOf("Open"), {{"count", 2}}).at("method"), "accessibility");
  EXPECT_EQ(open.activations(), 1);
}

TEST_F(MenuItem, IsNotWaitedFor) {
  const std::string id = idOf("Open");
  EXPECT_EQ(millisecondsOf([&] { (void)click(id); }), 120);
}

TEST_F(MenuItem, ThatIsRefusedIsNeverClickedWithThePointer) {
  const std::string id = idOf("Open");
  open.action("AXPress").refused();
  open.at({200, 400, 80, 24});
  EXPECT_EQ(clickFailure({{"nodeId", id}}),
            "not_clickable: The application refused this menu command");
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(MenuItem, ThatOffersNoPressIsRefused) {
  const std::string id = idOf("Open");
  open.withoutAction("AXPress");
  EXPECT_EQ(clickFailure({{"nodeId", id}}),
            "not_clickable: The application refused this menu command");
}

TEST_F(MenuItem, ThatWasDisabledSinceIsNotPressed) {
  const std::string id = idOf("Open");
  open.enabled(false);
  EXPECT_EQ(error("click", {{"nodeId", id}}).at("code"), "not_clickable");
  EXPECT_EQ(open.activations(), 0);
}

TEST_F(MenuItem, TheMenuBarItselfIsNotClickable) {
  EXPECT_EQ(error("click", {{"nodeId", idOf("메뉴 막대")}}).at("message"),
            "The captured element changed. Take a new snapshot before acting.");
}

}  // namespace
}  // namespace tarqo
