#include "tests/platform/mac/standin/tools.h"

#include <map>
#include <mutex>

namespace standin {
namespace {

struct Tools {
  std::mutex lock;
  std::map<std::string, std::function<CommandLine(const CommandLine&)>> instead;
};
Tools& tools() {
  static Tools* const all = new Tools();
  return *all;
}

}  // namespace

void replaceTool(const std::string& path, std::function<CommandLine(const CommandLine&)> instead) {
  const std::lock_guard guard(tools().lock);
  tools().instead[path] = std::move(instead);
}

CommandLine toolFor(CommandLine command) {
  std::function<CommandLine(const CommandLine&)> instead;
  {
    const std::lock_guard guard(tools().lock);
    const auto found = tools().instead.find(command.front());
    instead = found == tools().instead.end() ? nullptr : found->second;
  }
  return instead ? instead(command) : command;
}

}  // namespace standin
