#include "platform/tesseract/text_regions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <random>

#include "tests/platform/tesseract/text_picture.h"

namespace tarqo::ocr {
namespace {

constexpr const char* kKorean = "NanumGothic 16px";

void expectNear(const PixelBox& found, const PixelBox& drawn) {
  EXPECT_NEAR(found.left, drawn.left, 1);
  EXPECT_NEAR(found.top, drawn.top, 1);
  EXPECT_NEAR(found.right, drawn.right, 1);
  EXPECT_NEAR(found.bottom, drawn.bottom, 1);
}

/// Given from left to right.
void expectLines(const TextPicture& picture, const std::vector<PixelBox>& drawn) {
  TextRegions regions = findTextRegions(picture.view());
  EXPECT_TRUE(regions.pictures.empty());
  std::ranges::stable_sort(regions.lines, {}, &PixelBox::left);
  ASSERT_EQ(regions.lines.size(), drawn.size());
  for (std::size_t i = 0; i < drawn.size(); ++i) {
    expectNear(regions.lines[i], drawn[i]);
  }
}

TEST(TextRegions, AreNoneWithoutInk) { expectLines(TextPicture(300, 100, 0x808080), {}); }

TEST(TextRegions, HoldAllWordsOfALine) {
  TextPicture picture(700, 100, 0xFFFFFF);
  const PixelBox line = picture.write(20, 20, "It's \"so\" far, i.e. 3 - 2 = 1; yes?");
  expectLines(picture, {line});
}

TEST(TextRegions, HoldTheStrokesAndRingsOfHangul) {
  TextPicture picture(500, 100, 0xFFFFFF);
  const PixelBox line = picture.write(20, 20, "그으로 을를 회의 흐름, 이응", 0x202020, kKorean);
  expectLines(picture, {line});
}

TEST(TextRegions, HoldWordsOfAFixedWidthFont) {
  TextPicture picture(500, 100, 0xFFFFFF);
  expectLines(picture, {picture.write(20, 20, "done: 3 of 7 files", 0, "DejaVu Sans Mono 16px")});
}

TEST(TextRegions, KeepLinesOfAParagraphApart) {
  TextPicture picture(500, 100, 0xFFFFFF);
  const PixelBox first = picture.write(20, 20, "gypsy jumping, jpg");
  expectLines(picture, {first, picture.write(24, 37, "Tall island (bold) list")});
}

TEST(TextRegions, KeepColumnsOfATableApart) {
  TextPicture picture(500, 100, 0xFFFFFF);
  const PixelBox first = picture.write(20, 20, "Name");
  expectLines(picture, {first, picture.write(first.right + 20, 20, "Make")});
}

TEST(TextRegions, KeepTextOnDifferentSurfacesApart) {
  TextPicture picture(500, 100, 0xFFFFFF);
  picture.fill({100, 0, 500, 100}, 0x203050);
  const PixelBox first = picture.write(60, 30, "Total");
  expectLines(picture, {first, picture.write(104, 30, "Hotel", 0xFFFFFF)});
}

TEST(TextRegions, FindLightTextOnAButtonWithoutItsBorder) {
  TextPicture picture(300, 100, 0xF6F5F4);
  picture.fill({100, 30, 200, 66}, 0x3584E4).frame({100, 30, 200, 66}, 0x1B4A80);
  expectLines(picture, {picture.write(128, 39, "Apply", 0xFFFFFF)});
}

TEST(TextRegions, HoldLargeFlatLettersApartFromSmallOnes) {
  TextPicture picture(700, 200, 0xFFFFFF);
  const PixelBox large = picture.write(20, 20, "Welcome", 0, "DejaVu Sans Bold 80px");
  const PixelBox small = picture.write(20, 150, "to the tour");
  const TextRegions regions = findTextRegions(picture.view());
  ASSERT_EQ(regions.large.size(), 1U);
  expectNear(regions.large.front(), large);
  ASSERT_FALSE(regions.lines.empty());
  expectNear(regions.lines.back(), small);
}

TEST(TextRegions, LeaveOutEmptyButtonsAndLoneIcons) {
  TextPicture picture(700, 200, 0xFFFFFF);
  picture.fill({20, 20, 80, 60}, 0x3584E4).fill({100, 20, 160, 60}, 0xC01C28);
  // A folder.
  picture.fill({300, 20, 330, 30}, 0x3584E4).fill({300, 30, 364, 74}, 0x3584E4);
  expectLines(picture, {});
  EXPECT_TRUE(findTextRegions(picture.view()).large.empty());
}

TEST(TextRegions, LeaveOutRulesAndTextCursors) {
  TextPicture picture(500, 100, 0xFFFFFF);
  picture.fill({0, 60, 500, 61}, 0xC0C0C0).fill({300, 20, 301, 38}, 0);
  expectLines(picture, {picture.write(20, 20, "Search")});
}

TEST(TextRegions, HoldSingleLettersAndDigits) {
  TextPicture picture(300, 100, 0xFFFFFF);
  const PixelBox first = picture.write(40, 20, "7");
  expectLines(picture, {first, picture.write(140, 20, "X")});
}

TEST(TextRegions, AreTheSameLinesAtTwiceTheScale) {
  TextPicture picture(1000, 200, 0xFFFFFF);
  const PixelBox line =
      picture.write(40, 40, "It's \"so\" 그으로 far?", 0x202020, "NanumGothic 28px");
  expectLines(picture, {line});
}

TEST(TextRegions, AreTheLinesOfThePage) {
  TextPicture picture(textpage::kWidthPx, textpage::kHeightPx, 0xFFFFFF);
  const auto drawn = picture.drawPage();
  const TextRegions regions = findTextRegions(picture.view());
  EXPECT_EQ(regions.lines.size(), drawn.size());
  for (const textpage::DrawnLine& line : drawn) {
    EXPECT_TRUE(std::ranges::any_of(regions.lines, [&](const PixelBox& box) {
      return std::abs(box.left - line.x) <= 4 && std::abs(box.top - line.y) <= 4 &&
             std::abs(box.right - line.x - line.width) <= 4 &&
             std::abs(box.bottom - line.y - line.height) <= 4;
    })) << line.text;
  }
}

TEST(TextRegions, AreAPictureWhereThereIsNothingButNoise) {
  TextPicture picture(400, 300, 0xFFFFFF);
  std::minstd_rand random(1);
  for (int y = 0; y < 300; ++y) {
    for (int x = 100; x < 400; ++x) {
      picture.fill({x, y, x + 1, y + 1}, static_cast<std::uint32_t>(random() & 0xFFFFFFU));
    }
  }
  const TextRegions regions = findTextRegions(picture.view());
  EXPECT_TRUE(regions.lines.empty());
  ASSERT_EQ(regions.pictures.size(), 1U);
  EXPECT_EQ(regions.pictures[0], (PixelBox{100, 0, 400, 300}));
}

/// Fills it with squares of four pixels and, in between, with dots of one.
void dither(TextPicture& picture, const PixelBox& box) {
  for (int y = box.top; y + 4 <= box.bottom; y += 6) {
    for (int x = box.left; x + 4 <= box.right; x += 6) {
      if ((x / 6 + y / 6) % 2 == 0) {
        picture.fill({x, y, x + 4, y + 4}, 0);
      } else {
        picture.fill({x, y, x + 1, y + 1}, 0).fill({x + 2, y, x + 3, y + 1}, 0);
        picture.fill({x, y + 2, x + 1, y + 3}, 0).fill({x + 2, y + 2, x + 3, y + 3}, 0);
      }
    }
  }
}

TEST(TextRegions, AreFoundBesideManyThousandSpecks) {
  TextPicture picture(2560, 1600, 0xFFFFFF);
  dither(picture, {0, 0, 2560, 1300});
  const PixelBox line = picture.write(40, 1400, "It's here, i.e. below");
  const auto start = std::chrono::steady_clock::now();
  expectLines(picture, {line});
  // It takes less than a second, and a minute when each speck is compared with all others.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

}  // namespace
}  // namespace tarqo::ocr
