// Which states of an object become check marks and disclosure.
#include <gtest/gtest.h>

#include "platform/linux/atspi/translate/attributes.h"

namespace tarqo::lnx::atspi {
namespace {

Properties objectOf(Role role, std::initializer_list<State> states) {
  std::uint64_t bits = 0;
  for (const State state : states) {
    bits |= std::uint64_t{1} << static_cast<unsigned>(state);
  }
  Properties properties;
  properties.alive = true;
  properties.role = static_cast<std::uint32_t>(role);
  properties.states = States(bits);
  return properties;
}

std::string markOf(const Properties& properties) {
  const std::optional<Value> value = plainAttribute({properties}, "AXMenuItemMarkChar");
  const std::string* text = value ? value->as<std::string>() : nullptr;
  return text == nullptr ? "(absent)" : *text;
}

std::optional<bool> expandedOf(std::initializer_list<State> states) {
  const Properties cell = objectOf(Role::tableCell, states);
  const std::optional<Value> value = plainAttribute({cell}, "AXExpanded");
  const bool* expanded = value ? value->as<bool>() : nullptr;
  return expanded == nullptr ? std::nullopt : std::optional(*expanded);
}

TEST(AtspiMarks, StandBesideMenuItemsThatAreChecked) {
  EXPECT_EQ(markOf(objectOf(Role::checkMenuItem, {State::checked})), "✓");
  EXPECT_EQ(markOf(objectOf(Role::radioMenuItem, {State::checked})), "✓");
  EXPECT_EQ(markOf(objectOf(Role::checkMenuItem, {State::indeterminate})), "–");
}

TEST(AtspiMarks, AreEmptyBesideThoseThatCouldBe) {
  EXPECT_EQ(markOf(objectOf(Role::checkMenuItem, {})), "");
  EXPECT_EQ(markOf(objectOf(Role::tableCell, {State::checkable})), "");
}

TEST(AtspiMarks, AreAbsentFromAnythingElse) {
  EXPECT_EQ(markOf(objectOf(Role::menuItem, {})), "(absent)");
  EXPECT_EQ(markOf(objectOf(Role::tableCell, {State::indeterminate})), "(absent)");
}

TEST(AtspiMarks, AreNotNeededWhereTheValueSaysIt) {
  EXPECT_EQ(markOf(objectOf(Role::checkBox, {State::checked, State::checkable})), "(absent)");
}

TEST(AtspiDisclosure, IsReportedOfWhatCanBeExpanded) {
  EXPECT_EQ(expandedOf({State::expandable}), false);
  EXPECT_EQ(expandedOf({State::expandable, State::expanded}), true);
  EXPECT_EQ(expandedOf({State::expanded}), std::nullopt);
}

}  // namespace
}  // namespace tarqo::lnx::atspi
