#include "base/json.h"

#include <algorithm>
#include <cmath>

namespace tarqo {
namespace {

constexpr const char* kNotValid = "The line is not valid JSON: ";
constexpr int kMaxNesting = 512;
constexpr std::size_t kMaxValues = 100'000;

// Where the text that opens with a quotation mark at `i` is closed.
std::size_t closingQuote(std::string_view text, std::size_t i) {
  for (++i; i < text.size() && text[i] != '"'; ++i) {
    if (text[i] == '\\') {
      ++i;
    }
  }
  return i;
}

bool isJsonSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// The library destroys and writes values recursively, and the end of an array or object asks for
// memory for all that is in it, without a way to report that there is not enough. So both the depth
// and the number of values are bounded before it builds any.
void requireModest(std::string_view text) {
  int depth = 0;
  std::size_t values = 1;
  bool first = false;  // Whether the next character is the first in an array or object.
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (isJsonSpace(c)) {
      continue;
    }
    const bool closes = c == ']' || c == '}';
    values += (first && !closes) || c == ',' ? 1 : 0;
    first = c == '[' || c == '{';
    depth += first ? 1 : closes ? -1 : 0;
    if (depth > kMaxNesting) {
      throw JsonError("The JSON text nests deeper than 512 levels.");
    }
    if (values > kMaxValues) {
      throw JsonError("The JSON text holds more than 100,000 values.");
    }
    if (c == '"') {
      i = closingQuote(text, i);
    }
  }
}

// "[json.exception.parse_error.101] parse error at …; last read: '…'" without the library's own
// label and without the text last read, which may be all of a very long line.
std::string reasonOf(const std::string& what) {
  constexpr std::size_t kMaxReason = 160;
  const std::size_t label = what.find("] ");
  const std::size_t begin = label == std::string::npos ? 0 : label + 2;
  const std::size_t end = what.find("; last read: '", begin);
  return what.substr(begin, std::min(end - begin, kMaxReason));
}

constexpr double kTwoTo63 = 9223372036854775808.0;

bool fitsInteger(double number) {
  return std::trunc(number) == number && number >= -kTwoTo63 && number < kTwoTo63;
}

// Writes whole doubles as integers; false when a number is not finite.
bool normalizeNumbers(Json& value) {
  if (value.is_number_float()) {
    const double number = value.get<double>();
    if (!std::isfinite(number)) {
      return false;
    }
    if (fitsInteger(number)) {
      value = static_cast<std::int64_t>(number);
    }
    return true;
  }
  if (value.is_structured()) {
    for (Json& item : value) {
      if (!normalizeNumbers(item)) {
        return false;
      }
    }
  }
  return true;
}

const Json* member(const Json& object, std::string_view key) {
  if (!object.is_object()) {
    return nullptr;
  }
  const auto found = object.find(key);
  return found == object.end() ? nullptr : &*found;
}

}  // namespace

Json parseJson(std::string_view text) {
  requireModest(text);
  // The library takes a NUL byte for the end of its input, whatever follows.
  if (text.find('\0') != std::string_view::npos) {
    throw JsonError(kNotValid, "it holds a NUL byte.");
  }
  try {
    Json value = Json::parse(text);
    if (value.is_structured()) {
      return value;
    }
  } catch (const Json::exception& error) {
    throw JsonError(kNotValid, reasonOf(error.what()));
  }
  throw JsonError("The JSON text did not start with an array or object.");
}

std::optional<std::string> serializeJson(Json value) {
  if (!normalizeNumbers(value)) {
    return std::nullopt;
  }
  const std::string plain = value.dump(-1, ' ', false, Json::error_handler_t::replace);
  std::string escaped;
  escaped.reserve(plain.size() + plain.size() / 32);
  for (const char c : plain) {  // A slash can only stand inside a text.
    if (c == '/') {
      escaped += '\\';
    }
    escaped += c;
  }
  return escaped;
}

std::optional<std::string> textMember(const Json& object, std::string_view key) {
  const Json* value = member(object, key);
  if (value == nullptr || !value->is_string()) {
    return std::nullopt;
  }
  return value->get<std::string>();
}

std::vector<std::string> textListMember(const Json& object, std::string_view key) {
  const Json* value = member(object, key);
  const bool isTextList =
      value != nullptr && value->is_array() &&
      std::all_of(value->begin(), value->end(), [](const Json& item) { return item.is_string(); });
  return isTextList ? value->get<std::vector<std::string>>() : std::vector<std::string>();
}

std::optional<bool> booleanMember(const Json& object, std::string_view key) {
  const Json* value = member(object, key);
  if (value == nullptr || !value->is_boolean()) {
    return std::nullopt;
  }
  return value->get<bool>();
}

std::optional<double> numberMember(const Json& object, std::string_view key) {
  const Json* value = member(object, key);
  if (value == nullptr || !value->is_number()) {
    return std::nullopt;
  }
  return value->get<double>();
}

std::optional<std::int64_t> integerMember(const Json& object, std::string_view key) {
  const Json* value = member(object, key);
  if (value == nullptr || !value->is_number()) {
    return std::nullopt;
  }
  if (value->is_number_unsigned()) {
    const auto number = value->get<std::uint64_t>();
    return number > INT64_MAX ? std::nullopt : std::optional(static_cast<std::int64_t>(number));
  }
  if (value->is_number_integer()) {
    return value->get<std::int64_t>();
  }
  const double number = value->get<double>();
  return fitsInteger(number) ? std::optional(static_cast<std::int64_t>(number)) : std::nullopt;
}

std::int64_t clampedMember(const Json& object, std::string_view key, std::int64_t otherwise,
                           std::pair<std::int64_t, std::int64_t> range) {
  return std::clamp(integerMember(object, key).value_or(otherwise), range.first, range.second);
}

}  // namespace tarqo
