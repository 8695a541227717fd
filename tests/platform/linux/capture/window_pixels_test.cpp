#include "platform/linux/capture/window_pixels.h"

#include <gtest/gtest.h>

#include <vector>

namespace tarqo::lnx::capture {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr PixelFormat k16Bits{
    .bitsPerPixel = 16, .redMask = 0xf800, .greenMask = 0x07e0, .blueMask = 0x001f};
constexpr PixelFormat k30Bits{
    .bitsPerPixel = 32, .redMask = 0x3ff00000, .greenMask = 0x000ffc00, .blueMask = 0x000003ff};
constexpr PixelFormat k24Bits{
    .bitsPerPixel = 24, .redMask = 0xff0000, .greenMask = 0xff00, .blueMask = 0xff};
constexpr PixelFormat k32Bits{
    .bitsPerPixel = 32, .redMask = 0xff0000, .greenMask = 0xff00, .blueMask = 0xff};

TEST(PixelFormat, NeedsNoConversionAsImagesHoldIt) {
  EXPECT_TRUE(k32Bits.isBgrx());
  EXPECT_FALSE(k30Bits.isBgrx());
  EXPECT_FALSE(k24Bits.isBgrx());
  PixelFormat other = k32Bits;
  other.bigEndian = true;
  EXPECT_FALSE(other.isBgrx());
  other = k32Bits;
  std::swap(other.redMask, other.blueMask);
  EXPECT_FALSE(other.isBgrx());
}

TEST(PixelFormat, IsReadableWithColoursInWholePixels) {
  for (const PixelFormat& format : {k16Bits, k24Bits, k30Bits, k32Bits}) {
    EXPECT_TRUE(format.isReadable()) << format.bitsPerPixel;
  }
  EXPECT_FALSE(PixelFormat{}.isReadable());
  EXPECT_FALSE((PixelFormat{.bitsPerPixel = 32}.isReadable())) << "an index into a table";
  EXPECT_FALSE((PixelFormat{.bitsPerPixel = 8, .redMask = 7, .greenMask = 0x38, .blueMask = 0xc0}
                    .isReadable()));
  PixelFormat torn = k32Bits;
  torn.greenMask = 0xa500;
  EXPECT_FALSE(torn.isReadable());
}

TEST(PixelFormat, FillsRowsUp) {
  EXPECT_EQ(k16Bits.strideBytes(4), 8U);
  EXPECT_EQ(k16Bits.strideBytes(3), 8U);
  EXPECT_EQ(k24Bits.strideBytes(3), 12U);
  EXPECT_EQ(k32Bits.strideBytes(3), 12U);
  PixelFormat tight = k16Bits;
  tight.scanlinePadBits = 8;
  EXPECT_EQ(tight.strideBytes(3), 6U);
}

TEST(PixelConversion, StretchesColoursOf16Bits) {
  // White, red, green, blue, black, a middle grey; filled up to 3 pixels a row plus one unused.
  const Bytes rows{0xff, 0xff, 0x00, 0xf8, 0xe0, 0x07, 0xee, 0xee,
                   0x1f, 0x00, 0x00, 0x00, 0x10, 0x84, 0xee, 0xee};
  const png::Bgrx image = toBgrx(k16Bits, 3, 2, rows);
  EXPECT_EQ(image.widthPx, 3);
  EXPECT_EQ(image.heightPx, 2);
  EXPECT_EQ(image.bytes, (Bytes{255, 255, 255, 0, 0, 0, 255, 0, 0,   255, 0,   0,
                                255, 0,   0,   0, 0, 0, 0,   0, 132, 130, 132, 0}));
}

TEST(PixelConversion, RoundsColoursOf30Bits) {
  // Red 1023, green 512, blue 0; then red 0, green 2, blue 1021.
  const Bytes rows{0x00, 0x00, 0xf8, 0x3f, 0xfd, 0x0b, 0x00, 0x00};
  EXPECT_EQ(toBgrx(k30Bits, 2, 1, rows).bytes, (Bytes{0, 128, 255, 0, 255, 0, 0, 0}));
}

TEST(PixelConversion, ReadsPackedPixels) {
  const Bytes rows{1, 2, 3, 4, 5, 6, 0xee, 0xee};
  EXPECT_EQ(toBgrx(k24Bits, 2, 1, rows).bytes, (Bytes{1, 2, 3, 0, 4, 5, 6, 0}));
}

TEST(PixelConversion, FollowsTheMasks) {
  PixelFormat swapped = k32Bits;
  std::swap(swapped.redMask, swapped.blueMask);
  EXPECT_EQ(toBgrx(swapped, 1, 1, Bytes{1, 2, 3, 4}).bytes, (Bytes{3, 2, 1, 0}));
}

TEST(PixelConversion, ReadsBothByteOrders) {
  PixelFormat format = k32Bits;
  format.bigEndian = true;
  EXPECT_EQ(toBgrx(format, 1, 1, Bytes{4, 3, 2, 1}).bytes, (Bytes{1, 2, 3, 0}));
  format = k16Bits;
  format.bigEndian = true;
  EXPECT_EQ(toBgrx(format, 1, 1, Bytes{0xf8, 0x00, 0xee, 0xee}).bytes, (Bytes{0, 0, 255, 0}));
  format = k24Bits;
  format.bigEndian = true;
  EXPECT_EQ(toBgrx(format, 1, 1, Bytes{3, 2, 1, 0xee}).bytes, (Bytes{1, 2, 3, 0}));
}

TEST(PixelConversion, KeepsTheEndsOfVeryDeepColours) {
  const PixelFormat deep{
      .bitsPerPixel = 32, .redMask = 0xffff0000, .greenMask = 0x0000fff0, .blueMask = 0x0000000f};
  EXPECT_EQ(toBgrx(deep, 1, 1, Bytes{0xff, 0xff, 0xff, 0xff}).bytes, (Bytes{255, 255, 255, 0}));
  EXPECT_EQ(toBgrx(deep, 1, 1, Bytes{0, 0, 0, 0}).bytes, (Bytes{0, 0, 0, 0}));
}

}  // namespace
}  // namespace tarqo::lnx::capture
