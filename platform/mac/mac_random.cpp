#include "platform/mac/mac_random.h"

#include <cstdlib>

namespace tarqo::mac {

std::uint64_t MacRandom::next() {
  std::uint64_t bits = 0;
  arc4random_buf(&bits, sizeof(bits));
  return bits;
}

}  // namespace tarqo::mac
