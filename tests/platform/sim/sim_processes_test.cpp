#include "platform/sim/sim_processes.h"

#include <gtest/gtest.h>

#include "platform/sim/sim_desktop.h"

namespace tarqo::sim {
namespace {

using namespace std::chrono_literals;

class SimProcesses : public testing::Test {
 protected:
  Desktop desktop;
  ProcessesService& processes = desktop.processes();
  Program& tool = processes.programs["/usr/bin/tool"];
};

TEST_F(SimProcesses, FormATree) {
  EXPECT_EQ(processes.ownParentPid(), 300);
  EXPECT_EQ(processes.parentPid(300), 1);
  EXPECT_EQ(processes.executablePath(processes.ownPid()), processes.ownExecutable());
  const Pid child = processes.add("/usr/bin/node", 300);
  EXPECT_EQ(processes.parentPid(child), 300);
  EXPECT_FALSE(processes.parentPid(9999));
  EXPECT_FALSE(processes.executablePath(9999));
}

TEST_F(SimProcesses, MayHideTheirParentAndProgram) {
  processes.table[300] = {};
  EXPECT_FALSE(processes.parentPid(300));
  EXPECT_FALSE(processes.executablePath(300));
  processes.table[300].parent = 300;
  EXPECT_EQ(processes.parentPid(300), 300);
}

TEST_F(SimProcesses, KnowTheHelpersProgramByItsProcessToo) {
  processes.ownProgram = "/Applications/Tarqo.app/Contents/MacOS/tarqo-ax";
  EXPECT_EQ(processes.executablePath(processes.ownPid()), processes.ownProgram);
  processes.table[processes.own].executable = std::nullopt;
  EXPECT_FALSE(processes.executablePath(processes.ownPid()));
}

TEST_F(SimProcesses, ExitWithAStatus) {
  tool.exits = Reply::after(120ms);
  tool.status = 3;
  const auto child = processes.start("/usr/bin/tool", {"-x", "a b"});

  ASSERT_NE(child, nullptr);
  EXPECT_TRUE(child->running());
  EXPECT_FALSE(child->exitStatus());
  desktop.run(120ms);
  EXPECT_FALSE(child->running());
  EXPECT_EQ(child->exitStatus(), 3);
  EXPECT_EQ(desktop.eventLog().lines(Topic::processes), Lines{"start /usr/bin/tool -x a b"});
}

TEST_F(SimProcesses, HangUntilTerminated) {
  bool reached = false;
  tool.exits = Reply::never();
  tool.effect = [&](const Arguments&) { reached = true; };
  const auto child = processes.start("/usr/bin/tool", {});

  desktop.run(1h);
  EXPECT_TRUE(child->running());
  child->terminate();
  EXPECT_FALSE(child->running());
  EXPECT_FALSE(child->exitStatus());
  EXPECT_FALSE(reached);
  EXPECT_EQ(desktop.eventLog().count("terminate /usr/bin/tool"), 1U);
}

TEST_F(SimProcesses, MayTakeTheirTimeToBeTerminated) {
  tool.exits = Reply::never();
  tool.terminates = Reply::after(100ms);
  const auto child = processes.start("/usr/bin/tool", {});
  child->terminate();
  EXPECT_TRUE(child->running());
  desktop.run(50ms);
  child->terminate();
  desktop.run(50ms);
  EXPECT_FALSE(child->running());
  EXPECT_FALSE(child->exitStatus());
}

TEST_F(SimProcesses, DoNothingMoreOnceTerminated) {
  bool reached = false;
  tool.exits = Reply::after(100ms);
  tool.effect = [&](const Arguments&) { reached = true; };
  const auto child = processes.start("/usr/bin/tool", {});
  desktop.run(50ms);
  child->terminate();
  desktop.run(1s);

  EXPECT_FALSE(reached);
  EXPECT_FALSE(child->exitStatus());
}

TEST_F(SimProcesses, AreEndedByASignal) {
  tool.exits = Reply::nothing(10ms);
  const auto child = processes.start("/usr/bin/tool", {});
  desktop.run(10ms);

  EXPECT_FALSE(child->running());
  EXPECT_FALSE(child->exitStatus());
}

TEST_F(SimProcesses, GoOnWithoutWhoeverStartedThem) {
  bool reached = false;
  tool.exits = Reply::after(100ms);
  tool.effect = [&](const Arguments&) { reached = true; };
  processes.start("/usr/bin/tool", {}).reset();
  desktop.run(1s);
  EXPECT_TRUE(reached);
}

TEST_F(SimProcesses, MayFailToStart) {
  EXPECT_EQ(processes.start("/usr/bin/none", {}), nullptr);
  tool.starts = false;
  EXPECT_EQ(processes.start("/usr/bin/tool", {}), nullptr);
}

TEST_F(SimProcesses, LeaveFilesBehind) {
  tool.effect = [&](const Arguments& arguments) { processes.files[arguments[0]] = "content"; };
  const auto child = processes.start("/usr/bin/tool", {"/tmp/out"});
  EXPECT_FALSE(processes.readFile("/tmp/out"));
  desktop.run(0ms);

  EXPECT_EQ(processes.readFile("/tmp/out"), "content");
  processes.removeFile("/tmp/out");
  processes.removeFile("/tmp/out");
  EXPECT_FALSE(processes.readFile("/tmp/out"));
  EXPECT_EQ(desktop.eventLog().count("remove /tmp/out"), 1U);
  EXPECT_EQ(processes.temporaryFolder(), "/tmp");
}

}  // namespace
}  // namespace tarqo::sim
