#include "session/journal.h"

#include <set>

namespace tarqo {
namespace {

constexpr std::size_t kMaxEntries = 500;

}  // namespace

void Journal::note(std::string_view name, Instant at) {
  const std::lock_guard lock(heardLock_);
  heard_.push_back({std::string(name), at});
  while (heard_.size() > kMaxEntries) {
    heard_.pop_front();
  }
}

Journal::Heard Journal::lastHeard(Instant since) const {
  const std::lock_guard lock(heardLock_);
  std::set<std::string> names;
  Heard result;
  for (const Entry& entry : heard_) {
    if (entry.at > since) {
      names.insert(entry.name);
      result.at = entry.at;
    }
  }
  result.names.assign(names.begin(), names.end());
  return result;
}

}  // namespace tarqo
