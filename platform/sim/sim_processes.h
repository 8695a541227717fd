// Simulated processes, child tools and files.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/processes.h"
#include "platform/sim/sim_world.h"

namespace tarqo::sim {

using Arguments = std::vector<std::string>;

/// How a program behaves when it is run as a child.
struct Program {
  bool starts = true;
  /// When it exits; without content a signal ends it, never means that it hangs.
  Reply exits = Reply::now();
  int status = 0;
  /// What it does right before it exits; a child that is gone by then does not get there.
  std::function<void(const Arguments&)> effect;
  /// When the signal has ended it once it was terminated; never means that it takes no notice.
  Reply terminates = Reply::now();
};

class ProcessesService final : public Processes {
 public:
  explicit ProcessesService(World& world);

  // The scene. At the start the helper runs as process 400 below a shell, process 300, below 1.
  Pid own = 400;
  /// Also what the table's entry of the helper says, unless that hides its program.
  std::string ownProgram = "/opt/tarqo/bin/tarqo-ax";
  std::map<Pid, Process>& table;
  std::map<std::string, Program> programs;  ///< By path; others cannot be started.
  std::map<std::string, std::string> files;
  std::string temporary = "/tmp";

  /// Adds a process below another.
  Pid add(const std::string& executable, Pid parent);

  [[nodiscard]] Pid ownPid() override { return own; }
  [[nodiscard]] Pid ownParentPid() override;
  [[nodiscard]] std::string ownExecutable() override { return ownProgram; }
  [[nodiscard]] std::optional<Pid> parentPid(Pid pid) override;
  [[nodiscard]] std::optional<std::string> executablePath(Pid pid) override;
  [[nodiscard]] std::unique_ptr<Child> start(const std::string& program,
                                             const Arguments& arguments) override;
  [[nodiscard]] std::string temporaryFolder() override { return temporary; }
  [[nodiscard]] std::optional<std::string> readFile(const std::string& path) override;
  void removeFile(const std::string& path) override;

 private:
  World& world_;
};

}  // namespace tarqo::sim
