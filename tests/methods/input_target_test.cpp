// The input method: its node, its kind, and the order of the proofs before anything is sent.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;

/// Connecting ends at 120 ms of virtual time, and bringing the application forward at 240 ms.
class InputTarget : public ConnectedScene {
 protected:
  static constexpr const char* kExpired = "stale_snapshot: Use a current node reference.";
  static constexpr const char* kChanged = "stale_target: The input target changed or is protected.";
  static constexpr const char* kNotVisible = "not_visible: Input target is not visible.";
  static constexpr const char* kUnknownKind =
      "invalid_argument: Provide bounded vertical scroll input.";
  static constexpr const char* kNotFrontmost =
      "target_covered: The application did not come to the front, so keys would go elsewhere. "
      "Bring it forward (open_target) and try again.";

  // One request of each kind for a node, which must be refused.
  static std::vector<Json> requestsFor(const std::string& id) {
    return {{{"nodeId", id}, {"kind", "type"}, {"text", "x"}},
            {{"nodeId", id}, {"kind", "key"}, {"key", "Enter"}},
            {{"nodeId", id}, {"kind", "scroll"}, {"deltaY", 120}}};
  }

  std::string inputFailure(const Json& args) { return failure("input", args); }

  // The failure of each kind of request for the text field, after `obstacle`.
  std::vector<std::string> failures(const std::function<void()>& obstacle,
                                    const std::function<void()>& undo) {
    std::vector<std::string> all;
    for (std::size_t kind = 0; kind < 3; ++kind) {
      const std::string id = idOf("hello");
      desktop.eventLog().clear();
      obstacle();
      all.push_back(inputFailure(requestsFor(id)[kind]));
      EXPECT_EQ(desktop.posted(), Lines{});
      EXPECT_EQ(desktop.eventLog().count("set AXValue"), 0U);
      undo();
    }
    return all;
  }

  static std::vector<std::string> thrice(const std::string& text) { return {text, text, text}; }

  sim::App& other = desktop.app("com.example.Other");
};

// The node and the kind.

TEST_F(InputTarget, NeedsAKnownNode) {
  (void)observe();
  EXPECT_EQ(inputFailure({{"kind", "key"}, {"key", "Enter"}}), kExpired);
  EXPECT_EQ(inputFailure({{"nodeId", 7}, {"kind", "key"}, {"key", "Enter"}}), kExpired);
  for (const Json& request : requestsFor("unknown:0")) {
    EXPECT_EQ(inputFailure(request), kExpired);
  }
}

TEST_F(InputTarget, NeedsAKind) {
  EXPECT_EQ(inputFailure({{"nodeId", idOf("hello")}, {"text", "x"}}), kExpired);
  EXPECT_EQ(inputFailure({{"nodeId", idOf("hello")}, {"kind", 1}, {"text", "x"}}), kExpired);
}

TEST_F(InputTarget, SixtySecondsOldIsStale) {
  std::string id = idOf("hello");
  desktop.run(60s);
  EXPECT_EQ(inputFailure(requestsFor(id)[0]), kExpired);
  id = idOf("hello");
  desktop.run(60s - 1ns);
  EXPECT_EQ(result("input", requestsFor(id)[0]).at("method"), "accessibility");
}

TEST_F(InputTarget, PassesTheGateBeforeItsArgumentsAreRead) {
  desktop.windowServer().session.locked = true;
  EXPECT_EQ(error("input").at("code"), "session_locked");
  desktop.windowServer().session.locked = false;
  notes.kill();
  EXPECT_EQ(inputFailure(Json::object()),
            "app_closed: The application closed; reconnect before continuing.");
}

TEST_F(InputTarget, IsSpentByEveryCallWhateverComesOfIt) {
  for (std::size_t kind = 0; kind < 3; ++kind) {
    const std::string id = idOf("hello");
    (void)result("input", requestsFor(id)[kind]);
    EXPECT_EQ(inputFailure(requestsFor(id)[kind]), kExpired) << kind;
    field.value("hello");
  }
  const std::vector<Json> refused{
      Json::object(),
      {{"kind", "type"}},
      {{"kind", "type"}, {"text", ""}},
      {{"kind", "key"}, {"key", "A"}},
      {{"kind", "scroll"}},
      {{"kind", "unknown"}},
  };
  for (Json request : refused) {
    const std::string id = idOf("hello");
    request["nodeId"] = id;
    EXPECT_NE(inputFailure(request), "no failure");
    EXPECT_EQ(inputFailure(requestsFor(id)[0]), kExpired) << request;
  }
}

TEST_F(InputTarget, IsSpentByALockedDesktopToo) {
  const std::string id = idOf("hello");
  desktop.windowServer().session.locked = true;
  EXPECT_EQ(error("input", requestsFor(id)[0]).at("code"), "session_locked");
  desktop.windowServer().session.locked = false;
  EXPECT_EQ(inputFailure(requestsFor(id)[0]), kExpired);
}

TEST_F(InputTarget, CountsAsAnActionEvenWhenItFails) {
  notes.announce("AXTitleChanged");
  desktop.run(500ms);
  EXPECT_EQ(inputFailure(Json::object()), kExpired);
  EXPECT_EQ(result("settle").at("heard"), Json::array());
}

TEST_F(InputTarget, OfAnUnknownKindIsRefusedOnlyAfterActivationAndTheProofOfThePoint) {
  std::string id = idOf("hello");
  desktop.eventLog().clear();
  EXPECT_EQ(millisecondsOf([&] {
              EXPECT_EQ(inputFailure({{"nodeId", id}, {"kind", "swipe"}}), kUnknownKind);
            }),
            120);
  EXPECT_EQ(desktop.eventLog().count("activate com.example.Notes"), 1U);
  id = idOf("hello");
  desktop.accessibility().hitTestFails = true;
  EXPECT_EQ(error("input", {{"nodeId", id}, {"kind", "swipe"}}).at("code"), "hit_test_failed");
}

// The same element as observed.

TEST_F(InputTarget, WithAnotherRoleNameOrIdentifierIsRefused) {
  EXPECT_EQ(failures([&] { field.with("AXRole", Value{"AXTextArea"}); },
                     [&] { field.with("AXRole", Value{"AXTextField"}); }),
            thrice(kChanged));
  EXPECT_EQ(failures([&] { field.title("other"); }, [&] { field.without("AXTitle"); }),
            thrice(kChanged));
  EXPECT_EQ(failures([&] { field.identifier("other"); }, [&] { field.without("AXIdentifier"); }),
            thrice(kChanged));
}

TEST_F(InputTarget, DisabledIsRefused) {
  EXPECT_EQ(failures([&] { field.enabled(false); }, [&] { field.enabled(true); }),
            thrice(kChanged));
}

TEST_F(InputTarget, ThatBecameAPasswordFieldIsRefused) {
  EXPECT_EQ(failures([&] { field.with("AXSubrole", Value{"AXSecureTextField"}); },
                     [&] { field.without("AXSubrole"); }),
            thrice(kChanged));
}

TEST_F(InputTarget, ThatIsAPasswordFieldIsRefused) {
  window.secureField().title("Password");
  EXPECT_EQ(inputFailure(requestsFor(idOf("Password"))[0]), kChanged);
}

TEST_F(InputTarget, IsProvenBeforeTheApplicationComesForward) {
  const std::string id = idOf("hello");
  desktop.eventLog().clear();
  field.enabled(false);
  EXPECT_EQ(inputFailure(requestsFor(id)[0]), kChanged);
  EXPECT_EQ(desktop.eventLog().count("activate"), 0U);
}

TEST_F(InputTarget, IsProvenAgainAfterTheApplicationCameForward) {
  EXPECT_EQ(failures([&] { desktop.after(60ms, [&] { field.enabled(false).withoutFrame(); }); },
                     [&] {
                       field.enabled(true).at({200, 240, 200, 24});
                     }),
            thrice(kChanged));
}

TEST_F(InputTarget, NeedNotHaveBeenClickable) {
  window.group("box").at({300, 400, 200, 100});
  EXPECT_EQ(result("input", requestsFor(idOf("box"))[1]).at("method"), "keyboard");
}

// Its place.

TEST_F(InputTarget, WithoutAFrameIsNotVisible) {
  EXPECT_EQ(failures([&] { field.withoutFrame(); },
                     [&] {
                       field.at({200, 240, 200, 24});
                     }),
            thrice(kNotVisible));
  EXPECT_EQ(failures(
                [&] {
                  field.at({200, 240, 0, 24});
                },
                [&] {
                  field.at({200, 240, 200, 24});
                }),
            thrice(kNotVisible));
}

TEST_F(InputTarget, NeedsAnyFrameThatIsNotEmpty) {
  field.at({200, 240, 0.25, 0.25});
  for (std::size_t kind = 0; kind < 3; ++kind) {
    EXPECT_TRUE(result("input", requestsFor(idOf("hello"))[kind]).contains("method")) << kind;
    field.value("hello");
  }
}

TEST_F(InputTarget, OfTextAndScrollingIsProvenByThePointer) {
  for (const std::size_t kind : {0U, 2U}) {
    const std::string id = idOf("hello");
    sim::Node& over = window.label("Saved").at({180, 230, 400, 60});
    EXPECT_EQ(inputFailure(requestsFor(id)[kind]),
              "target_covered: The position (300,252) holds AXStaticText [180,230 400x60], not the "
              "captured AXTextField [200,240 200x24]; take a fresh snapshot");
    over.remove();
  }
}

TEST_F(InputTarget, OfAKeyIsProvenByTheForegroundAlone) {
  const std::string id = idOf("hello");
  window.label("Saved").at({180, 230, 400, 60});
  desktop.accessibility().hitTestFails = true;
  EXPECT_EQ(result("input", requestsFor(id)[1]).at("method"), "keyboard");
}

// In front.

TEST_F(InputTarget, ThatDoesNotComeForwardIsRefused) {
  EXPECT_EQ(failures(
                [&] {
                  other.bringToFront();
                  notes.facts.comesToFront.reset();
                },
                [&] { notes.facts.comesToFront = Duration::zero(); }),
            thrice("focus_failed: Could not bring the target application to the front"));
}

TEST_F(InputTarget, WaitsASecondAndAHalfForTheForegroundBeforeAKey) {
  const std::string id = idOf("hello");
  desktop.after(110ms, [&] { other.bringToFront(); });
  EXPECT_EQ(millisecondsOf([&] { EXPECT_EQ(inputFailure(requestsFor(id)[1]), kNotFrontmost); }),
            120 + 1500);
  EXPECT_EQ(desktop.posted(), Lines{});
  EXPECT_EQ(desktop.eventLog().count("set AXFocused"), 0U);
}

TEST_F(InputTarget, ThatComesForwardAfterAlmostASecondAndAHalfGetsItsKey) {
  const std::string id = idOf("hello");
  desktop.after(110ms, [&] { other.bringToFront(); });
  desktop.after(120ms + 1400ms, [&] { notes.bringToFront(); });
  EXPECT_EQ(result("input", requestsFor(id)[1]).at("method"), "keyboard");
}

// Only the keyboard and the wheel need the foreground; a value is set wherever the field is.
TEST_F(InputTarget, NeedNotStayInFrontForItsValueToBeSet) {
  const std::string id = idOf("hello");
  desktop.after(110ms, [&] { other.bringToFront(); });
  EXPECT_EQ(result("input", requestsFor(id)[0]).at("method"), "accessibility");
}

TEST_F(InputTarget, MustBeInFrontToBeScrolled) {
  const std::string id = idOf("hello");
  desktop.after(110ms, [&] { other.bringToFront(); });
  EXPECT_EQ(inputFailure(requestsFor(id)[2]), kNotFrontmost);
  EXPECT_EQ(desktop.posted(), Lines{});
}

}  // namespace
}  // namespace tarqo
