#include "tests/platform/tesseract/text_score.h"

#include <algorithm>
#include <numeric>
#include <sstream>

namespace tarqo::ocr {
namespace {

std::u32string charactersOf(const std::string& text) {
  std::u32string characters;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte == ' ') {
      continue;
    }
    if (byte >= 0xC0) {
      characters.push_back(byte & (byte >= 0xF0 ? 0x07U : byte >= 0xE0 ? 0x0FU : 0x1FU));
    } else if (byte >= 0x80 && !characters.empty()) {
      characters.back() = characters.back() << 6U | (byte & 0x3FU);
    } else {
      characters.push_back(byte);
    }
  }
  return characters;
}

std::vector<std::string> wordsOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) {
    words.push_back(word);
  }
  return words;
}

bool isKorean(const std::string& word) {
  return std::ranges::any_of(charactersOf(word),
                             [](char32_t c) { return c >= 0xAC00 && c <= 0xD7A3; });
}

/// How many characters must be added, dropped or replaced.
int changesBetween(const std::u32string& a, const std::u32string& b) {
  std::vector<int> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 0; i < a.size(); ++i) {
    int diagonal = row[0];
    row[0] = static_cast<int>(i) + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const int replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

void countWords(const ReadPair& pair, TextScore& result) {
  std::vector<std::string> read = wordsOf(pair.read);
  for (const std::string& word : wordsOf(pair.drawn)) {
    WordCount& count = isKorean(word) ? result.korean : result.english;
    ++count.all;
    const auto found = std::ranges::find(read, word);
    if (found != read.end()) {
      ++count.right;
      read.erase(found);
    }
  }
}

}  // namespace

double similarity(const std::string& drawn, const std::string& read) {
  const std::u32string a = charactersOf(drawn);
  const std::u32string b = charactersOf(read);
  const auto longest = static_cast<double>(std::max({a.size(), b.size(), std::size_t{1}}));
  return 1 - changesBetween(a, b) / longest;
}

TextScore score(const std::vector<ReadPair>& pairs) {
  TextScore result;
  double weighted = 0;
  double all = 0;
  for (const ReadPair& pair : pairs) {
    countWords(pair, result);
    const auto length = static_cast<double>(charactersOf(pair.drawn).size());
    weighted += length * similarity(pair.drawn, pair.read);
    all += length;
  }
  result.similarity = all == 0 ? 1 : weighted / all;
  return result;
}

}  // namespace tarqo::ocr
