// platform/linux/atspi/wire/connection_keeper.h

#include "platform/linux/atspi/wire/connection_keeper.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <thread>

namespace tarqo::lnx::atspi {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 5s;

/// Two ends of a connection: the helper's, and the application's.
class KeeperTest : public ::testing::Test {
 protected:
  KeeperTest() { EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_.data()), 0); }
  /// Waits for what a test abandoned.
  ~KeeperTest() override {
    closeBoth();
    while (::wait(nullptr) > 0) {
    }
  }
  KeeperTest(const KeeperTest&) = delete;
  KeeperTest& operator=(const KeeperTest&) = delete;

  [[nodiscard]] int ours() const { return ends_[0]; }

  void closeOurs() { closeEnd(ends_[0]); }
  void closeBoth() {
    closeEnd(ends_[0]);
    closeEnd(ends_[1]);
  }

  /// Whether the application sees that nobody holds the helper's end.
  bool endsWithin(std::chrono::milliseconds patience) {
    pollfd theirs{ends_[1], POLLIN, 0};
    return ::poll(&theirs, 1, static_cast<int>(patience.count())) > 0;
  }

 private:
  static void closeEnd(int& end) {
    if (end >= 0) {
      ::close(end);
      end = -1;
    }
  }

  std::array<int, 2> ends_{-1, -1};
};

TEST_F(KeeperTest, HoldsAConnectionThatItsOwnerCloses) {
  ConnectionKeeper keeper;
  keeper.keep(ours());
  closeOurs();

  EXPECT_FALSE(endsWithin(100ms));
}

TEST_F(KeeperTest, LetsGoWhenItIsDestroyed) {
  {
    ConnectionKeeper keeper;
    keeper.keep(ours());
    closeOurs();
  }

  EXPECT_TRUE(endsWithin(kPatience));
}

TEST_F(KeeperTest, HoldsWhatItAbandoned) {
  {
    ConnectionKeeper keeper;
    keeper.keep(ours());
    closeOurs();
    keeper.abandon();
  }

  EXPECT_FALSE(endsWithin(100ms));
}

/// The end of a file that a child held too would not show.
TEST_F(KeeperTest, HoldsNothingElse) {
  std::array<int, 2> pipe{};
  ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
  ConnectionKeeper keeper;
  keeper.keep(ours());

  ::close(pipe[1]);

  pollfd reader{pipe[0], POLLIN, 0};
  EXPECT_GT(::poll(&reader, 1, 5000), 0);
  ::close(pipe[0]);
}

TEST_F(KeeperTest, EndsWithTheApplication) {
  ConnectionKeeper keeper;
  keeper.keep(ours());

  closeBoth();

  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  siginfo_t ended{};
  while (ended.si_pid == 0 && std::chrono::steady_clock::now() < deadline) {
    ASSERT_EQ(::waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT), 0);
    std::this_thread::sleep_for(5ms);
  }
  EXPECT_NE(ended.si_pid, 0);
  EXPECT_EQ(ended.si_status, 0);
}

}  // namespace
}  // namespace tarqo::lnx::atspi
