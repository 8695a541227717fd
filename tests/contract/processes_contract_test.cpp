// processes.h and permissions.h

#include "tests/contract/contract_fixture.h"

namespace tarqo::contract {
namespace {

using namespace std::chrono_literals;

class ProcessesContract : public Contract {
 protected:
  std::unique_ptr<Child> start(const Command& command) {
    return processes.start(command.program, command.arguments);
  }

  Processes& processes = platform.processes;
};

constexpr Pid kNobody = 0x3FFFFFFF;

TEST_F(ProcessesContract, KnowTheHelperItself) {
  EXPECT_GT(processes.ownPid(), 1);
  EXPECT_GE(processes.ownParentPid(), 0);
  EXPECT_EQ(processes.parentPid(processes.ownPid()), processes.ownParentPid());
  EXPECT_TRUE(processes.ownExecutable().starts_with('/'));
  EXPECT_EQ(processes.executablePath(processes.ownPid()), processes.ownExecutable());
}

TEST_F(ProcessesContract, KnowNothingOfNobody) {
  for (const Pid pid : {kNobody, Pid{-1}}) {
    EXPECT_FALSE(processes.parentPid(pid)) << pid;
    EXPECT_FALSE(processes.executablePath(pid)) << pid;
  }
}

TEST_F(ProcessesContract, TellTheStatusOfAChild) {
  const auto child = start(backend->exitingWith(3));

  ASSERT_NE(child, nullptr);
  EXPECT_TRUE(waitUntil([&] { return !child->running(); }));
  EXPECT_EQ(child->exitStatus(), 3);
  EXPECT_EQ(child->exitStatus(), 3) << "asked once more";
}

TEST_F(ProcessesContract, TellSuccessOfAChild) {
  const auto child = start(backend->exitingWith(0));

  ASSERT_NE(child, nullptr);
  EXPECT_TRUE(waitUntil([&] { return child->exitStatus().has_value(); }));
  EXPECT_EQ(child->exitStatus(), 0);
  EXPECT_FALSE(child->running());
}

TEST_F(ProcessesContract, TerminateAChild) {
  const auto child = start(backend->running());
  ASSERT_NE(child, nullptr);
  clock.runLoopFor(100ms);
  EXPECT_TRUE(child->running());
  EXPECT_FALSE(child->exitStatus());

  child->terminate();

  EXPECT_TRUE(waitUntil([&] { return !child->running(); }));
  EXPECT_FALSE(child->exitStatus()) << "a signal ended it";
}

TEST_F(ProcessesContract, TerminateAChildThatHasEnded) {
  const auto child = start(backend->exitingWith(0));
  ASSERT_NE(child, nullptr);
  EXPECT_TRUE(waitUntil([&] { return !child->running(); }));
  child->terminate();
  EXPECT_EQ(child->exitStatus(), 0);
}

TEST_F(ProcessesContract, DoNotStartWhatIsMissing) {
  EXPECT_EQ(processes.start("/no/such/program", {}), nullptr);
}

TEST_F(ProcessesContract, ReadAndRemoveFiles) {
  const std::string folder = processes.temporaryFolder();
  EXPECT_TRUE(folder.starts_with('/'));
  EXPECT_FALSE(folder.ends_with('/'));
  const std::string path = folder + "/tarqo-contract-" + std::to_string(platform.random.next());
  EXPECT_FALSE(processes.readFile(path));
  const auto child = start(backend->writing("content", path));
  ASSERT_NE(child, nullptr);
  EXPECT_TRUE(waitUntil([&] { return child->exitStatus() == 0; }));

  EXPECT_EQ(processes.readFile(path), "content");
  processes.removeFile(path);
  EXPECT_FALSE(processes.readFile(path));
  processes.removeFile(path);
}

using PermissionsContract = Contract;

TEST_F(PermissionsContract, AreThereWhereTheContractIsTried) {
  platform.permissions.promptForAccessibility();  // Where that is what switches it on.
  EXPECT_TRUE(platform.permissions.accessibilityTrusted());
  EXPECT_TRUE(platform.permissions.captureAccess());
  EXPECT_FALSE(platform.permissions.accessibilityObstacle());
  EXPECT_FALSE(platform.permissions.captureObstacle());
}

TEST_F(PermissionsContract, PromptWithoutWaiting) {
  const Instant begin = clock.now();
  platform.permissions.promptForAccessibility();
  EXPECT_TRUE(platform.permissions.requestCaptureAccess());
  EXPECT_LT(clock.now() - begin, 2s);
  EXPECT_TRUE(platform.permissions.accessibilityTrusted());
}

}  // namespace
}  // namespace tarqo::contract
