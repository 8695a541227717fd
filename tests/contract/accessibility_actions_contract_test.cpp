// accessibility.h: actions and setting

#include <algorithm>

#include "tests/contract/contract_fixture.h"

namespace tarqo::contract {
namespace {

using namespace std::chrono_literals;

using ActionsContract = TargetContract;

TEST_F(ActionsContract, OfferAPressOnAButton) {
  const std::vector<std::string> names = ax.actionNames(control("AXButton", "Save"));
  EXPECT_EQ(std::count(names.begin(), names.end(), "AXPress"), 1);
}

TEST_F(ActionsContract, PressAButtonOnce) {
  ASSERT_EQ(status(), "Status: idle");

  EXPECT_NE(ax.perform(control("AXButton", "Save"), "AXPress"), Performed::refused);

  EXPECT_TRUE(waitUntil([&] { return status() == "Status: saved 1"; })) << status();
  clock.runLoopFor(300ms);
  EXPECT_EQ(status(), "Status: saved 1");
}

TEST_F(ActionsContract, RefuseWhatIsNotOffered) {
  EXPECT_EQ(ax.perform(control("AXButton", "Save"), "AXNoSuchAction"), Performed::refused);
  EXPECT_EQ(ax.perform(control("AXButton", "Save"), ""), Performed::refused);
  EXPECT_EQ(status(), "Status: idle");
}

TEST_F(ActionsContract, RaiseAWindow) {
  EXPECT_NE(ax.perform(window(), "AXRaise"), Performed::refused);
}

TEST_F(ActionsContract, SetTheValueOfAField) {
  const Element field = control("AXTextField", "Name");
  EXPECT_TRUE(ax.isSettable(field, "AXValue"));

  EXPECT_TRUE(ax.set(field, "AXValue", Value{"안녕 ab 😀"}));
  EXPECT_TRUE(waitUntil([&] { return text(field, "AXValue") == "안녕 ab 😀"; }))
      << text(field, "AXValue");

  EXPECT_TRUE(ax.set(field, "AXValue", Value{"short"}));
  EXPECT_TRUE(waitUntil([&] { return text(field, "AXValue") == "short"; }))
      << "the whole content is replaced: " << text(field, "AXValue");
}

TEST_F(ActionsContract, KnowWhatCannotBeSet) {
  const Element save = control("AXButton", "Save");
  EXPECT_FALSE(ax.isSettable(save, "AXRole"));
  EXPECT_FALSE(ax.isSettable(save, "AXValue"));
  EXPECT_FALSE(ax.isSettable(save, "AXNoSuchAttribute"));
  EXPECT_FALSE(ax.set(save, "AXRole", Value{"AXLink"}));
  EXPECT_FALSE(ax.set(save, "AXNoSuchAttribute", Value{"x"}));
}

TEST_F(ActionsContract, MoveTheFocus) {
  const Element field = control("AXTextField", "Name");

  EXPECT_TRUE(ax.set(field, "AXFocused", Value{true}));

  EXPECT_TRUE(waitUntil([&] { return read<bool>(field, "AXFocused") == true; }));
  EXPECT_TRUE(waitUntil([&] {
    const auto focused = read<Element>(application(), "AXFocusedUIElement");
    return focused && *focused == field;
  }));
}

}  // namespace
}  // namespace tarqo::contract
