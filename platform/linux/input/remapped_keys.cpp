#include "platform/linux/input/remapped_keys.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "platform/linux/x11/properties.h"

namespace tarqo::lnx::input {
namespace {

/// A key and the symbols it was mapped to. In the note each is three numbers: the key's code, what
/// it types, and what it types with Shift.
struct Remapping {
  xcb_keycode_t key = 0;
  KeySymbols symbols;
};
constexpr std::size_t kNumbersPerRemapping = 3;

void append(std::vector<std::uint32_t>& numbers, xcb_keycode_t key, const KeySymbols& symbols) {
  numbers.insert(numbers.end(), {key, symbols.at(0, 0), symbols.at(0, 1)});
}

/// The remappings noted by a helper that has ended without restoring them. The note holds its
/// process id and then the remappings; a note of a living helper is respected.
std::vector<Remapping> abandonedRemappings(x11::Server& server) {
  const auto note = server.take<xcb_get_property_reply_t>(x11::requestProperty(
      server, server.root(), server.atom(x11::Atom::tarqoBorrowedKeys), x11::kListLength));
  const std::span<const std::uint32_t> numbers = x11::numbersOf(note);
  if (numbers.empty()) {
    return {};
  }
  const auto owner = static_cast<pid_t>(numbers.front());
  if (owner != getpid() && kill(owner, 0) == 0) {
    return {};
  }
  std::vector<Remapping> remappings;
  for (auto rest = numbers.subspan(1); rest.size() >= kNumbersPerRemapping;
       rest = rest.subspan(kNumbersPerRemapping)) {
    remappings.push_back(
        {static_cast<xcb_keycode_t>(rest[0]), KeySymbols::ofPair(rest[1], rest[2])});
  }
  return remappings;
}

/// Whether a key is still mapped as noted. After a change of the layout its code may be that of a
/// key of the user's.
bool isStillMapped(const std::vector<Remapping>& remappings, xcb_keycode_t key,
                   const KeySymbols& symbols) {
  return std::any_of(remappings.begin(), remappings.end(), [&](const Remapping& remapping) {
    return remapping.key == key && remapping.symbols == symbols;
  });
}

template <typename T>
bool contains(const std::vector<T>& list, const T& value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

}  // namespace

void RemappedKeys::findKeys(x11::Server& server) {
  const std::optional<Keymap> keymap = readKeymap(server);
  if (!keymap) {
    return;
  }
  keys_.emplace();
  const std::vector<Keymap> devices = readKeymapsOfDevices(server);
  const std::vector<Remapping> abandoned = abandonedRemappings(server);
  const std::vector<xcb_keycode_t> modifying = keysOfModifiers(server);
  for (std::size_t i = 0; i < keymap->keys.size(); ++i) {
    const auto key = static_cast<xcb_keycode_t>(keymap->first + i);
    const bool hasMeaning = std::any_of(devices.begin(), devices.end(), [&](const Keymap& each) {
      return !each.of(key).isEmpty();
    });
    if (isStillMapped(abandoned, key, keymap->keys[i])) {
      (*keys_)[key] = {KeySymbols{}, keymap->keys[i], {}};
    } else if (!hasMeaning && keymap->keys[i].isEmpty() && !contains(modifying, key)) {
      (*keys_)[key] = {keymap->keys[i], std::nullopt, {}};
    }
  }
  if (!abandoned.empty()) {
    note(server, {});
  }
}

std::size_t RemappedKeys::capacity() {
  x11::Server* server = display_.server();
  if (!keys_ && server != nullptr && server->extensions().keyboard) {
    findKeys(*server);
  }
  return keys_ ? keys_->size() : 0;
}

Keymap RemappedKeys::ownKeys(Keymap keymap) const {
  if (keys_) {
    for (const auto& [key, state] : *keys_) {
      keymap.set(key, KeySymbols{});
    }
  }
  return keymap;
}

bool RemappedKeys::holdIn(const Keymap& keymap) const {
  return !keys_ || std::all_of(keys_->begin(), keys_->end(), [&](const auto& each) {
    return !each.second.mapped || keymap.of(each.first) == *each.second.mapped;
  });
}

void RemappedKeys::renew() {
  const auto before = std::exchange(keys_, std::nullopt);
  if (!before || capacity() == 0) {
    return;
  }
  for (auto& [key, state] : *keys_) {
    // `state` was read from our own note, which does not hold all that is known of the key.
    if (const auto known = before->find(key);
        known != before->end() && known->second.mapped == state.mapped) {
      state = known->second;
    }
  }
}

std::optional<xcb_keycode_t> RemappedKeys::find(const KeySymbols& symbols) const {
  if (keys_) {
    for (const auto& [key, state] : *keys_) {
      if (state.mapped == symbols) {
        return key;
      }
    }
  }
  return std::nullopt;
}

bool RemappedKeys::map(const std::vector<KeySymbols>& wanted, std::size_t urgent) {
  const std::size_t count = std::min(capacity(), wanted.size());
  if (count < std::min(urgent, wanted.size())) {
    return false;
  }
  const auto isMapped = [this](const KeySymbols& symbols) { return find(symbols).has_value(); };
  if (std::all_of(wanted.begin(), wanted.begin() + static_cast<std::ptrdiff_t>(urgent), isMapped)) {
    return true;
  }
  const std::vector<KeySymbols> mapped(wanted.begin(),
                                       wanted.begin() + static_cast<std::ptrdiff_t>(count));
  std::vector<std::map<xcb_keycode_t, Key>::iterator> free;
  for (auto key = keys_->begin(); key != keys_->end(); ++key) {
    if (!key->second.mapped || !contains(mapped, *key->second.mapped)) {
      free.push_back(key);
    }
  }
  std::stable_sort(free.begin(), free.end(), [](const auto& a, const auto& b) {
    return a->second.lastUse < b->second.lastUse;
  });
  std::map<xcb_keycode_t, KeyChange> changes;
  std::vector<const Key*> changing;
  auto next = free.begin();
  for (const KeySymbols& symbols : mapped) {
    if (!isMapped(symbols)) {
      changes[(*next)->first] = {(*next)->second.now(), symbols};
      changing.push_back(&(*next)->second);
      ++next;
    }
  }
  awaitReaders(changing);
  x11::Server* server = display_.server();
  if (server == nullptr) {
    return false;
  }
  note(*server, changes);
  for (const auto& [key, change] : changes) {
    keys_->at(key).mapped = change.to;
  }
  const bool done = rebind(*server, changes);
  clock_.sleep(kBeforeFirstUse);
  return done;
}

void RemappedKeys::markUsed(xcb_keycode_t key) {
  if (keys_ && keys_->contains(key)) {
    keys_->at(key).lastUse = clock_.now();
  }
}

void RemappedKeys::awaitReaders(const std::vector<const Key*>& keys) {
  Instant lastUse = kDistantPast;
  for (const Key* key : keys) {
    lastUse = std::max(lastUse, key->lastUse);
  }
  clock_.sleep(std::max(lastUse + kAfterLastUse - clock_.now(), Duration::zero()));
}

void RemappedKeys::note(x11::Server& server, const std::map<xcb_keycode_t, KeyChange>& changes) {
  std::vector<std::uint32_t> numbers{static_cast<std::uint32_t>(getpid())};
  for (const auto& [key, state] : *keys_) {
    if (state.mapped) {
      append(numbers, key, *state.mapped);
    }
  }
  for (const auto& [key, change] : changes) {
    append(numbers, key, change.to);
  }
  const xcb_atom_t property = server.atom(x11::Atom::tarqoBorrowedKeys);
  if (numbers.size() == 1) {
    xcb_delete_property(server.raw(), server.root(), property);
  } else {
    xcb_change_property(server.raw(), XCB_PROP_MODE_REPLACE, server.root(), property,
                        XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(numbers.size()),
                        numbers.data());
  }
  xcb_flush(server.raw());
}

void RemappedKeys::restore() {
  std::map<xcb_keycode_t, KeyChange> changes;
  std::vector<const Key*> changing;
  if (keys_) {
    for (auto& [key, state] : *keys_) {
      if (state.mapped) {
        changes[key] = {*state.mapped, state.own};
        changing.push_back(&state);
      }
    }
  }
  if (changes.empty()) {
    return;
  }
  awaitReaders(changing);
  x11::Server* server = display_.server();
  if (server != nullptr && rebind(*server, changes)) {
    for (const auto& [key, change] : changes) {
      keys_->at(key).mapped.reset();
    }
    note(*server, {});
  }
}

}  // namespace tarqo::lnx::input
