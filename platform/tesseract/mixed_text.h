// Repairs lines in which Korean and English stand together.
//
// The recogniser reads every word with the data of one language. Korean data knows hardly any Latin
// letters, so the end of "회의록.txt" comes out as garbage; and English data finds capitals in some
// Korean words ("FSS" for "항목을") that look surer than the right reading. Both show when the line
// is read again in one language: these functions say when, and put the readings together.
//
// Any thread; texts only.
#pragma once

#include <string>
#include <vector>

#include "platform/tesseract/tesseract.h"

namespace tarqo::ocr {

/// Whether the last word is Korean up to a dot and more than a letter behind it: a file's name.
[[nodiscard]] bool endsInExtension(const std::string& line);

/// Such a line with what English data read behind the last dot.
[[nodiscard]] std::string withExtension(const std::string& line, const std::string& english);

/// Whether a Korean line has a word without Hangul that may be a misread Korean one. `words` are
/// the line's words with their confidences.
[[nodiscard]] bool hasDoubtfulWord(const std::string& line, const std::vector<ReadText>& words);

/// Such a line with its doubtful words as Korean data read them, where that is plain Korean.
/// Unchanged when the two readings have different numbers of words.
[[nodiscard]] std::string withKoreanWords(const std::string& line,
                                          const std::vector<ReadText>& words,
                                          const std::string& korean);

}  // namespace tarqo::ocr
