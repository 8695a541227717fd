// accessibility.h: targets that are dead, hung or were never there

#include <array>

#include "tests/contract/contract_fixture.h"

namespace tarqo::contract {
namespace {

using namespace std::chrono_literals;

constexpr std::array<std::string_view, 2> kRoleAndTitle = {"AXRole", "AXTitle"};

class FaultsContract : public TargetContract {
 protected:
  void expectNothing(const Element& element) {
    EXPECT_FALSE(ax.attribute(element, "AXRole"));
    EXPECT_TRUE(ax.attributes(element, kRoleAndTitle).empty());
    EXPECT_TRUE(ax.actionNames(element).empty());
    EXPECT_EQ(ax.perform(element, "AXPress"), Performed::refused);
    EXPECT_FALSE(ax.set(element, "AXValue", Value{"x"}));
    EXPECT_FALSE(ax.isSettable(element, "AXValue"));
  }

  template <typename Deed>
  Duration timeOf(Deed deed) {
    const Instant begin = clock.now();
    deed();
    return clock.now() - begin;
  }
};

TEST_F(FaultsContract, GiveNothingOfADeadApplication) {
  const Element app = application();
  const Element save = control("AXButton", "Save");
  target->end();

  EXPECT_TRUE(waitUntil([&] { return !ax.attribute(save, "AXRole"); }));
  expectNothing(save);
  expectNothing(app);
  EXPECT_TRUE(elements(app, "AXWindows").empty());
}

TEST_F(FaultsContract, DoNotWaitLongForADeadApplication) {
  const Element save = control("AXButton", "Save");
  target->end();
  EXPECT_TRUE(waitUntil([&] { return !ax.attribute(save, "AXRole"); }));

  EXPECT_LT(timeOf([&] { (void)ax.attribute(save, "AXRole"); }), kMessagingTimeout + 100ms);
}

TEST_F(FaultsContract, GiveNothingOfAHungApplicationAfterTheTimeout) {
  const Element save = control("AXButton", "Save");
  target->hang();

  const Duration single = timeOf([&] { EXPECT_FALSE(ax.attribute(save, "AXRole")); });
  const Duration batch = timeOf([&] { EXPECT_TRUE(ax.attributes(save, kRoleAndTitle).empty()); });
  const Duration actions = timeOf([&] { EXPECT_TRUE(ax.actionNames(save).empty()); });

  EXPECT_LT(single, kMessagingTimeout + 100ms);
  EXPECT_LT(batch, kMessagingTimeout + 100ms);
  EXPECT_LT(actions, kMessagingTimeout + 100ms);
  target->resume();
}

TEST_F(FaultsContract, WaitForTwoTimeoutsForAnAction) {
  const Element save = control("AXButton", "Save");
  target->hang();

  const Duration taken =
      timeOf([&] { EXPECT_NE(ax.perform(save, "AXPress"), Performed::acknowledged); });

  EXPECT_LT(taken, 2 * kMessagingTimeout + 100ms);
  target->resume();
}

TEST_F(FaultsContract, TakeNobodyForEndangeredWhoIsInNoAction) {
  (void)ax.perform(control("AXButton", "Save"), "AXPress");
  EXPECT_FALSE(ax.isEndangeredByKeys(target->pid()));
  EXPECT_FALSE(ax.isEndangeredByKeys(0x3FFFFFFF));
}

TEST_F(FaultsContract, RecoverWithTheApplication) {
  const Element save = control("AXButton", "Save");
  target->hang();
  EXPECT_FALSE(ax.attribute(save, "AXRole"));

  target->resume();

  EXPECT_TRUE(waitUntil([&] { return text(save, "AXRole") == "AXButton"; }));
  EXPECT_EQ(text(save, "AXTitle"), "Save");
}

TEST_F(FaultsContract, GiveNothingOfAProcessThatIsNone) {
  const Element nobody = ax.application(0x3FFFFFFF, kMessagingTimeout);

  expectNothing(nobody);
  EXPECT_EQ(ax.pidOf(nobody), 0x3FFFFFFF);
}

TEST_F(FaultsContract, KeepTheIdentityOfWhatIsGone) {
  const Element save = control("AXButton", "Save");
  const Element again = control("AXButton", "Save");
  target->end();

  EXPECT_TRUE(save == again);
  EXPECT_EQ(ax.pidOf(save), target->pid());
}

TEST_F(FaultsContract, DoNotHitWhatIsDead) {
  const std::optional<Rect> area = frame(control("AXButton", "Save"));
  ASSERT_TRUE(area);
  target->end();

  EXPECT_TRUE(waitUntil([&] {
    const auto hit = ax.elementAt(area->center());
    return !hit || ax.pidOf(*hit) != target->pid();
  }));
}

}  // namespace
}  // namespace tarqo::contract
