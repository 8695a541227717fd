#include "platform/tesseract/line_image.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

#include "platform/tesseract/line_marks.h"

namespace tarqo::ocr {
namespace {

/// Lines are enlarged to this height, at most fourfold: the recogniser was trained on lines of
/// 36 (English) and 48 (Korean) pixels, and reads smaller ones worse.
constexpr double kLineHeightPx = 30;
constexpr double kMaxScale = 4;
/// Less white around a line, or more, costs words.
constexpr int kMarginPx = 4;
/// Where the ground of a line is looked for: just outside of its box.
constexpr int kGroundPx = 2;
/// The share of a line's contrast that makes a pixel ink; what a lossy picture smears is less.
constexpr int kInkPercent = 25;

/// What makes a shade of grey of a pixel: the shares of blue, green and red, in 256ths.
using Shade = std::array<int, 3>;
constexpr Shade kLuminance = {29, 150, 77};
/// For ink as light as its ground, as red on green can be.
constexpr std::array<Shade, 3> kChannels = {{{256, 0, 0}, {0, 256, 0}, {0, 0, 256}}};
/// How many times the contrast of the luminance a channel must have to be used instead.
constexpr int kClearer = 2;

std::uint8_t shadeAt(const png::BgrxView& image, int x, int y, const Shade& shade) {
  const auto pixel = image.bytes.subspan(static_cast<std::size_t>(y) * image.strideBytes +
                                         static_cast<std::size_t>(x) * 4);
  return static_cast<std::uint8_t>(
      (pixel[0] * shade[0] + pixel[1] * shade[1] + pixel[2] * shade[2]) >> 8);
}

GrayImage shadesOf(const png::BgrxView& image, const PixelBox& box, const Shade& shade) {
  GrayImage gray{box.width(), box.height(), {}};
  gray.bytes.reserve(static_cast<std::size_t>(box.width()) *
                     static_cast<std::size_t>(box.height()));
  for (int y = box.top; y < box.bottom; ++y) {
    for (int x = box.left; x < box.right; ++x) {
      gray.bytes.push_back(shadeAt(image, x, y, shade));
    }
  }
  return gray;
}

/// The shade of what a line stands on: the median around its box.
int groundOf(const png::BgrxView& image, const PixelBox& box, const Shade& shade) {
  const PixelBox around{std::max(box.left - kGroundPx, 0), std::max(box.top - kGroundPx, 0),
                        std::min(box.right + kGroundPx, image.widthPx),
                        std::min(box.bottom + kGroundPx, image.heightPx)};
  std::vector<int> ring;
  for (int y = around.top; y < around.bottom; ++y) {
    for (int x = around.left; x < around.right; ++x) {
      if (x < box.left || x >= box.right || y < box.top || y >= box.bottom) {
        ring.push_back(shadeAt(image, x, y, shade));
      }
    }
  }
  if (ring.empty()) {
    return 255;  // The box is the whole image.
  }
  const auto middle = ring.begin() + static_cast<std::ptrdiff_t>(ring.size() / 2);
  std::ranges::nth_element(ring, middle);
  return *middle;
}

/// A line in one shade.
struct ShadedLine {
  ShadedLine(const png::BgrxView& image, const PixelBox& box, const Shade& shade)
      : pixels(shadesOf(image, box, shade)), ground(groundOf(image, box, shade)) {
    const auto [lowest, highest] = std::ranges::minmax(pixels.bytes);
    const int darker = ground - lowest;
    const int lighter = highest - ground;
    isLightText = lighter > darker;
    contrast = std::max(darker, lighter);
  }

  /// Makes the ground white and the ink black: what differs most from the ground, to either side.
  void makeBlackOnWhite() {
    for (std::uint8_t& pixel : pixels.bytes) {
      const int ink = std::clamp(isLightText ? pixel - ground : ground - pixel, 0, contrast);
      pixel = static_cast<std::uint8_t>(255 - ink * 255 / std::max(contrast, 1));
    }
  }

  GrayImage pixels;
  int ground = 0;
  int contrast = 0;
  bool isLightText = false;
};

/// The line by its luminance, or by a channel that separates ink from ground much better.
ShadedLine clearestLine(const png::BgrxView& image, const PixelBox& box) {
  ShadedLine clearest(image, box, kLuminance);
  int least = kClearer * clearest.contrast;
  for (const Shade& channel : kChannels) {
    ShadedLine line(image, box, channel);
    if (line.contrast > least) {
      least = line.contrast;
      clearest = std::move(line);
    }
  }
  return clearest;
}

/// The ink in a black-on-white line, in its own pixels; empty when the line has no ink.
PixelBox inkBoxOf(const GrayImage& line) {
  PixelBox box;
  for (int y = 0; y < line.heightPx; ++y) {
    for (int x = 0; x < line.widthPx; ++x) {
      if (line.at(x, y) <= 255 - 255 * kInkPercent / 100) {
        const PixelBox pixel{x, y, x + 1, y + 1};
        box = box.width() > 0 ? box : pixel;
        box.add(pixel);
      }
    }
  }
  return box;
}

GrayImage withMargin(const GrayImage& line, const PixelBox& part, int marginPx) {
  GrayImage framed{part.width() + 2 * marginPx, part.height() + 2 * marginPx, {}};
  framed.bytes.assign(
      static_cast<std::size_t>(framed.widthPx) * static_cast<std::size_t>(framed.heightPx), 255);
  for (int y = part.top; y < part.bottom; ++y) {
    for (int x = part.left; x < part.right; ++x) {
      framed.at(x - part.left + marginPx, y - part.top + marginPx) = line.at(x, y);
    }
  }
  return framed;
}

/// The four pixels that make one of the enlarged image, and their shares.
struct Taps {
  std::array<int, 4> from{};
  std::array<float, 4> share{};
};

/// Catmull-Rom interpolation.
float shareAt(float distance) {
  const float x = std::abs(distance);
  if (x < 1) {
    return (1.5F * x - 2.5F) * x * x + 1;
  }
  return x < 2 ? ((-0.5F * x + 2.5F) * x - 4) * x + 2 : 0;
}

std::vector<Taps> tapsFor(int sizePx, int enlargedPx) {
  std::vector<Taps> taps(static_cast<std::size_t>(enlargedPx));
  const float step = static_cast<float>(sizePx) / static_cast<float>(enlargedPx);
  float centre = step / 2 - 0.5F;
  for (Taps& tap : taps) {
    const int first = static_cast<int>(std::floor(centre)) - 1;
    for (std::size_t i = 0; i < tap.from.size(); ++i) {
      const int from = first + static_cast<int>(i);
      tap.from[i] = std::clamp(from, 0, sizePx - 1);
      tap.share[i] = shareAt(centre - static_cast<float>(from));
    }
    centre += step;
  }
  return taps;
}

}  // namespace

GrayImage grayOf(const png::BgrxView& image, const PixelBox& box) {
  return shadesOf(image, box, kLuminance);
}

std::optional<LineImage> lineImage(const png::BgrxView& image, const PixelBox& box) {
  if (box.width() <= 0 || box.height() <= 0) {
    return std::nullopt;
  }
  ShadedLine line = clearestLine(image, box);
  line.makeBlackOnWhite();
  const std::vector<bool> underline = colouredLineIn(image, box);
  for (std::size_t i = 0; i < underline.size(); ++i) {
    line.pixels.bytes[i] = underline[i] ? 255 : line.pixels.bytes[i];
  }
  removeCaret(line.pixels);
  const PixelBox ink = inkBoxOf(line.pixels);
  if (ink.width() == 0) {
    return std::nullopt;
  }
  const double scale = std::clamp(kLineHeightPx / ink.height(), 1.0, kMaxScale);
  return LineImage{
      enlarged(withMargin(line.pixels, ink, kMarginPx), scale),
      {box.left + ink.left, box.top + ink.top, box.left + ink.right, box.top + ink.bottom},
      scale,
      kMarginPx};
}

GrayImage enlarged(const GrayImage& image, double scale) {
  if (scale <= 1 || image.bytes.empty()) {
    return image;
  }
  const int widthPx = static_cast<int>(image.widthPx * scale);
  const int heightPx = static_cast<int>(image.heightPx * scale);
  const auto width = static_cast<std::size_t>(widthPx);
  const std::vector<Taps> columns = tapsFor(image.widthPx, widthPx);
  std::vector<float> wide;
  wide.reserve(width * static_cast<std::size_t>(image.heightPx));
  for (int y = 0; y < image.heightPx; ++y) {
    for (const Taps& tap : columns) {
      float sum = 0;
      for (std::size_t i = 0; i < tap.from.size(); ++i) {
        sum += tap.share[i] * static_cast<float>(image.at(tap.from[i], y));
      }
      wide.push_back(sum);
    }
  }
  GrayImage result{widthPx, heightPx, {}};
  result.bytes.reserve(width * static_cast<std::size_t>(heightPx));
  for (const Taps& tap : tapsFor(image.heightPx, heightPx)) {
    for (std::size_t x = 0; x < width; ++x) {
      float sum = 0;
      for (std::size_t i = 0; i < tap.from.size(); ++i) {
        sum += tap.share[i] * wide[static_cast<std::size_t>(tap.from[i]) * width + x];
      }
      result.bytes.push_back(static_cast<std::uint8_t>(std::clamp(sum + 0.5F, 0.0F, 255.0F)));
    }
  }
  return result;
}

}  // namespace tarqo::ocr
