// Every failure that the helper can answer is shown by a transcript.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string_view>

#include "base/failure.h"
#include "tests/transcripts/collection.h"

namespace tarqo::transcripts {
namespace {

using Texts = std::set<std::string>;

// Constants of base/failure.h that no scene can raise, and why.
const std::map<std::string, std::string> kOutOfReach{
    {"kAccessibilityObstacle",
     "no scene has a system with words of its own; permissions_test.cpp has"},
    {"kCaptureObstacle", "no scene has a system with words of its own; permissions_test.cpp has"},
    {"kAppClosed", "every caller has passed the gate, which reports a closed application first"},
    {"kKeysGoToOtherWindow",
     "no scene's system tells which window of an application gets keys; intruder_test.cpp has one"},
    {"kOutOfMemory", "no scene makes memory short; server_test.cpp does"},
    {"kRequestTooLarge", "no scene makes memory short; server_test.cpp does"},
    {"kUnnamedError",
     "nothing throws what is no exception; server_test.cpp has a platform that does"},
};

/// Whether `text` is `pattern` with something in the place of each "{}".
bool isFilledFrom(std::string_view pattern, std::string_view text) {
  const std::size_t place = pattern.find("{}");
  if (place == std::string_view::npos) {
    return text == pattern;
  }
  if (!text.starts_with(pattern.substr(0, place))) {
    return false;
  }
  const std::string_view rest = pattern.substr(place + 2);
  for (std::size_t end = place + 1; end <= text.size(); ++end) {
    if (isFilledFrom(rest, text.substr(end))) {
      return true;
    }
  }
  return false;
}

/// The next piece of `source` in double quotes, after `at`, which moves behind
/// it.
std::string quoted(const std::string& source, std::size_t& at) {
  const std::size_t begin = source.find('"', at) + 1;
  const std::size_t end = source.find('"', begin);
  at = end + 1;
  return source.substr(begin, end - begin);
}

/// "noWindow" as "no_window".
std::string snakeCase(const std::string& name) {
  std::string snake;
  for (const char c : name) {
    if (c >= 'A' && c <= 'Z') {
      snake += '_';
      snake += static_cast<char>(c - 'A' + 'a');
    } else {
      snake += c;
    }
  }
  return snake;
}

/// The rows of the table of failures by name: code and sentence as "code: sentence".
std::map<std::string, std::string> failureTexts() {
  const std::string declaration = "constexpr FailureText ";
  const std::string enumeration = "FailureCode::";
  const std::string source = readFile(TARQO_FAILURES);
  std::map<std::string, std::string> texts;
  for (std::size_t at = source.find(declaration); at != std::string::npos;
       at = source.find(declaration, at)) {
    at += declaration.size();
    const std::string name = source.substr(at, source.find('{', at) - at);
    at = source.find(enumeration, at) + enumeration.size();
    std::string text = snakeCase(source.substr(at, source.find(',', at) - at)) + ": ";
    // Literals follow one another until the brace that closes the initializer.
    while (source.find('"', at) < source.find("};", at)) {
      text += quoted(source, at);
    }
    texts[name] = text;
  }
  return texts;
}

/// The row that a failure is of: of those whose sentence could be filled in so, the longest.
std::string rowOf(const std::string& raised, const std::map<std::string, std::string>& rows) {
  std::string found;
  std::size_t longest = 0;
  for (const auto& [name, text] : rows) {
    if (text.size() > longest && isFilledFrom(text, raised)) {
      longest = text.size();
      found = name;
    }
  }
  return found;
}

/// "code: sentence" of every failure in the transcripts.
Texts raised() {
  Texts all;
  for (const std::string& name : transcriptNames()) {
    for (const Exchange& exchange : transcriptNamed(name).exchanges) {
      if (!exchange.response || !exchange.response->contains("error")) {
        continue;
      }
      const Json& error = (*exchange.response)["error"];
      if (error.contains("message")) {
        all.insert(error["code"].get<std::string>() + ": " + error["message"].get<std::string>());
      }
    }
  }
  return all;
}

std::string rowText(const FailureText& row) {
  return std::string(wireName(row.code)) + ": " + std::string(row.sentence);
}

TEST(FailureCoverage, ReadsTheTable) {
  const auto texts = failureTexts();
  EXPECT_EQ(texts.at("kNoWindow"), rowText(failures::kNoWindow));
  EXPECT_EQ(texts.at("kWindowNotVisible"), rowText(failures::kWindowNotVisible));
  EXPECT_EQ(texts.at("kCaptureStale"), rowText(failures::kCaptureStale));
  EXPECT_EQ(texts.at("kSwipeTooSmall"), rowText(failures::kSwipeTooSmall));
}

TEST(FailureCoverage, ShowsEveryFailureOfTheTable) {
  const auto rows = failureTexts();
  Texts missing;
  Texts expected;
  for (const auto& [name, text] : rows) {
    missing.insert(name);
  }
  for (const std::string& text : raised()) {
    missing.erase(rowOf(text, rows));
  }
  for (const auto& [name, reason] : kOutOfReach) {
    expected.insert(name);
  }
  EXPECT_EQ(missing, expected);
}

TEST(FailureCoverage, FindsEveryFailureOfTheTranscriptsInTheTable) {
  const auto rows = failureTexts();
  for (const std::string& text : raised()) {
    EXPECT_NE(rowOf(text, rows), "") << text;
  }
}

TEST(FailureCoverage, IsExplainedCodeByCode) {
  const std::string page = readFile(TARQO_TROUBLESHOOTING);
  for (const std::string& text : raised()) {
    const std::string code = text.substr(0, text.find(':'));
    EXPECT_NE(page.find("\n### " + code + "\n"), std::string::npos) << code;
    EXPECT_NE(page.find("[`" + code + "`](#" + code + ")"), std::string::npos) << code;
  }
}

}  // namespace
}  // namespace tarqo::transcripts
