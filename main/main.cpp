// tarqo-ax: serves requests on the worker thread while the main thread runs the desktop's loop.

#include <memory>

#include "main/request_loop.h"
#include "main/server.h"
#include "platform/platform.h"
#include "platform/process_entry.h"

namespace {

// Requests are served on it, and walking a deep accessibility tree recurses.
constexpr std::size_t kWorkerStackBytes = 0x1000000;

}  // namespace

int main(int /*argc*/, char** argv) {
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
