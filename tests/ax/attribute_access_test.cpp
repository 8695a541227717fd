#include "ax/attribute_access.h"

#include <limits>

#include "tests/support/scene.h"

namespace tarqo {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::string textOf(Value value) { return text(std::optional(std::move(value))); }

std::string repeated(const std::string& piece, std::size_t count) {
  std::string result;
  for (std::size_t i = 0; i < count; ++i) {
    result += piece;
  }
  return result;
}

TEST(Text, IsEmptyForNoValue) {
  EXPECT_EQ(text(std::nullopt), "");
  EXPECT_EQ(text(nullptr), "");
}

TEST(Text, IsEmptyForEveryOtherType) {
  EXPECT_EQ(textOf(Value{true}), "");
  EXPECT_EQ(textOf(Value{5.0}), "");
  EXPECT_EQ(textOf(Value{Point{1, 2}}), "");
  EXPECT_EQ(textOf(Value{Size{1, 2}}), "");
  EXPECT_EQ(textOf(Value{Url{"https://a.b"}}), "");
  EXPECT_EQ(textOf(Value{Values{Value{std::string("a")}}}), "");
  EXPECT_EQ(textOf(Value{OtherValue{}}), "");
}

TEST(Text, LosesWhiteSpaceAndNewlinesAtItsEnds) {
  EXPECT_EQ(textOf(Value{std::string(" \t\r\n a  b\u00A0\u2003\u2028\u3000")}), "a  b");
}

TEST(Text, IsEmptyWhenThereIsNothingElse) {
  EXPECT_EQ(textOf(Value{std::string(" \n\u2029\t ")}), "");
  EXPECT_EQ(textOf(Value{std::string()}), "");
}

TEST(Text, KeepsTheFirst2048Characters) {
  EXPECT_EQ(textOf(Value{std::string(3000, 'a')}), std::string(2048, 'a'));
  EXPECT_EQ(textOf(Value{std::string(2048, 'a')}), std::string(2048, 'a'));
}

TEST(Text, IsTrimmedBeforeItIsCut) {
  EXPECT_EQ(textOf(Value{std::string(1000, ' ') + std::string(3000, 'a')}), std::string(2048, 'a'));
  EXPECT_EQ(textOf(Value{std::string(2048, 'a') + std::string(100, ' ') + "b"}),
            std::string(2048, 'a'))
      << "cut at 2048, before the space";
}

TEST(Text, CountsCharactersAsAUserDoes) {
  for (const char* cluster :
       {"한", "e\u0301", "👨‍👩‍👧‍👦", "🇰🇷", "👨🏻‍❤️‍💋‍👨🏿",
        "👨🏻‍👩🏿‍👧🏻‍👦🏿"}) {
    EXPECT_EQ(textOf(Value{repeated(cluster, 2050)}), repeated(cluster, 2048)) << cluster;
  }
}

TEST(Text, IsCutBetweenCharactersWhereTheyAreTooLong) {
  const std::string accented = "a" + repeated("\u0301", 50);
  const std::size_t whole = 131072 / accented.size();
  EXPECT_EQ(textOf(Value{repeated(accented, 2000)}), repeated(accented, whole));
}

TEST(Text, IsCutWithinACharacterThatHasNoEnd) {
  const std::string accents = "a" + repeated("\u0301", 1'000'000);
  EXPECT_EQ(textOf(Value{accents}), accents.substr(0, 131071)) << "not half an accent";
  EXPECT_EQ(textOf(Value{"b" + accents}), "b");
}

TEST(Text, IsRepairedWhenItIsMalformed) {
  EXPECT_EQ(textOf(Value{std::string("a\xFF")}), "a\xEF\xBF\xBD");
}

TEST(RectJson, HoldsTheNumbersAsTheyAre) {
  EXPECT_EQ(rectJSON({1.25, -2, 0.1, 4}),
            (Json{{"x", 1.25}, {"y", -2.0}, {"width", 0.1}, {"height", 4.0}}));
}

TEST(RectJson, StandardisesNegativeSizes) {
  EXPECT_EQ(rectJSON({10, 20, -4, -6}),
            (Json{{"x", 6.0}, {"y", 14.0}, {"width", 4.0}, {"height", 6.0}}));
}

class Reading : public Scene {
 protected:
  std::optional<Rect> frameOfNode() { return frame(ax, node.element()); }
  std::optional<Rect> frameFromAttributes() { return frameFrom(attributes(ax, node.element())); }

  void expectFrame(std::optional<Rect> expected) {
    EXPECT_EQ(frameOfNode(), expected);
    EXPECT_EQ(frameFromAttributes(), expected);
  }

  sim::Node& place(Point position, Size size) {
    return node.with("AXPosition", Value{position}).with("AXSize", Value{size});
  }

  sim::App& app = desktop.app("com.example.Notes");
  sim::Window& window = app.window({100, 80, 800, 600}, "Notes");
  sim::Node& node = window.button("Save").at({200, 200, 80, 24});
  Accessibility& ax = platform.accessibility;
};

TEST_F(Reading, FrameIsPositionAndSize) { expectFrame(Rect{200, 200, 80, 24}); }

TEST_F(Reading, FrameMayLieLeftOfOrAboveTheMainDisplay) {
  place({-500, -0.5}, {0.25, 1});
  expectFrame(Rect{-500, -0.5, 0.25, 1});
}

TEST_F(Reading, NoFrameWithoutExtent) {
  for (const Size size : {Size{0, 10}, Size{10, 0}, Size{-1, 10}, Size{10, -1}, Size{0, 0}}) {
    place({1, 1}, size);
    expectFrame(std::nullopt);
  }
}

TEST_F(Reading, NoFrameWithoutFiniteNumbers) {
  for (const double bad : {kNan, kInfinity, -kInfinity}) {
    place({bad, 1}, {1, 1});
    expectFrame(std::nullopt);
    place({1, bad}, {1, 1});
    expectFrame(std::nullopt);
    place({1, 1}, {bad, 1});
    expectFrame(std::nullopt);
    place({1, 1}, {1, bad});
    expectFrame(std::nullopt);
  }
}

TEST_F(Reading, NoFrameWithoutPositionOrSize) {
  node.without("AXPosition");
  expectFrame(std::nullopt);
  node.at({1, 1, 1, 1}).without("AXSize");
  expectFrame(std::nullopt);
  node.at({1, 1, 1, 1}).failing("AXSize");
  expectFrame(std::nullopt);
}

TEST_F(Reading, NoFrameFromValuesOfOtherTypes) {
  node.with("AXPosition", Value{Size{1, 1}});
  expectFrame(std::nullopt);
  node.at({1, 1, 1, 1}).with("AXSize", Value{Point{1, 1}});
  expectFrame(std::nullopt);
  node.at({1, 1, 1, 1}).with("AXSize", Value{std::string("1x1")});
  expectFrame(std::nullopt);
}

TEST_F(Reading, ASizeIsNotAskedForWithoutAPosition) {
  node.without("AXPosition");
  const int before = app.calls();
  (void)frameOfNode();
  EXPECT_EQ(app.calls() - before, 1);
}

TEST_F(Reading, AttributesAreReadTogether) {
  const int before = app.calls();
  const Attributes read = attributes(ax, node.element());
  EXPECT_EQ(app.calls() - before, 1);
  EXPECT_EQ(text(find(read, "AXTitle")), "Save");
  EXPECT_EQ(text(find(read, "AXRole")), "AXButton");
  EXPECT_EQ(booleanValue(find(read, "AXEnabled")), true);
}

TEST_F(Reading, TheThirteenAttributesAreReadAndNoOther) {
  for (const std::string_view name : attributeNames) {
    node.with(std::string(name), Value{std::string(name)});
  }
  node.with("AXValue", Value{std::string("secret")}).with("AXHelp", Value{std::string("help")});
  const Attributes read = attributes(ax, node.element());
  EXPECT_EQ(read.size(), 13);
  for (const std::string_view name : attributeNames) {
    EXPECT_EQ(text(find(read, name)), name);
  }
  EXPECT_EQ(find(read, "AXValue"), nullptr);
}

TEST_F(Reading, AttributesLeaveOutWhatFails) {
  node.failing("AXTitle");
  const Attributes read = attributes(ax, node.element());
  EXPECT_EQ(find(read, "AXTitle"), nullptr);
  EXPECT_NE(find(read, "AXRole"), nullptr);
}

TEST_F(Reading, AttributesAreEmptyWhenNoneIsSupported) {
  for (const std::string_view name : attributeNames) {
    node.without(std::string(name));
  }
  EXPECT_TRUE(attributes(ax, node.element()).empty());
}

TEST_F(Reading, AttributesAreEmptyWhenTheCallFails) {
  node.failingBatch();
  EXPECT_TRUE(attributes(ax, node.element()).empty());
}

TEST_F(Reading, AnAttributeMayHaveNoValue) {
  EXPECT_EQ(attribute(ax, node.element(), "AXNothing"), std::nullopt);
  EXPECT_EQ(text(attribute(ax, node.element(), "AXTitle")), "Save");
}

TEST_F(Reading, AnElementIsFollowedOnlyWhereThereIsOne) {
  EXPECT_EQ(elementValue(attribute(ax, node.element(), "AXParent")), window.element());
  EXPECT_EQ(elementValue(attribute(ax, node.element(), "AXTitle")), std::nullopt);
  EXPECT_EQ(elementValue(std::nullopt), std::nullopt);
}

TEST_F(Reading, ABooleanIsNoNumber) {
  EXPECT_EQ(booleanValue(std::optional(Value{1.0})), std::nullopt);
  EXPECT_EQ(booleanValue(std::optional(Value{false})), false);
  EXPECT_EQ(booleanValue(nullptr), std::nullopt);
}

TEST_F(Reading, ActionNamesKeepTheirOrder) {
  node.action("AXShowMenu");
  node.action("AXCancel");
  EXPECT_EQ(actionNames(ax, node.element()),
            (std::vector<std::string>{"AXPress", "AXShowMenu", "AXCancel"}));
}

TEST_F(Reading, ActionNamesAreEmptyWhenTheyCannotBeRead) {
  node.failingActionNames();
  EXPECT_TRUE(actionNames(ax, node.element()).empty());
}

TEST_F(Reading, ChildrenKeepTheirOrder) {
  const sim::Node& second = window.button("Cancel");
  EXPECT_EQ(childElements(ax, window.element()),
            (std::vector<Element>{node.element(), second.element()}));
}

TEST_F(Reading, ChildrenAreEmptyWhenOneIsNoElement) {
  window.with("AXChildren",
              Value{Values{Value{node.element()}, Value{std::string("not an element")}}});
  EXPECT_TRUE(childElements(ax, window.element()).empty());
}

TEST_F(Reading, ChildrenAreEmptyWhenTheyAreNoList) {
  window.with("AXChildren", Value{node.element()});
  EXPECT_TRUE(childElements(ax, window.element()).empty());
  window.without("AXChildren");
  EXPECT_TRUE(childElements(ax, window.element()).empty());
}

TEST_F(Reading, ADeadElementReadsAsEmpty) {
  const Element gone = node.element();
  node.remove();
  EXPECT_EQ(attribute(ax, gone, "AXTitle"), std::nullopt);
  EXPECT_TRUE(attributes(ax, gone).empty());
  EXPECT_TRUE(actionNames(ax, gone).empty());
  EXPECT_TRUE(childElements(ax, gone).empty());
  EXPECT_EQ(frame(ax, gone), std::nullopt);
}

TEST_F(Reading, AHungApplicationReadsAsEmpty) {
  app.facts.hung = true;
  EXPECT_EQ(attribute(ax, node.element(), "AXTitle"), std::nullopt);
  EXPECT_TRUE(attributes(ax, node.element()).empty());
  EXPECT_TRUE(actionNames(ax, node.element()).empty());
  EXPECT_EQ(frame(ax, node.element()), std::nullopt);
}

}  // namespace
}  // namespace tarqo
