// The main thread's loop, on which notifications and completions are delivered.
#pragma once

namespace tarqo {

class MainLoop {
 public:
  virtual ~MainLoop() = default;

  /// Serves the loop for ever. Main thread only, once, before the worker needs any delivery.
  [[noreturn]] virtual void run() = 0;
};

}  // namespace tarqo
