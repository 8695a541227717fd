#include "platform/tesseract/mixed_text.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string_view>

namespace tarqo::ocr {
namespace {

/// English words in Korean lines score more than that, Korean ones that were misread score less.
constexpr float kSureConfidence = 88;
constexpr std::size_t kHangulBytes = 3;
constexpr std::size_t kMinExtensionBytes = 2;

/// Hangul syllables are the three bytes from U+AC00 to U+D7A3.
bool isHangulAt(std::string_view text, std::size_t at) {
  const std::string_view character = text.substr(std::min(at, text.size()), kHangulBytes);
  return character >= "\xEA\xB0\x80" && character <= "\xED\x9E\xA3";
}

bool hasHangul(std::string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (isHangulAt(text, at)) {
      return true;
    }
  }
  return false;
}

/// Digits, then syllables, then at most punctuation: "3개", "있습니다.".
bool isPlainKorean(std::string_view word) {
  std::size_t at = std::min(word.find_first_not_of("0123456789"), word.size());
  const std::size_t first = at;
  while (isHangulAt(word, at)) {
    at += kHangulBytes;
  }
  return at > first && word.find_first_not_of(".,?!:", at) == std::string_view::npos;
}

bool isDoubtful(const std::string& word, const std::vector<ReadText>& words) {
  const auto hasLetter = std::ranges::any_of(
      word, [](char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; });
  return hasLetter && !hasHangul(word) && std::ranges::none_of(words, [&](const ReadText& read) {
           return read.text == word && read.confidence >= kSureConfidence;
         });
}

std::vector<std::string> split(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) {
    words.push_back(word);
  }
  return words;
}

}  // namespace

bool endsInExtension(const std::string& line) {
  const std::size_t dot = line.rfind('.');
  return dot != std::string::npos && dot >= kHangulBytes && isHangulAt(line, dot - kHangulBytes) &&
         line.size() - dot - 1 >= kMinExtensionBytes && line.find(' ', dot) == std::string::npos;
}

std::string withExtension(const std::string& line, const std::string& english) {
  const std::size_t before = english.find_last_of(". ");
  if (before == std::string::npos || before + 1 == english.size()) {
    return line;
  }
  return line.substr(0, line.rfind('.') + 1) + english.substr(before + 1);
}

bool hasDoubtfulWord(const std::string& line, const std::vector<ReadText>& words) {
  return hasHangul(line) && std::ranges::any_of(split(line), [&](const std::string& word) {
           return isDoubtful(word, words);
         });
}

std::string withKoreanWords(const std::string& line, const std::vector<ReadText>& words,
                            const std::string& korean) {
  std::vector<std::string> repaired = split(line);
  const std::vector<std::string> again = split(korean);
  if (repaired.size() != again.size()) {
    return line;
  }
  std::string joined;
  for (std::size_t i = 0; i < repaired.size(); ++i) {
    if (isDoubtful(repaired[i], words) && isPlainKorean(again[i])) {
      repaired[i] = again[i];
    }
    joined += (i == 0 ? "" : " ") + repaired[i];
  }
  return joined;
}

}  // namespace tarqo::ocr
