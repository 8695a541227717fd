// JSON as the protocol reads and writes it.
//
// Objects keep their keys sorted by bytes. Reading arguments never fails: a value of the wrong type
// counts as absent. Any thread; waits for nothing.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarqo {

using Json = nlohmann::json;

/// A request line that is no JSON text, with a sentence that says where it goes wrong.
class JsonError : public std::runtime_error {
 public:
  explicit JsonError(const std::string& sentence) : JsonError("", sentence) {}
  JsonError(const std::string& beginning, const std::string& reason)
      : std::runtime_error(beginning + reason), reason_(reason) {}

  /// The sentence without a beginning that speaks of a line.
  [[nodiscard]] const std::string& reason() const { return reason_; }

 private:
  std::string reason_;
};

/// The object or array in `text`, which must be valid UTF-8. Throws `JsonError` for anything else:
/// a syntax error, a scalar at the top, nesting deeper than 512, more than 100,000 values.
[[nodiscard]] Json parseJson(std::string_view text);

/// `value` on one line: no spaces, "/" escaped, whole numbers without a fraction. Null when it
/// holds a number that JSON cannot express.
[[nodiscard]] std::optional<std::string> serializeJson(Json value);

/// The member `key` of an object when it has that type.
[[nodiscard]] std::optional<std::string> textMember(const Json& object, std::string_view key);
[[nodiscard]] std::optional<bool> booleanMember(const Json& object, std::string_view key);

/// The texts of a list of texts; empty when it is anything else.
[[nodiscard]] std::vector<std::string> textListMember(const Json& object, std::string_view key);

/// Any JSON number; a boolean is not one.
[[nodiscard]] std::optional<double> numberMember(const Json& object, std::string_view key);

/// A JSON integer, or a number without a fractional part, that fits; a boolean is not one.
[[nodiscard]] std::optional<std::int64_t> integerMember(const Json& object, std::string_view key);

/// The same brought between `range.first` and `range.second`; `otherwise` where it is absent.
[[nodiscard]] std::int64_t clampedMember(const Json& object, std::string_view key,
                                         std::int64_t otherwise,
                                         std::pair<std::int64_t, std::int64_t> range);

}  // namespace tarqo
