// Following a node from an earlier observation into a new one.

#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr const char* kExpiredNode =
    "stale_snapshot: This node reference expired. Observe and select a current node.";
constexpr const char* kElementChanged =
    "stale_target: The original target element changed or disappeared. Observe and select it "
    "again.";
constexpr const char* kTextMoved =
    "stale_target: That text is no longer at the same place. Observe and select it again.";

class Renewal : public ConnectedScene {
 protected:
  Renewal() { save.action("AXPress").announces("AXValueChanged"); }

  static Json following(const std::string& id) {
    return {{"image", false}, {"previousNodeId", id}};
  }

  std::string renewalFailure(const std::string& id) { return failure("observe", following(id)); }
};

TEST_F(Renewal, TellsTheIdThatTheElementHasNow) {
  const std::string id = idOf("Save");
  const Json observation = observe(following(id));
  EXPECT_NE(observation.at("renewedNodeId"), id);
  EXPECT_EQ(observation.at("renewedNodeId"), nodeNamed(observation, "Save").at("id"));
}

TEST_F(Renewal, FollowsAnElementToAnotherPlaceAndStateInTheTree) {
  const std::string id = idOf("Save");
  save.at({400, 400, 90, 30}).enabled(false).value("pressed");
  window.label("new");
  const Json observation = observe(following(id));
  EXPECT_EQ(observation.at("renewedNodeId"), nodeNamed(observation, "Save").at("id"));
}

TEST_F(Renewal, FollowsTheWindowItself) {
  const Json before = observe();
  const Json observation = observe(following(nodesOf(before)[0].at("id")));
  EXPECT_EQ(observation.at("renewedNodeId"), nodesOf(observation)[0].at("id"));
}

TEST_F(Renewal, FollowsAMenuItem) {
  notes.menu("File").menuItem("Open");
  const Json observation = observe(following(idOf("Open")));
  EXPECT_EQ(observation.at("renewedNodeId"), nodeNamed(observation, "Open").at("id"));
}

TEST_F(Renewal, GoesOnFromTheRenewedId) {
  const std::string renewed = observe(following(idOf("Save"))).at("renewedNodeId");
  EXPECT_TRUE(observe(following(renewed)).contains("renewedNodeId"));
}

TEST_F(Renewal, IsNotToldWhenNothingIsFollowed) {
  EXPECT_FALSE(observe({{"image", false}}).contains("renewedNodeId"));
  EXPECT_FALSE(observe({{"image", false}, {"previousNodeId", 5}}).contains("renewedNodeId"));
  EXPECT_FALSE(observe({{"image", false}, {"previousNodeId", nullptr}}).contains("renewedNodeId"));
}

// Expired.

TEST_F(Renewal, OfAnUnknownIdIsRefused) {
  EXPECT_EQ(renewalFailure("unknown"), kExpiredNode);
  EXPECT_EQ(renewalFailure(""), kExpiredNode);
}

TEST_F(Renewal, OfANodeExactlySixtySecondsOldIsRefused) {
  const std::string id = idOf("Save");
  desktop.run(60s);
  EXPECT_EQ(renewalFailure(id), kExpiredNode);
}

TEST_F(Renewal, OfANodeJustUnderSixtySecondsOldSucceeds) {
  const std::string id = idOf("Save");
  desktop.run(60s - 1ns);
  EXPECT_TRUE(observe(following(id)).contains("renewedNodeId"));
}

TEST_F(Renewal, DoesNotAgeByTheCalendar) {
  const std::string id = idOf("Save");
  desktop.clock().setWall(desktop.clock().wall() + 24h);
  EXPECT_TRUE(observe(following(id)).contains("renewedNodeId"));
}

TEST_F(Renewal, ThatIsRefusedAsExpiredLeavesTheNodesUsable) {
  const std::string id = idOf("Save");
  EXPECT_EQ(renewalFailure("unknown"), kExpiredNode);
  EXPECT_EQ(result("click", {{"nodeId", id}}).at("method"), "accessibility");
}

// Changed.

TEST_F(Renewal, OfAnElementWithAnotherRoleNameOrIdentifierIsRefused) {
  save.identifier("save");
  const std::string id = idOf("Save");
  save.with("AXRole", Value{"AXCheckBox"});
  EXPECT_EQ(renewalFailure(id), kElementChanged);
  save.with("AXRole", Value{"AXButton"}).title("Save All");
  EXPECT_EQ(renewalFailure(id), kElementChanged);
  save.title("Save").identifier("save-all");
  EXPECT_EQ(renewalFailure(id), kElementChanged);
  save.identifier("save");
  EXPECT_TRUE(observe(following(id)).contains("renewedNodeId"));
}

TEST_F(Renewal, OfAnElementThatIsGoneIsRefused) {
  const std::string id = idOf("Save");
  save.remove();
  EXPECT_EQ(renewalFailure(id), kElementChanged);
}

TEST_F(Renewal, OfAnElementReplacedByAnEqualOneIsRefused) {
  const std::string id = idOf("Save");
  save.recreate();
  EXPECT_EQ(renewalFailure(id), kElementChanged);
}

TEST_F(Renewal, OfAnElementThatTheNewObservationDoesNotListIsRefused) {
  const std::string id = idOf("Save");
  save.hidden(true);
  EXPECT_EQ(renewalFailure(id), kElementChanged);
}

TEST_F(Renewal, OfAnElementBeyondTheNewBudgetIsRefused) {
  const std::string id = idOf("Ready");
  EXPECT_EQ(failure("observe", {{"image", false}, {"previousNodeId", id}, {"maxNodes", 2}}),
            kElementChanged);
}

TEST_F(Renewal, ThatIsRefusedAsChangedLeavesTheNodesUsable) {
  const std::string id = idOf("Ready");
  const std::string button = id.substr(0, id.find(':')) + ":1";
  label.remove();
  EXPECT_EQ(renewalFailure(id), kElementChanged);
  EXPECT_EQ(result("click", {{"nodeId", button}}).at("method"), "accessibility");
}

TEST_F(Renewal, ThatIsRefusedComesBeforeAFailedCapture) {
  const std::string id = idOf("Save");
  save.remove();
  window.minimize();
  EXPECT_EQ(failure("observe", {{"previousNodeId", id}}), kElementChanged);
}

TEST_F(Renewal, ThatIsRefusedComesAfterAFailedSnapshot) {
  const std::string id = idOf("Save");
  window.close();
  EXPECT_EQ(error("observe", following(id)).at("code"), "no_window");
}

// Recognised text. The window is 1024 points wide, so that whole points are exact parts of it.

class TextRenewal : public Scene {
 protected:
  void SetUp() override {
    (void)result("connect", {{"bundleId", "com.example.Notes"}});
    shows("Start", 100, 100);
    id = nodeNamed(result("observe", {{"image", false}}), "Start").at("id");
  }

  static RecognizedLine line(const std::string& text, double x, double y) {
    return {text, {x / 1024, y / 512, 64.0 / 1024, 16.0 / 512}, 1};
  }

  void shows(const std::string& text, double x, double y) {
    desktop.recognizer().lines = {line(text, x, y)};
  }

  Json following() { return {{"image", false}, {"previousNodeId", id}}; }

  sim::App& notes = desktop.app("com.example.Notes");
  sim::Window& window = notes.window({100, 80, 1024, 512}, "Canvas");
  std::string id;
};

TEST_F(TextRenewal, FollowsTextThatMovedByTwelvePoints) {
  shows("Start", 112, 100);
  const Json observation = result("observe", following());
  EXPECT_EQ(observation.at("renewedNodeId"), nodeNamed(observation, "Start").at("id"));
}

TEST_F(TextRenewal, OfTextThatMovedByThirteenPointsIsRefused) {
  shows("Start", 100, 113);
  EXPECT_EQ(failure("observe", following()), kTextMoved);
}

TEST_F(TextRenewal, MeasuresTheStraightDistanceOfTheCentres) {
  shows("Start", 109, 108);  // 12.04
  EXPECT_EQ(failure("observe", following()), kTextMoved);
  shows("Start", 108, 108);  // 11.3
  EXPECT_TRUE(result("observe", following()).contains("renewedNodeId"));
}

TEST_F(TextRenewal, OfTextThatReadsOtherwiseIsRefused) {
  shows("Stop", 100, 100);
  EXPECT_EQ(failure("observe", following()), kTextMoved);
}

TEST_F(TextRenewal, OfTextThatIsNotRecognisedAgainIsRefused) {
  EXPECT_EQ(failure("observe", {{"image", false}, {"previousNodeId", id}, {"ocr", false}}),
            kTextMoved);
}

TEST_F(TextRenewal, DoesNotTakeAnElementOfThatNameForTheText) {
  window.button("Start").at({200, 476, 64, 16});
  EXPECT_EQ(failure("observe", following()), kTextMoved);
}

TEST_F(TextRenewal, TakesTheFirstOfSeveralInReadingOrder) {
  desktop.recognizer().lines = {line("Start", 108, 100), line("Start", 92, 100)};
  const Json observation = result("observe", following());
  const Json renewed = observation.at("renewedNodeId");
  EXPECT_EQ(renewed, nodesOf(observation)[1].at("id"));
  EXPECT_EQ(nodesOf(observation)[1].at("bounds").at("x"), 192);
}

TEST_F(TextRenewal, ThatIsRefusedLeavesTheNodesUsable) {
  shows("Stop", 100, 100);
  EXPECT_EQ(failure("observe", following()), kTextMoved);
  EXPECT_EQ(result("click", {{"nodeId", id}}).at("via"), "ocr");
}

}  // namespace
}  // namespace tarqo
