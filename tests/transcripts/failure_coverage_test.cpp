// Every failure that the helper can answer is shown by a transcript.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
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
    {"kAppClosed",
     "every caller has passed the gate, which tells a closed "
     "application first"},
};

/// A failure whose sentence is composed: its code, and how the sentence begins,
/// goes on and ends.
struct Composed {
  std::string_view code;
  std::string_view begin;
  std::string_view middle;
  std::string_view end;
};

constexpr std::array kComposed{
    Composed{"native_error", "", "", ""},
    Composed{"ax_not_trusted", "Accessibility is not granted to ", "", ", then run again."},
    Composed{"screen_capture_denied", "Screen Recording is not granted to ", "",
             ", then run again."},
    Composed{"screen_capture_stale", "Screen Recording lists ", " as allowed, but ",
             ", then retry."},
    Composed{"app_not_found", "No installed application for ", "", ""},
    Composed{"app_not_running", "Application is not running: ", "", ""},
    Composed{"launch_failed", "", "", ""},
    Composed{"no_window", "No window of ", " shows ", ".example."},
    Composed{"no_window", "No window of ", " shows ", ", and one could not be opened."},
    Composed{"no_window", "No window shows ", "",
             " any more: the page left the site, or its window closed."},
    Composed{"ocr_failed", "", "", ""},
    Composed{"target_covered", "The position (", ", not the captured ", "; take a fresh snapshot"},
};

bool isOf(const std::string& text, const Composed& composed) {
  const std::string start = std::string(composed.code) + ": " + std::string(composed.begin);
  return text.starts_with(start) && text.size() > start.size() &&
         text.find(composed.middle, start.size()) != std::string::npos &&
         text.ends_with(composed.end);
}

/// The next piece of `source` in double quotes, after `at`, which moves behind
/// it.
std::string quoted(const std::string& source, std::size_t& at) {
  const std::size_t begin = source.find('"', at) + 1;
  const std::size_t end = source.find('"', begin);
  at = end + 1;
  return source.substr(begin, end - begin);
}

/// The constants of the table of failures by name: code and sentence as "code:
/// sentence".
std::map<std::string, std::string> failureTexts() {
  const std::string declaration = "constexpr FailureText ";
  const std::string source = readFile(TARQO_FAILURES);
  std::map<std::string, std::string> texts;
  for (std::size_t at = source.find(declaration); at != std::string::npos;
       at = source.find(declaration, at)) {
    at += declaration.size();
    const std::string name = source.substr(at, source.find('{', at) - at);
    std::string text = quoted(source, at) + ": ";
    // Literals follow one another until the brace that closes the initializer.
    while (source.find('"', at) < source.find("};", at)) {
      text += quoted(source, at);
    }
    texts[name] = text;
  }
  return texts;
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

TEST(FailureCoverage, ReadsTheTable) {
  const auto texts = failureTexts();
  EXPECT_EQ(texts.at("kNoWindow"), std::string(failures::kNoWindow.code) + ": " +
                                       std::string(failures::kNoWindow.message));
  EXPECT_EQ(texts.at("kWindowNotVisible"), std::string(failures::kWindowNotVisible.code) + ": " +
                                               std::string(failures::kWindowNotVisible.message));
  EXPECT_EQ(texts.at("kSwipeTooSmall"), std::string(failures::kSwipeTooSmall.code) + ": " +
                                            std::string(failures::kSwipeTooSmall.message));
}

TEST(FailureCoverage, ShowsEveryFailureOfTheTable) {
  const Texts shown = raised();
  Texts missing;
  for (const auto& [name, text] : failureTexts()) {
    if (!shown.contains(text)) {
      missing.insert(name);
    }
  }
  Texts expected;
  for (const auto& [name, reason] : kOutOfReach) {
    expected.insert(name);
  }
  EXPECT_EQ(missing, expected);
}

TEST(FailureCoverage, ShowsEveryComposedFailure) {
  const Texts shown = raised();
  for (const Composed& composed : kComposed) {
    EXPECT_TRUE(std::any_of(shown.begin(), shown.end(),
                            [&](const std::string& text) { return isOf(text, composed); }))
        << composed.code << ": " << composed.begin << composed.middle << composed.end;
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
