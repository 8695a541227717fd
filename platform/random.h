// Random numbers for names that must not repeat. Any thread.
#pragma once

#include <cstdint>

namespace tarqo {

class Random {
 public:
  virtual ~Random() = default;

  /// 64 bits that nobody can foresee.
  [[nodiscard]] virtual std::uint64_t next() = 0;
};

}  // namespace tarqo
