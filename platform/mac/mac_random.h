// Random numbers from the kernel.
#pragma once

#include "platform/random.h"

namespace tarqo::mac {

class MacRandom final : public Random {
 public:
  std::uint64_t next() override;
};

}  // namespace tarqo::mac
