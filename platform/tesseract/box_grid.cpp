#include "platform/tesseract/box_grid.h"

namespace tarqo::ocr {

BoxGrid::BoxGrid(const PixelBox& picture)
    : columns_(std::max(picture.right, 0) / kCellPx + 1),
      rows_(std::max(picture.bottom, 0) / kCellPx + 1),
      cells_(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_)) {}

void BoxGrid::grow(std::size_t item, const PixelBox& before, const PixelBox& box) {
  const PixelBox known = cellsOf(before);
  const PixelBox cells = cellsOf(box);
  for (int y = cells.top; y < cells.bottom; ++y) {
    for (int x = cells.left; x < cells.right; ++x) {
      if (!known.contains({x, y, x + 1, y + 1})) {
        cells_[cellAt(x, y)].push_back(item);
      }
    }
  }
}

PixelBox BoxGrid::cellsOf(const PixelBox& box) const {
  if (box.width() <= 0 || box.height() <= 0) {
    return {};
  }
  const auto cell = [](int px, int count) { return std::clamp(px / kCellPx, 0, count - 1); };
  return {cell(box.left, columns_), cell(box.top, rows_), cell(box.right - 1, columns_) + 1,
          cell(box.bottom - 1, rows_) + 1};
}

}  // namespace tarqo::ocr
