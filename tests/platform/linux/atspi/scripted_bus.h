// A message bus with one application on it, in this process: the session bus, the accessibility bus
// with its registry, and whatever a test has the application answer, well or badly.
//
// The backend finds it as it finds a real one, by the address in the environment.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/linux/atspi/wire/bus.h"
#include "platform/process_id.h"

namespace tarqo::lnx::atspi {

/// What the application does with a call.
enum class Conduct {
  answer,
  answerLate,  ///< After 5 ms, in which it answers nothing else either.
  refuse,      ///< With an error.
  ignore,
  breakOff,  ///< It begins to answer, and is gone.
};

/// Answers to a call, for what `sd_bus_reply_method_return` cannot send. Each gives what the
/// function that answers returns.
int replyWith(sd_bus_message* call, const std::function<void(sd_bus_message*)>& fill);
/// Bytes as they are, under that signature, however wrong they may be; `missing` more are
/// announced.
int replyWithBytes(sd_bus_message* call, std::string_view signature, const std::string& bytes,
                   std::uint32_t missing = 0);

/// A set variable of the environment, put back at the end.
class EnvironmentVariable {
 public:
  EnvironmentVariable(std::string name, const std::string& value);
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
  ~EnvironmentVariable();

 private:
  std::string name_;
  std::optional<std::string> before_;
};

class ScriptedBus {
 public:
  /// The application's name on the bus.
  static constexpr const char* kApplicationName = ":1.7";

  /// Answers a call to the application, on the bus's thread; 0 when there is no such object or
  /// method, and a negative number never.
  using Answer = std::function<int(sd_bus_message* call)>;
  using Behaviour = std::function<Conduct(const std::string& member, const std::string& path)>;

  ScriptedBus(Pid application, Answer answer);
  ScriptedBus(const ScriptedBus&) = delete;
  ScriptedBus& operator=(const ScriptedBus&) = delete;
  ~ScriptedBus();

  /// What becomes of the calls to the application from now on.
  void behave(Behaviour behaviour);

  /// Sends an event of the accessibility bus to everybody who listens.
  void emit(const std::string& path, const std::string& interface, const std::string& member,
            const std::string& detail, int first);

  /// Ends all connections, as a bus does that crashes. New ones are accepted.
  void hangUp();

  /// How often each method of the application was called until now.
  [[nodiscard]] std::map<std::string, int> calls();

  [[nodiscard]] std::string address() const;

 private:
  struct Connection {
    ScriptedBus* owner = nullptr;
    BusHandle bus;
    bool listens = false;
  };

  void serve();
  void accept();
  void wait();
  void runTasks();
  void post(std::function<void()> task);
  static int onCall(sd_bus_message* call, void* connection, sd_bus_error* error);
  int handle(Connection& connection, sd_bus_message* call);
  int answerAsBus(Connection& connection, sd_bus_message* call) const;
  int answerAsRegistry(sd_bus_message* call) const;
  int answerAsApplication(sd_bus_message* call);

  Pid application_;
  Answer answer_;
  std::filesystem::path folder_;
  EnvironmentVariable session_;
  int socket_ = -1;
  int wake_ = -1;
  std::vector<std::unique_ptr<Connection>> connections_;  // The thread's alone.
  std::mutex lock_;                                       // Guards what follows.
  Behaviour behaviour_;
  std::map<std::string, int> calls_;
  std::vector<std::function<void()>> tasks_;
  std::atomic<bool> over_ = false;
  std::thread thread_;
};

}  // namespace tarqo::lnx::atspi
