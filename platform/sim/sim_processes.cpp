#include "platform/sim/sim_processes.h"

#include <utility>

namespace tarqo::sim {
namespace {

struct ChildState {
  bool running = true;
  bool toldToEnd = false;
  std::optional<int> status;
};

class SimulatedChild final : public Child {
 public:
  SimulatedChild(World& world, std::string program, Reply terminates,
                 std::shared_ptr<ChildState> state)
      : world_(world),
        program_(std::move(program)),
        terminates_(terminates),
        state_(std::move(state)) {}

  [[nodiscard]] bool running() override { return state_->running; }

  void terminate() override {
    if (!state_->running || state_->toldToEnd) {
      return;
    }
    world_.eventLog.note(Topic::processes, "terminate " + program_);
    state_->toldToEnd = true;
    if (terminates_.isNever()) {
      return;
    }
    if (terminates_.delay() == Duration::zero()) {
      state_->running = false;
    } else {
      world_.clock.after(terminates_.delay(), [state = state_] { state->running = false; });
    }
  }

  [[nodiscard]] std::optional<int> exitStatus() override { return state_->status; }

 private:
  World& world_;
  std::string program_;
  Reply terminates_;
  std::shared_ptr<ChildState> state_;
};

}  // namespace

ProcessesService::ProcessesService(World& world) : table(world.processes), world_(world) {
  table[1] = {0, "/sbin/init"};
  table[300] = {1, "/bin/sh"};
  table[own] = {300, ownProgram};
}

Pid ProcessesService::add(const std::string& executable, Pid parent) {
  const Pid pid = world_.nextPid++;
  table[pid] = {parent, executable};
  return pid;
}

Pid ProcessesService::ownParentPid() { return parentPid(own).value_or(1); }

std::optional<Pid> ProcessesService::parentPid(Pid pid) {
  const auto found = table.find(pid);
  return found == table.end() ? std::nullopt : found->second.parent;
}

std::optional<std::string> ProcessesService::executablePath(Pid pid) {
  const auto found = table.find(pid);
  if (found == table.end() || !found->second.executable) {
    return std::nullopt;
  }
  return pid == own ? ownProgram : *found->second.executable;
}

std::unique_ptr<Child> ProcessesService::start(const std::string& program,
                                               const Arguments& arguments) {
  std::string line = "start " + program;
  for (const std::string& argument : arguments) {
    line += " " + argument;
  }
  world_.eventLog.note(Topic::processes, std::move(line));
  const auto found = programs.find(program);
  if (found == programs.end() || !found->second.starts) {
    return nullptr;
  }
  const Program script = found->second;
  auto state = std::make_shared<ChildState>();
  if (!script.exits.isNever()) {
    world_.clock.after(script.exits.delay(), [state, script, arguments] {
      if (!state->running) {
        return;
      }
      if (script.effect) {
        script.effect(arguments);
      }
      state->running = false;
      if (script.exits.hasContent()) {
        state->status = script.status;
      }
    });
  }
  return std::make_unique<SimulatedChild>(world_, program, script.terminates, std::move(state));
}

std::optional<std::string> ProcessesService::readFile(const std::string& path) {
  const auto found = files.find(path);
  return found == files.end() ? std::nullopt : std::optional(found->second);
}

void ProcessesService::removeFile(const std::string& path) {
  if (files.erase(path) > 0) {
    world_.eventLog.note(Topic::processes, "remove " + path);
  }
}

}  // namespace tarqo::sim
