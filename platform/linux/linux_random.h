// Random numbers of the system.
#pragma once

#include "platform/random.h"

namespace tarqo::lnx {

class LinuxRandom final : public Random {
 public:
  std::uint64_t next() override;
};

}  // namespace tarqo::lnx
