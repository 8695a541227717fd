// The recogniser where language data is missing, and what it writes to the standard streams.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/tesseract/tesseract_text_recognizer.h"
#include "tests/platform/tesseract/recognizer_support.h"
#include "tests/platform/tesseract/text_picture.h"

namespace tarqo::ocr {
namespace {

namespace fs = std::filesystem;

/// The folder with the language data that is installed.
fs::path installedData() {
  for (const fs::path folder : {"/usr/share/tesseract-ocr/5/tessdata", "/usr/share/tessdata"}) {
    if (fs::exists(folder / "kor.traineddata")) {
      return folder;
    }
  }
  return {};
}

void install(const Folder& folder, const std::string& language) {
  const std::string file = language + ".traineddata";
  fs::create_symlink(installedData() / file, folder.path() / file);
}

std::string errorOf(TesseractTextRecognizer& recognizer) {
  const auto result = recognizer.recognize(TextPicture(100, 50, 0xFFFFFF).image());
  const auto* error = std::get_if<std::string>(&result);
  return error != nullptr ? *error : "";
}

TEST(MissingLanguageData, IsNamedByItsPackages) {
  const Folder folder;
  TesseractTextRecognizer recognizer(realClock(), folder.path());
  EXPECT_EQ(
      errorOf(recognizer),
      "Text in pictures cannot be read: language data of Tesseract is missing. Install the "
      "package \"tesseract-ocr-kor\" and the package \"tesseract-ocr-eng\" and observe again.");
}

TEST(MissingLanguageData, IsAnErrorWhenOneLanguageIsThere) {
  for (const auto& [there, missing] : {std::pair("eng", "kor"), std::pair("kor", "eng")}) {
    const Folder folder;
    install(folder, there);
    TesseractTextRecognizer recognizer(realClock(), folder.path());
    EXPECT_EQ(errorOf(recognizer),
              "Text in pictures cannot be read: language data of Tesseract is missing. Install the "
              "package \"tesseract-ocr-" +
                  std::string(missing) + "\" and observe again.");
  }
}

TEST(MissingLanguageData, IsFoundOnceItIsInstalled) {
  const Folder folder;
  TesseractTextRecognizer recognizer(realClock(), folder.path());
  EXPECT_NE(errorOf(recognizer), "");
  install(folder, "kor");
  install(folder, "eng");
  EXPECT_EQ(errorOf(recognizer), "");
}

/// Sends both standard streams into a file for as long as it lives.
class CaughtStreams {
 public:
  CaughtStreams() {
    std::fflush(nullptr);
    file_ = fileno(scratch_.get());
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
      kept_.push_back(dup(stream));
      dup2(file_, stream);
    }
  }
  ~CaughtStreams() {
    dup2(kept_[0], STDOUT_FILENO);
    dup2(kept_[1], STDERR_FILENO);
    close(kept_[0]);
    close(kept_[1]);
  }
  CaughtStreams(const CaughtStreams&) = delete;
  CaughtStreams& operator=(const CaughtStreams&) = delete;

  [[nodiscard]] std::size_t writtenBytes() const {
    std::fflush(nullptr);
    struct stat status {};
    fstat(file_, &status);
    return static_cast<std::size_t>(status.st_size);
  }

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Close> scratch_{std::tmpfile()};
  int file_ = -1;
  std::vector<int> kept_;
};

TEST(TextRecognizer, WritesNothingToTheStandardStreams) {
  const Folder folder;
  TextPicture picture(400, 200, 0xFFFFFF);
  picture.write(20, 20, "Some words to read");
  picture.frame({20, 60, 22, 62}, 0).fill({300, 100, 390, 190}, 0x808080);
  const CaughtStreams streams;
  {
    TesseractTextRecognizer lacking(realClock(), folder.path());
    (void)lacking.recognize(picture.image());
    TesseractTextRecognizer recognizer(realClock());
    (void)recognizer.recognize(picture.image());
    (void)recognizer.recognize(TextPicture(3, 3, 0).image());
  }
  EXPECT_EQ(streams.writtenBytes(), 0U);
}

}  // namespace
}  // namespace tarqo::ocr
