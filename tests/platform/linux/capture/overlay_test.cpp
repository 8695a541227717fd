// Pictures laid over a picture.
#include "platform/linux/capture/overlay.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/png/png_images.h"

namespace tarqo::lnx::capture {
namespace {

/// An image of one row a text, with a digit a pixel.
Image image(const std::vector<std::string>& rows) {
  png::Bgrx made{static_cast<int>(rows.front().size()), static_cast<int>(rows.size()), {}};
  for (const std::string& row : rows) {
    for (const char digit : row) {
      made.bytes.insert(made.bytes.end(), 4, static_cast<std::uint8_t>(digit));
    }
  }
  return png::imageOf(std::move(made));
}

std::vector<std::string> rowsOf(const Image& image) {
  const auto view = png::bgrxOf(image);
  std::vector<std::string> rows;
  for (int y = 0; y < view->heightPx; ++y) {
    rows.emplace_back();
    for (int x = 0; x < view->widthPx; ++x) {
      rows.back() += static_cast<char>(view->bytes[static_cast<std::size_t>(y) * view->strideBytes +
                                                   static_cast<std::size_t>(x) * 4]);
    }
  }
  return rows;
}

using Rows = std::vector<std::string>;

TEST(Overlays, LieWhereTheyAreSaidToLie) {
  const std::vector<Overlay> overlays{{image({"12", "34"}), 1, 1}};
  EXPECT_EQ(rowsOf(withOverlays(image({"0000", "0000", "0000"}), overlays)),
            (Rows{"0000", "0120", "0340"}));
}

TEST(Overlays, AreCutOffAtTheEdges) {
  const std::vector<Overlay> overlays{{image({"12", "34"}), -1, -1}, {image({"56", "78"}), 3, 1}};
  EXPECT_EQ(rowsOf(withOverlays(image({"0000", "0000"}), overlays)), (Rows{"4000", "0005"}));
}

TEST(Overlays, OutsideThePictureLeaveItAsItIs) {
  const std::vector<Overlay> overlays{{image({"1"}), 2, 0}, {image({"1"}), 0, -1}};
  EXPECT_EQ(rowsOf(withOverlays(image({"00"}), overlays)), (Rows{"00"}));
}

TEST(Overlays, TheLastLiesUppermost) {
  const std::vector<Overlay> overlays{{image({"1"}), 0, 0}, {image({"2"}), 0, 0}};
  EXPECT_EQ(rowsOf(withOverlays(image({"0"}), overlays)), (Rows{"2"}));
}

}  // namespace
}  // namespace tarqo::lnx::capture
