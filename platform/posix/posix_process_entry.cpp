#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>
#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <csignal>
#include <cstdlib>
#include <memory>

#include "platform/process_entry.h"

namespace tarqo {
namespace {

// The streams of the protocol are read and written to the end; a pipe that does not wait would look
// like the end of them.
void makeWaiting(int descriptor) {
  const int flags = fcntl(descriptor, F_GETFL);
  if (flags >= 0 && (flags & O_NONBLOCK) != 0) {
    fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK);
  }
}

std::FILE* moveAside(int descriptor, const char* mode) {
  makeWaiting(descriptor);
  const int aside = fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
  return aside < 0 ? nullptr : fdopen(aside, mode);
}

void* runBody(void* argument) {
  const std::unique_ptr<std::function<void()>> body(static_cast<std::function<void()>*>(argument));
  (*body)();
  return nullptr;
}

}  // namespace

ProtocolStreams claimStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  const ProtocolStreams streams{moveAside(STDIN_FILENO, "r"), moveAside(STDOUT_FILENO, "w")};
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (null >= 0) {
    dup2(null, STDIN_FILENO);
    if (dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
      dup2(null, STDOUT_FILENO);
    }
    if (null > STDERR_FILENO) {
      close(null);
    }
  }
  return streams;
}

bool startThread(std::size_t stackBytes, std::function<void()> body) {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) {
    return false;
  }
  pthread_attr_setstacksize(&attributes, stackBytes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  auto argument = std::make_unique<std::function<void()>>(std::move(body));
  pthread_t thread{};
  const bool started = pthread_create(&thread, &attributes, runBody, argument.get()) == 0;
  if (started) {
    (void)argument.release();  // The thread owns it now.
  }
  pthread_attr_destroy(&attributes);
  return started;
}

// The GNU allocator keeps what it has once given out in blocks of up to 32 MiB, and for other
// threads than the main one `malloc_trim` does not change that. Others give large blocks back by
// themselves.
void limitKeptMemory() {
#ifdef __GLIBC__
  constexpr int kMiB = 1 << 20;
  mallopt(M_MMAP_THRESHOLD, 4 * kMiB);  // From this size on, a block is freed by itself.
  mallopt(M_TRIM_THRESHOLD, 8 * kMiB);  // What may stay free at the end of a thread's memory.
#endif
}

void endProcess(int status) { std::_Exit(status); }

}  // namespace tarqo
