// The worker's loop: reads request lines, serves them one at a time, writes response lines.
#pragma once

#include <cstdio>
#include <functional>

#include "server/server.h"

namespace tarqo {

/// Gives the answer to a request line of any bytes.
using Serve = std::function<Served(std::string_view line)>;

/// Serves lines from `in` until it ends, the client asks for the end, or nobody reads `out` any
/// more. Every response is flushed before the next line is read. Blocks for as long as the client
/// lives.
void serveRequests(const Serve& serve, std::FILE* in, std::FILE* out);
void serveRequests(Server& server, std::FILE* in, std::FILE* out);

}  // namespace tarqo
