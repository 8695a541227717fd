// What script/mutate weaves into its copies of the core's sources. One program holds every mutant;
// the environment says which one is alive.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <type_traits>

namespace mutate {

inline int alive() {
  static const int id = [] {
    const char* text = std::getenv("TARQO_MUTANT");
    return text == nullptr ? -1 : std::atoi(text);
  }();
  return id;
}

/// One byte a mutant, in a file that the programs of a test share; null when nobody asks.
inline unsigned char* reached() {
  static unsigned char* const bytes = []() -> unsigned char* {
    const char* path = std::getenv("TARQO_MUTANTS_REACHED");
    const int file = path == nullptr ? -1 : open(path, O_RDWR | O_CLOEXEC);
    if (file < 0) {
      return nullptr;
    }
    void* const map = mmap(nullptr, static_cast<size_t>(lseek(file, 0, SEEK_END)),
                           PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    return map == MAP_FAILED ? nullptr : static_cast<unsigned char*>(map);
  }();
  return bytes;
}

/// Whether this mutant is alive.
inline bool live(int id) {
  if (unsigned char* const bytes = reached()) {
    bytes[id] = 1;
  }
  return alive() == id;
}

/// The same for functions that the compiler may call: what it computes is not mutated.
constexpr bool liveAtRunTime(int id) { return !std::is_constant_evaluated() && live(id); }

// Each does what its operator does, unless a mutant is alive.

template <typename A, typename B>
constexpr bool less(bool edge, bool other, A&& a, B&& b) {
  return edge ? a <= b : (a < b) != other;
}
template <typename A, typename B>
constexpr bool lessEqual(bool edge, bool other, A&& a, B&& b) {
  return edge ? a < b : (a <= b) != other;
}
template <typename A, typename B>
constexpr bool greater(bool edge, bool other, A&& a, B&& b) {
  return edge ? a >= b : (a > b) != other;
}
template <typename A, typename B>
constexpr bool greaterEqual(bool edge, bool other, A&& a, B&& b) {
  return edge ? a > b : (a >= b) != other;
}
template <typename A, typename B>
constexpr auto plus(bool mutant, A&& a, B&& b) -> decltype(a + b) {
  return mutant ? static_cast<decltype(a + b)>(a - b) : a + b;
}
template <typename A, typename B>
constexpr auto minus(bool mutant, A&& a, B&& b) -> decltype(a - b) {
  return mutant ? static_cast<decltype(a - b)>(a + b) : a - b;
}

}  // namespace mutate
