#include "platform/sim/sim_accessibility.h"

#include <gtest/gtest.h>

#include <limits>

#include "platform/sim/sim_desktop.h"

namespace tarqo::sim {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

constexpr Duration kTimeout = 300ms;

class SimAccessibility : public testing::Test {
 protected:
  [[nodiscard]] std::string textOf(const Element& element, std::string_view name) {
    const std::optional<Value> value = ax.attribute(element, name);
    const auto* text = value ? value->as<std::string>() : nullptr;
    return text == nullptr ? "(none)" : *text;
  }

  [[nodiscard]] std::vector<Element> elementsOf(const Element& element, std::string_view name) {
    std::vector<Element> result;
    const std::optional<Value> value = ax.attribute(element, name);
    if (const auto* values = value ? value->as<Values>() : nullptr) {
      for (const Value& each : *values) {
        result.push_back(*each.as<Element>());
      }
    }
    return result;
  }

  [[nodiscard]] std::optional<Element> elementOf(const Element& element, std::string_view name) {
    const std::optional<Value> value = ax.attribute(element, name);
    const auto* found = value ? value->as<Element>() : nullptr;
    return found == nullptr ? std::nullopt : std::optional(*found);
  }

  Desktop desktop;
  App& notes = desktop.app("com.example.Notes");
  Window& window = notes.window({100, 80, 800, 600}, "Draft");
  Node& save = window.button("Save");
  AccessibilityService& ax = desktop.accessibility();
  Element app = ax.application(notes.pid(), kTimeout);
};

TEST_F(SimAccessibility, ReadsWhatTheSceneSays) {
  save.identifier("save-button").at({120, 140, 80, 24});

  EXPECT_EQ(textOf(save.element(), "AXRole"), "AXButton");
  EXPECT_EQ(textOf(save.element(), "AXTitle"), "Save");
  EXPECT_EQ(textOf(save.element(), "AXIdentifier"), "save-button");
  EXPECT_EQ(*ax.attribute(save.element(), "AXPosition")->as<Point>(), (Point{120, 140}));
  EXPECT_EQ(*ax.attribute(save.element(), "AXSize")->as<Size>(), (Size{80, 24}));
  EXPECT_EQ(*ax.attribute(save.element(), "AXEnabled")->as<bool>(), true);
  EXPECT_FALSE(ax.attribute(save.element(), "AXNoSuchThing"));
}

TEST_F(SimAccessibility, LeadsFromTheApplicationToItsWindowsAndBack) {
  EXPECT_EQ(elementsOf(app, "AXWindows"), std::vector{window.element()});
  EXPECT_EQ(elementsOf(window.element(), "AXChildren"), std::vector{save.element()});
  EXPECT_EQ(elementOf(save.element(), "AXParent"), window.element());
  EXPECT_EQ(elementOf(window.element(), "AXParent"), app);
  EXPECT_FALSE(elementOf(app, "AXParent"));
}

TEST_F(SimAccessibility, TellsTheFocusedWindowAndElement) {
  Node& field = window.textField();
  EXPECT_EQ(elementOf(app, "AXFocusedWindow"), window.element());
  EXPECT_FALSE(elementOf(app, "AXFocusedUIElement"));

  field.focus();
  notes.focusWindow(nullptr);

  EXPECT_EQ(elementOf(app, "AXFocusedUIElement"), field.element());
  EXPECT_EQ(*ax.attribute(field.element(), "AXFocused")->as<bool>(), true);
  EXPECT_FALSE(elementOf(app, "AXFocusedWindow"));
}

TEST_F(SimAccessibility, LetsTheSceneOverruleWhatFollowsFromIt) {
  notes.node().with("AXFocusedWindow", Value{"no element"});
  window.with("AXChildren", Value{Values{Value{save.element()}, Value{"no element"}}});

  EXPECT_EQ(textOf(app, "AXFocusedWindow"), "no element");
  EXPECT_EQ(ax.attribute(window.element(), "AXChildren")->as<Values>()->size(), 2U);
}

TEST_F(SimAccessibility, ReadsManyInOrderWithEmptySlots) {
  save.failing("AXTitle");
  const std::string_view names[] = {"AXRole", "AXNoSuchThing", "AXTitle", "AXEnabled"};

  const auto values = ax.attributes(save.element(), names);

  ASSERT_EQ(values.size(), 4U);
  EXPECT_EQ(*values[0]->as<std::string>(), "AXButton");
  EXPECT_FALSE(values[1]);
  EXPECT_FALSE(values[2]);
  EXPECT_EQ(*values[3]->as<bool>(), true);
}

TEST_F(SimAccessibility, FailsAWholeBatch) {
  save.failingBatch();
  const std::string_view names[] = {"AXRole"};

  EXPECT_TRUE(ax.attributes(save.element(), names).empty());
  EXPECT_EQ(textOf(save.element(), "AXRole"), "AXButton");
}

TEST_F(SimAccessibility, CarriesValuesOfAnyType) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  save.with("AXValue", Value{0.5})
      .with("AXURL", Value{Url{"https://example.com/"}})
      .with("AXPosition", Value{Point{nan, 0}})
      .with("AXTitle", Value{OtherValue{}});

  EXPECT_EQ(*ax.attribute(save.element(), "AXValue")->as<double>(), 0.5);
  EXPECT_EQ(ax.attribute(save.element(), "AXURL")->as<Url>()->absolute, "https://example.com/");
  EXPECT_TRUE(std::isnan(ax.attribute(save.element(), "AXPosition")->as<Point>()->x));
  EXPECT_NE(ax.attribute(save.element(), "AXTitle")->as<OtherValue>(), nullptr);
}

TEST_F(SimAccessibility, EqualsTheSameObjectHoweverObtained) {
  const Element first = *elementOf(save.element(), "AXParent");
  const Element second = elementsOf(app, "AXWindows").front();

  EXPECT_TRUE(first == second);
  EXPECT_FALSE(first == save.element());
  EXPECT_TRUE(ax.application(notes.pid(), kTimeout) == app);
}

TEST_F(SimAccessibility, TellsARecreatedElementApart) {
  const Element before = save.element();

  save.recreate();

  EXPECT_FALSE(before == save.element());
  EXPECT_EQ(textOf(before, "AXRole"), "(none)");
  EXPECT_EQ(textOf(save.element(), "AXTitle"), "Save");
  EXPECT_EQ(elementsOf(window.element(), "AXChildren"), std::vector{save.element()});
}

TEST_F(SimAccessibility, ReadsNothingOfARemovedElement) {
  Node& group = window.group();
  Node& inner = group.label("inner");
  const Element element = inner.element();

  group.remove();

  EXPECT_EQ(textOf(element, "AXValue"), "(none)");
  EXPECT_TRUE(ax.actionNames(element).empty());
  EXPECT_EQ(ax.perform(element, "AXPress"), Performed::refused);
  EXPECT_EQ(elementsOf(window.element(), "AXChildren"), std::vector{save.element()});
  EXPECT_EQ(ax.pidOf(element), notes.pid()) << "that costs no round trip";
}

TEST(SimElement, OutlivesItsDesktop) {
  std::vector<Element> elements;
  {
    Desktop desktop;
    App& app = desktop.app("com.example.Notes");
    elements.push_back(app.node().element());
    elements.push_back(app.window({0, 0, 200, 200}).element());
  }
  EXPECT_FALSE(elements[0] == elements[1]);
}

TEST_F(SimAccessibility, OffersActionsInOrder) {
  save.action("AXShowMenu");

  EXPECT_EQ(ax.actionNames(save.element()), (Names{"AXPress", "AXShowMenu"}));
  save.withoutAction("AXPress");
  EXPECT_EQ(ax.actionNames(save.element()), Names{"AXShowMenu"});
  save.failingActionNames();
  EXPECT_EQ(ax.actionNames(save.element()), Names{});
}

TEST_F(SimAccessibility, CarriesOutWhatAnActionDoes) {
  int pressed = 0;
  save.onPress([&] { ++pressed; });

  EXPECT_EQ(ax.perform(save.element(), "AXPress"), Performed::taken);
  EXPECT_EQ(pressed, 1);
  EXPECT_EQ(save.presses(), 1);
  EXPECT_EQ(desktop.eventLog().lines(Topic::accessibility),
            Lines{"perform AXPress AXButton \"Save\""});
}

TEST_F(SimAccessibility, DelaysWhatAnActionDoes) {
  bool done = false;
  save.action("AXPress").effect([&] { done = true; }, 200ms);

  EXPECT_EQ(ax.perform(save.element(), "AXPress"), Performed::taken);
  desktop.run(199ms);
  EXPECT_FALSE(done);
  desktop.run(1ms);
  EXPECT_TRUE(done);
}

TEST_F(SimAccessibility, RefusesActions) {
  save.action("AXPress").refused();

  EXPECT_EQ(ax.perform(save.element(), "AXPress"), Performed::refused);
  EXPECT_EQ(ax.perform(save.element(), "AXShowMenu"), Performed::refused)
      << "which it does not offer";
  EXPECT_EQ(save.presses(), 0);
}

TEST_F(SimAccessibility, BlocksForAsLongAsAnActionTakes) {
  save.action("AXPress").takes(200ms);
  EXPECT_EQ(ax.perform(save.element(), "AXPress"), Performed::taken);
  EXPECT_EQ(desktop.clock().elapsed(), 200ms);

  save.action("AXPress").takes(2s);
  EXPECT_EQ(ax.perform(save.element(), "AXPress"), Performed::pending);
  EXPECT_EQ(desktop.clock().elapsed(), 500ms) << "given up at the messaging time-out";
}

TEST_F(SimAccessibility, CarriesOutAPendingActionWhenTheApplicationIsDone) {
  bool done = false;
  save.action("AXPress").takes(450ms).effect([&] { done = true; });

  EXPECT_EQ(ax.perform(save.element(), "AXPress"), Performed::pending);
  desktop.run(149ms);
  EXPECT_FALSE(done);
  desktop.run(1ms);
  EXPECT_TRUE(done);
  EXPECT_EQ(save.presses(), 1);
}

TEST_F(SimAccessibility, AwaitsTheAcknowledgementOfAToolkitForTwoTimeouts) {
  notes.facts.acknowledgesActions = true;

  save.action("AXPress").takes(450ms);
  EXPECT_EQ(ax.perform(save.element(), "AXPress"), Performed::acknowledged);
  EXPECT_EQ(desktop.clock().elapsed(), 450ms);

  save.action("AXPress").takes(601ms);
  EXPECT_EQ(ax.perform(save.element(), "AXPress"), Performed::pending);
  EXPECT_EQ(desktop.clock().elapsed(), 1050ms);
}

TEST_F(SimAccessibility, IsHungByAKeyInsideAnActionWhereTheSceneSaysSo) {
  notes.facts.hangsAtKeysInActions = true;
  save.action("AXPress").takes(2s);
  EXPECT_FALSE(ax.isEndangeredByKeys(notes.pid()));

  EXPECT_EQ(ax.perform(save.element(), "AXPress"), Performed::pending);
  EXPECT_TRUE(ax.isEndangeredByKeys(notes.pid()));
  desktop.input().post(*desktop.input().create(nullptr, KeyEvent{36, true, 0}));
  EXPECT_TRUE(notes.facts.hung);

  desktop.run(2s);
  EXPECT_FALSE(ax.isEndangeredByKeys(notes.pid()));
}

TEST_F(SimAccessibility, SetsOnlyWhatCanBeSet) {
  Node& field = window.textField("before");

  EXPECT_TRUE(ax.isSettable(field.element(), "AXValue"));
  EXPECT_FALSE(ax.isSettable(field.element(), "AXRole"));
  EXPECT_FALSE(ax.isSettable(save.element(), "AXValue"));
  EXPECT_TRUE(ax.set(field.element(), "AXValue", Value{"after"}));
  EXPECT_FALSE(ax.set(save.element(), "AXValue", Value{"after"}));
  EXPECT_EQ(field.readText("AXValue"), "after");
}

TEST_F(SimAccessibility, RefusesToSet) {
  Node& field = window.textField("before").refusingSet("AXValue");
  Node& strange = window.textField().settableUnknown("AXValue");

  EXPECT_TRUE(ax.isSettable(field.element(), "AXValue"));
  EXPECT_FALSE(ax.set(field.element(), "AXValue", Value{"after"}));
  EXPECT_EQ(field.readText("AXValue"), "before");
  EXPECT_FALSE(ax.isSettable(strange.element(), "AXValue"));
}

TEST_F(SimAccessibility, LetsTheSceneSayWhatSettingDoes) {
  std::string heard;
  Node& field = window.textField("before").onSet(
      "AXValue", [&](const Value& value) { heard = *value.as<std::string>(); });

  EXPECT_TRUE(ax.set(field.element(), "AXValue", Value{"after"}));
  EXPECT_EQ(heard, "after");
  EXPECT_EQ(field.readText("AXValue"), "before");
}

TEST_F(SimAccessibility, MovesTheFocusBySetting) {
  Node& field = window.textField();

  EXPECT_TRUE(ax.set(field.element(), "AXFocused", Value{true}));
  EXPECT_EQ(notes.focusedNode(), &field);
}

TEST_F(SimAccessibility, AnswersAHungApplicationAfterTheTimeoutWithNothing) {
  notes.facts.hung = true;
  const std::string_view names[] = {"AXRole"};

  EXPECT_FALSE(ax.attribute(save.element(), "AXRole"));
  EXPECT_EQ(desktop.clock().elapsed(), kTimeout);
  EXPECT_TRUE(ax.attributes(save.element(), names).empty());
  EXPECT_TRUE(ax.actionNames(save.element()).empty());
  EXPECT_EQ(ax.perform(save.element(), "AXPress"), Performed::pending);
  EXPECT_FALSE(ax.set(save.element(), "AXValue", Value{"x"}));
  EXPECT_FALSE(ax.isSettable(save.element(), "AXValue"));
  EXPECT_EQ(desktop.clock().elapsed(), 6 * kTimeout);
  EXPECT_EQ(save.presses(), 0);
}

TEST_F(SimAccessibility, CostsWhatASlowApplicationTakes) {
  notes.facts.eachCallTakes = 40ms;

  EXPECT_EQ(textOf(save.element(), "AXTitle"), "Save");
  EXPECT_EQ(textOf(save.element(), "AXTitle"), "Save");
  EXPECT_EQ(desktop.clock().elapsed(), 80ms);
  EXPECT_EQ(notes.calls(), 2);

  notes.facts.eachCallTakes = 301ms;
  EXPECT_EQ(textOf(save.element(), "AXTitle"), "(none)");
  EXPECT_EQ(desktop.clock().elapsed(), 380ms);
}

TEST_F(SimAccessibility, ReadsNothingOfADeadApplicationAndDoesNotWaitForIt) {
  notes.kill();

  EXPECT_EQ(textOf(app, "AXRole"), "(none)");
  EXPECT_EQ(ax.perform(save.element(), "AXPress"), Performed::refused);
  EXPECT_EQ(desktop.clock().elapsed(), 0ms);
  EXPECT_EQ(ax.pidOf(app), notes.pid());
}

TEST_F(SimAccessibility, LetsAnApplicationDieBetweenTwoCalls) {
  notes.afterCalls(3, [&] { notes.kill(); });

  EXPECT_EQ(textOf(save.element(), "AXTitle"), "Save");
  EXPECT_EQ(textOf(save.element(), "AXTitle"), "Save");
  EXPECT_EQ(textOf(save.element(), "AXTitle"), "(none)");
}

TEST_F(SimAccessibility, LetsAnApplicationDieDuringACall) {
  notes.facts.eachCallTakes = 100ms;
  desktop.after(50ms, [&] { notes.kill(); });

  EXPECT_EQ(textOf(save.element(), "AXTitle"), "(none)");
}

TEST_F(SimAccessibility, MakesAnApplicationElementForAnyProcess) {
  const Element element = ax.application(7, kTimeout);

  EXPECT_EQ(textOf(element, "AXRole"), "(none)");
  EXPECT_EQ(ax.pidOf(element), 7);
  EXPECT_TRUE(element == ax.application(7, kTimeout));
  EXPECT_FALSE(element == ax.application(8, kTimeout));
}

TEST_F(SimAccessibility, HidesAProcessId) {
  save.withoutPid();
  EXPECT_FALSE(ax.pidOf(save.element()));
}

TEST_F(SimAccessibility, ListsMenusBelowTheMenuBar) {
  Node& file = notes.menu("File");
  file.menuItem("Save");
  Node& recent = file.submenu("Recent");
  recent.menuItem("a.txt");

  const Element bar = *elementOf(app, "AXMenuBar");
  const Element title = elementsOf(bar, "AXChildren").front();
  const Element menu = elementsOf(title, "AXChildren").front();
  const std::vector<Element> items = elementsOf(menu, "AXChildren");

  EXPECT_EQ(textOf(bar, "AXRole"), "AXMenuBar");
  EXPECT_EQ(textOf(title, "AXTitle"), "File");
  EXPECT_EQ(menu, file.element());
  ASSERT_EQ(items.size(), 2U);
  EXPECT_EQ(textOf(items[0], "AXTitle"), "Save");
  EXPECT_EQ(elementsOf(items[1], "AXChildren"), std::vector{recent.element()});
  EXPECT_FALSE(ax.attribute(items[0], "AXPosition"));
}

TEST_F(SimAccessibility, HasNoMenuBarUntilTheSceneGivesOne) {
  EXPECT_FALSE(elementOf(app, "AXMenuBar"));
}

}  // namespace
}  // namespace tarqo::sim
