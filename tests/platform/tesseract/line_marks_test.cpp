#include "platform/tesseract/line_marks.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <variant>

#include "platform/tesseract/tesseract_text_recognizer.h"
#include "tests/platform/tesseract/recognizer_support.h"
#include "tests/platform/tesseract/text_picture.h"

namespace tarqo::ocr {
namespace {

constexpr std::array<const char*, 5> kFonts = {"DejaVu Sans 13px", "DejaVu Sans 14px",
                                               "DejaVu Sans 16px", "DejaVu Sans Mono 14px",
                                               "DejaVu Serif 15px"};

/// The texts in a picture, with a blank between two.
std::string read(const TextPicture& picture) {
  static TesseractTextRecognizer recognizer(realClock());
  const auto result = recognizer.recognize(picture.image());
  std::string all;
  for (const RecognizedLine& line : std::get<std::vector<RecognizedLine>>(result)) {
    all += (all.empty() ? "" : " ") + line.text;
  }
  return all;
}

/// As editors draw it: over the whole height of a line, ascent and descent.
void drawCaret(TextPicture& picture, int x, const PixelBox& text, std::uint32_t colour,
               int widthPx = 1) {
  picture.fill({x, text.top - 3, x + widthPx, text.bottom + 4}, colour);
}

/// A wave of two pixels' height.
void drawSquiggle(TextPicture& picture, int left, int right, int y, std::uint32_t colour) {
  for (int x = left; x < right; ++x) {
    const int up = (x - left) % 4 < 2 ? 0 : 1;
    picture.fill({x, y + up, x + 1, y + up + 1}, colour);
  }
}

TEST(Caret, BesideAWordIsNoLetter) {
  for (const char* font : kFonts) {
    for (const int widthPx : {1, 2}) {
      TextPicture picture(300, 50, 0xFFFFFF);
      const PixelBox text = picture.write(20, 16, "Hello", 0x202020, font);
      drawCaret(picture, text.right + 1, text, 0x202020, widthPx);
      EXPECT_EQ(read(picture), "Hello") << font << " " << widthPx;
    }
  }
}

TEST(Caret, OnADarkGroundIsNoLetterEither) {
  TextPicture picture(300, 50, 0x1E1E1E);
  const PixelBox text = picture.write(20, 16, "Hello there", 0xE0E0E0);
  drawCaret(picture, text.right + 1, text, 0xFFFFFF);
  EXPECT_EQ(read(picture), "Hello there");
}

TEST(Caret, IsFoundBetweenLetters) {
  GrayImage line{9, 16, std::vector<std::uint8_t>(9 * 16, 255)};
  for (int y = 3; y < 12; ++y) {
    line.at(1, y) = 0;
    line.at(7, y) = 0;
  }
  const GrayImage letters = line;
  for (int y = 1; y < 15; ++y) {
    line.at(4, y) = 10;
  }
  removeCaret(line);
  EXPECT_EQ(line.bytes, letters.bytes);
}

TEST(Caret, IsNotWhatIsAsHighAsLettersOrStandsAlone) {
  GrayImage line{9, 16, std::vector<std::uint8_t>(9 * 16, 255)};
  for (int y = 1; y < 15; ++y) {
    line.at(4, y) = 0;
  }
  const GrayImage alone = line;
  removeCaret(line);
  EXPECT_EQ(line.bytes, alone.bytes);
  for (int y = 2; y < 12; ++y) {
    line.at(7, y) = 0;
  }
  const GrayImage besideHigh = line;
  removeCaret(line);
  EXPECT_EQ(line.bytes, besideHigh.bytes);
}

TEST(Caret, IsNoBarBetweenWords) {
  for (const char* font : kFonts) {
    TextPicture picture(300, 50, 0xFFFFFF);
    const PixelBox box = picture.write(20, 16, "Edit|View", 0x202020, font);
    const auto line = lineImage(picture.view(), box);
    ASSERT_TRUE(line);
    // The bar reaches lowest.
    EXPECT_NEAR(line->box.bottom, box.bottom, 1) << font;
  }
}

TEST(ColouredLine, UnderAWordHidesNoLetter) {
  for (const char* font : kFonts) {
    for (const char* word : {"strong", "typing", "Helo"}) {
      TextPicture picture(300, 50, 0xFFFFFF);
      const PixelBox plain = picture.write(250, 16, "x", 0xFFFFFF, font);  // Cannot be seen.
      const PixelBox text = picture.write(20, 16, word, 0x202020, font);
      drawSquiggle(picture, text.left, text.right, plain.bottom + 2, 0xE01B24);
      EXPECT_EQ(read(picture), word) << font;
    }
  }
}

TEST(ColouredLine, IsNotWhatIsWrittenInColour) {
  TextPicture picture(300, 50, 0xFFFFFF);
  const PixelBox text = picture.write(20, 16, "A link to all", 0x1A5FB4);
  EXPECT_TRUE(colouredLineIn(picture.view(), text).empty());
  TextPicture dark(300, 50, 0xFFFFFF);
  EXPECT_TRUE(colouredLineIn(dark.view(), dark.write(20, 16, "No link", 0x202020)).empty());
}

}  // namespace
}  // namespace tarqo::ocr
