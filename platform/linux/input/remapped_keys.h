// Keys without a meaning of their own, lent one for a while: how a keyboard types what is not on
// it.
//
// A keyboard mapping is shared by all applications and belongs to nobody, so what is borrowed is
// noted on the root window: when a helper is killed, the next one takes over the keys that still
// type what they were lent, and gives them back. Worker thread only.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <vector>

#include "platform/linux/input/keyboard_map.h"

namespace tarqo::lnx {

/// How long a key is not used after it was lent a meaning, and how long it keeps the meaning after
/// its last use. Applications learn by an event that the mapping changed and then ask for the whole
/// of it. One that asks too late types what the keys mean by then. Chromium reads keys and the
/// mapping over two connections, so even the order is left to luck: of 28 texts typed at once after
/// the change 2 lacked their first character or had a wrong one, after 20 ms none.
inline constexpr std::chrono::milliseconds kMeaningLearned{40};
inline constexpr std::chrono::milliseconds kMeaningHeld{100};

class BorrowedKeys {
 public:
  explicit BorrowedKeys(XDisplay& display) : display_(display) {}
  BorrowedKeys(const BorrowedKeys&) = delete;
  BorrowedKeys& operator=(const BorrowedKeys&) = delete;
  /// Gives every key back, `kMeaningHeld` after its last use.
  ~BorrowedKeys() { giveBack(); }

  /// How many keys can be borrowed at once: 19 on the usual layouts of a PC keyboard.
  [[nodiscard]] std::size_t capacity();

  /// The keyboard's own keys: the mapping without what is lent.
  [[nodiscard]] Keymap ownKeys(Keymap keymap) const;

  /// Whether each key that is lent a meaning has it in this mapping: somebody may have set another.
  [[nodiscard]] bool holdIn(const Keymap& keymap) const;

  /// Looks anew which keys can be borrowed, after somebody has set another mapping. What still
  /// types what it was lent stays lent.
  void renew();

  /// Lends the first of `wanted`, distinct, and with them as many of the others as there are keys;
  /// changes nothing when the first `urgent` have their keys already. False when the server did
  /// not take it, or has no keys. Waits up to `kMeaningHeld` for the keys that get another meaning,
  /// and `kMeaningLearned` after lending.
  [[nodiscard]] bool lend(const std::vector<KeySymbols>& wanted, std::size_t urgent);

  /// The key that has that meaning; none when it was not lent.
  [[nodiscard]] std::optional<xcb_keycode_t> find(const KeySymbols& meaning) const;

  /// Says that a key is being used now.
  void touch(xcb_keycode_t key);

  /// As the destructor does; keys can be lent anew afterwards.
  void giveBack();

 private:
  using SteadyClock = std::chrono::steady_clock;

  struct Key {
    KeySymbols own;
    std::optional<KeySymbols> lent;
    SteadyClock::time_point lastUse;

    [[nodiscard]] const KeySymbols& now() const { return lent ? *lent : own; }
  };

  void findKeys(XServer& server);
  /// Waits until none of the keys was used in the last `kMeaningHeld`.
  static void awaitReaders(const std::vector<const Key*>& keys);
  /// Notes what is lent, and what is about to be.
  void note(XServer& server, const std::map<xcb_keycode_t, KeyChange>& changes);

  XDisplay& display_;
  std::optional<std::map<xcb_keycode_t, Key>> keys_;
};

}  // namespace tarqo::lnx
