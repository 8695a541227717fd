#include "platform/tesseract/surfaces.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/platform/tesseract/text_picture.h"

namespace tarqo::ocr {
namespace {

TEST(Ink, IsNoneOnAnEmptySurface) {
  EXPECT_TRUE(findInk(TextPicture(200, 100, 0xFFFFFF).view()).empty());
}

TEST(Ink, IsNoneInAPictureWithoutPixels) { EXPECT_TRUE(findInk({}).empty()); }

TEST(Ink, IsEachSeparateShapeWithItsBox) {
  TextPicture picture(200, 100, 0xFFFFFF);
  picture.fill({10, 20, 18, 34}, 0x000000).fill({100, 50, 112, 53}, 0xCC0000);
  const auto parts = findInk(picture.view());
  ASSERT_EQ(parts.size(), 2U);
  EXPECT_EQ(parts[0].box, (PixelBox{10, 20, 18, 34}));
  EXPECT_EQ(parts[0].areaPx, 8 * 14);
  EXPECT_EQ(parts[1].box, (PixelBox{100, 50, 112, 53}));
}

TEST(Ink, HangsTogetherAtCorners) {
  TextPicture picture(200, 100, 0xFFFFFF);
  picture.fill({10, 10, 14, 14}, 0).fill({14, 14, 18, 18}, 0);
  EXPECT_EQ(findInk(picture.view()).size(), 1U);
}

TEST(Ink, StandsOnTheSurfaceAroundIt) {
  TextPicture picture(400, 100, 0xFFFFFF);
  picture.fill({200, 0, 400, 100}, 0x2050C0);
  picture.fill({20, 40, 28, 50}, 0).fill({60, 40, 68, 50}, 0).fill({300, 40, 308, 50}, 0xFFFFFF);
  const auto parts = findInk(picture.view());
  ASSERT_EQ(parts.size(), 3U);
  EXPECT_EQ(parts[0].surface, parts[1].surface);
  EXPECT_NE(parts[0].surface, parts[2].surface);
  EXPECT_GE(parts[0].surface, 0);
}

TEST(Ink, IsNotWhereASurfaceChangesSlowly) {
  TextPicture picture(300, 256, 0xFFFFFF);
  for (int y = 0; y < 256; ++y) {
    picture.fill({0, y, 300, y + 1}, static_cast<std::uint32_t>(y * 0x010101));
  }
  EXPECT_TRUE(findInk(picture.view()).empty());
}

TEST(Ink, DividesWhereItIsTheBorderOfAButton) {
  TextPicture picture(300, 100, 0xFFFFFF);
  picture.fill({50, 20, 150, 60}, 0xDDDDDD).frame({50, 20, 150, 60}, 0x555555);
  picture.fill({90, 35, 100, 45}, 0);
  const auto parts = findInk(picture.view());
  ASSERT_EQ(parts.size(), 2U);
  EXPECT_TRUE(parts[0].divides);
  EXPECT_FALSE(parts[1].divides);
}

TEST(Ink, OfAPictureWithoutSurfacesStandsOnNone) {
  TextPicture picture(100, 100, 0xFFFFFF);
  for (int y = 0; y < 100; y += 2) {
    for (int x = 0; x < 100; x += 2) {
      picture.fill({x, y, x + 1, y + 1}, 0).fill({x + 1, y + 1, x + 2, y + 2}, 0);
    }
  }
  const auto parts = findInk(picture.view());
  ASSERT_EQ(parts.size(), 1U);
  EXPECT_EQ(parts[0].surface, -1);
}

}  // namespace
}  // namespace tarqo::ocr
