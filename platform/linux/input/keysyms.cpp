#include "platform/linux/input/keysyms.h"

#include <X11/keysym.h>

#include <algorithm>
#include <array>

namespace tarqo::lnx::input {
namespace {

struct KeyName {
  std::uint16_t keyCode;
  xcb_keysym_t keysym;
};

// Letters and digits are their own keysyms.
constexpr std::array kKeys{
    KeyName{36, XK_Return},
    KeyName{53, XK_Escape},
    KeyName{48, XK_Tab},
    KeyName{51, XK_BackSpace},
    KeyName{117, XK_Delete},
    KeyName{126, XK_Up},
    KeyName{125, XK_Down},
    KeyName{123, XK_Left},
    KeyName{124, XK_Right},
    KeyName{115, XK_Home},
    KeyName{119, XK_End},
    KeyName{116, XK_Page_Up},
    KeyName{121, XK_Page_Down},
    KeyName{49, XK_space},
    KeyName{29, '0'},
    KeyName{18, '1'},
    KeyName{19, '2'},
    KeyName{20, '3'},
    KeyName{21, '4'},
    KeyName{23, '5'},
    KeyName{22, '6'},
    KeyName{26, '7'},
    KeyName{28, '8'},
    KeyName{25, '9'},
    KeyName{0, 'a'},
    KeyName{11, 'b'},
    KeyName{8, 'c'},
    KeyName{2, 'd'},
    KeyName{14, 'e'},
    KeyName{3, 'f'},
    KeyName{5, 'g'},
    KeyName{4, 'h'},
    KeyName{34, 'i'},
    KeyName{38, 'j'},
    KeyName{40, 'k'},
    KeyName{37, 'l'},
    KeyName{46, 'm'},
    KeyName{45, 'n'},
    KeyName{31, 'o'},
    KeyName{35, 'p'},
    KeyName{12, 'q'},
    KeyName{15, 'r'},
    KeyName{1, 's'},
    KeyName{17, 't'},
    KeyName{32, 'u'},
    KeyName{9, 'v'},
    KeyName{13, 'w'},
    KeyName{7, 'x'},
    KeyName{16, 'y'},
    KeyName{6, 'z'},
};

constexpr std::array<ModifierKey, 4> kModifierKeys{{
    {kModifierControl, XK_Control_L},
    {kModifierAlternate, XK_Alt_L},
    {kModifierCommand, XK_Super_L},
    {kModifierShift, XK_Shift_L},
}};

constexpr std::array<xcb_keysym_t, 9> kLockKeysyms{
    XK_Caps_Lock,       XK_Shift_Lock,     XK_Num_Lock,        XK_Scroll_Lock,   XK_ISO_Lock,
    XK_ISO_Level3_Lock, XK_ISO_Group_Lock, XK_ISO_Level5_Lock, XK_ISO_Next_Group};

constexpr char32_t kMalformed = 0xfffd;

/// The number of bytes that a lead byte announces; 0 for any other byte.
std::size_t announcedLength(unsigned char lead) {
  if (lead < 0x80) {
    return 1;
  }
  if (lead < 0xc2 || lead > 0xf4) {
    return 0;
  }
  return lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
}

/// Takes the first character off the text.
char32_t takeCharacter(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = announcedLength(lead);
  const auto isContinuation = [](char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; };
  if (length == 0 || length > text.size() ||
      !std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(length),
                   isContinuation)) {
    text.remove_prefix(1);
    return kMalformed;
  }
  char32_t character = length == 1 ? lead : lead & (0x7fU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    character = character << 6 | (static_cast<unsigned char>(text[i]) & 0x3fU);
  }
  text.remove_prefix(length);
  return character;
}

}  // namespace

std::optional<xcb_keysym_t> keysymOfKey(std::uint16_t keyCode) {
  const auto* group = std::find_if(kKeys.begin(), kKeys.end(),
                                   [&](const KeyName& each) { return each.keyCode == keyCode; });
  return group == kKeys.end() ? std::nullopt : std::optional(group->keysym);
}

xcb_keysym_t shiftedKeysym(xcb_keysym_t keysym) {
  return keysym >= XK_a && keysym <= XK_z ? keysym - XK_a + XK_A : keysym;
}

xcb_keysym_t keysymOfCharacter(char32_t character) {
  constexpr xcb_keysym_t kUnicode = 0x1000000;
  const bool isLatin1 =
      (character >= 0x20 && character <= 0x7e) || (character >= 0xa0 && character <= 0xff);
  return isLatin1 ? character : kUnicode | character;
}

std::vector<xcb_keysym_t> keysymsOfText(std::string_view text) {
  std::vector<xcb_keysym_t> keysyms;
  while (!text.empty()) {
    keysyms.push_back(keysymOfCharacter(takeCharacter(text)));
  }
  return keysyms;
}

const std::array<ModifierKey, 4>& modifierKeys() { return kModifierKeys; }

bool isLockingKeysym(xcb_keysym_t keysym) {
  return std::find(kLockKeysyms.begin(), kLockKeysyms.end(), keysym) != kLockKeysyms.end();
}

}  // namespace tarqo::lnx::input
