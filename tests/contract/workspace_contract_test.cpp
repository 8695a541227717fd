// workspace.h

#include <algorithm>

#include "tests/contract/contract_fixture.h"

namespace tarqo::contract {
namespace {

using namespace std::chrono_literals;

class WorkspaceContract : public TargetContract {
 protected:
  Workspace& workspace = platform.workspace;

  [[nodiscard]] static bool has(const std::vector<RunningApplication>& list, Pid pid) {
    return std::any_of(list.begin(), list.end(),
                       [&](const RunningApplication& each) { return each.id.pid == pid; });
  }
};

TEST_F(WorkspaceContract, KnowsARunningApplication) {
  const auto application = running(*target);

  ASSERT_TRUE(application);
  EXPECT_EQ(application->id.pid, target->pid());
  EXPECT_EQ(application->bundleId, backend->targetBundleId());
  ASSERT_TRUE(application->bundlePath);
  EXPECT_EQ(platform.bundles.pathForIdentifier(backend->targetBundleId()), application->bundlePath);
  EXPECT_NE(application->localizedName.value_or(""), "");
  EXPECT_EQ(application->policy, ActivationPolicy::regular);
  EXPECT_FALSE(workspace.isTerminated(application->id));
  EXPECT_FALSE(workspace.isHidden(application->id));
}

TEST_F(WorkspaceContract, ListsItAmongAllAndAmongItsBundle) {
  EXPECT_TRUE(has(workspace.runningApplications(), target->pid()));
  EXPECT_TRUE(has(workspace.runningApplications(backend->targetBundleId()), target->pid()));
  EXPECT_TRUE(workspace.runningApplications("com.example.no-such-application").empty());
}

TEST_F(WorkspaceContract, KnowsNoApplicationOfOtherProcesses) {
  EXPECT_FALSE(workspace.runningApplication(0x3FFFFFFF));
  EXPECT_FALSE(workspace.runningApplication(0));
  EXPECT_TRUE(workspace.isTerminated({0x3FFFFFFF, 1}));
}

TEST_F(WorkspaceContract, TellsTwoInstancesApart) {
  const auto other = backend->startTarget("Other", {300, 200, 640, 480});
  ASSERT_TRUE(waitUntil([&] { return running(*other).has_value(); }));

  EXPECT_NE(running(*other)->id, running(*target)->id);
  EXPECT_EQ(workspace.runningApplications(backend->targetBundleId()).size(), 2U);
}

TEST_F(WorkspaceContract, NoticesTheEndOfAnApplication) {
  const ApplicationId id = running(*target)->id;
  target->end();

  EXPECT_TRUE(waitUntil([&] { return workspace.isTerminated(id); }));
  EXPECT_TRUE(waitUntil([&] { return !running(*target); }));
  // The display notices a moment later than the process table.
  EXPECT_TRUE(waitUntil([&] { return workspace.frontmostApplication() != id.pid; }));
  // Neither may do harm.
  workspace.unhide(id);
  workspace.activate(id);
  EXPECT_FALSE(workspace.isHidden(id));
}

TEST_F(WorkspaceContract, BringsApplicationsToTheFrontInTurn) {
  const auto other = backend->startTarget("Other", {300, 200, 640, 480});
  ASSERT_TRUE(waitUntil([&] { return running(*other).has_value(); }));
  for (const ContractTarget* each : {target.get(), other.get(), target.get()}) {
    bringToFront(*each);
    EXPECT_EQ(workspace.frontmostApplication(), each->pid());
  }
}

TEST_F(WorkspaceContract, DoesNotWaitForAHungApplication) {
  target->hang();
  const Instant begin = clock.now();
  const auto application = running(*target);
  ASSERT_TRUE(application);
  (void)workspace.isHidden(application->id);
  (void)workspace.isTerminated(application->id);
  workspace.unhide(application->id);
  workspace.activate(application->id);
  EXPECT_LT(clock.now() - begin, 250ms);
  target->resume();
}

}  // namespace
}  // namespace tarqo::contract
