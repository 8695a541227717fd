// What comes between the proofs and the event: a window, a grab, another element, at any moment of
// an action. Whatever acts must have gone out before it, or not at all.

#include <array>
#include <cstdlib>

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;

constexpr Pid kIntruder = 999;
constexpr const char* kWindowOver =
    "target_covered: Another application's window covers the click position";
constexpr const char* kKeysElsewhere =
    "target_covered: The application did not come to the front, so keys would go elsewhere. Bring "
    "it forward (open_target) and try again.";

/// Whether a line of the journal is an event that does something where it arrives.
bool acts(const std::string& line) {
  const auto holds = [&](const char* part) { return line.find(part) != std::string::npos; };
  return holds("down") || holds("Down") || holds("scroll");
}

struct Deed {
  const char* name;
  const char* method;
  Json args;
  std::size_t acting;  ///< How many events of it act.
  bool byKeys;
};

void PrintTo(const Deed& deed, std::ostream* out) { *out << deed.name; }

const std::array<Deed, 9> kDeeds{{
    {"click", "click", {{"name", "Save"}}, 1, false},
    {"double click", "click", {{"name", "Save"}, {"count", 2}}, 2, false},
    {"context menu", "showMenu", {{"name", "Save"}}, 1, false},
    {"wheel", "input", {{"name", "Save"}, {"kind", "scroll"}, {"deltaY", 120}}, 1, false},
    {"pull", "input", {{"name", "Save"}, {"kind", "scroll"}, {"deltaY", -120}}, 1, false},
    {"swipe", "input", {{"name", "Save"}, {"kind", "scroll"}, {"deltaX", 300}}, 1, false},
    {"key", "input", {{"name", "Save"}, {"kind", "key"}, {"key", "Delete"}}, 1, true},
    {"text", "input", {{"name", "Save"}, {"kind", "type"}, {"text", "abcd"}}, 4, true},
    {"submit",
     "input",
     {{"name", "hello"}, {"kind", "type"}, {"text", "a"}, {"submit", true}},
     1,
     true},
}};

class Intrusion : public ConnectedScene, public testing::WithParamInterface<Deed> {
 protected:
  Intrusion() {
    save.withoutAction("AXPress").withoutAction("AXShowMenu").onClick([](int) {});
    intruder.listed = false;
  }

  void intrude() {
    intruder.listed = true;
    desktop.windowServer().toFront(intruder);
    intrudedAt = desktop.clock().now();
  }

  void withdraw() {
    intruder.listed = false;
    desktop.input().grabKeyboard(std::nullopt);
    desktop.input().grabPointer(std::nullopt);
    desktop.input().beforePost = nullptr;
    intrudedAt = kDistantPast;
  }

  // The response to the deed on a node of a fresh observation. Only this application may act.
  Json act(const std::function<void()>& beforehand) {
    field.value("hello");
    Json args = GetParam().args;
    args["nodeId"] = idOf(args.at("name").get<std::string>());
    args.erase("name");
    desktop.eventLog().clear();
    beforehand();
    return call(GetParam().method, args);
  }

  // That nothing acted after the intrusion, and that the response tells the truth.
  void judge(const Json& response) {
    std::size_t acting = 0;
    const Lines lines = desktop.postedAt();
    const Lines bare = desktop.posted();
    const auto sinceBegin = [&](Instant at) {
      return std::chrono::duration<double, std::milli>(at - desktop.clock().now() +
                                                       desktop.clock().elapsed())
          .count();
    };
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (acts(bare[i])) {
        ++acting;
        EXPECT_TRUE(intrudedAt == kDistantPast ||
                    std::atof(lines[i].c_str()) <= sinceBegin(intrudedAt))
            << lines[i];
      }
    }
    if (response.contains("result")) {
      EXPECT_EQ(acting, response.at("result").value("clicks", GetParam().acting));
    } else {
      EXPECT_LT(acting, GetParam().acting);
      const std::string code = response.at("error").at("code");
      // While the keyboard is grabbed the target cannot even be brought to the front.
      EXPECT_TRUE(code == "target_covered" || (GetParam().byKeys && code == "focus_failed"))
          << response;
    }
  }

  sim::ServerWindow& intruder =
      desktop.windowServer().bareWindow(kIntruder, "Other", {100, 80, 800, 600});
  Instant intrudedAt = kDistantPast;
};

// The intruder comes at every fifth millisecond of the action, and stays.
TEST_P(Intrusion, OfAWindowIsNeverPressedAtWhateverMoment) {
  if (GetParam().byKeys) {
    return;  // A window alone takes no keys; see the grabs below.
  }
  int refused = 0;
  for (Duration at = 0ms; at < 900ms; at += 5ms) {
    const Json response = act([&] { desktop.after(at, [this] { intrude(); }); });
    judge(response);
    refused += response.contains("error") ? 1 : 0;
    desktop.run(1s);
    withdraw();
  }
  EXPECT_GT(refused, 20);
  EXPECT_LT(refused, 180) << "what comes after the action refuses nothing";
}

TEST_P(Intrusion, OfAGrabIsNeverPressedAtWhateverMoment) {
  int refused = 0;
  for (Duration at = 0ms; at < 900ms; at += 5ms) {
    const Json response = act([&] {
      desktop.after(at, [this] {
        desktop.input().grabKeyboard(GetParam().byKeys ? std::optional(kIntruder) : std::nullopt);
        desktop.input().grabPointer(kIntruder);
        intrudedAt = desktop.clock().now();
      });
    });
    judge(response);
    refused += response.contains("error") ? 1 : 0;
    desktop.run(1s);
    withdraw();
  }
  EXPECT_GT(refused, 20);
  EXPECT_LT(refused, 180);
}

// The narrowest gap: the intrusion happens after the last proof, as the event is posted.
TEST_P(Intrusion, AtTheVeryMomentOfPostingIsRefused) {
  for (std::size_t spared = 0; spared < GetParam().acting; ++spared) {
    std::size_t acting = 0;
    const Json response = act([&] {
      desktop.input().beforePost = [&](const InputEvent& event) {
        if (acts(sim::eventText(event)) && acting++ == spared) {
          intrude();
          desktop.input().grabKeyboard(kIntruder);
        }
      };
    });
    if (response.contains("error")) {
      EXPECT_EQ(response.at("error").at("code"), "target_covered") << response;
    } else {
      EXPECT_EQ(response.at("result").at("clicks"), spared) << response;
    }
    const Lines lines = desktop.posted();
    EXPECT_EQ(static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), acts)), spared);
    withdraw();
  }
}

TEST_P(Intrusion, ThatIsOverBeforeItMattersRefusesNothing) {
  const Json response = act([&] {
    desktop.after(10ms, [this] { intrude(); });
    desktop.after(60ms, [this] { withdraw(); });
  });
  EXPECT_TRUE(response.contains("result")) << response;
  judge(response);
}

std::string nameOf(const testing::TestParamInfo<Deed>& each) {
  std::string name = each.param.name;
  std::erase(name, ' ');
  return name;
}

INSTANTIATE_TEST_SUITE_P(, Intrusion, testing::ValuesIn(kDeeds), nameOf);

/// What happens to the element itself while the pointer is on its way: its middle is 240,212.
class Changing : public ConnectedScene {
 protected:
  Changing() {
    save.withoutAction("AXPress").withoutAction("AXShowMenu").onClick([](int) {});
  }

  std::string refusalOf(const std::string& method, const std::function<void()>& change,
                        const Json& more = Json::object()) {
    Json args = more;
    args["nodeId"] = idOf("Save");
    desktop.after(300ms, change);
    const std::string refused = failure(method, args);
    for (const std::string& line : desktop.posted()) {
      EXPECT_FALSE(acts(line)) << line;
    }
    return refused;
  }
};

TEST_F(Changing, ANameOnTheWayOfThePointerIsRefused) {
  EXPECT_EQ(refusalOf("click", [&] { save.title("Delete"); }),
            "stale_snapshot: The captured element changed. Take a new snapshot before acting.");
}

TEST_F(Changing, AnElementThatGoesDisabledOnTheWayOfThePointerIsRefused) {
  EXPECT_EQ(refusalOf("click", [&] { save.enabled(false); }),
            "not_clickable: The element is disabled, protected, or not clickable");
}

TEST_F(Changing, APlaceOnTheWayOfThePointerIsRefused) {
  EXPECT_EQ(refusalOf("click", [&] { window.moveTo({400, 80}); }).substr(0, 11), "not_visible");
}

TEST_F(Changing, AHoverOverWhatWasCoveredMeanwhileIsNoSuccess) {
  const std::string id = idOf("Save");
  desktop.after(500ms, [&] {
    (void)desktop.windowServer().bareWindow(kIntruder, "Other", {100, 80, 800, 600});
  });
  EXPECT_EQ(failure("hover", {{"nodeId", id}}), kWindowOver);
}

TEST_F(Changing, ASecondClickOfADoubleClickIsNotGivenToADialogThatTheFirstOpened) {
  save.onClick([&](int) { notes.window({150, 150, 300, 200}, "Really?").button("Delete all"); });
  const std::string id = idOf("Save");
  const Json answer = result("click", {{"nodeId", id}, {"count", 2}});
  EXPECT_EQ(answer.at("method"), "pointer-double");
  EXPECT_EQ(answer.at("clicks"), 1);
  EXPECT_EQ(desktop.eventLog().count("down("), 1U);
  EXPECT_EQ(desktop.eventLog().count("up("), 1U);
}

/// Gestures go through the middle or the lower part of the window, wherever the node is.
class CoveredGesture : public ConnectedScene {
 protected:
  std::string refusalOf(const Json& deltas, const Rect& cover) {
    Json args = deltas;
    args["nodeId"] = idOf("Save");
    args["kind"] = "scroll";
    sim::ServerWindow& other = desktop.windowServer().bareWindow(kIntruder, "Other", cover);
    // The target comes to the front by the action itself; the cover stays over it.
    desktop.after(60ms, [&] { desktop.windowServer().toFront(other); });
    const std::string refused = failure("input", args);
    EXPECT_EQ(desktop.posted(), Lines{});
    other.listed = false;
    return refused;
  }
};

TEST_F(CoveredGesture, IsRefusedWhereItWouldBegin) {
  EXPECT_EQ(refusalOf({{"deltaY", -120}}, {450, 350, 100, 60}), kWindowOver);
  EXPECT_EQ(refusalOf({{"deltaX", 300}}, {100, 480, 100, 100}), kWindowOver);
}

TEST_F(CoveredGesture, IsRefusedOnItsWay) {
  EXPECT_EQ(refusalOf({{"deltaY", -120}}, {490, 420, 20, 20}), kWindowOver);
  EXPECT_EQ(refusalOf({{"deltaX", 300}}, {200, 480, 100, 100}), kWindowOver);
}

TEST_F(CoveredGesture, IsRefusedWhereItWouldEnd) {
  EXPECT_EQ(refusalOf({{"deltaY", -120}}, {450, 485, 100, 60}), kWindowOver);
  EXPECT_EQ(refusalOf({{"deltaX", 300}}, {420, 480, 100, 100}), kWindowOver);
}

/// An application that a key would hang while it is inside an action.
class Endangered : public ConnectedScene {
 protected:
  static constexpr const char* kBusy =
      "target_busy: The application is still inside an earlier press, and a key would hang it now. "
      "Observe again and finish with click what it shows.";

  void SetUp() override {
    ConnectedScene::SetUp();
    notes.facts.hangsAtKeysInActions = true;
    save.action("AXPress").takes(10s);
    EXPECT_EQ(result("click", {{"nodeId", idOf("Save")}}).at("pending"), true);
  }
};

TEST_F(Endangered, GetsNoKey) {
  EXPECT_EQ(failure("input", {{"nodeId", idOf("Save")}, {"kind", "key"}, {"key", "Escape"}}),
            kBusy);
  EXPECT_FALSE(notes.facts.hung);
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(Endangered, GetsNoText) {
  EXPECT_EQ(failure("input", {{"nodeId", idOf("Save")}, {"kind", "type"}, {"text", "a"}}), kBusy);
  EXPECT_FALSE(notes.facts.hung);
}

TEST_F(Endangered, GetsAValueButNoReturnAfterIt) {
  const Json refused = error(
      "input", {{"nodeId", idOf("hello")}, {"kind", "type"}, {"text", "a"}, {"submit", true}});
  EXPECT_EQ(refused.at("code"), "target_busy");
  EXPECT_EQ(refused.at("sent"), "a");
  EXPECT_EQ(field.readText("AXValue"), "a");
  EXPECT_FALSE(notes.facts.hung);
}

TEST_F(Endangered, GetsKeysAgainWhenTheActionIsOver) {
  desktop.run(10s);
  EXPECT_EQ(
      result("input", {{"nodeId", idOf("Save")}, {"kind", "key"}, {"key", "Escape"}}).at("method"),
      "keyboard");
  EXPECT_FALSE(notes.facts.hung);
}

/// What went down must come up, also when the event for it can no longer be made.
class LettingGo : public ConnectedScene {};

TEST_F(LettingGo, OfAButtonIsMadeBeforehand) {
  save.withoutAction("AXPress").onClick([](int) {});
  desktop.input().beforePost = [&](const InputEvent& event) {
    const auto* mouse = std::get_if<MouseEvent>(&event);
    desktop.input().refusesButtonsUp = mouse != nullptr && mouse->type == MouseEventType::leftDown;
  };
  EXPECT_EQ(result("click", {{"nodeId", idOf("Save")}}).at("method"), "pointer");
  EXPECT_EQ(desktop.posted().back(), "up(1) 240,212");
}

TEST_F(LettingGo, OfAKeyThatCannotBeMadeKeepsItFromGoingDown) {
  desktop.input().refusesKeysUp = true;
  EXPECT_EQ(failure("input", {{"nodeId", idOf("Save")}, {"kind", "key"}, {"key", "Delete"}}),
            "input_failed: Could not create a key event.");
  EXPECT_EQ(desktop.posted(), Lines{});
}

class SentInPart : public ConnectedScene {};

TEST_F(SentInPart, IsToldWhenTheFocusIsLostInMidText) {
  const std::string id = idOf("Save");
  std::size_t typed = 0;
  desktop.input().beforePost = [&](const InputEvent& event) {
    const auto* text = std::get_if<TextEvent>(&event);
    if (text != nullptr && text->down && ++typed == 3) {
      desktop.input().grabKeyboard(kIntruder);
    }
  };
  const Json refused = error("input", {{"nodeId", id}, {"kind", "type"}, {"text", "한글abc"}});
  EXPECT_EQ(refused.at("code").get<std::string>() + ": " + refused.at("message").get<std::string>(),
            kKeysElsewhere);
  EXPECT_EQ(refused.at("sent"), "한글");
}

/// A dialog of the application itself that came up since the window was observed.
class OwnDialog : public ConnectedScene {
 protected:
  static constexpr const char* kElsewhere =
      "target_covered: Another window of the application gets the keys now: \"Save as\". Observe "
      "again and act on what it shows.";

  void SetUp() override {
    ConnectedScene::SetUp();
    button_ = idOf("Save");
    // It takes the keyboard while the window comes to the front.
    desktop.after(60ms, [this, dialog = &notes.window({300, 300, 300, 200}, "Save as")] {
      notes.focusWindow(dialog);
    });
  }

  std::string button_;
};

TEST_F(OwnDialog, GetsNoKeyThatIsMeantForTheWindow) {
  notes.facts.tellsKeyWindow = true;
  EXPECT_EQ(failure("input", {{"nodeId", button_}, {"kind", "key"}, {"key", "Escape"}}),
            kElsewhere);
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(OwnDialog, GetsTheKeysWhereTheSystemDoesNotTell) {
  EXPECT_EQ(result("input", {{"nodeId", button_}, {"kind", "key"}, {"key", "Escape"}}).at("method"),
            "keyboard");
}

}  // namespace
}  // namespace tarqo
