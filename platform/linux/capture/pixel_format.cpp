#include "platform/linux/capture/pixel_format.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace tarqo::lnx {
namespace {

/// More of them make no difference once they are rounded to 8.
constexpr int kUsefulBits = 12;

constexpr std::size_t kImageBytesPerPixel = 4;

bool liesSideBySide(std::uint32_t mask) {
  return mask != 0 &&
         std::has_single_bit((static_cast<std::uint64_t>(mask) >> std::countr_zero(mask)) + 1);
}

/// One colour of a pixel, in 8 bits.
class Channel {
 public:
  explicit Channel(std::uint32_t mask)
      : shift_(std::countr_zero(mask) + std::max(std::popcount(mask) - kUsefulBits, 0)),
        largest_((1U << std::min(std::popcount(mask), kUsefulBits)) - 1),
        scaled_(largest_ + 1) {
    for (std::uint32_t value = 0; value <= largest_; ++value) {
      scaled_[value] = static_cast<std::uint8_t>((value * 255 + largest_ / 2) / largest_);
    }
  }

  [[nodiscard]] std::uint8_t of(std::uint32_t pixel) const {
    return scaled_[(pixel >> shift_) & largest_];
  }

 private:
  int shift_;
  std::uint32_t largest_;
  std::vector<std::uint8_t> scaled_;
};

template <std::size_t bytesPerPixel, bool bigEndian>
std::uint32_t pixelAt(const std::uint8_t* bytes) {
  std::uint32_t pixel = 0;
  for (std::size_t i = 0; i < bytesPerPixel; ++i) {
    pixel |= static_cast<std::uint32_t>(bytes[bigEndian ? bytesPerPixel - 1 - i : i]) << (8 * i);
  }
  return pixel;
}

template <std::size_t bytesPerPixel, bool bigEndian>
void convert(const PixelFormat& format, std::span<const std::uint8_t> rows, png::Bgrx& image) {
  const Channel red(format.redMask);
  const Channel green(format.greenMask);
  const Channel blue(format.blueMask);
  const std::size_t stride = format.strideBytes(image.widthPx);
  std::uint8_t* to = image.bytes.data();
  for (int row = 0; row < image.heightPx; ++row) {
    const std::uint8_t* from = rows.data() + static_cast<std::size_t>(row) * stride;
    for (int column = 0; column < image.widthPx; ++column) {
      const std::uint32_t pixel = pixelAt<bytesPerPixel, bigEndian>(from);
      to[0] = blue.of(pixel);
      to[1] = green.of(pixel);
      to[2] = red.of(pixel);
      from += bytesPerPixel;
      to += kImageBytesPerPixel;
    }
  }
}

template <std::size_t bytesPerPixel>
void convertInOrder(const PixelFormat& format, std::span<const std::uint8_t> rows,
                    png::Bgrx& image) {
  if (format.bigEndian) {
    convert<bytesPerPixel, true>(format, rows, image);
  } else {
    convert<bytesPerPixel, false>(format, rows, image);
  }
}

}  // namespace

std::size_t PixelFormat::strideBytes(int widthPx) const {
  const auto pad = static_cast<std::size_t>(scanlinePadBits);
  const std::size_t bits =
      static_cast<std::size_t>(widthPx) * static_cast<std::size_t>(bitsPerPixel);
  return (bits + pad - 1) / pad * pad / 8;
}

bool PixelFormat::isBgrx() const {
  return bitsPerPixel == 32 && !bigEndian && redMask == 0xff0000 && greenMask == 0xff00 &&
         blueMask == 0xff;
}

bool PixelFormat::isReadable() const {
  const bool hasWholeBytes = bitsPerPixel == 16 || bitsPerPixel == 24 || bitsPerPixel == 32;
  return hasWholeBytes && liesSideBySide(redMask) && liesSideBySide(greenMask) &&
         liesSideBySide(blueMask);
}

png::Bgrx toBgrx(const PixelFormat& format, int widthPx, int heightPx,
                 std::span<const std::uint8_t> rows) {
  png::Bgrx image{widthPx, heightPx, {}};
  image.bytes.resize(static_cast<std::size_t>(widthPx) * static_cast<std::size_t>(heightPx) *
                     kImageBytesPerPixel);
  switch (format.bitsPerPixel) {
    case 16:
      convertInOrder<2>(format, rows, image);
      break;
    case 24:
      convertInOrder<3>(format, rows, image);
      break;
    default:
      convertInOrder<4>(format, rows, image);
      break;
  }
  return image;
}

}  // namespace tarqo::lnx
