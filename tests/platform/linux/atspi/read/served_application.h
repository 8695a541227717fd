// An application on a socket of its own, whose answers a test makes up.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <utility>

#include "platform/linux/atspi/wire/peer_connection.h"

namespace tarqo::lnx::atspi {

class ServedApplication {
 public:
  /// Answers a call, on a thread of its own; 0 when it does not know the call.
  using Answer = std::function<int(sd_bus_message* call)>;

  explicit ServedApplication(Answer answer) : answer_(std::move(answer)) {
    std::string name = (std::filesystem::temp_directory_path() / "served-XXXXXX").string();
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
    socket_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    std::strncpy(place.sun_path, path().c_str(), sizeof place.sun_path - 1);
    // The interface of the system asks for this cast.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
    EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&place), sizeof place), 0);
    EXPECT_EQ(listen(socket_, 1), 0);
    thread_ = std::thread([this] { serve(); });
  }
  ServedApplication(const ServedApplication&) = delete;
  ServedApplication& operator=(const ServedApplication&) = delete;
  ~ServedApplication() {
    over_ = true;
    shutdown(socket_, SHUT_RDWR);
    thread_.join();
    close(socket_);
    std::filesystem::remove_all(folder_);
  }

  [[nodiscard]] PeerAddress address() const { return {"unix:path=" + path(), getpid()}; }

 private:
  [[nodiscard]] std::string path() const { return (folder_ / "socket").string(); }

  void serve() {
    const int accepted = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
    sd_bus* made = nullptr;
    sd_id128_t id{};
    if (accepted < 0 || sd_id128_randomize(&id) < 0 || sd_bus_new(&made) < 0) {
      return;
    }
    const BusHandle bus(made);
    sd_bus_set_fd(made, accepted, accepted);
    sd_bus_set_server(made, 1, id);
    sd_bus_add_filter(made, nullptr, onCall, this);
    sd_bus_start(made);
    while (!over_) {
      const int processed = sd_bus_process(made, nullptr);
      if (processed < 0) {
        return;
      }
      if (processed == 0) {
        sd_bus_wait(made, 20'000);
      }
    }
  }

  static int onCall(sd_bus_message* call, void* self, sd_bus_error* /*error*/) {
    if (sd_bus_message_get_member(call) == nullptr) {
      return 0;
    }
    const int answered = static_cast<ServedApplication*>(self)->answer_(call);
    return answered != 0 ? answered
                         : sd_bus_reply_method_errorf(
                               call, "org.freedesktop.DBus.Error.UnknownMethod", "no") +
                               1;
  }

  Answer answer_;
  std::filesystem::path folder_;
  int socket_ = -1;
  std::atomic<bool> over_ = false;
  std::thread thread_;
};

}  // namespace tarqo::lnx::atspi
