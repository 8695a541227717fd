// Which addresses of applications are connected to.
#include "platform/linux/atspi/wire/peer_connection.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <thread>

namespace tarqo::lnx::atspi {
namespace {

class PeerAddressTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (std::filesystem::temp_directory_path() / "direct-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
    socket_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_GE(socket_, 0);
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    std::strncpy(place.sun_path, socketPath().c_str(), sizeof place.sun_path - 1);
    // The interface of the system asks for this cast.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
    ASSERT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&place), sizeof place), 0);
    ASSERT_EQ(listen(socket_, 8), 0);
  }

  void TearDown() override {
    close(socket_);
    std::filesystem::remove_all(folder_);
  }

  [[nodiscard]] std::string socketPath() const { return (folder_ / "socket").string(); }
  [[nodiscard]] std::string address() const { return "unix:path=" + socketPath(); }

  std::filesystem::path folder_;
  int socket_ = -1;
};

TEST_F(PeerAddressTest, TheSocketOfTheProcessItselfIsConnectedTo) {
  EXPECT_NE(openPeerConnection({address(), getpid()}), nullptr);
  EXPECT_NE(openPeerConnection({address() + ",guid=0123456789abcdef0123456789abcdef", getpid()}),
            nullptr);
}

TEST_F(PeerAddressTest, TheSocketOfAnotherProcessIsNot) {
  EXPECT_EQ(openPeerConnection({address(), getppid()}), nullptr);
  EXPECT_EQ(openPeerConnection({address(), 0}), nullptr);
}

TEST_F(PeerAddressTest, NoProgramIsStarted) {
  const std::filesystem::path made = folder_ / "made";
  const std::string program = "unixexec:path=/usr/bin/touch,argv1=" + made.string();
  EXPECT_EQ(openPeerConnection({program, getpid()}), nullptr);
  EXPECT_EQ(openPeerConnection({address() + ";" + program, getpid()}), nullptr);
  EXPECT_EQ(openPeerConnection({"unix:path=/nowhere;" + program, getpid()}), nullptr);
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_FALSE(std::filesystem::exists(made));
}

TEST_F(PeerAddressTest, NoOtherKindOfAddressIsTried) {
  for (const char* text : {"", "tcp:host=localhost,port=1", "unix:runtime=yes", "unix:", "x",
                           "launchd:env=DISPLAY", "UNIX:path=/tmp"}) {
    EXPECT_EQ(openPeerConnection({text, getpid()}), nullptr) << text;
  }
}

}  // namespace
}  // namespace tarqo::lnx::atspi
