#include "platform/linux/atspi/read/notifications.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "platform/linux/atspi/wire/object_handle.h"

namespace tarqo::lnx::atspi {
namespace {

/// Menus remembered as open, of one process.
constexpr std::size_t kMaxMenus = 8;

}  // namespace

/// What one observer listens for. `lock` is held while its callback runs.
struct Notifications::Subscriber {
  std::mutex lock;
  bool ended = false;
  Pid pid = 0;
  NotificationCallback callback;
  std::set<std::string, std::less<>> ofApplication;
  std::vector<std::pair<Ref, std::string>> ofElements;

  [[nodiscard]] bool wants(std::string_view name, const Ref& object) const {
    return ofApplication.contains(name) || std::ranges::any_of(ofElements, [&](const auto& entry) {
             return entry.second == name && entry.first == object;
           });
  }
};

class Notifications::Handle final : public Observer {
 public:
  explicit Handle(std::shared_ptr<Subscriber> subscriber) : subscriber_(std::move(subscriber)) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() override {
    const std::lock_guard lock(subscriber_->lock);
    subscriber_->ended = true;
  }

  bool add(const Element& element, std::string_view notification) override {
    const ObjectHandle* object = handleOf(element);
    if (object == nullptr || object->pid != subscriber_->pid || object->isBareWindow()) {
      return false;
    }
    const auto rows = eventRows();
    if (notification != kMenuOpened && notification != kMenuClosed &&
        std::ranges::find(rows, notification, &EventRow::notification) == rows.end()) {
      return false;
    }
    const std::lock_guard lock(subscriber_->lock);
    if (object->isApplication()) {
      subscriber_->ofApplication.emplace(notification);
      return true;
    }
    std::pair<Ref, std::string> entry{object->ref, std::string(notification)};
    if (std::ranges::find(subscriber_->ofElements, entry) == subscriber_->ofElements.end()) {
      subscriber_->ofElements.push_back(std::move(entry));
    }
    return true;
  }

 private:
  std::shared_ptr<Subscriber> subscriber_;
};

Notifications::Notifications(LinuxMainLoop& loop, Clock& clock) : stream_(loop, *this, clock) {}

Notifications::~Notifications() = default;

std::unique_ptr<Observer> Notifications::observe(Pid pid, NotificationCallback callback) {
  if (!stream_.awaitConnection()) {
    return nullptr;
  }
  auto subscriber = std::make_shared<Subscriber>();
  subscriber->pid = pid;
  subscriber->callback = std::move(callback);
  const std::lock_guard lock(lock_);
  std::erase_if(subscribers_, [](const auto& entry) { return entry.expired(); });
  subscribers_.push_back(subscriber);
  return std::make_unique<Handle>(std::move(subscriber));
}

std::optional<Ref> Notifications::lastFocus(Pid pid) {
  const std::lock_guard lock(lock_);
  const auto found = focus_.find(pid);
  return found == focus_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<Ref> Notifications::openMenus(Pid pid) {
  const std::lock_guard lock(lock_);
  const auto found = menus_.find(pid);
  return found == menus_.end() ? std::vector<Ref>() : found->second;
}

std::vector<EventKind> Notifications::kinds() {
  std::vector<EventKind> result;
  for (const EventRow& row : eventRows()) {
    result.push_back({row.interface, row.member, row.subscription});
  }
  return result;
}

std::optional<std::size_t> Notifications::kindOf(std::string_view interface,
                                                 std::string_view member, std::string_view detail) {
  const EventRow* row = eventRow(interface, member, detail);
  return row == nullptr ? std::nullopt
                        : std::optional(static_cast<std::size_t>(row - eventRows().data()));
}

void Notifications::receive(Pid pid, const Event& event) {
  const EventRow& row = eventRows()[event.kind];
  if (mayBeOfMenu(row) && isObserved(pid)) {
    followMenu(pid, event, row);
  }
  if (row.notification == "AXFocusedUIElementChanged") {
    if (!event.gained && row.detail == "focused") {
      return;
    }
    const std::lock_guard lock(lock_);
    focus_[pid] = event.object;
  }
  notify(pid, row.notification, event.object);
}

void Notifications::disconnected() {
  const std::lock_guard lock(lock_);
  focus_.clear();
  menus_.clear();
}

bool Notifications::isNeeded() {
  const std::lock_guard lock(lock_);
  return std::ranges::any_of(subscribers_, [](const auto& entry) { return !entry.expired(); });
}

void Notifications::followMenu(Pid pid, const Event& event, const EventRow& row) {
  if (event.gained) {
    stream_.requestRole(event.object, [this, pid, menu = event.object, &row](std::uint32_t role) {
      if (isOfMenu(row, role)) {
        menuOpened(pid, menu);
      }
    });
    return;
  }
  bool closed = false;
  {
    const std::lock_guard lock(lock_);
    closed = std::erase(menus_[pid], event.object) > 0;
  }
  if (closed) {
    notify(pid, kMenuClosed, event.object);
  }
}

void Notifications::menuOpened(Pid pid, const Ref& menu) {
  {
    const std::lock_guard lock(lock_);
    std::vector<Ref>& open = menus_[pid];
    std::erase(open, menu);
    open.insert(open.begin(), menu);
    open.resize(std::min(open.size(), kMaxMenus));
  }
  notify(pid, kMenuOpened, menu);
}

bool Notifications::isObserved(Pid pid) {
  const std::lock_guard lock(lock_);
  return std::ranges::any_of(subscribers_, [pid](const auto& entry) {
    const std::shared_ptr<Subscriber> subscriber = entry.lock();
    return subscriber && subscriber->pid == pid;
  });
}

void Notifications::notify(Pid pid, std::string_view name, const Ref& object) {
  std::vector<std::shared_ptr<Subscriber>> listening;
  {
    const std::lock_guard lock(lock_);
    for (const std::weak_ptr<Subscriber>& entry : subscribers_) {
      if (std::shared_ptr<Subscriber> subscriber = entry.lock();
          subscriber && subscriber->pid == pid) {
        listening.push_back(std::move(subscriber));
      }
    }
  }
  for (const std::shared_ptr<Subscriber>& subscriber : listening) {
    const std::lock_guard lock(subscriber->lock);
    if (!subscriber->ended && subscriber->wants(name, object)) {
      subscriber->callback(name);
    }
  }
}

}  // namespace tarqo::lnx::atspi
