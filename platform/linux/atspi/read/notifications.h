// Notifications of the protocol, from the events of the accessibility bus.
//
// `observe`, `lastFocus`, `openMenus` and the observers may be used from the worker; the rest
// happens on the main loop's thread.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/translate/tables.h"
#include "platform/linux/atspi/wire/event_stream.h"
#include "platform/linux/linux_main_loop.h"

namespace tarqo::lnx::atspi {

class Notifications final : private EventReceiver {
 public:
  /// Both are kept and outlive this.
  Notifications(LinuxMainLoop& loop, Clock& clock);
  ~Notifications() override;
  Notifications(const Notifications&) = delete;
  Notifications& operator=(const Notifications&) = delete;

  /// Null when there is no accessibility bus. Waits for the main loop's connection to it, for at
  /// most a second.
  [[nodiscard]] std::unique_ptr<Observer> observe(Pid pid, NotificationCallback callback);

  /// The object of a process that last reported to have the focus; empty when none has since the
  /// connection was made.
  [[nodiscard]] std::optional<Ref> lastFocus(Pid pid);

  /// The menus of a process that were reported to open, and not to close, while the process was
  /// observed: the newest few, the last opened first. Some may be gone without a report.
  [[nodiscard]] std::vector<Ref> openMenus(Pid pid);

 private:
  class Handle;
  struct Subscriber;

  std::vector<EventKind> kinds() override;
  std::optional<std::size_t> kindOf(std::string_view interface, std::string_view member,
                                    std::string_view detail) override;
  void receive(Pid pid, const Event& event) override;
  void disconnected() override;
  bool isNeeded() override;

  void followMenu(Pid pid, const Event& event, const EventRow& row);
  void menuOpened(Pid pid, const Ref& menu);
  [[nodiscard]] bool isObserved(Pid pid);
  void notify(Pid pid, std::string_view name, const Ref& object);

  EventStream stream_;

  std::mutex lock_;  ///< Guards what follows; the worker adds and removes.
  std::vector<std::weak_ptr<Subscriber>> subscribers_;
  std::map<Pid, Ref> focus_;
  std::map<Pid, std::vector<Ref>> menus_;
};

}  // namespace tarqo::lnx::atspi
