#include "server/worker.h"

#include <cstdio>
#include <utility>

namespace tarqo {
namespace {

// Requests are served on it, and walking a deep accessibility tree recurses.
constexpr std::size_t kWorkerStackBytes = 0x1000000;

}  // namespace

std::optional<ProtocolStreams> claimStreams(const char* program) {
  limitKeptMemory();
  const ProtocolStreams streams = claimStandardStreams();
  if (streams.in == nullptr || streams.out == nullptr) {
    std::fprintf(stderr, "%s: standard input and standard output must be open\n", program);
    return std::nullopt;
  }
  return streams;
}

bool serveOnWorker(const char* program, const ProtocolStreams& streams, Serve serve) {
  const bool started = startThread(kWorkerStackBytes, [streams, serve = std::move(serve)] {
    serveRequests(serve, streams.in, streams.out);
    endProcess(0);
  });
  if (!started) {
    std::fprintf(stderr, "%s: the system gave no thread to serve requests on\n", program);
  }
  return started;
}

}  // namespace tarqo
