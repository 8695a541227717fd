// tarqo-ax-sim: serves the protocol on the simulated desktop of a scene file.

#include <cstdio>
#include <memory>
#include <span>
#include <string_view>

#include "server/worker.h"
#include "simulator/simulation.h"

namespace {

constexpr const char* kProgram = "tarqo-ax-sim";

std::unique_ptr<tarqo::sim::Simulation> simulationOf(const char* path) {
  try {
    return std::make_unique<tarqo::sim::Simulation>(tarqo::sim::SceneFile::read(path));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s: %s\n", kProgram, path, error.what());
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
  const auto streams = tarqo::claimStreams(kProgram);
  if (!streams || !tarqo::serveOnWorker(kProgram, *streams, [&](std::string_view line) {
        return simulation->serve(line);
      })) {
    return 1;
  }
  simulation->desktop().mainLoop().run();
}
