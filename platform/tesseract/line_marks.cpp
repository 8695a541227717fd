#include "platform/tesseract/line_marks.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace tarqo::ocr {
namespace {

constexpr std::uint8_t kBlack = 40;
constexpr std::uint8_t kInk = 190;
constexpr std::uint8_t kWhite = 255;

constexpr int kMaxCaretWidthPx = 2;
constexpr int kMinCaretHeightPx = 10;
/// The bar of "a|b" is as high as an "l".
constexpr int kCaretAbovePx = 2;

/// What a pixel's strongest channel must have over its weakest to be a colour.
constexpr int kColour = 80;
constexpr int kMaxLineThicknessPx = 4;
/// Of a coloured line's pixels, so many to one that lies in the upper half, among the text.
constexpr int kPixelsToOneAbove = 10;

/// Rows from `top` up to, but without, `bottom`.
struct Rows {
  int top = 0;
  int bottom = 0;

  [[nodiscard]] int height() const { return bottom - top; }
  void add(const Rows& other) {
    if (other.height() > 0) {
      *this = height() > 0 ? Rows{std::min(top, other.top), std::max(bottom, other.bottom)} : other;
    }
  }
};

/// From the first row to the last that has ink in that column.
Rows inkOf(const GrayImage& line, int x) {
  Rows rows;
  for (int y = 0; y < line.heightPx; ++y) {
    if (line.at(x, y) < kInk) {
      rows.add({y, y + 1});
    }
  }
  return rows;
}

bool isBlackIn(const GrayImage& line, int x, const Rows& rows) {
  for (int y = rows.top; y < rows.bottom; ++y) {
    if (line.at(x, y) > kBlack) {
      return false;
    }
  }
  return true;
}

/// The columns of a bar that is highest of all.
struct Bar {
  int left = 0;
  int right = 0;  ///< Exclusive.
  Rows rows;
};

std::optional<Bar> highestBar(const GrayImage& line, const std::vector<Rows>& ink) {
  std::optional<Bar> best;
  for (int x = 0; x < line.widthPx; ++x) {
    const Rows& rows = ink[static_cast<std::size_t>(x)];
    if (rows.height() < kMinCaretHeightPx || !isBlackIn(line, x, rows)) {
      continue;
    }
    if (best && best->right == x && best->rows.top == rows.top) {
      ++best->right;
    } else if (!best || rows.height() > best->rows.height()) {
      best = Bar{x, x + 1, rows};
    }
  }
  return best;
}

int colourOf(const png::BgrxView& image, int x, int y) {
  const auto pixel = image.bytes.subspan(static_cast<std::size_t>(y) * image.strideBytes +
                                         static_cast<std::size_t>(x) * 4);
  const auto [low, high] = std::minmax({pixel[0], pixel[1], pixel[2]});
  return high - low;
}

}  // namespace

void removeCaret(GrayImage& line) {
  std::vector<Rows> ink;
  ink.reserve(static_cast<std::size_t>(line.widthPx));
  for (int x = 0; x < line.widthPx; ++x) {
    ink.push_back(inkOf(line, x));
  }
  const std::optional<Bar> bar = highestBar(line, ink);
  if (!bar || bar->right - bar->left > kMaxCaretWidthPx) {
    return;
  }
  Rows rest;
  for (int x = 0; x < line.widthPx; ++x) {
    if (x < bar->left || x >= bar->right) {
      rest.add(ink[static_cast<std::size_t>(x)]);
    }
  }
  if (rest.height() == 0 || bar->rows.top > rest.top - kCaretAbovePx ||
      bar->rows.bottom < rest.bottom) {
    return;
  }
  for (int x = bar->left; x < bar->right; ++x) {
    for (int y = bar->rows.top; y < bar->rows.bottom; ++y) {
      line.at(x, y) = kWhite;
    }
  }
}

std::vector<bool> colouredLineIn(const png::BgrxView& image, const PixelBox& box) {
  std::vector<bool> marked(
      static_cast<std::size_t>(box.width()) * static_cast<std::size_t>(box.height()), false);
  int above = 0;
  int below = 0;
  int columns = 0;
  for (int x = box.left; x < box.right; ++x) {
    int inColumn = 0;
    for (int y = box.top; y < box.bottom; ++y) {
      if (colourOf(image, x, y) < kColour) {
        continue;
      }
      if (y - box.top < box.height() / 2) {
        ++above;
        continue;
      }
      ++inColumn;
      marked[static_cast<std::size_t>(y - box.top) * static_cast<std::size_t>(box.width()) +
             static_cast<std::size_t>(x - box.left)] = true;
    }
    if (inColumn > kMaxLineThicknessPx) {
      return {};
    }
    below += inColumn;
    columns += inColumn > 0 ? 1 : 0;
  }
  const bool isLine = columns >= box.height() && above * kPixelsToOneAbove <= below;
  return isLine ? marked : std::vector<bool>();
}

}  // namespace tarqo::ocr
