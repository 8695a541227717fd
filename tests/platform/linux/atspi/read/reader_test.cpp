// How long one call may take that needs many answers of a slow application.
#include "platform/linux/atspi/read/reader.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/linux/linux_clock.h"

namespace tarqo::lnx::atspi {
namespace {

using namespace std::chrono_literals;

class NoWindows final : public x11::WindowLocator {
 public:
  std::vector<x11::LocatedWindow> windowsOf(Pid) override { return {}; }
  std::optional<x11::LocatedWindow> windowAt(Point) override { return std::nullopt; }
  bool raise(WindowNumber) override { return false; }
  bool awaitEventsHandled(WindowNumber, Duration) override { return false; }
  bool setMinimized(WindowNumber, bool) override { return false; }
};

/// An application whose objects hang one on another without end, and that takes its time over every
/// answer.
class SlowApplication {
 public:
  SlowApplication() {
    std::string name = (std::filesystem::temp_directory_path() / "slow-XXXXXX").string();
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
  SlowApplication(const SlowApplication&) = delete;
  SlowApplication& operator=(const SlowApplication&) = delete;
  ~SlowApplication() {
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
    sd_bus_add_filter(made, nullptr, onCall, nullptr);
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

  static int onCall(sd_bus_message* call, void* /*self*/, sd_bus_error* /*error*/) {
    const char* member = sd_bus_message_get_member(call);
    if (member == nullptr) {
      return 0;
    }
    std::this_thread::sleep_for(25ms);
    const std::string called = member;
    if (called == "GetRole") {
      return sd_bus_reply_method_return(call, "u", 39) + 1;
    }
    if (called == "GetState") {
      return sd_bus_reply_method_return(call, "au", 2, 1U << 25U, 0U) + 1;
    }
    const char* interface = nullptr;
    const char* property = nullptr;
    if (called == "Get" && sd_bus_message_read(call, "ss", &interface, &property) > 0 &&
        std::string(property) == "Parent") {
      const std::string above = std::string(sd_bus_message_get_path(call)) + "/up";
      return sd_bus_reply_method_return(call, "v", "(so)", ":1.1", above.c_str()) + 1;
    }
    if (called == "Get") {
      return sd_bus_reply_method_return(call, "v", "s", "Odd") + 1;
    }
    return sd_bus_reply_method_errorf(call, "org.freedesktop.DBus.Error.UnknownMethod", "no") + 1;
  }

  std::filesystem::path folder_;
  int socket_ = -1;
  std::atomic<bool> over_ = false;
  std::thread thread_;
};

TEST(Reader, TheWayUpToTheWindowTakesNoLongerThanOneTimeOut) {
  SlowApplication application;
  LinuxClock clock;
  Bus bus(application.address(), clock);
  NoWindows windows;
  Reader reader(bus, windows);
  const ObjectHandle object{.pid = getpid(), .timeout = 300ms, .ref = {":1.1", "/a"}};
  reader.beginCall();
  const Instant begun = std::chrono::steady_clock::now();
  EXPECT_FALSE(reader.toplevelOf(object).has_value());
  const Duration taken = std::chrono::steady_clock::now() - begun;
  EXPECT_GE(taken, 250ms);
  EXPECT_LT(taken, 700ms);
  // It answered all the time, so there is no back-off.
  std::this_thread::sleep_for(100ms);
  reader.beginCall();
  EXPECT_NE(reader.read(object, Property::parent), nullptr);
}

}  // namespace
}  // namespace tarqo::lnx::atspi
