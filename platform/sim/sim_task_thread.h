// A background body on a thread that runs only while the thread that resumed it stands still.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace tarqo::sim {

/// Hands control back and forth between two threads, so that exactly one of them is at work.
class TaskThread {
 public:
  explicit TaskThread(std::function<void()> body);
  TaskThread(const TaskThread&) = delete;
  TaskThread& operator=(const TaskThread&) = delete;
  /// The body must have finished or never been resumed.
  ~TaskThread();

  /// Lets the body run until it suspends itself or ends. Not from the body.
  void resume();

  /// Lets the thread that resumed the body go on, until the body is resumed again. Only from the
  /// body.
  void suspend();

  [[nodiscard]] bool begun() const { return thread_.joinable(); }
  [[nodiscard]] bool finished() const { return finished_; }

 private:
  void runBody();
  void handOver(bool toBody);
  void awaitTurn(bool ofBody);

  std::function<void()> body_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool bodysTurn_ = false;
  bool finished_ = false;
  std::thread thread_;
};

}  // namespace tarqo::sim
