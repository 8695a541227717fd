// tarqo-ax: serves requests on the worker thread while the main thread runs the desktop's loop.

#include <cstdio>
#include <memory>
#include <span>
#include <string_view>

#include "platform/platform.h"
#include "server/server.h"
#include "server/worker.h"

namespace {

constexpr const char* kProgram = "tarqo-ax";

constexpr const char* kUsage =
    "usage: tarqo-ax [--version]\n"
    "\n"
    "Lets a program see and use one desktop application at a time. Reads JSON requests from "
    "standard\n"
    "input and writes the responses to standard output, one a line. Try it:\n"
    "\n"
    "    echo '{\"id\":1,\"method\":\"listTargets\"}' | tarqo-ax\n";

}  // namespace

int main(int argc, char** argv) {
  const std::span arguments(argv, static_cast<std::size_t>(argc));
  if (arguments.size() > 1) {
    const std::string_view argument = arguments[1];
    if (argument == "--version") {
      std::puts("tarqo-ax " TARQO_VERSION);
      return 0;
    }
    const bool help = argument == "--help" || argument == "-h";
    std::fputs(kUsage, help ? stdout : stderr);
    return help ? 0 : 2;
  }
  const auto streams = tarqo::claimStreams(kProgram);
  if (!streams) {
    return 1;
  }
  const std::unique_ptr<tarqo::Backend> backend = tarqo::makePlatform(argv[0]);
  tarqo::Server server(backend->platform());
  if (!tarqo::serveOnWorker(kProgram, *streams,
                            [&](std::string_view line) { return server.serve(line); })) {
    return 1;
  }
  backend->mainLoop().run();
}
