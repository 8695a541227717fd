#include "tests/contract/beside_main_loop.h"

#include <cstdio>
#include <utility>

#include "platform/process_entry.h"

namespace tarqo::contract {
namespace {

constexpr std::size_t kTestStackBytes = 0x1000000;

}  // namespace

void runBesideMainLoop(MainLoop& loop, std::function<int()> tests) {
  const bool started = startThread(kTestStackBytes, [run = std::move(tests)] {
    const int status = run();
    std::fflush(nullptr);
    endProcess(status);
  });
  if (!started) {
    std::fputs("no thread to run the tests on\n", stderr);
    endProcess(1);
  }
  loop.run();
}

}  // namespace tarqo::contract
