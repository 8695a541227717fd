// The order in which recognised lines are listed, and the small forms of an observation.

#include <gtest/gtest.h>

#include <algorithm>

#include "base/base64.h"
#include "observe/recognized_text.h"

namespace tarqo {
namespace {

using Texts = std::vector<std::string>;

struct Placed {
  std::string text;
  double x;
  double y;
};

Texts inReadingOrder(const std::vector<Placed>& placed) {
  std::vector<TextLine> lines;
  for (const Placed& each : placed) {
    lines.push_back({each.text, {each.x, each.y, 10, 10}, 1});
  }
  sortForReading(lines);
  Texts texts;
  for (const TextLine& line : lines) {
    texts.push_back(line.text);
  }
  return texts;
}

TEST(ReadingOrder, TopsFourPointsApartAreOneRowFromLeftToRight) {
  EXPECT_EQ(inReadingOrder({{"right", 50, 100}, {"left", 10, 104}}), (Texts{"left", "right"}));
}

TEST(ReadingOrder, TopsMoreThanFourPointsApartAreRowsFromTheTop) {
  EXPECT_EQ(inReadingOrder({{"lower", 10, 104.5}, {"upper", 50, 100}}), (Texts{"upper", "lower"}));
}

TEST(ReadingOrder, LinesThatCompareEqualKeepTheirOrder) {
  EXPECT_EQ(inReadingOrder({{"b", 10, 102}, {"a", 10, 100}, {"c", 10, 104}}),
            (Texts{"b", "a", "c"}));
}

TEST(ReadingOrder, RowsThatRunIntoOneAnotherLoseNoLine) {
  std::vector<Placed> stairs;
  for (int i = 0; i < 60; ++i) {
    stairs.push_back({std::to_string(i), 1000.0 - 7 * (i % 13), 3.0 * i});
  }
  Texts ordered = inReadingOrder(stairs);
  ASSERT_EQ(ordered.size(), 60U);
  std::sort(ordered.begin(), ordered.end());
  EXPECT_EQ(std::unique(ordered.begin(), ordered.end()), ordered.end());
}

TEST(ReadingOrder, OfNothingIsNothing) { EXPECT_EQ(inReadingOrder({}), Texts{}); }

TEST(OnScreen, CountsFromTheBottomOfTheImageToTheTopOfTheScreen) {
  const auto lines = onScreen({{"a", {0, 0, 0.5, 0.25}, 0.5F}, {"b", {0.5, 0.75, 0.5, 0.25}, 1}},
                              {100, 200, 400, 800});
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].box, (Rect{100, 800, 200, 200}));
  EXPECT_EQ(lines[0].confidence, 0.5F);
  EXPECT_EQ(lines[1].box, (Rect{300, 200, 200, 200}));
}

TEST(Base64, EncodesWithPaddingAndWithoutLineBreaks) {
  EXPECT_EQ(base64(""), "");
  EXPECT_EQ(base64("f"), "Zg==");
  EXPECT_EQ(base64("fo"), "Zm8=");
  EXPECT_EQ(base64("foo"), "Zm9v");
  EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
  EXPECT_EQ(base64(std::string("\xff\xfe\x00\xfb\xf0", 5)), "//4A+/A=");
  EXPECT_EQ(base64(std::string(300, 'x')).find('\n'), std::string::npos);
}

}  // namespace
}  // namespace tarqo
