// The thread of a program that serves requests, and the streams it serves them on.
#pragma once

#include <functional>
#include <optional>

#include "platform/process_entry.h"
#include "server/request_loop.h"

namespace tarqo {

/// Takes standard input and output for the protocol alone. Null, after a word to standard error as
/// `program`, when one of them is closed. Call once, before any thread starts.
[[nodiscard]] std::optional<ProtocolStreams> claimStreams(const char* program);

/// Serves requests on a thread of its own, which ends the process when there are no more. False,
/// after a word to standard error as `program`, when the system gives no thread.
[[nodiscard]] bool serveOnWorker(const char* program, const ProtocolStreams& streams, Serve serve);

}  // namespace tarqo
