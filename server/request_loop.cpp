#include "server/request_loop.h"

#include <exception>
#include <functional>
#include <string>
#include <string_view>

#include "base/memory_reserve.h"
#include "platform/process_entry.h"

namespace tarqo {
namespace {

/// The longest line whose memory is kept for the next.
constexpr std::size_t kKeptLineBytes = 1U << 20U;

enum class Line { whole, tooLarge, endOfInput };

// A last line without a line end is a line like any other. A line that does not fit into memory is
// read to its end and forgotten, so that the next one is understood.
Line readLine(std::FILE* in, std::string& line) {
  line.clear();
  Line outcome = Line::whole;
  bool any = false;
  for (int c = std::getc(in); c != EOF; c = std::getc(in)) {
    if (c == '\n') {
      return outcome;
    }
    any = true;
    if (outcome == Line::tooLarge) {
      continue;
    }
    try {
      line.push_back(static_cast<char>(c));
    } catch (const std::exception&) {  // bad_alloc or length_error
      outcome = Line::tooLarge;
      std::string().swap(line);  // Assigning would keep its memory.
    }
  }
  return any ? outcome : Line::endOfInput;
}

bool writeLine(std::FILE* out, std::string_view line) {
  return std::fwrite(line.data(), 1, line.size(), out) == line.size() &&
         std::fputc('\n', out) != EOF && std::fflush(out) == 0;
}

}  // namespace

void serveRequests(const Serve& serve, std::FILE* in, std::FILE* out) {
  std::string line;
  Served served;
  // Made once, before memory can be short.
  const std::string tooLarge = errorLine(failures::kRequestTooLarge);
  const std::string outOfMemory = errorLine(failures::kOutOfMemory);
  const std::function<void()> serveLine = [&] {
    try {
      served = serve(line);
    } catch (...) {
      served = {.response = std::nullopt, .outOfMemory = true};
    }
  };
  for (Line read = readLine(in, line); read != Line::endOfInput; read = readLine(in, line)) {
    keepMemoryReserve();
    if (read != Line::tooLarge) {
      runAndRelease(serveLine);
    }
    const std::string* answer = read == Line::tooLarge ? &tooLarge
                                : served.outOfMemory   ? &outOfMemory
                                : served.response      ? &*served.response
                                                       : nullptr;
    if (served.close || (answer != nullptr && !writeLine(out, *answer))) {
      return;
    }
    served = {};
    if (line.capacity() > kKeptLineBytes) {
      std::string().swap(line);  // Assigning would keep its memory.
    }
  }
}

void serveRequests(Server& server, std::FILE* in, std::FILE* out) {
  serveRequests([&](std::string_view line) { return server.serve(line); }, in, out);
}

}  // namespace tarqo
