#include "main/request_loop.h"

#include <new>
#include <stdexcept>
#include <string>

#include "platform/process_entry.h"

namespace tarqo {
namespace {

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
      line = std::string();
    }
  }
  return any ? outcome : Line::endOfInput;
}

bool writeLine(std::FILE* out, const std::string& line) {
  return std::fwrite(line.data(), 1, line.size(), out) == line.size() &&
         std::fputc('\n', out) != EOF && std::fflush(out) == 0;
}

}  // namespace

void serveRequests(const Serve& serve, std::FILE* in, std::FILE* out) {
  std::string line;
  for (Line read = readLine(in, line); read != Line::endOfInput; read = readLine(in, line)) {
    Served served;
    runAndRelease([&] {
      served = read == Line::tooLarge ? Served{Server::requestTooLarge(), false} : serve(line);
    });
    if (served.close || (served.response && !writeLine(out, *served.response))) {
      return;
    }
  }
}

void serveRequests(Server& server, std::FILE* in, std::FILE* out) {
  serveRequests([&](std::string_view line) { return server.serve(line); }, in, out);
}

}  // namespace tarqo
