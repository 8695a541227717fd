// The events of the accessibility bus, on the main loop's own connection.
//
// `observe`, `lastFocus` and the observers may be used from the worker; the rest
// happens on the main loop's thread. The connection is made when the first observer asks for it.
// When it is lost while somebody observes, it is tried again about once a second.
#pragma once

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/translate/tables.h"
#include "platform/linux/atspi/wire/bus.h"
#include "platform/linux/linux_main_loop.h"

namespace tarqo::lnx {

class AtspiEvents final : public LoopSource {
 public:
  explicit AtspiEvents(LinuxMainLoop& loop);
  ~AtspiEvents() override;
  AtspiEvents(const AtspiEvents&) = delete;
  AtspiEvents& operator=(const AtspiEvents&) = delete;

  /// Null when there is no accessibility bus. Waits for the main loop's connection to it, for at
  /// most a second.
  [[nodiscard]] std::unique_ptr<Observer> observe(Pid pid, NotificationCallback callback);

  /// The object of a process that said last that it has the focus, on the connection at hand.
  [[nodiscard]] std::optional<AtspiRef> lastFocus(Pid pid);

  /// The menus of a process that said that they opened, and not that they closed, while the process
  /// was observed: the newest few, the last opened first. Some may be gone without a word.
  [[nodiscard]] std::vector<AtspiRef> openMenus(Pid pid);

  int descriptor() override;
  short events() override;
  std::optional<Instant> deadline() override;
  void serve() override;

 private:
  class Handle;
  struct Subscriber;

  /// An event whose sender's process is not known yet.
  struct Unsorted {
    AtspiRef object;
    const EventRow* row = nullptr;
    bool gained = false;
  };

  /// What an event's object is was asked, and not answered yet.
  struct RoleQuestion {
    AtspiEvents* events = nullptr;
    Pid pid = 0;
    Unsorted event;
  };

  [[nodiscard]] bool connected(Duration patience);
  [[nodiscard]] bool subscribe();
  static int onSignal(sd_bus_message* signal, void* self, sd_bus_error* error);
  static int onPid(sd_bus_message* reply, void* self, sd_bus_error* error);
  static int onRole(sd_bus_message* reply, void* question, sd_bus_error* error);
  void take(sd_bus_message* signal);
  void askPid(const std::string& sender);
  void deliver(Pid pid, const Unsorted& event);
  void followMenu(Pid pid, const Unsorted& event);
  void menuOpened(Pid pid, const AtspiRef& menu);
  void disconnect();
  void reconnect();
  [[nodiscard]] bool hasListeners();
  [[nodiscard]] bool isObserved(Pid pid);
  void notify(Pid pid, std::string_view name, const AtspiRef* object);

  LinuxMainLoop& loop_;
  BusHandle bus_;
  bool behind_ = false;             ///< More messages may be there than the last round took.
  std::optional<Instant> retryAt_;  ///< When to connect again; none when nobody needs it.
  std::vector<Slot> slots_;
  std::unordered_map<std::string, Pid> pids_;
  std::unordered_map<std::string, std::vector<Unsorted>> waiting_;
  std::list<RoleQuestion> questions_;

  std::mutex lock_;  ///< Guards what follows; the worker adds and removes.
  std::vector<std::weak_ptr<Subscriber>> subscribers_;
  std::map<Pid, AtspiRef> focus_;
  std::map<Pid, std::vector<AtspiRef>> menus_;
};

}  // namespace tarqo::lnx
