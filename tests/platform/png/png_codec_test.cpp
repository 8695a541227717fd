#include "platform/png/png_codec.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace tarqo::png {
namespace {

Bgrx gradient(int width, int height) {
  Bgrx image{width, height, {}};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (const int channel : {x, y, x + y, 0}) {
        image.bytes.push_back(static_cast<std::uint8_t>(channel));
      }
    }
  }
  return image;
}

std::uint32_t bigEndian(const std::string& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    value = value << 8U | static_cast<std::uint8_t>(bytes[at + i]);
  }
  return value;
}

TEST(PngCodec, BringsBackEveryPixel) {
  const Bgrx image = gradient(37, 19);

  const Encoded encoded = encode(image.view());
  const std::optional<Bgrx> decoded = decode(encoded.bytes);

  ASSERT_FALSE(encoded.error);
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->widthPx, 37);
  EXPECT_EQ(decoded->heightPx, 19);
  EXPECT_EQ(decoded->bytes, image.bytes);
}

TEST(PngCodec, WritesAnOpaqueTrueColourFile) {
  const std::string bytes = encode(gradient(5, 3).view()).bytes;

  EXPECT_EQ(bytes.substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
  EXPECT_EQ(bytes.substr(12, 4), "IHDR");
  EXPECT_EQ(bigEndian(bytes, 16), 5U);
  EXPECT_EQ(bigEndian(bytes, 20), 3U);
  EXPECT_EQ(bytes[24], 8) << "bits a channel";
  EXPECT_EQ(bytes[25], 2) << "colour type: red, green, blue";
}

TEST(PngCodec, IgnoresTheUnusedByteOfAPixel) {
  Bgrx image = gradient(4, 4);
  const Bgrx clean = image;
  for (std::size_t at = 3; at < image.bytes.size(); at += 4) {
    image.bytes[at] = 0xAB;
  }

  EXPECT_EQ(decode(encode(image.view()).bytes)->bytes, clean.bytes);
}

TEST(PngCodec, SkipsThePaddingBetweenRows) {
  const Bgrx image = gradient(3, 2);
  std::vector<std::uint8_t> padded;
  for (std::size_t row = 0; row < 2; ++row) {
    padded.insert(padded.end(), image.bytes.begin() + static_cast<std::ptrdiff_t>(row * 12),
                  image.bytes.begin() + static_cast<std::ptrdiff_t>(row * 12 + 12));
    if (row == 0) {
      padded.insert(padded.end(), 20, 0xEE);
    }
  }

  const Encoded encoded = encode({3, 2, 32, padded});

  ASSERT_FALSE(encoded.error);
  EXPECT_EQ(decode(encoded.bytes)->bytes, image.bytes);
}

TEST(PngCodec, HasNoEncoderForAnImageWithoutPixels) {
  for (const BgrxView& view :
       {BgrxView{0, 5, 0, {}}, BgrxView{5, 0, 20, {}}, BgrxView{-1, 1, 4, {}}}) {
    const Encoded encoded = encode(view);
    EXPECT_EQ(encoded.error, EncodeError::noEncoder);
    EXPECT_EQ(encoded.bytes, "");
  }
}

TEST(PngCodec, HasNoEncoderForFewerBytesThanPixels) {
  const std::vector<std::uint8_t> bytes(4 * 10 * 10 - 1);

  EXPECT_EQ(encode({10, 10, 40, bytes}).error, EncodeError::noEncoder);
  EXPECT_EQ(encode({10, 10, 39, bytes}).error, EncodeError::noEncoder);
}

TEST(PngCodec, EncodesImagesWiderThanTheLibraryAllowsByItself) {
  const std::vector<std::uint8_t> row(std::size_t{4} * 1'000'001);

  EXPECT_FALSE(encode({1'000'001, 1, row.size(), row}).error);
}

TEST(PngCodec, DecodesNothingFromOtherBytes) {
  EXPECT_FALSE(decode(""));
  EXPECT_FALSE(decode("GIF89a"));
  EXPECT_FALSE(decode(std::string(4096, '\0')));
}

TEST(PngCodec, DecodesNothingFromAnyBeginningOfAFile) {
  const std::string bytes = encode(gradient(16, 16).view()).bytes;
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    EXPECT_FALSE(decode(bytes.substr(0, length))) << length << " bytes";
  }
}

TEST(PngCodec, SurvivesEveryBrokenByte) {
  const std::string bytes = encode(gradient(16, 16).view()).bytes;
  std::size_t refused = 0;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    std::string broken = bytes;
    broken[at] = static_cast<char>(~broken[at]);
    refused += decode(broken) ? 0 : 1;
  }
  // Each chunk carries a checksum, so a broken byte hardly ever goes unnoticed.
  EXPECT_GT(refused, bytes.size() * 9 / 10);
}

TEST(PngCodec, DoesNotBelieveAHeaderThatClaimsMoreThanTheFileCanHold) {
  // A complete header of 60000 x 60000 pixels with a correct checksum, and nothing else.
  const std::string header("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\0\0\xea\x60\0\0\xea\x60\x08\x02\0\0\0",
                           29);
  std::string bytes = header;
  std::uint32_t checksum = 0xFFFFFFFFU;
  for (std::size_t at = 12; at < 29; ++at) {
    checksum ^= static_cast<std::uint8_t>(bytes[at]);
    for (int bit = 0; bit < 8; ++bit) {
      checksum = (checksum >> 1U) ^ ((checksum & 1U) != 0 ? 0xEDB88320U : 0U);
    }
  }
  checksum = ~checksum;
  for (const unsigned shift : {24U, 16U, 8U, 0U}) {
    bytes += static_cast<char>(checksum >> shift & 0xFFU);
  }
  bytes += std::string("\0\0\0\0IDAT\x35\xaf\x06\x1e", 12);

  EXPECT_FALSE(decode(bytes));
}

TEST(PngCodec, CompressesAScreenOfOneColour) {
  const Bgrx image{800, 600, std::vector<std::uint8_t>(std::size_t{800} * 600 * 4, 0x7F)};

  EXPECT_LT(encode(image.view()).bytes.size(), 20'000U);
}

// Files of one pixel, as other programs write them.
constexpr std::array<std::uint8_t, 67> kGrey = {
    0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48,
    0x44, 0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x08, 0x00, 0x00, 0x00,
    0x00, 0x3a, 0x7e, 0x9b, 0x55, 0x00, 0x00, 0x00, 0x0a, 0x49, 0x44, 0x41, 0x54, 0x78,
    0x9c, 0x63, 0x68, 0x00, 0x00, 0x00, 0x82, 0x00, 0x81, 0x77, 0xcd, 0x72, 0xb6, 0x00,
    0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82};
constexpr std::array<std::uint8_t, 99> kPalette = {
    0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48, 0x44,
    0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x08, 0x03, 0x00, 0x00, 0x00, 0x28,
    0xcb, 0x34, 0xbb, 0x00, 0x00, 0x00, 0x06, 0x50, 0x4c, 0x54, 0x45, 0xff, 0x00, 0x00, 0x00,
    0xff, 0x0a, 0x32, 0x52, 0x06, 0x6f, 0x00, 0x00, 0x00, 0x02, 0x74, 0x52, 0x4e, 0x53, 0xff,
    0x80, 0x08, 0x0f, 0xb3, 0x6a, 0x00, 0x00, 0x00, 0x0a, 0x49, 0x44, 0x41, 0x54, 0x78, 0x9c,
    0x63, 0x60, 0x04, 0x00, 0x00, 0x03, 0x00, 0x02, 0x4b, 0xf5, 0xdd, 0xea, 0x00, 0x00, 0x00,
    0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82};
constexpr std::array<std::uint8_t, 74> kSixteenBits = {
    0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48, 0x44,
    0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x10, 0x06, 0x00, 0x00, 0x00, 0x4f,
    0x85, 0x18, 0xca, 0x00, 0x00, 0x00, 0x11, 0x49, 0x44, 0x41, 0x54, 0x78, 0x9c, 0x63, 0x10,
    0x64, 0x50, 0x62, 0x30, 0x66, 0x70, 0x61, 0x00, 0x00, 0x02, 0xb1, 0x00, 0xab, 0xc8, 0x1a,
    0x03, 0x4c, 0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82};

template <std::size_t count>
std::vector<std::uint8_t> pixelsOf(const std::array<std::uint8_t, count>& file) {
  const std::optional<Bgrx> image = decode(std::string(file.begin(), file.end()));
  return image ? image->bytes : std::vector<std::uint8_t>{};
}

TEST(PngCodec, DecodesAnyKindOfFileToColoursWithoutTransparency) {
  using Pixel = std::vector<std::uint8_t>;
  EXPECT_EQ(pixelsOf(kGrey), (Pixel{0x80, 0x80, 0x80, 0}));
  EXPECT_EQ(pixelsOf(kPalette), (Pixel{10, 255, 0, 0}));
  EXPECT_EQ(pixelsOf(kSixteenBits), (Pixel{0x33, 0x22, 0x11, 0}));
}

}  // namespace
}  // namespace tarqo::png
