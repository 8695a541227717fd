#include "platform/linux/linux_x_modifiers.h"

#include <X11/keysym.h>

#include <algorithm>

#include "platform/linux/linux_keysyms.h"
#include "platform/linux/linux_xkb.h"

namespace tarqo::lnx {
namespace {

using ModifierMapping = XReply<xcb_get_modifier_mapping_reply_t>;

constexpr std::size_t kModifierCount = 8;

ModifierMapping modifierMapping(XServer& server) {
  return server.take<xcb_get_modifier_mapping_reply_t>(xcb_get_modifier_mapping(server.raw()));
}

std::vector<xcb_keycode_t> keysOf(const ModifierMapping& mapping) {
  if (!mapping) {
    return {};
  }
  const xcb_keycode_t* keys = xcb_get_modifier_mapping_keycodes(mapping.get());
  return {keys, keys + xcb_get_modifier_mapping_keycodes_length(mapping.get())};
}

/// The modifiers that a key of that keysym makes, one bit each.
std::uint8_t modifiersOf(const ModifierMapping& mapping, const Keymap& keymap,
                         xcb_keysym_t keysym) {
  const std::vector<xcb_keycode_t> keys = keysOf(mapping);
  const std::size_t perModifier = keys.size() / kModifierCount;
  unsigned modifiers = 0;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (keys[i] != 0 && keymap.of(keys[i]).at(0, 0) == keysym) {
      modifiers |= 1U << (i / perModifier);
    }
  }
  return static_cast<std::uint8_t>(modifiers);
}

void changeState(XServer& server, std::uint8_t affected, std::uint8_t locked) {
  constexpr std::uint8_t kAll = 0xff;
  xcb_xkb_latch_lock_state(server.raw(), XCB_XKB_ID_USE_CORE_KBD, affected, locked, 0, 0, kAll, 0,
                           0);
}

}  // namespace

std::vector<xcb_keycode_t> keysOfModifiers(XServer& server) {
  return keysOf(modifierMapping(server));
}

std::vector<xcb_keycode_t> heldKeys(XServer& server, const Keymap& keymap,
                                    const std::vector<xcb_keycode_t>& others) {
  const auto down = server.take<xcb_query_keymap_reply_t>(xcb_query_keymap(server.raw()));
  if (!down) {
    return {};
  }
  std::vector<xcb_keycode_t> held;
  const auto addIfDown = [&](xcb_keycode_t key) {
    const bool isDown = (down->keys[key / 8] >> (key % 8) & 1U) != 0;
    if (isDown && std::find(held.begin(), held.end(), key) == held.end()) {
      held.push_back(key);
    }
  };
  for (const xcb_keycode_t key : keysOfModifiers(server)) {
    if (!isLockingKeysym(keymap.of(key).at(0, 0))) {
      addIfDown(key);
    }
  }
  std::for_each(others.begin(), others.end(), addIfDown);
  return held;
}

std::uint8_t switchLocksOff(XServer& server, const Keymap& keymap) {
  const auto state = server.take<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(server.raw(), XCB_XKB_ID_USE_CORE_KBD));
  if (!state) {
    return 0;
  }
  const unsigned spared = modifiersOf(modifierMapping(server), keymap, XK_Num_Lock);
  const auto locked = static_cast<std::uint8_t>(state->lockedMods & ~spared);
  if (locked != 0 || state->latchedMods != 0) {
    changeState(server, locked, 0);
  }
  return locked;
}

void switchLocksOn(XServer& server, std::uint8_t modifiers) {
  if (modifiers != 0) {
    changeState(server, modifiers, modifiers);
  }
}

std::size_t currentLayout(XServer& server) {
  const auto state = server.take<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(server.raw(), XCB_XKB_ID_USE_CORE_KBD));
  return state ? state->group : 0;
}

}  // namespace tarqo::lnx
