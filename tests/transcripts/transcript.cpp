#include "tests/transcripts/transcript.h"

#include <sstream>
#include <stdexcept>
#include <utility>

namespace tarqo::transcripts {
namespace {

constexpr std::string_view kScene = "scene: ";

std::string at(int line) { return "line " + std::to_string(line) + ": "; }

/// A line together with those that continue it.
struct Paragraph {
  std::string text;
  int line = 0;
};

std::vector<Paragraph> paragraphsOf(const std::string& text) {
  std::vector<Paragraph> paragraphs;
  std::istringstream lines(text);
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    if (line.empty() || line.front() == '#') {
      continue;
    }
    if (line.front() != ' ') {
      paragraphs.push_back({line, number});
    } else if (!paragraphs.empty()) {
      paragraphs.back().text += line;
    } else {
      throw std::runtime_error(at(number) + "there is nothing to continue");
    }
  }
  return paragraphs;
}

std::optional<Json> parseResponse(const Paragraph& paragraph) {
  const std::string text = paragraph.text.substr(1);
  if (text.find_first_not_of(' ') == std::string::npos) {
    return std::nullopt;
  }
  try {
    return Json::parse(text);
  } catch (const Json::exception& error) {
    throw std::runtime_error(at(paragraph.line) + error.what());
  }
}

// Names end where no letter or digit follows, so that "$save" can stand anywhere in a request.
std::string withRemembered(const std::string& text, const Remembered& remembered) {
  std::string result;
  for (std::size_t i = 0; i < text.size();) {
    std::size_t end = i + 1;
    while (text[i] == '$' && end < text.size() &&
           std::isalnum(static_cast<unsigned char>(text[end])) != 0) {
      ++end;
    }
    const auto found = remembered.find(text.substr(i + 1, end - i - 1));
    result += text[i] == '$' && found != remembered.end() ? found->second : text.substr(i, end - i);
    i = end;
  }
  return result;
}

// Pictures make responses long; the beginning of one is enough.
std::string shortened(const std::string& text) {
  constexpr std::size_t kShown = 2000;
  return text.size() <= kShown ? text : text.substr(0, kShown) + "...";
}

std::string wrongWith(const Exchange& exchange, const std::optional<std::string>& answer,
                      Remembered& remembered) {
  if (!answer) {
    return exchange.response ? "no response came" : "";
  }
  if (!exchange.response) {
    return "a response came: " + shortened(*answer);
  }
  Json actual;
  try {
    actual = Json::parse(*answer);
  } catch (const Json::exception&) {
    return "the response is no JSON: " + shortened(*answer);
  }
  if (serializeJson(actual) != *answer) {
    return "the response is not written as it should be: " + shortened(*answer);
  }
  const std::string wrong = mismatch(*exchange.response, actual, remembered);
  return wrong.empty() ? "" : wrong + "\n  the response: " + shortened(*answer);
}

}  // namespace

Transcript parseTranscript(const std::string& text) {
  Transcript transcript;
  bool asked = false;
  for (const Paragraph& paragraph : paragraphsOf(text)) {
    if (transcript.scene.empty()) {
      if (!paragraph.text.starts_with(kScene)) {
        throw std::runtime_error(at(paragraph.line) + "no scene is named");
      }
      transcript.scene = paragraph.text.substr(kScene.size());
    } else if (paragraph.text.starts_with("> ") && !asked) {
      transcript.exchanges.push_back({paragraph.text.substr(2), std::nullopt, paragraph.line});
      asked = true;
    } else if (paragraph.text.starts_with("<") && asked) {
      transcript.exchanges.back().response = parseResponse(paragraph);
      asked = false;
    } else {
      throw std::runtime_error(at(paragraph.line) + "neither a request nor a response to one");
    }
  }
  if (asked || transcript.exchanges.empty()) {
    throw std::runtime_error("the last request has no response");
  }
  return transcript;
}

std::string play(const Transcript& transcript, const Ask& ask) {
  Remembered remembered;
  for (const Exchange& exchange : transcript.exchanges) {
    const auto answer = ask(withRemembered(exchange.request, remembered));
    const std::string wrong = wrongWith(exchange, answer, remembered);
    if (!wrong.empty()) {
      return at(exchange.line) + wrong;
    }
    if (!answer) {
      break;
    }
  }
  return "";
}

}  // namespace tarqo::transcripts
