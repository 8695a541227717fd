// A press through accessibility, and what counts as the application's answer to it.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;

class Press : public ConnectedScene {
 protected:
  // Clicks the button and gives the answer without its node and time.
  Json click() {
    Json answer = result("click", {{"nodeId", idOf("Save")}});
    answer.erase("nodeId");
    answer.erase("at");
    return answer;
  }

  // Milliseconds from the press to the answer of the request.
  double waited() {
    const std::string id = idOf("Save");
    return millisecondsOf([&] { (void)result("click", {{"nodeId", id}}); }) - 120;
  }

  void coverSave() {
    sim::WindowServerService& windows = desktop.windowServer();
    windows.toFront(windows.bareWindow(999, "Other", {190, 190, 100, 44}));
  }

  sim::Action& press = save.action("AXPress");
  const Json byAccessibility = {{"method", "accessibility"}};
  const Json pending = {{"method", "accessibility"}, {"pending", true}};
  const Json byPointer = {{"method", "pointer"}};
  const Json afterSilence = {{"method", "pointer"}, {"fallback", "press_unanswered"}};
};

// Answered.

TEST_F(Press, ThatIsAnsweredDoesNotMoveThePointer) {
  press.announces("AXValueChanged");
  EXPECT_EQ(click(), byAccessibility);
  EXPECT_EQ(desktop.posted(), Lines{});
  EXPECT_EQ(save.activations(), 1);
}

TEST_F(Press, IsAnsweredByAnyNotificationThatComingForwardDoesNotCause) {
  for (const std::string_view name : WATCHED) {
    const bool neutral = name == "AXFocusedUIElementChanged" || name == "AXApplicationActivated";
    save.withoutAction("AXPress").action("AXPress").announces(std::string(name));
    EXPECT_EQ(click(), neutral ? afterSilence : byAccessibility) << name;
  }
}

TEST_F(Press, IsLookedAtEveryTwentyMilliseconds) {
  press.announces("AXValueChanged", 101ms);
  EXPECT_EQ(waited(), 120);
}

TEST_F(Press, MayBeAnsweredUntilTheLastLookAfterThreeHundredAndFiftyMilliseconds) {
  press.announces("AXValueChanged", 350ms);
  EXPECT_EQ(click(), byAccessibility);
  save.withoutAction("AXPress").action("AXPress").announces("AXValueChanged", 360ms);
  EXPECT_EQ(click(), byAccessibility);
}

TEST_F(Press, AfterANeutralNotificationWaitsOnForAnAnswer) {
  press.announces("AXFocusedUIElementChanged", 10ms).announces("AXMenuOpened", 200ms);
  EXPECT_EQ(waited(), 200);
  EXPECT_EQ(save.activations(), 1);
}

TEST_F(Press, IsAnsweredByTheToolkitsAcknowledgement) {
  notes.facts.acknowledgesActions = true;
  EXPECT_EQ(click(), byAccessibility);
  EXPECT_EQ(save.activations(), 1);
}

TEST_F(Press, CountsItsTimeFromThePressAndNotFromItsReturn) {
  press.takes(200ms).announces("AXValueChanged", 100ms);
  EXPECT_EQ(waited(), 300);
}

TEST_F(Press, ThatReturnsLateHasLittleTimeLeftToBeAnswered) {
  press.takes(300ms).announces("AXValueChanged", 100ms);
  // Heard 400 ms after the press; the last look is at 360.
  EXPECT_EQ(click(), afterSilence);
}

// Unanswered.

TEST_F(Press, ThatNothingAnswersIsFollowedByThePointer) {
  EXPECT_EQ(click(), afterSilence);
  EXPECT_EQ(save.presses(), 1);
  EXPECT_EQ(save.clicks(), 1);
}

TEST_F(Press, ThatIsAnsweredTooLateIsFollowedByThePointer) {
  press.announces("AXValueChanged", 361ms);
  EXPECT_EQ(click(), afterSilence);
}

TEST_F(Press, ThatIsUnansweredIsMentionedWhenThePointerIsRefusedAfterIt) {
  press.effect([this] { coverSave(); });
  const std::string id = idOf("Save");
  const Json refused = error("click", {{"nodeId", id}});
  EXPECT_EQ(refused.at("code"), "target_covered");
  EXPECT_EQ(refused.at("pressed"), true);
  EXPECT_EQ(save.clicks(), 0);
}

TEST_F(Press, ThatWasNotMadeIsNotMentioned) {
  save.withoutAction("AXPress");
  const std::string id = idOf("Save");
  desktop.after(60ms, [this] { coverSave(); });  // When the target has come forward.
  const Json refused = error("click", {{"nodeId", id}});
  EXPECT_EQ(refused.at("code"), "target_covered");
  EXPECT_FALSE(refused.contains("pressed"));
}

TEST_F(Press, IsNotAnsweredByWhatWasHeardBefore) {
  const std::string id = idOf("Save");
  desktop.after(119ms, [&] { notes.announce("AXTitleChanged", {}); });
  EXPECT_EQ(result("click", {{"nodeId", id}}).at("fallback"), "press_unanswered");
}

TEST_F(Press, IsNotAnsweredByAnythingHeardAtTheSameInstant) {
  press.announces("AXValueChanged", 0ms);
  EXPECT_EQ(click(), afterSilence);
}

TEST_F(Press, IsNotAnsweredByAnotherApplication) {
  sim::App& other = desktop.app("com.example.Other");
  press.effect([&] { other.announce("AXValueChanged", 10ms); });
  EXPECT_EQ(click(), afterSilence);
}

TEST_F(Press, ThatNothingAnswersCostsTheWaitAndTheClick) {
  // 360 to listen, 6 x 30 to glide, 250 to rest, 2 x 40 for the button.
  EXPECT_EQ(waited(), 360 + 180 + 250 + 80);
}

TEST_F(Press, ThatNothingAnswersIsFollowedByThePointerOnlyWhereTheElementStillIs) {
  const std::string id = idOf("Save");
  press.effect([&] { save.at({500, 500, 80, 24}); }, 100ms);
  EXPECT_EQ(failure("click", {{"nodeId", id}}),
            "target_covered: The position (240,212) holds AXWindow \"Notes\" [100,80 800x600], not "
            "the captured AXButton [500,500 80x24]; take a fresh snapshot");
  EXPECT_EQ(desktop.posted(), Lines{});
}

// Refused.

TEST_F(Press, ThatIsRefusedIsFollowedByThePointerAtOnceAndWithoutANote) {
  press.refused();
  EXPECT_EQ(click(), byPointer);
  EXPECT_EQ(waited(), 180 + 250 + 80);
  EXPECT_EQ(save.presses(), 0);
  EXPECT_EQ(save.clicks(), 2);
}

TEST_F(Press, ThatTheApplicationTakesLongToReturnFromIsPendingAndNeverRepeated) {
  for (const bool acknowledges : {false, true}) {
    notes.facts.acknowledgesActions = acknowledges;
    for (Duration takes = 301ms; takes <= 1000ms; takes += 50ms) {
      const int before = save.activations();
      const bool inTime = acknowledges && takes <= 600ms;
      press.takes(takes);
      EXPECT_EQ(click(), inTime ? byAccessibility : pending);
      desktop.run(1s);
      EXPECT_EQ(save.activations(), before + 1);
      EXPECT_EQ(save.clicks(), 0);
    }
  }
}

TEST_F(Press, IsInTheJournalAsAcknowledgedWhenTheAnswerIsWritten) {
  notes.facts.acknowledgesActions = true;
  press.takes(450ms);
  EXPECT_EQ(click(), byAccessibility);
  EXPECT_EQ(result("settle").at("heard"), Json({"AXActionAcknowledged"}));
}

TEST_F(Press, OfAMenuCommandThatDoesNotReturnIsPendingAndNotRefused) {
  sim::Node& command = notes.menu("File").menuItem("Open…");
  command.action("AXPress").takes(5s);
  const Json observation = observe();
  Json answer = result("click", {{"nodeId", nodeNamed(observation, "Open…").at("id")}});
  EXPECT_EQ(answer.at("via"), "menubar");
  EXPECT_EQ(answer.at("pending"), true);
}

TEST_F(Press, ThatIsNotOfferedIsNotTried) {
  save.withoutAction("AXPress");
  EXPECT_EQ(click(), byPointer);
  EXPECT_EQ(desktop.eventLog().count("perform AXPress"), 0U);
}

TEST_F(Press, WhoseOfferCannotBeReadIsNotTried) {
  save.failingActionNames();
  EXPECT_EQ(click(), byPointer);
  EXPECT_EQ(desktop.eventLog().count("perform AXPress"), 0U);
}

TEST_F(Press, OfATextFieldIsAClickThatGivesItTheFocus) {
  const std::string id = idOf("hello");
  EXPECT_EQ(result("click", {{"nodeId", id}}).at("method"), "pointer");
  EXPECT_EQ(notes.focusedNode(), &field);
}

// Listening.

class PressUnheard : public Scene {
 protected:
  // Clicks the button of an application that is set up by then.
  Json click() {
    const Json observation = result("observe", {{"image", false}});
    return result("click", {{"nodeId", nodeNamed(observation, "Save").at("id")}});
  }

  void connect() { (void)result("connect", {{"bundleId", "com.example.Notes"}}); }

  sim::App& notes = desktop.app("com.example.Notes");
  sim::Window& window = notes.window({100, 80, 800, 600}, "Notes");
  sim::Node& save = window.button("Save").at({200, 200, 80, 24});
};

TEST_F(PressUnheard, WithoutAListenerIsTakenForAnswered) {
  notes.facts.refusesObservers = true;
  connect();
  const std::string method = click().at("method");
  EXPECT_EQ(method, "accessibility");
  EXPECT_EQ(save.activations(), 1);
}

TEST_F(PressUnheard, TriesAgainToListen) {
  notes.facts.refusesObservers = true;
  connect();
  notes.facts.refusesObservers = false;
  EXPECT_EQ(click().at("fallback"), "press_unanswered");
}

TEST_F(PressUnheard, ListensToTheWindowToo) {
  notes.facts.hung = true;  // So that nothing of the application can be subscribed to.
  connect();
  notes.facts.hung = false;
  save.action("AXPress").effect([&] { window.announce("AXLayoutChanged"); });
  EXPECT_EQ(click().at("method"), "accessibility");
}

TEST_F(PressUnheard, AWindowIsListenedToForSettlingToo) {
  notes.facts.hung = true;
  connect();
  notes.facts.hung = false;
  (void)result("observe", {{"image", false}});
  desktop.run(4s);
  window.announce("AXLayoutChanged", 50ms);
  EXPECT_EQ(result("settle").at("heard"), Json({"AXLayoutChanged"}));
}

TEST_F(PressUnheard, IsHeardOnceTheApplicationTakesWhatItRefusedWhileItStarted) {
  notes.facts.unsupportedNotifications = {WATCHED.begin(), WATCHED.end()};
  connect();
  notes.facts.unsupportedNotifications.clear();
  save.action("AXPress").effect([&] { notes.announce("AXValueChanged"); });
  EXPECT_EQ(click().at("method"), "accessibility");
  EXPECT_EQ(save.activations(), 1);
}

TEST_F(PressUnheard, IsTakenForAnsweredWhileTheApplicationRefusesEverySubscription) {
  notes.facts.unsupportedNotifications = {WATCHED.begin(), WATCHED.end()};
  connect();
  EXPECT_EQ(click().at("method"), "accessibility");
  EXPECT_EQ(save.activations(), 1);
  EXPECT_EQ(result("settle").at("listening"), false);
}

TEST_F(PressUnheard, WaitsOnceForAnApplicationThatAnswersNoSubscription) {
  notes.facts.ignoresSubscriptions = true;
  connect();
  (void)result("observe", {{"image", false}});
  const Instant begin = desktop.clock().now();
  EXPECT_EQ(result("settle", {{"quietMs", 20}}).at("listening"), false);
  EXPECT_LT(desktop.clock().now() - begin, 500ms);
}

TEST_F(PressUnheard, AnsweredByNothingThatItListensToIsUnanswered) {
  notes.facts.unsupportedNotifications = {"AXValueChanged"};
  connect();
  save.action("AXPress").announces("AXValueChanged");
  EXPECT_EQ(click().at("fallback"), "press_unanswered");
}

}  // namespace
}  // namespace tarqo
