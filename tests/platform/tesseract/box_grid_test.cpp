#include "platform/tesseract/box_grid.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace tarqo::ocr {
namespace {

constexpr PixelBox kPicture{0, 0, 300, 200};

std::set<std::size_t> itemsNear(const BoxGrid& grid, const PixelBox& box) {
  std::set<std::size_t> items;
  grid.forNear(box, [&](std::size_t item) { items.insert(item); });
  return items;
}

bool overlap(const PixelBox& a, const PixelBox& b) {
  return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

class Boxes {
 public:
  /// Some of them stick out of the picture.
  PixelBox next() {
    const int left = below(340) - 20;
    const int top = below(240) - 20;
    return {left, top, left + 1 + below(60), top + 1 + below(30)};
  }

 private:
  int below(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }

  std::minstd_rand random_{1};
};

TEST(BoxGrid, FindsEveryBoxThatOverlaps) {
  BoxGrid grid(kPicture);
  Boxes random;
  std::vector<PixelBox> boxes;
  for (std::size_t i = 0; i < 200; ++i) {
    boxes.push_back(random.next());
    grid.add(i, boxes.back());
  }
  for (int i = 0; i < 200; ++i) {
    const PixelBox place = random.next();
    const std::set<std::size_t> found = itemsNear(grid, place);
    for (std::size_t item = 0; item < boxes.size(); ++item) {
      EXPECT_TRUE(found.contains(item) || !overlap(boxes[item], place));
    }
  }
}

TEST(BoxGrid, LeavesOutWhatIsFarAway) {
  BoxGrid grid(kPicture);
  grid.add(1, {0, 0, 40, 12});
  grid.add(2, {200, 0, 240, 12});
  grid.add(3, {0, 100, 40, 112});
  EXPECT_EQ(itemsNear(grid, {10, 4, 20, 8}), (std::set<std::size_t>{1}));
  EXPECT_TRUE(itemsNear(grid, {120, 50, 130, 60}).empty());
}

TEST(BoxGrid, FindsABoxWhereItGrew) {
  BoxGrid grid(kPicture);
  grid.add(1, {50, 50, 60, 60});
  grid.grow(1, {50, 50, 60, 60}, {50, 50, 200, 120});
  EXPECT_EQ(itemsNear(grid, {50, 50, 51, 51}), (std::set<std::size_t>{1}));
  EXPECT_EQ(itemsNear(grid, {199, 119, 200, 120}), (std::set<std::size_t>{1}));
  EXPECT_TRUE(itemsNear(grid, {250, 50, 260, 60}).empty());
}

TEST(BoxGrid, HoldsAnItemOnceInACellHoweverOftenItGrew) {
  BoxGrid grid(kPicture);
  grid.add(1, {50, 50, 51, 51});
  for (int right = 51; right < 200; ++right) {
    grid.grow(1, {50, 50, right, 51}, {50, 50, right + 1, 51});
  }
  int count = 0;
  grid.forNear({50, 50, 51, 51}, [&](std::size_t /*item*/) { ++count; });
  EXPECT_EQ(count, 1);
}

TEST(BoxGrid, HoldsNoEmptyBox) {
  BoxGrid grid(kPicture);
  grid.add(1, {20, 20, 20, 30});
  EXPECT_TRUE(itemsNear(grid, kPicture).empty());
}

TEST(BoxGrid, OfAPictureWithoutPixelsIsEmpty) {
  EXPECT_TRUE(itemsNear(BoxGrid({}), kPicture).empty());
}

}  // namespace
}  // namespace tarqo::ocr
