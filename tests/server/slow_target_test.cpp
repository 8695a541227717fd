// A target that answers every call, slowly, but in time.

#include "session/session.h"
#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

class SlowTarget : public ConnectedScene {
 protected:
  static double inMs(Duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
  }

  // The milliseconds of a request to a target that takes `perCall` to answer each call.
  double millisecondsOfCall(Duration perCall, const std::string& method, const Json& args) {
    notes.facts.eachCallTakes = perCall;
    return millisecondsOf([&] { last = call(method, args); });
  }

  Json last;
};

struct Waits {
  std::string method;
  Json args;
  Duration ownWaits;  ///< At most, with a target that comes to the front at once.
};

// With an accessibility tree as small as this one nothing else may take time.
TEST_F(SlowTarget, CostsARequestTwoSecondsBeyondItsOwnWaits) {
  const std::vector<Waits> rows{
      {"geometry", {}, 0ms},
      {"settle", {}, 1500ms},
      {"connect", {{"bundleId", "com.example.Notes"}}, 1620ms},
      {"observe", {{"image", true}}, 4000ms + 1500ms + 2500ms},
      {"click", {{"nodeId", "save"}}, 120ms + 430ms + 350ms + 200ms},
      {"click", {{"nodeId", "save"}, {"count", 2}}, 120ms + 430ms + 200ms},
      {"hover", {{"nodeId", "save"}}, 120ms + 1200ms},
      {"showMenu", {{"nodeId", "save"}}, 120ms + 1200ms},
      {"input", {{"nodeId", "field"}, {"kind", "type"}, {"text", "milk"}}, 120ms + 300ms},
      {"input", {{"nodeId", "field"}, {"kind", "key"}, {"key", "Enter"}}, 120ms + 300ms},
      {"input", {{"nodeId", "label"}, {"kind", "scroll"}, {"deltaY", 500}}, 120ms + 300ms}};
  for (const Duration perCall : {100ms, 200ms, 290ms}) {
    for (const Waits& row : rows) {
      notes.facts.eachCallTakes = 1ms;
      Json args = row.args;
      if (args.contains("nodeId")) {
        const std::string wanted = args.at("nodeId");
        args["nodeId"] = idOf(wanted == "save" ? "Save" : wanted == "field" ? "hello" : "Ready");
      }
      EXPECT_LE(millisecondsOfCall(perCall, row.method, args), inMs(row.ownWaits + kTargetTime))
          << row.method << " " << args.dump() << " at " << inMs(perCall) << " -> " << last.dump();
      field.value("hello");
    }
  }
}

TEST_F(SlowTarget, ThatLeavesNoTimeForTheProofsIsNotClickedAndTheRefusalSaysWhy) {
  save.withoutAction("AXPress");
  const std::string id = idOf("Save");
  notes.facts.eachCallTakes = 290ms;
  EXPECT_EQ(failure("click", {{"nodeId", id}}),
            "target_busy: The application answers too slowly for this to be proven. Wait with "
            "settle, then observe again.");
  EXPECT_EQ(save.activations(), 0);
}

TEST_F(SlowTarget, IsActedOnWhenTheTimeIsEnough) {
  save.withoutAction("AXPress");
  const std::string id = idOf("Save");
  notes.facts.eachCallTakes = 50ms;
  EXPECT_EQ(result("click", {{"nodeId", id}}).at("method"), "pointer");
  EXPECT_EQ(save.activations(), 1);
}

TEST_F(SlowTarget, EachRequestHasATimeOfItsOwn) {
  notes.facts.eachCallTakes = 200ms;
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(result("geometry").at("visibility"), "visible");
  }
}

TEST_F(SlowTarget, AWalkHasTheTimeThatTheClientGivesIt) {
  for (int i = 0; i < 20; ++i) {
    window.label("line " + std::to_string(i));
  }
  notes.facts.eachCallTakes = 100ms;
  const Json observation =
      observe({{"image", false}, {"menubar", false}, {"ocr", false}, {"timeoutMs", 30000}});
  EXPECT_EQ(nodesOf(observation).size(), 24U);
  EXPECT_EQ(observation.at("snapshot").at("truncated"), false);
}

TEST_F(SlowTarget, ARefusalThatHasNothingToDoWithTheTimeStaysWhatItIs) {
  const std::string id = idOf("Save");
  notes.facts.eachCallTakes = 290ms;
  EXPECT_EQ(failure("input", {{"nodeId", "nothing"}, {"kind", "type"}}).substr(0, 14),
            "stale_snapshot");
  desktop.windowServer().session.locked = true;
  EXPECT_EQ(failure("click", {{"nodeId", id}}).substr(0, 14), "session_locked");
}

}  // namespace
}  // namespace tarqo
