// Typing: what text is taken, how it gets into a field, and how keystrokes follow one another.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;

constexpr const char* kTextUnbounded =
    "invalid_argument: Provide bounded text without control characters.";
constexpr const char* kKeysGoElsewhere =
    "target_covered: The application did not come to the front, so keys would go elsewhere. Bring "
    "it forward (open_target) and try again.";

std::string repeated(std::string_view text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) {
    all += text;
  }
  return all;
}

/// Connecting ends at 120 ms of virtual time, and bringing the application forward at 240 ms.
class InputText : public ConnectedScene {
 protected:
  static constexpr const char* kNoKeyEvent = "input_failed: Could not create a key event.";

  Json typing(const std::string& name, const std::string& text, Json more = Json::object()) {
    more["nodeId"] = idOf(name);
    more["kind"] = "type";
    more["text"] = text;
    desktop.eventLog().clear();
    return more;
  }

  // The result without its node and its time.
  Json type(const std::string& name, const std::string& text, const Json& more = Json::object()) {
    const Json request = typing(name, text, more);
    Json answer = result("input", request);
    EXPECT_EQ(answer.at("nodeId"), request.at("nodeId"));
    EXPECT_TRUE(answer.at("at").is_string());
    answer.erase("nodeId");
    answer.erase("at");
    return answer;
  }

  std::string refusal(const Json& text) {
    return failure("input", {{"nodeId", idOf("hello")}, {"kind", "type"}, {"text", text}});
  }

  /// Where text goes by keystrokes: a part of a web page that can be edited.
  sim::Node& page = window.group("page").at({200, 320, 300, 100}).settable("AXFocused");
};

// What text is taken.

TEST_F(InputText, NeedsAText) {
  EXPECT_EQ(failure("input", {{"nodeId", idOf("hello")}, {"kind", "type"}}), kTextUnbounded);
  EXPECT_EQ(refusal(7), kTextUnbounded);
  EXPECT_EQ(refusal(nullptr), kTextUnbounded);
  EXPECT_EQ(refusal(""), kTextUnbounded);
}

TEST_F(InputText, MayHaveTwoThousandUtf16Units) {
  const std::string fits = repeated("한", 2000);
  EXPECT_EQ(type("hello", fits).at("sent"), fits);
  field.value("hello");
  EXPECT_EQ(refusal(repeated("a", 2001)), kTextUnbounded);
}

TEST_F(InputText, CountsCharactersBeyondTheBasicPlaneTwice) {
  EXPECT_EQ(type("hello", repeated("😀", 1000)).at("method"), "accessibility");
  field.value("hello");
  EXPECT_EQ(refusal(repeated("😀", 1000) + "a"), kTextUnbounded);
}

TEST_F(InputText, HasNoControlOrFormatCharacters) {
  for (const char* text : {"a\nb", "a\rb", "\t", "\x1b", "\x7f", "\u0085", "a\u200bb", "\u200d",
                           "\u200e", "\u00ad", "\ufeff", "👨\u200d👩"}) {
    EXPECT_EQ(refusal(text), kTextUnbounded) << text;
  }
  EXPECT_EQ(refusal(std::string("a\0b", 3)), kTextUnbounded);
}

TEST_F(InputText, MayHaveAnyOtherCharacter) {
  const std::string text = "é e\u0301 \u00a0\u3000\u2028 漢字 👍🏽 🇰🇷 ❤\ufe0f";
  EXPECT_EQ(type("hello", text).at("sent"), text);
}

TEST_F(InputText, IsReadAfterTheProofs) {
  const std::string id = idOf("hello");
  field.enabled(false);
  EXPECT_EQ(error("input", {{"nodeId", id}, {"kind", "type"}}).at("code"), "stale_target");
}

TEST_F(InputText, IsReadBeforeTheFieldIsAsked) {
  field.settable("AXValue", false);
  EXPECT_EQ(refusal(""), kTextUnbounded);
}

// Into a text field: its value.

TEST_F(InputText, ReplacesTheValueOfATextFieldAtOnce) {
  EXPECT_EQ(type("hello", "good bye"),
            Json({{"method", "accessibility"}, {"sent", "good bye"}, {"submitted", false}}));
  EXPECT_EQ(field.readText("AXValue"), "good bye");
  EXPECT_EQ(desktop.posted(), Lines{});
  EXPECT_EQ(desktop.eventLog().count("set AXValue"), 1U);
  EXPECT_EQ(desktop.eventLog().count("set AXFocused"), 0U);
}

TEST_F(InputText, IntoATextFieldWaitsForNothing) {
  const Json request = typing("hello", "x");
  EXPECT_EQ(millisecondsOf([&] { (void)result("input", request); }), 120);
}

TEST_F(InputText, SetsTheValueOfEveryTextRole) {
  for (const char* role : {"AXTextField", "AXTextArea", "AXSearchField"}) {
    field.with("AXRole", Value{role}).value("hello");
    EXPECT_EQ(type("hello", "x").at("method"), "accessibility") << role;
  }
}

TEST_F(InputText, IsTypedIntoOtherRolesEvenWhenTheirValueCanBeSet) {
  field.with("AXRole", Value{"AXComboBox"});
  EXPECT_EQ(type("hello", "x").at("method"), "keyboard");
  EXPECT_EQ(desktop.eventLog().count("set AXValue"), 0U);
}

TEST_F(InputText, IsNotTypedIntoATextFieldWhoseValueCannotBeSet) {
  constexpr const char* kUnsupported =
      "input_unsupported: The target does not support accessibility text input.";
  field.settable("AXValue", false);
  EXPECT_EQ(failure("input", typing("hello", "x")), kUnsupported);
  field.settable("AXValue").settableUnknown("AXValue");
  EXPECT_EQ(failure("input", typing("hello", "x")), kUnsupported);
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(InputText, ThatATextFieldDoesNotTakeIsAFailure) {
  field.refusingSet("AXValue");
  EXPECT_EQ(failure("input", typing("hello", "x", {{"submit", true}})),
            "input_failed: The target did not accept accessibility text input.");
  EXPECT_EQ(desktop.posted(), Lines{});
}

// Return after the text.

TEST_F(InputText, SubmittedInATextFieldIsFollowedByReturn) {
  const Json request = typing("hello", "x", {{"submit", true}});
  EXPECT_EQ(millisecondsOf([&] { EXPECT_EQ(result("input", request).at("submitted"), true); }),
            120 + 120 + 30 + 50);
  EXPECT_EQ(desktop.postedAt(), (Lines{"360 key 36 down flags=0x0", "390 key 36 up flags=0x0"}));
  const Lines deeds = desktop.eventLog().lines(sim::Topic::accessibility);
  ASSERT_GE(deeds.size(), 2U);
  EXPECT_EQ(Lines(deeds.end() - 2, deeds.end()),
            (Lines{"set AXValue AXTextField = x", "set AXFocused AXTextField = true"}));
  EXPECT_EQ(notes.focusedNode(), &field);
}

TEST_F(InputText, IsSubmittedByAnExplicitTrueOnly) {
  for (const Json& submit : {Json(false), Json(1), Json("true"), Json(nullptr)}) {
    EXPECT_EQ(type("hello", "hello", {{"submit", submit}}).at("submitted"), false) << submit;
    EXPECT_EQ(desktop.posted(), Lines{}) << submit;
  }
}

TEST_F(InputText, SubmittedNeedsTheForegroundOnceTheValueIsSet) {
  const Json request = typing("hello", "x", {{"submit", true}});
  desktop.after(110ms, [&] { desktop.app("com.example.Other").bringToFront(); });
  EXPECT_EQ(failure("input", request), kKeysGoElsewhere);
  EXPECT_EQ(field.readText("AXValue"), "x");
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(InputText, SubmittedIntoAFieldThatTakesNoFocusStillPressesReturn) {
  field.refusingSet("AXFocused");
  EXPECT_EQ(type("hello", "x", {{"submit", true}}).at("submitted"), true);
  EXPECT_EQ(desktop.posted().size(), 2U);
}

TEST_F(InputText, WithoutKeyEventsCannotBeSubmitted) {
  desktop.input().refusesKeys = true;
  EXPECT_EQ(failure("input", typing("hello", "x", {{"submit", true}})), kNoKeyEvent);
}

// By keystrokes.

TEST_F(InputText, IsTypedKeyByKeyElsewhere) {
  page.focus();
  EXPECT_EQ(type("page", "한é"),
            Json({{"method", "keyboard"}, {"sent", "한é"}, {"submitted", false}}));
  EXPECT_EQ(desktop.postedAt(),
            (Lines{"240 text 한 down", "250 text 한 up", "270 text é down", "280 text é up"}));
  EXPECT_EQ(page.readText("AXValue"), "한é");
  EXPECT_EQ(desktop.input().sourceTexts, Lines{"한é"});
}

TEST_F(InputText, TakesThirtyMillisecondsACharacter) {
  const Json request = typing("page", repeated("a", 2000));
  EXPECT_EQ(millisecondsOf([&] { (void)result("input", request); }), 120 + 2000 * 30);
  EXPECT_EQ(desktop.posted().size(), 4000U);
}

TEST_F(InputText, IsTypedByWhatPeopleTakeForOneCharacter) {
  (void)type("page", "e\u0301😀👍🏽🇰🇷각");
  EXPECT_EQ(desktop.posted(), (Lines{"text e\u0301 down", "text e\u0301 up", "text 😀 down",
                                     "text 😀 up", "text 👍🏽 down", "text 👍🏽 up",
                                     "text 🇰🇷 down", "text 🇰🇷 up", "text 각 down", "text 각 up"}));
}

TEST_F(InputText, ByKeystrokesNeedsTheForeground) {
  const Json request = typing("page", "x");
  desktop.after(110ms, [&] { desktop.app("com.example.Other").bringToFront(); });
  EXPECT_EQ(failure("input", request), kKeysGoElsewhere);
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(InputText, ByKeystrokesNeedsTheElementUnderThePointer) {
  page.focus();
  const Json request = typing("page", "x");
  window.label("Saved").at({180, 310, 400, 120});
  EXPECT_EQ(failure("input", request),
            "target_covered: The position (350,370) holds AXStaticText [180,310 400x120], not the "
            "captured AXGroup [200,320 300x100]; take a fresh snapshot");
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(InputText, ByKeystrokesGivesNobodyTheFocus) {
  (void)type("page", "x");
  EXPECT_EQ(desktop.eventLog().count("set AXFocused"), 0U);
}

TEST_F(InputText, SubmittedByKeystrokesIsFollowedByReturn) {
  EXPECT_EQ(type("page", "x", {{"submit", true}}),
            Json({{"method", "keyboard"}, {"sent", "x"}, {"submitted", true}}));
  EXPECT_EQ(desktop.postedAt(), (Lines{"240 text x down", "250 text x up",
                                       "390 key 36 down flags=0x0", "420 key 36 up flags=0x0"}));
}

TEST_F(InputText, ThatCannotBeTypedIsAFailure) {
  desktop.input().refusesText = true;
  EXPECT_EQ(failure("input", typing("page", "x", {{"submit", true}})), kNoKeyEvent);
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(InputText, KeepsWhatWasTypedBeforeAFailure) {
  const Json request = typing("page", "xyz");
  desktop.after(120ms + 35ms, [&] { desktop.input().refusesText = true; });
  EXPECT_EQ(failure("input", request), kNoKeyEvent);
  EXPECT_EQ(desktop.posted(), (Lines{"text x down", "text x up", "text y down", "text y up"}));
}

TEST_F(InputText, StopsWhenAnotherApplicationComesToTheFront) {
  const Json request = typing("page", "xyz", {{"submit", true}});
  desktop.after(120ms + 35ms, [&] { desktop.app("com.example.Other").bringToFront(); });
  EXPECT_EQ(failure("input", request), kKeysGoElsewhere);
  EXPECT_EQ(desktop.posted(), (Lines{"text x down", "text x up", "text y down", "text y up"}));
}

TEST_F(InputText, IsNotSubmittedToAnotherApplication) {
  const auto postedFor = [&](const char* name) {
    const Json request = typing(name, "x", {{"submit", true}});
    desktop.after(120ms + 100ms, [&] { desktop.app("com.example.Other").bringToFront(); });
    EXPECT_EQ(failure("input", request), kKeysGoElsewhere);
    return desktop.posted();
  };
  EXPECT_EQ(postedFor("page"), (Lines{"text x down", "text x up"}));
  EXPECT_EQ(postedFor("hello"), Lines{});
}

TEST_F(InputText, IsTypedWithoutASourceToo) {
  desktop.input().refusesSources = true;
  (void)type("page", "x");
  EXPECT_EQ(desktop.posted().size(), 2U);
}

// Recognised text. The window is 1024 x 512 points, so that a line's place is exact.

class TextIntoRecognisedText : public Scene {
 protected:
  void SetUp() override {
    (void)result("connect", {{"bundleId", "com.example.Notes"}});
    desktop.recognizer().lines = {{"Start", {0.125, 0.25, 0.25, 0.0625}, 1}};
    const Json observation = result("observe", {{"image", false}});
    id = nodeNamed(observation, "Start").at("id");
    desktop.eventLog().clear();
  }

  sim::App& notes = desktop.app("com.example.Notes");
  sim::Window& window = notes.window({100, 80, 1024, 512}, "Canvas");
  std::string id;
};

TEST_F(TextIntoRecognisedText, WaitsForTheForeground) {
  sim::App& other = desktop.app("com.example.Other");
  desktop.after(110ms, [&] { other.bringToFront(); });
  desktop.after(120ms + 1400ms, [&] { notes.bringToFront(); });
  EXPECT_EQ(result("input", {{"nodeId", id}, {"kind", "type"}, {"text", "go"}}).at("sent"), "go");
}

TEST_F(TextIntoRecognisedText, GoesToWhateverHasTheFocus) {
  const Json answer =
      result("input", {{"nodeId", id}, {"kind", "type"}, {"text", "go"}, {"submit", true}});
  EXPECT_EQ(answer, Json({{"method", "keyboard"},
                          {"via", "ocr"},
                          {"sent", "go"},
                          {"nodeId", id},
                          {"at", answer.at("at")}}));
  EXPECT_EQ(desktop.posted(), (Lines{"text g down", "text g up", "text o down", "text o up"}));
  EXPECT_EQ(desktop.eventLog().count("set AXFocused"), 0U);
}

TEST_F(TextIntoRecognisedText, NeedsTheForegroundAndNoHitTest) {
  desktop.accessibility().hitTestFails = true;
  EXPECT_EQ(result("input", {{"nodeId", id}, {"kind", "type"}, {"text", "x"}}).at("via"), "ocr");
}

TEST_F(TextIntoRecognisedText, IsRefusedBehindAnotherApplication) {
  desktop.after(110ms, [&] { desktop.app("com.example.Other").bringToFront(); });
  EXPECT_EQ(failure("input", {{"nodeId", id}, {"kind", "type"}, {"text", "x"}}), kKeysGoElsewhere);
}

TEST_F(TextIntoRecognisedText, IsBoundedToo) {
  EXPECT_EQ(failure("input", {{"nodeId", id}, {"kind", "type"}, {"text", "a\n"}}), kTextUnbounded);
}

TEST_F(TextIntoRecognisedText, AnUnknownKindIsRefusedAfterTheProofOfThePoint) {
  EXPECT_EQ(failure("input", {{"nodeId", id}, {"kind", "swipe"}}),
            "invalid_argument: Provide bounded vertical scroll input.");
  const Json observation = result("observe", {{"image", false}});
  desktop.accessibility().hitTestFails = true;
  EXPECT_EQ(
      error("input", {{"nodeId", nodeNamed(observation, "Start").at("id")}, {"kind", "swipe"}})
          .at("code"),
      "hit_test_failed");
}

// Into a text that is written by keys alone.

class InputByKeys : public InputText {
 protected:
  sim::Node& terminal =
      window.add("AXTextArea", "Terminal").at({200, 430, 300, 60}).takingTextByKeys();
};

TEST_F(InputByKeys, GoesInWhenTheElementHasTheFocus) {
  terminal.settable("AXFocused");
  const Json answer = type("Terminal", "ls");
  EXPECT_EQ(answer.at("method"), "keyboard");
  EXPECT_EQ(answer.at("sent"), "ls");
  EXPECT_EQ(desktop.posted(), (Lines{"text l down", "text l up", "text s down", "text s up"}));
}

TEST_F(InputByKeys, IsListedAsEditable) {
  terminal.settable("AXFocused");
  const Json observation = result("observe", {{"image", false}});
  for (const Json& node : observation.at("snapshot").at("nodes")) {
    if (node.at("name") == "Terminal") {
      EXPECT_EQ(node.at("editable"), true);
    }
  }
}

TEST_F(InputByKeys, IsRefusedWhenTheElementDoesNotTakeTheFocus) {
  EXPECT_EQ(failure("input", typing("Terminal", "ls")),
            "input_unsupported: The target does not support accessibility text input.");
  EXPECT_EQ(desktop.posted(), Lines{});
}

TEST_F(InputByKeys, IsFollowedByReturnInTheSameElement) {
  terminal.settable("AXFocused");
  static_cast<void>(type("Terminal", "l", {{"submit", true}}));
  EXPECT_EQ(desktop.posted().back(), "key 36 up flags=0x0");
}

}  // namespace
}  // namespace tarqo
