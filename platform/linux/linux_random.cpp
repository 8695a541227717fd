#include "platform/linux/linux_random.h"

#include <sys/random.h>

namespace tarqo::lnx {

std::uint64_t LinuxRandom::next() {
  std::uint64_t number = 0;
  // Reads of up to 256 bytes are never short. EINTR comes only before the pool is seeded.
  while (::getrandom(&number, sizeof(number), 0) != sizeof(number)) {
  }
  return number;
}

}  // namespace tarqo::lnx
