#include "platform/linux/input/remapped_keys.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "platform/linux/input/modifiers.h"
#include "platform/linux/x11/properties.h"

namespace tarqo::lnx {
namespace {

/// A key and a meaning that it was lent. In the note each is three numbers: the key's code, what it
/// types, and what it types with Shift.
struct Loan {
  xcb_keycode_t key = 0;
  KeySymbols meaning;
};
constexpr std::size_t kNumbersOfLoan = 3;

void append(std::vector<std::uint32_t>& numbers, xcb_keycode_t key, const KeySymbols& meaning) {
  numbers.insert(numbers.end(), {key, meaning.at(0, 0), meaning.at(0, 1)});
}

/// What a helper which is no more has lent and noted. The note holds its process id and then the
/// loans; a note of a living helper is respected.
std::vector<Loan> abandonedLoans(XServer& server) {
  const auto note = server.take<xcb_get_property_reply_t>(
      askProperty(server, server.root(), server.atom(XAtom::tarqoBorrowedKeys), kXListLength));
  const std::span<const std::uint32_t> numbers = numbersOf(note);
  if (numbers.empty()) {
    return {};
  }
  const auto owner = static_cast<pid_t>(numbers.front());
  if (owner != getpid() && kill(owner, 0) == 0) {
    return {};
  }
  std::vector<Loan> loans;
  for (auto rest = numbers.subspan(1); rest.size() >= kNumbersOfLoan;
       rest = rest.subspan(kNumbersOfLoan)) {
    loans.push_back({static_cast<xcb_keycode_t>(rest[0]), KeySymbols::typing(rest[1], rest[2])});
  }
  return loans;
}

/// Whether a key still types what it was lent. After a change of the layout its code may be that of
/// a key of the user's.
bool stillLent(const std::vector<Loan>& loans, xcb_keycode_t key, const KeySymbols& meaning) {
  return std::any_of(loans.begin(), loans.end(),
                     [&](const Loan& loan) { return loan.key == key && loan.meaning == meaning; });
}

template <typename T>
bool contains(const std::vector<T>& list, const T& value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

}  // namespace

void BorrowedKeys::findKeys(XServer& server) {
  const std::optional<Keymap> keymap = readKeymap(server);
  if (!keymap) {
    return;
  }
  keys_.emplace();
  const std::vector<Keymap> devices = readKeymapsOfDevices(server);
  const std::vector<Loan> abandoned = abandonedLoans(server);
  const std::vector<xcb_keycode_t> modifying = keysOfModifiers(server);
  for (std::size_t i = 0; i < keymap->keys.size(); ++i) {
    const auto key = static_cast<xcb_keycode_t>(keymap->first + i);
    const bool hasMeaning = std::any_of(devices.begin(), devices.end(), [&](const Keymap& each) {
      return !each.of(key).isEmpty();
    });
    if (stillLent(abandoned, key, keymap->keys[i])) {
      (*keys_)[key] = {KeySymbols{}, keymap->keys[i], {}};
    } else if (!hasMeaning && keymap->keys[i].isEmpty() && !contains(modifying, key)) {
      (*keys_)[key] = {keymap->keys[i], std::nullopt, {}};
    }
  }
  if (!abandoned.empty()) {
    note(server, {});
  }
}

std::size_t BorrowedKeys::capacity() {
  XServer* server = display_.server();
  if (!keys_ && server != nullptr && server->extensions().keyboard) {
    findKeys(*server);
  }
  return keys_ ? keys_->size() : 0;
}

Keymap BorrowedKeys::ownKeys(Keymap keymap) const {
  if (keys_) {
    for (const auto& [key, state] : *keys_) {
      keymap.set(key, KeySymbols{});
    }
  }
  return keymap;
}

bool BorrowedKeys::holdIn(const Keymap& keymap) const {
  return !keys_ || std::all_of(keys_->begin(), keys_->end(), [&](const auto& each) {
    return !each.second.lent || keymap.of(each.first) == *each.second.lent;
  });
}

void BorrowedKeys::renew() {
  const auto before = std::exchange(keys_, std::nullopt);
  if (!before || capacity() == 0) {
    return;
  }
  for (auto& [key, state] : *keys_) {
    // Taken over from our own note, which does not hold all that is known of it.
    if (const auto known = before->find(key);
        known != before->end() && known->second.lent == state.lent) {
      state = known->second;
    }
  }
}

std::optional<xcb_keycode_t> BorrowedKeys::find(const KeySymbols& meaning) const {
  if (keys_) {
    for (const auto& [key, state] : *keys_) {
      if (state.lent == meaning) {
        return key;
      }
    }
  }
  return std::nullopt;
}

bool BorrowedKeys::lend(const std::vector<KeySymbols>& wanted, std::size_t urgent) {
  const std::size_t count = std::min(capacity(), wanted.size());
  if (count < std::min(urgent, wanted.size())) {
    return false;
  }
  const auto isLent = [this](const KeySymbols& meaning) { return find(meaning).has_value(); };
  if (std::all_of(wanted.begin(), wanted.begin() + static_cast<std::ptrdiff_t>(urgent), isLent)) {
    return true;
  }
  const std::vector<KeySymbols> lending(wanted.begin(),
                                        wanted.begin() + static_cast<std::ptrdiff_t>(count));
  std::vector<std::map<xcb_keycode_t, Key>::iterator> free;
  for (auto key = keys_->begin(); key != keys_->end(); ++key) {
    if (!key->second.lent || !contains(lending, *key->second.lent)) {
      free.push_back(key);
    }
  }
  std::stable_sort(free.begin(), free.end(), [](const auto& a, const auto& b) {
    return a->second.lastUse < b->second.lastUse;
  });
  std::map<xcb_keycode_t, KeyChange> changes;
  std::vector<const Key*> changing;
  auto next = free.begin();
  for (const KeySymbols& meaning : lending) {
    if (!isLent(meaning)) {
      changes[(*next)->first] = {(*next)->second.now(), meaning};
      changing.push_back(&(*next)->second);
      ++next;
    }
  }
  awaitReaders(changing);
  XServer* server = display_.server();
  if (server == nullptr) {
    return false;
  }
  note(*server, changes);
  for (const auto& [key, change] : changes) {
    keys_->at(key).lent = change.to;
  }
  const bool lent = rebind(*server, changes);
  std::this_thread::sleep_for(kMeaningLearned);
  return lent;
}

void BorrowedKeys::touch(xcb_keycode_t key) {
  if (keys_ && keys_->contains(key)) {
    keys_->at(key).lastUse = SteadyClock::now();
  }
}

void BorrowedKeys::awaitReaders(const std::vector<const Key*>& keys) {
  SteadyClock::time_point lastUse;
  for (const Key* key : keys) {
    lastUse = std::max(lastUse, key->lastUse);
  }
  std::this_thread::sleep_until(lastUse + kMeaningHeld);
}

void BorrowedKeys::note(XServer& server, const std::map<xcb_keycode_t, KeyChange>& changes) {
  std::vector<std::uint32_t> numbers{static_cast<std::uint32_t>(getpid())};
  for (const auto& [key, state] : *keys_) {
    if (state.lent) {
      append(numbers, key, *state.lent);
    }
  }
  for (const auto& [key, change] : changes) {
    append(numbers, key, change.to);
  }
  const xcb_atom_t property = server.atom(XAtom::tarqoBorrowedKeys);
  if (numbers.size() == 1) {
    xcb_delete_property(server.raw(), server.root(), property);
  } else {
    xcb_change_property(server.raw(), XCB_PROP_MODE_REPLACE, server.root(), property,
                        XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(numbers.size()),
                        numbers.data());
  }
  xcb_flush(server.raw());
}

void BorrowedKeys::giveBack() {
  std::map<xcb_keycode_t, KeyChange> changes;
  std::vector<const Key*> changing;
  if (keys_) {
    for (auto& [key, state] : *keys_) {
      if (state.lent) {
        changes[key] = {*state.lent, state.own};
        changing.push_back(&state);
      }
    }
  }
  if (changes.empty()) {
    return;
  }
  awaitReaders(changing);
  XServer* server = display_.server();
  if (server != nullptr && rebind(*server, changes)) {
    for (const auto& [key, change] : changes) {
      keys_->at(key).lent.reset();
    }
    note(*server, {});
  }
}

}  // namespace tarqo::lnx
