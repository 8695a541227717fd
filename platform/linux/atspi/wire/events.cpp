#include "platform/linux/atspi/wire/events.h"

#include <poll.h>

#include <algorithm>
#include <exception>
#include <future>
#include <set>

#include "platform/linux/atspi/read/element.h"
#include "platform/linux/atspi/wire/codec.h"

namespace tarqo::lnx {
namespace {

constexpr auto kObservePatience = std::chrono::seconds(1);

/// A connection that was lost is tried again on the loop that everything else waits for: briefly
/// and seldom. A bus that takes longer to start has started by the next time.
constexpr auto kReconnectPatience = std::chrono::milliseconds(300);
constexpr auto kReconnectRest = std::chrono::seconds(1);

/// Messages handled before the loop's other work has its turn. Taking one costs some 10 us, and a
/// page that loads sends tens of thousands.
constexpr int kMaxMessagesARound = 300;

/// Events that may wait for their sender's process id.
constexpr std::size_t kMaxWaiting = 200;

/// Objects asked for their role at once. A page that comes to show announces all that is on it.
constexpr std::size_t kMaxQuestions = 32;

/// Menus remembered as open, of one process.
constexpr std::size_t kMaxMenus = 8;

constexpr std::string_view kEventPrefix = "org.a11y.atspi.Event.";

}  // namespace

/// What one observer listens for. `lock` is held while its callback runs.
struct AtspiEvents::Subscriber {
  std::mutex lock;
  bool ended = false;
  Pid pid = 0;
  NotificationCallback callback;
  std::set<std::string, std::less<>> ofApplication;
  std::vector<std::pair<AtspiRef, std::string>> ofElements;

  [[nodiscard]] bool wants(std::string_view name, const AtspiRef* object) const {
    if (ofApplication.contains(name)) {
      return true;
    }
    return object != nullptr && std::ranges::any_of(ofElements, [&](const auto& entry) {
             return entry.second == name && entry.first == *object;
           });
  }
};

class AtspiEvents::Handle final : public Observer {
 public:
  explicit Handle(std::shared_ptr<Subscriber> subscriber) : subscriber_(std::move(subscriber)) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() override {
    const std::lock_guard lock(subscriber_->lock);
    subscriber_->ended = true;
  }

  bool add(const Element& element, std::string_view notification) override {
    const AtspiElement* ours = atspiElement(element);
    if (ours == nullptr || ours->parts().pid != subscriber_->pid) {
      return false;
    }
    const auto rows = eventRows();
    if (notification != kMenuOpened && notification != kMenuClosed &&
        std::ranges::find(rows, notification, &EventRow::notification) == rows.end()) {
      return false;
    }
    const std::lock_guard lock(subscriber_->lock);
    if (ours->isApplication()) {
      subscriber_->ofApplication.emplace(notification);
      return true;
    }
    std::pair<AtspiRef, std::string> entry{ours->parts().ref, std::string(notification)};
    if (std::ranges::find(subscriber_->ofElements, entry) == subscriber_->ofElements.end()) {
      subscriber_->ofElements.push_back(std::move(entry));
    }
    return true;
  }

 private:
  std::shared_ptr<Subscriber> subscriber_;
};

AtspiEvents::AtspiEvents(LinuxMainLoop& loop) : loop_(loop) { loop_.add(*this); }

AtspiEvents::~AtspiEvents() = default;

std::unique_ptr<Observer> AtspiEvents::observe(Pid pid, NotificationCallback callback) {
  auto answer = std::make_shared<std::promise<bool>>();
  std::future<bool> ready = answer->get_future();
  loop_.post([this, answer] { answer->set_value(connected(kObservePatience)); });
  if (ready.wait_for(kObservePatience) != std::future_status::ready || !ready.get()) {
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

std::optional<AtspiRef> AtspiEvents::lastFocus(Pid pid) {
  const std::lock_guard lock(lock_);
  const auto found = focus_.find(pid);
  return found == focus_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<AtspiRef> AtspiEvents::openMenus(Pid pid) {
  const std::lock_guard lock(lock_);
  const auto found = menus_.find(pid);
  return found == menus_.end() ? std::vector<AtspiRef>() : found->second;
}

bool AtspiEvents::connected(Duration patience) {
  if (bus_ && sd_bus_is_open(bus_.get()) > 0) {
    return true;
  }
  disconnect();
  try {
    bus_ = openAccessibilityBus(patience);
    if (bus_ && subscribe()) {
      return true;
    }
  } catch (const std::exception&) {
    // Out of memory: nothing may pass through the main loop, and the next attempt may do better.
  }
  disconnect();
  return false;
}

void AtspiEvents::disconnect() {
  slots_.clear();
  pids_.clear();
  waiting_.clear();
  bus_.reset();
  behind_ = false;
  questions_.clear();  // The connection's callbacks, which are gone with it, point at them.
  const std::lock_guard lock(lock_);
  focus_.clear();  // The next bus gives its own names.
  menus_.clear();
}

bool AtspiEvents::subscribe() {
  std::set<std::string_view> matched;
  for (const EventRow& row : eventRows()) {
    // Registering asks the toolkits to send at all; the match asks the bus to pass it on to us.
    if (sd_bus_call_method_async(bus_.get(), nullptr, "org.a11y.atspi.Registry",
                                 "/org/a11y/atspi/registry", "org.a11y.atspi.Registry",
                                 "RegisterEvent", nullptr, nullptr, "sass",
                                 std::string(row.subscription).c_str(), 0, "") < 0) {
      return false;
    }
    std::string rule =
        "type='signal',interface='" + std::string(kEventPrefix) + std::string(row.interface) + "'";
    if (row.interface == "Object") {
      rule += ",member='" + std::string(row.member) + "'";
      if (!matched.insert(row.member).second) {
        continue;
      }
    } else if (!matched.insert(row.interface).second) {
      continue;
    }
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match_async(bus_.get(), &slot, rule.c_str(), onSignal, nullptr, this) < 0) {
      return false;
    }
    slots_.emplace_back(slot);
  }
  return true;
}

int AtspiEvents::descriptor() { return bus_ ? sd_bus_get_fd(bus_.get()) : -1; }

short AtspiEvents::events() {
  const int wanted = bus_ ? sd_bus_get_events(bus_.get()) : 0;
  return static_cast<short>(std::max(wanted, 0));
}

std::optional<Instant> AtspiEvents::deadline() {
  if (!bus_) {
    return retryAt_;
  }
  if (behind_) {
    return kDistantPast;
  }
  std::uint64_t microseconds = UINT64_MAX;
  if (sd_bus_get_timeout(bus_.get(), &microseconds) <= 0 || microseconds == UINT64_MAX) {
    return std::nullopt;
  }
  // The steady clock and sd-bus count from the same moment.
  return Instant(std::chrono::microseconds(microseconds));
}

void AtspiEvents::serve() {
  if (!bus_) {
    reconnect();
    return;
  }
  int processed = 1;
  for (int left = kMaxMessagesARound; processed > 0 && left > 0; --left) {
    processed = sd_bus_process(bus_.get(), nullptr);
  }
  behind_ = processed > 0;
  if (processed < 0) {
    disconnect();
    retryAt_ = std::chrono::steady_clock::now();
  }
}

void AtspiEvents::reconnect() {
  if (!retryAt_ || std::chrono::steady_clock::now() < *retryAt_) {
    return;
  }
  retryAt_.reset();
  if (hasListeners() && !connected(kReconnectPatience)) {
    retryAt_ = std::chrono::steady_clock::now() + kReconnectRest;
  }
}

int AtspiEvents::onSignal(sd_bus_message* signal, void* self, sd_bus_error* /*error*/) {
  try {
    static_cast<AtspiEvents*>(self)->take(signal);
  } catch (...) {
    // Out of memory: one event less, nothing may pass through the C library.
  }
  return 0;
}

void AtspiEvents::take(sd_bus_message* signal) {
  const char* interface = sd_bus_message_get_interface(signal);
  const char* member = sd_bus_message_get_member(signal);
  const char* sender = sd_bus_message_get_sender(signal);
  const char* path = sd_bus_message_get_path(signal);
  const char* detail = nullptr;
  std::int32_t first = 0;
  if (interface == nullptr || member == nullptr || sender == nullptr || path == nullptr ||
      !std::string_view(interface).starts_with(kEventPrefix) ||
      sd_bus_message_read(signal, "si", &detail, &first) <= 0) {
    return;
  }
  const EventRow* row =
      eventRow(std::string_view(interface).substr(kEventPrefix.size()), member, detail);
  if (row == nullptr) {
    return;
  }
  const Unsorted event{{sender, path}, row, first != 0};
  const auto known = pids_.find(sender);
  if (known != pids_.end()) {
    deliver(known->second, event);
    return;
  }
  std::vector<Unsorted>& waiting = waiting_[sender];
  if (waiting.empty()) {
    askPid(sender);
  }
  if (waiting.size() < kMaxWaiting) {
    waiting.push_back(event);
  }
}

void AtspiEvents::askPid(const std::string& sender) {
  sd_bus_slot* slot = nullptr;
  if (sd_bus_call_method_async(bus_.get(), &slot, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", "GetConnectionUnixProcessID", onPid, this,
                               "s", sender.c_str()) >= 0) {
    sd_bus_slot_set_description(slot, sender.c_str());
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
  }
}

int AtspiEvents::onPid(sd_bus_message* reply, void* self, sd_bus_error* /*error*/) {
  auto* events = static_cast<AtspiEvents*>(self);
  try {
    const char* sender = nullptr;
    sd_bus_slot* slot = sd_bus_get_current_slot(events->bus_.get());
    if (slot == nullptr || sd_bus_slot_get_description(slot, &sender) < 0) {
      return 1;
    }
    const std::string name = sender;
    const std::vector<Unsorted> waiting = std::move(events->waiting_[name]);
    events->waiting_.erase(name);
    const auto pid =
        sd_bus_message_is_method_error(reply, nullptr) == 0 ? readNumber(reply) : std::nullopt;
    if (pid) {
      events->pids_[name] = static_cast<Pid>(*pid);
      for (const Unsorted& event : waiting) {
        events->deliver(static_cast<Pid>(*pid), event);
      }
    }
  } catch (...) {
    // Out of memory: the events that waited are lost, nothing may pass through the C library.
  }
  return 1;
}

void AtspiEvents::deliver(Pid pid, const Unsorted& event) {
  if (mayBeOfMenu(*event.row) && isObserved(pid)) {
    followMenu(pid, event);
  }
  if (event.row->notification == "AXFocusedUIElementChanged") {
    if (!event.gained && event.row->detail == "focused") {
      return;
    }
    const std::lock_guard lock(lock_);
    focus_[pid] = event.object;
  }
  notify(pid, event.row->notification, &event.object);
}

void AtspiEvents::followMenu(Pid pid, const Unsorted& event) {
  if (!event.gained) {
    bool closed = false;
    {
      const std::lock_guard lock(lock_);
      closed = std::erase(menus_[pid], event.object) > 0;
    }
    if (closed) {
      notify(pid, kMenuClosed, &event.object);
    }
    return;
  }
  if (questions_.size() >= kMaxQuestions) {
    return;
  }
  RoleQuestion& question = questions_.emplace_back(RoleQuestion{this, pid, event});
  if (sd_bus_call_method_async(bus_.get(), nullptr, event.object.bus.c_str(),
                               event.object.path.c_str(), "org.a11y.atspi.Accessible", "GetRole",
                               onRole, &question, "") < 0) {
    questions_.pop_back();
  }
}

int AtspiEvents::onRole(sd_bus_message* reply, void* question, sd_bus_error* /*error*/) {
  auto* asked = static_cast<RoleQuestion*>(question);
  AtspiEvents& events = *asked->events;
  try {
    const RoleQuestion known = *asked;
    events.questions_.remove_if([asked](const RoleQuestion& each) { return &each == asked; });
    const auto role =
        sd_bus_message_is_method_error(reply, nullptr) == 0 ? readNumber(reply) : std::nullopt;
    if (role && isOfMenu(*known.event.row, static_cast<std::uint32_t>(*role))) {
      events.menuOpened(known.pid, known.event.object);
    }
  } catch (...) {
    // Out of memory: one event less, nothing may pass through the C library.
  }
  return 1;
}

void AtspiEvents::menuOpened(Pid pid, const AtspiRef& menu) {
  {
    const std::lock_guard lock(lock_);
    std::vector<AtspiRef>& open = menus_[pid];
    std::erase(open, menu);
    open.insert(open.begin(), menu);
    open.resize(std::min(open.size(), kMaxMenus));
  }
  notify(pid, kMenuOpened, &menu);
}

bool AtspiEvents::hasListeners() {
  const std::lock_guard lock(lock_);
  return std::ranges::any_of(subscribers_, [](const auto& entry) { return !entry.expired(); });
}

bool AtspiEvents::isObserved(Pid pid) {
  const std::lock_guard lock(lock_);
  return std::ranges::any_of(subscribers_, [pid](const auto& entry) {
    const std::shared_ptr<Subscriber> subscriber = entry.lock();
    return subscriber && subscriber->pid == pid;
  });
}

void AtspiEvents::notify(Pid pid, std::string_view name, const AtspiRef* object) {
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

}  // namespace tarqo::lnx
