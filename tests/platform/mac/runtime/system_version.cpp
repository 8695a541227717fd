#include "tests/platform/mac/standin/system_version.h"

#include <atomic>
#include <cstdlib>
#include <string_view>

namespace standin {
namespace {

std::atomic<int> systemVersion = 26;

}  // namespace

SEL ifAvailable(SEL selector, const char* version) {
  constexpr std::string_view kSystem = "macOS ";
  return std::atoi(version + kSystem.size()) <= systemVersion ? selector : nullptr;
}

void setSystemVersion(int major) { systemVersion = major; }

}  // namespace standin
