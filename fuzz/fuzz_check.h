// How a fuzzer says that something that must hold does not.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace tarqo::fuzz {

inline void check(bool holds, const char* what, const std::string& shown) {
  if (!holds) {
    std::fprintf(stderr, "%s: %s\n", what, shown.c_str());
    std::abort();
  }
}

}  // namespace tarqo::fuzz
