// Keys: their names, their modifiers, and the pace of a press.

#include <map>

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;

constexpr const char* kUnknownKey = "invalid_argument: Unknown key.";
constexpr const char* kUnknownModifier = "invalid_argument: Unknown modifier.";

/// Connecting ends at 120 ms of virtual time, and bringing the application forward at 240 ms.
class InputKeys : public ConnectedScene {
 protected:
  Json pressing(const Json& key, Json more = Json::object()) {
    more["nodeId"] = idOf("hello");
    more["kind"] = "key";
    more["key"] = key;
    desktop.eventLog().clear();
    return more;
  }

  // What a press posts.
  Lines press(const Json& key, const Json& more = Json::object()) {
    (void)result("input", pressing(key, more));
    return desktop.posted();
  }

  static Lines pressed(int code, const std::string& flags = "0x0") {
    const std::string key = "key " + std::to_string(code);
    return {key + " down flags=" + flags, key + " up flags=" + flags};
  }
};

TEST_F(InputKeys, AnswersWithMethodNodeAndTime) {
  const Json request = pressing("Enter");
  EXPECT_EQ(result("input", request), Json({{"method", "keyboard"},
                                            {"nodeId", request.at("nodeId")},
                                            {"at", "2025-01-01T00:00:00.320Z"}}));
}

TEST_F(InputKeys, GoDownForThirtyMillisecondsAndEndFiftyLater) {
  const Json request = pressing("Enter");
  EXPECT_EQ(millisecondsOf([&] { (void)result("input", request); }), 120 + 30 + 50);
  EXPECT_EQ(desktop.postedAt(), (Lines{"240 key 36 down flags=0x0", "270 key 36 up flags=0x0"}));
  EXPECT_EQ(desktop.input().sourceTexts, Lines{""});
}

TEST_F(InputKeys, GoToTheElementWhichGetsTheFocusFirst) {
  std::vector<sim::Node*> focused;
  notes.onKey([&](const KeyEvent&) { focused.push_back(notes.focusedNode()); });
  (void)press("Tab");
  EXPECT_EQ(focused, (std::vector<sim::Node*>{&field, &field}));
}

TEST_F(InputKeys, ArePressedEvenWhenTheElementTakesNoFocus) {
  field.refusingSet("AXFocused");
  EXPECT_EQ(press("Tab"), pressed(48));
}

TEST_F(InputKeys, HaveTheCodesOfTheAnsiLayout) {
  const std::map<std::string, int> codes{{"Enter", 36},
                                         {"Escape", 53},
                                         {"Tab", 48},
                                         {"Backspace", 51},
                                         {"Delete", 117},
                                         {"ArrowUp", 126},
                                         {"ArrowDown", 125},
                                         {"ArrowLeft", 123},
                                         {"ArrowRight", 124},
                                         {"Home", 115},
                                         {"End", 119},
                                         {"PageUp", 116},
                                         {"PageDown", 121},
                                         {"Space", 49},
                                         {"0", 29},
                                         {"1", 18},
                                         {"2", 19},
                                         {"3", 20},
                                         {"4", 21},
                                         {"5", 23},
                                         {"6", 22},
                                         {"7", 26},
                                         {"8", 28},
                                         {"9", 25},
                                         {"a", 0},
                                         {"b", 11},
                                         {"c", 8},
                                         {"d", 2},
                                         {"e", 14},
                                         {"f", 3},
                                         {"g", 5},
                                         {"h", 4},
                                         {"i", 34},
                                         {"j", 38},
                                         {"k", 40},
                                         {"l", 37},
                                         {"m", 46},
                                         {"n", 45},
                                         {"o", 31},
                                         {"p", 35},
                                         {"q", 12},
                                         {"r", 15},
                                         {"s", 1},
                                         {"t", 17},
                                         {"u", 32},
                                         {"v", 9},
                                         {"w", 13},
                                         {"x", 7},
                                         {"y", 16},
                                         {"z", 6}};
  EXPECT_EQ(codes.size(), 50U);
  for (const auto& [name, code] : codes) {
    EXPECT_EQ(press(name), pressed(code)) << name;
  }
}

TEST_F(InputKeys, OfOtherNamesAreUnknown) {
  for (const Json& name : {Json("A"), Json("enter"), Json("ENTER"), Json("F1"), Json("Return"),
                           Json(""), Json(" "), Json("한"), Json(1), Json(nullptr)}) {
    EXPECT_EQ(failure("input", pressing(name)), kUnknownKey) << name;
    EXPECT_EQ(desktop.posted(), Lines{});
  }
  EXPECT_EQ(failure("input", {{"nodeId", idOf("hello")}, {"kind", "key"}}), kUnknownKey);
}

TEST_F(InputKeys, AreReadAfterTheElementGotTheFocus) {
  EXPECT_EQ(failure("input", pressing("unknown")), kUnknownKey);
  EXPECT_EQ(desktop.eventLog().count("set AXFocused AXTextField"), 1U);
}

// Modifiers.

TEST_F(InputKeys, CarryTheirModifiers) {
  EXPECT_EQ(press("s", {{"modifiers", {"Meta"}}}), pressed(1, "0x100000"));
  EXPECT_EQ(press("s", {{"modifiers", {"Shift"}}}), pressed(1, "0x20000"));
  EXPECT_EQ(press("s", {{"modifiers", {"Alt"}}}), pressed(1, "0x80000"));
  EXPECT_EQ(press("s", {{"modifiers", {"Control"}}}), pressed(1, "0x40000"));
}

TEST_F(InputKeys, CarryAllTheirModifiersTogether) {
  EXPECT_EQ(press("Enter", {{"modifiers", {"Meta", "Shift"}}}), pressed(36, "0x120000"));
  EXPECT_EQ(press("Enter", {{"modifiers", {"Control", "Alt", "Shift", "Meta"}}}),
            pressed(36, "0x1e0000"));
  EXPECT_EQ(press("Enter", {{"modifiers", {"Shift", "Shift"}}}), pressed(36, "0x20000"));
}

TEST_F(InputKeys, WithModifiersThatAreNoListOfTextsHaveNone) {
  for (const Json& modifiers : {Json("Meta"), Json(nullptr), Json(1), Json::array({"Meta", 1}),
                                Json::object({{"Meta", true}}), Json::array()}) {
    EXPECT_EQ(press("Enter", {{"modifiers", modifiers}}), pressed(36)) << modifiers;
  }
}

TEST_F(InputKeys, WithAnUnknownModifierAreRefused) {
  for (const char* name : {"Command", "meta", "Ctrl", ""}) {
    EXPECT_EQ(failure("input", pressing("Enter", {{"modifiers", {"Shift", name}}})),
              kUnknownModifier)
        << name;
    EXPECT_EQ(desktop.posted(), Lines{});
  }
}

TEST_F(InputKeys, AreToldUnknownBeforeTheirModifiers) {
  EXPECT_EQ(failure("input", pressing("A", {{"modifiers", {"Hyper"}}})), kUnknownKey);
}

// Faults.

TEST_F(InputKeys, ThatCannotBeMadeAreAFailure) {
  desktop.input().refusesKeys = true;
  EXPECT_EQ(failure("input", pressing("Enter")), "input_failed: Could not create a key event.");
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(InputKeys, ArePressedWithoutASourceToo) {
  desktop.input().refusesSources = true;
  EXPECT_EQ(press("Enter"), pressed(36));
}

// Recognised text.

TEST_F(InputKeys, ToRecognisedTextGoToWhateverHasTheFocus) {
  desktop.recognizer().lines = {{"Start", {0.125, 0.25, 0.25, 0.0625}, 1}};
  const std::string id = idOf("Start", {{"image", false}, {"forceOcr", true}});
  desktop.eventLog().clear();
  desktop.accessibility().hitTestFails = true;
  const Json answer =
      result("input", {{"nodeId", id}, {"kind", "key"}, {"key", "a"}, {"modifiers", {"Meta"}}});
  EXPECT_EQ(answer, Json({{"method", "keyboard"}, {"nodeId", id}, {"at", answer.at("at")}}));
  EXPECT_EQ(desktop.posted(), pressed(0, "0x100000"));
  EXPECT_EQ(desktop.eventLog().count("set AXFocused"), 0U);
}

}  // namespace
}  // namespace tarqo
