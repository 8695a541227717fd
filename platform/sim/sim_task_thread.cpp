#include "platform/sim/sim_task_thread.h"

#include <utility>

namespace tarqo::sim {

TaskThread::TaskThread(std::function<void()> body) : body_(std::move(body)) {}

TaskThread::~TaskThread() {
  if (thread_.joinable()) {
    thread_.join();
  }
}

void TaskThread::resume() {
  handOver(true);
  if (!thread_.joinable()) {
    thread_ = std::thread([this] { runBody(); });
  }
  awaitTurn(false);
}

void TaskThread::suspend() {
  handOver(false);
  awaitTurn(true);
}

void TaskThread::runBody() {
  awaitTurn(true);
  body_();
  // What the body owns ends with it, as on a thread that nobody joins.
  body_ = nullptr;
  finished_ = true;
  handOver(false);
}

void TaskThread::handOver(bool toBody) {
  const std::lock_guard lock(mutex_);
  bodysTurn_ = toBody;
  changed_.notify_all();
}

void TaskThread::awaitTurn(bool ofBody) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return bodysTurn_ == ofBody; });
}

}  // namespace tarqo::sim
