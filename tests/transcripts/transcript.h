// Transcripts: conversations with the helper as text, played against whatever answers.
//
//   # A comment. A blank line means nothing.
//   scene: notes
//   > {"id": 1, "method": "observe", "args": {"image": false}}
//   < {"id": 1, "result": {"snapshot": {"id": "<snapshot>", "nodes":
//       [{"id": "<node:save>", "name": "Save", "...": true}, "..."], "...": true}, "...": true}}
//   > {"id": 2, "method": "click", "args": {"nodeId": "$save"}}
//   < {"id": 2, "result": {"nodeId": "$save", "at": "<time>", "method": "accessibility"}}
//   > {"id": 3, "method": "close"}
//   <
//
// The first line that is no comment names the scene, a file in scenes/. ">" is a request, sent as
// it stands. "<" is the response to it: JSON that the answer must equal, written as one likes. A
// line that begins with white space continues the one above. "<" alone means that no response comes
// and that the conversation ends there.
//
// In a response, a text of this form stands for what differs from run to run:
//   "<any>" any value    "<number>" any number    "<text>" any text that is not empty
//   "<time>" a timestamp "<snapshot>" a snapshot id "<node>" a node id "<png>" a PNG in base64
// "<node:save>" also remembers the value as "save"; "$save" in a later request or response is that
// value. A member "...": true allows an object further members, a last item "..." a list further
// items.
//
// Every response must also be written as the protocol writes it: one line, no spaces, keys sorted,
// "/" escaped.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/json.h"

namespace tarqo::transcripts {

struct Exchange {
  std::string request;
  std::optional<Json> response;  ///< None: no response, and the end.
  int line = 0;                  ///< Of the request, from 1.
};

struct Transcript {
  std::string scene;
  std::vector<Exchange> exchanges;
};

/// Throws `std::runtime_error`, with the line, for a text that is no transcript.
[[nodiscard]] Transcript parseTranscript(const std::string& text);

/// Sends a request line and gives the response line; null when the other side has ended without
/// one.
using Ask = std::function<std::optional<std::string>(const std::string& request)>;

/// Plays a conversation to its end, or to the first response that is not as it should be; gives
/// what is wrong with that one, empty when nothing is.
[[nodiscard]] std::string play(const Transcript& transcript, const Ask& ask);

/// The values remembered in a conversation, by name.
using Remembered = std::map<std::string, std::string>;

/// Where and how `actual` is not what `expected` describes; empty when it is. Remembers as it goes.
[[nodiscard]] std::string mismatch(const Json& expected, const Json& actual,
                                   Remembered& remembered);

}  // namespace tarqo::transcripts
