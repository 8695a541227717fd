// accessibility.h: reading

#include <algorithm>
#include <array>

#include "tests/contract/contract_fixture.h"

namespace tarqo::contract {
namespace {

using namespace std::chrono_literals;

using AccessibilityContract = TargetContract;

TEST_F(AccessibilityContract, LeadsFromTheApplicationToItsWindow) {
  EXPECT_EQ(text(application(), "AXRole"), "AXApplication");
  EXPECT_EQ(text(window(), "AXRole"), "AXWindow");
  EXPECT_EQ(text(window(), "AXTitle"), "Contract");
  EXPECT_EQ(elements(application(), "AXWindows").size(), 1U);
}

TEST_F(AccessibilityContract, KnowsTheFocusedWindow) {
  EXPECT_TRUE(waitUntil([&] {
    const auto focused = read<Element>(application(), "AXFocusedWindow");
    return focused && *focused == window();
  }));
}

TEST_F(AccessibilityContract, GivesValuesOfTheirTypes) {
  const Element save = control("AXButton", "Save");

  EXPECT_TRUE(read<std::string>(save, "AXRole"));
  EXPECT_TRUE(read<Point>(save, "AXPosition"));
  EXPECT_TRUE(read<Size>(save, "AXSize"));
  EXPECT_EQ(read<bool>(save, "AXEnabled"), true);
  EXPECT_TRUE(read<Element>(save, "AXParent"));
  EXPECT_TRUE(read<Values>(window(), "AXChildren"));
}

TEST_F(AccessibilityContract, TellsADisabledControl) {
  EXPECT_EQ(read<bool>(control("AXButton", "Disabled"), "AXEnabled"), false);
}

TEST_F(AccessibilityContract, MarksAPasswordField) {
  const std::vector<Element> all = tree(window());
  EXPECT_EQ(std::count_if(all.begin(), all.end(),
                          [&](const Element& element) {
                            return text(element, "AXSubrole") == "AXSecureTextField";
                          }),
            1);
}

TEST_F(AccessibilityContract, PlacesControlsInsideTheirWindow) {
  const auto around = frame(window());
  const auto button = frame(control("AXButton", "Save"));

  ASSERT_TRUE(around);
  ASSERT_TRUE(button);
  EXPECT_TRUE(around->contains(*button));
  EXPECT_GT(button->area(), 0);
}

TEST_F(AccessibilityContract, HasNoSuchAttribute) {
  EXPECT_FALSE(ax.attribute(window(), "AXNoSuchAttribute"));
  EXPECT_FALSE(ax.attribute(window(), ""));
}

TEST_F(AccessibilityContract, ReadsManyInOrderWithEmptySlots) {
  constexpr std::array<std::string_view, 4> kNames = {"AXNoSuchAttribute", "AXTitle", "AXRole",
                                                      "AXNothing"};

  const auto values = ax.attributes(control("AXButton", "Save"), kNames);

  ASSERT_EQ(values.size(), kNames.size());
  EXPECT_FALSE(values[0]);
  ASSERT_TRUE(values[1] && values[1]->as<std::string>());
  EXPECT_EQ(*values[1]->as<std::string>(), "Save");
  ASSERT_TRUE(values[2] && values[2]->as<std::string>());
  EXPECT_EQ(*values[2]->as<std::string>(), "AXButton");
  EXPECT_FALSE(values[3]);
}

TEST_F(AccessibilityContract, ReadsManyAsItReadsOne) {
  constexpr std::array<std::string_view, 10> kNames = {
      "AXRole",     "AXSubrole", "AXTitle",   "AXDescription", "AXEnabled",
      "AXPosition", "AXSize",    "AXFocused", "AXHidden",      "AXIdentifier"};
  for (const Element& element : tree(window())) {
    const auto values = ax.attributes(element, kNames);
    ASSERT_EQ(values.size(), kNames.size());
    for (std::size_t i = 0; i < kNames.size(); ++i) {
      const std::optional<Value> single = ax.attribute(element, kNames[i]);
      ASSERT_EQ(single.has_value(), values[i].has_value()) << kNames[i];
      EXPECT_TRUE(!single || single->is.index() == values[i]->is.index()) << kNames[i];
    }
  }
}

TEST_F(AccessibilityContract, LeadsFromAChildToItsParent) {
  const std::vector<Element> children = elements(window(), "AXChildren");
  ASSERT_FALSE(children.empty());
  for (const Element& child : children) {
    const auto parent = read<Element>(child, "AXParent");
    ASSERT_TRUE(parent);
    EXPECT_TRUE(*parent == window());
  }
}

TEST_F(AccessibilityContract, EqualsTheSameElementHoweverObtained) {
  const Element first = control("AXButton", "Save");
  const Element second = control("AXButton", "Save");

  EXPECT_TRUE(first == second);
  EXPECT_FALSE(first == control("AXButton", "Disabled"));
  EXPECT_FALSE(first == window());
  EXPECT_TRUE(application() == application());
  EXPECT_TRUE(window() == elements(application(), "AXWindows").front());
}

TEST_F(AccessibilityContract, TellsTwoInstancesApart) {
  const auto other = backend->startTarget("Other", {300, 200, 640, 480});

  EXPECT_FALSE(ax.application(other->pid(), kMessagingTimeout) == application());
}

TEST_F(AccessibilityContract, KnowsTheProcessOfAnElement) {
  EXPECT_EQ(ax.pidOf(application()), target->pid());
  EXPECT_EQ(ax.pidOf(window()), target->pid());
  EXPECT_EQ(ax.pidOf(control("AXButton", "Save")), target->pid());
}

TEST_F(AccessibilityContract, FindsTheDeepestElementAtAPoint) {
  const Element save = control("AXButton", "Save");
  const std::optional<Rect> area = frame(save);
  ASSERT_TRUE(area);

  std::optional<Element> hit;
  EXPECT_TRUE(waitUntil([&] {
    hit = ax.elementAt(area->center());
    return hit.has_value();
  }));
  ASSERT_TRUE(hit);
  const auto parent = read<Element>(*hit, "AXParent");
  EXPECT_TRUE(*hit == save || (parent && *parent == save)) << text(*hit, "AXRole");
}

TEST_F(AccessibilityContract, FindsNoElementOffEveryDisplay) {
  EXPECT_FALSE(ax.elementAt({-20'000, -20'000}));
}

TEST_F(AccessibilityContract, ListsTheMenusOfTheApplication) {
  const auto bar = read<Element>(application(), "AXMenuBar");
  ASSERT_TRUE(bar);
  EXPECT_EQ(text(*bar, "AXRole"), "AXMenuBar");
  const std::vector<Element> titles = elements(*bar, "AXChildren");
  // Before the application's own menus there may be those of the system.
  const auto file = std::find_if(titles.begin(), titles.end(), [&](const Element& title) {
    return text(title, "AXTitle") == "File";
  });
  ASSERT_NE(file, titles.end());
  const std::vector<Element> below = elements(*file, "AXChildren");
  const auto menu = std::find_if(below.begin(), below.end(), [&](const Element& each) {
    return text(each, "AXRole") == "AXMenu";
  });
  ASSERT_NE(menu, below.end());
  const std::vector<Element> items = elements(*menu, "AXChildren");
  EXPECT_TRUE(std::any_of(items.begin(), items.end(), [&](const Element& item) {
    return text(item, "AXRole") == "AXMenuItem" && !text(item, "AXTitle").empty();
  }));
}

}  // namespace
}  // namespace tarqo::contract
