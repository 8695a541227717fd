// tarqo-ax: serves requests on the worker thread while the main thread runs the desktop's loop.

#include <cstdio>
#include <memory>
#include <span>
#include <string_view>

#include "platform/platform.h"
#include "platform/process_entry.h"
#include "server/request_loop.h"
#include "server/server.h"

namespace {

// Requests are served on it, and walking a deep accessibility tree recurses.
constexpr std::size_t kWorkerStackBytes = 0x1000000;

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
  tarqo::limitKeptMemory();
  const tarqo::ProtocolStreams streams = tarqo::claimStandardStreams();
  if (streams.in == nullptr || streams.out == nullptr) {
    std::fputs("tarqo-ax: standard input and standard output must be open\n", stderr);
    return 1;
  }
  const std::unique_ptr<tarqo::PlatformHost> host = tarqo::makePlatform(argv[0]);
  tarqo::Server server(host->platform());
  const bool started = tarqo::startThread(kWorkerStackBytes, [&] {
    tarqo::serveRequests(server, streams.in, streams.out);
    tarqo::endProcess(0);
  });
  if (!started) {
    std::fputs("tarqo-ax: the system gave no thread to serve requests on\n", stderr);
    return 1;
  }
  host->mainLoop().run();
}
