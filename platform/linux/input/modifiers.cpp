#include "platform/linux/input/modifiers.h"

#include <X11/keysym.h>

#include <algorithm>
#include <iterator>
#include <optional>

#include "platform/linux/input/keysyms.h"
#include "platform/linux/input/xkb.h"

namespace tarqo::lnx {
namespace {

using ModifierMapping = XReply<xcb_get_modifier_mapping_reply_t>;

constexpr std::size_t kModifierCount = 8;

std::vector<xcb_keycode_t> keysOf(const ModifierMapping& mapping) {
  if (!mapping) {
    return {};
  }
  const xcb_keycode_t* keys = xcb_get_modifier_mapping_keycodes(mapping.get());
  return {keys, keys + xcb_get_modifier_mapping_keycodes_length(mapping.get())};
}

XReply<xcb_xkb_get_state_reply_t> currentState(XServer& server) {
  return server.take<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(server.raw(), XCB_XKB_ID_USE_CORE_KBD));
}

void changeState(XServer& server, std::uint8_t affected, std::uint8_t locked) {
  constexpr std::uint8_t kAll = 0xff;
  xcb_xkb_latch_lock_state(server.raw(), XCB_XKB_ID_USE_CORE_KBD, affected, locked, 0, 0, kAll, 0,
                           0);
}

}  // namespace

std::vector<xcb_keycode_t> keysOfModifiers(XServer& server) {
  return keysOf(
      server.take<xcb_get_modifier_mapping_reply_t>(xcb_get_modifier_mapping(server.raw())));
}

std::uint8_t numLockModifiers(XServer& server) {
  const std::vector<xcb_keycode_t> keys = keysOfModifiers(server);
  const std::optional<Keymap> keymap = readKeymap(server);
  const std::size_t perModifier = keys.size() / kModifierCount;
  unsigned modifiers = 0;
  for (std::size_t i = 0; keymap && i < keys.size(); ++i) {
    if (keys[i] != 0 && keymap->of(keys[i]).at(0, 0) == XK_Num_Lock) {
      modifiers |= 1U << (i / perModifier);
    }
  }
  return static_cast<std::uint8_t>(modifiers);
}

HeldKeys heldKeys(XServer& server) {
  const auto downCookie = xcb_query_keymap(server.raw());
  const auto mappingCookie = xcb_get_modifier_mapping(server.raw());
  const auto down = server.take<xcb_query_keymap_reply_t>(downCookie);
  const auto mapping = server.take<xcb_get_modifier_mapping_reply_t>(mappingCookie);
  HeldKeys held;
  if (!down) {
    return held;
  }
  std::copy(std::begin(down->keys), std::end(down->keys), held.down.begin());
  std::vector<xcb_keycode_t> keys = keysOf(mapping);
  std::sort(keys.begin(), keys.end());
  keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
  std::erase_if(keys, [&](xcb_keycode_t key) { return !held.isDown(key); });
  const std::optional<Keymap> keymap = keys.empty() ? std::nullopt : readKeymap(server);
  for (const xcb_keycode_t key : keys) {
    const bool isLocking = keymap && isLockingKeysym(keymap->of(key).at(0, 0));
    (isLocking ? held.locking : held.modifying).push_back(key);
  }
  return held;
}

std::uint8_t switchLocksOff(XServer& server, std::uint8_t spared) {
  const auto state = currentState(server);
  const auto locked = static_cast<std::uint8_t>(state ? state->lockedMods & ~spared : 0);
  if (locked != 0 || (state && state->latchedMods != 0)) {
    changeState(server, locked, 0);
  }
  return locked;
}

std::uint8_t switchStickyKeysOff(XServer& server) {
  const auto state = currentState(server);
  if (!state || ((state->lockedMods & ~XCB_MOD_MASK_LOCK) == 0 && state->latchedMods == 0)) {
    return 0;
  }
  return switchLocksOff(server, XCB_MOD_MASK_LOCK | numLockModifiers(server));
}

void switchLocksOn(XServer& server, std::uint8_t modifiers) {
  if (modifiers != 0) {
    changeState(server, modifiers, modifiers);
  }
}

}  // namespace tarqo::lnx
