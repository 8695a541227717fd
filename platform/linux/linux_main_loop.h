// The main thread's loop: serves file descriptors, and runs what other threads hand over.
#pragma once

#include <poll.h>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/clock.h"
#include "platform/main_loop.h"

namespace tarqo::lnx {

/// Something that the loop waits for. Used on the loop's thread alone.
class LoopSource {
 public:
  virtual ~LoopSource() = default;

  /// The descriptor to watch; -1 when there is nothing to watch now.
  [[nodiscard]] virtual int descriptor() = 0;

  /// The `poll` events to watch it for.
  [[nodiscard]] virtual short events() = 0;

  /// When to serve it even if nothing happens; empty for never.
  [[nodiscard]] virtual std::optional<Instant> deadline() = 0;

  /// Does what there is to do; must not throw.
  virtual void serve() = 0;
};

class LinuxMainLoop final : public MainLoop {
 public:
  /// `clock` is kept and outlives this.
  explicit LinuxMainLoop(Clock& clock);
  ~LinuxMainLoop() override;
  LinuxMainLoop(const LinuxMainLoop&) = delete;
  LinuxMainLoop& operator=(const LinuxMainLoop&) = delete;

  [[noreturn]] void run() override;

  /// Adds a source, which outlives the loop. Before `run` only.
  void add(LoopSource& source);

  /// Runs `task`, which must not throw, on the loop's thread, soon, in the order of the calls. Any
  /// thread; never waits.
  void post(std::function<void()> task);

  /// One round of `run`: waits for at most `patience` and serves what is ready.
  void turn(Duration patience);

 private:
  void runTasks();

  Clock& clock_;
  int wake_ = -1;  ///< An eventfd that `post` writes to.
  std::vector<LoopSource*> sources_;
  std::vector<pollfd> watched_;  ///< That of `wake_` and of each source, in their order.
  std::mutex tasksLock_;
  std::vector<std::function<void()>> tasks_;
};

}  // namespace tarqo::lnx
