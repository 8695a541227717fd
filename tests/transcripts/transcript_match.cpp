#include <algorithm>
#include <array>
#include <string_view>

#include "tests/transcripts/transcript.h"

namespace tarqo::transcripts {
namespace {

constexpr const char* kMore = "...";

// In a pattern "d" is a digit, "x" a lower-case hexadecimal digit, anything else itself.
bool fits(std::string_view text, std::string_view pattern) {
  return std::equal(text.begin(), text.end(), pattern.begin(), pattern.end(), [](char c, char p) {
    const bool digit = c >= '0' && c <= '9';
    switch (p) {
      case 'd':
        return digit;
      case 'x':
        return digit || (c >= 'a' && c <= 'f');
      default:
        return c == p;
    }
  });
}

bool isTime(const std::string& text) { return fits(text, "dddd-dd-ddTdd:dd:dd.dddZ"); }

bool isSnapshot(const std::string& text) {
  return fits(text, "xxxxxxxx-xxxx-4xxx-xxxx-xxxxxxxxxxxx");
}

bool isNode(const std::string& text) {
  const std::size_t colon = text.find(':');
  return colon != std::string::npos && isSnapshot(text.substr(0, colon)) &&
         fits(text.substr(colon + 1), std::string(text.size() - colon - 1, 'd')) &&
         colon + 1 < text.size();
}

// The signature of a PNG file in base64.
bool isPng(const std::string& text) { return text.starts_with("iVBORw0KGgo"); }

bool isNotEmpty(const std::string& text) { return !text.empty(); }

struct Kind {
  std::string_view name;
  bool (*fits)(const std::string& text);
};
constexpr std::array kKinds{Kind{"time", isTime}, Kind{"snapshot", isSnapshot},
                            Kind{"node", isNode}, Kind{"png", isPng}, Kind{"text", isNotEmpty}};

bool isOfKind(std::string_view kind, const Json& actual) {
  if (kind == "any") {
    return true;
  }
  if (kind == "number") {
    return actual.is_number();
  }
  const auto* found = std::find_if(kKinds.begin(), kKinds.end(),
                                   [&](const Kind& each) { return each.name == kind; });
  return found != kKinds.end() && actual.is_string() && found->fits(actual.get<std::string>());
}

std::string notEqual(const Json& expected, const Json& actual) {
  return " should be " + expected.dump() + " and is " + actual.dump();
}

class Comparison {
 public:
  explicit Comparison(Remembered& remembered) : remembered_(remembered) {}

  std::string compare(const Json& expected, const Json& actual, const std::string& path) {
    if (expected.is_string()) {
      return compareText(expected.get<std::string>(), actual, path);
    }
    if (expected.is_object() && actual.is_object()) {
      return compareObject(expected, actual, path);
    }
    if (expected.is_array() && actual.is_array()) {
      return compareArray(expected, actual, path);
    }
    return expected == actual ? "" : path + notEqual(expected, actual);
  }

 private:
  std::string compareText(const std::string& expected, const Json& actual,
                          const std::string& path) {
    if (expected.starts_with('<') && expected.ends_with('>')) {
      const std::string inside = expected.substr(1, expected.size() - 2);
      const std::size_t colon = std::min(inside.find(':'), inside.size());
      if (!isOfKind(inside.substr(0, colon), actual)) {
        return path + notEqual(expected, actual);
      }
      if (colon < inside.size()) {
        remembered_[inside.substr(colon + 1)] =
            actual.is_string() ? actual.get<std::string>() : actual.dump();
      }
      return "";
    }
    const auto known =
        expected.starts_with('$') ? remembered_.find(expected.substr(1)) : remembered_.end();
    const std::string& text = known == remembered_.end() ? expected : known->second;
    return actual == text ? "" : path + notEqual(text, actual);
  }

  std::string compareObject(const Json& expected, const Json& actual, const std::string& path) {
    for (const auto& [key, value] : expected.items()) {
      if (key == kMore) {
        continue;
      }
      if (!actual.contains(key)) {
        return path + "/" + key + " is missing";
      }
      const std::string wrong = compare(value, actual[key], path + "/" + key);
      if (!wrong.empty()) {
        return wrong;
      }
    }
    for (const auto& [key, value] : actual.items()) {
      if (!expected.contains(key) && !expected.contains(kMore)) {
        return path + "/" + key + " should not be there";
      }
    }
    return "";
  }

  std::string compareArray(const Json& expected, const Json& actual, const std::string& path) {
    const bool open = !expected.empty() && expected.back() == kMore;
    const std::size_t count = open ? expected.size() - 1 : expected.size();
    if (open ? actual.size() < count : actual.size() != count) {
      return path + " has " + std::to_string(actual.size()) + " items, not " +
             std::to_string(count);
    }
    for (std::size_t i = 0; i < count; ++i) {
      const std::string wrong = compare(expected[i], actual[i], path + "/" + std::to_string(i));
      if (!wrong.empty()) {
        return wrong;
      }
    }
    return "";
  }

  Remembered& remembered_;
};

}  // namespace

std::string mismatch(const Json& expected, const Json& actual, Remembered& remembered) {
  return Comparison(remembered).compare(expected, actual, "");
}

}  // namespace tarqo::transcripts
