// What of the helper's own start and end only the system can do.
#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>

namespace tarqo {

/// The two streams of the protocol, taken away from everybody else: afterwards descriptor 0 reads
/// the null device and descriptor 1 writes to standard error, so that no library and no child
/// process can eat a request or slip a line between responses. Both wait for their other end, also
/// where whoever started the process had set them not to. Also makes writing to a closed pipe or
/// socket an ordinary error instead of the end of the process. Call once, before any thread starts.
/// A stream is null when the system gives none.
struct ProtocolStreams {
  std::FILE* in = nullptr;
  std::FILE* out = nullptr;
};
[[nodiscard]] ProtocolStreams claimStandardStreams();

/// Runs `body` on a new thread with a stack of `stackBytes`, never joined. False when the system
/// gives no thread.
[[nodiscard]] bool startThread(std::size_t stackBytes, std::function<void()> body);

/// Runs `body`, which does not throw, and then frees what libraries of the system left to be freed
/// when a turn of the thread's work is over. On macOS almost every framework leaves something so, C
/// functions included, and keeps it for good on a thread that has no such turns. Elsewhere nothing
/// is left. Any thread.
void runAndRelease(const std::function<void()>& body);

/// Lets the process keep no more than a few megabytes of memory that it has freed. Without it, what
/// one unusually long request took would never go back to the system. Call once, before any thread
/// starts.
void limitKeptMemory();

/// Ends the process at once: no destructors, so that no thread finds its objects gone.
[[noreturn]] void endProcess(int status);

}  // namespace tarqo
