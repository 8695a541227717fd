#include "tests/platform/linux/atspi/scripted_bus.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <exception>
#include <utility>

namespace tarqo::lnx::atspi {
namespace {

constexpr const char* kRegistryName = "org.a11y.atspi.Registry";
constexpr const char* kDriverName = "org.freedesktop.DBus";
constexpr auto kLate = std::chrono::milliseconds(5);

std::filesystem::path newFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "scripted-XXXXXX").string();
  EXPECT_NE(mkdtemp(name.data()), nullptr);
  return name;
}

std::string orEmpty(const char* text) { return text == nullptr ? "" : text; }

void append(std::string& bytes, std::uint32_t number) {
  for (int shift = 0; shift < 32; shift += 8) {
    bytes.push_back(static_cast<char>(number >> shift & 0xFFU));
  }
}

std::string lengthened(std::string bytes) {
  bytes.resize((bytes.size() + 7) / 8 * 8);
  return bytes;
}

}  // namespace

int replyWith(sd_bus_message* call, const std::function<void(sd_bus_message*)>& fill) {
  sd_bus_message* made = nullptr;
  EXPECT_GE(sd_bus_message_new_method_return(call, &made), 0);
  const Message message(made);
  fill(made);
  sd_bus_send(nullptr, made, nullptr);  // Whoever asked may be gone.
  return 1;
}

int replyWithBytes(sd_bus_message* call, std::string_view signature, const std::string& bytes,
                   std::uint32_t missing) {
  std::uint64_t cookie = 0;
  sd_bus* bus = sd_bus_message_get_bus(call);
  EXPECT_GE(sd_bus_message_get_cookie(call, &cookie), 0);
  // A header field is its number, the signature of its value, and the value: here the number of the
  // call that is answered, and the signature of the body.
  std::string fields{"\x05\x01u\0", 4};
  append(fields, static_cast<std::uint32_t>(cookie));
  fields += std::string{"\x08\x01g\0", 4};
  fields += static_cast<char>(signature.size());
  fields += signature;
  fields.push_back('\0');
  std::string message{"l\x02\x01\x01", 4};
  append(message, static_cast<std::uint32_t>(bytes.size()) + missing);
  append(message, 0x7FFF);
  append(message, static_cast<std::uint32_t>(fields.size()));
  message = lengthened(message + fields) + bytes;
  sd_bus_flush(bus);
  ::send(sd_bus_get_fd(bus), message.data(), message.size(), MSG_NOSIGNAL);
  return 1;
}

EnvironmentVariable::EnvironmentVariable(std::string name, const std::string& value)
    : name_(std::move(name)) {
  if (const char* before = getenv(name_.c_str())) {
    before_ = before;
  }
  setenv(name_.c_str(), value.c_str(), 1);
}

EnvironmentVariable::~EnvironmentVariable() {
  if (before_) {
    setenv(name_.c_str(), before_->c_str(), 1);
  } else {
    unsetenv(name_.c_str());
  }
}

ScriptedBus::ScriptedBus(Pid application, Answer answer)
    : application_(application),
      answer_(std::move(answer)),
      folder_(newFolder()),
      session_("DBUS_SESSION_BUS_ADDRESS", address()),
      socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      behaviour_([](const auto&, const auto&) { return Conduct::answer; }) {
  sockaddr_un place{};
  place.sun_family = AF_UNIX;
  std::strncpy(place.sun_path, (folder_ / "bus").c_str(), sizeof place.sun_path - 1);
  // The interface of the system asks for this cast.
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&place), sizeof place), 0);
  EXPECT_EQ(listen(socket_, 8), 0);
  thread_ = std::thread([this] { serve(); });
}

ScriptedBus::~ScriptedBus() {
  over_ = true;
  eventfd_write(wake_, 1);
  thread_.join();
  close(socket_);
  close(wake_);
  std::filesystem::remove_all(folder_);
}

std::string ScriptedBus::address() const { return "unix:path=" + (folder_ / "bus").string(); }

void ScriptedBus::behave(Behaviour behaviour) {
  const std::lock_guard lock(lock_);
  behaviour_ = std::move(behaviour);
}

std::map<std::string, int> ScriptedBus::calls() {
  const std::lock_guard lock(lock_);
  return calls_;
}

void ScriptedBus::post(std::function<void()> task) {
  const std::lock_guard lock(lock_);
  tasks_.push_back(std::move(task));
  eventfd_write(wake_, 1);
}

void ScriptedBus::hangUp() {
  post([this] { connections_.clear(); });
}

void ScriptedBus::emit(const std::string& path, const std::string& interface,
                       const std::string& member, const std::string& detail, int first) {
  post([=, this] {
    for (const auto& connection : connections_) {
      sd_bus_message* made = nullptr;
      if (!connection->listens ||
          sd_bus_message_new_signal(connection->bus.get(), &made, path.c_str(), interface.c_str(),
                                    member.c_str()) < 0) {
        continue;
      }
      const Message signal(made);
      sd_bus_message_append(made, "siiv(so)", detail.c_str(), first, 0, "i", 0, kApplicationName,
                            kRootPath);
      sd_bus_message_set_sender(made, kApplicationName);
      sd_bus_send(connection->bus.get(), made, nullptr);
    }
  });
}

void ScriptedBus::serve() {
  while (!over_) {
    runTasks();
    std::erase_if(connections_, [](const std::unique_ptr<Connection>& connection) {
      int processed = 1;
      while (processed > 0) {
        processed = sd_bus_process(connection->bus.get(), nullptr);
      }
      return processed < 0;
    });
    wait();
  }
  connections_.clear();
}

void ScriptedBus::runTasks() {
  std::vector<std::function<void()>> tasks;
  {
    const std::lock_guard lock(lock_);
    tasks.swap(tasks_);
  }
  for (const std::function<void()>& task : tasks) {
    task();
  }
}

void ScriptedBus::wait() {
  std::vector<pollfd> watched{{socket_, POLLIN, 0}, {wake_, POLLIN, 0}};
  for (const auto& connection : connections_) {
    watched.push_back({sd_bus_get_fd(connection->bus.get()),
                       static_cast<short>(sd_bus_get_events(connection->bus.get())), 0});
  }
  ::poll(watched.data(), watched.size(), 1000);
  if (watched[0].revents != 0) {
    accept();
  }
  eventfd_t count = 0;
  eventfd_read(wake_, &count);
}

void ScriptedBus::accept() {
  const int accepted = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
  sd_bus* made = nullptr;
  sd_id128_t id{};
  if (accepted < 0 || sd_id128_randomize(&id) < 0 || sd_bus_new(&made) < 0) {
    return;
  }
  auto connection = std::make_unique<Connection>();
  connection->owner = this;
  connection->bus.reset(made);
  EXPECT_GE(sd_bus_set_fd(made, accepted, accepted), 0);
  EXPECT_GE(sd_bus_set_server(made, 1, id), 0);
  EXPECT_GE(sd_bus_add_filter(made, nullptr, onCall, connection.get()), 0);
  EXPECT_GE(sd_bus_start(made), 0);
  connections_.push_back(std::move(connection));
}

int ScriptedBus::onCall(sd_bus_message* call, void* connection, sd_bus_error* /*error*/) {
  auto* which = static_cast<Connection*>(connection);
  try {
    return which->owner->handle(*which, call);
  } catch (const std::exception& error) {  // Nothing may pass through the C library.
    ADD_FAILURE() << sd_bus_message_get_member(call) << ": " << error.what();
    return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FAILED, "failed") + 1;
  }
}

int ScriptedBus::handle(Connection& connection, sd_bus_message* call) {
  if (sd_bus_message_get_member(call) == nullptr) {
    return 0;
  }
  const std::string to = orEmpty(sd_bus_message_get_destination(call));
  int answered = 0;
  if (to == kDriverName || to == "org.a11y.Bus") {
    answered = answerAsBus(connection, call);
  } else if (to == kRegistryName) {
    answered = answerAsRegistry(call);
  } else if (to == kApplicationName || to.empty()) {
    answered = answerAsApplication(call);
  }
  return answered != 0
             ? answered
             : sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "no such method") + 1;
}

int ScriptedBus::answerAsBus(Connection& connection, sd_bus_message* call) const {
  const std::string member = sd_bus_message_get_member(call);
  if (member == "Hello") {
    return sd_bus_reply_method_return(call, "s", ":1.1") + 1;
  }
  if (member == "GetId") {
    return sd_bus_reply_method_return(call, "s", "0123456789abcdef0123456789abcdef") + 1;
  }
  if (member == "GetAddress") {
    return sd_bus_reply_method_return(call, "s", address().c_str()) + 1;
  }
  if (member == "AddMatch" || member == "RemoveMatch") {
    connection.listens = true;
    return sd_bus_reply_method_return(call, nullptr) + 1;
  }
  const char* name = nullptr;
  if (member == "GetConnectionUnixProcessID" && sd_bus_message_read(call, "s", &name) > 0 &&
      std::string_view(name) == kApplicationName) {
    return sd_bus_reply_method_return(call, "u", static_cast<std::uint32_t>(application_)) + 1;
  }
  return 0;
}

int ScriptedBus::answerAsRegistry(sd_bus_message* call) const {
  const std::string member = sd_bus_message_get_member(call);
  if (member == "GetChildren") {
    return sd_bus_reply_method_return(call, "a(so)", 1, kApplicationName, kRootPath) + 1;
  }
  return member == "RegisterEvent" ? sd_bus_reply_method_return(call, nullptr) + 1 : 0;
}

int ScriptedBus::answerAsApplication(sd_bus_message* call) {
  const std::string member = sd_bus_message_get_member(call);
  Behaviour behaviour;
  {
    const std::lock_guard lock(lock_);
    ++calls_[member];
    behaviour = behaviour_;
  }
  switch (behaviour(member, orEmpty(sd_bus_message_get_path(call)))) {
    case Conduct::answer:
      break;
    case Conduct::answerLate:
      std::this_thread::sleep_for(kLate);
      break;
    case Conduct::refuse:
      return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_FAILED, "refused") + 1;
    case Conduct::ignore:
      return 1;
    case Conduct::breakOff:
      replyWithBytes(call, "s", "half of an", 1000);
      ::shutdown(sd_bus_get_fd(sd_bus_message_get_bus(call)), SHUT_RDWR);
      return 1;
  }
  return answer_(call);
}

}  // namespace tarqo::lnx::atspi
