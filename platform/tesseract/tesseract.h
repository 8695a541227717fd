// The Tesseract library, loaded when text is to be read for the first time.
//
// Linked ordinarily, it and its own libraries would cost every start of the helper 6 ms and 10 MB,
// and few sessions read text from pictures; so it is loaded by name, through its C interface. It
// runs on the calling thread alone: with its own four threads it is three times slower, as each has
// too little to do. None of its messages reaches the standard streams.
//
// An object is used by one thread at a time; several may be used at the same time.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/tesseract/line_image.h"
#include "platform/tesseract/surfaces.h"

namespace tarqo::ocr {

/// A line or a word.
struct ReadText {
  std::string text;
  float confidence = 0;  ///< 0...100
  PixelBox box{};        ///< In pixels of the image that was read.
};

class Tesseract {
 public:
  /// `dataFolder` holds the language data; the library's own folder when it is empty.
  explicit Tesseract(std::string dataFolder);
  ~Tesseract();
  Tesseract(const Tesseract&) = delete;
  Tesseract& operator=(const Tesseract&) = delete;

  /// Loads library and languages, Korean before English, unless that is done; takes about 100 ms.
  /// What is missing, and how to get it, when that fails: the next call tries again.
  [[nodiscard]] std::optional<std::string> prepare();

  enum class Language { koreanAndEnglish, korean, english };

  /// Reads a picture of one line of text. Returns one text; several where the picture holds more
  /// than a line; empty when it is blank, or when reading takes longer than `limit`, which the
  /// library checks between two words. Takes some 40 ms, and 50 ms more for the first line in one
  /// language alone. Requires `prepare`, as do the functions below.
  [[nodiscard]] std::vector<ReadText> readLine(const GrayImage& image, Language language,
                                               std::chrono::milliseconds limit);

  /// The words of the line read last in both languages. Korean words may be torn apart.
  [[nodiscard]] std::vector<ReadText> lastWords() const;

  /// The lines that stand anywhere in a picture, without blank ones. Empty when reading takes
  /// longer than `limit`, as above.
  [[nodiscard]] std::vector<ReadText> readScattered(const GrayImage& image,
                                                    std::chrono::milliseconds limit);

 private:
  struct Library;
  struct Engine;

  [[nodiscard]] std::string whatIsMissing() const;
  [[nodiscard]] const Engine* engineFor(Language language);

  std::string dataFolder_;
  std::unique_ptr<const Library> library_;
  std::unique_ptr<const Engine> both_;
  std::unique_ptr<const Engine> korean_;   ///< Null before it is needed.
  std::unique_ptr<const Engine> english_;  ///< Null before it is needed.
};

}  // namespace tarqo::ocr
