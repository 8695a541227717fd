// The edge where bytes become JSON and JSON becomes a line: whatever the bytes, parsing gives a
// value or says why not, and what is written reads back as what it was.

#include <cstdint>
#include <string_view>

#include "base/json.h"
#include "fuzz/fuzz_check.h"
#include "platform/unicode.h"

namespace {

using tarqo::Json;
using tarqo::fuzz::check;

void checkWritten(const Json& value) {
  const auto line = tarqo::serializeJson(value);
  check(line.has_value(), "what was parsed cannot be written", value.dump());
  check(line->find('\n') == std::string::npos, "one response is more than one line", *line);
  for (std::size_t slash = line->find('/'); slash != std::string::npos;
       slash = line->find('/', slash + 1)) {
    check(slash > 0 && (*line)[slash - 1] == '\\', "a slash is not escaped", *line);
  }
  const Json again = tarqo::parseJson(*line);
  check(again == value, "what was written reads back as something else", *line);
  check(tarqo::serializeJson(again) == line, "what was read back is written differently", *line);
}

void readMembers(const Json& value) {
  for (const char* key : {"id", "method", "args", "pid", ""}) {
    (void)tarqo::textMember(value, key);
    (void)tarqo::booleanMember(value, key);
    const auto number = tarqo::numberMember(value, key);
    const auto integer = tarqo::integerMember(value, key);
    check(!integer || number, "an integer is no number", value.dump());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = tarqo::unicode::repaired({reinterpret_cast<const char*>(data), size});
  try {
    const Json value = tarqo::parseJson(text);
    check(value.is_structured(), "a scalar was taken", text);
    readMembers(value);
    checkWritten(value);
  } catch (const tarqo::JsonError& error) {
    check(std::string_view(error.what()).size() < 300, "the reason is long", error.what());
  }
  return 0;
}
