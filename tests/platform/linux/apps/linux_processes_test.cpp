#include "platform/linux/apps/linux_processes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "platform/linux/apps/desktop_entries.h"
#include "platform/linux/base/proc.h"
#include "platform/linux/base/spawn.h"

namespace tarqo::lnx::apps {
namespace {

using namespace std::chrono_literals;

/// What a shell script prints to a file of its own, run as a child.
class SpawnedChild : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "tarqo-spawn-XXXXXX").string();
    const int file = ::mkstemp(pattern.data());
    ASSERT_GE(file, 0);
    ::close(file);
    output_ = pattern;
  }
  void TearDown() override { std::filesystem::remove(output_); }

  std::string outputOf(const std::string& script) {
    request.program = resolvedProgram("sh");
    request.arguments = {"sh", "-c", script, "sh", output_};
    const Spawned child = spawn(request);
    EXPECT_GT(child.pid, 0);
    awaitEnd(child.pid);
    return readWholeFile(output_).value_or("");
  }

  SpawnRequest request;

 private:
  std::string output_;
};

TEST_F(SpawnedChild, HasTheNullDeviceAndNoOtherFile) {
  // High up, where the shell opens nothing itself.
  const int leaked = ::fcntl(STDERR_FILENO, F_DUPFD, 200);
  EXPECT_EQ(outputOf("found=$(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2 /proc/$$/fd/" +
                     std::to_string(leaked) + "); echo \"$found\" >$1"),
            "/dev/null\n/dev/null\n/dev/null\n");
  ::close(leaked);
}

TEST_F(SpawnedChild, IgnoresNoSignal) {
  const auto before = ::signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(outputOf("grep -c '^Sig[IB][gl][nk]:.0000000000000000$' /proc/self/status >$1"), "2\n");
  ::signal(SIGPIPE, before);
}

TEST_F(SpawnedChild, KnowsItsOwnNumber) {
  request.environment = {"OTHER=x"};
  request.pidVariable = "OWN_PID";
  EXPECT_EQ(outputOf("test \"$OWN_PID\" = $$ && printf \"$OTHER\" >$1"), "x");
}

TEST_F(SpawnedChild, HasASessionAndAFolderOfItsOwn) {
  request.ownSession = true;
  request.folder = "/usr";
  EXPECT_EQ(outputOf("pwd >$1; set -- \"$1\" $(cut -d' ' -f6 /proc/$$/stat);"
                     " test $2 = $$ && echo leader >>$1"),
            "/usr\nleader\n");
}

TEST(Spawn, TellsWhyAProgramCannotBeStarted) {
  SpawnRequest request;
  request.program = "/no/such/program";
  request.arguments = {"program"};
  EXPECT_EQ(spawn(request).error, ENOENT);
  request.program = "/etc/passwd";
  EXPECT_EQ(spawn(request).error, EACCES);
  EXPECT_EQ(spawn(request).pid, 0);
}

TEST(LinuxChild, LeavesNoZombieBehind) {
  LinuxProcesses processes;
  { const auto child = processes.start("/bin/sh", {"-c", "sleep 0.05"}); }
  // Asking without collecting finds no child only once somebody else has collected it.
  const auto hasChild = [] {
    siginfo_t ended{};
    return ::waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) == 0;
  };
  EXPECT_TRUE(hasChild());
  const auto deadline = std::chrono::steady_clock::now() + 5s;
  while (hasChild() && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(5ms);
  }
  EXPECT_FALSE(hasChild());
}

TEST(ProcessStatus, TellsParentAndStart) {
  const auto own = processStatus(::getpid());
  ASSERT_TRUE(own);
  EXPECT_EQ(own->parent, ::getppid());
  EXPECT_GT(own->startTicks, 0U);
  EXPECT_FALSE(own->zombie);
  EXPECT_FALSE(processStatus(0x3FFFFFFF));
}

TEST(ProcessStatus, KnowsAZombie) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::_exit(0);
  }
  siginfo_t ended{};
  ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);
  const auto status = processStatus(child);
  ASSERT_TRUE(status);
  EXPECT_TRUE(status->zombie);
  awaitEnd(child);
}

TEST(ProcessFiles, TellCommandLineAndProgram) {
  EXPECT_FALSE(commandLineOf(::getpid()).empty());
  EXPECT_TRUE(programOf(::getpid()).value_or("").starts_with('/'));
  EXPECT_TRUE(commandLineOf(0x3FFFFFFF).empty());
  EXPECT_FALSE(environmentOf(::getpid(), "NO_SUCH_VARIABLE_AT_ALL"));
}

}  // namespace
}  // namespace tarqo::lnx::apps
