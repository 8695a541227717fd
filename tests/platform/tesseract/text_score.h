// How well text was recognised: words and characters that are right.
#pragma once

#include <string>
#include <vector>

namespace tarqo::ocr {

/// Words that are right, of how many.
struct WordCount {
  int right = 0;
  int all = 0;
  [[nodiscard]] double share() const { return all == 0 ? 1 : static_cast<double>(right) / all; }
};

struct TextScore {
  WordCount english;
  WordCount korean;       ///< Words with at least one Hangul syllable.
  double similarity = 0;  ///< 1 less the changed characters, as a share of all; 0...1
};

/// What stands somewhere, and what was read there.
struct ReadPair {
  std::string drawn;
  std::string read;
};

/// A word is right when it was read in its line, character for character.
[[nodiscard]] TextScore score(const std::vector<ReadPair>& pairs);

/// 1 when both are the same, 0 when nothing is; spaces do not count.
[[nodiscard]] double similarity(const std::string& drawn, const std::string& read);

}  // namespace tarqo::ocr
