// tarqo-ax-sim: serves the protocol on the simulated desktop of a scene file.

#include <cstdio>
#include <memory>
#include <span>
#include <string_view>

#include "platform/process_entry.h"
#include "server/request_loop.h"
#include "simulator/simulation.h"

namespace {

constexpr std::size_t kWorkerStackBytes = 0x1000000;

std::unique_ptr<tarqo::sim::Simulation> simulationOf(const char* path) {
  try {
    return std::make_unique<tarqo::sim::Simulation>(tarqo::sim::SceneFile::read(path));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "tarqo-ax-sim: %s: %s\n", path, error.what());
    return nullptr;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::span arguments(argv, static_cast<std::size_t>(argc));
  if (arguments.size() != 2) {
    std::fputs("usage: tarqo-ax-sim SCENE.json\n       tarqo-ax-sim --version\n", stderr);
    return 2;
  }
  if (std::string_view(arguments[1]) == "--version") {
    std::puts("tarqo-ax " TARQO_VERSION);
    return 0;
  }
  const std::unique_ptr<tarqo::sim::Simulation> simulation = simulationOf(arguments[1]);
  if (simulation == nullptr) {
    return 1;
  }
  tarqo::limitKeptMemory();
  const tarqo::ProtocolStreams streams = tarqo::claimStandardStreams();
  if (streams.in == nullptr || streams.out == nullptr) {
    std::fputs("tarqo-ax-sim: standard input and standard output must be open\n", stderr);
    return 1;
  }
  const bool started = tarqo::startThread(kWorkerStackBytes, [&] {
    tarqo::serveRequests([&](std::string_view line) { return simulation->serve(line); }, streams.in,
                         streams.out);
    tarqo::endProcess(0);
  });
  if (!started) {
    std::fputs("tarqo-ax-sim: the system gave no thread to serve requests on\n", stderr);
    return 1;
  }
  simulation->desktop().mainLoop().run();
}
