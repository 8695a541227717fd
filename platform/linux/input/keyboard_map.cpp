#include "platform/linux/input/keyboard_map.h"

#include <X11/keysym.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "platform/linux/input/keysyms.h"
#include "platform/linux/x11/server_grab.h"
#include "platform/linux/x11/xkb.h"

namespace tarqo::lnx::input {
namespace {

// The index of a type that every keyboard has. It uses up Shift and Caps Lock, so that no toolkit
// turns what the key types into upper case.
constexpr std::uint8_t kAlphabetic = 2;

// Device ids are given in order, from 2 on.
constexpr xcb_xkb_device_spec_t kFirstDevice = 2;
constexpr xcb_xkb_device_spec_t kLastDevice = 63;

auto requestSymbols(x11::Server& server, xcb_xkb_device_spec_t device) {
  return xcb_xkb_get_map(server.raw(), device, XCB_XKB_MAP_PART_KEY_SYMS, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                         0, 0, 0, 0, 0, 0, 0);
}

/// The keys of a reply that holds nothing else; nullopt when it is cut short.
std::optional<Keymap> parse(const xcb_xkb_get_map_reply_t& reply) {
  const auto* at = static_cast<const std::uint8_t*>(xcb_xkb_get_map_map(&reply));
  constexpr std::size_t kFixedPart = 32;  // Of any reply; `length` counts what follows, in words.
  const std::size_t size = kFixedPart + 4 * static_cast<std::size_t>(reply.length);
  std::size_t left = size - std::min(size, sizeof(reply));
  Keymap keymap{reply.firstKeySym, {}};
  for (int i = 0; i < reply.nKeySyms; ++i) {
    xcb_xkb_key_sym_map_t head;
    if (left < sizeof(head)) {
      return std::nullopt;
    }
    std::memcpy(&head, at, sizeof(head));
    const std::size_t symbols = head.nSyms * sizeof(xcb_keysym_t);
    if (left < sizeof(head) + symbols) {
      return std::nullopt;
    }
    KeySymbols key{{}, head.groupInfo, head.width, std::vector<xcb_keysym_t>(head.nSyms)};
    std::copy(std::begin(head.kt_index), std::end(head.kt_index), key.types.begin());
    std::memcpy(key.symbols.data(), at + sizeof(head), symbols);
    keymap.keys.push_back(std::move(key));
    at += sizeof(head) + symbols;
    left -= sizeof(head) + symbols;
  }
  return keymap;
}

template <typename Cookie>
std::optional<Keymap> takeKeymap(x11::Server& server, Cookie cookie) {
  const auto reply = server.take<xcb_xkb_get_map_reply_t>(cookie);
  return reply ? parse(*reply) : std::nullopt;
}

void append(std::vector<std::uint8_t>& bytes, const void* data, std::size_t size) {
  const auto* from = static_cast<const std::uint8_t*>(data);
  bytes.insert(bytes.end(), from, from + size);
}

/// Writes the keys from `first` to `last`, all of them.
bool write(x11::Server& server, const Keymap& keymap, xcb_keycode_t first, xcb_keycode_t last) {
  std::vector<std::uint8_t> bytes;
  std::size_t symbols = 0;
  for (int key = first; key <= last; ++key) {
    const KeySymbols& each = keymap.of(static_cast<xcb_keycode_t>(key));
    xcb_xkb_key_sym_map_t head{};
    std::copy(each.types.begin(), each.types.end(), std::begin(head.kt_index));
    head.groupInfo = each.groupInfo;
    head.width = each.width;
    head.nSyms = static_cast<std::uint16_t>(each.symbols.size());
    append(bytes, &head, sizeof(head));
    append(bytes, each.symbols.data(), each.symbols.size() * sizeof(xcb_keysym_t));
    symbols += each.symbols.size();
  }
  const auto lastOfAll = static_cast<xcb_keycode_t>(keymap.first + keymap.keys.size() - 1);
  return server.succeeded(xcb_xkb_set_map_checked(
      server.raw(), XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_MAP_PART_KEY_SYMS, 0, keymap.first, lastOfAll,
      0, 0, first, static_cast<std::uint8_t>(last - first + 1), static_cast<std::uint16_t>(symbols),
      0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, bytes.data()));
}

/// Whether all keyboards type the same, so that what one types can be written to all.
bool allEqual(const std::vector<Keymap>& keymaps, const Keymap& keymap) {
  return std::all_of(keymaps.begin(), keymaps.end(),
                     [&](const Keymap& each) { return each == keymap; });
}

/// Changes the keys that still type what they must; returns them in order.
std::vector<xcb_keycode_t> apply(Keymap& keymap,
                                 const std::map<xcb_keycode_t, KeyChange>& changes) {
  std::vector<xcb_keycode_t> changed;
  for (const auto& [key, change] : changes) {
    if (key >= keymap.first && keymap.of(key) == change.from) {
      keymap.set(key, change.to);
      changed.push_back(key);
    }
  }
  return changed;
}

using ModifierMapping = x11::Reply<xcb_get_modifier_mapping_reply_t>;

constexpr std::size_t kModifierCount = 8;

std::vector<xcb_keycode_t> keysOf(const ModifierMapping& mapping) {
  if (!mapping) {
    return {};
  }
  const xcb_keycode_t* keys = xcb_get_modifier_mapping_keycodes(mapping.get());
  return {keys, keys + xcb_get_modifier_mapping_keycodes_length(mapping.get())};
}

x11::Reply<xcb_xkb_get_state_reply_t> currentState(x11::Server& server) {
  return server.take<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(server.raw(), XCB_XKB_ID_USE_CORE_KBD));
}

void changeState(x11::Server& server, std::uint8_t affected, std::uint8_t locked) {
  constexpr std::uint8_t kAll = 0xff;
  xcb_xkb_latch_lock_state(server.raw(), XCB_XKB_ID_USE_CORE_KBD, affected, locked, 0, 0, kAll, 0,
                           0);
}

}  // namespace

KeySymbols KeySymbols::ofPair(xcb_keysym_t plain, xcb_keysym_t shifted) {
  return {{kAlphabetic, kAlphabetic, kAlphabetic, kAlphabetic}, 1, 2, {plain, shifted}};
}

xcb_keysym_t KeySymbols::at(std::size_t group, std::size_t level) const {
  const std::size_t count = groups();
  if (count == 0 || level >= width) {
    return 0;
  }
  const std::size_t index = group % count * width + level;
  return index < symbols.size() ? symbols[index] : 0;
}

bool KeySymbols::isEmpty() const {
  return std::all_of(symbols.begin(), symbols.end(), [](xcb_keysym_t each) { return each == 0; });
}

const KeySymbols& Keymap::of(xcb_keycode_t key) const {
  static const KeySymbols kNone;
  const std::size_t index = static_cast<std::size_t>(key - first);
  return key >= first && index < keys.size() ? keys[index] : kNone;
}

void Keymap::set(xcb_keycode_t key, const KeySymbols& symbols) {
  const std::size_t index = static_cast<std::size_t>(key - first);
  if (key >= first && index < keys.size()) {
    keys[index] = symbols;
  }
}

std::optional<xcb_keycode_t> Keymap::find(xcb_keysym_t keysym, std::size_t group,
                                          std::size_t level) const {
  const auto found = std::find_if(keys.begin(), keys.end(), [&](const KeySymbols& each) {
    return each.at(group, level) == keysym;
  });
  return found == keys.end()
             ? std::nullopt
             : std::optional(static_cast<xcb_keycode_t>(first + (found - keys.begin())));
}

std::optional<Keymap> readKeymap(x11::Server& server) {
  return takeKeymap(server, requestSymbols(server, XCB_XKB_ID_USE_CORE_KBD));
}

std::vector<Keymap> readKeymapsOfDevices(x11::Server& server) {
  std::vector<xcb_xkb_get_map_cookie_t> cookies;
  for (xcb_xkb_device_spec_t device = kFirstDevice; device <= kLastDevice; ++device) {
    cookies.push_back(requestSymbols(server, device));
  }
  std::vector<Keymap> keymaps;
  for (const xcb_xkb_get_map_cookie_t cookie : cookies) {
    if (auto keymap = takeKeymap(server, cookie)) {  // Most ids are no keyboard's.
      keymaps.push_back(std::move(*keymap));
    }
  }
  return keymaps;
}

std::optional<KeyboardReading> readKeyboard(x11::Server& server) {
  const auto stateCookie = xcb_xkb_get_state(server.raw(), XCB_XKB_ID_USE_CORE_KBD);
  auto keymap = readKeymap(server);
  const auto state = server.take<xcb_xkb_get_state_reply_t>(stateCookie);
  if (!keymap || !state) {
    return std::nullopt;
  }
  return KeyboardReading{std::move(*keymap), state->group,
                         static_cast<std::uint8_t>(state->lockedMods | state->latchedMods)};
}

bool rebind(x11::Server& server, const std::map<xcb_keycode_t, KeyChange>& changes) {
  const x11::ServerGrab grab(server);
  auto keymap = readKeymap(server);
  if (!keymap) {
    return false;
  }
  const bool writesRange = allEqual(readKeymapsOfDevices(server), *keymap);
  const std::vector<xcb_keycode_t> changed = apply(*keymap, changes);
  if (changed.empty()) {
    return true;
  }
  if (writesRange) {
    return write(server, *keymap, changed.front(), changed.back());
  }
  // What lies between the keys belongs to keyboards that type differently.
  return std::all_of(changed.begin(), changed.end(),
                     [&](xcb_keycode_t key) { return write(server, *keymap, key, key); });
}

std::vector<xcb_keycode_t> keysOfModifiers(x11::Server& server) {
  return keysOf(
      server.take<xcb_get_modifier_mapping_reply_t>(xcb_get_modifier_mapping(server.raw())));
}

std::uint8_t numLockModifiers(x11::Server& server) {
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

HeldKeys heldKeys(x11::Server& server) {
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

std::uint8_t switchLocksOff(x11::Server& server, std::uint8_t spared) {
  const auto state = currentState(server);
  const auto locked = static_cast<std::uint8_t>(state ? state->lockedMods & ~spared : 0);
  if (locked != 0 || (state && state->latchedMods != 0)) {
    changeState(server, locked, 0);
  }
  return locked;
}

std::uint8_t switchStickyKeysOff(x11::Server& server) {
  const auto state = currentState(server);
  if (!state || ((state->lockedMods & ~XCB_MOD_MASK_LOCK) == 0 && state->latchedMods == 0)) {
    return 0;
  }
  return switchLocksOff(server, XCB_MOD_MASK_LOCK | numLockModifiers(server));
}

void switchLocksOn(x11::Server& server, std::uint8_t modifiers) {
  if (modifiers != 0) {
    changeState(server, modifiers, modifiers);
  }
}

}  // namespace tarqo::lnx::input
