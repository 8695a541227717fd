#include "platform/linux/linux_random.h"

#include <sys/random.h>

namespace tarqo::lnx {

std::uint64_t LinuxRandom::next() {
  std::uint64_t number = 0;
  // So few bytes come whole or, when a signal arrives before the system has gathered any, not at
  // all.
  while (::getrandom(&number, sizeof(number), 0) != sizeof(number)) {
  }
  return number;
}

}  // namespace tarqo::lnx
