// What keys and characters are called in X, and which key of a keyboard types them.

#include "platform/linux/input/keysyms.h"

#include <X11/keysym.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "input/key_tables.h"
#include "platform/linux/input/keyboard_map.h"
#include "platform/linux/input/linux_input_events.h"

namespace tarqo::lnx::input {
namespace {

using Keysyms = std::vector<xcb_keysym_t>;

TEST(Keysyms, OfEveryNamedKeyIsTheOneOfThatName) {
  const std::map<std::string_view, xcb_keysym_t> named{
      {"Enter", XK_Return},        {"Escape", XK_Escape},  {"Tab", XK_Tab},
      {"Backspace", XK_BackSpace}, {"Delete", XK_Delete},  {"ArrowUp", XK_Up},
      {"ArrowDown", XK_Down},      {"ArrowLeft", XK_Left}, {"ArrowRight", XK_Right},
      {"Home", XK_Home},           {"End", XK_End},        {"PageUp", XK_Page_Up},
      {"PageDown", XK_Page_Down},  {"Space", XK_space}};
  for (const KeyCodeRow& row : KEY_CODES) {
    const auto special = named.find(row.name);
    const xcb_keysym_t expected =
        special != named.end() ? special->second : static_cast<unsigned char>(row.name.front());
    EXPECT_EQ(keysymOfKey(row.code), expected) << row.name;
    EXPECT_TRUE(special != named.end() || row.name.size() == 1) << row.name;
  }
}

TEST(Keysyms, OfDifferentKeysDiffer) {
  std::set<xcb_keysym_t> seen;
  for (const KeyCodeRow& row : KEY_CODES) {
    EXPECT_TRUE(seen.insert(keysymOfKey(row.code).value_or(0)).second) << row.name;
  }
}

TEST(Keysyms, OfAKeyWithoutANameIsNone) {
  for (const int code : {10, 27, 50, 96, 122, 127, 128, 0xffff}) {
    EXPECT_EQ(keysymOfKey(static_cast<std::uint16_t>(code)), std::nullopt) << code;
  }
}

TEST(Keysyms, OfEveryModifierIsThatOfALeftKey) {
  std::map<Modifiers, xcb_keysym_t> keys;
  for (const ModifierKey& key : modifierKeys()) {
    keys[key.mask] = key.keysym;
  }
  EXPECT_EQ(keys, (std::map<Modifiers, xcb_keysym_t>{{kModifierShift, XK_Shift_L},
                                                     {kModifierControl, XK_Control_L},
                                                     {kModifierAlternate, XK_Alt_L},
                                                     {kModifierCommand, XK_Super_L}}));
  for (const ModifierRow& row : MODIFIER_FLAGS) {
    EXPECT_TRUE(keys.contains(row.mask)) << row.name;
  }
}

TEST(Keysyms, OfLatinCharactersAreTheirCodes) {
  for (const char32_t character : {U' ', U'~', U'\u00a0', U'\u00e9', U'\u00ff'}) {
    EXPECT_EQ(keysymOfCharacter(character), character);
  }
}

TEST(Keysyms, OfOtherCharactersAreMarkedAsUnicode) {
  EXPECT_EQ(keysymOfCharacter(U'\u0100'), 0x1000100U);
  EXPECT_EQ(keysymOfCharacter(U'한'), 0x100d55cU);
  EXPECT_EQ(keysymOfCharacter(U'😀'), 0x101f600U);
  EXPECT_EQ(keysymOfCharacter(U'\U0010ffff'), 0x110ffffU);
  EXPECT_EQ(keysymOfCharacter(U'\u0080'), 0x1000080U);
  EXPECT_EQ(keysymOfCharacter(U'\u007f'), 0x100007fU);
}

TEST(Keysyms, OfATextStandInItsOrder) {
  EXPECT_EQ(keysymsOfText(""), Keysyms{});
  EXPECT_EQ(keysymsOfText("aé한😀"), (Keysyms{'a', 0xe9, 0x100d55c, 0x101f600}));
  EXPECT_EQ(keysymsOfText("e\u0301"), (Keysyms{'e', 0x1000301}));
  EXPECT_EQ(keysymsOfText("👍🏽"), (Keysyms{0x101f44d, 0x101f3fd}));
}

TEST(Keysyms, OfMalformedBytesAreReplacementCharacters) {
  constexpr xcb_keysym_t kReplacement = 0x100fffd;
  EXPECT_EQ(keysymsOfText("\xff"), Keysyms{kReplacement});
  EXPECT_EQ(keysymsOfText("a\x80z"), (Keysyms{'a', kReplacement, 'z'}));
  EXPECT_EQ(keysymsOfText("\xed\x95"), (Keysyms{kReplacement, kReplacement}));
  EXPECT_EQ(keysymsOfText("\xc0\xaf"), (Keysyms{kReplacement, kReplacement}));
}

TEST(Keysyms, WithShiftAreUpperCaseForLettersAlone) {
  EXPECT_EQ(shiftedKeysym('a'), static_cast<xcb_keysym_t>('A'));
  EXPECT_EQ(shiftedKeysym('z'), static_cast<xcb_keysym_t>('Z'));
  EXPECT_EQ(shiftedKeysym('1'), static_cast<xcb_keysym_t>('1'));
  EXPECT_EQ(shiftedKeysym(XK_Return), static_cast<xcb_keysym_t>(XK_Return));
}

TEST(Keysyms, TellLocksFromModifiersThatAreHeld) {
  EXPECT_TRUE(isLockingKeysym(XK_Caps_Lock));
  EXPECT_TRUE(isLockingKeysym(XK_Num_Lock));
  EXPECT_FALSE(isLockingKeysym(XK_Shift_L));
  EXPECT_FALSE(isLockingKeysym(XK_ISO_Level3_Shift));
}

// A keyboard with two layouts: key 10 has "a" and "A", and Cyrillic letters in the second; key 11
// has nothing, key 12 Return in one layout.
const Keymap kKeymap{10,
                     {{{2, 2, 0, 0}, 2, 2, {'a', 'A', XK_Cyrillic_ef, XK_Cyrillic_EF}},
                      {},
                      {{0, 0, 0, 0}, 1, 1, {XK_Return}}}};

TEST(Keymap, FindsKeysByLayoutAndLevel) {
  EXPECT_EQ(kKeymap.find('a', 0, 0), 10);
  EXPECT_EQ(kKeymap.find('A', 0, 1), 10);
  EXPECT_EQ(kKeymap.find('A', 0, 0), std::nullopt);
  EXPECT_EQ(kKeymap.find('a', 1, 0), std::nullopt);
  EXPECT_EQ(kKeymap.find(XK_Cyrillic_EF, 1, 1), 10);
}

TEST(Keymap, UsesAKeyOfFewerLayoutsInAll) { EXPECT_EQ(kKeymap.find(XK_Return, 1, 0), 12); }

TEST(Keymap, HasNothingBeyondItsKeysAndLevels) {
  EXPECT_EQ(kKeymap.find(XK_Return, 0, 1), std::nullopt);
  EXPECT_TRUE(kKeymap.of(11).isEmpty());
  EXPECT_TRUE(kKeymap.of(9).isEmpty());
  EXPECT_TRUE(kKeymap.of(13).isEmpty());
  EXPECT_FALSE(kKeymap.of(12).isEmpty());
}

TEST(Keymap, LendsAMeaningToAWholeKey) {
  const KeySymbols key = KeySymbols::ofPair('a', 'A');
  for (const std::size_t layout : {0U, 1U, 3U}) {
    EXPECT_EQ(key.at(layout, 0), static_cast<xcb_keysym_t>('a'));
    EXPECT_EQ(key.at(layout, 1), static_cast<xcb_keysym_t>('A'));
  }
}

TEST(Wheel, TurnsAClickForEveryFortyPixels) {
  EXPECT_EQ(wheelClicks(-120), 3);
  EXPECT_EQ(wheelClicks(401), 10);
  EXPECT_EQ(wheelClicks(-2000), 50);
  EXPECT_EQ(wheelClicks(60), 2);
  EXPECT_EQ(wheelClicks(59), 1);
}

TEST(Wheel, TurnsFewerClicksWhereOneMovesFurther) {
  EXPECT_EQ(wheelClicks(-360, 120), 3);
  EXPECT_EQ(wheelClicks(300, 114), 3);
  EXPECT_EQ(wheelClicks(20, 114), 1);
  EXPECT_EQ(wheelClicks(2000, 0.5), 200);
}

TEST(Wheel, TurnsAtLeastOneClick) {
  EXPECT_EQ(wheelClicks(1), 1);
  EXPECT_EQ(wheelClicks(-1), 1);
}

}  // namespace
}  // namespace tarqo::lnx::input
