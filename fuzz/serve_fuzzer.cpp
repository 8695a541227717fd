// The whole of the server over a simulated desktop. The first line of an input is the faults of the
// desktop, a letter each; every further line is a request. "$3" in a request stands for the id of
// the third node of the last observation, so that ids can be guessed.

#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/fuzz_check.h"
#include "fuzz/fuzz_scene.h"
#include "server/server.h"

namespace {

using tarqo::Json;
using tarqo::fuzz::check;

constexpr std::size_t kMaxRequests = 24;

std::vector<std::string> linesOf(const std::string& input) {
  std::vector<std::string> lines(1);
  for (const char c : input) {
    if (c == '\n') {
      lines.emplace_back();
    } else {
      lines.back().push_back(c);
    }
  }
  return lines;
}

std::vector<std::string> nodeIds(const Json& response) {
  std::vector<std::string> ids;
  const Json::json_pointer nodes("/result/snapshot/nodes");
  if (response.contains(nodes)) {
    for (const Json& node : response[nodes]) {
      ids.push_back(node["id"].get<std::string>());
    }
  }
  return ids;
}

std::string withIds(const std::string& line, const std::vector<std::string>& ids) {
  std::string result;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const bool token = line[i] == '$' && i + 1 < line.size() && line[i + 1] >= '0' &&
                       static_cast<std::size_t>(line[i + 1] - '0') < ids.size();
    if (token) {
      result += ids[static_cast<std::size_t>(line[++i] - '0')];
    } else {
      result += line[i];
    }
  }
  return result;
}

void checkError(const Json& error, const std::string& line) {
  check(error.is_object() && error.contains("code") && error.contains("message"),
        "an error lacks its code or message", line);
  check(error["code"].is_string() && !error["code"].get<std::string>().empty(),
        "an error has no code", line);
  check(error["message"].is_string(), "an error has no message", line);
}

Json checkResponse(const std::string& line) {
  check(line.find('\n') == std::string::npos, "a response is more than one line", line);
  const Json response = Json::parse(line, nullptr, false);
  check(response.is_object() && response.size() == 2 && response.contains("id"),
        "a response is no response", line);
  check(response.contains("result") != response.contains("error"),
        "a response has not exactly one outcome", line);
  if (response.contains("error")) {
    checkError(response["error"], line);
  } else {
    check(response["result"].is_object(), "a result is no object", line);
  }
  check(tarqo::serializeJson(response) == line, "a response is not written as it should be", line);
  return response;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<std::string> lines = linesOf({reinterpret_cast<const char*>(data), size});
  lines.resize(std::min(lines.size(), kMaxRequests + 1));
  tarqo::sim::Desktop desktop;
  tarqo::fuzz::buildScene(desktop, lines.front());
  tarqo::Server server(desktop.platform());
  std::vector<std::string> ids;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const tarqo::Served served = server.serve(withIds(lines[i], ids));
    if (served.close) {
      check(!served.response, "a response to \"close\"", lines[i]);
      break;
    }
    if (served.response) {
      const Json response = checkResponse(*served.response);
      if (auto fresh = nodeIds(response); !fresh.empty()) {
        ids = std::move(fresh);
      }
    }
  }
  return 0;
}
