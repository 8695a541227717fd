// Boxes in a picture by where they lie, so that a box's neighbours are found without looking at all
// the others: a field of stars has 100,000 specks.
//
// Any thread; nothing waits.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "platform/tesseract/surfaces.h"

namespace tarqo::ocr {

class BoxGrid {
 public:
  /// For boxes in `picture`, which begins at 0, 0.
  explicit BoxGrid(const PixelBox& picture);

  /// `item` is the caller's number for the box.
  void add(std::size_t item, const PixelBox& box) { grow(item, {}, box); }
  /// An item whose box was `before` now has one that contains it.
  void grow(std::size_t item, const PixelBox& before, const PixelBox& box);

  /// Calls `deed` with each item that has pixels in common with the box, and with some that are
  /// only close to it. An item that spans cells is visited once per cell.
  template <typename Deed>
  void forNear(const PixelBox& box, const Deed& deed) const {
    const PixelBox cells = cellsOf(box);
    for (int y = cells.top; y < cells.bottom; ++y) {
      for (int x = cells.left; x < cells.right; ++x) {
        for (const std::size_t item : cells_[cellAt(x, y)]) {
          deed(item);
        }
      }
    }
  }

 private:
  /// About as high as a glyph: smaller cells make long lines expensive, larger hold more specks.
  static constexpr int kCellPx = 16;

  /// The columns and rows of the cells a box touches; an empty box when the box is empty. Parts
  /// outside the picture count as on its edge.
  [[nodiscard]] PixelBox cellsOf(const PixelBox& box) const;
  [[nodiscard]] std::size_t cellAt(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(columns_) +
           static_cast<std::size_t>(x);
  }

  int columns_;
  int rows_;
  std::vector<std::vector<std::size_t>> cells_;  ///< Row by row.
};

}  // namespace tarqo::ocr
