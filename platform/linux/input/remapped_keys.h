// Unused key codes, remapped temporarily: how a keyboard types characters that are not on it.
//
// The keyboard mapping is shared by all applications and belongs to nobody, so remapped keys are
// noted in a property of the root window: when a helper is killed, the next one takes over the keys
// that still have the noted mapping, and restores them. Worker thread only.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <vector>

#include "platform/clock.h"
#include "platform/linux/input/keyboard_map.h"

namespace tarqo::lnx::input {

/// How long a remapped key waits for its first use, and how long it keeps its mapping after the
/// last use. Applications are notified that the mapping has changed and then request the whole of
/// it; one that requests it too late types what the keys stand for by then. Chromium reads keys and
/// the mapping over two connections, so not even their order is certain: of 28 texts typed right
/// after the change 2 lacked their first character or had a wrong one; of those typed 20 ms after
/// it none.
inline constexpr std::chrono::milliseconds kBeforeFirstUse{40};
inline constexpr std::chrono::milliseconds kAfterLastUse{100};

class RemappedKeys {
 public:
  RemappedKeys(x11::Display& display, Clock& clock) : display_(display), clock_(clock) {}
  RemappedKeys(const RemappedKeys&) = delete;
  RemappedKeys& operator=(const RemappedKeys&) = delete;
  /// Restores every key, `kAfterLastUse` after its last use.
  ~RemappedKeys() { restore(); }

  /// How many keys can be remapped at once: 19 on the usual layouts of a PC keyboard.
  [[nodiscard]] std::size_t capacity();

  /// The keyboard's own keys: the mapping with all keys that can be remapped left empty.
  [[nodiscard]] Keymap ownKeys(Keymap keymap) const;

  /// Whether all remapped keys are in `keymap` as they were remapped: somebody else may have set
  /// another mapping.
  [[nodiscard]] bool holdIn(const Keymap& keymap) const;

  /// Finds the keys that can be remapped again, after somebody else has set another mapping. Keys
  /// that are still mapped as they were stay so.
  void renew();

  /// Maps keys to the symbols in `wanted`, which are distinct, in order, until keys run out. Does
  /// nothing when the first `urgent` are mapped already. False when there are fewer keys than that,
  /// or the server refused the change. Waits up to `kAfterLastUse` for keys that are mapped anew,
  /// and `kBeforeFirstUse` after the change.
  [[nodiscard]] bool map(const std::vector<KeySymbols>& wanted, std::size_t urgent);

  /// The key that is mapped to these symbols; nullopt when no key is.
  [[nodiscard]] std::optional<xcb_keycode_t> find(const KeySymbols& symbols) const;

  /// Notes that a key is used now.
  void markUsed(xcb_keycode_t key);

  /// As the destructor does; keys can be mapped again afterwards.
  void restore();

 private:
  struct Key {
    KeySymbols own;
    std::optional<KeySymbols> mapped;  ///< Absent while the key is as it was.
    Instant lastUse = kDistantPast;

    [[nodiscard]] const KeySymbols& now() const { return mapped ? *mapped : own; }
  };

  void findKeys(x11::Server& server);
  /// Waits until none of the keys has been used for `kAfterLastUse`.
  void awaitReaders(const std::vector<const Key*>& keys);
  /// Notes which keys are remapped, and which are about to be.
  void note(x11::Server& server, const std::map<xcb_keycode_t, KeyChange>& changes);

  x11::Display& display_;
  Clock& clock_;
  std::optional<std::map<xcb_keycode_t, Key>> keys_;
};

}  // namespace tarqo::lnx::input
