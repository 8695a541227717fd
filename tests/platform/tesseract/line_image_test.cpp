#include "platform/tesseract/line_image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "tests/platform/tesseract/text_picture.h"

namespace tarqo::ocr {
namespace {

/// Their luminance is 76, both.
constexpr std::uint32_t kRed = 0xFF0000;
constexpr std::uint32_t kGreen = 0x008200;

/// Two bars in a line of 16x6 pixels at 20, 10.
constexpr PixelBox kLine{20, 10, 36, 16};
TextPicture barsOf(std::uint32_t colour, std::uint32_t ground) {
  TextPicture picture(80, 40, ground);
  picture.fill({20, 10, 24, 16}, colour).fill({32, 10, 36, 16}, colour);
  return picture;
}

/// The shade in the middle of a pixel of the whole image.
std::uint8_t shadeAt(const LineImage& line, int x, int y) {
  const auto inLine = [&](int px) {
    return static_cast<int>((px + line.marginPx + 0.5) * line.scale);
  };
  return line.pixels.at(inLine(x - line.box.left), inLine(y - line.box.top));
}

void expectBarsBlackOnWhite(const TextPicture& picture) {
  const std::optional<LineImage> line = lineImage(picture.view(), kLine);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->box, kLine);
  EXPECT_LT(shadeAt(*line, 22, 13), 20);
  EXPECT_LT(shadeAt(*line, 34, 13), 20);
  EXPECT_GT(shadeAt(*line, 28, 13), 235);
}

TEST(LineImage, IsBlackOnWhiteWhateverTheColours) {
  expectBarsBlackOnWhite(barsOf(0x000000, 0xFFFFFF));
  expectBarsBlackOnWhite(barsOf(0xFFFFFF, 0x000000));
  expectBarsBlackOnWhite(barsOf(0x808080, 0x909090));
  expectBarsBlackOnWhite(barsOf(0x0000FF, 0x000000));
}

TEST(LineImage, ShowsInkThatIsAsLightAsItsGround) {
  expectBarsBlackOnWhite(barsOf(kRed, kGreen));
  expectBarsBlackOnWhite(barsOf(kGreen, kRed));
}

TEST(LineImage, IsTheInkAloneWhenTheBoxIsLarger) {
  const std::optional<LineImage> line = lineImage(barsOf(kRed, kGreen).view(), {10, 5, 70, 30});
  ASSERT_TRUE(line);
  EXPECT_EQ(line->box, kLine);
}

TEST(LineImage, IsNoneWithoutInk) {
  const TextPicture picture(80, 40, kGreen);
  for (const PixelBox& box :
       {kLine, PixelBox{0, 0, 79, 39}, PixelBox{20, 10, 20, 16}, PixelBox{}}) {
    EXPECT_FALSE(lineImage(picture.view(), box));
  }
}

TEST(LineImage, IsNoneOfAWhitePictureAsAWhole) {
  EXPECT_FALSE(lineImage(TextPicture(80, 40, 0xFFFFFF).view(), {0, 0, 80, 40}));
}

TEST(LineImage, EnlargesLowLinesWithTheirMargin) {
  const std::optional<LineImage> line = lineImage(barsOf(0, 0xFFFFFF).view(), kLine);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->scale, 4);
  EXPECT_EQ(line->pixels.widthPx, 4 * (16 + 2 * line->marginPx));
  EXPECT_EQ(line->pixels.heightPx, 4 * (6 + 2 * line->marginPx));
}

}  // namespace
}  // namespace tarqo::ocr
